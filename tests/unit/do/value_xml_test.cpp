#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "oru/value.h"
#include "oru/xml.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Nvlist;
using oru::test::Strbuf;
using oru::test::Uri;
using oru::test::Value;
using oru::test::Vlist;

constexpr uint32_t kHideSecrets = 1;
constexpr uint32_t kPlain = 2;

std::string text(const Strbuf &buf) {
    return oru_do_strbuf_to_string(buf.get());
}

std::string xml(const Value &val, uint32_t opts = 0, const char *name = "a",
                const char *prefix = nullptr) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_value_to_xml_opt(prefix, name, val.get(), buf.get(), opts), 0);
    return text(buf);
}

// What stands between the tags of a plain element.
std::string content(const Value &val) {
    std::string all = xml(val, kPlain);
    EXPECT_EQ(all.substr(0, 3), "<a>");
    EXPECT_EQ(all.substr(all.size() - 4), "</a>");
    return all.substr(3, all.size() - 7);
}

Value with_typedef(Value val, const char *name) {
    oru_do_value_set_typedef_name(val.get(), name);
    return val;
}

Value integer(int32_t n) {
    return Value(oru_do_value_new_int(n));
}
Value word(const char *name) {
    return Value(oru_do_value_new_enumeration(name));
}
Value string(const char *given) {
    return Value(oru_do_value_new_string(given));
}

Vlist list_of(std::vector<Value> values) {
    Vlist list(oru_do_vlist_new());
    for (const Value &val : values)
        oru_do_vlist_add(list.get(), val.get());
    return list;
}

template <class... Values>
Vlist list(Values... values) {
    std::vector<Value> all;
    (all.push_back(std::move(values)), ...);
    return list_of(std::move(all));
}

Nvlist sample_nvlist() {
    Nvlist named(oru_do_nvlist_new());
    oru_do_nvlist_add(named.get(), "x", integer(1).get());
    oru_do_nvlist_add(named.get(), "y", with_typedef(string("pw"), "PasswordString").get());
    return named;
}

TEST(ValueXml, AnElementTellsItsType) {
    EXPECT_EQ(xml(integer(5)), "<a type=\"int\">5</a>");
    EXPECT_EQ(xml(integer(5), kPlain), "<a>5</a>");
    EXPECT_EQ(xml(integer(5), 0, nullptr), "<value type=\"int\">5</value>");
    EXPECT_EQ(xml(integer(5), 0, "a", "ns:"), "<ns:a type=\"int\">5</ns:a>");
    EXPECT_EQ(xml(integer(5), kPlain, nullptr, "ns:"), "<ns:value>5</ns:value>");
}

TEST(ValueXml, AndItsTypedefEscaped) {
    EXPECT_EQ(xml(with_typedef(integer(5), "Percent")),
              "<a type=\"int\" typedef=\"Percent\">5</a>");
    EXPECT_EQ(xml(with_typedef(integer(5), "<&>")),
              "<a type=\"int\" typedef=\"&lt;&amp;&gt;\">5</a>");
    EXPECT_EQ(xml(with_typedef(integer(5), "Percent"), kPlain), "<a>5</a>");
}

TEST(ValueXml, NullIsMarked) {
    EXPECT_EQ(xml(Value(oru_do_value_new_null())), "<a type=\"null\" xsi:null=\"true\"></a>");
    EXPECT_EQ(xml(Value(oru_do_value_new_null()), kPlain), "<a></a>");
    EXPECT_EQ(xml(with_typedef(Value(oru_do_value_new_null()), "T")),
              "<a type=\"null\" typedef=\"T\" xsi:null=\"true\"></a>");
}

TEST(ValueXml, DefaultAndUnknownHaveTypesAndNoContent) {
    EXPECT_EQ(xml(Value(oru_do_value_new_default())), "<a type=\"__default__\"></a>");
    Value unknown(oru_do_value_new_null());
    struct Head {
        char *typedef_name;
        uint32_t ref;
        int32_t len;
        uint64_t data;
        int32_t type;
    };
    reinterpret_cast<Head *>(unknown.get())->type = -3;
    EXPECT_EQ(xml(unknown), "<a type=\"__unknown__\"></a>");
    reinterpret_cast<Head *>(unknown.get())->type = 16;
    EXPECT_EQ(xml(unknown), "<a></a>") << "a code without a text has no attribute";
    reinterpret_cast<Head *>(unknown.get())->type = 14;
    EXPECT_EQ(xml(unknown), "<a type=\"anyURI\"></a>") << "no URI, no content";
}

