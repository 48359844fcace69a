// Values: of an item, and of an element whose tag tells the type.
#include "frame/object.h"
#include "frame/text.h"
#include "json/read.h"
#include "oru/hex.h"
#include "oru/nvlist.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"

#include "do/nvlist.h"
#include "do/uri.h"
#include "do/value.h"
#include "do/vlist.h"

namespace oru::json {
namespace {

Ref<ORUDoVlist> list_of_items(const Element &element) {
    auto list = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    for (Item *item = element.items; list && item != nullptr; item = item->next) {
        if (vlist_hand_over(*list, take_value(element, *item)) < 0)
            list = Ref<ORUDoVlist>();
    }
    return list;
}

// Items without a key are dropped.
Ref<ORUDoNvlist> named_items(const Element &element) {
    auto list = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    for (Item *item = element.items; list && item != nullptr; item = item->next) {
        if (item->key == nullptr)
            continue;
        if (nvlist_hand_over(*list, key_of(*item), take_value(element, *item).release()) < 0)
            list = Ref<ORUDoNvlist>();
    }
    return list;
}

ORUDoValue *hex_value(int64_t type, std::string_view text) {
    constexpr size_t kUsualSize = 1024;
    uint8_t usual[kUsualSize / 2];
    Text longer;
    void *bytes = usual;
    if (text.size() >= kUsualSize) {
        longer.reset(static_cast<char *>(ph_malloc_named(tag_word(Tag::json), text.size() / 2)));
        bytes = longer.get();
    }
    if (bytes == nullptr)
        return nullptr;
    const int32_t n = oru_util_strtoh(text.data(), static_cast<int32_t>(text.size()), bytes);
    if (type == kTypeIpAddress)
        return oru_do_value_new_ip_address(bytes, n);
    if (type == kTypeNsapAddress)
        return oru_do_value_new_nsap_address(bytes, n);
    return oru_do_value_new_hex_binary(bytes, n);
}

ORUDoValue *uri_value(int64_t type, std::string_view text) {
    const auto uri =
        Ref<ORUDoUri>::adopt(oru_do_uri_new_l(text.data(), static_cast<int32_t>(text.size())));
    if (!uri)
        return nullptr;
    if (type == kTypeMrUri)
        return oru_do_value_new_mr_uri(uri.get());
    if (type == kTypeCollUri)
        return oru_do_value_new_coll_uri(uri.get());
    return oru_do_value_new_any_uri(uri.get());
}

// Types whose payload is a text. Anything else in its place, null above all, is a null value.
ORUDoValue *text_value(int64_t type, const Item &item) {
    if (item.type != kText)
        return oru_do_value_new_null();
    const std::string_view text = text_of(item);
    switch (type) {
        case kTypeString:
            return oru_do_value_new_string_l(text.data(), item.scalar_len);
        case kTypeEnumeration:
            return oru_do_value_new_enumeration_l(text.data(), item.scalar_len);
        case kTypeMrUri:
        case kTypeCollUri:
        case kTypeAnyUri:
            return uri_value(type, text);
        default:
            return hex_value(type, text);
    }
}

// Types whose payload is a number or a boolean. The word of the item is taken as it stands,
// whatever kind the text gave it.
ORUDoValue *number_value(int64_t type, const Item &item) {
    const int64_t n = item.scalar.integer;
    switch (type) {
        case kTypeUbyte:
            return oru_do_value_new_unsigned_byte(static_cast<uint8_t>(n));
        case kTypeByte:
            return oru_do_value_new_byte(static_cast<int8_t>(n));
        case kTypeUshort:
            return oru_do_value_new_unsigned_short(static_cast<uint16_t>(n));
        case kTypeShort:
            return oru_do_value_new_short(static_cast<int16_t>(n));
        case kTypeUint:
            return oru_do_value_new_unsigned_int(static_cast<uint32_t>(n));
        case kTypeInt:
            return oru_do_value_new_int(static_cast<int32_t>(n));
        case kTypeUlong:
            return oru_do_value_new_unsigned_long(static_cast<uint64_t>(n));
        case kTypeLong:
            return oru_do_value_new_long(n);
        case kTypeDatetime:
            return oru_do_value_new_datetime(n);
        case kTypeDuration:
            return oru_do_value_new_duration(n);
        case kTypeBoolean:
            return oru_do_value_new_boolean(static_cast<int32_t>(n));
        case kTypeFloat:
            return oru_do_value_new_float(static_cast<float>(item.scalar.real));
        default:
            return oru_do_value_new_double(item.scalar.real);
    }
}

// The members of the values that an element makes, gathered for the first that needs them. In an
// array all values have the same, which they share: it may be as long as they are many.
using Members = Ref<ORUDoNvlist>;

ORUDoValue *complex_value(const Element &element, const Item &item, Members &members) {
    const int64_t type = element.type_info->type_code;
    // An element of an array of such values is complete already.
    if (item.key == nullptr && item.obj != nullptr && item.type == type)
        return oru_do_value_ref(static_cast<ORUDoValue *>(item.obj));
    if (!members)
        members = named_items(element);
    if (!members)
        return nullptr;
    return type == kTypeChoice ? oru_do_value_new_choice(members.get())
                               : oru_do_value_new_sequence(members.get());
}

ORUDoValue *list_value(const Element &element) {
    const auto list = list_of_items(element);
    if (!list)
        return nullptr;
    return element.type_info->type_code == kTypeBits ? oru_do_value_new_bits(list.get())
                                                     : oru_do_value_new_array(list.get());
}

ORUDoValue *build(const Element &element, const Item &item, Members &members) {
    const int64_t type = element.type_info->type_code;
    if (type == kTypeArray || type == kTypeBits)
        return list_value(element);
    if (type == kTypeChoice || type == kTypeSequence)
        return complex_value(element, item, members);
    return (type & kText) != 0 ? text_value(type, item) : number_value(type, item);
}

// An array under the tag of its elements.
ORUDoValue *typed_array(const Element &element) {
    const auto list = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    if (!list)
        return nullptr;
    Members members;
    for (const Item *item = element.items; item != nullptr; item = item->next) {
        if (vlist_hand_over(*list, Ref<ORUDoValue>::adopt(build(element, *item, members))) < 0)
            return nullptr;
    }
    return oru_do_value_new_array(list.get());
}

bool holds_array(const Element &element) {
    const Item *first = element.items;
    if (element.in_array != 0)
        return true;
    return first->key == nullptr && first->next != nullptr && first->next->key == nullptr;
}

// False when memory ran out for a name.
bool name_typedef(ORUDoValue &value, std::string_view name) {
    oru_do_value_set_typedef_name_l(&value, name.data(), static_cast<int32_t>(name.size()));
    return value.typedef_name != nullptr;
}

bool set_typedef(ORUDoValue &value, std::string_view name) {
    bool whole = name_typedef(value, name);
    if (value.type != ORU_DO_TYPE_ARRAY)
        return whole;
    for (ORUDoVlistItem *item = value.data.vlist->first; item != nullptr; item = item->next)
        whole = name_typedef(*item->value, name) && whole;
    return whole;
}

}  // namespace

ORUDoValue *item_to_value(const Item &item) {
    if (item.obj != nullptr && (item.type & (kValue | kExpression)) != 0)
        return oru_do_value_ref(static_cast<ORUDoValue *>(item.obj));
    switch (item.type) {
        case kText:
            return oru_do_value_new_string_l(item.scalar.text, item.scalar_len);
        case kInteger:
            return oru_do_value_new_int(static_cast<int32_t>(item.scalar.integer));
        case kReal:
            return oru_do_value_new_double(item.scalar.real);
        case kBoolean:
            return oru_do_value_new_boolean(static_cast<int32_t>(item.scalar.integer));
        case kTypeVlist:
            return oru_do_value_new_array(static_cast<ORUDoVlist *>(item.obj));
        default:
            return oru_do_value_new_null();
    }
}

Ref<ORUDoValue> take_value(const Element &element, Item &item) {
    const bool holds = item.obj != nullptr && (item.type & (kValue | kExpression)) != 0;
    if (holds && element.parent != nullptr && !trace_enabled(Level::reference)) [[likely]]
        return Ref<ORUDoValue>::adopt(static_cast<ORUDoValue *>(std::exchange(item.obj, nullptr)));
    return Ref<ORUDoValue>::adopt(item_to_value(item));
}

void *value_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kValue, kValue))
        return nullptr;
    const int64_t type = element->type_info->type_code;
    const bool own_list = type == kTypeArray || type == kTypeBits;
    Members members;
    ORUDoValue *value =
        holds_array(*element) && !own_list
            ? typed_array(*element)
            : (own_list ? list_value(*element) : build(*element, *element->items, members));
    if (value == nullptr) {
        fail_memory(ctx);
        return nullptr;
    }
    // Each name replaces the one before it, on every element of an array, so that only the last is
    // worth setting.
    const Item *name = nullptr;
    for (const Item *item = element->tag_items; item != nullptr; item = item->next) {
        if (item->type == kText && has_key(*item, "%typedef"))
            name = item;
    }
    if (name != nullptr && !set_typedef(*value, text_of(*name)))
        fail_memory(ctx);
    return value;
}

void *null_deser(ORUDoJsonCtxData *ctx, Element *) {
    ORUDoValue *value = oru_do_value_new_null();
    if (value == nullptr)
        fail_memory(ctx);
    return value;
}

}  // namespace oru::json
