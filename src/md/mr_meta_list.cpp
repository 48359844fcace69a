#include "md/mr_meta.h"

int32_t oru_do_mr_meta_list_add(ORUDoMrMetaList *list, ORUDoMrMeta *meta) {
    return list != nullptr ? oru::meta_list_append(*list, meta) : -1;
}

ORUDoMrMeta *oru_do_mr_meta_list_get_mr_meta(ORUDoMrMetaList *list, int32_t index) {
    ORU_REQUIRE(list);
    return oru::meta_list_at(*list, index);
}

int32_t oru_do_mr_meta_list_index_of(ORUDoMrMetaList *list, ORUDoMrMeta *meta) {
    if (list == nullptr)
        return -1;
    int32_t index = 0;
    for (auto *item = list->first; item != nullptr; item = item->next, ++index) {
        if (item->object == meta)
            return index;
    }
    return -1;
}

ORU_META_LIST_API(ORUDoMrMetaList, ORUDoMrMeta, oru_do_mr_meta_list, DO_COLL_MR_META_LIST)
ORU_META_LIST_LENGTH_API(ORUDoMrMetaList, oru_do_mr_meta_list)
