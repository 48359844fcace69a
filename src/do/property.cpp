// One entry of a property table.
#include "do/name.h"
#include "do/properties.h"
#include "do/value.h"

namespace {

// Without a value the answer is that for no value at all.
bool same_values(ORUDoValue *a, ORUDoValue *b) {
    if (a == nullptr || b == nullptr)
        return a == b;
    return oru_do_value_equals(a, b) != 0;
}

}  // namespace

ORUDoName *oru_do_property_get_name(ORUDoProperty *property) {
    ORU_REQUIRE(property);
    return property->name;
}

const char *oru_do_property_get_name_string(ORUDoProperty *property) {
    ORU_REQUIRE(property);
    return property->name->str;
}

ORUDoValue *oru_do_property_get_value(ORUDoProperty *property) {
    ORU_REQUIRE(property);
    return property->value;
}

int32_t oru_do_property_get_type(ORUDoProperty *property) {
    ORU_REQUIRE(property);
    return property->value != nullptr ? property->value->type : ORU_DO_TYPE_NULL;
}

const char *oru_do_property_get_type_def(ORUDoProperty *property) {
    ORU_REQUIRE(property);
    return property->value != nullptr ? oru_do_value_get_typedef_name(property->value) : nullptr;
}

int32_t oru_do_property_is_ipaddresstype(ORUDoProperty *property) {
    return oru_do_property_get_type(property) == ORU_DO_TYPE_IP_ADDRESS ? 1 : 0;
}

int32_t oru_do_property_equals(ORUDoProperty *prop1, ORUDoProperty *prop2) {
    ORU_REQUIRE(prop1);
    ORU_REQUIRE(prop2);
    return same_values(prop1->value, prop2->value) && oru::same_name(prop1->name, prop2->name);
}

void oru_do_property_set_value(ORUDoProperty *property, ORUDoValue *value) {
    ORU_REQUIRE(property);
    if (value != nullptr)
        oru::replace(property->value, value);
}

void oru_do_property_set_type_def(ORUDoProperty *property, const char *type_name) {
    ORU_REQUIRE(property);
    if (property->value != nullptr)
        oru_do_value_set_typedef_name(property->value, type_name);
}

ORU_POOL_API(oru::pool_of<ORUDoProperty>, oru_do_property)
