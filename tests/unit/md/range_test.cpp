// Ranges: made from texts, tokens and values, evaluated, and written as text again.
#include "oru/range.h"

#include <gtest/gtest.h>
#include <oru/iter.h>
#include <oru/logger.h>

#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/range_support.h"

namespace {

using namespace oru::test;

std::string parsed(const char *text, int32_t type = kUnknown) {
    return elements(Range(oru_do_range_new_s_t(type, text)));
}

std::string from_tokens(std::vector<const char *> tokens, int32_t type = kUnknown) {
    return elements(
        Range(oru_do_range_new_toks_t(type, tokens.data(), static_cast<int32_t>(tokens.size()))));
}

std::string added(int32_t type, const char *lower, const char *upper) {
    const Range range(oru_do_range_new_t(type));
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), lower, upper), 0);
    return elements(range);
}

Range with_op(int32_t op, ORUDoValue *bound) {
    const Value lower(bound);
    Range range(oru_do_range_new_t(oru_do_value_get_type(bound)));
    EXPECT_EQ(oru_do_range_add_value(range.get(), op, bound, nullptr), 0);
    return range;
}

bool eval(const Range &range, ORUDoValue *made) {
    const Value value(made);
    return oru_do_range_eval_value(range.get(), value.get()) != 0;
}

/* ---- Texts ---- */

TEST(RangeParse, ElementsStandBetweenBars) {
    EXPECT_EQ(parsed("1..5|7|10..*"), "7 7:1..5, 1 7:7..-, 6 7:10..-");
    EXPECT_EQ(parsed("*..9", kLong), "4 7:9..-");
}

TEST(RangeParse, ParenthesesAndBlanksAreRemoved) {
    EXPECT_EQ(parsed("( 1 .. 5 ) | (7)"), "7 7:1..5, 1 7:7..-");
    EXPECT_EQ(parsed("1 2", kInt), "1 5:12..-");
    EXPECT_EQ(parsed("a\tb"), "1 8:a\tb..-");  // only blanks
}

TEST(RangeParse, FirstTwoDotsSeparateTheBounds) {
    EXPECT_EQ(parsed("a..b..c", kString), "7 8:a..b..c");
    EXPECT_EQ(parsed("1...5", kDouble), "7 11:1..0.5");
    EXPECT_EQ(parsed("1.5..2.5"), "7 11:1.5..2.5");
}

TEST(RangeParse, EmptyLastPieceIsDroppedAndOthersAreTexts) {
    EXPECT_EQ(parsed("a|", kString), "1 8:a..-");
    EXPECT_EQ(parsed("a||b", kString), "1 8:a..-, 1 8:..-, 1 8:b..-");
    EXPECT_EQ(parsed("|a", kString), "1 8:..-, 1 8:a..-");
    EXPECT_EQ(parsed("", kString), "");
    EXPECT_EQ(parsed("|1"), "1 7:1..-");  // an empty text is inferred as a long and is none
}

TEST(RangeParse, SideWithoutTextIsReadAsText) {
    EXPECT_EQ(parsed("..5"), "4 7:5..-");
    EXPECT_EQ(parsed("5.."), "6 7:5..-");
    EXPECT_EQ(parsed(".."), "");
    EXPECT_EQ(parsed("..b", kString), "7 8:..b");
}

TEST(RangeParse, StarOnBothSidesAddsNothing) {
    EXPECT_EQ(parsed("*", kInt), "");
    EXPECT_EQ(parsed("*..*", kInt), "");
}

TEST(RangeParse, LongTextIsReadInOnePass) {
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "1|";
    const Range range(oru_do_range_new_s(text.c_str()));
    int count = 0;
    for (auto *el = oru_do_range_get_range_el(range.get()); el != nullptr;
         el = oru_do_range_get_next_range_el(el))
        ++count;
    EXPECT_EQ(count, 200000);
}

/* ---- Types ---- */

struct InferRow {
    const char *text;
    const char *element;
};

