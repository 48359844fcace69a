// One fetch: which call is made, and what its answer becomes.
#include "oru/error.h"
#include "oru/logger.h"
#include "oru/properties.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

class DtlFetch : public DtlWalk {
  protected:
    // One node that reads the resource /xx.
    ORUDtlNode *reader(int32_t op, ORUDoMrMeta *meta = nullptr) {
        return add_mr_node(doc.get(), "x", op, "/xx", meta);
    }
    void ask(ORUDtlNode *node, const char *name, bool oper) {
        const Name attribute(oru_do_name_new(name));
        (oper ? oru_dtl_tree_add_oper_attr : oru_dtl_tree_add_cfg_attr)(node, attribute.get());
    }
    void order_by(ORUDtlNode *node, const char *name) {
        const Name attribute(oru_do_name_new(name));
        oru_dtl_tree_add_order_by(node, attribute.get());
    }
};

TEST_F(DtlFetch, OperationsChooseTheirCalls) {
    struct Case {
        int32_t op;
        bool cfg;
        bool oper;
        Calls calls;
    };
    const std::string c = "cfg /xx ";
    const std::string o = "oper /xx ";
    for (const auto &[op, cfg, oper, expected] : std::vector<Case>{
             {2, false, false, {}},
             {2, true, true, {c + "[a]", o + "[b]"}},
             {3, true, true, {c + "[_uri,_mr,a]", o + "[_uri,_mr,b]"}},
             {3, true, false, {c + "[_uri,_mr,a]"}},
             {3, false, false, {"cfg_props /xx", "oper_props /xx"}},
             {4, true, true, {c + "[_uri,_mr,a]", o + "[b]"}},
             {4, false, true, {"cfg_props /xx"}},
             {5, true, true, {c + "[a]", o + "[_uri,_mr,b]"}},
             {5, true, false, {"oper_props /xx"}},
             {6, true, true, {c + "[_uri,_mr,a]", o + "[_uri,_mr,b]"}},
             {6, false, false, {}},
             {7, true, true, {c + "[_uri,_mr,a]", o + "[b]"}},
             {7, false, true, {}},
             {8, true, true, {c + "[a]", o + "[_uri,_mr,b]"}},
             {8, true, false, {}},
             {9, true, true, {}},
             {18, true, true, {}},
         }) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        ORUDtlNode *x = reader(op);
        if (cfg)
            ask(x, "a", false);
        if (oper)
            ask(x, "b", true);
        system.config["/xx"] = {{"a", 1}};
        system.oper["/xx"] = {{"b", 2}};
        EXPECT_EQ(next(0), ORU_OK);
        Calls made = calls();
        made.erase(made.begin());
        EXPECT_EQ(made, expected) << op;
        EXPECT_EQ(tree().empty(), op == 9 || op == 18) << op;
    }
}

TEST_F(DtlFetch, PlainOperationsOnACollectionBecomeThoseOfCollections) {
    TraceCapture traces;
    for (int32_t op = 2; op <= 8; ++op) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        add_mr_node(doc.get(), "x", op, "/sys?ps");
        EXPECT_EQ(next(0), ORU_OK);
        EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 0", "close"}));
        EXPECT_TRUE(traces.has(
            7, std::string("[0]<x> op=") + oru_dtl_tree_get_op_str(op + 8) + ",mr=,URI=/sys?ps"));
    }
}

TEST_F(DtlFetch, AllPropertiesComeAsTheyAre) {
    reader(ORU_DTL_OP_GET_ALL);
    system.config["/xx"] = {{"a", 1}};
    system.oper["/xx"] = {{"b", "up"}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "x(/xx)[a=1,b=up]");
}

TEST_F(DtlFetch, AMissingResourceLeavesTheOtherReadToRun) {
    reader(ORU_DTL_OP_GET_ALL);
    system.oper["/xx"] = {{"b", 2}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "cfg_props /xx", "oper_props /xx"}));
    EXPECT_EQ(tree(), "x(/xx)[b=2]");
}

