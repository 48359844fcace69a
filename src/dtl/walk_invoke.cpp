// Step 13: what a child of the document gives for the result node above.
#include "do/error.h"
#include "do/name.h"
#include "dtl/fetch.h"
#include "dtl/uri_build.h"
#include "dtl/variables.h"
#include "dtl/walk.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

// A node that stands for itself: one that carries an error, or a container.
void add_plain_row(WalkLevel &at) {
    at.row = oru_do_dtree_add_child(at.parent, at.ch->name);
    if (at.row == nullptr)
        return;
    ++at.call.node_added;
    if (at.ch->error != nullptr)
        oru_do_dtree_set_error(at.row, at.ch->error);
}

int32_t fetch_one(WalkLevel &at, Ref<ORUDoUri> given) {
    const auto uri = absolute_uri(std::move(given), at.call.base_uri);
    return dispatch({.level = at.number,
                     .root_ctx = at.call.root_ctx,
                     .ctx = at.ctx,
                     .params = at.call.params,
                     .node = at.ch,
                     .mr_info = at.ch->mr_info,
                     .uri = uri.get(),
                     .parent = at.parent,
                     .root = at.call.root_dtree,
                     .count = at.fetch,
                     .row = &at.row,
                     .node_added = &at.call.node_added,
                     .retry = &at.call.retry});
}

// An element that is no address is passed over; the first failure ends the list. So does a cursor
// that has more rows: the next address would take it for its own. The next fetch goes on with it.
int32_t fetch_list(WalkLevel &at, const ORUDoVlist &list) {
    int32_t &list_at = level_ctx(at).list_at;
    if (at.ctx->cursor == nullptr)
        list_at = 0;
    int32_t rc = ORU_OK;
    int32_t index = 0;
    for (auto *item = list.first; item != nullptr; item = item->next, ++index) {
        auto uri = index >= list_at ? value_to_uri(item->value) : Ref<ORUDoUri>();
        if (!uri)
            continue;
        rc = fetch_one(at, std::move(uri));
        list_at = index;
        if (rc > ORU_RC_NO_MORE_VALUE || at.ctx->cursor != nullptr)
            break;
    }
    return rc;
}

}  // namespace

int32_t invoke(WalkLevel &at) {
    ORU_TRACE(Level::detail, "[%d]Invoking <%s> op=%s", at.number, name_text(at.ch->name),
              oru_dtl_tree_get_op_str(at.ch->op));
    if (at.ch->error != nullptr || at.ch->op == ORU_DTL_OP_TRAVERSE) {
        add_plain_row(at);
        return ORU_OK;
    }
    if (at.ch->mr_info == nullptr || at.ch->mr_info->uri == nullptr)
        return ORU_OK;
    BuiltUri built = build_uri(
        {at.ch->mr_info->uri, at.call.params, at.parent, at.call.root_dtree, at.call.base_uri});
    if (built.failed)
        return ORU_RC_INVALID_URI;
    if (built.uri)
        return fetch_one(at, std::move(built.uri));
    return built.list ? fetch_list(at, *built.list) : ORU_OK;
}

}  // namespace oru::dtl