TEST(RangeInfer, FirstLowerBoundTellsTheType) {
    const InferRow rows[] = {
        {"5", "1 7:5..-"},
        {"\"5\"", "1 8:5..-"},
        {"0.0", "1 11:0..-"},
        {"1.5", "1 11:1.5..-"},
        {"-1.5", "1 11:-1.5..-"},
        {"0.00002", "1 11:2e-05..-"},
        {"0.000001", "1 8:0.000001..-"},
        {"0.00", "1 8:0.00..-"},
        {"10.0.0.1", "1 101:10.0.0.1..-"},
        {"1.2.3", ""},  // taken for a double, which it is not quite
        {"a.b", "1 8:a.b..-"},
        {"fe80::1", "1 101:fe80::1..-"},
        {"a:b:c", "1 8:a:b:c..-"},
        {"true", "1 9:true..-"},
        {"false", "1 9:false..-"},
        {"TRUE", "1 8:TRUE..-"},
        {"-5", "1 8:-5..-"},
        {"+5", "1 8:+5..-"},
        {"word", "1 8:word..-"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(parsed(row.text), row.element) << row.text;
}

TEST(RangeInfer, NullIsATypeWhoseValuesNeverMatch) {
    const Range range(oru_do_range_new_s("null"));
    ASSERT_NE(oru_do_range_get_first_value(range.get()), nullptr);
    EXPECT_EQ(oru_do_value_get_type(oru_do_range_get_first_value(range.get())), -1);
    EXPECT_FALSE(eval(range, oru_do_value_new_null()));
}

TEST(RangeInfer, TypeOfTheFirstBoundHoldsForTheOthers) {
    EXPECT_EQ(parsed("5|x|6"), "1 7:5..-, 1 7:6..-");
    EXPECT_EQ(parsed("x|5"), "1 8:x..-, 1 8:5..-");
}

TEST(RangeInfer, LowerStarMakesStrings) {
    EXPECT_EQ(parsed("*..9"), "4 8:9..-");
}

TEST(RangeInfer, NegativeLowerBoundMakesStrings) {
    EXPECT_EQ(parsed("-3..3"), "7 8:-3..3");
    EXPECT_EQ(parsed("-3..3", kInt), "7 5:-3..3");
}

TEST(RangeInfer, WithoutALowerTextTheUpperOneIsAString) {
    const Range range(oru_do_range_new_t(kUnknown));
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), nullptr, "5"), 0);
    EXPECT_EQ(elements(range), "1 8:5..-");
    const Value number(oru_do_value_new_long(5));
    EXPECT_EQ(oru_do_range_add_value(range.get(), 1, number.get(), nullptr), 101);
}

/* ---- Bounds ---- */

TEST(RangeBounds, BothMakeABetween) {
    EXPECT_EQ(added(kInt, "1", "5"), "7 5:1..5");
    EXPECT_EQ(added(kInt, "5", "1"), "7 5:5..1");
}

TEST(RangeBounds, UpperAloneIsAtMostWhenTheLowerSideIsOpen) {
    EXPECT_EQ(added(kInt, "*", "5"), "4 5:5..-");
    EXPECT_EQ(added(kInt, "bad", "5"), "4 5:5..-");
    EXPECT_EQ(added(kInt, nullptr, "5"), "1 5:5..-");
}

TEST(RangeBounds, LowerAloneIsAtLeastWhenTheUpperSideIsOpen) {
    EXPECT_EQ(added(kInt, "5", "*"), "6 5:5..-");
    EXPECT_EQ(added(kInt, "5", "bad"), "6 5:5..-");
    EXPECT_EQ(added(kInt, "5", nullptr), "1 5:5..-");
}

TEST(RangeBounds, NoneAddsNothing) {
    EXPECT_EQ(added(kInt, nullptr, nullptr), "");
    EXPECT_EQ(added(kInt, "bad", "worse"), "");
    EXPECT_EQ(added(kInt, "*", nullptr), "");
    EXPECT_EQ(added(kUnknown, nullptr, nullptr), "");
}

TEST(RangeBounds, UnsignedLowerBoundBelowZeroIsZero) {
    for (int32_t type : {0, 2, 4, 6})
        EXPECT_EQ(added(type, "-1", "10"), "7 " + std::to_string(type) + ":0..10");
    EXPECT_EQ(added(4, "-x", "10"), "7 4:0..10");
    EXPECT_EQ(added(1, "-1", "10"), "7 1:-1..10");
    EXPECT_EQ(added(0, "1", "-1"), "7 0:1..255");  // the upper one is cut to its width
}

TEST(RangeBounds, StringLosesTheQuotesAroundIt) {
    EXPECT_EQ(added(kString, "\"a\"", "\"b\""), "7 8:a..b");
    EXPECT_EQ(added(kString, "\"a", "a\""), "7 8:\"a..a\"");
    EXPECT_EQ(added(kString, "\"", nullptr), "1 8:\"..-");
    EXPECT_EQ(added(kString, "\"\"", nullptr), "1 8:..-");
    EXPECT_EQ(added(103, "\"a\"", nullptr), "1 103:\"a\"..-");
}

TEST(RangeBounds, BracesAreJson) {
    EXPECT_EQ(added(kInt, "{\"%int\":5}", "{\"%int\":9}"), "7 5:5..9");
    EXPECT_EQ(added(kInt, "{\"%int\":5", "9"), "4 5:9..-");  // broken: the side is open
    const Range range(oru_do_range_new_t(kInt));
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), "{\"%string\":\"5\"}", nullptr), 101);
    EXPECT_EQ(elements(range), "");
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), "1", "{\"%string\":\"5\"}"), 101);
    EXPECT_EQ(elements(range), "");
}

