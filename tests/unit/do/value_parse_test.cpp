#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Strbuf;
using oru::test::Value;

// The value that comes of a text, and the status, which was `before` in front of the call.
struct Outcome {
    Value val;
    int32_t err;
};

Outcome parse(const std::string &text, int32_t type, int32_t before = 0) {
    Outcome outcome{nullptr, before};
    outcome.val.reset(oru_do_value_new_from_string(text.c_str(), type, &outcome.err));
    return outcome;
}

void expect_status(const std::string &text, int32_t type, int32_t status) {
    const Outcome outcome = parse(text, type);
    EXPECT_EQ(outcome.val, nullptr) << '"' << text << "\" as " << type;
    EXPECT_EQ(outcome.err, status) << '"' << text << "\" as " << type;
}

template <auto get>
auto number_from(const std::string &text, int32_t type) {
    const Outcome outcome = parse(text, type);
    EXPECT_EQ(outcome.err, 0) << text;
    int32_t err = 77;
    const auto n = get(outcome.val.get(), &err);
    EXPECT_EQ(err, 0) << text;
    return n;
}

const int32_t kIntegers[] = {0, 1, 2, 3, 4, 5, 6, 7, 12, 13};

TEST(ValueParse, IntegersOfEveryType) {
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_byte>("255", 0), 255);
    EXPECT_EQ(number_from<oru_do_value_get_byte>("-128", 1), -128);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_short>("65535", 2), 65535);
    EXPECT_EQ(number_from<oru_do_value_get_short>("-32768", 3), -32768);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_int>("4294967295", 4), 4294967295u);
    EXPECT_EQ(number_from<oru_do_value_get_int>("-2147483648", 5), INT32_MIN);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_long>("18446744073709551615", 6), UINT64_MAX);
    EXPECT_EQ(number_from<oru_do_value_get_long>("-9223372036854775808", 7), INT64_MIN);
    EXPECT_EQ(number_from<oru_do_value_get_datetime>("9223372036854775807", 12), INT64_MAX);
    EXPECT_EQ(number_from<oru_do_value_get_duration>("-1", 13), -1);
}

TEST(ValueParse, IntegersAreCutToTheirWidth) {
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_byte>("300", 0), 44);
    EXPECT_EQ(number_from<oru_do_value_get_byte>("200", 1), -56);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_short>("-1", 2), 65535);
    EXPECT_EQ(number_from<oru_do_value_get_short>("70000", 3), 4464);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_int>("4294967296", 4), 0u);
    EXPECT_EQ(number_from<oru_do_value_get_int>("4294967295", 5), -1);
    EXPECT_EQ(number_from<oru_do_value_get_unsigned_long>("-1", 6), UINT64_MAX);
}

TEST(ValueParse, IntegersMayHaveBlanksInFrontAndASign) {
    for (int32_t type : kIntegers) {
        for (const char *text : {"12", " 12", "\t\n+12", "012"}) {
            int32_t err = 0;
            EXPECT_EQ(oru_do_value_to_long(parse(text, type).val.get(), &err), 12) << type;
            EXPECT_EQ(err, 0);
        }
    }
}

TEST(ValueParse, IntegersOfManyDigitsAreExact) {
    for (int32_t type : {6, 7, 12, 13}) {
        int32_t err = 0;
        const auto number = [&](const char *text) {
            return oru_do_value_to_long(parse(text, type).val.get(), &err);
        };
        EXPECT_EQ(number("-0"), 0);
        EXPECT_EQ(number("999999999999999999"), 999999999999999999);
        EXPECT_EQ(number("-999999999999999999"), -999999999999999999);
        EXPECT_EQ(number("1000000000000000000"), 1000000000000000000);
        EXPECT_EQ(number("-1234567890123456789"), -1234567890123456789);
        EXPECT_EQ(number("0000000000000000000000012"), 12);
        EXPECT_EQ(err, 0);
    }
}

