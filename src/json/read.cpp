#include "json/read.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "do/dtree.h"
#include "do/vtable.h"
#include "frame/require.h"
#include "frame/text.h"
#include "json/read_names.h"
#include "json/read_stack.h"
#include "json/yajl_memory.h"
#include "oru/config_op.h"
#include "oru/constraint.h"
#include "oru/error.h"
#include "oru/event.h"
#include "oru/mr_meta.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/typedef_meta.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::json {
namespace {

constexpr size_t largest(size_t a, size_t b, size_t c) {
    return a > b ? (a > c ? a : c) : (b > c ? b : c);
}

constexpr int32_t kMostSpare = 32;

// A zeroed record, or null.
template <class Record>
Record *make_record(Reader &reader) {
    void *block = reader.spare;
    if (block != nullptr) {
        reader.spare = reader.spare->next;
        --reader.spare_count;
    } else if ((block = pool.take()) == nullptr) {
        return nullptr;
    }
    return ::new (block) Record{};
}

void give_record(Reader &reader, void *record) {
    if (reader.spare_count == kMostSpare) {
        pool.give(record);
        return;
    }
    reader.spare = ::new (record) SpareRecord{reader.spare};
    ++reader.spare_count;
}

void give_spare_records(Reader &reader) {
    while (reader.spare != nullptr)
        pool.give(std::exchange(reader.spare, reader.spare->next));
}

// What cannot be made leaves the error that there was.
void take_error(ORUDoJsonCtxData *ctx, ORUDoError *error) {
    if (error != nullptr)
        oru_do_error_deref(std::exchange(ctx->err, error));
}

// Whether an error is one of an unknown type that has yet to get its text.
bool lacks_words(ORUDoError *error) {
    return error != nullptr && oru_do_error_get_code(error) == ORU_JSON_ERR_UNKNOWN_TYPE &&
           oru_do_error_get_msg(error) == nullptr;
}

void run_yajl(YajlMemory &memory, Reader &reader, std::string_view text) {
    yajl_handle handle = yajl_alloc(&kEvents, memory.functions(), &reader);
    yajl_config(handle, yajl_allow_comments, 1);
    yajl_config(handle, yajl_dont_validate_strings, 0);
    if (oru_do_yajl_parse(handle, text.data(), text.size()) != yajl_status_error)
        return;
    const unsigned char *words = yajl_get_error(
        handle, 1, reinterpret_cast<const unsigned char *>(text.data()), text.size());
    fail(&reader.data, ORU_JSON_ERR_PARSE, reinterpret_cast<const char *>(words));
}

}  // namespace

Pool pool{"json", Tag::json, largest(sizeof(Reader), sizeof(Element), sizeof(Item))};

void fail(ORUDoJsonCtxData *ctx, int32_t code, std::string_view text) {
    take_error(ctx, text.empty()
                        ? oru_do_error_new(code, "")
                        : oru_do_error_new_l(code, text.data(), static_cast<int32_t>(text.size())));
}

void fail_unknown(ORUDoJsonCtxData *ctx, std::string_view text) {
    fail(ctx, ORU_JSON_ERR_UNKNOWN_TYPE, text);
    if (lacks_words(ctx->err))
        fail_memory(ctx);
}

void fail_unknown_later(ORUDoJsonCtxData *ctx) {
    ORUDoError *error = oru_do_error_new(ORU_JSON_ERR_UNKNOWN_TYPE, nullptr);
    take_error(ctx, error);
    if (error == nullptr)
        fail_memory(ctx);
}

void show_unknown(Reader &reader) {
    if (reader.unknown_from == nullptr || !lacks_words(reader.data.err))
        return;
    const auto size = static_cast<size_t>(reader.end - reader.unknown_from);
    fail_unknown(&reader.data, {reader.unknown_from, size});
}

void free_items(Reader &reader, Item *item) {
    while (item != nullptr) {
        Item *next = item->next;
        if (item->obj != nullptr)
            drop_object(*item);
        if (item->owns_key)
            ph_free_named(const_cast<char *>(item->key));
        if (item->owns_text)
            ph_free_named(const_cast<char *>(item->scalar.text));
        give_record(reader, item);
        item = next;
    }
}

Element *make_element(Reader &reader) {
    auto *element = make_record<Element>(reader);
    if (element == nullptr)
        return nullptr;
    element->depth = 1;
    element->parent = reader.data.top;
    return element;
}

void free_element(Reader &reader, Element *element) {
    free_items(reader, element->items);
    free_items(reader, element->tag_items);
    if (element->obj != nullptr)
        oru_do_json_free_obj(element->type_info->type_code, element->obj);
    if (element->owns_tag)
        ph_free_named(const_cast<char *>(element->tag));
    give_record(reader, element);
}

Item *append_item(Reader &reader, Item *&first, Item *&last) {
    auto *item = make_record<Item>(reader);
    if (item == nullptr)
        return nullptr;
    item->key_len = -1;
    item->scalar_len = -1;
    (last != nullptr ? last->next : first) = item;
    last = item;
    return item;
}

