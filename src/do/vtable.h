#ifndef ORU_SRC_DO_VTABLE_H
#define ORU_SRC_DO_VTABLE_H

#include "frame/object.h"
#include "oru/vtable.h"

struct ORUDoVtableItem {
    ORUDoVlist *row;
    ORUDoVtableItem *next;
    uint32_t ref_count;  // 1; the table owns its items alone
};

struct ORUDoVtable {
    ORUDoNtlist *column_info;
    ORUDoVtableItem *first;
    ORUDoVtableItem *last;
    int32_t row_count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoVtableItem> {
    static constexpr const char *name = "oru_do_vtable_item";
    static constexpr Tag tag = Tag::vtable_item;
};

template <>
struct oru::ObjectType<ORUDoVtable> {
    static constexpr const char *name = "oru_do_vtable";
    static constexpr Tag tag = Tag::vtable;
    static auto &count(ORUDoVtable &self) { return self.ref_count; }
    static void release_members(ORUDoVtable &self);
};

#endif
