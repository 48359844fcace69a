#include "text.h"

namespace behaviour {
namespace {

const std::string &location() {
    static const std::string text = oru_get_default_root_uri_str();
    return text;
}

std::string quoted(const std::string &text) {
    std::string result = "\"";
    for (const char c : text)
        result += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
    return result + '"';
}

// Texts that would read as something else, or as several words, stand between quotes.
std::string text_of_string(const std::string &text) {
    const bool is_plain =
        !text.empty() && text != "-" && text.find_first_of(" \t\n\"\\(),[]{}") == std::string::npos;
    return is_plain ? text : quoted(text);
}

std::string text_of_list(ORUDoVlist *list, bool with_types) {
    std::string text;
    EachValue each(list);
    while (ORUDoValue *element = each())
        text += (text.empty() ? "" : ", ") + text_of(element, with_types);
    return "[" + text + "]";
}

std::string text_of_members(ORUDoNvlist *members, bool with_types) {
    std::string text;
    EachItem each(members);
    while (ORUDoNvlistItem *item = each())
        text += (text.empty() ? "" : " ") + std::string(oru_do_nvlist_item_get_name(item)) + "=" +
                text_of(oru_do_nvlist_item_get_value(item), with_types);
    return "{" + text + "}";
}

std::string text_of_payload(ORUDoValue *value, bool with_types) {
    int32_t status = ORU_OK;
    switch (oru_do_value_get_type(value)) {
        case ORU_DO_TYPE_ARRAY:
            return text_of_list(oru_do_value_get_array(value, &status), with_types);
        case ORU_DO_TYPE_BITS:
            return text_of_list(oru_do_value_get_bits(value, &status), false);
        case ORU_DO_TYPE_SEQUENCE:
            return text_of_members(oru_do_value_get_sequence(value, &status), with_types);
        case ORU_DO_TYPE_CHOICE:
            return "choice" + text_of_members(oru_do_value_get_choice(value, &status), with_types);
        default:
            return text_of_string(without_location(
                written([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf(value, 0, buf); })));
    }
}

// "TYPE:", or "TYPE(DERIVED):".
std::string type_in_front(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    const std::string derived = text_or_empty(oru_do_value_get_typedef_name(value));
    if (type == ORU_DO_TYPE_ARRAY)
        return {};
    return text_or_empty(oru_do_get_typestr_by_typecode(type)) +
           (derived.empty() ? "" : "(" + derived + ")") + ":";
}

void add_faults(ORUDoError *error, Lines &lines) {
    const std::string words = without_location(text_or_empty(oru_do_error_get_msg(error)));
    ORUDoPropErrs *const of_attributes = oru_do_error_get_prop_errs(error);
    if (of_attributes == nullptr) {
        lines.push_back(std::to_string(oru_do_error_get_code(error)) + " " + words);
        return;
    }
    EachPropErr each(of_attributes);
    while (ORUDoPropErr *entry = each()) {
        ORUDoError *const fault = oru_do_prop_err_get_err(entry);
        lines.push_back(std::to_string(oru_do_error_get_code(fault)) + " " + words + " " +
                        oru_do_name_get_strname(oru_do_prop_err_get_name(entry)) + ": " +
                        without_location(text_or_empty(oru_do_error_get_msg(fault))));
    }
}

}  // namespace

std::string full_address(const std::string &address) {
    if (address.starts_with('~'))
        return address.substr(1);
    if (address.starts_with("//") || !address.starts_with('/'))
        return address;
    return location() + (address == "/" || address[1] == '?' ? address.substr(1) : address);
}

std::string without_location(std::string text) {
    for (size_t at = 0; (at = text.find(location(), at)) != std::string::npos;) {
        text.erase(at, location().size());
        if (at == text.size() || text[at] != '/')
            text.insert(at, "/");
    }
    return text;
}

std::string text_of(ORUDoValue *value, bool with_types) {
    if (value == nullptr || oru_do_value_is_null(value) != 0)
        return "-";
    const std::string text =
        (with_types ? type_in_front(value) : "") + text_of_payload(value, with_types);
    return oru_do_value_is_default(value) != 0 ? "(" + text + ")" : text;
}

std::string text_of_code(int32_t code) {
    return std::to_string(code) + " " + oru_do_get_err_msg(code);
}

Lines text_of_error(ORUDoError *error) {
    Lines lines = {std::to_string(oru_do_error_get_code(error)) + " " +
                   without_location(text_or_empty(oru_do_error_get_msg(error)))};
    for (ORUDoError *at = oru_do_error_get_cause(error); at != nullptr;
         at = oru_do_error_get_cause(at))
        add_faults(at, lines);
    return lines;
}

}  // namespace behaviour
