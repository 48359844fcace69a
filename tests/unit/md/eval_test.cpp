// Values and resources against the metadata.
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>

#include <cmath>
#include <initializer_list>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/constraint_support.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

using Attr = std::unique_ptr<ORUMdAttrMeta, Deref<oru_md_delete_attr_meta>>;
using Type = std::unique_ptr<ORUMdTypedefMeta, Deref<oru_md_delete_typedef_meta>>;

Attr attr(int32_t typecode, int32_t multiplicity = 1, const char *name = "a") {
    const Name attr_name(oru_do_name_new(name));
    auto *prop = oru_do_prop_meta_new(attr_name.get(), ORU_PROP_CONFIG, 0, 0, nullptr, typecode,
                                      attr_name.get(), multiplicity, 0, 7, 1);
    Attr made(oru_md_new_attr_meta(attr_name.get(), nullptr, prop));
    oru_do_prop_meta_deref(prop);
    return made;
}

void add_constraint(const Attr &attr, const Constraint &constraint) {
    if (oru_md_has_attr_constraints(attr.get()) == 0)
        oru_do_prop_meta_set_constraint_list(attr->prop_meta, list_of({}).get());
    oru_do_constraint_list_add(oru_md_get_attr_constraints(attr.get()), constraint.get());
}

int32_t eval(const Attr &attr, ORUDoValue *made, ORUDoProperties *props = nullptr) {
    const Value value(made);
    return oru_md_eval_attr_constraint(attr.get(), value.get(), props);
}

ORUDoValue *array_of(std::initializer_list<ORUDoValue *> made) {
    const Vlist list(oru_do_vlist_new());
    for (auto *each : made)
        oru_do_vlist_add(list.get(), Value(each).get());
    return oru_do_value_new_array(list.get());
}

/* ---- Types of one value ---- */

TEST(EvalType, EqualTypesPass) {
    EXPECT_EQ(eval(attr(5), oru_do_value_new_int(1)), 0);
    EXPECT_EQ(eval(attr(8), oru_do_value_new_string("a")), 0);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_float(0)), 0);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_float(-1)), 0);
    const Nvlist members(oru_do_nvlist_new());
    EXPECT_EQ(eval(attr(104), oru_do_value_new_choice(members.get())), 0);  // of no known type
    EXPECT_EQ(eval(attr(5, 2), oru_do_value_new_int(1)), 0);
}

TEST(EvalType, NullPassesWithEveryType) {
    for (int32_t type : {-3, 0, 5, 8, 9, 10, 15, 101, 103, 105, 106, 107}) {
        EXPECT_EQ(eval(attr(type), oru_do_value_new_null()), 0) << type;
        EXPECT_EQ(eval(attr(type, 2), oru_do_value_new_null()), 0) << type;
        EXPECT_EQ(eval(attr(type), nullptr), 0) << type;
    }
}

TEST(EvalType, SignedIntegersFitByTheirBounds) {
    const auto n = oru_do_value_new_long;
    EXPECT_EQ(eval(attr(1), n(-128)), 0);
    EXPECT_EQ(eval(attr(1), n(-129)), 119);
    EXPECT_EQ(eval(attr(1), n(127)), 0);
    EXPECT_EQ(eval(attr(1), n(128)), 119);
    EXPECT_EQ(eval(attr(3), n(32768)), 119);
    EXPECT_EQ(eval(attr(5), n(2147483647)), 0);
    EXPECT_EQ(eval(attr(5), n(2147483648)), 119);
    EXPECT_EQ(eval(attr(5), n(-2147483649)), 119);
    EXPECT_EQ(eval(attr(7), oru_do_value_new_byte(-1)), 0);
    EXPECT_EQ(eval(attr(12), n(INT64_MIN)), 0);
    EXPECT_EQ(eval(attr(5), oru_do_value_new_datetime(5)), 0);
    EXPECT_EQ(eval(attr(1), oru_do_value_new_duration(128)), 119);
}

TEST(EvalType, UnsignedIntegersFitByTheirMaximum) {
    EXPECT_EQ(eval(attr(0), oru_do_value_new_unsigned_short(255)), 0);
    EXPECT_EQ(eval(attr(0), oru_do_value_new_unsigned_short(256)), 119);
    EXPECT_EQ(eval(attr(2), oru_do_value_new_unsigned_long(65536)), 119);
    EXPECT_EQ(eval(attr(4), oru_do_value_new_unsigned_long(1ull << 32)), 119);
    EXPECT_EQ(eval(attr(6), oru_do_value_new_unsigned_byte(255)), 0);
}

