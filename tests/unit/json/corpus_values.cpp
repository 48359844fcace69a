// Values of every type, with the edges of each.
#include <cmath>
#include <limits>

#include "tests/unit/json/build.h"
#include "tests/unit/json/corpus.h"

#define VALUE(name, expression)                              \
    {                                                        \
        &kValue, name, []() -> void * { return expression; } \
    }

namespace oru::test {
namespace {

using namespace build;

// The characters from one to another.
ORUDoValue *characters(char first, char last) {
    std::string all;
    for (char c = first; c <= last; ++c)
        all += c;
    return text(all.c_str());
}

const Specimen kNumbers[] = {
    VALUE("ubyte_most", oru_do_value_new_unsigned_byte(255)),
    VALUE("byte_least", oru_do_value_new_byte(-128)),
    VALUE("ushort_most", oru_do_value_new_unsigned_short(65535)),
    VALUE("short_least", oru_do_value_new_short(-32768)),
    VALUE("uint_most", oru_do_value_new_unsigned_int(UINT32_MAX)),
    VALUE("int_zero", number(0)),
    VALUE("int_least", number(INT32_MIN)),
    VALUE("ulong_most", oru_do_value_new_unsigned_long(UINT64_MAX)),
    VALUE("long_least", oru_do_value_new_long(INT64_MIN)),
    VALUE("long_most", oru_do_value_new_long(INT64_MAX)),
    VALUE("boolean_true", oru_do_value_new_boolean(3)),
    VALUE("boolean_false", oru_do_value_new_boolean(0)),
    VALUE("float_third", oru_do_value_new_float(1.0f / 3)),
    VALUE("double_whole", oru_do_value_new_double(2)),
    VALUE("double_rounded", oru_do_value_new_double(1234567.5)),
    VALUE("double_large", oru_do_value_new_double(1e100)),
    VALUE("double_least", oru_do_value_new_double(std::numeric_limits<double>::denorm_min())),
    VALUE("double_minus_zero", oru_do_value_new_double(-0.0)),
    VALUE("double_infinite", oru_do_value_new_double(HUGE_VAL)),
    VALUE("double_no_number", oru_do_value_new_double(std::nan(""))),
    VALUE("datetime", oru_do_value_new_datetime(-12)),
    VALUE("datetime_derived", derived(oru_do_value_new_datetime(1000000), "timeStamp")),
    VALUE("duration", oru_do_value_new_duration(INT64_MAX)),
    VALUE("null", nothing()),
    VALUE("null_derived", derived(nothing(), "T")),
    VALUE("default", oru_do_value_new_default()),
    VALUE("default_derived", derived(oru_do_value_new_default(), "T")),
};

const Specimen kTexts[] = {
    VALUE("string", text("plain text, 'quoted' / slashed")),
    VALUE("string_empty", text("")),
    VALUE("string_escapes", text("\"\\/\b\f\n\r\t\x01\x1f\x7f")),
    VALUE("string_controls", characters('\x01', '\x1f')),
    VALUE("string_printable", characters(' ', '~')),
    VALUE("string_zero", oru_do_value_new_string_l("a\0b", 3)),
    VALUE("string_long",
          text("0123456789012345678901234567890123456789012345678901234567890123"
               "0123456789012345678901234567890123456789012345678901234567890123\n")),
    VALUE("string_utf8", text("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80")),
    VALUE("string_not_utf8", text("a\xff")),
    VALUE("string_markup", text("<a b=\"c\">&'</a>")),
    VALUE("string_derived", derived(text("x"), "Na\"me<&")),
    VALUE("string_password", derived(text("secret"), "PasswordStringOfMine")),
    VALUE("string_encrypted", derived(text("secret"), "EncryptedString")),
    VALUE("string_no_password", derived(text("shown"), "Passwordstring")),
    VALUE("enumeration", label("up")),
    VALUE("enumeration_quote", label("a\"b")),
    VALUE("any_uri", oru_do_value_new_any_uri(uri("http:x").get())),
    VALUE("mr_uri", mr_uri("//location;id=1/net;name='a b'")),
    VALUE("mr_uri_markup", mr_uri("/a;k=1&2<3>")),
    VALUE("mr_uri_quote", mr_uri("/a;k=\"1\"")),
    VALUE("coll_uri", oru_do_value_new_coll_uri(uri("/net?node:Type").get())),
};

const Specimen kBytes[] = {
    VALUE("hex_binary", oru_do_value_new_hex_binary("\x00\xab\x01", 3)),
    VALUE("hex_binary_empty", oru_do_value_new_hex_binary("", 0)),
    VALUE("hex_binary_derived",
          derived(oru_do_value_new_hex_binary("\x00\x11\x22\x33\x44\x5f", 6), "MACAddress")),
    VALUE("ip_address_v4", oru_do_value_new_ip_address("\x7f\x00\x00\x01", 4)),
    VALUE("ip_address_v4_prefix", oru_do_value_new_ip_address("\x0a\x00\x00\x01\x18", 5)),
    VALUE("ip_address_v4_prefix_zero", oru_do_value_new_ip_address("\x0a\x00\x00\x01\x00", 5)),
    VALUE("ip_address_v6",
          oru_do_value_new_ip_address("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01", 16)),
    VALUE("ip_address_v6_prefix",
          oru_do_value_new_ip_address("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01\x80", 17)),
    VALUE("ip_address_odd", oru_do_value_new_ip_address("\xab\xcd", 2)),
    VALUE("nsap_address", oru_do_value_new_nsap_address("\x49\x00\x01\xaa", 4)),
};

const Specimen kComplex[] = {
    VALUE("choice", choice({{"a", number(1)}})),
    VALUE("sequence", sequence({{"a", number(1)}, {"b", text("x\ty")}, {"a", nothing()}})),
    VALUE("sequence_nested",
          sequence({{"a", sequence({{"b", choice({{"c", label("up")}})}})}, {"d", array({})}})),
    VALUE("sequence_empty", sequence({})),
    VALUE("sequence_derived", derived(sequence({{"a", number(1)}}), "T")),
    VALUE("sequence_secret",
          sequence({{"a", derived(text("s"), "PasswordString")}, {"b", number(1)}})),
    VALUE("array", array({number(1), number(-2)})),
    VALUE("array_empty", array({})),
    VALUE("array_derived", derived(array({number(1)}), "T")),
    VALUE("array_mixed", array({number(1), text("a"), nothing()})),
    VALUE("array_mixed_derived", derived(array({number(1), text("a")}), "T")),
    VALUE("array_of_reals", array({oru_do_value_new_double(0.5), oru_do_value_new_double(2)})),
    VALUE("array_of_booleans", array({oru_do_value_new_boolean(1), oru_do_value_new_boolean(0)})),
    VALUE("array_of_labels", array({label("up"), label("down")})),
    VALUE("array_of_uris", array({mr_uri("/a"), mr_uri("/b")})),
    VALUE("array_of_sequences",
          array({sequence({{"a", number(1)}}), sequence({{"b", nothing()}})})),
    VALUE("array_of_nulls", array({nothing(), nothing()})),
    VALUE("array_of_defaults", array({oru_do_value_new_default()})),
    VALUE("array_of_arrays", array({array({number(1), number(2)}), array({number(3)})})),
    VALUE("array_of_bits", array({bits({label("a")})})),
    VALUE("array_of_secrets",
          array({derived(text("s"), "PasswordString"), derived(text("t"), "PasswordString")})),
    VALUE("array_with_a_secret", array({derived(text("s"), "PasswordString"), number(1)})),
    VALUE("bits", bits({label("a"), label("b")})),
    VALUE("bits_empty", bits({})),
    VALUE("bits_derived", derived(bits({label("a")}), "T")),
};

}  // namespace

void add_values(std::vector<Specimen> &corpus) {
    corpus.insert(corpus.end(), std::begin(kNumbers), std::end(kNumbers));
    corpus.insert(corpus.end(), std::begin(kTexts), std::end(kTexts));
    corpus.insert(corpus.end(), std::begin(kBytes), std::end(kBytes));
    corpus.insert(corpus.end(), std::begin(kComplex), std::end(kComplex));
}

}  // namespace oru::test
