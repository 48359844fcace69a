#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Nvlist;
using oru::test::Strbuf;
using oru::test::Uri;
using oru::test::Value;
using oru::test::Vlist;

template <size_t size>
Value bytes_value(ORUDoValue *(*make)(const void *, int32_t), const char (&bytes)[size]) {
    return Value(make(bytes, size - 1));
}

Value with_typedef(Value val, const char *name) {
    oru_do_value_set_typedef_name(val.get(), name);
    return val;
}

Value uri_value(const char *text, ORUDoValue *(*make)(ORUDoUri *) = oru_do_value_new_mr_uri) {
    Uri uri(oru_do_uri_new(text));
    return Value(make(uri.get()));
}

Value int_array(const std::vector<int32_t> &numbers) {
    Vlist list(oru_do_vlist_new());
    for (int32_t n : numbers)
        oru_do_vlist_add(list.get(), Value(oru_do_value_new_int(n)).get());
    return Value(oru_do_value_new_array(list.get()));
}

Value bits(const std::vector<const char *> &words) {
    Vlist list(oru_do_vlist_new());
    for (const char *word : words)
        oru_do_vlist_add(list.get(), Value(oru_do_value_new_enumeration(word)).get());
    return Value(oru_do_value_new_bits(list.get()));
}

Value sequence(ORUDoValue *(*make)(ORUDoNvlist *) = oru_do_value_new_sequence) {
    Nvlist list(oru_do_nvlist_new());
    oru_do_nvlist_add(list.get(), "x", Value(oru_do_value_new_int(1)).get());
    oru_do_nvlist_add(list.get(), "y", Value(oru_do_value_new_string("a")).get());
    return Value(make(list.get()));
}

// Values of types that have no constructor, or a payload that none makes.
Value with_type(int32_t type) {
    Value val(oru_do_value_new_null());
    struct Head {
        char *typedef_name;
        uint32_t ref;
        int32_t len;
        uint64_t data;
        int32_t type;
    };
    reinterpret_cast<Head *>(val.get())->type = type;
    return val;
}

Value unstored_string() {
    poolheap_fail_nth(2, 0);
    Value val(oru_do_value_new_string("abc"));
    poolheap_fail_off();
    return val;
}

std::string printed(const Value &val, int32_t tabs = 0, int32_t expected_rc = 0) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_value_to_strbuf(val.get(), tabs, buf.get()), expected_rc);
    return oru_do_strbuf_to_string(buf.get());
}

// ---- Text form ----

TEST(ValueText, ValuesWithoutPayload) {
    EXPECT_EQ(printed(Value(oru_do_value_new_null())), "null");
    EXPECT_EQ(printed(Value(oru_do_value_new_default())), "__default__");
    EXPECT_EQ(printed(with_type(-3)), "__unknown__");
}

TEST(ValueText, ACodeWithoutATypePrintsItsTabsOnly) {
    for (int32_t code : {16, 100, 110, -4})
        EXPECT_EQ(printed(with_type(code), 1), "\t") << code;
}

TEST(ValueText, NumbersWithTheSignOfTheirType) {
    EXPECT_EQ(printed(Value(oru_do_value_new_unsigned_byte(255))), "255");
    EXPECT_EQ(printed(Value(oru_do_value_new_byte(-128))), "-128");
    EXPECT_EQ(printed(Value(oru_do_value_new_unsigned_short(65535))), "65535");
    EXPECT_EQ(printed(Value(oru_do_value_new_short(-32768))), "-32768");
    EXPECT_EQ(printed(Value(oru_do_value_new_unsigned_int(4294967295u))), "4294967295");
    EXPECT_EQ(printed(Value(oru_do_value_new_int(-1))), "-1");
    EXPECT_EQ(printed(Value(oru_do_value_new_unsigned_long(UINT64_MAX))), "18446744073709551615");
    EXPECT_EQ(printed(Value(oru_do_value_new_long(INT64_MIN))), "-9223372036854775808");
    EXPECT_EQ(printed(Value(oru_do_value_new_duration(-5))), "-5");
    EXPECT_EQ(printed(Value(oru_do_value_new_float(0.1f))), "0.1");
    EXPECT_EQ(printed(Value(oru_do_value_new_double(1234567.0))), "1.23457e+06");
}

