// References, templates of addresses, and the where clause of a cursor, seen through what is asked
// of the back end.
#include "oru/properties.h"
#include "oru/uri_derive.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

class DtlVariables : public DtlWalk {
  protected:
    // The address at which a template below one row is read; none when it is not read.
    std::string address_of(const char *text, const FakeRow &above = {"/sys/a;id=1"}) {
        ask_below_row(above);
        return read_at(add_mr_node(doc->first_child, "x", ORU_DTL_OP_GET_ALL_CFG, text));
    }
    std::string address_of(ORUDoUri *uri) {
        ask_below_row({"/sys/a;id=1"});
        ORUDtlNode *x = add_node(doc->first_child, "x", ORU_DTL_NODE_MR_OP, ORU_DTL_OP_GET_ALL_CFG);
        oru_dtl_tree_init_mr_info(x, uri, nullptr);
        return read_at(x);
    }

    void ask_below_row(const FakeRow &above) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        ORUDtlNode *a = add_mr_node(doc.get(), "a", ORU_DTL_OP_COLL_GET_ALL, "/sys?as");
        for (const auto &[name, value] : above.attributes) {
            const Name attribute(oru_do_name_new(name.c_str()));
            oru_dtl_tree_add_cfg_attr(a, attribute.get());
        }
        system.rows["/sys?as"] = {above};
    }
    std::string read_at(const ORUDtlNode *node) {
        EXPECT_NE(node, nullptr);
        rc = next(0);
        std::string read;
        for (const std::string &call : calls()) {
            if (call.rfind("cfg_props ", 0) == 0)
                read += (read.empty() ? "" : " ") + call.substr(10);
        }
        return read;
    }

    // The where clause that a cursor gets for one item.
    std::string where_of(const char *name, const FakeValue &value) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
        const Value object = make_value(value);
        oru_dtl_tree_add_where_clause(p, name, object.get());
        EXPECT_EQ(next(1), ORU_OK);
        const std::string open = calls()[1];
        const size_t at = open.find("where=");
        return at == std::string::npos ? "" : open.substr(at + 6);
    }

    int32_t rc = 0;
};

// ---- Templates ----

TEST_F(DtlVariables, LiteralAddressesStayAsTheyAre) {
    for (const char *text : {"/b/c", "/b;k=1", "/b;k=1;l=2/c", "b/c", "//locations;locationId=x/b",
                             "/b;k=", "/b?cs", "/b;k=$$x", "/b;k=@@x", "/b;k=a%20b"}) {
        const std::string read = address_of(text);
        const bool is_collection = std::string(text).find('?') != std::string::npos;
        EXPECT_EQ(read, is_collection ? "" : text);
        EXPECT_EQ(rc, ORU_OK);
    }
}

TEST_F(DtlVariables, KeyValuesMayBeVariables) {
    param("n", 5);
    param("s", "a b");
    EXPECT_EQ(address_of("/b;k=$n"), "/b;k=5");
    EXPECT_EQ(address_of("/b;k=$s/c;l=$n"), "/b;k=a%20b/c;l=5");
    EXPECT_EQ(address_of("/b;k=$none"), "/b;k=$none");
    EXPECT_EQ(address_of("/b;k=@m", {"/a1", {{"m", "q"}}}), "/b;k=q");
    // A path has characters that an address writes as escapes.
    EXPECT_EQ(address_of("/b;k=@%28..%2Fm%29", {"/a1", {{"m", "q"}}}), "/b;k=q");
    EXPECT_EQ(address_of("/b;k=@%28..%2Fnone%29", {"/a1"}), "/b;k=@%28..%2Fnone%29");
}

TEST_F(DtlVariables, ABaseGoesInFrontOfRelativeAddresses) {
    system.context_uri = "//locations;locationId=x";
    system.rows["//locations;locationId=x/sys?as"] = {{"/a1"}};
    EXPECT_EQ(address_of("/b/c"), "//locations;locationId=x/b/c");
    EXPECT_EQ(address_of("//locations;locationId=y/b"), "//locations;locationId=y/b");
    EXPECT_EQ(address_of("b/c"), "b/c");
}