TEST(ValueParse, AnErrorNumberFromBeforeDoesNoHarmAndIsCleared) {
    for (const auto &[text, type] : std::vector<std::pair<const char *, int32_t>>{
             {"12", 5}, {" 12", 6}, {"1.5", 11}, {"true", 9}, {"a", 8}}) {
        errno = ERANGE;
        const Outcome outcome = parse(text, type);
        EXPECT_EQ(errno, 0) << type;
        EXPECT_NE(outcome.val, nullptr) << type;
        EXPECT_EQ(outcome.err, 0) << type;
    }
}

TEST(ValueParse, IntegersOfAnotherFormAreRefused) {
    for (int32_t type : kIntegers) {
        for (const char *text : {"", " ", "12 ", "12a", "a", "+", "-", "--1", "-+1", "0x10", "1.0",
                                 "123456789012345678 ", "1234567890123456789a",
                                 "99999999999999999999", "-99999999999999999999"})
            expect_status(text, type, 101);
    }
    expect_status("9223372036854775808", 7, 101);
    expect_status("18446744073709551616", 6, 101);
}

TEST(ValueParse, AStatusThatIsSetStopsIntegersAndNoFloats) {
    for (int32_t type : kIntegers) {
        const Outcome outcome = parse("12", type, 101);
        EXPECT_EQ(outcome.val, nullptr);
        EXPECT_EQ(outcome.err, 101);
    }
    const Outcome real = parse("12", 11, 101);
    int32_t err = 77;
    EXPECT_EQ(oru_do_value_get_double(real.val.get(), &err), 12.0);
    EXPECT_EQ(real.err, 101);
    EXPECT_EQ(oru_do_value_get_float(parse("12", 10, 101).val.get(), &err), 12.0f);
}

TEST(ValueParse, OtherTypesDoNotLookAtTheStatus) {
    for (const auto &[text, type] : std::vector<std::pair<const char *, int32_t>>{{"a", 8},
                                                                                  {"true", 9},
                                                                                  {"ab", 15},
                                                                                  {"1.2.3.4", 101},
                                                                                  {"49", 102},
                                                                                  {"a", 103},
                                                                                  {"a b", 109},
                                                                                  {"/a", 107}}) {
        const Outcome outcome = parse(text, type, 101);
        EXPECT_NE(outcome.val, nullptr) << type;
        EXPECT_EQ(outcome.err, 101);
    }
}

TEST(ValueParse, Floats) {
    EXPECT_EQ(number_from<oru_do_value_get_float>("1.5", 10), 1.5f);
    EXPECT_EQ(number_from<oru_do_value_get_double>(" -2.5e3", 11), -2500.0);
    EXPECT_EQ(number_from<oru_do_value_get_double>("0x1p4", 11), 16.0);
    EXPECT_TRUE(std::isinf(number_from<oru_do_value_get_double>("inf", 11)));
    EXPECT_TRUE(std::isnan(number_from<oru_do_value_get_float>("nan", 10)));
}

TEST(ValueParse, FloatsOfAnotherFormGiveTheStatusAndAValue) {
    int32_t err = 77;
    for (const char *text : {"", "x", "1.5 ", "1e999", "1,5"}) {
        const Outcome real = parse(text, 11);
        EXPECT_EQ(real.err, 101) << text;
        EXPECT_EQ(oru_do_value_get_type(real.val.get()), 11);
        const Outcome small = parse(text, 10);
        EXPECT_EQ(small.err, 101) << text;
        EXPECT_EQ(oru_do_value_get_type(small.val.get()), 10);
    }
    EXPECT_EQ(oru_do_value_get_double(parse("x", 11).val.get(), &err), 0.0);
    EXPECT_EQ(oru_do_value_get_double(parse("1.5 ", 11).val.get(), &err), 1.5);
    EXPECT_EQ(parse("1e39", 10).err, 101) << "too large for a float";
    EXPECT_EQ(parse("1e39", 11).err, 0);
    // Too small a number is out of range as well.
    EXPECT_EQ(parse("1e-400", 11).err, 101);
    EXPECT_EQ(oru_do_value_get_double(parse("1e-400", 11).val.get(), &err), 0.0);
    EXPECT_EQ(parse("1e-50", 10).err, 101);
    EXPECT_EQ(parse("1e-50", 11).err, 0);
}

