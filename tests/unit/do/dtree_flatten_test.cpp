// Flattening of data trees.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "oru/dtree.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/do/dtree_support.h"

namespace {

using oru::test::Dtree;

class DtreeFlatten : public Dtree {};

TEST_F(DtreeFlatten, NamesOnly) {
    ORUDoDtree *b = add(add(root, "a"), "b");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 1), b);
    EXPECT_EQ(children_of(root), "a.b ");
}

TEST_F(DtreeFlatten, AttributesAndUri) {
    ORUDoDtree *a = add(root, "a");
    set_uri(a, "/u");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 7), b);
    EXPECT_EQ(children_of(root), "a.b ");
    EXPECT_EQ(attributes_of(b), "b.q p a.__uri ");
    ORUDoUri *uri = oru_do_value_get_uri(oru_do_dtree_get_value(b, "a.__uri"));
    ASSERT_NE(uri, nullptr);
    EXPECT_STREQ(oru_do_uri_get_uri_str(uri), "/u");
    EXPECT_EQ(number(oru_do_dtree_get_value(b, "b.q")), 2);
}

TEST_F(DtreeFlatten, OnlyTheLowSixteenFlagsCount) {
    add(add(root, "a"), "b");
    oru_do_dtree_flatten(root, nullptr, 0x10000);
    EXPECT_EQ(children_of(root), "b ");
}

TEST_F(DtreeFlatten, SeveralLevelsCollapseInOneCall) {
    ORUDoDtree *c = add(add(add(root, "a"), "b"), "c");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 1), c);
    EXPECT_EQ(children_of(root), "a.b.c ");
}

TEST_F(DtreeFlatten, ChildrenAreSplicedInAtTheirPlace) {
    add(root, "x");
    ORUDoDtree *a = add(root, "a");
    add(a, "b");
    add(a, "c");
    ORUDoDtree *y = add(root, "y");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 0), y);
    EXPECT_EQ(children_of(root), "x b c y ");
}

TEST_F(DtreeFlatten, OnlyTheStartChildAndWhatComesInItsPlace) {
    ORUDoDtree *x = add(root, "x");
    add(x, "x1");
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    add(b, "c");
    ORUDoDtree *y = add(root, "y");
    add(y, "y1");
    EXPECT_EQ(name_of(oru_do_dtree_flatten(root, a, 0)), "c");
    EXPECT_EQ(children_of(root), "x c y ");
    EXPECT_EQ(children_of(x), "x1 ");
    EXPECT_EQ(children_of(y), "y1 ");
}

TEST_F(DtreeFlatten, AStartChildWithoutChildrenStays) {
    add(root, "x");
    ORUDoDtree *a = add(root, "a");
    EXPECT_EQ(oru_do_dtree_flatten(root, a, 7), a);
    EXPECT_EQ(children_of(root), "x a ");
}

TEST_F(DtreeFlatten, TheSiblingInFrontIsTheLastKeptToBeginWith) {
    ORUDoDtree *x = add(root, "x");
    ORUDoDtree *a = oru_do_dtree_ref(add(root, "a"));
    add(a, "b");
    EXPECT_EQ(oru_do_dtree_flatten(root, a, 0), x);  // `a` is held twice and left in place
    EXPECT_EQ(children_of(root), "x a ");
    oru_do_dtree_deref(a);
}

TEST_F(DtreeFlatten, AForeignStartChildMeansNoWork) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    EXPECT_EQ(oru_do_dtree_flatten(root, b, 7), nullptr);
    EXPECT_EQ(children_of(root), "a ");
}

TEST_F(DtreeFlatten, NodesHeldElsewhereAreLeftInPlace) {
    ORUDoDtree *a = oru_do_dtree_ref(add(root, "a"));
    add(a, "b");
    ORUDoDtree *c = add(root, "c");
    ORUDoDtree *d = add(c, "d");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 0), d);
    EXPECT_EQ(children_of(root), "a d ");
    oru_do_dtree_deref(a);
}

