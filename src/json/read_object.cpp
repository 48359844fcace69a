// The objects that are no values.
#include "do/dtree.h"
#include "do/name.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/properties.h"
#include "do/properties_list.h"
#include "do/uri.h"
#include "do/value.h"
#include "do/vlist.h"
#include "do/vtable.h"
#include "json/read_names.h"
#include "json/read_stack.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties_list.h"
#include "oru/vlist.h"

namespace oru::json {
namespace {

// A member that finds no memory is left out, with the failure in the context.
void set_property(ORUDoJsonCtxData *ctx, ORUDoProperties *props, const Element &element,
                  Item &item) {
    auto name = read_name(ctx, item.key, item.key_len);
    if (name && properties_find(*props, name->str) != nullptr)
        return;  // the first occurrence wins
    auto value = name ? take_value(element, item) : Ref<ORUDoValue>();
    if (!value || !properties_hand_over(*props, std::move(name), std::move(value)))
        fail_memory(ctx);
}

// ---- Data trees ----

// The list of children comes as an element of its own. They wait in a node without a name, in the
// member of the parent that the list stands in.
void gather_children(ORUDoJsonCtxData *ctx, const Element &list) {
    Item *place = list.parent->items;
    while (place != nullptr && !has_key(*place, "children"))
        place = place->next;
    if (place == nullptr || place->obj != nullptr)
        return;
    settle(*ctx, *list.parent);
    list.parent->completed = false;  // the next one that comes out of it takes the children
    ORUDoDtree *holder = oru_do_dtree_new_str("");
    if (holder == nullptr) {
        fail_memory(ctx);
        return;
    }
    place->type = kTypeDtree;
    place->obj = holder;
    ORUDoDtree **end = &holder->children;
    for (const Item *item = list.items; item != nullptr; item = item->next) {
        auto *child = static_cast<ORUDoDtree *>(item->obj);
        if (item->type != kTypeDtree || child == nullptr || child->next != nullptr)
            continue;
        // Adoption, without a walk along the chain for each.
        *end = oru::ref(child);
        child->parent = holder;
        end = &child->next;
    }
}

// Moves the children to their node. The one that held them will be gone, so they learn of the new
// parent here.
void take_children(ORUDoDtree *node, const Item &place) {
    auto *holder = static_cast<ORUDoDtree *>(place.obj);
    for (ORUDoDtree *child = holder->children; child != nullptr; child = child->next)
        child->parent = node;
    oru_do_dtree_transfer_children(node, holder);
}

void set_node_uri(ORUDoJsonCtxData *ctx, ORUDoDtree *node, const Item &item) {
    const auto uri = Ref<ORUDoUri>::adopt(oru_do_uri_new_l(item.scalar.text, item.scalar_len));
    if (uri)
        oru_do_dtree_set_mr_uri(node, uri.get());
    if (node->mr_uri == nullptr)
        fail_memory(ctx);
}

bool comes_before(const Item *item, const Item *other) {
    while (item != nullptr && item != other)
        item = item->next;
    return item == other;
}

void fill_node(ORUDoJsonCtxData *ctx, ORUDoDtree *node, const Element &element, const Item *name) {
    if (const Item *item = find_item(element, "mr_uri", kText))
        set_node_uri(ctx, node, *item);
    if (const Item *item = find_item(element, "err", kTypeError))
        oru_do_dtree_set_error(node, static_cast<ORUDoError *>(item->obj));
    if (const Item *item = find_item(element, "props", kTypeProperties))
        oru_do_dtree_set_properties(node, static_cast<ORUDoProperties *>(item->obj));
    const Item *children = find_item(element, "children", kTypeDtree);
    // Children in front of the name are lost: the node is made at its name.
    if (children != nullptr && comes_before(name, children))
        take_children(node, *children);
}

}  // namespace

bool is_complete(ORUDoJsonCtxData *ctx, const Element *element, int64_t mask, int64_t want) {
    if (ctx == nullptr) {
        ORU_TRACE(Level::failure, "error: ctx_data null");
        return false;
    }
    if (element == nullptr) {
        fail(ctx, ORU_JSON_ERR_NO_ELEMENT);
        ORU_TRACE(Level::failure, "error: tmp_obj null");
        return false;
    }
    const int64_t type = element->type_info != nullptr ? element->type_info->type_code : 0;
    const bool may_be_empty =
        type == kTypeVtable || ((type & kValue) != 0 && element->in_array != 0);
    if (element->items == nullptr && !may_be_empty) {
        fail(ctx, ORU_JSON_ERR_NO_ITEMS);
        ORU_TRACE(Level::failure, "error: tmp_obj->val null");
        return false;
    }
    if ((type & mask) != want) {
        fail(ctx, ORU_JSON_ERR_TYPE);
        ORU_TRACE(Level::failure, "error: not the expected type");
        return false;
    }
    return true;
}

void *properties_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeProperties))
        return nullptr;
    auto props = Ref<ORUDoProperties>::adopt(oru_do_properties_new());
    for (Item *item = element->items; props && item != nullptr; item = item->next) {
        if (item->key == nullptr)
            break;
        set_property(ctx, props.get(), *element, *item);
    }
    return finished(ctx, std::move(props));
}

