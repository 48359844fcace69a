#include "do/dtree.h"

namespace {

struct Visit {
    int32_t (*pre)(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *context);
    int32_t (*post)(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *context);
    void *context;

    bool before(ORUDoDtree *parent, ORUDoDtree *node, int32_t level) const {
        return pre == nullptr || pre(parent, node, level, context) != 0;
    }
    bool behind(ORUDoDtree *parent, ORUDoDtree *node, int32_t level) const {
        return post == nullptr || post(parent, node, level, context) != 0;
    }
};

bool visit_node(const Visit &visit, ORUDoDtree *parent, ORUDoDtree *node, int32_t level) {
    if (!visit.before(parent, node, level))
        return false;
    for (ORUDoDtree *child = node->children; child != nullptr; child = child->next) {
        if (!visit_node(visit, node, child, level + 1))
            return false;
    }
    return visit.behind(parent, node, level);
}

// The children of a node, then what is below each of them, then the children again.
bool visit_family(const Visit &visit, ORUDoDtree *node, int32_t level) {
    for (ORUDoDtree *child = node->children; child != nullptr; child = child->next) {
        if (!visit.before(node, child, level))
            return false;
    }
    for (ORUDoDtree *child = node->children; child != nullptr; child = child->next) {
        if (!visit_family(visit, child, level + 1))
            return false;
    }
    for (ORUDoDtree *child = node->children; child != nullptr; child = child->next) {
        if (!visit.behind(node, child, level))
            return false;
    }
    return true;
}

}  // namespace

int32_t oru_do_dtree_visit_depth_first(ORUDoDtree *dtree,
                                       int32_t (*pre)(ORUDoDtree *, ORUDoDtree *, int32_t, void *),
                                       int32_t (*post)(ORUDoDtree *, ORUDoDtree *, int32_t, void *),
                                       void *context) {
    ORU_REQUIRE(dtree);
    return visit_node({pre, post, context}, nullptr, dtree, 0);
}

int32_t oru_do_dtree_visit_breath_first(
    ORUDoDtree *dtree, int32_t (*pre)(ORUDoDtree *, ORUDoDtree *, int32_t, void *),
    int32_t (*post)(ORUDoDtree *, ORUDoDtree *, int32_t, void *), void *context) {
    ORU_REQUIRE(dtree);
    const Visit visit{pre, post, context};
    return visit.before(nullptr, dtree, 0) && visit_family(visit, dtree, 1) &&
           visit.behind(nullptr, dtree, 0);
}
