#include "oru/rows_properties.h"

#include <dlfcn.h>
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

enum class Missing { nothing, node, context };
Missing visited_without = Missing::nothing;

}  // namespace

// Stands in front of the visit of trees, which never hands over a null node or context.
extern "C" ORU_API int32_t oru_do_dtree_visit_depth_first(
    ORUDoDtree *dtree, int32_t (*pre)(ORUDoDtree *, ORUDoDtree *, int32_t, void *),
    int32_t (*post)(ORUDoDtree *, ORUDoDtree *, int32_t, void *), void *context) {
    using Visit = decltype(oru_do_dtree_visit_depth_first);
    static auto *const real =
        reinterpret_cast<Visit *>(dlsym(RTLD_NEXT, "oru_do_dtree_visit_depth_first"));
    switch (visited_without) {
        case Missing::node:
            return pre(nullptr, nullptr, 0, context);
        case Missing::context:
            return pre(nullptr, dtree, 0, nullptr);
        default:
            return real(dtree, pre, post, context);
    }
}

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

// What was there under that name gives way to the leaf's own.
TEST(RowProperties, AnEarlierUriOfTheTableIsReplaced) {
    const Tree tree(oru_do_dtree_new_str("root"));
    fill(tree.get(), "/r", 4);
    ORUDoProperties *props = oru_do_dtree_get_properties(tree.get());
    oru_do_properties_set_int(props, "_uri", 1);
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(lines_of(rows.get()), Lines{"/r 4"});
    EXPECT_EQ(oru_do_properties_get_len(props), 2);
}

TEST(RowProperties, LeavesMayShareATable) {
    const Tree tree(oru_do_dtree_new_str("root"));
    ORUDoDtree *a = add(tree.get(), "a");
    ORUDoDtree *b = add(tree.get(), "b");
    fill(a, "/a", 1);
    oru_do_dtree_set_mr_data(b, Uri(oru_do_uri_new("/b")).get(), oru_do_dtree_get_properties(a));
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(lines_of(rows.get()), (Lines{"/b 1", "/b 1"}));
}

TEST(RowProperties, ARowGivesItsTableWithAReference) {
    const Tree tree(oru_do_dtree_new_str("root"));
    fill(tree.get(), "/r", 4);
    Rows rows(oru_do_dtree_into_properties(tree.get()));
    const Properties props(
        oru_do_rows_property_get_properties(oru_do_rows_property_get_first(rows.get())));
    rows.reset();
    int32_t code = 0;
    EXPECT_EQ(oru_do_properties_get_int(props.get(), "n", &code), 4);
}

TEST(RowProperties, ATreesRowsCanBePrependedTo) {
    const Tree tree = sample();
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    EXPECT_EQ(oru_do_rows_properties_prepend(rows.get(), oru_do_properties_new()), 0);
    EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 4);
    EXPECT_EQ(lines_of(rows.get()), (Lines{"- 0", "/a 1", "/b/c 2", "/b/d 3"}));
}

struct RowImage {
    ORUDoProperties *properties;
    RowImage *next;
};

struct RowsImage {
    RowImage *first;
    uint32_t ref_count;
    uint32_t count;
};

TEST(RowProperties, TheRecordsHaveTheirFieldsInOrder) {
    const Tree tree = sample();
    const Rows rows(oru_do_dtree_into_properties(tree.get()));
    const auto &image = *reinterpret_cast<RowsImage *>(rows.get());
    EXPECT_EQ(static_cast<void *>(image.first), oru_do_rows_property_get_first(rows.get()));
    EXPECT_EQ(image.ref_count, 1u);
    EXPECT_EQ(image.count, 3u);
    EXPECT_EQ(image.first->properties,
              oru_do_dtree_get_properties(oru_do_dtree_get_child(tree.get(), 0)));
    EXPECT_EQ(image.first->next->next->next, nullptr);
}

// ---- What no visit of a tree hands to the collector ----

TEST(RowProperties, AVisitThatHandsOverNoNodeFails) {
    const Tree tree = sample();
    const TraceCapture traces(3);
    visited_without = Missing::node;
    EXPECT_EQ(oru_do_dtree_into_properties(tree.get()), nullptr);
    visited_without = Missing::nothing;
    EXPECT_EQ(traces.at(3), (Lines{"Node NULL in depth first traversal\n", "Dtree walk failed\n"}));
}

TEST(RowProperties, AVisitThatHandsOverNoContextFails) {
    const Tree tree = sample();
    const TraceCapture traces(3);
    visited_without = Missing::context;
    EXPECT_EQ(oru_do_dtree_into_properties(tree.get()), nullptr);
    visited_without = Missing::nothing;
    EXPECT_EQ(traces.at(3), (Lines{"User context is NULL\n", "Dtree walk failed\n"}));
}

// ---- Memory, word by word ----

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

// ---- Memory ----

TEST(RowPropertiesMemory, ASetIsMadeOrNot) {
    oru::test::sweep_oom([] {
        const Rows rows(oru_do_rows_properties_new());
        EXPECT_EQ(rows == nullptr, oru::test::oom_hit());
    });
}

TEST(RowPropertiesMemory, APrependedRowTakesTheReferenceOrLeavesIt) {
    oru::test::sweep_oom(
        [] {
            const Rows rows(oru_do_rows_properties_new());
            Properties props(oru_do_properties_new());
            if (rows == nullptr || props == nullptr)
                return;
            const int32_t code = oru_do_rows_properties_prepend(rows.get(), props.get());
            EXPECT_EQ(code, oru::test::oom_hit() ? 10002 : 0);
            EXPECT_EQ(oru_do_rows_properties_count(rows.get()), code == 0 ? 1 : 0);
            if (code == 0)
                (void)props.release();
        },
        {.promised_deaths = {}, .at_least = 3});
}

// A row whose table finds no memory for the URI is there without it, as with any table.
TEST(RowPropertiesMemory, TheRowsOfATreeAreWholeOrThereAreNone) {
    const Tree tree = sample();
    ORUDoDtree *inner = oru_do_dtree_get_child(tree.get(), 1);
    ORUDoDtree *const leaves[] = {oru_do_dtree_get_child(tree.get(), 0),
                                  oru_do_dtree_get_child(inner, 0),
                                  oru_do_dtree_get_child(inner, 1)};
    oru::test::sweep_oom(
        [&] {
            const Rows rows(oru_do_dtree_into_properties(tree.get()));
            EXPECT_TRUE(rows != nullptr || oru::test::oom_hit());
            if (rows != nullptr) {
                EXPECT_EQ(oru_do_rows_properties_count(rows.get()), 3);
            }
            // The attributes that the leaves got are not the sweep's to count.
            for (ORUDoDtree *leaf : leaves)
                oru_do_properties_remove_by_name(oru_do_dtree_get_properties(leaf), "_uri");
        },
        {.promised_deaths = {}, .at_least = 8});
}

}  // namespace
