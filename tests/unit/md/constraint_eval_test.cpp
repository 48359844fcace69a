// Values against constraints and lists of them; the bounds of types.
#include <oru/nvlist.h>
#include <oruplatform/poolheap.h>

#include <cstdint>

#include "oru/constraint.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/md/constraint_support.h"

namespace {

using namespace oru::test;

int32_t eval(const Constraint &constraint, const Value &value) {
    return oru_do_constraint_eval(constraint.get(), nullptr, value.get(), nullptr);
}

Name name(const char *text) {
    return Name(oru_do_name_new(text));
}

Value array_of(std::initializer_list<const Value *> values) {
    const Vlist list(oru_do_vlist_new());
    for (const auto *value : values)
        oru_do_vlist_add(list.get(), value->get());
    return Value(oru_do_value_new_array(list.get()));
}

/* ---- One constraint ---- */

TEST(ConstraintEval, NullConstraintAcceptsEverything) {
    EXPECT_EQ(oru_do_constraint_eval(nullptr, nullptr, number(1).get(), nullptr), 0);
    EXPECT_EQ(oru_do_constraint_eval(nullptr, nullptr, nullptr, nullptr), 0);
}

TEST(ConstraintEval, NumberHasToBeInItsRange) {
    const auto c = constraint("values(1..5|9)", kInt);
    EXPECT_EQ(eval(c, Value(oru_do_value_new_int(5))), 0);
    EXPECT_EQ(eval(c, Value(oru_do_value_new_int(9))), 0);
    EXPECT_EQ(eval(c, Value(oru_do_value_new_int(6))), 114);
    EXPECT_EQ(eval(c, number(3)), 0);  // integers compare whatever their width
    EXPECT_EQ(eval(c, Value(oru_do_value_new_double(3))), 114);
}

TEST(ConstraintEval, OnlyTheirOwnPartsConcernNumbers) {
    EXPECT_EQ(eval(constraint("size(1)strlen(1)regex(x)"), number(5)), 0);
    EXPECT_EQ(eval(constraint(""), number(5)), 0);
}

// An empty range tells which types look at it.
TEST(ConstraintEval, EveryTypeHasItsRule) {
    const auto c = constraint("values()");
    const Uri uri(oru_do_uri_new("/a"));
    const uint8_t bytes[] = {1, 2, 3, 4};
    ORUDoValue *const ranged[] = {
        oru_do_value_new_default(),
        oru_do_value_new_unsigned_byte(1),
        oru_do_value_new_byte(1),
        oru_do_value_new_unsigned_short(1),
        oru_do_value_new_short(1),
        oru_do_value_new_unsigned_int(1),
        oru_do_value_new_int(1),
        oru_do_value_new_unsigned_long(1),
        oru_do_value_new_long(1),
        oru_do_value_new_string("1"),
        oru_do_value_new_boolean(1),
        oru_do_value_new_float(1),
        oru_do_value_new_double(1),
        oru_do_value_new_datetime(1),
        oru_do_value_new_duration(1),
        oru_do_value_new_any_uri(uri.get()),
        oru_do_value_new_hex_binary(bytes, 4),
        oru_do_value_new_ip_address(bytes, 4),
        oru_do_value_new_nsap_address(bytes, 4),
        oru_do_value_new_enumeration("a"),
        oru_do_value_new_mr_uri(uri.get()),
        oru_do_value_new_coll_uri(uri.get()),
    };
    for (ORUDoValue *made : ranged) {
        const Value value(made);
        EXPECT_EQ(eval(c, value), 114) << oru_do_value_get_type(made);
        EXPECT_EQ(eval(constraint(""), value), 0) << oru_do_value_get_type(made);
    }
    const Nvlist members(oru_do_nvlist_new());
    const Vlist words(oru_do_vlist_new());
    ORUDoValue *const free[] = {oru_do_value_new_null(), oru_do_value_new_choice(members.get()),
                                oru_do_value_new_sequence(members.get()),
                                oru_do_value_new_bits(words.get())};
    for (ORUDoValue *made : free)
        EXPECT_EQ(eval(c, Value(made)), 0) << oru_do_value_get_type(made);
    EXPECT_EQ(eval(c, Value()), 0);
}

TEST(ConstraintEval, EnumerationAndUriCompareWithTheirBounds) {
    EXPECT_EQ(eval(constraint("values(up|down)", kEnumeration),
                   Value(oru_do_value_new_enumeration("up"))),
              0);
    EXPECT_EQ(eval(constraint("values(up|down)", kEnumeration),
                   Value(oru_do_value_new_enumeration("left"))),
              114);
    EXPECT_EQ(eval(constraint("values(10.0.0.1..10.0.0.9)"),
                   Value(oru_do_value_new_ip_address("\x0a\0\0\x05", 4))),
              0);
    const Uri uri(oru_do_uri_new("/a"));
    EXPECT_EQ(eval(constraint("values(a)", kString), Value(oru_do_value_new_mr_uri(uri.get()))),
              114);
}

TEST(ConstraintEval, StringIsHeldAgainstValuesThenLengthThenPattern) {
    const auto c = constraint("values(aa|bb|ab|abab)strlen(2)regex(b$)", kString);
    EXPECT_EQ(eval(c, text("cc")), 114);
    EXPECT_EQ(eval(c, text("abab")), 115);
    EXPECT_EQ(eval(c, text("aa")), 116);
    EXPECT_EQ(eval(c, text("ab")), 0);
}

TEST(ConstraintEval, LengthIsInBytes) {
    EXPECT_EQ(eval(constraint("strlen(2)"), text("\xc3\xa9")), 0);
    EXPECT_EQ(eval(constraint("strlen(0)"), text("")), 0);
    EXPECT_EQ(eval(constraint("strlen(1..*)"), text("")), 115);
}

TEST(ConstraintEval, PatternIsSearchedFor) {
    EXPECT_EQ(eval(constraint("regex(b)"), text("abc")), 0);
    EXPECT_EQ(eval(constraint("regex(^b$)"), text("abc")), 116);
    EXPECT_EQ(eval(constraint("regex(^[a-z]+[0-9]?$)"), text("abc1")), 0);
}

TEST(ConstraintEval, StringWithoutATextIsNoneOfTheValues) {
    poolheap_fail_nth(2, 0);
    const Value value(oru_do_value_new_string("a"));
    poolheap_fail_off();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(eval(constraint(""), value), 114);
}

TEST(ConstraintEval, ArrayHasASizeAndElements) {
    const auto c = constraint("size(1..2)values(1..5)", kInt);
    EXPECT_EQ(eval(c, array_of({})), 113);
    const auto one = number(1);
    const auto five = number(5);
    const auto six = number(6);
    EXPECT_EQ(eval(c, array_of({&one, &five})), 0);
    EXPECT_EQ(eval(c, array_of({&one, &five, &five})), 113);
    EXPECT_EQ(eval(c, array_of({&six, &six, &six})), 113);
    EXPECT_EQ(eval(c, array_of({&one, &six})), 114);
}

TEST(ConstraintEval, FirstElementThatDoesNotFitDecides) {
    const auto c = constraint("strlen(1)regex(a)");
    const auto a = text("a");
    const auto bb = text("bb");
    const auto b = text("b");
    EXPECT_EQ(eval(c, array_of({&a, &b, &bb})), 116);
    EXPECT_EQ(eval(c, array_of({&a, &bb, &b})), 115);
}

TEST(ConstraintEval, EmptyArrayPassesWithoutASize) {
    EXPECT_EQ(eval(constraint("values()strlen(9)regex(a)"), array_of({})), 0);
}

TEST(ConstraintEval, ArraysInArraysAreEvaluatedAlike) {
    const auto five = number(5);
    const auto inner = array_of({&five, &five});
    EXPECT_EQ(eval(constraint("size(2)"), array_of({&inner, &inner})), 0);
    EXPECT_EQ(eval(constraint("size(2)"), array_of({&inner, &five})), 0);
    EXPECT_EQ(eval(constraint("size(1)"), array_of({&inner})), 113);
    EXPECT_EQ(eval(constraint("values(5)"), array_of({&inner})), 0);
    EXPECT_EQ(eval(constraint("values(4)"), array_of({&inner})), 114);
}

/* ---- Conditions ---- */

TEST(ConstraintEval, ConditionThatIsFalseMakesItNotApplicable) {
    const auto c = guarded("b.values(1)", "values(1..5)");
    const auto on = properties({{"b", 1}});
    const auto off = properties({{"b", 2}});
    const auto x = name("x");
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), number(9).get(), on.get()), 114);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), number(9).get(), off.get()), 131);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), number(9).get(), nullptr), 131);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), nullptr, off.get()), 131);
    EXPECT_NE(oru_do_constraint_is_applicable(c.get(), x.get(), on.get()), 0);
    EXPECT_EQ(oru_do_constraint_is_applicable(c.get(), x.get(), off.get()), 0);
    EXPECT_NE(oru_do_constraint_is_applicable(c.get(), nullptr, off.get()), 0);  // no name
    EXPECT_NE(oru_do_constraint_is_applicable(constraint("").get(), nullptr, nullptr), 0);
}

