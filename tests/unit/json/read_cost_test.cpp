// What texts from outside may cost: no more than in proportion to their size.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/value.h"
#include "oruplatform/poolheap.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::code_of;
using oru::test::Context;
using oru::test::json_of;
using oru::test::parsed;
using oru::test::TraceCapture;

std::string repeated(const std::string &piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

// The elements that a parse makes in all pools and on the heap.
uint64_t blocks_of_a_parse(const std::string &text, int64_t expected = 0) {
    const auto taken = [] {
        poolheap_stats_t stats{};
        poolheap_total_stats(&stats);
        return stats.total_blocks;
    };
    const uint64_t before = taken();
    parsed(text, expected);
    return taken() - before;
}

std::string value_in(const Context &ctx) {
    return ctx->completed_obj != nullptr ? json_of(static_cast<ORUDoValue *>(ctx->completed_obj))
                                         : "none";
}

constexpr int kBrackets = 900;
constexpr int kValues = 2000;

std::string many_values() {
    return R"({"%int":[1)" + repeated(",1", kValues - 1) + "]}";
}

TEST(JsonReadCost, AnObjectInNestedArraysIsMadeTwiceAtMost) {
    const std::string once = many_values();
    const std::string text = std::string(kBrackets, '[') + once + std::string(kBrackets, ']');
    const uint64_t plain = blocks_of_a_parse(once);
    EXPECT_LT(blocks_of_a_parse(text), 2 * plain + 4 * kBrackets);
    const TraceCapture capture(3);
    const Context ctx = parsed(text);
    EXPECT_EQ(code_of(ctx), 9);
    EXPECT_EQ(value_in(ctx), once);
    EXPECT_EQ(capture.at(3),
              (std::vector<std::string>(kBrackets,
                                        "error:tmp_obj already has completed_obj, type=50006")));
}

TEST(JsonReadCost, NorIsOneThatGrowsBetweenTheBrackets) {
    const std::string once = many_values();
    const std::string text = std::string(kBrackets, '[') + once + repeated(",2]", kBrackets);
    EXPECT_LT(blocks_of_a_parse(text), 2 * blocks_of_a_parse(once) + 8 * kBrackets);
    const Context ctx = parsed(text);
    EXPECT_EQ(code_of(ctx), 9);
    EXPECT_EQ(value_in(ctx),
              R"({"%int":[1)" + repeated(",1", kValues - 1) + repeated(",2", kBrackets) + "]}");
}

TEST(JsonReadCost, WhatComesBehindTheLastBracketIsNotSeen) {
    const Context cut = parsed(R"([[[{"%int":[1,2]},3],4],5)");
    EXPECT_EQ(code_of(cut), 9);
    EXPECT_EQ(value_in(cut), R"({"%int":[1,2,3,4]})");
    const Context empty = parsed(R"([[{"%int":[]}],5)");
    EXPECT_EQ(code_of(empty), 9);
    EXPECT_EQ(value_in(empty), R"({"%array":[]})");
    const Context broken = parsed(R"([[{"%array":[1]},2],3 nonsense])");
    EXPECT_EQ(code_of(broken), 7);
    EXPECT_EQ(value_in(broken), R"({"%int":[1,2]})");
}

TEST(JsonReadCost, AFailureBehindTheLastBracketIsTheOneThatIsSeen) {
    const Context ctx = parsed(R"([[[{"%int":[1]}],{"%nope":1}],{"%nope":2}])");
    EXPECT_EQ(code_of(ctx), 9);
    EXPECT_EQ(value_in(ctx), R"({"%int":[1]})");
    const Context last = parsed(R"([[{"%int":[1]}],{"%nope":2})");
    EXPECT_EQ(code_of(last), 8);
    EXPECT_STREQ(oru_do_error_get_msg(last->err), R"(%nope":2})");
}

