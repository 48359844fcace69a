// The records of property descriptions and their list.
#ifndef ORU_SRC_MD_PROP_META_H
#define ORU_SRC_MD_PROP_META_H

#include "md/meta_list.h"
#include "oru/prop_meta.h"

struct ORUDoPropMeta {
    ORUDoName *name;
    ORUDoPropMeta *first_key_in_group;  // not counted
    ORUDoName *type_name;
    ORUDoConstraintList *constraint_list;
    ORUDoTypedefMeta *typedef_meta;
    uint32_t ref;
    int32_t key_idx;
    int32_t persistent;
    int32_t primary_key;
    int32_t category;
    int32_t ref_role;
    int32_t multiplicity;
    int32_t typecode;
    uint8_t max_access;
};

struct ORUDoPropMetaList {
    oru::MetaListItem<ORUDoPropMeta> *first;
    oru::MetaListItem<ORUDoPropMeta> *last;
    uint32_t count;
    uint32_t ref;
};

template <>
struct oru::ObjectType<ORUDoPropMeta> {
    static constexpr const char *name = "oru_do_prop_meta";
    static constexpr Tag tag = Tag::prop_meta;
    static auto &count(ORUDoPropMeta &self) { return self.ref; }
    static void release_members(ORUDoPropMeta &self);
};

template <>
struct oru::ObjectType<oru::MetaListItem<ORUDoPropMeta>> {
    static constexpr const char *name = "oru_do_prop_meta_list_item";
    static constexpr Tag tag = Tag::pr_m_list_item;
};

template <>
struct oru::ObjectType<ORUDoPropMetaList> {
    static constexpr const char *name = "oru_do_prop_meta_list";
    static constexpr Tag tag = Tag::prop_meta_list;
    static auto &count(ORUDoPropMetaList &self) { return self.ref; }
    static void release_members(ORUDoPropMetaList &self) { meta_list_clear(self); }
};

#endif
