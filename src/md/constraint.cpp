#include "md/constraint.h"

#include <algorithm>
#include <cstring>

#include "do/print.h"
#include "frame/text.h"
#include "oru/strbuf.h"

namespace {

// Printing hands on an indent, which these texts do not have.
void constraint_text(ORUDoConstraint *constraint, int32_t, ORUDoStrbuf *strbuf) {
    oru_do_constraint_to_strbuf(constraint, strbuf);
}

void constraint_list_text(ORUDoConstraintList *list, int32_t, ORUDoStrbuf *strbuf) {
    oru_do_constraint_list_to_strbuf(list, strbuf);
}

}  // namespace

void oru::ObjectType<ORUDoConstraint>::release_members(ORUDoConstraint &self) {
    const Text text(self.constraint_str);
    oru_do_condition_deref(self.condition);
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

int32_t oru_do_print_constraint(FILE *stream, int32_t tabs, ORUDoConstraint *constraint) {
    return oru::print_object<constraint_text>(stream, tabs, constraint);
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

void oru_do_constraint_list_to_strbuf(ORUDoConstraintList *list, ORUDoStrbuf *strbuf) {
    for (auto *item = list != nullptr ? list->first : nullptr; item != nullptr; item = item->next)
        oru_do_constraint_to_strbuf(item->object, strbuf);
}

int32_t oru_do_print_constraint_list(FILE *stream, int32_t tabs, ORUDoConstraintList *list) {
    return oru::print_object<constraint_list_text>(stream, tabs, list);
}

ORU_META_LIST_API(ORUDoConstraintList, ORUDoConstraint, oru_do_constraint_list,
                  DO_COLL_MR_META_LIST)
