// Property tables made of, filled from and compared with other collections.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/vlist.h"
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

class PropertiesCombine : public oru::test::PropertiesTest {
  protected:
    ~PropertiesCombine() override {
        oru_do_nlist_deref(names);
        oru_do_vlist_deref(values);
        oru_do_nvlist_deref(pairs);
    }

    void add_names(std::initializer_list<const char *> texts) {
        for (const char *text : texts)
            oru_do_nlist_add_string(names, text);
    }
    void add_values(std::initializer_list<ORUDoValue *> added) {
        for (ORUDoValue *value : added)
            oru_do_vlist_add(values, value);
    }

    ORUDoNlist *names = oru_do_nlist_new();
    ORUDoVlist *values = oru_do_vlist_new();
    ORUDoNvlist *pairs = oru_do_nvlist_new();
};

TEST_F(PropertiesCombine, ATableFromAnotherSharesNamesAndValues) {
    set_int(other, "a", 1);
    set_int(other, "b", 2);
    ORUDoProperties *table = oru_do_properties_new_init(other);
    EXPECT_EQ(walked(table), "a1 b2 ");
    ORUDoProperty *entry = oru_do_properties_get_prop(table, "a");
    ORUDoProperty *source = oru_do_properties_get_prop(other, "a");
    EXPECT_NE(entry, source);
    EXPECT_EQ(oru_do_property_get_name(entry), oru_do_property_get_name(source));
    EXPECT_EQ(oru_do_property_get_value(entry), oru_do_property_get_value(source));
    oru_do_properties_deref(table);
}

TEST_F(PropertiesCombine, ATableFromAnotherLeavesOutEntriesWithoutAValue) {
    set_int(other, "a", 1);
    set_int(other, "b", 2);
    oru_do_properties_reset_values(other);
    set_int(other, "b", 3);
    ORUDoProperties *table = oru_do_properties_new_init(other);
    EXPECT_EQ(walked(table), "b3 ");
    oru_do_properties_deref(table);
}

TEST_F(PropertiesCombine, ATableFromNothingIsEmpty) {
    ORUDoProperties *table = oru_do_properties_new_init(nullptr);
    EXPECT_EQ(oru_do_properties_get_len(table), 0);
    oru_do_properties_deref(table);
}

TEST_F(PropertiesCombine, ATableFromListsPairsByPosition) {
    add_names({"a", "b"});
    add_values({one, two});
    TraceCapture traces;
    ORUDoProperties *table = oru_do_properties_new_from_vlist(names, values);
    EXPECT_EQ(walked(table), "a1 b2 ");
    EXPECT_EQ(oru_do_property_get_name(oru_do_properties_get_prop(table, "a")),
              oru_do_nlist_get_name(names, 0));
    char made[64];
    char filled[64];
    std::snprintf(made, sizeof made, "oru props malloc %p", static_cast<void *>(table));
    std::snprintf(filled, sizeof filled, "props from vlist oru props %p",
                  static_cast<void *>(table));
    const auto lines = traces.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], (Trace{7, "props from vlist"}));
    EXPECT_EQ(lines[1], (Trace{7, made}));
    EXPECT_EQ(lines[2], (Trace{7, filled}));
    oru_do_properties_deref(table);
}

TEST_F(PropertiesCombine, ListsOfDifferentLengthsMakeNoTable) {
    add_names({"a", "b"});
    add_values({one});
    EXPECT_EQ(oru_do_properties_new_from_vlist(names, values), nullptr);
    add_values({one, two});
    EXPECT_EQ(oru_do_properties_new_from_vlist(names, values), nullptr);
}

TEST_F(PropertiesCombine, EmptyListsMakeAnEmptyTable) {
    ORUDoProperties *table = oru_do_properties_new_from_vlist(names, values);
    EXPECT_EQ(oru_do_properties_get_len(table), 0);
    oru_do_properties_deref(table);
}

TEST_F(PropertiesCombine, PairsAreSetUntilTheShorterListEnds) {
    set_int(props, "b", 9);
    add_names({"a", "b", "c"});
    add_values({one, two});
    oru_do_properties_set_values(props, names, values);
    EXPECT_EQ(walked(props), "b2 a1 ");
    add_values({one, one, one});
    oru_do_properties_set_values(props, names, values);
    EXPECT_EQ(walked(props), "b2 a1 c1 ");
}

