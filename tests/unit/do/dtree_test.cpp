#include "oru/dtree.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <utility>
#include <vector>

#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/unit/do/dtree_support.h"

namespace {

using oru::test::Dtree;

TEST_F(Dtree, ANewNodeHasANameAndNothingElse) {
    EXPECT_EQ(name_of(root), "r");
    EXPECT_EQ(oru_do_dtree_get_mr_uri(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_properties(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_error(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_parent(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_root(root), root);
    EXPECT_EQ(oru_do_dtree_get_child_count(root), 0);
    EXPECT_EQ(oru_do_dtree_is_hidden(root), 0);
}

TEST_F(Dtree, TheNameIsShared) {
    ORUDoName *name = oru_do_name_new("shared");
    ORUDoDtree *node = oru_do_dtree_new(name);
    EXPECT_EQ(oru_do_dtree_get_name(node), name);
    oru_do_name_deref(name);
    EXPECT_EQ(name_of(node), "shared");
    oru_do_dtree_deref(node);
}

TEST_F(Dtree, ChildrenStandInTheOrderOfAdding) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(root, "b");
    ORUDoDtree *c = add(b, "c");
    EXPECT_EQ(children_of(root), "a b ");
    EXPECT_EQ(oru_do_dtree_get_parent(a), root);
    EXPECT_EQ(oru_do_dtree_get_root(c), root);
    EXPECT_EQ(oru_do_dtree_get_child(root, 1), b);
    EXPECT_EQ(oru_do_dtree_get_child(root, 2), nullptr);
    EXPECT_EQ(oru_do_dtree_get_child(root, -1), nullptr);
    EXPECT_EQ(oru_do_dtree_get_child_by_name(root, "b"), b);
    EXPECT_EQ(oru_do_dtree_get_child_by_name(root, "c"), nullptr);
    EXPECT_EQ(oru_do_dtree_get_child_by_name(root, nullptr), nullptr);
}

TEST_F(Dtree, AdoptingCountsAReference) {
    ORUDoDtree *child = oru_do_dtree_new_str("a");
    EXPECT_EQ(oru_do_dtree_adopt_child(root, child), child);
    oru_do_dtree_remove_children(root);
    EXPECT_EQ(oru_do_dtree_get_child_count(root), 0);
    EXPECT_EQ(name_of(child), "a");                   // still held here
    EXPECT_EQ(oru_do_dtree_get_parent(child), root);  // the link is not cleared
    oru_do_dtree_deref(child);
}

TEST_F(Dtree, AChildWithASiblingIsNotAdopted) {
    ORUDoDtree *other = oru_do_dtree_new_str("o");
    ORUDoDtree *first = add(other, "a");
    add(other, "b");
    add(root, "x");
    EXPECT_EQ(oru_do_dtree_adopt_child(root, first), nullptr);
    ORUDoError *got = oru_do_dtree_get_error(root);
    ASSERT_NE(got, nullptr);
    EXPECT_EQ(oru_do_error_get_code(got), 10000);
    EXPECT_STREQ(oru_do_error_get_msg(got), "oru_do_dtree_adopt_child: child has sibling.");
    EXPECT_EQ(children_of(root), "x ");
    EXPECT_EQ(oru_do_dtree_get_parent(first), other);
    EXPECT_EQ(children_of(other), "a b ");
    oru_do_dtree_deref(other);
}

TEST_F(Dtree, TheRefusalReplacesAnEarlierError) {
    ORUDoDtree *other = oru_do_dtree_new_str("o");
    ORUDoDtree *first = add(other, "a");
    add(other, "b");
    error = oru_do_error_new(5, "earlier");
    oru_do_dtree_set_error(root, error);
    EXPECT_EQ(oru_do_dtree_adopt_child(root, first), nullptr);
    EXPECT_EQ(oru_do_error_get_code(oru_do_dtree_get_error(root)), 10000);
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_dtree_adopt_child(root, first), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_dtree_get_error(root), nullptr);
    oru_do_dtree_deref(other);
}

TEST_F(Dtree, TheLastChildOfAnotherParentIsAdoptedToo) {
    ORUDoDtree *other = oru_do_dtree_new_str("o");
    add(other, "a");
    ORUDoDtree *last = add(other, "b");
    EXPECT_EQ(oru_do_dtree_adopt_child(root, last), last);
    EXPECT_EQ(oru_do_dtree_get_error(root), nullptr);
    EXPECT_EQ(children_of(root), "b ");
    EXPECT_EQ(children_of(other), "a b ");
    EXPECT_EQ(oru_do_dtree_get_parent(last), root);
    oru_do_dtree_deref(other);
    EXPECT_EQ(children_of(root), "b ");
}

// Only the link to a sibling is looked at, so that the node comes behind itself.
TEST_F(Dtree, TheLastChildIsAdoptedOnceMore) {
    ORUDoDtree *last = add(root, "a");
    EXPECT_EQ(oru_do_dtree_adopt_child(root, last), last);
    EXPECT_EQ(oru_do_dtree_get_error(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_child(root, 1), last);
    EXPECT_EQ(oru_do_dtree_get_child(root, 7), last);
    oru_do_dtree_remove_children(root);
    EXPECT_EQ(oru_do_dtree_get_child_count(root), 0);
}

TEST_F(Dtree, TransferOfNothingAndIntoNothing) {
    ORUDoDtree *from = oru_do_dtree_new_str("f");
    oru_do_dtree_transfer_children(root, from);
    EXPECT_EQ(children_of(root), "");
    add(from, "a");
    oru_do_dtree_transfer_children(root, from);
    oru_do_dtree_transfer_children(root, from);
    oru_do_dtree_transfer_children(root, root);
    EXPECT_EQ(children_of(root), "a ");
    oru_do_dtree_deref(from);
}

TEST_F(Dtree, TransferMovesTheChainAndNotTheParentLinks) {
    ORUDoDtree *from = oru_do_dtree_new_str("f");
    add(root, "a");
    ORUDoDtree *b = add(from, "b");
    add(from, "c");
    oru_do_dtree_transfer_children(root, from);
    EXPECT_EQ(children_of(root), "a b c ");
    EXPECT_EQ(children_of(from), "");
    EXPECT_EQ(oru_do_dtree_get_parent(b), from);
    oru_do_dtree_deref(from);
}

TEST_F(Dtree, SettersReplaceAndClear) {
    set_uri(root, "/a/b");
    EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_dtree_get_mr_uri(root)), "/a/b");
    oru_do_dtree_set_mr_uri(root, oru_do_dtree_get_mr_uri(root));  // the very one it holds
    EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_dtree_get_mr_uri(root)), "/a/b");
    ORUDoProperties *props = oru_do_properties_new();
    ORUDoUri *uri = oru_do_uri_new("/c");
    oru_do_dtree_set_mr_data(root, uri, props);
    oru_do_dtree_set_properties(root, oru_do_dtree_get_properties(root));
    EXPECT_EQ(oru_do_dtree_get_mr_uri(root), uri);
    EXPECT_EQ(oru_do_dtree_get_properties(root), props);
    oru_do_properties_deref(props);
    oru_do_uri_deref(uri);
    ORUDoError *err = oru_do_error_new(5, "e");
    oru_do_dtree_set_error(root, err);
    oru_do_error_deref(err);
    EXPECT_EQ(oru_do_dtree_get_error(root), err);

