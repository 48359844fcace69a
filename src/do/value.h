#ifndef ORU_SRC_DO_VALUE_H
#define ORU_SRC_DO_VALUE_H

#include <cstring>
#include <string_view>

#include "frame/object.h"
#include "frame/sized_storage.h"
#include "oru/uri.h"
#include "oru/value.h"

struct ORUDoValue {
    char *typedef_name;
    uint32_t ref;
    int32_t len;  // of a sized text or sized bytes, -1 in all others
    union {
        uint64_t word;  // a narrower number stands in the low bytes
        char *bytes;    // sized storage; null when it could not be had
        void *object;
        ORUDoUri *uri;
        ORUDoNvlist *nvlist;
        ORUDoVlist *vlist;
    } data;
    int32_t type;
    uint8_t flags;
    int32_t storage_class;  // a StorageClass; 0 without sized storage
};

template <>
struct oru::ObjectType<ORUDoValue> {
    static constexpr const char *name = "oru_do_value";
    static constexpr Tag tag = Tag::value;
    static auto &count(ORUDoValue &self) { return self.ref; }
    static void release_members(ORUDoValue &self);
};

extern template void oru::destroy(ORUDoValue *);

namespace oru {

// The number of a value whose type is that of `Number`.
template <class Number>
Number number_of(const ORUDoValue &val) {
    Number number;
    static_assert(sizeof number <= sizeof val.data);
    std::memcpy(&number, &val.data, sizeof number);
    return number;
}

// An integer, a dateTime or a duration: sign-extended from signed types, zero-extended from
// unsigned ones. An unsignedLong keeps its bits.
inline int64_t integer_of(const ORUDoValue &val) {
    switch (val.type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            return number_of<uint8_t>(val);
        case ORU_DO_TYPE_BYTE:
            return number_of<int8_t>(val);
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            return number_of<uint16_t>(val);
        case ORU_DO_TYPE_SHORT:
            return number_of<int16_t>(val);
        case ORU_DO_TYPE_UNSIGNED_INT:
            return number_of<uint32_t>(val);
        case ORU_DO_TYPE_INT:
            return number_of<int32_t>(val);
        default:
            return number_of<int64_t>(val);
    }
}

// A float or a double.
double real_of(const ORUDoValue &val);

// Numbers that differ by no more than this are the same.
inline constexpr double kSameNumber = 1e-5;

inline bool is_integer_type(int32_t type) {
    return type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_LONG;
}

// The types whose numbers are whole.
inline bool is_whole_number_type(int32_t type) {
    return is_integer_type(type) || type == ORU_DO_TYPE_DATETIME || type == ORU_DO_TYPE_DURATION;
}

// As -1, 0 or 1, and as -2 what cannot be compared. A string compares with other texts where it is
// not `strict`.
int32_t order_values(const ORUDoValue &a, const ORUDoValue &b, bool strict);

// Types with sized storage.
inline bool is_sized_type(int32_t type) {
    return type == ORU_DO_TYPE_STRING || type == ORU_DO_TYPE_HEX_BINARY ||
           (type >= ORU_DO_TYPE_IP_ADDRESS && type <= ORU_DO_TYPE_ENUMERATION);
}

// The payload of a value of sized type; empty when it has no storage.
inline std::string_view sized_payload(const ORUDoValue &val) {
    if (val.data.bytes == nullptr)
        return {"", 0};
    return {val.data.bytes, static_cast<size_t>(val.len)};
}

// The text of the URI of a value of URI type; null without a URI.
inline const char *uri_text(const ORUDoValue &val) {
    return val.data.uri != nullptr ? oru_do_uri_get_uri_str(val.data.uri) : nullptr;
}

// Whether the value was made for that derived type.
inline bool has_typedef(const ORUDoValue &val, const char *name) {
    return val.typedef_name != nullptr && std::strcmp(val.typedef_name, name) == 0;
}

inline const char *boolean_text(const ORUDoValue &val) {
    return number_of<int32_t>(val) != 0 ? "true" : "false";
}

// What stands in the place of a secret.
inline constexpr char kHiddenText[] = "<removed>";

// What the process installed, or null.
const ORUDoValueFormatter *default_formatter();

// Whether printing with these options is to hide the value.
bool is_hidden_secret(const ORUDoValue &val, uint32_t opts);

}  // namespace oru

#endif