TEST_F(PropertiesCombine, NamedValuesAreSet) {
    oru_do_nvlist_add(pairs, "a", one);
    oru_do_nvlist_add(pairs, "b", two);
    oru_do_nvlist_add(pairs, "a", two);
    oru_do_properties_set_values_from_nvlist(props, pairs);
    EXPECT_EQ(walked(props), "a2 b2 ");
}

TEST_F(PropertiesCombine, EntriesOfAnotherTableAreSet) {
    set_int(props, "b", 9);
    set_int(other, "a", 1);
    set_int(other, "b", 2);
    set_int(other, "c", 3);
    oru_do_properties_reset_values(other);
    set_int(other, "a", 5);
    set_int(other, "b", 6);
    EXPECT_EQ(oru_do_properties_set_props(props, other), 0);
    EXPECT_EQ(walked(props), "b6 a5 ");
    EXPECT_EQ(oru_do_properties_set_props(props, props), 0);
    EXPECT_EQ(walked(props), "b6 a5 ");
}

TEST_F(PropertiesCombine, SettingEntriesToleratesNull) {
    set_int(props, "a", 1);
    EXPECT_EQ(oru_do_properties_set_props(props, nullptr), 0);
    EXPECT_EQ(oru_do_properties_set_props(nullptr, props), 0);
    EXPECT_EQ(oru_do_properties_set_props(nullptr, nullptr), 0);
    EXPECT_EQ(walked(props), "a1 ");
}

TEST_F(PropertiesCombine, AppendingAllLooksForNoNames) {
    set_int(props, "a", 1);
    set_int(other, "a", 2);
    set_int(other, "b", 3);
    oru_do_properties_add_all(props, other);
    EXPECT_EQ(walked(props), "a1 a2 b3 ");
    int32_t err = 0;
    EXPECT_EQ(oru_do_value_get_int(oru_do_properties_get_value(props, "a"), &err), 1);
    EXPECT_EQ(oru_do_property_get_value(oru_do_properties_get_prop_at_index(props, 1)),
              oru_do_properties_get_value(other, "a"));
}

TEST_F(PropertiesCombine, ATableAppendedToItselfDoubles) {
    fill(props, 2);
    oru_do_properties_add_all(props, props);
    EXPECT_EQ(walked(props), "p00 p11 p00 p11 ");
}

TEST_F(PropertiesCombine, AnUpdateAppendsCopies) {
    set_int(props, "a", 1);
    ORUDoName *name = oru_do_name_new("a");
    EXPECT_EQ(oru_do_properties_update(props, name, two), 1);
    EXPECT_EQ(walked(props), "a1 a2 ");
    ORUDoProperty *entry = oru_do_properties_get_prop_at_index(props, 1);
    EXPECT_NE(oru_do_property_get_name(entry), name);
    EXPECT_NE(oru_do_property_get_value(entry), two);
    oru_do_name_deref(name);
}

TEST_F(PropertiesCombine, AnUpdateWithoutMemoryIsTraced) {
    ORUDoName *name = oru_do_name_new("a");
    for (int nth = 1; nth <= 2; ++nth) {
        TraceCapture traces;
        poolheap_fail_nth(static_cast<uint64_t>(nth), 0);
        EXPECT_EQ(oru_do_properties_update(props, name, one), 0);
        poolheap_fail_off();
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "failed to allocated memory\n"}}));
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
    oru_do_name_deref(name);
}

TEST_F(PropertiesCombine, ACloneIsDeep) {
    fill(props, 21);
    ORUDoProperties *copy = oru_do_properties_clone(props);
    EXPECT_EQ(oru_do_properties_equals(props, copy), 1);
    EXPECT_NE(index_of(copy), nullptr);
    ORUDoProperty *entry = oru_do_properties_get_prop(props, "p7");
    ORUDoProperty *twin = oru_do_properties_get_prop(copy, "p7");
    EXPECT_NE(oru_do_property_get_name(entry), oru_do_property_get_name(twin));
    EXPECT_NE(oru_do_property_get_value(entry), oru_do_property_get_value(twin));
    oru_do_properties_deref(copy);
}

TEST_F(PropertiesCombine, ACloneFollowsTheLimitOfNow) {
    fill(props, 3);
    oru_do_properties_set_max_size_before_hash_table(2);
    ORUDoProperties *copy = oru_do_properties_clone(props);
    EXPECT_EQ(index_of(props), nullptr);
    EXPECT_NE(index_of(copy), nullptr);
    EXPECT_EQ(walked(copy), "p00 p11 p22 ");
    oru_do_properties_deref(copy);
}

