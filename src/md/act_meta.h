// The records of action descriptions and their list.
#ifndef ORU_SRC_MD_ACT_META_H
#define ORU_SRC_MD_ACT_META_H

#include "md/meta_list.h"
#include "oru/act_meta.h"

struct ORUDoActMeta {
    ORUDoName *name;
    ORUDoPropMetaList *in_params;
    ORUDoPropMetaList *out_params;
    ORUDoPropMetaList *err_params;
    uint32_t ref;
};

struct ORUDoActMetaList {
    oru::MetaListItem<ORUDoActMeta> *first;
    oru::MetaListItem<ORUDoActMeta> *last;
    uint32_t count;
    uint32_t ref;
};

template <>
struct oru::ObjectType<ORUDoActMeta> {
    static constexpr const char *name = "oru_do_act_meta";
    static constexpr Tag tag = Tag::act_meta;
    static auto &count(ORUDoActMeta &self) { return self.ref; }
    static void release_members(ORUDoActMeta &self);
};

template <>
struct oru::ObjectType<oru::MetaListItem<ORUDoActMeta>> {
    static constexpr const char *name = "oru_do_act_meta_list_item";
    static constexpr Tag tag = Tag::act_mlist_item;
};

template <>
struct oru::ObjectType<ORUDoActMetaList> {
    static constexpr const char *name = "oru_do_act_meta_list";
    static constexpr Tag tag = Tag::act_meta_list;
    static auto &count(ORUDoActMetaList &self) { return self.ref; }
    static void release_members(ORUDoActMetaList &self) { meta_list_clear(self); }
};

#endif
