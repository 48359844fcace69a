// Ranges, and what stands in them.
#ifndef ORU_TESTS_UNIT_MD_RANGE_SUPPORT_H
#define ORU_TESTS_UNIT_MD_RANGE_SUPPORT_H

#include <gtest/gtest.h>
#include <oru/range.h>

#include <string>

#include "tests/support/owned.h"

namespace oru::test {

using Range = std::unique_ptr<ORUDoRange, Deref<oru_do_range_deref>>;

enum : int32_t {
    kUnknown = -3,
    kInt = 5,
    kLong = 7,
    kString = 8,
    kDouble = 11,
    kEnumeration = 103,
};

inline std::string text_of(ORUDoValue *value) {
    if (value == nullptr)
        return "-";
    const Strbuf strbuf(oru_do_strbuf_new());
    oru_do_value_to_strbuf(value, 0, strbuf.get());
    return oru_do_strbuf_to_string(strbuf.get());
}

// All elements in order, as "op type:lower..upper", for looking at them as they are.
inline std::string elements(ORUDoRange *range) {
    std::string out;
    for (auto *el = oru_do_range_get_range_el(range); el != nullptr;
         el = oru_do_range_get_next_range_el(el)) {
        auto *lower = oru_do_range_el_get_lower(el);
        out += (out.empty() ? "" : ", ") + std::to_string(oru_do_range_el_get_op(el)) + " " +
               std::to_string(oru_do_value_get_type(lower)) + ":" + text_of(lower) + ".." +
               text_of(oru_do_range_el_get_upper(el));
    }
    return out;
}

inline std::string elements(const Range &range) {
    return elements(range.get());
}

}  // namespace oru::test

#endif
