#include "json/types.h"

#include <cstring>
#include <iterator>

#include "json/read.h"
#include "oru/value.h"

namespace {

using namespace oru::json;

#define VALUE_ROW(tag, code, type) \
    { tag, code, type, value_deser }
#define OBJECT_ROW(tag, code, deserialiser) \
    { tag, code, ORU_DO_TYPE_UNKNOWN, deserialiser }

// Lookups give the first row that fits, so the order matters.
constexpr oru_json_type_info kTypes[] = {
    VALUE_ROW("%ubyte", kTypeUbyte, ORU_DO_TYPE_UNSIGNED_BYTE),
    VALUE_ROW("%unsignedByte", kTypeUbyte, ORU_DO_TYPE_UNSIGNED_BYTE),
    VALUE_ROW("%byte", kTypeByte, ORU_DO_TYPE_BYTE),
    VALUE_ROW("%ushort", kTypeUshort, ORU_DO_TYPE_UNSIGNED_SHORT),
    VALUE_ROW("%unsignedShort", kTypeUshort, ORU_DO_TYPE_UNSIGNED_SHORT),
    VALUE_ROW("%short", kTypeShort, ORU_DO_TYPE_SHORT),
    VALUE_ROW("%uint", kTypeUint, ORU_DO_TYPE_UNSIGNED_INT),
    VALUE_ROW("%unsignedInt", kTypeUint, ORU_DO_TYPE_UNSIGNED_INT),
    VALUE_ROW("%int", kTypeInt, ORU_DO_TYPE_INT),
    VALUE_ROW("%ulong", kTypeUlong, ORU_DO_TYPE_UNSIGNED_LONG),
    VALUE_ROW("%unsignedLong", kTypeUlong, ORU_DO_TYPE_UNSIGNED_LONG),
    VALUE_ROW("%long", kTypeLong, ORU_DO_TYPE_LONG),
    VALUE_ROW("%string", kTypeString, ORU_DO_TYPE_STRING),
    VALUE_ROW("%boolean", kTypeBoolean, ORU_DO_TYPE_BOOLEAN),
    VALUE_ROW("%float", kTypeFloat, ORU_DO_TYPE_FLOAT),
    VALUE_ROW("%double", kTypeDouble, ORU_DO_TYPE_DOUBLE),
    VALUE_ROW("%datetime", kTypeDatetime, ORU_DO_TYPE_DATETIME),
    VALUE_ROW("%dateTime", kTypeDatetime, ORU_DO_TYPE_DATETIME),
    VALUE_ROW("%duration", kTypeDuration, ORU_DO_TYPE_DURATION),
    VALUE_ROW("%any_uri", kTypeAnyUri, ORU_DO_TYPE_ANY_URI),
    VALUE_ROW("%anyURI", kTypeAnyUri, ORU_DO_TYPE_ANY_URI),
    VALUE_ROW("%hex_binary", kTypeHexBinary, ORU_DO_TYPE_HEX_BINARY),
    VALUE_ROW("%hexBinary", kTypeHexBinary, ORU_DO_TYPE_HEX_BINARY),
    VALUE_ROW("%ip_address", kTypeIpAddress, ORU_DO_TYPE_IP_ADDRESS),
    VALUE_ROW("%ipAddress", kTypeIpAddress, ORU_DO_TYPE_IP_ADDRESS),
    VALUE_ROW("%nsap_address", kTypeNsapAddress, ORU_DO_TYPE_NSAP_ADDRESS),
    VALUE_ROW("%nsapAddress", kTypeNsapAddress, ORU_DO_TYPE_NSAP_ADDRESS),
    VALUE_ROW("%enumeration", kTypeEnumeration, ORU_DO_TYPE_ENUMERATION),
    VALUE_ROW("%array", kTypeArray, ORU_DO_TYPE_ARRAY),
    VALUE_ROW("%choice", kTypeChoice, ORU_DO_TYPE_CHOICE),
    VALUE_ROW("%sequence", kTypeSequence, ORU_DO_TYPE_SEQUENCE),
    VALUE_ROW("%mr_uri", kTypeMrUri, ORU_DO_TYPE_MR_URI),
    VALUE_ROW("%coll_uri", kTypeCollUri, ORU_DO_TYPE_COLL_URI),
    VALUE_ROW("%bits", kTypeBits, ORU_DO_TYPE_BITS),
    OBJECT_ROW("%properties", kTypeProperties, properties_deser),
    OBJECT_ROW("%nlist", kTypeNlist, nlist_deser),
    OBJECT_ROW("%vlist", kTypeVlist, vlist_deser),
    OBJECT_ROW("%nvlist", kTypeNvlist, nvlist_deser),
    OBJECT_ROW("%ntlist", kTypeNtlist, ntlist_deser),
    OBJECT_ROW("%config_ops", kTypeConfigOps, config_ops_deser),
    OBJECT_ROW("%mr_meta_list", kTypeMrMetaList, mr_meta_list_deser),
    OBJECT_ROW("%mr_meta", kTypeMrMeta, mr_meta_deser),
    OBJECT_ROW("%prop_meta_list", kTypePropMetaList, prop_meta_list_deser),
    OBJECT_ROW("%prop_meta", kTypePropMeta, prop_meta_deser),
    OBJECT_ROW("%constraint_list", kTypeConstraintList, constraint_list_deser),
    OBJECT_ROW("%constraint", kTypeConstraint, constraint_deser),
    OBJECT_ROW("%error", kTypeError, error_deser),
    OBJECT_ROW("%prop_errs", kTypePropErrs, prop_errs_deser),
    OBJECT_ROW("%event", kTypeEvent, event_deser),
    OBJECT_ROW("%properties_list", kTypePropertiesList, properties_list_deser),
    {"%null", kTypeNull, ORU_DO_TYPE_NULL, null_deser},
    OBJECT_ROW("%vtable", kTypeVtable, vtable_deser),
    OBJECT_ROW("%typedef_meta", kTypeTypedefMeta, typedef_meta_deser),
    OBJECT_ROW("%dtree", kTypeDtree, dtree_deser),
    OBJECT_ROW("_add()", kTypeAdd, oru_json_expr_deser),
    OBJECT_ROW("_sub()", kTypeSub, oru_json_expr_deser),
    OBJECT_ROW("_mult()", kTypeMult, oru_json_expr_deser),
    OBJECT_ROW("_div()", kTypeDiv, oru_json_expr_deser),
    OBJECT_ROW("_mod()", kTypeMod, oru_json_expr_deser),
    OBJECT_ROW("_incr()", kTypeIncr, oru_json_expr_deser),
    OBJECT_ROW("_decr()", kTypeDecr, oru_json_expr_deser),
    OBJECT_ROW("_map()", kTypeMap, oru_json_expr_deser),
    OBJECT_ROW("_tostring()", kTypeTostring, oru_json_expr_deser),
    OBJECT_ROW("_key()", kTypeKey, oru_json_expr_deser),
    OBJECT_ROW("_min()", kTypeMin, oru_json_expr_deser),
    OBJECT_ROW("_max()", kTypeMax, oru_json_expr_deser),
    {nullptr, 0, 0, nullptr},
};

#undef VALUE_ROW
#undef OBJECT_ROW

static_assert(std::size(kTypes) == 66 + 1);

template <class Fits>
const oru_json_type_info *first_row(Fits &&fits) {
    const oru_json_type_info *row = kTypes;
    while (row->tag != nullptr && !fits(*row))
        ++row;
    return row->tag != nullptr ? row : nullptr;
}

}  // namespace

const oru_json_type_info *oru_json_get_type_info(const char *text, int32_t length) {
    if (text == nullptr || length < 0)
        return nullptr;
    // A text that only begins a tag matches it, at the first row that has it.
    return first_row([text, length](const oru_json_type_info &row) {
        return std::strncmp(row.tag, text, static_cast<size_t>(length)) == 0;
    });
}

const oru_json_type_info *oru_json_get_type_info_by_type_code(int64_t code) {
    return first_row([code](const oru_json_type_info &row) { return row.type_code == code; });
}

const oru_json_type_info *oru_json_get_type_info_by_value_type_code(int32_t code) {
    return first_row([code](const oru_json_type_info &row) { return row.value_type_code == code; });
}
