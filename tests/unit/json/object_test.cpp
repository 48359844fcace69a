// Objects that are no values: what is written, and that it reads back.
#include <string>

#include "oru/dtree.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/uri.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::size_of;
using oru::test::written;

// What `write` makes of what `read` makes of a text.
template <auto read, auto write, auto deref>
std::string again(const std::string &text) {
    auto *object = read(text.data(), size_of(text), nullptr);
    if (object == nullptr)
        return "none";
    const std::string result = written([&](ORUDoStrbuf *b) { return write(object, b); });
    deref(object);
    return result;
}

constexpr auto properties =
    again<oru_do_properties_from_json, oru_do_properties_to_json, oru_do_properties_deref>;
constexpr auto properties_list =
    again<oru_do_properties_list_from_json, oru_do_properties_list_to_json,
          oru_do_properties_list_deref>;
constexpr auto nlist = again<oru_do_nlist_from_json, oru_do_nlist_to_json, oru_do_nlist_deref>;
constexpr auto nvlist = again<oru_do_nvlist_from_json, oru_do_nvlist_to_json, oru_do_nvlist_deref>;
constexpr auto vlist = again<oru_do_vlist_from_json, oru_do_vlist_to_json, oru_do_vlist_deref>;
constexpr auto vtable = again<oru_do_vtable_from_json, oru_do_vtable_to_json, oru_do_vtable_deref>;
constexpr auto error = again<oru_do_error_from_json, oru_do_error_to_json, oru_do_error_deref>;
constexpr auto prop_errs =
    again<oru_do_prop_errs_from_json, oru_do_prop_errs_to_json, oru_do_prop_errs_deref>;
constexpr auto dtree = again<oru_do_dtree_from_json, oru_do_dtree_to_json, oru_do_dtree_deref>;

template <auto form>
void expect_same(const std::string &text) {
    EXPECT_EQ(form(text), text);
}

TEST(JsonObjects, ReadBackAsTheyWereWritten) {
    expect_same<properties>(R"({"%properties":{"a":{"%int":1},"b":{"%string":"x"},"c":null}})");
    expect_same<properties_list>(
        R"({"%properties_list":[{"%properties":{"a":{"%int":1}}},{"%properties":{"b":null}}]})");
    expect_same<nlist>(R"({"%nlist":["a","b"]})");
    expect_same<nvlist>(R"({"%nvlist":{"a":{"%int":1},"a":{"%long":2}}})");
    expect_same<vlist>(R"({"%vlist":[{"%int":1},{"%string":"x"},{"%int":[1,2]}]})");
    expect_same<error>(R"({"%error":{"code":5,"msg":"a\"b"}})");
    expect_same<error>(
        R"({"%error":{"code":5,"msg":"m","namespace":"n\\","cause":{"%error":{"code":6,"msg":""}},)"
        R"("prop_errs":{"%prop_errs":{"p":{"%error":{"code":7,"msg":"q"}}}}}})");
    expect_same<prop_errs>(R"({"%prop_errs":{"p":{"%error":{"code":7,"msg":"q"}}}})");
    expect_same<dtree>(R"({"%dtree":{"name":"a\nb"}})");
    expect_same<dtree>(
        R"({"%dtree":{"name":"r","mr_uri":"/u","err":{"%error":{"code":1,"msg":"e"}},)"
        R"("props":{"%properties":{"p":{"%int":1}}},"children":{"%dtree":[{"name":"a","children":)"
        R"({"%dtree":[{"name":"b"}]}},{"name":"c"}]}}})");
}

TEST(JsonObjects, CompactPropertiesHaveNoTag) {
    const std::string text = R"({"a":1,"b":"x","c":2.5,"d":true,"e":null})";
    ORUDoProperties *props = oru_do_properties_from_json(text.data(), size_of(text), nullptr);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_json_opt(props, b, ORU_JSON_OPT_COMPACT);
              }),
              text);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_properties_to_json(props, b); }),
              R"({"%properties":{"a":{"%int":1},"b":{"%string":"x"},"c":{"%double":2.5},)"
              R"("d":{"%boolean":true},"e":null}})");
    oru_do_properties_reset_values(props);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_json_opt(props, b, ORU_JSON_OPT_COMPACT);
              }),
              R"({"a":null,"b":null,"c":null,"d":null,"e":null})");
    oru_do_properties_deref(props);
}

