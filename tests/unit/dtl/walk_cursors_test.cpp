// Whose an open cursor is, and where a level goes on that stopped in an unusual place.
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

class DtlWalkCursors : public DtlWalk {
  protected:
    ORUDtlNode *rows_of_p(int n) {
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        for (int i = 1; i <= n; ++i)
            system.rows["/sys?ps"].push_back({"/" + std::to_string(i)});
        return p;
    }
    ORUDtlNode *resource(ORUDtlNode *above, const char *name, const char *uri) {
        ORUDtlNode *node = add_mr_node(above, name, ORU_DTL_OP_GET, uri);
        attr(node, "a");
        return node;
    }
    ORUDtlNode *actions() {
        ORUDtlNode *act = add_mr_node(doc.get(), "act", ORU_DTL_OP_COLL_ACTION, "/sys?ps");
        const Name reset(oru_do_name_new("reset"));
        oru_dtl_tree_set_act_name(act, reset.get());
        system.rows["/sys?ps"] = {{"/1"}, {"/2"}, {"/3"}};
        return act;
    }
};

// ---- Rows that leave nothing to descend into ----

TEST_F(DtlWalkCursors, ActionsOnACollectionAreThroughBeforeTheNextSibling) {
    actions();
    resource(doc.get(), "x", "/xx");
    system.config["/xx"] = {{"a", 1}};
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "act(/1){reset}");
    EXPECT_EQ(calls(),
              (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 1", "action /1 reset ()"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "act(/2){reset}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "action /2 reset ()"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "act(/3){reset}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "action /3 reset ()", "close"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "~act(/3){reset} x(/xx)[a=1]");
    EXPECT_EQ(calls(), (Calls{"context", "cfg /xx [a]"}));
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

// The next call finds them without a place to go on from, and nothing is told of one.
TEST_F(DtlWalkCursors, ActionsWithoutSiblingsGoOnByTheirCursorAlone) {
    oru_dtl_tree_set_batch_size(actions(), 2);
    TraceCapture traces;
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "act(/1){reset} act(/2){reset}");
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "act(/3){reset}");
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
    EXPECT_FALSE(traces.at(7).empty());
    for (const std::string &line : traces.at(7))
        EXPECT_TRUE(line.find("Stopped at") == std::string::npos &&
                    line.find("Reentering") == std::string::npos)
            << line;
}

TEST_F(DtlWalkCursors, ActionsWithoutALimitGoOnToo) {
    oru_dtl_tree_set_batch_size(actions(), 2);
    resource(doc.get(), "x", "/xx");
    system.config["/xx"] = {{"a", 1}};
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "act(/1){reset} act(/2){reset}");
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "act(/3){reset} x(/xx)[a=1]");
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkCursors, RowsThatAreNoResourcesKeepTheirCursorFromTheNextSibling) {
    oru_dtl_tree_set_continue_on_error(rows_of_p(3), 1);
    collection(doc.get(), "q", "/sys?qs");
    system.without_uri = true;
    EXPECT_EQ(next(2), 101);
    EXPECT_EQ(tree(), "p!101 unexpected do type p!101 unexpected do type");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 2"}));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close", "open_cfg /sys?qs [_uri,_mr]", "next 1",
                              "close"}));
}

// A row to go on with that counts as no leaf ends its child; the next one opens its own cursor.
TEST_F(DtlWalkCursors, WhatReturnOneLeavesIsNotTheNextSiblings) {
    oru_dtl_tree_set_return_one(rows_of_p(4));
    collection(doc.get(), "q", "/sys?qs");
    system.rows["/sys?qs"] = {{"/9"}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) ~p(/2)");
    calls();
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "~p(/2) q(/9)");
    EXPECT_EQ(calls(),
              (Calls{"context", "close", "open_cfg /sys?qs [_uri,_mr]", "next 2", "close"}));
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

// ---- Lists of addresses ----

