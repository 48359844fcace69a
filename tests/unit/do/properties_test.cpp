#include "oru/properties.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <utility>

#include "oru/name.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/do/properties_support.h"

namespace {

using oru::test::fill;
using oru::test::index_of;
using oru::test::set_int;
using oru::test::Trace;
using oru::test::TraceCapture;
using oru::test::walked;

class Properties : public oru::test::PropertiesTest {};

TEST_F(Properties, ANewTableIsEmptyAndTraced) {
    TraceCapture traces;
    ORUDoProperties *table = oru_do_properties_new();
    char expected[64];
    std::snprintf(expected, sizeof expected, "oru props malloc %p", static_cast<void *>(table));
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, expected}}));
    EXPECT_EQ(oru_do_properties_get_len(table), 0);
    EXPECT_EQ(oru_do_properties_get_prop(table, "a"), nullptr);
    EXPECT_EQ(oru_do_properties_get_prop_at_index(table, 0), nullptr);
    oru_do_properties_deref(table);
}

TEST_F(Properties, AddsInOrderAndReplacesInPlace) {
    TraceCapture traces;
    set_int(props, "a", 1);
    set_int(props, "b", 2);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, line("oru props %p added item name: a")},
                                                  {7, line("oru props %p added item name: b")}}));
    set_int(props, "c", 3);
    set_int(props, "b", 4);
    EXPECT_EQ(walked(props), "a1 b4 c3 ");
    EXPECT_EQ(oru_do_properties_get_len(props), 3);
}

TEST_F(Properties, ReplacingIsNotTraced) {
    set_int(props, "a", 1);
    TraceCapture traces;
    set_int(props, "a", 2);
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(Properties, FindsEntriesByTextByNameAndByIndex) {
    set_int(props, "a", 1);
    set_int(props, "b", 2);
    ORUDoName *b = oru_do_name_new("b");
    ORUDoName *c = oru_do_name_new("c");
    ORUDoProperty *entry = oru_do_properties_get_prop(props, "b");
    EXPECT_STREQ(oru_do_property_get_name_string(entry), "b");
    EXPECT_EQ(oru_do_properties_get_prop_n(props, b), entry);
    EXPECT_EQ(oru_do_properties_get_prop_at_index(props, 1), entry);
    EXPECT_EQ(oru_do_properties_get_value(props, "b"), oru_do_property_get_value(entry));
    EXPECT_EQ(oru_do_properties_get_value_n(props, b), oru_do_property_get_value(entry));
    EXPECT_EQ(oru_do_properties_get_prop(props, "B"), nullptr);
    EXPECT_EQ(oru_do_properties_get_prop_n(props, c), nullptr);
    EXPECT_EQ(oru_do_properties_get_value(props, "c"), nullptr);
    EXPECT_EQ(oru_do_properties_get_value_n(props, c), nullptr);
    EXPECT_EQ(oru_do_properties_get_prop_at_index(props, 2), nullptr);
    EXPECT_EQ(oru_do_properties_get_prop_at_index(props, -1), nullptr);
    oru_do_name_deref(b);
    oru_do_name_deref(c);
}

TEST_F(Properties, AnObjectGivenAsNameIsShared) {
    ORUDoName *name = oru_do_name_new("a");
    oru_do_properties_set_value_n(props, name, one);
    EXPECT_EQ(oru_do_property_get_name(oru_do_properties_get_prop(props, "a")), name);
    oru_do_properties_set_value_n(props, name, two);
    EXPECT_EQ(walked(props), "a2 ");
    oru_do_name_deref(name);
    EXPECT_EQ(walked(props), "a2 ");
}

TEST_F(Properties, ACountedNameMatchesWhole) {
    set_int(props, "abc", 9);
    oru_do_properties_set_value_l(props, "abcd", 2, one);
    oru_do_properties_set_value_l(props, "abcd", 3, two);
    EXPECT_EQ(walked(props), "abc2 ab1 ");
}

TEST_F(Properties, ACountedNameIsFoundInAnIndexedTableToo) {
    fill(props, 21);
    ASSERT_NE(index_of(props), nullptr);
    oru_do_properties_set_value_l(props, "p0x", 2, two);
    oru_do_properties_set_value_l(props, "p0x", 3, one);
    EXPECT_EQ(oru_do_properties_get_value(props, "p0"), two);
    EXPECT_EQ(oru_do_properties_get_value(props, "p0x"), one);
    EXPECT_EQ(oru_do_properties_get_len(props), 22);
}

TEST_F(Properties, ANullValueChangesNothingThatIsThere) {
    set_int(props, "a", 1);
    ORUDoName *name = oru_do_name_new("a");
    oru_do_properties_set_value(props, "a", nullptr);
    oru_do_properties_set_value_n(props, name, nullptr);
    oru_do_properties_set_value_l(props, "ab", 1, nullptr);
    oru_do_name_deref(name);
    EXPECT_EQ(walked(props), "a1 ");
}

TEST_F(Properties, ANullValueIsNotAdded) {
    ORUDoName *name = oru_do_name_new("a");
    EXPECT_ASSERTION(oru_do_properties_set_value(props, "a", nullptr), "val");
    EXPECT_ASSERTION(oru_do_properties_set_value_n(props, name, nullptr), "val");
    EXPECT_ASSERTION(oru_do_properties_set_value_l(props, "a", 1, nullptr), "val");
    oru_do_name_deref(name);
}

TEST_F(Properties, AValueMayReplaceItself) {
    set_int(props, "a", 1);
    oru_do_properties_set_value(props, "a", oru_do_properties_get_value(props, "a"));
    EXPECT_EQ(walked(props), "a1 ");
}

TEST_F(Properties, RemovesByIndex) {
    fill(props, 4);
    TraceCapture traces;
    oru_do_properties_remove(props, 1);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, line("oru props %p removed item by index idx=1 name :p1")}}));
    EXPECT_EQ(walked(props), "p00 p22 p33 ");
    oru_do_properties_remove(props, 0);
    oru_do_properties_remove(props, 1);
    EXPECT_EQ(walked(props), "p22 ");
    oru_do_properties_remove(props, 1);
    oru_do_properties_remove(props, -1);
    EXPECT_EQ(oru_do_properties_get_len(props), 1);
    oru_do_properties_remove(props, 0);
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
    set_int(props, "new", 1);
    EXPECT_EQ(walked(props), "new1 ");
}

