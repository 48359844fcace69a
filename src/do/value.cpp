#include "do/value.h"

#include "do/nvlist.h"
#include "do/uri.h"
#include "do/value_types.h"
#include "do/vlist.h"
#include "frame/copy.h"
#include "frame/text.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/vlist.h"

namespace {

using oru::StorageClass;

oru::Pool small_pool{"oru_do_value_sml_misc", oru::Tag::value_sml_misc, 32};
oru::Pool large_pool{"oru_do_value_misc", oru::Tag::value_misc, 128};
constexpr oru::SizedPools kStorage{small_pool, large_pool};

// The fields in their order, so that each is written once.
ORUDoValue *new_value(int32_t type, int32_t len = -1, uint64_t word = 0) {
    constexpr char *no_typedef_name = nullptr;
    return oru::make<ORUDoValue>(no_typedef_name, uint32_t{1}, len,
                                 decltype(ORUDoValue::data){word}, type);
}

template <class Number>
ORUDoValue *new_number(int32_t type, Number n) {
    uint64_t word = 0;
    static_assert(sizeof n <= sizeof word);
    std::memcpy(&word, &n, sizeof n);
    return new_value(type, -1, word);
}

// A block for `size` bytes. Bytes take the classes of texts, although no zero stands behind them.
template <bool is_text>
char *take_storage(StorageClass storage, size_t size) {
    if (storage != StorageClass::heap) [[likely]]
        return kStorage.take(storage);
    void *block = is_text ? ph_malloc_named(oru::tag_word(oru::Tag::strdup), size + 1)
                          : ph_calloc_named(oru::tag_word(oru::Tag::value_misc), 1, size);
    return static_cast<char *>(block);
}

// A value of a sized type. Its data is null when no storage is to be had.
template <bool is_text>
ORUDoValue *new_sized(int32_t type, const void *bytes, size_t size) {
    auto *val = new_value(type, static_cast<int32_t>(size));
    if (val == nullptr)
        return nullptr;
    const StorageClass storage = kStorage.class_for(size + 1);
    char *block = take_storage<is_text>(storage, size);
    val->data.bytes = block;
    if (block == nullptr) [[unlikely]]
        return val;
    val->storage_class = static_cast<int32_t>(storage);
    oru::copy_bytes(block, static_cast<const char *>(bytes), size);
    if constexpr (is_text)
        block[size] = '\0';
    return val;
}

// A value that could not be stored is given back without a trace: nobody has seen it.
ORUDoValue *unless_unstored(ORUDoValue *val) {
    if (val != nullptr && val->data.bytes == nullptr) {
        oru::free_element(val);
        return nullptr;
    }
    return val;
}

ORUDoValue *new_text(int32_t type, const char *text, int32_t n) {
    if (text == nullptr)
        return oru_do_value_new_null();
    if (n < 0)
        return nullptr;
    return unless_unstored(new_sized<true>(type, text, static_cast<size_t>(n)));
}

ORUDoValue *new_bytes(int32_t type, const void *bytes, int32_t n) {
    if (bytes == nullptr || n < 0)
        return oru_do_value_new_null();
    return unless_unstored(new_sized<false>(type, bytes, static_cast<size_t>(n)));
}

// The value counts a reference of its own.
template <class Object>
ORUDoValue *new_held(int32_t type, Object *object) {
    if (object == nullptr)
        return oru_do_value_new_null();
    auto *val = new_value(type);
    if (val != nullptr)
        val->data.object = oru::ref(object);
    return val;
}

// The checks of all strict getters.
bool is_readable_as(ORUDoValue *val, int32_t *errp, int32_t type) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    *errp = val->type == type ? ORU_OK : ORU_RC_VALUE_TYPE;
    return *errp == ORU_OK;
}

// The old name goes last: the new one may have been copied from it.
void replace_typedef_name(ORUDoValue &val, char *name) {
    if (char *old = std::exchange(val.typedef_name, name))
        ph_free_named(old);
}

ORUDoValue *clone_text(ORUDoValue &val) {
    auto *(*make)(const char *) =
        val.type == ORU_DO_TYPE_STRING ? oru_do_value_new_string : oru_do_value_new_enumeration;
    auto *clone = make(val.data.bytes != nullptr ? val.data.bytes : "");
    return clone != nullptr ? unless_unstored(clone) : nullptr;
}

// A value of that type with an object of its own, which is null when it could not be cloned.
template <class Object>
ORUDoValue *new_holding_clone(int32_t type, Object *object) {
    const auto clone = oru::Ref<Object>::adopt(object);
    return clone ? new_held(type, clone.get()) : nullptr;
}

