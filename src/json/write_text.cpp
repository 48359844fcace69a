#include <yajl/yajl_gen.h>

#include <algorithm>
#include <cstring>

#include "json/write.h"
#include "json/yajl_memory.h"

namespace oru::json {
namespace {

// Whether a byte, of eight in a word, has to be escaped: a quote, a backslash, one below a blank.
// What is not told right is a byte behind one that has to be, which does not matter.
uint64_t needs_escape(uint64_t word) {
    constexpr uint64_t kOnes = 0x0101010101010101;
    constexpr uint64_t kTops = kOnes << 7;
    const auto below = [](uint64_t bytes, uint64_t n) { return (bytes - kOnes * n) & ~bytes; };
    const auto equal = [&below](uint64_t bytes, uint64_t c) { return below(bytes ^ kOnes * c, 1); };
    return (below(word, ' ') | equal(word, '"') | equal(word, '\\')) & kTops;
}

bool needs_escape(std::string_view text) {
    constexpr size_t kWord = sizeof(uint64_t);
    const char *at = text.data();
    const char *end = at + text.size();
    uint64_t word = 0;
    for (; end - at >= static_cast<ptrdiff_t>(kWord); at += kWord) {
        std::memcpy(&word, at, kWord);
        if (needs_escape(word) != 0)
            return true;
    }
    return std::any_of(at, end, [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\';
    });
}

// A text as it stands between what comes before and behind it.
void put_between(ORUDoStrbuf *strbuf, std::string_view before, std::string_view text,
                 std::string_view behind) {
    ORU_REQUIRE(strbuf);
    char *out = strbuf_room(*strbuf, before.size() + text.size() + behind.size());
    if (out == nullptr)
        return;
    copy_bytes(out, before.data(), before.size());
    out += before.size();
    copy_bytes(out, text.data(), text.size());
    out += text.size();
    copy_bytes(out, behind.data(), behind.size());
    strbuf_end_at(*strbuf, out + behind.size());
}

[[gnu::noinline]] void put_generated(ORUDoStrbuf *strbuf, std::string_view text) {
    YajlMemory memory;
    const unsigned char *escaped = nullptr;
    size_t length = 0;
    auto generate = [&] {
        yajl_gen generator = yajl_gen_alloc(memory.functions());
        yajl_gen_string(generator, reinterpret_cast<const unsigned char *>(text.data()),
                        text.size());
        yajl_gen_get_buf(generator, &escaped, &length);
    };
    if (memory.run(generate))
        put(strbuf, {reinterpret_cast<const char *>(escaped), length});
}

}  // namespace

void put_raw(ORUDoStrbuf *strbuf, const char *text) {
    put_between(strbuf, "\"", text != nullptr ? text : "", "\"");
}

void put_key(ORUDoStrbuf *strbuf, std::string_view key, std::string_view before) {
    ORU_REQUIRE(strbuf);
    char *out = strbuf_room(*strbuf, before.size() + key.size() + 3);
    if (out == nullptr)
        return;
    copy_bytes(out, before.data(), before.size());
    out += before.size();
    *out++ = '"';
    copy_bytes(out, key.data(), key.size());
    out += key.size();
    *out++ = '"';
    *out++ = ':';
    strbuf_end_at(*strbuf, out);
}

// The generator writes a text that needs no escaping as it stands.
void put_escaped(ORUDoStrbuf *strbuf, std::string_view text) {
    ORU_REQUIRE(strbuf);
    if (needs_escape(text)) {
        put_generated(strbuf, text);
    } else {
        put_between(strbuf, "\"", text, "\"");
    }
}

}  // namespace oru::json

void oru::json::put_typedef(ORUDoStrbuf *strbuf, const char *name) {
    if (name == nullptr)
        return;
    put(strbuf, ",\"%typedef\":");
    put_escaped(strbuf, name);
}

int32_t oru_do_integer_to_json(int64_t value, ORUDoStrbuf *buf) {
    oru_do_strbuf_add_long(buf, value);
    return 0;
}

int32_t oru_do_double_to_json(ORUDoStrbuf *buf, double value) {
    oru_do_strbuf_add_double(buf, value);
    return 0;
}

int32_t oru_do_string_to_json(const char *text, int32_t length, ORUDoStrbuf *buf) {
    const bool empty = text == nullptr || length < 1;
    oru::json::put_escaped(
        buf, empty ? std::string_view("") : std::string_view(text, static_cast<size_t>(length)));
    return 0;
}

int32_t oru_do_null_to_json(ORUDoStrbuf *buf) {
    oru::json::put(buf, "null");
    return 0;
}

int32_t oru_do_bool_to_json(int32_t value, ORUDoStrbuf *buf) {
    oru::json::put(buf, value != 0 ? "true" : "false");
    return 0;
}