    oru_do_dtree_set_mr_data(root, nullptr, nullptr);
    oru_do_dtree_set_error(root, nullptr);
    EXPECT_EQ(oru_do_dtree_get_mr_uri(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_properties(root), nullptr);
    EXPECT_EQ(oru_do_dtree_get_error(root), nullptr);
}

TEST_F(Dtree, HiddenChildrenLeaveTheIteratorAlone) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(root, "b");
    ORUDoDtree *c = add(root, "c");
    oru_do_dtree_hide_node(b, 1);
    ORUDoIter iter;
    oru_do_dtree_child_iter(root, &iter);
    EXPECT_NE(oru_do_dtree_has_next_child(&iter), 0);
    EXPECT_EQ(oru_do_dtree_get_next_child(&iter), a);
    EXPECT_EQ(oru_do_dtree_get_next_child(&iter), c);
    EXPECT_EQ(oru_do_dtree_has_next_child(&iter), 0);
    EXPECT_EQ(oru_do_dtree_get_next_child(&iter), nullptr);
    EXPECT_EQ(oru_do_dtree_get_child(root, 1), b);
    EXPECT_EQ(oru_do_dtree_get_child_by_name(root, "b"), b);
    EXPECT_EQ(oru_do_dtree_get_child_count(root), 3);
    EXPECT_EQ(oru_do_dtree_get_unhidden_child_count(root), 2);
    oru_do_dtree_hide_node(a, 1);
    oru_do_dtree_child_iter(root, &iter);
    EXPECT_EQ(oru_do_dtree_get_next_child(&iter), c);
}

