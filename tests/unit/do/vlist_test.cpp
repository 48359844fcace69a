#include "oru/vlist.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "oru/iter.h"
#include "oru/logger.h"
#include "oru/nlist.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

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

TEST_F(Vlist, AddsBehindAnEqualValue) {
    add({one, two, one});
    ORUDoValue *equal = oru_do_value_new_int(1);
    EXPECT_EQ(oru_do_vlist_add_after(list, equal, three), 4);
    EXPECT_EQ(text(), "1 3 2 1 ");
    EXPECT_EQ(oru_do_vlist_add_after(list, three, nullptr), -1);
    oru_do_value_deref(equal);
    ORUDoValue *other_type = oru_do_value_new_long(1);
    EXPECT_EQ(oru_do_vlist_add_after(list, other_type, three), -1);
    oru_do_value_deref(other_type);
    EXPECT_EQ(oru_do_vlist_get_len(list), 4);
}

// The end of the list does not move, so the next append takes the place of what stands behind it.
TEST_F(Vlist, AValueBehindTheLastIsThereUntilTheNextAppend) {
    add({one});
    EXPECT_EQ(oru_do_vlist_add_after(list, one, two), 2);
    EXPECT_EQ(text(), "1 2 ");
    EXPECT_EQ(oru_do_vlist_get_value(list, 1), two);
    EXPECT_EQ(oru_do_vlist_add(list, three), 3);
    EXPECT_EQ(text(), "1 3 ");
    EXPECT_EQ(oru_do_vlist_get_len(list), 3);
}

TEST_F(Vlist, ValuesBehindTheLastAreCutOffTogether) {
    add({one});
    oru_do_vlist_add_after(list, one, two);
    oru_do_vlist_add_after(list, two, three);
    EXPECT_EQ(text(), "1 2 3 ");
    EXPECT_EQ(oru_do_vlist_add_all(list, list), 6);
    EXPECT_EQ(oru_do_vlist_get_value(list, 0), one);
    EXPECT_EQ(oru_do_vlist_get_value(list, 1), one);
    oru_do_vlist_clear(list);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
    EXPECT_EQ(text(), "");
}

TEST_F(Vlist, TheLastMayBeRemovedFromUnderWhatStandsBehindIt) {
    add({one});
    oru_do_vlist_add_after(list, one, two);
    oru_do_vlist_remove_value(list, one);
    EXPECT_EQ(text(), "2 ");
    oru_do_vlist_add(list, three);
    EXPECT_EQ(text(), "3 ");
}

TEST_F(Vlist, AppendedToItselfItKeepsNothingThatStandsBehindTheLast) {
    add({one});
    oru_do_vlist_add_after(list, one, two);
    oru_do_vlist_remove_value(list, one);
    EXPECT_EQ(text(), "2 ");
    oru_do_vlist_add_all(list, list);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(oru_do_vlist_add(list, three), 2);  // the count keeps what was cut off
    EXPECT_EQ(text(), "3 ");
}

TEST_F(Vlist, RemovesTheFirstEqualValue) {
    add({one, two, one, three});
    ORUDoValue *equal = oru_do_value_new_int(1);
    oru_do_vlist_remove_value(list, equal);
    EXPECT_EQ(text(), "2 1 3 ");
    oru_do_vlist_remove_value(list, three);
    add({two});
    EXPECT_EQ(text(), "2 1 2 ");
    oru_do_vlist_remove_value(list, three);
    EXPECT_EQ(oru_do_vlist_get_len(list), 3);
    oru_do_value_deref(equal);
}

TEST_F(Vlist, RemovesAllEqualValues) {
    add({one, two, one, one});
    EXPECT_EQ(oru_do_vlist_remove_value_all(list, three), 0);
    EXPECT_EQ(oru_do_vlist_remove_value_all(list, one), 3);
    EXPECT_EQ(text(), "2 ");
    EXPECT_EQ(oru_do_vlist_remove_value_all(list, two), 1);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
    add({three});
    EXPECT_EQ(text(), "3 ");
}

TEST_F(Vlist, RemovesByAValueOfItsOwn) {
    for (int i = 0; i < 3; ++i)
        oru_do_vlist_add_int(list, 9);
    EXPECT_EQ(oru_do_vlist_remove_value_all(list, oru_do_vlist_get_value(list, 0)), 3);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
}

TEST_F(Vlist, RemovesTheValuesOfAnotherList) {
    ORUDoVlist *other = oru_do_vlist_new();
    oru_do_vlist_add(other, one);
    oru_do_vlist_add(other, three);
    add({one, two, one});
    oru_do_vlist_remove(list, other);
    EXPECT_EQ(text(), "2 1 ");
    EXPECT_EQ(oru_do_vlist_get_len(other), 2);
    oru_do_vlist_remove(list, nullptr);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
    oru_do_vlist_deref(other);
}

TEST_F(Vlist, RemovedFromItselfItIsEmpty) {
    for (int i = 0; i < 3; ++i)
        oru_do_vlist_add_int(list, 9);
    add({one});
    oru_do_vlist_remove(list, list);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
}

TEST_F(Vlist, ListsAreEqualInOrder) {
    ORUDoVlist *other = oru_do_vlist_new();
    EXPECT_EQ(oru_do_vlist_equals(list, other), 1);
    add({one, two});
    EXPECT_EQ(oru_do_vlist_equals(list, other), 0);
    EXPECT_EQ(oru_do_vlist_equals(other, list), 0);
    oru_do_vlist_add(other, two);
    oru_do_vlist_add(other, one);
    EXPECT_EQ(oru_do_vlist_equals(list, other), 0);
    oru_do_vlist_reverse(other);
    EXPECT_EQ(oru_do_vlist_equals(list, other), 1);
    oru_do_vlist_set_value(other, 1, three);
    EXPECT_EQ(oru_do_vlist_equals(list, other), 0);
    oru_do_vlist_deref(other);
}

