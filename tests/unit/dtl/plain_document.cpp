#include "tests/unit/dtl/plain_document.h"

#include "oru/error.h"

namespace oru::test {
namespace {

void set_lists(ORUDtlNode *node, const DocNode &from) {
    for (const std::string &text : from.cfg)
        oru_dtl_tree_add_cfg_attr(node, Name(oru_do_name_new(text.c_str())).get());
    for (const std::string &text : from.oper)
        oru_dtl_tree_add_oper_attr(node, Name(oru_do_name_new(text.c_str())).get());
    for (const std::string &text : from.order_by)
        oru_dtl_tree_add_order_by(node, Name(oru_do_name_new(text.c_str())).get());
    for (const auto &[name, value] : from.where)
        oru_dtl_tree_add_where_clause(node, name.c_str(), make_value(value).get());
    if (from.act_name.empty())
        return;
    oru_dtl_tree_set_act_name(node, Name(oru_do_name_new(from.act_name.c_str())).get());
    for (const auto &[name, value] : from.act_in)
        oru_dtl_tree_set_act_in_param(node, Name(oru_do_name_new(name.c_str())).get(),
                                      make_value(value).get());
}

void set_resource(ORUDtlNode *node, const DocNode &from) {
    Uri uri;
    if (!from.uri.empty())
        uri.reset(oru_do_uri_new_parse_unescape_key(from.uri.c_str()));
    if (!uri && !from.uri.empty())
        uri.reset(oru_do_uri_new(from.uri.c_str()));
    MrMeta meta;
    if (from.meta != DocNode::Meta::none)
        meta = make_mr("M", {}, from.meta == DocNode::Meta::oper ? uint8_t{0} : uint8_t{15});
    oru_dtl_tree_init_mr_info(node, uri.get(), meta.get());
    set_lists(node, from);
    oru_dtl_tree_set_use_where_clause_once(node, from.where_once);
    oru_dtl_tree_set_return_default(node, from.return_default);
    oru_dtl_tree_set_return_w_child(node, from.return_w_child);
    oru_dtl_tree_set_continue_on_error(node, from.continue_on_error);
    if (from.flatten)
        oru_dtl_tree_set_flatten(node, "true");
    if (from.return_mode == ORU_DTL_RETURN_ONE)
        oru_dtl_tree_set_return_one(node);
    if (from.return_mode == ORU_DTL_RETURN_LAST)
        oru_dtl_tree_set_return_last(node);
    const std::pair<const std::string &, void (*)(ORUDtlNode *, const char *)> texts[] = {
        {from.attr_select, oru_dtl_tree_set_attr_select},
        {from.order_param, oru_dtl_tree_set_order_param},
        {from.batch_size_param, oru_dtl_tree_set_batch_size_param},
        {from.max_batches_param, oru_dtl_tree_set_max_batches_param}};
    for (const auto &[text, set] : texts) {
        if (!text.empty())
            set(node, text.c_str());
    }
}

void add_children(ORUDtlNode *node, const DocNode &from) {
    for (const DocNode &child : from.children) {
        ORUDtlNode *made = add_node(node, child.name.c_str(), child.type, child.op);
        if (child.addressed)
            set_resource(made, child);
        oru_dtl_tree_set_batch_size(made, child.batch_size);
        oru_dtl_tree_set_max_batches(made, child.max_batches);
        oru_dtl_tree_set_default_expr(made, child.default_expr.c_str());
        if (child.error != 0) {
            const std::unique_ptr<ORUDoError, Deref<oru_do_error_deref>> error(
                oru_do_error_new(child.error, "bad"));
            oru_dtl_tree_set_error(made, error.get());
        }
        add_children(made, child);
    }
}

std::string number(const char *label, int32_t value) {
    return value != 0 ? label + std::to_string(value) : "";
}

std::string text(const char *label, const std::string &value) {
    return value.empty() ? "" : label + value;
}

}  // namespace

DocNode resource(std::string name, int32_t op, std::string uri, std::vector<DocNode> children) {
    DocNode node{.name = std::move(name), .type = ORU_DTL_NODE_MR_OP, .op = op};
    node.addressed = true;
    node.uri = std::move(uri);
    node.children = std::move(children);
    return node;
}

DocNode container(std::string name, std::vector<DocNode> children) {
    DocNode node{.name = std::move(name)};
    node.children = std::move(children);
    return node;
}

DocNode &ask(DocNode &node, const std::string &name, bool oper, const std::string &default_expr) {
    (oper ? node.oper : node.cfg).push_back(name);
    DocNode attr{.name = name,
                 .type = oper ? ORU_DTL_NODE_OPER_ATTR : ORU_DTL_NODE_ATTR,
                 .op = ORU_DTL_OP_NOOP};
    attr.default_expr = default_expr;
    node.children.push_back(attr);
    return node;
}

Tree make_tree(const DocNode &doc) {
    Tree tree(oru_dtl_tree_new());
    add_children(tree.get(), doc);
    return tree;
}

std::string describe(const DocNode &node) {
    std::string out = node.name + " " + oru_dtl_tree_get_op_str(node.op) + text(" ", node.uri) +
                      number(" !", node.error) + text(" default=", node.default_expr) +
                      number(" batch=", node.batch_size) + number(" max=", node.max_batches) +
                      number(" meta=", static_cast<int32_t>(node.meta)) +
                      text(" act=", node.act_name) + (node.where.empty() ? "" : " where") +
                      (node.where_once ? " once" : "") + (node.return_w_child ? " w-child" : "") +
                      (node.continue_on_error ? " go-on" : "") + (node.flatten ? " flatten" : "") +
                      number(" return=", node.return_mode) + text(" select=", node.attr_select) +
                      text(" order=", node.order_param) + text(" batch=", node.batch_size_param) +
                      text(" max=", node.max_batches_param);
    for (const std::string &name : node.cfg)
        out += " +" + name;
    for (const std::string &name : node.oper)
        out += " -" + name;
    if (node.children.empty())
        return out;
    out += "(";
    for (const DocNode &child : node.children)
        out += (&child == node.children.data() ? "" : "; ") + describe(child);
    return out + ")";
}

}  // namespace oru::test
