#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "oru/nvlist.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Nvlist;
using oru::test::Uri;
using oru::test::Value;
using oru::test::Vlist;

Value string(const char *text) {
    return Value(oru_do_value_new_string(text));
}
Value integer(int32_t n) {
    return Value(oru_do_value_new_int(n));
}

ORUDoValue *new_uri(const char *text, ORUDoValue *(*make)(ORUDoUri *)) {
    Uri uri(oru_do_uri_new(text));
    return make(uri.get());
}

ORUDoValue *new_array(const std::vector<int32_t> &numbers,
                      ORUDoValue *(*make)(ORUDoVlist *) = oru_do_value_new_array) {
    Vlist list(oru_do_vlist_new());
    for (int32_t n : numbers)
        oru_do_vlist_add(list.get(), integer(n).get());
    return make(list.get());
}

ORUDoValue *new_sequence(const std::vector<std::pair<const char *, int32_t>> &items,
                         ORUDoValue *(*make)(ORUDoNvlist *) = oru_do_value_new_sequence) {
    Nvlist list(oru_do_nvlist_new());
    for (const auto &[name, n] : items)
        oru_do_nvlist_add(list.get(), name, integer(n).get());
    return make(list.get());
}

// A value of a type that has no constructor, or of one whose payload none makes.
Value with_type(int32_t type) {
    struct Head {
        char *typedef_name;
        uint32_t ref;
        int32_t len;
        uint64_t data;
        int32_t type;
    };
    Value val(oru_do_value_new_null());
    reinterpret_cast<Head *>(val.get())->type = type;
    return val;
}

// ---- Widening reads ----

struct Widened {
    ORUDoValue *val;
    int64_t as_long;
};

TEST(ValueWidening, ToLongTakesAllWholeNumbers) {
    const Widened rows[] = {
        {oru_do_value_new_unsigned_byte(255), 255},
        {oru_do_value_new_byte(-1), -1},
        {oru_do_value_new_unsigned_short(65535), 65535},
        {oru_do_value_new_short(-2), -2},
        {oru_do_value_new_unsigned_int(4294967295u), 4294967295},
        {oru_do_value_new_int(-3), -3},
        {oru_do_value_new_unsigned_long(UINT64_MAX), -1},
        {oru_do_value_new_long(INT64_MIN), INT64_MIN},
        {oru_do_value_new_datetime(-4), -4},
        {oru_do_value_new_duration(5), 5},
    };
    for (const Widened &row : rows) {
        Value val(row.val);
        int32_t err = 77;
        EXPECT_EQ(oru_do_value_to_long(val.get(), &err), row.as_long);
        EXPECT_EQ(err, 77) << "written only on refusal";
    }
}

TEST(ValueWidening, SignedAndUnsignedReadsKeepApart) {
    const Widened rows[] = {
        {oru_do_value_new_byte(-1), -1},     {oru_do_value_new_short(-2), -2},
        {oru_do_value_new_int(-3), -3},      {oru_do_value_new_long(INT64_MIN), INT64_MIN},
        {oru_do_value_new_datetime(-4), -4}, {oru_do_value_new_duration(5), 5},
    };
    for (const Widened &row : rows) {
        Value val(row.val);
        int32_t err = 77;
        EXPECT_EQ(oru_do_value_to_int64(val.get(), &err), row.as_long);
        EXPECT_EQ(err, 0);
        EXPECT_EQ(oru_do_value_to_u_int64(val.get(), &err), 0u);
        EXPECT_EQ(err, 101);
    }
    const std::pair<ORUDoValue *, uint64_t> unsigned_rows[] = {
        {oru_do_value_new_unsigned_byte(255), 255},
        {oru_do_value_new_unsigned_short(65535), 65535},
        {oru_do_value_new_unsigned_int(4294967295u), 4294967295u},
        {oru_do_value_new_unsigned_long(UINT64_MAX), UINT64_MAX},
    };
    for (const auto &[made, n] : unsigned_rows) {
        Value val(made);
        int32_t err = 77;
        EXPECT_EQ(oru_do_value_to_u_int64(val.get(), &err), n);
        EXPECT_EQ(err, 0);
        EXPECT_EQ(oru_do_value_to_int64(val.get(), &err), 0);
        EXPECT_EQ(err, 101);
    }
}

