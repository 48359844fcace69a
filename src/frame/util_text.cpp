#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "frame/require.h"
#include "frame/text.h"
#include "oru/util.h"

namespace {

constexpr int32_t kFirstSize = 200;

std::string_view set_of(const char *chars) {
    return chars != nullptr ? std::string_view(chars) : std::string_view();
}

bool is_in(std::string_view set, char c) {
    return set.find(c) != std::string_view::npos;
}

size_t length_of(int32_t n) {
    return n > 0 ? static_cast<size_t>(n) : 0;
}

// A new text of up to `n` bytes that `copy` writes.
template <class Copy>
char *duplicate_with(Copy &&copy, const char *src, int32_t n, const char *chars) {
    if (src == nullptr)
        return nullptr;
    auto *dst =
        static_cast<char *>(ph_malloc_named(oru::tag_word(oru::Tag::strdup), length_of(n) + 1));
    if (dst != nullptr)
        copy(dst, src, n, chars);
    return dst;
}

// Raised as in plain ASCII; the bytes above 0x7f stay negative.
signed char raised(char c) {
    return static_cast<signed char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
}

}  // namespace

int32_t oru_printf(char **out, const char *format, ...) {
    ORU_REQUIRE(out);
    ORU_REQUIRE(format);
    const uint32_t tag = oru::tag_word(oru::Tag::util);
    *out = static_cast<char *>(ph_malloc_named(tag, kFirstSize));
    if (*out == nullptr)
        return -1;
    va_list args;
    va_list again;
    va_start(args, format);
    va_copy(again, args);
    int32_t size = kFirstSize;
    const int32_t length = std::vsnprintf(*out, kFirstSize, format, args);
    if (length < 0) {
        size = length;
    } else if (length >= kFirstSize) {
        size = length + 1;
        auto *grown = static_cast<char *>(ph_realloc_named(tag, *out, length_of(size)));
        if (grown == nullptr) {
            size = -1;
        } else {
            *out = grown;
            std::vsnprintf(grown, length_of(size), format, again);
        }
    }
    va_end(again);
    va_end(args);
    return size;
}

char *oru_util_strdup(const char *text) {
    return text != nullptr ? oru::duplicate(text) : nullptr;
}

char *oru_util_strndup(const char *text, int32_t n) {
    return text != nullptr ? oru::duplicate(text, length_of(n)) : nullptr;
}

int32_t oru_util_strncpy_excl(char *dst, const char *src, int32_t n, const char *excl) {
    const std::string_view excluded = set_of(excl);
    if (dst == nullptr || src == nullptr)
        return static_cast<int32_t>(excluded.size());
    char *end = std::copy_if(src, src + length_of(n), dst,
                             [excluded](char c) { return !is_in(excluded, c); });
    *end = '\0';
    return static_cast<int32_t>(end - dst);
}

char *oru_util_strndup_excl(const char *src, int32_t n, const char *excl) {
    return duplicate_with(oru_util_strncpy_excl, src, n, excl);
}

int32_t oru_util_strncpy_strip_end_chars(char *dst, const char *src, int32_t n, const char *strip) {
    ORU_REQUIRE(dst);
    ORU_REQUIRE(src);
    const std::string_view stripped = set_of(strip);
    std::string_view text(src, length_of(n));
    while (!text.empty() && is_in(stripped, text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_in(stripped, text.back()))
        text.remove_suffix(1);
    std::memmove(dst, text.data(), text.size());
    dst[text.size()] = '\0';
    return static_cast<int32_t>(text.size());
}

char *oru_util_strndup_strip_end_chars(const char *src, int32_t n, const char *strip) {
    return duplicate_with(oru_util_strncpy_strip_end_chars, src, n, strip);
}

int32_t oru_util_is_int_str(const char *text) {
    ORU_REQUIRE(text);
    const std::string_view rest(text + std::strspn(text, " \t"));
    return rest.find_first_not_of("0123456789") == std::string_view::npos;
}

int32_t oru_util_strcmp_ignore_case(const char *text1, const char *text2) {
    if (text1 == nullptr || text2 == nullptr)
        return -1;
    while (*text1 != '\0' && *text2 != '\0' && raised(*text1) == raised(*text2)) {
        ++text1;
        ++text2;
    }
    if (*text1 == *text2)
        return 0;
    // The end of a text comes before any byte, the negative ones too.
    if (*text1 == '\0' || *text2 == '\0')
        return *text1 == '\0' ? -1 : 1;
    return raised(*text1) < raised(*text2) ? -1 : 1;
}