TEST(RangeBounds, TypeThatHasNoTextsHasNoBounds) {
    EXPECT_EQ(added(105, "1", "5"), "");
    EXPECT_EQ(added(50, "1", "5"), "");
}

/* ---- Tokens ---- */

TEST(RangeTokens, DotsJoinAndBarsSeparate) {
    EXPECT_EQ(from_tokens({"1", "..", "5", "7", "|", "8"}), "7 7:1..5, 1 7:7..-, 1 7:8..-");
    EXPECT_EQ(from_tokens({"1", "..", "*"}), "6 7:1..-");
    EXPECT_EQ(from_tokens({}), "");
}

TEST(RangeTokens, DotsWithoutASecondBoundTakeTheFirstAlong) {
    EXPECT_EQ(from_tokens({"7", "1", ".."}), "1 7:7..-");
}

TEST(RangeTokens, DotsAndBarsInFirstPlaceAreBounds) {
    EXPECT_EQ(from_tokens({"..", "5"}, kString), "1 8:....-, 1 8:5..-");
    EXPECT_EQ(from_tokens({"|", "5"}, kString), "1 8:|..-, 1 8:5..-");
    EXPECT_EQ(from_tokens({"..", "5"}, kInt), "1 5:5..-");
    EXPECT_EQ(from_tokens({"1", "..", ".."}, kInt), "6 5:1..-");
}

TEST(RangeTokens, CountBelowOneIsEmpty) {
    for (int32_t count : {0, -1}) {
        const Range range(oru_do_range_new_toks_t(kInt, nullptr, count));
        ASSERT_NE(range, nullptr);
        EXPECT_EQ(elements(range), "");
    }
}

/* ---- Adding values ---- */

TEST(RangeAdd, ValuesOfAnotherTypeAreRefused) {
    const Range range(oru_do_range_new_t(kInt));
    const Value number(oru_do_value_new_int(1));
    const Value wide(oru_do_value_new_long(1));
    EXPECT_EQ(oru_do_range_add_value(range.get(), 1, wide.get(), nullptr), 101);
    EXPECT_EQ(oru_do_range_add_value(range.get(), 7, number.get(), wide.get()), 101);
    EXPECT_EQ(elements(range), "");
    EXPECT_EQ(oru_do_range_add_value(range.get(), 7, number.get(), number.get()), 0);
    EXPECT_EQ(oru_do_range_add_value(range.get(), 2, number.get(), nullptr), 0);
    EXPECT_EQ(elements(range), "7 5:1..1, 2 5:1..-");
}

TEST(RangeAdd, FirstValueFixesTheType) {
    const Range range(oru_do_range_new_t(kUnknown));
    const Value number(oru_do_value_new_int(1));
    const Value wide(oru_do_value_new_long(1));
    EXPECT_EQ(oru_do_range_add_value(range.get(), 7, number.get(), wide.get()), 101);
    EXPECT_EQ(oru_do_range_add_value(range.get(), 1, wide.get(), nullptr), 0);
    EXPECT_EQ(oru_do_range_add_value(range.get(), 1, number.get(), nullptr), 101);
    EXPECT_EQ(elements(range), "1 7:1..-");
}

TEST(RangeAdd, TypedFormsMakeTheirElements) {
    const Range numbers(oru_do_range_new_t(kLong));
    EXPECT_EQ(oru_do_range_add_long(numbers.get(), -1, 5), 0);
    EXPECT_EQ(oru_do_range_add_double(numbers.get(), 1, 5), 101);
    EXPECT_EQ(oru_do_range_add_string(numbers.get(), "1"), 101);
    EXPECT_EQ(elements(numbers), "7 7:-1..5");
    const Range reals(oru_do_range_new_t(kUnknown));
    EXPECT_EQ(oru_do_range_add_double(reals.get(), 0.5, 1.5), 0);
    EXPECT_EQ(oru_do_range_add_long(reals.get(), 1, 5), 101);
    EXPECT_EQ(elements(reals), "7 11:0.5..1.5");
    const Range texts(oru_do_range_new_t(kString));
    EXPECT_EQ(oru_do_range_add_string(texts.get(), "a b"), 0);
    EXPECT_EQ(oru_do_range_add_string(texts.get(), "\"c\""), 0);  // taken as it is
    EXPECT_EQ(elements(texts), "1 8:a b..-, 1 8:\"c\"..-");
}