TEST_F(Properties, RemovesByName) {
    fill(props, 3);
    TraceCapture traces;
    oru_do_properties_remove_by_name(props, "p2");
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, line("oru props %p removed item name: p2")}}));
    set_int(props, "new", 7);
    EXPECT_EQ(walked(props), "p00 p11 new7 ");
    traces.clear();
    oru_do_properties_remove_by_name(props, "p2");
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(oru_do_properties_get_len(props), 3);
}

TEST_F(Properties, RemovesTheFirstOfTwoOfAName) {
    set_int(props, "a", 1);
    set_int(other, "a", 2);
    oru_do_properties_add_all(props, other);
    oru_do_properties_remove_by_name(props, "a");
    EXPECT_EQ(walked(props), "a2 ");
}

TEST_F(Properties, ClearsAndGoesOn) {
    fill(props, 3);
    TraceCapture traces;
    oru_do_properties_clear(props);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, line("oru props %p cleaned")}}));
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
    set_int(props, "a", 1);
    EXPECT_EQ(walked(props), "a1 ");
    oru_do_properties_clear(nullptr);
}

TEST_F(Properties, ResetEntriesKeepTheirPlaceAndCanBeFilledAgain) {
    set_int(props, "a", 1);
    set_int(props, "b", 2);
    oru_do_properties_reset_values(props);
    EXPECT_EQ(walked(props), "a- b- ");
    EXPECT_EQ(oru_do_properties_get_len(props), 2);
    EXPECT_EQ(oru_do_properties_get_value(props, "a"), nullptr);
    ORUDoProperty *entry = oru_do_properties_get_prop(props, "a");
    oru_do_properties_set_value(props, "a", two);
    EXPECT_EQ(oru_do_properties_get_prop(props, "a"), entry);
    EXPECT_EQ(walked(props), "a2 b- ");
}

TEST_F(Properties, AWalkEndsWithNull) {
    set_int(props, "a", 1);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_properties_iter(props, &iter);
    EXPECT_EQ(iter.coll_type, 3);
    EXPECT_EQ(iter.collection, props);
    EXPECT_EQ(oru_do_properties_get_next(&iter), oru_do_properties_get_prop(props, "a"));
    EXPECT_EQ(oru_do_properties_has_next(&iter), 0);
    EXPECT_EQ(oru_do_properties_get_next(&iter), nullptr);
}