TEST_F(Dtree, HidingBehindAChildLeavesThatOneAsItWas) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(root, "b");
    ORUDoDtree *c = add(root, "c");
    oru_do_dtree_hide_children(root, a, 7);
    EXPECT_EQ(oru_do_dtree_is_hidden(a), 0);
    EXPECT_EQ(oru_do_dtree_is_hidden(b), 7);
    EXPECT_EQ(oru_do_dtree_is_hidden(c), 7);
    oru_do_dtree_hide_children(root, nullptr, 0);
    EXPECT_EQ(oru_do_dtree_get_unhidden_child_count(root), 3);
}

TEST_F(Dtree, VisitedPeersGo) {
    add(root, "a");
    add(root, "b");
    ORUDoDtree *c = add(root, "c");
    add(root, "d");
    oru_do_dtree_remove_visited_peers(c);
    EXPECT_EQ(children_of(root), "c d ");
    oru_do_dtree_remove_visited_peers(c);
    EXPECT_EQ(children_of(root), "c d ");
    oru_do_dtree_remove_visited_peers(root);
    EXPECT_EQ(children_of(root), "c d ");
}

// A moved node names its old parent, whose children are none of its siblings.
TEST_F(Dtree, AMovedNodeHasNoVisitedPeersAtItsOldParent) {
    ORUDoDtree *from = oru_do_dtree_new_str("f");
    add(root, "a");
    ORUDoDtree *b = add(from, "b");
    oru_do_dtree_transfer_children(root, from);
    oru_do_dtree_remove_visited_peers(b);
    EXPECT_EQ(children_of(from), "");
    add(from, "x");
    oru_do_dtree_remove_visited_peers(b);
    EXPECT_EQ(children_of(from), "x ");
    EXPECT_EQ(children_of(root), "a b ");
    oru_do_dtree_deref(from);
}

TEST_F(Dtree, ANodeTakenOutCanBeAdoptedAgain) {
    ORUDoDtree *a = oru_do_dtree_ref(add(root, "a"));
    ORUDoDtree *b = add(root, "b");
    oru_do_dtree_remove_visited_peers(b);
    EXPECT_EQ(oru_do_dtree_adopt_child(b, a), a);
    oru_do_dtree_deref(a);
    EXPECT_EQ(children_of(b), "a ");
}

TEST_F(Dtree, ValuesComeFromThePropertiesThenFromTheUri) {
    EXPECT_EQ(oru_do_dtree_get_value(root, "a"), nullptr);
    EXPECT_EQ(oru_do_dtree_get_value(root, "_uri"), nullptr);
    EXPECT_EQ(oru_do_dtree_get_value(root, nullptr), nullptr);
    set_uri(root, "/a");
    ORUDoValue *uri = oru_do_dtree_get_value(root, "_uri");
    ASSERT_NE(uri, nullptr);
    EXPECT_EQ(oru_do_value_get_type(uri), ORU_DO_TYPE_MR_URI);
    EXPECT_EQ(oru_do_value_get_uri(uri), oru_do_dtree_get_mr_uri(root));
    set(root, "a", 3);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "a")), 3);
    EXPECT_EQ(oru_do_dtree_get_value(root, "_uri"), uri);
    set(root, "_uri", 4);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "_uri")), 4);
    oru_do_properties_reset_values(oru_do_dtree_get_properties(root));
    EXPECT_EQ(oru_do_dtree_get_value(root, "_uri"), uri);
    EXPECT_EQ(oru_do_dtree_get_value(root, "a"), nullptr);
}

