// Scalars: texts, numbers and the elements that take them.
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "frame/text.h"
#include "json/read_stack.h"

namespace oru::json {
namespace {

struct Scalar {
    int64_t type;
    const char *tag;  // of a scalar that stands by itself
    int64_t integer = 0;
    double real = 0;
    std::string_view text{};
};

void fill(Item &item, const Scalar &scalar) {
    if (item.obj != nullptr)
        drop_object(item);
    item.type = scalar.type;
    if (scalar.type == kText) {
        item.scalar.text = scalar.text.data();
        item.scalar_len = static_cast<int32_t>(scalar.text.size());
    } else if (scalar.type == kReal) {
        item.scalar.real = scalar.real;
    } else {
        item.scalar.integer = scalar.integer;
    }
}

// The item that takes the scalar, or null.
Item *take(Reader &reader, Element &element, const Scalar &scalar) {
    if (element.pending != nullptr)
        settle(reader.data, element);
    Item *item = std::exchange(element.pending, nullptr);
    if (item == nullptr)
        item = append_item(reader, element.items, element.items_tail);
    if (item == nullptr) {
        fail_memory(&reader.data);
        return nullptr;
    }
    fill(*item, scalar);
    return item;
}

// The whole text is a scalar, or a bare array of them: an element just for it.
void take_alone(Reader &reader, const Scalar &scalar) {
    if (!push(reader))
        return;
    Element &element = *reader.data.top;
    element.tag = scalar.tag;
    element.tag_len = static_cast<int32_t>(std::strlen(scalar.tag));
    resolve(reader, element);
    if (take(reader, element, scalar) != nullptr)
        pop(reader);
    pop_to_parent(reader);
}

void give_scalar(Reader &reader, const Scalar &scalar) {
    Element *top = reader.data.top;
    if (top == nullptr) {
        take_alone(reader, scalar);
    } else if (top->unknown == 0) {
        take(reader, *top, scalar);
    }
}

bool is_real_type(const Element *element) {
    if (element == nullptr || element->type_info == nullptr)
        return false;
    const int64_t type = element->type_info->type_code;
    return type == kTypeFloat || type == kTypeDouble;
}

// False for a number out of range. What stands behind the digits is not looked at, so 1e3 is 1.
bool read_integer(std::string_view text, int64_t &number) {
    const char *end = text.data() + text.size();
    if (text.front() == '-')
        return std::from_chars(text.data(), end, number).ec == std::errc();
    uint64_t magnitude = 0;
    const bool good = std::from_chars(text.data(), end, magnitude).ec == std::errc();
    number = static_cast<int64_t>(magnitude);
    return good;
}

// As the C library reads it, which takes numbers for out of range that are too small to be exact.
bool read_rare_real(Reader &reader, std::string_view text, double &number) {
    constexpr size_t kUsualSize = 128;
    char usual[kUsualSize];
    Text longer;
    char *copy = usual;
    if (text.size() < kUsualSize) {
        std::memcpy(usual, text.data(), text.size());
        usual[text.size()] = '\0';
    } else {
        longer = Text(duplicate(text.data(), text.size(), Tag::json));
        copy = longer.get();
    }
    if (copy == nullptr) {
        fail_memory(&reader.data);
        return false;
    }
    errno = 0;
    number = std::strtod(copy, nullptr);
    return errno != ERANGE;
}

bool read_real(Reader &reader, std::string_view text, double &number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool usual = result.ec == std::errc() && (number == 0 || std::isnormal(number));
    return usual || read_rare_real(reader, text, number);
}

}  // namespace

Kept keep(Reader &reader, const unsigned char *bytes, size_t size) {
    const auto *text = reinterpret_cast<const char *>(bytes);
    if (text >= reader.begin && text <= reader.end)
        return {text, false};
    const char *copy = duplicate(text, size, Tag::json);
    if (copy == nullptr)
        fail_memory(&reader.data);
    return {copy, true};
}

void drop(Kept kept) {
    if (kept.copied)
        ph_free_named(const_cast<char *>(kept.text));
}

void give_null(Reader &reader) {
    give_scalar(reader, {kNull, "%null"});
}

void give_boolean(Reader &reader, bool value) {
    give_scalar(reader, {kBoolean, "%boolean", value ? 1 : 0});
}

void give_number(Reader &reader, std::string_view digits) {
    Element *top = reader.data.top;
    if (top != nullptr && top->type_info == nullptr && top->tag != nullptr)
        resolve(reader, *top);
    if (digits.find('.') == std::string_view::npos && !is_real_type(top)) {
        Scalar scalar{kInteger, "%long"};
        if (read_integer(digits, scalar.integer))
            give_scalar(reader, scalar);
    } else {
        Scalar scalar{kReal, "%double"};
        if (read_real(reader, digits, scalar.real))
            give_scalar(reader, scalar);
    }
}

void give_text(Reader &reader, const unsigned char *bytes, size_t size) {
    const Kept kept = keep(reader, bytes, size);
    if (kept.text == nullptr)
        return;
    Element *top = reader.data.top;
    const Scalar scalar{kText, "%string", 0, 0, {kept.text, size}};
    if (!kept.copied) {
        give_scalar(reader, scalar);
    } else if (top == nullptr) {
        take_alone(reader, scalar);  // done with the text when it returns
        drop(kept);
    } else if (Item *item = take(reader, *top, scalar)) {
        item->owns_text = true;
    } else {
        drop(kept);
    }
}

}  // namespace oru::json
