// Counted list objects: a record with the chain fields `first`, `last` and `count`, whose items
// come from a pool of their own. An item's ObjectType has `name`, `tag` and `release_members`.
#ifndef ORU_SRC_FRAME_LIST_H
#define ORU_SRC_FRAME_LIST_H

#include "frame/chain.h"
#include "frame/iter.h"
#include "frame/object.h"

namespace oru {

// The item with what it holds.
template <class Item>
void release_item(Item *item) {
    ObjectType<Item>::release_members(*item);
    free_element(item);
}

template <class List>
void release_items(List &list) {
    chain(list).clear([](auto *item) { release_item(item); });
}

// Takes out and releases the items that `matches`; see Chain::remove_if. They are released after
// the last comparison, since what they are compared with may be theirs.
template <class List, class Matches>
int32_t delete_items(List &list, Matches &&matches, int32_t at_most = INT32_MAX) {
    List removed{};
    const int32_t count = chain(list).remove_if(
        std::forward<Matches>(matches), [&removed](auto *item) { chain(removed).append(item); },
        at_most);
    release_items(removed);
    return count;
}

// Appends an item that may not have been had. The result of all adders: the new length, or -1.
template <class List, class Item>
int32_t append_item(List &list, Item *item) {
    if (item == nullptr)
        return -1;
    chain(list).append(item);
    return static_cast<int32_t>(list.count);
}

}  // namespace oru

// The operations that every list exports; `argument` is what assertions call the list.
#define ORU_LIST_API(Record, Item, name, argument, KIND)         \
    ORU_OBJECT_API(Record, name)                                 \
    ORU_POOL_API(::oru::pool_of<Item>, name##_item)              \
    Record *name##_new() {                                       \
        return ::oru::make<Record>();                            \
    }                                                            \
    void name##_iter(Record *argument, ORUDoIter *iter) {        \
        ORU_REQUIRE(argument);                                   \
        ::oru::iter_bind(iter, KIND, argument, argument->first); \
    }

// Those that one list has otherwise, being more forgiving.
#define ORU_LIST_READ_API(Record, name, argument, KIND) \
    int32_t name##_has_next(ORUDoIter *iter) {          \
        return ORU_ITER_HAS_NEXT(iter, KIND);           \
    }                                                   \
    int32_t name##_get_len(Record *argument) {          \
        ORU_REQUIRE(argument);                          \
        return static_cast<int32_t>(argument->count);   \
    }

#endif
