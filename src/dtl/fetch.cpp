// The choice among the kinds of fetch, and the two reads of a single resource.
#include "dtl/fetch.h"

#include "do/error.h"
#include "do/name.h"
#include "do/value.h"
#include "oru/mr_meta.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::dtl {
namespace {

using NlistRef = Ref<ORUDoNlist>;
using VlistRef = Ref<ORUDoVlist>;

bool has_names(ORUDoNlist *list) {
    return oru_do_nlist_get_len(list) > 0;
}

// The operation on a collection is the plain one and eight.
int32_t effective_op(const Fetch &fetch) {
    const int32_t op = fetch.node->op;
    const bool plain = op >= ORU_DTL_OP_GET && op <= ORU_DTL_OP_GET_ALL_OPER_R;
    return plain && oru_do_uri_get_query_part(fetch.uri) != nullptr ? op + ORU_DTL_OP_COLL : op;
}

void trace_dispatch(const Fetch &fetch, int32_t op) {
    ORUDoMrMeta *meta = fetch.mr_info->mr_meta;
    ORU_TRACE(Level::detail, "[%d]<%s> op=%s,mr=%s,URI=%s", fetch.level,
              name_text(fetch.node->name), oru_dtl_tree_get_op_str(op),
              meta != nullptr ? name_text(oru_do_mr_meta_get_mr_fq_name(meta)) : "",
              oru_do_uri_get_uri_str(fetch.uri));
}

// The names and values that were read so far, side by side.
struct Row {
    NlistRef names = NlistRef::adopt(oru_do_nlist_new());
    VlistRef values = VlistRef::adopt(oru_do_vlist_new());
};

// The names to ask for: all behind the two of every resource in a wide read, what is selected
// otherwise.
NlistRef names_to_read(ORUDoNlist *attrs, bool wide, ORUDoNlist *selection) {
    NlistRef names = NlistRef::adopt(oru_do_nlist_new());
    if (!names)
        return names;
    if (wide)
        add_id_names(names.get());
    select_attrs(attrs, wide ? nullptr : selection, names.get());
    return names;
}

// One of the two reads of `read_attrs`; `read` calls the data interface.
template <class Read>
int32_t read_into(const Fetch &fetch, Row &row, ORUDoDtree *child, const NlistRef &names,
                  Read &&read) {
    const VlistRef values = VlistRef::adopt(oru_do_vlist_new());
    if (!names || !values)
        return ORU_OK;
    const int32_t rc = read(names.get(), values.get());
    if (!is_read(rc)) {
        take_data_error(fetch.ctx->crudx, child);
        return rc;
    }
    oru_do_nlist_add_all(row.names.get(), names.get());
    append_values(*row.values, *values, oru_do_nlist_get_len(names.get()));
    return ORU_OK;
}

bool is_any_of(int32_t op, int32_t a, int32_t b, int32_t c, int32_t d) {
    return op == a || op == b || op == c || op == d;
}

int32_t read_cfg(const Fetch &fetch, Row &row, ORUDoDtree *child, ORUDoNlist *selection) {
    ORUDoNlist *attrs = fetch.mr_info->cfg_attr_nlist;
    if (!has_names(attrs))
        return ORU_OK;
    const bool wide = is_any_of(fetch.node->op, ORU_DTL_OP_GET_ALL, ORU_DTL_OP_GET_ALL_CFG,
                                ORU_DTL_OP_GET_ALL_R, ORU_DTL_OP_GET_ALL_CFG_R);
    ORUDataIfc *data = fetch.ctx->crudx;
    return read_into(fetch, row, child, names_to_read(attrs, wide, selection),
                     [&](ORUDoNlist *names, ORUDoVlist *values) {
                         return data->get_cfg_prop_values(data, fetch.uri, names,
                                                          fetch.mr_info->return_default, values);
                     });
}

int32_t read_oper(const Fetch &fetch, Row &row, ORUDoDtree *child, ORUDoNlist *selection) {
    ORUDoNlist *attrs = fetch.mr_info->oper_attr_nlist;
    if (!has_names(attrs))
        return ORU_OK;
    const bool wide = is_any_of(fetch.node->op, ORU_DTL_OP_GET_ALL, ORU_DTL_OP_GET_ALL_OPER,
                                ORU_DTL_OP_GET_ALL_R, ORU_DTL_OP_GET_ALL_OPER_R);
    ORUDataIfc *data = fetch.ctx->crudx;
    return read_into(fetch, row, child, names_to_read(attrs, wide, selection),
                     [&](ORUDoNlist *names, ORUDoVlist *values) {
                         return data->get_oper_prop_values(data, fetch.uri, names, values);
                     });
}

int32_t read_properties(const Fetch &fetch, int32_t op, ORUDoProperties *props) {
    ORUDataIfc *data = fetch.ctx->crudx;
    int32_t rc = ORU_OK;
    if (op == ORU_DTL_OP_GET_ALL || op == ORU_DTL_OP_GET_ALL_CFG)
        rc = data->get_cfg_props(data, fetch.uri, nullptr, props);
    if (is_read(rc) && (op == ORU_DTL_OP_GET_ALL || op == ORU_DTL_OP_GET_ALL_OPER))
        rc = data->get_oper_props(data, fetch.uri, nullptr, props);
    return is_read(rc) ? ORU_OK : rc;
}

}  // namespace