TEST(RangeAdd, ElementsHoldReferencesOfTheirOwn) {
    const Range range(oru_do_range_new_t(kString));
    {
        const Value value(oru_do_value_new_string("kept"));
        EXPECT_EQ(oru_do_range_add_value(range.get(), 7, value.get(), value.get()), 0);
    }
    EXPECT_EQ(elements(range), "7 8:kept..kept");
}

/* ---- Evaluating ---- */

TEST(RangeEval, OperatorsCompareWithTheirBound) {
    struct Row {
        int32_t op;
        bool below, same, above;
    };
    const Row rows[] = {{1, false, true, false}, {2, true, false, true},  {3, true, false, false},
                        {4, true, true, false},  {5, false, false, true}, {6, false, true, true}};
    for (const auto &row : rows) {
        const Range range = with_op(row.op, oru_do_value_new_int(5));
        EXPECT_EQ(eval(range, oru_do_value_new_int(4)), row.below) << row.op;
        EXPECT_EQ(eval(range, oru_do_value_new_int(5)), row.same) << row.op;
        EXPECT_EQ(eval(range, oru_do_value_new_int(6)), row.above) << row.op;
    }
}

TEST(RangeEval, BetweenTakesBothBounds) {
    const Range range(oru_do_range_new_s_t(kInt, "2..4"));
    for (int32_t n = 0; n < 7; ++n)
        EXPECT_EQ(eval(range, oru_do_value_new_int(n)), n >= 2 && n <= 4) << n;
}

TEST(RangeEval, IntegersOfAllWidthsCompare) {
    const Range range(oru_do_range_new_s_t(kInt, "-1..5"));
    EXPECT_TRUE(eval(range, oru_do_value_new_byte(-1)));
    EXPECT_TRUE(eval(range, oru_do_value_new_unsigned_long(5)));
    EXPECT_FALSE(eval(range, oru_do_value_new_unsigned_long(1ull << 63)));
}

// At the ends of each type, in each of its ranges of signs.
TEST(RangeEval, WholeNumbersOfOneTypeHaveTheirOrder) {
    constexpr struct {
        int32_t type;
        const char *below, *bounds, *above;
    } kRows[] = {
        {0, "199", "200..255", nullptr},
        {1, "-128", "-127..-1", "0"},
        {2, "32767", "32768..65534", "65535"},
        {3, "-32768", "-2..32766", "32767"},
        {4, "2147483647", "2147483648..4294967294", "4294967295"},
        {5, "-2147483648", "-2147483647..2147483646", "2147483647"},
        {6, "9223372036854775807", "9223372036854775808..18446744073709551614",
         "18446744073709551615"},
        {7, "-9223372036854775808", "-9223372036854775807..-1", "9223372036854775807"},
    };
    for (const auto &row : kRows) {
        const Range range(oru_do_range_new_s_t(row.type, row.bounds));
        ASSERT_NE(oru_do_range_get_range_el(range.get()), nullptr) << row.type;
        auto *el = oru_do_range_get_range_el(range.get());
        ASSERT_NE(oru_do_range_el_get_upper(el), nullptr) << row.type;
        EXPECT_EQ(oru_do_range_eval_value(range.get(), oru_do_range_el_get_lower(el)), 1);
        EXPECT_EQ(oru_do_range_eval_value(range.get(), oru_do_range_el_get_upper(el)), 1);
        for (const char *text : {row.below, row.above}) {
            if (text == nullptr)
                continue;
            int32_t code = 0;
            const Value value(oru_do_value_new_from_string(text, row.type, &code));
            EXPECT_EQ(oru_do_range_eval_value(range.get(), value.get()), 0) << text;
        }
    }
}

TEST(RangeEval, ValuesThatCannotBeComparedMatchNothing) {
    for (int32_t op = 1; op <= 6; ++op) {
        const Range range = with_op(op, oru_do_value_new_int(5));
        EXPECT_FALSE(eval(range, oru_do_value_new_double(5))) << op;
        EXPECT_FALSE(eval(range, oru_do_value_new_string("5"))) << op;
        EXPECT_FALSE(eval(range, oru_do_value_new_null())) << op;
    }
    const Range between(oru_do_range_new_s_t(kInt, "1..9"));
    EXPECT_FALSE(eval(between, oru_do_value_new_double(5)));
}

TEST(RangeEval, EqualsAndDiffersCompareTextsOfOtherTypes) {
    EXPECT_TRUE(
        eval(with_op(1, oru_do_value_new_string("on")), oru_do_value_new_enumeration("on")));
    EXPECT_FALSE(
        eval(with_op(2, oru_do_value_new_string("on")), oru_do_value_new_enumeration("on")));
    EXPECT_TRUE(
        eval(with_op(2, oru_do_value_new_string("off")), oru_do_value_new_enumeration("on")));
    // the others do not
    EXPECT_FALSE(
        eval(with_op(4, oru_do_value_new_string("on")), oru_do_value_new_enumeration("on")));
    EXPECT_FALSE(
        eval(with_op(6, oru_do_value_new_string("on")), oru_do_value_new_enumeration("on")));
}

