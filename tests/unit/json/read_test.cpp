#include <oruplatform/poolheap.h>
#include <yajl/yajl_parse.h>

#include <cerrno>
#include <string>
#include <vector>

#include "oru/dtree.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::code_of;
using oru::test::Context;
using oru::test::Error;
using oru::test::parsed;
using oru::test::read_back;
using oru::test::size_of;
using oru::test::TraceCapture;
using oru::test::Value;
using oru::test::value_from;

// ---- Values ----

TEST(JsonReadValue, EveryTagReadsBack) {
    for (const char *text : {R"({"%ubyte":255})",
                             R"({"%byte":-5})",
                             R"({"%ushort":65535})",
                             R"({"%short":-2})",
                             R"({"%uint":4294967295})",
                             R"({"%int":-7})",
                             R"({"%ulong":18446744073709551615})",
                             R"({"%long":-9223372036854775808})",
                             R"({"%string":"a\"b\n"})",
                             R"({"%string":""})",
                             R"({"%boolean":true})",
                             R"({"%boolean":false})",
                             R"({"%float":0.5})",
                             R"({"%double":1e+100})",
                             R"({"%datetime":-12})",
                             R"({"%duration":13})",
                             R"({"%any_uri":"/a"})",
                             R"({"%hex_binary":"AB01"})",
                             R"({"%hex_binary":""})",
                             R"({"%ip_address":"7F000001"})",
                             R"({"%nsap_address":"49"})",
                             R"({"%enumeration":"up"})",
                             R"({"%choice":{"a":{"%int":1}}})",
                             R"({"%sequence":{"a":{"%sequence":{"b":null}}}})",
                             R"({"%mr_uri":"/m"})",
                             R"({"%coll_uri":"/c?d"})",
                             R"({"%array":[{"%int":1},null]})",
                             R"({"%array":[]})",
                             R"({"%int":[1,2]})",
                             R"({"%string":["a","b"],"%typedef":"T"})",
                             R"({"%bits":[{"%enumeration":"a"}]})",
                             R"({"%string":"x","%typedef":"Name"})",
                             "null"}) {
        EXPECT_EQ(read_back(text), text);
    }
}

TEST(JsonReadValue, SecondTagsOfATypeAndBeginnings) {
    EXPECT_EQ(read_back(R"({"%unsignedByte":1})"), R"({"%ubyte":1})");
    EXPECT_EQ(read_back(R"({"%unsignedShort":1})"), R"({"%ushort":1})");
    EXPECT_EQ(read_back(R"({"%unsignedInt":1})"), R"({"%uint":1})");
    EXPECT_EQ(read_back(R"({"%unsignedLong":1})"), R"({"%ulong":1})");
    EXPECT_EQ(read_back(R"({"%dateTime":1})"), R"({"%datetime":1})");
    EXPECT_EQ(read_back(R"({"%anyURI":"/a"})"), R"({"%any_uri":"/a"})");
    EXPECT_EQ(read_back(R"({"%hexBinary":"01"})"), R"({"%hex_binary":"01"})");
    EXPECT_EQ(read_back(R"({"%ipAddress":"01"})"), R"({"%ip_address":"01"})");
    EXPECT_EQ(read_back(R"({"%nsapAddress":"01"})"), R"({"%nsap_address":"01"})");
    EXPECT_EQ(read_back(R"({"%u":1})"), R"({"%ubyte":1})");
}

