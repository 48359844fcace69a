#include "oru/nvlist.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "oru/iter.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"

namespace {

class Nvlist : public testing::Test {
  protected:
    ~Nvlist() override {
        oru_do_nvlist_deref(list);
        for (ORUDoValue *value : {a, b, c})
            oru_do_value_deref(value);
    }

    // The names and numbers, in the order of a walk.
    static std::string text_of(ORUDoNvlist *nvlist) {
        std::string text;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_nvlist_iter(nvlist, &iter); oru_do_nvlist_has_next(&iter);) {
            ORUDoNvlistItem *item = oru_do_nvlist_get_next(&iter);
            int32_t err = 0;
            text += oru_do_nvlist_item_get_name(item);
            text += std::to_string(oru_do_value_get_int(oru_do_nvlist_item_get_value(item), &err));
            text += ' ';
        }
        return text;
    }
    std::string text() const { return text_of(list); }

    ORUDoNvlist *list = oru_do_nvlist_new();
    ORUDoValue *a = oru_do_value_new_int(1);
    ORUDoValue *b = oru_do_value_new_int(2);
    ORUDoValue *c = oru_do_value_new_int(3);
};

TEST_F(Nvlist, StartsEmpty) {
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
    EXPECT_EQ(text(), "");
}

TEST_F(Nvlist, KeepsTheOrderOfAddingAndDuplicates) {
    EXPECT_EQ(oru_do_nvlist_add(list, "x", a), 1);
    EXPECT_EQ(oru_do_nvlist_add(list, "y", b), 2);
    EXPECT_EQ(oru_do_nvlist_add(list, "x", c), 3);
    EXPECT_EQ(text(), "x1 y2 x3 ");
    EXPECT_EQ(oru_do_nvlist_get_len(list), 3);
}

TEST_F(Nvlist, CountsItsOwnReferenceOnTheValue) {
    ORUDoValue *value = oru_do_value_new_int(9);
    oru_do_nvlist_add(list, "x", value);
    oru_do_value_deref(value);
    EXPECT_EQ(text(), "x9 ");
    EXPECT_EQ(oru_do_nvlist_get_value(list, "x"), value);
}

TEST_F(Nvlist, ANullNameOrValueIsNotAdded) {
    EXPECT_EQ(oru_do_nvlist_add(list, nullptr, a), -1);
    EXPECT_EQ(oru_do_nvlist_add(list, "x", nullptr), -1);
    EXPECT_EQ(oru_do_nvlist_add_l(list, nullptr, 1, a), -1);
    EXPECT_EQ(oru_do_nvlist_add_l(list, "x", 1, nullptr), -1);
    EXPECT_EQ(oru_do_nvlist_add_l(list, "x", -1, a), -1);
    EXPECT_EQ(oru_do_nvlist_add_at(list, nullptr, a, 0), -1);
    EXPECT_EQ(oru_do_nvlist_add_at(list, "x", nullptr, 0), -1);
    EXPECT_EQ(oru_do_nvlist_add_l_at(list, nullptr, 1, a, 0), -1);
    EXPECT_EQ(oru_do_nvlist_add_l_at(list, "x", 1, nullptr, 0), -1);
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
}

TEST_F(Nvlist, CountedNamesEndWhereTheyAreTold) {
    EXPECT_EQ(oru_do_nvlist_add_l(list, "xyz", 2, a), 1);
    EXPECT_EQ(oru_do_nvlist_add_l(list, "xyz", 0, b), 2);
    EXPECT_EQ(oru_do_nvlist_add_l_at(list, "xyz", 1, c, 0), 3);
    EXPECT_EQ(text(), "x3 xy1 2 ");
}

