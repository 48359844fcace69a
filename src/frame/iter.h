// What the iterators of all collections share.
#ifndef ORU_SRC_FRAME_ITER_H
#define ORU_SRC_FRAME_ITER_H

#include "frame/object.h"
#include "oru/iter.h"

template <>
struct oru::ObjectType<ORUDoIter> {
    static constexpr const char *name = "oru_do_iter";
    static constexpr Tag tag = Tag::iter;
    static auto &count(ORUDoIter &self) { return self.ref; }
    static void release_members(ORUDoIter &) {}
};

namespace oru {

inline constexpr ORUDoIter kUnboundIter{1, -1, nullptr, nullptr, 0};

// Binds `iter` to a collection whose null was refused by the caller already.
inline void iter_bind(ORUDoIter *iter, int32_t kind, void *collection, void *first) {
    ORU_REQUIRE(iter);
    iter->coll_type = kind;
    iter->collection = collection;
    iter->next = first;
    iter->position = 0;
}

// The element at hand, or null at the end; the iterator moves on before the caller sees it. The
// kind is not looked at here.
template <class Element>
Element *iter_advance(ORUDoIter *iter) {
    ORU_REQUIRE(iter);
    auto *element = static_cast<Element *>(iter->next);
    if (element != nullptr)
        iter->next = element->next;
    return element;
}

}  // namespace oru

// The body of a `_has_next`: the kind's constant is part of the assertion's text.
#define ORU_ITER_HAS_NEXT(iter, KIND) \
    (ORU_REQUIRE(iter), ORU_REQUIRE(iter->coll_type == KIND), (iter)->next != nullptr)

#endif
