// The adders that make the value: one a type, from the table of value types.
#include "do/derived_value.h"
#include "do/value.h"
#include "do/value_types.h"
#include "oru/nvlist.h"

namespace {

// Adds a value and gives up the reference that came with it.
int32_t add_new(ORUDoNvlist *nvlist, const char *name, ORUDoValue *value) {
    const auto held = oru::Ref<ORUDoValue>::adopt(value);
    return oru_do_nvlist_add(nvlist, name, held.get());
}

}  // namespace

int32_t oru_do_nvlist_add_null(ORUDoNvlist *nvlist, const char *name) {
    return add_new(nvlist, name, oru_do_value_new_null());
}

#define ADD(SHAPE, suffix, CODE, text, Type)                                             \
    int32_t oru_do_nvlist_add_##suffix(ORUDoNvlist *nvlist, const char *name,            \
                                       ORU_VALUE_PARAMS_##SHAPE(Type)) {                 \
        return add_new(nvlist, name, oru_do_value_new_##suffix(ORU_VALUE_ARGS_##SHAPE)); \
    }
ORU_LISTED_VALUE_TYPES(ADD)

int32_t oru_do_nvlist_add_uri(ORUDoNvlist *nvlist, const char *name, ORUDoUri *object) {
    return oru_do_nvlist_add_any_uri(nvlist, name, object);
}

int32_t oru_do_nvlist_add_hex_binary_typedef(ORUDoNvlist *nvlist, const char *name,
                                             const void *bytes, int32_t n, const char *type_name) {
    return add_new(nvlist, name, oru::new_derived_hex_binary(bytes, n, type_name));
}