// A name that fits costs one block, the item; a longer one has a block of its own.
TEST_F(Nvlist, NamesUpTo31CharactersAreInline) {
    const std::string fits(31, 'n');
    const std::string longer(32, 'n');
    uint64_t blocks = poolheap_live_blocks();
    oru_do_nvlist_add(list, fits.c_str(), a);
    const uint64_t for_fitting = poolheap_live_blocks() - blocks;
    blocks = poolheap_live_blocks();
    oru_do_nvlist_add(list, longer.c_str(), a);
    EXPECT_EQ(poolheap_live_blocks() - blocks, for_fitting + 1);
    EXPECT_STREQ(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list, 0)), fits.c_str());
    EXPECT_STREQ(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list, 1)), longer.c_str());
}

TEST_F(Nvlist, InsertsAtAPosition) {
    oru_do_nvlist_add_at(list, "a", a, 0);
    EXPECT_EQ(text(), "a1 ");
    oru_do_nvlist_add_at(list, "b", b, 0);
    EXPECT_EQ(text(), "b2 a1 ");
    oru_do_nvlist_add_at(list, "c", c, 1);
    EXPECT_EQ(text(), "b2 c3 a1 ");
    EXPECT_EQ(oru_do_nvlist_add_at(list, "d", a, -5), 4);
    EXPECT_EQ(text(), "d1 b2 c3 a1 ");
    oru_do_nvlist_add(list, "end", b);
    EXPECT_EQ(text(), "d1 b2 c3 a1 end2 ");
}

TEST_F(Nvlist, APositionAtTheEndMovesTheEnd) {
    oru_do_nvlist_add(list, "a", a);
    oru_do_nvlist_add_at(list, "b", b, 1);
    EXPECT_EQ(text(), "a1 b2 ");
    oru_do_nvlist_add(list, "c", c);
    EXPECT_EQ(text(), "a1 b2 c3 ");
}

TEST_F(Nvlist, APositionFarPastTheEndAppends) {
    oru_do_nvlist_add(list, "a", a);
    oru_do_nvlist_add(list, "b", b);
    EXPECT_EQ(oru_do_nvlist_add_l_at(list, "cc", 1, c, 100), 3);
    oru_do_nvlist_add(list, "d", a);
    EXPECT_EQ(text(), "a1 b2 c3 d1 ");
}

TEST_F(Nvlist, AppendsAnotherListSharingValues) {
    ORUDoNvlist *other = oru_do_nvlist_new();
    oru_do_nvlist_add(list, "a", a);
    EXPECT_EQ(oru_do_nvlist_add_all(list, other), 1);
    oru_do_nvlist_add(other, "b", b);
    oru_do_nvlist_add(other, std::string(40, 'c').c_str(), c);
    EXPECT_EQ(oru_do_nvlist_add_all(list, other), 3);
    EXPECT_EQ(oru_do_nvlist_get_value(list, "b"), b);
    EXPECT_EQ(oru_do_nvlist_get_len(other), 2);
    oru_do_nvlist_deref(other);
    EXPECT_EQ(text(), "a1 b2 " + std::string(40, 'c') + "3 ");
}

TEST_F(Nvlist, AppendedToItselfItDoubles) {
    oru_do_nvlist_add(list, "a", a);
    oru_do_nvlist_add(list, "b", b);
    EXPECT_EQ(oru_do_nvlist_add_all(list, list), 4);
    EXPECT_EQ(text(), "a1 b2 a1 b2 ");
}

TEST_F(Nvlist, ItemsAreFoundByIndex) {
    oru_do_nvlist_add(list, "a", a);
    oru_do_nvlist_add(list, "b", b);
    EXPECT_STREQ(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list, 0)), "a");
    EXPECT_EQ(oru_do_nvlist_item_get_value(oru_do_nvlist_get_item(list, 1)), b);
    EXPECT_EQ(oru_do_nvlist_get_item(list, 2), nullptr);
    EXPECT_EQ(oru_do_nvlist_get_item(list, -1), nullptr);
}

