// The one table of value types. It drives the constructors and the strict getters of values, and
// every family beside them that has one operation a type: typed adders of lists, typed accessors of
// property tables.
//
// A row is X(SHAPE, suffix, CODE, text, Type). The shape tells how the payload is passed:
//
//   NUMBER  Type n                           a number of C type `Type`
//   TEXT    const char *text                 a zero-terminated text; `Type` is char
//   BYTES   const void *bytes, int32_t n     counted bytes; `Type` is uint8_t
//   HELD    Type *object                     an object that the value holds a reference to
//
// and the macros ORU_VALUE_..._SHAPE below give its parts, so that a family is one line a shape or
// one line at all:
//
//     #define ADD(SHAPE, suffix, CODE, text, Type)  (each line but the last ends in a backslash)
//         int32_t oru_do_vlist_add_##suffix(ORUDoVlist *vlist, ORU_VALUE_PARAMS_##SHAPE(Type)) {
//             return add_new(vlist, oru_do_value_new_##suffix(ORU_VALUE_ARGS_##SHAPE));
//         }
//     ORU_VALUE_TYPES(ADD)
#ifndef ORU_SRC_DO_VALUE_TYPES_H
#define ORU_SRC_DO_VALUE_TYPES_H

#include "oru/value.h"

// Codes 0 to 15, in order.
#define ORU_SIMPLE_VALUE_TYPES(X)                                        \
    X(NUMBER, unsigned_byte, UNSIGNED_BYTE, "unsignedByte", uint8_t)     \
    X(NUMBER, byte, BYTE, "byte", int8_t)                                \
    X(NUMBER, unsigned_short, UNSIGNED_SHORT, "unsignedShort", uint16_t) \
    X(NUMBER, short, SHORT, "short", int16_t)                            \
    X(NUMBER, unsigned_int, UNSIGNED_INT, "unsignedInt", uint32_t)       \
    X(NUMBER, int, INT, "int", int32_t)                                  \
    X(NUMBER, unsigned_long, UNSIGNED_LONG, "unsignedLong", uint64_t)    \
    X(NUMBER, long, LONG, "long", int64_t)                               \
    X(TEXT, string, STRING, "string", char)                              \
    X(NUMBER, boolean, BOOLEAN, "boolean", int32_t)                      \
    X(NUMBER, float, FLOAT, "float", float)                              \
    X(NUMBER, double, DOUBLE, "double", double)                          \
    X(NUMBER, datetime, DATETIME, "dateTime", int64_t)                   \
    X(NUMBER, duration, DURATION, "duration", int64_t)                   \
    X(HELD, any_uri, ANY_URI, "anyURI", ORUDoUri)                        \
    X(BYTES, hex_binary, HEX_BINARY, "hexBinary", uint8_t)

// Codes 101 to 108, in order.
#define ORU_LISTED_MODEL_VALUE_TYPES(X)                          \
    X(BYTES, ip_address, IP_ADDRESS, "ipAddress", uint8_t)       \
    X(BYTES, nsap_address, NSAP_ADDRESS, "nsapAddress", uint8_t) \
    X(TEXT, enumeration, ENUMERATION, "enumeration", char)       \
    X(HELD, choice, CHOICE, "choice", ORUDoNvlist)               \
    X(HELD, sequence, SEQUENCE, "sequence", ORUDoNvlist)         \
    X(HELD, array, ARRAY, "array", ORUDoVlist)                   \
    X(HELD, mr_uri, MR_URI, "mrURI", ORUDoUri)                   \
    X(HELD, coll_uri, COLL_URI, "collURI", ORUDoUri)

// Codes 101 to 109, in order.
#define ORU_MODEL_VALUE_TYPES(X)    \
    ORU_LISTED_MODEL_VALUE_TYPES(X) \
    X(HELD, bits, BITS, "bits", ORUDoVlist)

#define ORU_VALUE_TYPES(X)    \
    ORU_SIMPLE_VALUE_TYPES(X) \
    ORU_MODEL_VALUE_TYPES(X)

// The types that lists have adders for: all but bits.
#define ORU_LISTED_VALUE_TYPES(X) \
    ORU_SIMPLE_VALUE_TYPES(X)     \
    ORU_LISTED_MODEL_VALUE_TYPES(X)

// The payload's parameters, and the names under which a body passes them on.
#define ORU_VALUE_PARAMS_NUMBER(Type) Type n
#define ORU_VALUE_PARAMS_TEXT(Type) const char *text
#define ORU_VALUE_PARAMS_BYTES(Type) const void *bytes, int32_t n
#define ORU_VALUE_PARAMS_HELD(Type) Type *object
#define ORU_VALUE_ARGS_NUMBER n
#define ORU_VALUE_ARGS_TEXT text
#define ORU_VALUE_ARGS_BYTES bytes, n
#define ORU_VALUE_ARGS_HELD object

// What a getter returns, and the output between its object and its status.
#define ORU_VALUE_RESULT_NUMBER(Type) Type
#define ORU_VALUE_RESULT_TEXT(Type) const char *
#define ORU_VALUE_RESULT_BYTES(Type) const uint8_t *
#define ORU_VALUE_RESULT_HELD(Type) Type *
#define ORU_VALUE_LEN_PARAM_NUMBER
#define ORU_VALUE_LEN_PARAM_TEXT
#define ORU_VALUE_LEN_PARAM_BYTES int32_t *len,
#define ORU_VALUE_LEN_PARAM_HELD
#define ORU_VALUE_LEN_ARG_NUMBER
#define ORU_VALUE_LEN_ARG_TEXT
#define ORU_VALUE_LEN_ARG_BYTES len,
#define ORU_VALUE_LEN_ARG_HELD

#endif
