#include "md/prop_meta.h"
#include "oru/name.h"

int32_t oru_do_prop_meta_list_add(ORUDoPropMetaList *list, ORUDoPropMeta *meta) {
    ORU_REQUIRE(list);
    return oru::meta_list_append(*list, meta);
}

int32_t oru_do_prop_meta_list_add_at_index(ORUDoPropMetaList *list, ORUDoPropMeta *meta,
                                           int32_t index) {
    ORU_REQUIRE(list);
    if (meta == nullptr)
        return 1;
    const bool in_front = list->first == nullptr || index == 0;
    auto *before = in_front ? nullptr : oru::chain(*list).at(int64_t{index} - 1);
    if (!in_front && before == nullptr)
        return -1;
    const int32_t added = oru::meta_list_insert(*list, meta, [before](auto ends, auto *item) {
        if (before == nullptr) {
            ends.prepend(item);
        } else {
            ends.insert_after(before, item);
        }
    });
    return added < 0 ? -1 : 1;
}

ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta(ORUDoPropMetaList *list, int32_t index) {
    ORU_REQUIRE(list);
    return oru::meta_list_at(*list, index);
}

ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta_name(ORUDoPropMetaList *list, ORUDoName *name) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(name);
    return oru_do_prop_meta_list_get_prop_meta_strname(list, oru_do_name_get_strname(name));
}

ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta_strname(ORUDoPropMetaList *list,
                                                           const char *name) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(name);
    return oru::meta_list_find(*list, [name](const ORUDoPropMeta &meta) {
        ORUDoName *cur_name = meta.name;
        ORU_REQUIRE(cur_name);
        return oru_do_name_equals_w_strname(cur_name, name) != 0;
    });
}

ORU_META_LIST_API(ORUDoPropMetaList, ORUDoPropMeta, oru_do_prop_meta_list, DO_COLL_PROP_META_LIST)
ORU_META_LIST_LENGTH_API(ORUDoPropMetaList, oru_do_prop_meta_list)
