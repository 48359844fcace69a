// Functions that count: 64 bits that wrap around, signed or unsigned.
#include <cstdint>

#include "json/eval.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::json {
namespace {

// Division is not guarded: by zero, and of the lowest number by -1, the processor ends the process.
__attribute__((no_sanitize("undefined"))) uint64_t divide(uint64_t a, uint64_t b,
                                                          bool is_unsigned) {
    return is_unsigned ? a / b
                       : static_cast<uint64_t>(static_cast<int64_t>(a) / static_cast<int64_t>(b));
}

__attribute__((no_sanitize("undefined"))) uint64_t remainder(uint64_t a, uint64_t b,
                                                             bool is_unsigned) {
    return is_unsigned ? a % b
                       : static_cast<uint64_t>(static_cast<int64_t>(a) % static_cast<int64_t>(b));
}

uint64_t apply(int64_t code, uint64_t a, uint64_t b, bool is_unsigned) {
    switch (code) {
        case kTypeAdd:
            return a + b;
        case kTypeSub:
            return a - b;
        case kTypeMult:
            return a * b;
        case kTypeDiv:
            return divide(a, b, is_unsigned);
        default:
            return remainder(a, b, is_unsigned);
    }
}

bool is_unsigned_number(ORUDoValue *value) {
    return oru_do_value_is_unsigned_int_number(value) != 0;
}

bool is_less(uint64_t a, uint64_t b, bool is_unsigned) {
    return is_unsigned ? a < b : static_cast<int64_t>(a) < static_cast<int64_t>(b);
}

// The smallest or largest of its arguments, as they come in.
struct Extreme {
    const Evaluation &evaluation;
    bool largest;
    Number reached{};
    const char *target = nullptr;  // the name of the first argument
    bool begun = false;

    ValueRef neutral() const {
        return ValueRef::adopt(oru_do_value_new_long(largest ? INT64_MIN : INT64_MAX));
    }

    // What an argument counts as. Null, with an error, when it cannot be had.
    ValueRef operand(ORUDoValue *arg) {
        if (!evaluation.resolves(arg))
            return ValueRef::share(arg);
        const char *name = evaluation.text_of(arg);
        if (name == nullptr)
            return {};
        if (!begun)
            target = name;
        auto value = ValueRef::adopt(evaluation.resolve_fn(evaluation.user, name, arg));
        if (value.get() == arg)
            value = neutral();  // nobody knows the reference
        if (!value)
            evaluation.fail(ORU_OK);
        return value;
    }

    bool take(ORUDoValue *arg) {
        const ValueRef value = operand(arg);
        if (!value)
            return false;
        if (!begun)
            reached.is_unsigned = is_unsigned_number(value.get());
        uint64_t bits = 0;
        if (const int32_t status = read_number(value.get(), reached.is_unsigned, bits);
            status != ORU_OK) {
            evaluation.fail(status);
            return false;
        }
        if (!begun || is_less(bits, reached.bits, reached.is_unsigned) != largest)
            reached.bits = bits;
        begun = true;
        return true;
    }
};

}  // namespace

ORUDoValue *Number::to_value() const {
    return is_unsigned ? oru_do_value_new_unsigned_long(bits)
                       : oru_do_value_new_long(static_cast<int64_t>(bits));
}

int32_t read_number(ORUDoValue *value, bool is_unsigned, uint64_t &bits) {
    int32_t status = ORU_OK;
    bits = is_unsigned ? oru_do_value_to_u_int64(value, &status)
                       : static_cast<uint64_t>(oru_do_value_to_int64(value, &status));
    return status;
}

// The first operand decides how all are counted with; each is read by its own kind.
ORUDoValue *eval_math(const Evaluation &evaluation, int64_t code, ORUDoVlist *args) {
    Number total;
    bool begun = false;
    for (ORUDoVlistItem *item = args->first; item != nullptr; item = item->next) {
        if (is_nothing(item->value))
            continue;
        auto operand = ValueRef::share(item->value);
        if (evaluation.resolves(item->value)) {
            const char *name = evaluation.text_of(item->value);
            if (name == nullptr)
                break;
            operand = ValueRef::adopt(evaluation.resolve_fn(evaluation.user, name, item->value));
            if (is_nothing(operand.get()))
                continue;
        }
        const bool is_unsigned = is_unsigned_number(operand.get());
        uint64_t bits = 0;
        if (const int32_t status = read_number(operand.get(), is_unsigned, bits);
            status != ORU_OK) {
            evaluation.fail(status);
            break;
        }
        total = begun ? Number{apply(code, total.bits, bits, total.is_unsigned), total.is_unsigned}
                      : Number{bits, is_unsigned};
        begun = true;
    }
    return total.to_value();
}

// Gives the number before the step, and stores the one behind it.
ORUDoValue *eval_step(const Evaluation &evaluation, int64_t code, ORUDoVlist *args) {
    Number before;
    ORUDoValue *arg = oru_do_vlist_get_value(args, 0);
    if (arg == nullptr)
        return before.to_value();
    const char *name = nullptr;
    auto operand = ValueRef::share(arg);
    if (evaluation.resolves(arg)) {
        name = evaluation.text_of(arg);
        if (name == nullptr)
            return before.to_value();
        operand = ValueRef::adopt(evaluation.resolve_fn(evaluation.user, name, arg));
    }
    int32_t status = ORU_RC_VALUE_TYPE;
    if (operand) {
        before.is_unsigned = is_unsigned_number(operand.get());
        status = read_number(operand.get(), before.is_unsigned, before.bits);
    }
    if (status != ORU_OK)
        evaluation.fail(status);
    if (name != nullptr && evaluation.set_fn != nullptr) {
        const Number after{code == kTypeIncr ? before.bits + 1 : before.bits - 1,
                           before.is_unsigned};
        const auto value = ValueRef::adopt(after.to_value());
        if (value)
            evaluation.set(name, value.get());
    }
    return before.to_value();
}

ORUDoValue *eval_extreme(const Evaluation &evaluation, int64_t code, ORUDoVlist *args) {
    Extreme extreme{evaluation, code == kTypeMax};
    for (ORUDoVlistItem *item = args->first; item != nullptr; item = item->next) {
        if (!extreme.take(item->value))
            break;
    }
    ORUDoValue *result = extreme.reached.to_value();
    if (result != nullptr && extreme.target != nullptr)
        evaluation.set(extreme.target, result);
    return result;
}

}  // namespace oru::json