// What an earlier call left there says nothing about this one.
TEST(ValueParse, AnOldErrorNumberIsClearedFirst) {
    for (int32_t type : kIntegers) {
        errno = ERANGE;
        EXPECT_EQ(parse("12", type).err, 0) << type;
    }
    for (int32_t type : {10, 11}) {
        errno = ERANGE;
        EXPECT_EQ(parse("12", type).err, 0) << type;
    }
}

TEST(ValueParse, StringsAndEnumerationsTakeAnyText) {
    int32_t err = 77;
    EXPECT_STREQ(oru_do_value_get_string(parse(" a b ", 8).val.get(), &err), " a b ");
    EXPECT_STREQ(oru_do_value_get_string(parse("", 8).val.get(), &err), "");
    EXPECT_STREQ(oru_do_value_get_enumeration(parse("up", 103).val.get(), &err), "up");
    EXPECT_STREQ(oru_do_value_get_enumeration(parse("", 103).val.get(), &err), "");
}

TEST(ValueParse, AnUnknownTypeMakesAString) {
    const Outcome outcome = parse("abc", -3);
    int32_t err = 77;
    EXPECT_EQ(outcome.err, 0);
    EXPECT_STREQ(oru_do_value_get_string(outcome.val.get(), &err), "abc");
}

TEST(ValueParse, NullIsNullWhateverTheTextSays) {
    EXPECT_EQ(oru_do_value_get_type(parse("12", -1).val.get()), -1);
}

TEST(ValueParse, BooleansAreTwoWords) {
    EXPECT_EQ(number_from<oru_do_value_get_boolean>("true", 9), 1);
    EXPECT_EQ(number_from<oru_do_value_get_boolean>("false", 9), 0);
    for (const char *text : {"TRUE", "True", "1", "0", "", " true", "true "})
        expect_status(text, 9, 110);
}

TEST(ValueParse, UrisOfAllThreeTypes) {
    for (int32_t type : {14, 107, 108}) {
        for (const char *text : {"/a/b=1", "//", "not a uri", ""}) {
            const Outcome outcome = parse(text, type);
            EXPECT_EQ(outcome.err, 0);
            EXPECT_EQ(oru_do_value_get_type(outcome.val.get()), type);
            EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_value_get_uri(outcome.val.get())), text);
        }
    }
}

template <auto get>
std::string bytes_from(const std::string &text, int32_t type) {
    const Outcome outcome = parse(text, type);
    EXPECT_EQ(outcome.err, 0) << text;
    int32_t len = -7;
    int32_t err = 77;
    if (outcome.val == nullptr)
        return "(null)";
    const uint8_t *bytes = get(outcome.val.get(), &len, &err);
    EXPECT_EQ(err, 0) << text;
    return {reinterpret_cast<const char *>(bytes), static_cast<size_t>(len)};
}

constexpr auto hex_from = bytes_from<oru_do_value_get_hex_binary>;
constexpr auto address_from = bytes_from<oru_do_value_get_ip_address>;
constexpr auto nsap_from = bytes_from<oru_do_value_get_nsap_address>;

template <size_t size>
std::string bytes(const char (&literal)[size]) {
    return {literal, size - 1};
}

TEST(ValueParse, HexBinary) {
    EXPECT_EQ(hex_from("00fFa1", 15), bytes("\x00\xff\xa1"));
    EXPECT_EQ(hex_from("", 15), "");
    EXPECT_EQ(hex_from("zz", 15), bytes("\x00"));
    EXPECT_EQ(hex_from(std::string(400, 'a'), 15), std::string(200, '\xaa'));
    expect_status("ABC", 15, 101);
    expect_status("A", 15, 101);
}