TEST(ValueText, TextsAsTheyAre) {
    EXPECT_EQ(printed(Value(oru_do_value_new_string("a <\"b\"> "))), "a <\"b\"> ");
    EXPECT_EQ(printed(Value(oru_do_value_new_string(""))), "");
    EXPECT_EQ(printed(Value(oru_do_value_new_enumeration("up"))), "up");
    EXPECT_EQ(printed(unstored_string()), "");
}

TEST(ValueText, Booleans) {
    EXPECT_EQ(printed(Value(oru_do_value_new_boolean(1))), "true");
    EXPECT_EQ(printed(Value(oru_do_value_new_boolean(-3))), "true");
    EXPECT_EQ(printed(Value(oru_do_value_new_boolean(0))), "false");
}

TEST(ValueText, Uris) {
    EXPECT_EQ(printed(uri_value("/a/b=1", oru_do_value_new_any_uri)), "/a/b=1");
    EXPECT_EQ(printed(uri_value("/a/b=1", oru_do_value_new_mr_uri)), "/a/b=1");
    EXPECT_EQ(printed(uri_value("/a?b", oru_do_value_new_coll_uri)), "/a?b");
}

TEST(ValueText, AUriTypeWithoutAUriCannotBePrinted) {
    for (int32_t type : {14, 107, 108})
        EXPECT_EQ(printed(with_type(type), 0, 10000), "");
}

TEST(ValueText, TabsComeFirst) {
    EXPECT_EQ(printed(Value(oru_do_value_new_int(5)), 2), "\t\t5");
    EXPECT_EQ(printed(Value(oru_do_value_new_int(5)), -1), "5");
    EXPECT_EQ(printed(Value(oru_do_value_new_string("")), 1), "\t");
}

TEST(ValueText, HexBinaryInOneRunUnlessItsTypeIsAnAddress) {
    const auto mac = [] {
        return bytes_value(oru_do_value_new_hex_binary, "\x00\x11\x22\x33\xaa\xbb");
    };
    EXPECT_EQ(printed(mac()), "00112233AABB");
    EXPECT_EQ(printed(with_typedef(mac(), "MACAddress")), "0011.2233.AABB");
    EXPECT_EQ(printed(with_typedef(mac(), "PhysAddress")), "00:11:22:33:AA:BB");
    EXPECT_EQ(printed(with_typedef(mac(), "MACAddressList")), "00112233AABB");
    EXPECT_EQ(printed(with_typedef(mac(), "MacAddress")), "00112233AABB");
    EXPECT_EQ(printed(bytes_value(oru_do_value_new_hex_binary, "")), "");
    EXPECT_EQ(printed(with_typedef(bytes_value(oru_do_value_new_hex_binary, ""), "MACAddress")),
              "");
    EXPECT_EQ(printed(with_typedef(bytes_value(oru_do_value_new_hex_binary, "\x01\x02\x03"),
                                   "MACAddress")),
              "0102.03");
}

Value address(const std::string &bytes) {
    return Value(oru_do_value_new_ip_address(bytes.data(), static_cast<int32_t>(bytes.size())));
}

const std::string kFour{"\x0a\x00\x00\x01", 4};
const std::string kSixteen = "\x20\x01\x0d\xb8" + std::string(11, '\0') + "\x01";

TEST(ValueText, AddressesByTheirLength) {
    EXPECT_EQ(printed(address(kFour)), "10.0.0.1");
    EXPECT_EQ(printed(address(kFour + '\x18')), "10.0.0.1/24");
    EXPECT_EQ(printed(address(kFour + '\0')), "10.0.0.1");
    EXPECT_EQ(printed(address(kSixteen)), "2001:db8::1");
    EXPECT_EQ(printed(address(kSixteen + '\x40')), "2001:db8::1/64");
    EXPECT_EQ(printed(address(kSixteen + '\0')), "2001:db8::1");
    EXPECT_EQ(printed(address("\xab\xcd\xef")), "ABCDEF");
    EXPECT_EQ(printed(address(std::string(18, '\x01'))), "010101010101010101010101010101010101");
    EXPECT_EQ(printed(address("")), "");
}

TEST(ValueText, APrefixFrom128OnIsSignExtended) {
    EXPECT_EQ(printed(address(kSixteen + '\x80')), "2001:db8::1/18446744073709551488");
    EXPECT_EQ(printed(address(kFour + '\xff')), "10.0.0.1/18446744073709551615");
    EXPECT_EQ(printed(address(kFour + '\x7f')), "10.0.0.1/127");
}

