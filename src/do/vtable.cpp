#include "do/vtable.h"

#include "do/ntlist.h"
#include "do/strbuf.h"
#include "do/vlist.h"
#include "frame/iter.h"
#include "oru/ntlist.h"
#include "oru/vlist.h"

namespace {

void release_rows(ORUDoVtable &table) {
    table.last = nullptr;
    for (ORUDoVtableItem *item = std::exchange(table.first, nullptr); item != nullptr;) {
        ORUDoVtableItem *next = item->next;
        oru::deref(item->row);
        oru::free_element(item);
        item = next;
    }
}

int32_t print(ORUDoVtable *vtable, ORUDoStrbuf *strbuf,
              int32_t (*print_row)(ORUDoVlist *, int32_t, ORUDoStrbuf *)) {
    if (vtable == nullptr)
        return 0;
    oru_do_strbuf_add_string(strbuf, "[\n");
    for (const ORUDoVtableItem *item = vtable->first; item != nullptr; item = item->next) {
        print_row(item->row, 0, strbuf);
        if (item->next != nullptr)
            oru_do_strbuf_add_string(strbuf, ",\n");
    }
    oru_do_strbuf_add_string(strbuf, "]\n");
    return 0;
}

}  // namespace

void oru::ObjectType<ORUDoVtable>::release_members(ORUDoVtable &self) {
    release_rows(self);
    oru::deref(self.column_info);
}

ORUDoVtable *oru_do_vtable_new() {
    return oru::make<ORUDoVtable>();
}

void oru_do_vtable_set_column_info(ORUDoVtable *vtable, ORUDoNtlist *ntlist) {
    ORU_REQUIRE(vtable);
    oru::replace(vtable->column_info, ntlist);
}

ORUDoNtlist *oru_do_vtable_get_column_info(ORUDoVtable *vtable) {
    ORU_REQUIRE(vtable);
    return vtable->column_info;
}

int32_t oru_do_vtable_get_column_num(ORUDoVtable *vtable) {
    ORU_REQUIRE(vtable);
    return vtable->column_info != nullptr ? oru_do_ntlist_get_len(vtable->column_info) : -1;
}

const int32_t *oru_do_vtable_get_column_types(ORUDoVtable *vtable) {
    ORU_REQUIRE(vtable);
    return nullptr;
}

int32_t oru_do_vtable_add(ORUDoVtable *vtable, ORUDoVlist *row) {
    ORU_REQUIRE(vtable);
    if (row == nullptr)
        return -1;
    auto *item = oru::make_element<ORUDoVtableItem>(row, nullptr, 1u);
    // A row that got no item leaves no last one behind; the next item then starts a new chain.
    if (item != nullptr) {
        oru::ref(row);
        if (vtable->last == nullptr)
            release_rows(*vtable);
        (vtable->last != nullptr ? vtable->last->next : vtable->first) = item;
    }
    vtable->last = item;
    return ++vtable->row_count;
}

int32_t oru_do_vtable_get_row_num(ORUDoVtable *vtable) {
    ORU_REQUIRE(vtable);
    return vtable->row_count;
}

ORUDoVlist *oru_do_vtable_get(ORUDoVtable *vtable, int32_t index) {
    ORU_REQUIRE(vtable);
    if (index < 0)
        return nullptr;
    const ORUDoVtableItem *item = vtable->first;
    while (item != nullptr && index-- > 0)
        item = item->next;
    return item != nullptr ? item->row : nullptr;
}

void oru_do_vtable_clear(ORUDoVtable *vtable) {
    ORU_REQUIRE(vtable);
    release_rows(*vtable);
    vtable->row_count = 0;
}

void oru_do_vtable_iter(ORUDoVtable *vtable, ORUDoIter *iter) {
    oru_do_vtable_iter_reset(vtable, nullptr, iter);
}

void oru_do_vtable_iter_reset(ORUDoVtable *vtable, ORUDoVtableItem *item, ORUDoIter *iter) {
    ORU_REQUIRE(vtable);
    oru::iter_bind(iter, DO_COLL_PROPERTIES_LIST, vtable, item != nullptr ? item : vtable->first);
}

int32_t oru_do_vtable_has_next(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_PROPERTIES_LIST);
}

ORUDoVlist *oru_do_vtable_get_next(ORUDoIter *iter) {
    const ORUDoVtableItem *item = oru_do_vtable_get_next_item(iter);
    return item != nullptr ? item->row : nullptr;
}

ORUDoVtableItem *oru_do_vtable_get_next_item(ORUDoIter *iter) {
    return oru::iter_advance<ORUDoVtableItem>(iter);
}

ORUDoVlist *oru_do_vtable_item_get_row(ORUDoVtableItem *item) {
    ORU_REQUIRE(item);
    return item->row;
}

int32_t oru_do_vtable_to_strbuf(ORUDoVtable *vtable, int32_t, ORUDoStrbuf *strbuf) {
    return print(vtable, strbuf, oru_do_vlist_to_strbuf);
}

int32_t oru_do_vtable_to_strbuf_with_defaults(ORUDoVtable *vtable, int32_t, ORUDoStrbuf *strbuf) {
    return print(vtable, strbuf, oru_do_vlist_to_strbuf_with_defaults);
}

ORU_OBJECT_API(ORUDoVtable, oru_do_vtable)
ORU_POOL_API(oru::pool_of<ORUDoVtableItem>, oru_do_vtable_item)
