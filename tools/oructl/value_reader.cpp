#include "value_reader.h"

#include <algorithm>
#include <string_view>

#include "addresses.h"
#include "database.h"
#include "dtl_document.h"
#include "fault_words.h"
#include "model_words.h"
#include "secrets.h"
#include "time_text.h"

namespace oructl {
namespace {

constexpr size_t npos = std::string_view::npos;

bool is_integer(int32_t type) {
    return type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_LONG;
}

// Numbers are cut to the width of their type without a word.
bool is_cut(const std::string &text, ORUDoValue *value) {
    std::string digits = text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
    const bool is_negative = digits.starts_with('-');
    if (digits.starts_with('+') || is_negative)
        digits.erase(0, 1);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    const std::string plain = digits.empty() ? "0" : (is_negative ? "-" : "") + digits;
    return plain != written([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf(value, 0, buf); });
}

// As it stands on the wire.
Value read_wire(const std::string &name, const std::string &json) {
    if (const std::string fault = value_fault(json, false); !fault.empty())
        throw Failure(name + ": " + in_quotes(json) + ": " + fault);
    // what ends a number has to be seen
    const std::string text = json + "\n";
    ORUDoError *error = nullptr;
    Value value(oru_do_value_from_json(text.c_str(), static_cast<int32_t>(text.size()), &error));
    const Error held(error);
    if (value == nullptr)
        throw Failure(name + ": " + in_quotes(json) + " is no value");
    return value;
}

}  // namespace

ValueReader::ValueReader(ORUDoPropMeta *meta)
    : meta_(meta),
      name_(text_of(oru_do_prop_meta_get_name(meta))),
      type_(value_type_of(meta)),
      is_many_(oru_do_prop_meta_get_multiplicity(meta) == ORU_MULTIPLICITY_MANY) {}

Value ValueReader::read(const std::string &text) const try {
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

Value ValueReader::read_text_of_key(const std::string &text) const {
    const bool is_digits = text.find_first_not_of("0123456789abcdefABCDEF") == npos;
    if (type_ != ORU_DO_TYPE_IP_ADDRESS || !is_digits)
        return read_text(text);
    int32_t status = ORU_OK;
    const Value bytes(oru_do_value_new_from_string(text.c_str(), ORU_DO_TYPE_HEX_BINARY, &status));
    int32_t length = 0;
    const uint8_t *data =
        bytes != nullptr ? oru_do_value_get_hex_binary(bytes.get(), &length, &status) : nullptr;
    if (data == nullptr || (length != 4 && length != 5 && length != 16 && length != 17))
        fail(text, oru_do_get_typestr_by_typecode(type_));
    return made<Value>(oru_do_value_new_ip_address(data, length));
}

bool ValueReader::is_secret() const {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta_);
    return type != nullptr &&
           secrecy_of_type(text_of(oru_do_typedef_meta_get_name(type))) != Secret::none;
}

void ValueReader::fail(const std::string &text, const std::string &expected) const {
    const std::string type = type_words(meta_);
    throw Failure(name_ + " takes " + expected + (type == expected ? "" : " (" + type + ")") +
                  ", not " + in_quotes(text));
}

Value ValueReader::read_text(const std::string &text) const {
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

Value ValueReader::read_time_text(const std::string &text) const {
    Value value = read_time(text, type_);
    if (value == nullptr)
        fail(text, time_example(type_));
    return value;
}

std::string ValueReader::bounds() const {
    if (oru_do_is_signed_int_num_type(type_) != 0)
        return std::to_string(oru_do_constraint_get_min_signed_int_num(type_)) + " to " +
               std::to_string(oru_do_constraint_get_max_signed_int_num(type_));
    return "0 to " + std::to_string(oru_do_constraint_get_max_unsigned_int_num(type_));
}

Value ValueReader::read_json(const std::string &text) const {
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

Value ValueReader::read_array(const std::string &text, const JsonNode &array) const {
    const auto list = made<ValueList>(oru_do_vlist_new());
    for (const JsonNode *node = array.first; node != nullptr; node = node->next) {
        const Value element = read_node(text, *node);
        oru_do_vlist_add(list.get(), element.get());
    }
    return made<Value>(oru_do_value_new_array(list.get()));
}

Value ValueReader::read_node(const std::string &text, const JsonNode &node) const {
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

bool ValueReader::is_members(const JsonNode &node) const {
    const bool has_tag = node.first != nullptr &&
                         (node.first->key.starts_with('%') || node.first->key.starts_with('_'));
    return node.kind == JsonNode::kObject && !has_tag &&
           (type_ == ORU_DO_TYPE_SEQUENCE || type_ == ORU_DO_TYPE_CHOICE);
}

Value read_free_value(const std::string &name, const std::string &text) {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos ||
        (!is_json(text) && std::string_view("{[\"").find(text[0]) == std::string_view::npos))
        return made<Value>(oru_do_value_new_string(text.c_str()));
    return read_wire(name, text);
}

}  // namespace oructl
