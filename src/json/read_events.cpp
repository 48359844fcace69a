// The stack: what each event of the parse does to the unfinished object on top.
//
// Every callback lets the parse go on but for a table that cannot be made, so that a bad part does
// not stop the rest; failures are left in the context.
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "do/vtable.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "json/read.h"

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

// ---- Resolving ----

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

// Finds the type of an element that has none yet. It may stay without one.
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
    Element *element = make_element(reader.data.top);
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
    free_element(element);
}

// Takes the member that waits out of its object: its value is of no known type.
void leave_out_pending(Element &element) {
    Item *item = std::exchange(element.pending, nullptr);
    if (item == nullptr)
        return;
    const bool tagged = item == element.tag_items_tail;
    Item *&first = tagged ? element.tag_items : element.items;
    Item *&last = tagged ? element.tag_items_tail : element.items_tail;
    last = element.before_pending;
    (last != nullptr ? last->next : first) = nullptr;
    free_items(item);
}

void give_to_parent(Reader &reader, Element &parent, int64_t type, void *object) {
    Item *item = parent.pending;
    if (item == nullptr)
        item = append_item(parent.items, parent.items_tail);
    if (item == nullptr) {
        fail_memory(&reader.data);
        ORU_TRACE(Level::failure, "error: parent does not take completed obj %p", object);
        oru_do_json_free_obj(type, object);
        ORU_TRACE(Level::detail, "oru_do_json: unused completed object, freeing it");
        return;
    }
    parent.pending = nullptr;
    drop_object(*item);
    item->type = type;
    item->obj = object;
}

void give_to_context(ORUDoJsonCtxData &data, int64_t type, void *object) {
    if (data.completed_obj != nullptr) {
        if (data.completed_type != kTypeArray) {
            fail(&data, ORU_JSON_ERR_REPLACED);
            ORU_TRACE(Level::failure, "error:tmp_obj already has completed_obj, type=%lx",
                      static_cast<unsigned long>(data.completed_type));
        }
        oru_do_json_free_obj(data.completed_type, data.completed_obj);
    }
    data.completed_type = type;
    data.completed_obj = object;
}

void pop_unresolved(Reader &reader, Element &element) {
    ORU_TRACE(Level::failure, "oru_do_json: pop %p, type unknown %s", static_cast<void *>(&element),
              rest_of_input(reader, element));
    if (element.parent == nullptr)
        return;
    leave_out_pending(*element.parent);
    pop_to_parent(reader);
}

void pop(Reader &reader) {
    Element &element = *reader.data.top;
    if (element.type_info == nullptr && element.unknown == 0)
        resolve(reader, element);
    if (element.type_info == nullptr) {
        pop_unresolved(reader, element);
        return;
    }
    const int64_t type = element.type_info->type_code;
    void *object = element.type_info->deserialiser(&reader.data, &element);
    if (element.parent != nullptr) {
        if (object != nullptr)
            give_to_parent(reader, *element.parent, type, object);
        pop_to_parent(reader);
    } else if (object != nullptr) {
        give_to_context(reader.data, type, object);
    }
}

// ---- Scalars ----

struct Scalar {
    int64_t type;
    const char *tag;  // of a scalar that stands by itself
    int64_t integer = 0;
    double real = 0;
    std::string_view text{};
};

// Texts that yajl had to unescape are in a buffer that it uses again, and are copied.
struct Kept {
    const char *text;
    bool copied;
};

Kept keep(Reader &reader, const unsigned char *bytes, size_t size) {
    const auto *text = reinterpret_cast<const char *>(bytes);
    if (text >= reader.begin && text <= reader.end)
        return {text, false};
    const char *copy = duplicate(text, size, Tag::json);
    if (copy == nullptr)
        fail_memory(&reader.data);
    return {copy, true};
}

void fill(Item &item, const Scalar &scalar) {
    drop_object(item);
    item.type = scalar.type;
    if (scalar.type == kText) {
        item.scalar.text = scalar.text.data();
        item.scalar_len = static_cast<int32_t>(scalar.text.size());
    } else if (scalar.type == kReal) {
        item.scalar.real = scalar.real;
    } else {
        item.scalar.integer = scalar.integer;
    }
}

// The item that takes the scalar, or null.
Item *take(Reader &reader, Element &element, const Scalar &scalar) {
    Item *item = std::exchange(element.pending, nullptr);
    if (item == nullptr)
        item = append_item(element.items, element.items_tail);
    if (item == nullptr) {
        fail_memory(&reader.data);
        return nullptr;
    }
    fill(*item, scalar);
    return item;
}

