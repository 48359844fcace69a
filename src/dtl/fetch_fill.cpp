// What a row of names and values becomes on a result node.
#include <cstring>

#include "do/error.h"
#include "do/name.h"
#include "do/strbuf.h"
#include "dtl/fetch.h"
#include "dtl/variables.h"
#include "oru/json.h"
#include "oru/properties.h"

namespace oru::dtl {
namespace {

using ValueRef = Ref<ORUDoValue>;

constexpr const char kChildIndex[] = "_dtlChildIndex";
constexpr const char kLastChildIndex[] = "_dtlLastChildIndex";
constexpr const char kPeerPrefix[] = "_PEER_URI_";

struct Fill {
    const Fetch &fetch;
    RowContext row;
    ORUDoProperties *props;

    void set(const char *name, const ValueRef &value) const {
        if (value)
            oru_do_properties_set_value(props, name, value.get());
    }
    void set(ORUDoName *name, const ValueRef &value) const {
        if (value)
            oru_do_properties_set_value_n(props, name, value.get());
    }
};

ValueRef or_null_value(ORUDoValue *value) {
    return value != nullptr ? ValueRef::share(value) : ValueRef::adopt(oru_do_value_new_null());
}

// The number that the row gets under its parent, which counts them.
ValueRef next_child_index(ORUDoDtree *parent) {
    ORUDoValue *last = oru_do_dtree_get_value(parent, kLastChildIndex);
    int32_t rc = 0;
    int64_t index = last != nullptr ? oru_do_value_to_long(last, &rc) : 0;
    if (rc != 0)
        index = 0;
    ValueRef next = ValueRef::adopt(oru_do_value_new_long(index + 1));
    if (next)
        oru_do_dtree_set_value(parent, kLastChildIndex, next.get());
    return next;
}

// A default is a reference or an expression. What is wrong with it stays on the document's node.
ValueRef default_of(const Fill &fill, ORUDtlNode &attr) {
    const char *text = attr.default_expr;
    if (text == nullptr)
        return {};
    RowContext context = fill.row;
    if (is_variable(text))
        return ValueRef::adopt(resolve_row(&context, text, nullptr));
    ORUDoError *error = nullptr;
    ValueRef value = ValueRef::adopt(oru_do_json_eval_expr(
        text, static_cast<int32_t>(std::strlen(text)), resolve_row, set_param, &context, &error));
    const auto owned = Ref<ORUDoError>::adopt(error);
    if (owned)
        oru_dtl_tree_set_error(&attr, owned.get());
    return value;
}

void set_peer(const Fill &fill, const char *name, const ValueRef &value) {
    const auto full = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!full)
        return;
    strbuf_append(*full, kPeerPrefix);
    if (strbuf_append(*full, name))
        fill.set(oru_do_strbuf_to_string(full.get()), value);
}

void fill_attr(const Fill &fill, ORUDtlNode &attr) {
    const char *name = name_text(attr.name);
    if (std::strcmp(name, kChildIndex) == 0) {
        fill.set(attr.name, next_child_index(fill.fetch.parent));
        return;
    }
    // The default is computed whether it is needed or not: it may count.
    const ValueRef fallback = default_of(fill, attr);
    ORUDoValue *found = row_value(fill.row.names, fill.row.values, name);
    const ValueRef value = or_null_value(found != nullptr ? found : fallback.get());
    if (attr.type == ORU_DTL_NODE_PEER_REF) {
        set_peer(fill, name, value);
    } else {
        fill.set(attr.name, value);
    }
}

bool is_filled(const ORUDtlNode &child) {
    return child.type == ORU_DTL_NODE_ATTR || child.type == ORU_DTL_NODE_OPER_ATTR ||
           child.type == ORU_DTL_NODE_PEER_REF ||
           (child.type == ORU_DTL_NODE_CONTAINER && child.first_child == nullptr);
}

// Cursors are asked for these two first, so that their names are at hand as a rule.
void fill_id(const Fill &fill, const char *name) {
    const ValueRef value = or_null_value(row_value(fill.row.names, fill.row.values, name));
    for (auto *item = fill.row.names->first; item != nullptr; item = item->next) {
        if (std::strcmp(name_text(item->name), name) == 0)
            return fill.set(item->name, value);
    }
    fill.set(name, value);
}

}  // namespace

void fill_node(const Fetch &fetch, ORUDoDtree *dtree_node, ORUDoUri *uri, ORUDoNlist *attr_nlist,
               ORUDoVlist *attr_vlist, bool with_ids) {
    ORUDtlNode *dtl_node = fetch.node;
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(dtree_node);
    ORU_REQUIRE(uri);
    ORU_REQUIRE(attr_nlist);
    ORU_REQUIRE(attr_vlist);
    const auto props = Ref<ORUDoProperties>::adopt(oru_do_properties_new());
    if (!props)
        return;
    if (oru_dtl_tree_is_get_specific_attr_op(dtl_node) == 0) {
        oru_do_properties_set_values(props.get(), attr_nlist, attr_vlist);
    } else {
        const Fill fill{
            fetch, {fetch.params, fetch.parent, fetch.root, attr_nlist, attr_vlist}, props.get()};
        if (with_ids) {
            fill_id(fill, ORU_DO_NAME_URI);
            fill_id(fill, ORU_DO_NAME_MR);
        }
        for (ORUDtlNode *child = dtl_node->first_child; child != nullptr; child = child->next) {
            if (is_filled(*child))
                fill_attr(fill, *child);
        }
    }
    oru_do_dtree_set_mr_data(dtree_node, uri, props.get());
}

}  // namespace oru::dtl
