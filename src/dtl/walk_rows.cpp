// Steps 17 to 22: the walk into each row of a child, and the rules that end it.
#include "dtl/walk.h"

namespace oru::dtl {
namespace {

enum class AfterRow { next_row, rows_done, end_of_level };

ORUDoDtree *take_next_row(WalkLevel &at) {
    ORUDoDtree *row = at.next_row;
    if (row != nullptr)
        at.next_row = row->next;
    return row;
}

// Flattening puts the rows of a finished level in the place of the row that they came under.
bool is_still_there(const WalkLevel &at, const ORUDoDtree *row) {
    return oru_dtl_tree_flatten(at.ch) == 0 || is_row(at, row);
}

void hide_rows_behind(const WalkLevel &at) {
    if (at.c != nullptr)
        oru_do_dtree_hide_children(at.parent, at.c, 1);
}

AfterRow stop_at_row(WalkLevel &at) {
    at.ctx->state = ORU_DTL_STATE_STOPPED;
    return AfterRow::rows_done;
}

// 20, first rule: the call has its rows.
bool has_enough(const WalkLevel &at) {
    return at.call.count > 0 && at.has_inner && at.call.leaf_count >= at.call.count;
}

// True when there is a row to go on with.
bool stops_with_enough(WalkLevel &at) {
    ORU_TRACE(Level::detail, "Got enough leaf_node (%d) for  count %d ", at.call.leaf_count,
              at.call.count);
    at.stop_at = at.child_stopped() ? at.c : take_next_row(at);
    if (at.stop_at == nullptr)
        return false;
    hide_rows_behind(at);
    return true;
}

// 20, second rule: of rows that are there for their children, one with nothing to show is hidden.
void hide_without_visible_children(const WalkLevel &at) {
    if (at.call.count > 0 && oru_dtl_tree_return_w_child(at.ch) != 0 && at.c != nullptr &&
        oru_do_dtree_get_child_count(at.c) > 0 && oru_do_dtree_get_unhidden_child_count(at.c) == 0)
        oru_do_dtree_hide_node(at.c, 1);
}

// 21, first rule: a row that is there for its children and has none does not count.
bool is_without_children(const WalkLevel &at) {
    return oru_dtl_tree_return_w_child(at.ch) != 0 && at.c != nullptr && at.c->children == nullptr;
}

void drop_without_children(WalkLevel &at) {
    oru_do_dtree_hide_node(at.c, 1);
    if (at.delta != 1)
        return;
    --at.call.node_added;
    if (oru_dtl_tree_get_batch_size(at.ch) == 1)
        at.call.retry = 1;
}

// 21, second rule: one row a call. True when there is a row to go on with. Of a row that flattening
// took away only the address is looked at.
bool stops_after_one(WalkLevel &at, const ORUDoDtree *row) {
    if (at.delta != 0) {
        at.stop_at = at.child_stopped() ? at.c : at.next_row;
    } else {
        if (at.ctx->dtree_node != row) {
            ORU_TRACE(Level::detail, "Artificially increment");
            ++at.call.node_added;
        }
        at.stop_at = at.next_row;
        if (at.stop_at != nullptr)
            oru_dtl_ctx_delete(at.ctx->child);
    }
    at.ctx->dtree_node = at.c;
    hide_rows_behind(at);
    return at.stop_at != nullptr;
}

// 21, third rule: the level below stopped in the middle of this row.
AfterRow stop_with_the_child(WalkLevel &at) {
    at.stop_at = at.c;
    if (!at.no_limit || oru_dtl_tree_return_w_child(at.ch) != 0)
        hide_rows_behind(at);
    return stop_at_row(at);
}

// 22.
AfterRow after_rules(WalkLevel &at) {
    if (oru_dtl_tree_return_one(at.ch) != 0 && at.call.node_added == 1) {
        at.stop_at = nullptr;
        return at.ctx->cursor == nullptr ? AfterRow::end_of_level : stop_at_row(at);
    }
    if (stops(at.rc, at.ch)) {
        ORU_TRACE(Level::detail, "STOP ENGINE");
        return AfterRow::end_of_level;
    }
    return AfterRow::next_row;
}

// What stopped below belongs to the row in which it did.
void leave_other_row(WalkLevel &at, const ORUDoDtree *row) {
    if (std::exchange(at.resumed, nullptr) != row)
        oru_dtl_ctx_delete(at.ctx->child);
}

AfterRow walk_row(WalkLevel &at, ORUDoDtree *row) {
    leave_other_row(at, row);
    // 19.
    at.rc = walk(at.call, at.number + 1, at.ctx, at.ch, row);
    at.delta = at.call.node_added - at.entry_added;
    at.c = is_still_there(at, row) ? row : nullptr;
    // 20.
    if (has_enough(at))
        return stops_with_enough(at) ? stop_at_row(at) : after_rules(at);
    hide_without_visible_children(at);
    // 21.
    if (is_without_children(at)) {
        drop_without_children(at);
        return after_rules(at);
    }
    if (at.call.count != 0 && oru_dtl_tree_return_one(at.ch) != 0 && stops_after_one(at, row))
        return stop_at_row(at);
    if (at.child_stopped())
        return stop_with_the_child(at);
    return after_rules(at);
}

// 17.
void begin_rows(WalkLevel &at) {
    oru_do_dtree_hide_node(at.row, 0);
    oru_do_dtree_hide_children(at.parent, at.row, 0);
    at.next_row = at.parent->children;
    at.c = nullptr;
    at.rows_seen = false;
    at.delta = 0;
    at.stop_at = nullptr;
}

// 18: rows in front of the one to begin with are those of siblings, or were given already.
bool is_passed_over(WalkLevel &at, ORUDoDtree *row) {
    if (at.row == nullptr)
        return false;
    if (row == at.row) {
        at.row = nullptr;
        return false;
    }
    if (at.call.count > 0 || oru_dtl_tree_return_one(at.ch) != 0)
        oru_do_dtree_hide_node(row, 1);
    return true;
}

}  // namespace

bool walk_rows(WalkLevel &at) {
    begin_rows(at);
    while (ORUDoDtree *row = take_next_row(at)) {
        at.rows_seen = true;
        if (is_passed_over(at, row))
            continue;
        const AfterRow after = walk_row(at, row);
        if (after != AfterRow::next_row)
            return after == AfterRow::rows_done;
    }
    at.stop_at = nullptr;
    return true;
}

}  // namespace oru::dtl
