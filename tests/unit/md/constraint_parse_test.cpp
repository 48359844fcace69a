// Constraints from their texts, once and again when their type becomes known.
#include <oruplatform/poolheap.h>

#include <vector>

#include "oru/constraint.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/constraint_support.h"

namespace {

using namespace oru::test;

std::string regex_of(const Constraint &constraint) {
    const char *text = oru_do_constraint_get_regex(constraint.get());
    return text != nullptr ? text : "(none)";
}

// Labels "com.p/T.one" and "com.p/T.nine"; notes what it is asked for.
std::vector<std::string> asked;
ORUDoValue *const kOne = oru_do_value_new_int(1);
ORUDoValue *const kNine = oru_do_value_new_int(9);

ORUDoValue *resolve(const char *name) {
    asked.emplace_back(name);
    if (asked.back() == "com.p/T.one")
        return kOne;
    return asked.back() == "com.p/T.nine" ? kNine : nullptr;
}

class Labels : public testing::Test {
  protected:
    Labels() { asked.clear(); }
};

/* ---- Ranges ---- */

TEST(ConstraintParse, EveryRangeHasItsKeyword) {
    const auto all = constraint("values(a|b) size(1..3) strlen(2..*)", kString);
    EXPECT_EQ(values_of(all), "1 8:a..-, 1 8:b..-");
    EXPECT_EQ(size_of(all), "7 7:1..3");
    EXPECT_EQ(strlen_of(all), "6 7:2..-");
    const auto none = constraint("");
    EXPECT_EQ(values_of(none), "(none)");
    EXPECT_EQ(size_of(none), "(none)");
    EXPECT_EQ(strlen_of(none), "(none)");
    EXPECT_EQ(regex_of(none), "(none)");
    EXPECT_EQ(default_of(none), "(none)");
}

TEST(ConstraintParse, OrderOfKeywordsIsFree) {
    const auto c = constraint("default(4)strlen(2)values(68..9216)size(1)", kInt);
    EXPECT_EQ(values_of(c), "7 5:68..9216");
    EXPECT_EQ(size_of(c), "1 7:1..-");
    EXPECT_EQ(strlen_of(c), "1 7:2..-");
    EXPECT_EQ(default_of(c), "5:4");
}

TEST(ConstraintParse, ValuesHaveTheTypeThatIsGivenOrThatOfTheFirstBound) {
    EXPECT_EQ(values_of(constraint("values(1..5|7|*..0|9..*)", kInt)),
              "7 5:1..5, 1 5:7..-, 4 5:0..-, 6 5:9..-");
    EXPECT_EQ(values_of(constraint("values(1..5|7)")), "7 7:1..5, 1 7:7..-");
    EXPECT_EQ(values_of(constraint("values(-3..3)")), "7 8:-3..3");
    EXPECT_EQ(values_of(constraint("values(-3..3)", kInt)), "7 5:-3..3");
    EXPECT_EQ(values_of(constraint("values(-1..10)", 4)), "7 4:0..10");
    EXPECT_EQ(values_of(constraint("values(\"on\"|\"off\")", kString)), "1 8:on..-, 1 8:off..-");
}

TEST(ConstraintParse, SizeAndStrlenAreLongsWhateverTheType) {
    const auto c = constraint("size(x|5)strlen(y|6)", kString);
    EXPECT_EQ(size_of(c), "1 7:5..-");
    EXPECT_EQ(strlen_of(c), "1 7:6..-");
}

TEST(ConstraintParse, RangeEndsAtWhatIsNoWord) {
    EXPECT_EQ(values_of(constraint("values(1,2)", kInt)), "1 5:1..-");
    EXPECT_EQ(values_of(constraint("values(1|2)", kInt)), "1 5:1..-, 1 5:2..-");
    EXPECT_EQ(values_of(constraint("values(1)size(2)", kInt)), "1 5:1..-");
    EXPECT_EQ(values_of(constraint("values(1..)", kInt)), "1 5:1..-");
    EXPECT_EQ(values_of(constraint("values(..5)", kInt)), "");
    EXPECT_EQ(values_of(constraint("values(1..2..3)", kInt)), "7 5:1..2");
}

TEST(ConstraintParse, KeywordsGoOnBehindARangeThatEnded) {
    const auto c = constraint("values(1,2)default(3)", kInt);
    EXPECT_EQ(values_of(c), "1 5:1..-");
    EXPECT_EQ(default_of(c), "5:3");
}

TEST(ConstraintParse, EmptyRangeIsThere) {
    EXPECT_EQ(values_of(constraint("values()", kInt)), "");
    EXPECT_EQ(values_of(constraint("values(bad|worse)", kInt)), "");
    EXPECT_EQ(size_of(constraint("size(*)")), "");
}

TEST(ConstraintParse, LaterRangeTakesThePlaceOfAnEarlierOne) {
    EXPECT_EQ(values_of(constraint("values(1)values(2)", kInt)), "1 5:2..-");
}

TEST(ConstraintParse, KeywordIsKnownBehindItsLastDot) {
    EXPECT_EQ(values_of(constraint("x.y.values(1)", kInt)), "1 5:1..-");
    EXPECT_EQ(values_of(constraint("values.x(1)", kInt)), "(none)");
    EXPECT_EQ(values_of(constraint("VALUES(1)", kInt)), "(none)");
}

TEST(ConstraintParse, OtherTokensAreSkippedOneByOne) {
    const auto c = constraint("is_null()not_null()and(or),x|{y}(values(1),not,size(2)", kInt);
    EXPECT_EQ(values_of(c), "1 5:1..-");
    EXPECT_EQ(size_of(c), "1 7:2..-");
}

TEST(ConstraintParse, LastWordNeedsAnEnd) {
    EXPECT_EQ(values_of(constraint("values(1|2", kInt)), "1 5:1..-");
    EXPECT_EQ(values_of(constraint("values", kInt)), "(none)");
}

TEST(ConstraintParse, HundredTokensAreRead) {
    std::string text = "values(";
    for (int i = 1; i <= 99; ++i)
        text += std::to_string(i) + "|";
    const std::string all = values_of(constraint(text + ")", kInt));
    EXPECT_TRUE(all.ends_with(", 1 5:98..-, 1 5:99..-")) << all;
    EXPECT_EQ(values_of(constraint(text + "100|101)", kInt)), all);
}

TEST(ConstraintParse, OverlongWordEndsTheText) {
    const auto c = constraint("values(1|" + std::string(128, '2') + ")size(1)", kInt);
    EXPECT_EQ(values_of(c), "1 5:1..-");
    EXPECT_EQ(size_of(c), "(none)");
    const auto last = constraint("values(1|" + std::string(127, '2') + ")size(1)", kString);
    EXPECT_EQ(size_of(last), "1 7:1..-");
}

/* ---- Texts ---- */

TEST(ConstraintParse, TextLosesItsBlanksAlsoBetweenQuotes) {
    const auto c = constraint(" values( 1 .. 5 ) default( \"a b\" ) ", kString);
    EXPECT_STREQ(oru_do_constraint_get_str(c.get()), "values(1..5)default(\"ab\")");
    EXPECT_EQ(default_of(c), "8:ab");
    EXPECT_STREQ(oru_do_constraint_get_str(constraint("a\tb\n").get()), "a\tb\n");
}

TEST(ConstraintParse, CountedTextEndsWhereItIsTold) {
    const Constraint plain(oru_do_constraint_new_l(nullptr, "values(1)size(2)", 9));
    EXPECT_STREQ(oru_do_constraint_get_str(plain.get()), "values(1)");
    EXPECT_EQ(values_of(plain), "1 7:1..-");
    const Constraint typed(
        oru_do_constraint_new_l_t(nullptr, "values(1)size(2)", 9, kInt, nullptr));
    EXPECT_EQ(values_of(typed), "1 5:1..-");
    EXPECT_EQ(size_of(typed), "(none)");
    const Constraint none(oru_do_constraint_new_l(nullptr, "values(1)", 0));
    EXPECT_STREQ(oru_do_constraint_get_str(none.get()), "");
    const Constraint below(oru_do_constraint_new_l_t(nullptr, "values(1)", -1, kInt, nullptr));
    EXPECT_STREQ(oru_do_constraint_get_str(below.get()), "");
    const Constraint all(oru_do_constraint_new_l(nullptr, "values(1)", 1000));
    EXPECT_STREQ(oru_do_constraint_get_str(all.get()), "values(1)");
}

TEST(ConstraintParse, UntypedFormsInferTheirTypes) {
    const Constraint c(oru_do_constraint_new(nullptr, "values(1)default(5)"));
    EXPECT_EQ(values_of(c), "1 7:1..-");
    EXPECT_EQ(default_of(c), "8:5");
}

TEST(ConstraintParse, ConditionIsHeld) {
    auto when = condition("a.values(1)");
    ORUDoCondition *held = when.get();
    const Constraint c(oru_do_constraint_new(held, "values(1)"));
    when.reset();
    EXPECT_EQ(oru_do_constraint_get_condition(c.get()), held);
    EXPECT_STREQ(oru_do_condition_get_expr(held), "a.values(1)");
    EXPECT_EQ(oru_do_constraint_get_condition(constraint("values(1)").get()), nullptr);
}

/* ---- Patterns ---- */

TEST(ConstraintParse, PatternLosesQuotesAndParentheses) {
    EXPECT_EQ(regex_of(constraint("regex(\"^[a-z]+$\")")), "^[a-z]+$");
    EXPECT_EQ(regex_of(constraint("regex(a\"b)")), "ab");
    EXPECT_EQ(regex_of(constraint("regex(\"a b\")")), "ab");
}

TEST(ConstraintParse, PatternEndsAtASign) {
    EXPECT_EQ(regex_of(constraint("regex(\"(a)\")")), "");  // the quote alone
    EXPECT_EQ(regex_of(constraint("regex(\"a|b\")")), "a");
    EXPECT_EQ(regex_of(constraint("regex(\"a{2,3}\")")), "{2,3}");
}

TEST(ConstraintParse, WordBehindRegexIsItsPatternWhateverItIs) {
    const auto c = constraint("regex(a.size)values(1)", kInt);
    EXPECT_EQ(regex_of(c), "a.size");
    EXPECT_EQ(size_of(c), "(none)");
    EXPECT_EQ(values_of(c), "1 5:1..-");
    EXPECT_EQ(regex_of(constraint("values(1)regex()", kInt)), "(none)");
}

TEST(ConstraintParse, PatternThatDoesNotCompileIsToldAndKeptAsText) {
    TraceCapture traces;
    const auto c = constraint("regex(\"[a\")values(x)", kString);
    EXPECT_TRUE(traces.has(3, "Unable to regcomp"));
    EXPECT_EQ(traces.at(3).size(), 2u);  // and the words of the C library
    EXPECT_EQ(regex_of(c), "[a");
    EXPECT_EQ(values_of(c), "1 8:x..-");
    EXPECT_EQ(oru_do_constraint_eval(c.get(), nullptr, text("x").get(), nullptr), 0);
}

TEST(ConstraintParse, CostlyPatternIsRefused) {
    TraceCapture traces;
    const auto c = constraint("regex(a++++++++++++++++)");
    EXPECT_TRUE(traces.has(3, "Unable to regcomp"));
    EXPECT_EQ(oru_do_constraint_eval(c.get(), nullptr, text("b").get(), nullptr), 0);
}

TEST(ConstraintParse, LaterPatternTakesThePlaceOfAnEarlierOne) {
    const auto c = constraint("regex(a)regex(b)");
    EXPECT_EQ(regex_of(c), "b");
    EXPECT_EQ(oru_do_constraint_eval(c.get(), nullptr, text("b").get(), nullptr), 0);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), nullptr, text("a").get(), nullptr), 116);
}

