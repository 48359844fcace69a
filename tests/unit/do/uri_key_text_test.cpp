// Values as the keys of URIs.
#include "oru/vlist.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

struct ReleaseList {
    void operator()(ORUDoVlist *object) const { oru_do_vlist_deref(object); }
};

using Values = std::unique_ptr<ORUDoVlist, ReleaseList>;

// Takes the value over.
std::string key_form(ORUDoValue *made) {
    const Value value(made);
    const Buffer buf(oru_do_strbuf_new());
    oru_do_strbuf_add_string(buf.get(), "k=");
    EXPECT_EQ(oru_do_uri_value_to_keystr(value.get(), buf.get()), 0);
    return std::string(oru_do_strbuf_to_string(buf.get())).substr(2);
}

TEST(UriKeyText, ValuesWithoutAPayload) {
    EXPECT_EQ(key_form(oru_do_value_new_null()), "null");
    EXPECT_EQ(key_form(oru_do_value_new_default()), "__default__");
    EXPECT_EQ(key_form(nullptr), "");
}

// Values of a type that none makes; they come from outside.
TEST(UriKeyText, OtherCodes) {
    struct Head {
        char *typedef_name;
        uint32_t ref;
        int32_t len;
        uint64_t data;
        int32_t type;
    };
    const auto of_type = [](int32_t type) {
        ORUDoValue *value = oru_do_value_new_null();
        reinterpret_cast<Head *>(value)->type = type;
        return key_form(value);
    };
    EXPECT_EQ(of_type(-3), "__unknown__");
    for (int32_t code : {-4, 16, 100, 110})
        EXPECT_EQ(of_type(code), "") << code;
    for (int32_t code : {14, 107, 108})
        EXPECT_EQ(of_type(code), "") << "no URI, no text";
}

