#include "reader.h"

#include <cctype>

#include "script.h"

namespace behaviour {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kEndsOfWords = " \t,)]}";

[[noreturn]] void fail(const std::string &words) {
    throw ScriptFault(words);
}

bool is_number(const std::string &text) {
    const size_t first = text.starts_with('-') ? 1 : 0;
    return first < text.size() && text.find_first_not_of("0123456789", first) == std::string::npos;
}

bool is_fraction(const std::string &text) {
    const size_t dot = text.find('.');
    return dot != std::string::npos && is_number(text.substr(0, dot)) && dot + 1 < text.size() &&
           text.find_first_not_of("0123456789", dot + 1) == std::string::npos;
}

Value from_text(const std::string &text, int32_t type) {
    int32_t status = ORU_OK;
    Value value(oru_do_value_new_from_string(text.c_str(), type, &status));
    if (value == nullptr || status != ORU_OK)
        fail("\"" + text + "\" is no " + oru_do_get_typestr_by_typecode(type));
    return value;
}

Value whole_number(const std::string &text) {
    int32_t status = ORU_OK;
    Value value(oru_do_value_new_from_string(text.c_str(), ORU_DO_TYPE_LONG, &status));
    return status == ORU_OK ? std::move(value) : from_text(text, ORU_DO_TYPE_UNSIGNED_LONG);
}

Value from_word(const std::string &text) {
    if (text == "null")
        return made<Value>(oru_do_value_new_null());
    if (text == "default")
        return made<Value>(oru_do_value_new_default());
    if (text == "true" || text == "false")
        return from_text(text, ORU_DO_TYPE_BOOLEAN);
    if (is_number(text))
        return whole_number(text);
    if (is_fraction(text))
        return from_text(text, ORU_DO_TYPE_DOUBLE);
    return from_text(text, text.starts_with('/') ? ORU_DO_TYPE_MR_URI : ORU_DO_TYPE_STRING);
}

void add(ORUDoNvlist *items, const std::string &name, const Value &value) {
    if (oru_do_nvlist_add(items, name.c_str(), value.get()) < 1)
        throw std::bad_alloc();
}

}  // namespace

void Reader::skip_blanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
}

bool Reader::at_end() {
    skip_blanks();
    return rest_.empty();
}

bool Reader::takes_sign(char sign) {
    const bool is_next = !at_end() && rest_.front() == sign;
    rest_.remove_prefix(is_next ? 1 : 0);
    return is_next;
}

bool Reader::takes(std::string_view word) {
    const bool is_next =
        !at_end() && rest_.starts_with(word) &&
        (rest_.size() == word.size() || kBlanks.find(rest_[word.size()]) != std::string_view::npos);
    rest_.remove_prefix(is_next ? word.size() : 0);
    return is_next;
}

std::string Reader::word() {
    if (at_end())
        fail("a word is missing at the end");
    const size_t end = std::min(rest_.find_first_of(kBlanks), rest_.size());
    const std::string text(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return text;
}

std::vector<std::string> Reader::words() {
    std::vector<std::string> found;
    while (!at_end())
        found.push_back(word());
    return found;
}

std::string Reader::name() {
    const size_t sign = at_end() ? std::string_view::npos : rest_.find('=');
    if (sign == std::string_view::npos)
        fail("NAME=VALUE is expected at \"" + std::string(rest_) + "\"");
    const std::string text(rest_.substr(0, sign));
    rest_.remove_prefix(sign + 1);
    return text;
}

std::string Reader::quoted() {
    std::string text;
    size_t at = 0;
    for (; at < rest_.size() && rest_[at] != '"'; at++) {
        if (rest_[at] == '\\' && at + 1 < rest_.size())
            at++;
        text += rest_[at];
    }
    if (at == rest_.size())
        fail("a quote is missing at the end");
    rest_.remove_prefix(at + 1);
    return text;
}

std::string Reader::bare() {
    skip_blanks();
    const size_t end = std::min(rest_.find_first_of(kEndsOfWords), rest_.size());
    if (end == 0)
        fail("a value is expected at \"" + std::string(rest_) + "\"");
    const std::string text(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return text;
}

Value Reader::value() {
    if (takes_sign('['))
        return array();
    if (takes_sign('{'))
        return members(false);
    if (takes_sign('"'))
        return from_text(quoted(), ORU_DO_TYPE_STRING);
    size_t letters = 0;
    while (letters < rest_.size() && std::isalpha(static_cast<unsigned char>(rest_[letters])) != 0)
        letters++;
    const std::string_view word = rest_.substr(0, letters);
    const char next = letters < rest_.size() ? rest_[letters] : '\0';
    const int32_t type = oru_do_get_typecode_by_typestr(std::string(word).c_str());
    if (type == ORU_DO_TYPE_UNKNOWN || (next != ':' && next != '{'))
        return from_word(bare());
    rest_.remove_prefix(letters + 1);
    if (next == '{')
        return members(type == ORU_DO_TYPE_CHOICE);
    return from_text(takes_sign('"') ? quoted() : bare(), type);
}

Value Reader::array() {
    const ValueList elements = made<ValueList>(oru_do_vlist_new());
    while (!takes_sign(']')) {
        if (oru_do_vlist_add(elements.get(), value().get()) < 0)
            throw std::bad_alloc();
        takes_sign(',');
    }
    return made<Value>(oru_do_value_new_array(elements.get()));
}

Value Reader::members(bool is_choice) {
    const NameValueList list = made<NameValueList>(oru_do_nvlist_new());
    while (!takes_sign('}')) {
        const std::string member = name();
        add(list.get(), member, value());
        takes_sign(',');
    }
    return made<Value>(is_choice ? oru_do_value_new_choice(list.get())
                                 : oru_do_value_new_sequence(list.get()));
}

/* ---- Clauses ---- */

void Reader::where(ORUDoNvlist *items) {
    do
        where_item(items);
    while (takes_sign(','));
}

void Reader::where_item(ORUDoNvlist *items) {
    skip_blanks();
    for (const std::string_view group : {"or(", "and("}) {
        if (!rest_.starts_with(group))
            continue;
        rest_.remove_prefix(group.size());
        const NameValueList inner = made<NameValueList>(oru_do_nvlist_new());
        where(inner.get());
        if (!takes_sign(')'))
            fail("a parenthesis is missing at the end");
        return add(items, group == "or(" ? " OR " : " AND ",
                   made<Value>(oru_do_value_new_sequence(inner.get())));
    }
    const std::string name = bare();
    const std::string op = where_operator();
    add(items, op.empty() ? name : name + " " + op, value());
}

// A word is one when a value follows it.
std::string Reader::where_operator() {
    skip_blanks();
    const size_t end = std::min(rest_.find_first_of(kEndsOfWords), rest_.size());
    const size_t next = rest_.find_first_not_of(kBlanks, end);
    if (next == std::string_view::npos || std::string_view(",)").find(rest_[next]) != rest_.npos ||
        std::string_view("[{\"").find(rest_[0]) != std::string_view::npos)
        return {};
    const std::string op(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return op;
}

NameList Reader::order() {
    NameList names = made<NameList>(oru_do_nlist_new());
    do {
        std::string entry = bare();
        while (!at_end() && rest_.front() != ',')
            entry += " " + bare();
        if (oru_do_nlist_add_string(names.get(), entry.c_str()) < 1)
            throw std::bad_alloc();
    } while (takes_sign(','));
    return names;
}

}  // namespace behaviour
