#include "do/vlist.h"

#include "do/value.h"
#include "oru/vlist.h"

namespace {

using Item = ORUDoVlistItem;

// What stands behind `last`: an insertion behind the last item leaves `last` where it was.
Item *&behind_last(ORUDoVlist &vlist) {
    return vlist.last != nullptr ? vlist.last->next : vlist.first;
}

// Releases what stands behind `last`. The count keeps it.
void cut_off(ORUDoVlist &vlist) {
    for (Item *cut = std::exchange(behind_last(vlist), nullptr); cut != nullptr;)
        oru::release_item(std::exchange(cut, cut->next));
}

// Appends an item, which takes the place of what stands behind `last`.
int32_t append(ORUDoVlist &vlist, Item *item) {
    if (item == nullptr)
        return -1;
    cut_off(vlist);
    return oru::append_item(vlist, item);
}

}  // namespace

void oru::ObjectType<ORUDoVlistItem>::release_members(ORUDoVlistItem &self) {
    deref(self.value);
}

namespace {

Item *make_item(oru::Ref<ORUDoValue> value) {
    Item *item = value ? oru::make_element<Item>() : nullptr;
    if (item == nullptr)
        return nullptr;
    item->value = value.release();
    item->ref_count = 1;
    return item;
}

}  // namespace

ORUDoVlistItem *oru::make_vlist_item(ORUDoValue *value) {
    return make_item(Ref<ORUDoValue>::share(value));
}

int32_t oru::vlist_hand_over(ORUDoVlist &vlist, Ref<ORUDoValue> value) {
    return append(vlist, make_item(std::move(value)));
}

ORUDoVlist *oru_do_vlist_clone(ORUDoVlist *vlist) {
    ORU_REQUIRE(vlist);
    ORUDoVlist *copy = oru_do_vlist_new();
    if (copy == nullptr)
        return nullptr;
    for (const Item *item = vlist->first; item != nullptr; item = item->next) {
        const auto value = oru::Ref<ORUDoValue>::adopt(oru_do_value_clone(item->value));
        append(*copy, oru::make_vlist_item(value.get()));
    }
    return copy;
}

ORUDoValue *oru_do_vlist_get_value(ORUDoVlist *vlist, int32_t index) {
    ORU_REQUIRE(vlist);
    const Item *item = oru::chain(*vlist).at(index);
    return item != nullptr ? item->value : nullptr;
}

int32_t oru_do_vlist_get_member_type(ORUDoVlist *vlist) {
    ORU_REQUIRE(vlist);
    int32_t type = ORU_DO_TYPE_UNKNOWN;
    bool found = false;
    for (const Item *item = vlist->first; item != nullptr; item = item->next) {
        if (item->value == nullptr)
            continue;
        if (found && item->value->type != type)
            return ORU_DO_TYPE_UNKNOWN;
        type = item->value->type;
        found = true;
    }
    return type;
}

ORUDoValue *oru_do_vlist_get_next(ORUDoIter *iter) {
    const Item *item = oru::iter_advance<Item>(iter);
    return item != nullptr ? item->value : nullptr;
}

int32_t oru_do_vlist_add(ORUDoVlist *vlist, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    return append(*vlist, oru::make_vlist_item(value));
}

int32_t oru_do_vlist_add_first(ORUDoVlist *vlist, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    Item *item = oru::make_vlist_item(value);
    if (item == nullptr)
        return -1;
    oru::chain(*vlist).prepend(item);
    return static_cast<int32_t>(vlist->count);
}

int32_t oru_do_vlist_add_all(ORUDoVlist *vlist, ORUDoVlist *other_vlist) {
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(other_vlist);
    // Of the list itself no item may go while it is looked at.
    if (vlist == other_vlist)
        cut_off(*vlist);
    const bool complete = oru::chain(*other_vlist).each([vlist](const Item &item) {
        return append(*vlist, oru::make_vlist_item(item.value)) != -1;
    });
    return complete ? static_cast<int32_t>(vlist->count) : -1;
}

void oru_do_vlist_set_value(ORUDoVlist *vlist, int32_t index, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(value);
    if (Item *item = oru::chain(*vlist).at(index))
        oru::replace(item->value, value);
}

void oru_do_vlist_clear(ORUDoVlist *vlist) {
    if (vlist != nullptr)
        oru::release_items(*vlist);
}

void oru_do_vlist_reverse(ORUDoVlist *vlist) {
    if (vlist == nullptr)
        return;
    Item *reversed = nullptr;
    vlist->last = vlist->first;
    for (Item *item = vlist->first; item != nullptr;) {
        Item *next = std::exchange(item->next, reversed);
        reversed = std::exchange(item, next);
    }
    vlist->first = reversed;
}

ORU_LIST_API(ORUDoVlist, ORUDoVlistItem, oru_do_vlist, vlist, DO_COLL_VLIST)
ORU_LIST_READ_API(ORUDoVlist, oru_do_vlist, vlist, DO_COLL_VLIST)
