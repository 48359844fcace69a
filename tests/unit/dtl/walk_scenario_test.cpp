// Documents with rows in rows, call after call: what is asked and what stands in the tree.
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

class DtlWalkScenario : public DtlWalk {
  protected:
    void expect_call(int32_t count, const Calls &made, const char *results) {
        SCOPED_TRACE(results);
        EXPECT_EQ(next(count), ORU_OK);
        EXPECT_EQ(calls(), made);
        EXPECT_EQ(tree(), results);
    }
    void expect_end(int32_t count) {
        EXPECT_EQ(next(count), ORU_RC_NO_MORE_VALUE);
        EXPECT_EQ(calls(), Calls{});
    }
    static std::string open(const char *uri, const char *more = "") {
        return std::string("open_cfg ") + uri + " [_uri,_mr" + more + "]";
    }
    ORUDtlNode *inner(ORUDtlNode *above, const char *name) {
        return collection(above, name, ("$_PARENT_URI_?" + std::string(name) + "s").c_str());
    }
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
};

class DtlWalkThreeDeep : public DtlWalkScenario {
  protected:
    DtlWalkThreeDeep() {
        b = inner(a, "b");
        c = inner(b, "c");
        system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
        system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
        system.rows["/a2?bs"] = {{"/b3"}};
        system.rows["/b1?cs"] = {{"/c1"}, {"/c2"}, {"/c3"}};
        system.rows["/b2?cs"] = {{"/c4"}};
        system.rows["/b3?cs"] = {{"/c5"}};
    }
    ORUDtlNode *b;
    ORUDtlNode *c;
};

TEST_F(DtlWalkThreeDeep, ALimitCountsTheInnermostRows) {
    expect_call(2,
                {"context", open("/sys?as"), "next 2", "close", open("/a1?bs"), "next 2", "close",
                 open("/b1?cs"), "next 2"},
                "a(/a1){b(/b1){c(/c1) c(/c2)} ~b(/b2)} ~a(/a2)");
    expect_call(2, {"context", "next 2", "close", open("/b2?cs"), "next 1", "close"},
                "a(/a1){b(/b1){c(/c3)} b(/b2){c(/c4)}} ~a(/a2)");
    expect_call(2,
                {"context", open("/a2?bs"), "next 2", "close", open("/b3?cs"), "next 2", "close"},
                "a(/a2){b(/b3){c(/c5)}}");
    expect_end(2);
}

TEST_F(DtlWalkThreeDeep, BatchSizesKeepACursorOpenOnEachLevel) {
    oru_dtl_tree_set_batch_size(a, 1);
    oru_dtl_tree_set_batch_size(b, 1);
    oru_dtl_tree_set_batch_size(c, 2);
    expect_call(
        -1,
        {"context", open("/sys?as"), "next 1", open("/a1?bs"), "next 1", open("/b1?cs"), "next 2"},
        "a(/a1){b(/b1){c(/c1) c(/c2)}}");
    expect_call(-1, {"context", "next 2", "close"}, "a(/a1){b(/b1){c(/c3)}}");
    expect_call(-1, {"context", "next 1", "close", open("/b2?cs"), "next 2", "close"},
                "a(/a1){b(/b2){c(/c4)}}");
    expect_call(-1,
                {"context", "next 1", "close", open("/a2?bs"), "next 1", "close", open("/b3?cs"),
                 "next 2", "close"},
                "a(/a2){b(/b3){c(/c5)}}");
    expect_end(-1);
}

TEST_F(DtlWalkThreeDeep, WithoutALimitEverythingComesAtOnce) {
    expect_call(0,
                {"context", open("/sys?as"), "next 0", "close", open("/a1?bs"), "next 0", "close",
                 open("/b1?cs"), "next 0", "close", open("/b2?cs"), "next 0", "close",
                 open("/a2?bs"), "next 0", "close", open("/b3?cs"), "next 0", "close"},
                "a(/a1){b(/b1){c(/c1) c(/c2) c(/c3)} b(/b2){c(/c4)}} a(/a2){b(/b3){c(/c5)}}");
    expect_end(0);
}

// The rows of the first count again with the second, and an empty first hides the row above.
TEST_F(DtlWalkScenario, SiblingsInsideOfRows) {
    inner(a, "b");
    inner(a, "c");
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}};
    system.rows["/a1?cs"] = {{"/c1"}, {"/c2"}};
    system.rows["/a2?cs"] = {{"/c3"}};
    expect_call(2,
                {"context", open("/sys?as"), "next 2", "close", open("/a1?bs"), "next 2", "close",
                 open("/a1?cs"), "next 1"},
                "a(/a1){~b(/b1) c(/c1)} ~a(/a2)");
    expect_call(2,
                {"context", "next 2", "close", open("/a2?bs"), "next 1", "close", open("/a2?cs"),
                 "next 1", "close"},
                "a(/a1){c(/c2)} ~a(/a2){c(/c3)}");
    expect_end(2);
}

TEST_F(DtlWalkScenario, RowsWithoutChildrenDoNotFillABatch) {
    inner(a, "b");
    oru_dtl_tree_set_return_w_child(a, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}, {"/a3"}};
    system.rows["/a2?bs"] = {{"/b1"}};
    system.rows["/a3?bs"] = {{"/b2"}, {"/b3"}};
    expect_call(2,
                {"context", open("/sys?as"), "next 2", open("/a1?bs"), "next 2", "close",
                 open("/a2?bs"), "next 2", "close"},
                "~a(/a1) a(/a2){b(/b1)}");
    expect_call(2, {"context", "next 2", "close", open("/a3?bs"), "next 2", "close"},
                "a(/a3){b(/b2) b(/b3)}");
    expect_end(2);
}