TEST_F(DtlFetch, AFailureOfAllPropertiesSitsOnTheNode) {
    reader(ORU_DTL_OP_GET_ALL);
    system.failures["cfg_props /xx"] = 105;
    EXPECT_EQ(next(0), 105);
    EXPECT_EQ(calls(), (Calls{"context", "cfg_props /xx"}));
    EXPECT_EQ(tree(), "x!105 failed");
}

TEST_F(DtlFetch, AFailureWithoutAnErrorLeavesTheNodeBare) {
    ask(reader(ORU_DTL_OP_GET), "a", false);
    system.failures["cfg /xx"] = 105;
    system.silent = true;
    EXPECT_EQ(next(0), 105);
    EXPECT_EQ(tree(), "x");
}

TEST_F(DtlFetch, AFailedOperationalReadKeepsTheNodeEmpty) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    attr(x, "a");
    attr(x, "b", ORU_DTL_NODE_OPER_ATTR);
    system.config["/xx"] = {{"a", 1}};
    system.failures["oper /xx"] = 105;
    EXPECT_EQ(next(0), 105);
    EXPECT_EQ(tree(), "x!105 failed");
}

TEST_F(DtlFetch, ReturnDefaultIsHandedOn) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    ask(x, "a", false);
    oru_dtl_tree_set_return_default(x, 0);
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    oru_dtl_tree_set_return_default(p, 0);
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "cfg /xx [a] no defaults",
                              "open_cfg_no_defaults /sys?ps [_uri,_mr]", "next 0", "close"}));
}

TEST_F(DtlFetch, MissingValuesOfAReadAreNull) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    attr(x, "a");
    attr(x, "b");
    attr(x, "c", ORU_DTL_NODE_OPER_ATTR);
    system.config["/xx"] = {{"a", 1}, {"b", 2}};
    system.oper["/xx"] = {{"c", 3}};
    system.most_values = 1;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "x(/xx)[a=1,b=null,c=3]");
}

// ---- Selections ----

TEST_F(DtlFetch, ASelectionNarrowsANamedRead) {
    struct Case {
        const char *select;
        const char *asked;
    };
    for (const auto &[select, asked] :
         {Case{"[\"a\",\"b\"]", "[a,b,_x]"}, Case{"\"b\"", "[b,_x]"}, Case{"[]", "[_x]"},
          Case{"5", "[_x]"}, Case{"[\"a\",5]", "[a,_x]"}, Case{"$sel", "[a,_x]"},
          Case{"$unknown", "[a,b,c,_x]"}, Case{"oops", "[a,b,c,_x]"}}) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        params.reset(oru_do_nvlist_new());
        param("sel", "[\"a\"]");
        ORUDtlNode *x = reader(ORU_DTL_OP_GET);
        for (const char *name : {"a", "b", "c", "_x"})
            ask(x, name, false);
        oru_dtl_tree_set_attr_select(x, select);
        EXPECT_EQ(next(0), ORU_OK);
        EXPECT_EQ(calls()[1], std::string("cfg /xx ") + asked) << select;
    }
}

// A path from the top of the results is for collections.
TEST_F(DtlFetch, ASelectionMayStandInTheResults) {
    ORUDtlNode *a = collection(doc.get(), "a", "/sys?as", {"sel"});
    ORUDtlNode *x = add_mr_node(a, "x", ORU_DTL_OP_GET, "/xx");
    ORUDtlNode *y = add_mr_node(a, "y", ORU_DTL_OP_GET, "/yy");
    ORUDtlNode *b = collection(a, "b", "/sys?bs");
    for (ORUDtlNode *node : {x, y, b}) {
        ask(node, "m", false);
        ask(node, "n", false);
        oru_dtl_tree_set_attr_select(node, node == x ? "@sel" : "@(/a/sel)");
    }
    system.rows["/sys?as"] = {{"/a1", {{"sel", "[\"m\"]"}}}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(),
              (Calls{"context", "open_cfg /sys?as [_uri,_mr,sel]", "next 0", "close", "cfg /xx [m]",
                     "cfg /yy [m,n]", "open_cfg /sys?bs [_uri,_mr,m]", "next 0", "close"}));
}