TEST(ValueWidening, ToDoubleTakesNoIntegers) {
    int32_t err = 77;
    EXPECT_EQ(oru_do_value_to_double(Value(oru_do_value_new_float(0.5f)).get(), &err), 0.5);
    EXPECT_EQ(err, 0);
    err = 77;
    EXPECT_EQ(oru_do_value_to_double(Value(oru_do_value_new_double(1e300)).get(), &err), 1e300);
    EXPECT_EQ(err, 0);
    EXPECT_EQ(oru_do_value_to_double(integer(5).get(), &err), 0);
    EXPECT_EQ(err, 101);
}

TEST(ValueWidening, RefusesAllOtherTypes) {
    const Value rows[] = {
        Value(oru_do_value_new_null()),
        Value(oru_do_value_new_default()),
        string("5"),
        Value(oru_do_value_new_boolean(1)),
        Value(oru_do_value_new_hex_binary("a", 1)),
        Value(oru_do_value_new_enumeration("a")),
    };
    for (const Value &val : rows) {
        for (auto read : {oru_do_value_to_long, oru_do_value_to_int64}) {
            int32_t err = 0;
            EXPECT_EQ(read(val.get(), &err), 0);
            EXPECT_EQ(err, 101);
        }
        int32_t err = 0;
        EXPECT_EQ(oru_do_value_to_u_int64(val.get(), &err), 0u);
        EXPECT_EQ(err, 101);
        err = 0;
        EXPECT_EQ(oru_do_value_to_double(val.get(), &err), 0.0);
        EXPECT_EQ(err, 101);
    }
    int32_t err = 0;
    Value real(oru_do_value_new_double(1));
    EXPECT_EQ(oru_do_value_to_long(real.get(), &err), 0);
    EXPECT_EQ(err, 101);
}

// ---- Equality ----

void expect_equal(const Value &a, const Value &b, bool equal) {
    EXPECT_EQ(oru_do_value_equals(a.get(), b.get()) != 0, equal);
    EXPECT_EQ(oru_do_value_equals(b.get(), a.get()) != 0, equal);
}

TEST(ValueEquality, NumbersOfOneType) {
    expect_equal(Value(oru_do_value_new_unsigned_byte(200)),
                 Value(oru_do_value_new_unsigned_byte(200)), true);
    expect_equal(Value(oru_do_value_new_byte(-1)), Value(oru_do_value_new_byte(1)), false);
    expect_equal(Value(oru_do_value_new_unsigned_short(256)),
                 Value(oru_do_value_new_unsigned_short(0)), false);
    expect_equal(Value(oru_do_value_new_short(-5)), Value(oru_do_value_new_short(-5)), true);
    expect_equal(Value(oru_do_value_new_unsigned_int(65536)),
                 Value(oru_do_value_new_unsigned_int(0)), false);
    expect_equal(integer(7), integer(7), true);
    expect_equal(Value(oru_do_value_new_unsigned_long(uint64_t{1} << 32)),
                 Value(oru_do_value_new_unsigned_long(0)), false);
    expect_equal(Value(oru_do_value_new_long(-9)), Value(oru_do_value_new_long(-9)), true);
    expect_equal(Value(oru_do_value_new_datetime(1)), Value(oru_do_value_new_datetime(2)), false);
    expect_equal(Value(oru_do_value_new_duration(3)), Value(oru_do_value_new_duration(3)), true);
}

TEST(ValueEquality, NoneAcrossTypes) {
    expect_equal(integer(1), Value(oru_do_value_new_long(1)), false);
    expect_equal(Value(oru_do_value_new_float(1)), Value(oru_do_value_new_double(1)), false);
    expect_equal(string("a"), Value(oru_do_value_new_enumeration("a")), false);
    expect_equal(Value(oru_do_value_new_null()), Value(oru_do_value_new_default()), false);
    expect_equal(Value(oru_do_value_new_hex_binary("abcd", 4)),
                 Value(oru_do_value_new_ip_address("abcd", 4)), false);
}

TEST(ValueEquality, ValuesWithoutPayloadEqualTheirKind) {
    expect_equal(Value(oru_do_value_new_null()), Value(oru_do_value_new_null()), true);
    expect_equal(Value(oru_do_value_new_default()), Value(oru_do_value_new_default()), true);
}