TEST(JsonReadValue, BareScalars) {
    EXPECT_EQ(read_back("5"), R"({"%long":5})");
    EXPECT_EQ(read_back("-5"), R"({"%long":-5})");
    EXPECT_EQ(read_back("2.5"), R"({"%double":2.5})");
    EXPECT_EQ(read_back(R"("x")"), R"({"%string":"x"})");
    EXPECT_EQ(read_back(R"("x\n\"")"), R"({"%string":"x\n\""})");
    EXPECT_EQ(read_back("true"), R"({"%boolean":true})");
    EXPECT_EQ(read_back("null"), "null");
    EXPECT_EQ(read_back(" /* a comment */ 7"), R"({"%long":7})");
    EXPECT_EQ(parsed("5")->completed_obj, nullptr);
    EXPECT_NE(parsed("5 ")->completed_obj, nullptr);
}

TEST(JsonReadValue, LongTextsThatEndWithADigit) {
    for (const int blanks : {507, 508, 509, 510, 600})
        EXPECT_EQ(read_back(std::string(static_cast<size_t>(blanks), ' ') + "42"),
                  R"({"%long":42})");
}

TEST(JsonReadValue, NumbersAreReadByTheirDigits) {
    EXPECT_EQ(read_back(R"({"%int":1e3})"), R"({"%int":1})");
    EXPECT_EQ(read_back(R"({"%double":1e3})"), R"({"%double":1000})");
    EXPECT_EQ(read_back(R"({"%double":[1,2.5]})"), R"({"%double":[1,2.5]})");
    EXPECT_EQ(read_back(R"({"%byte":257})"), R"({"%byte":1})");
    EXPECT_EQ(read_back(R"({"%array":[1,2.5,4294967301]})"),
              R"({"%array":[{"%int":1},{"%double":2.5},{"%int":5}]})");
    EXPECT_EQ(read_back("18446744073709551615"), R"({"%long":-1})");
}

TEST(JsonReadValue, NumbersOutOfRangeAreDropped) {
    EXPECT_EQ(read_back("18446744073709551616"), "none");
    EXPECT_EQ(read_back("-9223372036854775809"), "none");
    EXPECT_EQ(read_back("1.0e400"), "none");
    EXPECT_EQ(read_back("-1.0e400"), "none");
    EXPECT_EQ(read_back("1.0e-400"), "none");
    EXPECT_EQ(read_back("1.5e-310"), "none");  // it would lose digits
    EXPECT_EQ(read_back("0.0e-400"), R"({"%double":0})");
    EXPECT_EQ(read_back("-0.0"), R"({"%double":-0})");
    EXPECT_EQ(read_back("2.5e-308"), R"({"%double":2.5e-308})");
    EXPECT_EQ(read_back(std::string(300, '9') + ".5"), R"({"%double":1e+300})");
    const Context ctx = parsed(R"({"%nvlist":{"a":18446744073709551616,"b":1}})");
    ASSERT_NE(ctx->completed_obj, nullptr);
    EXPECT_EQ(code_of(ctx), 0);
    auto *list = static_cast<ORUDoNvlist *>(ctx->completed_obj);
    EXPECT_NE(oru_do_value_is_null(oru_do_nvlist_get_value(list, "a")), 0);
    EXPECT_EQ(oru_do_value_is_null(oru_do_nvlist_get_value(list, "b")), 0);
}

TEST(JsonReadValue, OtherPayloadsThanTheTypesOwn) {
    EXPECT_EQ(read_back(R"({"%string":null})"), "null");
    EXPECT_EQ(read_back(R"({"%string":5})"), "null");
    EXPECT_EQ(read_back(R"({"%mr_uri":true})"), "null");
    EXPECT_EQ(read_back(R"({"%int":null})"), R"({"%int":0})");
    EXPECT_EQ(read_back(R"({"%int":true})"), R"({"%int":1})");
    EXPECT_EQ(read_back(R"({"%boolean":7})"), R"({"%boolean":true})");
    const Value value = value_from(R"({"%int":"x"})");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(oru_do_value_get_type(value.get()), ORU_DO_TYPE_INT);
}

TEST(JsonReadValue, HexadecimalOfAnyLength) {
    for (const size_t bytes : {511u, 512u, 513u, 2000u}) {
        std::string text = R"({"%hex_binary":")";
        for (size_t i = 0; i < bytes; ++i)
            text += "A5";
        text += "\"}";
        EXPECT_EQ(read_back(text), text);
    }
    EXPECT_EQ(read_back(R"({"%hex_binary":"zz1"})"), R"({"%hex_binary":"00"})");
    EXPECT_EQ(read_back(R"({"%hex_binary":"1"})"), R"({"%hex_binary":""})");
}

