#ifndef ORU_SRC_DO_ERROR_LIST_H
#define ORU_SRC_DO_ERROR_LIST_H

#include "frame/object.h"
#include "oru/error.h"

namespace oru {

struct ErrorListItem {
    ORUDoError *err;
    ErrorListItem *next;
};

}  // namespace oru

struct ORUDoErrorList {
    oru::ErrorListItem *head;
    oru::ErrorListItem *tail;
    uint32_t len;
    uint32_t ref;
};

template <>
struct oru::ObjectType<oru::ErrorListItem> {
    static constexpr const char *name = "oru_do_error_list_item";
    static constexpr Tag tag = Tag::err_list_item;
};

template <>
struct oru::ObjectType<ORUDoErrorList> {
    static constexpr const char *name = "oru_do_error_list";
    static constexpr Tag tag = Tag::error_list;
    static auto &count(ORUDoErrorList &self) { return self.ref; }
    static void release_members(ORUDoErrorList &self);
};

#endif
