#include "do/strbuf.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "frame/text.h"
#include "oru/json.h"
#include "oru/rc.h"

namespace {

using oru::Level;

constexpr int32_t kFirstSize = 256;
constexpr int32_t kRoomForInteger = 40;
constexpr int32_t kRoomForDouble = 512;

oru::Pool misc_pool{"oru_do_strbuf_misc", oru::Tag::strbuf_misc, kFirstSize};

void release_storage(ORUDoStrbuf &buf) {
    if (buf.on_heap != 0) {
        ph_free_named(buf.str);
    } else {
        misc_pool.give(buf.str);
    }
}

// Twice the size and two, computed in 32 bits: what does not fit is the largest size.
int32_t next_size(int32_t size, int32_t need) {
    const auto doubled = static_cast<int32_t>(2 * static_cast<uint32_t>(size) + 2);
    const int32_t grown = doubled < 0 ? INT32_MAX : doubled;
    return need > grown ? need : grown;
}

char *grown_storage(ORUDoStrbuf &buf, int32_t new_size) {
    const uint32_t tag = oru::tag_word(oru::Tag::strbuf_misc);
    const auto size = static_cast<size_t>(new_size);
    if (buf.on_heap != 0)
        return static_cast<char *>(ph_realloc_named(tag, buf.str, size));

    auto *storage = static_cast<char *>(ph_calloc_named(tag, 1, size));
    if (storage == nullptr)
        return nullptr;
    std::memcpy(storage, buf.str, static_cast<size_t>(buf.len) + 1);
    misc_pool.give(buf.str);
    buf.on_heap = 1;
    return storage;
}

void grow(ORUDoStrbuf &buf, int32_t need) {
    const int32_t new_size = next_size(buf.size, need);
    ORU_TRACE(Level::detail, "oru_do_strbuf resize new_size=%d", new_size);
    char *storage = grown_storage(buf, new_size);
    if (storage == nullptr) {
        buf.cur = nullptr;
        return;
    }
    buf.str = storage;
    buf.size = new_size;
    buf.cur = buf.str + buf.len;
}

// Makes room for `more` bytes and the zero behind the text. False in the failed state.
bool ensure(ORUDoStrbuf &buf, int64_t more) {
    return oru::strbuf_room(buf, static_cast<size_t>(more)) != nullptr;
}

// The text got `added` bytes longer: they stand at the cursor already.
int32_t advance(ORUDoStrbuf &buf, size_t added) {
    return oru::strbuf_end_at(buf, buf.cur + added);
}

const char *entity_of(char c) {
    switch (c) {
        case '"':
            return "&quot;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return nullptr;
    }
}

template <class Number>
int32_t add_integer(ORUDoStrbuf &buf, Number n) {
    if (!ensure(buf, kRoomForInteger - 1))
        return -1;
    return oru::strbuf_end_at(buf, std::to_chars(buf.cur, buf.cur + kRoomForInteger - 1, n).ptr);
}

int32_t add_hex(ORUDoStrbuf &buf, const void *bytes, int32_t n, const char *sep, int32_t group,
                const char (&digits)[17]) {
    if (n < 1)
        return buf.len;
    ORU_REQUIRE(bytes);
    const bool separated = sep != nullptr && group > 0;
    const std::string_view separator = separated ? std::string_view(sep) : std::string_view();
    const int64_t separators = separated ? (n - 1) / group : 0;
    if (!ensure(buf, 2 * int64_t{n} + separators * static_cast<int64_t>(separator.size()))) {
        return buf.len;
    }
    const auto *byte = static_cast<const uint8_t *>(bytes);
    char *out = buf.cur;
    for (int32_t i = 0; i < n; ++i) {
        if (separated && i != 0 && i % group == 0) {
            out = std::copy(separator.begin(), separator.end(), out);
        }
        *out++ = digits[byte[i] >> 4];
        *out++ = digits[byte[i] & 0xf];
    }
    return oru::strbuf_end_at(buf, out);
}

constexpr char kUpperDigits[] = "0123456789ABCDEF";
constexpr char kLowerDigits[] = "0123456789abcdef";

}  // namespace

void oru::ObjectType<ORUDoStrbuf>::release_members(ORUDoStrbuf &self) {
    if (self.str != nullptr)
        release_storage(self);
}

