#include <oruplatform/poolheap.h>

#include <cstring>
#include <string>

#include "oru/nvlist.h"
#include "oru/uri.h"
#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::json_of;
using oru::test::Value;
using oru::test::written;

template <auto make>
Value uri_value(const char *text) {
    ORUDoUri *uri = oru_do_uri_new(text);
    Value value(make(uri));
    oru_do_uri_deref(uri);
    return value;
}

// {"a":1} as a complex value.
template <auto make>
Value complex_value() {
    ORUDoNvlist *list = oru_do_nvlist_new();
    const Value inner(oru_do_value_new_int(1));
    oru_do_nvlist_add(list, "a", inner.get());
    Value value(make(list));
    oru_do_nvlist_deref(list);
    return value;
}

Value array_of(std::initializer_list<ORUDoValue *> values, bool bits = false) {
    ORUDoVlist *list = oru_do_vlist_new();
    for (ORUDoValue *value : values) {
        oru_do_vlist_add(list, value);
        oru_do_value_deref(value);
    }
    Value array(bits ? oru_do_value_new_bits(list) : oru_do_value_new_array(list));
    oru_do_vlist_deref(list);
    return array;
}

void expect_forms(const Value &value, const std::string &tagged, const std::string &compact) {
    EXPECT_EQ(json_of(value.get()), tagged);
    EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_COMPACT), compact);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_value_to_compact_json(value.get(), b); }),
              compact);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_value_to_json(value.get(), b); }),
              tagged);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_strbuf_add_value(b, value.get()); }),
              compact);
}

TEST(JsonWriteValue, EveryTypeHasItsTagAndItsCompactForm) {
    expect_forms(Value(oru_do_value_new_unsigned_byte(255)), R"({"%ubyte":255})", "255");
    expect_forms(Value(oru_do_value_new_byte(-5)), R"({"%byte":-5})", "-5");
    expect_forms(Value(oru_do_value_new_unsigned_short(65535)), R"({"%ushort":65535})", "65535");
    expect_forms(Value(oru_do_value_new_short(-2)), R"({"%short":-2})", "-2");
    expect_forms(Value(oru_do_value_new_unsigned_int(4294967295u)), R"({"%uint":4294967295})",
                 "4294967295");
    expect_forms(Value(oru_do_value_new_int(-7)), R"({"%int":-7})", "-7");
    expect_forms(Value(oru_do_value_new_unsigned_long(UINT64_MAX)),
                 R"({"%ulong":18446744073709551615})", "18446744073709551615");
    expect_forms(Value(oru_do_value_new_long(INT64_MIN)), R"({"%long":-9223372036854775808})",
                 "-9223372036854775808");
    expect_forms(Value(oru_do_value_new_string("a\"b\n")), R"({"%string":"a\"b\n"})",
                 R"("a\"b\n")");
    expect_forms(Value(oru_do_value_new_string("")), R"({"%string":""})", R"("")");
    expect_forms(Value(oru_do_value_new_boolean(3)), R"({"%boolean":true})", "true");
    expect_forms(Value(oru_do_value_new_boolean(0)), R"({"%boolean":false})", "false");
    expect_forms(Value(oru_do_value_new_float(0.5f)), R"({"%float":0.5})", "0.5");
    expect_forms(Value(oru_do_value_new_double(1e100)), R"({"%double":1e+100})", "1e+100");
    expect_forms(Value(oru_do_value_new_datetime(-12)), R"({"%datetime":-12})", "-12");
    expect_forms(Value(oru_do_value_new_duration(13)), R"({"%duration":13})", "13");
    expect_forms(uri_value<oru_do_value_new_any_uri>("/a"), R"({"%any_uri":"/a"})", R"("/a")");
    expect_forms(Value(oru_do_value_new_hex_binary("\xab\x01", 2)), R"({"%hex_binary":"AB01"})",
                 R"("AB01")");
    expect_forms(Value(oru_do_value_new_ip_address("\x7f\0\0\1", 4)),
                 R"({"%ip_address":"7F000001"})", R"("7F000001")");
    expect_forms(Value(oru_do_value_new_nsap_address("", 0)), R"({"%nsap_address":""})", R"("")");
    expect_forms(Value(oru_do_value_new_enumeration("up")), R"({"%enumeration":"up"})", R"("up")");
    expect_forms(complex_value<oru_do_value_new_choice>(), R"({"%choice":{"a":{"%int":1}}})",
                 R"({"%choice":{"a":{"%int":1}}})");
    expect_forms(complex_value<oru_do_value_new_sequence>(), R"({"%sequence":{"a":{"%int":1}}})",
                 R"({"%sequence":{"a":{"%int":1}}})");
    expect_forms(uri_value<oru_do_value_new_mr_uri>("/m"), R"({"%mr_uri":"/m"})", R"("/m")");
    expect_forms(uri_value<oru_do_value_new_coll_uri>("/c?d"), R"({"%coll_uri":"/c?d"})",
                 R"("/c?d")");
    expect_forms(Value(oru_do_value_new_null()), "null", "null");
    expect_forms(Value(oru_do_value_new_default()), R"({"%default":""})", R"("")");
}