TEST(JsonObjects, OptionsGoToTheValues) {
    const std::string text = R"({"%properties_list":[{"a":1}]})";
    auto *list = oru_do_properties_list_from_json(text.data(), size_of(text), nullptr);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_list_to_json_opt(list, b, ORU_JSON_OPT_COMPACT);
              }),
              text);
    oru_do_properties_list_deref(list);
    const std::string pairs = R"({"%nvlist":{"a":1}})";
    auto *named = oru_do_nvlist_from_json(pairs.data(), size_of(pairs), nullptr);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_nvlist_to_json_opt(named, b, ORU_JSON_OPT_COMPACT);
              }),
              pairs);
    oru_do_nvlist_deref(named);
}

TEST(JsonObjects, ListsFollowTheirOptions) {
    ORUDoVlist *list = oru_do_vlist_new();
    oru_do_vlist_add_string(list, "a");
    oru_do_vlist_add_string(list, "b");
    const auto form = [&](uint32_t options, const char *typedef_name) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_vlist_to_json_opt(list, b, options, typedef_name);
        });
    };
    EXPECT_EQ(form(0, nullptr), R"({"%string":["a","b"]})");
    EXPECT_EQ(form(0, "T\""), R"({"%string":["a","b"],"%typedef":"T\""})");
    EXPECT_EQ(form(1, "T"), R"(["a","b"])");
    EXPECT_EQ(form(2, nullptr), R"({"%vlist":[{"%string":"a"},{"%string":"b"}]})");
    EXPECT_EQ(form(3, "T"), R"({"%vlist":["a","b"],"%typedef":"T"})");
    EXPECT_EQ(form(8, nullptr), R"({"%bits":[{"%string":"a"},{"%string":"b"}]})");
    EXPECT_EQ(form(9, nullptr), R"({"%bits":["a","b"]})");
    EXPECT_EQ(form(10, nullptr), R"({"%vlist":[{"%string":"a"},{"%string":"b"}]})");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_vlist_to_json(list, b); }),
              R"({"%vlist":[{"%string":"a"},{"%string":"b"}]})");
    oru_do_vlist_deref(list);
}

TEST(JsonObjects, InnerListsKeepTheirOwnForm) {
    const std::string text = R"({"%vlist":[{"%int":[1]},{"%bits":["x"]}]})";
    ORUDoVlist *list = oru_do_vlist_from_json(text.data(), size_of(text), nullptr);
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_vlist_to_json_opt(list, b, 3, nullptr); }),
        R"({"%vlist":[[1],{"%bits":["x"]}]})");
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_vlist_to_json_opt(list, b, 8, nullptr); }),
        R"({"%bits":[{"%int":[1]},{"%bits":[{"%string":"x"}]}]})");
    oru_do_vlist_deref(list);
}

TEST(JsonObjects, OnlyTheFirstRowOfATableFollowsTheOptions) {
    ORUDoVtable *table = oru_do_vtable_new();
    const auto add_row = [&](bool mixed) {
        ORUDoVlist *row = oru_do_vlist_new();
        oru_do_vlist_add_int(row, 1);
        if (mixed)
            oru_do_vlist_add_string(row, "a");
        oru_do_vtable_add(table, row);
        oru_do_vlist_deref(row);
    };
    const auto form = [&](uint32_t options) {
        return written(
            [&](ORUDoStrbuf *b) { return oru_do_vtable_to_json_opt(table, b, options); });
    };
    EXPECT_EQ(form(0), R"({"%vtable":[]})");
    add_row(false);
    add_row(false);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_vtable_to_json(table, b); }),
              R"({"%vtable":[{"%int":[1]},[1]]})");
    EXPECT_EQ(form(1), R"({"%vtable":[[1],[1]]})");
    oru_do_vtable_clear(table);
    add_row(true);
    add_row(true);
    EXPECT_EQ(form(0),
              R"({"%vtable":[{"%array":[{"%int":1},{"%string":"a"}]},{"%array":[1,"a"]}]})");
    EXPECT_EQ(form(2),
              R"({"%vtable":[{"%vlist":[{"%int":1},{"%string":"a"}]},{"%array":[1,"a"]}]})");
    oru_do_vtable_deref(table);
}

TEST(JsonObjects, RowsInTaggedFormAreNoRows) {
    EXPECT_EQ(vtable(R"({"%vtable":[{"%int":[1]},[2],["a",null]]})"),
              R"({"%vtable":[{"%int":[2]},{"%array":["a",null]}]})");
    EXPECT_EQ(vtable(R"({"%vtable":[]})"), R"({"%vtable":[]})");
    EXPECT_EQ(vtable(R"({"%vtable":{}})"), "none");
}