TEST(ValueXml, NumbersInDecimal) {
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_byte(255))), "255");
    EXPECT_EQ(content(Value(oru_do_value_new_byte(-128))), "-128");
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_short(65535))), "65535");
    EXPECT_EQ(content(Value(oru_do_value_new_short(-32768))), "-32768");
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_int(4294967295u))), "4294967295");
    EXPECT_EQ(content(integer(-1)), "-1");
    EXPECT_EQ(content(Value(oru_do_value_new_long(INT64_MIN))), "-9223372036854775808");
    EXPECT_EQ(content(Value(oru_do_value_new_datetime(-5))), "-5");
    EXPECT_EQ(content(with_typedef(Value(oru_do_value_new_datetime(5)), "timeStamp")), "5");
    EXPECT_EQ(content(Value(oru_do_value_new_duration(6))), "6");
    EXPECT_EQ(content(Value(oru_do_value_new_float(0.1f))), "0.1");
    EXPECT_EQ(content(Value(oru_do_value_new_double(1e100))), "1e+100");
}

TEST(ValueXml, LargeUnsignedLongsComeOutNegative) {
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_long(INT64_MAX))), "9223372036854775807");
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_long(UINT64_MAX))), "-1");
    EXPECT_EQ(content(Value(oru_do_value_new_unsigned_long(uint64_t{1} << 63))),
              "-9223372036854775808");
}

TEST(ValueXml, TextsAreEscaped) {
    EXPECT_EQ(content(string("a<\"b\">&'c'")), "a&lt;&quot;b&quot;&gt;&amp;&apos;c&apos;");
    EXPECT_EQ(content(string("")), "");
    Uri uri(oru_do_uri_new("/a/b=\"1\""));
    EXPECT_EQ(content(Value(oru_do_value_new_any_uri(uri.get()))), "/a/b=&quot;1&quot;");
    EXPECT_EQ(content(Value(oru_do_value_new_mr_uri(uri.get()))), "/a/b=&quot;1&quot;");
    EXPECT_EQ(content(Value(oru_do_value_new_coll_uri(uri.get()))), "/a/b=&quot;1&quot;");
}

TEST(ValueXml, AStringWithoutStorageHasNoContent) {
    poolheap_fail_nth(2, 0);
    Value unstored(oru_do_value_new_string("abc"));
    poolheap_fail_off();
    EXPECT_EQ(content(unstored), "");
}

TEST(ValueXml, SecretsAreHiddenOnRequest) {
    const auto secret = [] { return with_typedef(string("pw"), "PasswordStringFoo"); };
    EXPECT_EQ(xml(secret(), kPlain), "<a>pw</a>");
    EXPECT_EQ(xml(secret(), kPlain | kHideSecrets), "<a>&lt;removed&gt;</a>");
    EXPECT_EQ(xml(secret(), kHideSecrets),
              "<a type=\"string\" typedef=\"PasswordStringFoo\">&lt;removed&gt;</a>");
    EXPECT_EQ(xml(with_typedef(string("pw"), "EncryptedString"), kPlain | kHideSecrets),
              "<a>&lt;removed&gt;</a>");
    EXPECT_EQ(xml(with_typedef(string("pw"), "Other"), kPlain | kHideSecrets), "<a>pw</a>");
}

TEST(ValueXml, Booleans) {
    EXPECT_EQ(content(Value(oru_do_value_new_boolean(2))), "true");
    EXPECT_EQ(content(Value(oru_do_value_new_boolean(0))), "false");
}

TEST(ValueXml, BytesInOneRun) {
    EXPECT_EQ(
        content(with_typedef(Value(oru_do_value_new_hex_binary("\xaa\xbb\xcc", 3)), "MACAddress")),
        "AABBCC");
    EXPECT_EQ(content(Value(oru_do_value_new_nsap_address("\x49\x01\x02", 3))), "490102");
    EXPECT_EQ(content(Value(oru_do_value_new_hex_binary("", 0))), "");
}

TEST(ValueXml, AddressesInTheirTextForm) {
    EXPECT_EQ(content(Value(oru_do_value_new_ip_address("\x0a\x00\x00\x01\x18", 5))),
              "10.0.0.1/24");
    EXPECT_EQ(content(with_typedef(Value(oru_do_value_new_ip_address("\xab\x00\x00\x01", 4)), "X")),
              "AB000001");
}

TEST(ValueXml, AnEnumerationIsAnEmptyElement) {
    EXPECT_EQ(content(word("up")), "<up/>");
    EXPECT_EQ(xml(word("up"), kPlain, "a", "ns:"), "<ns:a><ns:up/></ns:a>");
}

