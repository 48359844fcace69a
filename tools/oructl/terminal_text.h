// What is printed. Texts come from files, databases and command lines of others, and a terminal
// obeys some characters: all that is no letter stands as an escape.
#ifndef ORU_TOOLS_ORUCTL_TERMINAL_TEXT_H
#define ORU_TOOLS_ORUCTL_TERMINAL_TEXT_H

#include <string>
#include <string_view>

namespace oructl {

// Whether a text is UTF-8.
bool is_utf8(std::string_view text);

// A text without control characters but line feeds and tabs, and without those that turn the
// direction of writing: "\u001b" stands for them, as it may in JSON, and "\x9b" for a byte that is
// no UTF-8.
std::string shown(std::string_view text);

// The same for a piece of a line.
std::string shown_in_line(std::string_view text);

// The same for XML, with "&#x9b;".
std::string shown_in_xml(std::string_view text);

// Prints to standard output, and a line to standard error.
[[gnu::format(printf, 1, 2)]] void put(const char *format, ...);
void tell(std::string_view line);

}  // namespace oructl

#endif