TEST(ConstraintEval, NameIsThatOfAPartWithoutOne) {
    const auto c = guarded("values(1)", "values(1..5)");
    const auto props = properties({{"a", 1}, {"b", 2}});
    EXPECT_EQ(oru_do_constraint_eval(c.get(), name("a").get(), number(9).get(), props.get()), 114);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), name("b").get(), number(9).get(), props.get()), 131);
}

TEST(ConstraintEval, ElementsAreEvaluatedWithoutProperties) {
    const auto c = guarded("b.values(1)", "values(1..5)");
    const auto props = properties({{"b", 1}});
    const auto x = name("x");
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), array(1).get(), props.get()), 131);
    EXPECT_EQ(oru_do_constraint_eval(c.get(), x.get(), array(0).get(), props.get()), 0);
}

TEST(ConstraintDefault, HoldsWhenTheConditionDoes) {
    const auto plain = constraint("default(5)", kInt);
    const auto conditional = guarded("b.values(1)", "default(5)", kInt);
    const auto none = guarded("b.values(1)", "values(5)", kInt);
    EXPECT_EQ(oru_do_constraint_get_type(plain.get()), 0);
    EXPECT_EQ(oru_do_constraint_get_type(conditional.get()), 1);
    EXPECT_EQ(oru_do_constraint_get_type(none.get()), -1);
    EXPECT_EQ(oru_do_constraint_get_type(constraint("default(x)", kInt).get()), -1);
    const auto on = properties({{"b", 1}});
    const auto off = properties({{"b", 2}});
    const auto x = name("x");
    EXPECT_EQ(text_of(oru_do_constraint_get_default(plain.get(), nullptr, nullptr)), "5");
    EXPECT_EQ(text_of(oru_do_constraint_get_default(conditional.get(), x.get(), on.get())), "5");
    EXPECT_EQ(oru_do_constraint_get_default(conditional.get(), x.get(), off.get()), nullptr);
    EXPECT_EQ(oru_do_constraint_get_default(none.get(), x.get(), on.get()), nullptr);
    EXPECT_NE(oru_do_constraint_get_default_value(conditional.get()), nullptr);
}

