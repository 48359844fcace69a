#include "do/dtree.h"

#include "do/error.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/uri.h"
#include "do/value.h"
#include "frame/iter.h"
#include "oru/rc.h"

namespace {

ORUDoDtree *first_unhidden(ORUDoDtree *node) {
    while (node != nullptr && node->hidden != 0)
        node = node->next;
    return node;
}

// The link at the end of a chain of siblings.
ORUDoDtree **end_of_chain(ORUDoDtree **link) {
    while (*link != nullptr)
        link = &(*link)->next;
    return link;
}

bool has_child(const ORUDoDtree &parent, const ORUDoDtree *node) {
    const ORUDoDtree *child = parent.children;
    while (child != nullptr && child != node)
        child = child->next;
    return child != nullptr;
}

// Releases the children in front of `end`, one of them, which becomes the first; null releases all.
void release_children(ORUDoDtree &parent, ORUDoDtree *end) {
    while (parent.children != end) {
        ORUDoDtree *child = parent.children;
        // Who holds the child on its own may give it to another parent.
        parent.children = std::exchange(child->next, nullptr);
        oru::deref(child);
    }
}

}  // namespace

void oru::ObjectType<ORUDoDtree>::release_members(ORUDoDtree &self) {
    oru::deref(self.name);
    oru::deref(self.mr_uri);
    oru::deref(self.properties);
    oru::deref(self.error);
    release_children(self, nullptr);
}

ORUDoDtree *oru::dtree_add_child_behind(ORUDoDtree &parent, ORUDoDtree *last, ORUDoName &name) {
    if (last == nullptr || last->next != nullptr || last->parent != &parent)
        return oru_do_dtree_add_child(&parent, &name);
    ORUDoDtree *child = oru_do_dtree_new(&name);
    last->next = child;
    if (child != nullptr)
        child->parent = &parent;
    return child;
}

ORUDoDtree *oru_do_dtree_new(ORUDoName *name) {
    ORU_REQUIRE(name);
    auto *dtree = oru::make<ORUDoDtree>();
    if (dtree != nullptr)
        dtree->name = oru::ref(name);
    return dtree;
}

ORUDoDtree *oru_do_dtree_new_str(const char *text) {
    const auto name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(text));
    return name ? oru_do_dtree_new(name.get()) : nullptr;
}

ORUDoDtree *oru_do_dtree_add_child(ORUDoDtree *parent_dtree, ORUDoName *name) {
    ORU_REQUIRE(parent_dtree);
    ORU_REQUIRE(name);
    const auto child = oru::Ref<ORUDoDtree>::adopt(oru_do_dtree_new(name));
    return child ? oru_do_dtree_adopt_child(parent_dtree, child.get()) : nullptr;
}

ORUDoDtree *oru_do_dtree_adopt_child(ORUDoDtree *parent_dtree, ORUDoDtree *child_node) {
    ORU_REQUIRE(parent_dtree);
    ORU_REQUIRE(child_node);
    if (child_node->next != nullptr) {
        const auto error = oru::Ref<ORUDoError>::adopt(
            oru_do_error_new(ORU_RC_GENERAL, "oru_do_dtree_adopt_child: child has sibling."));
        oru_do_dtree_set_error(parent_dtree, error.get());
        return nullptr;
    }
    *end_of_chain(&parent_dtree->children) = oru::ref(child_node);
    child_node->parent = parent_dtree;
    return child_node;
}

void oru_do_dtree_transfer_children(ORUDoDtree *to_dtree, ORUDoDtree *from_dtree) {
    ORU_REQUIRE(to_dtree);
    ORU_REQUIRE(from_dtree);
    ORUDoDtree *moved = std::exchange(from_dtree->children, nullptr);
    *end_of_chain(&to_dtree->children) = moved;
}

ORUDoName *oru_do_dtree_get_name(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    return dtree->name;
}

ORUDoUri *oru_do_dtree_get_mr_uri(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    return oru_do_value_get_uri(dtree->mr_uri);
}

ORUDoProperties *oru_do_dtree_get_properties(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    return dtree->properties;
}

ORUDoError *oru_do_dtree_get_error(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    return dtree->error;
}