TEST_F(DtlVariables, AnEmptyBaseAddsNothing) {
    static Uri empty;
    empty.reset(oru_do_uri_new(""));
    system.data()->get_context_uri = [](ORUDataIfc *) { return empty.get(); };
    EXPECT_EQ(address_of("/b/c"), "/b/c");
    EXPECT_EQ(address_of("b/c"), "b/c");
    param("text", "/p1");
    EXPECT_EQ(address_of("$text"), "/p1");
    empty.reset();
}

TEST_F(DtlVariables, TheAddressAboveIsContinued) {
    EXPECT_EQ(address_of("$_PARENT_URI_/b"), "/sys/a;id=1/b");
    EXPECT_EQ(address_of("$_PARENT_URI_"), "/sys/a;id=1");
    EXPECT_EQ(address_of("$_URI_PARENT_anything"), "/sys");
}

TEST_F(DtlVariables, WithoutAnAddressAboveThereIsNone) {
    for (const char *text : {"$_PARENT_URI_?bs", "$_URI_PARENT_x"}) {
        doc.reset(oru_dtl_tree_new());
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        add_mr_node(doc.get(), "x", ORU_DTL_OP_GET, text);
        TraceCapture traces;
        EXPECT_EQ(next(0), ORU_RC_INVALID_URI);
        EXPECT_EQ(traces.at(3), (std::vector<std::string>{"Failed to resolve uri"}));
    }
}

TEST_F(DtlVariables, PeersComeFromTheRowAbove) {
    const char *peer = "$_PEER_URI_x";
    const std::string name = "_PEER_URI_x";
    EXPECT_EQ(address_of(peer), "");
    EXPECT_EQ(rc, ORU_OK);
    EXPECT_EQ(address_of(peer, {"/a1", {{name, FakeValue()}}}), "");
    EXPECT_EQ(rc, ORU_OK);
    EXPECT_EQ(address_of(peer, {"/a1", {{name, UriText{"/p1"}}}}), "/p1");
    EXPECT_EQ(address_of(peer, {"/a1", {{name, "/p2"}}}), "/p2");
    EXPECT_EQ(address_of(peer, {"/a1", {{name, std::vector<UriText>{{"/p1"}, {"/p2"}, {"/p3"}}}}}),
              "/p1 /p2 /p3");
    EXPECT_EQ(tree(), "a(/a1)[_PEER_URI_x=" + tree().substr(19, tree().find("]{") - 19) +
                          "]{x(/p1) x(/p2) x(/p3)}");
    TraceCapture traces;
    EXPECT_EQ(address_of(peer, {"/a1", {{name, 5}}}), "");
    EXPECT_EQ(rc, ORU_RC_INVALID_URI);
    EXPECT_TRUE(traces.has(3, "Failed to resolve uri"));
}

TEST_F(DtlVariables, TheFirstFailureEndsAList) {
    system.failures["cfg_props /p2"] = 105;
    EXPECT_EQ(
        address_of("$_PEER_URI_x",
                   {"/a1", {{"_PEER_URI_x", std::vector<UriText>{{"/p1"}, {"/p2"}, {"/p3"}}}}}),
        "/p1 /p2");
    EXPECT_EQ(rc, 105);
}

TEST_F(DtlVariables, AWholeTemplateMayBeAVariable) {
    param("text", "/p1");
    param("uri", UriText{"/p2"});
    param("list", std::vector<UriText>{{"/p3"}, {"/p4"}});
    param("number", 5);
    EXPECT_EQ(address_of("$text"), "/p1");
    EXPECT_EQ(address_of("$uri"), "/p2");
    EXPECT_EQ(address_of("$list"), "/p3 /p4");
    EXPECT_EQ(address_of("$number"), "");
    EXPECT_EQ(rc, ORU_OK);
    EXPECT_EQ(address_of("$none"), "");
    EXPECT_EQ(address_of("@_uri"), "/sys/a;id=1");
    EXPECT_EQ(address_of("@(../_uri)"), "/sys/a;id=1");
    EXPECT_EQ(address_of("@(../_uri)/b"), "/sys/a;id=1/b");
    EXPECT_EQ(address_of("@(../../_uri)"), "");
    EXPECT_EQ(address_of("@(../../../_uri)"), "");
    EXPECT_EQ(address_of("@(/a/_uri)"), "/sys/a;id=1");
    EXPECT_EQ(address_of("@(/a/_uri"), "/sys/a;id=1");
    EXPECT_EQ(address_of("@(a/_uri)"), "");
    EXPECT_EQ(address_of("@("), "");
    EXPECT_EQ(address_of("@()"), "");
}

