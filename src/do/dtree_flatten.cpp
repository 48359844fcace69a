#include <cstring>
#include <initializer_list>

#include "do/dtree.h"
#include "do/error.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/strbuf.h"
#include "do/value.h"

namespace {

using oru::Level;
using oru::Ref;

// The pieces in one buffer; no buffer when memory ran out.
Ref<ORUDoStrbuf> joined(std::initializer_list<const char *> pieces) {
    auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return text;
    for (const char *piece : pieces)
        oru_do_strbuf_add_string(text.get(), piece);
    if (oru_do_strbuf_get_err(text.get()) != 0)
        text = Ref<ORUDoStrbuf>();
    return text;
}

const char *name_of(const ORUDoDtree &node) {
    return oru_do_name_get_strname(node.name);
}

// The state of one call. Nodes are spliced in behind the node that was moved last, by whichever
// child, and a child that goes is unlinked behind the node in front of it as the walk saw it. So
// with several children in one call nodes spliced in directly in front of a later child get lost.
// The executor never does this; results depend on it.
class Flattening {
  public:
    Flattening(ORUDoDtree &parent, uint32_t flags) : parent_(parent), flags_(flags & 0xffffu) {}

    // Works from `first` up to, not including, `end`. `before` is the sibling in front of `first`.
    ORUDoDtree *run(ORUDoDtree *before, ORUDoDtree *first, ORUDoDtree *end) {
        kept_ = before_ = before;
        for (ORUDoDtree *node = first; node != end && node != nullptr;) {
            if (node->ref_count != 1) {
                before_ = node;  // somebody holds it: left in place, not counted as kept
            } else if (node->children == nullptr) {
                kept_ = before_ = node;
            } else if (move_children(*node)) {
                node = remove(node);
                continue;
            } else {
                break;
            }
            node = node->next;
        }
        return kept_;
    }

  private:
    bool move_children(ORUDoDtree &child) {
        while (ORUDoDtree *moved = child.children) {
            if (!take_over(child, *moved))
                return false;
            child.children = moved->next;
            ORUDoDtree &place = last_moved_ != nullptr ? *last_moved_ : child;
            moved->next = place.next;
            place.next = moved;
            last_moved_ = moved;
        }
        return true;
    }

    bool take_over(ORUDoDtree &child, ORUDoDtree &moved) {
        if (moved.properties == nullptr)
            moved.properties = oru_do_properties_new();
        if (moved.properties == nullptr) {
            ORU_TRACE(Level::failure, "Failed to allocate property list\n");
            return false;
        }
        if ((flags_ & ORU_DTREE_FLATTEN_NODE_NAMES) != 0)
            prefix_name(child, moved);
        if (moved.properties != last_merged_.get() && child.properties != nullptr)
            merge_properties(child, moved);
        if ((flags_ & ORU_DTREE_FLATTEN_URIS) != 0 && child.mr_uri != nullptr)
            set_uri(child, moved);
        return true;
    }

    static void prefix_name(const ORUDoDtree &child, ORUDoDtree &moved) {
        const auto text = joined({name_of(child), ".", name_of(moved)});
        if (!text)
            return;
        ORUDoName *name = oru_do_name_new(oru_do_strbuf_to_string(text.get()));
        if (name != nullptr)
            oru::deref(std::exchange(moved.name, name));
    }

    void merge_properties(ORUDoDtree &child, ORUDoDtree &moved) {
        const char *dot = std::strchr(name_of(moved), '.');
        if ((flags_ & ORU_DTREE_FLATTEN_ATTR_NAMES) != 0 && dot != nullptr &&
            !prefix_attributes(moved, dot + 1))
            return;
        oru_do_properties_add_all(moved.properties, child.properties);
        last_merged_ = Ref<ORUDoProperties>::share(moved.properties);
    }

    // False, and the table as it was, when an entry has no value or memory ran out.
    static bool prefix_attributes(ORUDoDtree &moved, const char *prefix) {
        const auto renamed = Ref<ORUDoProperties>::adopt(oru_do_properties_new());
        if (!renamed)
            return false;
        ORUDoIter iter;
        oru_do_properties_iter(moved.properties, &iter);
        while (ORUDoProperty *entry = oru_do_properties_get_next(&iter)) {
            ORUDoValue *value = oru_do_property_get_value(entry);
            const auto name = joined({prefix, ".", oru_do_property_get_name_string(entry)});
            if (value == nullptr || !name)
                return false;
            oru_do_properties_set_value(renamed.get(), oru_do_strbuf_to_string(name.get()), value);
        }
        oru_do_properties_clear(moved.properties);
        oru_do_properties_add_all(moved.properties, renamed.get());
        return true;
    }

    static void set_uri(const ORUDoDtree &child, ORUDoDtree &moved) {
        const auto name = joined({name_of(child), ".__uri"});
        if (name) {
            oru_do_properties_set_value(moved.properties, oru_do_strbuf_to_string(name.get()),
                                        child.mr_uri);
        }
    }

    // The child has given up its children and nobody else holds it. Gives the node behind it.
    ORUDoDtree *remove(ORUDoDtree *child) {
        ORUDoDtree *next = child->next;
        (before_ != nullptr ? before_->next : parent_.children) = next;
        oru::ObjectType<ORUDoDtree>::release_members(*child);
        child->parent = nullptr;
        oru::free_element(child);
        return next;
    }

    ORUDoDtree &parent_;
    uint32_t flags_;
    ORUDoDtree *kept_ = nullptr;
    ORUDoDtree *before_ = nullptr;
    ORUDoDtree *last_moved_ = nullptr;
    // Held, so that no new table takes its place in memory: its node may go before the next merge.
    Ref<ORUDoProperties> last_merged_;
};

}  // namespace

ORUDoDtree *oru_do_dtree_flatten(ORUDoDtree *dtree, ORUDoDtree *start_child, uint32_t flags) {
    ORU_REQUIRE(dtree);
    Flattening work(*dtree, flags);
    if (start_child == nullptr)
        return work.run(nullptr, dtree->children, nullptr);
    ORUDoDtree *before = nullptr;
    for (ORUDoDtree *child = dtree->children; child != nullptr; child = child->next) {
        if (child == start_child)
            return work.run(before, child, child->next);
        before = child;
    }
    return nullptr;
}

ORUDoDtree *oru_do_dtree_flatten_doc(ORUDoDtree *dtree, uint32_t flags) {
    ORU_REQUIRE(dtree);
    if (dtree->children == nullptr)
        return nullptr;
    oru_do_dtree_flatten(dtree->children, nullptr, flags);
    return dtree->children;
}
