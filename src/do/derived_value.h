#ifndef ORU_SRC_DO_DERIVED_VALUE_H
#define ORU_SRC_DO_DERIVED_VALUE_H

#include "frame/require.h"
#include "oru/value.h"

namespace oru {

// A hexBinary of the derived type `type_name`, which is required. Null when memory runs out.
inline ORUDoValue *new_derived_hex_binary(const void *bytes, int32_t n, const char *type_name) {
    ORU_REQUIRE(type_name);
    ORUDoValue *value = oru_do_value_new_hex_binary(bytes, n);
    if (value != nullptr)
        oru_do_value_set_typedef_name(value, type_name);
    return value;
}

}  // namespace oru

#endif
