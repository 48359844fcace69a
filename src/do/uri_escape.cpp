// Key values in the form in which they may stand in a URI.
#include <array>
#include <cstring>

#include "do/uri.h"

namespace {

constexpr std::string_view kReserved = " !#$%&'()*+,/:;=?@[]";
constexpr char kDigits[] = "0123456789ABCDEF";
constexpr size_t kEscapeSize = 3;

constexpr std::array<bool, 256> reserved_table() {
    std::array<bool, 256> table{};
    for (char c : kReserved)
        table[static_cast<uint8_t>(c)] = true;
    return table;
}

constexpr std::array<bool, 256> kIsReserved = reserved_table();

bool is_reserved(char c) {
    return kIsReserved[static_cast<uint8_t>(c)];
}

void append_escape(ORUDoStrbuf &out, char c) {
    const auto byte = static_cast<uint8_t>(c);
    const char escape[kEscapeSize] = {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
    oru::strbuf_append(out, {escape, kEscapeSize});
}

// The value of an upper-case digit, or -1.
int digit_value(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Only what escaping writes is read back: any other pair, lower case too, stands for nothing.
void append_unescaped(ORUDoStrbuf &out, char first, char second) {
    const int high = digit_value(first);
    const int low = digit_value(second);
    if (high < 0 || low < 0)
        return;
    const auto c = static_cast<char>(high * 16 + low);
    if (is_reserved(c))
        oru::strbuf_append(out, {&c, 1});
}

void escape(std::string_view text, ORUDoStrbuf &out) {
    size_t run = 0;  // where the characters that are copied as they are begin
    for (size_t i = 0; i < text.size(); ++i) {
        if (!is_reserved(text[i]))
            continue;
        oru::strbuf_append(out, text.substr(run, i - run));
        append_escape(out, text[i]);
        run = i + 1;
    }
    oru::strbuf_append(out, text.substr(run));
}

std::string_view counted(const char *str, int32_t len) {
    return {str, len > 0 ? static_cast<size_t>(len) : 0};
}

}  // namespace

void oru::uri_unescape(std::string_view text, ORUDoStrbuf &out) {
    size_t run = 0;
    for (size_t i = 0; i + kEscapeSize <= text.size();) {
        if (text[i] != '%') {
            ++i;
            continue;
        }
        oru::strbuf_append(out, text.substr(run, i - run));
        append_unescaped(out, text[i + 1], text[i + 2]);
        i += kEscapeSize;
        run = i;
    }
    oru::strbuf_append(out, text.substr(run));
}

int32_t oru_do_uri_escape_str(const char *str, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(str);
    ORU_REQUIRE(strbuf);
    escape(str, *strbuf);
    return oru_do_strbuf_get_err(strbuf);
}

int32_t oru_do_uri_escape_str_l(const char *str, int32_t len, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(str);
    ORU_REQUIRE(strbuf);
    escape(counted(str, len), *strbuf);
    return oru_do_strbuf_get_err(strbuf);
}

int32_t oru_do_uri_unescape_str(const char *str, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(str);
    ORU_REQUIRE(strbuf);
    oru::uri_unescape(str, *strbuf);
    return oru_do_strbuf_get_err(strbuf);
}

int32_t oru_do_uri_unescape_str_l(const char *str, int32_t len, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(str);
    ORU_REQUIRE(strbuf);
    oru::uri_unescape(counted(str, len), *strbuf);
    return oru_do_strbuf_get_err(strbuf);
}
