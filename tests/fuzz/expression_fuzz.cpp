// Expressions with variables that they read and write. The first byte says which of the two
// functions there are; a text follows, or, for an odd byte, the operands of one function that
// counts, whose result is worked out beside it.
#include <oru/error.h>
#include <oru/json.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

struct Release : fuzz::Release {
    using fuzz::Release::operator();
    void operator()(ORUDoError *object) const { oru_do_error_deref(object); }
};

using Error = std::unique_ptr<ORUDoError, Release>;

// ---- Variables ----

// A few values, of which the second character of a reference names one.
class Variables {
  public:
    Variables() {
        const fuzz::Uri uri(oru_do_uri_new("/a;x=1;y=2/b;z='3'"));
        for (ORUDoValue *made :
             {oru_do_value_new_int(4), oru_do_value_new_unsigned_long(UINT64_MAX),
              oru_do_value_new_long(INT64_MIN), oru_do_value_new_string("b"),
              oru_do_value_new_mr_uri(uri.get()), oru_do_value_new_double(2.5),
              oru_do_value_new_null(), oru_do_value_new_boolean(1)})
            values_.emplace_back(made);
    }

    // Null, the argument itself, or what is there.
    static ORUDoValue *resolve(void *user, const char *text, ORUDoValue *default_value) {
        if (text[0] == '@' && text[1] == '0')
            return nullptr;
        if (text[0] != '@' && text[0] != '$')
            return oru_do_value_ref(default_value);
        return oru_do_value_ref(static_cast<Variables *>(user)->at(text).get());
    }

    static void set(void *user, const char *text, ORUDoValue *value) {
        const int32_t type = oru_do_value_get_type(value);
        CHECK(type == ORU_DO_TYPE_LONG || type == ORU_DO_TYPE_UNSIGNED_LONG);
        auto *self = static_cast<Variables *>(user);
        self->at(text).reset(oru_do_value_ref(value));
        ++self->written_;
    }

    int written() const { return written_; }

  private:
    fuzz::Value &at(const char *text) {
        const unsigned char letter = text[0] != '\0' ? static_cast<unsigned char>(text[1]) : 0;
        return values_[letter % values_.size()];
    }

    std::vector<fuzz::Value> values_;
    int written_ = 0;
};

// ---- Texts ----

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

// Divisions are not guarded, nor is the look into an address with a name too long or a segment too
// many. Functions may hide behind escapes.
bool may_end_process(std::string_view text) {
    constexpr size_t kShort = 64;
    const bool long_address =
        text.size() > kShort || std::ranges::count(text, '/') >= URI_MAX_SEGMENTS;
    return holds(text, "_div()") || holds(text, "_mod()") || holds(text, "\\u00") ||
           (holds(text, "_key()") && long_address);
}

std::string json_of(ORUDoValue *value) {
    return value == nullptr
               ? "none"
               : fuzz::printed([value](ORUDoStrbuf *buf) { oru_do_value_to_json(value, buf); });
}

// The result, what was written and what went wrong, in one.
std::string evaluated(const fuzz::Bytes &text, bool resolving, bool setting) {
    Variables variables;
    ORUDoError *err = nullptr;
    const fuzz::Value value(
        oru_do_json_eval_expr(text.get(), text.size(), resolving ? Variables::resolve : nullptr,
                              setting ? Variables::set : nullptr, &variables, &err));
    const Error owned(err);
    CHECK(setting || variables.written() == 0);
    std::string result = json_of(value.get()) + " " + std::to_string(variables.written());
    if (err != nullptr) {
        CHECK(oru_do_error_get_msg(err) != nullptr);
        result += " " + std::to_string(oru_do_error_get_code(err)) + oru_do_error_get_msg(err);
    }
    return result;
}

void evaluate_text(std::string_view text, bool resolving, bool setting) {
    if (text.empty() || may_end_process(text))
        return;
    const fuzz::Bytes bytes(text);
    const std::string result = evaluated(bytes, resolving, setting);
    // A text in the place of a number counts as its address, which may be that of a copy.
    if (!holds(text, "\\"))
        CHECK(evaluated(bytes, resolving, setting) == result);
}

// ---- Numbers ----

enum Function { kAdd = 1, kSub, kMult, kDiv, kMod, kMin = 11, kMax = 12 };

constexpr Function kFunctions[] = {kAdd, kSub, kMult, kDiv, kMod, kMin, kMax};

