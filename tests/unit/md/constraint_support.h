// Constraints from texts.
#ifndef ORU_TESTS_UNIT_MD_CONSTRAINT_SUPPORT_H
#define ORU_TESTS_UNIT_MD_CONSTRAINT_SUPPORT_H

#include <oru/constraint.h>
#include <oru/typedef_meta.h>

#include "tests/unit/md/condition_support.h"
#include "tests/unit/md/range_support.h"

namespace oru::test {

using Constraint = std::unique_ptr<ORUDoConstraint, Deref<oru_do_constraint_deref>>;
using ConstraintList = std::unique_ptr<ORUDoConstraintList, Deref<oru_do_constraint_list_deref>>;
using Typedef = std::unique_ptr<ORUDoTypedefMeta, Deref<oru_do_typedef_meta_deref>>;

inline Constraint constraint(const std::string &text, int32_t type = kUnknown,
                             ORUDoEnumResolver resolver = nullptr) {
    return Constraint(oru_do_constraint_new_t(nullptr, text.c_str(), type, resolver));
}

// One that applies when the condition says so.
inline Constraint guarded(const std::string &when, const std::string &text,
                          int32_t type = kUnknown) {
    return Constraint(oru_do_constraint_new_t(condition(when).get(), text.c_str(), type, nullptr));
}

inline std::string values_of(const Constraint &constraint) {
    ORUDoRange *range = oru_do_constraint_get_values(constraint.get());
    return range != nullptr ? elements(range) : "(none)";
}

inline std::string size_of(const Constraint &constraint) {
    ORUDoRange *range = oru_do_constraint_get_size(constraint.get());
    return range != nullptr ? elements(range) : "(none)";
}

inline std::string strlen_of(const Constraint &constraint) {
    ORUDoRange *range = oru_do_constraint_get_strlen(constraint.get());
    return range != nullptr ? elements(range) : "(none)";
}

// "type:text", with the name of a derived type behind it.
inline std::string default_of(const Constraint &constraint) {
    ORUDoValue *value = oru_do_constraint_get_default_value(constraint.get());
    if (value == nullptr)
        return "(none)";
    const char *name = oru_do_value_get_typedef_name(value);
    return std::to_string(oru_do_value_get_type(value)) + ":" + text_of(value) +
           (name != nullptr ? std::string(" ") + name : "");
}

inline ConstraintList list_of(std::initializer_list<const Constraint *> constraints) {
    ConstraintList list(oru_do_constraint_list_new());
    for (const auto *each : constraints)
        oru_do_constraint_list_add(list.get(), each->get());
    return list;
}

inline Properties properties(std::initializer_list<std::pair<const char *, int64_t>> numbers) {
    Properties props(oru_do_properties_new());
    for (const auto &[name, n] : numbers)
        oru_do_properties_set_value(props.get(), name, number(n).get());
    return props;
}

}  // namespace oru::test

#endif
