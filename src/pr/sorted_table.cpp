// A whole walk of a collection for a provider whose rows come in the order of their keys.
#include "do/nlist.h"
#include "do/value.h"
#include "do/vlist.h"
#include "do/vtable.h"
#include "frame/require.h"
#include "frame/text.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/pr_walk.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/vtable_sorter.h"

namespace {

using oru::Ref;
using oru::Text;

struct SortedWalk {
    ORUPrCrudxHandler *handler;
    ORUDoUri *uri;
    ORUDoNlist *attrs;
    ORUDoNvlist *where;
    ORUDoNlist *order;
    ORUDoVtable *result;

    Ref<ORUDoNlist> all_attrs{};
    Ref<ORUDoNlist> order_names{};
    Ref<ORUDoVtable> buffer{};
    Ref<ORUDoVlist> iter_list{};
    Ref<ORUDoNlist> empty_order{};
    int32_t index_column = -1;
    int32_t count_column = -1;
    Text directions{};
    ORUVtableSorter *sorter = nullptr;
    uint32_t index = 1;
    int32_t code = ORU_OK;
};

bool make_lists(SortedWalk &walk) {
    walk.all_attrs = oru::make_ref<ORUDoNlist>();
    walk.order_names = oru::make_ref<ORUDoNlist>();
    walk.buffer = oru::make_ref<ORUDoVtable>();
    walk.iter_list = oru::make_ref<ORUDoVlist>();
    walk.empty_order = oru::make_ref<ORUDoNlist>();
    walk.index_column = oru_do_nlist_index_of(walk.attrs, "_resultIndex");
    walk.count_column = oru_do_nlist_index_of(walk.attrs, "_resultCount");
    const auto room = static_cast<size_t>(oru_do_nlist_get_len(walk.order)) + 1;
    walk.directions.reset(
        static_cast<char *>(ph_calloc_named(oru::tag_word(oru::Tag::base), room, 1)));
    return walk.all_attrs && walk.order_names && walk.buffer && walk.iter_list &&
           walk.empty_order && walk.directions;
}

// An attribute that found no place would move the columns behind it.
bool extend_attrs(SortedWalk &walk) {
    ORUDoNlist *all = walk.all_attrs.get();
    if (oru_do_nlist_add_all(all, walk.attrs) < 0)
        return false;
    oru_pr_get_where_and_orderby_attrs(walk.where, walk.order, all, walk.order_names.get(),
                                       walk.directions.get());
    const int32_t where_count = walk.where != nullptr ? oru_do_nvlist_get_len(walk.where) : 0;
    return oru_do_nlist_get_len(all) ==
           oru_do_nlist_get_len(walk.attrs) + oru_do_nlist_get_len(walk.order) + where_count;
}

bool make_sorter(SortedWalk &walk) {
    walk.sorter =
        oru_vtable_sorter_new(oru_do_nlist_get_len(walk.attrs), oru_do_nlist_get_len(walk.order),
                              walk.directions.get(), walk.index_column, walk.count_column);
    return walk.sorter != nullptr;
}

void set_column(ORUDoVlist *row, int32_t column, uint32_t number) {
    if (column < 0)
        return;
    const auto value = Ref<ORUDoValue>::adopt(oru_do_value_new_unsigned_int(number));
    if (value)
        oru_do_vlist_set_value(row, column, value.get());
}

void take_row(SortedWalk &walk, ORUDoVlist *row) {
    if (walk.sorter != nullptr) {
        // A row that is lost for lack of memory is told of at the end; one that cannot be compared
        // is not.
        if (oru_vtable_sorter_add(walk.sorter, row) == ORU_RC_MALLOC)
            walk.code = ORU_RC_MALLOC;
    } else {
        // The count is that of the batch: nobody knows yet how many rows there are.
        const auto batch = static_cast<uint32_t>(oru_do_vtable_get_row_num(walk.buffer.get()));
        set_column(row, walk.index_column, walk.index);
        set_column(row, walk.count_column, batch);
        oru_do_vtable_add(walk.result, row);
    }
    ++walk.index;
}

// Only the last batch ends the walk; failures do not.
void take_batches(SortedWalk &walk) {
    int32_t code = ORU_OK;
    do {
        code = walk.handler->get_next(walk.handler, walk.uri, walk.all_attrs.get(), walk.where,
                                      walk.empty_order.get(), 0, walk.buffer.get(),
                                      walk.iter_list.get());
        for (const auto *item = walk.buffer->first; item != nullptr; item = item->next)
            take_row(walk, item->row);
        oru_do_vtable_clear(walk.buffer.get());
    } while (code != ORU_RC_NO_MORE_VALUE);
}

}  // namespace

int32_t oru_pr_get_sorted_vtable(ORUPrCrudxHandler *handler, ORUDoUri *uri, ORUDoNlist *attrs,
                                 ORUDoNvlist *where, ORUDoNlist *order, int32_t key_count,
                                 const char *const *keys, ORUDoVtable *result) {
    ORU_REQUIRE(handler);
    ORU_REQUIRE(attrs);
    ORU_REQUIRE(result);
    SortedWalk walk{handler, uri, attrs, where, order, result};
    if (!make_lists(walk) || !extend_attrs(walk))
        return ORU_RC_MALLOC;
    if (oru_pr_is_order_by_key(order, keys, key_count) == 0 && !make_sorter(walk))
        return ORU_RC_MALLOC;
    take_batches(walk);
    oru_vtable_sorter_delete(walk.sorter, result);
    return walk.code;
}
