#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oru/nvlist.h"
#include "tests/support/death.h"
#include "tests/unit/dtl/tree_support.h"

namespace {

using namespace oru::test;

class DtlTreeAsk : public testing::Test {
  protected:
    Tree doc{oru_dtl_tree_new()};
    ORUDtlNode *node = add_node(doc.get(), "a", ORU_DTL_NODE_MR_OP, ORU_DTL_OP_GET);
};

TEST(DtlTreeText, OperationsHaveTheirWords) {
    const std::vector<std::string> words = {"noop",
                                            "traverse",
                                            "get",
                                            "get-all",
                                            "get-all-cfg",
                                            "get-all-oper",
                                            "get-all-r",
                                            "get-all-cfg-r",
                                            "get-all-oper-r",
                                            "action",
                                            "coll:get",
                                            "coll:get-all",
                                            "coll:get-all-cfg",
                                            "coll:get-all-oper",
                                            "coll:get-all-r",
                                            "coll:get-all-cfg-r",
                                            "coll:get-all-oper-r",
                                            "coll:action"};
    for (int32_t op = 0; op < 18; ++op)
        EXPECT_EQ(oru_dtl_tree_get_op_str(op), words[static_cast<size_t>(op)]) << op;
    for (int32_t op : {18, 1000, -1, INT32_MIN})
        EXPECT_STREQ(oru_dtl_tree_get_op_str(op), "(unknown)");
}

TEST(DtlTreeText, NodeTypesHaveTheirWords) {
    const std::vector<std::string> words = {
        "unknown",  "doc",        "root",     "mr-op",     "attr",   "oper-attr",    "child-ref",
        "peer-ref", "parent-ref", "cfg-data", "oper-data", "action", "action-param", "container"};
    for (int32_t type = 0; type < 14; ++type)
        EXPECT_EQ(oru_dtl_tree_get_node_type_str(type), words[static_cast<size_t>(type)]) << type;
    for (int32_t type : {14, -1})
        EXPECT_STREQ(oru_dtl_tree_get_node_type_str(type), "(unknown)");
}

TEST_F(DtlTreeAsk, OperationsFallIntoKinds) {
    for (int32_t op = -1; op < 20; ++op) {
        oru_dtl_tree_set_op(node, op);
        const bool recursive = (op >= 6 && op <= 8) || (op >= 14 && op <= 16);
        EXPECT_EQ(oru_dtl_tree_is_recursive_op(node) != 0, recursive) << op;
        EXPECT_EQ(oru_dtl_tree_is_get_specific_attr_op(node) != 0, op == 2 || op == 10) << op;
        EXPECT_EQ(oru_dtl_tree_is_collection_op(node) != 0, op >= 10 && op <= 17) << op;
    }
    EXPECT_EQ(oru_dtl_tree_is_recursive_op(nullptr), 0);
    EXPECT_EQ(oru_dtl_tree_is_get_specific_attr_op(nullptr), 0);
    EXPECT_EQ(oru_dtl_tree_is_collection_op(nullptr), 0);
}

TEST_F(DtlTreeAsk, InnerReadsAreFoundAtAnyDepth) {
    EXPECT_EQ(oru_dtl_tree_has_inner_mr_get(nullptr), 0);
    EXPECT_EQ(oru_dtl_tree_has_inner_mr_get(node), 0);
    for (int32_t op : {0, 1, 9, 17})
        add_node(node, "x", ORU_DTL_NODE_ATTR, op);
    EXPECT_EQ(oru_dtl_tree_has_inner_mr_get(node), 0);
    ORUDtlNode *grandchild = add_node(node->first_child, "y", ORU_DTL_NODE_MR_OP, 3);
    EXPECT_EQ(oru_dtl_tree_has_inner_mr_get(node), 1);
    for (int32_t op = -1; op < 20; ++op) {
        oru_dtl_tree_set_op(grandchild, op);
        const bool reads = op != 0 && op != 1 && op != 9 && op != 17;
        EXPECT_EQ(oru_dtl_tree_has_inner_mr_get(node) != 0, reads) << op;
    }
}

TEST_F(DtlTreeAsk, OperationalResourcesAreKnownByTheirDescription) {
    EXPECT_EQ(oru_dtl_tree_mr_is_oper(node), 0);
    oru_dtl_tree_init_mr_info(node, nullptr, nullptr);
    EXPECT_EQ(oru_dtl_tree_mr_is_oper(node), 0);
    const MrMeta config = make_mr("Port", {}, 4);
    oru_dtl_tree_init_mr_info(node, nullptr, config.get());
    EXPECT_EQ(oru_dtl_tree_mr_is_oper(node), 0);
    const MrMeta oper = make_mr("Stats", {}, 0);
    oru_dtl_tree_init_mr_info(node, nullptr, oper.get());
    EXPECT_EQ(oru_dtl_tree_mr_is_oper(node), 1);
}

TEST_F(DtlTreeAsk, SettingsAreUnsetWithoutAnMrInfo) {
    EXPECT_EQ(oru_dtl_tree_flatten(node), 0);
    EXPECT_EQ(oru_dtl_tree_return_w_child(node), 0);
    EXPECT_EQ(oru_dtl_tree_return_one(node), 0);
    EXPECT_EQ(oru_dtl_tree_return_last(node), 0);
    EXPECT_EQ(oru_dtl_tree_continue_on_error(node), 0);
    EXPECT_EQ(oru_dtl_tree_continue_on_error(nullptr), 0);
    EXPECT_EQ(oru_dtl_tree_get_batch_size_param(node), nullptr);
    EXPECT_EQ(oru_dtl_tree_get_max_batches_param(node), nullptr);
    EXPECT_EQ(oru_dtl_tree_get_order_param(node), nullptr);
}

TEST_F(DtlTreeAsk, NullIsRefused) {
    EXPECT_ASSERTION(oru_dtl_tree_mr_is_oper(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_flatten(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_return_w_child(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_return_one(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_return_last(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_get_batch_size(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_get_max_batches(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_get_batch_size_param(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_get_max_batches_param(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_get_order_param(nullptr), "dtl_node");
}

TEST_F(DtlTreeAsk, WhereClausesAreCountedThroughTheTree) {
    EXPECT_EQ(oru_dtl_tree_count_where_clause(nullptr), 0);
    EXPECT_EQ(oru_dtl_tree_count_where_clause(doc.get()), 0);
    const Value value(oru_do_value_new_int(1));
    oru_dtl_tree_init_mr_info(node, nullptr, nullptr);
    EXPECT_EQ(oru_dtl_tree_count_where_clause(node), 0);
    oru_dtl_tree_add_where_clause(node, "a", value.get());
    oru_dtl_tree_add_where_clause(node, "b", value.get());
    EXPECT_EQ(oru_dtl_tree_count_where_clause(node), 1);
    ORUDtlNode *child = add_node(node, "c", ORU_DTL_NODE_MR_OP, 2);
    oru_dtl_tree_init_mr_info(child, nullptr, nullptr);
    const Nvlist empty(oru_do_nvlist_new());
    oru_dtl_tree_set_where_clause(child, empty.get());
    EXPECT_EQ(oru_dtl_tree_count_where_clause(node), 2);
    EXPECT_EQ(oru_dtl_tree_count_where_clause(doc.get()), 2);
    EXPECT_EQ(oru_dtl_tree_count_where_clause(child), 1);
}

}  // namespace
