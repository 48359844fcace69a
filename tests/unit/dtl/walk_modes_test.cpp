// The settings of a node that change what the walk returns of it.
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

class DtlWalkModes : public DtlWalk {
  protected:
    ORUDtlNode *rows_of_p(int n) {
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        for (int i = 1; i <= n; ++i)
            system.rows["/sys?ps"].push_back({"/" + std::to_string(i)});
        return p;
    }
};

// ---- return="one" ----

TEST_F(DtlWalkModes, ReturnOneWithACountOfOneGivesARowACall) {
    oru_dtl_tree_set_return_one(rows_of_p(3));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 1"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2)");
    EXPECT_EQ(calls(), (Calls{"context", "next 1"}));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "p(/3)");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close"}));
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, ReturnOneWithoutALimitGoesThroughABatchRowByRow) {
    oru_dtl_tree_set_return_one(rows_of_p(3));
    TraceCapture traces;
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) ~p(/2) ~p(/3)");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 0", "close"}));
    EXPECT_FALSE(traces.has(7, "Artificially increment"));
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2) ~p(/3)");
    EXPECT_TRUE(traces.has(7, "Artificially increment"));
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/3)");
    EXPECT_EQ(next(-1), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), (Calls{"context", "context"}));
}

// The rows behind the first count as no leaves of the second call, which therefore ends the level.
TEST_F(DtlWalkModes, ReturnOneOfALargerBatchOfLeavesEndsWithItsFirstRow) {
    oru_dtl_tree_set_return_one(rows_of_p(3));
    EXPECT_EQ(next(5), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) ~p(/2) ~p(/3)");
    EXPECT_EQ(next(5), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlWalkModes, ReturnOneIsNotHeldWithACountOfZero) {
    oru_dtl_tree_set_return_one(rows_of_p(3));
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2) p(/3)");
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

// With rows inside: the outer row comes with its inner rows, one outer row a call.
TEST_F(DtlWalkModes, ReturnOneOfAnOuterCollection) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    oru_dtl_tree_set_return_one(a);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}};
    system.rows["/a2?bs"] = {{"/b2"}};
    EXPECT_EQ(next(5), ORU_OK);
    EXPECT_EQ(tree(), "a(/a1){b(/b1)} ~a(/a2)");
    EXPECT_EQ(next(5), ORU_OK);
    EXPECT_EQ(tree(), "a(/a2){b(/b2)}");
    EXPECT_EQ(next(5), ORU_RC_NO_MORE_VALUE);
}

// ---- return="last" ----

TEST_F(DtlWalkModes, ReturnLastShowsTheLastOfTheFetched) {
    oru_dtl_tree_set_return_last(rows_of_p(5));
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "~p(/1) ~p(/2) ~p(/3) ~p(/4) p(/5)");
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, ReturnLastOfOneRowKeepsIt) {
    oru_dtl_tree_set_return_last(rows_of_p(1));
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)");
}

// Another pass is asked for while the cursor is open, and finds the leaves of this call counted.
TEST_F(DtlWalkModes, ReturnLastOfAFullBatchShowsTheLastOfTheBatch) {
    oru_dtl_tree_set_return_last(rows_of_p(5));
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 2"}));
    EXPECT_EQ(tree(), "~p(/1) p(/2)");
    // What a later call adds is taken for nothing, so that it reads as the end.
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), (Calls{"context", "next 2"}));
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlWalkModes, ReturnLastWithoutALimitGoesOnToTheLastBatch) {
    ORUDtlNode *p = rows_of_p(5);
    oru_dtl_tree_set_return_last(p);
    oru_dtl_tree_set_batch_size(p, 2);
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 2", "next 2",
                              "next 2", "close"}));
    EXPECT_EQ(tree(), "p(/5)");
}

// ---- return-w-child ----

