// The JSON types: tags, codes and the kinds that codes are built of.
#ifndef ORU_SRC_JSON_TYPES_H
#define ORU_SRC_JSON_TYPES_H

#include <string_view>

#include "oru/json.h"

namespace oru::json {

// Kinds of payload, and two marks beside them.
inline constexpr int64_t kValue = 0x10000;
inline constexpr int64_t kText = 0x20000;
inline constexpr int64_t kInteger = 0x40000;
inline constexpr int64_t kReal = 0x80000;
inline constexpr int64_t kBoolean = 0x100000;
inline constexpr int64_t kNull = 0x200000;
inline constexpr int64_t kObject = 0x400000;
inline constexpr int64_t kArray = 0x800000;
inline constexpr int64_t kExpression = 0x1000000;

enum TypeCode : int64_t {
    kTypeUbyte = 0x50001,
    kTypeByte = 0x50002,
    kTypeUshort = 0x50003,
    kTypeShort = 0x50004,
    kTypeUint = 0x50005,
    kTypeInt = 0x50006,
    kTypeUlong = 0x50007,
    kTypeLong = 0x50008,
    kTypeString = 0x30009,
    kTypeBoolean = 0x11000A,
    kTypeFloat = 0x9000B,
    kTypeDouble = 0x9000C,
    kTypeDatetime = 0x5000D,
    kTypeDuration = 0x5000E,
    kTypeAnyUri = 0x3000F,
    kTypeHexBinary = 0x30010,
    kTypeIpAddress = 0x30011,
    kTypeNsapAddress = 0x30012,
    kTypeEnumeration = 0x30013,
    kTypeArray = 0x810014,
    kTypeChoice = 0x410015,
    kTypeSequence = 0x410016,
    kTypeMrUri = 0x30017,
    kTypeCollUri = 0x30018,
    kTypeBits = 0x410019,
    kTypeProperties = 0x400100,
    kTypeNlist = 0x800102,
    kTypeVlist = 0x800103,
    kTypeNvlist = 0x800104,
    kTypePropertiesList = 0x800105,
    kTypeConfigOps = 0x800106,
    kTypeMrMetaList = 0x800108,
    kTypeMrMeta = 0x400109,
    kTypePropMetaList = 0x80010A,
    kTypePropMeta = 0x40010B,
    kTypeConstraintList = 0x80010C,
    kTypeConstraint = 0x40010E,
    kTypeVtable = 0x80010F,
    kTypeNtlist = 0x800110,
    kTypeError = 0x400114,
    kTypePropErrs = 0x400115,
    kTypeEvent = 0x400117,
    kTypeTypedefMeta = 0x400118,
    kTypeDtree = 0x400119,
    kTypeNull = 0x200000,
    kTypeAdd = 0x1000001,
    kTypeSub = 0x1000002,
    kTypeMult = 0x1000003,
    kTypeDiv = 0x1000004,
    kTypeMod = 0x1000005,
    kTypeIncr = 0x1000006,
    kTypeDecr = 0x1000007,
    kTypeMap = 0x1000008,
    kTypeTostring = 0x1000009,
    kTypeKey = 0x100000A,
    kTypeMin = 0x100000B,
    kTypeMax = 0x100000C,
};

// What a value of that type begins with in the tagged form, `{"%int":`.
std::string_view value_opening(int32_t value_type);

}  // namespace oru::json

#endif
