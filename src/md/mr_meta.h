// The records of resource descriptions, their shared flag and their list.
#ifndef ORU_SRC_MD_MR_META_H
#define ORU_SRC_MD_MR_META_H

#include "md/meta_list.h"
#include "oru/mr_meta.h"

struct ORUDoMrMetaBool {
    uint32_t ref;
    int32_t value;
};

struct ORUDoMrMeta {
    ORUDoName *pkg_name;
    ORUDoName *mr_name;
    ORUDoName *mr_fq_name;
    ORUDoMrMetaBool *is_non_persistent;
    ORUDoActMetaList *act_meta_list;
    ORUDoPropMetaList *prop_meta_list;
    ORUDoMrMetaList *impl_mr_meta;
    uint32_t ref;
    uint8_t max_access;
    int32_t is_lib_mr;
};

struct ORUDoMrMetaList {
    oru::MetaListItem<ORUDoMrMeta> *first;
    oru::MetaListItem<ORUDoMrMeta> *last;
    uint32_t count;
    uint32_t ref;
};

template <>
struct oru::ObjectType<ORUDoMrMetaBool> {
    static constexpr const char *name = "oru_do_mr_meta_bool";
    static constexpr Tag tag = Tag::mr_meta_bool;
    static auto &count(ORUDoMrMetaBool &self) { return self.ref; }
    static void release_members(ORUDoMrMetaBool &) {}
};

template <>
struct oru::ObjectType<ORUDoMrMeta> {
    static constexpr const char *name = "oru_do_mr_meta";
    static constexpr Tag tag = Tag::mr_meta;
    static auto &count(ORUDoMrMeta &self) { return self.ref; }
    static void release_members(ORUDoMrMeta &self);
};

template <>
struct oru::ObjectType<oru::MetaListItem<ORUDoMrMeta>> {
    static constexpr const char *name = "oru_do_mr_meta_list_item";
    static constexpr Tag tag = Tag::mr_meta_list_i;
};

template <>
struct oru::ObjectType<ORUDoMrMetaList> {
    static constexpr const char *name = "oru_do_mr_meta_list";
    static constexpr Tag tag = Tag::mr_meta_list;
    static auto &count(ORUDoMrMetaList &self) { return self.ref; }
    static void release_members(ORUDoMrMetaList &self) { meta_list_clear(self); }
};

#endif
