// What the fuzzers of objects share.
#ifndef ORU_TESTS_FUZZ_FUZZ_H
#define ORU_TESTS_FUZZ_FUZZ_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "oru/mr_meta.h"
#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"

#define CHECK(condition)                                                         \
    do {                                                                         \
        if (!(condition)) {                                                      \
            std::fprintf(stderr, "%s:%d: " #condition "\n", __FILE__, __LINE__); \
            std::abort();                                                        \
        }                                                                        \
    } while (false)

namespace fuzz {

struct Release {
    void operator()(ORUDoUri *object) const { oru_do_uri_deref(object); }
    void operator()(ORUDoNvlist *object) const { oru_do_nvlist_deref(object); }
    void operator()(ORUDoVlist *object) const { oru_do_vlist_deref(object); }
    void operator()(ORUDoValue *object) const { oru_do_value_deref(object); }
    void operator()(ORUDoName *object) const { oru_do_name_deref(object); }
    void operator()(ORUDoStrbuf *object) const { oru_do_strbuf_deref(object); }
    void operator()(ORUDoProperties *object) const { oru_do_properties_deref(object); }
    void operator()(ORUDoMrMeta *object) const { oru_do_mr_meta_deref(object); }
    void operator()(ORUDoPropMeta *object) const { oru_do_prop_meta_deref(object); }
    void operator()(char *text) const { oru_do_uri_str_free(text); }
};

using Uri = std::unique_ptr<ORUDoUri, Release>;
using Keys = std::unique_ptr<ORUDoNvlist, Release>;
using List = std::unique_ptr<ORUDoVlist, Release>;
using Value = std::unique_ptr<ORUDoValue, Release>;
using Name = std::unique_ptr<ORUDoName, Release>;
using Buffer = std::unique_ptr<ORUDoStrbuf, Release>;
using Properties = std::unique_ptr<ORUDoProperties, Release>;
using MrMeta = std::unique_ptr<ORUDoMrMeta, Release>;
using PropMeta = std::unique_ptr<ORUDoPropMeta, Release>;
using OwnText = std::unique_ptr<char, Release>;

// Bytes in a block of just their size: the address sanitizer sees whoever reads past them.
class Bytes {
  public:
    explicit Bytes(std::string_view bytes) : size_(bytes.size()), block_(new char[bytes.size()]) {
        bytes.copy(block_.get(), bytes.size());
    }
    char *get() const { return block_.get(); }
    int32_t size() const { return static_cast<int32_t>(size_); }

  private:
    size_t size_;
    std::unique_ptr<char[]> block_;
};

// The same for a text and the zero that ends it.
class Text : public Bytes {
  public:
    explicit Text(const std::string &text)
        : Bytes(std::string_view(text.c_str(), text.size() + 1)) {}
};

// The input cut at its newlines; what is behind the last cut stays whole.
template <size_t kCount>
std::array<std::string, kCount> lines_of(const uint8_t *data, size_t size) {
    std::string_view rest(reinterpret_cast<const char *>(data), size);
    std::array<std::string, kCount> lines;
    for (size_t i = 0; i < kCount; ++i) {
        const size_t end = i + 1 < kCount ? rest.find('\n') : std::string_view::npos;
        lines[i] = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    return lines;
}

// A text as far as one that ends with a zero goes.
inline std::string until_zero(const std::string &text) {
    return text.c_str();
}

// The type codes, which letters choose: 'C' is the first number, 'K' a string, 'S' an address; and
// at the end some numbers that are no codes.
constexpr int32_t kTypes[32] = {-3,  -2,  -1,  0,   1,   2,   3,  4,  5,   6,   7,
                                8,   9,   10,  11,  12,  13,  14, 15, 101, 102, 103,
                                104, 105, 106, 107, 108, 109, -4, 16, 100, 110};

inline int32_t type_of(char letter) {
    return kTypes[static_cast<unsigned char>(letter) % 32];
}

// Appends with `add`, and gives what was appended.
template <class Add>
std::string printed(Add add) {
    const Buffer buf(oru_do_strbuf_new());
    add(buf.get());
    CHECK(oru_do_strbuf_get_err(buf.get()) == 0);
    return oru_do_strbuf_to_string(buf.get());
}

inline std::string escaped(const std::string &text) {
    return printed(
        [&](ORUDoStrbuf *buf) { CHECK(oru_do_uri_escape_str(Text(text).get(), buf) == 0); });
}

inline std::string unescaped(const std::string &text) {
    return printed(
        [&](ORUDoStrbuf *buf) { CHECK(oru_do_uri_unescape_str(Text(text).get(), buf) == 0); });
}

inline std::string key_text(ORUDoValue *value) {
    return printed([&](ORUDoStrbuf *buf) { CHECK(oru_do_uri_value_to_keystr(value, buf) == 0); });
}

}  // namespace fuzz

#endif