TEST(JsonObjects, WhatAnErrorHasNotIsLeftOut) {
    ORUDoError *err = oru_do_error_new(-5, nullptr);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_json(err, b); }),
              R"({"%error":{"code":-5}})");
    oru_do_error_deref(err);
    EXPECT_EQ(error(R"({"%error":{"code":5}})"), "none");
    EXPECT_EQ(error(R"({"%error":{"msg":"m"}})"), R"({"%error":{"code":0,"msg":"m"}})");
    EXPECT_EQ(error(R"({"%error":{"code":"x","msg":1,"msg":"m","msg":"n"}})"),
              R"({"%error":{"code":0,"msg":"m"}})");
    EXPECT_EQ(error(R"({"code":3,"m":"by its beginning"})"),
              R"({"%error":{"code":3,"msg":"by its beginning"}})");
}

TEST(JsonObjects, HiddenNodesAreNotWritten) {
    const std::string text =
        R"({"%dtree":{"name":"r","children":{"%dtree":[{"name":"a"},{"name":"b"}]}}})";
    ORUDoDtree *tree = oru_do_dtree_from_json(text.data(), size_of(text), nullptr);
    const auto form = [&] {
        return written([&](ORUDoStrbuf *b) { return oru_do_dtree_to_json(tree, b); });
    };
    ORUDoDtree *first = oru_do_dtree_get_child(tree, 0);
    EXPECT_EQ(oru_do_dtree_get_parent(first), tree);
    oru_do_dtree_hide_node(first, 1);
    EXPECT_EQ(form(), R"({"%dtree":{"name":"r","children":{"%dtree":[{"name":"b"}]}}})");
    oru_do_dtree_hide_children(tree, nullptr, 1);
    EXPECT_EQ(form(), R"({"%dtree":{"name":"r","children":{"%dtree":[]}}})");
    oru_do_dtree_deref(tree);
}

TEST(JsonObjects, ChildrenThatFindNoNodeAreLost) {
    EXPECT_EQ(dtree(R"({"%dtree":{"children":{"%dtree":[{"name":"a"}]},"name":"r"}})"),
              R"({"%dtree":{"name":"r"}})");
    EXPECT_EQ(dtree(R"({"%dtree":[{"name":"a"}]})"), "none");
    EXPECT_EQ(dtree(R"({"%dtree":{"mr_uri":"/a"}})"), "none");
    EXPECT_EQ(dtree(R"({"%dtree":{"name":"r","children":{"%dtree":[{"name":"a"}]},)"
                    R"("children":{"%dtree":[{"name":"b"}]}}})"),
              R"({"%dtree":{"name":"r","children":{"%dtree":[{"name":"a"}]}}})");
    EXPECT_EQ(dtree(R"({"mr_uri":"/a","name":"r"})"), R"({"%dtree":{"name":"r","mr_uri":"/a"}})");
}

TEST(JsonObjects, TheFirstOccurrenceOfAKeyWins) {
    EXPECT_EQ(properties(R"({"a":1,"b":2,"a":3})"),
              R"({"%properties":{"a":{"%int":1},"b":{"%int":2}}})");
    EXPECT_EQ(prop_errs(R"({"p":{"%error":{"msg":"1"}},"q":5,"p":{"%error":{"msg":"2"}}})"),
              R"({"%prop_errs":{"p":{"%error":{"code":0,"msg":"1"}}}})");
}

TEST(JsonObjects, ManyPropertiesKeepTheirOrder) {
    std::string text = R"({"%properties":{)";
    for (int i = 0; i < 100; ++i)
        text += (i > 0 ? ",\"k" : "\"k") + std::to_string(i) + R"(":{"%int":)" + std::to_string(i) +
                "}";
    expect_same<properties>(text + "}}");
}

TEST(JsonObjects, EmptyObjectsDoNotRead) {
    for (const char *text : {R"({"%properties":{}})", "{}"})
        EXPECT_EQ(properties(text), "none") << text;
    EXPECT_EQ(nlist(R"({"%nlist":[]})"), "none");
    EXPECT_EQ(vlist(R"({"%vlist":[]})"), "none");
    EXPECT_EQ(nvlist(R"({"%nvlist":{}})"), "none");
}

TEST(JsonObjects, NamesInAListAreTexts) {
    EXPECT_EQ(nlist(R"({"%nlist":["a",1,null,"b\t"]})"), "{\"%nlist\":[\"a\",\"b\t\"]}");
}

