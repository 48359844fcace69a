// One call of the walk: passes from the top until something was added.
#include "dtl/walk.h"
#include "frame/trace.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::dtl::Call;

constexpr int32_t kTries = 10;

// Where a pass left the walk, seen from the top. The levels below may have moved all the same: the
// pair is the same after every pass that leaves a level behind, which bounds the passes of a call.
struct Position {
    const ORUDtlNode *dtl_node = nullptr;
    const ORUDoDtree *dtree_node = nullptr;
    bool operator==(const Position &) const = default;
};

Position position_of(const ORUDtlCtx &ctx) {
    return ctx.child != nullptr ? Position{ctx.dtl_node, ctx.dtree_node} : Position{};
}

struct Progress {
    int32_t tries = kTries;
    Position last{};

    // False when the passes lead nowhere.
    bool note(ORUDtlCtx &ctx, Call &call) {
        if (ctx.child == nullptr && ctx.state != ORU_DTL_STATE_STOPPED) {
            ctx.state = ORU_DTL_STATE_FINISHED;
            return true;
        }
        const Position position = position_of(ctx);
        if (call.retry == 0 && position == last && --tries == 0) {
            ORU_TRACE(Level::detail, "... processing not progressing.");
            return false;
        }
        if (call.retry != 0)
            call.node_added = 0;
        last = position;
        return true;
    }
};

int32_t run_passes(Call &call, ORUDtlCtx *dtl_ctx) {
    Progress progress;
    for (;;) {
        call.retry = 0;
        const int32_t rc = oru::dtl::walk(call, 0, dtl_ctx, dtl_ctx->dtl_node, dtl_ctx->dtree_node);
        if (!progress.note(*dtl_ctx, call))
            return rc;
        if (call.count > 0 && call.leaf_count == 0) {
            ORU_TRACE(Level::detail, "Resetting node_added to 0");
            call.node_added = 0;
        }
        if (rc != ORU_OK || dtl_ctx->state == ORU_DTL_STATE_FINISHED || call.node_added != 0)
            return rc;
    }
}

}  // namespace

int32_t oru_dtl_get_next(ORUDataIfc *ifc, ORUDtlCtx *dtl_ctx, ORUDoNvlist *params, int32_t count) {
    ORU_REQUIRE(dtl_ctx);
    ORU_REQUIRE(params);
    ORU_REQUIRE(dtl_ctx->crudx);
    ORU_REQUIRE(dtl_ctx->coll);
    ORU_REQUIRE(dtl_ctx->dtl_node);
    ORU_REQUIRE(dtl_ctx->dtree_node);
    ORU_REQUIRE(ifc);
    ++dtl_ctx->call_count;
    if (dtl_ctx->dtl_node->first_child == nullptr || dtl_ctx->state == ORU_DTL_STATE_FINISHED) {
        ORU_TRACE(Level::detail, "... no more value, no processing");
        return ORU_RC_NO_MORE_VALUE;
    }
    ORU_TRACE(Level::detail, "processing request");
    Call call{dtl_ctx, params, count, dtl_ctx->dtree_node, ifc->get_context_uri(ifc)};
    const int32_t rc = run_passes(call, dtl_ctx);
    const bool failed = rc != ORU_OK && rc != ORU_RC_NO_MORE_VALUE;
    if (dtl_ctx->call_count >= 2 && call.node_added == 0 && !failed) {
        oru_do_dtree_remove_children(dtl_ctx->dtree_node);
        ORU_TRACE(Level::detail, "... no new node added, no more value");
        return ORU_RC_NO_MORE_VALUE;
    }
    return rc;
}