/* ---- Lists ---- */

class Lists : public testing::Test {
  protected:
    int32_t eval(const ConstraintList &list, int64_t n, const Properties &props) {
        return oru_do_constraint_list_eval(list.get(), x.get(), number(n).get(), props.get());
    }
    const Constraint first = guarded("b.values(1)", "values(1..5)");
    const Constraint second = guarded("c.values(1)", "values(6..9)");
    const Constraint third = constraint("values(0)");
    const Properties none = properties({});
    const Name x = name("x");
};

TEST_F(Lists, NoneAcceptsEverything) {
    EXPECT_EQ(oru_do_constraint_list_eval(nullptr, nullptr, number(1).get(), nullptr), 0);
    EXPECT_EQ(eval(list_of({}), 1, none), 0);
}

TEST_F(Lists, FirstApplicableConstraintAloneDecides) {
    const auto list = list_of({&first, &second, &third});
    EXPECT_EQ(eval(list, 0, none), 0);
    EXPECT_EQ(eval(list, 5, none), 114);
    EXPECT_EQ(eval(list, 5, properties({{"b", 1}})), 0);
    EXPECT_EQ(eval(list, 0, properties({{"b", 1}, {"c", 1}})), 114);
    EXPECT_EQ(eval(list, 6, properties({{"c", 1}})), 0);
    EXPECT_EQ(eval(list, 0, properties({{"c", 1}})), 114);
}

TEST_F(Lists, WithoutAnApplicableOneEverythingPasses) {
    EXPECT_EQ(eval(list_of({&first, &second}), 100, none), 0);
}

TEST_F(Lists, ElementThatIsNotApplicableLetsTheNextDecide) {
    const auto props = properties({{"b", 1}});
    const auto list = list_of({&first, &third});
    EXPECT_EQ(oru_do_constraint_list_eval(list.get(), x.get(), array(2).get(), props.get()), 114);
    EXPECT_EQ(oru_do_constraint_list_eval(list.get(), x.get(), array(1).get(), props.get()), 0);
}