TEST_F(Dtree, OfEntriesOfOneNameTheFirstAnswers) {
    ORUDoProperties *more = oru_do_properties_new();
    oru_do_properties_set_int(more, "a", 2);
    set(root, "a", 1);
    ORUDoProperties *own = oru_do_dtree_get_properties(root);
    oru_do_properties_add_all(own, more);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "a")), 1);
    set(root, "a", 3);
    EXPECT_EQ(attributes_of(root), "a a ");
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "a")), 3);
    oru_do_properties_deref(more);
}

// The search ends at the first name, with a value or without.
TEST_F(Dtree, AFirstEntryWithoutAValueHidesTheNext) {
    ORUDoProperties *more = oru_do_properties_new();
    oru_do_properties_set_int(more, "_uri", 2);
    oru_do_properties_set_int(more, "a", 2);
    set(root, "_uri", 1);
    set(root, "a", 1);
    set_uri(root, "/u");
    ORUDoProperties *own = oru_do_dtree_get_properties(root);
    oru_do_properties_reset_values(own);
    oru_do_properties_add_all(own, more);
    EXPECT_EQ(oru_do_dtree_get_value(root, "a"), nullptr);
    EXPECT_EQ(oru_do_value_get_type(oru_do_dtree_get_value(root, "_uri")), ORU_DO_TYPE_MR_URI);
    oru_do_properties_deref(more);
}

TEST_F(Dtree, AnIndexedTableAnswersAlike) {
    for (int32_t i = 0; i < 40; ++i)
        set(root, ("n" + std::to_string(i)).c_str(), i);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "n39")), 39);
    EXPECT_EQ(oru_do_dtree_get_value(root, "n40"), nullptr);
    set(root, "n39", 1);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "n39")), 1);
}

TEST_F(Dtree, SettingAValueKeepsItsPlace) {
    set(root, "a", 1);
    set(root, "b", 2);
    set(root, "a", 3);
    EXPECT_EQ(attributes_of(root), "a b ");
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "a")), 3);
    oru_do_dtree_set_value(root, "a", nullptr);
    EXPECT_EQ(number(oru_do_dtree_get_value(root, "a")), 3);
}

TEST_F(Dtree, PathsLeadToNodes) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    oru_do_dtree_hide_node(a, 1);
    const auto find = [this](ORUDoDtree *from, const char *path) {
        return oru_do_dtree_get_node_by_path(from, path, &error);
    };
    EXPECT_EQ(find(root, "a/b"), b);
    EXPECT_EQ(find(root, "a/b/"), b);
    EXPECT_EQ(find(root, "a/b  "), b);
    EXPECT_EQ(find(root, "a/b/  "), b);
    EXPECT_EQ(find(root, "  a/b"), b);
    EXPECT_EQ(find(a, " /b "), b);  // no slash in front: it starts at the node
    EXPECT_EQ(find(b, "/a"), a);
    EXPECT_EQ(find(root, "."), root);
    EXPECT_EQ(find(root, ".."), nullptr);
    EXPECT_EQ(find(b, "../.."), root);
    EXPECT_EQ(find(root, "./a/../a/./b"), b);
    EXPECT_EQ(find(root, "a//b"), nullptr);
    EXPECT_EQ(find(root, "x"), nullptr);
    EXPECT_EQ(find(root, "/"), nullptr);
    EXPECT_EQ(find(root, ""), nullptr);
    EXPECT_EQ(find(root, nullptr), nullptr);
    ORUDoDtree *nameless = add(root, "");
    EXPECT_EQ(find(b, "/"), nameless);
    EXPECT_EQ(find(b, "//"), nameless);
    EXPECT_EQ(find(root, "  "), nameless);
    EXPECT_EQ(find(b, "///"), nullptr);
    EXPECT_EQ(find(root, "a/b//"), nullptr);
    ORUDoDtree *below = add(add(a, ""), "b");
    EXPECT_EQ(find(root, "a//b"), below);
    EXPECT_EQ(error, nullptr);
}