TEST_F(Nvlist, LookupsFindTheFirstOfAName) {
    oru_do_nvlist_add(list, "x", a);
    oru_do_nvlist_add(list, "y", b);
    oru_do_nvlist_add(list, "y", c);
    EXPECT_EQ(oru_do_nvlist_get_value(list, "y"), b);
    EXPECT_EQ(oru_do_nvlist_get_item_by_name(list, "y"), oru_do_nvlist_get_item(list, 1));
    EXPECT_EQ(oru_do_nvlist_get_value(list, "Y"), nullptr);
    EXPECT_EQ(oru_do_nvlist_get_item_by_name(list, ""), nullptr);
}

TEST_F(Nvlist, AListOfOneItem) {
    ORUDoNvlist *one = oru_do_nvlist_new_from_item("x", b);
    EXPECT_EQ(text_of(one), "x2 ");
    oru_do_nvlist_deref(one);
    for (ORUDoNvlist *none :
         {oru_do_nvlist_new_from_item(nullptr, b), oru_do_nvlist_new_from_item("x", nullptr)}) {
        EXPECT_EQ(oru_do_nvlist_get_len(none), 0);
        oru_do_nvlist_deref(none);
    }
}

TEST_F(Nvlist, ACloneIsDeep) {
    oru_do_nvlist_add(list, "a", a);
    oru_do_nvlist_add(list, "b", b);
    ORUDoNvlist *copy = oru_do_nvlist_clone(list);
    EXPECT_EQ(text_of(copy), "a1 b2 ");
    EXPECT_NE(oru_do_nvlist_get_value(copy, "a"), a);
    oru_do_nvlist_deref(copy);
}

TEST_F(Nvlist, AWalkEndsWithNull) {
    oru_do_nvlist_add(list, "a", a);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_nvlist_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 2);
    EXPECT_EQ(iter.collection, list);
    EXPECT_EQ(oru_do_nvlist_get_next(&iter), oru_do_nvlist_get_item(list, 0));
    EXPECT_EQ(oru_do_nvlist_has_next(&iter), 0);
    EXPECT_EQ(oru_do_nvlist_get_next(&iter), nullptr);
}

TEST_F(Nvlist, TheItemAtHandMayBeDeletedDuringAWalk) {
    for (const char *name : {"a", "b", "c"})
        oru_do_nvlist_add(list, name, a);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_nvlist_iter(list, &iter); oru_do_nvlist_has_next(&iter);)
        oru_do_nvlist_delete_one(list, oru_do_nvlist_item_get_name(oru_do_nvlist_get_next(&iter)));
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
}

TEST_F(Nvlist, DeletesTheFirstOfAName) {
    oru_do_nvlist_add(list, "x", a);
    oru_do_nvlist_add(list, "y", b);
    oru_do_nvlist_add(list, "x", c);
    oru_do_nvlist_delete_one(list, "z");
    EXPECT_EQ(text(), "x1 y2 x3 ");
    oru_do_nvlist_delete_one(list, "x");
    EXPECT_EQ(text(), "y2 x3 ");
    oru_do_nvlist_delete_one(list, "x");
    EXPECT_EQ(oru_do_nvlist_get_len(list), 1);
    oru_do_nvlist_add(list, "end", a);
    EXPECT_EQ(text(), "y2 end1 ");
}

TEST_F(Nvlist, DeletesAllOfAName) {
    for (const char *name : {"x", "y", "x", "x"})
        oru_do_nvlist_add(list, name, a);
    oru_do_nvlist_delete_all(list, "x");
    EXPECT_EQ(text(), "y1 ");
    oru_do_nvlist_delete_all(list, "y");
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
    EXPECT_EQ(text(), "");
    oru_do_nvlist_add(list, "z", b);
    EXPECT_EQ(text(), "z2 ");
}

TEST_F(Nvlist, DeletesByANameThatIsItsOwn) {
    for (int i = 0; i < 3; ++i)
        oru_do_nvlist_add(list, std::string(40, 'x').c_str(), a);
    oru_do_nvlist_delete_all(list, oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list, 0)));
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
}

