// Trees of documents and descriptions of resources, made by hand.
#ifndef ORU_TESTS_UNIT_DTL_TREE_SUPPORT_H
#define ORU_TESTS_UNIT_DTL_TREE_SUPPORT_H

#include <initializer_list>
#include <memory>

#include "oru/dtl.h"
#include "oru/mr_meta.h"
#include "oru/prop_meta.h"
#include "tests/support/owned.h"

namespace oru::test {

using Tree = std::unique_ptr<ORUDtlNode, Deref<oru_dtl_tree_delete>>;
using MrMeta = std::unique_ptr<ORUDoMrMeta, Deref<oru_do_mr_meta_deref>>;
using PropMetaList = std::unique_ptr<ORUDoPropMetaList, Deref<oru_do_prop_meta_list_deref>>;
using PropMeta = std::unique_ptr<ORUDoPropMeta, Deref<oru_do_prop_meta_deref>>;

struct Prop {
    const char *name;
    int32_t category;
    int32_t role = ORU_REF_NONE;
    const char *type = "int";
    uint8_t access = 7;
};

inline MrMeta make_mr(const char *name, std::initializer_list<Prop> props, uint8_t access = 15) {
    const PropMetaList list(oru_do_prop_meta_list_new());
    for (const Prop &prop : props) {
        const Name prop_name(oru_do_name_new(prop.name));
        const Name type(oru_do_name_new(prop.type));
        const PropMeta meta(oru_do_prop_meta_new(
            prop_name.get(), prop.category, prop.category == ORU_PROP_KEY, 0, nullptr, 5,
            type.get(), ORU_MULTIPLICITY_ONE, prop.role, prop.access, 1));
        oru_do_prop_meta_list_add(list.get(), meta.get());
    }
    const Name package(oru_do_name_new("net"));
    const Name mr_name(oru_do_name_new(name));
    return MrMeta(
        oru_do_mr_meta_new(package.get(), nullptr, mr_name.get(), access, list.get(), nullptr));
}

// A child of a tree by its name.
inline ORUDtlNode *add_node(ORUDtlNode *parent, const char *name, int32_t type, int32_t op) {
    ORUDtlNode *node = oru_dtl_tree_add_child_w_strname_type(parent, name, type);
    oru_dtl_tree_set_op(node, op);
    return node;
}

// The same with an address and a description, which may be null.
inline ORUDtlNode *add_mr_node(ORUDtlNode *parent, const char *name, int32_t op, const char *uri,
                               ORUDoMrMeta *meta = nullptr) {
    ORUDtlNode *node = add_node(parent, name, ORU_DTL_NODE_MR_OP, op);
    // As a document has it: with the key values in escaped form.
    Uri address(oru_do_uri_new_parse_unescape_key(uri));
    if (!address)
        address.reset(oru_do_uri_new(uri));
    oru_dtl_tree_init_mr_info(node, address.get(), meta);
    return node;
}

}  // namespace oru::test

#endif