TEST(ValueXml, ComplexValuesHaveTheirItemsWithoutAWrapper) {
    Nvlist named = sample_nvlist();
    Value sequence(oru_do_value_new_sequence(named.get()));
    EXPECT_EQ(xml(sequence),
              "<a type=\"sequence\"><x type=\"int\">1</x>"
              "<y type=\"string\" typedef=\"PasswordString\">pw</y></a>");
    Value choice(oru_do_value_new_choice(named.get()));
    EXPECT_EQ(xml(choice, 0, "a", "n:").substr(0, 43),
              "<n:a type=\"choice\"><n:x type=\"int\">1</n:x><");
}

TEST(ValueXml, OptionsStayOutsideLists) {
    Nvlist named = sample_nvlist();
    Value sequence(oru_do_value_new_sequence(named.get()));
    EXPECT_EQ(xml(sequence, kPlain | kHideSecrets),
              "<a><x type=\"int\">1</x>"
              "<y type=\"string\" typedef=\"PasswordString\">pw</y></a>");
    Value array(oru_do_value_new_array(list(integer(1)).get()));
    EXPECT_EQ(xml(array, kPlain), "<a><a type=\"int\">1</a></a>");
}

TEST(ValueXml, AnArrayHasItsOwnNameOnEachElement) {
    Value array(oru_do_value_new_array(list(integer(1), integer(2)).get()));
    EXPECT_EQ(xml(array), "<a type=\"array\"><a type=\"int\">1</a><a type=\"int\">2</a></a>");
    EXPECT_EQ(xml(array, 0, nullptr),
              "<value type=\"array\"><value type=\"int\">1</value>"
              "<value type=\"int\">2</value></value>");
    Value empty(oru_do_value_new_array(list().get()));
    EXPECT_EQ(xml(empty), "<a type=\"array\"></a>");
}

TEST(ValueXml, BitsHaveAnElementOfTheirOwn) {
    Value bits(oru_do_value_new_bits(list(word("up"), word("down")).get()));
    EXPECT_EQ(xml(bits, 0, "b"),
              "<b type=\"bits\"><bits><b type=\"enumeration\"><up/></b>"
              "<b type=\"enumeration\"><down/></b></bits></b>");
}

// ---- Formatters ----

struct Seen {
    intptr_t context;
    const char *prefix;
    const char *name;
    ORUDoValue *val;
    uint32_t opts;
} seen;

int32_t xml_hook(intptr_t context, const char *prefix, const char *name, ORUDoValue *val,
                 ORUDoStrbuf *strbuf, uint32_t opts) {
    seen = {context, prefix, name, val, opts};
    oru_do_strbuf_add_string(strbuf, "hooked");
    return 42;
}

int32_t text_hook(intptr_t, ORUDoValue *, int32_t, ORUDoStrbuf *strbuf) {
    oru_do_strbuf_add_string(strbuf, "text");
    return 0;
}

TEST(ValueXmlFormatter, TakesTheFormOver) {
    const ORUDoValueFormatter formatter{9, nullptr, nullptr, xml_hook};
    Strbuf buf(oru_do_strbuf_new());
    Value val = integer(5);
    EXPECT_EQ(oru_do_value_to_xml_fmt_opt("p", "n", val.get(), &formatter, buf.get(), 3), 42);
    EXPECT_EQ(seen.context, 9);
    EXPECT_STREQ(seen.prefix, "p");
    EXPECT_STREQ(seen.name, "n");
    EXPECT_EQ(seen.val, val.get());
    EXPECT_EQ(seen.opts, 3u);
    EXPECT_EQ(oru_do_value_to_xml_fmt("p", "n", val.get(), &formatter, buf.get()), 42);
    EXPECT_EQ(seen.opts, 0u);
    EXPECT_EQ(text(buf), "hookedhooked");
}

TEST(ValueXmlFormatter, WithoutAnOperationLeavesTheBuiltInOne) {
    const ORUDoValueFormatter formatter{0, text_hook, nullptr, nullptr};
    Strbuf buf(oru_do_strbuf_new());
    Value val = integer(5);
    EXPECT_EQ(oru_do_value_to_xml_fmt(nullptr, "n", val.get(), &formatter, buf.get()), 0);
    EXPECT_EQ(oru_do_value_to_xml_fmt_opt(nullptr, "n", val.get(), nullptr, buf.get(), kPlain), 0);
    EXPECT_EQ(text(buf), "<n type=\"int\">5</n><n>5</n>");
}