bool oru::strbuf_grow_by(ORUDoStrbuf &buf, int64_t more) {
    const int64_t need = buf.len + more + 1;
    if (need > INT32_MAX) {
        buf.cur = nullptr;
        return false;
    }
    grow(buf, static_cast<int32_t>(need));
    return buf.cur != nullptr;
}

ORUDoStrbuf *oru_do_strbuf_new() {
    auto *strbuf = oru::make<ORUDoStrbuf>();
    if (strbuf == nullptr)
        return nullptr;
    strbuf->str = static_cast<char *>(misc_pool.take());
    if (strbuf->str == nullptr)
        return strbuf;
    strbuf->str[0] = '\0';
    strbuf->size = kFirstSize;
    strbuf->cur = strbuf->str;
    strbuf->left = kFirstSize - 1;
    return strbuf;
}

const char *oru_do_strbuf_to_string(ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    return strbuf->str;
}

char *oru_do_strbuf_to_string_ptr(ORUDoStrbuf *strbuf, char **strptr) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE(strptr);
    if (strbuf->str == nullptr)
        return nullptr;
    char *copy =
        oru::duplicate(strbuf->str, static_cast<size_t>(strbuf->len), oru::Tag::strbuf_misc);
    if (copy != nullptr)
        *strptr = copy;
    return copy;
}

int32_t oru_do_strbuf_get_len(ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    return strbuf->len;
}

int32_t oru_do_strbuf_get_err(ORUDoStrbuf *strbuf) {
    return strbuf != nullptr && strbuf->cur != nullptr ? ORU_OK : ORU_RC_MALLOC;
}

int32_t oru_do_strbuf_print_fp(ORUDoStrbuf *strbuf, FILE *stream) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE(stream);
    return strbuf->str != nullptr ? std::fputs(strbuf->str, stream) : 0;
}

void oru_do_strbuf_clear(ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    if (strbuf->str == nullptr)
        return;
    strbuf->str[0] = '\0';
    strbuf->cur = strbuf->str;
    strbuf->len = 0;
    strbuf->left = strbuf->size;
}

int32_t oru_do_strbuf_remove_ftr(ORUDoStrbuf *strbuf, const char *footer) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE(footer);
    const auto n = static_cast<int32_t>(std::strlen(footer));
    if (strbuf->cur == nullptr || strbuf->len < n)
        return -1;
    if (std::memcmp(strbuf->cur - n, footer, static_cast<size_t>(n)) != 0)
        return -1;
    strbuf->cur -= n;
    *strbuf->cur = '\0';
    strbuf->len -= n;
    strbuf->left = n;
    return strbuf->len;
}

int32_t oru_do_strbuf_add_string(ORUDoStrbuf *strbuf, const char *text) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE(text);
    const std::string_view bytes(text);
    if (bytes.empty() || !ensure(*strbuf, static_cast<int64_t>(bytes.size())))
        return -1;
    oru::copy_bytes(strbuf->cur, text, bytes.size());
    return advance(*strbuf, bytes.size());
}

int32_t oru_do_strbuf_add_string_l(ORUDoStrbuf *strbuf, const char *text, int32_t n) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE_AS(text != nullptr || n < 1, "text");
    if (n < 1 || !ensure(*strbuf, n))
        return -1;
    const auto size = static_cast<size_t>(n);
    const size_t copied = strnlen(text, size);
    std::memcpy(strbuf->cur, text, copied);
    std::memset(strbuf->cur + copied, 0, size - copied);
    return advance(*strbuf, size);
}

int32_t oru_do_strbuf_add_string_l_excl(ORUDoStrbuf *strbuf, const char *text, int32_t n,
                                        const char *excl) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE_AS(text != nullptr || n < 1, "text");
    if (n < 1 || !ensure(*strbuf, n))
        return strbuf->len;
    const std::string_view excluded(excl != nullptr ? excl : "");
    const auto *end = std::copy_if(text, text + n, strbuf->cur, [excluded](char c) {
        return excluded.find(c) == std::string_view::npos;
    });
    return advance(*strbuf, static_cast<size_t>(end - strbuf->cur));
}

int32_t oru_do_strbuf_add_char(ORUDoStrbuf *strbuf, int32_t c) {
    ORU_REQUIRE(strbuf);
    if (!ensure(*strbuf, 1))
        return -1;
    char *at = strbuf->cur;
    *at = static_cast<char>(c);
    return oru::strbuf_end_at(*strbuf, at + 1);
}