ORUDoDtree *add_result(const Fetch &fetch, ORUDoName *name) {
    ORUDoDtree *node = oru_do_dtree_add_child(fetch.parent, name);
    if (node != nullptr)
        ++*fetch.node_added;
    return node;
}

void report_row(const Fetch &fetch, ORUDoDtree *node) {
    if (fetch.row != nullptr && *fetch.row == nullptr)
        *fetch.row = node;
}

bool take_error(ORUErrorIfc *holder, ORUDoDtree *node) {
    ORUDoError *error = holder != nullptr ? holder->get_error(holder) : nullptr;
    if (error != nullptr)
        oru_do_dtree_set_error(node, error);
    return error != nullptr;
}

void take_data_error(ORUDataIfc *data, ORUDoDtree *node) {
    take_error(data->get_error_ifc(data), node);
}

bool is_read(int32_t rc) {
    return rc == ORU_OK || rc == ORU_RC_NO_SUCH_RESOURCE;
}

void append_values(ORUDoVlist &out, ORUDoVlist &values, int32_t count) {
    for (ORUDoVlistItem *item = values.first; item != nullptr && count > 0; item = item->next) {
        oru_do_vlist_add(&out, item->value);
        --count;
    }
    for (; count > 0; --count) {
        const auto missing = Ref<ORUDoValue>::adopt(oru_do_value_new_null());
        oru_do_vlist_add(&out, missing.get());
    }
}

int32_t read_all(const Fetch &fetch, int32_t op) {
    const auto props = Ref<ORUDoProperties>::adopt(oru_do_properties_new());
    ORUDoDtree *child = add_result(fetch, fetch.node->name);
    if (!props || child == nullptr)
        return ORU_OK;
    const int32_t rc = read_properties(fetch, op, props.get());
    if (rc != ORU_OK) {
        take_data_error(fetch.ctx->crudx, child);
        return rc;
    }
    oru_do_dtree_set_mr_data(child, fetch.uri, props.get());
    report_row(fetch, child);
    return ORU_OK;
}

int32_t read_attrs(const Fetch &fetch) {
    Row row;
    if (!row.names || !row.values)
        return ORU_OK;
    const NlistRef selection = attr_select_list(fetch, nullptr);
    ORUDoDtree *child = add_result(fetch, fetch.node->name);
    if (child == nullptr)
        return ORU_OK;
    if (const int32_t rc = read_cfg(fetch, row, child, selection.get()); rc != ORU_OK)
        return rc;
    if (const int32_t rc = read_oper(fetch, row, child, selection.get()); rc != ORU_OK)
        return rc;
    fill_node(fetch, child, fetch.uri, row.names.get(), row.values.get(), false);
    report_row(fetch, child);
    return ORU_OK;
}

int32_t dispatch(const Fetch &fetch) {
    const int32_t op = effective_op(fetch);
    trace_dispatch(fetch, op);
    // The address was that of a collection before, and nobody will ask the cursor for its rows.
    if (op < ORU_DTL_OP_COLL_GET)
        close_cursor(fetch.ctx);
    const bool cfg = fetch.mr_info->cfg_attr_nlist != nullptr;
    const bool oper = fetch.mr_info->oper_attr_nlist != nullptr;
    switch (op) {
        case ORU_DTL_OP_GET:
            return read_attrs(fetch);
        case ORU_DTL_OP_GET_ALL:
        case ORU_DTL_OP_GET_ALL_R:
            return cfg || oper ? read_attrs(fetch) : read_all(fetch, op);
        case ORU_DTL_OP_GET_ALL_CFG:
        case ORU_DTL_OP_GET_ALL_CFG_R:
            return cfg ? read_attrs(fetch) : read_all(fetch, op);
        case ORU_DTL_OP_GET_ALL_OPER:
        case ORU_DTL_OP_GET_ALL_OPER_R:
            return oper ? read_attrs(fetch) : read_all(fetch, op);
        case ORU_DTL_OP_ACTION:
            return fetch.mr_info->act_name != nullptr ? invoke_action(fetch, fetch.uri) : ORU_OK;
        default:
            return op >= ORU_DTL_OP_COLL_GET && op <= ORU_DTL_OP_COLL_ACTION ? fetch_rows(fetch)
                                                                             : ORU_OK;
    }
}

}  // namespace oru::dtl
