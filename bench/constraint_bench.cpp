// Constraints and conditions against functions that a provider would write by hand to the same
// end: they ask the same values and the same properties, through the same calls of the library.
#include <oru/condition.h>
#include <oru/constraint.h>
#include <oru/name.h>
#include <oru/properties.h>
#include <oru/rc.h>
#include <oru/strbuf.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <cstring>
#include <string>
#include <utility>

#include "bench/ratios.h"

namespace {

constexpr double kBound = 5;

ORUDoName *name;
ORUDoProperties *props;
ORUDoValue *mtu;
ORUDoValue *description;

void size_pools() {
    for (auto *init :
         {init_chunk_poolheap_oru_do_name, init_chunk_poolheap_oru_do_value,
          init_chunk_poolheap_oru_do_value_sml_misc, init_chunk_poolheap_oru_do_value_misc,
          init_chunk_poolheap_oru_do_properties, init_chunk_poolheap_oru_do_property,
          init_chunk_poolheap_oru_do_constraint, init_chunk_poolheap_oru_do_constraint_list,
          init_chunk_poolheap_oru_do_condition, init_chunk_poolheap_oru_do_range}) {
        init(1024, CHUNK_FLAG_GROW);
    }
}

void set(const char *property, ORUDoValue *value) {
    oru_do_properties_set_value(props, property, value);
    oru_do_value_deref(value);
}

// A row of ten, as a provider has it.
void make_properties() {
    name = oru_do_name_new("config.mtu");
    props = oru_do_properties_new();
    for (const char *property : {"config.alias", "config.owner", "config.contact", "config.mode"})
        set(property, oru_do_value_new_string("something"));
    for (const char *property : {"config.cost", "config.queueSize", "config.burstLimit"})
        set(property, oru_do_value_new_int(10));
    mtu = oru_do_value_new_int(1500);
    description = oru_do_value_new_string("uplink to the core");
    oru_do_properties_set_value(props, "config.mtu", mtu);
    oru_do_properties_set_value(props, "config.description", description);
    set("config.holdTime", oru_do_value_new_int(30));
}

// ---- Constraints ----

// A constraint, under a condition or none, on the values of a type, and its evaluation by hand.
struct ConstraintCase {
    const char *what;
    const char *condition;
    const char *text;
    int32_t typecode;
    ORUDoValue **value;
    int32_t (*by_hand)(ORUDoValue *value);
};

int32_t code_of_values(bool fits) {
    return fits ? ORU_OK : ORU_RC_VALUES_CONSTRAINT;
}

int32_t in_range(ORUDoValue *value) {
    int32_t code = ORU_OK;
    const int32_t n = oru_do_value_get_int(value, &code);
    return code_of_values(code == ORU_OK && n >= 68 && n <= 9216);
}

int32_t one_of_five(ORUDoValue *value) {
    int32_t code = ORU_OK;
    const int32_t n = oru_do_value_get_int(value, &code);
    return code_of_values(code == ORU_OK &&
                          (n == 576 || n == 1280 || n == 1492 || n == 1500 || n == 9000));
}

int32_t has_length(ORUDoValue *value) {
    int32_t code = ORU_OK;
    const char *text = oru_do_value_get_string(value, &code);
    if (text == nullptr)
        return ORU_RC_VALUES_CONSTRAINT;
    const size_t length = std::strlen(text);
    return length >= 1 && length <= 64 ? ORU_OK : ORU_RC_LENGTH_CONSTRAINT;
}

bool property_between(const char *property, int32_t least, int32_t most) {
    ORUDoValue *value = oru_do_properties_get_value(props, property);
    int32_t code = ORU_OK;
    const int32_t n = value != nullptr ? oru_do_value_get_int(value, &code) : 0;
    return value != nullptr && code == ORU_OK && n >= least && n <= most;
}

int32_t in_range_under_condition(ORUDoValue *value) {
    if (!property_between("config.holdTime", 1, 60))
        return ORU_RC_CONSTRAINT_NOT_APPLICABLE;
    return in_range(value);
}

constexpr ConstraintCase kConstraints[] = {
    {"values in a range", nullptr, "values(68..9216)", ORU_DO_TYPE_INT, &mtu, in_range},
    {"values of five", nullptr, "values(576|1280|1492|1500|9000)", ORU_DO_TYPE_INT, &mtu,
     one_of_five},
    {"length of a string", nullptr, "strlen(1..64)", ORU_DO_TYPE_STRING, &description, has_length},
    {"values under a condition", "config.holdTime.values(1..60)", "values(68..9216)",
     ORU_DO_TYPE_INT, &mtu, in_range_under_condition},
};

template <size_t index>
void evaluate(benchmark::State &state) {
    const ConstraintCase &each = kConstraints[index];
    ORUDoCondition *condition =
        each.condition != nullptr ? oru_do_condition_new(each.condition) : nullptr;
    ORUDoConstraint *constraint =
        oru_do_constraint_new_t(condition, each.text, each.typecode, nullptr);
    for (auto _ : state) {
        if (oru_do_constraint_eval(constraint, name, *each.value, props) != ORU_OK)
            state.SkipWithError("does not fit");
    }
    oru_do_constraint_deref(constraint);
    oru_do_condition_deref(condition);
}

template <size_t index>
void evaluate_by_hand(benchmark::State &state) {
    const ConstraintCase &each = kConstraints[index];
    for (auto _ : state) {
        if (each.by_hand(*each.value) != ORU_OK)
            state.SkipWithError("does not fit");
    }
}

template <size_t index>
void compare_constraint() {
    const std::string what = kConstraints[index].what;
    oru::bench::compare(what + "/ours", evaluate<index>);
    oru::bench::compare(what + "/by hand", evaluate_by_hand<index>);
    oru::bench::expect(what, "by hand", oru::bench::at_most(kBound));
}

template <size_t... index>
void compare_constraints(std::index_sequence<index...>) {
    (compare_constraint<index>(), ...);
}

// ---- A condition ----

constexpr char kCondition[] =
    "(config.mtu.values(1500..9216) or config.cost.values(1)) and "
    "config.description.strlen(1..32) and not config.holdTime.is_null()";

void evaluate_condition(benchmark::State &state) {
    ORUDoCondition *condition = oru_do_condition_new(kCondition);
    for (auto _ : state) {
        if (oru_do_condition_eval(condition, name, props) == 0)
            state.SkipWithError("false");
    }
    oru_do_condition_deref(condition);
}

bool has_short_description() {
    ORUDoValue *value = oru_do_properties_get_value(props, "config.description");
    int32_t code = ORU_OK;
    const char *text = value != nullptr ? oru_do_value_get_string(value, &code) : nullptr;
    const size_t length = text != nullptr ? std::strlen(text) : 0;
    return length >= 1 && length <= 32;
}

bool has_hold_time() {
    ORUDoValue *value = oru_do_properties_get_value(props, "config.holdTime");
    return value != nullptr && oru_do_value_is_null(value) == 0;
}

bool condition_by_hand() {
    return (property_between("config.mtu", 1500, 9216) || property_between("config.cost", 1, 1)) &&
           has_short_description() && has_hold_time();
}

void evaluate_condition_by_hand(benchmark::State &state) {
    for (auto _ : state) {
        if (!condition_by_hand())
            state.SkipWithError("false");
    }
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    size_pools();
    make_properties();
    compare_constraints(std::make_index_sequence<std::size(kConstraints)>());
    oru::bench::compare("condition of four terms/ours", evaluate_condition);
    oru::bench::compare("condition of four terms/by hand", evaluate_condition_by_hand);
    oru::bench::expect("condition of four terms", "by hand", oru::bench::at_most(kBound));
    return oru::bench::run_all(argc, argv);
}
