#include "oru/nlist.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "oru/iter.h"
#include "oru/name.h"
#include "oru/ntlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"

namespace {

using oru::test::printed;

class Nlist : public testing::Test {
  protected:
    ~Nlist() override {
        oru_do_nlist_deref(list);
        oru_do_nlist_deref(other);
        oru_do_name_deref(a);
        oru_do_name_deref(b);
    }

    // The names in the order of a walk.
    static std::string text_of(ORUDoNlist *nlist) {
        std::string text;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_nlist_iter(nlist, &iter); oru_do_nlist_has_next(&iter);) {
            text += oru_do_name_get_strname(oru_do_nlist_get_next(&iter));
            text += ' ';
        }
        return text;
    }
    std::string text() const { return text_of(list); }

    ORUDoNlist *list = oru_do_nlist_new();
    ORUDoNlist *other = oru_do_nlist_new();
    ORUDoName *a = oru_do_name_new("a");
    ORUDoName *b = oru_do_name_new("b");
};

TEST_F(Nlist, KeepsTheOrderOfAddingAndDuplicates) {
    EXPECT_EQ(oru_do_nlist_get_len(list), 0);
    EXPECT_EQ(oru_do_nlist_add(list, b), 1);
    EXPECT_EQ(oru_do_nlist_add(list, a), 2);
    EXPECT_EQ(oru_do_nlist_add(list, b), 3);
    EXPECT_EQ(text(), "b a b ");
    EXPECT_EQ(oru_do_nlist_get_name(list, 0), b);
}

TEST_F(Nlist, ANullNameIsNotAdded) {
    EXPECT_EQ(oru_do_nlist_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_nlist_get_len(list), 0);
}

TEST_F(Nlist, TextsBecomeNames) {
    EXPECT_EQ(oru_do_nlist_add_string(list, "x"), 1);
    EXPECT_EQ(oru_do_nlist_add_string(list, nullptr), 0);
    EXPECT_EQ(oru_do_nlist_add_string(list, "y"), 2);
    EXPECT_EQ(text(), "x y ");
}

TEST_F(Nlist, ATextThatCannotBeAddedIsZero) {
    for (uint64_t nth = 1; nth <= 2; ++nth) {
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(oru_do_nlist_add_string(list, "x"), 0);
        poolheap_fail_off();
    }
    EXPECT_EQ(oru_do_nlist_get_len(list), 0);
}

TEST_F(Nlist, ArraysOfTextsAreAdded) {
    const char *const texts[] = {"x", "y", nullptr, "z"};
    const char *const none[] = {nullptr};
    oru_do_nlist_add(list, a);
    EXPECT_EQ(oru_do_nlist_add_strnames(list, texts), 3);
    EXPECT_EQ(text(), "a x y ");
    EXPECT_EQ(oru_do_nlist_add_strnames(list, none), 0);
    EXPECT_EQ(oru_do_nlist_add_strnames(list, nullptr), 0);
    EXPECT_EQ(oru_do_nlist_get_len(list), 3);
}

TEST_F(Nlist, TheResultOfAnArrayIsThatOfItsLastText) {
    const char *const texts[] = {"x", "y", nullptr};
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_nlist_add_strnames(list, texts), 1);
    poolheap_fail_off();
    EXPECT_EQ(text(), "y ");
    poolheap_fail_nth(3, 0);
    EXPECT_EQ(oru_do_nlist_add_strnames(list, texts), 0);
    poolheap_fail_off();
    EXPECT_EQ(text(), "y x ");
}

TEST_F(Nlist, AListIsMadeOfAnArray) {
    const char *const texts[] = {"x", "y", nullptr};
    const char *const none[] = {nullptr};
    ORUDoNlist *made = oru_do_nlist_new_strnames(texts);
    EXPECT_EQ(text_of(made), "x y ");
    oru_do_nlist_deref(made);
    for (const char *const *array : {none, static_cast<const char *const *>(nullptr)}) {
        made = oru_do_nlist_new_strnames(array);
        EXPECT_EQ(oru_do_nlist_get_len(made), 0);
        oru_do_nlist_deref(made);
    }
    EXPECT_ASSERTION(
        {
            poolheap_fail_nth(1, 0);
            oru_do_nlist_new_strnames(texts);
        },
        "nlist");
}

TEST_F(Nlist, AListIsMadeOfTheUnqualifiedNamesOfTypedOnes) {
    ORUDoNtlist *typed = oru_do_ntlist_new();
    for (const char *text : {"plain", "p/mr.attr", "p:1.0/mr.deep.er"}) {
        ORUDoName *name = oru_do_name_new(text);
        oru_do_ntlist_add_builtin_type(typed, name, 5, nullptr);
        oru_do_name_deref(name);
    }
    ORUDoNlist *made = oru_do_nlist_new_from_ntlist(typed);
    EXPECT_EQ(text_of(made), "plain attr deep.er ");
    oru_do_nlist_deref(made);

    ORUDoName *without = oru_do_name_new("p/mr");
    oru_do_ntlist_add_builtin_type(typed, without, 5, nullptr);
    oru_do_name_deref(without);
    EXPECT_EQ(oru_do_nlist_new_from_ntlist(typed), nullptr);
    oru_do_ntlist_deref(typed);
}

