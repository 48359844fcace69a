#include "assignments.h"

#include <algorithm>

#include "database.h"
#include "dtl_document.h"
#include "fault_words.h"
#include "json_tree.h"
#include "model_words.h"
#include "terminal_text.h"
#include "time_text.h"

namespace oructl {
namespace {

int32_t type_of(ORUDoPropMeta *meta) {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta);
    if (oru_do_prop_meta_get_category(meta) == ORU_PROP_REF)
        return ORU_DO_TYPE_MR_URI;
    if (type == nullptr)
        return oru_do_prop_meta_get_typecode(meta);
    switch (oru_do_typedef_meta_get_category(type)) {
        case ORU_TYPEDEF_ENUM:
            return ORU_DO_TYPE_ENUMERATION;
        case ORU_TYPEDEF_SEQUENCE:
            return ORU_DO_TYPE_SEQUENCE;
        case ORU_TYPEDEF_CHOICE:
            return ORU_DO_TYPE_CHOICE;
        default:
            return oru_do_typedef_meta_get_simple_type(type);
    }
}

bool is_integer(int32_t type) {
    return type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_LONG;
}

std::string text_of_value(ORUDoValue *value) {
    return written([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf(value, 0, buf); });
}

// Numbers are cut to the width of their type without a word.
bool is_cut(const std::string &text, ORUDoValue *value) {
    std::string digits = text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
    const bool is_negative = digits.starts_with('-');
    if (digits.starts_with('+') || is_negative)
        digits.erase(0, 1);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    const std::string plain = digits.empty() ? "0" : (is_negative ? "-" : "") + digits;
    return plain != text_of_value(value);
}

// One attribute and its values.
class Reader {
  public:
    explicit Reader(ORUDoPropMeta *meta)
        : meta_(meta),
          name_(text_of(oru_do_prop_meta_get_name(meta))),
          type_(type_of(meta)),
          is_many_(oru_do_prop_meta_get_multiplicity(meta) == ORU_MULTIPLICITY_MANY) {}

    Value read(const std::string &text) const try {
        const bool is_json = !text.empty() && std::string_view("{[\"").find(text[0]) != npos;
        if (is_json)
            return read_json(text);
        if (is_many_)
            fail(text, "an array: [\"...\",...]");
        return read_text(text);
    } catch (const Failure &) {
        if (!is_secret())
            throw;
        throw Failure(name_ + " takes " + type_words(meta_) + ", not what was given");
    }

    // Bytes stand in addresses as pairs of digits.
    Value read_text_of_key(const std::string &text) const {
        const bool is_digits = text.find_first_not_of("0123456789abcdefABCDEF") == npos;
        if (type_ != ORU_DO_TYPE_IP_ADDRESS || !is_digits)
            return read_text(text);
        int32_t status = ORU_OK;
        const Value bytes(
            oru_do_value_new_from_string(text.c_str(), ORU_DO_TYPE_HEX_BINARY, &status));
        int32_t length = 0;
        const uint8_t *data =
            bytes != nullptr ? oru_do_value_get_hex_binary(bytes.get(), &length, &status) : nullptr;
        if (data == nullptr || (length != 4 && length != 5 && length != 16 && length != 17))
            fail(text, oru_do_get_typestr_by_typecode(type_));
        return made<Value>(oru_do_value_new_ip_address(data, length));
    }

  private:
    static constexpr size_t npos = std::string_view::npos;

    // Nothing of a secret is printed.
    bool is_secret() const {
        ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta_);
        const std::string type_name =
            type != nullptr ? text_of(oru_do_typedef_meta_get_name(type)) : "";
        return type_name.starts_with("PasswordString") || type_name.starts_with("EncryptedString");
    }

    [[noreturn]] void fail(const std::string &text, const std::string &expected) const {
        const std::string type = type_words(meta_);
        throw Failure(name_ + " takes " + expected + (type == expected ? "" : " (" + type + ")") +
                      ", not " + in_quotes(text));
    }

    Value read_text(const std::string &text) const {
        if (type_ == ORU_DO_TYPE_SEQUENCE || type_ == ORU_DO_TYPE_CHOICE)
            fail(text, "members: {\"NAME\":...}");
        if (type_ == ORU_DO_TYPE_MR_URI)
            read_address(text);
        if (is_time_type(type_))
            return read_time_text(text);
        int32_t status = ORU_OK;
        Value value(oru_do_value_new_from_string(text.c_str(), type_, &status));
        if (value == nullptr || status != ORU_OK)
            fail(text, oru_do_get_typestr_by_typecode(type_));
        if (is_integer(type_) && is_cut(text, value.get()))
            fail(text, "a number from " + bounds());
        return value;
    }