TEST_F(Dtree, PathsLeadToValues) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    set(root, "x", 1);
    set(a, "x", 2);
    set(b, "x", 3);
    ORUDoValue *absent = oru_do_value_new_int(99);
    const auto read = [&](ORUDoDtree *from, const char *path) {
        return number(oru_do_dtree_get_value_by_path(from, path, absent, &error));
    };
    EXPECT_EQ(read(root, "a/x"), 2);
    EXPECT_EQ(read(root, "a/b/x"), 3);
    EXPECT_EQ(read(b, "/a/x"), 2);
    EXPECT_EQ(read(b, "../x"), 2);
    EXPECT_EQ(read(b, "x"), 3);
    EXPECT_EQ(read(b, "/x"), 3);      // one segment: the slash has no effect
    EXPECT_EQ(read(root, "x/y"), 1);  // leads nowhere: the head is an attribute
    EXPECT_EQ(read(b, "/x/y"), 3);
    EXPECT_EQ(read(root, "a/y"), 99);  // leads to a node that has no such attribute
    EXPECT_EQ(read(root, "z/y"), 99);
    EXPECT_EQ(read(root, ""), 99);
    EXPECT_EQ(read(root, nullptr), 99);
    EXPECT_EQ(read(root, "a/x/"), 2);
    EXPECT_EQ(read(root, "a/x  "), 2);
    EXPECT_EQ(read(root, "a/../x"), 1);
    EXPECT_EQ(read(root, "../x"), 99);  // nowhere, and no attribute ".."
    set_uri(b, "/u");
    EXPECT_EQ(oru_do_dtree_get_value_by_path(root, "a/b/_uri", absent, nullptr),
              oru_do_dtree_get_value(b, "_uri"));
    oru_do_dtree_hide_node(a, 1);
    EXPECT_EQ(read(root, "a/b/x"), 3);
    oru_do_properties_reset_values(oru_do_dtree_get_properties(a));
    EXPECT_EQ(read(root, "a/x"), 99);
    EXPECT_EQ(oru_do_dtree_get_value_by_path(root, "z", nullptr, nullptr), nullptr);
    EXPECT_EQ(error, nullptr);
    oru_do_value_deref(absent);
}

TEST_F(Dtree, UrisLeadToTheFirstNodeThatHasThem) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    ORUDoDtree *c = add(root, "c");
    set_uri(b, "/u");
    set_uri(c, "/u");
    ORUDoUri *uri = oru_do_uri_new("/u");
    ORUDoUri *other = oru_do_uri_new("/v");
    EXPECT_EQ(oru_do_dtree_get_node_by_uri(root, uri), b);
    EXPECT_EQ(oru_do_dtree_get_node_by_uri(c, uri), c);
    EXPECT_EQ(oru_do_dtree_get_node_by_uri(root, other), nullptr);
    set_uri(root, "/v");
    oru_do_dtree_hide_node(a, 1);
    EXPECT_EQ(oru_do_dtree_get_node_by_uri(root, other), root);
    EXPECT_EQ(oru_do_dtree_get_node_by_uri(root, uri), b);
    oru_do_uri_deref(uri);
    oru_do_uri_deref(other);
}

TEST_F(Dtree, QueriesNameAUriAndAPath) {
    ORUDoDtree *a = add(root, "a");
    set_uri(a, "/u");
    set(a, "x", 2);
    set(add(a, "b"), "x", 3);
    ORUDoValue *absent = oru_do_value_new_int(99);
    const auto read = [&](const char *query) {
        return number(oru_do_dtree_get_value_by_uri(root, query, absent, &error));
    };
    EXPECT_EQ(read("/u#x"), 2);
    EXPECT_EQ(read("/u#b/x/"), 3);
    EXPECT_EQ(read("/u#x  "), 2);
    EXPECT_EQ(read("/u"), 99);
    EXPECT_EQ(read("/v#x"), 99);
    EXPECT_EQ(read("/u/"), 99);
    EXPECT_EQ(read("/u#"), 99);
    EXPECT_EQ(read("/u#y"), 99);
    EXPECT_EQ(read("/u#x#y"), 99);  // the first one cuts
    EXPECT_EQ(read("#x"), 99);
    EXPECT_EQ(read(""), 99);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(oru_do_dtree_get_value_by_uri(root, nullptr, absent, nullptr), absent);
    EXPECT_EQ(read(nullptr), 99);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(oru_do_error_get_code(error), 10002);
    EXPECT_STREQ(oru_do_error_get_msg(error), "failed to dup uri");
    oru_do_value_deref(absent);
}

