// References, addresses and what a row becomes.
#include <algorithm>

#include "tests/unit/dtl/plain_walk.h"

namespace oru::test {
namespace {

bool begins(const std::string &text, const std::string &with) {
    return text.compare(0, with.size(), with) == 0;
}

bool is_null(const FakeValue &value) {
    return std::holds_alternative<std::monostate>(value);
}

// The value of that name in a row; a null value counts as none.
std::optional<FakeValue> in_row(const Names &names, const Values &values, const std::string &name) {
    for (size_t i = 0; i < names.size() && i < values.size(); ++i) {
        if (names[i] == name)
            return is_null(values[i]) ? std::nullopt : std::optional(values[i]);
    }
    return std::nullopt;
}

std::optional<FakeValue> value_of(const PlainNode &node, const std::string &name) {
    if (const FakeValue *value = node.value(name))
        return *value;
    if (name == "_uri" && node.uri)
        return UriText{*node.uri};
    return std::nullopt;
}

std::optional<std::string> to_uri(const FakeValue &value) {
    if (const auto *text = std::get_if<std::string>(&value))
        return *text;
    if (const auto *uri = std::get_if<UriText>(&value))
        return uri->text;
    return std::nullopt;
}

std::vector<std::string> to_list(const std::vector<UriText> &uris) {
    std::vector<std::string> texts;
    for (const UriText &uri : uris)
        texts.push_back(uri.text);
    return texts;
}

}  // namespace

bool is_variable_text(const std::string &text) {
    return text.size() > 1 &&
           ((text[0] == '$' && text[1] != '$') || (text[0] == '@' && text[1] != '@'));
}

std::optional<FakeValue> PlainWalk::resolve(const std::string &text, const PlainNode *node) const {
    if (!is_variable_text(text))
        return std::nullopt;
    if (text[0] == '$') {
        const auto found = params_.find(text.substr(1));
        return found == params_.end() ? std::nullopt : std::optional(found->second);
    }
    if (text[1] != '(')
        return node != nullptr ? value_of(*node, text.substr(1)) : std::nullopt;
    const size_t end = std::min(text.find(')'), text.size());
    std::string path = text.substr(2, end - 2);
    const std::string suffix = end < text.size() ? text.substr(end + 1) : "";
    if (node == nullptr || !begins(path, "../"))
        return std::nullopt;
    path.erase(0, 3);
    for (; begins(path, "../"); path.erase(0, 3)) {
        node = node->parent;
        if (node == nullptr)
            return std::nullopt;
    }
    const auto value = value_of(*node, path);
    return !value || suffix.empty() ? value : std::optional<FakeValue>(show(*value) + suffix);
}

std::optional<FakeValue> PlainWalk::resolve_row(const std::string &text, const PlainNode &parent,
                                                const Names &names, const Values &values) const {
    if (begins(text, "@(./"))
        return in_row(names, values, text.substr(4, text.find(')') - 4));
    if (const auto value = resolve(text, &parent))
        return value;
    if (text[0] == '@' && text[1] != '(')
        return in_row(names, values, text.substr(1));
    return std::nullopt;
}

// A reference, a number or a text in quotes.
std::optional<FakeValue> PlainWalk::default_of(const DocNode &attr, const PlainNode &parent,
                                               const Names &names, const Values &values) const {
    const std::string &text = attr.default_expr;
    if (text.empty())
        return std::nullopt;
    if (is_variable_text(text))
        return resolve_row(text, parent, names, values);
    if (text[0] == '"')
        return text.substr(1, text.size() - 2);
    return int64_t{std::stol(text)};
}

void PlainWalk::fill(const Fetch &fetch, PlainNode &node, const std::string &uri,
                     const Names &names, const Values &values, bool with_ids) {
    const DocNode &ch = *fetch.ch;
    node.uri = uri;
    node.has_props = true;
    if (ch.op != 2 && ch.op != 10) {
        for (size_t i = 0; i < names.size() && i < values.size(); ++i)
            node.set(names[i], values[i]);
        return;
    }
    if (with_ids) {
        for (const char *id : {"_uri", "_mr"})
            node.set(id, in_row(names, values, id).value_or(FakeValue()));
    }
    for (const DocNode &c : ch.children) {
        if (c.type != 4 && c.type != 5 && c.type != 7 && (c.type != 13 || !c.children.empty()))
            continue;
        if (c.name == "_dtlChildIndex") {
            const FakeValue *last = fetch.parent->value("_dtlLastChildIndex");
            const int64_t *number = last != nullptr ? std::get_if<int64_t>(last) : nullptr;
            const int64_t index = (number != nullptr ? *number : 0) + 1;
            fetch.parent->set("_dtlLastChildIndex", index);
            node.set(c.name, index);
            continue;
        }
        auto value = in_row(names, values, c.name);
        if (!value)
            value = default_of(c, *fetch.parent, names, values);
        node.set(c.type == 7 ? "_PEER_URI_" + c.name : c.name, value.value_or(FakeValue()));
    }
}

std::optional<Names> PlainWalk::selection_of(const DocNode &ch, const PlainNode &parent) const {
    std::string text = ch.attr_select;
    if (text.empty())
        return std::nullopt;
    if (const auto value = resolve(text, &parent)) {
        if (const auto *replacement = std::get_if<std::string>(&*value))
            text = *replacement;
    }
    if (text.find_first_of("[\"0123456789") != 0)
        return std::nullopt;
    Names names;
    for (size_t at = text.find('"'); at != std::string::npos;) {
        const size_t end = text.find('"', at + 1);
        names.push_back(text.substr(at + 1, end - at - 1));
        at = text.find('"', end + 1);
    }
    return names;
}

std::optional<Names> PlainWalk::order_of(const DocNode &ch) const {
    std::optional<std::string> text;
    if (!ch.order_param.empty())
        text = ch.order_param;
    if (text && is_variable_text(*text)) {
        const auto value = resolve(*text, nullptr);
        const auto *string = value ? std::get_if<std::string>(&*value) : nullptr;
        text = string != nullptr ? std::optional(*string) : std::nullopt;
    }
    if (!text)
        return ch.order_by.empty() ? std::nullopt : std::optional(ch.order_by);
    Names order;
    size_t start = 0;
    for (size_t comma; (comma = text->find(',', start)) != std::string::npos; start = comma + 1) {
        order.push_back(text->substr(start, comma - start));
        if (comma + 1 == text->size())
            break;
    }
    order.push_back(text->substr(start));
    return order;
}

NamedValues PlainWalk::resolved(const NamedValues &where, const PlainNode &parent) const {
    NamedValues out;
    for (const auto &[name, given] : where) {
        FakeValue value = given;
        if (const auto *text = std::get_if<std::string>(&given))
            value = resolve(*text, &parent).value_or(given);
        if (is_null(value) && name.find_first_of("<>") != std::string::npos)
            continue;
        const size_t variable = name.find('$');
        if (variable == std::string::npos) {
            out.emplace_back(name, value);
            continue;
        }
        const auto ending = resolve(name.substr(variable), &parent);
        const auto *text = ending ? std::get_if<std::string>(&*ending) : nullptr;
        if (text != nullptr && !text->empty())
            out.emplace_back(name.substr(0, variable) + *text, value);
    }
    return out;
}

PlainWalk::Address PlainWalk::address_of(const DocNode &ch, const PlainNode &parent) const {
    const std::string &text = ch.uri;
    if (begins(text, "$_PARENT_URI_")) {
        if (!parent.uri)
            return {.failed = true};
        return {.uri = *parent.uri + text.substr(13)};
    }
    if (begins(text, "$_PEER_URI_")) {
        const auto value = value_of(parent, text.substr(1));
        if (!value)
            return {};
        if (const auto *list = std::get_if<std::vector<UriText>>(&*value))
            return {.list = to_list(*list)};
        const auto uri = to_uri(*value);
        return {.uri = uri, .failed = !uri && !is_null(*value)};
    }
    if (begins(text, "$_URI_PARENT_")) {
        if (!parent.uri)
            return {.failed = true};
        if (parent.parent_of)  // an address made as a parent gives the child's path again
            return {.uri = parent.parent_of};
        const size_t slash = parent.uri->rfind('/');
        const bool is_top = slash == std::string::npos || slash == 0;
        return {.uri = is_top ? "//" : parent.uri->substr(0, slash)};
    }
    if (is_variable_text(text)) {
        const auto value = resolve(text, &parent);
        if (!value)
            return {};
        if (const auto *list = std::get_if<std::vector<UriText>>(&*value))
            return {.list = to_list(*list)};
        return {.uri = to_uri(*value)};
    }
    // Of the key values of a literal address one at most is a variable, at its end.
    const size_t key = text.find('=');
    if (key == std::string::npos || !is_variable_text(text.substr(key + 1)))
        return {.uri = text};
    const auto value = resolve(text.substr(key + 1), &parent);
    return {.uri = value ? text.substr(0, key + 1) + show(*value) : text};
}

}  // namespace oru::test