TEST_F(Properties, TheEntryAtHandMayBeRemovedDuringAWalk) {
    fill(props, 22);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_properties_iter(props, &iter); oru_do_properties_has_next(&iter);) {
        ORUDoProperty *entry = oru_do_properties_get_next(&iter);
        oru_do_properties_remove_by_name(props, oru_do_property_get_name_string(entry));
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
}

TEST_F(Properties, TheTwentyFirstEntryMakesTheIndex) {
    fill(props, 20);
    EXPECT_EQ(index_of(props), nullptr);
    set_int(props, "p20", 20);
    ASSERT_NE(index_of(props), nullptr);
    EXPECT_EQ(oru_hashtable_num_entries(index_of(props)), 21);
    EXPECT_EQ(oru_hashtable_get_size(index_of(props)), 43);
    for (int i = 0; i < 21; ++i) {
        const std::string name = "p" + std::to_string(i);
        EXPECT_EQ(oru_do_properties_get_prop(props, name.c_str()),
                  oru_do_properties_get_prop_at_index(props, i));
    }
    std::string expected;
    for (int i = 0; i < 21; ++i)
        expected += "p" + std::to_string(i) + std::to_string(i) + " ";
    EXPECT_EQ(walked(props), expected);
}

TEST_F(Properties, ALimitOfZeroMakesTheIndexAtOnce) {
    oru_do_properties_set_max_size_before_hash_table(0);
    set_int(props, "a", 1);
    ASSERT_NE(index_of(props), nullptr);
    set_int(props, "b", 2);
    set_int(props, "a", 3);
    EXPECT_EQ(walked(props), "a3 b2 ");
    EXPECT_EQ(oru_do_properties_get_prop(props, "c"), nullptr);
}

TEST_F(Properties, AnIndexStaysWhileTheTableShrinks) {
    fill(props, 21);
    const ORUHashtable *index = index_of(props);
    for (int i = 0; i < 20; ++i)
        oru_do_properties_remove(props, 0);
    EXPECT_EQ(index_of(props), index);
    EXPECT_EQ(oru_hashtable_num_entries(index_of(props)), 1);
    EXPECT_EQ(walked(props), "p2020 ");
    oru_do_properties_remove_by_name(props, "p20");
    EXPECT_EQ(index_of(props), index);
    EXPECT_EQ(oru_hashtable_num_entries(index_of(props)), 0);
}

TEST_F(Properties, AClearedTableMakesItsNextIndexByTheSettingsOfThen) {
    fill(props, 21);
    oru_do_properties_set_max_size_before_hash_table(2);
    oru_do_properties_set_hash_table_size(7);
    EXPECT_EQ(oru_hashtable_get_size(index_of(props)), 43);
    oru_do_properties_clear(props);
    EXPECT_EQ(index_of(props), nullptr);
    fill(props, 2);
    EXPECT_EQ(index_of(props), nullptr);
    set_int(props, "x", 1);
    ASSERT_NE(index_of(props), nullptr);
    EXPECT_EQ(oru_hashtable_get_size(index_of(props)), 7);
}

TEST_F(Properties, SettingsTakeAnyNumberAndAreTraced) {
    TraceCapture traces;
    oru_do_properties_set_max_size_before_hash_table(UINT32_MAX);
    oru_do_properties_set_hash_table_size(44);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "set max size before ht 4294967295"},
                                                  {7, "set ht size to 44"}}));
    fill(props, 30);
    EXPECT_EQ(index_of(props), nullptr);
}

TEST_F(Properties, AnIndexWithLongChainsFindsEverything) {
    oru_do_properties_set_max_size_before_hash_table(0);
    oru_do_properties_set_hash_table_size(1);
    fill(props, 5);
    oru_do_properties_remove_by_name(props, "p0");
    oru_do_properties_remove_by_name(props, "p3");
    EXPECT_EQ(walked(props), "p11 p22 p44 ");
    EXPECT_NE(oru_do_properties_get_prop(props, "p4"), nullptr);
    EXPECT_EQ(oru_do_properties_get_prop(props, "p3"), nullptr);
}

TEST_F(Properties, AnIndexHasOneBucketAtLeast) {
    oru_do_properties_set_max_size_before_hash_table(0);
    oru_do_properties_set_hash_table_size(0);
    fill(props, 2);
    EXPECT_EQ(oru_hashtable_get_size(index_of(props)), 1);
    EXPECT_EQ(walked(props), "p00 p11 ");
}