TEST(ValueParse, IPv4Addresses) {
    EXPECT_EQ(address_from("10.0.0.1", 101), bytes("\x0a\x00\x00\x01"));
    EXPECT_EQ(address_from("10.0.0.1/24", 101), bytes("\x0a\x00\x00\x01\x18"));
    EXPECT_EQ(address_from("10.0.0.1/0", 101), bytes("\x0a\x00\x00\x01\x00"));
    EXPECT_EQ(address_from("10.0.0.1/255", 101), bytes("\x0a\x00\x00\x01\xff"));
    EXPECT_EQ(address_from("10.0.0.1/", 101), bytes("\x0a\x00\x00\x01"));
    EXPECT_EQ(address_from("/10.0.0.1//8", 101), bytes("\x0a\x00\x00\x01\x08"));
    EXPECT_EQ(address_from("10.0.0.1/8/9", 101), bytes("\x0a\x00\x00\x01\x08"));
    EXPECT_EQ(address_from("10.0.0.1/x", 101), bytes("\x0a\x00\x00\x01\x00"));
    expect_status("10.0.0", 101, 101);
    expect_status("10.0.0.256", 101, 101);
    expect_status("10.0.0.1/300", 101, 10000);
    expect_status("10.0.0.1/256", 101, 10000);
    expect_status("10.0.0.1/-1", 101, 10000);
    expect_status("a.b/300", 101, 101);
}

TEST(ValueParse, IPv6Addresses) {
    const std::string loopback = std::string(15, '\0') + '\x01';
    EXPECT_EQ(address_from("::1", 101), loopback);
    EXPECT_EQ(address_from("::1/64", 101), loopback + '\x40');
    EXPECT_EQ(address_from("::1/128", 101), loopback + '\x80');
    expect_status("::1/256", 101, 10000);
    expect_status("::g", 101, 101);
    expect_status("1:2", 101, 101);
}

TEST(ValueParse, AnAddressWithADotIsIPv4EvenWithColons) {
    expect_status("::ffff:1.2.3.4", 101, 101);
}

TEST(ValueParse, HexadecimalAddresses) {
    EXPECT_EQ(address_from("0a000001", 101), bytes("\x0a\x00\x00\x01"));
    EXPECT_EQ(address_from("ff", 101), bytes("\xff"));
    EXPECT_EQ(address_from("ab/c", 101), bytes("\xab\x0c")) << "the whole text is taken";
    expect_status("abc", 101, 101);
    expect_status("a", 101, 101);
}

TEST(ValueParse, AnAddressOfNothingIsAGeneralFailure) {
    expect_status("", 101, 10000);
    expect_status("/", 101, 10000);
    expect_status("//", 101, 10000);
}

TEST(ValueParse, NsapAddresses) {
    EXPECT_EQ(nsap_from("49.0001.aa", 102), bytes("\x49\x00\x01\xaa"));
    EXPECT_EQ(nsap_from("4.9.AA..", 102), bytes("\x49\xaa"));
    EXPECT_EQ(nsap_from(std::string(40, '1'), 102), std::string(20, '\x11'));
    expect_status("", 102, 101);
    expect_status(".", 102, 101);
    expect_status("49.0", 102, 101);
    expect_status("4g", 102, 101);
    expect_status("49 00", 102, 101);
    expect_status(std::string(42, '1'), 102, 101);
}

std::vector<std::string> bits_of(const std::string &text) {
    const Outcome outcome = parse(text, 109);
    EXPECT_EQ(outcome.err, 0);
    int32_t err = 77;
    ORUDoVlist *list = oru_do_value_get_bits(outcome.val.get(), &err);
    EXPECT_EQ(err, 0);
    std::vector<std::string> words;
    for (int32_t i = 0; i < oru_do_vlist_get_len(list); ++i)
        words.push_back(oru_do_value_get_enumeration(oru_do_vlist_get_value(list, i), &err));
    return words;
}

TEST(ValueParse, BitsAreWordsBetweenBlanks) {
    EXPECT_EQ(bits_of("up down"), (std::vector<std::string>{"up", "down"}));
    EXPECT_EQ(bits_of("  up   down "), (std::vector<std::string>{"up", "down"}));
    EXPECT_EQ(bits_of("up\tdown"), (std::vector<std::string>{"up\tdown"}));
    EXPECT_EQ(bits_of(""), (std::vector<std::string>{}));
}

TEST(ValueParse, OtherCodesCannotBeParsed) {
    for (int32_t type : {-2, -4, 16, 17, 100, 104, 105, 106, 110, 200})
        expect_status("1", type, 110);
}

