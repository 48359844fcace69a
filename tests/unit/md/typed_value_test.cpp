// Values against the types of metadata.
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/properties.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oru/vlist.h>
#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;

class TypedValue : public StoreTest {
  protected:
    void SetUp() override {
        load_lib(resources(resource("M",
                                    "<configData><attribute name='mtu' type='int'/>"
                                    "<attribute name='label' type='string'/>"
                                    "<attribute name='ratio' type='float'/>"
                                    "<attribute name='odd' type='Unknown'/></configData>"
                                    "<reference name='one' targetIsA='M' targetRole='peer'/>"
                                    "<reference name='many' targetIsA='M' targetRole='peer' "
                                    "multiplicity='many'/>")));
        record = oru_md_get_mr_meta_by_name("com.lib/M");
        ASSERT_NE(record, nullptr);
        mr = record->do_mr_meta;
    }
    void TearDown() override { oru_do_nvlist_deref(list); }
    void add(const char *name, const char *value) {
        auto *made = oru_do_value_new_string(value);
        oru_do_nvlist_add(list, name, made);
        oru_do_value_deref(made);
    }

    ORUMdMrMeta *record = nullptr;
    ORUDoMrMeta *mr = nullptr;
    ORUDoNvlist *list = oru_do_nvlist_new();
};

TEST_F(TypedValue, TextBecomesTheTypeOfItsProperty) {
    auto *value = oru_do_value_new_string("1500");
    int32_t code = 7;
    auto *typed = oru_do_value_new_from_mr_meta(value, mr, "mtu", &code);
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(oru_do_value_get_int(typed, &code), 1500);
    oru_do_value_deref(typed);
    oru_do_value_deref(value);
}

TEST_F(TypedValue, UnknownPropertyGivesNothingAndNoCode) {
    auto *value = oru_do_value_new_string("1500");
    int32_t code = 7;
    EXPECT_EQ(oru_do_value_new_from_mr_meta(value, mr, "none", &code), nullptr);
    EXPECT_EQ(code, 0);
    oru_do_value_deref(value);
}

TEST_F(TypedValue, WhatIsNoTextIsRefused) {
    TraceCapture traces(3);
    auto *number = oru_do_value_new_int(1);
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_new_from_mr_meta(number, mr, "mtu", &code), nullptr);
    EXPECT_EQ(code, 101);
    EXPECT_EQ(traces.at(3), Texts{"unable to interpret value for mtu as string (rc=101)\n"});
    oru_do_value_deref(number);
}

TEST_F(TypedValue, TextThatDoesNotFitGivesTheCodeOfTheParse) {
    auto *value = oru_do_value_new_string("many");
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_new_from_mr_meta(value, mr, "mtu", &code), nullptr);
    EXPECT_EQ(code, 101);
    oru_do_value_deref(value);
}

TEST_F(TypedValue, StatusThatWasSetStopsNothing) {
    auto *value = oru_do_value_new_string("1500");
    int32_t code = 101;
    auto *typed = oru_do_value_new_from_mr_meta(value, mr, "mtu", &code);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(oru_do_value_get_int(typed, &code), 1500);
    oru_do_value_deref(typed);
    oru_do_value_deref(value);
}

TEST_F(TypedValue, StringWithoutTextIsRefused) {
    poolheap_fail_nth(2, 0);
    auto *value = oru_do_value_new_string("1500");
    poolheap_fail_off();
    TraceCapture traces(3);
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_new_from_mr_meta(value, mr, "mtu", &code), nullptr);
    EXPECT_EQ(code, 101);
    EXPECT_EQ(traces.at(3), Texts{"unable to interpret value for mtu as string (rc=101)\n"});
    oru_do_value_deref(value);
}

ORUDoValue *parse_hook(intptr_t, const char *text, int32_t type, int32_t *errp) {
    EXPECT_STREQ(text, "1500");
    EXPECT_EQ(type, 5);
    *errp = 42;
    return oru_do_value_new_null();
}

