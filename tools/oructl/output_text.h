// Texts on their way into JSON and XML.
#ifndef ORU_TOOLS_ORUCTL_OUTPUT_TEXT_H
#define ORU_TOOLS_ORUCTL_OUTPUT_TEXT_H

#include <string>

namespace oructl {

// A text as it stands between the quotes of JSON.
std::string json_escaped(const std::string &text);

// A document with a line feed behind it. Throws `Failure` when it is none: the library writes some
// texts as they stand.
std::string checked_json(std::string text);
std::string checked_xml(std::string text);

}  // namespace oructl

#endif
