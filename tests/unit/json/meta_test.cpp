// Descriptions as JSON.
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/ntlist.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/typedef_meta.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/json/support.h"
#include "tests/unit/md/store_support.h"

namespace {

using oru::test::written;

template <auto write, class Object>
std::string form(Object *object) {
    return written([&](ORUDoStrbuf *b) { return write(object, b); });
}

class JsonMeta : public oru::test::StoreTest {
  protected:
    ~JsonMeta() override { oru_do_name_deref(name); }
    ORUDoName *name = oru_do_name_new("N");
};

TEST_F(JsonMeta, TypesByKind) {
    constexpr auto type_form = form<oru_do_typedef_meta_to_json, ORUDoTypedefMeta>;
    ORUDoTypedefMeta *simple = oru_do_typedef_meta_new_builtin(5, nullptr);
    EXPECT_EQ(type_form(simple), R"({"%typedef_meta":{"name":"","simple_type":"int"}})");

    ORUDoConstraintList *none = oru_do_constraint_list_new();
    ORUDoTypedefMeta *named = oru_do_typedef_meta_new_simpletype(name, 8, none);
    EXPECT_EQ(type_form(named), R"({"%typedef_meta":{"name":"N","simple_type":"string",)"
                                R"("constraint_list":{"%constraint_list":[]}}})");

    ORUDoNvlist *labels = oru_do_nvlist_new();
    oru_do_nvlist_add_int(labels, "up", 1);
    ORUDoTypedefMeta *enumeration = oru_do_typedef_meta_new_enum(name, labels);
    EXPECT_EQ(type_form(enumeration),
              R"({"%typedef_meta":{"name":"N","enum":{"%nvlist":{"up":{"%int":1}}}}})");

    ORUDoNtlist *members = oru_do_ntlist_new();
    oru_do_ntlist_add_typedef_meta(members, name, simple);
    const std::string list =
        R"({"%ntlist":{"N":{"%typedef_meta":{"name":"","simple_type":"int"}}}})";
    EXPECT_EQ((form<oru_do_ntlist_to_json, ORUDoNtlist>(members)), list);
    ORUDoTypedefMeta *sequence = oru_do_typedef_meta_new_sequence(name, members);
    EXPECT_EQ(type_form(sequence), R"({"%typedef_meta":{"name":"N","sequence":)" + list + "}}");
    ORUDoTypedefMeta *choice = oru_do_typedef_meta_new_choice(name, members);
    EXPECT_EQ(type_form(choice), R"({"%typedef_meta":{"name":"N","choice":)" + list + "}}");

    for (ORUDoTypedefMeta *type : {simple, named, enumeration, sequence, choice})
        oru_do_typedef_meta_deref(type);
    oru_do_ntlist_deref(members);
    oru_do_nvlist_deref(labels);
    oru_do_constraint_list_deref(none);
}

TEST_F(JsonMeta, ATypeWithoutItsPartEndsWithAComma) {
    constexpr auto type_form = form<oru_do_typedef_meta_to_json, ORUDoTypedefMeta>;
    ORUDoTypedefMeta *enumeration = oru_do_typedef_meta_new_enum(name, nullptr);
    ORUDoTypedefMeta *sequence = oru_do_typedef_meta_new_sequence(name, nullptr);
    ORUDoTypedefMeta *choice = oru_do_typedef_meta_new_choice(name, nullptr);
    for (ORUDoTypedefMeta *type : {enumeration, sequence, choice}) {
        EXPECT_EQ(type_form(type), R"({"%typedef_meta":{"name":"N",}})");
        oru_do_typedef_meta_deref(type);
    }
}

TEST_F(JsonMeta, Constraints) {
    load_lib(oru::test::resources(oru::test::resource(
        "M",
        "<configData><attribute name='k' type='int'><assert><condition>x.is_null()</condition>"
        "<constraint>values(\"a\")</constraint></assert></attribute>"
        "<attribute name='c' type='int'><assert><constraint>values(1)</constraint></assert>"
        "</attribute></configData>")));
    const auto constraints_of = [](const char *attribute) {
        ORUDoMrMeta *mr = oru_md_get_pkg_meta_by_name("com.lib")->mrs->do_mr_meta;
        return form<oru_do_constraint_list_to_json>(
            oru_do_prop_meta_get_constraint_list(oru_do_mr_meta_get_prop_meta_str(mr, attribute)));
    };
    EXPECT_EQ(constraints_of("k"),
              "{\"%constraint_list\":[{\"%constraint\":{\"condition\":\"x.is_null()\","
              "\"constraint_str\":\"values(\\\"a\\\")\"}}]}");
    EXPECT_EQ(constraints_of("c"),
              "{\"%constraint_list\":[{\"%constraint\":{\"constraint_str\":\"values(1)\"}}]}");
}

TEST_F(JsonMeta, PropertiesAndResources) {
    ORUDoName *type = oru_do_name_new("T");
    ORUDoPropMeta *prop = oru_do_prop_meta_new(name, 1, 0, 2, nullptr, 107, type, 2, 3, 7, 0);
    const std::string prop_text =
        R"({"%prop_meta":{"prop_name":"N","prop_category":1,"primary_key":0,"key_idx":2,)"
        R"("type_code":107,"type_name":"T","max_access":7,"multiplicity":2,"ref_role":3}})";
    EXPECT_EQ(form<oru_do_prop_meta_to_json>(prop), prop_text);
    ORUDoPropMetaList *props = oru_do_prop_meta_list_new();
    EXPECT_EQ(form<oru_do_prop_meta_list_to_json>(props), R"({"%prop_meta_list":[]})");
    oru_do_prop_meta_list_add(props, prop);
    oru_do_prop_meta_list_add(props, prop);
    const std::string props_text = R"({"%prop_meta_list":[)" + prop_text + "," + prop_text + "]}";
    EXPECT_EQ(form<oru_do_prop_meta_list_to_json>(props), props_text);

    ORUDoMrMeta *mr = oru_do_mr_meta_new(type, "1.0", name, 15, props, nullptr);
    const std::string mr_text =
        R"({"%mr_meta":{"pkg_name":"T","mr_name":"N","max_access":15,"prop_meta_list":)" +
        props_text + "}}";
    EXPECT_EQ(form<oru_do_mr_meta_to_json>(mr), mr_text);
    ORUDoMrMetaList *mrs = oru_do_mr_meta_list_new();
    oru_do_mr_meta_list_add(mrs, mr);
    EXPECT_EQ(form<oru_do_mr_meta_list_to_json>(mrs), R"({"%mr_meta_list":[)" + mr_text + "]}");

    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  poolheap_fail_nth(1, 1);
                  const int32_t rc = oru_do_mr_meta_to_json(mr, b);
                  poolheap_fail_off();
                  return rc;
              }),
              R"({"%mr_meta":{"pkg_name":"T","mr_name":"N","max_access":15,"prop_meta_list":)");

    oru_do_mr_meta_list_deref(mrs);
    oru_do_mr_meta_deref(mr);
    oru_do_prop_meta_list_deref(props);
    oru_do_prop_meta_deref(prop);
    oru_do_name_deref(type);
}