void *properties_list_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypePropertiesList))
        return nullptr;
    auto list = Ref<ORUDoPropertiesList>::adopt(oru_do_properties_list_new());
    for (const Item *item = element->items; list && item != nullptr; item = item->next) {
        if (item->type == kTypeProperties &&
            oru_do_properties_list_add(list.get(), static_cast<ORUDoProperties *>(item->obj)) < 0)
            fail_memory(ctx);
    }
    return finished(ctx, std::move(list));
}

void *nlist_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeNlist))
        return nullptr;
    auto list = Ref<ORUDoNlist>::adopt(oru_do_nlist_new());
    for (const Item *item = element->items; list && item != nullptr; item = item->next) {
        if (item->type != kText)
            continue;
        const auto name = read_name(ctx, item->scalar.text, item->scalar_len);
        if (!name || oru_do_nlist_add(list.get(), name.get()) < 0)
            list = Ref<ORUDoNlist>();
    }
    return finished(ctx, std::move(list));
}

void *nvlist_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeNvlist))
        return nullptr;
    auto list = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    for (Item *item = element->items; list && item != nullptr; item = item->next) {
        if (item->key == nullptr)
            continue;
        if (nvlist_hand_over(*list, key_of(*item), take_value(*element, *item).release()) < 0)
            fail_memory(ctx);
    }
    return finished(ctx, std::move(list));
}

// A list that stands directly in a table is one of its rows too. Tables know no types of columns,
// so a row is read like any other list.
void *vlist_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeVlist))
        return nullptr;
    auto list = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    for (Item *item = element->items; list && item != nullptr; item = item->next) {
        if (vlist_hand_over(*list, take_value(*element, *item)) < 0)
            fail_memory(ctx);
    }
    const Element *parent = element->parent;
    if (list && parent != nullptr && parent->obj != nullptr &&
        parent->type_info->type_code == kTypeVtable) {
        auto *table = static_cast<ORUDoVtable *>(parent->obj);
        oru_do_vtable_add(table, list.get());
        if (table->last == nullptr)
            fail_memory(ctx);  // the row counts and is not there
    }
    return finished(ctx, std::move(list));
}

void *vtable_deser(ORUDoJsonCtxData *, Element *element) {
    return oru_do_vtable_ref(static_cast<ORUDoVtable *>(element->obj));
}

void *dtree_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeDtree))
        return nullptr;
    if (element->in_array != 0) {
        if (element->parent != nullptr)
            gather_children(ctx, *element);
        return nullptr;
    }
    const Item *name = find_item(*element, "name", kText);
    if (name == nullptr)
        return nullptr;
    const auto object = read_name(ctx, name->scalar.text, name->scalar_len);
    auto node = Ref<ORUDoDtree>::adopt(object ? oru_do_dtree_new(object.get()) : nullptr);
    if (node)
        fill_node(ctx, node.get(), *element, name);
    return finished(ctx, std::move(node));
}

}  // namespace oru::json
