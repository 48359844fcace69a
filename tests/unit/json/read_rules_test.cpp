// The rules of the stack: which element a key, a bracket or a scalar belongs to, and which failure
// is left where memory ends.
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::code_of;
using oru::test::Context;
using oru::test::parsed;
using oru::test::read_back;
using oru::test::TraceCapture;
using oru::test::written;

// The properties that a text gives, as JSON.
std::string properties(const std::string &text) {
    const Context ctx = parsed(text, 0x400100);
    if (ctx->completed_type != 0x400100)
        return "none";
    return written([&ctx](ORUDoStrbuf *buf) {
        return oru_do_properties_to_json(static_cast<ORUDoProperties *>(ctx->completed_obj), buf);
    });
}

// ---- Tags and keys ----

TEST(JsonReadKeys, TheFirstTagIsTheObjectsOwn) {
    EXPECT_EQ(read_back(R"({"%int":1,"%long":2})"), R"({"%int":1})");
    EXPECT_EQ(read_back(R"({"%int":1,"%nope":2})"), R"({"%int":1})");
    EXPECT_EQ(read_back(R"({"%int":1,"%typedef":"T","%typedef":"U"})"),
              R"({"%int":1,"%typedef":"U"})");
    // In front it is a tag too, and begins that of descriptions.
    EXPECT_EQ(read_back(R"({"%typedef":"T","%int":1})"), "none");
}

TEST(JsonReadKeys, ATagMayComeBehindMembers) {
    EXPECT_EQ(properties(R"({"a":1,"%properties":{"b":2}})"),
              R"({"%properties":{"a":{"%int":1},"b":{"%int":2}}})");
    EXPECT_EQ(read_back(R"({"a":1,"%int":2})"), R"({"%int":1})");
}

TEST(JsonReadKeys, MembersThatLookLikeTagsAreNoMembers) {
    EXPECT_EQ(properties(R"j({"%properties":{"a":1,"%b":2,"_c()":3,"_d()":4,"d)":5,"%":6}})j"),
              R"j({"%properties":{"a":{"%int":1},"d)":{"%int":5}}})j");
    EXPECT_EQ(properties(R"j({"%properties":{"_":1,"_)":2,"_a)":3,"_ab":4,"a()":5,"_ab)":6}})j"),
              R"j({"%properties":{"_":{"%int":1},"_)":{"%int":2},"_a)":{"%int":3},)j"
              R"j("_ab":{"%int":4},"a()":{"%int":5}}})j");
}

TEST(JsonReadKeys, AKeyMayBeEmpty) {
    EXPECT_EQ(properties(R"({"":1,"a":2})"), R"({"%properties":{"":{"%int":1},"a":{"%int":2}}})");
}

TEST(JsonReadKeys, ItemsWithoutAKeyEndATable) {
    EXPECT_EQ(properties(R"({"%properties":[1,2]})"), R"({"%properties":{}})");
    EXPECT_EQ(properties(R"({"%properties":5})"), R"({"%properties":{}})");
}

TEST(JsonReadKeys, AnObjectWithoutATagTakesTheTypeOfTheListAround) {
    const Context ctx = parsed(R"({"%properties_list":[{"a":1},{"%properties":{"b":{"c":2}}}]})");
    ASSERT_EQ(ctx->completed_type, 0x800105);
    // In a list by name it is another list by name, which is no value.
    const Context named = parsed(R"({"%nvlist":{"a":{"b":1},"c":2}})");
    auto *list = static_cast<ORUDoNvlist *>(named->completed_obj);
    ASSERT_NE(list, nullptr);
    EXPECT_NE(oru_do_value_is_null(oru_do_nvlist_get_value(list, "a")), 0);
    EXPECT_EQ(oru_do_value_is_null(oru_do_nvlist_get_value(list, "c")), 0);
    EXPECT_EQ(code_of(named), 0);
}

TEST(JsonReadKeys, AnObjectOfNoTypeIsToldAndLeftOut) {
    const TraceCapture capture(3);
    const Context ctx = parsed(R"({"%properties":{"a":{"b":1},"c":2}})");
    ASSERT_EQ(capture.at(3).size(), 1u);
    EXPECT_EQ(capture.at(3)[0].find("oru_do_json: pop 0x"), 0u);
    EXPECT_TRUE(capture.at(3)[0].ends_with(", type unknown (null)")) << capture.at(3)[0];
    EXPECT_EQ(code_of(ctx), 0);
    auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
    ASSERT_NE(props, nullptr);
    EXPECT_EQ(oru_do_properties_get_len(props), 1);
}