int32_t oru_do_strbuf_add_string_encode_for_sql(ORUDoStrbuf *strbuf, const char *text) {
    ORU_REQUIRE(strbuf);
    if (text == nullptr)
        return strbuf->len;
    const std::string_view bytes(text);
    if (!ensure(*strbuf, static_cast<int64_t>(bytes.size()) + 1))
        return strbuf->len;
    *strbuf->cur = '_';
    std::replace_copy(bytes.begin(), bytes.end(), strbuf->cur + 1, '.', '_');
    return advance(*strbuf, bytes.size() + 1);
}

int32_t oru_do_strbuf_add_string_encode_for_xml(ORUDoStrbuf *strbuf, const char *text) {
    ORU_REQUIRE(strbuf);
    if (text == nullptr)
        return strbuf->len;
    const std::string_view bytes(text);
    int64_t encoded = 0;
    for (char c : bytes) {
        const char *entity = entity_of(c);
        encoded += entity != nullptr ? static_cast<int64_t>(std::strlen(entity)) : 1;
    }
    if (encoded == 0 || !ensure(*strbuf, encoded))
        return strbuf->len;
    char *out = strbuf->cur;
    for (char c : bytes) {
        const char *entity = entity_of(c);
        const std::string_view piece = entity != nullptr ? entity : std::string_view(&c, 1);
        out = std::copy(piece.begin(), piece.end(), out);
    }
    return advance(*strbuf, static_cast<size_t>(encoded));
}

int32_t oru_do_strbuf_add_long(ORUDoStrbuf *strbuf, int64_t n) {
    ORU_REQUIRE(strbuf);
    return add_integer(*strbuf, n);
}

int32_t oru_do_strbuf_add_unsigned_long(ORUDoStrbuf *strbuf, uint64_t n) {
    ORU_REQUIRE(strbuf);
    return add_integer(*strbuf, n);
}

// As the format "%lg" writes it, whatever the locale.
int32_t oru_do_strbuf_add_double(ORUDoStrbuf *strbuf, double x) {
    constexpr int kDigits = 6;
    ORU_REQUIRE(strbuf);
    if (!ensure(*strbuf, kRoomForDouble - 1))
        return -1;
    char *end = strbuf->cur + kRoomForDouble - 1;
    return oru::strbuf_end_at(
        *strbuf, std::to_chars(strbuf->cur, end, x, std::chars_format::general, kDigits).ptr);
}

int32_t oru_do_strbuf_add_hexbuf(ORUDoStrbuf *strbuf, const void *bytes, int32_t n) {
    ORU_REQUIRE(strbuf);
    return add_hex(*strbuf, bytes, n, nullptr, 0, kUpperDigits);
}

int32_t oru_do_strbuf_add_hexbuf_sep(ORUDoStrbuf *strbuf, const void *bytes, int32_t n,
                                     const char *sep, int32_t group) {
    ORU_REQUIRE(strbuf);
    return add_hex(*strbuf, bytes, n, sep, group, kUpperDigits);
}

int32_t oru_do_strbuf_add_hexbuf_sep_l(ORUDoStrbuf *strbuf, const void *bytes, int32_t n,
                                       const char *sep, int32_t group) {
    ORU_REQUIRE(strbuf);
    return add_hex(*strbuf, bytes, n, sep, group, kLowerDigits);
}

int32_t oru_do_strbuf_add_tab(ORUDoStrbuf *strbuf, int32_t n) {
    ORU_REQUIRE(strbuf);
    if (n < 1 || !ensure(*strbuf, n))
        return strbuf->len;
    std::memset(strbuf->cur, '\t', static_cast<size_t>(n));
    return advance(*strbuf, static_cast<size_t>(n));
}

int32_t oru_do_strbuf_add_value(ORUDoStrbuf *strbuf, ORUDoValue *val) {
    ORU_REQUIRE(strbuf);
    ORU_REQUIRE(val);
    return oru_do_value_to_json_opt(val, strbuf, ORU_JSON_OPT_COMPACT);
}

ORU_OBJECT_API(ORUDoStrbuf, oru_do_strbuf)
ORU_POOL_API(misc_pool, oru_do_strbuf_misc)
