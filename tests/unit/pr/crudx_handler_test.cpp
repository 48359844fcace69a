#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "oru/pr.h"
#include "oru/rc.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::oom_hit;
using oru::test::Trace;
using oru::test::TraceCapture;

void read_mtu() {}
void write_mtu() {}
void reboot() {}

class CrudxHandler : public testing::Test {
  protected:
    ~CrudxHandler() override { oru_pr_crudx_handler_delete(handler); }

    ORUErrorIfc owner{};
    ORUPrCrudxHandler *handler = oru_pr_crudx_handler_new(&owner);
};

template <class Table, class Entry>
size_t word_of(Entry Table::*entry) {
    static Table table{};
    const auto *at = reinterpret_cast<const char *>(&(table.*entry));
    return static_cast<size_t>(at - reinterpret_cast<const char *>(&table)) / sizeof(void *) + 1;
}

TEST(PrTables, EntriesStandInTheirPlaces) {
    EXPECT_EQ(word_of(&ORUErrorIfc::get_error), 2u);
    EXPECT_EQ(word_of(&ORUErrorIfc::set_error), 3u);
    EXPECT_EQ(word_of(&ORUErrorIfc::set_do_error), 5u);
    EXPECT_EQ(word_of(&ORUErrorIfc::add_warning), 7u);
    EXPECT_EQ(word_of(&ORUErrorIfc::reset_errors), 14u);

    EXPECT_EQ(word_of(&ORUDataIfc::get_cfg_prop_values), 5u);
    EXPECT_EQ(word_of(&ORUDataIfc::get_oper_prop_values), 6u);
    EXPECT_EQ(word_of(&ORUDataIfc::get_cfg_props), 7u);
    EXPECT_EQ(word_of(&ORUDataIfc::get_oper_props), 9u);
    EXPECT_EQ(word_of(&ORUDataIfc::get_context_uri), 13u);
    EXPECT_EQ(word_of(&ORUDataIfc::invoke_action), 18u);
    EXPECT_EQ(word_of(&ORUDataIfc::get_error_ifc), 19u);
    EXPECT_EQ(sizeof(ORUDataIfc), 19 * sizeof(void *));

    EXPECT_EQ(word_of(&ORUCollIfc::new_config_cursor), 9u);
    EXPECT_EQ(word_of(&ORUCollIfc::new_oper_cursor), 10u);

    EXPECT_EQ(word_of(&ORUDtlCursor::cursor_close), 3u);
    EXPECT_EQ(word_of(&ORUDtlCursor::cursor_get_next), 4u);
    EXPECT_EQ(word_of(&ORUDtlCursor::cursor_get_error_ifc), 5u);

    EXPECT_EQ(word_of(&ORUPrCrudxHandler::get_next), 4u);
    EXPECT_EQ(word_of(&ORUPrCrudxHandler::get_ifc), 16u);
    EXPECT_EQ(sizeof(ORUPrCrudxHandler), 18 * sizeof(void *));
}

TEST_F(CrudxHandler, IsMadeWithGetIfcAndNothingElse) {
    ORUPrCrudxHandler expected{};
    expected.priv = handler->priv;
    expected.get_ifc = handler->get_ifc;
    ASSERT_NE(handler->priv, nullptr);
    ASSERT_NE(handler->get_ifc, nullptr);
    EXPECT_EQ(std::memcmp(handler, &expected, sizeof expected), 0);
}

TEST_F(CrudxHandler, GetIfcGivesTheOwner) {
    EXPECT_EQ(handler->get_ifc(handler), &owner);
}

TEST_F(CrudxHandler, ItsRecordBeginsWithTheOwnerAndAOne) {
    struct {
        void *owner;
        int32_t word;
    } head;
    std::memcpy(&head, static_cast<void *>(handler->priv), sizeof head);
    EXPECT_EQ(head.owner, &owner);
    EXPECT_EQ(head.word, 1);
}

TEST_F(CrudxHandler, GetIfcRefusesNull) {
    EXPECT_ASSERTION(handler->get_ifc(nullptr), "ifc");
}

TEST(CrudxHandlerNew, TracesDone) {
    TraceCapture traces;
    ORUPrCrudxHandler *handler = oru_pr_crudx_handler_new(nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "Done"}}));
    EXPECT_EQ(handler->get_ifc(handler), nullptr);
    oru_pr_crudx_handler_delete(handler);
}

