#include "value_text.h"

#include <string_view>

#include "addresses.h"
#include "handles.h"
#include "output_text.h"
#include "terminal_text.h"
#include "time_text.h"

namespace oructl {
namespace {

// `[a, b]`, each element by `text_of_one`.
std::string list_text(ORUDoVlist *list, std::string_view between,
                      std::string (*text_of_one)(ORUDoValue *)) {
    std::string text;
    for (EachValue each(list); ORUDoValue *element = each();)
        text += std::string(text.empty() ? "" : between) + text_of_one(element);
    return "[" + text + "]";
}

ORUDoNvlist *members_of(ORUDoValue *value) {
    int32_t status = ORU_OK;
    return oru_do_value_get_type(value) == ORU_DO_TYPE_CHOICE
               ? oru_do_value_get_choice(value, &status)
               : oru_do_value_get_sequence(value, &status);
}

std::string members_text(ORUDoValue *value) {
    std::string text;
    for (EachItem each(members_of(value)); ORUDoNvlistItem *item = each();)
        text += (text.empty() ? "" : ", ") + std::string(oru_do_nvlist_item_get_name(item)) +
                " : " + cell_text(oru_do_nvlist_item_get_value(item));
    return "{" + text + "}";
}

std::string members_words(ORUDoValue *value) {
    std::string text;
    for (EachItem each(members_of(value)); ORUDoNvlistItem *item = each();)
        text += (text.empty() ? "\"" : ",\"") + json_escaped(oru_do_nvlist_item_get_name(item)) +
                "\":" + value_words(oru_do_nvlist_item_get_value(item));
    return "{" + text + "}";
}

// What is not cut into lines yet.
std::string plain_text(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    int32_t status = ORU_OK;
    if (is_time_type(type))
        return time_text(value);
    switch (type) {
        case ORU_DO_TYPE_ARRAY:
            return list_text(oru_do_value_get_array(value, &status), ", ", cell_text);
        case ORU_DO_TYPE_BITS:
            return list_text(oru_do_value_get_bits(value, &status), ", ", cell_text);
        case ORU_DO_TYPE_SEQUENCE:
        case ORU_DO_TYPE_CHOICE:
            return members_text(value);
        case ORU_DO_TYPE_STRING:
            return oru_do_value_get_string(value, &status);
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return without_location(oru_do_uri_get_uri_str(oru_do_value_get_uri(value)));
        default:
            return written([&](ORUDoStrbuf *buf) {
                oru_do_value_to_strbuf_opt(value, 0, buf, ORU_DO_OPT_HIDE_SECRETS);
            });
    }
}

}  // namespace

std::string cell_text(ORUDoValue *value) {
    if (value == nullptr || oru_do_value_is_null(value) != 0)
        return "-";
    std::string text = plain_text(value);
    // with escapes in it a text stands as it does in JSON
    if (shown_in_line(text) != text)
        text = shown_in_line(json_escaped(text));
    if (text.empty())
        text = "\"\"";
    return oru_do_value_is_default(value) != 0 ? text + "  (default)" : text;
}

std::string value_words(ORUDoValue *value) {
    if (value == nullptr)
        return "null";
    const int32_t type = oru_do_value_get_type(value);
    int32_t status = ORU_OK;
    if (is_time_type(type))
        return time_text(value);
    if (type == ORU_DO_TYPE_ARRAY)
        return list_text(oru_do_value_get_array(value, &status), ",", value_words);
    if (type == ORU_DO_TYPE_BITS)
        return list_text(oru_do_value_get_bits(value, &status), ",", value_words);
    if (oru_do_is_complex_type(type) != 0)
        return members_words(value);
    return written([&](ORUDoStrbuf *buf) { oru_do_value_to_compact_json(value, buf); });
}

}  // namespace oructl