TEST(ValueXmlFormatter, TheDefaultOneServesTheFormsWithoutOne) {
    const ORUDoValueFormatter formatter{0, nullptr, nullptr, xml_hook};
    Strbuf buf(oru_do_strbuf_new());
    Value val = integer(5);
    oru_do_value_set_default_formatter(&formatter);
    EXPECT_EQ(oru_do_value_to_xml(nullptr, "n", val.get(), buf.get()), 42);
    EXPECT_EQ(seen.opts, 0u);
    EXPECT_EQ(oru_do_value_to_xml_opt(nullptr, "n", val.get(), buf.get(), kPlain), 42);
    EXPECT_EQ(seen.opts, 2u);
    oru_do_value_set_default_formatter(nullptr);
    EXPECT_EQ(oru_do_value_to_xml(nullptr, "n", val.get(), buf.get()), 0);
    EXPECT_EQ(text(buf), "hookedhooked<n type=\"int\">5</n>");
}

TEST(ValueXmlFormatter, TheDefaultTextFormServesAddresses) {
    const ORUDoValueFormatter formatter{0, text_hook, nullptr, nullptr};
    oru_do_value_set_default_formatter(&formatter);
    EXPECT_EQ(content(Value(oru_do_value_new_ip_address("\x0a\x00\x00\x01", 4))), "text");
    EXPECT_EQ(content(integer(5)), "5");
    oru_do_value_set_default_formatter(nullptr);
}

// ---- Lists ----

std::string vlist_xml(const Vlist &given, const char *wrapper, const char *item_name,
                      uint32_t opts = 0, const char *prefix = nullptr) {
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_vlist_to_xml_opt(prefix, wrapper, item_name, given.get(), buf.get(), opts), 0);
    return text(buf);
}

TEST(VlistXml, TheDefaultElementTellsTheCommonType) {
    EXPECT_EQ(vlist_xml(list(integer(1), integer(2)), nullptr, "i", kPlain),
              "<vlist type=\"int\"><i>1</i><i>2</i></vlist>");
    EXPECT_EQ(vlist_xml(list(integer(1), string("a")), nullptr, "i", kPlain),
              "<vlist><i>1</i><i>a</i></vlist>");
    EXPECT_EQ(vlist_xml(list(), nullptr, "i"), "<vlist></vlist>");
}

TEST(VlistXml, AWrapperHasNoTypeAndAnEmptyOneNoElement) {
    EXPECT_EQ(vlist_xml(list(integer(1)), "w", "i"), "<w><i type=\"int\">1</i></w>");
    EXPECT_EQ(vlist_xml(list(integer(1)), "", "i"), "<i type=\"int\">1</i>");
    EXPECT_EQ(vlist_xml(list(), "", "i"), "");
    EXPECT_EQ(vlist_xml(list(integer(1)), "w", nullptr, kPlain, "p:"),
              "<p:w><p:value>1</p:value></p:w>");
}

TEST(VlistXml, HandsItsOptionsOn) {
    EXPECT_EQ(vlist_xml(list(with_typedef(string("pw"), "PasswordString")), "w", "i",
                        kPlain | kHideSecrets),
              "<w><i>&lt;removed&gt;</i></w>");
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_vlist_to_xml("p:", "w", "i", list(integer(1)).get(), buf.get()), 0);
    EXPECT_EQ(text(buf), "<p:w><p:i type=\"int\">1</p:i></p:w>");
}

std::string nvlist_xml(const char *wrapper, uint32_t opts, const char *prefix = nullptr) {
    Strbuf buf(oru_do_strbuf_new());
    Nvlist named = sample_nvlist();
    EXPECT_EQ(oru_do_nvlist_to_xml_opt(prefix, wrapper, named.get(), buf.get(), opts), 0);
    return text(buf);
}

TEST(NvlistXml, HasAnElementForEachItem) {
    EXPECT_EQ(nvlist_xml(nullptr, kPlain), "<nvlist><x>1</x><y>pw</y></nvlist>");
    EXPECT_EQ(nvlist_xml("w", kPlain | kHideSecrets), "<w><x>1</x><y>&lt;removed&gt;</y></w>");
    EXPECT_EQ(nvlist_xml("", kPlain), "<x>1</x><y>pw</y>");
    EXPECT_EQ(nvlist_xml(nullptr, kPlain, "p:"), "<p:nvlist><p:x>1</p:x><p:y>pw</p:y></p:nvlist>");
    Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_nvlist_to_xml(nullptr, "w", sample_nvlist().get(), buf.get()), 0);
    EXPECT_EQ(text(buf).substr(0, 24), "<w><x type=\"int\">1</x><y");
}

