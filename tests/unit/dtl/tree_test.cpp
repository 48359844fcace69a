#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstddef>

#include "oru/error.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/dtl/tree_support.h"

namespace {

using namespace oru::test;

const char *text_of(ORUDoName *name) {
    return oru_do_name_get_strname(name);
}

TEST(DtlTree, NodesHaveTheirLayout) {
    EXPECT_EQ(offsetof(ORUDtlNode, type), 0u);
    EXPECT_EQ(offsetof(ORUDtlNode, name), 8u);
    EXPECT_EQ(offsetof(ORUDtlNode, op), 16u);
    EXPECT_EQ(offsetof(ORUDtlNode, error), 24u);
    EXPECT_EQ(offsetof(ORUDtlNode, mr_info), 32u);
    EXPECT_EQ(offsetof(ORUDtlNode, batch_size), 40u);
    EXPECT_EQ(offsetof(ORUDtlNode, max_batches), 44u);
    EXPECT_EQ(offsetof(ORUDtlNode, default_expr), 48u);
    EXPECT_EQ(offsetof(ORUDtlNode, prop_name), 56u);
    EXPECT_EQ(offsetof(ORUDtlNode, next), 64u);
    EXPECT_EQ(offsetof(ORUDtlNode, first_child), 72u);

    EXPECT_EQ(offsetof(ORUDtlMrInfo, uri), 0u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, order_by), 80u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, return_default), 88u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, return_w_child), 89u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, use_where_clause_once), 90u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, continue_on_error), 91u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, attr_select), 96u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, return_mode), 104u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, order_param), 112u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, max_batches_param), 128u);
    EXPECT_EQ(offsetof(ORUDtlMrInfo, flatten), 136u);
}

TEST(DtlTree, ContextsHaveTheirLayout) {
    EXPECT_EQ(offsetof(ORUDtlCtx, state), 0u);
    EXPECT_EQ(offsetof(ORUDtlCtx, call_count), 4u);
    EXPECT_EQ(offsetof(ORUDtlCtx, debug), 8u);
    EXPECT_EQ(offsetof(ORUDtlCtx, canceled), 10u);
    EXPECT_EQ(offsetof(ORUDtlCtx, crudx), 16u);
    EXPECT_EQ(offsetof(ORUDtlCtx, coll), 24u);
    EXPECT_EQ(offsetof(ORUDtlCtx, cursor), 32u);
    EXPECT_EQ(offsetof(ORUDtlCtx, batches), 40u);
    EXPECT_EQ(offsetof(ORUDtlCtx, dtl_node), 48u);
    EXPECT_EQ(offsetof(ORUDtlCtx, dtree_node), 56u);
    EXPECT_EQ(offsetof(ORUDtlCtx, where_count), 64u);
    EXPECT_EQ(offsetof(ORUDtlCtx, where_used), 72u);
    EXPECT_EQ(offsetof(ORUDtlCtx, dtl_ch), 80u);
    EXPECT_EQ(offsetof(ORUDtlCtx, dtree_ch), 88u);
    EXPECT_EQ(offsetof(ORUDtlCtx, parent), 96u);
    EXPECT_EQ(offsetof(ORUDtlCtx, child), 104u);
}

TEST(DtlTree, StartsAsADocumentWithTheEmptyName) {
    const Tree doc(oru_dtl_tree_new());
    EXPECT_EQ(doc->type, ORU_DTL_NODE_DOC);
    EXPECT_EQ(doc->op, ORU_DTL_OP_TRAVERSE);
    EXPECT_STREQ(text_of(doc->name), "");
    EXPECT_EQ(doc->prop_name, doc->name);
    EXPECT_EQ(doc->error, nullptr);
    EXPECT_EQ(doc->mr_info, nullptr);
    EXPECT_EQ(doc->batch_size, 0);
    EXPECT_EQ(doc->max_batches, 0);
    EXPECT_EQ(doc->default_expr, nullptr);
    EXPECT_EQ(doc->next, nullptr);
    EXPECT_EQ(doc->first_child, nullptr);
}

