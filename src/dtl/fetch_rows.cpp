// One batch of rows of a collection: the cursor is opened when there is none, asked for rows, and
// closed at its end. The steps stand in their order; `fetch_rows` at the end goes through them.
#include <cstring>

#include "do/error.h"
#include "do/name.h"
#include "do/strbuf.h"
#include "dtl/fetch.h"
#include "dtl/fetch_row.h"
#include "oru/mr_meta.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

using NlistRef = Ref<ORUDoNlist>;

// ---- 2. The lists of attributes ----

NlistRef new_list(bool with_ids) {
    NlistRef list = NlistRef::adopt(oru_do_nlist_new());
    return list && with_ids && !add_id_names(list.get()) ? NlistRef() : std::move(list);
}

// False when memory ran out.
bool build_lists(Batch &batch, ORUDoNlist *selection) {
    const ORUDtlMrInfo &info = *batch.fetch.mr_info;
    NlistRef &ids = batch.oper_mr ? batch.oper_list : batch.cfg_list;
    ids = new_list(true);
    if (!ids)
        return false;
    if (batch.oper_mr) {
        select_attrs(info.oper_attr_nlist, nullptr, ids.get());
        return true;
    }
    select_attrs(info.cfg_attr_nlist, selection, ids.get());
    if (info.oper_attr_nlist == nullptr)
        return true;
    batch.oper_list = new_list(false);
    if (batch.oper_list)
        select_attrs(info.oper_attr_nlist, selection, batch.oper_list.get());
    return static_cast<bool>(batch.oper_list);
}

// ---- 6. Opening ----

// "/a/b?c" of the type p/M is read as "/a/b/c?:p/M".
Ref<ORUDoUri> typed_uri(const char *text, const char *type) {
    const auto out = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!out)
        return {};
    if (const char *query = std::strchr(text, '?')) {
        const std::string_view base(text, static_cast<size_t>(query - text));
        strbuf_append(*out, base);
        if (base.size() >= 3)
            strbuf_append(*out, "/");
        strbuf_append(*out, query + 1);
    }
    strbuf_append(*out, "?:");
    if (!strbuf_append(*out, type))
        return {};
    return Ref<ORUDoUri>::adopt(oru_do_uri_new(oru_do_strbuf_to_string(out.get())));
}

// A plain collection is read by the type of its members.
Ref<ORUDoUri> uri_to_open(const Fetch &fetch) {
    constexpr int32_t kPlain = 1;
    const int32_t type = oru_do_uri_get_coll_type(fetch.uri);
    ORUDoMrMeta *meta = fetch.mr_info->mr_meta;
    const char *text = oru_do_uri_get_uri_str(fetch.uri);
    Ref<ORUDoUri> uri;
    if (type != kPlain || meta == nullptr) {
        ORU_TRACE(Level::detail, "Skipping type addition to %s (type=%d, mr_meta=%lX)", text, type,
                  reinterpret_cast<unsigned long>(meta));
    } else {
        uri = typed_uri(text, name_text(oru_do_mr_meta_get_mr_fq_name(meta)));
    }
    return uri ? std::move(uri) : Ref<ORUDoUri>::share(fetch.uri);
}

int32_t open_cursor(const Batch &batch, ORUDoNvlist *where, ORUDoNlist *order,
                    ORUDtlCursor **out_cursor) {
    const Fetch &fetch = batch.fetch;
    ORUCollIfc *coll = fetch.ctx->coll;
    if (batch.oper_mr) {
        ORU_TRACE(Level::detail, "New oper_cursor, #attrs=%d",
                  oru_do_nlist_get_len(batch.oper_list.get()));
        return coll->new_oper_cursor(coll, fetch.uri, batch.oper_list.get(), where, order,
                                     out_cursor);
    }
    const auto uri = uri_to_open(fetch);
    ORU_TRACE(Level::detail, "New config_cursor, #attrs=%d",
              oru_do_nlist_get_len(batch.cfg_list.get()));
    return coll->new_config_cursor(coll, uri.get(), batch.cfg_list.get(), where, order,
                                   fetch.mr_info->return_default, out_cursor);
}

// 4 to 7. No cursor is kept with a failure.
int32_t open(Batch &batch) {
    ORUDtlCtx *ctx = batch.fetch.ctx;
    batch.where = cursor_where(batch.fetch);
    const NlistRef order = cursor_order(batch.fetch);
    ORUDtlCursor *cursor = nullptr;
    const int32_t rc = open_cursor(batch, batch.where.get(), order.get(), &cursor);
    if (rc != ORU_OK)
        return rc;
    ctx->cursor = cursor;
    ctx->batches = 0;
    return ORU_OK;
}

// ---- 8 to 14. Asking for rows ----