TEST_F(TypedValue, TextGoesThroughTheDefaultFormatter) {
    const ORUDoValueFormatter formatter{0, nullptr, parse_hook, nullptr};
    auto *value = oru_do_value_new_string("1500");
    int32_t code = 0;
    oru_do_value_set_default_formatter(&formatter);
    auto *typed = oru_do_value_new_from_mr_meta(value, mr, "mtu", &code);
    oru_do_value_set_default_formatter(nullptr);
    EXPECT_EQ(code, 42);
    EXPECT_EQ(oru_do_value_get_type(typed), -1);
    oru_do_value_deref(typed);
    oru_do_value_deref(value);
}

TEST_F(TypedValue, NullIsRefusedByName) {
    auto *value = oru_do_value_new_string("1");
    int32_t code = 0;
    EXPECT_ASSERTION(oru_do_value_new_from_mr_meta(nullptr, mr, "mtu", &code), "val");
    EXPECT_ASSERTION(oru_do_value_new_from_mr_meta(value, mr, "mtu", nullptr), "errp");
    EXPECT_ASSERTION(oru_do_nvlist_new_from_mr_meta(nullptr, mr, &code), "nvlist");
    oru_do_value_deref(value);
}

TEST_F(TypedValue, ListIsTypedItemByItem) {
    add("mtu", "9000");
    add("label", "uplink");
    int32_t code = 7;
    auto *typed = oru_do_nvlist_new_from_mr_meta(list, mr, &code);
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(oru_do_nvlist_get_len(typed), 2);
    EXPECT_EQ(oru_do_value_get_int(oru_do_nvlist_get_value(typed, "mtu"), &code), 9000);
    EXPECT_STREQ(oru_do_value_get_string(oru_do_nvlist_get_value(typed, "label"), &code), "uplink");
    oru_do_nvlist_deref(typed);
}

TEST_F(TypedValue, ListEndsAtAnUnknownName) {
    TraceCapture traces(3);
    add("mtu", "9000");
    add("none", "1");
    int32_t code = 0;
    EXPECT_EQ(oru_do_nvlist_new_from_mr_meta(list, mr, &code), nullptr);
    EXPECT_EQ(code, 101);
    EXPECT_EQ(traces.at(3), Texts{"unable to type value for none from metadata (rc=101)\n"});
}

TEST_F(TypedValue, TableKeepsWhatWasSetBeforeTheFailure) {
    TraceCapture traces(3);
    auto *table = oru_do_properties_new();
    add("mtu", "9000");
    EXPECT_EQ(oru_do_properties_set_from_nvlist_and_meta(table, list, mr), 0);
    add("label", "x");
    add("none", "1");
    add("odd", "1");
    EXPECT_EQ(oru_do_properties_set_from_nvlist_and_meta(table, list, mr), 101);
    EXPECT_EQ(oru_do_properties_get_len(table), 2);
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_get_int(oru_do_properties_get_value(table, "mtu"), &code), 9000);
    EXPECT_EQ(traces.at(3), Texts{"unable to type value for none from metadata (rc=101)\n"});
    EXPECT_ASSERTION(oru_do_properties_set_from_nvlist_and_meta(nullptr, list, mr), "properties");
    EXPECT_ASSERTION(oru_do_properties_set_from_nvlist_and_meta(table, nullptr, mr), "nvlist");
    oru_do_properties_deref(table);
}

// Of a text that is no number a float is made all the same, and the code decides.
TEST_F(TypedValue, ACodeCountsMoreThanTheValueThatCameWithIt) {
    TraceCapture traces(3);
    auto *table = oru_do_properties_new();
    add("ratio", "x");
    EXPECT_EQ(oru_do_properties_set_from_nvlist_and_meta(table, list, mr), 101);
    EXPECT_EQ(oru_do_properties_get_len(table), 0);
    int32_t code = 0;
    EXPECT_EQ(oru_do_nvlist_new_from_mr_meta(list, mr, &code), nullptr);
    EXPECT_EQ(code, 101);
    const std::string words = "unable to type value for ratio from metadata (rc=101)\n";
    EXPECT_EQ(traces.at(3), (Texts{words, words}));
    oru_do_properties_deref(table);
}