TEST(DtlTree, ChildrenKeepTheirOrder) {
    const Tree doc(oru_dtl_tree_new());
    const Name name(oru_do_name_new("a"));
    ORUDtlNode *a = oru_dtl_tree_add_child(doc.get(), name.get(), ORU_DTL_NODE_ATTR);
    ORUDtlNode *b = oru_dtl_tree_add_child_w_strname_type(doc.get(), "b", ORU_DTL_NODE_CONTAINER);
    ORUDtlNode *c = oru_dtl_tree_add_child_w_strname_type(doc.get(), "", 99);
    EXPECT_EQ(doc->first_child, a);
    EXPECT_EQ(a->next, b);
    EXPECT_EQ(b->next, c);
    EXPECT_EQ(c->next, nullptr);
    EXPECT_EQ(a->name, name.get());
    EXPECT_EQ(a->prop_name, name.get());
    EXPECT_EQ(a->type, ORU_DTL_NODE_ATTR);
    EXPECT_EQ(a->op, ORU_DTL_OP_TRAVERSE);
    EXPECT_STREQ(text_of(b->name), "b");
    EXPECT_EQ(b->prop_name, b->name);
    EXPECT_EQ(c->type, 99);
}

TEST(DtlTree, NullIsRefusedByName) {
    const Tree doc(oru_dtl_tree_new());
    const Name name(oru_do_name_new("a"));
    EXPECT_ASSERTION(oru_dtl_tree_add_child(nullptr, name.get(), 1), "parent");
    EXPECT_ASSERTION(oru_dtl_tree_add_child(doc.get(), nullptr, 1), "name");
    EXPECT_ASSERTION(oru_dtl_tree_add_child_w_strname_type(nullptr, "a", 1), "parent");
    EXPECT_ASSERTION(oru_dtl_tree_add_child_w_strname_type(doc.get(), nullptr, 1), "name");
    EXPECT_ASSERTION(oru_dtl_tree_init_mr_info(nullptr, nullptr, nullptr), "dtl_node");
    oru_dtl_tree_delete(nullptr);
}

TEST(DtlTree, AnMrInfoStartsWithItsDefaults) {
    const Tree doc(oru_dtl_tree_new());
    const Uri uri(oru_do_uri_new("/a"));
    const MrMeta meta = make_mr("Port", {{"id", ORU_PROP_KEY}, {"mtu", ORU_PROP_CONFIG}});
    oru_dtl_tree_set_type(doc.get(), 7);
    ORUDtlMrInfo *info = oru_dtl_tree_init_mr_info(doc.get(), uri.get(), meta.get());
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info, doc->mr_info);
    EXPECT_EQ(doc->type, 7);
    EXPECT_EQ(info->uri, uri.get());
    EXPECT_EQ(info->mr_meta, meta.get());
    ASSERT_NE(info->prop_meta_list, nullptr);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(info->prop_meta_list), 2);
    EXPECT_EQ(info->cfg_attr_nlist, nullptr);
    EXPECT_EQ(info->where_clause, nullptr);
    EXPECT_EQ(info->return_default, 1);
    EXPECT_EQ(info->return_w_child, 0);
    EXPECT_EQ(info->use_where_clause_once, 0);
    EXPECT_EQ(info->continue_on_error, 0);
    EXPECT_EQ(info->return_mode, ORU_DTL_RETURN_ALL);
    EXPECT_EQ(info->flatten, 0);
}

TEST(DtlTree, AnMrInfoNeedsNoArguments) {
    const Tree doc(oru_dtl_tree_new());
    ORUDtlMrInfo *info = oru_dtl_tree_init_mr_info(doc.get(), nullptr, nullptr);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->uri, nullptr);
    EXPECT_EQ(info->mr_meta, nullptr);
    EXPECT_EQ(info->prop_meta_list, nullptr);
}

TEST(DtlTree, ASecondMrInfoMayTakeWhatTheFirstHolds) {
    const Tree doc(oru_dtl_tree_new());
    {
        const Uri uri(oru_do_uri_new("/a"));
        const MrMeta meta = make_mr("Port", {});
        oru_dtl_tree_init_mr_info(doc.get(), uri.get(), meta.get());
    }
    const Name name(oru_do_name_new("x"));
    oru_dtl_tree_add_cfg_attr(doc.get(), name.get());
    ORUDtlMrInfo *info =
        oru_dtl_tree_init_mr_info(doc.get(), doc->mr_info->uri, doc->mr_info->mr_meta);
    EXPECT_STREQ(oru_do_uri_get_uri_str(info->uri), "/a");
    EXPECT_EQ(info->cfg_attr_nlist, nullptr);
}

