// yajl's events, and what keys and brackets do to the stack.
//
// Every callback lets the parse go on but for a table that cannot be made, so that a bad part does
// not stop the rest; failures are left in the context.
#include "json/read_stack.h"
#include "oru/vtable.h"

namespace oru::json {
namespace {

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
    Item *item = append_item(reader, first, last);
    element.pending = item;
    element.before_pending = before;
    element.hopeless = false;
    if (item == nullptr) {
        drop(key);
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

// Whether a scalar is passed over: it stands in a part that is skipped.
bool passes_over(const Reader &reader) {
    const Element *top = reader.data.top;
    return reader.skipped > 0 || (top != nullptr && top->unknown != 0);
}

int on_null(void *context) {
    Reader &reader = *static_cast<Reader *>(context);
    if (!passes_over(reader))
        give_null(reader);
    return 1;
}

int on_boolean(void *context, int value) {
    Reader &reader = *static_cast<Reader *>(context);
    if (!passes_over(reader))
        give_boolean(reader, value != 0);
    return 1;
}

int on_number(void *context, const char *digits, size_t size) {
    Reader &reader = *static_cast<Reader *>(context);
    if (!passes_over(reader))
        give_number(reader, {digits, size});
    return 1;
}

int on_string(void *context, const unsigned char *bytes, size_t size) {
    Reader &reader = *static_cast<Reader *>(context);
    if (!passes_over(reader))
        give_text(reader, bytes, size);
    return 1;
}

int on_map_key(void *context, const unsigned char *bytes, size_t size) {
    Reader &reader = *static_cast<Reader *>(context);
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
    Reader &reader = *static_cast<Reader *>(context);
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
    Reader &reader = *static_cast<Reader *>(context);
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
    Reader &reader = *static_cast<Reader *>(context);
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
