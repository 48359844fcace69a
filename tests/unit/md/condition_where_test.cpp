// Conditions made from where clauses, and the names of their items.
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/condition_support.h"

namespace {

using namespace oru::test;
using Lines = std::vector<std::string>;

struct Item {
    const char *name;
    Value value;
};

template <class... Items>
Nlist names(Items... texts) {
    Nlist list(oru_do_nlist_new());
    (oru_do_nlist_add_string(list.get(), texts), ...);
    return list;
}

void add(const Nvlist &list, const char *name, const Value &value) {
    ASSERT_GT(oru_do_nvlist_add(list.get(), name, value.get()), 0);
}

// where({"a =", number(1)}, ...)
template <class... Items>
Nvlist where(Items &&...items) {
    Nvlist list(oru_do_nvlist_new());
    [[maybe_unused]] const auto append = [&](const Item &item) {
        add(list, item.name, item.value);
    };
    (append(items), ...);
    return list;
}

template <class... Items>
Value group(Items &&...items) {
    return Value(oru_do_value_new_sequence(where(std::forward<Items>(items)...).get()));
}

Condition from(const Nvlist &list) {
    return Condition(oru_do_condition_new_from_where(list.get()));
}

std::string text_of(const Condition &made) {
    const char *text = oru_do_condition_get_expr(made.get());
    return text != nullptr ? text : "no text";
}

// Whether it holds for rows with these values of a and b; null values are left out of the lists.
bool holds(const Condition &made, const Value &a, const Value &b = nullptr) {
    const Nlist columns = names("a", "b");
    const Vlist row(oru_do_vlist_new());
    oru_do_vlist_add(row.get(), a.get());
    if (b != nullptr)
        oru_do_vlist_add(row.get(), b.get());
    return oru_do_condition_eval_nlist_vlist(made.get(), columns.get(), row.get()) != 0;
}

// The numbers from 1 to 3 for which an item selects a row.
std::string selected(const char *name, int64_t bound) {
    const auto made = from(where(Item{name, number(bound)}));
    std::string out;
    for (int64_t n = 1; n <= 3; ++n) {
        if (holds(made, number(n)))
            out += std::to_string(n);
    }
    return out;
}

TEST(ConditionWhere, EachOperatorSelectsItsRows) {
    EXPECT_EQ(selected("a", 2), "2");
    EXPECT_EQ(selected("a ", 2), "2");
    EXPECT_EQ(selected("a =", 2), "2");
    EXPECT_EQ(selected("a=", 2), "2");
    EXPECT_EQ(selected("a <>", 2), "13");
    EXPECT_EQ(selected("a >", 2), "3");
    EXPECT_EQ(selected("a <", 2), "1");
    EXPECT_EQ(selected("a >=", 2), "23");
    EXPECT_EQ(selected("a<=", 2), "12");
}

TEST(ConditionWhere, UnknownOperatorMatchesNothing) {
    EXPECT_EQ(selected("a !=", 2), "");
    EXPECT_EQ(selected("a ==", 2), "");
    EXPECT_EQ(selected("a > ", 2), "");
    EXPECT_EQ(selected("a AND", 2), "");  // an operator of groups ends in a blank
}

TEST(ConditionWhere, AllItemsHaveToHold) {
    const auto made = from(where(Item{"a >=", number(2)}, Item{"b <", number(9)}));
    EXPECT_TRUE(holds(made, number(2), number(8)));
    EXPECT_FALSE(holds(made, number(1), number(8)));
    EXPECT_FALSE(holds(made, number(2), number(9)));
    EXPECT_FALSE(holds(made, number(2)));
    EXPECT_TRUE(holds(from(where()), number(1)));
}

TEST(ConditionWhere, SameNameTwiceInAndMeansBoth) {
    const auto made = from(where(Item{"a >", number(1)}, Item{"a <", number(3)}));
    EXPECT_FALSE(holds(made, number(1)));
    EXPECT_TRUE(holds(made, number(2)));
    EXPECT_FALSE(holds(made, number(3)));
    EXPECT_EQ(text_of(made), "a.values(1:*) and a.values(*:3)");
}

TEST(ConditionWhere, OneItemOfAnOrGroupIsEnough) {
    const auto made =
        from(where(Item{" OR ", group(Item{"a =", number(1)}, Item{"b =", number(2)})}));
    EXPECT_TRUE(holds(made, number(1), number(7)));
    EXPECT_TRUE(holds(made, number(7), number(2)));
    EXPECT_FALSE(holds(made, number(7), number(7)));
    EXPECT_EQ(text_of(made), "(a.values(1) or b.values(2))");
}

TEST(ConditionWhere, OrGroupHoldsOneRangeForEachName) {
    const auto made = from(where(Item{
        " or ", group(Item{"a =", number(1)}, Item{"b", number(2)}, Item{"a >=", number(5)},
                      Item{"a=", text("1")}, Item{"b <=", number(0)}, Item{"a <>", number(4)})}));
    EXPECT_EQ(text_of(made), "(a.values(1|5..*|) or b.values(2|*..0))");
    EXPECT_TRUE(holds(made, number(1)));
    EXPECT_TRUE(holds(made, number(6)));
    EXPECT_FALSE(holds(made, number(4)));
    EXPECT_TRUE(holds(made, number(3)));
    EXPECT_FALSE(holds(made, text("1")));  // another type than the first one's finds no place
    EXPECT_TRUE(holds(made, number(4), number(-1)));
}

TEST(ConditionWhere, UnknownOperatorEndsTheRangeOfAnOrGroup) {
    const auto made = from(where(Item{
        " OR ", group(Item{"a =", number(1)}, Item{"a !", number(2)}, Item{"a =", number(3)})}));
    EXPECT_TRUE(holds(made, number(1)));
    EXPECT_FALSE(holds(made, number(2)));
    EXPECT_FALSE(holds(made, number(3)));
}

TEST(ConditionWhere, GroupsNest) {
    const auto made = from(where(
        Item{"b =", number(0)},
        Item{" OR ", group(Item{"a =", number(1)},
                           Item{" AND ", group(Item{"a >", number(4)}, Item{"a <", number(6)})})}));
    EXPECT_EQ(text_of(made), "b.values(0) and (a.values(1) or (a.values(4:*) and a.values(*:6)))");
    EXPECT_TRUE(holds(made, number(1), number(0)));
    EXPECT_TRUE(holds(made, number(5), number(0)));
    EXPECT_FALSE(holds(made, number(6), number(0)));
    EXPECT_FALSE(holds(made, number(5), number(1)));
}

TEST(ConditionWhere, GroupWithoutASequenceIsEmpty) {
    const auto all = from(where(Item{" AND ", number(1)}));
    EXPECT_TRUE(holds(all, number(1)));
    EXPECT_EQ(text_of(all), "()");
    const auto any = from(where(Item{" OR ", number(1)}, Item{"a =", number(1)}));
    EXPECT_FALSE(holds(any, number(1)));
    EXPECT_EQ(text_of(any), "() and a.values(1)");
}

TEST(ConditionWhere, DeepGroupsAreReadAndReleased) {
    Value inner = group(Item{"a =", number(1)});
    for (int depth = 0; depth < 1000; ++depth)
        inner = group(Item{" AND ", std::move(inner)});
    const auto made = from(where(Item{" AND ", std::move(inner)}));
    EXPECT_TRUE(holds(made, number(1)));
    EXPECT_FALSE(holds(made, number(2)));
    EXPECT_EQ(text_of(made).size(), 2 * 1001u + std::string("a.values(1)").size());
}

TEST(ConditionWhere, LongClauseIsReadSoon) {
    const Nvlist items(oru_do_nvlist_new());
    const Value one = number(1);
    for (int i = 0; i < 100'000; ++i)
        add(items, ("x" + std::to_string(i)).c_str(), one);
    add(items, "a >", one);
    add(items, "x0 =", number(2));
    const Value any(oru_do_value_new_sequence(items.get()));
    const Nvlist clause(oru_do_nvlist_new());
    add(clause, " OR ", any);
    const auto made = from(clause);
    EXPECT_TRUE(holds(made, number(2)));
    EXPECT_FALSE(holds(made, number(1)));
    EXPECT_EQ(text_of(made).substr(0, 24), "(x0.values(1|2) or x1.va");
}

TEST(ConditionWhere, LikeLooksForAPattern) {
    const auto like = [](const char *pattern, const char *subject) {
        const auto made = from(where(Item{"a like", text(pattern)}));
        return holds(made, text(subject));
    };
    EXPECT_TRUE(like("ell", "hello"));
    EXPECT_FALSE(like("elo", "hello"));
    EXPECT_TRUE(like("^hel%o$", "helllo"));  // hel*o
    EXPECT_TRUE(like("^hel%o$", "heo"));
    EXPECT_FALSE(like("^hel%o$", "helxo"));
    EXPECT_TRUE(like("^50%%", "50% off"));  // ^50%
    EXPECT_FALSE(like("^50%%", "500"));
    EXPECT_TRUE(like("^a%%b", "a%x"));  // ends behind the first of the pair
    EXPECT_TRUE(like("l%", "50 l%"));   // the last character stands for itself
    EXPECT_FALSE(like("l%", "ll"));
    EXPECT_TRUE(like("", "anything"));
}

TEST(ConditionWhere, PatternThatBeginsWithPercentHasNothingToRepeat) {
    const TraceCapture traces;
    const auto made = from(where(Item{"a LIKE", text("%ello")}));
    EXPECT_TRUE(traces.has(3, "Failed to compile regex\n"));
    EXPECT_FALSE(holds(made, text("hello")));
}

TEST(ConditionWhere, TextOfAPatternIsWhatWasCompiled) {
    EXPECT_EQ(text_of(from(where(Item{"a LIKE", text("x%y%")}, Item{"a LiKe", text("u%%v")}))),
              "regex(x*y%) and regex(u%)");
}

TEST(ConditionWhere, LikeTakesStringsOnly) {
    const auto made = from(where(Item{"a LIKE", number(1)}, Item{"b =", number(2)}));
    EXPECT_EQ(text_of(made), "b.values(2)");
    EXPECT_TRUE(holds(made, text("x"), number(2)));
    const auto pattern = from(where(Item{"a LIKE", text("1")}));
    EXPECT_FALSE(holds(pattern, number(1)));
}

TEST(ConditionWhere, LikeInAnOrGroupIsATermOfItsOwn) {
    const auto made =
        from(where(Item{" OR ", group(Item{"a =", text("x")}, Item{"a LIKE", text("^y")},
                                      Item{"a =", text("z")})}));
    EXPECT_EQ(text_of(made), "(a.values(x|z) or regex(^y))");
    for (const char *subject : {"x", "yy", "z"})
        EXPECT_TRUE(holds(made, text(subject))) << subject;
    EXPECT_FALSE(holds(made, text("zz")));
}

TEST(ConditionWhere, PatternThatDoesNotCompileIsReportedAndFalse) {
    const TraceCapture traces;
    const auto made = from(where(Item{"a LIKE", text("[")}));
    EXPECT_TRUE(traces.has(3, "Failed to compile regex\n"));
    EXPECT_EQ(traces.at(7), Lines{});
    EXPECT_FALSE(holds(made, text("[")));
    EXPECT_EQ(text_of(made), "regex([)");
}

TEST(ConditionWhere, TextIsKept) {
    const auto made = from(where(Item{"a", number(1)}, Item{"b <>", number(2)}));
    const char *first = oru_do_condition_get_expr(made.get());
    EXPECT_STREQ(first, "a.values(1) and b.values()");
    EXPECT_EQ(oru_do_condition_get_expr(made.get()), first);
    EXPECT_EQ(text_of(from(where())), "");
}

TEST(ConditionWhere, TreeHasANodeForEachItem) {
    const auto made = from(where(Item{"a >=", number(1)}, Item{"b LIKE", text("x%y")},
                                 Item{" OR ", group(Item{"c !", number(2)})}));
    const ConditionRecord &record = record_of(made);
    EXPECT_EQ(record.expr, nullptr);
    EXPECT_EQ(record.root->type, 1);
    EXPECT_EQ(record.root->op_str, nullptr);
    const NodeRecord *node = record.root->first_child;
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->type, 10);
    EXPECT_STREQ(oru_do_name_get_strname(node->prop_name), "a");
    EXPECT_EQ(node->token_count, 0);
    EXPECT_EQ(oru_do_range_el_get_op(oru_do_range_get_range_el(node->range)), 6);
    node = node->next;
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->type, 13);
    EXPECT_STREQ(oru_do_name_get_strname(node->prop_name), "b");
    ASSERT_EQ(node->token_count, 1);
    EXPECT_STREQ(node->tokens[0], "x*y");
    EXPECT_NE(node->regex, nullptr);
    EXPECT_EQ(node->range, nullptr);
    node = node->next;
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->type, 2);
    EXPECT_EQ(node->next, nullptr);
    ASSERT_NE(node->first_child, nullptr);
    EXPECT_EQ(node->first_child->type, 10);
    ORUDoRange *unknown = node->first_child->range;
    ASSERT_NE(oru_do_range_get_range_el(unknown), nullptr);
    EXPECT_EQ(oru_do_range_el_get_op(oru_do_range_get_range_el(unknown)), 0);
}

