// The walk: all children of a node of the document, for one result node, and so on for the rows
// that each child gives.
#ifndef ORU_SRC_DTL_WALK_H
#define ORU_SRC_DTL_WALK_H

#include "do/dtree.h"
#include "do/nvlist.h"
#include "do/uri.h"
#include "oru/dtl.h"

namespace oru::dtl {

// One call of oru_dtl_get_next.
struct Call {
    ORUDtlCtx *root_ctx;
    ORUDoNvlist *params;
    int32_t count;
    ORUDoDtree *root_dtree;
    ORUDoUri *base_uri;
    int32_t node_added = 0;  // result nodes made
    int32_t leaf_count = 0;  // rows that count against `count`
    uint8_t retry = 0;       // asks for another pass as though nothing had been added
};

int32_t walk(Call &call, int32_t level, ORUDtlCtx *parent_ctx, ORUDtlNode *dtl_node,
             ORUDoDtree *parent_dtree_node);

// ---- One level while it is walked ----

struct WalkLevel {
    Call &call;
    int32_t number;
    ORUDtlCtx *ctx;
    ORUDtlNode *dtl_node;
    ORUDoDtree *parent;  // the result node that the rows of all children come under
    int32_t entry_added;
    bool no_limit;
    ORUDtlNode *resume;
    int32_t rc = 0;

    // The child at hand.
    ORUDtlNode *ch = nullptr;
    int32_t max_batches = 0;
    bool has_inner = false;
    int32_t fetch = 0;              // rows to ask for
    ORUDoDtree *row = nullptr;      // the first row of the child, or the one to go on with
    ORUDoDtree *resumed = nullptr;  // the latter alone: what stopped below did so in this row

    // The row at hand.
    ORUDoDtree *next_row = nullptr;
    ORUDoDtree *c = nullptr;        // null when flattening took it away
    bool rows_seen = false;         // that there was any
    int32_t delta = 0;              // what the level has added by now
    ORUDoDtree *stop_at = nullptr;  // the row to go on with in the next call

    bool child_stopped() const {
        return ctx->child != nullptr && ctx->child->state == ORU_DTL_STATE_STOPPED;
    }
};

// A level below the top. Behind the record stands what only the walk needs.
struct LevelCtx {
    ORUDtlCtx record;
    int32_t list_at;  // of a list of addresses, the one whose cursor is open
};

inline LevelCtx &level_ctx(const WalkLevel &at) {
    return *reinterpret_cast<LevelCtx *>(at.ctx);
}

// Where to go from a child.
enum class Go { sibling, same_child, end };

// Whether the node stands below the parent of the level. Only the address is looked at.
bool is_row(const WalkLevel &at, const ORUDoDtree *node);

// Whether a code ends the walk.
bool stops(int32_t rc, ORUDtlNode *node);

// Steps 5, 9 and 10: the limits of the child.
void find_max_batches(WalkLevel &at);
bool find_fetch(WalkLevel &at);

// Step 13.
int32_t invoke(WalkLevel &at);

// Steps 17 to 22. False when the level ends there.
bool walk_rows(WalkLevel &at);

// The next call goes on with the child at hand, from its next fetch.
void go_on_here(WalkLevel &at);

// Where to go behind a failure (14, 22), a child without rows (16), and rows (23 to 26).
Go end_with_failure(WalkLevel &at);
Go after_no_rows(WalkLevel &at);
Go after_rows(WalkLevel &at);

}  // namespace oru::dtl

#endif