TEST_F(DtlWalkCursors, CollectionsOfAListAreReadOneAfterTheOther) {
    param("list", std::vector<UriText>{{"/sys?as"}, {"/sys?bs"}, {"/sys?cs"}});
    add_mr_node(doc.get(), "x", ORU_DTL_OP_GET, "$list");
    system.rows["/sys?as"] = {{"/1"}, {"/2"}, {"/3"}};
    system.rows["/sys?bs"] = {{"/4"}, {"/5"}, {"/6"}};
    system.rows["/sys?cs"] = {{"/7"}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "x(/1) x(/2)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 2"}));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "x(/3) x(/4) x(/5)");
    EXPECT_EQ(calls(),
              (Calls{"context", "next 2", "close", "open_cfg /sys?bs [_uri,_mr]", "next 2"}));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "x(/6) x(/7)");
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close", "open_cfg /sys?cs [_uri,_mr]", "next 2",
                              "close"}));
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkCursors, AListThatShrinksGivesUpItsCursor) {
    param("list", std::vector<UriText>{{"/sys?as"}, {"/sys?bs"}});
    add_mr_node(doc.get(), "x", ORU_DTL_OP_GET, "$list");
    system.rows["/sys?as"] = {{"/1"}};
    system.rows["/sys?bs"] = {{"/2"}, {"/3"}};
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "x(/1) x(/2)");
    params.reset(oru_do_nvlist_new());
    param("list", std::vector<UriText>{{"/sys?as"}});
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(system.open_cursors(), 0);
}

TEST_F(DtlWalkCursors, AnAddressThatBecomesThatOfAResourceGivesUpItsCursor) {
    param("u", "/sys?as");
    resource(doc.get(), "x", "$u");
    system.rows["/sys?as"] = {{"/1"}, {"/2"}};
    EXPECT_EQ(next(1), ORU_OK);
    params.reset(oru_do_nvlist_new());
    param("u", "/xx");
    calls();
    EXPECT_EQ(next(-2), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "close", "cfg /xx [a]"}));
    EXPECT_EQ(tree(), "x(/1)[a=null] x(/xx)[a=null]");
    EXPECT_EQ(next(-2), ORU_RC_NO_MORE_VALUE);
}

// ---- Levels below ----

// The level below stopped at a container of a row that counts as no leaf in the next call.
TEST_F(DtlWalkCursors, WhatStoppedBelowIsNotTheNextSiblings) {
    ORUDtlNode *r = add_node(doc.get(), "r", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
    ORUDtlNode *a = collection(r, "a", "/sys?as");
    add_node(a, "q", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
    resource(resource(r, "x", "/xx"), "y", "/yy");
    system.rows["/sys?as"] = {{"/1"}};
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "r{a(/1)[q=null]}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 1", "close"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "cfg /xx [a]", "cfg /yy [a]"}));
    EXPECT_EQ(tree(), "~r{~a(/1)[q=null] x(/xx)[a=null]{y(/yy)[a=null]}}");
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

// ---- Failures with a cursor open ----

TEST_F(DtlWalkCursors, AFailureGoesOnWithItsOwnChild) {
    resource(doc.get(), "x", "/xx");
    ORUDtlNode *p = rows_of_p(2);
    oru_dtl_tree_set_batch_size(p, 1);
    resource(p, "z", "$_PARENT_URI_/zz");
    system.config["/xx"] = {{"a", 1}};
    system.config["/2/zz"] = {{"a", 5}};
    system.failures["cfg /1/zz"] = 106;
    EXPECT_EQ(next(-1), 106);
    EXPECT_EQ(tree(), "x(/xx)[a=1] p(/1){z!106 failed}");
    calls();
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2){z(/2/zz)[a=5]}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close", "cfg /2/zz [a]"}));
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkCursors, ARowsFailureGoesOnWithItsOwnChild) {
    resource(doc.get(), "x", "/xx");
    attr(rows_of_p(2), "o", ORU_DTL_NODE_OPER_ATTR);
    system.config["/xx"] = {{"a", 1}};
    system.oper["/2"] = {{"o", 7}};
    system.failures["oper /1"] = 105;
    EXPECT_EQ(next(2), 105);
    EXPECT_EQ(tree(), "x(/xx)[a=1] p(/1)[o=null]!105 failed");
    calls();
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/2)[o=7]");
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "oper /2 [o]", "close"}));
}