TEST_F(PropertiesCombine, AnEntryWithoutAValueCannotBeCloned) {
    set_int(props, "a", 1);
    set_int(props, "b", 1);
    oru_do_properties_reset_values(props);
    set_int(props, "a", 1);
    EXPECT_EQ(oru_do_properties_clone(props), nullptr);
}

TEST_F(PropertiesCombine, TablesAreEqualInOrder) {
    EXPECT_EQ(oru_do_properties_equals(props, other), 1);
    set_int(props, "a", 1);
    EXPECT_EQ(oru_do_properties_equals(props, other), 0);
    EXPECT_EQ(oru_do_properties_equals(other, props), 0);
    set_int(props, "b", 2);
    set_int(other, "b", 2);
    set_int(other, "a", 1);
    EXPECT_EQ(oru_do_properties_equals(props, other), 0);
    oru_do_properties_remove(other, 0);
    set_int(other, "b", 2);
    EXPECT_EQ(oru_do_properties_equals(props, other), 1);
    set_int(other, "b", 3);
    EXPECT_EQ(oru_do_properties_equals(props, other), 0);
}

TEST_F(PropertiesCombine, EntriesWithoutValuesAreEqualToEachOther) {
    set_int(props, "a", 1);
    set_int(other, "a", 1);
    oru_do_properties_reset_values(props);
    EXPECT_EQ(oru_do_properties_equals(props, other), 0);
    EXPECT_EQ(oru_do_properties_equals(other, props), 0);
    oru_do_properties_reset_values(other);
    EXPECT_EQ(oru_do_properties_equals(props, other), 1);
}

TEST_F(PropertiesCombine, RequiredArguments) {
    ORUDoName *name = oru_do_name_new("a");
    EXPECT_ASSERTION(oru_do_properties_new_from_vlist(nullptr, values), "nlist");
    EXPECT_ASSERTION(oru_do_properties_new_from_vlist(names, nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_properties_clone(nullptr), "props");
    EXPECT_ASSERTION(oru_do_properties_set_values(nullptr, names, values), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_values(props, nullptr, values), "nlist");
    EXPECT_ASSERTION(oru_do_properties_set_values(props, names, nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_properties_set_values_from_nvlist(nullptr, pairs), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_values_from_nvlist(props, nullptr), "nvlist");
    EXPECT_ASSERTION(oru_do_properties_add_all(nullptr, props), "props");
    EXPECT_ASSERTION(oru_do_properties_add_all(props, nullptr), "other_props");
    EXPECT_ASSERTION(oru_do_properties_update(nullptr, name, one), "props");
    EXPECT_ASSERTION(oru_do_properties_update(props, nullptr, one), "name");
    EXPECT_ASSERTION(oru_do_properties_update(props, name, nullptr), "value");
    EXPECT_ASSERTION(oru_do_properties_equals(nullptr, props), "properties1");
    EXPECT_ASSERTION(oru_do_properties_equals(props, nullptr), "properties2");
    oru_do_name_deref(name);
}

TEST_F(PropertiesCombine, EveryAllocationOfCopyingMayFail) {
    set_int(other, std::string(40, 'n'), 1);
    set_int(other, "b", 2);
    oru::test::sweep_oom(
        [&] {
            ORUDoProperties *copy = oru_do_properties_clone(other);
            EXPECT_EQ(copy == nullptr, oru::test::oom_hit());
            oru_do_properties_deref(copy);
        },
        {.promised_deaths = {}, .at_least = 8});
    oru::test::sweep_oom(
        [&] {
            ORUDoProperties *table = oru_do_properties_new_init(other);
            const bool whole = table != nullptr && oru_do_properties_get_len(table) == 2;
            EXPECT_NE(whole, oru::test::oom_hit());
            oru_do_properties_deref(table);
        },
        {.promised_deaths = {}, .at_least = 3});
}

TEST_F(PropertiesCombine, EveryAllocationOfFillingFromListsMayFail) {
    add_names({"a", "b"});
    add_values({one, two});
    oru_do_nvlist_add(pairs, "c", one);
    oru::test::sweep_oom(
        [&] {
            ORUDoProperties *table = oru_do_properties_new_from_vlist(names, values);
            if (table == nullptr)
                return;
            oru_do_properties_set_values_from_nvlist(table, pairs);
            oru_do_properties_add_all(table, table);
            EXPECT_EQ(oru_do_properties_get_len(table) < 6, oru::test::oom_hit());
            oru_do_properties_deref(table);
        },
        {.promised_deaths = {}, .at_least = 8});
}

}  // namespace
