#ifndef ORU_SRC_DO_PROP_ERRS_H
#define ORU_SRC_DO_PROP_ERRS_H

#include "frame/object.h"
#include "oru/error.h"

// An entry: the error of one property.
struct ORUDoPropErr {
    ORUDoName *name;
    ORUDoError *err;
    ORUDoPropErr *next;
};

struct ORUDoPropErrs {
    ORUDoPropErr *head;
    uint32_t ref;
};

template <>
struct oru::ObjectType<ORUDoPropErr> {
    static constexpr const char *name = "oru_do_prop_err";
    static constexpr Tag tag = Tag::prop_err;
};

template <>
struct oru::ObjectType<ORUDoPropErrs> {
    static constexpr const char *name = "oru_do_prop_errs";
    static constexpr Tag tag = Tag::prop_errs;
    static auto &count(ORUDoPropErrs &self) { return self.ref; }
    static void release_members(ORUDoPropErrs &self);
};

#endif