void drop_object(Item &item) {
    oru_do_json_free_obj(item.type, std::exchange(item.obj, nullptr));
}

bool has_key(const Item &item, const char *key) {
    return item.key != nullptr &&
           std::strncmp(key, item.key, static_cast<size_t>(item.key_len)) == 0;
}

const Item *find_item(const Element &element, const char *key, int64_t type, const char *sooner) {
    const auto fits = [=](const Item &item) {
        return item.type == type && has_key(item, key) &&
               (sooner == nullptr || !has_key(item, sooner));
    };
    const Item *item = element.items;
    while (item != nullptr && !fits(*item))
        item = item->next;
    return item;
}

std::string_view text_of(const Item &item) {
    return {item.scalar.text, static_cast<size_t>(item.scalar_len)};
}

std::string_view key_of(const Item &item) {
    return {item.key, static_cast<size_t>(item.key_len)};
}

}  // namespace oru::json

using oru::json::Reader;

ORUDoJsonCtxData *oru_do_json_parse(const char *text, int32_t length, int64_t expected) {
    return oru_do_json_parse_allow_expr(text, length, expected, nullptr, nullptr, nullptr);
}

ORUDoJsonCtxData *oru_do_json_parse_allow_expr(
    const char *text, int32_t length, int64_t expected,
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value),
    void (*set_fn)(void *user, const char *text, ORUDoValue *value), void *user) {
    void *block = oru::json::pool.take();
    if (block == nullptr)
        return nullptr;
    auto *reader = ::new (block) Reader{};
    reader->data.expected = expected;
    reader->data.resolve_fn = resolve_fn;
    reader->data.set_fn = set_fn;
    reader->data.user = user;
    if (text == nullptr || length < 1)
        return &reader->data;
    reader->begin = text;
    reader->end = text + length;

    oru::json::NameCache names;
    reader->names = &names;
    oru::json::YajlMemory memory;
    auto work = [&] { oru::json::run_yajl(memory, *reader, {text, static_cast<size_t>(length)}); };
    if (!memory.run(work))
        oru::json::fail_memory(&reader->data);
    oru::json::settle_top(reader->data);
    oru::json::show_unknown(*reader);
    oru::Text(std::exchange(reader->shown, nullptr));
    reader->names = nullptr;
    return &reader->data;
}

void oru_do_json_ctx_data_set_err(ORUDoJsonCtxData *ctx, int32_t code, const char *text) {
    if (ctx == nullptr)
        return;
    ORUDoError *error = oru_do_error_new(code, text);
    oru_do_error_deref(std::exchange(ctx->err, error));
}

void oru_do_json_delete_ctx_data(ORUDoJsonCtxData *ctx) {
    if (ctx == nullptr)
        return;
    Reader &reader = oru::json::reader_of(ctx);
    while (ctx->top != nullptr)
        oru::json::free_element(reader, std::exchange(ctx->top, ctx->top->parent));
    oru::json::give_spare_records(reader);
    oru_do_error_deref(ctx->err);
    oru_do_json_free_obj(ctx->completed_type, ctx->completed_obj);
    oru::json::pool.give(ctx);
}

void oru_do_json_free_obj(int64_t type, void *object) {
    using namespace oru::json;
    if ((type & (kValue | kExpression)) != 0 || type == kTypeNull) {
        oru_do_value_deref(static_cast<ORUDoValue *>(object));
        return;
    }
    switch (type) {
#define RELEASE(Kind, name)                                        \
    case kType##Kind:                                              \
        oru_do_##name##_deref(static_cast<ORUDo##Kind *>(object)); \
        break;
        RELEASE(Properties, properties)
        RELEASE(PropertiesList, properties_list)
        RELEASE(Nlist, nlist)
        RELEASE(Nvlist, nvlist)
        RELEASE(Vlist, vlist)
        RELEASE(Vtable, vtable)
        RELEASE(Error, error)
        RELEASE(PropErrs, prop_errs)
        RELEASE(Dtree, dtree)
        RELEASE(Ntlist, ntlist)
        RELEASE(TypedefMeta, typedef_meta)
        RELEASE(Constraint, constraint)
        RELEASE(ConstraintList, constraint_list)
        RELEASE(PropMeta, prop_meta)
        RELEASE(PropMetaList, prop_meta_list)
        RELEASE(MrMeta, mr_meta)
        RELEASE(MrMetaList, mr_meta_list)
        RELEASE(ConfigOps, config_ops)
        RELEASE(Event, event)
#undef RELEASE
        default:
            break;
    }
}

int32_t oru_do_yajl_parse(yajl_handle_t *handle, const char *text, size_t length) {
    errno = 0;
    return yajl_parse(handle, reinterpret_cast<const unsigned char *>(text), length);
}

ORU_POOL_API(oru::json::pool, json)