TEST(ValueText, AddressesByTheirTypedef) {
    EXPECT_EQ(printed(with_typedef(address(kFour), "IpAddressV4")), "10.0.0.1");
    EXPECT_EQ(printed(with_typedef(address(kFour), "InetAddressIPv4")), "10.0.0.1");
    EXPECT_EQ(printed(with_typedef(address(kFour + '\x08'), "IpAddressV4")), "10.0.0.1/8");
    EXPECT_EQ(printed(with_typedef(address(kSixteen), "IpAddressV6")), "2001:db8::1");
    EXPECT_EQ(printed(with_typedef(address(kSixteen + '\x08'), "InetAddressIPv6")),
              "2001:db8::1/8");
    EXPECT_EQ(printed(with_typedef(address(kFour), "IpAddress")), "0A000001");
    EXPECT_EQ(printed(with_typedef(address(kFour), "")), "0A000001");
}

TEST(ValueText, ATypedefWinsOverTheLength) {
    // Five bytes read as the beginning of an IPv6 address, the rest zero, and no prefix.
    EXPECT_EQ(printed(with_typedef(address(std::string("\x20\x01\x0d\xb8\x05", 5)), "IpAddressV6")),
              "2001:db8:500::");
    EXPECT_EQ(printed(with_typedef(address(kSixteen + '\x08'), "IpAddressV4")), "32.1.13.184");
    EXPECT_EQ(printed(with_typedef(address("\x0a"), "IpAddressV4")), "10.0.0.0");
    EXPECT_EQ(printed(with_typedef(address(""), "IpAddressV4")), "");
}

TEST(ValueText, NsapAddressesInDottedPairs) {
    const auto nsap = [](const std::string &bytes) {
        return Value(
            oru_do_value_new_nsap_address(bytes.data(), static_cast<int32_t>(bytes.size())));
    };
    EXPECT_EQ(printed(nsap("")), "");
    EXPECT_EQ(printed(nsap("\x49")), "49");
    EXPECT_EQ(printed(nsap("\x49\xab")), "49.AB");
    EXPECT_EQ(printed(nsap(std::string("\x49\x00\x01", 3))), "49.0001");
    EXPECT_EQ(printed(nsap(std::string("\x49\x00\x01\xaa", 4))), "49.0001.AA");
}

TEST(ValueText, Lists) {
    EXPECT_EQ(printed(sequence()), "{x : 1, y : a}");
    EXPECT_EQ(printed(sequence(oru_do_value_new_choice)), "{x : 1, y : a}");
    EXPECT_EQ(printed(sequence(), 1), "\t{x : 1, y : a}");
    EXPECT_EQ(printed(int_array({1, 2})), "[\n\t1,\n\t2\n]\n");
    EXPECT_EQ(printed(bits({"up"})), "[\n\tup\n]\n");
    // The tabs of the value, then those of the list.
    EXPECT_EQ(printed(int_array({1}), 1), "\t\t[\n\t\t1\n]\n");
}

TEST(ValueText, ANullPointerPrintsNothing) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_value_to_strbuf(nullptr, 2, buf.get()), 0);
    EXPECT_EQ(oru_do_value_to_strbuf(nullptr, 2, nullptr), 0);
    EXPECT_EQ(oru_do_value_to_strbuf_with_defaults(nullptr, 2, buf.get()), 0);
    EXPECT_EQ(oru_do_value_to_strbuf_opt(nullptr, 2, buf.get(), 1), 0);
    EXPECT_EQ(oru_do_strbuf_get_len(buf.get()), 0);
}

// ---- Dates ----

class ValueDate : public testing::Test {
  protected:
    ValueDate() { set_zone("UTC0"); }
    ~ValueDate() override {
        unsetenv("TZ");
        tzset();
    }
    static void set_zone(const char *zone) { setenv("TZ", zone, 1); }
    static Value date(int64_t microseconds) {
        return with_typedef(Value(oru_do_value_new_datetime(microseconds)), "timeStamp");
    }
};

TEST_F(ValueDate, OfATimeStampIsADate) {
    EXPECT_EQ(printed(date(0)), "Thu, 01 Jan 1970 00:00:00 +0000");
    EXPECT_EQ(printed(date(86400999999)), "Fri, 02 Jan 1970 00:00:00 +0000");
    EXPECT_EQ(printed(date(0), 1), "\tThu, 01 Jan 1970 00:00:00 +0000");
}