TEST(ValueEquality, ValuesOfUnknownTypeEqualTheirKind) {
    expect_equal(with_type(-3), with_type(-3), true);
    expect_equal(with_type(-3), Value(oru_do_value_new_null()), false);
}

TEST(ValueEquality, ValuesOfNoTypeEqualThemselvesOnly) {
    for (int32_t code : {16, 100, 110, -4}) {
        const Value val = with_type(code);
        expect_equal(val, val, true);
        expect_equal(val, with_type(code), false);
        EXPECT_EQ(oru_do_value_compare(val.get(), val.get()), -2) << code;
    }
}

TEST(ValueEquality, BooleansCompareTheirWords) {
    expect_equal(Value(oru_do_value_new_boolean(1)), Value(oru_do_value_new_boolean(1)), true);
    expect_equal(Value(oru_do_value_new_boolean(1)), Value(oru_do_value_new_boolean(2)), false);
}

TEST(ValueEquality, RealsAreEqualWithinTheBound) {
    const auto real = [](double x) { return Value(oru_do_value_new_double(x)); };
    const auto small = [](float x) { return Value(oru_do_value_new_float(x)); };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    expect_equal(real(1.0), real(1.000001), true);
    expect_equal(real(1.0), real(1.001), false);
    expect_equal(real(0.0), real(1e-5), true);
    expect_equal(real(0.0), real(1.01e-5), false);
    expect_equal(real(nan), real(1.0), true);
    expect_equal(real(infinity), real(infinity), true);
    expect_equal(real(infinity), real(1.0), false);
    expect_equal(small(1.0f), small(1.000001f), true);
    expect_equal(small(1.0f), small(1.001f), false);
    expect_equal(small(std::nanf("")), small(5.0f), true);
    // 1e-5 as a float is a little below 1e-5; the next float is above it.
    expect_equal(small(0.0f), small(1e-5f), true);
    expect_equal(small(0.0f), small(std::nextafterf(1e-5f, 1.0f)), false);
}

TEST(ValueEquality, TextsCompareByLengthAndByTextBeforeAZero) {
    expect_equal(string("abc"), string("abc"), true);
    expect_equal(string("abc"), string("abd"), false);
    expect_equal(string("abc"), string("abcd"), false);
    expect_equal(string(""), string(""), true);
    expect_equal(Value(oru_do_value_new_enumeration("up")),
                 Value(oru_do_value_new_enumeration("up")), true);
    expect_equal(Value(oru_do_value_new_string_l("a\0b", 3)),
                 Value(oru_do_value_new_string_l("a\0c", 3)), true);
    expect_equal(Value(oru_do_value_new_string_l("a\0b", 3)),
                 Value(oru_do_value_new_string_l("a\0b", 2)), false);
}

TEST(ValueEquality, BytesCompareWhole) {
    for (auto make : {oru_do_value_new_hex_binary, oru_do_value_new_ip_address,
                      oru_do_value_new_nsap_address}) {
        expect_equal(Value(make("a\0b", 3)), Value(make("a\0b", 3)), true);
        expect_equal(Value(make("a\0b", 3)), Value(make("a\0c", 3)), false);
        expect_equal(Value(make("ab", 2)), Value(make("ab", 1)), false);
        expect_equal(Value(make("a", 0)), Value(make("b", 0)), true);
    }
}

TEST(ValueEquality, UrisCompareTheirTexts) {
    for (auto make :
         {oru_do_value_new_any_uri, oru_do_value_new_mr_uri, oru_do_value_new_coll_uri}) {
        expect_equal(Value(new_uri("/a", make)), Value(new_uri("/a", make)), true);
        expect_equal(Value(new_uri("/a", make)), Value(new_uri("/a/", make)), false);
    }
    expect_equal(Value(new_uri("/a", oru_do_value_new_any_uri)),
                 Value(new_uri("/a", oru_do_value_new_mr_uri)), false);
}

