// Values against ranges.
#include "do/strbuf.h"
#include "do/value.h"
#include "frame/trace.h"
#include "md/range.h"
#include "oru/logger.h"

namespace {

using oru::Level;
using oru::Ref;

constexpr int32_t kNotComparable = -2;
constexpr uint32_t kUnknownOpLogLevel = 6;

bool is_known_op(int32_t op) {
    return op >= ORU_RANGE_EQUAL && op <= ORU_RANGE_BETWEEN;
}

bool is_at_most(ORUDoValue *value, ORUDoValue *bound) {
    const int32_t order = oru_do_value_compare(value, bound);
    return order <= 0 && order != kNotComparable;
}

bool matches(const oru_range_el &el, ORUDoValue *value) {
    const bool nostrict = el.op == ORU_RANGE_EQUAL || el.op == ORU_RANGE_NOT_EQUAL;
    const int32_t order = nostrict ? oru_do_value_compare_nostrict(value, el.lower)
                                   : oru_do_value_compare(value, el.lower);
    if (order == kNotComparable)
        return false;
    switch (el.op) {
        case ORU_RANGE_EQUAL:
            return order == 0;
        case ORU_RANGE_NOT_EQUAL:
            return order != 0;
        case ORU_RANGE_LESS:
            return order < 0;
        case ORU_RANGE_AT_MOST:
            return order <= 0;
        case ORU_RANGE_GREATER:
            return order > 0;
        case ORU_RANGE_AT_LEAST:
            return order >= 0;
        default:
            return order >= 0 && (el.upper == nullptr || is_at_most(value, el.upper));
    }
}

void add_part(ORUDoStrbuf *strbuf, const char *label, ORUDoValue *value) {
    if (value == nullptr)
        return;
    oru_do_strbuf_add_string(strbuf, label);
    oru_do_value_to_strbuf(value, 0, strbuf);
}

// Building the text costs more than most messages: only a logger that asks gets it.
void trace_unknown_op(const oru_range_el &el, ORUDoValue *value) {
    if (oru_logger_get_level() < kUnknownOpLogLevel || !oru::trace_enabled(Level::action))
        return;
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf)
        return;
    add_part(strbuf.get(), " val1=", el.lower);
    add_part(strbuf.get(), " val2=", el.upper);
    add_part(strbuf.get(), " input=", value);
    if (const char *text = oru_do_strbuf_to_string(strbuf.get()))
        ORU_TRACE(Level::action, "range constraint failed at op %d - %s\n", static_cast<int>(el.op),
                  text);
}

// A value that is made for the evaluation.
int32_t eval_owned(ORUDoRange *range, ORUDoValue *made) {
    const auto value = Ref<ORUDoValue>::adopt(made);
    return value ? oru_do_range_eval_value(range, value.get()) : 0;
}

}  // namespace

int32_t oru_do_range_eval_value(ORUDoRange *range, ORUDoValue *value) {
    ORU_REQUIRE(range);
    ORU_REQUIRE(value);
    for (auto *el = range->first_el; el != nullptr; el = el->next) {
        if (!is_known_op(el->op)) {
            trace_unknown_op(*el, value);
            return 0;
        }
        if (matches(*el, value))
            return 1;
    }
    return 0;
}

int32_t oru_do_range_eval_long(ORUDoRange *range, int64_t number) {
    ORU_REQUIRE(range);
    return eval_owned(range, oru_do_value_new_long(number));
}

int32_t oru_do_range_eval_double(ORUDoRange *range, double number) {
    ORU_REQUIRE(range);
    return eval_owned(range, oru_do_value_new_double(number));
}

int32_t oru_do_range_eval_string(ORUDoRange *range, const char *text) {
    ORU_REQUIRE(range);
    return eval_owned(range, oru::string_value(text));
}

int32_t oru_do_range_eval_max_long(ORUDoRange *range, int64_t number) {
    ORU_REQUIRE(range);
    if (range->first_el == nullptr)
        return 0;
    const auto value = Ref<ORUDoValue>::adopt(oru_do_value_new_long(number));
    return value && is_at_most(value.get(), range->first_el->lower);
}