fuzz::Value number_of(uint8_t letter, uint64_t bits) {
    switch (letter % 4) {
        case 0:
            return fuzz::Value(oru_do_value_new_long(static_cast<int64_t>(bits)));
        case 1:
            return fuzz::Value(oru_do_value_new_unsigned_long(bits));
        case 2:
            return fuzz::Value(oru_do_value_new_int(static_cast<int32_t>(bits)));
        default:
            return fuzz::Value(oru_do_value_new_unsigned_byte(static_cast<uint8_t>(bits)));
    }
}

// What an expression should have reached.
struct Reached {
    uint64_t bits = 0;
    bool is_unsigned = false;
    bool begun = false;

    // False for a division that would end the process.
    bool may_take(Function function, uint64_t operand) const {
        if (!begun || (function != kDiv && function != kMod))
            return true;
        const bool overflows = !is_unsigned && bits == uint64_t{1} << 63 && ~operand == 0;
        return operand != 0 && !overflows;
    }

    uint64_t with(Function function, uint64_t operand) const {
        const auto a = static_cast<int64_t>(bits);
        const auto b = static_cast<int64_t>(operand);
        switch (function) {
            case kAdd:
                return bits + operand;
            case kSub:
                return bits - operand;
            case kMult:
                return bits * operand;
            case kDiv:
                return is_unsigned ? bits / operand : static_cast<uint64_t>(a / b);
            case kMod:
                return is_unsigned ? bits % operand : static_cast<uint64_t>(a % b);
            case kMin:
                return (is_unsigned ? bits < operand : a < b) ? bits : operand;
            default:
                return (is_unsigned ? bits > operand : a > b) ? bits : operand;
        }
    }
};

// The operand as the function reads it; none when it cannot.
std::optional<uint64_t> read(Function function, ORUDoValue *value, bool mode_is_unsigned) {
    const bool own = oru_do_value_is_unsigned_int_number(value) != 0;
    int32_t status = 0;
    const bool as_unsigned = function == kMin || function == kMax ? mode_is_unsigned : own;
    const uint64_t bits = as_unsigned
                              ? oru_do_value_to_u_int64(value, &status)
                              : static_cast<uint64_t>(oru_do_value_to_int64(value, &status));
    return status == 0 ? std::optional(bits) : std::nullopt;
}

void evaluate_numbers(std::string_view bytes) {
    constexpr size_t kOperand = 9;
    if (bytes.empty())
        return;
    const Function function =
        kFunctions[static_cast<unsigned char>(bytes[0]) % std::size(kFunctions)];
    const fuzz::List list(oru_do_vlist_new());
    Reached reached;
    bool failed = false;
    for (bytes.remove_prefix(1); bytes.size() >= kOperand; bytes.remove_prefix(kOperand)) {
        uint64_t raw = 0;
        std::memcpy(&raw, bytes.data() + 1, sizeof raw);
        const fuzz::Value value = number_of(static_cast<uint8_t>(bytes[0]), raw);
        const bool is_unsigned = oru_do_value_is_unsigned_int_number(value.get()) != 0;
        const bool mode = reached.begun ? reached.is_unsigned : is_unsigned;
        const auto operand = read(function, value.get(), mode);
        if (operand && !reached.may_take(function, *operand))
            continue;
        oru_do_vlist_add(list.get(), value.get());
        failed = failed || !operand;
        if (!failed)
            reached = {reached.begun ? reached.with(function, *operand) : *operand, mode, true};
    }
    ORUDoError *err = nullptr;
    const fuzz::Value result(oru_do_json_eval_expr_internal(0x1000000 + function, list.get(),
                                                            nullptr, nullptr, nullptr, &err));
    const Error owned(err);
    const fuzz::Value wanted(reached.is_unsigned
                                 ? oru_do_value_new_unsigned_long(reached.bits)
                                 : oru_do_value_new_long(static_cast<int64_t>(reached.bits)));
    CHECK((err != nullptr) == failed);
    CHECK(json_of(result.get()) == json_of(wanted.get()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1)
        return 0;
    const uint64_t blocks = poolheap_live_blocks();
    const std::string_view rest(reinterpret_cast<const char *>(data + 1), size - 1);
    if ((data[0] & 1) != 0) {
        evaluate_numbers(rest);
    } else {
        evaluate_text(rest, (data[0] & 2) != 0, (data[0] & 4) != 0);
    }
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
