/* Counted objects of the library, owned by scope. */
#ifndef EMBEDDED_HANDLES_H
#define EMBEDDED_HANDLES_H

#include "support/handles.h"

namespace embedded {

using namespace handles;

/* A new value with what it was made of: one for whose bytes there was no memory has none. */
inline Value made_value(ORUDoValue *object) {
    Value value = made<Value>(object);
    int32_t status = ORU_OK;
    int32_t length = 0;
    const void *bytes = object;
    switch (oru_do_value_get_type(object)) {
        case ORU_DO_TYPE_STRING:
            bytes = oru_do_value_get_string(object, &status);
            break;
        case ORU_DO_TYPE_ENUMERATION:
            bytes = oru_do_value_get_enumeration(object, &status);
            break;
        case ORU_DO_TYPE_HEX_BINARY:
            bytes = oru_do_value_get_hex_binary(object, &length, &status);
            break;
        case ORU_DO_TYPE_IP_ADDRESS:
            bytes = oru_do_value_get_ip_address(object, &length, &status);
            break;
        case ORU_DO_TYPE_NSAP_ADDRESS:
            bytes = oru_do_value_get_nsap_address(object, &length, &status);
            break;
        default:
            break;
    }
    if (bytes == nullptr)
        throw std::bad_alloc();
    return value;
}

/* Sets a property, which tells by nothing else that memory ran out. */
inline void set_property(ORUDoProperties *props, ORUDoName *name, const Value &value) {
    oru_do_properties_set_value_n(props, name, value.get());
    if (oru_do_properties_get_value_n(props, name) != value.get())
        throw std::bad_alloc();
}

/* Names the derived type of a value, which decides on secrets and tells by nothing else that memory
   ran out. */
inline void set_type_name(const Value &value, std::string_view name) {
    oru_do_value_set_typedef_name_l(value.get(), name.data(), static_cast<int32_t>(name.size()));
    const char *const now = oru_do_value_get_typedef_name(value.get());
    if (now == nullptr || name != now)
        throw std::bad_alloc();
}

/* A table of operations that knows whom it belongs to: callers hand back the address of the table.
 */
template <typename Table, typename Owner>
struct OwnedTable {
    Table table = {};
    Owner *owner = nullptr;

    static Owner &of(Table *table) { return *reinterpret_cast<OwnedTable *>(table)->owner; }
};

/* What was written into a buffer, all of it. */
inline std::string text_in(const Buffer &buffer) {
    if (oru_do_strbuf_get_err(buffer.get()) != ORU_OK)
        throw std::bad_alloc();
    return std::string(view(oru_do_strbuf_to_string(buffer.get())));
}

/* Whether memory can be had, after a call that does not tell why it failed. */
inline void require_memory() {
    made<Value>(
        oru_do_value_new_string("as long as what stands in most addresses and texts, or so"));
}

/* What a call of the library gives that takes a lack of memory for a fault of its argument: asked
   again, it says whether it was one. */
template <typename Ask, typename Answer>
Answer certain(Answer good, Ask ask) {
    for (int i = 0; i < 2; i++) {
        if (ask() == good)
            return good;
    }
    require_memory();
    return ask();
}

/* The value of a text; null for a text that is none of the type. */
inline Value value_from_text(const std::string &text, int32_t type) {
    Value value;
    certain(true, [&] {
        int32_t status = ORU_OK;
        value = Value(oru_do_value_new_from_string(text.c_str(), type, &status));
        return static_cast<bool>(value);
    });
    return value;
}

}  // namespace embedded

#endif
