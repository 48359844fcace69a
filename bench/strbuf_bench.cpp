// Appending to a string buffer against a std::string behind the calls of a shared library.
#include <oru/strbuf.h>
#include <oruplatform/tracelet.h>

#include <array>
#include <cstdint>

#include "bench/ratios.h"
#include "bench/string_peer.h"

namespace {

// How many times as long as the std::string an append may take.
constexpr double kBound = 1.2;

// Appends between two clears. The text outgrows the buffer's first storage once.
constexpr int64_t kAppends = 64;

constexpr std::array<const char *, 8> kTexts = {
    "interface", "chassis;id=1", "x", "adminState", "com.example.network", "slot", "/", "mtu",
};
constexpr std::array<int64_t, 8> kNumbers = {
    0, 7, -42, 1500, 65535, 1234567, -2147483648, 9007199254740993,
};

// Both are kept for good, so that each repetition has its buffer at another place: now and then one
// shares its cache line's name with other data of the loop, and takes three times as long.
struct Ours {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    void clear() const { oru_do_strbuf_clear(buf); }
    int32_t append(const char *text) const { return oru_do_strbuf_add_string(buf, text); }
    int32_t append(char c) const { return oru_do_strbuf_add_char(buf, c); }
    int32_t append(int64_t n) const { return oru_do_strbuf_add_long(buf, n); }
};

struct Peer {
    string_peer *peer = string_peer_new();
    void clear() const { string_peer_clear(peer); }
    int32_t append(const char *text) const { return string_peer_append_str(peer, text); }
    int32_t append(char c) const { return string_peer_append_char(peer, c); }
    int32_t append(int64_t n) const { return string_peer_append_long(peer, n); }
};

template <class Buffer, class Piece>
void append_all(benchmark::State &state, Piece piece) {
    const Buffer buffer;
    int32_t length = 0;
    while (state.KeepRunningBatch(kAppends)) {
        buffer.clear();
        for (size_t i = 0; i < kAppends; ++i)
            length += buffer.append(piece(i));
    }
    benchmark::DoNotOptimize(length);
}

template <class Buffer>
void append_texts(benchmark::State &state) {
    append_all<Buffer>(state, [](size_t i) { return kTexts[i % kTexts.size()]; });
}

template <class Buffer>
void append_characters(benchmark::State &state) {
    append_all<Buffer>(state, [](size_t i) { return static_cast<char>('a' + i % 26); });
}

template <class Buffer>
void append_numbers(benchmark::State &state) {
    append_all<Buffer>(state, [](size_t i) { return kNumbers[i % kNumbers.size()]; });
}

void add(const std::string &work, void (*ours)(benchmark::State &),
         void (*peer)(benchmark::State &)) {
    oru::bench::compare(work + "/ours", ours);
    oru::bench::compare(work + "/std::string", peer);
    oru::bench::expect(work, "std::string", oru::bench::at_most(kBound));
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    init_chunk_poolheap_oru_do_strbuf(1024, 0);
    init_chunk_poolheap_oru_do_strbuf_misc(1024, 0);
    add("append a text", append_texts<Ours>, append_texts<Peer>);
    add("append a character", append_characters<Ours>, append_characters<Peer>);
    add("append a number", append_numbers<Ours>, append_numbers<Peer>);
    return oru::bench::run_all(argc, argv);
}
