#include "do/error_list.h"

#include "do/error.h"
#include "frame/chain.h"
#include "frame/iter.h"

namespace {

using oru::ErrorListItem;

oru::Chain<ErrorListItem> items_of(ORUDoErrorList &list) {
    return {list.head, list.tail, list.len};
}

bool append(ORUDoErrorList &list, ORUDoError *err) {
    auto *item = oru::make_element<ErrorListItem>();
    if (item == nullptr)
        return false;
    item->err = oru::ref(err);
    items_of(list).append(item);
    return true;
}

}  // namespace

void oru::ObjectType<ORUDoErrorList>::release_members(ORUDoErrorList &self) {
    oru_do_error_list_clear(&self);
}

ORUDoErrorList *oru_do_error_list_new() {
    return oru::make<ORUDoErrorList>();
}

int32_t oru_do_error_list_add(ORUDoErrorList *list, ORUDoError *err) {
    if (list == nullptr || err == nullptr || !append(*list, err))
        return -1;
    return static_cast<int32_t>(list->len);
}

int32_t oru_do_error_list_add_all(ORUDoErrorList *dst, ORUDoErrorList *src) {
    ORU_REQUIRE(dst);
    ORU_REQUIRE(src);
    items_of(*src).each([dst](const ErrorListItem &item) {
        append(*dst, item.err);
        return true;
    });
    return static_cast<int32_t>(dst->len);
}

void oru_do_error_list_iter(ORUDoErrorList *list, ORUDoIter *iter) {
    ORU_REQUIRE(list);
    oru::iter_bind(iter, DO_COLL_ERROR_LIST, list, list->head);
}

int32_t oru_do_error_list_has_next(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_ERROR_LIST);
}

ORUDoError *oru_do_error_list_get_next(ORUDoIter *iter) {
    const auto *item = oru::iter_advance<ErrorListItem>(iter);
    return item != nullptr ? item->err : nullptr;
}

int32_t oru_do_error_list_get_len(ORUDoErrorList *list) {
    return list != nullptr ? static_cast<int32_t>(list->len) : -1;
}

ORUDoError *oru_do_error_list_get_error(ORUDoErrorList *list, int32_t index) {
    ORU_REQUIRE(list);
    const ErrorListItem *item = items_of(*list).at(index);
    return item != nullptr ? item->err : nullptr;
}

void oru_do_error_list_clear(ORUDoErrorList *list) {
    if (list == nullptr)
        return;
    items_of(*list).clear([](ErrorListItem *item) {
        oru::deref(item->err);
        oru::free_element(item);
    });
}

int32_t oru_do_error_list_equals(ORUDoErrorList *errlist1, ORUDoErrorList *errlist2) {
    ORU_REQUIRE(errlist1);
    ORU_REQUIRE(errlist2);
    return oru::same_items(errlist1->head, errlist2->head,
                           [](const ErrorListItem &a, const ErrorListItem &b) {
                               return oru_do_error_equals(a.err, b.err) != 0;
                           });
}

ORU_OBJECT_API(ORUDoErrorList, oru_do_error_list)