TEST(ValueEquality, ListsCompareTheirEntriesInOrder) {
    for (auto make : {oru_do_value_new_array, oru_do_value_new_bits}) {
        expect_equal(Value(new_array({1, 2}, make)), Value(new_array({1, 2}, make)), true);
        expect_equal(Value(new_array({1, 2}, make)), Value(new_array({2, 1}, make)), false);
        expect_equal(Value(new_array({1, 2}, make)), Value(new_array({1}, make)), false);
        expect_equal(Value(new_array({}, make)), Value(new_array({}, make)), true);
    }
    for (auto make : {oru_do_value_new_choice, oru_do_value_new_sequence}) {
        expect_equal(Value(new_sequence({{"a", 1}}, make)), Value(new_sequence({{"a", 1}}, make)),
                     true);
        expect_equal(Value(new_sequence({{"a", 1}}, make)), Value(new_sequence({{"b", 1}}, make)),
                     false);
        expect_equal(Value(new_sequence({{"a", 1}}, make)), Value(new_sequence({{"a", 2}}, make)),
                     false);
    }
    expect_equal(Value(new_array({})), Value(new_array({}, oru_do_value_new_bits)), false);
}

TEST(ValueEquality, IgnoresTypedefAndFlags) {
    Value a = integer(1);
    Value b = integer(1);
    oru_do_value_set_typedef_name(a.get(), "Percent");
    oru_do_value_set_default_flag(a.get());
    expect_equal(a, b, true);
}

TEST(ValueEquality, AStringWithoutStorageReadsAsEmpty) {
    poolheap_fail_nth(2, 0);
    Value unstored = string("abc");
    poolheap_fail_off();
    expect_equal(unstored, string("abc"), false);
    expect_equal(unstored, string(""), true);
    EXPECT_EQ(oru_do_value_compare(unstored.get(), string("a").get()), -1);
    EXPECT_FALSE(oru_do_value_equals_str(unstored.get(), "abc"));
    EXPECT_FALSE(oru_do_value_equals_str(unstored.get(), ""));
}

// ---- Equality with a text ----

void expect_equals_text(ORUDoValue *made, const char *text, bool equal) {
    Value val(made);
    EXPECT_EQ(oru_do_value_equals_str(val.get(), text) != 0, equal) << text;
}

TEST(ValueEqualsText, ByTheTextForm) {
    expect_equals_text(oru_do_value_new_boolean(1), "true", true);
    expect_equals_text(oru_do_value_new_boolean(-5), "true", true);
    expect_equals_text(oru_do_value_new_boolean(0), "false", true);
    expect_equals_text(oru_do_value_new_boolean(1), "1", false);
    expect_equals_text(oru_do_value_new_int(5), "5", true);
    expect_equals_text(oru_do_value_new_int(5), "05", false);
    expect_equals_text(oru_do_value_new_double(0.5), "0.5", true);
    expect_equals_text(oru_do_value_new_string("a"), "a", true);
    expect_equals_text(oru_do_value_new_string("a"), "a ", false);
    expect_equals_text(oru_do_value_new_enumeration("up"), "up", true);
    expect_equals_text(new_uri("/a", oru_do_value_new_mr_uri), "/a", true);
    expect_equals_text(new_uri("/a", oru_do_value_new_any_uri), "/b", false);
    expect_equals_text(oru_do_value_new_ip_address("\x0a\x00\x00\x01", 4), "10.0.0.1", true);
    expect_equals_text(oru_do_value_new_hex_binary("\xab", 1), "AB", true);
    expect_equals_text(oru_do_value_new_null(), "null", true);
    expect_equals_text(new_array({1}), "[\n\t1\n]\n", true);
}

TEST(ValueEqualsText, AValueWithoutAUriEqualsNothing) {
    for (int32_t type : {14, 107, 108}) {
        const Value val = with_type(type);
        EXPECT_FALSE(oru_do_value_equals_str(val.get(), "")) << type;
        EXPECT_FALSE(oru_do_value_equals_str(val.get(), "null")) << type;
    }
}

int32_t print_hook(intptr_t, ORUDoValue *, int32_t tabs, ORUDoStrbuf *strbuf) {
    EXPECT_EQ(tabs, 0);
    oru_do_strbuf_add_string(strbuf, "hooked");
    return 42;
}

TEST(ValueEqualsText, UsesTheDefaultFormatterWhereItPrints) {
    const ORUDoValueFormatter formatter{0, print_hook, nullptr, nullptr};
    oru_do_value_set_default_formatter(&formatter);
    expect_equals_text(oru_do_value_new_int(5), "hooked", true);
    expect_equals_text(oru_do_value_new_string("a"), "a", true);
    oru_do_value_set_default_formatter(nullptr);
}

