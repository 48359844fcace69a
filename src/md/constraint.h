// The records of constraints and of their list.
#ifndef ORU_SRC_MD_CONSTRAINT_H
#define ORU_SRC_MD_CONSTRAINT_H

#include "md/condition.h"
#include "md/meta_list.h"
#include "oru/constraint.h"

struct ORUDoConstraint {
    uint32_t ref;
    char *constraint_str;  // without blanks
    ORUDoCondition *condition;
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

// Takes a copy of the text. Null when memory runs out.
Ref<ORUDoConstraint> make_constraint(ORUDoCondition *condition, const char *text);

}  // namespace oru

#endif