// The inner level stopped in the middle of its collection as well, and goes on first.
TEST_F(DtlWalkCursors, AFailureBelowGoesOnBelow) {
    ORUDtlNode *p = rows_of_p(2);
    ORUDtlNode *q = collection(p, "q", "$_PARENT_URI_?qs");
    attr(q, "o", ORU_DTL_NODE_OPER_ATTR);
    oru_dtl_tree_set_batch_size(p, 1);
    oru_dtl_tree_set_batch_size(q, 1);
    system.rows["/1?qs"] = {{"/q1"}, {"/q2"}};
    system.rows["/2?qs"] = {{"/q3"}};
    system.oper["/q3"] = {{"o", 3}};
    system.failures["oper /q1"] = 105;
    EXPECT_EQ(next(-1), 105);
    EXPECT_EQ(tree(), "p(/1){q(/q1)[o=null]!105 failed}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 1",
                              "open_cfg /1?qs [_uri,_mr]", "next 1", "oper /q1 [o]"}));
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1){q(/q2)[o=null]}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "oper /q2 [o]", "close"}));
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2){q(/q3)[o=3]}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close", "open_cfg /2?qs [_uri,_mr]", "next 1",
                              "oper /q3 [o]", "close"}));
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
}

// ---- Passes of one call ----

// The second pass of a call finds its leaves counted before it comes to where it stopped.
TEST_F(DtlWalkCursors, AnotherPassKeepsThePlaceOfTheOneBefore) {
    resource(doc.get(), "s", "/ss");
    oru_dtl_tree_set_return_last(rows_of_p(5));
    system.config["/ss"] = {{"a", 1}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "~s(/ss)[a=1] p(/1)");
    EXPECT_EQ(calls(), (Calls{"context", "cfg /ss [a]", "open_cfg /sys?ps [_uri,_mr]", "next 1"}));
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), (Calls{"context", "next 2"}));
}

// ---- Rows whose memory comes again ----

// The second batch's first row may get the memory of the one that was returned before.
TEST_F(DtlWalkCursors, ANewRowIsNotTakenForOneThatWent) {
    const MrMeta stats = make_mr("Stats", {}, 0);
    ORUDtlNode *p = rows_of_p(3);
    ORUDtlNode *b = add_mr_node(p, "b", ORU_DTL_OP_COLL_GET, "$_PARENT_URI_?bs", stats.get());
    oru_dtl_tree_set_return_one(p);
    oru_dtl_tree_set_batch_size(p, 1);
    EXPECT_NE(b, nullptr);
    system.rows["/1?bs"] = {{"/b1"}};
    system.rows["/2?bs"] = {{"/b2"}};
    system.rows["/3?bs"] = {{"/b3"}};
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1){b(/b1)}");
    system.late_end = true;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/2){b(/b2)} p(/3)");
    EXPECT_EQ(next(-1), ORU_OK);  // the inner collection ends, which is the row's own call
    EXPECT_EQ(tree(), "p(/2) ~p(/3)");
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/3){b(/b3)}");
}

// ---- Flattening ----

TEST_F(DtlWalkCursors, FlattenedRowsBelongToTheNodeThatTheyCameUnder) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    oru_dtl_tree_set_flatten(a, "true");
    // Its empty batch takes the last of the flattened rows for its own, and walks below it.
    ORUDtlNode *c = collection(doc.get(), "c", "/sys?cs");
    oru_dtl_tree_set_return_last(c);
    oru_dtl_tree_set_flatten(c, "true");
    add_mr_node(c, "y", ORU_DTL_OP_GET, "@(../../none)");
    system.rows["/sys?as"] = {{"/a1"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
    EXPECT_EQ(next(0), ORU_OK);
    ASSERT_EQ(oru_do_dtree_get_child_count(ctx->dtree_node), 2);
    for (int32_t i = 0; i < 2; ++i)
        EXPECT_EQ(oru_do_dtree_get_parent(oru_do_dtree_get_child(ctx->dtree_node, i)),
                  ctx->dtree_node);
}

}  // namespace
