// The conditions and the order of a cursor that is about to be opened.
#include <cstring>

#include "do/name.h"
#include "dtl/fetch.h"
#include "dtl/variables.h"
#include "oru/logger.h"
#include "oru/nvlist.h"

namespace oru::dtl {
namespace {

using NlistRef = Ref<ORUDoNlist>;
using NvlistRef = Ref<ORUDoNvlist>;

constexpr uint32_t kListLogLevel = 6;

// Building the text of a list costs more than most messages: only a logger that asks gets it.
template <class List, class Print>
Ref<ORUDoStrbuf> list_text(List *list, Print &&print) {
    if (oru_logger_get_level() < kListLogLevel)
        return {};
    auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (text)
        print(list, 0, text.get());
    return text && oru_do_strbuf_get_err(text.get()) == 0 ? std::move(text) : Ref<ORUDoStrbuf>();
}

void trace_where(ORUDoNvlist *where) {
    if (const auto text = list_text(where, oru_do_nvlist_to_strbuf))
        ORU_TRACE(Level::detail, "where=%s", oru_do_strbuf_to_string(text.get()));
}

void trace_order(ORUDoNlist *order) {
    const auto print = [](ORUDoNlist *list, int32_t tabs, ORUDoStrbuf *text) {
        if (list != nullptr)
            oru_do_nlist_to_strbuf(list, tabs, text);
    };
    if (const auto text = list_text(order, print))
        ORU_TRACE(Level::detail, "order=%s", oru_do_strbuf_to_string(text.get()));
}

// The place of a clause in the list of used ones, or the first empty one; null when it is full.
ORUDoNvlist **used_place(ORUDtlCtx *root_ctx, ORUDoNvlist *clause) {
    for (int32_t i = 0; root_ctx->where_used != nullptr && i < root_ctx->where_count; ++i) {
        ORUDoNvlist **place = &root_ctx->where_used[i];
        if (*place == clause || *place == nullptr)
            return place;
    }
    return nullptr;
}

// Whether the node's clause applies to this cursor; one that applies once is used up by asking.
bool takes_where(const Fetch &fetch) {
    if (fetch.mr_info->use_where_clause_once == 0)
        return true;
    ORUDoNvlist *clause = fetch.mr_info->where_clause;
    ORUDoNvlist **place = used_place(fetch.root_ctx, clause);
    if (place == nullptr)
        return true;
    if (*place == clause)
        return false;
    *place = clause;
    return true;
}

// The pieces between commas. A comma at the very end closes the last piece, and what was left of
// the text, piece and comma, is one more: callers see "a," as "a" and "a,".
NlistRef split_order(const char *text) {
    NlistRef order = NlistRef::adopt(oru_do_nlist_new());
    if (!order)
        return order;
    for (const char *comma; (comma = std::strchr(text, ',')) != nullptr; text = comma + 1) {
        const auto piece =
            Ref<ORUDoName>::adopt(oru_do_name_new_l(text, static_cast<int32_t>(comma - text)));
        oru_do_nlist_add(order.get(), piece.get());
        if (comma[1] == '\0')
            break;
    }
    oru_do_nlist_add_string(order.get(), text);
    return order;
}

NlistRef order_of_variable(const Fetch &fetch, const char *param) {
    const auto value = resolve(fetch.params, param, nullptr, nullptr, nullptr);
    if (!value)
        return {};
    int32_t rc = 0;
    const char *text = oru_do_value_get_string(value.get(), &rc);
    if (rc != 0)
        ORU_TRACE(Level::failure, "Non numeric order param value %s", param);
    return text != nullptr ? split_order(text) : NlistRef();
}

}  // namespace

Ref<ORUDoNvlist> cursor_where(const Fetch &fetch) {
    NvlistRef where;
    if (fetch.mr_info->where_clause != nullptr && takes_where(fetch))
        where = resolve_where(fetch.mr_info->where_clause, fetch.params, fetch.parent, fetch.root);
    trace_where(where.get());
    return where;
}

void mark_where_used(ORUDtlCtx *root_ctx, ORUDtlNode *node) {
    const ORUDtlMrInfo *info = node->mr_info;
    for (ORUDtlNode *child = node->first_child; child != nullptr; child = child->next) {
        if (info != nullptr && info->where_clause != nullptr && info->use_where_clause_once != 0) {
            if (ORUDoNvlist **place = used_place(root_ctx, info->where_clause))
                *place = info->where_clause;
        }
        mark_where_used(root_ctx, child);
    }
}

Ref<ORUDoNlist> cursor_order(const Fetch &fetch) {
    NlistRef order;
    if (const char *param = fetch.mr_info->order_param)
        order = is_variable(param) ? order_of_variable(fetch, param) : split_order(param);
    if (!order)
        order = NlistRef::share(fetch.mr_info->order_by);
    trace_order(order.get());
    return order;
}

}  // namespace oru::dtl