// ---- Numbers ----

TEST(JsonReadNumbers, WithoutAPointTheyEndAtTheirExponent) {
    EXPECT_EQ(read_back("[1E3]"), R"({"%long":1})");
    EXPECT_EQ(read_back("[-1e3]"), R"({"%long":-1})");
    EXPECT_EQ(read_back("[-0]"), R"({"%long":0})");
    EXPECT_EQ(read_back("[1e999]"), R"({"%long":1})");
    EXPECT_EQ(read_back("[1.5e3]"), R"({"%double":1500})");
    EXPECT_EQ(read_back(R"({"%float":1e2})"), R"({"%float":100})");
    EXPECT_EQ(read_back(R"({"%float":[1,-2]})"), R"({"%float":[1,-2]})");
}

TEST(JsonReadNumbers, TheLargestThatAreTaken) {
    EXPECT_EQ(read_back("[9223372036854775807]"), R"({"%long":9223372036854775807})");
    EXPECT_EQ(read_back("[-9223372036854775808]"), R"({"%long":-9223372036854775808})");
    EXPECT_EQ(read_back("[9223372036854775808]"), R"({"%long":-9223372036854775808})");
    EXPECT_EQ(read_back(R"({"%int":18446744073709551615})"), R"({"%int":-1})");
    EXPECT_EQ(read_back(R"({"%ushort":65536})"), R"({"%ushort":0})");
    EXPECT_EQ(read_back(R"({"%datetime":9223372036854775807})"),
              R"({"%datetime":9223372036854775807})");
}

// No number, no item: the failure is that of an empty object.
TEST(JsonReadNumbers, OutOfRangeTheyAreNoItems) {
    for (const char *text :
         {R"({"%int":18446744073709551616})", R"({"%long":-9223372036854775809})",
          R"({"%double":1e400})", R"({"%float":-1.0e400})", R"({"%double":1.0e-400})"}) {
        const Context ctx = parsed(text);
        EXPECT_EQ(ctx->completed_obj, nullptr) << text;
        EXPECT_EQ(code_of(ctx), 4) << text;
    }
    for (const char *text : {"18446744073709551616 ", "1.0e400 ", "[1.0e-400]"}) {
        const Context ctx = parsed(text);
        EXPECT_EQ(ctx->completed_obj, nullptr) << text;
        EXPECT_EQ(code_of(ctx), 0) << text;
    }
    // Its member still waits, and takes the next scalar that has no key of its own.
    EXPECT_EQ(properties(R"({"a":1.0e400,"b":2})"), R"({"%properties":{"a":null,"b":{"%int":2}}})");
    EXPECT_EQ(properties(R"({"%properties":{"a":[1.0e400,2],"b":3}})"),
              R"({"%properties":{"a":{"%int":2},"b":{"%int":3}}})");
}

// ---- Texts and comments ----

TEST(JsonReadTexts, CommentsOfBothKinds) {
    EXPECT_EQ(read_back("// a line\n[5 /* and more */] // end\n"), R"({"%long":5})");
    EXPECT_EQ(code_of(parsed("/* open")), 0);
    EXPECT_EQ(code_of(parsed("# none")), 7);
}

TEST(JsonReadTexts, ATextEndsAtItsLength) {
    EXPECT_EQ(code_of(Context(oru_do_json_parse("\"a\"x", 3, 0))), 0);
    EXPECT_EQ(code_of(Context(oru_do_json_parse("\"a\"x", 4, 0))), 7);
    EXPECT_EQ(Context(oru_do_json_parse("\"a\"", 2, 0))->completed_obj, nullptr);
    EXPECT_NE(Context(oru_do_json_parse("\"a\"", -1, 0)), nullptr);
}

TEST(JsonReadTexts, AFaultLeavesWhatWasCompleteBefore) {
    const Context ctx = parsed(R"({"%int":5} x)");
    EXPECT_EQ(code_of(ctx), 7);
    EXPECT_EQ(ctx->completed_type, 0x50006);
    EXPECT_NE(ctx->completed_obj, nullptr);
    // The operation takes it.
    EXPECT_EQ(read_back(R"({"%int":5} x)"), R"({"%int":5})");
}

// ---- Brackets ----

