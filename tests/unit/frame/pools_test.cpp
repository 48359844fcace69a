// The closed list of allocation tags, and the pools that carry them.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <oruplatform/chunk.h>

#include <iterator>
#include <string>
#include <vector>

#include "oru/lib.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kComponent = 0x2900000;

constexpr const char *kTagNames[] = {
    "oruapi",
    "oruapi-name",
    "oruapi-value",
    "oruapi-nlist",
    "oruapi-vlist",
    "oruapi-ntlist",
    "oruapi-act-meta",
    "oruapi-act-meta-list",
    "oruapi-cond",
    "oruapi-conf-op",
    "oruapi-conf-ops",
    "oruapi-constr",
    "oruapi-constr-list",
    "oruapi-error",
    "oruapi-error-list",
    "oruapi-event",
    "oruapi-iter",
    "oruapi-mr-meta",
    "oruapi-mr-meta-list",
    "oruapi-nvlist",
    "oruapi-prop-errs",
    "oruapi-props",
    "oruapi-props-list",
    "oruapi-prop-meta",
    "oruapi-prop-meta-list",
    "oruapi-range",
    "oruapi-strbuf",
    "oruapi-uri",
    "oruapi-uri-misc",
    "oruapi-uri-sml-misc",
    "oruapi-vtable",
    "oruapi-typedef-meta",
    "oruapi-dtree",
    "oruapi-dtree-misc",
    "oruapi-s-type-meta",
    "oruapi-strbuf-misc",
    "oruapi-prop-list-item",
    "oruapi-mr-meta-list-i",
    "oruapi-prop-err",
    "oruapi-strdup",
    "oruapi-value-misc",
    "oruapi-value-sml-misc",
    "oruapi-conf-op-item",
    "oruapi-act-mlist-item",
    "oruapi-nlist-item",
    "oruapi-ntlist-item",
    "oruapi-c-list-item",
    "oruapi-cond-misc",
    "oruapi-range-el",
    "oruapi-uri-segment",
    "oruapi-property",
    "oruapi-json",
    "oruapi-nvlist-item",
    "oruapi-vtable-item",
    "oruapi-err-list-item",
    "oruapi-vlist-item",
    "oruapi-pr-m-list-item",
    "oruapi-mem-track",
    "oruapi-vtable_sorter",
    "oruapi-seq_ht_table",
    "oruapi-util",
    "oruapi-mutex",
    "oruapi-md",
    "oruapi-rows_props",
    "oruapi-record-cache",
    "oruapi-rec-cache-elem",
    "oruapi-hashtable",
    "oruapi-ht-array",
    "oruapi-props-ht-elem",
    "oruapi-mr-meta-bool",
};

TEST(Tags, EveryIndexHasItsName) {
    ASSERT_EQ(std::size(kTagNames), 70u);
    for (uint32_t index = 0; index < 70; ++index)
        EXPECT_STREQ(tag_name_lookup(kComponent + index), kTagNames[index]) << index;
}

TEST(Tags, TheComponentIsKnownByItsOwnBits) {
    EXPECT_STREQ(tag_name_lookup(0x82900001), "oruapi-name");  // the top bit belongs to nobody
    EXPECT_STREQ(tag_name_lookup(0x2b00001), "error-wrong-component");
    EXPECT_STREQ(tag_name_lookup(0x2800002), "error-wrong-component");
}

struct PoolRow {
    const char *name;
    uint32_t tag_index;
    size_t size;  // 0 where it follows from the record
};

constexpr PoolRow kPools[] = {
    {"oru_do_name", 1, 0},
    {"oru_do_value", 2, 0},
    {"oru_do_nlist", 3, 0},
    {"oru_do_vlist", 4, 0},
    {"oru_do_ntlist", 5, 0},
    {"oru_do_act_meta", 6, 0},
    {"oru_do_act_meta_list", 7, 0},
    {"oru_do_condition", 8, 0},
    {"oru_do_config_op", 9, 0},
    {"oru_do_config_ops", 10, 0},
    {"oru_do_constraint", 11, 0},
    {"oru_do_constraint_list", 12, 0},
    {"oru_do_error", 13, 0},
    {"oru_do_error_list", 14, 0},
    {"oru_do_event", 15, 0},
    {"oru_do_iter", 16, 0},
    {"oru_do_mr_meta", 17, 0},
    {"oru_do_mr_meta_list", 18, 0},
    {"oru_do_nvlist", 19, 0},
    {"oru_do_prop_errs", 20, 0},
    {"oru_do_properties", 21, 0},
    {"oru_do_properties_list", 22, 0},
    {"oru_do_prop_meta", 23, 0},
    {"oru_do_prop_meta_list", 24, 0},
    {"oru_do_range", 25, 0},
    {"oru_do_strbuf", 26, 0},
    {"oru_do_uri", 27, 0},
    {"oru_do_uri_misc", 28, 128},
    {"oru_do_uri_sml_misc", 29, 64},
    {"oru_do_vtable", 30, 0},
    {"oru_do_typedef_meta", 31, 0},
    {"oru_do_dtree", 32, 0},
    {"oru_do_simple_type_meta", 34, 0},
    {"oru_do_strbuf_misc", 35, 256},
    {"oru_do_properties_list_item", 36, 0},
    {"oru_do_value_misc", 40, 128},
    {"oru_do_value_sml_misc", 41, 32},
    {"oru_do_nlist_item", 44, 0},
    {"oru_do_ntlist_item", 45, 0},
    {"oru_do_property", 50, 0},
    {"json", 51, 0},
    {"oru_do_nvlist_item", 52, 0},
    {"oru_do_vtable_item", 53, 0},
    {"oru_do_vlist_item", 55, 0},
    {"seq_ht_table", 59, 288},  // of a wait record, the largest of the three that it serves
    {"oru_do_rows_properties", 63, 0},
    {"record_cache", 64, 24},  // of a place by age
    {"record_cache_hashtable_elem", 65, 24},
    {"oru_hashtable", 66, 0},
    {"oru_do_properties_hashtable_elem", 68, 0},
    {"oru_do_mr_meta_bool", 69, 0},
};

using Init = void *(intptr_t, uintptr_t);

Init *find_init(const std::string &name) {
    return reinterpret_cast<Init *>(dlsym(RTLD_DEFAULT, ("init_chunk_poolheap_" + name).c_str()));
}

class PoolOf : public testing::TestWithParam<PoolRow> {};

TEST_P(PoolOf, CarriesItsNameSizeAndTag) {
    oru::test::expect_in_child([] {
        Init *init = find_init(GetParam().name);
        ASSERT_NE(init, nullptr);
        TraceCapture traces;
        void *pool = init(8, CHUNK_FLAG_MAX_SLABS(3));
        chunk_stats_t stats{};
        ASSERT_EQ(chunk_pool_stats(pool, &stats), 0);
        EXPECT_EQ(traces.lines(),
                  (std::vector<Trace>{{5, std::string("chunk create ") + GetParam().name + " " +
                                              std::to_string(stats.element_size) + " 8"}}));
        EXPECT_EQ(stats.tag, kComponent + GetParam().tag_index);
        EXPECT_EQ(stats.slab_count, 8u);
        EXPECT_EQ(stats.max_slabs, 3u);
        if (GetParam().size != 0) {
            EXPECT_EQ(stats.element_size, GetParam().size);
        }
    });
}

TEST_P(PoolOf, ThatCannotBeMadeIsFatalWithItsName) {
    EXPECT_FATAL(find_init(GetParam().name)(0, 0),
                 std::string("Unable to create chunk for ") + GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Every, PoolOf, testing::ValuesIn(kPools),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
