// The walk of one level. Its steps have the numbers of docs/walk.md, which the functions carry; 5,
// 9 and 10 stand in walk_limits.cpp, 13 in walk_invoke.cpp, 17 to 22 in walk_rows.cpp, and where it
// goes on behind them, 23 to 26, in walk_stop.cpp.
#include "dtl/walk.h"

#include "do/name.h"
#include "frame/text.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

constexpr uint32_t kTag = tag_word(Tag::base);

// 1. The owner of the top context may write the byte from another thread.
bool is_canceled(const Call &call) {
    if (__atomic_load_n(&call.root_ctx->canceled, __ATOMIC_RELAXED) == 0)
        return false;
    ORU_TRACE(Level::detail, "Canceled");
    return true;
}

// 3. The context of the level: that of the last call, or a new one. Null when memory runs out.
ORUDtlCtx *enter(ORUDtlCtx *parent_ctx, ORUDtlNode *dtl_node) {
    if (parent_ctx->child != nullptr)
        return parent_ctx->child;
    auto *level = static_cast<LevelCtx *>(ph_calloc_named(kTag, 1, sizeof(LevelCtx)));
    if (level == nullptr)
        return nullptr;
    ORUDtlCtx *ctx = &level->record;
    ctx->debug = parent_ctx->debug;
    ctx->crudx = parent_ctx->crudx;
    ctx->coll = parent_ctx->coll;
    ctx->dtl_node = dtl_node;
    ctx->parent = parent_ctx;
    parent_ctx->child = ctx;
    return ctx;
}

// 8. True when the cursor has had its fetches.
bool is_at_max_batches(WalkLevel &at) {
    if (at.max_batches < 1 || at.ctx->batches < at.max_batches)
        return false;
    ORU_TRACE(Level::detail, "max_batches reached, returning");
    at.ctx->batches = 0;
    at.rc = ORU_RC_NO_MORE_VALUE;
    return true;
}

// The last row of `return="one"` is compared with rows to come, one of which may get the memory of
// a row that went.
void forget_row_that_went(WalkLevel &at) {
    if (at.ctx->dtree_node != nullptr && !is_row(at, at.ctx->dtree_node))
        at.ctx->dtree_node = nullptr;
}

// Whoever owns the top context clears the results as it likes, and a level above that went on to
// its next row dropped the one before: the row to go on with may be gone.
bool has_lost_row(const WalkLevel &at) {
    return at.row != nullptr && !is_row(at, at.row);
}

// What stands below a lost row cannot go on. The child can where its cursor has more rows; false
// when it has none.
bool go_on_behind_lost_row(WalkLevel &at) {
    at.row = nullptr;
    oru_dtl_ctx_delete(at.ctx->child);
    if (at.ctx->cursor == nullptr)
        at.resume = nullptr;
    return at.ctx->cursor != nullptr;
}

// 11. False for a child in front of the one at which the last call stopped.
bool is_reached(WalkLevel &at) {
    if (at.resume == nullptr)
        return true;
    const char *name = name_text(at.ch->name);
    const char *op = oru_dtl_tree_get_op_str(at.ch->op);
    if (at.ch != at.resume) {
        ORU_TRACE(Level::detail, "[%d]Skipping dtl_ch=<%s> op=%s", at.number, name, op);
        return false;
    }
    ORU_TRACE(Level::detail, "[%d]Reentering dtl_ch=<%s> op=%s", at.number, name, op);
    at.row = std::exchange(at.ctx->dtree_ch, nullptr);
    if (has_lost_row(at))
        return go_on_behind_lost_row(at);
    if (at.row != nullptr && oru_dtl_tree_is_collection_op(at.resume) != 0) {
        ORU_TRACE(Level::detail, "Remove the visited peers");
        oru_do_dtree_remove_visited_peers(at.row);
        forget_row_that_went(at);
    }
    at.resumed = at.row;
    return true;
}