TEST_F(Lists, FindTheApplicableConstraint) {
    const auto list = list_of({&first, &second, &third});
    const auto find = [&](const Properties &props) {
        return oru_do_constraint_list_appl_constraint(list.get(), x.get(), props.get());
    };
    EXPECT_EQ(find(none), third.get());
    EXPECT_EQ(find(properties({{"c", 1}})), second.get());
    EXPECT_EQ(find(properties({{"b", 1}, {"c", 1}})), first.get());
    EXPECT_EQ(oru_do_constraint_list_appl_constraint(list_of({&first}).get(), x.get(), none.get()),
              nullptr);
    EXPECT_EQ(oru_do_constraint_list_appl_constraint(list_of({}).get(), nullptr, nullptr), nullptr);
}

TEST_F(Lists, GiveTheFirstDefaultThatHolds) {
    const auto one = guarded("b.values(1)", "default(1)", kInt);
    const auto two = constraint("default(2)", kInt);
    const auto list = list_of({&third, &one, &two});
    const auto get = [&](const Properties &props) {
        return text_of(oru_do_constraint_list_get_default(list.get(), x.get(), props.get()));
    };
    EXPECT_EQ(get(none), "2");
    EXPECT_EQ(get(properties({{"b", 1}})), "1");
    EXPECT_EQ(
        oru_do_constraint_list_get_default(list_of({&third, &one}).get(), x.get(), none.get()),
        nullptr);
}

TEST_F(Lists, TellWhatDefaultsTheyHave) {
    const auto conditional = guarded("b.values(1)", "default(1)", kInt);
    const auto plain = constraint("default(2)", kInt);
    const auto type = [](const ConstraintList &list) {
        return oru_do_constraint_list_get_default_type(list.get());
    };
    EXPECT_EQ(type(list_of({})), -1);
    EXPECT_EQ(type(list_of({&third, &first})), -1);
    EXPECT_EQ(type(list_of({&third, &plain})), 0);
    EXPECT_EQ(type(list_of({&conditional, &plain})), 1);
    EXPECT_EQ(type(list_of({&plain, &conditional, &third})), 1);
}

TEST_F(Lists, TellWhetherASizeIsLimited) {
    const auto sized = guarded("b.values(1)", "size(x)");
    const auto has = [](const ConstraintList &list) {
        return oru_do_constraint_list_has_size_constraint(list.get());
    };
    EXPECT_EQ(has(list_of({})), 0);
    EXPECT_EQ(has(list_of({&first, &third})), 0);
    EXPECT_EQ(has(list_of({&first, &sized})), 1);
}

class CondPropNames : public Lists {
  protected:
    std::vector<std::string> gathered(const ConstraintList &list, int32_t kind) {
        ORUDoNlist *names = nullptr;
        EXPECT_EQ(oru_do_constraint_list_get_cond_prop_names(list.get(), kind, &names), 0);
        if (names == nullptr)
            return {"(null)"};
        const auto out = names_of(names);
        oru_do_nlist_deref(names);
        return out;
    }
};

TEST_F(CondPropNames, AreThoseOfTheConstraintsOfTheirKind) {
    const auto with_default = guarded("d.values(1) or e.values(2)", "default(1)", kInt);
    const auto plain_default = constraint("default(1)", kInt);
    const auto list = list_of({&first, &second, &third, &with_default, &plain_default});
    EXPECT_EQ(gathered(list, -1), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(gathered(list, 1), (std::vector<std::string>{"d", "e"}));
    EXPECT_EQ(gathered(list, 0), (std::vector<std::string>{"(null)"}));
}

TEST_F(CondPropNames, ComeOnce) {
    const auto again = guarded("c.values(1) and b.values(1) and z.is_null()", "values(1)");
    EXPECT_EQ(gathered(list_of({&first, &again}), -1), (std::vector<std::string>{"b", "c", "z"}));
}

TEST_F(CondPropNames, WithoutANameNoListIsMade) {
    const auto nameless = guarded("values(1)", "values(1)");
    EXPECT_EQ(gathered(list_of({&nameless, &third}), -1), (std::vector<std::string>{"(null)"}));
}

TEST_F(CondPropNames, GoBehindThoseThatAreThere) {
    Nlist names(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), "c");
    ORUDoNlist *held = names.get();
    EXPECT_EQ(
        oru_do_constraint_list_get_cond_prop_names(list_of({&first, &second}).get(), -1, &held), 0);
    EXPECT_EQ(held, names.get());
    EXPECT_EQ(names_of(held), (std::vector<std::string>{"c", "b"}));
}