TEST_F(Nlist, NamesAreFoundByIndexAndByText) {
    oru_do_nlist_add(list, a);
    oru_do_nlist_add(list, b);
    oru_do_nlist_add_string(list, "b");
    EXPECT_EQ(oru_do_nlist_get_name(list, 1), b);
    EXPECT_EQ(oru_do_nlist_get_name(list, 3), nullptr);
    EXPECT_EQ(oru_do_nlist_get_name(list, -1), nullptr);
    EXPECT_EQ(oru_do_nlist_get_name_by_str(list, "b"), b);
    EXPECT_EQ(oru_do_nlist_get_name_by_str(list, "c"), nullptr);
    EXPECT_EQ(oru_do_nlist_get_name_by_str(list, nullptr), nullptr);
    EXPECT_EQ(oru_do_nlist_index_of(list, "b"), 1);
    EXPECT_EQ(oru_do_nlist_index_of(list, "c"), -1);
    EXPECT_EQ(oru_do_nlist_index_of(list, nullptr), -1);
}

TEST_F(Nlist, AppendsAnotherListSharedOrCopied) {
    EXPECT_EQ(oru_do_nlist_add_all(list, other), 0);
    EXPECT_EQ(oru_do_nlist_add_all_copy(list, other), 0);
    oru_do_nlist_add(other, a);
    oru_do_nlist_add(other, b);
    EXPECT_EQ(oru_do_nlist_add_all(list, other), 2);
    EXPECT_EQ(oru_do_nlist_add_all_copy(list, other), 4);
    EXPECT_EQ(text(), "a b a b ");
    EXPECT_EQ(oru_do_nlist_get_name(list, 1), b);
    EXPECT_NE(oru_do_nlist_get_name(list, 3), b);
}

TEST_F(Nlist, AppendedToItselfItDoubles) {
    oru_do_nlist_add(list, a);
    EXPECT_EQ(oru_do_nlist_add_all(list, list), 2);
    EXPECT_EQ(oru_do_nlist_add_all_copy(list, list), 4);
    EXPECT_EQ(text(), "a a a a ");
}

TEST_F(Nlist, MergesTwoLists) {
    EXPECT_EQ(oru_do_nlist_merge(nullptr, nullptr), nullptr);
    oru_do_nlist_add(list, a);
    oru_do_nlist_add(list, b);
    oru_do_nlist_add(other, b);
    ORUDoNlist *merged = oru_do_nlist_merge(list, other);
    EXPECT_EQ(text_of(merged), "a b b ");
    EXPECT_EQ(oru_do_nlist_get_name(merged, 2), b);
    oru_do_nlist_deref(merged);
    merged = oru_do_nlist_merge(nullptr, other);
    EXPECT_EQ(text_of(merged), "b ");
    oru_do_nlist_deref(merged);
    merged = oru_do_nlist_merge(list, nullptr);
    EXPECT_EQ(text_of(merged), "a b ");
    EXPECT_NE(merged, list);
    oru_do_nlist_deref(merged);
}

TEST_F(Nlist, RemovesByIndex) {
    const char *const texts[] = {"x", "y", "z", nullptr};
    oru_do_nlist_add_strnames(list, texts);
    oru_do_nlist_remove(list, 1);
    EXPECT_EQ(text(), "x z ");
    oru_do_nlist_remove(list, 2);
    oru_do_nlist_remove(list, -1);
    oru_do_nlist_remove(nullptr, 0);
    EXPECT_EQ(text(), "x z ");
    oru_do_nlist_remove(list, 1);
    oru_do_nlist_add(list, a);
    EXPECT_EQ(text(), "x a ");
    oru_do_nlist_remove(list, 0);
    oru_do_nlist_remove(list, 0);
    EXPECT_EQ(oru_do_nlist_get_len(list), 0);
}

TEST_F(Nlist, ClearsAndGoesOn) {
    oru_do_nlist_add(list, a);
    oru_do_nlist_clear(list);
    EXPECT_EQ(oru_do_nlist_get_len(list), 0);
    oru_do_nlist_add(list, b);
    EXPECT_EQ(text(), "b ");
}

TEST_F(Nlist, ListsAreEqualInOrder) {
    EXPECT_EQ(oru_do_nlist_equals(list, other), 1);
    oru_do_nlist_add(list, a);
    EXPECT_EQ(oru_do_nlist_equals(list, other), 0);
    EXPECT_EQ(oru_do_nlist_equals(other, list), 0);
    oru_do_nlist_add(list, b);
    oru_do_nlist_add(other, b);
    oru_do_nlist_add(other, a);
    EXPECT_EQ(oru_do_nlist_equals(list, other), 0);
    oru_do_nlist_remove(other, 0);
    oru_do_nlist_add_string(other, "b");
    EXPECT_EQ(oru_do_nlist_equals(list, other), 1);
}