// ---- Formatters ----

struct Seen {
    intptr_t context;
    std::string text;
    int32_t type;
} seen;

ORUDoValue *parse_hook(intptr_t context, const char *text, int32_t type, int32_t *errp) {
    seen = {context, text, type};
    *errp = 42;
    return oru_do_value_new_string("hooked");
}

TEST(ValueParseFormatter, TakesTheWholeWorkOver) {
    const ORUDoValueFormatter formatter{5, nullptr, parse_hook, nullptr};
    int32_t err = 0;
    Value val(oru_do_value_new_from_string_fmt("text", 5, &formatter, &err));
    EXPECT_EQ(err, 42);
    EXPECT_TRUE(oru_do_value_equals_str(val.get(), "hooked"));
    EXPECT_EQ(seen.context, 5);
    EXPECT_EQ(seen.text, "text");
    EXPECT_EQ(seen.type, 5);
}

TEST(ValueParseFormatter, WithoutAParserLeavesTheBuiltInOne) {
    const ORUDoValueFormatter formatter{};
    int32_t err = 0;
    Value val(oru_do_value_new_from_string_fmt("12", 5, &formatter, &err));
    EXPECT_EQ(oru_do_value_get_int(val.get(), &err), 12);
    Value none(oru_do_value_new_from_string_fmt("13", 5, nullptr, &err));
    EXPECT_EQ(oru_do_value_get_int(none.get(), &err), 13);
}

TEST(ValueParseFormatter, TheDefaultOneServesTextsAndConversions) {
    const ORUDoValueFormatter formatter{0, nullptr, parse_hook, nullptr};
    oru_do_value_set_default_formatter(&formatter);
    const Outcome outcome = parse("12", 5);
    Value string(oru_do_value_new_string("13"));
    int32_t err = 0;
    Value converted(oru_do_value_new_from_conversion(string.get(), 5, &err));
    oru_do_value_set_default_formatter(nullptr);
    EXPECT_TRUE(oru_do_value_equals_str(outcome.val.get(), "hooked"));
    EXPECT_TRUE(oru_do_value_equals_str(converted.get(), "hooked"));
    EXPECT_EQ(err, 42);
    EXPECT_EQ(number_from<oru_do_value_get_int>("12", 5), 12);
}

// ---- Conversion ----

TEST(ValueConversion, ParsesTheTextOfAString) {
    Value string(oru_do_value_new_string("12"));
    int32_t err = 101;
    Value val(oru_do_value_new_from_conversion(string.get(), 5, &err));
    EXPECT_EQ(err, 0) << "the status is cleared first";
    EXPECT_EQ(oru_do_value_get_int(val.get(), &err), 12);
    EXPECT_EQ(oru_do_value_new_from_conversion(string.get(), 9, &err), nullptr);
    EXPECT_EQ(err, 110);
}

TEST(ValueConversion, TakesStringsOnly) {
    Value number(oru_do_value_new_int(12));
    Value word(oru_do_value_new_enumeration("12"));
    for (ORUDoValue *val : {number.get(), word.get()}) {
        int32_t err = 0;
        EXPECT_EQ(oru_do_value_new_from_conversion(val, 5, &err), nullptr);
        EXPECT_EQ(err, 101);
    }
}

TEST(ValueConversion, OfAStringWithoutTextIsNullWithoutAStatus) {
    poolheap_fail_nth(2, 0);
    Value string(oru_do_value_new_string("12"));
    poolheap_fail_off();
    int32_t err = 77;
    EXPECT_EQ(oru_do_value_new_from_conversion(string.get(), 5, &err), nullptr);
    EXPECT_EQ(err, 0);
}

// ---- From numbers ----

template <auto get>
auto from_number(int32_t type, double x) {
    int32_t err = 0;
    Value val(oru_do_value_new_from_number(type, &err, x));
    EXPECT_EQ(err, 0);
    const auto n = get(val.get(), &err);
    EXPECT_EQ(err, 0);
    return n;
}

constexpr double kTwoTo31 = 2147483648.0;
constexpr double kTwoTo63 = 9223372036854775808.0;
const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