TEST(JsonReadValue, ArraysWithoutBrackets) {
    EXPECT_EQ(read_back(R"({"%array":5})"), R"({"%int":[5]})");
    EXPECT_EQ(read_back(R"({"%int":[]})"), R"({"%array":[]})");
    EXPECT_EQ(read_back(R"({"%choice":[{"a":{"%int":1}},{"b":null}]})"),
              R"({"%array":[{"%choice":{"a":{"%int":1}}},{"%choice":{"b":null}}]})");
}

TEST(JsonReadValue, ATypedefOfAnArrayGoesToTheElementsToo) {
    const Value value = value_from(R"({"%int":[1,2],"%typedef":"T\u0041"})");
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(oru_do_value_get_typedef_name(value.get()), "TA");
    int32_t rc = 0;
    ORUDoVlist *list = oru_do_value_get_array(value.get(), &rc);
    EXPECT_STREQ(oru_do_value_get_typedef_name(oru_do_vlist_get_value(list, 1)), "TA");
}

TEST(JsonReadValue, EscapedTextsOutliveTheNextOne) {
    EXPECT_EQ(read_back(R"({"%array":["a\n","b\n","c\n"]})"), R"({"%string":["a\n","b\n","c\n"]})");
    EXPECT_EQ(read_back(R"({"%sequence":{"k\t":"a\n","l\"":"b\n"}})"),
              "{\"%sequence\":{\"k\t\":{\"%string\":\"a\\n\"},\"l\"\":{\"%string\":\"b\\n\"}}}");
    EXPECT_EQ(read_back(R"({"%\u0073tring":"\u00e9"})"), "{\"%string\":\"\xc3\xa9\"}");
}

TEST(JsonReadValue, NoTagAndNoRowGivesNothing) {
    ORUDoError *err = nullptr;
    EXPECT_EQ(value_from(R"({"a":1})", &err), nullptr);
    EXPECT_EQ(err, nullptr);
    EXPECT_EQ(value_from(R"({"%nlist":["a"]})", &err), nullptr);
    EXPECT_EQ(err, nullptr);
    EXPECT_EQ(value_from("", &err), nullptr);
    EXPECT_EQ(oru_do_value_from_json(nullptr, 0, &err), nullptr);
    EXPECT_EQ(value_from(R"({"%int":)", &err), nullptr);
    EXPECT_EQ(err, nullptr);
}

// ---- Failures ----

void expect_error(const std::string &text, int32_t code, const std::string &words,
                  const std::vector<std::string> &traces) {
    const TraceCapture capture(3);
    ORUDoError *err = nullptr;
    EXPECT_EQ(value_from(text, &err), nullptr) << text;
    const Error owned(err);
    ASSERT_NE(err, nullptr) << text;
    EXPECT_EQ(oru_do_error_get_code(err), code) << text;
    EXPECT_EQ(oru_do_error_get_msg(err), words) << text;
    EXPECT_EQ(capture.at(3), traces) << text;
}

TEST(JsonReadFailures, NoItems) {
    expect_error(R"({"%int":{}})", 4, "", {"error: tmp_obj->val null"});
    expect_error(R"({"%properties":{}})", 4, "", {"error: tmp_obj->val null"});
}

TEST(JsonReadFailures, AnUnknownTagShowsTheInputFromThereOn) {
    const TraceCapture capture(3);
    ORUDoError *err = nullptr;
    EXPECT_EQ(value_from(R"({"%nope":1})", &err), nullptr);
    const Error owned(err);
    ASSERT_NE(err, nullptr);
    EXPECT_EQ(oru_do_error_get_code(err), 8);
    EXPECT_STREQ(oru_do_error_get_msg(err), R"(%nope":1})");
    EXPECT_TRUE(capture.has(3, R"(oru_do_json: unknown type %nope":1})"));
    ASSERT_EQ(capture.at(3).size(), 2u);
    EXPECT_EQ(capture.at(3)[1].find("oru_do_json: pop 0x"), 0u);
    EXPECT_NE(capture.at(3)[1].find(R"(, type unknown %nope":1})"), std::string::npos);
}