TEST_F(CrudxHandler, KeepsCallbacksApart) {
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "mtu", read_mtu, write_mtu), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(handler, "mtu", reboot), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "mtu"), read_mtu);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "mtu"), write_mtu);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(handler, "mtu"), reboot);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "speed"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "speed"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(handler, "speed"), nullptr);
}

TEST_F(CrudxHandler, ANullCallbackIsNotStored) {
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "a", nullptr, nullptr), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "r", read_mtu, nullptr), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "w", nullptr, write_mtu), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "a"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "r"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "w"), nullptr);
    // The names are free: nothing was stored under them.
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "a", read_mtu, write_mtu), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "w", read_mtu, nullptr), ORU_OK);
}

TEST_F(CrudxHandler, ANullActionIsAddedAsItStands) {
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(handler, "x", nullptr), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(handler, "x"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(handler, "x", reboot), ORU_RC_MALLOC);
}

TEST_F(CrudxHandler, ASecondRegistrationFailsAndTheOtherCallbackIsStillTried) {
    oru_pr_crudx_handler_add_prop_cb(handler, "mtu", read_mtu, nullptr);
    TraceCapture traces;
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "mtu", reboot, write_mtu), ORU_RC_MALLOC);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to allocate memory"}}));
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "mtu"), read_mtu);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "mtu"), write_mtu);
    traces.clear();
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "mtu", nullptr, reboot), ORU_RC_MALLOC);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to allocate memory"}}));
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "mtu"), write_mtu);
    traces.clear();
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "mtu", reboot, reboot), ORU_RC_MALLOC);
    EXPECT_EQ(traces.lines().size(), 2u);
}

TEST(CrudxHandlerNull, IsAcceptedEverywhere) {
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(nullptr, "a", read_mtu, write_mtu), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(nullptr, "a", reboot), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(nullptr, "a"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(nullptr, "a"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(nullptr, "a"), nullptr);
    oru_pr_crudx_handler_delete(nullptr);
}

TEST(CrudxHandlerBare, WithoutItsRecordRegistersNothing) {
    ORUPrCrudxHandler bare{};
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(&bare, "a", read_mtu, write_mtu), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(&bare, "a", reboot), ORU_OK);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(&bare, "a"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(&bare, "a"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(&bare, "a"), nullptr);
}

// The first two allocations are the table and its record, the third is the first hash table's.
TEST(CrudxHandlerMemory, WithoutTheRecordsThereIsNoHandler) {
    for (uint64_t nth : {1u, 2u}) {
        TraceCapture traces;
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(oru_pr_crudx_handler_new(nullptr), nullptr);
        poolheap_fail_off();
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to allocate memory"}}));
    }
}

TEST(CrudxHandlerMemory, WithoutTheFirstHashTableThereIsNoHandler) {
    TraceCapture traces;
    poolheap_fail_nth(3, 1);
    EXPECT_EQ(oru_pr_crudx_handler_new(nullptr), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to create hashmap"}}));
}

TEST(CrudxHandlerMemory, WithoutTheOthersThereIsOne) {
    // How many allocations a hash table takes is the platform's affair: the last one of all that
    // the constructor makes belongs to the last table.
    poolheap_fail_nth(0, 0);
    oru_pr_crudx_handler_delete(oru_pr_crudx_handler_new(nullptr));
    const uint64_t total = poolheap_fail_calls();
    poolheap_fail_off();
    TraceCapture traces;
    poolheap_fail_nth(total, 0);
    ORUPrCrudxHandler *handler = oru_pr_crudx_handler_new(nullptr);
    poolheap_fail_off();
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "Done"}}));
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(handler, "x", reboot), ORU_RC_MALLOC);
    EXPECT_EQ(oru_pr_crudx_handler_get_action_cb(handler, "x"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "x", read_mtu, write_mtu), ORU_OK);
    oru_pr_crudx_handler_delete(handler);
}