TEST_F(Dtree, LookupsWithoutMemorySayWhatFailed) {
    set(root, "x", 1);
    const struct {
        uint64_t nth;
        const char *words;
    } cases[] = {{1, "failed to dup path"}, {2, "failed to alloc segments"}};
    for (const auto &step : cases) {
        poolheap_fail_nth(step.nth, 0);
        EXPECT_EQ(oru_do_dtree_get_node_by_path(root, "a/b", &error), nullptr);
        poolheap_fail_off();
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(oru_do_error_get_code(error), 10002);
        EXPECT_STREQ(oru_do_error_get_msg(error), step.words);
        oru_do_error_deref(std::exchange(error, nullptr));

        poolheap_fail_nth(step.nth, 0);
        EXPECT_EQ(oru_do_dtree_get_value_by_path(root, "x", nullptr, &error), nullptr);
        poolheap_fail_off();
        ASSERT_NE(error, nullptr);
        EXPECT_STREQ(oru_do_error_get_msg(error), step.words);
        oru_do_error_deref(std::exchange(error, nullptr));

        poolheap_fail_nth(step.nth, 0);
        EXPECT_EQ(oru_do_dtree_get_node_by_path(root, "a/b", nullptr), nullptr);
        poolheap_fail_off();
    }
}

TEST_F(Dtree, ErrorsAreGatheredParentsFirst) {
    ORUDoErrorList *list = oru_do_error_list_new();
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(a, "b");
    add(root, "c");
    int32_t code = 1;
    for (ORUDoDtree *node : {a, b}) {
        ORUDoError *err = oru_do_error_new(code++, "e");
        oru_do_dtree_set_error(node, err);
        oru_do_error_deref(err);
    }
    oru_do_dtree_hide_node(a, 1);
    EXPECT_EQ(oru_do_dtree_get_errors(root, list), 2);
    EXPECT_EQ(oru_do_error_list_get_error(list, 0), oru_do_dtree_get_error(a));
    EXPECT_EQ(oru_do_error_list_get_error(list, 1), oru_do_dtree_get_error(b));
    EXPECT_EQ(oru_do_dtree_get_errors(nullptr, list), 0);
    EXPECT_EQ(oru_do_dtree_get_errors(root, nullptr), 0);
    oru_do_error_list_deref(list);
}

// ---- Visiting ----

struct Log {
    std::string text;
    std::string stop_at{};
};

template <char mark>
int32_t note(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *context) {
    auto &log = *static_cast<Log *>(context);
    const std::string name = oru_do_name_get_strname(oru_do_dtree_get_name(node));
    log.text += mark + name + std::to_string(level) +
                (parent == oru_do_dtree_get_parent(node) ? " " : "? ");
    return name == log.stop_at ? 0 : 1;
}

class DtreeVisit : public Dtree {
  protected:
    DtreeVisit() {
        ORUDoDtree *a = add(root, "a");
        add(a, "b");
        ORUDoDtree *c = add(root, "c");
        add(c, "d");
        oru_do_dtree_hide_node(c, 1);
    }
};

TEST_F(DtreeVisit, DepthFirst) {
    Log log;
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, note<'+'>, note<'-'>, &log), 1);
    EXPECT_EQ(log.text, "+r0 +a1 +b2 -b2 -a1 +c1 +d2 -d2 -c1 -r0 ");
}

TEST_F(DtreeVisit, FamilyByFamily) {
    Log log;
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, note<'+'>, note<'-'>, &log), 1);
    EXPECT_EQ(log.text, "+r0 +a1 +c1 +b2 -b2 +d2 -d2 -a1 -c1 -r0 ");
}

TEST_F(DtreeVisit, EitherCallbackMayBeMissing) {
    Log log;
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, nullptr, note<'-'>, &log), 1);
    EXPECT_EQ(log.text, "-b2 -a1 -d2 -c1 -r0 ");
    log.text.clear();
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, note<'+'>, nullptr, &log), 1);
    EXPECT_EQ(log.text, "+r0 +a1 +b2 +c1 +d2 ");
    log.text.clear();
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, nullptr, note<'-'>, &log), 1);
    EXPECT_EQ(log.text, "-b2 -d2 -a1 -c1 -r0 ");
    log.text.clear();
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, note<'+'>, nullptr, &log), 1);
    EXPECT_EQ(log.text, "+r0 +a1 +c1 +b2 +d2 ");
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, nullptr, nullptr, nullptr), 1);
}