TEST_F(ValueDate, IsRoundedTowardZero) {
    EXPECT_EQ(printed(date(-999999)), "Thu, 01 Jan 1970 00:00:00 +0000");
    EXPECT_EQ(printed(date(-1000000)), "Wed, 31 Dec 1969 23:59:59 +0000");
}

TEST_F(ValueDate, FollowsTheZoneOfTheProcess) {
    set_zone("TST-5:30");
    EXPECT_EQ(printed(date(0)), "Thu, 01 Jan 1970 05:30:00 +0530");
}

TEST_F(ValueDate, WithoutThatTypedefIsANumber) {
    EXPECT_EQ(printed(Value(oru_do_value_new_datetime(-5))), "-5");
    EXPECT_EQ(printed(with_typedef(Value(oru_do_value_new_datetime(5)), "timeStamps")), "5");
    EXPECT_EQ(printed(with_typedef(Value(oru_do_value_new_datetime(5)), "timestamp")), "5");
    EXPECT_EQ(printed(with_typedef(Value(oru_do_value_new_long(5)), "timeStamp")), "5");
    EXPECT_EQ(printed(with_typedef(Value(oru_do_value_new_duration(5)), "timeStamp")), "5");
}

TEST_F(ValueDate, MayBeFarAway) {
    EXPECT_EQ(printed(date(INT64_MAX)), "Sun, 10 Jan 294247 04:00:54 +0000");
}

// ---- Variants ----

TEST(ValueTextDefaults, AreMarked) {
    Strbuf buf(oru_do_strbuf_new());
    Value val(oru_do_value_new_int(5));
    EXPECT_EQ(oru_do_value_to_strbuf_with_defaults(val.get(), 1, buf.get()), 0);
    oru_do_value_set_default_flag(val.get());
    EXPECT_EQ(oru_do_value_to_strbuf_with_defaults(val.get(), 1, buf.get()), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "\t5\t5 (default)");
}

TEST(ValueTextDefaults, AreNotMarkedWhenPrintingFails) {
    Strbuf buf(oru_do_strbuf_new());
    Value val = with_type(14);
    oru_do_value_set_default_flag(val.get());
    EXPECT_EQ(oru_do_value_to_strbuf_with_defaults(val.get(), 0, buf.get()), 10000);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "");
}

std::string printed_opt(const Value &val, uint32_t opts) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_value_to_strbuf_opt(val.get(), 1, buf.get(), opts), 0);
    return oru_do_strbuf_to_string(buf.get());
}

TEST(ValueTextSecrets, AreHiddenOnRequest) {
    const auto secret = [](const char *name) {
        return with_typedef(Value(oru_do_value_new_string("pw")), name);
    };
    EXPECT_EQ(printed_opt(secret("PasswordString"), 1), "<removed>");
    EXPECT_EQ(printed_opt(secret("PasswordStringFoo"), 1), "<removed>");
    EXPECT_EQ(printed_opt(secret("EncryptedString"), 1), "<removed>");
    EXPECT_EQ(printed_opt(secret("EncryptedStringFoo"), 3), "<removed>");
    EXPECT_EQ(printed_opt(secret("PasswordString"), 0), "\tpw");
    EXPECT_EQ(printed_opt(secret("PasswordString"), 2), "\tpw");
    EXPECT_EQ(printed_opt(secret("PasswordStrin"), 1), "\tpw");
    EXPECT_EQ(printed_opt(secret("EncryptedStrin"), 1), "\tpw");
    EXPECT_EQ(printed_opt(secret("MyPasswordString"), 1), "\tpw");
    EXPECT_EQ(printed_opt(Value(oru_do_value_new_string("pw")), 1), "\tpw");
    EXPECT_EQ(printed_opt(secret("PasswordString"), 0x10000), "\tpw");
}

TEST(ValueTextSecrets, AreStringsOnly) {
    EXPECT_EQ(
        printed_opt(with_typedef(Value(oru_do_value_new_enumeration("pw")), "PasswordString"), 1),
        "\tpw");
    EXPECT_EQ(printed_opt(with_typedef(Value(oru_do_value_new_int(5)), "PasswordString"), 1),
              "\t5");
}

// ---- Formatters ----

struct Seen {
    intptr_t context;
    ORUDoValue *val;
    int32_t tabs;
} seen;

