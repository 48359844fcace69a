// What the nodes of a tree answer.
#include <iterator>

#include "frame/require.h"
#include "oru/dtl.h"
#include "oru/mr_meta.h"

namespace {

constexpr const char *kOpTexts[] = {"noop",
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

constexpr const char *kTypeTexts[] = {
    "unknown",  "doc",        "root",     "mr-op",     "attr",   "oper-attr",    "child-ref",
    "peer-ref", "parent-ref", "cfg-data", "oper-data", "action", "action-param", "container"};

template <size_t N>
const char *text_of(const char *const (&texts)[N], int32_t index) {
    return index >= 0 && static_cast<size_t>(index) < N ? texts[index] : "(unknown)";
}

bool op_within(const ORUDtlNode *node, int32_t low, int32_t high) {
    return node != nullptr && node->op >= low && node->op <= high;
}

bool reads_an_mr(int32_t op) {
    return op != ORU_DTL_OP_NOOP && op != ORU_DTL_OP_TRAVERSE && op != ORU_DTL_OP_ACTION &&
           op != ORU_DTL_OP_COLL_ACTION;
}

// The field of `mr_info`, or zero without one.
template <class Field>
Field mr_field(const ORUDtlNode *dtl_node, Field ORUDtlMrInfo::*field) {
    ORU_REQUIRE(dtl_node);
    return dtl_node->mr_info != nullptr ? dtl_node->mr_info->*field : Field{};
}

}  // namespace

int32_t oru_dtl_tree_is_recursive_op(ORUDtlNode *dtl_node) {
    return op_within(dtl_node, ORU_DTL_OP_GET_ALL_R, ORU_DTL_OP_GET_ALL_OPER_R) ||
           op_within(dtl_node, ORU_DTL_OP_COLL_GET_ALL_R, ORU_DTL_OP_COLL_GET_ALL_OPER_R);
}

int32_t oru_dtl_tree_is_get_specific_attr_op(ORUDtlNode *dtl_node) {
    return op_within(dtl_node, ORU_DTL_OP_GET, ORU_DTL_OP_GET) ||
           op_within(dtl_node, ORU_DTL_OP_COLL_GET, ORU_DTL_OP_COLL_GET);
}

int32_t oru_dtl_tree_is_collection_op(ORUDtlNode *dtl_node) {
    return op_within(dtl_node, ORU_DTL_OP_COLL_GET, ORU_DTL_OP_COLL_ACTION);
}

int32_t oru_dtl_tree_has_inner_mr_get(ORUDtlNode *dtl_node) {
    if (dtl_node == nullptr)
        return 0;
    for (ORUDtlNode *child = dtl_node->first_child; child != nullptr; child = child->next) {
        if (reads_an_mr(child->op) || oru_dtl_tree_has_inner_mr_get(child) != 0)
            return 1;
    }
    return 0;
}

int32_t oru_dtl_tree_mr_is_oper(ORUDtlNode *dtl_node) {
    ORUDoMrMeta *meta = mr_field(dtl_node, &ORUDtlMrInfo::mr_meta);
    return meta != nullptr && oru_do_mr_meta_is_oper_data(meta) != 0;
}

int32_t oru_dtl_tree_flatten(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::flatten) != 0;
}

int32_t oru_dtl_tree_return_w_child(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::return_w_child) != 0;
}

int32_t oru_dtl_tree_return_one(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::return_mode) == ORU_DTL_RETURN_ONE;
}

int32_t oru_dtl_tree_return_last(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::return_mode) == ORU_DTL_RETURN_LAST;
}

int32_t oru_dtl_tree_continue_on_error(ORUDtlNode *dtl_node) {
    return dtl_node != nullptr && mr_field(dtl_node, &ORUDtlMrInfo::continue_on_error) != 0;
}

int32_t oru_dtl_tree_count_where_clause(ORUDtlNode *dtl_node) {
    if (dtl_node == nullptr)
        return 0;
    int32_t count = 0;
    for (ORUDtlNode *child = dtl_node->first_child; child != nullptr; child = child->next)
        count += oru_dtl_tree_count_where_clause(child);
    return count + (mr_field(dtl_node, &ORUDtlMrInfo::where_clause) != nullptr);
}

const char *oru_dtl_tree_get_op_str(int32_t op) {
    return text_of(kOpTexts, op);
}

const char *oru_dtl_tree_get_node_type_str(int32_t type) {
    return text_of(kTypeTexts, type);
}

int32_t oru_dtl_tree_get_batch_size(ORUDtlNode *dtl_node) {
    ORU_REQUIRE(dtl_node);
    return dtl_node->batch_size;
}

int32_t oru_dtl_tree_get_max_batches(ORUDtlNode *dtl_node) {
    ORU_REQUIRE(dtl_node);
    return dtl_node->max_batches;
}

const char *oru_dtl_tree_get_batch_size_param(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::batch_size_param);
}

const char *oru_dtl_tree_get_max_batches_param(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::max_batches_param);
}

const char *oru_dtl_tree_get_order_param(ORUDtlNode *dtl_node) {
    return mr_field(dtl_node, &ORUDtlMrInfo::order_param);
}