TEST_F(DtlWalkModes, RowsWithoutChildrenAreHidden) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    oru_dtl_tree_set_return_w_child(a, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a2?bs"] = {{"/b1"}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "~a(/a1) a(/a2){b(/b1)}");
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, ARowWithoutChildrenAsksForAnotherPass) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    oru_dtl_tree_set_return_w_child(a, 1);
    oru_dtl_tree_set_batch_size(a, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a2?bs"] = {{"/b1"}};
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(tree(), "a(/a2){b(/b1)}");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?as [_uri,_mr]", "next 1",
                              "open_cfg /a1?bs [_uri,_mr]", "next 1", "close", "next 1", "close",
                              "open_cfg /a2?bs [_uri,_mr]", "next 1", "close"}));
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

// ---- max-batches ----

TEST_F(DtlWalkModes, TheLastOfSeveralBatchesSaysSo) {
    ORUDtlNode *p = rows_of_p(5);
    oru_dtl_tree_set_max_batches(p, 2);
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/3) p(/4) _maxBatch!1 Last batch of p");
    calls();
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
    EXPECT_TRUE(traces.has(7, "max_batches reached, returning"));
    EXPECT_EQ(calls(), (Calls{"context", "close"}));
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlWalkModes, ALimitOfOneBatchIsSilent) {
    ORUDtlNode *p = rows_of_p(5);
    oru_dtl_tree_set_max_batches(p, 1);
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, ALimitOfBatchesMayBeAParameter) {
    ORUDtlNode *p = rows_of_p(5);
    oru_dtl_tree_set_max_batches_param(p, "$m");
    param("m", 1);
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, ALimitThatIsNoNumberIsNone) {
    ORUDtlNode *p = rows_of_p(3);
    oru_dtl_tree_set_max_batches_param(p, "$m");
    oru_dtl_tree_set_max_batches(p, 1);
    param("m", "few");
    TraceCapture traces;
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_TRUE(traces.has(3, "Non numeric max-batches param value $m"));
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlWalkModes, AnUnknownLimitIsNoneAndSilent) {
    ORUDtlNode *p = rows_of_p(2);
    oru_dtl_tree_set_max_batches_param(p, "$m");
    oru_dtl_tree_set_max_batches(p, 1);
    TraceCapture traces;
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_TRUE(traces.at(3).empty());
}

// ---- continue-on-error ----

class DtlWalkErrors : public DtlWalk {
  protected:
    DtlWalkErrors() {
        ORUDtlNode *r = add_node(doc.get(), "r", ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
        x = add_mr_node(r, "x", ORU_DTL_OP_GET, "/xx");
        attr(x, "a");
        ORUDtlNode *y = add_mr_node(r, "y", ORU_DTL_OP_GET, "/yy");
        attr(y, "a");
        system.config["/xx"] = {{"a", 1}};
        system.config["/yy"] = {{"a", 2}};
    }
    ORUDtlNode *x;
};

TEST_F(DtlWalkErrors, AFailureStopsTheWalkAndStaysInTheTree) {
    system.failures["cfg /xx"] = 106;
    TraceCapture traces;
    EXPECT_EQ(next(0), 106);
    EXPECT_EQ(tree(), "r{x!106 failed}");
    EXPECT_TRUE(traces.has(7, "STOP ENGINE"));
    EXPECT_EQ(calls(), (Calls{"context", "cfg /xx [a]"}));
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(tree(), "r{x!106 failed}");
}

TEST_F(DtlWalkErrors, AFailureOfTheDataMayBePassedOver) {
    oru_dtl_tree_set_continue_on_error(x, 1);
    system.failures["cfg /xx"] = 106;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "r{x!106 failed y(/yy)[a=2]}");
}

TEST_F(DtlWalkErrors, ACollectionThatIsNotThereMayBePassedOver) {
    doc.reset(oru_dtl_tree_new());
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    attr(add_mr_node(doc.get(), "y", ORU_DTL_OP_GET, "/yy"), "a");
    oru_dtl_tree_set_continue_on_error(p, 1);
    system.failures["open /sys?ps"] = 102;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "y(/yy)[a=2]");
    oru_dtl_tree_set_continue_on_error(p, 0);
    oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
    EXPECT_EQ(next(0), 102);
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlWalkErrors, TheLastCodeIsTheResultThoughItWasPassedOver) {
    doc.reset(oru_dtl_tree_new());
    ORUDtlNode *y = add_mr_node(doc.get(), "y", ORU_DTL_OP_GET, "/yy");
    attr(y, "a");
    oru_dtl_tree_set_continue_on_error(y, 1);
    system.failures["cfg /yy"] = 106;
    EXPECT_EQ(next(0), 106);
    EXPECT_EQ(tree(), "y!106 failed");
}