// Names of every length around a word and around what fits into a name's record, that differ in
// their last character at most: each is found, and nothing that differs in one place.
void expect_told_apart(ORUDoProperties *props) {
    const std::string text(40, 'n');
    std::vector<std::string> names{""};
    for (size_t length : {1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33}) {
        names.push_back(text.substr(0, length - 1) + 'a');
        names.push_back(text.substr(0, length - 1) + "\xc3");
    }
    for (size_t i = 0; i < names.size(); ++i)
        set_int(props, names[i], static_cast<int32_t>(i));
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string asked = names[i];
        int32_t rc = -1;
        EXPECT_EQ(oru_do_properties_get_int(props, asked.c_str(), &rc), static_cast<int32_t>(i));
        EXPECT_EQ(rc, 0) << asked;
        EXPECT_EQ(oru_do_properties_get_prop(props, (asked + 'b').c_str()), nullptr) << asked;
        for (char &c : names[i]) {
            const char kept = std::exchange(c, 'b');
            EXPECT_EQ(oru_do_properties_get_prop(props, names[i].c_str()), nullptr) << names[i];
            c = kept;
        }
    }
    for (size_t length = 1; length < text.size(); ++length)
        EXPECT_EQ(oru_do_properties_get_prop(props, text.substr(0, length).c_str()), nullptr);
}

TEST_F(Properties, NamesThatBeginAlikeAreToldApart) {
    oru_do_properties_set_max_size_before_hash_table(100);
    expect_told_apart(props);
    EXPECT_EQ(index_of(props), nullptr);
}

TEST_F(Properties, NamesThatBeginAlikeAreToldApartInAnIndexToo) {
    oru_do_properties_set_max_size_before_hash_table(0);
    oru_do_properties_set_hash_table_size(2);
    expect_told_apart(props);
    EXPECT_NE(index_of(props), nullptr);
}

TEST_F(Properties, AnIndexedTableReportsANameThatItCannotRemove) {
    fill(props, 21);
    TraceCapture traces;
    oru_do_properties_remove_by_name(props, "nothing");
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to remove property from props table"}}));
    EXPECT_EQ(oru_do_properties_get_len(props), 21);
}

TEST_F(Properties, ASecondEntryOfANameInAnIndexIsFatal) {
    fill(props, 21);
    set_int(other, "p3", 1);
    EXPECT_FATAL(oru_do_properties_add_all(props, other), "Unable to add property to hashtable p3");
    ORUDoName *name = oru_do_name_new("p4");
    EXPECT_FATAL(oru_do_properties_update(props, name, one),
                 "Unable to add property to hashtable p4");
    oru_do_name_deref(name);
}

TEST_F(Properties, DuplicatesThatReachTheLimitAreFatal) {
    fill(props, 10);
    oru_do_properties_add_all(props, props);
    EXPECT_EQ(oru_do_properties_get_len(props), 20);
    EXPECT_FATAL(set_int(props, "one more", 1), "Unable to add property to hashtable p0");
}

TEST_F(Properties, AnIndexThatLostAnEntryIsFatalAtItsRemoval) {
    fill(props, 21);
    ASSERT_EQ(oru_hashtable_remove(index_of(props), "p5", nullptr, nullptr), 0);
    EXPECT_FATAL(oru_do_properties_remove(props, 5), "Cant find prop in hashtable p5");
    // By name it is not found, and the table stays as it is.
    TraceCapture traces;
    oru_do_properties_remove_by_name(props, "p5");
    EXPECT_TRUE(traces.has(3, "Failed to remove property from props table"));
    EXPECT_EQ(oru_do_properties_get_len(props), 21);
}

TEST_F(Properties, AnIndexThatCannotBeClosedIsFatal) {
    fill(props, 21);
    void *none = nullptr;
    EXPECT_FATAL(
        {
            std::memcpy(static_cast<void *>(index_of(props)), &none, sizeof none);
            oru_do_properties_clear(props);
        },
        "Failed to close hashtable");
}

TEST_F(Properties, ANameWithoutTextIsFatalAtItsRemoval) {
    set_int(props, "a", 1);
    EXPECT_FATAL(
        {
            // The text is the second word of a name.
            char *name = reinterpret_cast<char *>(
                oru_do_property_get_name(oru_do_properties_get_prop(props, "a")));
            void *none = nullptr;
            std::memcpy(name + sizeof none, &none, sizeof none);
            oru_do_properties_remove(props, 0);
        },
        "Name is NULL");
}

