#include "dtl/tree.h"

#include "do/error.h"
#include "do/name.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/properties.h"
#include "do/uri.h"
#include "md/mr_meta.h"
#include "md/prop_meta.h"
#include "oru/nlist.h"

namespace {

constexpr uint32_t kTag = oru::tag_word(oru::Tag::base);

ORUDtlNode *make_node(ORUDoName *name, int32_t type) {
    auto *node = static_cast<ORUDtlNode *>(ph_calloc_named(kTag, 1, sizeof(ORUDtlNode)));
    if (node == nullptr)
        return nullptr;
    node->type = type;
    node->name = oru::ref(name);
    node->op = ORU_DTL_OP_TRAVERSE;
    node->prop_name = oru::ref(name);
    return node;
}

void free_text(char *text) {
    if (text != nullptr)
        ph_free_named(text);
}

// All of them or no list: what is missing from a part would pass for no property.
ORUDoPropMetaList *all_properties(ORUDoMrMeta *mr_meta) {
    auto list = oru::Ref<ORUDoPropMetaList>::adopt(oru_do_prop_meta_list_new());
    return list && oru_do_mr_meta_get_all_prop_meta(mr_meta, list.get()) >= 0 ? list.release()
                                                                              : nullptr;
}

void delete_mr_info(ORUDtlMrInfo *info) {
    if (info == nullptr)
        return;
    oru::deref(info->uri);
    oru::deref(info->mr_meta);
    oru::deref(info->prop_meta_list);
    oru::deref(info->cfg_attr_nlist);
    oru::deref(info->oper_attr_nlist);
    oru::deref(info->cfg_data_nlist);
    oru::deref(info->oper_data_nlist);
    oru::deref(info->act_name);
    oru::deref(info->act_in_params);
    oru::deref(info->where_clause);
    oru::deref(info->order_by);
    oru::deref(info->attr_select);
    free_text(info->order_param);
    free_text(info->batch_size_param);
    free_text(info->max_batches_param);
    ph_free_named(info);
}

}  // namespace

ORUDtlNode *oru::dtl::add_node(ORUDtlNode **end, ORUDoName *name, int32_t type) {
    return *end = make_node(name, type);
}

ORUDtlNode *oru_dtl_tree_new() {
    const auto name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(""));
    return name ? make_node(name.get(), ORU_DTL_NODE_DOC) : nullptr;
}

ORUDtlNode *oru_dtl_tree_add_child(ORUDtlNode *parent, ORUDoName *name, int32_t type) {
    ORU_REQUIRE(parent);
    ORU_REQUIRE(name);
    ORUDtlNode **end = &parent->first_child;
    while (*end != nullptr)
        end = &(*end)->next;
    return oru::dtl::add_node(end, name, type);
}

ORUDtlNode *oru_dtl_tree_add_child_w_strname_type(ORUDtlNode *parent, const char *name,
                                                  int32_t type) {
    ORU_REQUIRE(parent);
    ORU_REQUIRE(name);
    const auto held = oru::Ref<ORUDoName>::adopt(oru_do_name_new(name));
    return held ? oru_dtl_tree_add_child(parent, held.get(), type) : nullptr;
}

ORUDtlMrInfo *oru_dtl_tree_init_mr_info(ORUDtlNode *dtl_node, ORUDoUri *uri, ORUDoMrMeta *mr_meta) {
    ORU_REQUIRE(dtl_node);
    auto *info = static_cast<ORUDtlMrInfo *>(ph_calloc_named(kTag, 1, sizeof(ORUDtlMrInfo)));
    if (info != nullptr) {
        info->uri = oru::ref(uri);
        info->mr_meta = oru::ref(mr_meta);
        info->return_default = 1;
        if (mr_meta != nullptr)
            info->prop_meta_list = all_properties(mr_meta);
    }
    // Only now: the arguments may be those that the earlier record holds.
    delete_mr_info(std::exchange(dtl_node->mr_info, info));
    return info;
}

void oru_dtl_tree_delete(ORUDtlNode *dtl_node) {
    if (dtl_node == nullptr)
        return;
    oru::deref(dtl_node->name);
    oru::deref(dtl_node->prop_name);
    free_text(dtl_node->default_expr);
    delete_mr_info(dtl_node->mr_info);
    oru::deref(dtl_node->error);
    for (ORUDtlNode *child = dtl_node->first_child; child != nullptr;)
        oru_dtl_tree_delete(std::exchange(child, child->next));
    ph_free_named(dtl_node);
}