TEST_F(DtlFetch, ASelectionThatLeavesNoNameReadsWithNone) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    ask(x, "a", false);
    oru_dtl_tree_set_attr_select(x, "[\"b\"]");
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls()[1], "cfg /xx []");
}

TEST_F(DtlFetch, ASelectionIsNotHeldByWideReads) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET_ALL);
    ask(x, "a", false);
    oru_dtl_tree_set_attr_select(x, "[\"b\"]");
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls()[1], "cfg /xx [_uri,_mr,a]");
}

TEST_F(DtlFetch, ASelectionNarrowsTheRowsOfACollection) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    for (const char *name : {"a", "b", "c"})
        ask(p, name, false);
    for (const char *name : {"d", "e"})
        ask(p, name, true);
    oru_dtl_tree_set_attr_select(p, "[\"a\",\"b\",\"e\"]");
    system.rows["/sys?ps"] = {{"/1"}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr,a,b]", "next 0", "oper /1 [e]",
                              "close"}));
}

// ---- Collections ----

TEST_F(DtlFetch, APlainCollectionIsReadByTheTypeOfItsMembers) {
    const MrMeta port = make_mr("Port", {});
    struct Case {
        const char *uri;
        const char *opened;
        int32_t skipped_type;
    };
    TraceCapture traces;
    for (const auto &[uri, opened, type] :
         {Case{"/sys?ports", "/sys/ports?:net/Port", 0}, Case{"/s?ports", "/sports?:net/Port", 0},
          Case{"/sys?ports:net/Port", "/sys?ports:net/Port", 3},
          Case{"/sys?:net/Port", "/sys?:net/Port", 4}}) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_GET, uri, port.get());
        traces.clear();
        EXPECT_EQ(next(0), ORU_OK);
        EXPECT_EQ(calls()[1], std::string("open_cfg ") + opened + " [_uri,_mr]");
        EXPECT_TRUE(traces.has(7, "New config_cursor, #attrs=2"));
        bool skipped = false;
        for (const std::string &line : traces.at(7))
            skipped = skipped || line.find("Skipping type addition to " + std::string(uri) +
                                           " (type=" + std::to_string(type) + ", mr_meta=") == 0;
        EXPECT_EQ(skipped, type != 0) << uri;
    }
}

TEST_F(DtlFetch, OperationalResourcesHaveOperationalCursors) {
    const MrMeta stats = make_mr("Stats", {}, 0);
    ORUDtlNode *p = add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_GET, "/sys?stats", stats.get());
    attr(p, "up", ORU_DTL_NODE_OPER_ATTR);
    oru_dtl_tree_set_attr_select(p, "[]");
    system.rows["/sys?stats"] = {{"/1", {{"up", 7}}}};
    TraceCapture traces;
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_TRUE(traces.has(7, "New oper_cursor, #attrs=3"));
    EXPECT_TRUE(traces.has(7, "colluri=/sys?stats, count=2"));
    EXPECT_TRUE(traces.has(7, "getnext ret=1"));
    EXPECT_TRUE(traces.has(7, "#rows=1"));
    EXPECT_EQ(calls(), (Calls{"context", "open_oper /sys?stats [_uri,_mr,up]", "next 2", "close"}));
    EXPECT_EQ(tree(), "p(/1)[up=7]");
}

TEST_F(DtlFetch, AnOperationalCursorStaysOpenUntilItsEnd) {
    const MrMeta stats = make_mr("Stats", {}, 0);
    add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_GET, "/sys?stats", stats.get());
    system.rows["/sys?stats"] = {{"/1"}, {"/2"}, {"/3"}};
    system.batch = 2;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(system.open_cursors(), 1);
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/3)");
    EXPECT_EQ(system.open_cursors(), 0);
}

TEST_F(DtlFetch, AConfigurationCursorLeftTheNumberIsDoneAfterOneFetch) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}, {"/3"}};
    system.batch = 2;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1) p(/2)");
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlFetch, ACursorThatDoesNotOpenIsTheResult) {
    collection(doc.get(), "p", "/sys?ps");
    system.failures["open /sys?ps"] = 103;
    EXPECT_EQ(next(1), 103);
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlFetch, ACursorThatFailsShowsItsErrorAndIsClosed) {
    collection(doc.get(), "p", "/sys?ps");
    system.failures["next"] = 105;
    EXPECT_EQ(next(1), 105);
    EXPECT_EQ(tree(), "p!105 failed");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 1", "close"}));
}