TEST(CrudxHandlerMemory, TheFirstHashTableAloneKeepsReadersOnly) {
    // All three tables take the same number of allocations, behind the two of the records.
    poolheap_fail_nth(0, 0);
    oru_pr_crudx_handler_delete(oru_pr_crudx_handler_new(nullptr));
    const uint64_t each = (poolheap_fail_calls() - 2) / 3;
    TraceCapture traces;
    poolheap_fail_nth(2 + each + 1, 1);
    ORUPrCrudxHandler *handler = oru_pr_crudx_handler_new(nullptr);
    poolheap_fail_off();
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "Done"}}));
    traces.clear();
    EXPECT_EQ(oru_pr_crudx_handler_add_prop_cb(handler, "x", read_mtu, write_mtu), ORU_RC_MALLOC);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to allocate memory"}}));
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "x"), read_mtu);
    EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "x"), nullptr);
    EXPECT_EQ(oru_pr_crudx_handler_add_action_cb(handler, "x", reboot), ORU_RC_MALLOC);
    oru_pr_crudx_handler_delete(handler);
}

TEST(CrudxHandlerMemory, RunningOutIsReported) {
    oru::test::sweep_oom([] {
        ORUPrCrudxHandler *handler = oru_pr_crudx_handler_new(nullptr);
        if (handler == nullptr) {
            EXPECT_TRUE(oom_hit());
            return;
        }
        if (oru_pr_crudx_handler_add_prop_cb(handler, "a", read_mtu, write_mtu) == ORU_OK) {
            EXPECT_EQ(oru_pr_crudx_handler_get_prop_get_cb(handler, "a"), read_mtu);
            EXPECT_EQ(oru_pr_crudx_handler_get_prop_set_cb(handler, "a"), write_mtu);
        } else {
            EXPECT_TRUE(oom_hit());
        }
        oru_pr_crudx_handler_delete(handler);
    });
}

TEST(PrInstance, TheLastEntryAddedComesFirst) {
    ORUPrInstanceCtx inst{};
    EXPECT_EQ(oru_pr_add_crudx_handler(&inst, 1, 2, 3, 4), ORU_OK);
    EXPECT_EQ(oru_pr_add_crudx_handler(&inst, 5, 6, 7, 8), ORU_OK);
    ORUPrInstanceEntry *first = inst.entries;
    ASSERT_NE(first, nullptr);
    ORUPrInstanceEntry *second = first->next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(first->words[0], 5);
    EXPECT_EQ(first->words[3], 8);
    EXPECT_EQ(second->words[0], 1);
    EXPECT_EQ(second->words[1], 2);
    EXPECT_EQ(second->words[2], 3);
    EXPECT_EQ(second->next, nullptr);
    EXPECT_EQ(inst.data[0], 0);
    EXPECT_EQ(sizeof(ORUPrInstanceEntry), 5 * sizeof(void *));
    EXPECT_EQ(offsetof(ORUPrInstanceCtx, entries), 2 * sizeof(void *));
    ph_free_named(first);
    ph_free_named(second);
}

TEST(PrInstance, WithoutMemoryTheListStays) {
    ORUPrInstanceCtx inst{};
    ASSERT_EQ(oru_pr_add_crudx_handler(&inst, 1, 2, 3, 4), ORU_OK);
    ORUPrInstanceEntry *first = inst.entries;
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_pr_add_crudx_handler(&inst, 5, 6, 7, 8), ORU_RC_MALLOC);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to allocate memory"}}));
    EXPECT_EQ(inst.entries, first);
    ph_free_named(first);
}

TEST(PrInstance, NullIsRefused) {
    EXPECT_ASSERTION(oru_pr_add_crudx_handler(nullptr, 1, 2, 3, 4), "inst");
}

TEST(PrParentUri, IsThatOfTheUri) {
    const oru::test::Uri uri(oru_do_uri_new("/a/b;k=1"));
    ORUDoUri *parent = oru_pr_get_parent_uri(uri.get());
    ASSERT_NE(parent, nullptr);
    EXPECT_STREQ(oru_do_uri_get_uri_str(parent), "/a");
    EXPECT_EQ(parent, oru_do_uri_get_parent_uri(uri.get()));
}

TEST(PrActionEntry, IsNullAtLoadAndWritable) {
    EXPECT_EQ(oru_pr_invoke_action_fn, nullptr);
    oru_pr_invoke_action_fn = reboot;
    EXPECT_EQ(oru_pr_invoke_action_fn, reboot);
    oru_pr_invoke_action_fn = nullptr;
}

}  // namespace