TEST(ValueEqualsText, WithoutABufferIsNotEqual) {
    Value val = integer(5);
    oru::test::sweep_oom(
        [&] {
            const int32_t equal = oru_do_value_equals_str(val.get(), "5");
            EXPECT_EQ(equal == 0, oru::test::oom_hit());
        },
        {.promised_deaths = {}, .at_least = 2});
}

// ---- Ordering ----

void expect_order(ORUDoValue *made_a, ORUDoValue *made_b, int32_t forth, int32_t back) {
    Value a(made_a);
    Value b(made_b);
    EXPECT_EQ(oru_do_value_compare(a.get(), b.get()), forth);
    EXPECT_EQ(oru_do_value_compare(b.get(), a.get()), back);
    EXPECT_EQ(oru_do_value_compare_nostrict(a.get(), b.get()), forth);
    EXPECT_EQ(oru_do_value_compare_nostrict(b.get(), a.get()), back);
}

constexpr uint64_t kTop = uint64_t{1} << 63;

TEST(ValueOrder, IntegersCompareAcrossWidthsAndSigns) {
    expect_order(oru_do_value_new_int(-1), oru_do_value_new_unsigned_int(1), -1, 1);
    expect_order(oru_do_value_new_byte(5), oru_do_value_new_long(5), 0, 0);
    expect_order(oru_do_value_new_short(-5), oru_do_value_new_byte(-4), -1, 1);
    expect_order(oru_do_value_new_unsigned_byte(200), oru_do_value_new_unsigned_long(kTop), -1, 1);
    expect_order(oru_do_value_new_unsigned_long(kTop), oru_do_value_new_unsigned_long(kTop + 1), -1,
                 1);
    expect_order(oru_do_value_new_unsigned_short(7), oru_do_value_new_int(7), 0, 0);
}

TEST(ValueOrder, UnsignedWithItsTopBitIsAboveAllSigned) {
    expect_order(oru_do_value_new_long(5), oru_do_value_new_unsigned_long(kTop), -1, 1);
    expect_order(oru_do_value_new_long(-1), oru_do_value_new_unsigned_long(UINT64_MAX), -1, 1);
    expect_order(oru_do_value_new_long(INT64_MAX), oru_do_value_new_unsigned_long(kTop - 1), 0, 0);
}

TEST(ValueOrder, TimesCompareWithEachOtherOnly) {
    expect_order(oru_do_value_new_datetime(1), oru_do_value_new_duration(2), -1, 1);
    expect_order(oru_do_value_new_datetime(3), oru_do_value_new_datetime(3), 0, 0);
    expect_order(oru_do_value_new_int(1), oru_do_value_new_datetime(1), -2, -2);
    expect_order(oru_do_value_new_unsigned_long(1), oru_do_value_new_duration(1), -2, -2);
    expect_order(oru_do_value_new_datetime(1), oru_do_value_new_boolean(1), -2, -2);
}

TEST(ValueOrder, RealsCompareWithRealsOnly) {
    expect_order(oru_do_value_new_int(1), oru_do_value_new_double(1.0), -2, -2);
    expect_order(oru_do_value_new_double(1.0), oru_do_value_new_double(2.0), -1, 1);
    expect_order(oru_do_value_new_double(1.0), oru_do_value_new_double(1.000001), 0, 0);
    expect_order(oru_do_value_new_float(1.5f), oru_do_value_new_float(2.5f), -1, 1);
    expect_order(oru_do_value_new_float(1.0f), oru_do_value_new_double(1.5), -1, 1);
    expect_order(oru_do_value_new_string("1"), oru_do_value_new_double(1.0), -2, -2);
}

TEST(ValueOrder, AFloatAndADoubleAreNeverTheSame) {
    expect_order(oru_do_value_new_float(1.0f), oru_do_value_new_double(1.0), 1, 1);
}

TEST(ValueOrder, BooleansCompareTheirWordsUnsigned) {
    expect_order(oru_do_value_new_boolean(0), oru_do_value_new_boolean(1), -1, 1);
    expect_order(oru_do_value_new_boolean(1), oru_do_value_new_boolean(-1), -1, 1);
    expect_order(oru_do_value_new_boolean(1), oru_do_value_new_boolean(1), 0, 0);
    expect_order(oru_do_value_new_boolean(1), oru_do_value_new_null(), -2, -2);
    expect_order(oru_do_value_new_boolean(1), oru_do_value_new_int(1), -2, -2);
}

