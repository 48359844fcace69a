#include "do/value_types.h"

#include <cstring>

#include "frame/require.h"

namespace {

template <int32_t... codes>
bool one_of(int32_t type) {
    return ((type == codes) || ...);
}

bool maps(int32_t type) {
    return type >= 0 && type < ORU_DO_TYPE_MAP_LEN;
}

}  // namespace

#define TEXT_OF(SHAPE, suffix, CODE, text, Type) text,
#define FIVE_WITHOUT_A_TYPE nullptr, nullptr, nullptr, nullptr, nullptr,
#define SEVENTEEN_WITHOUT_A_TYPE \
    FIVE_WITHOUT_A_TYPE FIVE_WITHOUT_A_TYPE FIVE_WITHOUT_A_TYPE nullptr, nullptr,
const char *type_map[ORU_DO_TYPE_MAP_LEN] = {
    ORU_SIMPLE_VALUE_TYPES(TEXT_OF)
    // 16 to 100
    SEVENTEEN_WITHOUT_A_TYPE SEVENTEEN_WITHOUT_A_TYPE SEVENTEEN_WITHOUT_A_TYPE
        SEVENTEEN_WITHOUT_A_TYPE SEVENTEEN_WITHOUT_A_TYPE ORU_MODEL_VALUE_TYPES(TEXT_OF)};

int32_t oru_do_get_typecode_by_typestr(const char *text) {
    ORU_REQUIRE(text);
#define CODE_OF(SHAPE, suffix, CODE, type_text, Type) \
    if (std::strcmp(text, type_text) == 0)            \
        return ORU_DO_TYPE_##CODE;
    ORU_VALUE_TYPES(CODE_OF)
    return ORU_DO_TYPE_UNKNOWN;
}

const char *oru_do_get_typestr_by_typecode(int32_t type) {
    if (maps(type))
        return type_map[type];
    if (type == ORU_DO_TYPE_NULL)
        return "null";
    return type == ORU_DO_TYPE_DEFAULT ? "__default__" : "__unknown__";
}

int32_t oru_do_is_numeric_type(int32_t type) {
    return type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_DURATION &&
           type != ORU_DO_TYPE_STRING;
}

int32_t oru_do_is_signed_int_num_type(int32_t type) {
    return one_of<ORU_DO_TYPE_BYTE, ORU_DO_TYPE_SHORT, ORU_DO_TYPE_INT, ORU_DO_TYPE_LONG,
                  ORU_DO_TYPE_DATETIME, ORU_DO_TYPE_DURATION>(type);
}

int32_t oru_do_is_unsigned_int_num_type(int32_t type) {
    return one_of<ORU_DO_TYPE_UNSIGNED_BYTE, ORU_DO_TYPE_UNSIGNED_SHORT, ORU_DO_TYPE_UNSIGNED_INT,
                  ORU_DO_TYPE_UNSIGNED_LONG>(type);
}

int32_t oru_do_is_float_num_type(int32_t type) {
    return one_of<ORU_DO_TYPE_FLOAT, ORU_DO_TYPE_DOUBLE>(type);
}

int32_t oru_do_is_string_type(int32_t type) {
    return one_of<ORU_DO_TYPE_STRING, ORU_DO_TYPE_ENUMERATION, ORU_DO_TYPE_MR_URI,
                  ORU_DO_TYPE_COLL_URI>(type);
}

int32_t oru_do_is_key_string_type(int32_t type) {
    return one_of<ORU_DO_TYPE_STRING, ORU_DO_TYPE_HEX_BINARY, ORU_DO_TYPE_IP_ADDRESS,
                  ORU_DO_TYPE_NSAP_ADDRESS>(type);
}

int32_t oru_do_is_complex_type(int32_t type) {
    return one_of<ORU_DO_TYPE_CHOICE, ORU_DO_TYPE_SEQUENCE>(type);
}

int32_t oru_do_is_array_type(int32_t type) {
    return type == ORU_DO_TYPE_ARRAY;
}

int32_t oru_do_is_uri_type(int32_t type) {
    return one_of<ORU_DO_TYPE_ANY_URI, ORU_DO_TYPE_MR_URI, ORU_DO_TYPE_COLL_URI>(type);
}

int32_t oru_do_is_bits_type(int32_t type) {
    return type == ORU_DO_TYPE_BITS;
}
