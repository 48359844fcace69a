#include "output_text.h"

#include <algorithm>

#include "database.h"
#include "json_tree.h"
#include "terminal_text.h"
#include "xml_text.h"

namespace oructl {

std::string json_escaped(const std::string &text) {
    std::string out;
    for (const char c : text) {
        constexpr char kDigits[] = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out += '\\';
        if (code < 0x20) {
            out += "\\u00";
            out += kDigits[code >> 4];
            out += kDigits[code & 15];
        } else {
            out += c;
        }
    }
    return out;
}

std::string checked_json(std::string text) {
    if (!is_json(text))
        throw Failure("no JSON comes of it: names and addresses are written as they stand");
    return text + "\n";
}

std::string checked_xml(std::string text) {
    text.erase(0, std::min(text.find('<'), text.size()));
    const size_t head = text.find_first_of(" >/", 1);
    if (text.find("xsi:null=") != std::string::npos && head != std::string::npos)
        text.insert(head, " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
    if (const std::string fault = xml_fault(text); !fault.empty())
        throw Failure("no XML comes of it: " + fault);
    return shown_in_xml(text) + (text.ends_with('\n') ? "" : "\n");
}

}  // namespace oructl