    Value read_time_text(const std::string &text) const {
        Value value = read_time(text, type_);
        if (value == nullptr)
            fail(text, time_example(type_));
        return value;
    }

    std::string bounds() const {
        if (oru_do_is_signed_int_num_type(type_) != 0)
            return std::to_string(oru_do_constraint_get_min_signed_int_num(type_)) + " to " +
                   std::to_string(oru_do_constraint_get_max_signed_int_num(type_));
        return "0 to " + std::to_string(oru_do_constraint_get_max_unsigned_int_num(type_));
    }

    Value read_json(const std::string &text) const {
        const SourceText source("", text);
        const JsonTree tree(source);
        if (tree.fault())
            throw Failure(name_ + ": " + in_quotes(text) + ": " + tree.fault()->words);
        if (tree.documents().size() != 1)
            throw Failure(name_ + ": " + in_quotes(text) + ": one value is wanted");
        const JsonNode &node = *tree.documents().front();
        if (node.kind == JsonNode::kArray && is_many_)
            return read_array(text, node);
        return read_node(text, node);
    }

    Value read_array(const std::string &text, const JsonNode &array) const {
        const auto list = made<ValueList>(oru_do_vlist_new());
        for (const JsonNode *node = array.first; node != nullptr; node = node->next) {
            const Value element = read_node(text, *node);
            oru_do_vlist_add(list.get(), element.get());
        }
        return made<Value>(oru_do_value_new_array(list.get()));
    }

    // Texts and numbers are read as on the command line, the rest as it stands on the wire.
    Value read_node(const std::string &text, const JsonNode &node) const {
        if (node.kind == JsonNode::kText && node.text.find('\0') != npos)
            throw Failure(name_ + ": \\u0000, at which a text ends");
        if (node.kind == JsonNode::kText || node.kind == JsonNode::kNumber)
            return read_text(std::string(node.text));
        std::string json = text.substr(node.begin, node.end - node.begin);
        if (node.kind == JsonNode::kBoolean)
            return read_text(json);
        if (is_members(node))
            json = (type_ == ORU_DO_TYPE_CHOICE ? "{\"%choice\":" : "{\"%sequence\":") + json + "}";
        return read_wire(name_, json);
    }

    bool is_members(const JsonNode &node) const {
        const bool has_tag = node.first != nullptr &&
                             (node.first->key.starts_with('%') || node.first->key.starts_with('_'));
        return node.kind == JsonNode::kObject && !has_tag &&
               (type_ == ORU_DO_TYPE_SEQUENCE || type_ == ORU_DO_TYPE_CHOICE);
    }

  public:
    static Value read_wire(const std::string &name, const std::string &json) {
        if (const std::string fault = value_fault(json, false); !fault.empty())
            throw Failure(name + ": " + in_quotes(json) + ": " + fault);
        // what ends a number has to be seen
        const std::string text = json + "\n";
        ORUDoError *error = nullptr;
        Value value(
            oru_do_value_from_json(text.c_str(), static_cast<int32_t>(text.size()), &error));
        const Error held(error);
        if (value == nullptr)
            throw Failure(name + ": " + in_quotes(json) + " is no value");
        return value;
    }

  private:
    ORUDoPropMeta *meta_;
    std::string name_;
    int32_t type_;
    bool is_many_;
};

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
        set(name, Reader(find(mr, name)).read(value));
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
        const Value value = Reader(key.prop_meta).read_text_of_key(text->value);
        ORUDoValue *const given = oru_do_properties_get_value(props, name.c_str());
        if (given == nullptr || oru_do_value_is_null(given) != 0)
            oru_do_properties_set_value(props, name.c_str(), value.get());
        else if (key_text(given) != key_text(value.get()))
            throw Failure("the key " + in_quotes(name) + " is " + in_quotes(text->value) +
                          " in the address and " + in_quotes(text_of_value(given)) +
                          " among the attributes");
    }
}

Value read_free_value(const std::string &name, const std::string &text) {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos ||
        (!is_json(text) && std::string_view("{[\"").find(text[0]) == std::string_view::npos))
        return made<Value>(oru_do_value_new_string(text.c_str()));
    return Reader::read_wire(name, text);
}

}  // namespace oructl
