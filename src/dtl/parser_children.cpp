// The child elements of an element.
#include <cstring>

#include "do/strbuf.h"
#include "dtl/parser.h"
#include "dtl/tree.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

// No element is read below this level.
constexpr int32_t kMaxLevel = 16;

// The children of a node, while elements are read into them.
struct Children {
    Parser &parser;
    ORUDtlNode *above;
    ORUDtlNode **end = &above->first_child;

    ORUDtlNode *add(const xmlNode *element, int32_t type) {
        const auto name = Ref<ORUDoName>::adopt(oru_do_name_new(xml_name(element)));
        ORUDtlNode *node = parser.made(name ? add_node(end, name.get(), type) : nullptr);
        if (node != nullptr)
            end = &node->next;
        return node;
    }
};

void add_mr_child(Children &children, const xmlNode *element, ORUDoUri *uri, ORUMdMrMeta *mr) {
    ORUDtlNode *node = children.add(element, ORU_DTL_NODE_MR_OP);
    if (node == nullptr)
        return;
    children.parser.address(node, uri, mr->do_mr_meta);
    read_mr_op(node, element, uri);
    read_mr_attributes(node, element);
}

// An address that says nothing of the type stands for every implementation of a library resource.
void add_mr_children(Children &children, const xmlNode *element, ORUDoUri *uri, ORUMdMrMeta *mr) {
    if (oru_do_uri_has_type_query_part(uri) != 0 || oru_md_is_lib_mr(mr) == 0) {
        add_mr_child(children, element, uri, mr);
        return;
    }
    for (auto *impl = oru_md_mr_meta_get_impl_mr_meta_list(mr); impl != nullptr; impl = impl->next)
        add_mr_child(children, element, uri, impl->mr);
}

// 5. An address that does not parse makes nothing.
void add_addressed(Children &children, const xmlNode *element, const char *text) {
    const auto uri = Ref<ORUDoUri>::adopt(oru_do_uri_new_parse_unescape_key(text));
    if (!uri)
        return;
    const FoundMr found = find_mr(element);
    if (found.mr != nullptr) {
        add_mr_children(children, element, uri.get(), found.mr);
        return;
    }
    // What was wrong shows on the node; the document goes on as though nothing had been.
    children.parser.error = {};
    ORUDtlNode *node = children.add(element, ORU_DTL_NODE_CONTAINER);
    if (node != nullptr)
        oru_dtl_tree_set_error(node, found.error.get());
}

// 4 and 5: none, one, or one for each implementation of a library resource.
void add_nodes(Children &children, const xmlNode *element) {
    const XmlAttribute uri(element, "uri");
    if (uri) {
        add_addressed(children, element, uri.text());
    } else {
        children.add(element, ORU_DTL_NODE_CONTAINER);
    }
}

// An attribute's text is a condition on the rows of its collection.
void read_filter(ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    const ElementText raw(element);
    const Text text = raw.says_something() ? raw.stripped() : Text();
    if (!text)
        return;
    const auto value = read_value(text.get(), "$@", above);
    const char *name = name_text(node->name);
    if (value && check_where_attr(above, name))
        oru_dtl_tree_add_where_clause(above, name, value.get());
}

// "asc", "desc" and "snmp" put the attribute into the order of its collection.
void read_order(ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    const XmlAttribute order(element, "order");
    if (order.is("asc"))
        oru_dtl_tree_add_order_by(above, node->prop_name);
    if (!order.is("desc") && !order.is("snmp"))
        return;
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return;
    strbuf_append(*text, name_text(node->prop_name));
    strbuf_append(*text, " ");
    if (!strbuf_append(*text, order.text()))
        return;
    const auto name = Ref<ORUDoName>::adopt(oru_do_name_new(oru_do_strbuf_to_string(text.get())));
    if (name)
        oru_dtl_tree_add_order_by(above, name.get());
}

bool is_unmatched(const ORUDtlNode *node) {
    return node->op == ORU_DTL_OP_TRAVERSE && node->error == nullptr;
}

// 6.
void match_node(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    const bool known = above->mr_info != nullptr && above->mr_info->mr_meta != nullptr;
    if (known && is_unmatched(node))
        match(parser, above, node, element);
    const bool in_rows =
        above->op >= ORU_DTL_OP_COLL_GET && above->op <= ORU_DTL_OP_COLL_GET_ALL_OPER_R;
    if (in_rows && (node->type == ORU_DTL_NODE_ATTR || node->type == ORU_DTL_NODE_OPER_ATTR)) {
        read_filter(above, node, element);
        read_order(above, node, element);
    }
}

// 7. Parameters of an action were read with it.
void descend(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element,
             int32_t level) {
    if (node->type != ORU_DTL_NODE_ACTION)
        read_children(parser, node, element, level + 1);
    if (oru_dtl_tree_is_get_specific_attr_op(above) != 0 && is_unmatched(node) &&
        node->type == ORU_DTL_NODE_CONTAINER && node->first_child == nullptr)
        oru_dtl_tree_set_op(node, ORU_DTL_OP_NOOP);
}

void read_child(Children &children, const xmlNode *element, int32_t level) {
    auto &[parser, above, end] = children;
    const ElementPlace place(parser, element);
    ORUDtlNode **made = end;
    add_nodes(children, element);
    for (ORUDtlNode *node = *made; node != nullptr; node = node->next) {
        match_node(parser, above, node, element);
        descend(parser, above, node, element, level);
    }
}

// 8. A wide read without elements is one of all attributes.
void add_default_attrs(ORUDtlNode *node) {
    if (node->mr_info == nullptr || node->mr_info->mr_meta == nullptr)
        return;
    const int32_t op = node->op;
    const bool all = op == ORU_DTL_OP_GET_ALL || op == ORU_DTL_OP_COLL_GET_ALL;
    if (all || op == ORU_DTL_OP_GET_ALL_CFG || op == ORU_DTL_OP_COLL_GET_ALL_CFG)
        add_all_cfg_attrs(node);
    if (all || op == ORU_DTL_OP_GET_ALL_OPER || op == ORU_DTL_OP_COLL_GET_ALL_OPER)
        add_all_oper_attrs(node);
}

}  // namespace

void read_children(Parser &parser, ORUDtlNode *node, const xmlNode *element, int32_t level) {
    if (oru_dtl_tree_is_recursive_op(node) != 0) {  // 2
        expand_by_metadata(parser, node);
        return;
    }
    Children children{parser, node};
    bool counted = false;
    for (const xmlNode *child : XmlChildren(element)) {
        if (level >= kMaxLevel) {  // 1
            parser.fail(ORU_RC_GENERAL, "Max Level Exceeded");
            return;
        }
        if (is_where(child)) {  // 3
            read_where_element(parser, node, child);
            continue;
        }
        counted = true;
        read_child(children, child, level);
    }
    if (!counted)
        add_default_attrs(node);
}

}  // namespace oru::dtl
