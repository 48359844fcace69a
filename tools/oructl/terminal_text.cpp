#include "terminal_text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace oructl {
namespace {

struct Character {
    uint32_t code = 0;
    size_t size = 0;  // in bytes; 0 for what is no UTF-8
};

Character character_at(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80)
        return {lead, 1};
    const size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() - at < size)
        return {};
    uint32_t code = lead & (0x7Fu >> size);
    for (size_t i = at + 1; i < at + size; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {};
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kLeast[size] || code > 0x10FFFF || is_surrogate ? Character{}
                                                                  : Character{code, size};
}

bool is_obeyed(uint32_t code) {
    const bool is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool ends_line = code == 0x2028 || code == 0x2029;
    const bool turns = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                       (code >= 0x2066 && code <= 0x2069);
    return is_control || ends_line || turns;
}

struct Escapes {
    const char *character;
    bool in_line;  // line feeds and tabs, too
};

std::string escaped(std::string_view text, Escapes escapes) {
    std::string out;
    out.reserve(text.size());
    char escape[16];
    for (size_t at = 0; at < text.size();) {
        const auto [code, size] = character_at(text, at);
        const bool stays =
            size != 0 && (!is_obeyed(code) || (!escapes.in_line && (code == '\n' || code == '\t')));
        if (stays) {
            out.append(text, at, size);
        } else if (size == 0) {
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[at]));
            out += escape;
        } else {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            std::snprintf(escape, sizeof escape, escapes.character, code);
#pragma GCC diagnostic pop
            out += escape;
        }
        at += std::max<size_t>(size, 1);
    }
    return out;
}

}  // namespace

bool is_utf8(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const size_t size = character_at(text, at).size;
        if (size == 0)
            return false;
        at += size;
    }
    return true;
}

std::string shown(std::string_view text) {
    return escaped(text, {"\\u%04x", false});
}

std::string shown_in_line(std::string_view text) {
    return escaped(text, {"\\u%04x", true});
}

std::string shown_in_xml(std::string_view text) {
    return escaped(text, {"&#x%x;", false});
}

void put(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char *text = nullptr;
    const int size = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (size < 0)
        throw std::bad_alloc();
    std::fputs(shown({text, static_cast<size_t>(size)}).c_str(), stdout);
    std::free(text);
}

void tell(std::string_view line) {
    std::fprintf(stderr, "%s\n", shown_in_line(line).c_str());
}

}  // namespace oructl
