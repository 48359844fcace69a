// Conditions from text: how they are read, and what they say of properties.
#include <oru/range.h>
#include <oru/util.h>
#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/condition_support.h"

namespace {

using namespace oru::test;
using Lines = std::vector<std::string>;

// Of the sample below: a, b, c are the numbers 1, 2, 3; s is "hello", t is "", l has 2 elements,
// n is null, u is an unsigned int 7, d is the default name with the number 5.
class ConditionTest : public testing::Test {
  protected:
    ConditionTest() : props(oru_do_properties_new()), default_name(oru_do_name_new("d")) {
        set("a", number(1));
        set("b", number(2));
        set("c", number(3));
        set("d", number(5));
        set("s", text("hello"));
        set("t", text(""));
        set("l", array(2));
        set("n", null());
        set("u", Value(oru_do_value_new_unsigned_int(7)));
    }
    void set(const char *name, const Value &value) {
        oru_do_properties_set_value(props.get(), name, value.get());
    }
    bool holds(const std::string &expression) {
        return oru_do_condition_eval(condition(expression).get(), default_name.get(),
                                     props.get()) != 0;
    }
    bool holds_without_properties(const std::string &expression) {
        return oru_do_condition_eval(condition(expression).get(), default_name.get(), nullptr) != 0;
    }
    Properties props;
    Name default_name;
};

// The failures that reading the text traces.
Lines faults(const std::string &expression) {
    const TraceCapture traces;
    EXPECT_NE(condition(expression), nullptr);
    return traces.at(3);
}

TEST_F(ConditionTest, ValuesLooksForTheValueInARange) {
    EXPECT_TRUE(holds("c.values(1..5)"));
    EXPECT_FALSE(holds("c.values(4..5)"));
    EXPECT_TRUE(holds("c.values(1|3)"));
    EXPECT_TRUE(holds("c.values(1 | 3 )"));
    EXPECT_FALSE(holds("c.values(1|2)"));
    EXPECT_TRUE(holds("c.values(3..*)"));
    EXPECT_TRUE(holds("u.values(7)"));  // whole numbers compare whatever their width
    EXPECT_FALSE(holds("s.values(7)"));
    EXPECT_TRUE(holds("s.values(\"hello\")"));
    EXPECT_TRUE(holds("s.values(hello)"));
    EXPECT_FALSE(holds("s.values(\"hell\")"));
}

TEST_F(ConditionTest, FirstBoundTellsTheTypeOfALeaf) {
    set("r", Value(oru_do_value_new_double(0.75)));
    set("y", Value(oru_do_value_new_boolean(1)));
    set("p", Value(oru_do_value_new_ip_address("\x04\x0a\x00\x00\x01", 5)));
    EXPECT_TRUE(holds("r.values(0.5..1.5)"));
    EXPECT_FALSE(holds("r.values(0..1)"));
    EXPECT_TRUE(holds("y.values(true)"));
    EXPECT_FALSE(holds("y.values(false)"));
    EXPECT_FALSE(holds("c.values(-5..5)"));  // a sign or an open side makes strings
    EXPECT_FALSE(holds("c.values(*..5)"));
    EXPECT_TRUE(holds("s.values(*..worlds)"));
    EXPECT_TRUE(holds("c.values(1|\"x\"|3)"));  // what is no number is left out
}

TEST_F(ConditionTest, PatternEndsAtASignOrALiteral) {
    EXPECT_TRUE(holds("s.regex(\"a b\")") == holds("s.regex(a)"));
    EXPECT_TRUE(holds("s.regex(\"hel b\")"));
    EXPECT_TRUE(holds("s.regex(\"hel|xyz\")"));
    EXPECT_FALSE(holds("s.regex(\"xyz|hel\")"));
    EXPECT_TRUE(holds("s.regex(\"hel,xyz\")"));
    EXPECT_TRUE(holds("s.regex(\"(xyz)\")"));  // nothing is left in front of the parenthesis
    EXPECT_FALSE(holds("s.regex(\"l{2}\")"));  // a literal takes the place of the word
}

TEST_F(ConditionTest, ValuesWithoutARangeOrAValueIsFalse) {
    EXPECT_FALSE(holds("c.values()"));
    EXPECT_FALSE(holds("x.values(1..5)"));
    EXPECT_TRUE(holds("not x.values(1..5)"));
    EXPECT_FALSE(holds_without_properties("c.values(1..5)"));
    EXPECT_TRUE(holds_without_properties("not c.values(1..5)"));
}

TEST_F(ConditionTest, SizeCountsTheElementsOfAnArray) {
    EXPECT_TRUE(holds("l.size(2)"));
    EXPECT_TRUE(holds("l.size(1..3)"));
    EXPECT_FALSE(holds("l.size(3..9)"));
    EXPECT_TRUE(holds("not l.size(3..9)"));
    EXPECT_FALSE(holds("s.size(0..9)"));
    EXPECT_TRUE(holds("not s.size(0..9)"));
    EXPECT_FALSE(holds("l.size()"));
    EXPECT_FALSE(holds_without_properties("l.size(2)"));
}

TEST_F(ConditionTest, StrlenMeasuresAString) {
    EXPECT_TRUE(holds("s.strlen(5)"));
    EXPECT_FALSE(holds("s.strlen(6..9)"));
    EXPECT_TRUE(holds("not s.strlen(6..9)"));
    EXPECT_TRUE(holds("t.strlen(0)"));
    EXPECT_FALSE(holds("c.strlen(1)"));
    EXPECT_TRUE(holds("not c.strlen(1)"));
    EXPECT_FALSE(holds("s.strlen()"));
    EXPECT_FALSE(holds_without_properties("s.strlen(5)"));
}

TEST_F(ConditionTest, RegexFindsItsPatternAnywhere) {
    EXPECT_TRUE(holds("s.regex(\"el+\")"));
    EXPECT_TRUE(holds("s.regex(el+)"));
    EXPECT_FALSE(holds("s.regex(\"^el\")"));
    EXPECT_TRUE(holds("not s.regex(\"^el\")"));
    EXPECT_TRUE(holds("s.regex(\"^hello$\")"));
    EXPECT_FALSE(holds("c.regex(\"3\")"));  // no string
    EXPECT_TRUE(holds("not c.regex(\"3\")"));
    EXPECT_FALSE(holds("s.regex()"));
    EXPECT_FALSE(holds_without_properties("s.regex(\"el\")"));
}

TEST_F(ConditionTest, QuotesAroundAPatternComeOffOneByOne) {
    EXPECT_TRUE(holds("s.regex(\"hello)"));
    EXPECT_TRUE(holds("s.regex(hello\")"));
    EXPECT_TRUE(holds("s.regex(\")"));  // nothing is left, which is found everywhere
    EXPECT_FALSE(holds("s.regex(\"\"hello\"\")"));
}

TEST_F(ConditionTest, NullIsAbsentOrNull) {
    EXPECT_TRUE(holds("x.is_null()"));
    EXPECT_TRUE(holds("n.is_null()"));
    EXPECT_FALSE(holds("a.is_null()"));
    EXPECT_TRUE(holds("not a.is_null()"));
    EXPECT_FALSE(holds_without_properties("x.is_null()"));
    EXPECT_TRUE(holds_without_properties("not x.is_null()"));
}

TEST_F(ConditionTest, NotNullIsThereAndNotNull) {
    EXPECT_FALSE(holds("x.not_null()"));
    EXPECT_FALSE(holds("n.not_null()"));
    EXPECT_TRUE(holds("a.not_null()"));
    EXPECT_FALSE(holds("not a.not_null()"));
    EXPECT_FALSE(holds_without_properties("a.not_null()"));
}

TEST_F(ConditionTest, StringWithoutATextIsNeitherMatchedNorNot) {
    poolheap_fail_nth(2, false);
    const Value without_text(oru_do_value_new_string("hello"));
    poolheap_fail_off();
    ASSERT_EQ(oru_do_value_get_type(without_text.get()), ORU_DO_TYPE_STRING);
    set("s", without_text);
    for (const char *term : {"s.strlen(0..9)", "s.regex(\"\")"}) {
        EXPECT_FALSE(holds(term)) << term;
        EXPECT_FALSE(holds(std::string("not ") + term)) << term;
    }
    EXPECT_TRUE(holds("not s.strlen()"));  // nothing was asked
    EXPECT_TRUE(holds("not s.regex()"));
    EXPECT_TRUE(holds("s.not_null()"));
}

TEST_F(ConditionTest, LeafWithoutAPropertyAsksAboutTheDefaultName) {
    EXPECT_TRUE(holds("values(5)"));
    EXPECT_FALSE(holds("values(6)"));
    EXPECT_TRUE(holds("not_null()"));
    EXPECT_TRUE(holds("values(5) and a.values(1)"));
}

TEST_F(ConditionTest, PropertyIsAllInFrontOfTheLastDot) {
    set("g.h.i", number(4));
    EXPECT_TRUE(holds("g.h.i.values(4)"));
    EXPECT_FALSE(holds("i.values(4)"));
}

TEST_F(ConditionTest, WithoutADefaultNameEverythingHolds) {
    const auto never = condition("a.values(9)");
    EXPECT_EQ(oru_do_condition_eval(never.get(), nullptr, props.get()), 1);
    EXPECT_EQ(oru_do_condition_eval(never.get(), nullptr, nullptr), 1);
    EXPECT_EQ(oru_do_condition_eval(never.get(), default_name.get(), props.get()), 0);
}

TEST_F(ConditionTest, AndWantsAllOrWantsAny) {
    EXPECT_TRUE(holds("a.values(1) and b.values(2) and c.values(3)"));
    EXPECT_FALSE(holds("a.values(1) and b.values(9) and c.values(3)"));
    EXPECT_TRUE(holds("a.values(9) or b.values(2) or c.values(9)"));
    EXPECT_FALSE(holds("a.values(9) or b.values(9) or c.values(9)"));
}

TEST_F(ConditionTest, GroupsHaveTheirOwnOperator) {
    const std::string both = "(a.values(1) or b.values(9)) and c.not_null()";
    EXPECT_EQ(faults(both), Lines{});
    EXPECT_TRUE(holds(both));
    EXPECT_FALSE(holds("(a.values(9) or b.values(9)) and c.not_null()"));
    EXPECT_FALSE(holds("(a.values(1) or b.values(9)) and x.not_null()"));
    EXPECT_TRUE(holds("x.not_null() or (a.values(1) and (b.values(9) or c.values(3)))"));
}

TEST_F(ConditionTest, NotGoesInFrontOfALeafOrAGroup) {
    EXPECT_FALSE(holds("not a.values(1)"));
    EXPECT_TRUE(holds("not a.values(2)"));
    EXPECT_FALSE(holds("not (a.values(1) or b.values(9))"));
    EXPECT_TRUE(holds("not (a.values(9) or b.values(9))"));
    EXPECT_TRUE(holds("not not a.values(2)"));  // said twice is said once
    EXPECT_TRUE(holds("a.values(1) and not b.values(1)"));
}

TEST_F(ConditionTest, ParenthesesAroundASingleTermAreFalse) {
    EXPECT_FALSE(holds("(a.values(1))"));
    EXPECT_FALSE(holds("(a.values(9))"));
    EXPECT_TRUE(holds("not (a.values(1))"));
    EXPECT_TRUE(holds("not (a.values(9))"));
    EXPECT_FALSE(holds("(a.values(1)) and b.values(2)"));
    EXPECT_TRUE(holds("(a.values(1)) or b.values(2)"));
}

TEST_F(ConditionTest, NotWithoutABlankStaysRightAndIsReported) {
    EXPECT_EQ(faults("not(a.values(1))"), Lines{"Non-matching parenthesis\n"});
    EXPECT_FALSE(holds("not(a.values(1))"));
    EXPECT_TRUE(holds("not(a.values(9))"));
}

TEST_F(ConditionTest, BlanksInArgumentsAreReported) {
    EXPECT_EQ(faults("a.values( 1 )"), Lines{"Non-matching parenthesis\n"});
    EXPECT_TRUE(holds("a.values( 1 )"));
}

TEST_F(ConditionTest, MixedOperatorsKeepTheFirst) {
    EXPECT_EQ(faults("a.values(1) and b.values(2) or c.values(3)"), Lines{"Mixed operation\n"});
    EXPECT_TRUE(holds("a.values(1) and b.values(2) or c.values(3)"));
    EXPECT_FALSE(holds("a.values(1) and b.values(2) or c.values(9)"));
    EXPECT_EQ(faults("a.values(1) or b.values(2) and c.values(3) and n.is_null()"),
              (Lines{"Mixed operation\n", "Mixed operation\n"}));
    EXPECT_TRUE(holds("a.values(1) or b.values(9) and c.values(9)"));
}

TEST_F(ConditionTest, TermsWithoutAnOperatorCountAsTheFirst) {
    EXPECT_TRUE(holds("a.values(1) b.values(9)"));
    EXPECT_FALSE(holds("a.values(9) b.values(2)"));
    EXPECT_TRUE(holds("(a.values(1) or b.values(9)) x.not_null()"));
}

TEST_F(ConditionTest, WithoutTokensItIsTrue) {
    for (const char *expression : {"", "   ", "a.is_null", "\n"}) {
        EXPECT_EQ(faults(expression), Lines{});
        EXPECT_TRUE(holds(expression)) << expression;
    }
}

TEST_F(ConditionTest, WordsThatMeanNothingAreIgnored) {
    EXPECT_EQ(faults("foo , a.values(1) AND unique() x.default ordered_by "), Lines{});
    EXPECT_TRUE(holds("foo , a.values(1)"));
    EXPECT_TRUE(holds("foo and a.values(1)"));
    // AND is no operator but one more argument of the leaf in front of it.
    EXPECT_FALSE(holds("a.values(9) AND b.values(2)"));
}

TEST_F(ConditionTest, OperatorsInFrontOfTheirTermsCount) {
    EXPECT_TRUE(holds("or a.values(1) b.values(9)"));
    EXPECT_FALSE(holds("and a.values(1) b.values(9)"));
    EXPECT_TRUE(holds("and "));
    EXPECT_FALSE(holds("or "));
    EXPECT_FALSE(holds("x.and a.values(1) b.values(9)"));  // known by what is behind the dot
}

TEST_F(ConditionTest, FourGroupsNestAndTheFifthIsLeftOut) {
    const std::string four =
        "a.values(1) and (b.values(2) and (c.values(3) and (s.not_null() and "
        "(n.is_null() and x.is_null()))))";
    EXPECT_EQ(faults(four), Lines{});
    EXPECT_TRUE(holds(four));
    // The terms of the fifth stand in the fourth, whose end comes one parenthesis early.
    const std::string five =
        "a.values(1) and (b.values(2) and (c.values(3) and (s.not_null() and "
        "(n.is_null() and (x.is_null() and d.values(5))))))";
    EXPECT_EQ(faults(five), Lines{"Condition deeper than 4\n"});
    EXPECT_TRUE(holds(five));
    EXPECT_EQ(faults("((((( ( a.values(1) "), (Lines(2, "Condition deeper than 4\n")));
    EXPECT_EQ(faults("((((()))))"), Lines{"Condition deeper than 4\n"});
    EXPECT_EQ(faults("(()))"), Lines{"Non-matching parenthesis\n"});
}

TEST_F(ConditionTest, NotInFrontOfAGroupThatIsLeftOutWaitsForTheNextTerm) {
    EXPECT_EQ(faults("(((( x.is_null() and not ( a.values(9) "),
              Lines{"Condition deeper than 4\n"});
    EXPECT_TRUE(holds("(((( x.is_null() and not ( a.values(9) "));
    EXPECT_FALSE(holds("(((( x.is_null() and not ( a.values(1) "));
}

TEST_F(ConditionTest, InnermostGroupThatIsNotClosedIsTheResult) {
    EXPECT_TRUE(holds("x.not_null() and (a.values(1) and b.values(2)"));
    EXPECT_FALSE(holds("a.values(1) or (b.values(2) and c.values(9)"));
    EXPECT_TRUE(holds("x.not_null() and (x.not_null() and (a.values(9) or b.values(2)"));
    EXPECT_FALSE(holds("x.is_null() or not (a.values(1) or b.values(2)"));
    EXPECT_TRUE(holds("x.not_null() and (a.values(1) b.values(9)"));  // its first term
    EXPECT_FALSE(holds("x.is_null() or ("));
}

TEST_F(ConditionTest, SeventeenthArgumentIsDropped) {
    const std::string sixteen = "c.values(20|21|22|23|24|25|26|27|28|29|30|31|32|33|34|";
    EXPECT_EQ(faults(sixteen + "3)"), Lines{});
    EXPECT_TRUE(holds(sixteen + "3)"));
    EXPECT_EQ(faults(sixteen + "35|3)"), Lines{"Too many range tokens\n"});
    EXPECT_FALSE(holds(sixteen + "35|3)"));
    EXPECT_EQ(faults(sixteen + "35|3|3)"), Lines(2, "Too many range tokens\n"));
}

TEST_F(ConditionTest, PatternsAreTracedAndThoseThatDoNotCompileAreFalse) {
    const TraceCapture traces;
    const auto good = condition("s.regex(\"^h\")");
    EXPECT_TRUE(traces.has(7, "Compiling regex ^h\n"));
    EXPECT_EQ(traces.at(3), Lines{});
    EXPECT_FALSE(holds("s.regex(\"[\")"));
    EXPECT_TRUE(traces.has(7, "Compiling regex [\n"));
    EXPECT_TRUE(traces.has(3, "Failed to compile regex\n"));
    EXPECT_TRUE(holds("not s.regex(\"[\")"));
}

TEST_F(ConditionTest, HundredTokensAreRead) {
    std::string expression;
    for (int i = 0; i < 49; ++i)
        expression += "a.not_null() and ";
    EXPECT_TRUE(holds(expression + "a.not_null() and x.not_null()"));   // the 101st
    EXPECT_FALSE(holds(expression + "x.not_null() and a.not_null()"));  // the 99th
    for (int i = 0; i < 1000; ++i)
        expression += "( not and | ";
    EXPECT_NE(condition(expression), nullptr);
}

TEST_F(ConditionTest, WordThatIsTooLongEndsTheReading) {
    EXPECT_TRUE(holds("a.values(1) and " + std::string(128, 'w') + " and x.not_null()"));
    EXPECT_FALSE(holds("a.values(1) and " + std::string(127, 'w') + " and x.not_null()"));
}

TEST_F(ConditionTest, LongNestedTextEndsSoon) {
    for (const char *piece :
         {"(", ")", "not ", "( ", "a.values( ", "x.regex(\"(((\") and ", "{", "and ", "1..", "|"}) {
        std::string text;
        while (text.size() < 1'000'000)
            text += piece;
        EXPECT_NE(condition(text), nullptr);
    }
}

TEST_F(ConditionTest, CountedTextEndsWithItsCount) {
    const auto made = [](const char *str, int32_t length) {
        return Condition(oru_do_condition_new_l(str, length));
    };
    const auto first = made("a.values(9) or b.values(2)", 11);
    EXPECT_STREQ(oru_do_condition_get_expr(first.get()), "a.values(9)");
    EXPECT_EQ(oru_do_condition_eval(first.get(), default_name.get(), props.get()), 0);
    EXPECT_STREQ(oru_do_condition_get_expr(made("a.values(9)", 100).get()), "a.values(9)");
    EXPECT_STREQ(oru_do_condition_get_expr(made("a.values(9)", 0).get()), "");
    EXPECT_STREQ(oru_do_condition_get_expr(made("a.values(9)", -1).get()), "");
}

TEST_F(ConditionTest, TextStaysAsItWasWritten) {
    const char *written = " not( s.regex(\"a\") ))and\tx.values( 1 )";
    EXPECT_STREQ(oru_do_condition_get_expr(condition(written).get()), written);
}

TEST_F(ConditionTest, NamesOfItsPropertiesStandOnceEach) {
    const auto named = condition("b.values(1) and (a.x.size(1) or not b.is_null()) and values(2)");
    EXPECT_EQ(names_of(oru_do_condition_get_ext_prop_names(named.get())), (Lines{"b", "a.x"}));
    const auto unnamed = condition("values(1)");
    EXPECT_EQ(names_of(oru_do_condition_get_ext_prop_names(unnamed.get())), Lines{});
    // Names of terms that do not count, too.
    const auto given_up = condition("a.values(1) and (b.values(2) and c.values(3)");
    EXPECT_EQ(names_of(oru_do_condition_get_ext_prop_names(given_up.get())),
              (Lines{"a", "b", "c"}));
}

TEST_F(ConditionTest, CountsItsReferences) {
    auto *shared = oru_do_condition_new("a.regex(\"x\") and b.values(1)");
    EXPECT_EQ(oru_do_condition_ref(shared), shared);
    oru_do_condition_deref(shared);
    EXPECT_STREQ(oru_do_condition_get_expr(shared), "a.regex(\"x\") and b.values(1)");
    oru_do_condition_deref(shared);
    EXPECT_EQ(oru_do_condition_ref(nullptr), nullptr);
    oru_do_condition_deref(nullptr);
}

TEST_F(ConditionTest, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_condition_new(nullptr), "str");
    EXPECT_ASSERTION(oru_do_condition_new_l(nullptr, 0), "str");
    EXPECT_ASSERTION(oru_do_condition_get_expr(nullptr), "condition");
    EXPECT_ASSERTION(oru_do_condition_get_ext_prop_names(nullptr), "condition");
    EXPECT_ASSERTION(oru_do_condition_eval(nullptr, default_name.get(), props.get()), "condition");
}

