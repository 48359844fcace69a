#include "query_params.h"

#include <map>

#include "assignments.h"
#include "database.h"
#include "fault_words.h"
#include "time_text.h"
#include "value_reader.h"

namespace oructl {
namespace {

// Parameters and the types of time that they are compared with.
using TimeTypes = std::map<std::string, int32_t, std::less<>>;

// A clause is an attribute, a blank and an operator, or a group of clauses.
void collect(ORUDoNvlist *clauses, ORUDoMrMeta *meta, TimeTypes &types) {
    for (EachItem each(clauses); ORUDoNvlistItem *item = each();) {
        ORUDoValue *const value = oru_do_nvlist_item_get_value(item);
        int32_t status = ORU_OK;
        if (oru_do_value_get_type(value) == ORU_DO_TYPE_SEQUENCE) {
            collect(oru_do_value_get_sequence(value, &status), meta, types);
            continue;
        }
        if (oru_do_value_get_type(value) != ORU_DO_TYPE_STRING)
            continue;
        const std::string_view text = view(oru_do_value_get_string(value, &status));
        const std::string_view clause = view(oru_do_nvlist_item_get_name(item));
        const std::string attribute(clause.substr(0, clause.find(' ')));
        ORUDoPropMeta *const prop = oru_do_mr_meta_get_prop_meta_str(meta, attribute.c_str());
        const int32_t type = prop != nullptr ? value_type_of(prop) : ORU_DO_TYPE_UNKNOWN;
        if (text.starts_with('$') && is_time_type(type))
            types.emplace(text.substr(1), type);
    }
}

void collect(const ORUDtlNode &above, TimeTypes &types) {
    for (const ORUDtlNode *node = above.first_child; node != nullptr; node = node->next) {
        const ORUDtlMrInfo *const info = node->mr_info;
        if (info != nullptr && info->mr_meta != nullptr)
            collect(info->where_clause, info->mr_meta, types);
        collect(*node, types);
    }
}

Value time_of(const std::string &name, ORUDoValue *value, int32_t type) {
    if (oru_do_value_get_type(value) != ORU_DO_TYPE_STRING &&
        oru_do_value_is_integer_number(value) == 0)
        return Value::share(value);
    const std::string text =
        written([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf(value, 0, buf); });
    Value time = read_time(text, type);
    if (!time)
        throw Failure("the parameter " + name + " takes " + time_example(type) + ", not " +
                      in_quotes(text));
    return time;
}

}  // namespace

NameValueList read_params(const std::vector<std::string> &texts) {
    auto params = made<NameValueList>(oru_do_nvlist_new());
    for (const std::string &text : texts) {
        const auto [name, value] = split_assignment(text);
        if (oru_do_nvlist_get_value(params.get(), name.c_str()) != nullptr)
            throw Failure("the parameter " + name + " is given twice");
        oru_do_nvlist_add(params.get(), name.c_str(), read_free_value(name, value).get());
    }
    return params;
}

NameValueList with_times(ORUDoNvlist *params, const ORUDtlNode &document) {
    TimeTypes types;
    collect(document, types);
    auto typed = made<NameValueList>(oru_do_nvlist_new());
    for (EachItem each(params); ORUDoNvlistItem *item = each();) {
        const std::string name = oru_do_nvlist_item_get_name(item);
        ORUDoValue *const value = oru_do_nvlist_item_get_value(item);
        const auto at = types.find(name);
        oru_do_nvlist_add(typed.get(), name.c_str(),
                          at != types.end() ? time_of(name, value, at->second).get() : value);
    }
    return typed;
}

}  // namespace oructl
