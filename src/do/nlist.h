#ifndef ORU_SRC_DO_NLIST_H
#define ORU_SRC_DO_NLIST_H

#include "frame/list.h"
#include "oru/types.h"

struct ORUDoNlistItem {
    ORUDoName *name;
    ORUDoNlistItem *next;
    uint32_t ref_count;  // always 1: the list owns its items alone
};

struct ORUDoNlist {
    ORUDoNlistItem *first;
    ORUDoNlistItem *last;
    uint32_t count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoNlistItem> {
    static constexpr const char *name = "oru_do_nlist_item";
    static constexpr Tag tag = Tag::nlist_item;
    static void release_members(ORUDoNlistItem &self);
};

template <>
struct oru::ObjectType<ORUDoNlist> {
    static constexpr const char *name = "oru_do_nlist";
    static constexpr Tag tag = Tag::nlist;
    static auto &count(ORUDoNlist &self) { return self.ref_count; }
    static void release_members(ORUDoNlist &self) { release_items(self); }
};

#endif