// The first object takes the children along when it is freed.
TEST(JsonReadCost, ATreeThatIsReplacedLosesItsChildren) {
    const auto children = [](const char *text) {
        const Context ctx = parsed(text);
        EXPECT_EQ(ctx->completed_type, 0x400119);
        return ctx->completed_obj == nullptr
                   ? -1
                   : oru_do_dtree_get_child_count(static_cast<ORUDoDtree *>(ctx->completed_obj));
    };
    EXPECT_EQ(children(R"({"%dtree":{"name":"a","children":{"%dtree":[{"name":"b"}]}}})"), 1);
    EXPECT_EQ(children(R"([{"%dtree":{"name":"a","children":{"%dtree":[{"name":"b"}]}}}])"), 0);
    EXPECT_EQ(children(R"([[{"%dtree":{"name":"a","children":{"%dtree":[{"name":"b"}]}}}]])"), 0);
    // Children that come when the node was complete go to the next one, and to no other.
    EXPECT_EQ(children(R"([[{"%dtree":{"name":"a","children":1}},{"%dtree":[{"name":"b"}]}]])"), 0);
    EXPECT_EQ(children(R"([{"%dtree":{"name":"a","children":1}},{"%dtree":[{"name":"b"}]}])"), 1);
    EXPECT_EQ(children(R"([[{"%dtree":{"name":"a","children":1}}],{"%dtree":[{"name":"b"}]}])"), 1);
}

TEST(JsonReadCost, AMemberThatIsFilledLateMakesItsObject) {
    const Context ctx = parsed(R"([[{"%error":{"code":2,"msg":{"%properties":{}}}},"x"]])");
    EXPECT_EQ(code_of(ctx), 9);
    ASSERT_EQ(ctx->completed_type, 0x400114);
    EXPECT_STREQ(oru_do_error_get_msg(static_cast<ORUDoError *>(ctx->completed_obj)), "x");
    const Context never = parsed(R"([[{"%error":{"code":2}},"x"]])");
    EXPECT_EQ(never->completed_obj, nullptr);
    EXPECT_EQ(code_of(never), 0);
}

ORUDoValue *nothing(void *, const char *, ORUDoValue *) {
    return nullptr;
}

void count(void *user, const char *, ORUDoValue *) {
    ++*static_cast<int *>(user);
}

TEST(JsonReadCost, ExpressionsThatCallAreEvaluatedEachTime) {
    const std::string text = R"j([[{"_incr()":["$x",1]}]])j";
    int calls = 0;
const Context ctx(oru_do_json_parse_allow_expr(text.data(), oru::test::size_of(text), 0, nothing,
                                               count, &calls));
EXPECT_EQ(calls, 3);
EXPECT_EQ(code_of(ctx), 9);
}

// ---- Errors of many properties ----

std::string prop_errs(int names) {
    std::string text = R"({"%prop_errs":{"n0":{"%error":{"msg":"m0"}})";
    for (int i = 1; i < names; ++i) {
        const std::string number = std::to_string(i);
        text.append(",\"n").append(number).append(R"(":{"%error":{"msg":"m)");
        text.append(number).append("\"}}");
    }
    return text + R"(,"n0":{"%error":{"msg":"again"}},"n)" + std::to_string(names - 1) +
           R"(":{"%error":{"msg":"again"}}}})";
}

TEST(JsonReadCost, TheFirstOfEachNameCountsHoweverManyThereAre) {
    for (const int names : {1, 2, 14, 15, 16, 17, 40, 3000}) {
        const std::string text = prop_errs(names);
        ORUDoPropErrs *errs =
            oru_do_prop_errs_from_json(text.data(), oru::test::size_of(text), nullptr);
        ASSERT_NE(errs, nullptr);
        ORUDoIter iter;
        int i = 0;
        for (oru_do_prop_errs_iter(errs, &iter); oru_do_prop_errs_has_next(&iter) != 0; ++i) {
            ORUDoPropErr *entry = oru_do_prop_errs_get_next(&iter);
            const std::string number = std::to_string(i);
            EXPECT_EQ(oru_do_name_get_strname(oru_do_prop_err_get_name(entry)), "n" + number);
            EXPECT_EQ(oru_do_error_get_msg(oru_do_prop_err_get_err(entry)), "m" + number);
        }
        EXPECT_EQ(i, names);
        oru_do_prop_errs_deref(errs);
    }
}

// A walk along the list for each would take minutes.
TEST(JsonReadCost, TwoHundredThousandNames) {
    const std::string text = prop_errs(200000);
    ORUDoPropErrs *errs =
        oru_do_prop_errs_from_json(text.data(), oru::test::size_of(text), nullptr);
    EXPECT_NE(errs, nullptr);
    oru_do_prop_errs_deref(errs);
}

}  // namespace