TEST_F(Nlist, ANullListIsEmptyAndANullIteratorIsAtItsEnd) {
    EXPECT_EQ(oru_do_nlist_get_len(nullptr), 0);
    EXPECT_EQ(oru_do_nlist_has_next(nullptr), 0);
    EXPECT_EQ(oru_do_nlist_get_next(nullptr), nullptr);
}

TEST_F(Nlist, AWalkEndsWithNull) {
    oru_do_nlist_add(list, a);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_nlist_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 0);
    EXPECT_EQ(iter.collection, list);
    EXPECT_EQ(oru_do_nlist_get_next(&iter), a);
    EXPECT_EQ(oru_do_nlist_has_next(&iter), 0);
    EXPECT_EQ(oru_do_nlist_get_next(&iter), nullptr);
}

TEST_F(Nlist, PrintsItsNamesInBrackets) {
    EXPECT_EQ(printed<oru_do_nlist_to_strbuf>(list, 1), "\t[]\n");
    oru_do_nlist_add(list, a);
    EXPECT_EQ(printed<oru_do_nlist_to_strbuf>(list), "[a]\n");
    oru_do_nlist_add(list, b);
    EXPECT_EQ(printed<oru_do_nlist_to_strbuf>(list, 2), "\t\t[a, b]\n");
    EXPECT_EQ(printed<oru_do_nlist_to_strbuf>(static_cast<ORUDoNlist *>(nullptr), 2), "");
}

TEST_F(Nlist, RequiredArguments) {
    const char *const texts[] = {"x", nullptr};
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_nlist_new_from_ntlist(nullptr), "ntlist");
    EXPECT_ASSERTION(oru_do_nlist_get_name(nullptr, 0), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_get_name_by_str(nullptr, "a"), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_index_of(nullptr, "a"), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_iter(nullptr, &iter), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_nlist_has_next(&iter), "iter->coll_type == DO_COLL_NLIST");
    EXPECT_ASSERTION(oru_do_nlist_equals(nullptr, list), "nlist1");
    EXPECT_ASSERTION(oru_do_nlist_equals(list, nullptr), "nlist2");
    EXPECT_ASSERTION(oru_do_nlist_add(nullptr, a), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_string(nullptr, "a"), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_strnames(nullptr, texts), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_all(nullptr, list), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_all(list, nullptr), "other_nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_all_copy(nullptr, list), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_add_all_copy(list, nullptr), "other_nlist");
    EXPECT_ASSERTION(oru_do_nlist_clear(nullptr), "nlist");
    EXPECT_ASSERTION(oru_do_nlist_to_strbuf(list, 0, nullptr), "strbuf");
    EXPECT_EQ(oru_do_nlist_ref(nullptr), nullptr);
    oru_do_nlist_deref(nullptr);
}

TEST_F(Nlist, EveryAllocationMayFail) {
    const std::string longer(40, 'n');
    oru_do_nlist_add_string(other, longer.c_str());
    oru::test::sweep_oom(
        [&] {
            ORUDoNlist *nlist = oru_do_nlist_new();
            if (nlist == nullptr)
                return;
            const int32_t added = oru_do_nlist_add(nlist, a);
            const int32_t all = oru_do_nlist_add_all(nlist, other);
            const int32_t copied = oru_do_nlist_add_all_copy(nlist, other);
            const int32_t text = oru_do_nlist_add_string(nlist, "b");
            ORUDoNlist *merged = oru_do_nlist_merge(nlist, other);
            const bool failed =
                added == -1 || all == -1 || copied == -1 || text == 0 || merged == nullptr;
            EXPECT_EQ(failed, oru::test::oom_hit());
            if (!failed) {
                EXPECT_EQ(oru_do_nlist_get_len(merged), 5);
            }
            oru_do_nlist_deref(merged);
            oru_do_nlist_deref(nlist);
        },
        {.promised_deaths = {}, .at_least = 14});
}

TEST_F(Nlist, EveryAllocationOfMakingOneOfTypedNamesMayFail) {
    ORUDoNtlist *typed = oru_do_ntlist_new();
    oru_do_ntlist_add_builtin_type(typed, a, 5, nullptr);
    oru_do_ntlist_add_builtin_type(typed, b, 5, nullptr);
    oru::test::sweep_oom(
        [&] {
            ORUDoNlist *made = oru_do_nlist_new_from_ntlist(typed);
            EXPECT_EQ(made == nullptr, oru::test::oom_hit());
            oru_do_nlist_deref(made);
        },
        {.promised_deaths = {}, .at_least = 4});
    oru_do_ntlist_deref(typed);
}

}  // namespace