TEST(JsonReadFailures, TheLastUnknownTagIsShownUnlessSomethingElseFailsBehindIt) {
    const Context two = parsed(R"({"%vlist":[1,{"%nope":1},{"%nix":2}]})");
    EXPECT_EQ(code_of(two), 8);
    EXPECT_STREQ(oru_do_error_get_msg(two->err), R"(%nix":2}]})");
    const Context other = parsed(R"({"%vlist":[{"%nope":1},{"%int":{}}]})");
    EXPECT_EQ(code_of(other), 4);
    EXPECT_STREQ(oru_do_error_get_msg(other->err), "");
    // The text has its length and no zero behind it.
    const Context cut(oru_do_json_parse(R"({"%nope":1}...)", 11, 0));
    EXPECT_STREQ(oru_do_error_get_msg(cut->err), R"(%nope":1})");
    // A tag that had to be unescaped shows itself.
    const TraceCapture capture(3);
    const Context escaped = parsed(R"({"%n\u006fpe":1})");
    EXPECT_EQ(code_of(escaped), 8);
    EXPECT_STREQ(oru_do_error_get_msg(escaped->err), "%nope");
    EXPECT_TRUE(capture.has(3, "oru_do_json: unknown type %nope"));
}

TEST(JsonReadFailures, DefaultAndUnknownHaveNoRow) {
    for (const char *text : {R"({"%default":""})", R"({"%unknown":""})"}) {
        ORUDoError *err = nullptr;
        EXPECT_EQ(value_from(text, &err), nullptr);
        const Error owned(err);
        ASSERT_NE(err, nullptr);
        EXPECT_EQ(oru_do_error_get_code(err), 8);
    }
}

TEST(JsonReadFailures, AnArrayInTheWrongPlace) {
    const Context ctx = parsed(R"({"%properties":{"a":[1,2],"b":3}})");
    EXPECT_EQ(code_of(ctx), 6);
    EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
    auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
    ASSERT_NE(props, nullptr);
    EXPECT_EQ(oru_do_properties_get_len(props), 1);  // 2 has no key and ends the walk
    int32_t rc = 0;
    EXPECT_EQ(oru_do_properties_get_int(props, "a", &rc), 1);
}

TEST(JsonReadFailures, NoJson) {
    ORUDoError *err = nullptr;
    EXPECT_EQ(value_from("{x", &err), nullptr);
    const Error owned(err);
    ASSERT_NE(err, nullptr);
    EXPECT_EQ(oru_do_error_get_code(err), 7);
    EXPECT_NE(std::string(oru_do_error_get_msg(err)).find("lexical error: "), std::string::npos);
    EXPECT_NE(std::string(oru_do_error_get_msg(err)).find("^"), std::string::npos);
}

TEST(JsonReadFailures, InvalidUtf8IsNoJson) {
    EXPECT_EQ(code_of(parsed("\"\xff\"")), 7);
}

TEST(JsonReadFailures, ASecondObjectReplacesTheFirst) {
    const TraceCapture capture(3);
    const Context ctx = parsed(R"(["a","b"])", 0x800103);
    EXPECT_EQ(code_of(ctx), 9);
    EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
    EXPECT_EQ(capture.at(3),
              (std::vector<std::string>{"error:tmp_obj already has completed_obj, type=30009"}));
    ASSERT_EQ(ctx->completed_type, 0x30009);
    EXPECT_EQ(oru::test::json_of(static_cast<ORUDoValue *>(ctx->completed_obj)),
              R"({"%string":"b"})");
}

TEST(JsonReadFailures, AnArrayIsReplacedWithoutAWord) {
    const Context ctx = parsed(R"([{"%array":[1]}])");
    EXPECT_EQ(code_of(ctx), 0);
    EXPECT_EQ(ctx->completed_type, 0x810014);
}

TEST(JsonReadFailures, UnknownMembersAreLeftOut) {
    for (const char *member : {R"({"%nope":{"x":[1,{"y":"\n"}]}})", R"({"x":1})"}) {
        const Context ctx =
            parsed(std::string(R"({"%properties":{"a":)") + member + R"(,"b":{"%int":2}}})");
        auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
        ASSERT_NE(props, nullptr) << member;
        EXPECT_EQ(oru_do_properties_get_len(props), 1) << member;
        EXPECT_NE(oru_do_properties_get_value(props, "b"), nullptr) << member;
    }
}