template <auto read, auto write, auto deref>
std::string again(const std::string &text) {
    auto *object = read(text.data(), oru::test::size_of(text), nullptr);
    if (object == nullptr)
        return "none";
    const std::string result = written([&](ORUDoStrbuf *b) { return write(object, b); });
    deref(object);
    return result;
}

TEST_F(JsonMeta, TypesReadBack) {
    constexpr auto type = again<oru_do_typedef_meta_from_json, oru_do_typedef_meta_to_json,
                                oru_do_typedef_meta_deref>;
    constexpr auto list =
        again<oru_do_ntlist_from_json, oru_do_ntlist_to_json, oru_do_ntlist_deref>;
    const std::string members =
        R"({"%ntlist":{"a":{"%typedef_meta":{"name":"","simple_type":"int"}}}})";
    EXPECT_EQ(list(members), members);
    EXPECT_EQ(list(R"({"%ntlist":{"a":1}})"), R"({"%ntlist":{}})");
    EXPECT_EQ(type(R"({"%typedef_meta":{"name":"N","simple_type":"string","constraint_list":)"
                   R"({"%constraint_list":[{"condition":"c","constraint_str":"s"}]}}})"),
              R"({"%typedef_meta":{"name":"N","simple_type":"string","constraint_list":)"
              R"({"%constraint_list":[{"%constraint":{"condition":"c","constraint_str":"s"}}]}}})");
    for (const std::string &text :
         {std::string(R"({"%typedef_meta":{"name":"N","enum":{"%nvlist":{"up":{"%int":1}}}}})"),
          R"({"%typedef_meta":{"name":"N","sequence":)" + members + "}}",
          R"({"%typedef_meta":{"name":"N","choice":)" + members + "}}"}) {
        EXPECT_EQ(type(text), text);
    }
    EXPECT_EQ(type(R"({"%typedef_meta":{"name":"N"}})"), "none");
    EXPECT_EQ(type(R"({"%typedef_meta":{"simple_type":"nope"}})"),
              R"({"%typedef_meta":{"name":"","simple_type":"__unknown__"}})");
    EXPECT_EQ(type(R"({"%typedef_meta":{"choice":)" + members + R"(,"simple_type":"int"}})"),
              R"({"%typedef_meta":{"name":"","simple_type":"int"}})");
}

