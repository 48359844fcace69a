// Values against constraints.
#include "do/value.h"
#include "do/vlist.h"
#include "md/constraint.h"
#include "oru/rc.h"

namespace {

bool is_outside(const ORUDoRange *range, ORUDoValue *value) {
    return range != nullptr && !oru::is_in_range(*range, *value);
}

bool is_outside(ORUDoRange *range, int64_t count) {
    return range != nullptr && oru_do_range_eval_long(range, count) == 0;
}

int32_t eval_plain(const ORUDoConstraint &constraint, ORUDoValue *value) {
    return is_outside(constraint.values, value) ? ORU_RC_VALUES_CONSTRAINT : ORU_OK;
}

int32_t eval_string(const ORUDoConstraint &constraint, ORUDoValue *value) {
    const char *text = value->data.bytes;
    if (text == nullptr || is_outside(constraint.values, value))
        return ORU_RC_VALUES_CONSTRAINT;
    if (is_outside(constraint.strlen, static_cast<int64_t>(value->len)))
        return ORU_RC_LENGTH_CONSTRAINT;
    // A pattern is searched for: it need not match the whole text.
    if (constraint.regex != nullptr && oru_regexec(constraint.regex, text, 0, nullptr, 0) != 0)
        return ORU_RC_REGEX_CONSTRAINT;
    return ORU_OK;
}

int32_t eval_array(ORUDoConstraint &constraint, ORUDoName *name, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const ORUDoVlist *elements = oru_do_value_get_array(value, &status);
    if (elements == nullptr || is_outside(constraint.size, static_cast<int64_t>(elements->count)))
        return ORU_RC_SIZE_CONSTRAINT;
    for (auto *item = elements->first; item != nullptr; item = item->next) {
        const int32_t code = oru_do_constraint_eval(&constraint, name, item->value, nullptr);
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

bool is_applicable(const ORUDoConstraint &constraint, ORUDoName *name, ORUDoProperties *props) {
    return constraint.condition == nullptr ||
           oru_do_condition_eval(constraint.condition, name, props) != 0;
}

}  // namespace

int32_t oru_do_constraint_is_applicable(ORUDoConstraint *constraint, ORUDoName *name,
                                        ORUDoProperties *props) {
    ORU_REQUIRE(constraint);
    return is_applicable(*constraint, name, props);
}

ORUDoValue *oru_do_constraint_get_default(ORUDoConstraint *constraint, ORUDoName *name,
                                          ORUDoProperties *props) {
    ORU_REQUIRE(constraint);
    if (constraint->default_value == nullptr)
        return nullptr;
    return oru_do_constraint_is_applicable(constraint, name, props) != 0 ? constraint->default_value
                                                                         : nullptr;
}

int32_t oru_do_constraint_eval(ORUDoConstraint *constraint, ORUDoName *name, ORUDoValue *value,
                               ORUDoProperties *props) {
    if (constraint == nullptr)
        return ORU_OK;
    if (!is_applicable(*constraint, name, props))
        return ORU_RC_CONSTRAINT_NOT_APPLICABLE;
    if (value == nullptr)
        return ORU_OK;
    switch (value->type) {
        case ORU_DO_TYPE_STRING:
            return eval_string(*constraint, value);
        case ORU_DO_TYPE_ARRAY:
            return eval_array(*constraint, name, value);
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_IP_ADDRESS:
        case ORU_DO_TYPE_NSAP_ADDRESS:
        case ORU_DO_TYPE_ENUMERATION:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return eval_plain(*constraint, value);
        default:
            return value->type >= ORU_DO_TYPE_UNSIGNED_BYTE && value->type <= ORU_DO_TYPE_HEX_BINARY
                       ? eval_plain(*constraint, value)
                       : ORU_OK;
    }
}