TEST_F(DtlFetch, AConfigurationCursorLeftTheNumberNeverFails) {
    collection(doc.get(), "p", "/sys?ps");
    system.failures["next"] = 105;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "");
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 0", "close"}));
    EXPECT_EQ(next(0), ORU_RC_NO_MORE_VALUE);
}

TEST_F(DtlFetch, AnOperationalCursorLeftTheNumberMayFail) {
    const MrMeta stats = make_mr("Stats", {}, 0);
    add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_GET, "/sys?stats", stats.get());
    system.failures["next"] = 105;
    EXPECT_EQ(next(0), 105);
    EXPECT_EQ(tree(), "p!105 failed");
    EXPECT_EQ(calls(), (Calls{"context", "open_oper /sys?stats [_uri,_mr]", "next 0", "close"}));
}

TEST_F(DtlFetch, ACursorThatFailsWithoutAnErrorShowsNothing) {
    collection(doc.get(), "p", "/sys?ps");
    system.failures["next"] = 105;
    system.silent = true;
    EXPECT_EQ(next(1), 105);
    EXPECT_EQ(tree(), "");
}

TEST_F(DtlFetch, ARowWithoutAnAddressShowsAsOne) {
    collection(doc.get(), "p", "/sys?ps");
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.without_uri = true;
    TraceCapture traces;
    EXPECT_EQ(next(0), 101);
    EXPECT_EQ(traces.at(3), (std::vector<std::string>{"row has no URI", "row has no URI"}));
    EXPECT_EQ(tree(), "p!101 unexpected do type p!101 unexpected do type");
}

TEST_F(DtlFetch, OperationalValuesAreReadRowByRow) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps", {"a"});
    attr(p, "b", ORU_DTL_NODE_OPER_ATTR);
    system.rows["/sys?ps"] = {{"/1", {{"a", 1}}}, {"/2", {{"a", 2}}}, {"/3", {{"a", 3}}}};
    system.oper["/1"] = {{"b", 5}};
    system.oper["/3"] = {{"b", 6}};
    system.failures["oper /3"] = 105;
    TraceCapture traces;
    // The last row's failure is the result; the second has no operational resource.
    EXPECT_EQ(next(0), 105);
    EXPECT_TRUE(traces.has(7, "Invoking oper-data-get on /1"));
    EXPECT_EQ(tree(), "p(/1)[a=1,b=5] p(/2)[a=2,b=null] p(/3)[a=3,b=null]!105 failed");
}

TEST_F(DtlFetch, AFailureInAnEarlierRowIsNotReportedByCode) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    attr(p, "b", ORU_DTL_NODE_OPER_ATTR);
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.oper["/2"] = {{"b", 6}};
    system.failures["oper /1"] = 105;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)[b=null]!105 failed p(/2)[b=6]");
}

TEST_F(DtlFetch, WideReadsOfACollectionCarryWhatWasFetched) {
    ORUDtlNode *p = add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_GET_ALL, "/sys?ps");
    ask(p, "a", false);
    system.rows["/sys?ps"] = {{"/1", {{"a", 1}}}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)[a=1]");
    ORUDoDtree *row = oru_do_dtree_get_child(ctx->dtree_node, 0);
    EXPECT_EQ(oru_do_properties_get_len(oru_do_dtree_get_properties(row)), 3);
}

// ---- Order ----

