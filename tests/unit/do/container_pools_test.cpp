// The pools of containers, errors and of the reader of JSON, and what happens to an element that is
// none of theirs.
#include <gtest/gtest.h>
#include <oruplatform/chunk.h>

#include <string>

#include "oru/error.h"
#include "oru/json.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

struct Row {
    std::string name;
    uint32_t tag;
    void *(*size)(intptr_t, uintptr_t);
};

const Row kRows[] = {
    {"oru_do_nlist", 3, init_chunk_poolheap_oru_do_nlist},
    {"oru_do_nlist_item", 44, init_chunk_poolheap_oru_do_nlist_item},
    {"oru_do_vlist", 4, init_chunk_poolheap_oru_do_vlist},
    {"oru_do_vlist_item", 55, init_chunk_poolheap_oru_do_vlist_item},
    {"oru_do_ntlist", 5, init_chunk_poolheap_oru_do_ntlist},
    {"oru_do_ntlist_item", 45, init_chunk_poolheap_oru_do_ntlist_item},
    {"oru_do_nvlist", 19, init_chunk_poolheap_oru_do_nvlist},
    {"oru_do_nvlist_item", 52, init_chunk_poolheap_oru_do_nvlist_item},
    {"oru_do_properties", 21, init_chunk_poolheap_oru_do_properties},
    {"oru_do_properties_list", 22, init_chunk_poolheap_oru_do_properties_list},
    {"oru_do_properties_list_item", 36, init_chunk_poolheap_oru_do_properties_list_item},
    {"oru_do_property", 50, init_chunk_poolheap_oru_do_property},
    {"oru_do_properties_hashtable_elem", 68, init_chunk_poolheap_oru_do_properties_hashtable_elem},
    {"oru_do_vtable", 30, init_chunk_poolheap_oru_do_vtable},
    {"oru_do_vtable_item", 53, init_chunk_poolheap_oru_do_vtable_item},
    {"oru_do_error", 13, init_chunk_poolheap_oru_do_error},
    {"oru_do_prop_errs", 20, init_chunk_poolheap_oru_do_prop_errs},
    {"oru_do_error_list", 14, init_chunk_poolheap_oru_do_error_list},
    {"json", 51, init_chunk_poolheap_json},
};

TEST(ContainerPools, HaveTheNameAndTheTagOfTheirType) {
    for (const Row &row : kRows) {
        oru::test::expect_in_child([&row] {
            oru::test::TraceCapture traces;
            void *pool = row.size(8, 0);
            const auto lines = traces.at(5);
            ASSERT_EQ(lines.size(), 1u);
            EXPECT_EQ(lines[0].rfind("chunk create " + row.name + " ", 0), 0u) << lines[0];
            chunk_stats_t stats{};
            chunk_pool_stats(pool, &stats);
            EXPECT_EQ(stats.tag, 0x2900000u + row.tag) << row.name;
        });
    }
}

constexpr char kRefused[] = "Failed to free ##name from chunk poolheap_chunk_##type";

TEST(ContainerPools, AnItemThatIsNotOfThePoolIsFatal) {
    EXPECT_FATAL(
        {
            ORUDoNvlist *list = oru_do_nvlist_new();
            oru_do_nvlist_add_int(list, "x", 1);
            init_chunk_poolheap_oru_do_nvlist_item(8, 0);
            oru_do_nvlist_delete_one(list, "x");
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoVlist *list = oru_do_vlist_new();
            oru_do_vlist_add_int(list, 1);
            init_chunk_poolheap_oru_do_vlist_item(8, 0);
            oru_do_vlist_clear(list);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoNlist *list = oru_do_nlist_new();
            oru_do_nlist_add_string(list, "x");
            init_chunk_poolheap_oru_do_nlist_item(8, 0);
            oru_do_nlist_clear(list);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoNtlist *list = oru_do_ntlist_new();
            oru_do_ntlist_add_builtin_type(list, oru_do_name_new("x"), 5, nullptr);
            init_chunk_poolheap_oru_do_ntlist_item(8, 0);
            oru_do_ntlist_deref(list);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoPropertiesList *list = oru_do_properties_list_new();
            oru_do_properties_list_add(list, oru_do_properties_new());
            init_chunk_poolheap_oru_do_properties_list_item(8, 0);
            oru_do_properties_list_clear(list);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoVtable *table = oru_do_vtable_new();
            oru_do_vtable_add(table, oru_do_vlist_new());
            init_chunk_poolheap_oru_do_vtable_item(8, 0);
            oru_do_vtable_clear(table);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoJsonCtxData *ctx = oru_do_json_parse(R"({"%int":1})", 10, 0);
            init_chunk_poolheap_json(8, 0);
            oru_do_json_delete_ctx_data(ctx);
        },
        kRefused);
}

TEST(ContainerPools, AnEntryThatIsNotOfThePoolIsFatal) {
    EXPECT_FATAL(
        {
            ORUDoProperties *props = oru_do_properties_new();
            oru_do_properties_set_int(props, "x", 1);
            init_chunk_poolheap_oru_do_property(8, 0);
            oru_do_properties_remove(props, 0);
        },
        kRefused);
    EXPECT_FATAL(
        {
            oru_do_properties_set_max_size_before_hash_table(0);
            oru_do_properties_set_hash_table_size(1);
            ORUDoProperties *props = oru_do_properties_new();
            oru_do_properties_set_int(props, "x", 1);
            oru_do_properties_set_int(props, "y", 1);
            init_chunk_poolheap_oru_do_properties_hashtable_elem(8, 0);
            oru_do_properties_remove_by_name(props, "y");
        },
        kRefused);
}

}  // namespace