TEST(RangeEval, StringsGoByTheirLengthFirst) {
    const Range range(oru_do_range_new_s_t(kString, "1..5"));
    EXPECT_TRUE(eval(range, oru_do_value_new_string("3")));
    EXPECT_FALSE(eval(range, oru_do_value_new_string("10")));
    EXPECT_FALSE(eval(range, oru_do_value_new_long(3)));
}

TEST(RangeEval, QuotedTextComparesWithoutItsQuotes) {
    const Range range(oru_do_range_new_s_t(kString, "\"on\""));
    EXPECT_TRUE(eval(range, oru_do_value_new_string("on")));
    EXPECT_FALSE(eval(range, oru_do_value_new_string("\"on\"")));
}

TEST(RangeEval, AnyElementWillDo) {
    const Range range(oru_do_range_new_s("1..5|7|10..*"));
    for (int64_t n : {1, 5, 7, 10, 1000})
        EXPECT_EQ(oru_do_range_eval_long(range.get(), n), 1) << n;
    for (int64_t n : {0, 6, 8, 9, -1})
        EXPECT_EQ(oru_do_range_eval_long(range.get(), n), 0) << n;
}

TEST(RangeEval, EmptyRangeMatchesNothing) {
    const Range range(oru_do_range_new_t(kInt));
    EXPECT_FALSE(eval(range, oru_do_value_new_int(0)));
    EXPECT_EQ(oru_do_range_eval_max_long(range.get(), 0), 0);
}

TEST(RangeEval, BetweenWithoutAnUpperBoundIsOpenAbove) {
    const Range range = with_op(7, oru_do_value_new_int(5));
    EXPECT_TRUE(eval(range, oru_do_value_new_int(6)));
    EXPECT_FALSE(eval(range, oru_do_value_new_int(4)));
}

TEST(RangeEval, ScalarsAreWrapped) {
    const Range reals(oru_do_range_new_s("0.5..1.5"));
    EXPECT_EQ(oru_do_range_eval_double(reals.get(), 1), 1);
    EXPECT_EQ(oru_do_range_eval_double(reals.get(), 2), 0);
    EXPECT_EQ(oru_do_range_eval_long(reals.get(), 1), 0);
    const Range texts(oru_do_range_new_s("on|off"));
    EXPECT_EQ(oru_do_range_eval_string(texts.get(), "off"), 1);
    EXPECT_EQ(oru_do_range_eval_string(texts.get(), "of"), 0);
    EXPECT_EQ(oru_do_range_eval_string(texts.get(), nullptr), 0);  // a null value
}

TEST(RangeEval, MaximumIsTheLowerBoundOfTheFirstElement) {
    const Range range(oru_do_range_new_s_t(kLong, "*..5|9"));
    EXPECT_EQ(oru_do_range_eval_max_long(range.get(), 5), 1);
    EXPECT_EQ(oru_do_range_eval_max_long(range.get(), -7), 1);
    EXPECT_EQ(oru_do_range_eval_max_long(range.get(), 6), 0);
    const Range between(oru_do_range_new_s_t(kLong, "2..5"));
    EXPECT_EQ(oru_do_range_eval_max_long(between.get(), 2), 1);
    EXPECT_EQ(oru_do_range_eval_max_long(between.get(), 3), 0);
    const Range texts(oru_do_range_new_s("a"));
    EXPECT_EQ(oru_do_range_eval_max_long(texts.get(), 0), 0);
}

// The logger's level for a scope.
class LogLevel {
  public:
    explicit LogLevel(uint32_t level) { oru_logger_set_level(level); }
    LogLevel(const LogLevel &) = delete;
    LogLevel &operator=(const LogLevel &) = delete;
    ~LogLevel() { oru_logger_set_level(before_); }

  private:
    uint32_t before_ = oru_logger_get_level();
};

TEST(RangeEval, UnknownOperatorEndsTheWalkAndIsTold) {
    const LogLevel level(6);
    for (int32_t op : {0, 8, -1}) {
        const Range range(oru_do_range_new_t(kInt));
        const Value low(oru_do_value_new_int(2));
        const Value high(oru_do_value_new_int(4));
        EXPECT_EQ(oru_do_range_add_value(range.get(), op, low.get(), high.get()), 0);
        EXPECT_EQ(oru_do_range_add_value(range.get(), 1, low.get(), nullptr), 0);
        TraceCapture traces;
        EXPECT_FALSE(eval(range, oru_do_value_new_int(2)));
        EXPECT_EQ(traces.lines(),
                  (std::vector<Trace>{{6, "range constraint failed at op " + std::to_string(op) +
                                              " -  val1=2 val2=4 input=2\n"}}));
    }
}

