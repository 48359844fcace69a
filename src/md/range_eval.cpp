// Values against ranges.
#include <bit>
#include <iterator>

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

// Which values an op takes: those below its bound, those that are the same, and those above.
enum : uint8_t { kBelow = 1, kSame = 2, kAbove = 4 };
constexpr uint8_t kTaken[] = {0,      kSame,          kBelow | kAbove, kBelow, kBelow | kSame,
                              kAbove, kSame | kAbove, kSame | kAbove};
static_assert(std::size(kTaken) == ORU_RANGE_BETWEEN + 1);

template <class Number>
bool is_taken(int32_t op, Number value, Number bound) {
    const int place = 1 + (value > bound) - (value < bound);
    return (kTaken[op] >> place & 1) != 0;
}

bool is_at_most(const ORUDoValue &value, const ORUDoValue &bound) {
    const int32_t order = oru::order_values(value, bound, true);
    return order <= 0 && order != kNotComparable;
}

bool matches(const oru_range_el &el, const ORUDoValue &value) {
    const bool strict = el.op != ORU_RANGE_EQUAL && el.op != ORU_RANGE_NOT_EQUAL;
    const int32_t order = oru::order_values(value, *el.lower, strict);
    if (order == kNotComparable || !is_taken(el.op, order, 0))
        return false;
    return el.op != ORU_RANGE_BETWEEN || el.upper == nullptr || is_at_most(value, *el.upper);
}

// A whole number that is held against bounds of its type, as ranges of attributes have them. What
// is compared are words with the numbers moved to their tops.
class WholeNumber {
  public:
    explicit WholeNumber(const ORUDoValue &value) : type_(value.type) {
        if (oru::is_integer_type(type_)) {
            static constexpr uint8_t kSpare[] = {56, 56, 48, 48, 32, 32, 0, 0};
            spare_ = kSpare[type_];
            flip_ = type_ % 2 == 0 ? INT64_MIN : 0;  // unsigned
        }
        number_ = ordered(value);
    }

    bool compares_with(const oru_range_el &el) const {
        return is_known_op(el.op) && el.lower->type == type_ &&
               (el.upper == nullptr || el.upper->type == type_);
    }

    bool matches(const oru_range_el &el) const {
        if (!is_taken(el.op, number_, ordered(*el.lower)))
            return false;
        return el.op != ORU_RANGE_BETWEEN || el.upper == nullptr || number_ <= ordered(*el.upper);
    }

  private:
    static_assert(std::endian::native == std::endian::little);

    int64_t ordered(const ORUDoValue &value) const {
        return static_cast<int64_t>(value.data.word << spare_) ^ flip_;
    }

    int32_t type_;
    uint8_t spare_ = 0;  // bits of the word that the number leaves
    int64_t flip_ = 0;
    int64_t number_;
};

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
int32_t eval_owned(const ORUDoRange &range, ORUDoValue *made) {
    const auto value = Ref<ORUDoValue>::adopt(made);
    return value && oru::is_in_range(range, *value) ? 1 : 0;
}

}  // namespace

bool oru::is_in_range(const ORUDoRange &range, ORUDoValue &value) {
    const auto *el = range.first_el;
    if (is_whole_number_type(value.type)) {
        const WholeNumber number(value);
        for (; el != nullptr && number.compares_with(*el); el = el->next) {
            if (number.matches(*el))
                return true;
        }
    }
    for (; el != nullptr; el = el->next) {
        if (!is_known_op(el->op)) {
            trace_unknown_op(*el, &value);
            return false;
        }
        if (matches(*el, value))
            return true;
    }
    return false;
}

int32_t oru_do_range_eval_value(ORUDoRange *range, ORUDoValue *value) {
    ORU_REQUIRE(range);
    ORU_REQUIRE(value);
    return oru::is_in_range(*range, *value) ? 1 : 0;
}

int32_t oru_do_range_eval_long(ORUDoRange *range, int64_t number) {
    ORU_REQUIRE(range);
    return eval_owned(*range, oru_do_value_new_long(number));
}

int32_t oru_do_range_eval_double(ORUDoRange *range, double number) {
    ORU_REQUIRE(range);
    return eval_owned(*range, oru_do_value_new_double(number));
}

int32_t oru_do_range_eval_string(ORUDoRange *range, const char *text) {
    ORU_REQUIRE(range);
    return eval_owned(*range, oru::string_value(text));
}

int32_t oru_do_range_eval_max_long(ORUDoRange *range, int64_t number) {
    ORU_REQUIRE(range);
    if (range->first_el == nullptr)
        return 0;
    const auto value = Ref<ORUDoValue>::adopt(oru_do_value_new_long(number));
    return value && is_at_most(*value, *range->first_el->lower);
}
