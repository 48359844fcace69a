#ifndef ORU_SRC_DO_CONFIG_OP_H
#define ORU_SRC_DO_CONFIG_OP_H

#include "frame/object.h"
#include "oru/config_op.h"

struct ORUDoConfigOp {
    uint32_t ref_count;
    int32_t op_code;
    int32_t noop;
    ORUDoUri *mr_uri;
    ORUDoProperties *props;
    ORUDoProperties *pr_props;
    ORUDoName *child_ref_name;
    ORUDoName *mr_name;
    ORUDoName *lib_mr_name;
    ORUDoError *err;
};

struct ORUDoConfigOpsItem {
    ORUDoConfigOp *op;
    ORUDoConfigOpsItem *next;
};

struct ORUDoConfigOps {
    uint32_t ref_count;
    ORUDoConfigOpsItem *first;
};

namespace oru {

// The link behind the last operation of a set, and how many stand in front of it: many are appended
// without a walk for each.
struct ConfigOpsEnd {
    ORUDoConfigOpsItem **link;
    int32_t length = 0;

    explicit ConfigOpsEnd(ORUDoConfigOps &ops);
    explicit ConfigOpsEnd(ORUDoConfigOpsItem **known) : link(known) {}
    // Shares the operation. False when it finds no memory, which is told; it is left out then.
    bool append(ORUDoConfigOp *op);
    void step();
};

}  // namespace oru

template <>
struct oru::ObjectType<ORUDoConfigOp> {
    static constexpr const char *name = "oru_do_config_op";
    static constexpr Tag tag = Tag::conf_op;
    static auto &count(ORUDoConfigOp &self) { return self.ref_count; }
    static void release_members(ORUDoConfigOp &self);
};

template <>
struct oru::ObjectType<ORUDoConfigOps> {
    static constexpr const char *name = "oru_do_config_ops";
    static constexpr Tag tag = Tag::conf_ops;
    static auto &count(ORUDoConfigOps &self) { return self.ref_count; }
    static void release_members(ORUDoConfigOps &self);
};

#endif