TEST(JsonReadFailures, FailedMembersReadAsNull) {
    const Context ctx = parsed(R"({"%properties":{"a":{"%int":{}},"b":1}})");
    auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
    ASSERT_NE(props, nullptr);
    EXPECT_EQ(code_of(ctx), 4);
    EXPECT_NE(oru_do_value_is_null(oru_do_properties_get_value(props, "a")), 0);
}

TEST(JsonReadFailures, UntaggedArraysCloseTheirObject) {
    const Context ctx = parsed(R"({"a":[1,2]})", 0x400100);
    EXPECT_EQ(code_of(ctx), 9);
    auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
    ASSERT_NE(props, nullptr);
    EXPECT_EQ(oru_do_properties_get_len(props), 1);
}

TEST(JsonReadFailures, AnErrorGoesOutOnlyWithoutAnObject) {
    ORUDoError *err = nullptr;
    const Value value = value_from(R"({"%array":[{"%nope":1},2]})", &err);
    EXPECT_EQ(oru::test::json_of(value.get()), R"({"%int":[2]})");
    EXPECT_EQ(err, nullptr);
}

// ---- Hostile texts ----

std::string nested(int levels, const std::string &open, const std::string &close) {
    std::string text;
    for (int i = 0; i < levels; ++i)
        text += open;
    for (int i = 0; i < levels; ++i)
        text += close;
    return text;
}

TEST(JsonReadHostile, AThousandLevelsAndNotOneMore) {
    // The outermost bracket is a level of its own.
    EXPECT_EQ(code_of(parsed(R"({"%vlist":)" + nested(999, "[", "]") + "}")), 4);
    EXPECT_EQ(code_of(parsed(R"({"%array":[)" + nested(998, R"({"%x":)", "1}") + "]}")), 7);
    const Context deep = parsed(R"({"%vlist":[1,)" + nested(999, "[", "]") + ",2]}");
    ASSERT_NE(deep->completed_obj, nullptr);
    EXPECT_EQ(oru_do_vlist_get_len(static_cast<ORUDoVlist *>(deep->completed_obj)), 2);
}

TEST(JsonReadHostile, OneLevelTooDeepIsMemoryThatRanOut) {
    const auto levels = [](int n) { return code_of(parsed(nested(n, "[", "]"))); };
    EXPECT_EQ(levels(1000), 0);
    EXPECT_EQ(levels(1001), 1);
    EXPECT_EQ(levels(200000), 1);
    const std::string maps = R"({"%sequence":{"a":)";
    std::string text;
    for (int i = 0; i < 501; ++i)
        text += maps;
    text += "1";
    for (int i = 0; i < 501; ++i)
        text += "}}";
    EXPECT_EQ(code_of(parsed(text)), 1);
}

TEST(JsonReadHostile, DeepObjectsWithinTheBoundAreWhole) {
    std::string text;
    for (int i = 0; i < 500; ++i)
        text += R"({"%sequence":{"a":)";
    text += "null";
    for (int i = 0; i < 500; ++i)
        text += "}}";
    EXPECT_EQ(read_back(text), text);
}

uint64_t blocks_taken(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats.total_blocks;
}

constexpr uint32_t kTextTag = 0x2900027;  // "oruapi-strdup"

