#ifndef ORU_SRC_DO_NVLIST_H
#define ORU_SRC_DO_NVLIST_H

#include <string_view>

#include "frame/list.h"
#include "oru/types.h"

struct ORUDoNvlistItem {
    char *name;  // `inline_name`, or a text of the heap when it is longer
    ORUDoValue *value;
    ORUDoNvlistItem *next;
    uint32_t ref_count;  // always 1: the list owns its items alone
    char inline_name[32];
};

struct ORUDoNvlist {
    ORUDoNvlistItem *first;
    ORUDoNvlistItem *last;
    uint32_t count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoNvlistItem> {
    static constexpr const char *name = "oru_do_nvlist_item";
    static constexpr Tag tag = Tag::nvlist_item;
    static void release_members(ORUDoNvlistItem &self);
};

template <>
struct oru::ObjectType<ORUDoNvlist> {
    static constexpr const char *name = "oru_do_nvlist";
    static constexpr Tag tag = Tag::nvlist;
    static auto &count(ORUDoNvlist &self) { return self.ref_count; }
    static void release_members(ORUDoNvlist &self) { release_items(self); }
};

namespace oru {

// Appends an item with a value that the caller made, has shown to nobody and gives away with its
// reference, null included. To an observer this is adding the value and releasing it; unobserved,
// the count of one changes hands. The result of all adders: the new length, or -1.
int32_t nvlist_hand_over(ORUDoNvlist &nvlist, std::string_view name, ORUDoValue *value);

}  // namespace oru

#endif