TEST(ConditionWhere, NamesNoPropertiesAndLeavesItsItemsAlone) {
    const Nvlist list = where(Item{"a >=", number(1)}, Item{" AND ", group()});
    const auto made = from(list);
    EXPECT_EQ(names_of(oru_do_condition_get_ext_prop_names(made.get())), Lines{});
    EXPECT_STREQ(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list.get(), 0)), "a >=");
}

TEST(ConditionWhere, ValueOfAnyTypeIsCompared) {
    const Vlist elements(oru_do_vlist_new());
    oru_do_vlist_add_long(elements.get(), 1);
    const Value list(oru_do_value_new_array(elements.get()));
    for (const Value *value : {&list}) {
        const auto made = from(where(Item{"a =", Value(oru_do_value_ref(value->get()))}));
        EXPECT_TRUE(holds(made, *value));
        EXPECT_FALSE(holds(made, number(1)));
    }
    EXPECT_FALSE(holds(from(where(Item{"a =", null()})), null()));  // null has no order
}

TEST(ConditionWhere, NullListIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_condition_new_from_where(nullptr), "nvlist");
}

TEST(ConditionWhere, WithoutMemoryTheRestIsLeftOutAndNothingMoreIsSelected) {
    const Nvlist list = where(Item{"a >", number(1)},
                              Item{" OR ", group(Item{"b =", number(2)}, Item{"b =", number(3)})},
                              Item{"a LIKE", text("x%y")});
    const std::string whole = "a.values(1:*) and (b.values(2|3)) and regex(x*y)";
    sweep_oom(
        [&] {
            const auto made = from(list);
            EXPECT_TRUE(made != nullptr || oom_hit());
            if (made == nullptr)
                return;
            const char *text = oru_do_condition_get_expr(made.get());
            EXPECT_TRUE(text != nullptr || oom_hit());
            EXPECT_TRUE(oom_hit() || text == whole);
        },
        {.at_least = 15});
}