TEST_F(DtlFetch, OrdersAreSplitAtTheirCommas) {
    struct Case {
        const char *param;
        const char *order;
    };
    for (const auto &[text, order] :
         {Case{"a", "[a]"}, Case{"a,b", "[a,b]"}, Case{"a,", "[a,a,]"}, Case{"a,b,", "[a,b,b,]"},
          Case{"a desc,b", "[a desc,b]"}, Case{"$o", "[x,y]"}, Case{"$none", "[by]"},
          Case{"$number", "[by]"}, Case{"@@a", "[@@a]"}, Case{"", "[]"}}) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        params.reset(oru_do_nvlist_new());
        param("o", "x,y");
        param("number", 5);
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        order_by(p, "by");
        oru_dtl_tree_set_order_param(p, text);
        TraceCapture traces;
        EXPECT_EQ(next(0), ORU_OK);
        EXPECT_EQ(calls()[1], std::string("open_cfg /sys?ps [_uri,_mr] order=") + order) << text;
        EXPECT_EQ(traces.has(3, "Non numeric order param value $number"),
                  std::string(text) == "$number");
    }
}

TEST_F(DtlFetch, TheLoggerGetsConditionsAndOrder) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    const Value value(oru_do_value_new_long(5));
    oru_dtl_tree_add_where_clause(p, "id", value.get());
    order_by(p, "by");
    const uint32_t before = oru_logger_get_level();
    TraceCapture traces;
    oru_logger_set_level(5);
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_FALSE(traces.has(7, "where={id : 5}"));
    oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
    oru_logger_set_level(6);
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_TRUE(traces.has(7, "where={id : 5}"));
    EXPECT_TRUE(traces.has(7, "order=[by]\n"));
    oru_logger_set_level(before);
}

// ---- Defaults ----

class DtlDefaults : public DtlFetch {
  protected:
    // Reads `name` with a default from a row that has `attributes`.
    std::string with_default(const char *name, const char *expression,
                             const Attributes &attributes) {
        doc.reset(oru_dtl_tree_new());
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        oru_dtl_tree_set_default_expr(attr(p, name), expression);
        ask(p, "other", false);
        system.rows["/sys?ps"] = {{"/1", attributes}};
        EXPECT_EQ(next(0), ORU_OK);
        return tree();
    }
};

TEST_F(DtlDefaults, ServeWhereTheRowHasNothing) {
    EXPECT_EQ(with_default("a", "5", {}), "p(/1)[a=5]");
    EXPECT_EQ(with_default("a", "5", {{"a", 1}}), "p(/1)[a=1]");
    EXPECT_EQ(with_default("a", "\"x\"", {}), "p(/1)[a=x]");
    EXPECT_EQ(with_default("a", "null", {}), "p(/1)[a=null]");
    EXPECT_EQ(with_default("a", "", {}), "p(/1)[a=null]");
}

TEST_F(DtlDefaults, MayBeReferences) {
    param("n", 7);
    EXPECT_EQ(with_default("a", "$n", {}), "p(/1)[a=7]");
    EXPECT_EQ(with_default("a", "$unknown", {}), "p(/1)[a=null]");
    EXPECT_EQ(with_default("a", "@(./other)", {{"other", 8}}), "p(/1)[a=8]");
    EXPECT_EQ(with_default("a", "@other", {{"other", 8}}), "p(/1)[a=8]");
    EXPECT_EQ(with_default("a", "@(./none)", {}), "p(/1)[a=null]");
    EXPECT_EQ(with_default("a", "@(./other)", {}), "p(/1)[a=null]");
}

TEST_F(DtlDefaults, ThatFailLeaveTheirErrorOnTheDocument) {
    EXPECT_EQ(with_default("a", "{oops", {}), "p(/1)[a=null]");
    ORUDtlNode *a = doc->first_child->first_child;
    ASSERT_NE(a->error, nullptr);
    EXPECT_EQ(oru_do_error_get_code(a->error), 7);
}

TEST_F(DtlFetch, AnotherPropertyNameLeavesTheRowsValueUnread) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    oru_dtl_tree_set_prop_name(add_node(x, "shown", ORU_DTL_NODE_ATTR, 0), "mtu");
    ask(x, "mtu", false);
    system.config["/xx"] = {{"mtu", 1500}};
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "x(/xx)[shown=null]");
}

TEST_F(DtlFetch, OnlyAttributesPeersAndBareContainersAreFilled) {
    ORUDtlNode *x = reader(ORU_DTL_OP_GET);
    for (int32_t type = 0; type < 14; ++type)
        add_node(x, ("n" + std::to_string(type)).c_str(), type, ORU_DTL_OP_NOOP);
    add_node(add_node(x, "full", ORU_DTL_NODE_CONTAINER, 0), "y", ORU_DTL_NODE_ATTR, 0);
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "x(/xx)[n4=null,n5=null,_PEER_URI_n7=null,n13=null]");
}