TEST(JsonWriteValue, ArraysAreUnderTheTagOfTheirElements) {
    expect_forms(array_of({oru_do_value_new_int(1), oru_do_value_new_int(2)}), R"({"%int":[1,2]})",
                 "[1,2]");
    expect_forms(array_of({oru_do_value_new_int(1), oru_do_value_new_string("a")}),
                 R"({"%array":[{"%int":1},{"%string":"a"}]})", R"({"%array":[1,"a"]})");
    expect_forms(array_of({}), R"({"%array":[]})", R"({"%array":[]})");
    expect_forms(array_of({complex_value<oru_do_value_new_choice>().release()}),
                 R"({"%array":[{"%choice":{"a":{"%int":1}}}]})",
                 R"({"%array":[{"%choice":{"a":{"%int":1}}}]})");
    expect_forms(array_of({array_of({oru_do_value_new_int(1)}).release()}), R"({"%array":[[1]]})",
                 "[[1]]");
    expect_forms(array_of({oru_do_value_new_null()}), R"({"%null":[null]})", "[null]");
}

TEST(JsonWriteValue, BitsHaveTheirOwnTag) {
    expect_forms(
        array_of({oru_do_value_new_enumeration("a"), oru_do_value_new_enumeration("b")}, true),
        R"({"%bits":[{"%enumeration":"a"},{"%enumeration":"b"}]})", R"({"%bits":["a","b"]})");
}

TEST(JsonWriteValue, ATypedefNameFollowsInTheTaggedForm) {
    const Value text(oru_do_value_new_string("x"));
    oru_do_value_set_typedef_name(text.get(), "Na\"me");
    expect_forms(text, R"({"%string":"x","%typedef":"Na\"me"})", R"("x")");
    const Value array = array_of({oru_do_value_new_int(1)});
    oru_do_value_set_typedef_name(array.get(), "T");
    expect_forms(array, R"({"%int":[1],"%typedef":"T"})", "[1]");
    const Value choice = complex_value<oru_do_value_new_choice>();
    oru_do_value_set_typedef_name(choice.get(), "T");
    EXPECT_EQ(json_of(choice.get()), R"({"%choice":{"a":{"%int":1}}})");
    const Value default_value(oru_do_value_new_default());
    oru_do_value_set_typedef_name(default_value.get(), "T");
    EXPECT_EQ(json_of(default_value.get()), R"({"%default":"","%typedef":"T"})");
}

TEST(JsonWriteValue, SequencesNestTagged) {
    ORUDoNvlist *list = oru_do_nvlist_new();
    const Value inner = complex_value<oru_do_value_new_sequence>();
    oru_do_nvlist_add(list, "b", inner.get());
    const Value outer(oru_do_value_new_sequence(list));
    oru_do_nvlist_deref(list);
    expect_forms(outer, R"({"%sequence":{"b":{"%sequence":{"a":{"%int":1}}}}})",
                 R"({"%sequence":{"b":{"%sequence":{"a":{"%int":1}}}}})");
}