int32_t cut(const char *item, std::string &name) {
    std::string copy = item;
    const int32_t op = oru_do_where_util_extract_op(copy.data());
    name = copy.c_str();
    return op;
}

TEST(WhereName, EndsInFrontOfItsOperator) {
    struct Row {
        const char *item;
        int32_t op;
        const char *name;
    };
    constexpr Row kRows[] = {
        {"mtu", 1, "mtu"},
        {"mtu ", 1, "mtu"},
        {"mtu   ", 1, "mtu"},
        {"mtu =", 1, "mtu"},
        {"mtu=", 1, "mtu"},
        {"mtu  =", 1, "mtu"},
        {"mtu <>", 2, "mtu"},
        {"mtu >", 3, "mtu"},
        {"mtu>", 3, "mtu"},
        {"mtu <", 4, "mtu"},
        {"mtu >=", 5, "mtu"},
        {"mtu<=", 6, "mtu"},
        {"mtu LIKE", 7, "mtu"},
        {"mtu like", 7, "mtu"},
        {"mtu LiKe", 7, "mtu"},
        {" AND ", 8, ""},
        {" and ", 8, ""},
        {" OR ", 9, ""},
        {" Or ", 9, ""},
        {"   OR ", 9, ""},
        {"x OR ", 9, "x"},
        {" AND", 0, ""},
        {"AND", 1, "AND"},
        {"AND ", 1, "AND"},
        {"mtu = ", 0, "mtu"},
        {"mtu !=", 0, "mtu"},
        {"mtu LIKES", 0, "mtu"},
        {"mtu ><", 0, "mtu"},
        {"", 1, ""},
        {"= ", 0, ""},
        {"a\tb", 1, "a\tb"},
    };
    for (const Row &row : kRows) {
        std::string name;
        EXPECT_EQ(cut(row.item, name), row.op) << row.item;
        EXPECT_EQ(name, row.name) << row.item;
    }
}

TEST(WhereName, IsForANameThatStandsInFrontOfTheOperator) {
    EXPECT_NE(oru_do_where_is_for_name("mtu >=", "mtu"), 0);
    EXPECT_NE(oru_do_where_is_for_name("mtu", "mtu"), 0);
    EXPECT_NE(oru_do_where_is_for_name("mtu<>", "mtu"), 0);
    EXPECT_NE(oru_do_where_is_for_name(" AND ", ""), 0);
    EXPECT_EQ(oru_do_where_is_for_name("mtu >=", "mt"), 0);
    EXPECT_EQ(oru_do_where_is_for_name("mt >=", "mtu"), 0);
    EXPECT_EQ(oru_do_where_is_for_name("MTU", "mtu"), 0);
    EXPECT_EQ(oru_do_where_is_for_name("mtu >=", "mtu >="), 0);
}

TEST(WhereName, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_where_util_extract_op(nullptr), "name");
    EXPECT_ASSERTION(oru_do_where_is_for_name(nullptr, "a"), "item_name");
    EXPECT_ASSERTION(oru_do_where_is_for_name("a", nullptr), "name");
}

}  // namespace