TEST(JsonReadBrackets, AnArrayOpensWhereListsAreTaken) {
    EXPECT_EQ(code_of(parsed(R"({"%vlist":[1,[2,[3]]]})")), 0);
    EXPECT_EQ(code_of(parsed(R"({"%vtable":[[1],[2,[3]]]})")), 0);
    for (const char *text :
         {R"({"%array":[[1]]})", R"({"%int":[1,[2]]})", R"({"%bits":[["a"]]})",
          R"({"%nlist":[["a"]]})", R"({"%nvlist":{"a":[1]}})", R"({"%error":{"msg":["m"]}})",
          R"({"%dtree":{"name":["a"]}})", R"({"%properties_list":[[{"a":1}]]})"}) {
        const Context ctx = parsed(text);
        EXPECT_EQ(code_of(ctx), 6) << text;
        EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "") << text;
        EXPECT_NE(ctx->completed_obj, nullptr) << text;
    }
    // The elements go where scalars of the object go.
    EXPECT_EQ(read_back(R"({"%int":[1,[2,[3]],4]})"), R"({"%int":[1,2,3,4]})");
}

TEST(JsonReadBrackets, AListInAListIsAnArrayOfIt) {
    const Context ctx = parsed(R"({"%vlist":[1,[2,[3]],[]]})");
    auto *list = static_cast<ORUDoVlist *>(ctx->completed_obj);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(code_of(ctx), 4);  // the empty one
    EXPECT_EQ(written([list](ORUDoStrbuf *buf) { return oru_do_vlist_to_json(list, buf); }),
              R"({"%vlist":[{"%int":1},{"%array":[{"%int":2},{"%int":[3]}]}]})");
}

// An array of choices has members beside it when keys follow its elements; each element that is no
// choice itself has them.
TEST(JsonReadBrackets, ChoicesInAnArrayHaveTheMembersOfTheObject) {
    const std::string choices = R"({"%choice":[1,{"a":{"%int":2}},3],"b":{"%int":4},"c":"x"})";
    const std::string value = R"({"%array":[{"%choice":{"b":{"%int":4},"c":{"%string":"x"}}},)"
                              R"({"%choice":{"a":{"%int":2}}},)"
                              R"({"%choice":{"b":{"%int":4},"c":{"%string":"x"}}},)"
                              R"({"%choice":{"b":{"%int":4},"c":{"%string":"x"}}},)"
                              R"({"%choice":{"b":{"%int":4},"c":{"%string":"x"}}}]})";
    EXPECT_EQ(read_back(choices), value);
    // Within another object they are read the same way.
    EXPECT_EQ(properties("{\"%properties\":{\"p\":" + choices + "}}"),
              "{\"%properties\":{\"p\":" + value + "}}");
}

// Their number and that of their members do not multiply.
TEST(JsonReadBrackets, ChoicesInAnArrayShareTheirMembers) {
    constexpr int kMany = 20000;
    std::string text = R"({"%choice":[1)";
    for (int i = 1; i < kMany; ++i)
        text += ",1";
    text += "]";
    for (int i = 0; i < kMany; ++i)
        text += R"(,"a":1)";
    text += "}";
    poolheap_stats_t before{};
    poolheap_total_stats(&before);
    const Context ctx = parsed(text);
    ASSERT_NE(ctx->completed_obj, nullptr);
    poolheap_stats_t after{};
    poolheap_total_stats(&after);
    EXPECT_LT(after.total_blocks - before.total_blocks, 12u * kMany);
}

// Without a tag the first closing bracket completes the object around, which has its type from then
// on and takes no array any more. What was not whole there may be at the end.
TEST(JsonReadBrackets, AnObjectMayBecomeWholeBehindAnArray) {
    const struct {
        int64_t expected;
        const char *text;
        int32_t code;
    } rows[] = {
        {0x400119, R"({"a":[1],"name":"N"})", 0},
        {0x400119, R"({"a":[1],"b":[2],"name":"N","c":[3]})", 6},
        {0x400119, R"({"c":["ab"],"c":[],"name":"N"})", 6},
        {0x400119, R"({"a":{"%prop_errs":[true]},"b":{"d":[""]},"name":"N"})", 0},
        {0x400114, R"({"a":[null,{"%ushort":[null]}],"msg":"m"})", 0},
        {0x400117, R"({"name":["e"],"mr_uri":["/a"],"info":{"%properties":{"n":5}}})", 6},
        {0x40010E, R"({"condition":["c"],"constraint_str":"s"})", 0},
        {0x40010B, R"({"prop_name":["p"],"type_name":["T"],"type_code":5})", 6},
        {0x400109, R"({"pkg_name":["p"],"mr_name":["M"]})", 6},
        {0x400118, R"({"a":[1],"simple_type":"int"})", 0},
        // Nothing stands before the first bracket.
        {0x400100, R"({"a":[],"b":1})", 9},
        {0x400100, R"([[],{"a":1}])", 9},
    };
    for (const auto &row : rows) {
        const Context ctx = parsed(row.text, row.expected);
        EXPECT_NE(ctx->completed_obj, nullptr) << row.text;
        EXPECT_EQ(ctx->completed_type, row.expected) << row.text;
        EXPECT_EQ(code_of(ctx), row.code) << row.text;
    }
}