TEST_F(DtlWalkScenario, FailuresInRowsArePassedOverOnBothLevels) {
    ORUDtlNode *x = add_mr_node(a, "x", ORU_DTL_OP_GET, "$_PARENT_URI_/x");
    attr(x, "k");
    oru_dtl_tree_set_continue_on_error(a, 1);
    oru_dtl_tree_set_continue_on_error(x, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.config["/a2/x"] = {{"k", 1}};
    system.failures["cfg /a1/x"] = 106;
    expect_call(0,
                {"context", open("/sys?as"), "next 0", "close", "cfg /a1/x [k]", "cfg /a2/x [k]"},
                "a(/a1){x!106 failed} a(/a2){x(/a2/x)[k=1]}");
    expect_end(0);
}

// The row above goes on only where its own settings say so.
TEST_F(DtlWalkScenario, AFailureInARowStopsTheRowsAbove) {
    ORUDtlNode *x = add_mr_node(a, "x", ORU_DTL_OP_GET, "$_PARENT_URI_/x");
    attr(x, "k");
    oru_dtl_tree_set_continue_on_error(x, 1);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.failures["cfg /a1/x"] = 106;
    EXPECT_EQ(next(0), 106);
    EXPECT_EQ(tree(), "a(/a1){x!106 failed} a(/a2)");
    EXPECT_EQ(calls(), (Calls{"context", open("/sys?as"), "next 0", "close", "cfg /a1/x [k]"}));
    expect_end(0);
}

TEST_F(DtlWalkScenario, ARowWithoutItsPeerIsNoLeaf) {
    const Name pr(oru_do_name_new("pr"));
    oru_dtl_tree_add_cfg_attr(a, pr.get());
    ORUDtlNode *peer = add_mr_node(a, "pr", ORU_DTL_OP_GET, "$_PEER_URI_pr");
    oru_dtl_tree_set_type(peer, ORU_DTL_NODE_PEER_REF);
    attr(peer, "k");
    system.rows["/sys?as"] = {{"/a1", {{"pr", UriText{"/p1"}}}}, {"/a2"}};
    system.config["/p1"] = {{"k", 1}};
    expect_call(1, {"context", open("/sys?as", ",pr"), "next 1", "cfg /p1 [k]"},
                "a(/a1)[_PEER_URI_pr=/p1]{pr(/p1)[k=1]}");
    EXPECT_EQ(next(1), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(calls(), (Calls{"context", "next 1", "close"}));
    EXPECT_EQ(tree(), "");
}

// Only a row that is through gives way to its children.
TEST_F(DtlWalkScenario, ARowIsFlattenedWithItsLastBatch) {
    inner(a, "b");
    oru_dtl_tree_set_flatten(a, "true");
    system.rows["/sys?as"] = {{"/a1"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
    expect_call(1, {"context", open("/sys?as"), "next 1", "close", open("/a1?bs"), "next 1"},
                "a(/a1){b(/b1)}");
    expect_call(1, {"context", "next 1", "close"}, "a.b(/b2)[b._uri=/b2,b._mr=null,a.__uri=/a1]");
    expect_end(1);
}

// The row whose batches are spent is passed with what it had.
TEST_F(DtlWalkScenario, ALimitOfBatchesHoldsForEachRow) {
    ORUDtlNode *b = inner(a, "b");
    oru_dtl_tree_set_batch_size(b, 1);
    oru_dtl_tree_set_max_batches(b, 2);
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}, {"/b3"}};
    system.rows["/a2?bs"] = {{"/b4"}};
    expect_call(-1, {"context", open("/sys?as"), "next 0", "close", open("/a1?bs"), "next 1"},
                "a(/a1){b(/b1)} a(/a2)");
    expect_call(-1, {"context", "next 1"}, "a(/a1){b(/b2) _maxBatch!1 Last batch of b} a(/a2)");
    expect_call(-1, {"context", "close", open("/a2?bs"), "next 1", "close"},
                "a(/a1){b(/b2) _maxBatch!1 Last batch of b} a(/a2){b(/b4)}");
    expect_end(-1);
}

// The next fetch of the outer rows follows in the same call and takes the row at hand with it.
TEST_F(DtlWalkScenario, ACountOfZeroInTheMiddleGoesOnToTheNextRowsAbove) {
    inner(a, "b");
    system.rows["/sys?as"] = {{"/a1"}, {"/a2"}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}};
    system.rows["/a2?bs"] = {{"/b3"}};
    expect_call(1, {"context", open("/sys?as"), "next 1", open("/a1?bs"), "next 1"},
                "a(/a1){b(/b1)}");
    expect_call(
        0, {"context", "next 0", "close", "next 0", "close", open("/a2?bs"), "next 0", "close"},
        "a(/a2){b(/b3)}");
    expect_end(0);
}

// A single read that asks for one row and gives none to descend into: nothing behind it is read.
TEST_F(DtlWalkScenario, ReturnOneOfASingleReadEndsItsLevel) {
    doc.reset(oru_dtl_tree_new());
    ORUDtlNode *x = add_mr_node(doc.get(), "x", ORU_DTL_OP_GET, "/xx");
    oru_dtl_tree_set_return_one(x);
    attr(x, "k");
    attr(add_mr_node(doc.get(), "y", ORU_DTL_OP_GET, "/yy"), "k");
    expect_call(0, {"context", "cfg /xx [k]"}, "x(/xx)[k=null]");
    expect_end(0);
}

}  // namespace
