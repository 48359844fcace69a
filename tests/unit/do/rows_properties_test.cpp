#include "oru/rows_properties.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <memory>
#include <string>
#include <vector>

#include "oru/dtree.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Deref;
using oru::test::TraceCapture;
using oru::test::Uri;
using Rows = std::unique_ptr<ORUDoRowProperties, Deref<oru_do_rows_properties_deref>>;
using Tree = std::unique_ptr<ORUDoDtree, Deref<oru_do_dtree_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;
using Lines = std::vector<std::string>;

void fill(ORUDoDtree *node, const char *uri, int32_t number) {
    const Properties props(oru_do_properties_new());
    if (props == nullptr || node == nullptr)
        return;
    oru_do_properties_set_int(props.get(), "n", number);
    const Uri mr_uri(oru_do_uri_new(uri));
    oru_do_dtree_set_mr_data(node, mr_uri.get(), props.get());
}

ORUDoDtree *add(ORUDoDtree *parent, const char *name) {
    const oru::test::Name child(oru_do_name_new(name));
    return child != nullptr && parent != nullptr ? oru_do_dtree_add_child(parent, child.get())
                                                 : nullptr;
}

// A root with a leaf, and a node with two leaves.
Tree sample() {
    Tree root(oru_do_dtree_new_str("root"));
    if (root == nullptr)
        return root;
    fill(add(root.get(), "a"), "/a", 1);
    ORUDoDtree *inner = add(root.get(), "b");
    fill(inner, "/b", 9);
    fill(add(inner, "c"), "/b/c", 2);
    fill(add(inner, "d"), "/b/d", 3);
    return root;
}

// "uri n" of each row.
Lines lines_of(ORUDoRowProperties *rows) {
    Lines lines;
    for (ORUDoRowProperty *row = oru_do_rows_property_get_first(rows); row != nullptr;
         row = oru_do_rows_property_get_next(row)) {
        const Properties props(oru_do_rows_property_get_properties(row));
        int32_t code = 0;
        ORUDoUri *uri = oru_do_properties_get_mr_uri(props.get(), "_uri", &code);
        lines.push_back((uri != nullptr ? oru_do_uri_get_uri_str(uri) : "-") + std::string(" ") +
                        std::to_string(oru_do_properties_get_int(props.get(), "n", &code)));
    }
    return lines;
}

TEST(RowProperties, StartEmpty) {
    const Rows rows(oru_do_rows_properties_new());
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 0);
    EXPECT_EQ(oru_do_rows_property_get_first(rows.get()), nullptr);
}

TEST(RowProperties, NullsAreForgiven) {
    EXPECT_EQ(oru_do_rows_properties_count(nullptr), 0);
    EXPECT_EQ(oru_do_rows_property_get_first(nullptr), nullptr);
    EXPECT_EQ(oru_do_rows_property_get_next(nullptr), nullptr);
    EXPECT_EQ(oru_do_rows_property_get_properties(nullptr), nullptr);
    EXPECT_EQ(oru_do_rows_properties_ref(nullptr), nullptr);
    oru_do_rows_properties_deref(nullptr);
    const Rows rows(oru_do_rows_properties_new());
    const Properties props(oru_do_properties_new());
    EXPECT_EQ(oru_do_rows_properties_prepend(nullptr, props.get()), 3);
    EXPECT_EQ(oru_do_rows_properties_prepend(rows.get(), nullptr), 3);
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 0);
}

TEST(RowProperties, ANewRowComesFirstAndTakesTheReference) {
    const Rows rows(oru_do_rows_properties_new());
    ORUDoProperties *first = oru_do_properties_new();
    ORUDoProperties *second = oru_do_properties_new();
    EXPECT_EQ(oru_do_rows_properties_prepend(rows.get(), first), 0);
    EXPECT_EQ(oru_do_rows_properties_prepend(rows.get(), second), 0);
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 2);
    ORUDoRowProperty *row = oru_do_rows_property_get_first(rows.get());
    EXPECT_EQ(Properties(oru_do_rows_property_get_properties(row)).get(), second);
    row = oru_do_rows_property_get_next(row);
    EXPECT_EQ(Properties(oru_do_rows_property_get_properties(row)).get(), first);
    EXPECT_EQ(oru_do_rows_property_get_next(row), nullptr);
}

TEST(RowProperties, ARowWithoutMemoryLeavesTheReference) {
    const Rows rows(oru_do_rows_properties_new());
    const Properties props(oru_do_properties_new());
    const TraceCapture traces(3);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_rows_properties_prepend(rows.get(), props.get()), 10002);
    poolheap_fail_off();
    EXPECT_EQ(traces.at(3), Lines{"ORUDoRowProperty allocation failed\n"});
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 0);
    EXPECT_EQ(oru_do_properties_get_len(props.get()), 0);
}

