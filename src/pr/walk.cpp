// Where a batch of a walk starts, and what of its where clause is left to test.
#include <cstring>

#include "do/nvlist.h"
#include "do/vlist.h"
#include "frame/require.h"
#include "oru/nvlist.h"
#include "oru/pr_walk.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "pr/where_item.h"

namespace {

using oru::Ref;

// Both texts up to the last character of the key's, which is that of its comparison.
bool begins_as(const char *name, const char *key) {
    const size_t length = std::strlen(key);
    return length == 0 || std::strncmp(name, key, length - 1) == 0;
}

// The keys in front of the last one, of which nothing but the attribute has to fit.
bool take_leading_keys(ORUDoNvlist &where, int32_t count, const char *const *keys,
                       ORUDoVlist *out_keys) {
    for (int32_t i = 0; i < count; ++i) {
        const ORUDoNvlistItem *item = oru::chain(where).at(i);
        if (item == nullptr || !begins_as(item->name, keys[i]) ||
            oru_do_vlist_add(out_keys, item->value) < 0)
            return false;
    }
    return true;
}

int32_t start_from_first(int32_t key_count, ORUDoVlist *out_keys) {
    oru_do_vlist_clear(out_keys);
    for (int32_t i = 0; i < key_count; ++i)
        oru_do_vlist_add_null(out_keys);
    return ORU_PR_ITER_FIRST;
}

int32_t type_by_last_key(const char *name, const char *key) {
    if (std::strcmp(name, key) == 0)
        return ORU_PR_ITER_WHERE;
    return begins_as(name, key) ? ORU_PR_ITER_KEYS : ORU_PR_ITER_FIRST;
}

// The items from `from` on that `stay`. A list that is not whole is none: nothing is handed over.
template <class Stays>
void hand_over_items(ORUDoNvlist &where, int32_t from, Stays stays, ORUDoNvlist **out_where) {
    auto list = oru::make_ref<ORUDoNvlist>();
    if (!list)
        return;
    for (const auto *item = oru::chain(where).at(from); item != nullptr; item = item->next) {
        if (stays(*item) && oru_do_nvlist_add(list.get(), item->name, item->value) < 0)
            return;
    }
    *out_where = list.release();
}

bool is_filled(ORUDoVlist *walk, int32_t position) {
    ORUDoValue *value = oru_do_vlist_get_value(walk, position);
    return value != nullptr && oru_do_value_is_null(value) == 0;
}

ORUDoVlist *previous_keys(ORUDoVlist *walk) {
    ORUDoValue *value = oru_do_vlist_get_value(walk, 1);
    int32_t code = ORU_OK;
    return value != nullptr ? oru_do_value_get_array(value, &code) : nullptr;
}

}  // namespace

int32_t get_iter_ctx_from_where_clause(ORUDoNvlist *where, int32_t key_count,
                                       const char *const *keys, ORUDoVlist *out_keys,
                                       ORUDoNvlist **out_where) {
    ORU_REQUIRE(where);
    ORU_REQUIRE_AS(keys != nullptr || key_count < 1, "keys");
    ORU_REQUIRE(out_keys);
    ORU_REQUIRE(out_where);
    const int32_t last = key_count - 1;
    if (!take_leading_keys(*where, last, keys, out_keys))
        return start_from_first(key_count, out_keys);
    const ORUDoNvlistItem *item = oru::chain(*where).at(last);
    if (item == nullptr)
        return start_from_first(key_count, out_keys);
    const int32_t type = type_by_last_key(item->name, keys[last]);
    // The keys in front stay where they are.
    if (type == ORU_PR_ITER_FIRST)
        return type;
    if (oru_do_vlist_add(out_keys, item->value) < 0)
        return start_from_first(key_count, out_keys);
    hand_over_items(
        *where, key_count, [](const ORUDoNvlistItem &) { return true; }, out_where);
    return type;
}

int32_t get_modified_where_from_where_clause(ORUPrCtx *ctx, ORUDoNvlist *where,
                                             ORUDoNvlist **out_where) {
    ORU_REQUIRE(where);
    ORU_REQUIRE(out_where);
    int32_t skip = 0;
    const int32_t code = oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &skip);
    if (code != ORU_OK || skip < 0)
        return code;
    ORUPrCrudxHandler *handler = oru_pr_orucore_ctx_get_crudx_handler(ctx);
    const auto is_known = [handler](const ORUDoNvlistItem &item) {
        return !oru::pr::WhereWord(item.name).is_unknown_to(handler);
    };
    hand_over_items(*where, skip, is_known, out_where);
    return ORU_OK;
}

int32_t oru_pr_get_iter_ctx_types(ORUPrCtx *ctx, ORUDoVlist *iter_context, int32_t key_count,
                                  const char *const *keys, int32_t *type_out, ORUDoVlist *out_keys,
                                  ORUDoNvlist **out_where) {
    ORU_REQUIRE(iter_context);
    ORU_REQUIRE(type_out);
    ORU_REQUIRE(out_keys);
    ORU_REQUIRE(out_where);
    ORUDoNvlist *where = oru_pr_orucore_ctx_get_where_clause(ctx);
    *type_out = is_filled(iter_context, 0) ? ORU_PR_ITER_STATE : ORU_PR_ITER_FIRST;
    if (ORUDoVlist *last_keys = previous_keys(iter_context)) {
        if (*type_out != ORU_PR_ITER_STATE)
            *type_out = ORU_PR_ITER_KEYS;
        if (oru_do_vlist_add_all(out_keys, last_keys) < 0)
            return ORU_RC_MALLOC;
    } else if (*type_out == ORU_PR_ITER_FIRST && where != nullptr) {
        *type_out = get_iter_ctx_from_where_clause(where, key_count, keys, out_keys, out_where);
        // Later batches pass over the items that gave the position.
        oru_pr_orucore_ctx_set_mod_where_clause_index(
            ctx, *type_out != ORU_PR_ITER_FIRST ? key_count : 0);
        return ORU_OK;
    }
    if (where == nullptr || where->count == 0 || *out_where != nullptr)
        return ORU_OK;
    return get_modified_where_from_where_clause(ctx, where, out_where);
}
