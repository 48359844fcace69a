// Documents made by hand, walked against a fake back end.
#ifndef ORU_TESTS_UNIT_DTL_WALK_SUPPORT_H
#define ORU_TESTS_UNIT_DTL_WALK_SUPPORT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oru/dtree.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "tests/support/fake_ifc.h"
#include "tests/unit/dtl/tree_support.h"

namespace oru::test {

using Calls = std::vector<std::string>;

class DtlWalk : public testing::Test {
  protected:
    ~DtlWalk() override {
        oru_dtl_ctx_delete(ctx);
        EXPECT_EQ(system.open_cursors(), 0);
    }

    // A collection below `above`, with the attributes asked for.
    ORUDtlNode *collection(ORUDtlNode *above, const char *name, const char *uri,
                           std::initializer_list<const char *> attributes = {}) {
        ORUDtlNode *node = add_mr_node(above, name, ORU_DTL_OP_COLL_GET, uri);
        for (const char *attribute : attributes)
            attr(node, attribute);
        return node;
    }

    // An attribute asked of a resource.
    ORUDtlNode *attr(ORUDtlNode *above, const char *name, int32_t type = ORU_DTL_NODE_ATTR) {
        const Name attribute(oru_do_name_new(name));
        if (type == ORU_DTL_NODE_OPER_ATTR) {
            oru_dtl_tree_add_oper_attr(above, attribute.get());
        } else {
            oru_dtl_tree_add_cfg_attr(above, attribute.get());
        }
        return add_node(above, name, type, ORU_DTL_OP_NOOP);
    }

    void param(const char *name, const FakeValue &value) {
        const Value object = make_value(value);
        oru_do_nvlist_add(params.get(), name, object.get());
    }

    int32_t next(int32_t count) {
        if (ctx == nullptr)
            ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
        return oru_dtl_get_next(system.data(), ctx, params.get(), count);
    }

    // What was read, and what was asked for it, since the last look.
    std::string tree() const { return show_children(ctx->dtree_node); }
    Calls calls() { return system.take_calls(); }

    FakeSystem system;
    Tree doc{oru_dtl_tree_new()};
    Nvlist params{oru_do_nvlist_new()};
    ORUDtlCtx *ctx = nullptr;
};

}  // namespace oru::test

#endif
