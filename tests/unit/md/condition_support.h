// Conditions and what they are evaluated over.
#ifndef ORU_TESTS_UNIT_MD_CONDITION_SUPPORT_H
#define ORU_TESTS_UNIT_MD_CONDITION_SUPPORT_H

#include <gtest/gtest.h>
#include <oru/condition.h>
#include <oru/nlist.h>
#include <oru/properties.h>
#include <oru/range.h>
#include <oru/util.h>

#include <string>
#include <vector>

#include "tests/support/owned.h"

namespace oru::test {

using Condition = std::unique_ptr<ORUDoCondition, Deref<oru_do_condition_deref>>;
using Nlist = std::unique_ptr<ORUDoNlist, Deref<oru_do_nlist_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;

inline Condition condition(const std::string &text) {
    return Condition(oru_do_condition_new(text.c_str()));
}

inline Value number(int64_t n) {
    return Value(oru_do_value_new_long(n));
}

inline Value text(const std::string &text) {
    return Value(oru_do_value_new_string(text.c_str()));
}

inline Value null() {
    return Value(oru_do_value_new_null());
}

// An array of that many numbers.
inline Value array(int length) {
    const Vlist list(oru_do_vlist_new());
    for (int i = 0; i < length; ++i)
        oru_do_vlist_add_long(list.get(), i);
    return Value(oru_do_value_new_array(list.get()));
}

inline std::vector<std::string> names_of(ORUDoNlist *list) {
    std::vector<std::string> names;
    for (int32_t i = 0; i < oru_do_nlist_get_len(list); ++i)
        names.push_back(oru_do_name_get_strname(oru_do_nlist_get_name(list, i)));
    return names;
}

// The records, field by field.
struct NodeRecord {
    int32_t type;
    char *op_str;
    int32_t token_count;
    char *tokens[16];
    uint32_t negate;
    oru_regexp *regex;
    ORUDoName *prop_name;
    ORUDoRange *range;
    NodeRecord *next;
    NodeRecord *first_child;
};

struct ConditionRecord {
    uint32_t ref;
    char *expr;
    NodeRecord *root;
    ORUDoNlist *ext_prop_names;
};

inline const ConditionRecord &record_of(const Condition &made) {
    return *reinterpret_cast<ConditionRecord *>(made.get());
}

}  // namespace oru::test

#endif
