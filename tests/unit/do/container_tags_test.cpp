// The tags of what containers take from the heap beside their pooled records.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <functional>
#include <memory>

#include "oru/config_op.h"
#include "oru/dtree.h"
#include "oru/event.h"
#include "oru/properties.h"
#include "oru/rows_properties.h"
#include "oru/uri.h"
#include "oru/vtable_sorter.h"
#include "tests/support/owned.h"

namespace {

enum : uint32_t {
    kDtreeMisc = 0x2900021,
    kStrdup = 0x2900027,
    kConfigOpsItem = 0x290002a,
    kVtableSorter = 0x290003a,
    kRowsProperties = 0x290003f,
};

// How many blocks of that tag the action takes, given back or not.
uint64_t blocks_taken(uint32_t tag, const std::function<void()> &action) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    const uint64_t before = stats.total_blocks;
    action();
    poolheap_tag_stats(tag, &stats);
    return stats.total_blocks - before;
}

TEST(ContainerTags, ASorterAndItsDirections) {
    EXPECT_EQ(
        blocks_taken(
            kVtableSorter,
            [] { oru_vtable_sorter_delete(oru_vtable_sorter_new(0, 1, "d", -1, -1), nullptr); }),
        2u);
}

TEST(ContainerTags, AnItemOfASetOfOperations) {
    ORUDoConfigOps *ops = oru_do_config_ops_new();
    EXPECT_EQ(
        blocks_taken(
            kConfigOpsItem,
            [ops] { oru_do_config_ops_add(ops, 1, nullptr, nullptr, nullptr, nullptr, nullptr); }),
        1u);
    oru_do_config_ops_deref(ops);
}

TEST(ContainerTags, ThePathAndItsSegments) {
    ORUDoDtree *tree = oru_do_dtree_new_str("r");
    const auto look_up = [tree] { oru_do_dtree_get_node_by_path(tree, "./.", nullptr); };
    EXPECT_EQ(blocks_taken(kStrdup, look_up), 1u);
    EXPECT_EQ(blocks_taken(kDtreeMisc, look_up), 1u);
    oru_do_dtree_deref(tree);
}

TEST(ContainerTags, TheVersionOfAnEvent) {
    const oru::test::Name name(oru_do_name_new("e"));
    EXPECT_EQ(blocks_taken(kStrdup,
                           [&name] {
                               oru_do_event_deref(oru_do_event_new_2(nullptr, "1.0", name.get(),
                                                                     nullptr, 0, 0, nullptr));
                           }),
              1u);
}

TEST(ContainerTags, ARowOfATree) {
    ORUDoRowProperties *rows = oru_do_rows_properties_new();
    EXPECT_EQ(
        blocks_taken(kRowsProperties,
                     [rows] { oru_do_rows_properties_prepend(rows, oru_do_properties_new()); }),
        1u);
    oru_do_rows_properties_deref(rows);
}

}  // namespace