TEST_F(DtlFetch, RowsAreNumberedUnderTheirParent) {
    collection(doc.get(), "p", "/sys?ps", {"_dtlChildIndex"});
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}, {"/3"}, {"/4"}};
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)[_dtlChildIndex=1] p(/2)[_dtlChildIndex=2]");
    EXPECT_EQ(next(2), ORU_OK);
    EXPECT_EQ(tree(), "p(/3)[_dtlChildIndex=3] p(/4)[_dtlChildIndex=4]");
    EXPECT_EQ(show(ctx->dtree_node).substr(0, 22), "[_dtlLastChildIndex=4]");
}

TEST_F(DtlFetch, ARunningNumberThatIsNoneStartsAnew) {
    collection(doc.get(), "p", "/sys?ps", {"_dtlChildIndex"});
    system.rows["/sys?ps"] = {{"/1"}};
    ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
    const Value odd(oru_do_value_new_string("odd"));
    oru_do_dtree_set_value(ctx->dtree_node, "_dtlLastChildIndex", odd.get());
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(tree(), "p(/1)[_dtlChildIndex=1]");
}

// ---- Actions ----

class DtlActions : public DtlFetch {
  protected:
    void set_action(ORUDtlNode *node) {
        const Name reset(oru_do_name_new("reset"));
        oru_dtl_tree_set_act_name(node, reset.get());
        for (const auto &[name, value] :
             Attributes{{"a", 1}, {"b", "$n"}, {"c", "$none"}, {"d", "$$n"}}) {
            const Name param_name(oru_do_name_new(name.c_str()));
            const Value object = make_value(value);
            oru_dtl_tree_set_act_in_param(node, param_name.get(), object.get());
        }
        param("n", 7);
        system.answer = {{"done", 1}};
    }
};

TEST_F(DtlActions, GetTheirParametersAndAnswer) {
    set_action(reader(ORU_DTL_OP_ACTION));
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "action /xx reset (a=1,b=7,c=$none,d=$$n)"}));
    EXPECT_EQ(tree(), "x(/xx){reset[done=1]}");
}

TEST_F(DtlActions, ThatFailShowTheirError) {
    set_action(reader(ORU_DTL_OP_ACTION));
    system.failures["action /xx"] = 104;
    EXPECT_EQ(next(0), 104);
    EXPECT_EQ(tree(), "x!104 failed");
}

TEST_F(DtlActions, RunOnEveryRowOfACollection) {
    ORUDtlNode *p = add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_ACTION, "/sys?ps");
    set_action(p);
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.failures["action /1"] = 104;
    TraceCapture traces;
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_TRUE(traces.has(7, "Invoking action on /1"));
    EXPECT_EQ(calls(), (Calls{"context", "open_cfg /sys?ps [_uri,_mr]", "next 0",
                              "action /1 reset (a=1,b=7,c=$none,d=$$n)",
                              "action /2 reset (a=1,b=7,c=$none,d=$$n)", "close"}));
    EXPECT_EQ(tree(), "p!104 failed p(/2){reset[done=1]}");
}

TEST_F(DtlActions, ThatFailOnTheLastRowAreTheResult) {
    set_action(add_mr_node(doc.get(), "p", ORU_DTL_OP_COLL_ACTION, "/sys?ps"));
    system.rows["/sys?ps"] = {{"/1"}, {"/2"}};
    system.failures["action /2"] = 104;
    EXPECT_EQ(next(0), 104);
    EXPECT_EQ(tree(), "p(/1){reset[done=1]} p!104 failed");
}

TEST_F(DtlActions, NeedTheirTableOfParameters) {
    ORUDtlNode *x = reader(ORU_DTL_OP_ACTION);
    x->mr_info->act_name = oru_do_name_new("reset");
    EXPECT_ASSERTION(next(0), "act_in_params");
}

}  // namespace