TEST(EvalType, OtherFloatingTypeHasToBePositiveAndNormal) {
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(1)), 0);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(0)), 119);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(-1)), 119);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(1e-39)), 119);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(1e39)), 119);
    EXPECT_EQ(eval(attr(10), oru_do_value_new_double(NAN)), 0);  // neither below nor above
    EXPECT_EQ(eval(attr(11), oru_do_value_new_float(1)), 0);
    EXPECT_EQ(eval(attr(11), oru_do_value_new_float(0)), 119);
}

TEST(EvalType, TextsPassForEachOther) {
    const Uri uri(oru_do_uri_new("/a"));
    for (int32_t type : {8, 103, 107, 108}) {
        EXPECT_EQ(eval(attr(type), oru_do_value_new_string("a")), 0) << type;
        EXPECT_EQ(eval(attr(type), oru_do_value_new_enumeration("a")), 0) << type;
        EXPECT_EQ(eval(attr(type), oru_do_value_new_mr_uri(uri.get())), 0) << type;
        EXPECT_EQ(eval(attr(type), oru_do_value_new_coll_uri(uri.get())), 0) << type;
        EXPECT_EQ(eval(attr(type), oru_do_value_new_any_uri(uri.get())), 118) << type;
    }
}

TEST(EvalType, OthersAreTold) {
    struct Row {
        int32_t type;
        ORUDoValue *value;
        const char *words;
    };
    const Row rows[] = {
        {5, oru_do_value_new_unsigned_int(1),
         "type 4 violates constraint for \"a\" (expected 5)\n"},
        {4, oru_do_value_new_int(1), "type 5 violates constraint for \"a\" (expected 4)\n"},
        {5, oru_do_value_new_double(1), "type 11 violates constraint for \"a\" (expected 5)\n"},
        {5, oru_do_value_new_string("1"), "type 8 violates constraint for \"a\" (expected 5)\n"},
        {9, oru_do_value_new_int(1), "type 5 violates constraint for \"a\" (expected 9)\n"},
        {5, oru_do_value_new_default(), "type -2 violates constraint for \"a\" (expected 5)\n"},
        {-3, oru_do_value_new_int(1), "type 5 violates constraint for \"a\" (expected -3)\n"},
        {5, array_of({}), "type 106 violates constraint for \"a\" (expected 5)\n"},
    };
    for (const auto &row : rows) {
        const auto a = attr(row.type);
        TraceCapture traces;
        EXPECT_EQ(eval(a, row.value), 118) << row.words;
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, row.words}}));
    }
}

TEST(EvalType, EntIdxPassesWhateverItsType) {
    const auto index = attr(5, 1, "entIdx");
    const auto text_index = attr(8, 1, "entIdx");
    TraceCapture traces;
    EXPECT_EQ(eval(index, oru_do_value_new_unsigned_int(1)), 0);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "encountered for entidx"}}));
    traces.clear();
    EXPECT_EQ(eval(text_index, oru_do_value_new_long(1)), 0);
    EXPECT_EQ(
        traces.lines(),
        (std::vector<Trace>{{3, "type 7 violates constraint for \"entIdx\" (expected 8)\n"}}));
    EXPECT_EQ(eval(index, oru_do_value_new_long(1ll << 40)), 119);  // of its kind, but too large
}

/* ---- Types of many values ---- */

TEST(EvalType, ElementsOfManyHaveTheTypeOfTheAttribute) {
    const auto many = attr(5, 2);
    EXPECT_EQ(eval(many, array_of({})), 0);
    EXPECT_EQ(eval(many, array_of({oru_do_value_new_int(1), oru_do_value_new_null()})), 0);
    EXPECT_EQ(eval(many, array_of({oru_do_value_new_int(1), oru_do_value_new_long(1)})), 119);
    EXPECT_EQ(eval(many, oru_do_value_new_long(1)), 119);
    EXPECT_EQ(eval(many, array_of({array_of({oru_do_value_new_int(1)})})), 0);
    EXPECT_EQ(eval(many, array_of({array_of({oru_do_value_new_long(1)})})), 119);
}

/* ---- Members ---- */

