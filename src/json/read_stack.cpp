// Resolving, pushing and popping.
#include "json/read_stack.h"
#include "frame/text.h"
#include "frame/trace.h"

namespace oru::json {
namespace {

// Whether the tag is the text's own, and not a copy of it without escapes.
bool tag_in_text(const Reader &reader, const Element &element) {
    return element.tag >= reader.begin && element.tag < reader.end;
}

// The input from the tag on, for messages that show it. The text need not end with a zero; its one
// copy serves all messages of the parse, since a text may have as many faults as it likes.
const char *rest_of_input(Reader &reader, const Element &element) {
    if (element.tag == nullptr)
        return "(null)";
    if (!tag_in_text(reader, element))
        return element.tag;
    if (reader.shown == nullptr)
        reader.shown =
            duplicate(reader.begin, static_cast<size_t>(reader.end - reader.begin), Tag::json);
    return reader.shown != nullptr ? reader.shown + (element.tag - reader.begin) : "";
}

// The error shows the input from the tag on too. Only the last one of a parse is seen, so that is
// left to its end.
void fail_type(Reader &reader, const Element &element) {
    const bool in_text = tag_in_text(reader, element);
    reader.unknown_from = in_text ? element.tag : nullptr;
    if (in_text) {
        fail_unknown_later(&reader.data);
    } else {
        fail_unknown(&reader.data, rest_of_input(reader, element));
    }
}

int64_t child_type(int64_t parent_type) {
    switch (parent_type) {
        case kTypePropertiesList:
            return kTypeProperties;
        case kTypeMrMetaList:
            return kTypeMrMeta;
        case kTypePropMetaList:
            return kTypePropMeta;
        case kTypeConstraintList:
            return kTypeConstraint;
        case kTypeVtable:
            return kTypeVlist;
        default:
            return parent_type;
    }
}

void resolve_by_tag(Reader &reader, Element &element) {
    element.type_info = oru_json_get_type_info(element.tag, element.tag_len);
    if (element.type_info != nullptr)
        return;
    element.unknown = 1;
    fail_type(reader, element);
    ORU_TRACE(Level::failure, "oru_do_json: unknown type %s", rest_of_input(reader, element));
}

}  // namespace

void resolve(Reader &reader, Element &element) {
    const Element *parent = element.parent;
    if (element.tag != nullptr) {
        resolve_by_tag(reader, element);
    } else if (parent != nullptr) {
        if (parent->type_info == nullptr)
            return;
        const int64_t type = parent->type_info->type_code;
        if (parent->in_array != 0 || (type & kArray) != 0)
            element.type_info = oru_json_get_type_info_by_type_code(child_type(type));
    } else if (reader.data.expected != 0) {
        element.type_info = oru_json_get_type_info_by_type_code(reader.data.expected);
    }
}

// ---- Push and pop ----

bool push(Reader &reader) {
    Element *element = make_element(reader);
    if (element == nullptr) {
        fail_memory(&reader.data);
        return false;
    }
    reader.data.top = element;
    return true;
}

void pop_to_parent(Reader &reader) {
    Element *element = reader.data.top;
    reader.data.top = element->parent;
    free_element(reader, element);
}

namespace {

// Takes the member that waits out of its object: its value is of no known type.
void leave_out_pending(Reader &reader, Element &element) {
    if (element.pending == nullptr)
        return;
    settle(reader.data, element);
    Item *item = std::exchange(element.pending, nullptr);
    const bool tagged = item == element.tag_items_tail;
    Item *&first = tagged ? element.tag_items : element.items;
    Item *&last = tagged ? element.tag_items_tail : element.items_tail;
    last = element.before_pending;
    (last != nullptr ? last->next : first) = nullptr;
    free_items(reader, item);
}

void give_to_parent(Reader &reader, Element &parent, int64_t type, void *object) {
    Item *item = parent.pending;
    if (item == nullptr && parent.type_info != nullptr &&
        parent.type_info->type_code == kTypeVtable) {
        oru_do_json_free_obj(type, object);  // rows are in the table already
        return;
    }
    if (item == nullptr)
        item = append_item(reader, parent.items, parent.items_tail);
    if (item == nullptr) {
        fail_memory(&reader.data);
        ORU_TRACE(Level::failure, "error: parent does not take completed obj %p", object);
        oru_do_json_free_obj(type, object);
        ORU_TRACE(Level::detail, "oru_do_json: unused completed object, freeing it");
        return;
    }
    if (parent.pending != nullptr)
        settle(reader.data, parent);
    parent.pending = nullptr;
    drop_object(*item);
    item->type = type;
    item->obj = object;
}

void pop_unresolved(Reader &reader, Element &element) {
    ORU_TRACE(Level::failure, "oru_do_json: pop %p, type unknown %s", static_cast<void *>(&element),
              rest_of_input(reader, element));
    if (element.parent == nullptr)
        return;
    leave_out_pending(reader, *element.parent);
    pop_to_parent(reader);
}

}  // namespace

void pop(Reader &reader) {
    Element &element = *reader.data.top;
    if (element.type_info == nullptr && element.unknown == 0)
        resolve(reader, element);
    if (element.type_info == nullptr) {
        pop_unresolved(reader, element);
        return;
    }
    if (element.parent == nullptr) {
        complete_top(reader, element);
        return;
    }
    const int64_t type = element.type_info->type_code;
    void *object = element.type_info->deserialiser(&reader.data, &element);
    if (object != nullptr)
        give_to_parent(reader, *element.parent, type, object);
    pop_to_parent(reader);
}

}  // namespace oru::json
