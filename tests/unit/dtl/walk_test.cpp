// The walk over one collection and over collections in rows: what is asked, and what stands in the
// tree after each call.
#include "oru/error.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

TEST_F(DtlWalk, ADocumentWithoutARootHasNothing) {
    TraceCapture traces;
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
    EXPECT_TRUE(traces.has(7, "... no more value, no processing"));
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(ctx->call_count, 1);
}

TEST_F(DtlWalk, WithoutALimitOneFetchGivesAllRows) {
    collection(doc.get(), "port", "/sys?port", {"mtu"});
    system.rows["/sys?port"] = {{"/sys/port;id=1", {{"mtu", 1500}}}, {"/sys/port;id=2"}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?port [_uri,_mr,mtu]", "next 0", "close"}));
    EXPECT_EQ(tree(), "port(/sys/port;id=1)[mtu=1500] port(/sys/port;id=2)[mtu=null]");
    EXPECT_EQ(ctx->state, ORU_DTL_STATE_FINISHED);
    EXPECT_EQ(ctx->child, nullptr);
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(tree(), "port(/sys/port;id=1)[mtu=1500] port(/sys/port;id=2)[mtu=null]");
}

TEST_F(DtlWalk, ALimitGivesABatchACall) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}, {"/3"}, {"/4"}, {"/5"}};
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_TRUE(traces.has(7, "processing request"));
    EXPECT_TRUE(traces.has(7, "[0]Invoking <p> op=coll:get"));
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 2"}));
    ASSERT_NE(ctx->child, nullptr);
    EXPECT_EQ(ctx->child->state, ORU_DTL_STATE_STOPPED);
    EXPECT_EQ(ctx->child->batches, 1);
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/3) p(/4)");
    EXPECT_EQ(calls(), (Calls{"context", "next 2"}));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/5)");
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close"}));
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(tree(), "p(/5)");
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(ctx->call_count, 4);
}

TEST_F(DtlWalk, OneRowACallWithACountOfOne) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)");
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2)");
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalk, AnEmptyBatchEndsACursor) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.late_end = true;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    calls();
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close"}));
    EXPECT_EQ(tree(), "");
    EXPECT_TRUE(traces.has(7, "Resetting node_added to 0"));
    EXPECT_TRUE(traces.has(7, "... no new node added, no more value"));
}

TEST_F(DtlWalk, AFirstCallThatFindsNothingIsNoEnd) {
    collection(doc.get(), "p", "/sys?ps");
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "");
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalk, MinusOneAsksForTheBatchSizeOfTheDocument) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    oru_dtl_tree_set_batch_size(p, 2);
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}, {"/3"}};
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 2"}));
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/3)");
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalk, ABatchSizeMayBeAParameter) {
    struct Case {
        FakeValue value;
        const char *asked;
        bool complains;
    };
    for (const auto &[value, asked, complains] :
         {Case{2, "next 2", false}, Case{-3, "next 0", false}, Case{"many", "next 0", true}}) {
        doc.reset(oru_dtl_tree_new());
        params.reset(oru_do_nvlist_new());
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        calls();
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        oru_dtl_tree_set_batch_size_param(p, "$n");
        oru_dtl_tree_set_batch_size(p, 7);
        system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
        param("n", value);
        TraceCapture traces;
        EXPECT_EQ(next(-1), ORU_OK);
        EXPECT_EQ(calls()[2], asked);
        EXPECT_EQ(traces.has(3, "Non numeric batch_size param value $n"), complains);
    }
}

TEST_F(DtlWalk, AnUnknownBatchSizeLeavesItToTheCursor) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    oru_dtl_tree_set_batch_size_param(p, "$n");
    oru_dtl_tree_set_batch_size(p, 7);
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(calls()[2], "next 0");
}

TEST_F(DtlWalk, OtherNegativeCountsAreAskedOfTheCursorAsTheyAre) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}};
    EXPECT_EQ(next(-2), ORU_OK);
    EXPECT_EQ(calls()[2], "next 4294967294");
    EXPECT_EQ(tree(), "p(/1)");
}