// 15. From the entry of the level, so that the rows of an earlier sibling count again.
void count_leaves(WalkLevel &at) {
    if (!at.has_inner)
        at.call.leaf_count += at.call.node_added - at.entry_added;
}

// 16.
bool has_nothing_to_descend(const WalkLevel &at) {
    return at.row == nullptr || (!at.has_inner && !at.no_limit && at.call.leaf_count == 0);
}

// 5 to 26.
Go walk_child(WalkLevel &at) {
    find_max_batches(at);           // 5
    at.row = at.resumed = nullptr;  // 6
    at.has_inner = oru_dtl_tree_has_inner_mr_get(at.ch) != 0;
    if (at.ch->op == ORU_DTL_OP_NOOP)  // 7
        return Go::sibling;
    if (is_at_max_batches(at))  // 8
        return Go::end;
    if (!find_fetch(at))  // 9, 10
        return Go::end;
    if (!is_reached(at))  // 11
        return Go::sibling;
    if (at.row == nullptr) {      // 12
        at.rc = invoke(at);       // 13
        if (stops(at.rc, at.ch))  // 14
            return end_with_failure(at);
    }
    count_leaves(at);                // 15
    if (has_nothing_to_descend(at))  // 16
        return after_no_rows(at);
    return walk_rows(at) ? after_rows(at) : end_with_failure(at);  // 17 to 22, 23 to 26
}

// The rows that take the place of the one above still name that one as their parent.
void flatten(ORUDoDtree &above, ORUDoDtree *row) {
    oru_do_dtree_flatten(&above, row, 7);
    for (ORUDoDtree *child = above.children; child != nullptr; child = child->next)
        child->parent = &above;
}

// 27 and 28. A level that stopped keeps its context for the next call.
int32_t leave(WalkLevel &at) {
    if (at.ctx->state == ORU_DTL_STATE_STOPPED) {
        at.ctx->dtl_node = at.dtl_node;
        return at.rc;
    }
    oru_dtl_ctx_delete(at.ctx);
    ORUDoDtree *above = oru_do_dtree_get_parent(at.parent);
    if (oru_dtl_tree_flatten(at.dtl_node) != 0 && above != nullptr)
        flatten(*above, at.parent);
    return at.rc;
}

}  // namespace

bool is_row(const WalkLevel &at, const ORUDoDtree *node) {
    const ORUDoDtree *child = at.parent->children;
    while (child != nullptr && child != node)
        child = child->next;
    return child != nullptr;
}

bool stops(int32_t rc, ORUDtlNode *node) {
    const bool goes_on = oru_dtl_tree_continue_on_error(node) != 0;
    return rc == ORU_RC_CANCELED || rc > (goes_on ? ORU_RC_GENERAL - 1 : ORU_RC_NO_MORE_VALUE);
}

int32_t walk(Call &call, int32_t level, ORUDtlCtx *parent_ctx, ORUDtlNode *dtl_node,
             ORUDoDtree *parent_dtree_node) {
    ORU_REQUIRE(dtl_node);
    ORU_REQUIRE(parent_dtree_node);
    if (is_canceled(call))  // 1
        return ORU_RC_CANCELED;
    ORUDtlCtx *ctx = enter(parent_ctx, dtl_node);  // 3
    if (ctx == nullptr)
        return ORU_RC_MALLOC;
    ctx->state = ORU_DTL_STATE_FINISHED;  // 4
    WalkLevel at{.call = call,
                 .number = level,
                 .ctx = ctx,
                 .dtl_node = dtl_node,
                 .parent = parent_dtree_node,
                 .entry_added = call.node_added,  // 2
                 .no_limit = call.count < 1,
                 .resume = ctx->dtl_ch};
    forget_row_that_went(at);
    at.ch = dtl_node->first_child;
    while (at.ch != nullptr) {
        const Go go = walk_child(at);
        if (go == Go::sibling)
            at.ch = at.ch->next;
        if (go == Go::end)
            break;
    }
    return leave(at);
}

}  // namespace oru::dtl
