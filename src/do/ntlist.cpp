#include "do/ntlist.h"

#include "do/name.h"
#include "oru/ntlist.h"
#include "oru/typedef_meta.h"
#include "oru/value.h"

namespace {

using Item = ORUDoNtlistItem;

Item *make_item(ORUDoName *name, int32_t type_code, ORUDoTypedefMeta *typedef_meta) {
    Item *item = typedef_meta != nullptr ? oru::make_element<Item>() : nullptr;
    if (item == nullptr)
        return nullptr;
    item->name = oru::ref(name);
    item->typedef_meta = oru_do_typedef_meta_ref(typedef_meta);
    item->type_code = type_code;
    item->ref_count = 1;
    return item;
}

auto has_text(const char *text) {
    return [text](const Item &item) { return oru_do_name_equals_w_strname(item.name, text) != 0; };
}

}  // namespace

void oru::ObjectType<ORUDoNtlistItem>::release_members(ORUDoNtlistItem &self) {
    deref(self.name);
    oru_do_typedef_meta_deref(self.typedef_meta);
}

ORUDoNtlistItem *oru_do_ntlist_get_item(ORUDoNtlist *ntlist, int32_t index) {
    ORU_REQUIRE(ntlist);
    return oru::chain(*ntlist).at(index);
}

ORUDoNtlistItem *oru_do_ntlist_get_item_by_name(ORUDoNtlist *ntlist, const char *text) {
    ORU_REQUIRE(ntlist);
    return oru::chain(*ntlist).find(has_text(text));
}

int32_t oru_do_ntlist_get_item_index_by_name(ORUDoNtlist *ntlist, const char *text) {
    ORU_REQUIRE(ntlist);
    return oru::chain(*ntlist).index_of(has_text(text));
}

ORUDoName *oru_do_ntlist_item_get_name(ORUDoNtlistItem *item) {
    ORU_REQUIRE(item);
    return item->name;
}

int32_t oru_do_ntlist_item_get_type_code(ORUDoNtlistItem *item) {
    ORU_REQUIRE(item);
    return item->type_code;
}

ORUDoTypedefMeta *oru_do_ntlist_item_get_typedef(ORUDoNtlistItem *item) {
    ORU_REQUIRE(item);
    return item->typedef_meta;
}

ORUDoNtlistItem *oru_do_ntlist_get_next(ORUDoIter *iter) {
    return oru::iter_advance<Item>(iter);
}

int32_t oru_do_ntlist_add_builtin_type(ORUDoNtlist *ntlist, ORUDoName *name, int32_t type_code,
                                       ORUDoConstraintList *extra) {
    ORU_REQUIRE(ntlist);
    ORU_REQUIRE(name);
    ORUDoTypedefMeta *meta = oru_do_typedef_meta_new_builtin(type_code, extra);
    const int32_t length = oru::append_item(*ntlist, make_item(name, type_code, meta));
    oru_do_typedef_meta_deref(meta);
    return length;
}

int32_t oru_do_ntlist_add_typedef_meta(ORUDoNtlist *ntlist, ORUDoName *name,
                                       ORUDoTypedefMeta *typedef_meta) {
    ORU_REQUIRE(ntlist);
    ORU_REQUIRE(name);
    return oru::append_item(*ntlist, make_item(name, ORU_DO_TYPE_UNKNOWN, typedef_meta));
}

ORU_LIST_API(ORUDoNtlist, ORUDoNtlistItem, oru_do_ntlist, ntlist, DO_COLL_NTLIST)
ORU_LIST_READ_API(ORUDoNtlist, oru_do_ntlist, ntlist, DO_COLL_NTLIST)