int32_t print_hook(intptr_t context, ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf) {
    seen = {context, val, tabs};
    oru_do_strbuf_add_string(strbuf, "hooked");
    return 42;
}

const ORUDoValueFormatter kPrinting{7, print_hook, nullptr, nullptr};

TEST(ValueFormatter, TakesTheTextFormOver) {
    Strbuf buf(oru_do_strbuf_new());
    Value val(oru_do_value_new_int(5));
    EXPECT_EQ(oru_do_value_to_strbuf_fmt(val.get(), 3, &kPrinting, buf.get()), 42);
    EXPECT_EQ(seen.context, 7);
    EXPECT_EQ(seen.val, val.get());
    EXPECT_EQ(seen.tabs, 3);
    EXPECT_EQ(oru_do_value_to_strbuf_fmt(nullptr, 0, &kPrinting, buf.get()), 42);
    EXPECT_EQ(seen.val, nullptr);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "hookedhooked");
}

TEST(ValueFormatter, WithoutAnOperationLeavesTheBuiltInOne) {
    const ORUDoValueFormatter empty{};
    Strbuf buf(oru_do_strbuf_new());
    Value val(oru_do_value_new_int(5));
    EXPECT_EQ(oru_do_value_to_strbuf_fmt(val.get(), 0, &empty, buf.get()), 0);
    EXPECT_EQ(oru_do_value_to_strbuf_fmt(val.get(), 0, nullptr, buf.get()), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "55");
}

TEST(ValueFormatter, TheDefaultOneServesAllThatAreGivenNone) {
    Strbuf buf(oru_do_strbuf_new());
    Value val(oru_do_value_new_int(5));
    oru_do_value_set_default_flag(val.get());
    oru_do_value_set_default_formatter(&kPrinting);
    EXPECT_EQ(oru_do_value_to_strbuf(val.get(), 0, buf.get()), 42);
    EXPECT_EQ(oru_do_value_to_strbuf_with_defaults(val.get(), 0, buf.get()), 42);
    EXPECT_EQ(oru_do_value_to_strbuf_opt(val.get(), 0, buf.get(), 1), 42);
    EXPECT_EQ(oru_do_value_to_strbuf_fmt(val.get(), 0, nullptr, buf.get()), 0);
    oru_do_value_set_default_formatter(nullptr);
    EXPECT_EQ(oru_do_value_to_strbuf(val.get(), 0, buf.get()), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "hookedhookedhooked55");
}

std::string printed_lower(const Value &val, int32_t tabs) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(
        oru_do_value_to_strbuf_fmt(val.get(), tabs, &lower_case_mac_addr_formatter, buf.get()), 0);
    return oru_do_strbuf_to_string(buf.get());
}

TEST(ValueLowerCaseFormatter, PrintsInterfaceAddressesOnly) {
    const auto mac = [] {
        return bytes_value(oru_do_value_new_hex_binary, "\x00\x11\x22\x33\xaa\xbb");
    };
    EXPECT_EQ(printed_lower(with_typedef(mac(), "MACAddress"), 2), "0011.2233.aabb");
    EXPECT_EQ(printed_lower(with_typedef(mac(), "PhysAddress"), 2), "00:11:22:33:aa:bb");
    EXPECT_EQ(printed_lower(with_typedef(mac(), "Other"), 2), "00112233AABB");
    EXPECT_EQ(printed_lower(mac(), 2), "00112233AABB");
    EXPECT_EQ(printed_lower(bytes_value(oru_do_value_new_hex_binary, ""), 2), "");
    EXPECT_EQ(printed_lower(Value(oru_do_value_new_int(5)), 2), "\t\t5");
    EXPECT_EQ(printed_lower(address("\xab"), 1), "\tAB");
    EXPECT_EQ(printed_lower(Value(), 2), "");
}

TEST(ValueLowerCaseFormatter, HasOneOperation) {
    EXPECT_NE(lower_case_mac_addr_formatter.to_strbuf, nullptr);
    EXPECT_EQ(lower_case_mac_addr_formatter.parse, nullptr);
    EXPECT_EQ(lower_case_mac_addr_formatter.to_xml, nullptr);
}

