// What a walk keeps from one batch to the next.
#include "do/value.h"
#include "frame/object.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "pr/ctx.h"

namespace {

using oru::Ref;

enum Position { kState, kPreviousKeys, kWhereItemsTaken };

ORUDoVlist *walk_of(ORUPrCtx *ctx) {
    const ORUPrGetNextArgs *args = oru::pr::get_next_args(ctx);
    return args != nullptr ? args->iter_context : nullptr;
}

// The value at a position; null when there is no walk or it is shorter.
ORUDoValue *value_at(ORUPrCtx *ctx, Position position) {
    ORUDoVlist *walk = walk_of(ctx);
    return walk != nullptr ? oru_do_vlist_get_value(walk, position) : nullptr;
}

int32_t put(ORUDoVlist *walk, Position position, ORUDoValue *value) {
    if (value == nullptr)
        return ORU_RC_MALLOC;
    if (oru_do_vlist_get_len(walk) > position) {
        oru_do_vlist_set_value(walk, position, value);
        return ORU_OK;
    }
    while (oru_do_vlist_get_len(walk) < position) {
        if (oru_do_vlist_add_null(walk) < 0)
            return ORU_RC_MALLOC;
    }
    return oru_do_vlist_add(walk, value) < 0 ? ORU_RC_MALLOC : ORU_OK;
}

// The value is made only where there is a walk to keep it.
template <class Make>
int32_t keep(ORUPrCtx *ctx, Position position, Make make) {
    ORUDoVlist *walk = walk_of(ctx);
    if (walk == nullptr)
        return ORU_OK;
    const auto value = Ref<ORUDoValue>::adopt(make());
    return put(walk, position, value.get());
}

}  // namespace

int32_t oru_pr_orucore_ctx_set_iter_context(ORUPrCtx *ctx, const void *bytes, int32_t length) {
    return keep(ctx, kState, [=] { return oru_do_value_new_hex_binary(bytes, length); });
}

int32_t oru_pr_orucore_ctx_get_iter_context(ORUPrCtx *ctx, const uint8_t **bytes_out,
                                            int32_t *length_out) {
    ORUDoValue *value = value_at(ctx, kState);
    if (value == nullptr)
        return ORU_OK;
    ORU_REQUIRE(bytes_out);
    int32_t code = ORU_OK;
    *bytes_out = oru_do_value_get_hex_binary(value, length_out, &code);
    return code;
}

int32_t oru_pr_orucore_ctx_set_num_iter_context(ORUPrCtx *ctx, int32_t n) {
    return keep(ctx, kState, [=] { return oru_do_value_new_int(n); });
}

int32_t oru_pr_orucore_ctx_get_num_iter_context(ORUPrCtx *ctx, int32_t *n_out) {
    ORUDoValue *value = value_at(ctx, kState);
    if (value == nullptr)
        return ORU_OK;
    ORU_REQUIRE(n_out);
    int32_t code = ORU_OK;
    *n_out = oru_do_value_get_int(value, &code);
    return code;
}

int32_t oru_pr_orucore_ctx_set_prev_keys(ORUPrCtx *ctx, ORUDoVlist *vlist) {
    return keep(ctx, kPreviousKeys, [=] { return oru_do_value_new_array(vlist); });
}

ORUDoVlist *oru_pr_orucore_ctx_get_prev_keys(ORUPrCtx *ctx) {
    ORUDoValue *value = value_at(ctx, kPreviousKeys);
    int32_t code = ORU_OK;
    return value != nullptr ? oru_do_value_get_array(value, &code) : nullptr;
}

int32_t oru_pr_orucore_ctx_set_mod_where_clause_index(ORUPrCtx *ctx, int32_t n) {
    return keep(ctx, kWhereItemsTaken,
                [=] { return n != 0 ? oru_do_value_new_int(n) : oru_do_value_new_null(); });
}

int32_t oru_pr_orucore_ctx_get_mod_where_clause_index(ORUPrCtx *ctx, int32_t *n_out) {
    if (walk_of(ctx) == nullptr)
        return ORU_OK;
    ORU_REQUIRE(n_out);
    *n_out = 0;
    ORUDoValue *value = value_at(ctx, kWhereItemsTaken);
    if (value == nullptr || oru_do_value_is_null(value) != 0)
        return ORU_OK;
    int32_t code = ORU_OK;
    *n_out = oru_do_value_get_int(value, &code);
    return code;
}
