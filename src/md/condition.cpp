#include "md/condition.h"

#include "frame/text.h"

void oru::ObjectType<ORUDoCondition>::release_members(ORUDoCondition &self) {
    const Text expr(self.expr);
}

oru::Ref<ORUDoCondition> oru::make_condition(const char *text) {
    auto condition = make_ref<ORUDoCondition>();
    if (condition && (condition->expr = duplicate(text)) == nullptr)
        return {};
    return condition;
}

const char *oru_do_condition_get_expr(ORUDoCondition *condition) {
    ORU_REQUIRE(condition);
    return condition->expr;
}

ORU_OBJECT_API(ORUDoCondition, oru_do_condition)