TEST_F(TypedValue, ATypeThatIsNotKnownTakesTheText) {
    add("odd", "1");
    int32_t code = 0;
    auto *typed = oru_do_nvlist_new_from_mr_meta(list, mr, &code);
    ASSERT_NE(typed, nullptr);
    EXPECT_STREQ(oru_do_value_get_string(oru_do_nvlist_get_value(typed, "odd"), &code), "1");
    oru_do_nvlist_deref(typed);
}

TEST_F(TypedValue, WithoutMemoryTheTableKeepsWhatItHas) {
    add("mtu", "9000");
    add("label", "a text that is too long to be kept in the smallest of the storages for values");
    sweep_oom(
        [this] {
            TraceCapture traces(3);
            auto *table = oru_do_properties_new();
            if (table == nullptr)
                return;
            const int32_t code = oru_do_properties_set_from_nvlist_and_meta(table, list, mr);
            const int32_t len = oru_do_properties_get_len(table);
            EXPECT_TRUE(code == 0 || code == 101) << code;
            EXPECT_TRUE(code == 0 || len < 2);
            EXPECT_TRUE(oom_hit() || (code == 0 && len == 2));
            oru_do_properties_deref(table);
        },
        {.promised_deaths = {}, .at_least = 8});
}

TEST_F(TypedValue, AListThatCannotBeHadIsTraced) {
    add("mtu", "9000");
    TraceCapture traces(3);
    int32_t code = 0;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_nvlist_new_from_mr_meta(list, mr, &code), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(code, 10002);
    EXPECT_EQ(traces.at(3), Texts{"Failed to allocate nvlist\n"});
}

TEST_F(TypedValue, WithoutMemoryTheListIsNotMade) {
    add("mtu", "9000");
    add("label", "a text that is too long to be kept in the smallest of the storages for values");
    sweep_oom([this] {
        TraceCapture traces(3);
        int32_t code = 0;
        auto *typed = oru_do_nvlist_new_from_mr_meta(list, mr, &code);
        EXPECT_EQ(typed == nullptr, code != 0);
        EXPECT_TRUE(typed != nullptr || oom_hit());
        oru_do_nvlist_deref(typed);
    });
}

// ---- Peer references ----

TEST_F(TypedValue, ReferenceTakesItsTypeOfUri) {
    auto *one = record->refs, *many = one->next;
    auto *uri = oru_do_uri_new("/a");
    auto *mr_uri = oru_do_value_new_mr_uri(uri), *coll_uri = oru_do_value_new_coll_uri(uri);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(one, mr_uri), 0);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(one, coll_uri), 118);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(many, coll_uri), 0);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(many, mr_uri), 119);
    auto *elements = oru_do_vlist_new();
    auto *empty = oru_do_value_new_array(elements);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(many, empty), 0);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(one, empty), 118);
    oru_do_vlist_add(elements, coll_uri);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(many, empty), 0);
    oru_do_vlist_add(elements, mr_uri);
    EXPECT_EQ(oru_md_eval_peer_ref_basic_type_constraint(many, empty), 119);
    EXPECT_ASSERTION(oru_md_eval_peer_ref_basic_type_constraint(nullptr, empty), "ref_meta");
    EXPECT_ASSERTION(oru_md_eval_peer_ref_basic_type_constraint(one, nullptr), "value");
    oru_do_value_deref(empty);
    oru_do_vlist_deref(elements);
    oru_do_value_deref(mr_uri);
    oru_do_value_deref(coll_uri);
    oru_do_uri_deref(uri);
}

}  // namespace