class DtlWalkNested : public DtlWalk {
  protected:
    DtlWalkNested() {
        a = collection(doc.get(), "a", "/sys?as");
        b = collection(a, "b", "$_PARENT_URI_?bs");
        system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
        system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}, {"/b3"}};
        system.rows["/a2?bs"] = {{"/b4"}};
    }
    ORUDtlNode *a;
    ORUDtlNode *b;
};

TEST_F(DtlWalkNested, WithoutALimitTheWholeTreeComesAtOnce) {
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1) b(/b2) b(/b3)} a(/a2){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 0", "close",
                              "open_cfg /a1?bs [_uri,_mr]", "next 0", "close",
                              "open_cfg /a2?bs [_uri,_mr]", "next 0", "close"}));
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkNested, ALimitCountsLeaves) {
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1) b(/b2)} ~a(/a2)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 2", "close",
                              "open_cfg /a1?bs [_uri,_mr]", "next 2"}));
    EXPECT_TRUE(traces.has(7, "Got enough leaf_node (2) for  count 2 "));
    EXPECT_TRUE(traces.has(7, "[0]Stopped at <a> op=coll:get, (a:/a1)"));
    traces.clear();

    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b3)} a(/a2){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close", "open_cfg /a2?bs [_uri,_mr]", "next 1",
                              "close"}));
    EXPECT_TRUE(traces.has(7, "[0]Reentering dtl_ch=<a> op=coll:get"));
    EXPECT_TRUE(traces.has(7, "Remove the visited peers"));
    EXPECT_TRUE(traces.has(7, "[1]Reentering dtl_ch=<b> op=coll:get"));

    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(DtlWalkNested, ACountOfOneGoesRowByRow) {
    EXPECT_EQ(next(1), ORU_OK);  // the outer cursor is asked for one row too
    EXPECT_EQ(tree(), "a(/a1){b(/b1)}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 1",
                              "open_cfg /a1?bs [_uri,_mr]", "next 1"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b2)}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1"}));
    // The last row ends the inner cursor; with no row left the outer level goes on to ask for the
    // next batch in the same call, unless the batch is complete.
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b3)}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a2){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close", "open_cfg /a2?bs [_uri,_mr]", "next 1",
                              "close"}));
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkNested, ALimitThatIsNotReachedEndsInOneCall) {
    EXPECT_EQ(next(5), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1) b(/b2) b(/b3)} a(/a2){b(/b4)}");
    EXPECT_EQ(next(5), ORU_RC_NO_MORE_VALUE);
}

// The outer cursor has rows left when the rows of its batch are through.
TEST_F(DtlWalkNested, ABatchOfOuterRowsThatGaveSomethingIsACallsWork) {
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}, {"/a3"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
    system.rows["/a2?bs"] = {{"/b3"}};
    system.rows["/a3?bs"] = {{"/b4"}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1) b(/b2)} ~a(/a2)");
    calls();
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a2){b(/b3)}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /a2?bs [_uri,_mr]", "next 2", "close"}));
    EXPECT_TRUE(traces.has(7, "batched subquery completed"));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a3){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "next 2", "close", "open_cfg /a3?bs [_uri,_mr]", "next 2",
                              "close"}));
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkNested, OneThatGaveNothingIsFollowedByTheNext) {
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}, {"/a3"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
    system.rows["/a2?bs"] = {};
    system.rows["/a3?bs"] = {{"/b4"}};
    EXPECT_EQ(next(2), ORU_OK);
    calls();
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a3){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /a2?bs [_uri,_mr]", "next 2", "close", "next 2",
                              "close", "open_cfg /a3?bs [_uri,_mr]", "next 2", "close"}));
}

