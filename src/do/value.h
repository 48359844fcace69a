#ifndef ORU_SRC_DO_VALUE_H
#define ORU_SRC_DO_VALUE_H

#include <cstring>
#include <string_view>

#include "frame/object.h"
#include "frame/sized_storage.h"
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

namespace oru {

// The number of a value whose type is that of `Number`.
template <class Number>
Number number_of(const ORUDoValue &val) {
    Number number;
    static_assert(sizeof number <= sizeof val.data);
    std::memcpy(&number, &val.data, sizeof number);
    return number;
}

// The payload of a value of sized type; empty, with null data, when it has no storage.
inline std::string_view sized_payload(const ORUDoValue &val) {
    if (val.data.bytes == nullptr)
        return {};
    return {val.data.bytes, static_cast<size_t>(val.len)};
}

// Whether the value was made for that derived type.
inline bool has_typedef(const ORUDoValue &val, const char *name) {
    return val.typedef_name != nullptr && std::strcmp(val.typedef_name, name) == 0;
}

}  // namespace oru

#endif