class EvalMembers : public testing::Test {
  protected:
    // A type with members of built-in types.
    static Type type(int32_t typecode, std::initializer_list<const char *> members) {
        Type made(oru_md_new_typedef_meta("T"));
        made->typecode = typecode;
        for (const char *name : members)
            oru_md_add_complex_el_meta(made.get(), name, "int", kInt);
        return made;
    }
    static Nvlist pairs(std::initializer_list<const char *> names) {
        Nvlist list(oru_do_nvlist_new());
        for (const char *name : names)
            oru_do_nvlist_add(list.get(), name, text("x").get());
        return list;
    }
    static int32_t eval_of(const Type &type, ORUDoValue *value) {
        auto a = attr(type->typecode);
        a->typedef_meta = type.get();
        return eval(a, value);
    }
    static int32_t sequence(const Type &type, std::initializer_list<const char *> names) {
        return eval_of(type, oru_do_value_new_sequence(pairs(names).get()));
    }
    static int32_t choice(const Type &type, std::initializer_list<const char *> names) {
        return eval_of(type, oru_do_value_new_choice(pairs(names).get()));
    }
};

TEST_F(EvalMembers, SequenceHasItsMembersInOrder) {
    const auto t = type(105, {"a", "b"});
    EXPECT_EQ(sequence(t, {"a", "b"}), 0);
    EXPECT_EQ(sequence(t, {"b", "a"}), 130);
    EXPECT_EQ(sequence(t, {"a"}), 130);
    EXPECT_EQ(sequence(t, {"a", "b", "c"}), 130);
    EXPECT_EQ(sequence(t, {}), 130);
}

TEST_F(EvalMembers, ChoiceHasOneOfItsMembers) {
    const auto t = type(104, {"a", "b"});
    EXPECT_EQ(choice(t, {"a"}), 0);
    EXPECT_EQ(choice(t, {"b"}), 0);
    EXPECT_EQ(choice(t, {"c"}), 120);
    EXPECT_EQ(choice(t, {"a", "b"}), 120);
    EXPECT_EQ(choice(t, {}), 120);
}

TEST_F(EvalMembers, TypeWithoutMembersTakesEverything) {
    EXPECT_EQ(sequence(type(105, {}), {"a"}), 0);
    EXPECT_EQ(choice(type(104, {}), {"a", "b"}), 0);
}

TEST_F(EvalMembers, WhatAMemberSaysOfItsValueIsDropped) {
    for (int32_t code : {104, 105}) {
        const auto t = type(code, {"a"});
        t->complex_els->constraint_list = list_of({}).release();
        oru_do_constraint_list_add(t->complex_els->constraint_list,
                                   constraint("values(1)regex(y)strlen(7)").get());
        EXPECT_EQ(code == 104 ? choice(t, {"a"}) : sequence(t, {"a"}), 0);
    }
}

TEST_F(EvalMembers, MemberOfAnotherKindIsToldAndPasses) {
    const auto inner_choice = type(104, {"x"});
    const auto inner_sequence = type(105, {"x"});
    const auto t = type(105, {"a", "b"});
    t->complex_els->typedef_meta = inner_choice.get();
    t->complex_els->next->typedef_meta = inner_sequence.get();
    TraceCapture traces;
    EXPECT_EQ(sequence(t, {"a", "b"}), 0);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to extract choice value (rc=101)\n"},
                                  {3, "Failed to extract sequence value (rc=101)\n"}}));
}

TEST_F(EvalMembers, MembersWithinMembersAreLookedAt) {
    const auto inner = type(104, {"x"});
    const auto deepest = type(105, {"y"});
    inner->complex_els->typedef_meta = deepest.get();
    const auto t = type(105, {"a"});
    t->complex_els->typedef_meta = inner.get();
    const Nvlist choice_pairs = pairs({"x"});
    const Value member(oru_do_value_new_choice(choice_pairs.get()));
    const Nvlist list(oru_do_nvlist_new());
    oru_do_nvlist_add(list.get(), "a", member.get());
    TraceCapture traces;
    EXPECT_EQ(eval_of(t, oru_do_value_new_sequence(list.get())), 0);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to extract sequence value (rc=101)\n"}}));
}

TEST_F(EvalMembers, MemberOfASimpleTypeIsPassedOver) {
    const auto simple = type(kInt, {});
    const auto t = type(105, {"a"});
    t->complex_els->typedef_meta = simple.get();
    TraceCapture traces;
    EXPECT_EQ(sequence(t, {"a"}), 0);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
}