TEST_F(DtlVariables, AVariableAddressIsMadeAbsolute) {
    system.context_uri = "//locations;locationId=x";
    system.rows["//locations;locationId=x/sys?as"] = {{"/a1"}};
    param("text", "/p1");
    param("absolute", "//locations;locationId=y/p1");
    param("list", std::vector<UriText>{{"/p3"}});
    EXPECT_EQ(address_of("$text"), "//locations;locationId=x/p1");
    EXPECT_EQ(address_of("$absolute"), "//locations;locationId=y/p1");
    EXPECT_EQ(address_of("$list"), "//locations;locationId=x/p3");
}

TEST_F(DtlVariables, ElementsOfAListThatAreNoAddressArePassedOver) {
    ORUDtlNode *x = add_mr_node(doc.get(), "x", ORU_DTL_OP_GET_ALL_CFG, "$list");
    EXPECT_NE(x, nullptr);
    const Value number(oru_do_value_new_long(5));
    const Value text(oru_do_value_new_string("/p1"));
    const Vlist list(oru_do_vlist_new());
    oru_do_vlist_add(list.get(), number.get());
    oru_do_vlist_add(list.get(), text.get());
    const Value array(oru_do_value_new_array(list.get()));
    oru_do_nvlist_add(params.get(), "list", array.get());
    EXPECT_EQ(next(0), ORU_OK);
    EXPECT_EQ(calls(), (Calls{"context", "cfg_props /p1"}));
}

// An address that was built on one that was read has the segments that it was built of.
TEST_F(DtlVariables, ASegmentThatNamesTheRootWritesNoName) {
    const Uri above(oru_do_uri_validate_new("/a"));
    const Nvlist none(oru_do_nvlist_new());
    for (const char *root : {"/", "//"}) {
        const Name name(oru_do_name_new(root));
        const Uri built(oru_do_uri_new_from_parent_uri(above.get(), name.get(), none.get()));
        TraceCapture traces(7);
        EXPECT_EQ(address_of(built.get()), "/a/");
        EXPECT_TRUE(traces.has(7, "Ref name is orucore system root"));
    }
}

// The root of the resources has no segments: only a base makes it an address.
TEST_F(DtlVariables, TheRootIsTheBase) {
    EXPECT_EQ(address_of("/"), "");
    system.context_uri = "//locations;locationId=x";
    system.rows["//locations;locationId=x/sys?as"] = {{"/a1"}};
    EXPECT_EQ(address_of("/"), "//locations;locationId=x");
}

// ---- Where clauses ----

TEST_F(DtlVariables, ValuesOfConditionsAreResolved) {
    param("m", 1500);
    EXPECT_EQ(where_of("mtu >=", "$m"), "{mtu >=:1500}");
    EXPECT_EQ(where_of("mtu >=", "$none"), "{mtu >=:$none}");
    EXPECT_EQ(where_of("mtu >=", "$$m"), "{mtu >=:$$m}");
    EXPECT_EQ(where_of("mtu >=", 5), "{mtu >=:5}");
    EXPECT_EQ(where_of("mtu", "text"), "{mtu:text}");
}

TEST_F(DtlVariables, AnOrderAgainstNothingIsDropped) {
    param("nothing", FakeValue());
    for (const char *name : {"mtu >=", "mtu <", "mtu <>", "mtu >"})
        EXPECT_EQ(where_of(name, "$nothing"), "{}") << name;
    EXPECT_EQ(where_of("mtu =", "$nothing"), "{mtu =:null}");
    EXPECT_EQ(where_of("mtu", FakeValue()), "{mtu:null}");
    EXPECT_EQ(where_of("mtu >", FakeValue()), "{}");
}

TEST_F(DtlVariables, NamesOfConditionsMayEndInAVariable) {
    param("v", "red");
    param("empty", "");
    param("number", 5);
    EXPECT_EQ(where_of("vrf $v", 1), "{vrf red:1}");
    EXPECT_EQ(where_of("$v", 1), "{red:1}");
    EXPECT_EQ(where_of("vrf $empty", 1), "{}");
    EXPECT_EQ(where_of("vrf $number", 1), "{}");
    EXPECT_EQ(where_of("vrf $none", 1), "{}");
    EXPECT_EQ(where_of("vrf $$v", 1), "{}");
}