// ---- Memory and null arguments ----

TEST(ValueXmlMemory, AFailedBufferShowsInTheResultOfValuesOnly) {
    Value val(oru_do_value_new_string(std::string(300, '<').c_str()));
    Vlist values = list(string(std::string(300, 's').c_str()));
    Nvlist named(oru_do_nvlist_new_from_item("n", val.get()));
    oru::test::sweep_oom([&] {
        Strbuf buf(oru_do_strbuf_new());
        if (buf == nullptr)
            return;
        const int32_t rc = oru_do_value_to_xml(nullptr, "a", val.get(), buf.get());
        EXPECT_EQ(rc, oru::test::oom_hit() ? 10002 : 0);
    });
    oru::test::sweep_oom([&] {
        Strbuf buf(oru_do_strbuf_new());
        if (buf == nullptr)
            return;
        EXPECT_EQ(oru_do_vlist_to_xml(nullptr, nullptr, "i", values.get(), buf.get()), 0);
        EXPECT_EQ(oru_do_nvlist_to_xml(nullptr, nullptr, named.get(), buf.get()), 0);
        EXPECT_EQ(oru_do_strbuf_get_err(buf.get()), oru::test::oom_hit() ? 10002 : 0);
    });
}

TEST(ValueXmlMemory, EveryTypeTellsOfAFailedBuffer) {
    Uri uri(oru_do_uri_new("/a/b"));
    Nvlist named = sample_nvlist();
    Vlist words = list(word("up"), word("down"));
    const std::string run(300, 'b');
    const Value rows[] = {
        Value(oru_do_value_new_null()),
        Value(oru_do_value_new_default()),
        Value(oru_do_value_new_unsigned_byte(255)),
        integer(5),
        Value(oru_do_value_new_unsigned_long(UINT64_MAX)),
        Value(oru_do_value_new_boolean(1)),
        Value(oru_do_value_new_float(0.5f)),
        Value(oru_do_value_new_double(0.5)),
        Value(oru_do_value_new_datetime(5)),
        Value(oru_do_value_new_duration(5)),
        Value(oru_do_value_new_any_uri(uri.get())),
        Value(oru_do_value_new_mr_uri(uri.get())),
        Value(oru_do_value_new_coll_uri(uri.get())),
        Value(oru_do_value_new_hex_binary(run.data(), 300)),
        Value(oru_do_value_new_nsap_address(run.data(), 300)),
        Value(oru_do_value_new_ip_address("\x0a\x00\x00\x01\x18", 5)),
        word(run.c_str()),
        with_typedef(string("pw"), "PasswordString"),
        Value(oru_do_value_new_choice(named.get())),
        Value(oru_do_value_new_sequence(named.get())),
        Value(oru_do_value_new_array(words.get())),
        Value(oru_do_value_new_bits(words.get())),
    };
    for (const Value &val : rows) {
        oru::test::sweep_oom([&] {
            Strbuf buf(oru_do_strbuf_new());
            if (buf == nullptr)
                return;
            const int32_t rc =
                oru_do_value_to_xml_opt("p:", run.c_str(), val.get(), buf.get(), kHideSecrets);
            EXPECT_EQ(rc, oru::test::oom_hit() ? 10002 : 0);
        });
    }
}

TEST(ValueXmlNull, ArgumentsAreAsserted) {
    Strbuf buf(oru_do_strbuf_new());
    Value val = integer(5);
    Vlist values = list(integer(1));
    Nvlist named = sample_nvlist();
    EXPECT_ASSERTION(oru_do_value_to_xml(nullptr, "a", nullptr, buf.get()), "val");
    EXPECT_ASSERTION(oru_do_value_to_xml(nullptr, "a", val.get(), nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_value_to_xml_opt(nullptr, "a", nullptr, buf.get(), 0), "val");
    EXPECT_ASSERTION(oru_do_value_to_xml_fmt(nullptr, "a", nullptr, nullptr, buf.get()), "val");
    EXPECT_ASSERTION(oru_do_value_to_xml_fmt_opt(nullptr, "a", val.get(), nullptr, nullptr, 0),
                     "strbuf");
    EXPECT_ASSERTION(oru_do_vlist_to_xml(nullptr, "w", "i", nullptr, buf.get()), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_to_xml_opt(nullptr, "w", "i", values.get(), nullptr, 0),
                     "strbuf");
    EXPECT_ASSERTION(oru_do_nvlist_to_xml(nullptr, "w", nullptr, buf.get()), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_to_xml_opt(nullptr, "w", named.get(), nullptr, 0), "strbuf");
}

}  // namespace