TEST_F(DtreeFlatten, ALaterChildsNodesFallOutBehindSplicedOnes) {
    add(add(root, "a"), "a1");
    ORUDoDtree *b1 = add(add(root, "b"), "b1");
    add(root, "c");
    oru_do_dtree_flatten(root, nullptr, 0);
    EXPECT_EQ(children_of(root), "a1 c ");
    oru_do_dtree_deref(b1);  // nobody holds it any more
}

TEST_F(DtreeFlatten, WithAKeptNodeBetweenNothingIsLostButTheOrderIs) {
    add(add(root, "a"), "a1");
    add(root, "k");
    add(add(root, "b"), "b1");
    oru_do_dtree_flatten(root, nullptr, 0);
    EXPECT_EQ(children_of(root), "a1 b1 k ");
}

TEST_F(DtreeFlatten, ASharedTableIsMergedOnce) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    ORUDoDtree *c = add(a, "c");
    oru_do_dtree_set_properties(c, oru_do_dtree_get_properties(b));
    oru_do_dtree_flatten(root, nullptr, 0);
    EXPECT_EQ(attributes_of(c), "q p ");
}

TEST_F(DtreeFlatten, AnEntryWithoutAValueGivesUpTheWholeStep) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    oru_do_properties_reset_values(oru_do_dtree_get_properties(b));
    oru_do_dtree_flatten(root, nullptr, 3);
    EXPECT_EQ(name_of(b), "a.b");
    EXPECT_EQ(attributes_of(b), "q ");
}

TEST_F(DtreeFlatten, AttributeNamesNeedADotInTheNodesName) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    oru_do_dtree_flatten(root, nullptr, 2);
    EXPECT_EQ(attributes_of(b), "q p ");
}

TEST_F(DtreeFlatten, NoTableEndsTheCall) {
    ORUDoDtree *b = add(add(root, "a"), "b");
    oru::test::TraceCapture traces(3);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 7), nullptr);
    poolheap_fail_off();
    EXPECT_TRUE(traces.has(3, "Failed to allocate property list\n"));
    EXPECT_EQ(children_of(root), "a ");
    EXPECT_EQ(name_of(b), "b");
}

TEST_F(DtreeFlatten, ADocumentIsFlattenedBelowItsFirstChild) {
    EXPECT_EQ(oru_do_dtree_flatten_doc(root, 1), nullptr);
    ORUDoDtree *doc = add(root, "doc");
    add(add(doc, "a"), "b");
    EXPECT_EQ(oru_do_dtree_flatten_doc(root, 1), doc);
    EXPECT_EQ(children_of(doc), "a.b ");
}

// ---- What each flag does, and on what ----

TEST_F(DtreeFlatten, TheUriFlagAloneLeavesTheNames) {
    ORUDoDtree *a = add(root, "a");
    set_uri(a, "/u");
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 4), b);
    EXPECT_EQ(children_of(root), "b ");
    EXPECT_EQ(attributes_of(b), "q a.__uri ");
    EXPECT_EQ(oru_do_dtree_get_mr_uri(b), nullptr);
}

TEST_F(DtreeFlatten, AnEarlierUriUnderThatNameIsReplaced) {
    ORUDoDtree *a = add(root, "a");
    set_uri(a, "/u");
    ORUDoDtree *b = add(a, "b");
    set(b, "a.__uri", 2);
    set(b, "q", 3);
    oru_do_dtree_flatten(root, nullptr, 4);
    EXPECT_EQ(attributes_of(b), "a.__uri q ");
    EXPECT_EQ(oru_do_value_get_type(oru_do_dtree_get_value(b, "a.__uri")), ORU_DO_TYPE_MR_URI);
}

TEST_F(DtreeFlatten, AttributesTakeWhatStandsBehindTheFirstDot) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "x.y.z");
    set(b, "q", 2);
    set(b, "r", 3);
    oru_do_dtree_flatten(root, nullptr, 2);
    EXPECT_EQ(children_of(root), "x.y.z ");
    EXPECT_EQ(attributes_of(b), "y.z.q y.z.r p ");
}