/* ---- Defaults and flags ---- */

struct DefaultRow {
    int32_t type;
    const char *text;
    const char *value;
};

TEST(ConstraintParse, DefaultHasTheTypeOfTheConstraint) {
    const DefaultRow rows[] = {
        {kInt, "default(5)", "5:5"},
        {kInt, "default(-5)", "5:-5"},
        {kInt, "default(five)", "(none)"},
        {kInt, "default()", "(none)"},
        {kInt, "default({\"%int\":5})", "5:5"},
        {kInt, "default({\"%string\":\"a,(b)\"})", "8:a,(b)"},
        {kInt, "default({\"%int\":5)", "(none)"},
        {kString, "default(a)", "8:a"},
        {kString, "default(\"a\")", "8:a"},
        {kString, "default(\"a)", "8:a"},
        {kString, "default(a\")", "8:a\""},
        {kString, "default(\")", "8:"},
        {kString, "default(\"\")", "8:"},
        {kUnknown, "default(\"a\")", "8:\"a\""},
        {kDouble, "default(1.5)", "11:1.5"},
        {kDouble, "default(x)", "(none)"},
        {9, "default(true)", "9:true"},
        {9, "default(yes)", "(none)"},
        {kEnumeration, "default(up)", "103:up"},
        {101, "default(10.0.0.1)", "101:10.0.0.1"},
        {105, "default(a)", "(none)"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(default_of(constraint(row.text, row.type)), row.value) << row.text;
}

TEST(ConstraintParse, JsonDefaultEndsAtTheFirstBraceOutsideOfQuotes) {
    EXPECT_EQ(default_of(constraint("default({\"%string\":\"}x\"})", kString)), "8:}x");
    EXPECT_EQ(default_of(constraint("default({\"%array\":[{\"%int\":1},{\"%int\":2}]})")),
              "(none)");
}

TEST(ConstraintParse, DefaultTakesTheNextTokenWhateverItIs) {
    const auto c = constraint("default()values(1..5)", kString);
    EXPECT_EQ(default_of(c), "8:values");
    EXPECT_EQ(values_of(c), "(none)");
    EXPECT_EQ(default_of(constraint("default(not)", kString)), "8:not");
}

TEST(ConstraintParse, LaterDefaultTakesThePlaceOfAnEarlierOne) {
    EXPECT_EQ(default_of(constraint("default(1)default(2)", kInt)), "5:2");
    EXPECT_EQ(default_of(constraint("default(1)default(x)", kInt)), "(none)");
}

TEST(ConstraintParse, OrderedByPassesOverTwoTokens) {
    EXPECT_EQ(values_of(constraint("values(1)ordered_by(user)", kInt)), "1 5:1..-");
    const auto c = constraint("ordered_by(user)values(1)size(2)", kInt);
    EXPECT_EQ(values_of(c), "(none)");
    EXPECT_EQ(size_of(c), "1 7:2..-");
}

TEST(ConstraintParse, UniquePassesOverOneToken) {
    EXPECT_EQ(values_of(constraint("values(1)unique()", kInt)), "1 5:1..-");
    const auto c = constraint("unique()values(1)size(2)", kInt);
    EXPECT_EQ(values_of(c), "(none)");
    EXPECT_EQ(size_of(c), "1 7:2..-");
}

/* ---- Labels ---- */

TEST_F(Labels, QualifiedOnesStandForTheirNumbers) {
    EXPECT_EQ(values_of(constraint("values(com.p/T.one|com.p/T.nine)", kInt, resolve)),
              "1 5:1..-, 1 5:9..-");
    EXPECT_EQ(asked, (std::vector<std::string>{"com.p/T.one", "com.p/T.nine"}));
}

TEST_F(Labels, BothBoundsAreLookedUp) {
    EXPECT_EQ(values_of(constraint("values(com.p/T.one..com.p/T.nine)", kInt, resolve)),
              "7 5:1..9");
    EXPECT_EQ(values_of(constraint("values(com.p/T.one..*)", kInt, resolve)), "6 5:1..-");
    EXPECT_EQ(values_of(constraint("values(*..com.p/T.nine)", kInt, resolve)), "4 5:9..-");
}

TEST_F(Labels, OtherWordsAreTakenAsTheyStand) {
    EXPECT_EQ(values_of(constraint("values(one|com.p/T.ten|2)", kString, resolve)),
              "1 8:one..-, 1 8:com.p/T.ten..-, 1 8:2..-");
    EXPECT_EQ(asked, (std::vector<std::string>{"com.p/T.ten"}));
}

TEST_F(Labels, WithoutAResolverTheyAreTexts) {
    EXPECT_EQ(values_of(constraint("values(com.p/T.one)", kString)), "1 8:com.p/T.one..-");
    EXPECT_EQ(values_of(constraint("values(com.p/T.one)", kInt)), "");
}

TEST_F(Labels, AreLookedUpInEveryRangeAndNotInDefaults) {
    const auto c =
        constraint("size(com.p/T.one)strlen(com.p/T.nine)default(com.p/T.one)", kString, resolve);
    EXPECT_EQ(size_of(c), "1 7:1..-");
    EXPECT_EQ(strlen_of(c), "1 7:9..-");
    EXPECT_EQ(default_of(c), "8:com.p/T.one");
}

// One failed buffer ends the reading; what was read until then stays.
TEST_F(Labels, WithoutABufferTheRestIsNotRead) {
    int told = 0;
    for (uint64_t nth = 1;; ++nth) {
        TraceCapture traces;
        poolheap_fail_nth(nth, 0);
        const auto c = constraint("default(a)values(com.p/T.one)size(1)", kString, resolve);
        const bool hit = poolheap_fail_hits() > 0;
        poolheap_fail_off();
        if (!hit)
            break;
        if (!traces.has(3, "Failed to allocate strbuf"))
            continue;
        ++told;
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(default_of(c), "8:a");
        EXPECT_NE(values_of(c), "(none)");
        EXPECT_TRUE(size_of(c) == "(none)" || size_of(c).empty()) << size_of(c);
    }
    EXPECT_GE(told, 4);  // two buffers for each of the two ranges
}

/* ---- Types that become known ---- */

Name type_name() {
    return Name(oru_do_name_new("Speed"));
}

Typedef simple(int32_t type) {
    return Typedef(oru_do_typedef_meta_new_simpletype(type_name().get(), type, nullptr));
}

TEST(ConstraintTypedef, SimpleTypeGivesItsCode) {
    const auto c = constraint("values(-3..3)size(1)strlen(2)regex(a)default(2)");
    EXPECT_EQ(values_of(c), "7 8:-3..3");
    EXPECT_EQ(default_of(c), "8:2");
    oru_do_constraint_set_typedef_meta(c.get(), simple(kInt).get(), nullptr);
    EXPECT_EQ(values_of(c), "7 5:-3..3");
    EXPECT_EQ(default_of(c), "5:2 Speed");
    EXPECT_EQ(size_of(c), "1 7:1..-");
    EXPECT_EQ(strlen_of(c), "1 7:2..-");
    EXPECT_EQ(regex_of(c), "a");
    EXPECT_STREQ(oru_do_constraint_get_str(c.get()),
                 "values(-3..3)size(1)strlen(2)regex(a)default(2)");
}

TEST(ConstraintTypedef, PartsThatDoNotFitTheTypeAreGone) {
    const auto c = constraint("values(a..b)default(x)");
    oru_do_constraint_set_typedef_meta(c.get(), simple(kInt).get(), nullptr);
    EXPECT_EQ(values_of(c), "");
    EXPECT_EQ(default_of(c), "(none)");
}

TEST(ConstraintTypedef, EnumerationIsOneOfTexts) {
    const Nvlist labels(oru_do_nvlist_new());
    const Typedef meta(oru_do_typedef_meta_new_enum(type_name().get(), labels.get()));
    const auto c = constraint("values(up|down)default(up)");
    oru_do_constraint_set_typedef_meta(c.get(), meta.get(), nullptr);
    EXPECT_EQ(values_of(c), "1 103:up..-, 1 103:down..-");
    EXPECT_EQ(default_of(c), "103:up Speed");
}

TEST(ConstraintTypedef, ComplexTypesHaveNoTexts) {
    const std::unique_ptr<ORUDoNtlist, Deref<oru_do_ntlist_deref>> members(oru_do_ntlist_new());
    const Typedef sequence(oru_do_typedef_meta_new_sequence(type_name().get(), members.get()));
    const Typedef choice(oru_do_typedef_meta_new_choice(type_name().get(), members.get()));
    for (const Typedef *meta : {&sequence, &choice}) {
        const auto c = constraint("values(1)size(1)default(1)");
        oru_do_constraint_set_typedef_meta(c.get(), meta->get(), nullptr);
        EXPECT_EQ(values_of(c), "");
        EXPECT_EQ(size_of(c), "1 7:1..-");
        EXPECT_EQ(default_of(c), "(none)");
    }
    // JSON brings its type along
    const auto pair = constraint("default({\"%sequence\":{\"a\":5}})");
    oru_do_constraint_set_typedef_meta(pair.get(), sequence.get(), nullptr);
    ORUDoValue *value = oru_do_constraint_get_default_value(pair.get());
    EXPECT_EQ(value, nullptr);  // its first closing brace ended it
}

TEST(ConstraintTypedef, BuiltInTypeHasNoNameToStamp) {
    const Typedef meta(oru_do_typedef_meta_new_builtin(kInt, nullptr));
    const auto c = constraint("default(5)");
    oru_do_constraint_set_typedef_meta(c.get(), meta.get(), nullptr);
    EXPECT_EQ(default_of(c), "5:5");
}

TEST(ConstraintTypedef, NullDescriptionChangesNothing) {
    const auto c = constraint("values(1)default(5)", kInt);
    oru_do_constraint_set_typedef_meta(c.get(), nullptr, nullptr);
    EXPECT_EQ(values_of(c), "1 5:1..-");
    EXPECT_EQ(default_of(c), "5:5");
}

TEST(ConstraintTypedef, LabelsAreLookedUpAgain) {
    const auto c = constraint("values(com.p/T.nine)");
    EXPECT_EQ(values_of(c), "1 8:com.p/T.nine..-");
    oru_do_constraint_set_typedef_meta(c.get(), simple(kInt).get(), resolve);
    EXPECT_EQ(values_of(c), "1 5:9..-");
}

TEST(ConstraintTypedef, ListHandsItToEveryConstraint) {
    const auto first = constraint("default(1)");
    const auto second = constraint("values(2)");
    const auto list = list_of({&first, &second});
    oru_do_constraint_list_set_typedef_meta(list.get(), simple(kInt).get(), nullptr);
    EXPECT_EQ(default_of(first), "5:1 Speed");
    EXPECT_EQ(values_of(second), "1 5:2..-");
    oru_do_constraint_list_set_typedef_meta(list.get(), nullptr, nullptr);
    EXPECT_EQ(default_of(first), "5:1 Speed");
    oru_do_constraint_list_set_typedef_meta(nullptr, simple(kInt).get(), nullptr);
}

/* ---- Null and memory ---- */

TEST(ConstraintParse, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_constraint_new(nullptr, nullptr), "str");
    EXPECT_ASSERTION(oru_do_constraint_new_l(nullptr, nullptr, 0), "str");
    EXPECT_ASSERTION(oru_do_constraint_new_t(nullptr, nullptr, kInt, nullptr), "str");
    EXPECT_ASSERTION(oru_do_constraint_new_l_t(nullptr, nullptr, 0, kInt, nullptr), "str");
    EXPECT_ASSERTION(oru_do_constraint_set_typedef_meta(nullptr, nullptr, nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_str(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_condition(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_size(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_values(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_strlen(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_regex(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_default_value(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_type(nullptr), "constraint");
}

TEST(ConstraintMemory, StandsAsFarAsItGot) {
    sweep_oom(
        [] {
            const auto c = constraint(
                "values(com.p/T.one|\"b\")size(1..2)strlen(1)regex(a)"
                "default({\"%string\":\"x\"})unique()",
                kString, resolve);
            if (c == nullptr)
                return;
            if (!oom_hit()) {
                ASSERT_NE(oru_do_constraint_get_default_value(c.get()), nullptr);
            }
            oru_do_constraint_set_typedef_meta(c.get(), simple(kString).get(), resolve);
        },
        {.promised_deaths = {}, .at_least = 20});
}

}  // namespace