// Each fault shows the rest of the text; copying that for each would be quadratic.
TEST(JsonReadHostile, ManyUnknownTypesCopyTheTextOnce) {
    constexpr int kFaults = 1000;
    std::string text = R"({"%vlist":[1)";
    for (int i = 0; i < kFaults; ++i)
        text += R"(,{"%nope":1})";
    text += "]}";
    const std::string last = R"(%nope":1}]})";
    const uint64_t before = blocks_taken(kTextTag);
    {
        const Context ctx = parsed(text);
        EXPECT_EQ(code_of(ctx), 8);
        EXPECT_EQ(oru_do_error_get_msg(ctx->err), last);
    }
    EXPECT_EQ(blocks_taken(kTextTag) - before, 1u);

    const auto blocks_of_a_parse = [&text] {
        const uint64_t total = poolheap_live_blocks();
        poolheap_stats_t stats{};
        poolheap_total_stats(&stats);
        const uint64_t taken = stats.total_blocks;
        parsed(text);
        poolheap_total_stats(&stats);
        EXPECT_EQ(poolheap_live_blocks(), total);
        return stats.total_blocks - taken;
    };
    const uint64_t silent = blocks_of_a_parse();
    const TraceCapture capture(3);
    EXPECT_EQ(blocks_of_a_parse(), silent + 1);
    EXPECT_EQ(capture.at(3).size(), 2u * kFaults);
    EXPECT_EQ(capture.at(3)[2 * kFaults - 2], "oru_do_json: unknown type " + last);
}

// Every name goes to every element; only the last one of them is seen.
TEST(JsonReadHostile, ManyTypedefsOfAnArrayAreSetOnce) {
    std::string text = R"({"%int":[1,2,3])";
    for (int i = 0; i < 100; ++i)
        text += R"(,"%typedef":"T)" + std::to_string(i) + "\"";
    text += R"(,"%typedef":5})";
    const uint64_t before = blocks_taken(kTextTag);
    EXPECT_EQ(read_back(text), R"({"%int":[1,2,3],"%typedef":"T99"})");
    EXPECT_LT(blocks_taken(kTextTag) - before, 20u);
}

TEST(JsonReadHostile, StrayKeysAndClosings) {
    for (const char *text :
         {R"({"%typedef":"T"})", R"([[{"a":[[1]]}]])", R"({"a":[]})", R"({"":{"":[]}})",
          R"([{"%dtree":[{"name":"a"}]},{"name":"b"}])", R"({"%vtable":[[[1]],{"a":[2]}]})",
          R"({"%int":[[1],[2]]})",
          R"({"%dtree":{"name":"a","children":{"%dtree":[{"name":"b"}]},"c":[1]}})",
          R"([{"%dtree":{"name":"a","children":{"%dtree":[{"name":"b"}]}}},"x",[]])"}) {
        for (const int64_t expected : {0x0, 0x10000, 0x400100, 0x800103, 0x80010F, 0x400119}) {
            const Context ctx = parsed(text, expected);
            EXPECT_NE(ctx, nullptr) << text;
        }
    }
}

// ---- The table, the context ----

TEST(JsonTypes, TheFirstRowThatFits) {
    EXPECT_STREQ(oru_json_get_type_info("%u", 2)->tag, "%ubyte");
    EXPECT_STREQ(oru_json_get_type_info("%mr_meta", 8)->tag, "%mr_meta_list");
    EXPECT_STREQ(oru_json_get_type_info("%prop_meta", 10)->tag, "%prop_meta_list");
    EXPECT_STREQ(oru_json_get_type_info("%constraint", 11)->tag, "%constraint_list");
    EXPECT_STREQ(oru_json_get_type_info("%properties", 11)->tag, "%properties");
    EXPECT_STREQ(oru_json_get_type_info("_max()x", 6)->tag, "_max()");
    EXPECT_EQ(oru_json_get_type_info("%ubytes", 7), nullptr);
    EXPECT_EQ(oru_json_get_type_info(nullptr, 1), nullptr);
    EXPECT_STREQ(oru_json_get_type_info_by_type_code(0x5000D)->tag, "%datetime");
    EXPECT_EQ(oru_json_get_type_info_by_type_code(0x5000D)->value_type_code, 12);
    EXPECT_EQ(oru_json_get_type_info_by_type_code(0x10000), nullptr);
    EXPECT_STREQ(oru_json_get_type_info_by_value_type_code(109)->tag, "%bits");
    EXPECT_STREQ(oru_json_get_type_info_by_value_type_code(-1)->tag, "%null");
    EXPECT_EQ(oru_json_get_type_info_by_value_type_code(-2), nullptr);
}