// A URI of its own, made from the text.
ORUDoUri *clone_uri(const ORUDoValue &val) {
    const char *text = oru::uri_text(val);
    return text != nullptr ? oru_do_uri_new(text) : nullptr;
}

// A value with the same payload. Measures texts again, so that what stands behind a zero is lost.
ORUDoValue *clone_payload(ORUDoValue &val) {
    switch (val.type) {
        case ORU_DO_TYPE_STRING:
        case ORU_DO_TYPE_ENUMERATION:
            return clone_text(val);
        case ORU_DO_TYPE_HEX_BINARY:
        case ORU_DO_TYPE_IP_ADDRESS:
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return new_bytes(val.type, val.data.bytes, val.len);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return new_holding_clone(val.type, clone_uri(val));
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            return new_holding_clone(val.type, oru_do_nvlist_clone(val.data.nvlist));
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            return new_holding_clone(val.type, oru_do_vlist_clone(val.data.vlist));
        case ORU_DO_TYPE_UNKNOWN:
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_NULL:
            return new_value(val.type);
        default:
            return oru_do_is_numeric_type(val.type) != 0 ? new_number(val.type, val.data.word)
                                                         : nullptr;
    }
}

[[gnu::noinline]] void release_held(ORUDoValue &val) {
    switch (val.type) {
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            oru::deref(val.data.uri);
            break;
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            oru::deref(val.data.nvlist);
            break;
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            oru::deref(val.data.vlist);
            break;
        default:
            break;
    }
}

}  // namespace

void oru::ObjectType<ORUDoValue>::release_members(ORUDoValue &self) {
    if (is_sized_type(self.type)) {
        kStorage.give(static_cast<StorageClass>(self.storage_class), self.data.bytes);
    } else if (!is_integer_type(self.type)) {
        release_held(self);
    }
    if (self.typedef_name != nullptr) [[unlikely]]
        ph_free_named(self.typedef_name);
}

// Here, where it knows the members.
template void oru::destroy(ORUDoValue *);

ORUDoValue *oru_do_value_new_null() {
    return new_value(ORU_DO_TYPE_NULL);
}

ORUDoValue *oru_do_value_new_default() {
    return new_value(ORU_DO_TYPE_DEFAULT);
}

#define NEW_NUMBER(suffix, CODE, Type)              \
    ORUDoValue *oru_do_value_new_##suffix(Type n) { \
        return new_number(ORU_DO_TYPE_##CODE, n);   \
    }
// `oru_do_value_new_string` reports nothing, so texts are written out below.
#define NEW_TEXT(suffix, CODE, Type)
#define NEW_BYTES(suffix, CODE, Type)                                     \
    ORUDoValue *oru_do_value_new_##suffix(const void *bytes, int32_t n) { \
        return new_bytes(ORU_DO_TYPE_##CODE, bytes, n);                   \
    }
#define NEW_HELD(suffix, CODE, Type)                      \
    ORUDoValue *oru_do_value_new_##suffix(Type *object) { \
        return new_held(ORU_DO_TYPE_##CODE, object);      \
    }
#define NEW(SHAPE, suffix, CODE, text, Type) NEW_##SHAPE(suffix, CODE, Type)
ORU_VALUE_TYPES(NEW)

ORUDoValue *oru_do_value_new_string(const char *text) {
    if (text == nullptr)
        return oru_do_value_new_null();
    return new_sized<true>(ORU_DO_TYPE_STRING, text, std::strlen(text));
}

ORUDoValue *oru_do_value_new_string_l(const char *text, int32_t n) {
    return new_text(ORU_DO_TYPE_STRING, text, n);
}

ORUDoValue *oru_do_value_new_enumeration(const char *text) {
    if (text == nullptr)
        return oru_do_value_new_null();
    return unless_unstored(new_sized<true>(ORU_DO_TYPE_ENUMERATION, text, std::strlen(text)));
}

ORUDoValue *oru_do_value_new_enumeration_l(const char *text, int32_t n) {
    return new_text(ORU_DO_TYPE_ENUMERATION, text, n);
}

ORUDoValue *oru_new_ip_address_type(ORUDoValue *val) {
    ORU_REQUIRE(val);
    if (val->type != ORU_DO_TYPE_IP_ADDRESS)
        return nullptr;
    switch (val->len) {
        case 4:
        case 5:
            return oru_do_value_new_enumeration("ipv4");
        case 16:
        case 17:
            return oru_do_value_new_enumeration("ipv6");
        default:
            return nullptr;
    }
}

// A clone is made for no derived type; that it is a default is a fact about the payload.
ORUDoValue *oru_do_value_clone(ORUDoValue *val) {
    ORU_REQUIRE(val);
    auto *clone = clone_payload(*val);
    if (clone != nullptr)
        clone->flags = val->flags;
    return clone;
}

