// Ranges of any type from any text: read, walked, evaluated and written as text again. The first
// byte says which type the range is given, the rest is its text.
#include <oru/condition.h>
#include <oru/range.h>
#include <oruplatform/poolheap.h>

#include <iterator>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Value;

struct ReleaseRange {
    void operator()(ORUDoRange *object) const { oru_do_range_deref(object); }
};

using Range = std::unique_ptr<ORUDoRange, ReleaseRange>;

constexpr int32_t kTypes[] = {-3,  -1,  0,   1,   2,   3,   4,   5,  6,   7,
                              8,   9,   10,  11,  12,  13,  14,  15, 101, 102,
                              103, 104, 105, 106, 107, 108, 109, -2, 50,  1000};

std::vector<oru_range_el *> elements(const Range &range) {
    std::vector<oru_range_el *> all;
    for (auto *el = oru_do_range_get_range_el(range.get()); el != nullptr;
         el = oru_do_range_get_next_range_el(el))
        all.push_back(el);
    return all;
}

bool is_integer(int32_t type) {
    return type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_LONG;
}

// What a text can give: both bounds, one of them open, or a single one.
void check_element(oru_range_el *el, int32_t type) {
    auto *lower = oru_do_range_el_get_lower(el);
    auto *upper = oru_do_range_el_get_upper(el);
    const int32_t op = oru_do_range_el_get_op(el);
    CHECK(lower != nullptr && oru_do_value_get_type(lower) == type);
    CHECK(upper == nullptr || oru_do_value_get_type(upper) == type);
    CHECK(op == ORU_RANGE_BETWEEN ? upper != nullptr : upper == nullptr);
    CHECK(op == ORU_RANGE_EQUAL || op == ORU_RANGE_AT_MOST || op == ORU_RANGE_AT_LEAST ||
          op == ORU_RANGE_BETWEEN);
}

// A bound that is the same as itself is in the range, unless it stands above its upper one.
void check_bound(const Range &range, oru_range_el *el) {
    auto *lower = oru_do_range_el_get_lower(el);
    if (oru_do_value_compare(lower, lower) != 0)
        return;
    auto *upper = oru_do_range_el_get_upper(el);
    const int32_t order = upper != nullptr ? oru_do_value_compare(lower, upper) : -1;
    if (order == -1 || order == 0)
        CHECK(oru_do_range_eval_value(range.get(), lower) == 1);
}

void evaluate(const Range &range, const std::string &text) {
    for (int64_t n : {INT64_MIN, INT64_C(-1), INT64_C(0), INT64_C(7), INT64_MAX}) {
        const int32_t result = oru_do_range_eval_long(range.get(), n);
        CHECK(result == 0 || result == 1);
        CHECK(oru_do_range_eval_long(range.get(), n) == result);
        oru_do_range_eval_max_long(range.get(), n);
    }
    for (double x : {-0.5, 0.0, 1e300})
        oru_do_range_eval_double(range.get(), x);
    oru_do_range_eval_string(range.get(), text.c_str());
    oru_do_range_eval_string(range.get(), "");
    for (ORUDoValue *made :
         {oru_do_value_new_null(), oru_do_value_new_boolean(1), oru_do_value_new_enumeration("a"),
          oru_do_value_new_ip_address("\x0a\0\0\1", 4), oru_do_value_new_unsigned_long(~0ull)}) {
        const Value value(made);
        oru_do_range_eval_value(range.get(), value.get());
    }
}

bool is_one_by_one(const std::vector<oru_range_el *> &all) {
    for (auto *el : all) {
        if (oru_do_range_el_get_upper(el) != nullptr)
            return false;
    }
    return true;
}

// The text of integers without pairs reads as what it was written from.
void check_round_trip(const Range &range, const std::vector<oru_range_el *> &all, int32_t type) {
    if (all.empty() || !is_integer(type) || !is_one_by_one(all))
        return;
    const Range again(oru_do_range_new_s_t(type, oru_do_range_get_range_str(range.get())));
    const auto others = elements(again);
    CHECK(others.size() == all.size());
    for (size_t i = 0; i < all.size(); ++i) {
        CHECK(oru_do_range_el_get_op(all[i]) == oru_do_range_el_get_op(others[i]));
        CHECK(oru_do_value_equals(oru_do_range_el_get_lower(all[i]),
                                  oru_do_range_el_get_lower(others[i])) != 0);
    }
}

void check_range(const Range &range, const std::string &text) {
    const auto all = elements(range);
    CHECK(oru_do_range_get_first_value(range.get()) ==
          (all.empty() ? nullptr : oru_do_range_el_get_lower(all[0])));
    const bool single = all.size() == 1 && oru_do_range_el_get_upper(all[0]) == nullptr;
    CHECK(oru_do_range_is_single_value(range.get()) == (single ? 1 : 0));
    const int32_t type = all.empty() ? 0 : oru_do_value_get_type(oru_do_range_el_get_lower(all[0]));
    for (auto *el : all) {
        check_element(el, type);
        check_bound(range, el);
    }
    const char *printed = oru_do_range_get_range_str(range.get());
    CHECK(printed != nullptr && printed == oru_do_range_get_range_str(range.get()));
    evaluate(range, text);
    check_round_trip(range, all, type);
}

void try_tokens(int32_t type, const std::string &text) {
    char *tokens[100];
    int32_t types[100];
    int32_t code = 0;
    const int32_t count = oru_do_condition_tokenize(text.c_str(), 100, tokens, types, &code);
    const Range range(oru_do_range_new_toks_t(type, tokens, count));
    CHECK(elements(range).size() <= static_cast<size_t>(count));
    check_range(range, text);
    for (int32_t i = 0; i < count; ++i)
        ph_free_named(tokens[i]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0 || size > 4096)
        return 0;
    const uint64_t blocks = poolheap_live_blocks();
    const int32_t type = kTypes[data[0] % std::size(kTypes)];
    const std::string text =
        std::string(reinterpret_cast<const char *>(data + 1), size - 1).c_str();
    check_range(Range(oru_do_range_new_s_t(type, text.c_str())), text);
    try_tokens(type, text);
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