TEST(ValueFromNumber, NarrowIntegersKeepTheLowBits) {
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_byte>(0, 300.9), 44);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_byte>(0, -1.0), 255);
    EXPECT_EQ(from_number<oru_do_value_get_byte>(1, -1.9), -1);
    EXPECT_EQ(from_number<oru_do_value_get_byte>(1, 200.0), -56);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_short>(2, 65536.0 + 5), 5);
    EXPECT_EQ(from_number<oru_do_value_get_short>(3, 40000.0), -25536);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_byte>(0, kTwoTo31 + 7), 0);
    EXPECT_EQ(from_number<oru_do_value_get_short>(3, kNan), 0);
}

TEST(ValueFromNumber, UnsignedIntsComeFromSixtyFourBits) {
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_int>(4, 4294967295.0), 4294967295u);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_int>(4, 4294967296.0 + 3), 3u);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_int>(4, -1.0), 4294967295u);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_int>(4, kTwoTo63), 0u);
}

TEST(ValueFromNumber, IntsOutOfRangeAreTheSmallest) {
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, 2147483647.9), INT32_MAX);
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, -2147483648.9), INT32_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, kTwoTo31), INT32_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, -1e10), INT32_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, kNan), INT32_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_int>(5, kInfinity), INT32_MIN);
}

TEST(ValueFromNumber, UnsignedLongsReachTheTopBit) {
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, 5.9), 5u);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, kTwoTo63), uint64_t{1} << 63);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, kTwoTo63 + 4096.0),
              (uint64_t{1} << 63) + 4096);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, -1.0), UINT64_MAX);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, kNan), uint64_t{1} << 63);
    EXPECT_EQ(from_number<oru_do_value_get_unsigned_long>(6, 1e30), uint64_t{1} << 63);
}

TEST(ValueFromNumber, LongsAndTimesOutOfRangeAreTheSmallest) {
    EXPECT_EQ(from_number<oru_do_value_get_long>(7, -3.7), -3);
    EXPECT_EQ(from_number<oru_do_value_get_long>(7, kTwoTo63), INT64_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_long>(7, -kTwoTo63), INT64_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_datetime>(12, kNan), INT64_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_datetime>(12, 1e12), 1000000000000);
    EXPECT_EQ(from_number<oru_do_value_get_duration>(13, -kInfinity), INT64_MIN);
    EXPECT_EQ(from_number<oru_do_value_get_duration>(13, 1.5), 1);
}

TEST(ValueFromNumber, ABooleanIsTrueNearZero) {
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, 0.0), 1);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, 1e-5), 1);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, -1e-5), 1);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, kNan), 1);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, 1.0), 0);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, 1.1e-5), 0);
    EXPECT_EQ(from_number<oru_do_value_get_boolean>(9, -kInfinity), 0);
}

TEST(ValueFromNumber, FloatsAreRounded) {
    EXPECT_EQ(from_number<oru_do_value_get_float>(10, 0.1), 0.1f);
    EXPECT_EQ(from_number<oru_do_value_get_double>(11, 0.1), 0.1);
    EXPECT_TRUE(std::isinf(from_number<oru_do_value_get_float>(10, 1e300)));
}

TEST(ValueFromNumber, OtherTypesAreRefused) {
    for (int32_t type :
         {-4, -3, -2, -1, 8, 14, 15, 16, 100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110}) {
        int32_t err = 0;
        EXPECT_EQ(oru_do_value_new_from_number(type, &err, 1.0), nullptr) << type;
        EXPECT_EQ(err, 110) << type;
    }
}

// ---- Memory ----

struct MemoryCase {
    const char *text;
    int32_t type;
    std::vector<int32_t> statuses;  // that a missing block may give
};

