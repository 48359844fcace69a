// A whole walk with each of its allocations failing: nothing is lost, nothing breaks, and the walk
// comes to an end.
#include <algorithm>

#include "oru/properties.h"
#include "tests/support/oom.h"
#include "tests/unit/dtl/plain_document.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

void add_attribute(ORUDtlNode *node, const char *name, bool oper) {
    const Name attribute(oru_do_name_new(name));
    (oper ? oru_dtl_tree_add_oper_attr : oru_dtl_tree_add_cfg_attr)(node, attribute.get());
    add_node(node, name, oper ? ORU_DTL_NODE_OPER_ATTR : ORU_DTL_NODE_ATTR, ORU_DTL_OP_NOOP);
}

// Every kind of fetch, with conditions, an order, defaults, peers and an action.
Tree make_document() {
    Tree doc(oru_dtl_tree_new());
    const MrMeta meta = make_mr("A", {});
    ORUDtlNode *a = add_mr_node(doc.get(), "a", ORU_DTL_OP_COLL_GET, "/sys?as", meta.get());
    add_attribute(a, "k", false);
    add_attribute(a, "o", true);
    oru_dtl_tree_set_default_expr(a->first_child, "@(./_uri)-x");
    oru_dtl_tree_set_attr_select(a, "[\"k\",\"o\"]");
    oru_dtl_tree_set_order_param(a, "k desc,o");
    const Value m(oru_do_value_new_string("$m"));
    oru_dtl_tree_add_where_clause(a, "k $m", m.get());
    oru_dtl_tree_set_use_where_clause_once(a, 1);
    ORUDtlNode *b = add_mr_node(a, "b", ORU_DTL_OP_COLL_GET, "$_PARENT_URI_?bs");
    add_attribute(b, "_dtlChildIndex", false);
    oru_dtl_tree_set_max_batches(b, 2);
    ORUDtlNode *x = add_mr_node(a, "x", ORU_DTL_OP_GET, "/xx;k=$m");
    add_attribute(x, "v", false);
    oru_dtl_tree_set_default_expr(x->first_child, "5");
    add_mr_node(a, "y", ORU_DTL_OP_GET_ALL, "$list");
    ORUDtlNode *act = add_mr_node(a, "z", ORU_DTL_OP_ACTION, "/zz");
    const Name reset(oru_do_name_new("reset"));
    oru_dtl_tree_set_act_name(act, reset.get());
    oru_dtl_tree_set_act_in_param(act, reset.get(), m.get());
    return doc;
}

void fill(FakeSystem &system) {
    for (const char *uri : {"/sys?as", "/sys/as?:net/A"})
        system.rows[uri] = {{"/a1", {{"pr", UriText{"/y1"}}}}, {"/a2", {{"k", 1}}}};
    system.rows["/a1?bs"] = {{"/b1"}, {"/b2"}, {"/b3"}};
    system.rows["/sys?cs"] = {{"/c1"}, {"/c2"}, {"/c3"}};
    system.oper["/a1"] = {{"o", 5}};
    system.config["/xx;k=7"] = {{"v", 1}};
    system.config["/y1"] = {{"p", 1}};
    system.answer = {{"done", 1}};
}

// What defaults left on the document is the document's.
void clear_errors(ORUDtlNode *node) {
    oru_dtl_tree_set_error(node, nullptr);
    for (ORUDtlNode *child = node->first_child; child != nullptr; child = child->next)
        clear_errors(child);
}

// The settings of nodes, actions on collections, lists of addresses and operational rows.
Tree make_settings() {
    DocNode a = resource("a", ORU_DTL_OP_COLL_GET, "/sys?as");
    a.batch_size = 1;
    a.flatten = a.continue_on_error = true;
    a.where = {{"k $m", FakeValue("$m")}};
    a.where_once = true;
    a.cfg = {"pr"};
    DocNode peer = resource("pr", ORU_DTL_OP_GET_ALL_CFG, "$_PEER_URI_pr");
    peer.type = ORU_DTL_NODE_PEER_REF;
    a.children.push_back(peer);
    DocNode b = resource("b", ORU_DTL_OP_COLL_GET, "$_PARENT_URI_?bs");
    b.meta = DocNode::Meta::oper;
    b.return_w_child = true;
    b.order_param = "$m";
    b.max_batches_param = "$two";
    ask(b, "o", true, "@(../pr)-x");
    DocNode up = resource("up", ORU_DTL_OP_GET, "$_URI_PARENT_up");
    up.continue_on_error = true;
    b.children.push_back(ask(up, "k", false, "\"x\""));
    a.children.push_back(b);
    DocNode act = resource("act", ORU_DTL_OP_COLL_ACTION, "/sys?as");
    act.act_name = "reset";
    act.act_in = {{"p", "@(../_uri)"}, {"q", 5}};
    DocNode one = resource("one", ORU_DTL_OP_GET, "$lists");
    one.return_mode = ORU_DTL_RETURN_ONE;
    DocNode last = resource("last", ORU_DTL_OP_COLL_GET_ALL, "/sys?cs");
    last.return_mode = ORU_DTL_RETURN_LAST;
    last.cfg = {"k"};
    DocNode bad = container("bad", {});
    bad.error = 102;
    DocNode doc = container(
        "", {container("r", {a, act}), container("q", {one}), container("s", {last}), bad});
    return make_tree(doc);
}