TEST(JsonWriteValue, PasswordsAreHiddenOnDemand) {
    for (const char *name : {"PasswordString", "PasswordStringFoo", "EncryptedString"}) {
        const Value value(oru_do_value_new_string("secret"));
        oru_do_value_set_typedef_name(value.get(), name);
        const std::string tail = std::string(R"(,"%typedef":")") + name + "\"}";
        EXPECT_EQ(json_of(value.get()), R"({"%string":"secret")" + tail);
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_HIDE_PASSWORDS),
                  R"({"%string":"<removed>")" + tail);
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_HIDE_PASSWORDS | ORU_JSON_OPT_COMPACT),
                  R"("<removed>")");
        EXPECT_EQ(json_of(value.get(), 0x40000), R"({"%string":"secret")" + tail);
    }
    const Value value(oru_do_value_new_string("text"));
    oru_do_value_set_typedef_name(value.get(), "Password");
    EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_HIDE_PASSWORDS),
              R"({"%string":"text","%typedef":"Password"})");
}

// Elements under the tag of their type are written compact with that option alone.
TEST(JsonWriteValue, PasswordsInListsAreHiddenWhereElementsAreTagged) {
    const auto secret = [] {
        ORUDoValue *value = oru_do_value_new_string("s");
        oru_do_value_set_typedef_name(value, "PasswordString");
        return value;
    };
    const Value typed = array_of({secret(), secret()});
    EXPECT_EQ(json_of(typed.get(), ORU_JSON_OPT_HIDE_PASSWORDS), R"({"%string":["s","s"]})");
    const Value mixed = array_of({secret(), oru_do_value_new_int(1)});
    EXPECT_EQ(json_of(mixed.get(), ORU_JSON_OPT_HIDE_PASSWORDS),
              R"({"%array":[{"%string":"<removed>","%typedef":"PasswordString"},{"%int":1}]})");
    EXPECT_EQ(json_of(mixed.get(), ORU_JSON_OPT_HIDE_PASSWORDS | ORU_JSON_OPT_COMPACT),
              R"({"%array":["s",1]})");
}

// Values as nobody makes them: their type stands behind name, counts and payload.
Value of_type(ORUDoValue *value, int32_t type) {
    constexpr size_t kTypeAt = 24;
    std::memcpy(reinterpret_cast<char *>(value) + kTypeAt, &type, sizeof type);
    EXPECT_EQ(oru_do_value_get_type(value), type);
    return Value(value);
}

TEST(JsonWriteValue, AnUnknownValueHasATagAndNoText) {
    const Value value = of_type(oru_do_value_new_default(), ORU_DO_TYPE_UNKNOWN);
    expect_forms(value, R"({"%unknown":""})", R"("")");
    oru_do_value_set_typedef_name(value.get(), "T");
    EXPECT_EQ(json_of(value.get()), R"({"%unknown":"","%typedef":"T"})");
}

TEST(JsonWriteValue, AValueWithoutItsObjectIsNotWritten) {
    for (const int32_t type :
         {ORU_DO_TYPE_ANY_URI, ORU_DO_TYPE_MR_URI, ORU_DO_TYPE_COLL_URI, ORU_DO_TYPE_CHOICE,
          ORU_DO_TYPE_SEQUENCE, ORU_DO_TYPE_ARRAY, ORU_DO_TYPE_BITS}) {
        const Value value = of_type(oru_do_value_new_null(), type);
        oru_do_value_set_typedef_name(value.get(), "T");
        EXPECT_EQ(json_of(value.get()), "") << type;
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_COMPACT), "") << type;
    }
}

// A string that found no memory for its text is an empty one.
TEST(JsonWriteValue, AStringWithoutItsTextIsEmpty) {
    poolheap_fail_nth(2, 0);
    const Value value(oru_do_value_new_string("a text of its own"));
    poolheap_fail_off();
    ASSERT_NE(value, nullptr);
    expect_forms(value, R"({"%string":""})", R"("")");
}