TEST_F(Vlist, PrintsItsValuesOnLinesOfTheirOwn) {
    using oru::test::printed;
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf>(list, 1), "\t[\n]\n");
    add({one});
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf>(list), "[\n\t1\n]\n");
    add({two});
    oru_do_value_set_default_flag(two);
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf>(list, 1), "\t[\n\t\t1,\n\t\t2\n]\n");
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf_with_defaults>(list, 1),
              "\t[\n\t\t1,\n\t\t2 (default)\n]\n");
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf>(static_cast<ORUDoVlist *>(nullptr), 1), "");
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf_with_defaults>(static_cast<ORUDoVlist *>(nullptr), 1),
              "");
}

TEST_F(Vlist, IsTracedWhenTheLoggerIsAtTheLevel) {
    add({one});
    TraceCapture traces;
    const uint32_t level = oru_logger_get_level();
    oru_logger_set_level(4);
    oru_do_vlist_trace(list, 5);
    EXPECT_TRUE(traces.lines().empty());
    oru_do_vlist_trace(list, 4);
    oru_do_vlist_trace(list, 0);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "[\n\t1\n]\n\n"}, {7, "[\n\t1\n]\n\n"}}));
    traces.clear();
    for (uint64_t nth = 1; nth <= 2; ++nth) {
        poolheap_fail_nth(nth, 0);
        oru_do_vlist_trace(list, 4);
        poolheap_fail_off();
    }
    EXPECT_TRUE(traces.lines().empty());
    oru_logger_set_level(level);
}

TEST_F(Vlist, CollectionsBelowAResourceAreAddedByName) {
    const char *const texts[] = {"Port", "Slot", nullptr};
    ORUDoNlist *names = oru_do_nlist_new_strnames(texts);
    ORUDoNlist *none = oru_do_nlist_new();
    ORUDoUri *uri = oru_do_uri_new("/a/b");
    EXPECT_EQ(oru_do_vlist_add_child_ref_names(list, uri, none), 0);
    EXPECT_EQ(oru_do_vlist_add_child_ref_names(list, uri, names), 0);
    EXPECT_EQ(oru_do_vlist_get_len(list), 2);
    const char *const expected[] = {"/a/b?Port", "/a/b?Slot"};
    for (int32_t i = 0; i < 2; ++i) {
        ORUDoValue *value = oru_do_vlist_get_value(list, i);
        EXPECT_EQ(oru_do_value_get_type(value), 108);
        EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_value_get_uri(value)), expected[i]);
    }
    EXPECT_EQ(oru_do_vlist_add_child_ref_names(nullptr, uri, names), 10000);
    EXPECT_EQ(oru_do_vlist_add_child_ref_names(list, nullptr, names), 10000);
    EXPECT_EQ(oru_do_vlist_add_child_ref_names(list, uri, nullptr), 10000);
    oru::test::sweep_oom(
        [&] {
            ORUDoVlist *vlist = oru_do_vlist_new();
            if (vlist == nullptr)
                return;
            const int32_t rc = oru_do_vlist_add_child_ref_names(vlist, uri, names);
            EXPECT_EQ(rc, oru::test::oom_hit() ? 10002 : 0);
            EXPECT_EQ(oru_do_vlist_get_len(vlist) == 2, rc == 0);
            oru_do_vlist_deref(vlist);
        },
        {.promised_deaths = {}, .at_least = 9});
    oru_do_uri_deref(uri);
    oru_do_nlist_deref(none);
    oru_do_nlist_deref(names);
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
    add({one});
    EXPECT_ASSERTION(oru_do_vlist_add_after(nullptr, one, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_add_after(list, nullptr, one), "after");
    EXPECT_ASSERTION(oru_do_vlist_remove_value(nullptr, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_remove_value(list, nullptr), "value");
    EXPECT_ASSERTION(oru_do_vlist_remove_value_all(nullptr, one), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_remove_value_all(list, nullptr), "value");
    EXPECT_ASSERTION(oru_do_vlist_remove(nullptr, list), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_equals(nullptr, list), "vlist1");
    EXPECT_ASSERTION(oru_do_vlist_equals(list, nullptr), "vlist2");
    EXPECT_ASSERTION(oru_do_vlist_to_strbuf(list, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_vlist_to_strbuf_with_defaults(list, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_vlist_trace(nullptr, 9), "vlist");
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
            const int32_t more = oru_do_vlist_add(vlist, two);
            const int32_t after = added != -1 ? oru_do_vlist_add_after(vlist, one, three) : -1;
            const int32_t first = oru_do_vlist_add_first(vlist, two);
            const int32_t len = oru_do_vlist_get_len(vlist);
            EXPECT_EQ(len, (more != -1 ? 1 : 0) + (after != -1 ? 1 : 0) + (added != -1 ? 1 : 0) +
                               (first != -1 ? 1 : 0));
            const int32_t all = oru_do_vlist_add_all(vlist, vlist);
            if (!oru::test::oom_hit()) {
                EXPECT_EQ(all, 8);
            }
            ORUDoVlist *copy = oru_do_vlist_clone(vlist);
            const bool whole =
                copy != nullptr && oru_do_vlist_get_len(copy) == oru_do_vlist_get_len(vlist);
            const bool failed =
                more == -1 || after == -1 || added == -1 || first == -1 || all == -1 || !whole;
            EXPECT_EQ(failed, oru::test::oom_hit());
            oru_do_vlist_deref(copy);
            oru_do_vlist_deref(vlist);
        },
        {.promised_deaths = {}, .at_least = 12});
}

}  // namespace