TEST_F(DtreeVisit, ZeroOfTheSecondCallStopsAtOnce) {
    Log log{"", "a"};
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, nullptr, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "-b2 -d2 -a1 ");
    log = {"", "b"};
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, nullptr, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "-b2 ");
    log = {"", "r"};
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, nullptr, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "-b2 -d2 -a1 -c1 -r0 ");
    log = {"", "a"};
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, nullptr, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "-b2 -a1 ");
}

TEST_F(DtreeVisit, ZeroStopsAtOnce) {
    Log log{"", "b"};
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, note<'+'>, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "+r0 +a1 +b2 ");
    log.text.clear();
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, note<'+'>, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "+r0 +a1 +c1 +b2 ");
    log = {"", "r"};
    EXPECT_EQ(oru_do_dtree_visit_breath_first(root, note<'+'>, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "+r0 ");
    log.text.clear();
    EXPECT_EQ(oru_do_dtree_visit_depth_first(root, nullptr, note<'-'>, &log), 0);
    EXPECT_EQ(log.text, "-b2 -a1 -d2 -c1 -r0 ");
}

// ---- Null ----

TEST_F(Dtree, RequiredArgumentsAreAsserted) {
    ORUDoName *name = oru_do_dtree_get_name(root);
    ORUDoIter iter;
    ORUDoUri *uri = oru_do_uri_new("/a");
    EXPECT_ASSERTION(oru_do_dtree_new(nullptr), "name");
    EXPECT_ASSERTION(oru_do_dtree_add_child(nullptr, name), "parent_dtree");
    EXPECT_ASSERTION(oru_do_dtree_add_child(root, nullptr), "name");
    EXPECT_ASSERTION(oru_do_dtree_adopt_child(nullptr, root), "parent_dtree");
    EXPECT_ASSERTION(oru_do_dtree_adopt_child(root, nullptr), "child_node");
    EXPECT_ASSERTION(oru_do_dtree_transfer_children(nullptr, root), "to_dtree");
    EXPECT_ASSERTION(oru_do_dtree_transfer_children(root, nullptr), "from_dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_name(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_mr_uri(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_properties(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_error(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_mr_uri(nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_properties(nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_mr_data(nullptr, nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_error(nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_root(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_child_count(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_unhidden_child_count(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_child(nullptr, 0), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_child_by_name(nullptr, "a"), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_remove_children(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_remove_visited_peers(nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_hide_children(nullptr, nullptr, 1), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_child_iter(nullptr, &iter), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_child_iter(root, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_dtree_has_next_child(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_dtree_get_next_child(nullptr), "iter");
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_dtree_has_next_child(&iter), "iter->coll_type == DO_COLL_DTREE");
    EXPECT_ASSERTION(oru_do_dtree_get_value(nullptr, "a"), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_value(nullptr, "a", nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_set_value(root, "a", nullptr), "val");
    EXPECT_ASSERTION(oru_do_dtree_get_node_by_path(nullptr, "a", nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_value_by_path(nullptr, "a", nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_node_by_uri(nullptr, uri), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_get_node_by_uri(root, nullptr), "uri");
    EXPECT_ASSERTION(oru_do_dtree_get_value_by_uri(nullptr, "a", nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_visit_depth_first(nullptr, nullptr, nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_visit_breath_first(nullptr, nullptr, nullptr, nullptr), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_flatten(nullptr, nullptr, 0), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_flatten_doc(nullptr, 0), "dtree");
    oru_do_uri_deref(uri);
}

TEST(DtreeNull, WhereItIsAccepted) {
    EXPECT_EQ(oru_do_dtree_ref(nullptr), nullptr);
    oru_do_dtree_deref(nullptr);
    EXPECT_EQ(oru_do_dtree_get_parent(nullptr), nullptr);
    oru_do_dtree_hide_node(nullptr, 1);
    EXPECT_EQ(oru_do_dtree_is_hidden(nullptr), 0);
}

}  // namespace