TEST_F(ConditionTest, WithoutMemoryItIsNullOrStandsAsFarAsItCame) {
    const auto body = [this] {
        const auto made = condition(
            "a.values(1..3|5) and (not b.regex(\"x\") or longer.than.a.name.can.be.size(1))");
        EXPECT_TRUE(made != nullptr || oom_hit());
        if (made == nullptr)
            return;
        const auto names = names_of(oru_do_condition_get_ext_prop_names(made.get()));
        EXPECT_EQ(names, (Lines{"a", "b", "longer.than.a.name.can.be"}));
        const int32_t result = oru_do_condition_eval(made.get(), default_name.get(), props.get());
        EXPECT_TRUE(result == 1 || oom_hit());
    };
    sweep_oom(body, {.at_least = 20});
}

TEST_F(ConditionTest, RecordsHaveTheirFieldsInOrder) {
    const auto made = condition("not a.values(1..5) or b.regex(\"x\")");
    const ConditionRecord &record = record_of(made);
    EXPECT_EQ(record.ref, 1u);
    EXPECT_STREQ(record.expr, "not a.values(1..5) or b.regex(\"x\")");
    EXPECT_EQ(record.ext_prop_names, oru_do_condition_get_ext_prop_names(made.get()));
    const NodeRecord &root = *record.root;
    EXPECT_EQ(root.type, 2);
    EXPECT_STREQ(root.op_str, "or");
    EXPECT_EQ(root.token_count, 0);
    EXPECT_EQ(root.negate, 0u);
    EXPECT_EQ(root.next, nullptr);
    const NodeRecord &first = *root.first_child;
    EXPECT_EQ(first.type, 10);
    EXPECT_STREQ(first.op_str, "a.values");
    ASSERT_EQ(first.token_count, 3);
    EXPECT_STREQ(first.tokens[1], "..");
    EXPECT_STREQ(first.tokens[2], "5");
    EXPECT_EQ(first.tokens[3], nullptr);
    EXPECT_EQ(first.negate, 1u);
    EXPECT_EQ(first.regex, nullptr);
    EXPECT_STREQ(oru_do_name_get_strname(first.prop_name), "a");
    EXPECT_STREQ(oru_do_range_get_range_str(first.range), "1..5");
    EXPECT_EQ(first.first_child, nullptr);
    const NodeRecord &second = *first.next;
    EXPECT_EQ(second.type, 13);
    EXPECT_NE(second.regex, nullptr);
    EXPECT_EQ(second.range, nullptr);
    EXPECT_EQ(second.next, nullptr);
}

