#include "oru/vlist.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "oru/iter.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

class Vlist : public testing::Test {
  protected:
    ~Vlist() override {
        oru_do_vlist_deref(list);
        for (ORUDoValue *value : {one, two, three})
            oru_do_value_deref(value);
    }

    // The numbers, in the order of a walk.
    static std::string text_of(ORUDoVlist *vlist) {
        std::string text;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_vlist_iter(vlist, &iter); oru_do_vlist_has_next(&iter);) {
            int32_t err = 0;
            text += std::to_string(oru_do_value_get_int(oru_do_vlist_get_next(&iter), &err)) + ' ';
        }
        return text;
    }
    std::string text() const { return text_of(list); }
    void add(std::initializer_list<ORUDoValue *> values) {
        for (ORUDoValue *value : values)
            oru_do_vlist_add(list, value);
    }

    ORUDoVlist *list = oru_do_vlist_new();
    ORUDoValue *one = oru_do_value_new_int(1);
    ORUDoValue *two = oru_do_value_new_int(2);
    ORUDoValue *three = oru_do_value_new_int(3);
};

TEST_F(Vlist, StartsEmpty) {
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
    EXPECT_EQ(oru_do_vlist_get_value(list, 0), nullptr);
    EXPECT_EQ(text(), "");
}

TEST_F(Vlist, KeepsTheOrderOfAdding) {
    EXPECT_EQ(oru_do_vlist_add(list, two), 1);
    EXPECT_EQ(oru_do_vlist_add(list, one), 2);
    EXPECT_EQ(oru_do_vlist_add(list, two), 3);
    EXPECT_EQ(text(), "2 1 2 ");
    EXPECT_EQ(oru_do_vlist_get_value(list, 1), one);
    EXPECT_EQ(oru_do_vlist_get_value(list, 3), nullptr);
    EXPECT_EQ(oru_do_vlist_get_value(list, -1), nullptr);
}

TEST_F(Vlist, CountsItsOwnReference) {
    ORUDoValue *value = oru_do_value_new_int(9);
    oru_do_vlist_add(list, value);
    oru_do_value_deref(value);
    EXPECT_EQ(text(), "9 ");
}

TEST_F(Vlist, ANullValueIsNotAdded) {
    EXPECT_EQ(oru_do_vlist_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_vlist_add_first(list, nullptr), -1);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
}

TEST_F(Vlist, AddsAtTheHead) {
    EXPECT_EQ(oru_do_vlist_add_first(list, one), 1);
    EXPECT_EQ(oru_do_vlist_add_first(list, two), 2);
    EXPECT_EQ(oru_do_vlist_add(list, three), 3);
    EXPECT_EQ(text(), "2 1 3 ");
}

TEST_F(Vlist, AppendsAnotherListSharingValues) {
    ORUDoVlist *other = oru_do_vlist_new();
    EXPECT_EQ(oru_do_vlist_add_all(list, other), 0);
    oru_do_vlist_add(other, one);
    oru_do_vlist_add(other, two);
    add({three});
    EXPECT_EQ(oru_do_vlist_add_all(list, other), 3);
    oru_do_vlist_deref(other);
    EXPECT_EQ(text(), "3 1 2 ");
    EXPECT_EQ(oru_do_vlist_get_value(list, 1), one);
}

TEST_F(Vlist, AppendedToItselfItDoubles) {
    add({one, two});
    EXPECT_EQ(oru_do_vlist_add_all(list, list), 4);
    EXPECT_EQ(text(), "1 2 1 2 ");
}

TEST_F(Vlist, AValueIsReplacedInPlace) {
    add({one, two});
    oru_do_vlist_set_value(list, 1, three);
    EXPECT_EQ(text(), "1 3 ");
    oru_do_vlist_set_value(list, 2, one);
    oru_do_vlist_set_value(list, -1, one);
    EXPECT_EQ(text(), "1 3 ");
}

TEST_F(Vlist, AValueMayReplaceItself) {
    ORUDoValue *value = oru_do_value_new_int(9);
    add({value});
    oru_do_value_deref(value);
    oru_do_vlist_set_value(list, 0, value);
    EXPECT_EQ(text(), "9 ");
}