TEST_F(EvalMembers, TypeThatHoldsItselfEndsWithTheValue) {
    const auto t = type(105, {"a"});
    t->complex_els->typedef_meta = t.get();
    Value value(oru_do_value_new_sequence(pairs({"a"}).get()));
    for (int i = 0; i < 200; ++i) {
        const Nvlist list(oru_do_nvlist_new());
        oru_do_nvlist_add(list.get(), "a", value.get());
        value.reset(oru_do_value_new_sequence(list.get()));
    }
    EXPECT_EQ(eval_of(t, value.release()), 0);
}

/* ---- Constraints and labels ---- */

TEST(EvalAttr, WithoutADescriptionNothingCanBeSaid) {
    auto a = attr(5);
    auto *prop = std::exchange(a->prop_meta, nullptr);
    EXPECT_EQ(eval(a, oru_do_value_new_int(1)), 112);
    a->prop_meta = prop;
}

TEST(EvalAttr, ConstraintsOfTheAttributeDecideLast) {
    const auto a = attr(5);
    add_constraint(a, guarded("b.values(1)", "values(1..5)", kInt));
    add_constraint(a, constraint("values(6..9)", kInt));
    const auto on = properties({{"b", 1}});
    EXPECT_EQ(eval(a, oru_do_value_new_int(5), on.get()), 0);
    EXPECT_EQ(eval(a, oru_do_value_new_int(6), on.get()), 114);
    EXPECT_EQ(eval(a, oru_do_value_new_int(6)), 0);
    EXPECT_EQ(eval(a, oru_do_value_new_int(5)), 114);
    EXPECT_EQ(eval(a, oru_do_value_new_string("5")), 118);
    EXPECT_EQ(eval(a, oru_do_value_new_null()), 0);
}

TEST(EvalAttr, NameOfTheAttributeIsTheDefaultName) {
    const auto a = attr(5);
    add_constraint(a, guarded("values(1)", "values(9)", kInt));
    const auto props = properties({{"a", 1}});
    EXPECT_EQ(eval(a, oru_do_value_new_int(5), props.get()), 114);
}

TEST(EvalAttr, ConstraintsOfTheTypeComeFirst) {
    const Type percent(oru_md_new_typedef_meta("Percent"));
    percent->typecode = kInt;
    const auto in_type = constraint("values(0..100)", kInt);
    percent->constraint_list = list_of({&in_type}).release();
    auto a = attr(5);
    a->typedef_meta = percent.get();
    add_constraint(a, constraint("size(1)values(50..200)", kInt));
    EXPECT_EQ(eval(a, oru_do_value_new_int(60)), 0);
    EXPECT_EQ(eval(a, oru_do_value_new_int(150)), 114);  // by the type
    EXPECT_EQ(eval(a, oru_do_value_new_int(40)), 114);   // by the attribute
}

class EvalLabels : public testing::Test {
  protected:
    EvalLabels() : type(oru_md_new_typedef_meta("State")) {
        type->typecode = kEnumeration;
        type->enums = oru_do_nvlist_new();
        oru_do_nvlist_add(type->enums, "up", number(1).get());
    }
    int32_t eval_label(ORUDoValue *value, int32_t multiplicity = 1) {
        auto a = attr(kEnumeration, multiplicity);
        a->typedef_meta = type.get();
        return eval(a, value);
    }
    const Type type;
};

TEST_F(EvalLabels, LabelHasToBeOneOfTheEnumeration) {
    EXPECT_EQ(eval_label(oru_do_value_new_enumeration("up")), 0);
    EXPECT_EQ(eval_label(oru_do_value_new_enumeration("left")), 117);
    EXPECT_EQ(eval_label(oru_do_value_new_string("up")), 112);
    EXPECT_EQ(eval_label(oru_do_value_new_null()), 0);
    EXPECT_EQ(eval_label(nullptr), 0);
}

TEST_F(EvalLabels, ElementsOfManyAreHeldAgainstTheTypeAlone) {
    EXPECT_EQ(eval_label(array_of({oru_do_value_new_enumeration("left")}), 2), 0);
    EXPECT_EQ(eval_label(array_of({oru_do_value_new_string("up")}), 2), 119);
    EXPECT_EQ(eval_label(oru_do_value_new_enumeration("up"), 2), 112);
    EXPECT_EQ(eval_label(oru_do_value_new_null(), 2), 0);
}