TEST(ValueLowerCaseFormatter, MayBeTheDefault) {
    oru_do_value_set_default_formatter(&lower_case_mac_addr_formatter);
    EXPECT_EQ(printed(with_typedef(bytes_value(oru_do_value_new_hex_binary, "\xaa\xbb\xcc"),
                                   "MACAddress")),
              "aabb.cc");
    EXPECT_EQ(printed(Value(oru_do_value_new_int(5))), "5");
    oru_do_value_set_default_formatter(nullptr);
}

// ---- Memory and null arguments ----

TEST(ValueTextMemory, AFailedBufferShowsInTheResult) {
    const Value rows[] = {
        Value(oru_do_value_new_string(std::string(300, 's').c_str())),
        Value(oru_do_value_new_hex_binary(std::string(300, 'b').data(), 300)),
        Value(oru_do_value_new_int(5)),
        Value(oru_do_value_new_null()),
        Value(oru_do_value_new_default()),
        Value(oru_do_value_new_unsigned_long(UINT64_MAX)),
        Value(oru_do_value_new_boolean(1)),
        Value(oru_do_value_new_float(0.5f)),
        Value(oru_do_value_new_double(0.5)),
        Value(oru_do_value_new_datetime(5)),
        with_typedef(Value(oru_do_value_new_datetime(5)), "timeStamp"),
        with_typedef(Value(oru_do_value_new_hex_binary(std::string(300, 'b').data(), 300)),
                     "MACAddress"),
        Value(oru_do_value_new_nsap_address(std::string(300, 'b').data(), 300)),
        Value(oru_do_value_new_enumeration(std::string(300, 'e').c_str())),
        address(kFour),
        address(kSixteen + '\x80'),
        uri_value("/a/b=1", oru_do_value_new_any_uri),
        uri_value("/a/b=1"),
        uri_value("/a/b=1", oru_do_value_new_coll_uri),
        sequence(),
        sequence(oru_do_value_new_choice),
        int_array({1, 2, 3}),
        bits({"up", "down"}),
    };
    for (const Value &val : rows) {
        oru::test::sweep_oom([&] {
            Strbuf buf(oru_do_strbuf_new());
            if (buf == nullptr)
                return;
            const int32_t rc = oru_do_value_to_strbuf(val.get(), 0, buf.get());
            EXPECT_EQ(rc, oru::test::oom_hit() ? 10002 : 0);
        });
    }
}

TEST(ValueTextMemory, AFailedBufferStaysFailedInEveryForm) {
    Value val(oru_do_value_new_string(std::string(300, 's').c_str()));
    oru_do_value_set_default_flag(val.get());
    Value secret = with_typedef(Value(oru_do_value_new_string("pw")), "PasswordString");
    Value mac = with_typedef(Value(oru_do_value_new_hex_binary(std::string(300, 'b').data(), 300)),
                             "MACAddress");
    oru::test::sweep_oom([&] {
        Strbuf buf(oru_do_strbuf_new());
        if (buf == nullptr)
            return;
        const auto expect_told = [](int32_t rc) {
            EXPECT_EQ(rc, oru::test::oom_hit() ? 10002 : 0);
        };
        expect_told(oru_do_value_to_strbuf_with_defaults(val.get(), 0, buf.get()));
        expect_told(oru_do_value_to_strbuf_opt(val.get(), 0, buf.get(), 1));
        EXPECT_EQ(oru_do_value_to_strbuf_opt(secret.get(), 0, buf.get(), 1), 0)
            << "what stands for a secret is added whatever comes of it";
        expect_told(
            oru_do_value_to_strbuf_fmt(mac.get(), 0, &lower_case_mac_addr_formatter, buf.get()));
    });
}

TEST(ValueTextNull, TheBufferIsAsserted) {
    Value val(oru_do_value_new_int(5));
    Value secret = with_typedef(Value(oru_do_value_new_string("pw")), "PasswordString");
    Value mac = bytes_value(oru_do_value_new_hex_binary, "\xaa");
    EXPECT_ASSERTION(oru_do_value_to_strbuf(val.get(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_strbuf_fmt(val.get(), 0, nullptr, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_strbuf_with_defaults(val.get(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_strbuf_opt(val.get(), 0, nullptr, 0), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_strbuf_opt(secret.get(), 0, nullptr, 1), "strbuf");
    EXPECT_ASSERTION(
        oru_do_value_to_strbuf_fmt(mac.get(), 0, &lower_case_mac_addr_formatter, nullptr),
        "strbuf");
}

}  // namespace
