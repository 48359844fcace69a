#include "tests/fuzz/uri_plan.h"

#include <algorithm>

namespace fuzz {

namespace {

std::vector<std::string> pieces(const std::string &text, char separator) {
    std::vector<std::string> result(1);
    for (const char c : text) {
        if (c == separator)
            result.emplace_back();
        else
            result.back() += c;
    }
    return result;
}

}  // namespace

std::string clean(std::string text, const std::string &otherwise) {
    std::erase_if(text, [](char c) { return c == '/' || c == '?' || c == ';' || c == '='; });
    text.resize(std::min<size_t>(text.size(), 63));
    return text.empty() ? otherwise : text;
}

namespace {

// A value that no text makes: the default, or one that holds the text.
Value held(int32_t type, const std::string &text) {
    const Value item(oru_do_value_new_string(text.c_str()));
    const List list(oru_do_vlist_new());
    oru_do_vlist_add(list.get(), item.get());
    const Keys names(oru_do_nvlist_new_from_item("x", item.get()));
    switch (type) {
        case -2:
            return Value(oru_do_value_new_default());
        case 104:
            return Value(oru_do_value_new_choice(names.get()));
        case 105:
            return Value(oru_do_value_new_sequence(names.get()));
        case 106:
            return Value(oru_do_value_new_array(list.get()));
        default:
            return nullptr;
    }
}

// The letter in front chooses the type. What cannot be a value of it is a string.
Value value_of(const std::string &text) {
    int32_t rc = 0;
    const int32_t type = text.empty() ? 8 : type_of(text[0]);
    const std::string rest = text.empty() ? text : text.substr(1);
    Value value(oru_do_value_new_from_string(Text(rest).get(), type, &rc));
    if (!value)
        value = held(type, rest);
    return value ? std::move(value) : Value(oru_do_value_new_string(text.c_str()));
}

}  // namespace

Segment segment_of(const std::string &text) {
    Segment segment;
    for (const std::string &piece : pieces(text, ';')) {
        if (segment.name.empty()) {
            segment.name = clean(piece, "n");
            continue;
        }
        const size_t equal = std::min(piece.find('='), piece.size());
        const std::string name = clean(piece.substr(0, equal), "k");
        // A name that is not the first of its kind would hide behind the first.
        if (std::none_of(segment.keys.begin(), segment.keys.end(),
                         [&](const Key &key) { return key.name == name; }))
            segment.keys.push_back(
                {name, value_of(piece.substr(std::min(equal + 1, piece.size())))});
    }
    return segment;
}

Plan plan_of(const std::string &text) {
    Plan plan;
    for (const std::string &piece : pieces(text, '/')) {
        if (!piece.empty() && plan.size() < URI_MAX_SEGMENTS)
            plan.push_back(segment_of(piece));
    }
    return plan;
}

}  // namespace fuzz