TEST(RowProperties, OfATreeAreItsLeavesDepthFirst) {
    const Tree tree = sample();
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 3);
    EXPECT_EQ(lines_of(rows.get()), (Lines{"/a 1", "/b/c 2", "/b/d 3"}));
}

TEST(RowProperties, TheLeavesOwnTablesGetTheUri) {
    const Tree tree = sample();
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    ORUDoProperties *leaf = oru_do_dtree_get_properties(oru_do_dtree_get_child(tree.get(), 0));
    int32_t code = 0;
    EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_properties_get_mr_uri(leaf, "_uri", &code)), "/a");
    ORUDoProperties *inner = oru_do_dtree_get_properties(oru_do_dtree_get_child(tree.get(), 1));
    EXPECT_EQ(oru_do_properties_get_value(inner, "_uri"), nullptr);
    const Properties row(
        oru_do_rows_property_get_properties(oru_do_rows_property_get_first(rows.get())));
    EXPECT_EQ(row.get(), leaf);
}

TEST(RowProperties, OutliveTheirTree) {
    Tree tree = sample();
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    tree.reset();
    EXPECT_EQ(lines_of(rows.get()), (Lines{"/a 1", "/b/c 2", "/b/d 3"}));
}

TEST(RowProperties, HiddenLeavesCountLikeOthers) {
    const Tree tree = sample();
    oru_do_dtree_hide_node(oru_do_dtree_get_child(tree.get(), 0), 1);
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 3);
}

TEST(RowProperties, ATreeOfItsRootAloneGivesOneRow) {
    const Tree tree(oru_do_dtree_new_str("root"));
    fill(tree.get(), "/r", 4);
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(lines_of(rows.get()), Lines{"/r 4"});
}

TEST(RowProperties, OfNoTreeThereAreNone) {
    const TraceCapture traces(3);
    EXPECT_EQ(oru_do_dtree_into_properties(nullptr), nullptr);
    EXPECT_EQ(traces.at(3), Lines{"Dtree is NULL\n"});
}

// Rows that were made before are released, and their tables keep the attribute.
TEST(RowProperties, ALeafWithoutUriEndsTheWalk) {
    const Tree tree = sample();
    ORUDoDtree *second = oru_do_dtree_get_child(oru_do_dtree_get_child(tree.get(), 1), 0);
    oru_do_dtree_set_mr_uri(second, nullptr);
    const TraceCapture traces(3);
    EXPECT_EQ(oru_do_dtree_into_properties(tree.get()), nullptr);
    EXPECT_EQ(traces.at(3), (Lines{"dtree mr_uri is null\n", "Dtree walk failed\n"}));
    ORUDoProperties *first = oru_do_dtree_get_properties(oru_do_dtree_get_child(tree.get(), 0));
    EXPECT_NE(oru_do_properties_get_value(first, "_uri"), nullptr);
}

TEST(RowProperties, ALeafWithoutPropertiesEndsTheWalk) {
    const Tree tree(oru_do_dtree_new_str("root"));
    const TraceCapture traces(3);
    EXPECT_EQ(oru_do_dtree_into_properties(tree.get()), nullptr);
    EXPECT_EQ(traces.at(3), (Lines{"dtree properties is null\n", "Dtree walk failed\n"}));
}

TEST(RowProperties, EachAllocationIsToldByItsName) {
    const char *const kWords[] = {"Dtree_ctx allocation failed\n",
                                  "ORUDoRowProperty allocation failed\n",
                                  "ORUDoRowProperties allocation failed\n"};
    for (size_t nth = 0; nth < 3; ++nth) {
        const Tree tree = sample();
        const TraceCapture traces(3);
        poolheap_fail_nth(nth + 1, 0);
        EXPECT_EQ(oru_do_dtree_into_properties(tree.get()), nullptr);
        poolheap_fail_off();
        Lines words{kWords[nth]};
        if (nth > 0)
            words.push_back("Dtree walk failed\n");
        EXPECT_EQ(traces.at(3), words);
    }
}

TEST(RowPropertiesMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            const Tree tree = sample();
            const bool whole = !oru::test::oom_hit();
            const Rows rows(oru_do_dtree_into_properties(tree.get()));
            if (rows != nullptr && whole) {
                EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 3);
            }
        },
        {.promised_deaths = {"Assertion `"}, .at_least = 30});
}

}  // namespace
