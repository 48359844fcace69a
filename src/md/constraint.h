// The records of constraints and of their list.
#ifndef ORU_SRC_MD_CONSTRAINT_H
#define ORU_SRC_MD_CONSTRAINT_H

#include "md/condition.h"
#include "md/meta_list.h"
#include "md/range.h"
#include "oru/constraint.h"
#include "oru/util.h"

struct ORUDoConstraint {
    uint32_t ref;
    char *constraint_str;  // without blanks
    ORUDoCondition *condition;
    ORUDoRange *size;
    ORUDoRange *values;
    ORUDoRange *strlen;
    char *regex_str;
    oru_regexp *regex;
    int32_t ordered_by_user;
    int32_t unique;
    ORUDoValue *default_value;
    int32_t typecode;  // -3, whatever type the text was read with
};

struct ORUDoConstraintList {
    oru::MetaListItem<ORUDoConstraint> *first;
    oru::MetaListItem<ORUDoConstraint> *last;
    uint32_t count;
    uint32_t ref;
};

template <>
struct oru::ObjectType<ORUDoConstraint> {
    static constexpr const char *name = "oru_do_constraint";
    static constexpr Tag tag = Tag::constr;
    static auto &count(ORUDoConstraint &self) { return self.ref; }
    static void release_members(ORUDoConstraint &self);
};

template <>
struct oru::ObjectType<oru::MetaListItem<ORUDoConstraint>> {
    static constexpr const char *name = "oru_do_constraint_list_item";
    static constexpr Tag tag = Tag::c_list_item;
};

template <>
struct oru::ObjectType<ORUDoConstraintList> {
    static constexpr const char *name = "oru_do_constraint_list";
    static constexpr Tag tag = Tag::constr_list;
    static auto &count(ORUDoConstraintList &self) { return self.ref; }
    static void release_members(ORUDoConstraintList &self) { meta_list_clear(self); }
};

namespace oru {

// Fills the parts of a constraint, which has none yet, from its text.
void parse_constraint(ORUDoConstraint &constraint, int32_t typecode, ORUDoEnumResolver resolver);

// Frees a compiled pattern with its holder; null is ignored.
void free_regex(oru_regexp *&regex);

}  // namespace oru

#endif