TEST(RangeEval, PartsOfTheMessageAreThereWhenTheirValuesAre) {
    const LogLevel level(7);
    const Range range = with_op(0, oru_do_value_new_string("x"));
    TraceCapture traces;
    EXPECT_FALSE(eval(range, oru_do_value_new_string("y")));
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{6, "range constraint failed at op 0 -  val1=x input=y\n"}}));
}

TEST(RangeEval, UnknownOperatorIsSilentBelowItsLevel) {
    const Range range = with_op(0, oru_do_value_new_int(1));
    const LogLevel told(6);
    {
        TraceCapture traces(5);
        EXPECT_FALSE(eval(range, oru_do_value_new_int(1)));
        EXPECT_EQ(traces.lines(), std::vector<Trace>{});
    }
    const LogLevel silent(5);
    TraceCapture traces;
    EXPECT_FALSE(eval(range, oru_do_value_new_int(1)));
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
}

TEST(RangeEval, ElementBeforeAnUnknownOperatorStillMatches) {
    const Range range(oru_do_range_new_s_t(kInt, "1"));
    const Value value(oru_do_value_new_int(2));
    EXPECT_EQ(oru_do_range_add_value(range.get(), 0, value.get(), nullptr), 0);
    EXPECT_TRUE(eval(range, oru_do_value_new_int(1)));
}

/* ---- Reading ---- */

TEST(RangeRead, SingleValueIsOneElementWithoutAnUpperBound) {
    struct Row {
        const char *text;
        int32_t single;
    };
    const Row rows[] = {{"5", 1}, {"*..5", 1}, {"5..*", 1}, {"1..5", 0}, {"1|5", 0}, {"", 0}};
    for (const auto &row : rows) {
        const Range range(oru_do_range_new_s_t(kInt, row.text));
        EXPECT_EQ(oru_do_range_is_single_value(range.get()), row.single) << row.text;
        EXPECT_EQ(oru_do_range_has_strict_max_value(range.get()), row.single) << row.text;
    }
}

TEST(RangeRead, FirstValueIsTheFirstLowerBound) {
    EXPECT_EQ(text_of(oru_do_range_get_first_value(Range(oru_do_range_new_s("3..5|1")).get())),
              "3");
    EXPECT_EQ(oru_do_range_get_first_value(Range(oru_do_range_new_t(kInt)).get()), nullptr);
}

TEST(RangeRead, TextIsBuiltFromTheElements) {
    struct Row {
        const char *text, *printed;
    };
    const Row rows[] = {
        {"1..5", "1..5"},          {"7", "7"},
        {"*..9", "*..9"},          {"10..*", "10..*"},
        {"1..5|7|9", "1..5|7|9"},  {"7|1..5", "71..5"},
        {"1..2|3..4", "1..23..4"}, {"1|x|2", "1|2"},
    };
    for (const auto &row : rows) {
        const Range range(oru_do_range_new_s_t(kInt, row.text));
        EXPECT_STREQ(oru_do_range_get_range_str(range.get()), row.printed) << row.text;
    }
}

TEST(RangeRead, TextOfEveryOperator) {
    const char *const texts[] = {"5|", "5|5", "5|", "5|*:5", "5|*..5", "5|5:*", "5|5..*", "5|"};
    for (int32_t op = 0; op < 8; ++op) {
        const Range range(oru_do_range_new_s_t(kInt, "5"));
        const Value value(oru_do_value_new_int(5));
        EXPECT_EQ(oru_do_range_add_value(range.get(), op, value.get(), nullptr), 0);
        EXPECT_STREQ(oru_do_range_get_range_str(range.get()), texts[op]) << op;
    }
    EXPECT_STREQ(oru_do_range_get_range_str(with_op(2, oru_do_value_new_int(1)).get()), "");
    EXPECT_STREQ(oru_do_range_get_range_str(with_op(3, oru_do_value_new_int(1)).get()), "*:1");
}

TEST(RangeRead, EmptyTextOfTheFirstElementNeedsNoBar) {
    const Range range(oru_do_range_new_t(kString));
    EXPECT_EQ(oru_do_range_add_string(range.get(), ""), 0);
    EXPECT_EQ(oru_do_range_add_string(range.get(), "a"), 0);
    EXPECT_STREQ(oru_do_range_get_range_str(range.get()), "a");
}

TEST(RangeRead, TextIsKeptUntilTheNextAddition) {
    const Range range(oru_do_range_new_s_t(kInt, "1"));
    const char *text = oru_do_range_get_range_str(range.get());
    EXPECT_EQ(oru_do_range_get_range_str(range.get()), text);
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), "2", nullptr), 0);
    EXPECT_STREQ(oru_do_range_get_range_str(range.get()), "1|2");
}