TEST_F(CondPropNames, WithoutMemoryTheCodeSaysSo) {
    const auto list = list_of({&first, &second});
    sweep_oom([&] {
        ORUDoNlist *names = nullptr;
        const int32_t code = oru_do_constraint_list_get_cond_prop_names(list.get(), -1, &names);
        EXPECT_EQ(code, oom_hit() ? 10002 : 0);
        oru_do_nlist_deref(names);
    });
}

TEST_F(Lists, NullIsRefusedByName) {
    ORUDoNlist *names = nullptr;
    const auto list = list_of({});
    EXPECT_ASSERTION(oru_do_constraint_is_applicable(nullptr, nullptr, nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_default(nullptr, nullptr, nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_list_appl_constraint(nullptr, nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_get_default(nullptr, nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_get_default_type(nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_has_size_constraint(nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_get_cond_prop_names(nullptr, 0, &names), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_get_cond_prop_names(list.get(), 0, nullptr), "nlist");
}

TEST_F(Lists, WithoutMemoryLengthsFitNoRange) {
    const auto c = constraint("strlen(1)size(1)");
    const auto a = text("a");
    const auto one = array(1);
    sweep_oom([&] {
        const int32_t code = ::oru_do_constraint_eval(c.get(), nullptr, a.get(), nullptr);
        EXPECT_EQ(code, oom_hit() ? 115 : 0);
    });
    sweep_oom([&] {
        const int32_t code = ::oru_do_constraint_eval(c.get(), nullptr, one.get(), nullptr);
        EXPECT_EQ(code, oom_hit() ? 113 : 0);
    });
}

/* ---- Bounds ---- */

TEST(TypeBounds, SignedIntegers) {
    struct Row {
        int32_t type;
        int64_t min, max;
    };
    const Row rows[] = {
        {1, -128, 127},
        {3, -32768, 32767},
        {5, -2147483648ll, 2147483647},
        {7, INT64_MIN, INT64_MAX},
        {12, INT64_MIN, INT64_MAX},
        {13, INT64_MIN, INT64_MAX},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(oru_do_constraint_get_min_signed_int_num(row.type), row.min) << row.type;
        EXPECT_EQ(oru_do_constraint_get_max_signed_int_num(row.type), row.max) << row.type;
    }
    for (int32_t type : {-3, -1, 0, 2, 4, 6, 8, 9, 10, 11, 14, 103, 1000}) {
        EXPECT_EQ(oru_do_constraint_get_min_signed_int_num(type), 0) << type;
        EXPECT_EQ(oru_do_constraint_get_max_signed_int_num(type), 0) << type;
    }
}

TEST(TypeBounds, UnsignedIntegers) {
    EXPECT_EQ(oru_do_constraint_get_max_unsigned_int_num(0), 255u);
    EXPECT_EQ(oru_do_constraint_get_max_unsigned_int_num(2), 65535u);
    EXPECT_EQ(oru_do_constraint_get_max_unsigned_int_num(4), 4294967295u);
    EXPECT_EQ(oru_do_constraint_get_max_unsigned_int_num(6), 18446744073709551615u);
    for (int32_t type : {-3, -2, -1, 1, 3, 5, 7, 8, 10, 100})
        EXPECT_EQ(oru_do_constraint_get_max_unsigned_int_num(type), 0u) << type;
}

TEST(TypeBounds, FloatsBeginAtTheLeastPositiveNormalNumber) {
    EXPECT_EQ(oru_do_constraint_get_min_float_num(10), 1.1754943508222875e-38);
    EXPECT_EQ(oru_do_constraint_get_max_float_num(10), 3.4028234663852886e38);
    EXPECT_EQ(oru_do_constraint_get_min_float_num(11), 2.2250738585072014e-308);
    EXPECT_EQ(oru_do_constraint_get_max_float_num(11), 1.7976931348623157e308);
    for (int32_t type : {-1, 7, 9, 12}) {
        EXPECT_EQ(oru_do_constraint_get_min_float_num(type), 0) << type;
        EXPECT_EQ(oru_do_constraint_get_max_float_num(type), 0) << type;
    }
}

}  // namespace
