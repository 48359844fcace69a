#ifndef ORU_SRC_PR_CTX_H
#define ORU_SRC_PR_CTX_H

#include "oru/pr_ctx.h"

namespace oru::pr {

// The arguments of a walk; null for any other operation and for no context.
inline ORUPrGetNextArgs *get_next_args(ORUPrCtx *ctx) {
    return ctx != nullptr && ctx->op_code == ORU_PR_OP_GET_NEXT ? &ctx->args.get_next : nullptr;
}

}  // namespace oru::pr

#endif