TEST_F(Properties, AnIndexThatCannotBeMadeIsFatal) {
    fill(props, 20);
    ORUDoName *name = oru_do_name_new("new");
    EXPECT_FATAL(
        {
            poolheap_fail_nth(2, 0);
            oru_do_properties_set_value_n(props, name, one);
        },
        "Failed to create properties table");
    oru_do_name_deref(name);
}

TEST_F(Properties, AnEntryThatCannotBeHadIsDropped) {
    set_int(props, "a", 1);
    ORUDoName *name = oru_do_name_new("b");
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    oru_do_properties_set_value_n(props, name, one);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to add property: b\n"}}));
    EXPECT_EQ(walked(props), "a1 ");
    oru_do_name_deref(name);
}

TEST_F(Properties, RequiredArguments) {
    ORUDoName *name = oru_do_name_new("a");
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_properties_get_len(nullptr), "properties");
    EXPECT_ASSERTION(oru_do_properties_get_prop(nullptr, "a"), "properties");
    EXPECT_ASSERTION(oru_do_properties_get_prop(props, nullptr), "name");
    EXPECT_ASSERTION(oru_do_properties_get_prop_n(nullptr, name), "properties");
    EXPECT_ASSERTION(oru_do_properties_get_prop_n(props, nullptr), "name");
    EXPECT_ASSERTION(oru_do_properties_get_value(nullptr, "a"), "properties");
    EXPECT_ASSERTION(oru_do_properties_get_value(props, nullptr), "name");
    EXPECT_ASSERTION(oru_do_properties_get_value_n(nullptr, name), "properties");
    EXPECT_ASSERTION(oru_do_properties_get_value_n(props, nullptr), "name");
    EXPECT_ASSERTION(oru_do_properties_get_prop_at_index(nullptr, 0), "props");
    EXPECT_ASSERTION(oru_do_properties_iter(nullptr, &iter), "properties");
    EXPECT_ASSERTION(oru_do_properties_iter(props, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_has_next(&iter), "iter->coll_type == DO_COLL_PROPERTIES");
    EXPECT_ASSERTION(oru_do_properties_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_set_value(nullptr, "a", one), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_value(props, nullptr, one), "name");
    EXPECT_ASSERTION(oru_do_properties_set_value_n(nullptr, name, one), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_value_n(props, nullptr, one), "name");
    EXPECT_ASSERTION(oru_do_properties_set_value_l(nullptr, "a", 1, one), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_value_l(props, nullptr, 1, one), "name");
    EXPECT_ASSERTION(oru_do_properties_remove(nullptr, 0), "props");
    EXPECT_ASSERTION(oru_do_properties_remove_by_name(nullptr, "a"), "props");
    EXPECT_ASSERTION(oru_do_properties_remove_by_name(props, nullptr), "name");
    EXPECT_ASSERTION(oru_do_properties_reset_values(nullptr), "props");
    EXPECT_EQ(oru_do_properties_ref(nullptr), nullptr);
    oru_do_properties_deref(nullptr);
    oru_do_name_deref(name);
}

TEST_F(Properties, EveryAllocationOfSettingMayFail) {
    const std::string name(40, 'n');
    oru::test::sweep_oom([&] {
        ORUDoProperties *table = oru_do_properties_new();
        if (table == nullptr)
            return;
        oru_do_properties_set_value(table, name.c_str(), one);
        oru_do_properties_set_value_l(table, name.c_str(), 35, two);
        EXPECT_EQ(oru_do_properties_get_len(table) < 2, oru::test::oom_hit());
        oru_do_properties_deref(table);
    });
}

// In a table with one bucket every entry but the first needs an element of the index.
TEST_F(Properties, EveryAllocationOfAnIndexMayFail) {
    oru::test::sweep_oom(
        [&] {
            ORUDoProperties *table = oru_do_properties_new();
            if (table == nullptr)
                return;
            for (const char *name : {"a", "b", "c"})
                oru_do_properties_set_value(table, name, one);
            EXPECT_EQ(oru_do_properties_get_len(table) < 3, oru::test::oom_hit());
            oru_do_properties_deref(table);
        },
        {.promised_deaths = {"Failed to create properties table",
                             "Unable to add property to hashtable"},
         .at_least = 10},
        [&] {
            oru_do_properties_set_max_size_before_hash_table(1);
            oru_do_properties_set_hash_table_size(1);
        });
}

}  // namespace