TEST_F(DtlWalkErrors, BelowAnOpenCursorLeaveItsNextBatchToTheNextCall) {
    doc.reset(oru_dtl_tree_new());
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    oru_dtl_tree_set_batch_size(p, 1);
    attr(add_mr_node(p, "z", ORU_DTL_OP_GET, "$_PARENT_URI_/zz"), "a");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.config["/2/zz"] = {{"a", 5}};
    system.failures["cfg /1/zz"] = 106;
    EXPECT_EQ(next(-1), 106);
    EXPECT_EQ(tree(), "p(/1){z!106 failed}");
    calls();
    EXPECT_EQ(next(-1), ORU_OK);
    EXPECT_EQ(tree(), "p(/2){z(/2/zz)[a=5]}");
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close", "cfg /2/zz [a]"}));
}

TEST_F(DtlWalkErrors, AFailureOfTheSystemIsNot) {
    oru_dtl_tree_set_continue_on_error(x, 1);
    system.failures["cfg /xx"] = 10001;
    EXPECT_EQ(next(0), 10001);
    EXPECT_EQ(tree(), "r{x!10001 failed}");
}

TEST_F(DtlWalkErrors, NorIsCanceling) {
    oru_dtl_tree_set_continue_on_error(x, 1);
    system.failures["cfg /xx"] = 33;
    EXPECT_EQ(next(0), 33);
}

TEST_F(DtlWalkErrors, AMissingResourceIsNoFailure) {
    system.config.erase("/xx");
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "r{x(/xx)[a=null] y(/yy)[a=2]}");
}

TEST_F(DtlWalkErrors, CodeOneIsNoFailure) {
    system.failures["cfg /xx"] = 1;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "r{x!1 failed y(/yy)[a=2]}");
}

TEST_F(DtlWalkErrors, AFailureInALaterCallIsTheResultThough) {
    doc.reset(oru_dtl_tree_new());
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    EXPECT_EQ(next(1), ORU_OK);
    system.failures["next"] = 105;
    EXPECT_EQ(next(1), 105);
    EXPECT_EQ(tree(), "p!105 failed");
}

// ---- flatten ----

TEST_F(DtlWalkModes, FlattenedRowsGiveWayToTheirChildren) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as", {"k"});
    ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs", {"m"});
    oru_dtl_tree_set_flatten(a, "true");
    system.rows["/sys?as"] = {{"/a1", {{"k", 1}}}, {"/a2", {{"k", 2}}}};
    system.rows["/a1?bs"] = {{"/b1", {{"m", 3}}}, {"/b2", {{"m", 4}}}};
    EXPECT_NE(b, nullptr);
    EXPECT_EQ(next(0), ORU_OK);
    // A row without children stays; the two of the first carry its attributes along.
    ASSERT_EQ(oru_do_dtree_get_child_count(ctx->dtree_node), 3);
    EXPECT_EQ(tree(),
              "a.b(/b1)[b._uri=/b1,b._mr=null,b.m=3,k=1,a.__uri=/a1] "
              "a.b(/b2)[b._uri=/b2,b._mr=null,b.m=4,k=1,a.__uri=/a1] a(/a2)[k=2]");
}

TEST_F(DtlWalkModes, FlatteningWithALimitStopsBehindTheRow) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    collection(a, "b", "$_PARENT_URI_?bs");
    oru_dtl_tree_set_flatten(a, "true");
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}};
    system.rows["/a2?bs"] = {{"/b2"}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(oru_do_dtree_get_child_count(ctx->dtree_node), 2);
    EXPECT_EQ(next(2), ORU_RC_NO_MORE_VALUE);
}