TEST_F(EvalLabels, ConstraintsOfTheTypeComeBeforeLabels) {
    const auto c = constraint("values(left)", kEnumeration);
    type->constraint_list = list_of({&c}).release();
    EXPECT_EQ(eval_label(oru_do_value_new_enumeration("up")), 114);
    EXPECT_EQ(eval_label(oru_do_value_new_enumeration("left")), 117);
}

TEST(EvalAttr, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_md_eval_attr_constraint(nullptr, nullptr, nullptr), "attr_meta");
}

/* ---- What applies ---- */

TEST(EvalAttr, FirstApplicableConstraintIsFound) {
    const auto a = attr(5);
    EXPECT_EQ(oru_md_get_attr_constraint(a.get(), nullptr), nullptr);
    const auto first = guarded("values(1)", "values(9)", kInt);
    const auto second = constraint("values(8)", kInt);
    add_constraint(a, first);
    add_constraint(a, second);
    EXPECT_EQ(oru_md_get_attr_constraint(a.get(), properties({{"a", 1}}).get()), first.get());
    EXPECT_EQ(oru_md_get_attr_constraint(a.get(), properties({{"a", 2}}).get()), second.get());
    EXPECT_EQ(oru_md_get_attr_constraint(a.get(), nullptr), second.get());
    EXPECT_ASSERTION(oru_md_get_attr_constraint(nullptr, nullptr), "attr_meta");
    EXPECT_ASSERTION(oru_md_get_ref_constraint(nullptr, nullptr), "ref_meta");
}

TEST(EvalAttr, TypeGivesItsFirstApplicableConstraint) {
    const Name name(oru_do_name_new("a"));
    const auto first = guarded("values(1)", "values(9)", kInt);
    const auto second = constraint("values(8)", kInt);
    const auto list = list_of({&first, &second});
    const Typedef type(oru_do_typedef_meta_new_builtin(kInt, list.get()));
    EXPECT_EQ(
        oru_do_typedef_meta_get_constraint(type.get(), name.get(), properties({{"a", 1}}).get()),
        first.get());
    EXPECT_EQ(oru_do_typedef_meta_get_constraint(type.get(), name.get(), nullptr), second.get());
    const Typedef plain(oru_do_typedef_meta_new_builtin(kInt, nullptr));
    EXPECT_EQ(oru_do_typedef_meta_get_constraint(plain.get(), name.get(), nullptr), nullptr);
    const Typedef labels(
        oru_do_typedef_meta_new_enum(name.get(), Nvlist(oru_do_nvlist_new()).get()));
    EXPECT_EQ(oru_do_typedef_meta_get_constraint(labels.get(), name.get(), nullptr), nullptr);
    EXPECT_ASSERTION(oru_do_typedef_meta_get_constraint(nullptr, nullptr, nullptr), "meta");
}

/* ---- Packages ---- */

class EvalPackage : public StoreTest {
  protected:
    void SetUp() override {
        load_lib(
            "<typeDef><simpleType name='Percent' base='int' constraint='values(0..100)'/>"
            "<enumerationType name='State'><e value='up' intValue='1'/>"
            "<e value='down' intValue='2'/></enumerationType></typeDef>" +
            resources(resource(
                "M",
                "<reference name='peer' targetIsA='M' targetRole='peer' constraint='size(1)'>"
                "<x/></reference>"
                "<configData>"
                "<attribute name='n' type='unsignedInt' constraint='values(-1..9)default(5)'><x/>"
                "</attribute>"
                "<attribute name='load' type='Percent' constraint='default(50)size(1)'><x/>"
                "</attribute>"
                "<attribute name='state' type='State' constraint='values(com.lib/State.up)'><x/>"
                "</attribute>"
                "<attribute name='code' type='int'><assert><condition>state.not_null() and "
                "n.values(1)</condition><constraint>values(com.lib/State.down)</constraint>"
                "</assert></attribute>"
                "<attribute name='extra' type='int'><assert><condition>load.values(1) or "
                "extra.is_null()</condition><constraint>default(7)</constraint></assert>"
                "</attribute>"
                "</configData>")));
        record = oru_md_get_mr_meta_by_name("com.lib/M");
        ASSERT_NE(record, nullptr);
        mr = record->do_mr_meta;
    }
    ORUDoConstraint *constraint_of(const char *name) {
        return oru_do_prop_meta_get_constraint(oru_do_mr_meta_get_prop_meta_str(mr, name), 0);
    }
    Constraint shared(const char *name) {
        return Constraint(oru_do_constraint_ref(constraint_of(name)));
    }
    int32_t eval_in(const char *name, ORUDoValue *made) {
        const Value value(made);
        return oru_md_eval_attr_constraint(oru_md_get_attr_meta_w_str(record, name), value.get(),
                                           nullptr);
    }
    // What is needed beside `props`.
    std::vector<std::string> extra(const Properties &props, int32_t kind, int32_t expected = 0) {
        ORUDoNlist *names = nullptr;
        EXPECT_EQ(oru_do_mr_meta_get_cond_prop_names(mr, props.get(), kind, &names), expected);
        if (names == nullptr)
            return {"(null)"};
        const auto out = names_of(names);
        oru_do_nlist_deref(names);
        return out;
    }
    static Properties nulls(std::initializer_list<const char *> names) {
        Properties props(oru_do_properties_new());
        for (const char *name : names)
            oru_do_properties_set_null(props.get(), name);
        return props;
    }

