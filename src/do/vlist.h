#ifndef ORU_SRC_DO_VLIST_H
#define ORU_SRC_DO_VLIST_H

#include "frame/list.h"
#include "oru/types.h"

struct ORUDoVlistItem {
    ORUDoValue *value;
    ORUDoVlistItem *next;
    uint32_t ref_count;  // always 1: the list owns its items alone
};

struct ORUDoVlist {
    ORUDoVlistItem *first;
    ORUDoVlistItem *last;
    uint32_t count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoVlistItem> {
    static constexpr const char *name = "oru_do_vlist_item";
    static constexpr Tag tag = Tag::vlist_item;
    static void release_members(ORUDoVlistItem &self);
};

template <>
struct oru::ObjectType<ORUDoVlist> {
    static constexpr const char *name = "oru_do_vlist";
    static constexpr Tag tag = Tag::vlist;
    static auto &count(ORUDoVlist &self) { return self.ref_count; }
    static void release_members(ORUDoVlist &self) { release_items(self); }
};

namespace oru {

// An item that is in no list yet. Null for a null value and when memory runs out.
ORUDoVlistItem *make_vlist_item(ORUDoValue *value);

// Appends a value with the reference that the caller gives away, if there is one. The result of all
// adders: the new length, or -1.
int32_t vlist_hand_over(ORUDoVlist &vlist, Ref<ORUDoValue> value);

}  // namespace oru

#endif