// The tag of the single form begins that of its list, so it comes back untagged only.
TEST_F(JsonMeta, ConstraintsReadBack) {
    constexpr auto list = again<oru_do_constraint_list_from_json, oru_do_constraint_list_to_json,
                                oru_do_constraint_list_deref>;
    constexpr auto one =
        again<oru_do_constraint_from_json, oru_do_constraint_to_json, oru_do_constraint_deref>;
    const std::string single = R"({"%constraint":{"constraint_str":"t"}})";
    EXPECT_EQ(one(R"({"constraint_str":"t"})"), single);
    EXPECT_EQ(one(single), "none");
    EXPECT_EQ(one(R"({"condition":"c"})"), "none");
    EXPECT_EQ(list(R"({"%constraint_list":[{"constraint_str":"t"}]})"),
              R"({"%constraint_list":[)" + single + "]}");
    EXPECT_EQ(list(R"({"%constraint_list":[)" + single + "]}"), R"({"%constraint_list":[]})");
}

TEST_F(JsonMeta, PropertiesReadUnderTheirOwnKeys) {
    constexpr auto one =
        again<oru_do_prop_meta_from_json, oru_do_prop_meta_to_json, oru_do_prop_meta_deref>;
    constexpr auto list = again<oru_do_prop_meta_list_from_json, oru_do_prop_meta_list_to_json,
                                oru_do_prop_meta_list_deref>;
    EXPECT_EQ(one(R"({"prop_name":"p","type_name":"T","type_code":5})"),
              R"({"%prop_meta":{"prop_name":"p","prop_category":-1,"primary_key":0,"key_idx":0,)"
              R"("type_code":5,"type_name":"T","max_access":0,"multiplicity":1,"ref_role":0}})");
    const std::string full =
        R"({"%prop_meta":{"prop_name":"p","prop_category":2,"primary_key":1,"key_idx":3,)"
        R"("type_code":5,"type_name":"T","max_access":7,"multiplicity":2,"ref_role":3}})";
    EXPECT_EQ(list(R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5,)"
                   R"("category":2,"primary_key":1,"key_idx":3,"max_access":7,"multiplicity":2,)"
                   R"("targetRole":3,"prop_category":9,"ref_role":9}]})"),
              R"({"%prop_meta_list":[)" + full + "]}");
    EXPECT_EQ(one(R"({"prop_name":"p","type_name":"T"})"), "none");
    EXPECT_EQ(one(R"({"prop_name":"p","type_name":"T","type_code":-3})"), "none");
    EXPECT_EQ(one(R"({"prop_name":"p","type_code":5})"), "none");
    EXPECT_EQ(one(R"({"type_name":"T","type_code":5})"), "none");
}