TEST_F(DtreeFlatten, OfAChildWithoutATableNothingIsRenamed) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    oru_do_dtree_flatten(root, nullptr, 3);
    EXPECT_EQ(children_of(root), "a.b ");
    EXPECT_EQ(attributes_of(b), "q ");
}

TEST_F(DtreeFlatten, AMovedNodeWithoutATableGetsOne) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    ORUDoDtree *c = add(add(root, "d"), "c");
    oru_do_dtree_flatten(root, a, 7);
    EXPECT_EQ(attributes_of(b), "p ");
    oru_do_dtree_flatten(root, oru_do_dtree_get_child(root, 1), 7);
    EXPECT_EQ(attributes_of(c), "");
    EXPECT_EQ(children_of(root), "a.b d.c ");
}

TEST_F(DtreeFlatten, EveryChildOfAChildTakesItsAttributes) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    ORUDoDtree *c = add(a, "c");
    set(b, "q", 2);
    set(c, "q", 3);
    EXPECT_EQ(oru_do_dtree_flatten(root, a, 7), c);
    EXPECT_EQ(children_of(root), "a.b a.c ");
    EXPECT_EQ(attributes_of(b), "b.q p ");
    EXPECT_EQ(attributes_of(c), "c.q p ");
    EXPECT_EQ(number(oru_do_dtree_get_value(c, "c.q")), 3);
}

TEST_F(DtreeFlatten, NamesAndAttributesPileUpOverTheLevels) {
    ORUDoDtree *a = add(root, "a");
    set_uri(a, "/a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set_uri(b, "/a/b");
    set(b, "q", 2);
    ORUDoDtree *c = add(b, "c");
    set(c, "s", 3);
    EXPECT_EQ(oru_do_dtree_flatten(root, a, 7), c);
    EXPECT_EQ(children_of(root), "a.b.c ");
    EXPECT_EQ(attributes_of(c), "b.c.s b.q p a.__uri a.b.__uri ");
    EXPECT_STREQ(
        oru_do_uri_get_uri_str(oru_do_value_get_uri(oru_do_dtree_get_value(c, "a.b.__uri"))),
        "/a/b");
}

TEST_F(DtreeFlatten, ANameThatBothHaveEndsUpTwice) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "p", 2);
    oru_do_dtree_flatten(root, nullptr, 0);
    EXPECT_EQ(attributes_of(b), "p p ");
    EXPECT_EQ(number(oru_do_dtree_get_value(b, "p")), 2);
}

TEST_F(DtreeFlatten, ANameThatBothHaveIsFatalInAnIndexedTable) {
    EXPECT_FATAL(
        {
            oru_do_properties_set_max_size_before_hash_table(0);
            ORUDoDtree *a = add(root, "a");
            set(a, "p", 1);
            set(add(a, "b"), "p", 2);
            oru_do_dtree_flatten(root, nullptr, 0);
        },
        "Unable to add property to hashtable p");
}

// It is kept in mind from one child to the next.
TEST_F(DtreeFlatten, ATableSharedByNodesOfTwoChildrenIsMergedOnce) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    add(root, "k");
    ORUDoDtree *c = add(root, "c");
    set(c, "r", 3);
    ORUDoDtree *d = add(c, "d");
    oru_do_dtree_set_properties(d, oru_do_dtree_get_properties(b));
    oru_do_dtree_flatten(root, nullptr, 0);
    EXPECT_EQ(children_of(root), "b d k ");
    EXPECT_EQ(attributes_of(d), "q p ");
}

// The table of `b` dies with it, and the next one that is made may lie where it lay.
TEST_F(DtreeFlatten, ATableIsNotTakenForOneThatIsGone) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    ORUDoDtree *c = add(b, "c");
    set(c, "s", 3);
    oru_do_properties_reset_values(oru_do_dtree_get_properties(c));  // so nothing is merged into it
    add(root, "k");
    ORUDoDtree *d = add(root, "d");
    set(d, "r", 4);
    ORUDoDtree *e = add(d, "e");
    oru_do_dtree_flatten(root, nullptr, 3);
    EXPECT_EQ(children_of(root), "a.b.c d.e k ");
    EXPECT_EQ(attributes_of(c), "s ");
    EXPECT_EQ(attributes_of(e), "r ");
}