int32_t oru_do_value_get_type(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return val->type;
}

#define GET_NUMBER(suffix, CODE, Type)                               \
    Type oru_do_value_get_##suffix(ORUDoValue *val, int32_t *errp) { \
        if (!is_readable_as(val, errp, ORU_DO_TYPE_##CODE))          \
            return 0;                                                \
        return oru::number_of<Type>(*val);                           \
    }
#define GET_TEXT(suffix, CODE, Type)                                        \
    const char *oru_do_value_get_##suffix(ORUDoValue *val, int32_t *errp) { \
        if (!is_readable_as(val, errp, ORU_DO_TYPE_##CODE))                 \
            return nullptr;                                                 \
        return val->data.bytes;                                             \
    }
#define GET_BYTES(suffix, CODE, Type)                                                        \
    const uint8_t *oru_do_value_get_##suffix(ORUDoValue *val, int32_t *len, int32_t *errp) { \
        if (!is_readable_as(val, errp, ORU_DO_TYPE_##CODE))                                  \
            return nullptr;                                                                  \
        if (len != nullptr)                                                                  \
            *len = val->len;                                                                 \
        return reinterpret_cast<const uint8_t *>(val->data.bytes);                           \
    }
#define GET_HELD(suffix, CODE, Type)                                  \
    Type *oru_do_value_get_##suffix(ORUDoValue *val, int32_t *errp) { \
        if (!is_readable_as(val, errp, ORU_DO_TYPE_##CODE))           \
            return nullptr;                                           \
        return static_cast<Type *>(val->data.object);                 \
    }
#define GET(SHAPE, suffix, CODE, text, Type) GET_##SHAPE(suffix, CODE, Type)
ORU_VALUE_TYPES(GET)

int32_t oru_do_value_get_length(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return oru_do_is_key_string_type(val->type) != 0 ? val->len : -1;
}

ORUDoUri *oru_do_value_get_uri(ORUDoValue *val) {
    if (val == nullptr || oru_do_is_uri_type(val->type) == 0)
        return nullptr;
    return val->data.uri;
}

int32_t oru_do_value_is_null(ORUDoValue *val) {
    return val->type == ORU_DO_TYPE_NULL;
}

int32_t oru_do_value_is_string(ORUDoValue *val) {
    return val->type == ORU_DO_TYPE_STRING;
}

int32_t oru_do_value_is_array(ORUDoValue *val) {
    return val->type == ORU_DO_TYPE_ARRAY;
}

int32_t oru_do_value_is_bits(ORUDoValue *val) {
    return val->type == ORU_DO_TYPE_BITS;
}

int32_t oru_do_value_is_enumeration(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return val->type == ORU_DO_TYPE_ENUMERATION;
}

int32_t oru_do_value_is_integer_number(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return val->type >= ORU_DO_TYPE_UNSIGNED_BYTE && val->type <= ORU_DO_TYPE_LONG;
}

int32_t oru_do_value_is_signed_int_number(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return oru_do_is_signed_int_num_type(val->type);
}

int32_t oru_do_value_is_unsigned_int_number(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return oru_do_is_unsigned_int_num_type(val->type);
}

int32_t oru_do_value_is_float_number(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return oru_do_is_float_num_type(val->type);
}

const char *oru_do_value_get_typedef_name(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return val->typedef_name;
}

void oru_do_value_set_typedef_name(ORUDoValue *val, const char *text) {
    ORU_REQUIRE(val);
    replace_typedef_name(*val, oru::duplicate(text));
}

void oru_do_value_set_typedef_name_l(ORUDoValue *val, const char *text, int32_t n) {
    ORU_REQUIRE(val);
    const bool has_text = text != nullptr && n >= 0;
    replace_typedef_name(*val, has_text ? oru::duplicate(text, static_cast<size_t>(n)) : nullptr);
}

uint8_t oru_do_value_get_flags(ORUDoValue *val) {
    ORU_REQUIRE(val);
    return val->flags;
}

void oru_do_value_set_flags(ORUDoValue *val, uint8_t flags) {
    ORU_REQUIRE(val);
    val->flags = flags;
}

int32_t oru_do_value_is_default(ORUDoValue *val) {
    return (val->flags & ORU_DO_VALUE_FLAG_DEFAULT) != 0;
}

void oru_do_value_set_default_flag(ORUDoValue *val) {
    ORU_REQUIRE(val);
    val->flags |= ORU_DO_VALUE_FLAG_DEFAULT;
}

ORU_OBJECT_API(ORUDoValue, oru_do_value)
ORU_POOL_API(small_pool, oru_do_value_sml_misc)
ORU_POOL_API(large_pool, oru_do_value_misc)