TEST_F(JsonMeta, ResourcesReadWithoutProperties) {
    constexpr auto one =
        again<oru_do_mr_meta_from_json, oru_do_mr_meta_to_json, oru_do_mr_meta_deref>;
    constexpr auto list = again<oru_do_mr_meta_list_from_json, oru_do_mr_meta_list_to_json,
                                oru_do_mr_meta_list_deref>;
    const std::string plain =
        R"({"%mr_meta":{"pkg_name":"p","mr_name":"M","max_access":15,"prop_meta_list":)"
        R"({"%prop_meta_list":[]}}})";
    EXPECT_EQ(one(R"({"pkg_name":"p","pkg_version":"1.0","mr_name":"M","max_access":15,)"
                  R"("prop_meta_list":{"%properties":{"a":1}}})"),
              plain);
    EXPECT_EQ(list(R"({"%mr_meta_list":[{"pkg_name":"p","mr_name":"M","max_access":15}]})"),
              R"({"%mr_meta_list":[)" + plain + "]}");
    EXPECT_EQ(one(R"({"pkg_name":"p"})"), "none");
    EXPECT_EQ(one(R"({"mr_name":"M"})"), "none");
}

TEST_F(JsonMeta, TheBeginningOfAKeyWillDo) {
    constexpr auto prop =
        again<oru_do_prop_meta_from_json, oru_do_prop_meta_to_json, oru_do_prop_meta_deref>;
    constexpr auto mr =
        again<oru_do_mr_meta_from_json, oru_do_mr_meta_to_json, oru_do_mr_meta_deref>;
    constexpr auto constraint =
        again<oru_do_constraint_from_json, oru_do_constraint_to_json, oru_do_constraint_deref>;
    EXPECT_EQ(prop(R"({"prop_":"p","type_n":"T","type_c":5,"cat":2,"primary":1,"key":3,)"
                   R"("max":7,"mult":2,"target":3})"),
              R"({"%prop_meta":{"prop_name":"p","prop_category":2,"primary_key":1,"key_idx":3,)"
              R"("type_code":5,"type_name":"T","max_access":7,"multiplicity":2,"ref_role":3}})");
    EXPECT_EQ(constraint(R"({"cond":"c","cons":"s"})"),
              R"({"%constraint":{"condition":"c","constraint_str":"s"}})");
    EXPECT_EQ(mr(R"({"pkg_n":"p","pkg_v":"1","mr":"M","max":15})"),
              R"({"%mr_meta":{"pkg_name":"p","mr_name":"M","max_access":15,"prop_meta_list":)"
              R"({"%prop_meta_list":[]}}})");
}

// A member is one key's only.
TEST_F(JsonMeta, ABeginningOfTwoKeysMeansTheFirst) {
    constexpr auto prop =
        again<oru_do_prop_meta_from_json, oru_do_prop_meta_to_json, oru_do_prop_meta_deref>;
    constexpr auto constraint =
        again<oru_do_constraint_from_json, oru_do_constraint_to_json, oru_do_constraint_deref>;
    // The kind of the payload tells "type_name" from "type_code", not from "targetRole".
    EXPECT_EQ(prop(R"({"p":"p","t":"T","t":5,"m":2})"),
              R"({"%prop_meta":{"prop_name":"p","prop_category":-1,"primary_key":0,"key_idx":0,)"
              R"("type_code":5,"type_name":"T","max_access":0,"multiplicity":2,"ref_role":0}})");
    EXPECT_EQ(constraint(R"({"con":"x"})"), "none");
    EXPECT_EQ(constraint(R"({"con":"x","cons":"s"})"),
              R"({"%constraint":{"condition":"x","constraint_str":"s"}})");
    const std::string text = R"({"pkg_":"p","m":"M"})";
    ORUDoMrMeta *mr = oru_do_mr_meta_from_json(text.data(), oru::test::size_of(text), nullptr);
    ASSERT_NE(mr, nullptr);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_mr_meta_get_mr_fq_name(mr)), "p/M");
    oru_do_mr_meta_deref(mr);
}