TEST(ValueOrder, SizedPayloadsGoByLengthFirst) {
    expect_order(oru_do_value_new_string("b"), oru_do_value_new_string("aa"), -1, 1);
    expect_order(oru_do_value_new_string("ab"), oru_do_value_new_string("ac"), -1, 1);
    expect_order(oru_do_value_new_string("ab"), oru_do_value_new_string("ab"), 0, 0);
    expect_order(oru_do_value_new_string(""), oru_do_value_new_string(""), 0, 0);
    expect_order(oru_do_value_new_enumeration("a"), oru_do_value_new_enumeration("b"), -1, 1);
    expect_order(oru_do_value_new_hex_binary("\x7f", 1), oru_do_value_new_hex_binary("\x80", 1), -1,
                 1);
    expect_order(oru_do_value_new_ip_address("\x01\x02\x03\x04", 4),
                 oru_do_value_new_ip_address("\x01\x02\x03\x05", 4), -1, 1);
    expect_order(oru_do_value_new_nsap_address("\x01", 1),
                 oru_do_value_new_nsap_address("\x01\x00", 2), -1, 1);
    // All bytes count here, those behind a zero too.
    expect_order(oru_do_value_new_string_l("a\0b", 3), oru_do_value_new_string_l("a\0c", 3), -1, 1);
}

void expect_strictness(ORUDoValue *made_a, ORUDoValue *made_b, int32_t relaxed) {
    Value a(made_a);
    Value b(made_b);
    EXPECT_EQ(oru_do_value_compare(a.get(), b.get()), -2);
    EXPECT_EQ(oru_do_value_compare_nostrict(a.get(), b.get()), relaxed);
}

TEST(ValueOrder, StringsCompareWithOtherSizedTypesWhenNotStrict) {
    expect_strictness(oru_do_value_new_string("abc"), oru_do_value_new_enumeration("abc"), 0);
    expect_strictness(oru_do_value_new_enumeration("abc"), oru_do_value_new_string("abc"), 0);
    expect_strictness(oru_do_value_new_string("abc"), oru_do_value_new_hex_binary("abcd", 4), -1);
    expect_strictness(oru_do_value_new_ip_address("abcd", 4), oru_do_value_new_string("abcc"), 1);
    expect_strictness(oru_do_value_new_nsap_address("a", 1), oru_do_value_new_string("b"), -1);
    expect_strictness(oru_do_value_new_hex_binary("a", 1), oru_do_value_new_enumeration("a"), -2);
}

TEST(ValueOrder, AStringIsLongerThanWhatHasNoLength) {
    expect_strictness(oru_do_value_new_string(""), oru_do_value_new_null(), 1);
    expect_strictness(oru_do_value_new_string("a"), oru_do_value_new_boolean(1), 1);
    expect_strictness(oru_do_value_new_string("a"), oru_do_value_new_datetime(1), 1);
    expect_strictness(oru_do_value_new_string("a"), new_array({1}), 1);
    expect_strictness(oru_do_value_new_string("a"), new_uri("/a", oru_do_value_new_mr_uri), 1);
    expect_strictness(oru_do_value_new_string("a"), oru_do_value_new_int(1), -2);
    expect_strictness(oru_do_value_new_null(), oru_do_value_new_string(""), -2);
    expect_strictness(oru_do_value_new_datetime(1), oru_do_value_new_string(""), -2);
}

TEST(ValueOrder, ListsGoByTheirCountWhenNotEqual) {
    expect_order(new_array({1, 2}), new_array({1, 2}), 0, 0);
    expect_order(new_array({9}), new_array({1, 2}), -1, 1);
    expect_order(new_array({1}), new_array({2}), 1, 1);
    expect_order(new_array({}), new_array({}), 0, 0);
    expect_order(new_array({1}, oru_do_value_new_bits), new_array({1, 2}, oru_do_value_new_bits),
                 -1, 1);
    expect_order(new_sequence({{"a", 1}}), new_sequence({{"a", 1}}), 0, 0);
    expect_order(new_sequence({{"z", 1}}), new_sequence({{"a", 1}, {"b", 2}}), -1, 1);
    expect_order(new_sequence({{"a", 1}}), new_sequence({{"a", 2}}), 1, 1);
    expect_order(new_sequence({}, oru_do_value_new_choice),
                 new_sequence({{"a", 1}}, oru_do_value_new_choice), -1, 1);
}