// The whole text is a scalar, or a bare array of them: an element just for it.
void take_alone(Reader &reader, const Scalar &scalar) {
    if (!push(reader))
        return;
    Element &element = *reader.data.top;
    element.tag = scalar.tag;
    element.tag_len = static_cast<int32_t>(std::strlen(scalar.tag));
    resolve(reader, element);
    if (take(reader, element, scalar) != nullptr)
        pop(reader);
    pop_to_parent(reader);
}

void give_scalar(Reader &reader, const Scalar &scalar) {
    Element *top = reader.data.top;
    if (top == nullptr) {
        take_alone(reader, scalar);
    } else if (top->unknown == 0) {
        take(reader, *top, scalar);
    }
}

bool is_real_type(const Element *element) {
    if (element == nullptr || element->type_info == nullptr)
        return false;
    const int64_t type = element->type_info->type_code;
    return type == kTypeFloat || type == kTypeDouble;
}

// False for a number out of range. What stands behind the digits is not looked at, so 1e3 is 1.
bool read_integer(std::string_view text, int64_t &number) {
    const char *end = text.data() + text.size();
    if (text.front() == '-')
        return std::from_chars(text.data(), end, number).ec == std::errc();
    uint64_t magnitude = 0;
    const bool good = std::from_chars(text.data(), end, magnitude).ec == std::errc();
    number = static_cast<int64_t>(magnitude);
    return good;
}

bool read_real(Reader &reader, std::string_view text, double &number) {
    constexpr size_t kUsualSize = 128;
    char usual[kUsualSize];
    Text longer;
    char *copy = usual;
    if (text.size() < kUsualSize) {
        std::memcpy(usual, text.data(), text.size());
        usual[text.size()] = '\0';
    } else {
        longer = Text(duplicate(text.data(), text.size(), Tag::json));
        copy = longer.get();
    }
    if (copy == nullptr) {
        fail_memory(&reader.data);
        return false;
    }
    errno = 0;
    number = std::strtod(copy, nullptr);
    return errno != ERANGE;
}

// ---- Keys ----

bool is_tag_key(std::string_view key) {
    if (key.empty())
        return false;
    return key.front() == '%' || (key.size() >= 4 && key.front() == '_' && key.back() == ')');
}

void add_key(Reader &reader, Element &element, Kept key, size_t size, bool tagged) {
    Item *&first = tagged ? element.tag_items : element.items;
    Item *&last = tagged ? element.tag_items_tail : element.items_tail;
    Item *before = last;
    Item *item = append_item(first, last);
    element.pending = item;
    element.before_pending = before;
    if (item == nullptr) {
        if (key.copied)
            ph_free_named(const_cast<char *>(key.text));
        fail_memory(&reader.data);
        return;
    }
    item->key = key.text;
    item->key_len = static_cast<int32_t>(size);
    item->owns_key = key.copied;
}

// ---- Brackets ----

// Counts an opening bracket. False when what it opens is skipped.
bool enter(Reader &reader) {
    if (reader.skipped > 0) {
        ++reader.skipped;
        return false;
    }
    if (reader.nesting == kMaxNesting) {
        fail_memory(&reader.data);
        reader.skipped = 1;
        return false;
    }
    ++reader.nesting;
    return true;
}

// An opening bracket that was counted finds no memory after all.
void skip_entered(Reader &reader) {
    --reader.nesting;
    reader.skipped = 1;
}

// An array opens in an element whose type is known. Only lists of lists take it.
void open_inner_array(Reader &reader, Element &top) {
    const int64_t type = top.type_info->type_code;
    if (type != kTypeVlist && type != kTypeVtable) {
        fail(&reader.data, ORU_JSON_ERR_ARRAY);
        ++top.depth;
    } else if (push(reader)) {
        reader.data.top->type_info = oru_json_get_type_info_by_type_code(kTypeVlist);
    } else {
        skip_entered(reader);
    }
}

// An array opens in an element that has a tag and is not resolved. False when its table cannot be
// made.
bool open_own_array(Reader &reader, Element &top) {
    resolve(reader, top);
    top.in_array = 1;
    ++top.depth;
    if (top.type_info == nullptr || top.type_info->type_code != kTypeVtable)
        return true;
    top.obj = oru_do_vtable_new();
    if (top.obj == nullptr)
        fail_memory(&reader.data);
    return top.obj != nullptr;
}

