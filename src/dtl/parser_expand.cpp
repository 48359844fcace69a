// What a node reads by metadata alone.
#include "dtl/parser.h"
#include "md/prop_meta.h"
#include "oru/md_lookup.h"

namespace oru::dtl {
namespace {

using PropListRef = Ref<ORUDoPropMetaList>;

enum class Breadth { none, all, config, oper };

Breadth breadth_of(int32_t op) {
    switch (op) {
        case ORU_DTL_OP_GET_ALL:
        case ORU_DTL_OP_GET_ALL_R:
        case ORU_DTL_OP_COLL_GET_ALL:
        case ORU_DTL_OP_COLL_GET_ALL_R:
            return Breadth::all;
        case ORU_DTL_OP_GET_ALL_CFG:
        case ORU_DTL_OP_GET_ALL_CFG_R:
        case ORU_DTL_OP_COLL_GET_ALL_CFG:
        case ORU_DTL_OP_COLL_GET_ALL_CFG_R:
            return Breadth::config;
        case ORU_DTL_OP_GET_ALL_OPER:
        case ORU_DTL_OP_GET_ALL_OPER_R:
        case ORU_DTL_OP_COLL_GET_ALL_OPER:
        case ORU_DTL_OP_COLL_GET_ALL_OPER_R:
            return Breadth::oper;
        default:
            return Breadth::none;
    }
}

int32_t op_of_children(Breadth breadth) {
    if (breadth == Breadth::all)
        return ORU_DTL_OP_COLL_GET_ALL;
    return breadth == Breadth::config ? ORU_DTL_OP_COLL_GET_ALL_CFG : ORU_DTL_OP_COLL_GET_ALL_OPER;
}

struct Expansion {
    Parser &parser;
    ORUDoMrMetaList *visited;
};

void expand(const Expansion &expansion, ORUDtlNode *node);

void add_reference(const Expansion &expansion, ORUDtlNode *node, ORUDoPropMeta *prop, int32_t op,
                   ORUMdMrMeta *target) {
    ORUDtlNode *child =
        expansion.parser.made(oru_dtl_tree_add_child(node, prop->name, ORU_DTL_NODE_MR_OP));
    if (child == nullptr)
        return;
    oru_dtl_tree_set_op(child, op);
    address_reference(expansion.parser, child, ORU_REF_CHILD, prop->name, target->do_mr_meta);
}

// A target that is a library resource stands for each of its implementations.
void add_references(const Expansion &expansion, ORUDtlNode *node, ORUDoPropMeta *prop, int32_t op) {
    ORUMdMrMeta *target = oru_md_get_mr_meta_by_name(name_text(prop->type_name));
    if (target == nullptr)
        return;
    if (oru_md_is_lib_mr(target) == 0) {
        add_reference(expansion, node, prop, op, target);
        return;
    }
    for (auto *impl = oru_md_mr_meta_get_impl_mr_meta_list(target); impl != nullptr;
         impl = impl->next)
        add_reference(expansion, node, prop, op, impl->mr);
}

// 3. Configuration does not lead to operational resources.
void add_child_references(const Expansion &expansion, ORUDtlNode *node, Breadth breadth) {
    const PropListRef refs = PropListRef::adopt(oru_do_prop_meta_list_new());
    if (!refs || oru_do_mr_meta_get_child_ref_meta(node->mr_info->mr_meta, refs.get()) < 0) {
        expansion.parser.lack_node();
        return;
    }
    for (auto *item = refs->first; item != nullptr; item = item->next) {
        if (breadth == Breadth::config && oru_do_prop_meta_is_oper_data(item->object) != 0)
            continue;
        add_references(expansion, node, item->object, op_of_children(breadth));
    }
}

// 1. A type is expanded once in a document's subtree, wherever it comes first.
bool is_first_visit(const Expansion &expansion, ORUDoMrMeta *meta) {
    if (meta == nullptr || oru_do_mr_meta_list_index_of(expansion.visited, meta) >= 0)
        return false;
    const bool noted = oru_do_mr_meta_list_add(expansion.visited, meta) > 0;
    if (!noted)
        expansion.parser.lack_node();
    return noted;
}

void expand(const Expansion &expansion, ORUDtlNode *node) {
    if (!is_first_visit(expansion, node->mr_info != nullptr ? node->mr_info->mr_meta : nullptr))
        return;
    const Breadth breadth = breadth_of(node->op);
    if (breadth == Breadth::none)
        return;
    if (breadth != Breadth::oper)
        add_all_cfg_attrs(node);
    if (breadth != Breadth::config)
        add_all_oper_attrs(node);
    add_child_references(expansion, node, breadth);
    for (ORUDtlNode *child = node->first_child; child != nullptr; child = child->next)  // 4
        expand(expansion, child);
}

template <class Add>
void add_attrs(ORUDtlNode *node, int32_t (*find)(ORUDoMrMeta *, const char *, ORUDoPropMetaList *),
               Add &&add) {
    const PropListRef props = PropListRef::adopt(oru_do_prop_meta_list_new());
    if (!props || find(node->mr_info->mr_meta, nullptr, props.get()) < 0)
        return;
    for (auto *item = props->first; item != nullptr; item = item->next)
        add(node, item->object->name);
}

}  // namespace

void add_all_cfg_attrs(ORUDtlNode *node) {
    add_attrs(node, oru_do_mr_meta_get_cfg_prop_meta,
              oru_dtl_tree_mr_is_oper(node) != 0 ? oru_dtl_tree_add_oper_attr
                                                 : oru_dtl_tree_add_cfg_attr);
}

void add_all_oper_attrs(ORUDtlNode *node) {
    add_attrs(node, oru_do_mr_meta_get_oper_prop_meta, oru_dtl_tree_add_oper_attr);
}

void expand_by_metadata(Parser &parser, ORUDtlNode *node) {
    const auto visited = Ref<ORUDoMrMetaList>::adopt(oru_do_mr_meta_list_new());
    if (visited) {
        expand({parser, visited.get()}, node);
    } else {
        parser.lack_node();
    }
}

}  // namespace oru::dtl
