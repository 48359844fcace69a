// The properties of a resource description: looking them up, selecting and adding.
#include <cstring>

#include "md/mr_meta.h"
#include "md/prop_meta.h"
#include "oru/name.h"

namespace {

// Adds the properties that `matches` to `out`. Their number, or -1 without memory, so that nobody
// takes a part of them for all.
template <class Matches>
int32_t select(const ORUDoMrMeta &meta, ORUDoPropMetaList *out, Matches &&matches) {
    if (meta.prop_meta_list == nullptr)
        return 0;
    int32_t added = 0;
    for (auto *item = meta.prop_meta_list->first; item != nullptr; item = item->next) {
        if (!matches(*item->object))
            continue;
        if (oru_do_prop_meta_list_add(out, item->object) < 0)
            return -1;
        ++added;
    }
    return added;
}

int32_t select_refs(const ORUDoMrMeta &meta, ORUDoPropMetaList *out, int32_t role) {
    return select(meta, out, [role](const ORUDoPropMeta &prop) {
        return prop.category == ORU_PROP_REF && prop.ref_role == role;
    });
}

// Null takes all, the empty text what stands in no group, any other text one group.
bool in_group(const ORUDoPropMeta &prop, const char *prefix) {
    if (prefix == nullptr)
        return true;
    const char *name = oru_do_name_get_strname(prop.name);
    const size_t length = std::strlen(prefix);
    if (length == 0)
        return std::strchr(name, '.') == nullptr;
    return std::strncmp(name, prefix, length) == 0 && name[length] == '.';
}

int32_t select_group(const ORUDoMrMeta &meta, ORUDoPropMetaList *out, int32_t category,
                     const char *prefix) {
    return select(meta, out, [=](const ORUDoPropMeta &prop) {
        return prop.category == category && in_group(prop, prefix);
    });
}

bool ensure_list(ORUDoMrMeta &meta) {
    if (meta.prop_meta_list == nullptr)
        meta.prop_meta_list = oru_do_prop_meta_list_new();
    return meta.prop_meta_list != nullptr;
}

}  // namespace

int32_t oru_do_mr_meta_get_prop_count(ORUDoMrMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->prop_meta_list != nullptr ? oru_do_prop_meta_list_get_len(meta->prop_meta_list)
                                           : 0;
}

ORUDoPropMeta *oru_do_mr_meta_get_prop_meta(ORUDoMrMeta *meta, ORUDoName *name) {
    ORU_REQUIRE(meta);
    ORU_REQUIRE(name);
    return oru_do_mr_meta_get_prop_meta_str(meta, oru_do_name_get_strname(name));
}

ORUDoPropMeta *oru_do_mr_meta_get_prop_meta_str(ORUDoMrMeta *meta, const char *name) {
    ORU_REQUIRE(meta);
    ORU_REQUIRE(name);
    if (meta->prop_meta_list == nullptr)
        return nullptr;
    return oru_do_prop_meta_list_get_prop_meta_strname(meta->prop_meta_list, name);
}

int32_t oru_do_mr_meta_get_all_prop_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select(*meta, out, [](const ORUDoPropMeta &) { return true; });
}

int32_t oru_do_mr_meta_get_key_prop_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select(*meta, out,
                  [](const ORUDoPropMeta &prop) { return prop.category == ORU_PROP_KEY; });
}

int32_t oru_do_mr_meta_get_child_ref_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select_refs(*meta, out, ORU_REF_CHILD);
}

int32_t oru_do_mr_meta_get_peer_ref_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select_refs(*meta, out, ORU_REF_PEER);
}

int32_t oru_do_mr_meta_get_cfg_prop_meta(ORUDoMrMeta *meta, const char *prefix,
                                         ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select_group(*meta, out, ORU_PROP_CONFIG, prefix);
}

int32_t oru_do_mr_meta_get_oper_prop_meta(ORUDoMrMeta *meta, const char *prefix,
                                          ORUDoPropMetaList *out) {
    ORU_REQUIRE(meta);
    return select_group(*meta, out, ORU_PROP_OPER, prefix);
}

int32_t oru_do_mr_meta_add_prop_meta(ORUDoMrMeta *meta, ORUDoPropMeta *prop_meta) {
    ORU_REQUIRE(meta);
    return ensure_list(*meta) ? oru_do_prop_meta_list_add(meta->prop_meta_list, prop_meta) : 0;
}

int32_t oru_do_mr_meta_add_prop_meta_at_index(ORUDoMrMeta *meta, ORUDoPropMeta *prop_meta,
                                              int32_t index) {
    ORU_REQUIRE(meta);
    return ensure_list(*meta)
               ? oru_do_prop_meta_list_add_at_index(meta->prop_meta_list, prop_meta, index)
               : 0;
}
