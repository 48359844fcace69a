#include "oru/typedef_meta.h"

#include <gtest/gtest.h>
#include <oru/constraint.h>
#include <oru/name.h>
#include <oru/ntlist.h>
#include <oru/nvlist.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

struct TypedefMeta : testing::Test {
    ~TypedefMeta() override { oru_do_name_deref(name); }
    ORUDoName *name = oru_do_name_new("Kind");
};

TEST_F(TypedefMeta, BuiltinHasTheEmptyNameAndItsCode) {
    auto *constraints = oru_do_constraint_list_new();
    auto *meta = oru_do_typedef_meta_new_builtin(5, constraints);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_typedef_meta_get_name(meta)), "");
    EXPECT_EQ(oru_do_typedef_meta_get_category(meta), 1);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(meta), 5);
    EXPECT_EQ(oru_do_typedef_meta_get_constraint_list(meta), constraints);
    EXPECT_EQ(oru_do_typedef_meta_get_enums(meta), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_sequence_members(meta), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_choices(meta), nullptr);
    oru_do_constraint_list_deref(constraints);
    EXPECT_EQ(oru_do_constraint_list_get_len(oru_do_typedef_meta_get_constraint_list(meta)), 0);
    oru_do_typedef_meta_deref(meta);
}

TEST_F(TypedefMeta, SimpleTypeKeepsItsName) {
    auto *meta = oru_do_typedef_meta_new_simpletype(name, 8, nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_name(meta), name);
    EXPECT_EQ(oru_do_typedef_meta_get_category(meta), 1);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(meta), 8);
    EXPECT_EQ(oru_do_typedef_meta_get_constraint_list(meta), nullptr);
    oru_do_typedef_meta_deref(meta);
}

TEST_F(TypedefMeta, EnumerationIsNoSimpleType) {
    auto *enums = oru_do_nvlist_new();
    auto *meta = oru_do_typedef_meta_new_enum(name, enums);
    EXPECT_EQ(oru_do_typedef_meta_get_category(meta), 2);
    EXPECT_EQ(oru_do_typedef_meta_get_enums(meta), enums);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(meta), -3);
    EXPECT_EQ(oru_do_typedef_meta_get_constraint_list(meta), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_sequence_members(meta), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_choices(meta), nullptr);
    oru_do_nvlist_deref(enums);
    oru_do_typedef_meta_deref(meta);
}

TEST_F(TypedefMeta, SequenceAndChoiceGiveTheirMembersEachUnderItsOwnQuestion) {
    auto *members = oru_do_ntlist_new();
    auto *sequence = oru_do_typedef_meta_new_sequence(name, members);
    auto *choice = oru_do_typedef_meta_new_choice(name, members);
    EXPECT_EQ(oru_do_typedef_meta_get_category(sequence), 3);
    EXPECT_EQ(oru_do_typedef_meta_get_sequence_members(sequence), members);
    EXPECT_EQ(oru_do_typedef_meta_get_choices(sequence), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_category(choice), 4);
    EXPECT_EQ(oru_do_typedef_meta_get_choices(choice), members);
    EXPECT_EQ(oru_do_typedef_meta_get_sequence_members(choice), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_enums(choice), nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(choice), -3);
    oru_do_ntlist_deref(members);
    oru_do_typedef_meta_deref(sequence);
    oru_do_typedef_meta_deref(choice);
}

TEST_F(TypedefMeta, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_typedef_meta_get_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_category(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_simple_type(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_constraint_list(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_enums(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_sequence_members(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_typedef_meta_get_choices(nullptr), "meta");
    EXPECT_EQ(oru_do_typedef_meta_ref(nullptr), nullptr);
    oru_do_typedef_meta_deref(nullptr);
}

TEST_F(TypedefMeta, SimpleTypeWithoutMemoryForItsPartComesWithoutIt) {
    auto *constraints = oru_do_constraint_list_new();
    oru::test::sweep_oom(
        [&] {
            auto *meta = oru_do_typedef_meta_new_simpletype(name, 5, constraints);
            if (meta != nullptr) {
                const bool whole = !oru::test::oom_hit();
                EXPECT_EQ(oru_do_typedef_meta_get_name(meta), name);
                EXPECT_EQ(oru_do_typedef_meta_get_category(meta), 1);
                EXPECT_EQ(oru_do_typedef_meta_get_simple_type(meta), whole ? 5 : -3);
                EXPECT_EQ(oru_do_typedef_meta_get_constraint_list(meta),
                          whole ? constraints : nullptr);
                EXPECT_EQ(oru_do_typedef_meta_get_constraint(meta, name, nullptr), nullptr);
            }
            oru_do_typedef_meta_deref(meta);
        },
        {.promised_deaths = {}, .at_least = 2});
    oru_do_constraint_list_deref(constraints);
}

TEST_F(TypedefMeta, OthersWithoutMemoryAreNull) {
    auto *labels = oru_do_nvlist_new();
    auto *members = oru_do_ntlist_new();
    for (int kind = 0; kind < 3; ++kind) {
        oru::test::sweep_oom([&] {
            auto *meta = kind == 0   ? oru_do_typedef_meta_new_enum(name, labels)
                         : kind == 1 ? oru_do_typedef_meta_new_sequence(name, members)
                                     : oru_do_typedef_meta_new_choice(name, members);
            EXPECT_EQ(meta == nullptr, oru::test::oom_hit());
            oru_do_typedef_meta_deref(meta);
        });
    }
    oru_do_nvlist_deref(labels);
    oru_do_ntlist_deref(members);
}

TEST_F(TypedefMeta, BuiltinWithoutMemoryForItsPartComesWithoutIt) {
    oru::test::sweep_oom([] {
        auto *meta = oru_do_typedef_meta_new_builtin(5, nullptr);
        if (meta != nullptr) {
            EXPECT_EQ(oru_do_typedef_meta_get_simple_type(meta), oru::test::oom_hit() ? -3 : 5);
        }
        oru_do_typedef_meta_deref(meta);
    });
}

}  // namespace
