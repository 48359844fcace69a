#ifndef ORU_SRC_DO_ERROR_H
#define ORU_SRC_DO_ERROR_H

#include "frame/object.h"
#include "oru/error.h"

struct ORUDoError {
    char *msg;
    char *name_space;
    ORUDoError *cause;
    ORUDoPropErrs *prop_errs;
    uint32_t ref;
    int32_t code;
};

template <>
struct oru::ObjectType<ORUDoError> {
    static constexpr const char *name = "oru_do_error";
    static constexpr Tag tag = Tag::error;
    static auto &count(ORUDoError &self) { return self.ref; }
    static void release_members(ORUDoError &self);
};

#endif