TEST_F(DtlWalkNested, ResultsClearedInBetweenTakeWhatStoppedBelowAlong) {
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1) b(/b2)} ~a(/a2)");
    oru_do_dtree_remove_children(ctx->dtree_node);
    calls();
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);  // the second outer row was among the cleared
    EXPECT_EQ(calls(), (Calls{"context", "close"}));
    EXPECT_EQ(ctx->state, ORU_DTL_STATE_FINISHED);
}

TEST_F(DtlWalkNested, ResultsClearedInBetweenLeaveTheRowsOfAnOpenCursor) {
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1)}");
    oru_do_dtree_remove_children(ctx->dtree_node);
    calls();
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a2){b(/b4)}");
    EXPECT_EQ(calls(), (Calls{"context", "close", "next 1", "close", "open_cfg /a2?bs [_uri,_mr]",
                              "next 1", "close"}));
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

// The rows of the first sibling count again when the second is done: 2, and then 2 + 2 more.
TEST_F(DtlWalk, RowsOfAnEarlierSiblingCountTwice) {
    ORUDtlNode *r = add_node(doc.get(), "r", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
    collection(r, "b", "/sys?bs");
    collection(r, "c", "/sys?cs");
    system.rows["/sys?bs"] = {{"/b1"}, {"/b2"}};
    system.rows["/sys?cs"] = {{"/c1"}, {"/c2"}, {"/c3"}};
    TraceCapture traces;
    EXPECT_EQ(next(4), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?bs [_uri,_mr]", "next 4", "close",
                              "open_cfg /sys?cs [_uri,_mr]", "next 2"}));
    EXPECT_TRUE(traces.has(7, "Got enough leaf_node (6) for  count 4 "));
    EXPECT_EQ(tree(), "r{~b(/b1) ~b(/b2) c(/c1) c(/c2)}");
    traces.clear();
    EXPECT_EQ(next(4), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "next 4", "close"}));
    EXPECT_TRUE(traces.has(7, "[1]Skipping dtl_ch=<b> op=coll:get"));
    EXPECT_EQ(tree(), "r{c(/c3)}");
    EXPECT_EQ(next(4), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalk, ASiblingWaitsForTheNextCallWhenTheLeavesAreThere) {
    ORUDtlNode *r = add_node(doc.get(), "r", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
    collection(r, "b", "/sys?bs");
    collection(r, "c", "/sys?cs");
    system.rows["/sys?bs"] = {{"/b1"}, {"/b2"}};
    system.rows["/sys?cs"] = {{"/c1"}};
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_TRUE(traces.has(7, "Leafnode count reached , return batch"));
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?bs [_uri,_mr]", "next 2", "close"}));
    EXPECT_EQ(tree(), "r{b(/b1) b(/b2)}");
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?cs [_uri,_mr]", "next 2", "close"}));
    EXPECT_EQ(tree(), "r{~b(/b1) ~b(/b2) c(/c1)}");
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalk, CanceledBetweenCallsKeepsTheContexts) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    EXPECT_EQ(next(1), ORU_OK);
    calls();
    ORUDtlCtx *level = ctx->child;
    ctx->canceled = 1;
    TraceCapture traces;
    EXPECT_EQ(next(1), ORU_RC_CANCELED);
    EXPECT_TRUE(traces.has(7, "Canceled"));
    EXPECT_EQ(ctx->child, level);
    EXPECT_EQ(calls(), (Calls{"context"}));
    ctx->canceled = 0;
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2)");
}

TEST_F(DtlWalkNested, CanceledInAReadTakesEffectAtTheNextNode) {
    static ORUDtlCtx *canceled;
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    canceled = ctx;
    system.before_call = [](FakeSystem &) { canceled->canceled = 1; };
    EXPECT_EQ(next(0), ORU_RC_CANCELED);
    // The byte was set while the base address was asked for, before any level was entered.
    EXPECT_EQ(calls(), (Calls{"context"}));
    EXPECT_EQ(ctx->state, ORU_DTL_STATE_FINISHED);
}

