#include "assignments.h"

#include <algorithm>

#include "database.h"
#include "fault_words.h"
#include "model_words.h"
#include "terminal_text.h"
#include "value_reader.h"

namespace oructl {
namespace {

std::string text_of_value(ORUDoValue *value) {
    return written([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf(value, 0, buf); });
}

ORUDoPropMeta *find(const ORUMdMrMeta &mr, const std::string &name) {
    const std::vector<std::string> known = attributes_of(mr);
    if (std::ranges::find(known, name) == known.end())
        throw Failure(qualified_name(mr) + " has no attribute " + in_quotes(name) +
                      similar_question(name, known));
    return oru_do_mr_meta_get_prop_meta_str(mr.do_mr_meta, name.c_str());
}

std::string key_text(ORUDoValue *value) {
    return written([&](ORUDoStrbuf *buf) { oru_do_uri_value_to_keystr(value, buf); });
}

}  // namespace

std::pair<std::string, std::string> split_assignment(const std::string &text) {
    const size_t equal = text.find('=');
    if (equal == std::string::npos || equal == 0)
        throw Failure(in_quotes(text) + " is no NAME=VALUE");
    if (!is_utf8(text))
        throw Failure(in_quotes(text.substr(0, equal)) + ": no UTF-8");
    return {text.substr(0, equal), text.substr(equal + 1)};
}

std::vector<std::string> attributes_of(const ORUMdMrMeta &mr) {
    std::vector<std::string> names;
    for (ORUMdAttrMeta *list : {mr.primary_keys, mr.secondary_keys, mr.cd_attrs, mr.od_attrs}) {
        for (const ORUMdAttrMeta &attribute : records(list))
            names.push_back(text_of(attribute.name));
    }
    for (const ORUMdRefMeta &ref : records(mr.refs)) {
        if (oru_do_prop_meta_get_ref_role(ref.prop_meta) == ORU_REF_PEER)
            names.push_back(text_of(ref.name));
    }
    return names;
}

Properties read_assignments(ORUMdMrMeta &mr, const std::vector<std::string> &texts,
                            const std::vector<std::string> &unset) {
    auto props = made<Properties>(oru_do_properties_new());
    std::vector<std::string> given;
    const auto set = [&](const std::string &name, Value value) {
        if (std::ranges::find(given, name) != given.end())
            throw Failure(name + " is given twice");
        given.push_back(name);
        oru_do_properties_set_value(props.get(), name.c_str(), value.get());
    };
    for (const std::string &text : texts) {
        const auto [name, value] = split_assignment(text);
        set(name, ValueReader(find(mr, name)).read(value));
    }
    for (const std::string &name : unset) {
        find(mr, name);
        set(name, made<Value>(oru_do_value_new_null()));
    }
    return props;
}

void add_keys(const ORUMdMrMeta &mr, const Address &address, ORUDoProperties *props) {
    for (const ORUMdAttrMeta &key : records(mr.primary_keys)) {
        const std::string name = text_of(key.name);
        const auto text = std::ranges::find(address.keys, name, &KeyText::name);
        if (text == address.keys.end())
            throw Failure(in_quotes(address.path) + " is no address of " + qualified_name(mr) +
                          ": it has no key " + in_quotes(name));
        const Value value = ValueReader(key.prop_meta).read_text_of_key(text->value);
        ORUDoValue *const given = oru_do_properties_get_value(props, name.c_str());
        if (given == nullptr || oru_do_value_is_null(given) != 0)
            oru_do_properties_set_value(props, name.c_str(), value.get());
        else if (key_text(given) != key_text(value.get()))
            throw Failure("the key " + in_quotes(name) + " is " + in_quotes(text->value) +
                          " in the address and " + in_quotes(text_of_value(given)) +
                          " among the attributes");
    }
}

}  // namespace oructl
