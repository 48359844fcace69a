#include "do/dtree.h"
#include "do/name.h"
#include "frame/text.h"
#include "oru/dtl.h"

namespace {

constexpr uint32_t kTag = oru::tag_word(oru::Tag::base);

// Room for every clause of the document. Without memory the clauses apply each time.
void make_where_used(ORUDtlCtx &ctx) {
    const int32_t count = oru_dtl_tree_count_where_clause(ctx.dtl_node);
    if (count < 1)
        return;
    ctx.where_used = static_cast<ORUDoNvlist **>(
        ph_calloc_named(kTag, static_cast<size_t>(count), sizeof(ORUDoNvlist *)));
    if (ctx.where_used != nullptr)
        ctx.where_count = count;
}

}  // namespace

ORUDtlCtx *oru_dtl_ctx_new(ORUDtlNode *dtl_doc, ORUDataIfc *crudx, ORUCollIfc *coll) {
    ORU_REQUIRE(dtl_doc);
    ORU_REQUIRE(crudx);
    ORU_REQUIRE(coll);
    auto *ctx = static_cast<ORUDtlCtx *>(ph_calloc_named(kTag, 1, sizeof(ORUDtlCtx)));
    if (ctx == nullptr)
        return nullptr;
    ctx->crudx = crudx;
    ctx->coll = coll;
    ctx->dtl_node = dtl_doc;
    ctx->dtree_node = oru_do_dtree_new_str(oru::name_text(dtl_doc->name));
    if (ctx->dtree_node == nullptr) {
        oru_dtl_ctx_delete(ctx);
        return nullptr;
    }
    make_where_used(*ctx);
    return ctx;
}

void oru_dtl_ctx_delete(ORUDtlCtx *dtl_ctx) {
    if (dtl_ctx == nullptr)
        return;
    oru_dtl_ctx_delete(dtl_ctx->child);
    if (dtl_ctx->parent != nullptr) {
        dtl_ctx->parent->child = nullptr;
    } else {
        oru::deref(dtl_ctx->dtree_node);
    }
    if (dtl_ctx->where_used != nullptr)
        ph_free_named(dtl_ctx->where_used);
    if (dtl_ctx->cursor != nullptr)
        dtl_ctx->cursor->cursor_close(dtl_ctx->cursor);
    ph_free_named(dtl_ctx);
}

void oru_dtl_ctx_set_debug(ORUDtlCtx *dtl_ctx, uint16_t flag) {
    ORU_REQUIRE(dtl_ctx);
    dtl_ctx->debug = flag;
}