TEST_F(DtlWalk, ElevenPassesWithoutALeafAreEnough) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    for (int i = 0; i < 20; ++i)
        system.rows["/sys?as"].push_back({"/a" + std::to_string(i)});
    TraceCapture traces;
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_TRUE(traces.has(7, "... processing not progressing."));
    int asked = 0;
    for (const std::string &call : calls())
        asked += call == "close";
    EXPECT_EQ(asked, 11);  // one empty inner cursor a pass
}

TEST_F(DtlWalk, AnErrorOfTheDocumentShowsAndItsChildrenAreWalked) {
    ORUDtlNode *bad = add_node(doc.get(), "bad", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
    ORUDoError *error = oru_do_error_new(102, "gone");
    oru_dtl_tree_set_error(bad, error);
    oru_do_error_deref(error);
    collection(bad, "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "bad!102 gone{p(/1)}");
}

TEST_F(DtlWalk, NodesWithoutAnAddressGiveNothing) {
    add_node(doc.get(), "x", ORU_DTL_NODE_MR_OP, ORU_DTL_OP_GET);
    oru_dtl_tree_init_mr_info(add_node(doc.get(), "y", ORU_DTL_NODE_MR_OP, ORU_DTL_OP_GET), nullptr,
                              nullptr);
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "");
    EXPECT_EQ(calls(), (Calls{"context"}));
}

TEST_F(DtlWalk, ContextsAreCheckedByName) {
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    EXPECT_ASSERTION(oru_dtl_ctx_new(nullptr, system.data(), system.coll()), "dtl_doc");
    EXPECT_ASSERTION(oru_dtl_ctx_new(doc.get(), nullptr, system.coll()), "crudx");
    EXPECT_ASSERTION(oru_dtl_ctx_new(doc.get(), system.data(), nullptr), "coll");
    EXPECT_ASSERTION(oru_dtl_ctx_set_debug(nullptr, 1), "dtl_ctx");
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), nullptr, params.get(), 0), "dtl_ctx");
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), ctx, nullptr, 0), "params");
    EXPECT_ASSERTION(oru_dtl_get_next(nullptr, ctx, params.get(), 0), "ifc");
    ORUDtlCtx bare = *ctx;
    bare.crudx = nullptr;
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), &bare, params.get(), 0), "dtl_ctx->crudx");
    bare = *ctx;
    bare.coll = nullptr;
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), &bare, params.get(), 0), "dtl_ctx->coll");
    bare = *ctx;
    bare.dtl_node = nullptr;
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), &bare, params.get(), 0), "dtl_ctx->dtl_node");
    bare = *ctx;
    bare.dtree_node = nullptr;
    EXPECT_ASSERTION(oru_dtl_get_next(system.data(), &bare, params.get(), 0),
                     "dtl_ctx->dtree_node");
    oru_dtl_ctx_delete(nullptr);
}

TEST_F(DtlWalk, AContextStartsWithRoomForEveryWhereClause) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    const Nvlist where(oru_do_nvlist_new());
    oru_dtl_tree_set_where_clause(p, where.get());
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    EXPECT_EQ(ctx->state, ORU_DTL_STATE_NEW);
    EXPECT_EQ(ctx->where_count, 1);
    ASSERT_NE(ctx->where_used, nullptr);
    EXPECT_EQ(ctx->where_used[0], nullptr);
    EXPECT_EQ(ctx->dtl_node, doc.get());
    EXPECT_EQ(show(ctx->dtree_node), "");
    oru_dtl_ctx_set_debug(ctx, 5);
    EXPECT_EQ(ctx->debug, 5);
}

TEST_F(DtlWalk, LevelsInheritTheDebugWord) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    oru_dtl_ctx_set_debug(ctx, 5);
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(ctx->child->debug, 5);
    EXPECT_EQ(ctx->child->parent, ctx);
    EXPECT_EQ(ctx->child->dtl_node, doc.get());
}

TEST_F(DtlWalk, ADeletedContextClosesItsCursors) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    next(1);
    calls();
    oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
    EXPECT_EQ(calls(), (Calls{"close"}));
}

}  // namespace