TEST(JsonContext, ItsOwnerMayTakeTheObject) {
    const Context ctx = parsed(R"({"%string":"a"})");
    const Value value(static_cast<ORUDoValue *>(ctx->completed_obj));
    ctx->completed_obj = nullptr;
    EXPECT_EQ(oru::test::json_of(value.get()), R"({"%string":"a"})");
    EXPECT_EQ(ctx->expected, 0);
}

TEST(JsonContext, ANewErrorReplacesTheOld) {
    const Context ctx = parsed("1 ");
    oru_do_json_ctx_data_set_err(ctx.get(), 5, "five");
    oru_do_json_ctx_data_set_err(ctx.get(), 6, nullptr);
    EXPECT_EQ(code_of(ctx), 6);
    EXPECT_EQ(oru_do_error_get_msg(ctx->err), nullptr);
}

TEST(JsonContext, NullIsAccepted) {
    oru_do_json_ctx_data_set_err(nullptr, 1, "a");
    oru_do_json_delete_ctx_data(nullptr);
    oru_do_json_free_obj(0x10000, nullptr);
    oru_do_json_free_obj(0x400119, nullptr);
    EXPECT_NE(parsed("", 0), nullptr);
    const Context ctx(oru_do_json_parse(nullptr, 5, 0));
    EXPECT_NE(ctx, nullptr);
}

TEST(JsonContext, DeserialisersLookAtTheirArguments) {
    const auto *info = oru_json_get_type_info("%int", 4);
    const TraceCapture capture(3);
    EXPECT_EQ(info->deserialiser(nullptr, nullptr), nullptr);
    const Context ctx = parsed("");
    EXPECT_EQ(info->deserialiser(ctx.get(), nullptr), nullptr);
    EXPECT_EQ(code_of(ctx), 3);
    EXPECT_EQ(capture.at(3),
              (std::vector<std::string>{"error: ctx_data null", "error: tmp_obj null"}));
}

TEST(JsonContext, ADeserialiserOfAnotherTypeRefuses) {
    const Context ctx = parsed(R"({"%int":1})");
    ASSERT_NE(ctx->top, nullptr);
    const TraceCapture capture(3);
    EXPECT_EQ(oru_json_get_type_info("%nlist", 6)->deserialiser(ctx.get(), ctx->top), nullptr);
    EXPECT_EQ(code_of(ctx), 5);
    EXPECT_EQ(capture.at(3), (std::vector<std::string>{"error: not the expected type"}));
}

TEST(JsonContext, YajlIsCalledWithAClearedErrno) {
    const yajl_callbacks none{};
    yajl_handle handle = yajl_alloc(&none, nullptr, nullptr);
    errno = 5;
    EXPECT_EQ(oru_do_yajl_parse(handle, "[1]", 3), yajl_status_ok);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(oru_do_yajl_parse(handle, "]", 1), yajl_status_error);
    yajl_free(handle);
}

// ---- Memory ----

TEST(JsonReadMemory, EveryAllocationMayFail) {
    for (const char *text :
         {R"({"%properties":{"a":{"%int":[1,2],"%typedef":"T"},"b\n":"c\n","d":{"%mr_uri":"/x"},)"
          R"("e":{"%hex_binary":"01"},"f":{"%sequence":{"g":1.5,"h":{"%bits":["i"]}}}}})",
          R"({"%dtree":{"name":"r","mr_uri":"/u","err":{"%error":{"code":1,"msg":"e","namespace":)"
          R"("n","prop_errs":{"%prop_errs":{"p":{"%error":{"msg":"q"}}}}}},"children":)"
          R"({"%dtree":[{"name":"a"},{"name":"b"}]}}})",
          R"({"%vtable":[[1,"a\n"],[2,null]]})", R"({"%properties_list":[{"a":1}]})",
          R"({"%nlist":["a"]})", R"({"%nvlist":{"a":1}})",
          R"({"%vlist":[{"%nope":1},{"%n\u006fpe":1}]})", R"({"%nope":1})", R"("a\n")", "{x"}) {
        oru::test::sweep_oom(
            [text] {
                const Context ctx = parsed(text);
                if (ctx == nullptr)
                    return;
                EXPECT_TRUE(ctx->completed_obj != nullptr || ctx->err != nullptr ||
                            oru::test::oom_hit());
            },
            {.promised_deaths = {}, .at_least = 3});
    }
}

