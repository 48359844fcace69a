// The lists of descriptions and of constraints: one chain of counted objects, whatever they are.
#ifndef ORU_SRC_MD_META_LIST_H
#define ORU_SRC_MD_META_LIST_H

#include "frame/chain.h"
#include "frame/iter.h"
#include "frame/object.h"

namespace oru {

template <class Object>
struct MetaListItem {
    Object *object;
    MetaListItem *next;
};

// The length after `object` was linked by `link`, or -1 without memory.
template <class Object, class List, class Link>
int32_t meta_list_insert(List &list, Object *object, Link &&link) {
    auto *item = make_element<MetaListItem<Object>>(object);
    if (item == nullptr)
        return -1;
    ref(object);
    link(chain(list), item);
    return static_cast<int32_t>(list.count);
}

template <class Object, class List>
int32_t meta_list_append(List &list, Object *object) {
    if (object == nullptr)
        return -1;
    return meta_list_insert(list, object, [](auto ends, auto *item) { ends.append(item); });
}

template <class List>
void meta_list_clear(List &list) {
    chain(list).clear([](auto *item) {
        deref(item->object);
        free_element(item);
    });
}

template <class List>
auto meta_list_at(List &list, int32_t index) {
    auto *item = chain(list).at(index);
    return item != nullptr ? item->object : nullptr;
}

// The first object that `matches`, or null.
template <class List, class Matches>
auto meta_list_find(List &list, Matches &&matches) {
    auto *item = list.first;
    while (item != nullptr && !matches(*item->object))
        item = item->next;
    return item != nullptr ? item->object : nullptr;
}

template <class Object>
Object *meta_list_next(ORUDoIter *iter) {
    auto *item = iter_advance<MetaListItem<Object>>(iter);
    return item != nullptr ? item->object : nullptr;
}

}  // namespace oru

// The operations that all these lists export alike.
#define ORU_META_LIST_API(Record, Object, name, KIND)    \
    ORU_OBJECT_API(Record, name)                         \
    Record *name##_new() {                               \
        return ::oru::make<Record>();                    \
    }                                                    \
    void name##_clear(Record *list) {                    \
        ORU_REQUIRE(list);                               \
        ::oru::meta_list_clear(*list);                   \
    }                                                    \
    void name##_iter(Record *list, ORUDoIter *iter) {    \
        ORU_REQUIRE(list);                               \
        ::oru::iter_bind(iter, KIND, list, list->first); \
    }                                                    \
    int32_t name##_has_next(ORUDoIter *iter) {           \
        return ORU_ITER_HAS_NEXT(iter, KIND);            \
    }                                                    \
    Object *name##_get_next(ORUDoIter *iter) {           \
        return ::oru::meta_list_next<Object>(iter);      \
    }

// One list answers for null here.
#define ORU_META_LIST_LENGTH_API(Record, name)    \
    int32_t name##_get_len(Record *list) {        \
        ORU_REQUIRE(list);                        \
        return static_cast<int32_t>(list->count); \
    }

#endif
