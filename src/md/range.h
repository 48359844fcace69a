// The record of a range.
#ifndef ORU_SRC_MD_RANGE_H
#define ORU_SRC_MD_RANGE_H

#include "frame/object.h"
#include "frame/text.h"
#include "oru/range.h"
#include "oru/value.h"

struct oru_range_el {
    ORUDoValue *lower;  // never null
    ORUDoValue *upper;
    oru_range_el *next;
    int32_t op;
};

struct ORUDoRange {
    char *range_str;  // the text it was made from, or a cache that readers fill
    oru_range_el *first_el;
    uint32_t ref;
    int32_t typecode;
    oru_range_el *last_el;
};

template <>
struct oru::ObjectType<oru_range_el> {
    static constexpr const char *name = "oru_do_range_el";
    static constexpr Tag tag = Tag::range_el;
};

template <>
struct oru::ObjectType<ORUDoRange> {
    static constexpr const char *name = "oru_do_range";
    static constexpr Tag tag = Tag::range;
    static auto &count(ORUDoRange &self) { return self.ref; }
    static void release_members(ORUDoRange &self);
};

namespace oru {

// Whether there is exactly one element, without an upper bound. The op plays no part.
inline bool is_single_value(const ORUDoRange &range) {
    const auto *el = range.first_el;
    return el != nullptr && el->next == nullptr && el->upper == nullptr;
}

// Whether an element matches. An unknown op ends the walk.
bool is_in_range(const ORUDoRange &range, ORUDoValue &value);

// A value as metadata writes it: JSON in braces, a string with or without quotes around it, or the
// text form of the type. Empty, with a code or without memory, when it is none.
Ref<ORUDoValue> value_from_constraint_text(const char *text, int32_t typecode, int32_t &code);

// A string that is null when only its text cannot be had. A null text gives a null value.
inline ORUDoValue *string_value(const char *text) {
    return oru_do_value_new_string_l(text,
                                     text != nullptr ? static_cast<int32_t>(std::strlen(text)) : 0);
}

// The text form of a value; empty when memory runs out.
Text text_of_value(ORUDoValue *value);

}  // namespace oru

#endif