TEST_F(JsonMeta, KeysOfAnotherTypeAreSkippedAndTheFirstOfEqualOnesCounts) {
    constexpr auto prop =
        again<oru_do_prop_meta_from_json, oru_do_prop_meta_to_json, oru_do_prop_meta_deref>;
    constexpr auto mr =
        again<oru_do_mr_meta_from_json, oru_do_mr_meta_to_json, oru_do_mr_meta_deref>;
    constexpr auto constraint =
        again<oru_do_constraint_from_json, oru_do_constraint_to_json, oru_do_constraint_deref>;
    constexpr auto type = again<oru_do_typedef_meta_from_json, oru_do_typedef_meta_to_json,
                                oru_do_typedef_meta_deref>;
    EXPECT_EQ(prop(R"({"prop_name":1,"prop_name":"p","prop_name":"q","type_name":null,)"
                   R"("type_name":"T","type_name":"U","type_code":"5","type_code":5,"type_code":6,)"
                   R"("category":true,"category":2,"category":3,"key_idx":1.5,"multiplicity":{}})"),
              R"({"%prop_meta":{"prop_name":"p","prop_category":2,"primary_key":0,"key_idx":0,)"
              R"("type_code":5,"type_name":"T","max_access":0,"multiplicity":1,"ref_role":0}})");
    EXPECT_EQ(constraint(R"({"condition":1,"constraint_str":{"%int":1},"constraint_str":"s",)"
                         R"("constraint_str":"t"})"),
              R"({"%constraint":{"constraint_str":"s"}})");
    EXPECT_EQ(mr(R"({"pkg_name":1,"pkg_name":"p","pkg_name":"q","mr_name":"M","max_access":"1",)"
                 R"("max_access":257,"max_access":2})"),
              R"({"%mr_meta":{"pkg_name":"p","mr_name":"M","max_access":1,"prop_meta_list":)"
              R"({"%prop_meta_list":[]}}})");
    EXPECT_EQ(type(R"({"name":1,"name":"N","name":"O","simple_type":5,"simple_type":"int",)"
                   R"("simple_type":"string","constraint_list":"x"})"),
              R"({"%typedef_meta":{"name":"N","simple_type":"int"}})");
}

TEST_F(JsonMeta, KindsHaveAnOrder) {
    constexpr auto type = again<oru_do_typedef_meta_from_json, oru_do_typedef_meta_to_json,
                                oru_do_typedef_meta_deref>;
    const std::string enums = R"("enum":{"%nvlist":{"up":{"%int":1}}})";
    const std::string members =
        R"({"%ntlist":{"a":{"%typedef_meta":{"name":"","simple_type":"int"}}}})";
    const std::string sequence = R"("sequence":)" + members;
    const std::string choice = R"("choice":)" + members;
    EXPECT_EQ(type("{" + choice + "," + sequence + "," + enums + R"(,"simple_type":"int"})"),
              R"({"%typedef_meta":{"name":"","simple_type":"int"}})");
    EXPECT_EQ(type("{" + choice + "," + sequence + "," + enums + "}"),
              R"({"%typedef_meta":{"name":"",)" + enums + "}}");
    EXPECT_EQ(type("{" + choice + "," + sequence + "}"),
              R"({"%typedef_meta":{"name":"",)" + sequence + "}}");
    EXPECT_EQ(type("{" + choice + "}"), R"({"%typedef_meta":{"name":"",)" + choice + "}}");
    // Of another type than their own they do not count.
    EXPECT_EQ(type(R"({"enum":)" + members + R"(,"sequence":{"%nvlist":{"a":1}},"choice":1})"),
              "none");
}