// ---- Where clauses that are used once ----

TEST_F(DtlWalkModes, AClauseThatIsUsedOnceAppliesToTheFirstCursor) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
    const Value start(oru_do_value_new_long(5));
    oru_dtl_tree_add_where_clause(b, "id >=", start.get());
    oru_dtl_tree_set_use_where_clause_once(b, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}};
    EXPECT_EQ(next(0), ORU_OK);
    const Calls made = calls();
    EXPECT_EQ(made[4], "open_cfg /a1?bs [_uri,_mr] where={id >=:5}");
    EXPECT_EQ(made[7], "open_cfg /a2?bs [_uri,_mr]");
    EXPECT_EQ(ctx->where_used[0], b->mr_info->where_clause);
}

TEST_F(DtlWalkModes, AnyOtherClauseAppliesToAll) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
    const Value start(oru_do_value_new_long(5));
    oru_dtl_tree_add_where_clause(b, "id >=", start.get());
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    EXPECT_EQ(next(0), ORU_OK);
    const Calls made = calls();
    EXPECT_EQ(made[4], "open_cfg /a1?bs [_uri,_mr] where={id >=:5}");
    EXPECT_EQ(made[7], "open_cfg /a2?bs [_uri,_mr] where={id >=:5}");
}

TEST_F(DtlWalkModes, WithoutRoomToNoteItAClauseAppliesToAll) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
    const Value start(oru_do_value_new_long(5));
    oru_dtl_tree_add_where_clause(b, "id >=", start.get());
    oru_dtl_tree_set_use_where_clause_once(b, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    ctx->where_count = 0;
    EXPECT_EQ(next(0), ORU_OK);
    const Calls made = calls();
    EXPECT_EQ(made[4], "open_cfg /a1?bs [_uri,_mr] where={id >=:5}");
    EXPECT_EQ(made[7], "open_cfg /a2?bs [_uri,_mr] where={id >=:5}");
}

// The name that is looked for has the blank and the ">" of the condition in it.
TEST_F(DtlWalkModes, ARowBehindTheStartPositionUsesUpTheClausesBelow) {
    struct Case {
        const char *attribute;
        int64_t value;
        bool used_up;
    };
    for (const auto &[attribute, value, used_up] :
         {Case{"k >", 7, true}, Case{"k >", 5, false}, Case{"k", 7, false}}) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        calls();
        ORUDtlNode *a = collection(doc.get(), "a", "/sys?as", {attribute});
        ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs", {"m"});
        const Value start(oru_do_value_new_long(5));
        oru_dtl_tree_add_where_clause(a, "k >=", start.get());
        oru_dtl_tree_add_where_clause(b, "m >=", start.get());
        oru_dtl_tree_set_use_where_clause_once(a, 1);
        oru_dtl_tree_set_use_where_clause_once(b, 1);
        system.rows["/sys?as"] = {{"/a1", {{attribute, value}}}};
        EXPECT_EQ(next(0), ORU_OK);
        EXPECT_EQ(calls()[4],
                  std::string("open_cfg /a1?bs [_uri,_mr,m]") + (used_up ? "" : " where={m >=:5}"))
            << attribute << value;
    }
}

// An empty batch uses the clause up for the node and what stands below it.
TEST_F(DtlWalkModes, AnEmptyBatchUsesUpTheClausesBelow) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
    ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
    ORUDtlNode *c = collection(b, "c", "$_PARENT_URI_?cs");
    const Value start(oru_do_value_new_long(5));
    for (ORUDtlNode *node : {a, b}) {
        oru_dtl_tree_add_where_clause(node, "id >=", start.get());
        oru_dtl_tree_set_use_where_clause_once(node, 1);
    }
    EXPECT_NE(c, nullptr);
    EXPECT_EQ(next(0), ORU_OK);
    ASSERT_EQ(ctx->where_count, 2);
    EXPECT_EQ(ctx->where_used[0], a->mr_info->where_clause);
    EXPECT_EQ(ctx->where_used[1], b->mr_info->where_clause);
}

}  // namespace