TEST(DtlTree, WithoutMemoryThereIsNoMrInfo) {
    const Tree doc(oru_dtl_tree_new());
    oru_dtl_tree_init_mr_info(doc.get(), nullptr, nullptr);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_dtl_tree_init_mr_info(doc.get(), nullptr, nullptr), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(doc->mr_info, nullptr);
}

TEST(DtlTree, AnMrInfoHasAllPropertiesOrNoListOfThem) {
    static MrMeta meta;
    sweep_oom(
        [] {
            const Tree doc(oru_dtl_tree_new());
            if (!doc)
                return;
            const ORUDtlMrInfo *info = oru_dtl_tree_init_mr_info(doc.get(), nullptr, meta.get());
            if (info == nullptr || info->prop_meta_list == nullptr) {
                EXPECT_TRUE(oom_hit());
            } else {
                EXPECT_EQ(oru_do_prop_meta_list_get_len(info->prop_meta_list), 2);
            }
        },
        {},
        [] {
            meta = make_mr("Port", {{"id", ORU_PROP_KEY}, {"mtu", ORU_PROP_CONFIG}});
        });
}

// Everything a node can hold, so that leaks and double releases show.
void fill(ORUDtlNode *node) {
    const Uri uri(oru_do_uri_new("/a"));
    const MrMeta meta = make_mr("Port", {{"id", ORU_PROP_KEY}});
    oru_dtl_tree_init_mr_info(node, uri.get(), meta.get());
    const Name name(oru_do_name_new("a name that does not fit into the record of a name"));
    const Value value(oru_do_value_new_int(1));
    oru_dtl_tree_add_cfg_attr(node, name.get());
    oru_dtl_tree_add_oper_attr(node, name.get());
    oru_dtl_tree_add_cfg_data(node, name.get());
    oru_dtl_tree_add_oper_data(node, name.get());
    oru_dtl_tree_add_order_by(node, name.get());
    oru_dtl_tree_add_where_clause(node, "w", value.get());
    oru_dtl_tree_set_act_name(node, name.get());
    oru_dtl_tree_set_act_in_param(node, name.get(), value.get());
    oru_dtl_tree_set_attr_select(node, "[]");
    oru_dtl_tree_set_batch_size_param(node, "$b");
    oru_dtl_tree_set_max_batches_param(node, "$m");
    oru_dtl_tree_set_order_param(node, "a,b");
    oru_dtl_tree_set_default_expr(node, "5");
    oru_dtl_tree_set_prop_name(node, "other");
    ORUDoError *error = oru_do_error_new(1, "e");
    oru_dtl_tree_set_error(node, error);
    oru_do_error_deref(error);
}

TEST(DtlTree, ADeletedNodeTakesEverythingAlong) {
    const Tree doc(oru_dtl_tree_new());
    ORUDtlNode *child = oru_dtl_tree_add_child_w_strname_type(doc.get(), "a", 3);
    fill(child);
    fill(oru_dtl_tree_add_child_w_strname_type(child, "b", 3));
    fill(doc.get());
}

TEST(DtlTree, RunningOutOfMemoryLosesNothing) {
    sweep_oom([] {
        const Tree doc(oru_dtl_tree_new());
        if (!doc) {
            EXPECT_TRUE(oom_hit());
            return;
        }
        ORUDtlNode *child = oru_dtl_tree_add_child_w_strname_type(doc.get(), "a", 3);
        if (child == nullptr) {
            EXPECT_TRUE(oom_hit());
            EXPECT_EQ(doc->first_child, nullptr);
            return;
        }
        const Name name(oru_do_name_new("x"));
        const Value value(oru_do_value_new_int(1));
        oru_dtl_tree_init_mr_info(child, nullptr, nullptr);
        if (name && value) {
            oru_dtl_tree_add_cfg_attr(child, name.get());
            oru_dtl_tree_add_where_clause(child, "w", value.get());
            oru_dtl_tree_set_act_name(child, name.get());
            oru_dtl_tree_set_act_in_param(child, name.get(), value.get());
        }
        oru_dtl_tree_set_prop_name(child, "other");
        EXPECT_NE(child->prop_name, nullptr);
        oru_dtl_tree_set_attr_select(child, "[]");
        oru_dtl_tree_set_order_param(child, "a");
        oru_dtl_tree_set_default_expr(child, "5");
        // An action always has its table of parameters.
        if (child->mr_info != nullptr && child->mr_info->act_name != nullptr) {
            EXPECT_NE(child->mr_info->act_in_params, nullptr);
        }
    });
}

}  // namespace