TEST_F(Nvlist, DeletesTheFirstItemOfANameAndAValue) {
    oru_do_nvlist_add(list, "x", a);
    oru_do_nvlist_add(list, "x", b);
    oru_do_nvlist_add(list, "y", b);
    oru_do_nvlist_add(list, "x", b);
    oru_do_nvlist_delete_item(list, oru_do_nvlist_get_item(list, 1));
    EXPECT_EQ(text(), "x1 y2 x2 ");
    ORUDoValue *equal = oru_do_value_new_long(2);
    ORUDoNvlist *other = oru_do_nvlist_new_from_item("x", equal);
    oru_do_nvlist_delete_item(list, oru_do_nvlist_get_item(other, 0));
    EXPECT_EQ(text(), "x1 y2 ");
    oru_do_nvlist_delete_item(list, oru_do_nvlist_get_item(other, 0));
    EXPECT_EQ(text(), "x1 y2 ");
    oru_do_nvlist_add(list, "end", c);
    EXPECT_EQ(text(), "x1 y2 end3 ");
    oru_do_nvlist_deref(other);
    oru_do_value_deref(equal);
}

TEST_F(Nvlist, DeletesNoItemByNull) {
    oru_do_nvlist_add(list, "x", a);
    oru_do_nvlist_delete_item(list, nullptr);
    EXPECT_EQ(text(), "x1 ");
}

// Values without an order never compare as 0, whatever they hold.
TEST_F(Nvlist, DeletesNoItemThatCannotBeCompared) {
    ORUDoVlist *held = oru_do_vlist_new();
    ORUDoUri *uri = oru_do_uri_new("/a");
    ORUDoValue *values[] = {oru_do_value_new_array(held),  oru_do_value_new_bits(held),
                            oru_do_value_new_choice(list), oru_do_value_new_mr_uri(uri),
                            oru_do_value_new_string("/a"), oru_do_value_new_int(1),
                            oru_do_value_new_null(),       oru_do_value_new_double(1)};
    for (ORUDoValue *held_by_list : values) {
        for (ORUDoValue *given : values) {
            if (held_by_list == given)
                continue;
            ORUDoNvlist *one = oru_do_nvlist_new_from_item("x", held_by_list);
            ORUDoNvlist *two = oru_do_nvlist_new_from_item("x", given);
            oru_do_nvlist_delete_item(one, oru_do_nvlist_get_item(two, 0));
            EXPECT_EQ(oru_do_nvlist_get_len(one), 1);
            oru_do_nvlist_deref(one);
            oru_do_nvlist_deref(two);
        }
    }
    for (ORUDoValue *value : values)
        oru_do_value_deref(value);
    oru_do_uri_deref(uri);
    oru_do_vlist_deref(held);
}

TEST_F(Nvlist, ListsAreEqualInOrder) {
    ORUDoNvlist *other = oru_do_nvlist_new();
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 1);
    oru_do_nvlist_add(list, "x", a);
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 0);
    EXPECT_EQ(oru_do_nvlist_equals(other, list), 0);
    oru_do_nvlist_add(list, "y", b);
    oru_do_nvlist_add(other, "y", b);
    oru_do_nvlist_add(other, "x", a);
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 0);
    oru_do_nvlist_delete_one(other, "y");
    oru_do_nvlist_add_int(other, "y", 2);
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 1);
    oru_do_nvlist_delete_one(other, "y");
    oru_do_nvlist_add_int(other, "z", 2);
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 0);
    oru_do_nvlist_delete_one(other, "z");
    oru_do_nvlist_add_long(other, "y", 2);
    EXPECT_EQ(oru_do_nvlist_equals(list, other), 0);
    oru_do_nvlist_deref(other);
}