TEST(RangeRead, TextWithoutElementsStays) {
    EXPECT_STREQ(
        oru_do_range_get_range_str(Range(oru_do_range_new_s_t(kInt, "( bad | worse )")).get()),
        "bad|worse");
    EXPECT_STREQ(oru_do_range_get_range_str(Range(oru_do_range_new_s("")).get()), "");
    EXPECT_STREQ(oru_do_range_get_range_str(Range(oru_do_range_new_t(kInt)).get()), "");
}

/* ---- Records ---- */

struct ElementRecord {
    ORUDoValue *lower;
    ORUDoValue *upper;
    oru_range_el *next;
    int32_t op;
};

struct RangeRecord {
    char *range_str;
    oru_range_el *first_el;
    uint32_t ref;
    int32_t typecode;
};

TEST(RangeRecords, HaveTheirFieldsInOrder) {
    const Range range(oru_do_range_new_s_t(kInt, "( 1 .. 5 | 7 )"));
    const auto &record = *reinterpret_cast<RangeRecord *>(range.get());
    EXPECT_EQ(record.range_str, nullptr);  // the first element took it away
    EXPECT_EQ(record.ref, 1u);
    EXPECT_EQ(record.typecode, kInt);
    ASSERT_EQ(record.first_el, oru_do_range_get_range_el(range.get()));
    const auto &first = *reinterpret_cast<ElementRecord *>(record.first_el);
    EXPECT_EQ(text_of(first.lower), "1");
    EXPECT_EQ(text_of(first.upper), "5");
    EXPECT_EQ(first.op, 7);
    ASSERT_NE(first.next, nullptr);
    const auto &second = *reinterpret_cast<ElementRecord *>(first.next);
    EXPECT_EQ(text_of(second.lower), "7");
    EXPECT_EQ(second.upper, nullptr);
    EXPECT_EQ(second.op, 1);
    EXPECT_EQ(second.next, nullptr);
    EXPECT_EQ(oru_do_range_get_range_str(range.get()), record.range_str);
}

TEST(RangeRecords, TypeIsUnknownUntilAnElementIsAdded) {
    const Range range(oru_do_range_new_t(kUnknown));
    const auto &record = *reinterpret_cast<RangeRecord *>(range.get());
    EXPECT_EQ(record.typecode, -3);
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), nullptr, nullptr), 0);
    EXPECT_EQ(record.typecode, -3);
    EXPECT_EQ(oru_do_range_add_lower_upper(range.get(), "0.5", nullptr), 0);
    EXPECT_EQ(record.typecode, kDouble);
}

/* ---- Life, null and memory ---- */

TEST(RangeLife, LastReleaseTakesTheElementsAlong) {
    ORUDoRange *range = oru_do_range_new_s("1..5|7");
    EXPECT_EQ(oru_do_range_ref(range), range);
    oru_do_range_deref(range);
    EXPECT_EQ(oru_do_range_eval_long(range, 7), 1);
    oru_do_range_deref(range);
}

TEST(RangeLife, NullIsAnswered) {
    EXPECT_EQ(oru_do_range_ref(nullptr), nullptr);
    oru_do_range_deref(nullptr);
    EXPECT_EQ(oru_do_range_get_range_el(nullptr), nullptr);
    EXPECT_EQ(oru_do_range_get_next_range_el(nullptr), nullptr);
    EXPECT_EQ(oru_do_range_el_get_op(nullptr), 0);
    EXPECT_EQ(oru_do_range_el_get_lower(nullptr), nullptr);
    EXPECT_EQ(oru_do_range_el_get_upper(nullptr), nullptr);
}

