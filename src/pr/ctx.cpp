#include "pr/ctx.h"

#include "do/nvlist.h"
#include "frame/require.h"
#include "frame/trace.h"
#include "oru/condition.h"
#include "oru/nlist.h"
#include "oru/rc.h"
#include "oru/vlist.h"
#include "pr/records.h"
#include "pr/where_item.h"

namespace {

using oru::Level;
using oru::pr::make_zeroed;

using Arguments = decltype(ORUPrCtx::args);

int32_t code_by_mode(int32_t mode, int32_t code, int32_t other) {
    return mode == 1 ? other : code;
}

// Both records, or neither.
int32_t make_ctx(int32_t op_code, ORUPrCrudxHandler *crudx, const Arguments &args,
                 ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp) {
    auto *ctx = make_zeroed<ORUPrCtx>();
    auto *inst = ctx != nullptr ? oru_pr_instance_ctx_new() : nullptr;
    if (inst == nullptr) {
        oru::pr::free_record(ctx);
        return ORU_RC_MALLOC;
    }
    ctx->op_code = op_code;
    ctx->crudx = crudx;
    ctx->args = args;
    *oru_ctxp = ctx;
    *inst_ctxp = inst;
    return ORU_OK;
}

int32_t new_get_prop_values(int32_t op_code, ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                            ORUDoNlist *nlist, ORUDoVlist *vlist, ORUPrCtx **oru_ctxp,
                            ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(uri);
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    return make_ctx(op_code, crudx, {.read = {uri, nlist, vlist}}, oru_ctxp, inst_ctxp);
}

// From the caller's own list, whatever the values: comparing them would leave some behind.
void drop_unknown_items(ORUDoNvlist &where, ORUPrCrudxHandler *crudx) {
    oru::delete_items(where, [crudx](const ORUDoNvlistItem &item) {
        const oru::pr::WhereWord word(item.name);
        if (!word.is_unknown_to(crudx))
            return false;
        ORU_TRACE(Level::reference, "Ignoring unknown attribute %s found in where clause",
                  word.text());
        return true;
    });
}

}  // namespace

int32_t oru_pr_ctx_new_get_oper_prop_values(ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                                            ORUDoNlist *nlist, ORUDoVlist *vlist,
                                            ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp) {
    return new_get_prop_values(ORU_PR_OP_GET_OPER_PROP_VALUES, crudx, uri, nlist, vlist, oru_ctxp,
                               inst_ctxp);
}

int32_t oru_pr_ctx_new_get_cfg_prop_values(ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                                           ORUDoNlist *nlist, ORUDoVlist *vlist,
                                           ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp) {
    return new_get_prop_values(ORU_PR_OP_GET_CFG_PROP_VALUES, crudx, uri, nlist, vlist, oru_ctxp,
                               inst_ctxp);
}

int32_t oru_pr_ctx_new_get_next(ORUPrCrudxHandler *crudx, ORUDoUri *coll_uri, ORUDoNlist *nlist,
                                ORUDoNvlist *where, ORUDoNlist *order, int32_t count,
                                ORUDoVtable *value_table, ORUDoVlist *iter_context,
                                ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(coll_uri);
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(value_table);
    ORU_REQUIRE(iter_context);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    const Arguments args{.get_next = {coll_uri, nlist, where, order, count, value_table,
                                      iter_context, 1, nullptr, nullptr, nullptr}};
    const int32_t code = make_ctx(ORU_PR_OP_GET_NEXT, crudx, args, oru_ctxp, inst_ctxp);
    if (code != ORU_OK)
        return code;
    ORUPrGetNextArgs &own = (*oru_ctxp)->args.get_next;
    if (where != nullptr) {
        drop_unknown_items(*where, crudx);
        own.condition = oru_do_condition_new_from_where(where);
    }
    own.nlist_where = oru_do_nlist_new();
    own.vlist_where = oru_do_vlist_new();
    return ORU_OK;
}

int32_t oru_pr_ctx_new_create_resource(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc,
                                       ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                       ORUDoName *child_mr_typename, ORUDoProperties *props,
                                       int32_t mode, ORUPrCtx **oru_ctxp,
                                       ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(data_ifc);
    ORU_REQUIRE(parent_uri);
    ORU_REQUIRE(child_ref_name);
    ORU_REQUIRE(child_mr_typename);
    ORU_REQUIRE(props);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    return make_ctx(code_by_mode(mode, ORU_PR_OP_CREATE, ORU_PR_OP_CREATE_MODE_1), crudx,
                    {.create = {data_ifc, parent_uri, child_ref_name, child_mr_typename, props}},
                    oru_ctxp, inst_ctxp);
}

int32_t oru_pr_ctx_new_set_properties(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc, ORUDoUri *uri,
                                      ORUDoProperties *props, int32_t mode, ORUPrCtx **oru_ctxp,
                                      ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(data_ifc);
    ORU_REQUIRE(uri);
    ORU_REQUIRE(props);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    return make_ctx(code_by_mode(mode, ORU_PR_OP_SET, ORU_PR_OP_SET_MODE_1), crudx,
                    {.set = {data_ifc, uri, props}}, oru_ctxp, inst_ctxp);
}

int32_t oru_pr_ctx_new_delete_resource(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc,
                                       ORUDoUri *uri, int32_t mode, ORUPrCtx **oru_ctxp,
                                       ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(data_ifc);
    ORU_REQUIRE(uri);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    return make_ctx(code_by_mode(mode, ORU_PR_OP_DELETE, ORU_PR_OP_DELETE_MODE_1), crudx,
                    {.remove = {data_ifc, uri}}, oru_ctxp, inst_ctxp);
}

int32_t oru_pr_ctx_new_invoke_action(ORUPrCrudxHandler *crudx, ORUDoUri *uri, ORUDoName *action,
                                     ORUDoProperties *in_props, ORUDoProperties *out_props,
                                     ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp) {
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(action);
    ORU_REQUIRE(in_props);
    ORU_REQUIRE(out_props);
    ORU_REQUIRE(oru_ctxp);
    ORU_REQUIRE(inst_ctxp);
    return make_ctx(ORU_PR_OP_INVOKE_ACTION, crudx, {.action = {uri, action, in_props, out_props}},
                    oru_ctxp, inst_ctxp);
}

void oru_pr_ctx_delete(ORUPrCtx *ctx, ORUPrInstanceCtx *inst) {
    if (const ORUPrGetNextArgs *own = oru::pr::get_next_args(ctx)) {
        oru_do_condition_deref(own->condition);
        oru_do_nlist_deref(own->nlist_where);
        oru_do_vlist_deref(own->vlist_where);
    }
    oru::pr::free_record(ctx);
    oru::pr::free_record(inst);
}

ORUPrInstanceCtx *oru_pr_instance_ctx_new() {
    return make_zeroed<ORUPrInstanceCtx>();
}

ORUPrHexData *oru_pr_hex_data_new() {
    return make_zeroed<ORUPrHexData>();
}
