// The record of a type's description.
#ifndef ORU_SRC_MD_TYPEDEF_META_H
#define ORU_SRC_MD_TYPEDEF_META_H

#include "frame/object.h"
#include "oru/typedef_meta.h"

// What a simple type has; owned by its description alone.
struct ORUDoSimpleTypeMeta {
    int32_t typecode;
    ORUDoConstraintList *constraint_list;
};

struct ORUDoTypedefMeta {
    ORUDoName *name;
    union {
        ORUDoSimpleTypeMeta *simple;
        ORUDoNvlist *enums;
        ORUDoNtlist *members;  // of a sequence or a choice
    };
    uint32_t ref;
    int32_t category;
};

template <>
struct oru::ObjectType<ORUDoSimpleTypeMeta> {
    static constexpr const char *name = "oru_do_simple_type_meta";
    static constexpr Tag tag = Tag::s_type_meta;
};

template <>
struct oru::ObjectType<ORUDoTypedefMeta> {
    static constexpr const char *name = "oru_do_typedef_meta";
    static constexpr Tag tag = Tag::typedef_meta;
    static auto &count(ORUDoTypedefMeta &self) { return self.ref; }
    static void release_members(ORUDoTypedefMeta &self);
};

#endif