TEST(JsonObjects, TheBeginningOfAKeyWillDo) {
    EXPECT_EQ(error(R"({"co":5,"ms":"m","na":"n","ca":{"%error":{"msg":"c"}},)"
                    R"("p":{"%prop_errs":{"p":{"%error":{"msg":"q"}}}}})"),
              R"({"%error":{"code":5,"msg":"m","namespace":"n","cause":{"%error":{"code":0,)"
              R"("msg":"c"}},"prop_errs":{"%prop_errs":{"p":{"%error":{"code":0,"msg":"q"}}}}}})");
    // The type tells "code" from "cause".
    EXPECT_EQ(error(R"({"c":{"%error":{"msg":"c"}},"c":5,"m":"m"})"),
              R"({"%error":{"code":5,"msg":"m","cause":{"%error":{"code":0,"msg":"c"}}}})");
    EXPECT_EQ(dtree(R"({"n":"r","m":"/u","e":{"%error":{"msg":"e"}},"p":{"%properties":{"a":1}},)"
                    R"("c":{"%dtree":[{"n":"a"}]}})"),
              R"({"%dtree":{"name":"r","mr_uri":"/u","err":{"%error":{"code":0,"msg":"e"}},)"
              R"("props":{"%properties":{"a":{"%int":1}}},"children":{"%dtree":[{"name":"a"}]}}})");
    // Longer than the key it is another one.
    EXPECT_EQ(error(R"({"msgs":"m"})"), "none");
    EXPECT_EQ(dtree(R"({"names":"r"})"), "none");
}

TEST(JsonObjects, MembersOfAnotherTypeAreSkipped) {
    EXPECT_EQ(error(R"({"code":1.5,"code":true,"msg":"m","namespace":1,"cause":"x",)"
                    R"("cause":{"%int":1},"prop_errs":{"%error":{"msg":"x"}}})"),
              R"({"%error":{"code":0,"msg":"m"}})");
    EXPECT_EQ(dtree(R"({"name":1,"name":"r","mr_uri":{"%mr_uri":"/u"},"err":"x","props":{"a":1},)"
                    R"("children":{"%nlist":["a"]}})"),
              R"({"%dtree":{"name":"r"}})");
    EXPECT_EQ(prop_errs(R"({"a":"x","b":{"%int":1},"c":null,"d":{"%error":{"msg":"m"}}})"),
              R"({"%prop_errs":{"d":{"%error":{"code":0,"msg":"m"}}}})");
    EXPECT_EQ(prop_errs(R"({"a":"x"})"), R"({"%prop_errs":{}})");
    EXPECT_EQ(properties_list(R"({"%properties_list":[{"a":1},"x",{"%int":1},null]})"),
              R"({"%properties_list":[{"%properties":{"a":{"%int":1}}}]})");
    EXPECT_EQ(properties(R"({"a":{"%nlist":["x"]},"b":{"%properties":{"c":1}},"d":{"%null":1}})"),
              R"({"%properties":{"a":null,"b":null,"d":null}})");
}

TEST(JsonObjects, TheFirstOfEqualMembersCounts) {
    EXPECT_EQ(error(R"({"code":1,"code":2,"msg":"m","msg":"n","namespace":"x","namespace":"y",)"
                    R"("cause":{"%error":{"msg":"c"}},"cause":{"%error":{"msg":"d"}}})"),
              R"({"%error":{"code":1,"msg":"m","namespace":"x","cause":{"%error":{"code":0,)"
              R"("msg":"c"}}}})");
    EXPECT_EQ(dtree(R"({"name":"r","name":"s","mr_uri":"/u","mr_uri":"/v",)"
                    R"("props":{"%properties":{"a":1}},"props":{"%properties":{"b":1}}})"),
              R"({"%dtree":{"name":"r","mr_uri":"/u","props":{"%properties":{"a":{"%int":1}}}}})");
    EXPECT_EQ(nvlist(R"({"%nvlist":{"a":1,"a":2}})"),
              R"({"%nvlist":{"a":{"%int":1},"a":{"%int":2}}})");
}

TEST(JsonObjects, NumbersAreCutToTheirWidth) {
    EXPECT_EQ(error(R"({"code":4294967297,"msg":"m"})"), R"({"%error":{"code":1,"msg":"m"}})");
    EXPECT_EQ(properties(R"({"a":4294967301,"b":-4294967301,"c":1e3})"),
              R"({"%properties":{"a":{"%int":5},"b":{"%int":-5},"c":{"%int":1}}})");
}

