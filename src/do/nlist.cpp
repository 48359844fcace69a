#include "do/nlist.h"

#include "do/name.h"
#include "do/ntlist.h"
#include "oru/nlist.h"

namespace {

using Item = ORUDoNlistItem;

Item *make_item(ORUDoName *name) {
    Item *item = name != nullptr ? oru::make_element<Item>() : nullptr;
    if (item == nullptr)
        return nullptr;
    item->name = oru::ref(name);
    item->ref_count = 1;
    return item;
}

// Appends a new name of that text; -1 when there is no text or no memory.
int32_t append_new(ORUDoNlist &nlist, const char *text) {
    if (text == nullptr)
        return -1;
    const auto name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(text));
    return oru::append_item(nlist, make_item(name.get()));
}

int32_t length_if(bool complete, const ORUDoNlist &nlist) {
    return complete ? static_cast<int32_t>(nlist.count) : -1;
}

// False for a name that is equal to no text, null among them.
auto has_text(const char *text) {
    return [text](const Item &item) { return oru_do_name_equals_w_strname(item.name, text) != 0; };
}

// Whether the names of `other` could be appended; null has none.
bool append_all(ORUDoNlist &nlist, ORUDoNlist *other) {
    return other == nullptr || oru_do_nlist_add_all(&nlist, other) != -1;
}

}  // namespace

void oru::ObjectType<ORUDoNlistItem>::release_members(ORUDoNlistItem &self) {
    deref(self.name);
}

ORUDoNlist *oru_do_nlist_new_strnames(const char *const *texts) {
    ORUDoNlist *nlist = oru_do_nlist_new();
    ORU_REQUIRE(nlist);
    oru_do_nlist_add_strnames(nlist, texts);
    return nlist;
}

ORUDoNlist *oru_do_nlist_new_from_ntlist(ORUDoNtlist *ntlist) {
    ORU_REQUIRE(ntlist);
    auto nlist = oru::make_ref<ORUDoNlist>();
    if (!nlist)
        return nullptr;
    const bool complete = oru::chain(*ntlist).each([&nlist](const ORUDoNtlistItem &item) {
        return append_new(*nlist, oru_do_name_get_unqualified_strname(item.name)) != -1;
    });
    return complete ? nlist.release() : nullptr;
}

ORUDoNlist *oru_do_nlist_merge(ORUDoNlist *nlist1, ORUDoNlist *nlist2) {
    if (nlist1 == nullptr && nlist2 == nullptr)
        return nullptr;
    auto merged = oru::make_ref<ORUDoNlist>();
    if (!merged || !append_all(*merged, nlist1) || !append_all(*merged, nlist2))
        return nullptr;
    return merged.release();
}

int32_t oru_do_nlist_get_len(ORUDoNlist *nlist) {
    return nlist != nullptr ? static_cast<int32_t>(nlist->count) : 0;
}

ORUDoName *oru_do_nlist_get_name(ORUDoNlist *nlist, int32_t index) {
    ORU_REQUIRE(nlist);
    const Item *item = oru::chain(*nlist).at(index);
    return item != nullptr ? item->name : nullptr;
}

ORUDoName *oru_do_nlist_get_name_by_str(ORUDoNlist *nlist, const char *text) {
    ORU_REQUIRE(nlist);
    const Item *item = oru::chain(*nlist).find(has_text(text));
    return item != nullptr ? item->name : nullptr;
}

int32_t oru_do_nlist_index_of(ORUDoNlist *nlist, const char *text) {
    ORU_REQUIRE(nlist);
    return oru::chain(*nlist).index_of(has_text(text));
}

int32_t oru_do_nlist_has_next(ORUDoIter *iter) {
    return iter != nullptr ? ORU_ITER_HAS_NEXT(iter, DO_COLL_NLIST) : 0;
}

ORUDoName *oru_do_nlist_get_next(ORUDoIter *iter) {
    const Item *item = iter != nullptr ? oru::iter_advance<Item>(iter) : nullptr;
    return item != nullptr ? item->name : nullptr;
}

int32_t oru_do_nlist_equals(ORUDoNlist *nlist1, ORUDoNlist *nlist2) {
    ORU_REQUIRE(nlist1);
    ORU_REQUIRE(nlist2);
    return oru::same_items(nlist1->first, nlist2->first, [](const Item &a, const Item &b) {
        return oru::same_name(a.name, b.name);
    });
}

int32_t oru_do_nlist_add(ORUDoNlist *nlist, ORUDoName *name) {
    ORU_REQUIRE(nlist);
    return oru::append_item(*nlist, make_item(name));
}

// A failure is 0 here, unlike in all other adders.
int32_t oru_do_nlist_add_string(ORUDoNlist *nlist, const char *text) {
    ORU_REQUIRE(nlist);
    const int32_t length = append_new(*nlist, text);
    return length != -1 ? length : 0;
}

int32_t oru_do_nlist_add_strnames(ORUDoNlist *nlist, const char *const *texts) {
    ORU_REQUIRE(nlist);
    int32_t length = 0;
    for (; texts != nullptr && *texts != nullptr; ++texts)
        length = oru_do_nlist_add_string(nlist, *texts);
    return length;
}

int32_t oru_do_nlist_add_all(ORUDoNlist *nlist, ORUDoNlist *other_nlist) {
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(other_nlist);
    const bool complete = oru::chain(*other_nlist).each([nlist](const Item &item) {
        return oru::append_item(*nlist, make_item(item.name)) != -1;
    });
    return length_if(complete, *nlist);
}

int32_t oru_do_nlist_add_all_copy(ORUDoNlist *nlist, ORUDoNlist *other_nlist) {
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(other_nlist);
    const bool complete = oru::chain(*other_nlist).each([nlist](const Item &item) {
        return append_new(*nlist, item.name->str) != -1;
    });
    return length_if(complete, *nlist);
}

void oru_do_nlist_remove(ORUDoNlist *nlist, int32_t index) {
    if (nlist == nullptr)
        return;
    const Item *at = oru::chain(*nlist).at(index);
    oru::delete_items(
        *nlist, [at](const Item &item) { return &item == at; }, 1);
}

void oru_do_nlist_clear(ORUDoNlist *nlist) {
    ORU_REQUIRE(nlist);
    oru::release_items(*nlist);
}

ORU_LIST_API(ORUDoNlist, ORUDoNlistItem, oru_do_nlist, nlist, DO_COLL_NLIST)