    ORUMdMrMeta *record = nullptr;
    ORUDoMrMeta *mr = nullptr;
};

TEST_F(EvalPackage, ConstraintsHaveTheTypeOfTheirElement) {
    EXPECT_EQ(values_of(shared("n")), "7 4:0..9");
    EXPECT_EQ(default_of(shared("n")), "4:5");
    EXPECT_EQ(eval_in("n", oru_do_value_new_unsigned_int(9)), 0);
    EXPECT_EQ(eval_in("n", oru_do_value_new_unsigned_int(10)), 114);
}

TEST_F(EvalPackage, ResolvedTypeReadsThemAnewAndStampsTheDefault) {
    EXPECT_EQ(default_of(shared("load")), "5:50 Percent");
    EXPECT_EQ(eval_in("load", oru_do_value_new_int(100)), 0);
    EXPECT_EQ(eval_in("load", oru_do_value_new_int(101)), 114);
}

TEST_F(EvalPackage, QualifiedLabelsStandForTheirNumbers) {
    EXPECT_EQ(values_of(shared("state")), "1 103:1..-");
    EXPECT_EQ(values_of(shared("code")), "1 5:2..-");
}

TEST_F(EvalPackage, ReferenceHasItsConstraint) {
    auto *ref = record->refs;
    EXPECT_EQ(oru_md_get_ref_constraint(ref, nullptr), constraint_of("peer"));
    EXPECT_STREQ(oru_do_constraint_get_str(constraint_of("peer")), "size(1)");
}

TEST_F(EvalPackage, MandatoryAttributeHasToBeThere) {
    char *message = nullptr;
    EXPECT_EQ(oru_md_eval_mr_constraint(record, properties({}).get(), &message), 133);
    EXPECT_EQ(oru_md_eval_mr_constraint(record, properties({{"n", 1}}).get(), &message), 133);
    EXPECT_EQ(oru_md_eval_mr_constraint(record, properties({{"load", 1}}).get(), &message), 0);
    EXPECT_EQ(oru_md_eval_mr_constraint(record, nulls({"load"}).get(), &message), 0);
    EXPECT_EQ(message, nullptr);
    EXPECT_ASSERTION(oru_md_eval_mr_constraint(nullptr, properties({}).get(), &message), "mr_meta");
    EXPECT_ASSERTION(oru_md_eval_mr_constraint(record, properties({}).get(), nullptr), "message");
}