TEST(ValueOrder, ListsAndUrisDoNotCompareWithOtherPayloads) {
    expect_order(new_array({1}), oru_do_value_new_null(), -2, -2);
    expect_order(new_array({1}), new_sequence({{"a", 1}}), -2, -2);
    expect_order(new_uri("/a", oru_do_value_new_mr_uri), new_array({1}), -2, -2);
    expect_order(new_uri("/a", oru_do_value_new_mr_uri), oru_do_value_new_boolean(1), -2, -2);
}

TEST(ValueOrder, OnlyTheSameHeldUriIsKnownToBeEqual) {
    Uri uri(oru_do_uri_new("/a"));
    Value a(oru_do_value_new_mr_uri(uri.get()));
    Value b(oru_do_value_new_coll_uri(uri.get()));
    EXPECT_EQ(oru_do_value_compare(a.get(), b.get()), 0);
    // Of two records of one text the order depends on memory and says nothing; equality does.
    Value c(new_uri("/a", oru_do_value_new_mr_uri));
    EXPECT_TRUE(oru_do_value_equals(a.get(), c.get()));
}

TEST(ValueOrder, AUriWithoutATextHasNone) {
    for (int32_t type : {14, 107, 108}) {
        const Value without = with_type(type);
        const Value uri(new_uri("/a", oru_do_value_new_mr_uri));
        EXPECT_EQ(oru_do_value_compare(without.get(), uri.get()), -2) << type;
        EXPECT_EQ(oru_do_value_compare(uri.get(), without.get()), -2) << type;
        EXPECT_EQ(oru_do_value_compare(without.get(), without.get()), -2) << type;
    }
}

TEST(ValueOrder, ValuesWithoutPayloadHaveNone) {
    expect_order(oru_do_value_new_null(), oru_do_value_new_null(), -2, -2);
    expect_order(oru_do_value_new_default(), oru_do_value_new_default(), -2, -2);
    expect_order(oru_do_value_new_null(), oru_do_value_new_int(1), -2, -2);
    expect_order(oru_do_value_new_null(), oru_do_value_new_float(1), -2, -2);
    Value null(oru_do_value_new_null());
    EXPECT_TRUE(oru_do_value_equals(null.get(), null.get()));
    EXPECT_EQ(oru_do_value_compare(null.get(), null.get()), -2);
}

TEST(ValueOrderNull, ArgumentsAreAsserted) {
    Value val = integer(1);
    int32_t err = 0;
    EXPECT_ASSERTION(oru_do_value_to_long(nullptr, &err), "val");
    EXPECT_ASSERTION(oru_do_value_to_int64(nullptr, &err), "val");
    EXPECT_ASSERTION(oru_do_value_to_int64(val.get(), nullptr), "errp");
    EXPECT_ASSERTION(oru_do_value_to_u_int64(nullptr, &err), "val");
    EXPECT_ASSERTION(oru_do_value_to_u_int64(val.get(), nullptr), "errp");
    EXPECT_ASSERTION(oru_do_value_to_double(nullptr, &err), "val");
    EXPECT_ASSERTION(oru_do_value_to_double(val.get(), nullptr), "errp");
    EXPECT_ASSERTION(oru_do_value_equals(nullptr, val.get()), "val1");
    EXPECT_ASSERTION(oru_do_value_equals(val.get(), nullptr), "val2");
    EXPECT_ASSERTION(oru_do_value_equals_str(nullptr, "a"), "val1");
    EXPECT_ASSERTION(oru_do_value_equals_str(val.get(), nullptr), "val2");
    EXPECT_ASSERTION(oru_do_value_compare(nullptr, val.get()), "val1");
    EXPECT_ASSERTION(oru_do_value_compare(val.get(), nullptr), "val2");
    EXPECT_ASSERTION(oru_do_value_compare_nostrict(nullptr, val.get()), "val1");
    EXPECT_ASSERTION(oru_do_value_compare_nostrict(val.get(), nullptr), "val2");
}

}  // namespace