TEST(RangeLife, NullIsRefusedByName) {
    const Value value(oru_do_value_new_int(1));
    const Range range(oru_do_range_new_t(kInt));
    EXPECT_ASSERTION(oru_do_range_new_s(nullptr), "str");
    EXPECT_ASSERTION(oru_do_range_new_s_t(kInt, nullptr), "str");
    EXPECT_ASSERTION(oru_do_range_new_toks_t(kInt, nullptr, 1), "tokens");
    EXPECT_ASSERTION(oru_do_range_add_lower_upper(nullptr, "1", "2"), "range");
    EXPECT_ASSERTION(oru_do_range_add_value(nullptr, 1, value.get(), nullptr), "range");
    EXPECT_ASSERTION(oru_do_range_add_value(range.get(), 1, nullptr, value.get()), "val1");
    EXPECT_ASSERTION(oru_do_range_add_long(nullptr, 1, 2), "range");
    EXPECT_ASSERTION(oru_do_range_add_double(nullptr, 1, 2), "range");
    EXPECT_ASSERTION(oru_do_range_add_string(nullptr, "a"), "range");
    EXPECT_ASSERTION(oru_do_range_eval_value(nullptr, value.get()), "range");
    EXPECT_ASSERTION(oru_do_range_eval_value(range.get(), nullptr), "value");
    EXPECT_ASSERTION(oru_do_range_eval_long(nullptr, 1), "range");
    EXPECT_ASSERTION(oru_do_range_eval_double(nullptr, 1), "range");
    EXPECT_ASSERTION(oru_do_range_eval_string(nullptr, "a"), "range");
    EXPECT_ASSERTION(oru_do_range_eval_max_long(nullptr, 1), "range");
    EXPECT_ASSERTION(oru_do_range_is_single_value(nullptr), "range");
    EXPECT_ASSERTION(oru_do_range_has_strict_max_value(nullptr), "range");
    EXPECT_ASSERTION(oru_do_range_get_first_value(nullptr), "range");
    EXPECT_ASSERTION(oru_do_range_get_range_str(nullptr), "range");
}

TEST(RangeMemory, ReadingATextLeavesOutWhatCannotBeHad) {
    sweep_oom([] {
        const Range range(oru_do_range_new_s("\"a\"|b..c|a|{\"%string\":\"d\"}"));
        if (range == nullptr)
            return;
        int count = 0;
        for (auto *el = oru_do_range_get_range_el(range.get()); el != nullptr;
             el = oru_do_range_get_next_range_el(el)) {
            ++count;
            int32_t status = 0;
            EXPECT_NE(oru_do_value_get_string(oru_do_range_el_get_lower(el), &status), nullptr);
        }
        EXPECT_TRUE(oom_hit() ? count <= 4 : count == 4) << count;
        oru_do_range_get_range_str(range.get());
    });
}

TEST(RangeMemory, AddingAValueAnswersWithItsCode) {
    sweep_oom([] {
        const Value value(oru_do_value_new_int(1));
        const Range range(oru_do_range_new_t(kInt));
        if (value == nullptr || range == nullptr)
            return;
        const int32_t code = oru_do_range_add_value(range.get(), 1, value.get(), value.get());
        EXPECT_EQ(code, oom_hit() ? 10002 : 0);
        EXPECT_EQ(oru_do_range_get_first_value(range.get()), code == 0 ? value.get() : nullptr);
    });
}

TEST(RangeMemory, TypedAdditionsAndScalarsAnswer) {
    sweep_oom([] {
        const Range range(oru_do_range_new_t(kLong));
        const Range texts(oru_do_range_new_t(kString));
        if (range == nullptr || texts == nullptr)
            return;
        int32_t code = oru_do_range_add_long(range.get(), 1, 5);
        EXPECT_EQ(code, oom_hit() ? 10002 : 0);
        int32_t match = oru_do_range_eval_long(range.get(), 3);
        EXPECT_TRUE(match == 1 || oom_hit());
        match = oru_do_range_eval_max_long(range.get(), 1);
        EXPECT_TRUE(match == 1 || oom_hit());
        code = oru_do_range_add_string(texts.get(), "a");
        EXPECT_TRUE(code == 0 || (oom_hit() && code == 10002)) << code;
        match = oru_do_range_eval_string(texts.get(), "a");
        EXPECT_TRUE(match == 1 || oom_hit());
        auto *first = oru_do_range_get_first_value(texts.get());
        EXPECT_EQ(first != nullptr, code == 0);
        int32_t status = 0;
        EXPECT_TRUE(first == nullptr || oru_do_value_get_string(first, &status) != nullptr);
        EXPECT_EQ(oru_do_range_eval_string(texts.get(), ""), 0);
    });
}

TEST(RangeMemory, TextIsNullUntilItCanBeHad) {
    sweep_oom(
        [] {
            const Range range(oru_do_range_new_s_t(kInt, "1..5"));
            if (range == nullptr || oom_hit())
                return;
            const char *text = oru_do_range_get_range_str(range.get());
            if (oom_hit()) {
                EXPECT_EQ(text, nullptr);
            } else {
                EXPECT_STREQ(text, "1..5");
            }
        },
        {.at_least = 5});
}

TEST(RangeMemory, UnknownOperatorIsNotToldWithoutMemory) {
    const LogLevel level(6);
    const TraceCapture traces;
    sweep_oom([] {
        const Range range(oru_do_range_new_t(kInt));
        const Value value(oru_do_value_new_int(1));
        if (range == nullptr || value == nullptr ||
            oru_do_range_add_value(range.get(), 0, value.get(), nullptr) != 0)
            return;
        EXPECT_EQ(oru_do_range_eval_value(range.get(), value.get()), 0);
    });
}

}  // namespace
