// The reader: a stack of unfinished objects that yajl's events build, and deserialisers that make
// the real object when one closes.
//
// Texts and keys are not copied when they are read. They point into the text that is parsed, or,
// where that has escapes, at a copy that lives as long as its item or element.
#ifndef ORU_SRC_JSON_READ_H
#define ORU_SRC_JSON_READ_H

#include <yajl/yajl_parse.h>

#include <string_view>

#include "frame/object.h"
#include "frame/pool.h"
#include "json/types.h"

struct ORUDoConfigOpsItem;

namespace oru::json {

// A member of an object or an element of an array.
struct Item {
    const char *key;  // null for an element
    int32_t key_len;
    int64_t type;  // one kind bit for a scalar, the code of a completed object, 0 while it waits
    union {
        int64_t integer;
        double real;
        const char *text;
    } scalar;
    int32_t scalar_len;  // of a text, -1 in all others
    void *obj;           // owned
    Item *next;
    bool owns_key;
    bool owns_text;
};

class NameCache;

// A record that was given back. They come and go with every member of an object, so a parse keeps a
// few for itself.
struct SpareRecord {
    SpareRecord *next;
};

// What one text needs beyond the public record, which comes first.
struct Reader {
    ORUDoJsonCtxData data;
    NameCache *names;    // while the text is read
    SpareRecord *spare;  // records for those that are made next
    int32_t spare_count;
    const char *begin;
    const char *end;
    int32_t nesting;           // open brackets, those that are skipped not counted
    int64_t skipped;           // open brackets of a part that found no memory or nests too deep
    char *shown;               // a copy of the text for messages, made for the first of them
    const char *unknown_from;  // what the error of an unknown type shows, to the end of the text
};

inline Reader &reader_of(ORUDoJsonCtxData *ctx) {
    return *reinterpret_cast<Reader *>(ctx);
}

// Texts from outside nest no deeper, so that what is made of them can be walked on the call stack.
inline constexpr int32_t kMaxNesting = 1000;

using Element = ORUDoJsonTmpObj;

}  // namespace oru::json

struct ORUDoJsonTmpObj {
    const char *tag;
    int32_t tag_len;
    const oru_json_type_info *type_info;  // null until resolved
    int32_t in_array;                     // an array opened directly in this object
    int32_t unknown;                      // the tag is not known: the whole object is skipped
    oru::json::Item *items;
    oru::json::Item *items_tail;
    oru::json::Item *tag_items;  // of further keys that begin with "%"
    oru::json::Item *tag_items_tail;
    oru::json::Item *pending;  // waits for its value; the last one of its list
    void *obj;                 // the table of a "%vtable", the set of "%config_ops"
    int32_t depth;             // open brackets within this element
    oru::json::Element *parent;
    oru::json::Item *before_pending;
    bool owns_tag;
    // Of an element at the top level that was completed:
    bool completed;  // what the context holds came out of it
    bool later;      // the context is to hold what comes out of the items up to the last seen
    bool hopeless;   // nothing will come out of it before it gets another member
    oru::json::Item *last_seen;
    ORUDoConfigOpsItem **ops_end;  // the link behind the last operation of the set
};

namespace oru::json {

// All records of the reader come from one pool.
extern Pool pool;

// ---- Failures ----

void fail(ORUDoJsonCtxData *ctx, int32_t code, std::string_view text = {});

inline void fail_memory(ORUDoJsonCtxData *ctx) {
    fail(ctx, ORU_JSON_ERR_MEMORY);
}

// An unknown type, with the text that the error shows; the second leaves that to the end of the
// parse, where `show_unknown` gives it to the error if it is still the last one.
void fail_unknown(ORUDoJsonCtxData *ctx, std::string_view text);
void fail_unknown_later(ORUDoJsonCtxData *ctx);
void show_unknown(Reader &reader);

// ---- Elements and items ----

// A new element on those that there are, or null.
Element *make_element(Reader &reader);
void free_element(Reader &reader, Element *element);
void free_items(Reader &reader, Item *first);

// A new item at the end of a list, or null.
Item *append_item(Reader &reader, Item *&first, Item *&last);

// Releases the completed object of an item, if it has one.
void drop_object(Item &item);

// The first item with a known key and of a type; the key that was read may be its beginning. Where
// it may also be that of `sooner`, a key whose members have the same type, that one is meant.
const Item *find_item(const Element &element, const char *key, int64_t type,
                      const char *sooner = nullptr);
bool has_key(const Item &item, const char *key);

// The text of a text item, and the key of one that has one.
std::string_view text_of(const Item &item);
std::string_view key_of(const Item &item);

// ---- Values ----

// What an item is as a value, with a new reference; null when memory runs out.
ORUDoValue *item_to_value(const Item &item);

// The same of an item of an element that is being completed. An element that goes after that gives
// up its values; the one at the top level stays, and may be completed again.
Ref<ORUDoValue> take_value(const Element &element, Item &item);

// ---- Deserialisers ----
// The completed object, which belongs to the caller, or null.

// Whether an element can be deserialised: it has items, and the bits `mask` of its type are `want`.
bool is_complete(ORUDoJsonCtxData *ctx, const Element *element, int64_t mask, int64_t want);

// The `mask` of deserialisers that take one type.
inline constexpr int64_t kExactly = ~int64_t{0};

// The object that was made; null is memory that ran out.
template <class Object>
void *finished(ORUDoJsonCtxData *ctx, Ref<Object> &&object) {
    if (!object)
        fail_memory(ctx);
    return object.release();
}

void *value_deser(ORUDoJsonCtxData *ctx, Element *element);
void *null_deser(ORUDoJsonCtxData *ctx, Element *element);
void *properties_deser(ORUDoJsonCtxData *ctx, Element *element);
void *properties_list_deser(ORUDoJsonCtxData *ctx, Element *element);
void *nlist_deser(ORUDoJsonCtxData *ctx, Element *element);
void *nvlist_deser(ORUDoJsonCtxData *ctx, Element *element);
void *vlist_deser(ORUDoJsonCtxData *ctx, Element *element);
void *vtable_deser(ORUDoJsonCtxData *ctx, Element *element);
void *error_deser(ORUDoJsonCtxData *ctx, Element *element);
void *prop_errs_deser(ORUDoJsonCtxData *ctx, Element *element);
void *dtree_deser(ORUDoJsonCtxData *ctx, Element *element);
void *ntlist_deser(ORUDoJsonCtxData *ctx, Element *element);
void *typedef_meta_deser(ORUDoJsonCtxData *ctx, Element *element);
void *config_ops_deser(ORUDoJsonCtxData *ctx, Element *element);
void *event_deser(ORUDoJsonCtxData *ctx, Element *element);
void *constraint_deser(ORUDoJsonCtxData *ctx, Element *element);
void *constraint_list_deser(ORUDoJsonCtxData *ctx, Element *element);
void *prop_meta_deser(ORUDoJsonCtxData *ctx, Element *element);
void *prop_meta_list_deser(ORUDoJsonCtxData *ctx, Element *element);
void *mr_meta_deser(ORUDoJsonCtxData *ctx, Element *element);
void *mr_meta_list_deser(ORUDoJsonCtxData *ctx, Element *element);

// ---- The events ----

// yajl's callbacks; their context is the Reader.
extern const yajl_callbacks kEvents;

}  // namespace oru::json

#endif
