// The typed readers and setters of property tables: one a type, from the table of value types.
#include "do/derived_value.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/value.h"
#include "do/value_types.h"
#include "oru/rc.h"

namespace {

// The value of that name. Without one the status is 106, which is none of the codes that speak of
// things that are missing.
ORUDoValue *find_value(ORUDoProperties *props, const char *name, int32_t *rc) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(name);
    ORU_REQUIRE(rc);
    const ORUDoProperty *entry = oru::properties_find(*props, name);
    if (entry != nullptr && entry->value != nullptr)
        return entry->value;
    *rc = ORU_RC_PROPERTY;
    return nullptr;
}

// Sets a value and gives up the reference that came with it.
int32_t set_new(ORUDoProperties *props, const char *name, ORUDoValue *value) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(name);
    const auto held = oru::Ref<ORUDoValue>::adopt(value);
    if (!held)
        return ORU_RC_MALLOC;
    oru::properties_set(*props, name, held.get());
    return ORU_OK;
}

constexpr int32_t kMacAddressLength = 6;

}  // namespace

#define GET(SHAPE, suffix, CODE, text, Type)                                                 \
    ORU_VALUE_RESULT_##SHAPE(Type) oru_do_properties_get_##suffix(                           \
        ORUDoProperties *props, const char *name, ORU_VALUE_LEN_PARAM_##SHAPE int32_t *rc) { \
        ORUDoValue *value = find_value(props, name, rc);                                     \
        if (value == nullptr)                                                                \
            return {};                                                                       \
        return oru_do_value_get_##suffix(value, ORU_VALUE_LEN_ARG_##SHAPE rc);               \
    }
ORU_VALUE_TYPES(GET)

int32_t oru_do_properties_set_null(ORUDoProperties *props, const char *name) {
    return set_new(props, name, oru_do_value_new_null());
}

int32_t oru_do_properties_set_default(ORUDoProperties *props, const char *name) {
    return set_new(props, name, oru_do_value_new_default());
}

#define SET(SHAPE, suffix, CODE, text, Type)                                            \
    int32_t oru_do_properties_set_##suffix(ORUDoProperties *props, const char *name,    \
                                           ORU_VALUE_PARAMS_##SHAPE(Type)) {            \
        return set_new(props, name, oru_do_value_new_##suffix(ORU_VALUE_ARGS_##SHAPE)); \
    }
ORU_VALUE_TYPES(SET)

int32_t oru_do_properties_set_mac_address(ORUDoProperties *props, const char *name,
                                          const void *bytes) {
    return set_new(props, name,
                   oru::new_derived_hex_binary(bytes, kMacAddressLength, "MACAddress"));
}