void sweep_walk(int32_t count, Tree (*make)(), const Calls &expected) {
    static Tree doc;
    static Nvlist params;
    static FakeSystem *system;
    doc = make();
    params.reset(oru_do_nvlist_new());
    const Value m = make_value(FakeValue("7"));
    oru_do_nvlist_add(params.get(), "m", m.get());
    const Value list = make_value(std::vector<UriText>{{"/y1"}, {"/y2"}});
    oru_do_nvlist_add(params.get(), "list", list.get());
    const Value lists = make_value(std::vector<UriText>{{"/sys?as"}, {"/sys?cs"}});
    oru_do_nvlist_add(params.get(), "lists", lists.get());
    const Value two = make_value(2);
    oru_do_nvlist_add(params.get(), "two", two.get());
    FakeSystem fake;
    fill(fake);
    system = &fake;
    const auto walk = [count] {
        ORUDtlCtx *ctx = oru_dtl_ctx_new(doc.get(), system->data(), system->coll());
        if (ctx == nullptr) {
            EXPECT_TRUE(oom_hit());
            return;
        }
        int calls = 0;
        int32_t rc = 0;
        while (rc == 0 && ++calls < 50)
            rc = oru_dtl_get_next(system->data(), ctx, params.get(), count);
        EXPECT_LT(calls, 50);
        EXPECT_TRUE(rc == 1 || oom_hit()) << rc;
        oru_dtl_ctx_delete(ctx);
        EXPECT_EQ(system->open_cursors(), 0);
        clear_errors(doc.get());
    };
    // The first walk makes the addresses of document and parameters keep what parsing found.
    walk();
    Calls made = fake.take_calls();
    for (const std::string &call : expected)
        EXPECT_NE(std::find(made.begin(), made.end(), call), made.end()) << call;
    sweep_oom(walk);
    doc.reset();
    params.reset();
}

// What shows that a walk got to each kind of fetch.
const Calls kOfDocument{"oper /a1 [o]",    "open_cfg /a1?bs [_uri,_mr,_dtlChildIndex]",
                        "cfg /xx;k=7 [v]", "cfg_props /y1",
                        "oper_props /y2",  "action /zz reset (reset=7)"};
const Calls kOfSettings{"open_cfg /sys?as [_uri,_mr,pr] where={k 7:7}",
                        "cfg_props /y1",
                        "open_oper /a1?bs [_uri,_mr,o] order=[7]",
                        "cfg // [k]",
                        "action /a2 reset (p=@(../_uri),q=5)",
                        "open_cfg /sys?as [_uri,_mr]",
                        "open_cfg /sys?cs [_uri,_mr]",
                        "open_cfg /sys?cs [_uri,_mr,k]"};

TEST(DtlWalkMemory, WithoutALimit) {
    sweep_walk(0, make_document, kOfDocument);
}

TEST(DtlWalkMemory, WithALimit) {
    sweep_walk(2, make_document, kOfDocument);
}

TEST(DtlWalkMemory, OfEverySettingWithoutALimit) {
    sweep_walk(-1, make_settings, kOfSettings);
}

TEST(DtlWalkMemory, OfEverySettingWithALimit) {
    sweep_walk(1, make_settings, kOfSettings);
}

// Beyond the record of a level only lists can be lacking, and nothing tells of these.
TEST(DtlWalkMemory, AListThatCannotBeHadIsNoFailure) {
    static Tree doc;
    static Nvlist params;
    static FakeSystem *system;
    FakeSystem fake;
    system = &fake;
    doc.reset(oru_dtl_tree_new());
    add_mr_node(doc.get(), "a", ORU_DTL_OP_COLL_GET, "/sys?as");
    params.reset(oru_do_nvlist_new());
    sweep_oom([] {
        ORUDtlCtx *ctx = oru_dtl_ctx_new(doc.get(), system->data(), system->coll());
        if (ctx == nullptr)
            return;
        const int32_t rc = oru_dtl_get_next(system->data(), ctx, params.get(), 0);
        EXPECT_TRUE(rc == 0 || system->take_calls() == Calls{"context"}) << rc;
        oru_dtl_ctx_delete(ctx);
    });
    doc.reset();
    params.reset();
}

}  // namespace