TEST(JsonWriteValue, OnlyTheLowHalfOfTheOptionsCounts) {
    const Value value(oru_do_value_new_string("secret"));
    oru_do_value_set_typedef_name(value.get(), "EncryptedStringOfMine");
    EXPECT_EQ(json_of(value.get(), 0xffff0000u),
              R"({"%string":"secret","%typedef":"EncryptedStringOfMine"})");
    EXPECT_EQ(json_of(value.get(), 0xffff0005u), R"("<removed>")");
    EXPECT_EQ(json_of(value.get(), 2u | 8u),
              R"({"%string":"secret","%typedef":"EncryptedStringOfMine"})");
}

TEST(JsonWriteValue, OnlyStringsOfAPasswordAreHidden) {
    const Value label(oru_do_value_new_enumeration("up"));
    oru_do_value_set_typedef_name(label.get(), "PasswordString");
    EXPECT_EQ(json_of(label.get(), ORU_JSON_OPT_HIDE_PASSWORDS),
              R"({"%enumeration":"up","%typedef":"PasswordString"})");
    for (const char *name :
         {"passwordString", "PasswordStrin", "EncryptedStrin", "MyPasswordString"}) {
        const Value text(oru_do_value_new_string("shown"));
        oru_do_value_set_typedef_name(text.get(), name);
        EXPECT_EQ(json_of(text.get(), ORU_JSON_OPT_HIDE_PASSWORDS | ORU_JSON_OPT_COMPACT),
                  R"("shown")")
            << name;
    }
    const Value bare(oru_do_value_new_string("shown"));
    EXPECT_EQ(json_of(bare.get(), ORU_JSON_OPT_HIDE_PASSWORDS), R"({"%string":"shown"})");
}

TEST(JsonWriteValue, TheCompactFormByItselfShowsPasswords) {
    const Value secret(oru_do_value_new_string("s"));
    oru_do_value_set_typedef_name(secret.get(), "PasswordString");
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_value_to_compact_json(secret.get(), b); }),
        R"("s")");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_strbuf_add_value(b, secret.get()); }),
              R"("s")");
}

// Members of complex values are tagged, and hidden where that is asked for, in every form.
TEST(JsonWriteValue, PasswordsInComplexValuesAreHidden) {
    for (const bool sequence : {false, true}) {
        ORUDoNvlist *list = oru_do_nvlist_new();
        const Value secret(oru_do_value_new_string("s"));
        oru_do_value_set_typedef_name(secret.get(), "PasswordString");
        oru_do_nvlist_add(list, "p", secret.get());
        const Value value(sequence ? oru_do_value_new_sequence(list)
                                   : oru_do_value_new_choice(list));
        oru_do_nvlist_deref(list);
        const std::string hidden =
            std::string("{\"%") + (sequence ? "sequence" : "choice") +
            R"(":{"p":{"%string":"<removed>","%typedef":"PasswordString"}}})";
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_HIDE_PASSWORDS), hidden);
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_HIDE_PASSWORDS | ORU_JSON_OPT_COMPACT), hidden);
    }
}

TEST(JsonWriteValue, EscapesAreThoseOfTheGenerator) {
    const char text[] = "\"\\/\b\f\n\r\t\x01\x1f\x7f\xc3\xa9";
    const Value value(oru_do_value_new_string(text));
    EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_COMPACT),
              "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001F\x7f\xc3\xa9\"");
    // Bytes that are no UTF-8 go through as they are.
    EXPECT_EQ(json_of(Value(oru_do_value_new_string("\xff")).get(), ORU_JSON_OPT_COMPACT),
              "\"\xff\"");
}

TEST(JsonWriteValue, NamesAndUrisAreNotEscaped) {
    EXPECT_EQ(json_of(Value(oru_do_value_new_enumeration("a\"b")).get()),
              R"({"%enumeration":"a"b"})");
    EXPECT_EQ(json_of(uri_value<oru_do_value_new_mr_uri>("/a\"").get()), R"({"%mr_uri":"/a""})");
}