// What the object held at an earlier bracket does not count when later members change it.
TEST(JsonReadBrackets, TheLastBracketCounts) {
    EXPECT_EQ(properties(R"({"a":[1],"b":{"%int":2},"c":[3],"d":4})"),
              R"({"%properties":{"a":{"%int":1},"b":{"%int":2},"c":{"%int":3},"d":{"%int":4}}})");
    EXPECT_EQ(properties(R"({"a":{"%int":[1]},"b":[{"%int":2}],"c":{"%string":"x"}})"),
              R"({"%properties":{"a":{"%int":[1]},"b":{"%int":2},"c":{"%string":"x"}}})");
}

// A text of its own that is a bare array counts as so many scalars.
TEST(JsonReadBrackets, TheLastOfABareArrayStays) {
    EXPECT_EQ(read_back("[1,\"a\",true]"), R"({"%boolean":true})");
    EXPECT_EQ(code_of(parsed("[1,\"a\",true]")), 9);
    EXPECT_EQ(code_of(parsed("[1]")), 0);
    EXPECT_EQ(read_back("[null]"), "null");
    EXPECT_EQ(read_back("[]"), "none");
    EXPECT_EQ(read_back("[[[7]]]"), R"({"%long":7})");
}

TEST(JsonReadBrackets, WhatIsUnknownIsSkippedWhole) {
    for (const char *member :
         {R"({"%nope":{"a":{"%int":1},"b":[[{"%nix":2}],"\n"],"%c":{}}})",
          R"({"%nope":[[1],{"a":[]}]})", R"({"%nope":"a"})", R"({"%nope":null})",
          R"({"%nope":true})", R"({"%nope":1.5})", R"({"%nope":{}})", R"({"%nope":[]})",
          R"({"%nope":1,"a":2,"%b":[{"c":3}]})"}) {
        EXPECT_EQ(properties(R"({"%properties":{"a":1,"b":)" + std::string(member) + R"(,"c":2}})"),
                  R"({"%properties":{"a":{"%int":1},"c":{"%int":2}}})")
            << member;
        EXPECT_EQ(read_back("{\"%array\":[1," + std::string(member) + ",2]}"), R"({"%int":[1,2]})")
            << member;
        EXPECT_EQ(read_back(member), "none");
        EXPECT_EQ(code_of(parsed(member)), 8) << member;
    }
}

TEST(JsonReadBrackets, ATypedefThatIsUnknownIsNoName) {
    EXPECT_EQ(read_back(R"({"%int":1,"%typedef":{"%nope":1}})"), R"({"%int":1})");
    EXPECT_EQ(read_back(R"({"%int":1,"%typedef":{"%string":"T"}})"), R"({"%int":1})");
}

// ---- Failures by what has no memory ----

constexpr uint32_t kFirstTag = 0x2900000;

