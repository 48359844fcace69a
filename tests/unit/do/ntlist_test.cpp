#include "oru/ntlist.h"

#include <gtest/gtest.h>

#include "oru/constraint.h"
#include "oru/iter.h"
#include "oru/name.h"
#include "oru/typedef_meta.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"

namespace {

using oru::test::printed;

class Ntlist : public testing::Test {
  protected:
    ~Ntlist() override {
        oru_do_ntlist_deref(list);
        oru_do_typedef_meta_deref(meta);
        oru_do_name_deref(a);
        oru_do_name_deref(b);
    }

    ORUDoNtlist *list = oru_do_ntlist_new();
    ORUDoTypedefMeta *meta = oru_do_typedef_meta_new_builtin(8, nullptr);
    ORUDoName *a = oru_do_name_new("a");
    ORUDoName *b = oru_do_name_new("b");
};

TEST_F(Ntlist, ABuiltInTypeGetsADescription) {
    EXPECT_EQ(oru_do_ntlist_get_len(list), 0);
    EXPECT_EQ(oru_do_ntlist_add_builtin_type(list, a, 5, nullptr), 1);
    ORUDoNtlistItem *item = oru_do_ntlist_get_item(list, 0);
    EXPECT_EQ(oru_do_ntlist_item_get_name(item), a);
    EXPECT_EQ(oru_do_ntlist_item_get_type_code(item), 5);
    ORUDoTypedefMeta *made = oru_do_ntlist_item_get_typedef(item);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_category(made), 1);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(made), 5);
}

TEST_F(Ntlist, ABuiltInTypeTakesItsConstraintsAlong) {
    ORUDoConstraintList *constraints = oru_do_constraint_list_new();
    EXPECT_EQ(oru_do_ntlist_add_builtin_type(list, a, 5, constraints), 1);
    ORUDoTypedefMeta *made = oru_do_ntlist_item_get_typedef(oru_do_ntlist_get_item(list, 0));
    EXPECT_EQ(oru_do_typedef_meta_get_constraint_list(made), constraints);
    oru_do_constraint_list_deref(constraints);
}

TEST_F(Ntlist, ADescribedTypeHasNoCodeOfItsOwn) {
    EXPECT_EQ(oru_do_ntlist_add_typedef_meta(list, a, nullptr), -1);
    EXPECT_EQ(oru_do_ntlist_add_typedef_meta(list, a, meta), 1);
    ORUDoNtlistItem *item = oru_do_ntlist_get_item(list, 0);
    EXPECT_EQ(oru_do_ntlist_item_get_type_code(item), -3);
    EXPECT_EQ(oru_do_ntlist_item_get_typedef(item), meta);
    EXPECT_EQ(oru_do_ntlist_get_len(list), 1);
}

TEST_F(Ntlist, ItemsAreFoundByIndexAndByName) {
    oru_do_ntlist_add_builtin_type(list, a, 5, nullptr);
    oru_do_ntlist_add_typedef_meta(list, b, meta);
    oru_do_ntlist_add_builtin_type(list, b, 6, nullptr);
    EXPECT_EQ(oru_do_ntlist_get_item_by_name(list, "b"), oru_do_ntlist_get_item(list, 1));
    EXPECT_EQ(oru_do_ntlist_get_item_index_by_name(list, "b"), 1);
    EXPECT_EQ(oru_do_ntlist_get_item_by_name(list, "c"), nullptr);
    EXPECT_EQ(oru_do_ntlist_get_item_index_by_name(list, "c"), -1);
    EXPECT_EQ(oru_do_ntlist_get_item_by_name(list, nullptr), nullptr);
    EXPECT_EQ(oru_do_ntlist_get_item_index_by_name(list, nullptr), -1);
    EXPECT_EQ(oru_do_ntlist_get_item(list, 3), nullptr);
    EXPECT_EQ(oru_do_ntlist_get_item(list, -1), nullptr);
}

TEST_F(Ntlist, AWalkGivesTheItemsInOrder) {
    oru_do_ntlist_add_builtin_type(list, a, 5, nullptr);
    oru_do_ntlist_add_typedef_meta(list, b, meta);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_ntlist_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 9);
    EXPECT_EQ(iter.collection, list);
    EXPECT_EQ(oru_do_ntlist_get_next(&iter), oru_do_ntlist_get_item(list, 0));
    EXPECT_NE(oru_do_ntlist_has_next(&iter), 0);
    EXPECT_EQ(oru_do_ntlist_get_next(&iter), oru_do_ntlist_get_item(list, 1));
    EXPECT_EQ(oru_do_ntlist_has_next(&iter), 0);
    EXPECT_EQ(oru_do_ntlist_get_next(&iter), nullptr);
}

TEST_F(Ntlist, PrintsNamesAndCodes) {
    EXPECT_EQ(printed<oru_do_ntlist_to_strbuf>(list, 1), "[\n]\n");
    oru_do_ntlist_add_builtin_type(list, a, 105, nullptr);
    EXPECT_EQ(printed<oru_do_ntlist_to_strbuf>(list, 1), "[\na 105]\n");
    oru_do_ntlist_add_typedef_meta(list, b, meta);
    EXPECT_EQ(printed<oru_do_ntlist_to_strbuf>(list, 1), "[\na 105,\nb -3]\n");
    EXPECT_EQ(printed<oru_do_ntlist_to_strbuf>(static_cast<ORUDoNtlist *>(nullptr)), "");
}

TEST_F(Ntlist, RequiredArguments) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_ntlist_get_len(nullptr), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_get_item(nullptr, 0), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_get_item_by_name(nullptr, "a"), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_get_item_index_by_name(nullptr, "a"), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_item_get_name(nullptr), "item");
    EXPECT_ASSERTION(oru_do_ntlist_item_get_type_code(nullptr), "item");
    EXPECT_ASSERTION(oru_do_ntlist_item_get_typedef(nullptr), "item");
    EXPECT_ASSERTION(oru_do_ntlist_iter(nullptr, &iter), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_ntlist_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_ntlist_has_next(&iter), "iter->coll_type == DO_COLL_NTLIST");
    EXPECT_ASSERTION(oru_do_ntlist_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_ntlist_add_builtin_type(nullptr, a, 5, nullptr), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_add_builtin_type(list, nullptr, 5, nullptr), "name");
    EXPECT_ASSERTION(oru_do_ntlist_add_typedef_meta(nullptr, a, meta), "ntlist");
    EXPECT_ASSERTION(oru_do_ntlist_add_typedef_meta(list, nullptr, meta), "name");
    EXPECT_ASSERTION(oru_do_ntlist_to_strbuf(list, 0, nullptr), "strbuf");
    EXPECT_EQ(oru_do_ntlist_ref(nullptr), nullptr);
    oru_do_ntlist_deref(nullptr);
}

TEST_F(Ntlist, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [&] {
            ORUDoNtlist *ntlist = oru_do_ntlist_new();
            if (ntlist == nullptr)
                return;
            const int32_t described = oru_do_ntlist_add_typedef_meta(ntlist, a, meta);
            const int32_t builtin = oru_do_ntlist_add_builtin_type(ntlist, b, 5, nullptr);
            EXPECT_EQ(oru_do_ntlist_get_len(ntlist),
                      (described != -1 ? 1 : 0) + (builtin != -1 ? 1 : 0));
            if (described == -1 || builtin == -1) {
                EXPECT_TRUE(oru::test::oom_hit());
            }
            oru_do_ntlist_deref(ntlist);
        },
        {.promised_deaths = {}, .at_least = 4});
}

}  // namespace