TEST(JsonReadMemory, AnObjectThatItsParentCannotTakeIsGivenUp) {
    constexpr uint64_t kMost = 100;
    std::vector<std::string> words;
    for (uint64_t nth = 1; nth < kMost && words.empty(); ++nth) {
        const TraceCapture capture(7);
        poolheap_fail_nth(nth, 0);
        const Context ctx = parsed(R"({"%array":[1,{"%int":2}]})");
        poolheap_fail_off();
        for (const oru::test::Trace &trace : capture.lines()) {
            if (trace.text.find("parent") != std::string::npos ||
                trace.text.find("unused") != std::string::npos)
                words.push_back(std::to_string(trace.level) + " " + trace.text);
        }
        if (words.empty())
            continue;
        EXPECT_EQ(code_of(ctx), 1);
        EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
        EXPECT_EQ(oru::test::json_of(static_cast<ORUDoValue *>(ctx->completed_obj)),
                  R"({"%int":[1]})");
    }
    ASSERT_EQ(words.size(), 2u);
    EXPECT_EQ(words[0].find("3 error: parent does not take completed obj 0x"), 0u);
    EXPECT_EQ(words[1], "7 oru_do_json: unused completed object, freeing it");
}

// Writes what a parse completed; for the types that the test below reads.
std::string completed(const Context &ctx) {
    return oru::test::written([&ctx](ORUDoStrbuf *b) {
        void *object = ctx->completed_obj;
        switch (ctx->completed_type) {
            case 0x400100:
                return oru_do_properties_to_json(static_cast<ORUDoProperties *>(object), b);
            case 0x80010F:
                return oru_do_vtable_to_json(static_cast<ORUDoVtable *>(object), b);
            case 0x400114:
                return oru_do_error_to_json(static_cast<ORUDoError *>(object), b);
            case 0x400119:
                return oru_do_dtree_to_json(static_cast<ORUDoDtree *>(object), b);
            default:
                return oru_do_value_to_json(static_cast<ORUDoValue *>(object), b);
        }
    });
}

TEST(JsonReadMemory, WhatIsLostIsTold) {
    for (
        const std::string text :
        {R"({"%properties":{"a":{"%int":1},"b":{"%string":"x"}}})",
         R"({"%vtable":[{"%int":[1]},[2]]})", R"({"%int":[1,2],"%typedef":"T"})",
         R"({"%error":{"code":1,"msg":"m","namespace":"n","cause":{"%error":{"code":2,"msg":"c"}},)"
         R"("prop_errs":{"%prop_errs":{"p":{"%error":{"code":3,"msg":"q"}}}}}})",
         R"({"%dtree":{"name":"r","mr_uri":"/u","children":{"%dtree":[{"name":"a"}]}}})"}) {
        const std::string whole = completed(parsed(text));
        uint64_t nth = 1;
        for (bool met = true; met; ++nth) {
            poolheap_fail_nth(nth, 0);
            const Context ctx = parsed(text);
            poolheap_fail_off();
            met = poolheap_fail_hits() > 0;
            if (ctx != nullptr && ctx->err == nullptr) {
                ASSERT_NE(ctx->completed_obj, nullptr) << text << " at " << nth;
                EXPECT_EQ(completed(ctx), whole) << "at " << nth;
            }
        }
        EXPECT_GT(nth, 10u);
    }
}

TEST(JsonReadMemory, WithinTheParserItIsCodeOne) {
    oru::test::sweep_oom(
        [] {
            ORUDoError *err = nullptr;
            const Value value = value_from(std::string(600, ' ') + "42", &err);
            const Error owned(err);
            EXPECT_TRUE(value != nullptr || oru::test::oom_hit());
            if (err != nullptr) {
                EXPECT_EQ(oru_do_error_get_code(err), 1);
            }
        },
        {.promised_deaths = {}, .at_least = 5});
}

}  // namespace
