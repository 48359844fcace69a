#ifndef ORU_SRC_DO_NTLIST_H
#define ORU_SRC_DO_NTLIST_H

#include "frame/list.h"
#include "oru/types.h"

struct ORUDoNtlistItem {
    ORUDoName *name;
    ORUDoTypedefMeta *typedef_meta;
    ORUDoNtlistItem *next;
    int32_t type_code;
    uint32_t ref_count;  // always 1: the list owns its items alone
};

struct ORUDoNtlist {
    ORUDoNtlistItem *first;
    ORUDoNtlistItem *last;
    uint32_t count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoNtlistItem> {
    static constexpr const char *name = "oru_do_ntlist_item";
    static constexpr Tag tag = Tag::ntlist_item;
    static void release_members(ORUDoNtlistItem &self);
};

template <>
struct oru::ObjectType<ORUDoNtlist> {
    static constexpr const char *name = "oru_do_ntlist";
    static constexpr Tag tag = Tag::ntlist;
    static auto &count(ORUDoNtlist &self) { return self.ref_count; }
    static void release_members(ORUDoNtlist &self) { release_items(self); }
};

#endif