// ---- yajl's callbacks ----

Reader &reader_of(void *context) {
    return *static_cast<Reader *>(context);
}

int on_null(void *context) {
    Reader &reader = reader_of(context);
    if (reader.skipped == 0)
        give_scalar(reader, {kNull, "%null"});
    return 1;
}

int on_boolean(void *context, int value) {
    Reader &reader = reader_of(context);
    if (reader.skipped == 0)
        give_scalar(reader, {kBoolean, "%boolean", value});
    return 1;
}

int on_number(void *context, const char *digits, size_t size) {
    Reader &reader = reader_of(context);
    Element *top = reader.data.top;
    if (reader.skipped > 0 || (top != nullptr && top->unknown != 0))
        return 1;
    if (top != nullptr && top->type_info == nullptr && top->tag != nullptr)
        resolve(reader, *top);
    const std::string_view text(digits, size);
    if (text.find('.') == std::string_view::npos && !is_real_type(top)) {
        Scalar scalar{kInteger, "%long"};
        if (read_integer(text, scalar.integer))
            give_scalar(reader, scalar);
    } else {
        Scalar scalar{kReal, "%double"};
        if (read_real(reader, text, scalar.real))
            give_scalar(reader, scalar);
    }
    return 1;
}

int on_string(void *context, const unsigned char *bytes, size_t size) {
    Reader &reader = reader_of(context);
    Element *top = reader.data.top;
    if (reader.skipped > 0 || (top != nullptr && top->unknown != 0))
        return 1;
    const Kept kept = keep(reader, bytes, size);
    if (kept.text == nullptr)
        return 1;
    const Scalar scalar{kText, "%string", 0, 0, {kept.text, size}};
    if (!kept.copied) {
        give_scalar(reader, scalar);
    } else if (top == nullptr) {
        take_alone(reader, scalar);  // done with the text when it returns
        ph_free_named(const_cast<char *>(kept.text));
    } else if (Item *item = take(reader, *top, scalar)) {
        item->owns_text = true;
    } else {
        ph_free_named(const_cast<char *>(kept.text));
    }
    return 1;
}

int on_map_key(void *context, const unsigned char *bytes, size_t size) {
    Reader &reader = reader_of(context);
    Element *top = reader.data.top;
    if (reader.skipped > 0 || top == nullptr || top->unknown != 0)
        return 1;
    const Kept key = keep(reader, bytes, size);
    if (key.text == nullptr) {
        top->pending = nullptr;
        return 1;
    }
    const bool tagged = is_tag_key({key.text, size});
    if (tagged && top->tag == nullptr) {
        top->tag = key.text;
        top->tag_len = static_cast<int32_t>(size);
        top->owns_tag = key.copied;
    } else {
        add_key(reader, *top, key, size, tagged);
    }
    return 1;
}

int on_start_map(void *context) {
    Reader &reader = reader_of(context);
    if (!enter(reader))
        return 1;
    Element *top = reader.data.top;
    if (top != nullptr && top->unknown != 0) {
        ++top->depth;
    } else if (top != nullptr && top->type_info == nullptr && top->tag != nullptr) {
        resolve(reader, *top);
        ++top->depth;
    } else if (!push(reader)) {
        skip_entered(reader);
    }
    return 1;
}

int on_start_array(void *context) {
    Reader &reader = reader_of(context);
    if (!enter(reader))
        return 1;
    Element *top = reader.data.top;
    if (top == nullptr)
        return 1;
    if (top->unknown != 0) {
        ++top->depth;
    } else if (top->type_info != nullptr) {
        open_inner_array(reader, *top);
    } else if (top->tag != nullptr) {
        return open_own_array(reader, *top) ? 1 : 0;
    }
    return 1;
}

int on_end(void *context) {
    Reader &reader = reader_of(context);
    if (reader.skipped > 0) {
        --reader.skipped;
        return 1;
    }
    --reader.nesting;
    Element *top = reader.data.top;
    if (top == nullptr)
        return 1;
    if (top->depth >= 2) {
        --top->depth;
    } else {
        pop(reader);
    }
    return 1;
}

}  // namespace

const yajl_callbacks kEvents = {
    on_null,      on_boolean, nullptr, nullptr,        on_number, on_string,
    on_start_map, on_map_key, on_end,  on_start_array, on_end,
};

}  // namespace oru::json