TEST_F(Vlist, MembersHaveATypeInCommonOrNone) {
    EXPECT_EQ(oru_do_vlist_get_member_type(list), -3);
    add({one, two});
    EXPECT_EQ(oru_do_vlist_get_member_type(list), 5);
    ORUDoValue *text = oru_do_value_new_string("a");
    oru_do_vlist_add(list, text);
    EXPECT_EQ(oru_do_vlist_get_member_type(list), -3);
    oru_do_value_deref(text);
}

TEST_F(Vlist, AValueOfTypeNullIsATypeOfItsOwn) {
    ORUDoValue *null = oru_do_value_new_null();
    oru_do_vlist_add(list, null);
    EXPECT_EQ(oru_do_vlist_get_member_type(list), -1);
    add({one});
    EXPECT_EQ(oru_do_vlist_get_member_type(list), -3);
    oru_do_value_deref(null);
}

TEST_F(Vlist, ClearsAndGoesOn) {
    add({one, two});
    oru_do_vlist_clear(list);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
    add({three});
    EXPECT_EQ(text(), "3 ");
    oru_do_vlist_clear(nullptr);
}

TEST_F(Vlist, Reverses) {
    oru_do_vlist_reverse(nullptr);
    oru_do_vlist_reverse(list);
    EXPECT_EQ(text(), "");
    add({one});
    oru_do_vlist_reverse(list);
    EXPECT_EQ(text(), "1 ");
    add({two, three});
    oru_do_vlist_reverse(list);
    EXPECT_EQ(text(), "3 2 1 ");
    add({two});
    EXPECT_EQ(text(), "3 2 1 2 ");
    EXPECT_EQ(oru_do_vlist_get_len(list), 4);
}

TEST_F(Vlist, ACloneIsDeep) {
    add({one, two});
    ORUDoVlist *copy = oru_do_vlist_clone(list);
    EXPECT_EQ(text_of(copy), "1 2 ");
    EXPECT_NE(oru_do_vlist_get_value(copy, 0), one);
    oru_do_vlist_deref(copy);
}

TEST_F(Vlist, AWalkEndsWithNull) {
    add({one});
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_vlist_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 1);
    EXPECT_EQ(iter.collection, list);
    EXPECT_EQ(oru_do_vlist_get_next(&iter), one);
    EXPECT_EQ(oru_do_vlist_has_next(&iter), 0);
    EXPECT_EQ(oru_do_vlist_get_next(&iter), nullptr);
}

TEST_F(Vlist, RequiredArguments) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_vlist_clone(nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_get_len(nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_get_value(nullptr, 0), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_get_member_type(nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_iter(nullptr, &iter), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vlist_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vlist_has_next(&iter), "iter->coll_type == DO_COLL_VLIST");
    EXPECT_ASSERTION(oru_do_vlist_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vlist_add(nullptr, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_add_first(nullptr, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_add_all(nullptr, list), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_add_all(list, nullptr), "other_vlist");
    EXPECT_ASSERTION(oru_do_vlist_set_value(nullptr, 0, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_set_value(list, 0, nullptr), "value");
    EXPECT_EQ(oru_do_vlist_ref(nullptr), nullptr);
    oru_do_vlist_deref(nullptr);
}

TEST_F(Vlist, EveryAllocationOfAddingAndCloningMayFail) {
    oru::test::sweep_oom(
        [&] {
            ORUDoVlist *vlist = oru_do_vlist_new();
            if (vlist == nullptr)
                return;
            const int32_t added = oru_do_vlist_add(vlist, one);
            const int32_t first = oru_do_vlist_add_first(vlist, two);
            const int32_t len = oru_do_vlist_get_len(vlist);
            EXPECT_EQ(len, (added != -1 ? 1 : 0) + (first != -1 ? 1 : 0));
            const int32_t all = oru_do_vlist_add_all(vlist, vlist);
            if (all != -1) {
                EXPECT_EQ(all, 2 * len);
            }
            ORUDoVlist *copy = oru_do_vlist_clone(vlist);
            const bool whole =
                copy != nullptr && oru_do_vlist_get_len(copy) == oru_do_vlist_get_len(vlist);
            const bool failed = added == -1 || first == -1 || all == -1 || !whole;
            EXPECT_EQ(failed, oru::test::oom_hit());
            oru_do_vlist_deref(copy);
            oru_do_vlist_deref(vlist);
        },
        {.promised_deaths = {}, .at_least = 12});
}

}  // namespace