TEST(JsonWriteValue, BareForms) {
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_integer_to_json(-3, b); }), "-3");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_double_to_json(b, 0.25); }), "0.25");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_string_to_json("a\tbc", 3, b); }),
              R"("a\tb")");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_string_to_json("a", 0, b); }), R"("")");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_null_to_json(b); }), "null");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_bool_to_json(2, b); }), "true");
    EXPECT_EQ(written([](ORUDoStrbuf *b) { return oru_do_bool_to_json(0, b); }), "false");
}

// Only what has to be escaped goes through the generator, which needs memory.
TEST(JsonWriteValue, ATextWithoutAGeneratorIsLeftOut) {
    oru::test::sweep_oom(
        [] {
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            if (buf == nullptr)
                return;
            oru_do_string_to_json("a\nb", 3, buf);
            oru_do_string_to_json("text", 4, buf);
            if (oru_do_strbuf_get_err(buf) == 0) {
                const std::string text = oru_do_strbuf_to_string(buf);
                EXPECT_EQ(text, oru::test::oom_hit() ? "\"text\"" : "\"a\\nb\"\"text\"");
            }
            oru_do_strbuf_deref(buf);
        },
        {.promised_deaths = {}, .at_least = 4});
}

std::string escaped(unsigned char c) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    switch (c) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\b':
            return "\\b";
        case '\f':
            return "\\f";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return c < ' ' ? std::string("\\u00") + kDigits[c >> 4] + kDigits[c & 15]
                           : std::string(1, static_cast<char>(c));
    }
}

TEST(JsonWriteValue, EveryByteAtEveryPlaceIsEscapedOrStands) {
    for (int32_t length = 1; length < 18; ++length) {
        for (int32_t place = 0; place < length; ++place) {
            for (int c = 0; c < 256; ++c) {
                const auto byte = static_cast<unsigned char>(c);
                std::string text(static_cast<size_t>(length), '~');
                text[static_cast<size_t>(place)] = static_cast<char>(byte);
                std::string expected = text;
                expected.replace(static_cast<size_t>(place), 1, escaped(byte));
                ASSERT_EQ(written([&](ORUDoStrbuf *b) {
                              return oru_do_string_to_json(text.data(), length, b);
                          }),
                          '"' + expected + '"')
                    << c << " at " << place;
            }
        }
    }
}

TEST(JsonWriteValue, RequiredArgumentsAreAsserted) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    const Value value(oru_do_value_new_string("a"));
    EXPECT_ASSERTION(oru_do_value_to_json(nullptr, buf), "val");
    EXPECT_ASSERTION(oru_do_value_to_json_opt(nullptr, buf, 1), "val");
    EXPECT_ASSERTION(oru_do_value_to_compact_json(nullptr, buf), "val");
    EXPECT_ASSERTION(oru_do_strbuf_add_value(buf, nullptr), "val");
    EXPECT_ASSERTION(oru_do_strbuf_add_value(nullptr, value.get()), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_json(value.get(), nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_nvlist_to_json(nullptr, buf), "nvlist");
    EXPECT_ASSERTION(oru_do_vlist_to_json(nullptr, buf), "vlist");
    EXPECT_ASSERTION(oru_do_nlist_to_json(nullptr, buf), "nlist");
    EXPECT_ASSERTION(oru_do_vtable_to_json(nullptr, buf), "vtable");
    EXPECT_ASSERTION(oru_do_properties_to_json(nullptr, buf), "props");
    EXPECT_ASSERTION(oru_do_properties_list_to_json(nullptr, buf), "list");
    EXPECT_ASSERTION(oru_do_error_to_json(nullptr, buf), "err");
    EXPECT_ASSERTION(oru_do_prop_errs_to_json(nullptr, buf), "prop_errs");
    EXPECT_ASSERTION(oru_do_dtree_to_json(nullptr, buf), "dtree");
    EXPECT_ASSERTION(oru_do_string_to_json("a", 1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_null_to_json(nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_bool_to_json(1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_integer_to_json(1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_double_to_json(nullptr, 1), "strbuf");
    oru_do_strbuf_deref(buf);
}

}  // namespace
