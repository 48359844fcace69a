// A tree as text, for traces: what the reader made of a document, not the document.
#include "do/name.h"
#include "do/strbuf.h"
#include "do/uri.h"
#include "oru/dtl.h"
#include "oru/mr_meta.h"

namespace {

using oru::strbuf_append;

void add_attribute(ORUDoStrbuf &buf, const char *name, const char *text) {
    for (const char *piece : {" ", name, "=\"", text, "\""})
        strbuf_append(buf, piece);
}

void add_number(ORUDoStrbuf &buf, const char *name, int32_t number) {
    if (number <= 0)
        return;
    for (const char *piece : {" ", name, "=\""})
        strbuf_append(buf, piece);
    oru_do_strbuf_add_long(&buf, number);
    strbuf_append(buf, "\"");
}

void add_parts(ORUDoStrbuf &buf, const ORUDtlMrInfo &info) {
    const struct {
        const void *part;
        const char *label;
    } parts[] = {{info.prop_meta_list, "(prop_meta_list)"},
                 {info.cfg_attr_nlist, "(cfg_attr_nlist)"},
                 {info.oper_attr_nlist, "(oper_attr_nlist)"},
                 {info.cfg_data_nlist, "(cfg_data_nlist)"},
                 {info.oper_data_nlist, "(oper_data_nlist)"},
                 {info.act_name, "(act_name)"},
                 {info.act_in_params, "(act_in_params)"},
                 {info.where_clause, "(where_clause)"},
                 {info.order_by, "(order_by)"}};
    strbuf_append(buf, " info=\"");
    for (const auto &[part, label] : parts) {
        if (part != nullptr)
            strbuf_append(buf, label);
    }
    strbuf_append(buf, "\"");
}

void add_mr_info(ORUDoStrbuf &buf, const ORUDtlMrInfo &info) {
    if (info.uri != nullptr) {
        strbuf_append(buf, " uri=\"");
        oru_do_strbuf_add_string_encode_for_xml(&buf, oru_do_uri_get_uri_str(info.uri));
        strbuf_append(buf, "\"");
    }
    if (info.mr_meta != nullptr)
        add_attribute(buf, "mr", oru::name_text(oru_do_mr_meta_get_mr_fq_name(info.mr_meta)));
    add_parts(buf, info);
}

void add_opening_tag(ORUDoStrbuf &buf, const ORUDtlNode &node) {
    strbuf_append(buf, "<");
    strbuf_append(buf, oru::name_text(node.name));
    add_attribute(buf, "op", oru_dtl_tree_get_op_str(node.op));
    add_attribute(buf, "type", oru_dtl_tree_get_node_type_str(node.type));
    if (node.mr_info != nullptr)
        add_mr_info(buf, *node.mr_info);
    if (node.error != nullptr)
        add_attribute(buf, "has_err", "true");
    add_number(buf, "batch-size", node.batch_size);
    add_number(buf, "max-batches", node.max_batches);
    strbuf_append(buf, ">");
}

int32_t render(const ORUDtlNode &node, bool format, int32_t level, ORUDoStrbuf *buf) {
    if (format)
        oru_do_strbuf_add_tab(buf, level);
    add_opening_tag(*buf, node);
    if (format)
        strbuf_append(*buf, "\n");
    for (const ORUDtlNode *child = node.first_child; child != nullptr; child = child->next)
        render(*child, format, level + 1, buf);
    if (format)
        oru_do_strbuf_add_tab(buf, level);
    strbuf_append(*buf, "</");
    strbuf_append(*buf, oru::name_text(node.name));
    return oru_do_strbuf_add_string(buf, format ? ">\n" : ">");
}

}  // namespace

int32_t oru_dtl_tree_to_xml(ORUDtlNode *node, uint8_t format, ORUDoStrbuf *buf) {
    ORU_REQUIRE(node);
    ORU_REQUIRE(buf);
    const ORUDtlNode *first = node->type == ORU_DTL_NODE_DOC ? node->first_child : node;
    return render(*first, format != 0, 0, buf);
}
