// Where a level goes on behind a child, and how it stops so that the next call finds its way back.
#include "do/error.h"
#include "do/name.h"
#include "do/strbuf.h"
#include "dtl/fetch.h"
#include "dtl/walk.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

// The count of fetches belongs to a cursor; without one the next sibling begins anew.
Go to_sibling(WalkLevel &at) {
    at.resume = nullptr;
    // Rows that count as no leaves, and a fetch that ran out of memory before it asked its cursor,
    // leave it to nobody.
    close_cursor(at.ctx);
    at.ctx->batches = 0;
    return Go::sibling;
}

// 23. The last of several batches that a document allows says so.
void mark_last_batch(const WalkLevel &at) {
    if (at.max_batches < 2 || at.ctx->batches != at.max_batches)
        return;
    const auto name = Ref<ORUDoName>::adopt(oru_do_name_new("_maxBatch"));
    const auto words = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    ORUDoDtree *mark = name && words ? oru_do_dtree_add_child(at.parent, name.get()) : nullptr;
    if (mark == nullptr)
        return;
    strbuf_append(*words, "Last batch of ");
    strbuf_append(*words, name_text(at.ch->name));
    const auto error = Ref<ORUDoError>::adopt(
        oru_do_error_new(ORU_RC_NO_MORE_VALUE, oru_do_strbuf_to_string(words.get())));
    oru_do_dtree_set_error(mark, error.get());
}

void trace_stop(const WalkLevel &at) {
    ORUDoUri *uri = at.stop_at != nullptr ? oru_do_dtree_get_mr_uri(at.stop_at) : nullptr;
    ORU_TRACE(Level::detail, "[%d]Stopped at <%s> op=%s, (%s:%s)", at.number,
              name_text(at.ch->name), oru_dtl_tree_get_op_str(at.ch->op),
              at.stop_at != nullptr ? name_text(at.stop_at->name) : "",
              uri != nullptr ? oru_do_uri_get_uri_str(uri) : "");
}

// Whether no other child of the level does anything.
bool is_alone(const WalkLevel &at) {
    const ORUDtlNode *child = at.dtl_node->first_child;
    while (child != nullptr && (child == at.ch || child->op == ORU_DTL_OP_NOOP))
        child = child->next;
    return child == nullptr;
}

// 24. Where the next call goes on.
Go stop_level(WalkLevel &at) {
    trace_stop(at);
    at.ctx->dtl_ch = at.stop_at != nullptr || at.rows_seen ? at.ch : at.ch->next;
    at.ctx->dtree_ch = at.stop_at;
    return Go::end;
}

// 26. The cursor is open: a batch is complete, or the next fetch follows.
Go after_batch(WalkLevel &at) {
    at.resume = nullptr;
    if (at.delta <= 0 || at.fetch <= 0 || at.ctx->child != nullptr)
        return Go::same_child;
    ORU_TRACE(Level::detail, "batched subquery completed");
    go_on_here(at);
    return Go::end;
}

}  // namespace

void go_on_here(WalkLevel &at) {
    at.ctx->state = ORU_DTL_STATE_STOPPED;
    at.ctx->dtl_ch = at.ch;
    at.ctx->dtree_ch = nullptr;
}

// 14 and 22. A level whose cursor is open stays, and goes on with the next batch.
Go end_with_failure(WalkLevel &at) {
    if (at.ctx->state == ORU_DTL_STATE_STOPPED)
        go_on_here(at);
    return Go::end;
}

// 16. Rows that were actions, or no resources, leave nothing to descend into, but the cursor may
// have more of them: the level stops, since the next sibling would take the cursor for its own. A
// child without siblings that do something needs no place to go on: the next call finds it first.
Go after_no_rows(WalkLevel &at) {
    if (at.call.count > 0)
        oru_do_dtree_hide_node(at.parent, 1);
    if (at.ctx->state != ORU_DTL_STATE_STOPPED)
        return to_sibling(at);
    if (is_alone(at)) {
        at.ctx->dtl_ch = nullptr;
        at.ctx->dtree_ch = nullptr;
        return Go::end;
    }
    at.stop_at = nullptr;
    trace_stop(at);
    go_on_here(at);
    return Go::end;
}

// 23 to 26.
Go after_rows(WalkLevel &at) {
    mark_last_batch(at);
    if (at.ctx->state == ORU_DTL_STATE_STOPPED)
        return stop_level(at);
    return at.ctx->cursor == nullptr ? to_sibling(at) : after_batch(at);  // 25
}

}  // namespace oru::dtl