// Only a size of one bound, in the first constraint without a condition of an attribute of the
// configuration.
TEST_F(EvalPackage, SizeOfOneBoundMakesAnAttributeMandatory) {
    const auto assertion = [](const std::string &constraint, const std::string &condition = "") {
        const std::string when =
            condition.empty() ? "" : "<condition>" + condition + "</condition>";
        return "<assert>" + when + "<constraint>" + constraint + "</constraint></assert>";
    };
    const struct {
        std::string group;
        std::string asserts;
        int32_t code;
    } rows[] = {
        {"configData", "", 0},
        {"configData", assertion("size(1)"), 133},
        {"configData", assertion("size(*..5)"), 133},
        {"configData", assertion("size(5..*)"), 133},
        {"configData", assertion("size(1..5)"), 0},
        {"configData", assertion("size(1|2)"), 0},
        {"configData", assertion("strlen(1)values(1)"), 0},
        {"configData", assertion("size(1)", "b.is_null()"), 0},
        {"configData", assertion("size(1..2)", "b.is_null()") + assertion("size(1)"), 133},
        {"configData", assertion("strlen(1)") + assertion("size(1)"), 0},
        {"operationalData", assertion("size(1)"), 0},
        {"key", assertion("size(1)"), 0},
    };
    for (const auto &row : rows) {
        oru_md_free();
        load_lib(resources(resource("M", "<" + row.group + "><attribute name='a' type='int'>" +
                                             row.asserts + "</attribute></" + row.group + ">")));
        char *message = nullptr;
        EXPECT_EQ(oru_md_eval_mr_constraint(oru_md_get_mr_meta_by_name("com.lib/M"),
                                            properties({}).get(), &message),
                  row.code)
            << row.group << row.asserts;
        EXPECT_EQ(message, nullptr);
    }
}

TEST_F(EvalPackage, ConditionsWithoutADefaultConcernAllProperties) {
    EXPECT_EQ(extra(properties({{"code", 1}}), -1), (std::vector<std::string>{"state", "n"}));
    EXPECT_EQ(extra(properties({{"code", 1}, {"n", 1}}), -1), (std::vector<std::string>{"state"}));
    EXPECT_EQ(extra(properties({{"n", 1}, {"load", 1}, {"extra", 1}}), -1),
              (std::vector<std::string>{"(null)"}));
}

TEST_F(EvalPackage, ConditionsOfDefaultsConcernThoseThatAreNull) {
    EXPECT_EQ(extra(nulls({"extra"}), 1), (std::vector<std::string>{"load"}));
    EXPECT_EQ(extra(properties({{"extra", 1}}), 1), (std::vector<std::string>{"(null)"}));
    EXPECT_EQ(extra(nulls({"code"}), 1), (std::vector<std::string>{"(null)"}));
    EXPECT_EQ(extra(nulls({"extra", "code"}), 0), (std::vector<std::string>{"(null)"}));
    auto reset = properties({{"extra", 1}});
    oru_do_properties_reset_values(reset.get());
    EXPECT_EQ(extra(reset, 1), (std::vector<std::string>{"load"}));
}

TEST_F(EvalPackage, NamesGoBehindThoseThatAreThere) {
    const Nlist names(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), "state");
    ORUDoNlist *held = names.get();
    EXPECT_EQ(oru_do_mr_meta_get_cond_prop_names(mr, properties({{"code", 1}}).get(), -1, &held),
              0);
    EXPECT_EQ(names_of(held), (std::vector<std::string>{"state", "state", "n"}));
}

TEST_F(EvalPackage, UnknownPropertyIsTold) {
    TraceCapture traces;
    EXPECT_EQ(extra(properties({{"code", 1}, {"odd", 1}}), -1, 107),
              (std::vector<std::string>{"(null)"}));
    EXPECT_EQ(traces.at(3), (std::vector<std::string>{"Unable to find prop meta for odd\n"}));
    EXPECT_EQ(extra(properties({{"odd", 1}}), 1), (std::vector<std::string>{"(null)"}));
}

TEST_F(EvalPackage, BuiltInAttributesArePassedOver) {
    EXPECT_EQ(extra(properties({{"_mr", 1}, {"_uri", 1}, {"code", 1}}), -1),
              (std::vector<std::string>{"state", "n"}));
}

TEST_F(EvalPackage, NamesWithoutMemory) {
    const auto props = properties({{"code", 1}});
    sweep_oom([&] {
        ORUDoNlist *names = nullptr;
        const int32_t code = oru_do_mr_meta_get_cond_prop_names(mr, props.get(), -1, &names);
        EXPECT_EQ(code, oom_hit() ? 10002 : 0);
        oru_do_nlist_deref(names);
    });
}

TEST_F(EvalPackage, NullIsRefusedByName) {
    const auto props = properties({});
    ORUDoNlist *names = nullptr;
    EXPECT_ASSERTION(oru_do_mr_meta_get_cond_prop_names(nullptr, props.get(), -1, &names),
                     "mr_meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_cond_prop_names(mr, nullptr, -1, &names), "props");
    EXPECT_ASSERTION(oru_do_mr_meta_get_cond_prop_names(mr, props.get(), -1, nullptr),
                     "extra_prop_names");
}

}  // namespace
