#ifndef ORU_SRC_DO_PROPERTIES_LIST_H
#define ORU_SRC_DO_PROPERTIES_LIST_H

#include "frame/list.h"
#include "oru/types.h"

struct ORUDoPropertiesListItem {
    ORUDoProperties *properties;
    ORUDoPropertiesListItem *next;
    uint32_t ref_count;  // always 1: the list owns its items alone
};

struct ORUDoPropertiesList {
    ORUDoPropertiesListItem *first;
    ORUDoPropertiesListItem *last;
    uint32_t count;
    uint32_t ref_count;
};

template <>
struct oru::ObjectType<ORUDoPropertiesListItem> {
    static constexpr const char *name = "oru_do_properties_list_item";
    static constexpr Tag tag = Tag::prop_list_item;
    static void release_members(ORUDoPropertiesListItem &self);
};

template <>
struct oru::ObjectType<ORUDoPropertiesList> {
    static constexpr const char *name = "oru_do_properties_list";
    static constexpr Tag tag = Tag::props_list;
    static auto &count(ORUDoPropertiesList &self) { return self.ref_count; }
    static void release_members(ORUDoPropertiesList &self) { release_items(self); }
};

#endif
