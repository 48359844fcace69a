#ifndef ORU_SRC_DO_DTREE_H
#define ORU_SRC_DO_DTREE_H

#include "frame/object.h"
#include "oru/dtree.h"

struct ORUDoDtree {
    ORUDoName *name;
    ORUDoValue *mr_uri;  // a value, since it answers for the attribute "_uri"
    ORUDoProperties *properties;
    ORUDoError *error;
    ORUDoDtree *next;  // this link carries the parent's reference on the sibling
    ORUDoDtree *children;
    ORUDoDtree *parent;  // not counted
    int32_t hidden;
    uint32_t ref_count;
};

namespace oru {

// Adds a child behind `last`, which is the last child of the parent, without a walk to the end;
// null for a last child that is not known. Null when memory runs out.
ORUDoDtree *dtree_add_child_behind(ORUDoDtree &parent, ORUDoDtree *last, ORUDoName &name);

}  // namespace oru

template <>
struct oru::ObjectType<ORUDoDtree> {
    static constexpr const char *name = "oru_do_dtree";
    static constexpr Tag tag = Tag::dtree;
    static auto &count(ORUDoDtree &self) { return self.ref_count; }
    static void release_members(ORUDoDtree &self);
};

#endif