TEST(UriKeyText, IntegersInDecimal) {
    EXPECT_EQ(key_form(oru_do_value_new_unsigned_byte(255)), "255");
    EXPECT_EQ(key_form(oru_do_value_new_byte(-128)), "-128");
    EXPECT_EQ(key_form(oru_do_value_new_unsigned_short(65535)), "65535");
    EXPECT_EQ(key_form(oru_do_value_new_short(-32768)), "-32768");
    EXPECT_EQ(key_form(oru_do_value_new_unsigned_int(4294967295u)), "4294967295");
    EXPECT_EQ(key_form(oru_do_value_new_int(INT32_MIN)), "-2147483648");
    EXPECT_EQ(key_form(oru_do_value_new_unsigned_long(UINT64_MAX)), "18446744073709551615");
    EXPECT_EQ(key_form(oru_do_value_new_long(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(key_form(oru_do_value_new_datetime(1234567890123)), "1234567890123");
    EXPECT_EQ(key_form(oru_do_value_new_duration(-5)), "-5");
}

TEST(UriKeyText, FloatingPointBySixDigits) {
    EXPECT_EQ(key_form(oru_do_value_new_float(0.5f)), "0.5");
    EXPECT_EQ(key_form(oru_do_value_new_double(1234567)), "1.23457e%2B06");
    EXPECT_EQ(key_form(oru_do_value_new_double(-2.25)), "-2.25");
}

TEST(UriKeyText, TextsInEscapedForm) {
    EXPECT_EQ(key_form(oru_do_value_new_string("a/b")), "a%2Fb");
    EXPECT_EQ(key_form(oru_do_value_new_string("")), "");
    EXPECT_EQ(key_form(oru_do_value_new_enumeration("on off")), "on%20off");
    const Uri uri = unparsed("/a;k=1");
    EXPECT_EQ(key_form(oru_do_value_new_any_uri(uri.get())), "%2Fa%3Bk%3D1");
    EXPECT_EQ(key_form(oru_do_value_new_mr_uri(uri.get())), "%2Fa%3Bk%3D1");
    EXPECT_EQ(key_form(oru_do_value_new_coll_uri(uri.get())), "%2Fa%3Bk%3D1");
}

TEST(UriKeyText, BooleansAsWords) {
    EXPECT_EQ(key_form(oru_do_value_new_boolean(1)), "true");
    EXPECT_EQ(key_form(oru_do_value_new_boolean(7)), "true");
    EXPECT_EQ(key_form(oru_do_value_new_boolean(0)), "false");
}

TEST(UriKeyText, BytesInHexadecimal) {
    const uint8_t bytes[] = {0x0a, 0xff, 0x00, 0x1c};
    EXPECT_EQ(key_form(oru_do_value_new_hex_binary(bytes, 4)), "0AFF001C");
    EXPECT_EQ(key_form(oru_do_value_new_hex_binary(bytes, 0)), "");
    EXPECT_EQ(key_form(oru_do_value_new_ip_address(bytes, 4)), "0AFF001C");
    EXPECT_EQ(key_form(oru_do_value_new_nsap_address(bytes, 2)), "0AFF");
}

TEST(UriKeyText, ListsAsTheyPrint) {
    const Value one(oru_do_value_new_int(1));
    const Value text(oru_do_value_new_enumeration("a b"));
    const Keys named(oru_do_nvlist_new_from_item("a", one.get()));
    oru_do_nvlist_add(named.get(), "b", text.get());
    const Values plain(oru_do_vlist_new());
    oru_do_vlist_add(plain.get(), text.get());
    EXPECT_EQ(key_form(oru_do_value_new_choice(named.get())), "{a%20%3A%201%2C%20b%20%3A%20a%20b}");
    EXPECT_EQ(key_form(oru_do_value_new_sequence(named.get())),
              "{a%20%3A%201%2C%20b%20%3A%20a%20b}");
    EXPECT_EQ(key_form(oru_do_value_new_array(plain.get())), "%5B\n\ta%20b\n%5D\n");
    EXPECT_EQ(key_form(oru_do_value_new_bits(plain.get())), "%5B\n\ta%20b\n%5D\n");
    EXPECT_EQ(key_form(oru_do_value_new_array(Values(oru_do_vlist_new()).get())), "%5B\n%5D\n");
}

TEST(UriKeyText, AStringWithoutStorageReadsAsEmpty) {
    poolheap_fail_nth(2, 0);
    ORUDoValue *value = oru_do_value_new_string("x");
    poolheap_fail_off();
    EXPECT_EQ(key_form(value), "");
}

TEST(UriKeyText, TheResultIsTheBuffersErrorState) {
    const Value value(oru_do_value_new_string(run_of(1000).c_str()));
    const Buffer buf(oru_do_strbuf_new());
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_uri_value_to_keystr(value.get(), buf.get()), 10002);
    poolheap_fail_off();
    sweep_oom(
        [&] {
            const Buffer out(oru_do_strbuf_new());
            if (!out)
                return;
            const int32_t rc = oru_do_uri_value_to_keystr(value.get(), out.get());
            EXPECT_EQ(rc, oom_hit() ? 10002 : 0);
            EXPECT_TRUE(rc != 0 || oru_do_strbuf_to_string(out.get()) == run_of(1000));
        },
        {.promised_deaths = {}, .at_least = 5});
}

TEST(UriKeyText, AFailedBufferStaysFailed) {
    const Buffer buf(oru_do_strbuf_new());
    poolheap_fail_nth(1, 1);
    oru_do_strbuf_add_tab(buf.get(), 1000);
    poolheap_fail_off();
    const Value value(oru_do_value_new_int(1));
    EXPECT_EQ(oru_do_uri_value_to_keystr(value.get(), buf.get()), 10002);
}

TEST(UriKeyText, NullIsAsserted) {
    const Value value(oru_do_value_new_int(1));
    EXPECT_ASSERTION(oru_do_uri_value_to_keystr(value.get(), nullptr), "strbuf");
}

}  // namespace
