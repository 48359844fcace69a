#include "oru/rows_properties.h"

#include "do/dtree.h"
#include "do/properties.h"
#include "frame/object.h"
#include "frame/tags.h"
#include "frame/text.h"
#include "oru/dtree.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/rc.h"

struct ORUDoRowProperty {
    ORUDoProperties *properties;
    ORUDoRowProperty *next;
};

struct ORUDoRowProperties {
    ORUDoRowProperty *first;
    uint32_t ref_count;
    int32_t count;
};

namespace {

using oru::Level;

void release_row(ORUDoRowProperty *row) {
    oru::deref(row->properties);
    ph_free_named(row);
}

// A row without a table; null when memory runs out, which is told.
ORUDoRowProperty *new_row() {
    auto *row = static_cast<ORUDoRowProperty *>(
        ph_calloc_named(oru::tag_word(oru::Tag::rows_props), 1, sizeof(ORUDoRowProperty)));
    if (row == nullptr)
        ORU_TRACE(Level::failure, "ORUDoRowProperty allocation failed\n");
    return row;
}

// The rows that a walk has made so far.
struct Collection {
    ORUDoRowProperties *rows;
    ORUDoRowProperty *last;

    ORUDoRowProperty *append_row();
};

// The set is made with the first row.
ORUDoRowProperty *Collection::append_row() {
    auto *row = new_row();
    if (row == nullptr)
        return nullptr;
    if (rows == nullptr) {
        rows = oru_do_rows_properties_new();
        if (rows == nullptr) {
            ORU_TRACE(Level::failure, "ORUDoRowProperties allocation failed\n");
            release_row(row);
            return nullptr;
        }
    }
    (last != nullptr ? last->next : rows->first) = row;
    last = row;
    return row;
}

bool take_leaf(ORUDoDtree *leaf, Collection &collection) {
    ORUDoRowProperty *row = collection.append_row();
    if (row == nullptr)
        return false;
    row->properties = oru::ref(oru_do_dtree_get_properties(leaf));
    if (row->properties == nullptr) {
        ORU_TRACE(Level::failure, "dtree properties is null\n");
        return false;
    }
    ORUDoUri *uri = oru_do_dtree_get_mr_uri(leaf);
    if (uri == nullptr) {
        ORU_TRACE(Level::failure, "dtree mr_uri is null\n");
        return false;
    }
    // The table is the leaf's own, which has the attribute now too.
    oru_do_properties_set_mr_uri(row->properties, ORU_DO_NAME_URI, uri);
    ++collection.rows->count;
    return true;
}

// Inner nodes are passed over.
int32_t collect(ORUDoDtree *, ORUDoDtree *node, int32_t, void *context) {
    if (node == nullptr) {
        ORU_TRACE(Level::failure, "Node NULL in depth first traversal\n");
        return 0;
    }
    if (context == nullptr) {
        ORU_TRACE(Level::failure, "User context is NULL\n");
        return 0;
    }
    return node->children != nullptr || take_leaf(node, *static_cast<Collection *>(context));
}

}  // namespace

template <>
struct oru::ObjectType<ORUDoRowProperties> {
    static constexpr const char *name = "oru_do_rows_properties";
    static constexpr Tag tag = Tag::rows_props;
    static auto &count(ORUDoRowProperties &self) { return self.ref_count; }
    static void release_members(ORUDoRowProperties &self) {
        while (ORUDoRowProperty *row = self.first) {
            self.first = row->next;
            release_row(row);
        }
    }
};

ORUDoRowProperties *oru_do_rows_properties_new() {
    return oru::make<ORUDoRowProperties>();
}

ORUDoRowProperties *oru_do_dtree_into_properties(ORUDoDtree *dtree) {
    if (dtree == nullptr) {
        ORU_TRACE(Level::failure, "Dtree is NULL\n");
        return nullptr;
    }
    const oru::Text context(static_cast<char *>(
        ph_calloc_named(oru::tag_word(oru::Tag::rows_props), 1, sizeof(Collection))));
    if (!context) {
        ORU_TRACE(Level::failure, "Dtree_ctx allocation failed\n");
        return nullptr;
    }
    auto &collection = *reinterpret_cast<Collection *>(context.get());
    if (oru_do_dtree_visit_depth_first(dtree, collect, nullptr, &collection) == 0) {
        ORU_TRACE(Level::failure, "Dtree walk failed\n");
        oru::deref(collection.rows);
        return nullptr;
    }
    return collection.rows;
}

// ---- Reading ----

int32_t oru_do_rows_properties_count(ORUDoRowProperties *rows) {
    return rows != nullptr ? rows->count : 0;
}

ORUDoRowProperty *oru_do_rows_property_get_first(ORUDoRowProperties *rows) {
    return rows != nullptr ? rows->first : nullptr;
}

ORUDoRowProperty *oru_do_rows_property_get_next(ORUDoRowProperty *row) {
    return row != nullptr ? row->next : nullptr;
}

ORUDoProperties *oru_do_rows_property_get_properties(ORUDoRowProperty *row) {
    return row != nullptr ? oru::ref(row->properties) : nullptr;
}

// ---- Changing ----

int32_t oru_do_rows_properties_prepend(ORUDoRowProperties *rows, ORUDoProperties *properties) {
    if (rows == nullptr || properties == nullptr)
        return ORU_RC_NO_VALUE;
    auto *row = new_row();
    if (row == nullptr)
        return ORU_RC_MALLOC;
    row->properties = properties;
    row->next = rows->first;
    rows->first = row;
    ++rows->count;
    return ORU_OK;
}

ORU_OBJECT_API(ORUDoRowProperties, oru_do_rows_properties)