void report_cursor_error(const Batch &batch) {
    ORUDtlCursor *cursor = batch.fetch.ctx->cursor;
    ORUErrorIfc *holder = cursor->cursor_get_error_ifc(cursor);
    ORUDoError *error = holder != nullptr ? holder->get_error(holder) : nullptr;
    ORUDoDtree *child = error != nullptr ? add_result(batch.fetch, batch.row_name.get()) : nullptr;
    if (child != nullptr)
        oru_do_dtree_set_error(child, error);
}

int32_t take_rows(Batch &batch, ORUDoVtable *table) {
    batch.all_names =
        NlistRef::adopt(oru_do_nlist_merge(batch.cfg_list.get(), batch.oper_list.get()));
    if (!batch.all_names)
        return ORU_OK;
    int32_t result = ORU_OK;
    for (auto *item = table->first; item != nullptr; item = item->next)
        result = take_row(batch, *item->row);
    return result;
}

// A configuration cursor that was left the number of rows has given them all. An empty batch is the
// last one, whatever the cursor said.
int32_t ask_cursor(Batch &batch, ORUDoVtable *table) {
    const Fetch &fetch = batch.fetch;
    ORUDtlCtx *ctx = fetch.ctx;
    int32_t rc =
        ctx->cursor->cursor_get_next(ctx->cursor, static_cast<uint32_t>(fetch.count), table);
    if (fetch.count == 0 && !batch.oper_mr)
        rc = ORU_RC_NO_MORE_VALUE;
    int32_t result = ORU_OK;
    if (rc > ORU_RC_NO_MORE_VALUE) {
        report_cursor_error(batch);
        result = rc;
    } else {
        ORU_TRACE(Level::detail, "getnext ret=%d", rc);
        ++ctx->batches;
        const int32_t rows = oru_do_vtable_get_row_num(table);
        ORU_TRACE(Level::detail, "#rows=%d", rows);
        if (rows == 0)
            rc = ORU_RC_NO_MORE_VALUE;
        result = take_rows(batch, table);
        if (rows == 0 && batch.where && fetch.mr_info->use_where_clause_once != 0)
            mark_where_used(fetch.root_ctx, fetch.node);
    }
    if (rc != ORU_OK)
        close_cursor(ctx);
    return result;
}

// ---- 15. The last step ----

// Of what is below the parent now only the last node shows.
void keep_last(const Fetch &fetch) {
    const int32_t count = oru_do_dtree_get_child_count(fetch.parent);
    if (count >= 2) {
        ORUDoDtree *last = oru_do_dtree_get_child(fetch.parent, count - 1);
        oru_do_dtree_hide_children(fetch.parent, nullptr, 1);
        oru_do_dtree_hide_node(last, 0);
        if (fetch.row != nullptr)
            *fetch.row = last;
    }
    if (fetch.ctx->cursor != nullptr)
        *fetch.retry = 1;
}

// The last row of `return="one"` goes too, and must not be taken for one that gets its memory.
void remove_batch_before(const Fetch &fetch) {
    oru_do_dtree_remove_children(fetch.parent);
    fetch.ctx->dtree_node = nullptr;
}

int32_t fetch_batch(Batch &batch) {
    const Fetch &fetch = batch.fetch;
    if (fetch.ctx->cursor != nullptr) {
        remove_batch_before(fetch);  // 3
    } else if (const int32_t rc = open(batch); rc != ORU_OK) {
        return rc;
    }
    const auto table = Ref<ORUDoVtable>::adopt(oru_do_vtable_new());
    if (table)
        return ask_cursor(batch, table.get());
    // An open cursor that gave no row would be taken for that of the next sibling.
    close_cursor(fetch.ctx);
    return ORU_OK;
}

}  // namespace

void close_cursor(ORUDtlCtx *ctx) {
    if (ctx->cursor != nullptr)
        ctx->cursor->cursor_close(ctx->cursor);
    ctx->cursor = nullptr;
}

int32_t fetch_rows(const Fetch &fetch) {
    ORU_TRACE(Level::detail, "colluri=%s, count=%d", oru_do_uri_get_uri_str(fetch.uri),
              fetch.count);
    const NlistRef selection = attr_select_list(fetch, fetch.root);
    Batch batch{fetch};
    batch.oper_mr = oru_dtl_tree_mr_is_oper(fetch.node) != 0;
    batch.row_name = Ref<ORUDoName>::adopt(oru_do_name_new(name_text(fetch.node->name)));
    if (!batch.row_name || !build_lists(batch, selection.get()))
        return ORU_OK;
    const int32_t result = fetch_batch(batch);
    if (oru_dtl_tree_return_last(fetch.node) != 0)
        keep_last(fetch);
    if (fetch.ctx->cursor != nullptr)
        fetch.ctx->state = ORU_DTL_STATE_STOPPED;
    return result;
}

}  // namespace oru::dtl
