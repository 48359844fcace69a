// The lists of what a node reads, and its action.
#include "do/name.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/properties.h"
#include "do/value.h"
#include "oru/dtl.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"

namespace {

void add_name(ORUDtlNode &node, ORUDoNlist *ORUDtlMrInfo::*list, ORUDoName *name) {
    if (node.mr_info == nullptr)
        return;
    ORUDoNlist *&held = node.mr_info->*list;
    if (held == nullptr)
        held = oru_do_nlist_new();
    if (held != nullptr)
        oru_do_nlist_add(held, name);
}

}  // namespace

void oru_dtl_tree_add_cfg_attr(ORUDtlNode *dtl_node, ORUDoName *attr_name) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(attr_name);
    add_name(*dtl_node, &ORUDtlMrInfo::cfg_attr_nlist, attr_name);
}

void oru_dtl_tree_add_oper_attr(ORUDtlNode *dtl_node, ORUDoName *attr_name) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(attr_name);
    add_name(*dtl_node, &ORUDtlMrInfo::oper_attr_nlist, attr_name);
}

void oru_dtl_tree_add_cfg_data(ORUDtlNode *dtl_node, ORUDoName *cfg_data) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(cfg_data);
    add_name(*dtl_node, &ORUDtlMrInfo::cfg_data_nlist, cfg_data);
}

void oru_dtl_tree_add_oper_data(ORUDtlNode *dtl_node, ORUDoName *oper_data) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(oper_data);
    add_name(*dtl_node, &ORUDtlMrInfo::oper_data_nlist, oper_data);
}

void oru_dtl_tree_add_order_by(ORUDtlNode *dtl_node, ORUDoName *name) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(name);
    add_name(*dtl_node, &ORUDtlMrInfo::order_by, name);
}

void oru_dtl_tree_add_where_clause(ORUDtlNode *dtl_node, const char *name, ORUDoValue *value) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(name);
    ORU_REQUIRE(value);
    if (dtl_node->mr_info == nullptr)
        return;
    ORUDoNvlist *&held = dtl_node->mr_info->where_clause;
    if (held == nullptr)
        held = oru_do_nvlist_new();
    if (held != nullptr)
        oru_do_nvlist_add(held, name, value);
}

void oru_dtl_tree_set_where_clause(ORUDtlNode *dtl_node, ORUDoNvlist *where_nvlist) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(where_nvlist);
    if (dtl_node->mr_info != nullptr)
        oru::replace(dtl_node->mr_info->where_clause, where_nvlist);
}

void oru_dtl_tree_set_act_name(ORUDtlNode *dtl_node, ORUDoName *act_name) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(act_name);
    ORUDtlMrInfo *info = dtl_node->mr_info;
    if (info == nullptr)
        return;
    // An action always has its table: without memory for it there is no action.
    ORUDoProperties *params = oru_do_properties_new();
    oru::replace(info->act_name, params != nullptr ? act_name : nullptr);
    oru::deref(std::exchange(info->act_in_params, params));
}

void oru_dtl_tree_set_act_in_param(ORUDtlNode *dtl_node, ORUDoName *param_name,
                                   ORUDoValue *param_value) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(param_name);
    ORU_REQUIRE(param_value);
    ORUDtlMrInfo *info = dtl_node->mr_info;
    if (info == nullptr)
        return;
    if (info->act_in_params == nullptr)
        info->act_in_params = oru_do_properties_new();
    if (info->act_in_params != nullptr)
        oru_do_properties_set_value_n(info->act_in_params, param_name, param_value);
}