TEST_F(ConditionTest, OperatorsMakeTheRootAndFirstTermsTakeItsPlace) {
    const auto mixed = condition("a.values(1) and b.values(2) or c.values(3)");
    const NodeRecord *node = record_of(mixed).root;
    EXPECT_EQ(node->type, 1);
    EXPECT_STREQ(node->op_str, "and");
    node = node->first_child;
    for (const char *op : {"a.values", "b.values", "c.values"}) {
        ASSERT_NE(node, nullptr);
        EXPECT_STREQ(node->op_str, op);
        node = node->next;
    }
    EXPECT_EQ(node, nullptr);

    const auto unjoined = condition("a.values(1) not b.is_null()");
    node = record_of(unjoined).root;
    EXPECT_EQ(node->type, 10);
    EXPECT_EQ(node->negate, 0u);
    ASSERT_NE(node->next, nullptr);
    EXPECT_EQ(node->next->type, 14);
    EXPECT_EQ(node->next->negate, 1u);
    EXPECT_EQ(node->next->range, nullptr);

    const auto single = condition("not (a.values(1))");
    node = record_of(single).root;
    EXPECT_EQ(node->type, 0);
    EXPECT_EQ(node->op_str, nullptr);
    EXPECT_EQ(node->negate, 1u);
    ASSERT_NE(node->first_child, nullptr);
    EXPECT_NE(node->first_child->range, nullptr);

    const auto none = condition("");
    node = record_of(none).root;
    EXPECT_EQ(node->type, 1);
    EXPECT_EQ(node->op_str, nullptr);
    EXPECT_EQ(node->first_child, nullptr);
}

TEST_F(ConditionTest, OperatorOfAGroupIsItsKeywordAlone) {
    for (const auto &[expression, op] :
         {std::pair("a.values(1) x.y.and b.values(2)", "and"), std::pair("a.values(1) .or ", "or")})
        EXPECT_STREQ(record_of(condition(expression)).root->op_str, op) << expression;
}

TEST_F(ConditionTest, LeafKeepsSixteenArguments) {
    const auto made = condition("c.values(1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17)");
    const NodeRecord &leaf = *record_of(made).root;
    EXPECT_EQ(leaf.token_count, 16);
    EXPECT_STREQ(leaf.tokens[15], "16");
}

TEST_F(ConditionTest, OneReleaseTooManyIsFatal) {
    EXPECT_FATAL(
        {
            ConditionRecord dead{};
            oru_do_condition_deref(reinterpret_cast<ORUDoCondition *>(&dead));
        },
        "Fatal problem in oru_do_condition deref handling 0x");
}

}  // namespace