TEST(JsonObjects, MembersOfAVlistWithoutAKeyAreItsValues) {
    EXPECT_EQ(vlist(R"({"%vlist":{"a":1,"b":[2]}})"), R"({"%vlist":[{"%int":1},{"%int":[2]}]})");
    EXPECT_EQ(vlist(R"({"%vlist":5})"), R"({"%vlist":[{"%int":5}]})");
    EXPECT_EQ(nvlist(R"({"%nvlist":[1,{"%int":2}]})"), R"({"%nvlist":{}})");
}

// Without a tag the elements of an array are scalars of their own.
TEST(JsonObjects, BareArraysAreNoLists) {
    for (const char *text : {R"(["a"])", R"([])"}) {
        EXPECT_EQ(nlist(text), "none");
        EXPECT_EQ(vlist(text), "none");
    }
    ORUDoError *err = nullptr;
    const std::string text = R"(["a","b"])";
    EXPECT_EQ(oru_do_nlist_from_json(text.data(), size_of(text), &err), nullptr);
    const oru::test::Error owned(err);
    ASSERT_NE(err, nullptr);
    EXPECT_EQ(oru_do_error_get_code(err), 9);
}

TEST(JsonObjects, ChildrenMayBeTaggedAndHaveParents) {
    const std::string text =
        R"({"name":"r","children":{"%dtree":[{"%dtree":{"name":"a","children":{"%dtree":[)"
        R"({"name":"b"}]}}},1,{"%int":1},{"mr_uri":"/x"},{"name":"c"}]}})";
    ORUDoDtree *tree = oru_do_dtree_from_json(text.data(), size_of(text), nullptr);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(oru_do_dtree_get_child_count(tree), 2);
    ORUDoDtree *a = oru_do_dtree_get_child(tree, 0);
    EXPECT_EQ(oru_do_dtree_get_parent(a), tree);
    EXPECT_EQ(oru_do_dtree_get_parent(oru_do_dtree_get_child(a, 0)), a);
    EXPECT_EQ(oru_do_dtree_get_parent(oru_do_dtree_get_child(tree, 1)), tree);
    EXPECT_EQ(oru_do_dtree_get_parent(tree), nullptr);
    oru_do_dtree_deref(tree);
}

// A member that holds something already takes no list of children, nor does one of another name.
TEST(JsonObjects, ChildrenNeedAMemberOfTheirOwn) {
    EXPECT_EQ(dtree(R"({"name":"r","kids":{"%dtree":[{"name":"a"}]}})"),
              R"({"%dtree":{"name":"r"}})");
    EXPECT_EQ(dtree(R"({"name":"r","children":{"%int":1},"children":{"%dtree":[{"name":"a"}]}})"),
              R"({"%dtree":{"name":"r"}})");
    // A single node in its place gives its own children away.
    EXPECT_EQ(dtree(R"({"name":"r","children":{"%dtree":{"name":"a","children":)"
                    R"({"%dtree":[{"name":"b"}]}}}})"),
              R"({"%dtree":{"name":"r","children":{"%dtree":[{"name":"b"}]}}})");
}

TEST(JsonObjects, NamesOfMembersAreWrittenAsTheyStand) {
    EXPECT_EQ(nlist(R"({"%nlist":["a\"b"]})"), R"({"%nlist":["a"b"]})");
    EXPECT_EQ(nvlist(R"({"%nvlist":{"a\"b":1}})"), R"({"%nvlist":{"a"b":{"%int":1}}})");
    EXPECT_EQ(properties(R"({"a\"b":1})"), R"({"%properties":{"a"b":{"%int":1}}})");
    EXPECT_EQ(prop_errs(R"({"a\"b":{"%error":{"msg":"m"}}})"),
              R"({"%prop_errs":{"a"b":{"%error":{"code":0,"msg":"m"}}}})");
    EXPECT_EQ(dtree(R"({"name":"a\"b","mr_uri":"/\"u"})"),
              R"({"%dtree":{"name":"a\"b","mr_uri":"/"u"}})");
}

TEST(JsonObjects, ThreeStringsAreUnderTheTagOfTheirType) {
    const std::string text = R"({"%vlist":["a","b","c"]})";
    ORUDoVlist *list = oru_do_vlist_from_json(text.data(), size_of(text), nullptr);
    const auto form = [list](uint32_t options) {
        return written(
            [=](ORUDoStrbuf *b) { return oru_do_vlist_to_json_opt(list, b, options, nullptr); });
    };
    EXPECT_EQ(form(0), R"({"%string":["a","b","c"]})");
    EXPECT_EQ(form(2), R"({"%vlist":[{"%string":"a"},{"%string":"b"},{"%string":"c"}]})");
    oru_do_vlist_deref(list);
}

}  // namespace
