// What a request context tells about its operation.
#include "oru/properties.h"
#include "pr/ctx.h"

namespace {

using oru::pr::get_next_args;

int32_t code_of(const ORUPrCtx *ctx) {
    return ctx != nullptr ? ctx->op_code : 0;
}

ORUDoProperties *create_props(ORUPrCtx *ctx) {
    switch (code_of(ctx)) {
        case ORU_PR_OP_CREATE:
        case ORU_PR_OP_CREATE_MODE_1:
            return ctx->args.create.props;
        default:
            return nullptr;
    }
}

ORUDoProperties *set_props(ORUPrCtx *ctx) {
    switch (code_of(ctx)) {
        case ORU_PR_OP_SET:
        case ORU_PR_OP_SET_MODE_1:
            return ctx->args.set.props;
        default:
            return nullptr;
    }
}

}  // namespace

int32_t oru_pr_orucore_ctx_get_cur_op_code(ORUPrCtx *ctx) {
    return code_of(ctx);
}

ORUPrCrudxHandler *oru_pr_orucore_ctx_get_crudx_handler(ORUPrCtx *ctx) {
    return ctx != nullptr ? ctx->crudx : nullptr;
}

void oru_pr_orucore_ctx_set_edit_handler(ORUPrCtx *ctx, intptr_t edit_handler) {
    if (ctx != nullptr)
        ctx->edit_handler = edit_handler;
}

intptr_t oru_pr_orucore_ctx_get_edit_handler(ORUPrCtx *ctx) {
    return ctx != nullptr ? ctx->edit_handler : 0;
}

ORUDataIfc *oru_pr_orucore_ctx_get_data_ifc(ORUPrCtx *ctx) {
    switch (code_of(ctx)) {
        case ORU_PR_OP_CREATE:
        case ORU_PR_OP_CREATE_MODE_1:
            return ctx->args.create.data_ifc;
        case ORU_PR_OP_SET:
        case ORU_PR_OP_SET_MODE_1:
            return ctx->args.set.data_ifc;
        case ORU_PR_OP_DELETE:
        case ORU_PR_OP_DELETE_MODE_1:
            return ctx->args.remove.data_ifc;
        default:
            return nullptr;
    }
}

ORUDoUri *oru_pr_orucore_ctx_get_cur_uri(ORUPrCtx *ctx) {
    switch (code_of(ctx)) {
        case ORU_PR_OP_GET_OPER_PROP_VALUES:
        case ORU_PR_OP_GET_CFG_PROP_VALUES:
            return ctx->args.read.uri;
        case ORU_PR_OP_GET_NEXT:
            return ctx->args.get_next.coll_uri;
        case ORU_PR_OP_CREATE:
        case ORU_PR_OP_CREATE_MODE_1:
            return ctx->args.create.parent_uri;
        case ORU_PR_OP_SET:
        case ORU_PR_OP_SET_MODE_1:
            return ctx->args.set.uri;
        case ORU_PR_OP_DELETE:
        case ORU_PR_OP_DELETE_MODE_1:
            return ctx->args.remove.uri;
        case ORU_PR_OP_INVOKE_ACTION:
            return ctx->args.action.uri;
        default:
            return nullptr;
    }
}

ORUDoNlist *oru_pr_orucore_ctx_get_cur_get_nlist(ORUPrCtx *ctx) {
    switch (code_of(ctx)) {
        case ORU_PR_OP_GET_OPER_PROP_VALUES:
        case ORU_PR_OP_GET_CFG_PROP_VALUES:
            return ctx->args.read.nlist;
        case ORU_PR_OP_GET_NEXT:
            return ctx->args.get_next.nlist;
        default:
            return nullptr;
    }
}

ORUDoProperties *oru_pr_orucore_ctx_get_cur_create_props(ORUPrCtx *ctx) {
    return create_props(ctx);
}

ORUDoProperties *oru_pr_orucore_ctx_get_cur_set_props(ORUPrCtx *ctx) {
    return set_props(ctx);
}

ORUDoValue *oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ORUPrCtx *ctx, const char *name) {
    ORUDoProperties *props = create_props(ctx);
    if (props == nullptr)
        props = set_props(ctx);
    return props != nullptr ? oru_do_properties_get_value(props, name) : nullptr;
}

ORUDoProperties *oru_pr_orucore_ctx_get_action_in_props(ORUPrCtx *ctx) {
    return code_of(ctx) == ORU_PR_OP_INVOKE_ACTION ? ctx->args.action.in_props : nullptr;
}

ORUDoNvlist *oru_pr_orucore_ctx_get_where_clause(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->where : nullptr;
}

ORUDoNlist *oru_pr_orucore_ctx_get_orderby(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->order : nullptr;
}

ORUDoCondition *oru_pr_orucore_ctx_get_condition(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->condition : nullptr;
}

ORUDoNlist *oru_pr_orucore_ctx_get_nlist_where(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->nlist_where : nullptr;
}

ORUDoVlist *oru_pr_orucore_ctx_get_vlist_where(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->vlist_where : nullptr;
}

void oru_pr_orucore_ctx_disable_where_clause(ORUPrCtx *ctx) {
    if (ORUPrGetNextArgs *args = get_next_args(ctx))
        args->where_enabled = 0;
}

int32_t oru_pr_orucore_ctx_is_where_clause_enabled(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = get_next_args(ctx);
    return args != nullptr ? args->where_enabled : 1;
}