TEST_F(Nvlist, PrintsItsItemsInBraces) {
    using oru::test::printed;
    EXPECT_EQ(printed<oru_do_nvlist_to_strbuf>(list, 2), "{}");
    oru_do_nvlist_add(list, "x", a);
    EXPECT_EQ(printed<oru_do_nvlist_to_strbuf>(list, 2), "{x : 1}");
    oru_do_nvlist_add_string(list, "y", "text");
    EXPECT_EQ(printed<oru_do_nvlist_to_strbuf>(list, 2), "{x : 1, y : text}");
    EXPECT_EQ(printed<oru_do_nvlist_to_strbuf>(static_cast<ORUDoNvlist *>(nullptr)), "");
}

TEST_F(Nvlist, RequiredArguments) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_nvlist_clone(nullptr), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_get_len(nullptr), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_get_item(nullptr, 0), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_get_item_by_name(nullptr, "x"), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_get_item_by_name(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_nvlist_get_value(nullptr, "x"), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_get_value(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_nvlist_item_get_name(nullptr), "item");
    EXPECT_ASSERTION(oru_do_nvlist_item_get_value(nullptr), "item");
    EXPECT_ASSERTION(oru_do_nvlist_iter(nullptr, &iter), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_nvlist_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_nvlist_has_next(&iter), "iter->coll_type == DO_COLL_NVLIST");
    EXPECT_ASSERTION(oru_do_nvlist_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_nvlist_add(nullptr, "x", a), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_add_l(nullptr, "x", 1, a), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_add_at(nullptr, "x", a, 0), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_add_l_at(nullptr, "x", 1, a, 0), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_add_all(nullptr, list), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_add_all(list, nullptr), "other_nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_delete_one(nullptr, "x"), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_delete_one(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_nvlist_delete_all(nullptr, "x"), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_delete_all(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_nvlist_delete_item(nullptr, nullptr), "nvlist");
    EXPECT_ASSERTION(oru_do_nvlist_equals(nullptr, list), "nvlist1");
    EXPECT_ASSERTION(oru_do_nvlist_equals(list, nullptr), "nvlist2");
    EXPECT_ASSERTION(oru_do_nvlist_to_strbuf(list, 0, nullptr), "strbuf");
    EXPECT_EQ(oru_do_nvlist_ref(nullptr), nullptr);
    oru_do_nvlist_deref(nullptr);
}

TEST_F(Nvlist, EveryAllocationOfAddingAndCloningMayFail) {
    const std::string name(40, 'n');
    oru::test::sweep_oom(
        [&] {
            ORUDoNvlist *nvlist = oru_do_nvlist_new_from_item("x", a);
            if (nvlist == nullptr)
                return;
            const int32_t had = oru_do_nvlist_get_len(nvlist);
            const int32_t added = oru_do_nvlist_add(nvlist, name.c_str(), b);
            EXPECT_EQ(oru_do_nvlist_get_len(nvlist), added == -1 ? had : had + 1);
            const int32_t inserted = oru_do_nvlist_add_at(nvlist, name.c_str(), c, 0);
            const int32_t before = oru_do_nvlist_get_len(nvlist);
            const int32_t doubled = oru_do_nvlist_add_all(nvlist, nvlist);
            if (doubled != -1) {
                EXPECT_EQ(doubled, 2 * before);
            }
            ORUDoNvlist *copy = oru_do_nvlist_clone(nvlist);
            if (copy != nullptr) {
                EXPECT_EQ(oru_do_nvlist_get_len(copy), oru_do_nvlist_get_len(nvlist));
            }
            const bool failed =
                had == 0 || added == -1 || inserted == -1 || doubled == -1 || copy == nullptr;
            EXPECT_EQ(failed, oru::test::oom_hit());
            oru_do_nvlist_deref(copy);
            oru_do_nvlist_deref(nvlist);
        },
        {.promised_deaths = {}, .at_least = 20});
}

}  // namespace
