#include "md/constraint.h"

#include <algorithm>
#include <cstring>

#include "frame/text.h"
#include "oru/strbuf.h"

void oru::ObjectType<ORUDoCondition>::release_members(ORUDoCondition &self) {
    const Text expr(self.expr);
}

void oru::ObjectType<ORUDoConstraint>::release_members(ORUDoConstraint &self) {
    const Text text(self.constraint_str);
    oru_do_condition_deref(self.condition);
}

oru::Ref<ORUDoCondition> oru::make_condition(const char *text) {
    auto condition = make_ref<ORUDoCondition>();
    if (condition && (condition->expr = duplicate(text)) == nullptr)
        return {};
    return condition;
}

oru::Ref<ORUDoConstraint> oru::make_constraint(ORUDoCondition *condition, const char *text) {
    auto constraint = make_ref<ORUDoConstraint>();
    if (!constraint || (constraint->constraint_str = duplicate(text)) == nullptr)
        return {};
    char *end = constraint->constraint_str + std::strlen(text);
    *std::remove(constraint->constraint_str, end, ' ') = '\0';
    constraint->condition = ref(condition);
    return constraint;
}

const char *oru_do_condition_get_expr(ORUDoCondition *condition) {
    ORU_REQUIRE(condition);
    return condition->expr;
}

ORU_OBJECT_API(ORUDoCondition, oru_do_condition)

const char *oru_do_constraint_get_str(ORUDoConstraint *constraint) {
    ORU_REQUIRE(constraint);
    return constraint->constraint_str;
}

ORUDoCondition *oru_do_constraint_get_condition(ORUDoConstraint *constraint) {
    ORU_REQUIRE(constraint);
    return constraint->condition;
}

void oru_do_constraint_to_strbuf(ORUDoConstraint *constraint, ORUDoStrbuf *strbuf) {
    if (constraint == nullptr || constraint->constraint_str == nullptr)
        return;
    if (constraint->condition != nullptr) {
        oru_do_strbuf_add_string(strbuf, "Condition: ");
        oru_do_strbuf_add_string(strbuf, oru_do_condition_get_expr(constraint->condition));
        oru_do_strbuf_add_char(strbuf, '\n');
    }
    oru_do_strbuf_add_string(strbuf, "Constraint: ");
    oru_do_strbuf_add_string(strbuf, constraint->constraint_str);
    oru_do_strbuf_add_char(strbuf, '\n');
}

ORU_OBJECT_API(ORUDoConstraint, oru_do_constraint)

int32_t oru_do_constraint_list_add(ORUDoConstraintList *list, ORUDoConstraint *constraint) {
    return list != nullptr ? oru::meta_list_append(*list, constraint) : -1;
}

int32_t oru_do_constraint_list_get_len(ORUDoConstraintList *list) {
    return list != nullptr ? static_cast<int32_t>(list->count) : -1;
}

ORUDoConstraint *oru_do_constraint_list_get_constraint(ORUDoConstraintList *list, int32_t index) {
    ORU_REQUIRE(list);
    return oru::meta_list_at(*list, index);
}

ORUDoConstraint *oru_do_constraint_list_get_constraint_unconditional(ORUDoConstraintList *list) {
    ORU_REQUIRE(list);
    return oru::meta_list_find(
        *list, [](const ORUDoConstraint &constraint) { return constraint.condition == nullptr; });
}

ORU_META_LIST_API(ORUDoConstraintList, ORUDoConstraint, oru_do_constraint_list,
                  DO_COLL_MR_META_LIST)