TEST_F(JsonMeta, AResourceTakesAccessOfEightBits) {
    ORUDoMrMeta *mr = oru_do_mr_meta_new(name, nullptr, name, 255, nullptr, nullptr);
    EXPECT_EQ(form<oru_do_mr_meta_to_json>(mr),
              R"({"%mr_meta":{"pkg_name":"N","mr_name":"N","max_access":255,"prop_meta_list":)"
              R"({"%prop_meta_list":[]}}})");
    oru_do_mr_meta_deref(mr);
}

// The list that is written is of another type than the one that would be taken.
TEST_F(JsonMeta, PropertiesOfAResourceDoNotComeBack) {
    constexpr auto list = again<oru_do_mr_meta_list_from_json, oru_do_mr_meta_list_to_json,
                                oru_do_mr_meta_list_deref>;
    EXPECT_EQ(list(R"({"%mr_meta_list":[{"pkg_name":"p","mr_name":"M","prop_meta_list":)"
                   R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]}}]})"),
              R"({"%mr_meta_list":[{"%mr_meta":{"pkg_name":"p","mr_name":"M","max_access":0,)"
              R"("prop_meta_list":{"%prop_meta_list":[]}}}]})");
}

// A resource that lacks a property is never written whole.
TEST_F(JsonMeta, ResourceWithoutMemoryForItsPropertiesStaysOpen) {
    ORUDoMrMeta *meta = oru_do_mr_meta_new(name, nullptr, name, 15, nullptr, nullptr);
    ORUDoPropMeta *prop = oru_do_prop_meta_new(name, 2, 0, 0, nullptr, 5, name, 1, 0, 1, 0);
    for (int i = 0; i < 3; ++i)
        oru_do_mr_meta_add_prop_meta(meta, prop);
    const std::string whole = form<oru_do_mr_meta_to_json, ORUDoMrMeta>(meta);
    oru::test::sweep_oom([&] {
        ORUDoStrbuf *buf = oru_do_strbuf_new();
        if (buf == nullptr)
            return;
        EXPECT_EQ(oru_do_mr_meta_to_json(meta, buf), 0);
        const char *text = oru_do_strbuf_to_string(buf);
        const std::string made = text != nullptr ? text : "";
        if (oru_do_strbuf_get_err(buf) == 0) {
            EXPECT_EQ(made.ends_with("}}"), made == whole) << made;
        }
        oru_do_strbuf_deref(buf);
    });
    oru_do_prop_meta_deref(prop);
    oru_do_mr_meta_deref(meta);
}

TEST_F(JsonMeta, EveryAllocationMayFail) {
    for (const char *text :
         {R"({"%ntlist":{"a":{"%typedef_meta":{"name":"N","simple_type":"int","constraint_list":)"
          R"({"%constraint_list":[{"condition":"c","constraint_str":"s"}]}}}}})",
          R"({"%mr_meta_list":[{"pkg_name":"p","pkg_version":"1","mr_name":"M"}]})",
          R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]})"}) {
        oru::test::sweep_oom(
            [text] {
                const oru::test::Context ctx = oru::test::parsed(text);
                EXPECT_TRUE(ctx == nullptr || ctx->completed_obj != nullptr ||
                            oru::test::oom_hit());
            },
            {.promised_deaths = {}, .at_least = 5});
    }
}

TEST_F(JsonMeta, RequiredArgumentsAreAsserted) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_ASSERTION(oru_do_typedef_meta_to_json(nullptr, buf), "meta");
    EXPECT_ASSERTION(oru_do_ntlist_to_json(nullptr, buf), "ntlist");
    EXPECT_ASSERTION(oru_do_constraint_to_json(nullptr, buf), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_list_to_json(nullptr, buf), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_to_json(nullptr, buf), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_list_to_json(nullptr, buf), "list");
    EXPECT_ASSERTION(oru_do_mr_meta_to_json(nullptr, buf), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_list_to_json(nullptr, buf), "list");
    oru_do_strbuf_deref(buf);
}

}  // namespace