void oru_do_dtree_set_mr_uri(ORUDoDtree *dtree, ORUDoUri *uri) {
    ORU_REQUIRE(dtree);
    // The new value counts the URI before the old one lets it go: it may be the same one.
    ORUDoValue *value = uri != nullptr ? oru_do_value_new_mr_uri(uri) : nullptr;
    oru::deref(std::exchange(dtree->mr_uri, value));
}

void oru_do_dtree_set_properties(ORUDoDtree *dtree, ORUDoProperties *props) {
    ORU_REQUIRE(dtree);
    oru::replace(dtree->properties, props);
}

void oru_do_dtree_set_mr_data(ORUDoDtree *dtree, ORUDoUri *uri, ORUDoProperties *props) {
    oru_do_dtree_set_mr_uri(dtree, uri);
    oru_do_dtree_set_properties(dtree, props);
}

void oru_do_dtree_set_error(ORUDoDtree *dtree, ORUDoError *error) {
    ORU_REQUIRE(dtree);
    oru::replace(dtree->error, error);
}

ORUDoDtree *oru_do_dtree_get_parent(ORUDoDtree *dtree) {
    return dtree != nullptr ? dtree->parent : nullptr;
}

ORUDoDtree *oru_do_dtree_get_root(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    while (dtree->parent != nullptr)
        dtree = dtree->parent;
    return dtree;
}

int32_t oru_do_dtree_get_child_count(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    int32_t count = 0;
    for (const ORUDoDtree *child = dtree->children; child != nullptr; child = child->next)
        ++count;
    return count;
}

int32_t oru_do_dtree_get_unhidden_child_count(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    int32_t count = 0;
    for (const ORUDoDtree *child = dtree->children; child != nullptr; child = child->next)
        count += child->hidden == 0;
    return count;
}

ORUDoDtree *oru_do_dtree_get_child(ORUDoDtree *dtree, int32_t index) {
    ORU_REQUIRE(dtree);
    if (index < 0)
        return nullptr;
    ORUDoDtree *child = dtree->children;
    while (child != nullptr && index-- > 0)
        child = child->next;
    return child;
}

ORUDoDtree *oru_do_dtree_get_child_by_name(ORUDoDtree *dtree, const char *text) {
    ORU_REQUIRE(dtree);
    ORUDoDtree *child = dtree->children;
    while (child != nullptr && oru_do_name_equals_w_strname(child->name, text) == 0)
        child = child->next;
    return child;
}

void oru_do_dtree_remove_children(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    release_children(*dtree, nullptr);
}

void oru_do_dtree_remove_visited_peers(ORUDoDtree *dtree) {
    ORU_REQUIRE(dtree);
    // A node that was moved to another chain still names its old parent.
    if (dtree->parent != nullptr && has_child(*dtree->parent, dtree))
        release_children(*dtree->parent, dtree);
}

void oru_do_dtree_hide_node(ORUDoDtree *dtree, int32_t hidden) {
    if (dtree != nullptr)
        dtree->hidden = hidden;
}

int32_t oru_do_dtree_is_hidden(ORUDoDtree *dtree) {
    return dtree != nullptr ? dtree->hidden : 0;
}

void oru_do_dtree_hide_children(ORUDoDtree *dtree, ORUDoDtree *after, int32_t hidden) {
    ORU_REQUIRE(dtree);
    ORUDoDtree *child = after != nullptr ? after->next : dtree->children;
    for (; child != nullptr; child = child->next)
        child->hidden = hidden;
}

void oru_do_dtree_child_iter(ORUDoDtree *dtree, ORUDoIter *iter) {
    ORU_REQUIRE(dtree);
    oru::iter_bind(iter, DO_COLL_DTREE, dtree, first_unhidden(dtree->children));
}

int32_t oru_do_dtree_has_next_child(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_DTREE);
}

ORUDoDtree *oru_do_dtree_get_next_child(ORUDoIter *iter) {
    ORU_REQUIRE(iter);
    auto *child = static_cast<ORUDoDtree *>(iter->next);
    if (child != nullptr)
        iter->next = first_unhidden(child->next);
    return child;
}

ORU_OBJECT_API(ORUDoDtree, oru_do_dtree)