TEST(JsonReadFailed, EveryKindWithoutMemoryForItsRecordIsCodeOne) {
    const struct {
        uint32_t tag;
        const char *text;
        int64_t expected;
    } rows[] = {
        {2, R"({"%int":1})", 0},
        {2, R"({"%null":1})", 0},
        {2, R"({"%string":null})", 0},
        {2, "true ", 0},
        {4, R"({"%int":[1]})", 0},
        {55, R"({"%int":[1]})", 0},
        {41, R"({"%string":"a"})", 0},
        {41, R"({"%enumeration":"a"})", 0},
        {41, R"({"%hex_binary":"01"})", 0},
        {27, R"({"%mr_uri":"/a"})", 0},
        {19, R"({"%choice":{"a":1}})", 0},
        {52, R"({"%sequence":{"a":1}})", 0},
        {21, R"({"%properties":{"a":1}})", 0},
        {50, R"({"%properties":{"a":1}})", 0},
        {22, R"({"%properties_list":[{"a":1}]})", 0},
        {36, R"({"%properties_list":[{"a":1}]})", 0},
        {3, R"({"%nlist":["a"]})", 0},
        {1, R"({"%nlist":["a"]})", 0},
        {44, R"({"%nlist":["a"]})", 0},
        {4, R"({"%vlist":[1]})", 0},
        {55, R"({"%vlist":[1]})", 0},
        {19, R"({"%nvlist":{"a":1}})", 0},
        {52, R"({"%nvlist":{"a":1}})", 0},
        {30, R"({"%vtable":[[1]]})", 0},
        {53, R"({"%vtable":[[1]]})", 0},
        {5, R"({"%ntlist":{"a":{"%typedef_meta":{"simple_type":"int"}}}})", 0},
        {45, R"({"%ntlist":{"a":{"%typedef_meta":{"simple_type":"int"}}}})", 0},
        {31, R"({"%typedef_meta":{"simple_type":"int"}})", 0},
        {34, R"({"%typedef_meta":{"simple_type":"int"}})", 0},
        {11, R"({"constraint_str":"s"})", 0x40010E},
        {8, R"({"condition":"a = 1","constraint_str":"s"})", 0x40010E},
        {12, R"({"%constraint_list":[{"constraint_str":"s"}]})", 0},
        {46, R"({"%constraint_list":[{"constraint_str":"s"}]})", 0},
        {23, R"({"prop_name":"p","type_name":"T","type_code":5})", 0x40010B},
        {24, R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]})", 0},
        {56, R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]})", 0},
        {17, R"({"pkg_name":"p","mr_name":"M"})", 0x400109},
        {18, R"({"%mr_meta_list":[{"pkg_name":"p","mr_name":"M"}]})", 0},
        {37, R"({"%mr_meta_list":[{"pkg_name":"p","mr_name":"M"}]})", 0},
        {20, R"({"%prop_errs":{"p":{"%error":{"msg":"m"}}}})", 0},
        {38, R"({"%prop_errs":{"p":{"%error":{"msg":"m"}}}})", 0},
        {15, R"({"%event":{"name":"e","mr_uri":"/a","info":{"%properties":{"n":5}}}})", 0},
        {10, R"({"%config_ops":[]})", 0},
        {9, R"({"%config_ops":[{"op_code":1,"mr_uri":"/a","props":{"%properties":{"n":5}}}]})", 0},
        {42, R"({"%config_ops":[{"op_code":1,"mr_uri":"/a","props":{"%properties":{"n":5}}}]})", 0},
        {32, R"({"%dtree":{"name":"a"}})", 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(code_of(parsed(row.text, row.expected)), 0) << row.text;
        poolheap_fail_tag(kFirstTag + row.tag);
        const Context ctx = parsed(row.text, row.expected);
        poolheap_fail_off();
        EXPECT_EQ(code_of(ctx), 1) << row.tag << " " << row.text;
        ASSERT_NE(ctx->err, nullptr);
        EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "") << row.tag << " " << row.text;
    }
    // Without the reader's own records there is not even a context.
    poolheap_fail_tag(kFirstTag + 51);
    EXPECT_EQ(oru_do_json_parse("1 ", 2, 0), nullptr);
    ORUDoError *err = nullptr;
    EXPECT_EQ(oru_do_value_from_json("1", 1, &err), nullptr);
    EXPECT_EQ(oru_do_json_eval_expr("1 ", 2, nullptr, nullptr, nullptr, &err), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(err, nullptr);
}

// Only a table that cannot be made ends the parse; the fault behind it is not seen.
TEST(JsonReadFailed, ATableThatCannotBeMadeEndsTheParse) {
    const auto without = [](uint32_t tag, const char *text) {
        poolheap_fail_tag(kFirstTag + tag);
        const Context ctx = parsed(text);
        poolheap_fail_off();
        EXPECT_EQ(ctx->completed_obj, nullptr) << text;
        return code_of(ctx);
    };
    EXPECT_EQ(without(30, R"({"%vtable":[[1],}} x)"), 1);
    EXPECT_EQ(without(4, R"({"%vlist":[[1],}} x)"), 7);
    EXPECT_EQ(without(30, R"({"%vlist":[{"%vtable":[[1]]},{"%nope":1}]})"), 1);
}

// Errors have no memory either: what was told before stays.
TEST(JsonReadFailed, WithoutMemoryForAnErrorNothingIsTold) {
    poolheap_fail_tag(kFirstTag + 13);
    const Context none = parsed(R"({"%int":{}})");
    poolheap_fail_off();
    EXPECT_EQ(none->err, nullptr);
    EXPECT_EQ(none->completed_obj, nullptr);
}

}  // namespace
