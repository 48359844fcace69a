#include <algorithm>
#include <iterator>

#include "tests/fuzz/value_fuzz.h"

namespace fuzz {

namespace {

// ---- Getters ----

template <auto kGet>
void get(ORUDoValue *value, int32_t *rc) {
    kGet(value, rc);
}

template <auto kGet>
void get_bytes(ORUDoValue *value, int32_t *rc) {
    kGet(value, nullptr, rc);
}

struct Getter {
    int32_t type;
    void (*get)(ORUDoValue *, int32_t *);
};

constexpr Getter kGetters[] = {
    {0, get<oru_do_value_get_unsigned_byte>},
    {1, get<oru_do_value_get_byte>},
    {2, get<oru_do_value_get_unsigned_short>},
    {3, get<oru_do_value_get_short>},
    {4, get<oru_do_value_get_unsigned_int>},
    {5, get<oru_do_value_get_int>},
    {6, get<oru_do_value_get_unsigned_long>},
    {7, get<oru_do_value_get_long>},
    {8, get<oru_do_value_get_string>},
    {9, get<oru_do_value_get_boolean>},
    {10, get<oru_do_value_get_float>},
    {11, get<oru_do_value_get_double>},
    {12, get<oru_do_value_get_datetime>},
    {13, get<oru_do_value_get_duration>},
    {14, get<oru_do_value_get_any_uri>},
    {15, get_bytes<oru_do_value_get_hex_binary>},
    {101, get_bytes<oru_do_value_get_ip_address>},
    {102, get_bytes<oru_do_value_get_nsap_address>},
    {103, get<oru_do_value_get_enumeration>},
    {104, get<oru_do_value_get_choice>},
    {105, get<oru_do_value_get_sequence>},
    {106, get<oru_do_value_get_array>},
    {107, get<oru_do_value_get_mr_uri>},
    {108, get<oru_do_value_get_coll_uri>},
    {109, get<oru_do_value_get_bits>},
};

bool is_signed(int32_t type) {
    return type == 1 || type == 3 || type == 5 || type == 7 || type == 12 || type == 13;
}

bool is_unsigned(int32_t type) {
    return type == 0 || type == 2 || type == 4 || type == 6;
}

bool is_whole(int32_t type) {
    return is_signed(type) || is_unsigned(type);
}

bool is_real(int32_t type) {
    return type == 10 || type == 11;
}

bool is_uri(int32_t type) {
    return type == 14 || type == 107 || type == 108;
}

void check_getters(ORUDoValue *value) {
    for (const Getter &getter : kGetters) {
        int32_t rc = 7;
        getter.get(value, &rc);
        CHECK(rc == (getter.type == oru_do_value_get_type(value) ? 0 : 101));
    }
}

void check_groups(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    CHECK((oru_do_value_is_integer_number(value) != 0) == is_integer(type));
    CHECK((oru_do_value_is_signed_int_number(value) != 0) == is_signed(type));
    CHECK((oru_do_value_is_unsigned_int_number(value) != 0) == is_unsigned(type));
    CHECK((oru_do_value_is_float_number(value) != 0) == is_real(type));
    CHECK((oru_do_value_is_null(value) != 0) == (type == -1));
    CHECK((oru_do_value_is_enumeration(value) != 0) == (type == 103));
    CHECK((oru_do_value_get_uri(value) != nullptr) == is_uri(type));
    CHECK((oru_do_value_get_length(value) >= 0) == (is_sized(type) && type != 103));
    const Value family(oru_new_ip_address_type(value));
    const int32_t size = type == 101 ? oru_do_value_get_length(value) : 0;
    CHECK((family != nullptr) == (size == 4 || size == 5 || size == 16 || size == 17));
}

// A time of a derived type prints as a date; its key text stays the number.
void check_widening(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    int32_t rc = 0;
    const int64_t number = oru_do_value_to_long(value, &rc);
    CHECK(rc == (is_whole(type) ? 0 : 101));
    const int64_t as_signed = oru_do_value_to_int64(value, &rc);
    CHECK(rc == (is_signed(type) ? 0 : 101) && as_signed == (is_signed(type) ? number : 0));
    const uint64_t as_unsigned = oru_do_value_to_u_int64(value, &rc);
    CHECK(rc == (is_unsigned(type) ? 0 : 101));
    CHECK(as_unsigned == (is_unsigned(type) ? static_cast<uint64_t>(number) : 0));
    const double real = oru_do_value_to_double(value, &rc);
    CHECK(rc == (is_real(type) ? 0 : 101) && (is_real(type) || real == 0));
    if (is_signed(type))
        CHECK(unescaped(key_text(value)) == std::to_string(as_signed));
    if (is_unsigned(type))
        CHECK(unescaped(key_text(value)) == std::to_string(as_unsigned));
}

void check_clone(ORUDoValue *value) {
    const Value clone(oru_do_value_clone(value));
    CHECK(clone != nullptr && oru_do_value_equals(value, clone.get()) != 0);
    CHECK(oru_do_value_equals(clone.get(), value) != 0);
    CHECK(oru_do_value_get_type(clone.get()) == oru_do_value_get_type(value));
    CHECK(oru_do_value_get_flags(clone.get()) == oru_do_value_get_flags(value));
    CHECK(oru_do_value_get_typedef_name(clone.get()) == nullptr);
    const int32_t type = oru_do_value_get_type(value);
    if (type >= 0 && !is_uri(type))
        CHECK(oru_do_value_compare(value, clone.get()) == 0);
    if (oru_do_value_get_typedef_name(value) == nullptr && !holds_objects(type))
        CHECK(text_of(value) == text_of(clone.get()));
}

// ---- Order ----

bool is_complex(int32_t type) {
    return type == 104 || type == 105;
}

bool is_list(int32_t type) {
    return type == 106 || type == 109;
}

// Values that hold objects are compared with their like alone.
bool may_compare(int32_t a, int32_t b) {
    return (!holds_objects(a) && !holds_objects(b)) || (is_uri(a) && is_uri(b)) ||
           (is_complex(a) && is_complex(b)) || (is_list(a) && is_list(b));
}

bool is_comparable(int32_t a, int32_t b) {
    if (is_integer(a) != is_integer(b))
        return false;
    return (is_whole(a) && is_whole(b)) || (is_real(a) && is_real(b)) ||
           (a == b && (a == 9 || is_sized(a))) || (holds_objects(a) && may_compare(a, b));
}

// Where the sign says which of the two is the smaller.
bool has_order(int32_t a, int32_t b) {
    return (is_whole(a) && is_whole(b)) || (is_real(a) && a == b) || a == 9 || is_sized(a);
}

void check_reals(ORUDoValue *a, ORUDoValue *b, int32_t result) {
    int32_t rc = 0;
    const double x = oru_do_value_to_double(a, &rc);
    const double y = oru_do_value_to_double(b, &rc);
    CHECK(result == (y > x ? -1 : 1));
}

void check_nostrict(ORUDoValue *a, ORUDoValue *b, int32_t strict) {
    const int32_t type_a = oru_do_value_get_type(a);
    const int32_t type_b = oru_do_value_get_type(b);
    const int32_t result = oru_do_value_compare_nostrict(a, b);
    if (type_a == type_b || (type_a != 8 && type_b != 8)) {
        CHECK(result == strict);
    } else if (is_sized(type_a) && is_sized(type_b)) {
        CHECK(result >= -1 && result <= 1);
        CHECK(oru_do_value_compare_nostrict(b, a) == -result);
    }
}

void check_order(ORUDoValue *a, ORUDoValue *b, bool equal) {
    const int32_t type_a = oru_do_value_get_type(a);
    const int32_t type_b = oru_do_value_get_type(b);
    const int32_t result = oru_do_value_compare(a, b);
    check_nostrict(a, b, result);
    if (is_uri(type_a)) {
        // Nothing is promised but for one held object.
        CHECK(result == 0 || oru_do_value_get_uri(a) != oru_do_value_get_uri(b));
        return;
    }
    CHECK(result >= -2 && result <= 1);
    const int32_t reverse = oru_do_value_compare(b, a);
    CHECK((result == -2) == !is_comparable(type_a, type_b));
    CHECK((result == -2) == (reverse == -2));
    if (result == -2)
        return;
    if (type_a == type_b)
        CHECK((result == 0) == equal);
    else if (is_real(type_a))
        check_reals(a, b, result);
    if (has_order(type_a, type_b))
        CHECK(reverse == -result);
}

bool is_at_most(ORUDoValue *a, ORUDoValue *b) {
    const int32_t result = oru_do_value_compare(a, b);
    return result == -1 || result == 0;
}

}  // namespace

void check_reading(ORUDoValue *value) {
    check_getters(value);
    check_groups(value);
    check_widening(value);
    check_clone(value);
}

void check_pair(ORUDoValue *a, ORUDoValue *b) {
    const bool equal = oru_do_value_equals(a, b) != 0;
    CHECK(equal == (oru_do_value_equals(b, a) != 0));
    CHECK(a != b || equal);
    CHECK(!equal || oru_do_value_get_type(a) == oru_do_value_get_type(b));
    if (may_compare(oru_do_value_get_type(a), oru_do_value_get_type(b)))
        check_order(a, b, equal);
}

// Floats are equal when they are near each other, which does not carry over to a third.
void check_triple(ORUDoValue *a, ORUDoValue *b, ORUDoValue *c) {
    const int32_t types[] = {oru_do_value_get_type(a), oru_do_value_get_type(b),
                             oru_do_value_get_type(c)};
    if (std::any_of(std::begin(types), std::end(types), is_real))
        return;
    if (oru_do_value_equals(a, b) != 0 && oru_do_value_equals(b, c) != 0)
        CHECK(oru_do_value_equals(a, c) != 0);
    if (std::any_of(std::begin(types), std::end(types), holds_objects))
        return;
    if (is_at_most(a, b) && is_at_most(b, c))
        CHECK(is_at_most(a, c));
}

}  // namespace fuzz
