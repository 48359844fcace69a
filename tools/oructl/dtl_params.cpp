#include "dtl_params.h"

#include <algorithm>

#include "dtl_document.h"

namespace oructl {
namespace {

// Those that references are read by, which the library gives itself.
bool is_reserved(std::string_view name) {
    return name.starts_with("_PARENT_URI_") || name.starts_with("_PEER_URI_") ||
           name.starts_with("_URI_PARENT_");
}

// A variable is a text of its own, the value of a key in an address, or a text in an expression;
// a doubled sign begins none.
void add_params(std::string_view text, std::vector<std::string> &names) {
    for (size_t at = text.find('$'); at != std::string_view::npos; at = text.find('$', at + 1)) {
        const bool begins = at == 0 || text[at - 1] == '=' || text[at - 1] == '"';
        const std::string name(text.substr(at + 1, text.find_first_of(";/?\"", at) - at - 1));
        if (begins && !name.empty() && name[0] != '$' && !is_reserved(name) &&
            std::ranges::find(names, name) == names.end())
            names.push_back(name);
    }
}

std::string stripped(const std::string &text) {
    const size_t first = text.find_first_not_of(" \t\n\r");
    const size_t last = text.find_last_not_of(" \t\n\r");
    return first == std::string::npos ? "" : text.substr(first, last + 1 - first);
}

void collect(const xmlNode *element, std::vector<std::string> &names) {
    for (const xmlAttr *attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        std::string text;
        read_attribute(element, name_of(reinterpret_cast<const xmlNode *>(attribute)), text);
        add_params(text, names);
    }
    std::string text;
    for (const xmlNode *child = element->children; child != nullptr; child = child->next) {
        const bool is_text = child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE;
        if (is_text && child->content != nullptr)
            text += reinterpret_cast<const char *>(child->content);
    }
    add_params(stripped(text), names);
    for (const xmlNode *child = element_from(element->children); child != nullptr;
         child = element_from(child->next))
        collect(child, names);
}

}  // namespace

std::vector<std::string> params_of(const xmlNode *element) {
    std::vector<std::string> names;
    collect(element, names);
    return names;
}

}  // namespace oructl
