// Singly linked chains of items with a `next` link, as the five lists, the description lists and
// the error list keep them. The records name their ends themselves; Chain refers to them.
#ifndef ORU_SRC_FRAME_CHAIN_H
#define ORU_SRC_FRAME_CHAIN_H

#include <cstdint>
#include <type_traits>
#include <utility>

namespace oru {

template <class Item>
struct Chain {
    Item *&first;
    Item *&last;
    uint32_t &count;

    void append(Item *item) {
        item->next = nullptr;
        (last != nullptr ? last->next : first) = item;
        last = item;
        ++count;
    }

    void prepend(Item *item) {
        item->next = first;
        first = item;
        if (last == nullptr)
            last = item;
        ++count;
    }

    // Links `item` behind `place`, which is in the chain.
    void insert_after(Item *place, Item *item) {
        item->next = place->next;
        place->next = item;
        if (last == place)
            last = item;
        ++count;
    }

    // Links `item` so that it becomes the one at `position`; past either end it becomes the first
    // or the last.
    void insert_at(int64_t position, Item *item) {
        if (position < 1) {
            prepend(item);
        } else if (position >= count) {
            append(item);
        } else {
            insert_after(at(position - 1), item);
        }
    }

    // Takes `item` out; `before` is the item in front of it, null for the first.
    void unlink(Item *before, Item *item) {
        (before != nullptr ? before->next : first) = item->next;
        if (last == item)
            last = before;
        --count;
    }

    // The item at `index` from 0, or null.
    Item *at(int64_t index) const {
        if (index < 0)
            return nullptr;
        Item *item = first;
        while (item != nullptr && index-- > 0)
            item = item->next;
        return item;
    }

    // The first item that `matches`, or null.
    template <class Matches>
    Item *find(Matches &&matches) const {
        Item *item = first;
        while (item != nullptr && !matches(*item))
            item = item->next;
        return item;
    }

    // The index of that item, or -1.
    template <class Matches>
    int32_t index_of(Matches &&matches) const {
        int32_t index = 0;
        for (Item *item = first; item != nullptr; item = item->next, ++index) {
            if (matches(*item))
                return index;
        }
        return -1;
    }

    // Visits the items in order until `visit` is false for one; whether it was true for all. Items
    // that the visits append are not visited, so that a chain can be appended to itself.
    template <class Visit>
    bool each(Visit &&visit) const {
        uint32_t left = count;
        for (Item *item = first; item != nullptr && left > 0; item = item->next, --left) {
            if (!visit(*item))
                return false;
        }
        return true;
    }

    // Takes out every item that `matches`, or only the first with `at_most` 1, and hands each to
    // `release`. Gives how many there were.
    template <class Matches, class Release>
    int32_t remove_if(Matches &&matches, Release &&release, int32_t at_most = INT32_MAX) {
        int32_t removed = 0;
        Item *before = nullptr;
        for (Item *item = first; item != nullptr && removed < at_most;) {
            Item *next = item->next;
            if (matches(*item)) {
                unlink(before, item);
                release(item);
                ++removed;
            } else {
                before = item;
            }
            item = next;
        }
        return removed;
    }

    // Empties the chain; each item goes to `release`, in order.
    template <class Release>
    void clear(Release &&release) {
        Item *item = std::exchange(first, nullptr);
        last = nullptr;
        count = 0;
        while (item != nullptr)
            release(std::exchange(item, item->next));
    }
};

// The chain of a record whose fields have the usual names.
template <class List>
auto chain(List &list) {
    return Chain<std::remove_pointer_t<decltype(list.first)>>{list.first, list.last, list.count};
}

// Whether two chains hold the `same` items in the same order.
template <class Item, class Same>
bool same_items(Item *item, Item *other, Same &&same) {
    while (item != nullptr && other != nullptr && same(*item, *other)) {
        item = item->next;
        other = other->next;
    }
    return item == nullptr && other == nullptr;
}

}  // namespace oru

#endif