TEST(ValueParseMemory, EveryAllocationMayFail) {
    const MemoryCase cases[] = {
        {"12", 5, {0}},
        {"12", 11, {0}},
        {"x", -1, {0}},
        {"true", 9, {0}},
        {"/a", 107, {0}},
        {"abcd", 15, {10002, 0}},
        {"10.0.0.1/8", 101, {10002, 0}},
        {"::1", 101, {10002, 0}},
        {"0a0b", 101, {10002, 0}},
        {"49.0001", 102, {0, 101}},
        {"up", 103, {0}},
        {"up down", 109, {10002, 0}},
    };
    for (const MemoryCase &row : cases) {
        oru::test::sweep_oom([&] {
            const Outcome outcome = parse(row.text, row.type);
            EXPECT_EQ(outcome.val == nullptr, oru::test::oom_hit()) << row.text;
            if (outcome.val != nullptr) {
                EXPECT_EQ(outcome.err, 0);
                return;
            }
            const auto &allowed = row.statuses;
            EXPECT_NE(std::find(allowed.begin(), allowed.end(), outcome.err), allowed.end())
                << row.text << " gave " << outcome.err;
        });
    }
}

// The status of each allocation of a parse that fails alone, in order.
std::vector<int32_t> statuses_of(const std::string &text, int32_t type) {
    std::vector<int32_t> statuses;
    for (uint64_t nth = 1;; ++nth) {
        poolheap_fail_nth(nth, 0);
        const Outcome outcome = parse(text, type);
        poolheap_fail_off();
        if (poolheap_fail_hits() == 0)
            return statuses;
        EXPECT_EQ(outcome.val, nullptr);
        statuses.push_back(outcome.err);
    }
}

TEST(ValueParseMemory, StatusesTellWhichBlockWasMissing) {
    // the block, the record, its storage
    EXPECT_EQ(statuses_of("abcd", 15), (std::vector<int32_t>{10002, 0, 0}));
    // the copy of the text, the record, its storage
    EXPECT_EQ(statuses_of("10.0.0.1", 101), (std::vector<int32_t>{10002, 0, 0}));
    // the copy of the text, the block, the record, its storage
    EXPECT_EQ(statuses_of("0a0b", 101), (std::vector<int32_t>{10002, 0, 0, 0}));
    // the block, the record, its storage
    EXPECT_EQ(statuses_of("49", 102), (std::vector<int32_t>{0, 101, 101}));
    // the list, the copy, the enumeration with its storage, the item, the record
    EXPECT_EQ(statuses_of("up", 109), (std::vector<int32_t>{10002, 10002, 10002, 10002, 10002, 0}));
}

TEST(ValueParseMemory, AStringThatCannotBeStoredIsAString) {
    poolheap_fail_nth(2, 0);
    const Outcome outcome = parse("abc", 8);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_value_get_type(outcome.val.get()), 8);
    EXPECT_EQ(outcome.err, 0);
}

TEST(ValueParseMemory, NumbersAndConversionsReportNull) {
    for (int32_t type : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13}) {
        oru::test::sweep_oom([&] {
            int32_t err = 0;
            Value val(oru_do_value_new_from_number(type, &err, 1.0));
            EXPECT_EQ(val == nullptr, oru::test::oom_hit());
            EXPECT_EQ(err, 0);
        });
    }
    Value string(oru_do_value_new_string("12"));
    oru::test::sweep_oom([&] {
        int32_t err = 77;
        Value val(oru_do_value_new_from_conversion(string.get(), 5, &err));
        EXPECT_EQ(val == nullptr, oru::test::oom_hit());
        EXPECT_EQ(err, 0);
    });
}

TEST(ValueParseNull, ArgumentsAreAsserted) {
    Value string(oru_do_value_new_string("12"));
    int32_t err = 0;
    EXPECT_ASSERTION(oru_do_value_new_from_string(nullptr, 5, &err), "text");
    EXPECT_ASSERTION(oru_do_value_new_from_string_fmt(nullptr, 5, nullptr, &err), "text");
    EXPECT_ASSERTION(oru_do_value_new_from_string("1", 5, nullptr), "errp");
    EXPECT_ASSERTION(oru_do_value_new_from_number(5, nullptr, 1.0), "errp");
    EXPECT_ASSERTION(oru_do_value_new_from_conversion(nullptr, 5, &err), "val");
    EXPECT_ASSERTION(oru_do_value_new_from_conversion(string.get(), 5, nullptr), "errp");
}

}  // namespace
