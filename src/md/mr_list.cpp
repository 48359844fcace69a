// Lists of resources of the store.
#include "frame/require.h"
#include "md/records.h"
#include "oru/md.h"
#include "oru/mr_meta.h"
#include "oru/value.h"

namespace {

ORUMdMrMetaList *&find_by_fq_name(ORUMdMrMetaList *&first, ORUDoName *name) {
    return oru::find_link(first, [name](ORUMdMrMetaList &entry) {
        return entry.mr != nullptr && entry.mr->do_mr_meta != nullptr &&
               oru_do_name_equals(oru_do_mr_meta_get_mr_fq_name(entry.mr->do_mr_meta), name) != 0;
    });
}

}  // namespace

ORUMdMrMetaList *oru_md_mr_meta_list_new(ORUMdMrMeta *md_mr_meta) {
    ORU_REQUIRE(md_mr_meta);
    auto *entry = oru::new_record<ORUMdMrMetaList>();
    if (entry != nullptr)
        entry->mr = md_mr_meta;
    return entry;
}

void oru_md_mr_meta_list_delete(ORUMdMrMetaList *entry) {
    oru::free_record(entry);
}

void oru_md_mr_meta_list_delete_all_items(ORUMdMrMetaList *first) {
    oru::delete_records(first, oru_md_mr_meta_list_delete);
}

int32_t oru_md_mr_meta_list_add(ORUMdMrMetaList **head, ORUMdMrMeta *md_mr_meta) {
    ORU_REQUIRE(head);
    auto *entry = oru_md_mr_meta_list_new(md_mr_meta);
    if (entry == nullptr)
        return 0;
    oru::append_record(*head, entry);
    int32_t length = 0;
    for (auto *item = *head; item != nullptr; item = item->next)
        ++length;
    return length;
}

ORUMdMrMeta *oru_md_mr_meta_list_get_by_fq_name(ORUMdMrMetaList *first, ORUDoName *name) {
    auto *entry = find_by_fq_name(first, name);
    return entry != nullptr ? entry->mr : nullptr;
}

ORUMdMrMeta *oru_md_mr_meta_list_remove_by_fq_name(ORUMdMrMetaList **head, ORUDoName *name) {
    ORU_REQUIRE(head);
    auto *&link = find_by_fq_name(*head, name);
    if (link == nullptr)
        return nullptr;
    auto *entry = std::exchange(link, link->next);
    auto *mr = entry->mr;
    oru_md_mr_meta_list_delete(entry);
    return mr;
}

ORUMdMrMeta *oru_md_mr_meta_by_key(ORUMdMrMetaList *first, ORUDoValue *value) {
    auto *entry = oru::find_record(first, [value](ORUMdMrMetaList &listed) {
        return value != nullptr && listed.mr != nullptr && listed.mr->const_key != nullptr &&
               oru_do_value_equals(listed.mr->const_key, value) != 0;
    });
    return entry != nullptr ? entry->mr : nullptr;
}
