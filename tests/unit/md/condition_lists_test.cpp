// Conditions over parallel lists of names and values: whether they hold, and whether what is known
// makes them false.
#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/md/condition_support.h"

namespace {

using namespace oru::test;

// a, b, c are the numbers 1, 2, 3; s is "hello", l has 2 elements, n is null, and a second a is 9.
class ConditionLists : public testing::Test {
  protected:
    ConditionLists() : names(oru_do_nlist_new()), values(oru_do_vlist_new()) {
        add("a", number(1));
        add("b", number(2));
        add("c", number(3));
        add("s", text("hello"));
        add("l", array(2));
        add("n", null());
        add("a", number(9));
        oru_do_nlist_add_string(names.get(), "late");
    }
    void add(const char *name, const Value &value) {
        oru_do_nlist_add_string(names.get(), name);
        oru_do_vlist_add(values.get(), value.get());
    }
    bool holds(const std::string &expression) {
        return oru_do_condition_eval_nlist_vlist(condition(expression).get(), names.get(),
                                                 values.get()) != 0;
    }
    bool made_false(const std::string &expression) {
        return oru_do_condition_eval_to_false(condition(expression).get(), names.get(),
                                              values.get()) != 0;
    }
    Nlist names;
    Vlist values;
};

TEST_F(ConditionLists, LeavesTakeTheValueOfTheFirstEqualName) {
    EXPECT_TRUE(holds("a.values(1)"));
    EXPECT_FALSE(holds("a.values(9)"));
    EXPECT_TRUE(holds("not a.values(9)"));
    EXPECT_TRUE(holds("l.size(2)"));
    EXPECT_FALSE(holds("s.size(5)"));
    EXPECT_TRUE(holds("s.strlen(5)"));
    EXPECT_FALSE(holds("a.strlen(1)"));
    EXPECT_TRUE(holds("s.regex(\"ll\")"));
    EXPECT_FALSE(holds("s.regex(\"^ll\")"));
    EXPECT_TRUE(holds("n.is_null()"));
    EXPECT_FALSE(holds("a.is_null()"));
    EXPECT_FALSE(holds("n.not_null()"));
    EXPECT_TRUE(holds("a.not_null()"));
}

TEST_F(ConditionLists, ValueThatIsNotThereIsNull) {
    for (const std::string name : {"x", "late"}) {
        EXPECT_FALSE(holds(name + ".values(1)"));
        EXPECT_TRUE(holds("not " + name + ".values(1)"));
        EXPECT_FALSE(holds(name + ".size(0)"));
        EXPECT_FALSE(holds(name + ".strlen(0)"));
        EXPECT_FALSE(holds(name + ".regex(\"\")"));
        EXPECT_TRUE(holds(name + ".is_null()"));
        EXPECT_FALSE(holds("not " + name + ".is_null()"));
        EXPECT_FALSE(holds(name + ".not_null()"));
    }
}

TEST_F(ConditionLists, LeafWithoutAPropertyIsTrue) {
    EXPECT_TRUE(holds("values(77)"));
    EXPECT_TRUE(holds("not values(77)"));
    EXPECT_TRUE(holds("not_null()"));
    EXPECT_TRUE(holds(".values(77)"));
}

TEST_F(ConditionLists, PropertyEndsInFrontOfAnOperator) {
    EXPECT_TRUE(holds("a>=.values(1)"));
    EXPECT_FALSE(holds("a<.values(9)"));
    EXPECT_TRUE(holds("a=x.values(1)"));
    EXPECT_FALSE(holds("ab=.values(1)"));
    EXPECT_TRUE(holds("=a.values(77)"));  // nothing is left of the name
    EXPECT_TRUE(holds("not =a.values(1)"));
    EXPECT_FALSE(made_false("=a.values(77)"));
    add("d=", number(4));
    EXPECT_FALSE(holds("d=.values(4)"));  // names of the list are taken as they stand
}

TEST_F(ConditionLists, GroupsMeanWhatTheyMeanOverProperties) {
    EXPECT_TRUE(holds("a.values(1) and b.values(2)"));
    EXPECT_FALSE(holds("a.values(1) and b.values(3)"));
    EXPECT_TRUE(holds("a.values(7) or b.values(2)"));
    EXPECT_FALSE(holds("not (a.values(7) or b.values(2))"));
    EXPECT_TRUE(holds("and "));
    EXPECT_FALSE(holds("or "));
    EXPECT_FALSE(holds("(a.values(1))"));
    EXPECT_TRUE(holds("not (a.values(1))"));
    EXPECT_TRUE(holds(""));
}

TEST_F(ConditionLists, WithoutEitherListTheAnswerIsYes) {
    const auto never = condition("a.values(77) and b.is_null()");
    for (auto eval : {oru_do_condition_eval_nlist_vlist, oru_do_condition_eval_to_false}) {
        EXPECT_EQ(eval(never.get(), nullptr, values.get()), 1);
        EXPECT_EQ(eval(never.get(), names.get(), nullptr), 1);
        EXPECT_EQ(eval(never.get(), nullptr, nullptr), 1);
    }
    EXPECT_FALSE(holds("a.values(77) and b.is_null()"));
}

TEST_F(ConditionLists, KnownValueThatDoesNotFitMakesALeafFalse) {
    EXPECT_TRUE(made_false("a.values(2)"));
    EXPECT_FALSE(made_false("a.values(1)"));
    EXPECT_TRUE(made_false("s.values(2)"));
    EXPECT_TRUE(made_false("l.size(3)"));
    EXPECT_FALSE(made_false("l.size(2)"));
    EXPECT_TRUE(made_false("s.strlen(4)"));
    EXPECT_FALSE(made_false("s.strlen(5)"));
    EXPECT_TRUE(made_false("s.regex(\"^l\")"));
    EXPECT_FALSE(made_false("s.regex(\"l\")"));
    EXPECT_TRUE(made_false("a.is_null()"));
    EXPECT_FALSE(made_false("n.is_null()"));
    EXPECT_TRUE(made_false("n.not_null()"));
    EXPECT_FALSE(made_false("a.not_null()"));
}

TEST_F(ConditionLists, WhatIsNotKnownMakesNothingFalse) {
    for (const char *term :
         {"x.values(1)", "x.size(1)", "x.strlen(1)", "x.regex(\"y\")", "x.is_null()",
          "x.not_null()", "late.values(1)", "values(77)", "not_null()", "a.values()", "a.size(3)",
          "a.strlen(3)", "a.regex(\"y\")", "s.size(77)", "l.strlen(77)", "s.regex(\"[\")"})
        EXPECT_FALSE(made_false(term)) << term;
}

TEST_F(ConditionLists, StringWithoutATextIsNeitherMatchedNorMadeFalse) {
    poolheap_fail_nth(2, false);
    const Value without_text(oru_do_value_new_string("hello"));
    poolheap_fail_off();
    oru_do_nlist_clear(names.get());
    oru_do_vlist_clear(values.get());
    add("s", without_text);
    for (const std::string term : {"s.strlen(0..9)", "s.regex(\"\")"}) {
        EXPECT_FALSE(holds(term)) << term;
        EXPECT_FALSE(holds("not " + term)) << term;
        EXPECT_FALSE(made_false(term)) << term;
        EXPECT_TRUE(made_false("not " + term)) << term;
    }
}

TEST_F(ConditionLists, BitsAreNoArray) {
    const Vlist words(oru_do_vlist_new());
    add("w", Value(oru_do_value_new_bits(words.get())));
    EXPECT_FALSE(holds("w.size(0)"));
    EXPECT_FALSE(made_false("w.size(1)"));
}

TEST_F(ConditionLists, NotTurnsTheAnswerRoundForUnknownValuesToo) {
    EXPECT_FALSE(made_false("not a.values(2)"));
    EXPECT_TRUE(made_false("not a.values(1)"));
    EXPECT_TRUE(made_false("not x.values(1)"));
    EXPECT_TRUE(made_false("not values(1)"));
}

TEST_F(ConditionLists, OneFalseTermIsEnoughInAndAllAreNeededInOr) {
    EXPECT_TRUE(made_false("a.values(1) and b.values(77)"));
    EXPECT_FALSE(made_false("a.values(1) and b.values(2)"));
    EXPECT_FALSE(made_false("a.values(1) and x.values(77)"));
    EXPECT_TRUE(made_false("a.values(77) or b.values(77)"));
    EXPECT_FALSE(made_false("a.values(77) or b.values(2)"));
    EXPECT_FALSE(made_false("a.values(77) or x.values(77)"));
    EXPECT_FALSE(made_false("not (a.values(77) or b.values(77))"));
    EXPECT_FALSE(made_false(""));
    EXPECT_FALSE(made_false("and "));
    EXPECT_TRUE(made_false("or "));
    EXPECT_FALSE(made_false("(a.values(77))"));
    EXPECT_TRUE(made_false("not (a.values(77))"));
}

TEST_F(ConditionLists, NullConditionIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_condition_eval_nlist_vlist(nullptr, names.get(), values.get()),
                     "condition");
    EXPECT_ASSERTION(oru_do_condition_eval_to_false(nullptr, names.get(), values.get()),
                     "condition");
}

}  // namespace
