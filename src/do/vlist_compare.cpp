#include "do/value.h"
#include "do/vlist.h"
#include "oru/vlist.h"

namespace {

using Item = ORUDoVlistItem;

auto is_equal_to(ORUDoValue *value) {
    return [value](const Item &item) { return oru_do_value_equals(item.value, value) != 0; };
}

}  // namespace

int32_t oru_do_vlist_equals(ORUDoVlist *vlist1, ORUDoVlist *vlist2) {
    ORU_REQUIRE(vlist1);
    ORU_REQUIRE(vlist2);
    return oru::same_items(vlist1->first, vlist2->first, [](const Item &a, const Item &b) {
        return oru_do_value_equals(a.value, b.value) != 0;
    });
}

int32_t oru_do_vlist_add_after(ORUDoVlist *vlist, ORUDoValue *after, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    if (value == nullptr)
        return -1;
    ORU_REQUIRE(after);
    Item *place = oru::chain(*vlist).find(is_equal_to(after));
    Item *item = place != nullptr ? oru::make_vlist_item(value) : nullptr;
    if (item == nullptr)
        return -1;
    // Unlike in every other insertion `last` stays: callers know the list so.
    item->next = std::exchange(place->next, item);
    return static_cast<int32_t>(++vlist->count);
}

void oru_do_vlist_remove_value(ORUDoVlist *vlist, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(value);
    oru::delete_items(*vlist, is_equal_to(value), 1);
}

int32_t oru_do_vlist_remove_value_all(ORUDoVlist *vlist, ORUDoValue *value) {
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(value);
    return oru::delete_items(*vlist, is_equal_to(value));
}

void oru_do_vlist_remove(ORUDoVlist *vlist, ORUDoVlist *other) {
    ORU_REQUIRE(vlist);
    if (other == nullptr) {
        oru_do_vlist_clear(vlist);
        return;
    }
    // The two may be the same list, whose item goes while it is looked at.
    for (const Item *item = other->first; item != nullptr;) {
        const Item *next = item->next;
        oru::delete_items(*vlist, is_equal_to(item->value), 1);
        item = next;
    }
}
