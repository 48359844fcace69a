#include "dtl_attributes.h"

#include <algorithm>
#include <charconv>

#include "fault_words.h"

namespace oructl {
namespace {

using Words = std::vector<std::string>;

const Words kReading{"op",
                     "mr",
                     "batch-size",
                     "max-batches",
                     "return-default",
                     "return",
                     "flatten",
                     "return-w-child",
                     "order",
                     "attr-select",
                     "continue-on-error"};

Words names_in(DtlRole role) {
    Words names;
    switch (role) {
        case DtlRole::resource:
            names = kReading;
            names.emplace_back("uri");
            break;
        case DtlRole::reference:
            names = kReading;
            names.emplace_back("prop");
            break;
        case DtlRole::attribute:
            names = {"prop", "default", "order"};
            break;
        case DtlRole::unmatched:
            names = {"prop", "default"};
            break;
        case DtlRole::where:
            names = {"use-once"};
            break;
        case DtlRole::condition:
            names = {"op"};
            break;
        default:
            break;
    }
    return names;
}

std::string fault_of_word(const std::string &name, const std::string &word, const Words &known) {
    if (std::ranges::find(known, word) != known.end())
        return "";
    std::string list;
    for (const std::string &other : known)
        list += (list.empty() ? "" : ", ") + other;
    return name + "=" + in_quotes(word) + " is not known; known are: " + list;
}

std::string fault_of_count(const std::string &name, const std::string &text) {
    int32_t number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (text.starts_with('$') || (failure == std::errc() && stop == end && number >= 0))
        return "";
    return name + "=" + in_quotes(text) + " is neither a number nor a $parameter";
}

bool is_variable(const std::string &text) {
    return text.starts_with('$') || text.starts_with('@');
}

std::string fault_of_op(const std::string &word, DtlRole role) {
    if (role == DtlRole::condition) {
        // Other words reach the back end; these do not.
        const bool dropped = word.size() == 2 && (word[0] == 'g' || word[0] == 'l');
        return dropped ? fault_of_word("op", word, {"eq", "ne", "lt", "le", "gt", "ge"}) : "";
    }
    Words known{"get", "get-all", "get-all-cfg", "get-all-oper", "action"};
    if (role == DtlRole::resource)
        known.insert(known.end(), {"get-all-r", "get-all-cfg-r", "get-all-oper-r"});
    return fault_of_word("op", word, known);
}

std::string fault_of(const std::string &name, const std::string &text, DtlRole role) {
    if (name == "op")
        return fault_of_op(text, role);
    if (name == "batch-size" || name == "max-batches")
        return fault_of_count(name, text);
    if (name == "return")
        return fault_of_word(name, text, {"one", "last"});
    if (name == "order" && role == DtlRole::attribute)
        return fault_of_word(name, text, {"asc", "desc", "snmp"});
    if (name == "return-default" || name == "return-w-child" || name == "continue-on-error" ||
        name == "flatten" || name == "use-once")
        return fault_of_word(name, text, {"true", "false"});
    const bool is_value = name == "default" || name == "attr-select";
    if (!is_value || is_variable(text))
        return "";
    const std::string fault = value_fault(text, true);
    return fault.empty() ? "" : name + ": " + fault;
}

}  // namespace

std::vector<std::string> attribute_faults(const xmlNode *element, DtlRole role) {
    const Words known = names_in(role);
    Words faults;
    for (const xmlAttr *attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        const std::string name(name_of(reinterpret_cast<const xmlNode *>(attribute)));
        std::string text;
        read_attribute(element, name, text);
        if (std::ranges::find(known, name) == known.end())
            faults.push_back(in_quotes(name) + " is not read here" + similar_question(name, known));
        else if (const std::string fault = fault_of(name, text, role); !fault.empty())
            faults.push_back(fault);
    }
    return faults;
}

}  // namespace oructl
