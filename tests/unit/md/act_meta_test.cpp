#include "oru/act_meta.h"

#include <gtest/gtest.h>
#include <oru/name.h>
#include <oru/prop_meta.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

ORUDoActMeta *new_action(const char *text) {
    auto *name = oru_do_name_new(text);
    auto *action = oru_do_act_meta_new(name, nullptr, nullptr, nullptr);
    oru_do_name_deref(name);
    return action;
}

TEST(ActMeta, KeepsItsFields) {
    auto *name = oru_do_name_new("reset");
    auto *in = oru_do_prop_meta_list_new();
    auto *out = oru_do_prop_meta_list_new();
    auto *err = oru_do_prop_meta_list_new();
    auto *meta = oru_do_act_meta_new(name, in, out, err);
    oru_do_name_deref(name);
    oru_do_prop_meta_list_deref(in);
    oru_do_prop_meta_list_deref(out);
    oru_do_prop_meta_list_deref(err);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_act_meta_get_name(meta)), "reset");
    EXPECT_EQ(oru_do_act_meta_get_in_params(meta), in);
    EXPECT_EQ(oru_do_act_meta_get_out_params(meta), out);
    EXPECT_EQ(oru_do_act_meta_get_err_params(meta), err);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(err), 0);
    oru_do_act_meta_deref(meta);
}

TEST(ActMeta, EverythingMayBeLeftOut) {
    auto *meta = oru_do_act_meta_new(nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(oru_do_act_meta_get_name(meta), nullptr);
    EXPECT_EQ(oru_do_act_meta_get_in_params(meta), nullptr);
    EXPECT_EQ(oru_do_act_meta_get_out_params(meta), nullptr);
    EXPECT_EQ(oru_do_act_meta_get_err_params(meta), nullptr);
    oru_do_act_meta_deref(meta);
}

TEST(ActMeta, WithoutMemoryThereIsNone) {
    auto *params = oru_do_prop_meta_list_new();
    oru::test::sweep_oom([&] {
        auto *meta = oru_do_act_meta_new(nullptr, params, params, params);
        EXPECT_EQ(meta == nullptr, oru::test::oom_hit());
        oru_do_act_meta_deref(meta);
    });
    oru::test::sweep_oom([] {
        auto *list = oru_do_act_meta_list_new();
        EXPECT_EQ(list == nullptr, oru::test::oom_hit());
        oru_do_act_meta_list_deref(list);
    });
    oru_do_prop_meta_list_deref(params);
}

TEST(ActMeta, NullIsRefusedByName) {
    EXPECT_EQ(oru_do_act_meta_get_name(nullptr), nullptr);
    EXPECT_ASSERTION(oru_do_act_meta_get_in_params(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_act_meta_get_out_params(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_act_meta_get_err_params(nullptr), "meta");
    EXPECT_EQ(oru_do_act_meta_ref(nullptr), nullptr);
    oru_do_act_meta_deref(nullptr);
}

struct ActMetaList : testing::Test {
    ~ActMetaList() override { oru_do_act_meta_list_deref(list); }
    ORUDoActMetaList *list = oru_do_act_meta_list_new();
};

TEST_F(ActMetaList, AddsFindsWalksAndClears) {
    auto *a = new_action("a");
    auto *b = new_action("b");
    EXPECT_EQ(oru_do_act_meta_list_add(list, a), 1);
    EXPECT_EQ(oru_do_act_meta_list_add(list, b), 2);
    EXPECT_EQ(oru_do_act_meta_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_act_meta_list_get_len(list), 2);
    EXPECT_EQ(oru_do_act_meta_list_get_act_meta_strname(list, "b"), b);
    EXPECT_EQ(oru_do_act_meta_list_get_act_meta_strname(list, "c"), nullptr);
    EXPECT_EQ(oru_do_act_meta_list_get_act_meta_name(list, oru_do_act_meta_get_name(a)), a);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_act_meta_list_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 12);
    EXPECT_NE(oru_do_act_meta_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_act_meta_list_get_next(&iter), a);
    EXPECT_EQ(oru_do_act_meta_list_get_next(&iter), b);
    EXPECT_EQ(oru_do_act_meta_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_act_meta_list_get_next(&iter), nullptr);
    oru_do_act_meta_deref(a);
    oru_do_act_meta_deref(b);
    oru_do_act_meta_list_clear(list);
    EXPECT_EQ(oru_do_act_meta_list_get_len(list), 0);
}

TEST_F(ActMetaList, NullIsRefusedByName) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_act_meta_list_add(nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_get_len(nullptr), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_get_act_meta_name(nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_get_act_meta_name(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_act_meta_list_get_act_meta_strname(nullptr, "a"), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_get_act_meta_strname(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_act_meta_list_clear(nullptr), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_iter(nullptr, &iter), "list");
    EXPECT_ASSERTION(oru_do_act_meta_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_ACT_META_LIST");
    EXPECT_EQ(oru_do_act_meta_list_ref(nullptr), nullptr);
    oru_do_act_meta_list_deref(nullptr);
}

TEST_F(ActMetaList, EntryWithoutANameIsRefused) {
    auto *nameless = oru_do_act_meta_new(nullptr, nullptr, nullptr, nullptr);
    oru_do_act_meta_list_add(list, nameless);
    oru_do_act_meta_deref(nameless);
    EXPECT_ASSERTION(oru_do_act_meta_list_get_act_meta_strname(list, "a"), "cur_name");
}

TEST_F(ActMetaList, WithoutMemoryNothingIsAdded) {
    oru::test::sweep_oom([] {
        auto *some = oru_do_act_meta_list_new();
        auto *action = oru_do_act_meta_new(nullptr, nullptr, nullptr, nullptr);
        if (some != nullptr && action != nullptr) {
            const int32_t length = oru_do_act_meta_list_add(some, action);
            EXPECT_EQ(oru_do_act_meta_list_get_len(some), length < 0 ? 0 : 1);
        }
        oru_do_act_meta_deref(action);
        oru_do_act_meta_list_deref(some);
    });
}

}  // namespace