TEST_F(DtreeFlatten, HiddenNodesAreFlattenedAndStayHidden) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    oru_do_dtree_hide_node(a, 1);
    oru_do_dtree_hide_node(b, 1);
    oru_do_dtree_flatten(root, nullptr, 1);
    EXPECT_EQ(children_of(root), "a.b ");
    EXPECT_EQ(oru_do_dtree_is_hidden(b), 1);
}

TEST_F(DtreeFlatten, TheErrorsOfMovedNodesStayThoseOfTheChildGo) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    error = oru_do_error_new(5, "e");
    oru_do_dtree_set_error(a, error);
    oru_do_dtree_flatten(root, nullptr, 7);
    EXPECT_EQ(oru_do_dtree_get_error(b), nullptr);
    ORUDoDtree *c = add(b, "c");
    oru_do_dtree_set_error(c, error);
    oru_do_dtree_flatten(root, nullptr, 7);
    EXPECT_EQ(oru_do_dtree_get_error(c), error);
}

TEST_F(DtreeFlatten, WithoutChildrenNothingIsKept) {
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 7), nullptr);
    EXPECT_EQ(oru_do_dtree_flatten(root, root, 7), nullptr);
}

TEST_F(DtreeFlatten, WhenAllAreHeldElsewhereNothingIsKept) {
    ORUDoDtree *a = oru_do_dtree_ref(add(root, "a"));
    add(a, "b");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 7), nullptr);
    EXPECT_EQ(children_of(root), "a ");
    EXPECT_EQ(children_of(a), "b ");
    oru_do_dtree_deref(a);
}

TEST_F(DtreeFlatten, AMovedNodeThatIsHeldElsewhereIsMovedAndThenLeft) {
    ORUDoDtree *b = oru_do_dtree_ref(add(add(root, "a"), "b"));
    add(b, "c");
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 1), nullptr);
    EXPECT_EQ(children_of(root), "a.b ");
    EXPECT_EQ(children_of(b), "c ");
    oru_do_dtree_deref(b);
}

// The node that goes is given back where nodes come from now.
TEST_F(DtreeFlatten, AChildThatIsNotOfThePoolIsFatal) {
    EXPECT_FATAL(
        {
            add(add(root, "a"), "b");
            init_chunk_poolheap_oru_do_dtree(8, 0);
            oru_do_dtree_flatten(root, nullptr, 0);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

TEST_F(DtreeFlatten, WithoutMemoryForATextTheNamesStay) {
    ORUDoDtree *a = add(root, "a");
    set(a, "p", 1);
    set_uri(a, "/u");
    ORUDoDtree *b = add(a, "b");
    set(b, "q", 2);
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_dtree_flatten(root, nullptr, 7), b);
    poolheap_fail_off();
    EXPECT_EQ(children_of(root), "b ");
    EXPECT_EQ(attributes_of(b), "q ");
}

TEST(DtreeFlattenMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            ORUDoDtree *root = oru_do_dtree_new_str("r");
            ORUDoName *name = oru_do_name_new("n");
            ORUDoValue *value = oru_do_value_new_int(1);
            ORUDoDtree *a = nullptr;
            ORUDoDtree *b = nullptr;
            if (root != nullptr && name != nullptr && value != nullptr) {
                a = oru_do_dtree_add_child(root, name);
                b = a != nullptr ? oru_do_dtree_add_child(a, name) : nullptr;
            }
            if (b != nullptr) {
                oru_do_dtree_set_value(a, "p", value);
                oru_do_dtree_set_value(b, "q", value);
                oru_do_dtree_flatten(root, nullptr, 7);
                EXPECT_EQ(oru_do_dtree_get_child_count(root), 1);
            }
            oru_do_value_deref(value);
            oru_do_name_deref(name);
            oru_do_dtree_deref(root);
        },
        {.promised_deaths = {}, .at_least = 12});
}

}  // namespace