TEST_F(DtlVariables, GroupsOfConditionsAreResolvedInside) {
    param("m", 5);
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    const Nvlist inner(oru_do_nvlist_new());
    const Value m(oru_do_value_new_string("$m"));
    const Value nothing(oru_do_value_new_null());
    oru_do_nvlist_add(inner.get(), "a", m.get());
    oru_do_nvlist_add(inner.get(), "b >", nothing.get());
    const Value group(oru_do_value_new_sequence(inner.get()));
    oru_dtl_tree_add_where_clause(p, " OR ", group.get());
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(calls()[1], "open_cfg /sys?ps [_uri,_mr] where={ OR :{a:5}}");
    // The document stays as it was.
    EXPECT_EQ(oru_do_nvlist_get_len(inner.get()), 2);
}

TEST_F(DtlVariables, AnEmptyClauseIsHandedOn) {
    ORUDtlNode *p = collection(doc.get(), "p", "/sys?ps");
    const Nvlist where(oru_do_nvlist_new());
    oru_dtl_tree_set_where_clause(p, where.get());
    EXPECT_EQ(next(1), ORU_OK);
    EXPECT_EQ(calls()[1], "open_cfg /sys?ps [_uri,_mr] where={}");
}

// ---- References in rows ----

class DtlReferences : public DtlWalk {
  protected:
    std::string default_below(const char *expression) {
        oru_dtl_ctx_delete(std::exchange(ctx, nullptr));
        doc.reset(oru_dtl_tree_new());
        ORUDtlNode *a = collection(doc.get(), "a", "/sys?as", {"k"});
        ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
        oru_dtl_tree_set_default_expr(attr(b, "v"), expression);
        system.rows["/sys?as"] = {{"/a1", {{"k", "top"}}}};
        system.rows["/a1?bs"] = {{"/b1"}};
        EXPECT_EQ(next(0), ORU_OK);
        ORUDoDtree *row = oru_do_dtree_get_child(oru_do_dtree_get_child(ctx->dtree_node, 0), 0);
        return show(row);
    }
};

TEST_F(DtlReferences, ReachTheNodeAboveTheRowAndFurther) {
    EXPECT_EQ(default_below("@k"), "b(/b1)[v=top]");
    EXPECT_EQ(default_below("@(../k)"), "b(/b1)[v=top]");
    EXPECT_EQ(default_below("@(../k)-x"), "b(/b1)[v=top-x]");
    EXPECT_EQ(default_below("@(/a/k)"), "b(/b1)[v=top]");
    EXPECT_EQ(default_below("@(../../k)"), "b(/b1)[v=null]");
    EXPECT_EQ(default_below("@(./_uri)"), "b(/b1)[v=/b1]");
    EXPECT_EQ(default_below("@_uri"), "b(/b1)[v=/a1]");
    EXPECT_EQ(default_below("@none"), "b(/b1)[v=null]");
}

// What an expression writes is found by what comes behind it, and by the caller first of all.
TEST_F(DtlReferences, ExpressionsWriteParameters) {
    param("m", 1);
    param("n", 4);
    EXPECT_EQ(default_below("{\"_incr()\":[\"$n\"]}"), "b(/b1)[v=4]");
    EXPECT_EQ(default_below("$n"), "b(/b1)[v=5]");
    ASSERT_EQ(oru_do_nvlist_get_len(params.get()), 2);
    EXPECT_STREQ(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(params.get(), 0)), "n");
    EXPECT_EQ(default_below("{\"_max()\":[\"$new\",7]}"), "b(/b1)[v=7]");
    EXPECT_EQ(default_below("$new"), "b(/b1)[v=7]");
    EXPECT_EQ(oru_do_nvlist_get_len(params.get()), 3);
}

// Only parameters are written.
TEST_F(DtlReferences, ExpressionsLeaveTheRest) {
    for (const char *name : {"@k", "plain", "$$n", "@(../k)"}) {
        const std::string text = std::string("{\"_max()\":[\"") + name + "\",7]}";
        default_below(text.c_str());
        EXPECT_EQ(oru_do_nvlist_get_len(params.get()), 0) << name;
    }
}

}  // namespace
