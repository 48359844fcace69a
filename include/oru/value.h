/*
 * ORUDoValue: the typed scalar or container value of the model. Every property, list element and
 * table cell is one. The payload never changes once a value is built; what can change is the name
 * of its derived type and its flag byte, and that only before the value is shared among threads.
 *
 * Operations that take a value assert "val" on null unless they say otherwise. Operations with a
 * status output `errp` assert "errp" on null, and set the status to 0 on success, unless they say
 * otherwise.
 */
#ifndef ORU_VALUE_H
#define ORU_VALUE_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Types and constants ---- */

/* Type codes. Numbers that are not here are no types. */
enum {
    ORU_DO_TYPE_UNKNOWN = -3, /* of a text that names no type; also: not resolved in metadata */
    ORU_DO_TYPE_DEFAULT = -2, /* stands for the attribute's default */
    ORU_DO_TYPE_NULL = -1,
    ORU_DO_TYPE_UNSIGNED_BYTE = 0,
    ORU_DO_TYPE_BYTE = 1,
    ORU_DO_TYPE_UNSIGNED_SHORT = 2,
    ORU_DO_TYPE_SHORT = 3,
    ORU_DO_TYPE_UNSIGNED_INT = 4,
    ORU_DO_TYPE_INT = 5,
    ORU_DO_TYPE_UNSIGNED_LONG = 6, /* 64 bits, as the next */
    ORU_DO_TYPE_LONG = 7,
    ORU_DO_TYPE_STRING = 8,
    ORU_DO_TYPE_BOOLEAN = 9, /* a 32-bit word, any non-zero word is true */
    ORU_DO_TYPE_FLOAT = 10,
    ORU_DO_TYPE_DOUBLE = 11,
    ORU_DO_TYPE_DATETIME = 12,
    ORU_DO_TYPE_DURATION = 13,
    ORU_DO_TYPE_ANY_URI = 14,
    ORU_DO_TYPE_HEX_BINARY = 15,
    ORU_DO_TYPE_IP_ADDRESS = 101, /* 4 or 16 bytes, and one more with the prefix length */
    ORU_DO_TYPE_NSAP_ADDRESS = 102,
    ORU_DO_TYPE_ENUMERATION = 103,
    ORU_DO_TYPE_CHOICE = 104, /* an ORUDoNvlist, as the next */
    ORU_DO_TYPE_SEQUENCE = 105,
    ORU_DO_TYPE_ARRAY = 106, /* an ORUDoVlist */
    ORU_DO_TYPE_MR_URI = 107,
    ORU_DO_TYPE_COLL_URI = 108,
    ORU_DO_TYPE_BITS = 109, /* an ORUDoVlist of enumerations */
};

/* Bits of the flag byte. The others are free for callers. */
#define ORU_DO_VALUE_FLAG_DEFAULT 0x1u /* a default, which nobody set */

/*
 * Bits of the options word of the printing operations, of which 16 bits are read. Hiding prints
 * "<removed>" for strings whose derived type has a name that begins with "PasswordString" or
 * "EncryptedString". Plain XML leaves the attributes of elements out.
 */
#define ORU_DO_OPT_HIDE_SECRETS 0x1u
#define ORU_DO_OPT_PLAIN_XML 0x2u

/*
 * Operations that replace the built-in ones. The record is the caller's and lives as long as it is
 * installed. A null operation leaves the built-in one in force.
 */
struct ORUDoValueFormatter {
    intptr_t context; /* handed to the three */
    int32_t (*to_strbuf)(intptr_t context, ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf);
    ORUDoValue *(*parse)(intptr_t context, const char *text, int32_t type, int32_t *errp);
    int32_t (*to_xml)(intptr_t context, const char *prefix, const char *name, ORUDoValue *val,
                      ORUDoStrbuf *strbuf, uint32_t opts);
};

/* Prints hexBinary values with the derived types "MACAddress" and "PhysAddress" in lower case and
   without indent; parsing and XML are the built-in ones. */
extern ORU_API ORUDoValueFormatter lower_case_mac_addr_formatter;

/* How many codes `type_map` covers. */
#define ORU_DO_TYPE_MAP_LEN 110

/*
 * The texts by which metadata, XML and JSON name the types ("unsignedByte", "int", "ipAddress"),
 * indexed by code 0 to 109; null at the codes that are no types.
 */
extern ORU_API const char *type_map[ORU_DO_TYPE_MAP_LEN];

/* ---- Type codes ---- */

/* The code of a type text, by exact compare; -3 for any other text, "null", "__default__" and
   "__unknown__" among them. */
ORU_API int32_t oru_do_get_typecode_by_typestr(const char *text);

/* The text of a code: "null" for -1, "__default__" for -2, null for 16 to 100, "__unknown__" for
   any other code without a type. */
ORU_API const char *oru_do_get_typestr_by_typecode(int32_t type);

/*
 * Non-zero for codes of a group. numeric: 0 to 7 and 9 to 13, so boolean too and no string;
 * signed_int_num: 1, 3, 5, 7, 12, 13; unsigned_int_num: 0, 2, 4, 6; float_num: 10, 11; string: 8,
 * 103, 107, 108; key_string: 8, 15, 101, 102; complex: 104, 105; array: 106; uri: 14, 107, 108;
 * bits: 109.
 */
ORU_API int32_t oru_do_is_numeric_type(int32_t type);
ORU_API int32_t oru_do_is_signed_int_num_type(int32_t type);
ORU_API int32_t oru_do_is_unsigned_int_num_type(int32_t type);
ORU_API int32_t oru_do_is_float_num_type(int32_t type);
ORU_API int32_t oru_do_is_string_type(int32_t type);
ORU_API int32_t oru_do_is_key_string_type(int32_t type);
ORU_API int32_t oru_do_is_complex_type(int32_t type);
ORU_API int32_t oru_do_is_array_type(int32_t type);
ORU_API int32_t oru_do_is_uri_type(int32_t type);
ORU_API int32_t oru_do_is_bits_type(int32_t type);

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. */

/* Values without a payload. */
ORU_API ORUDoValue *oru_do_value_new_null(void);
ORU_API ORUDoValue *oru_do_value_new_default(void);

/* Numbers. */
ORU_API ORUDoValue *oru_do_value_new_unsigned_byte(uint8_t n);
ORU_API ORUDoValue *oru_do_value_new_byte(int8_t n);
ORU_API ORUDoValue *oru_do_value_new_unsigned_short(uint16_t n);
ORU_API ORUDoValue *oru_do_value_new_short(int16_t n);
ORU_API ORUDoValue *oru_do_value_new_unsigned_int(uint32_t n);
ORU_API ORUDoValue *oru_do_value_new_int(int32_t n);
ORU_API ORUDoValue *oru_do_value_new_unsigned_long(uint64_t n);
ORU_API ORUDoValue *oru_do_value_new_long(int64_t n);
ORU_API ORUDoValue *oru_do_value_new_float(float n);
ORU_API ORUDoValue *oru_do_value_new_double(double n);
ORU_API ORUDoValue *oru_do_value_new_datetime(int64_t n);
ORU_API ORUDoValue *oru_do_value_new_duration(int64_t n);

/* A boolean; the word is kept as it is given. */
ORU_API ORUDoValue *oru_do_value_new_boolean(int32_t n);

/*
 * Texts, copied. A null text gives a null value. `_l` takes `n` bytes; null for a negative `n`.
 * When only the storage cannot be had, `oru_do_value_new_string` gives a string value whose text is
 * null; the other three give null.
 */
ORU_API ORUDoValue *oru_do_value_new_string(const char *text);
ORU_API ORUDoValue *oru_do_value_new_string_l(const char *text, int32_t n);
ORU_API ORUDoValue *oru_do_value_new_enumeration(const char *text);
ORU_API ORUDoValue *oru_do_value_new_enumeration_l(const char *text, int32_t n);

/* `n` bytes, copied. Null bytes or a negative `n` give a null value. An address has 4 or 16 bytes,
   and one more when it carries a prefix length; nothing checks that. */
ORU_API ORUDoValue *oru_do_value_new_hex_binary(const void *bytes, int32_t n);
ORU_API ORUDoValue *oru_do_value_new_ip_address(const void *bytes, int32_t n);
ORU_API ORUDoValue *oru_do_value_new_nsap_address(const void *bytes, int32_t n);

/* Held objects: the value counts a reference of its own, the caller keeps his. Null gives a null
   value. The list of a bits value has enumerations; nothing checks that. */
ORU_API ORUDoValue *oru_do_value_new_any_uri(ORUDoUri *object);
ORU_API ORUDoValue *oru_do_value_new_choice(ORUDoNvlist *object);
ORU_API ORUDoValue *oru_do_value_new_sequence(ORUDoNvlist *object);
ORU_API ORUDoValue *oru_do_value_new_array(ORUDoVlist *object);
ORU_API ORUDoValue *oru_do_value_new_mr_uri(ORUDoUri *object);
ORU_API ORUDoValue *oru_do_value_new_coll_uri(ORUDoUri *object);
ORU_API ORUDoValue *oru_do_value_new_bits(ORUDoVlist *object);

/* ---- Making from text and numbers ----
 * A null result with the status still 0 means that memory ran out. The status is written only on
 * failure, but for the last operation: the caller clears it first. */

/*
 * A value of the type from its text. 101 for a text that has not the form of the type; 110 for a
 * type that cannot be parsed, and for a boolean that is neither "true" nor "false"; 10000 for the
 * text of an address with nothing but slashes in it and for a prefix length above 255; 10002 when
 * memory runs out on the way. Numbers may have leading blanks and a sign, nothing behind them, and
 * are cut to the width of their type: "300" as unsignedByte is 44. A status that was not 0 before
 * stops integers with a null result; floats and doubles come out whatever the status says. Bytes
 * are pairs of hexadecimal digits, bits are words between blanks. Addresses may carry "/" and a
 * prefix length. `text` and `errp` are asserted, unless a formatter parses.
 */
ORU_API ORUDoValue *oru_do_value_new_from_string(const char *text, int32_t type, int32_t *errp);
ORU_API ORUDoValue *oru_do_value_new_from_string_fmt(const char *text, int32_t type,
                                                     const ORUDoValueFormatter *formatter,
                                                     int32_t *errp);

/*
 * A value of the type from a number, cut to its width; 110 for a type that is not numeric. A number
 * that does not fit becomes the smallest integer of its width before the cut. A boolean is 1 when
 * `x` is no further from 0 than 1e-5, or is no number: the reverse of what one would expect.
 */
ORU_API ORUDoValue *oru_do_value_new_from_number(int32_t type, int32_t *errp, double x);

/* A value of the type from the text of a string value; 101 for a value of another type. Null with
   the status 0 for a string without a text. */
ORU_API ORUDoValue *oru_do_value_new_from_conversion(ORUDoValue *val, int32_t type, int32_t *errp);

/*
 * A value of the same type with a payload of its own, with the flag byte and without the name of a
 * derived type, which changes how some values print. Texts are measured again: what stands behind a
 * zero is lost. Null on any failure.
 */
ORU_API ORUDoValue *oru_do_value_clone(ORUDoValue *val);

/* The family of an address as an enumeration: "ipv6" for a value of type 101 with 16 or 17 bytes,
   "ipv4" with 4 or 5; null for anything else. */
ORU_API ORUDoValue *oru_new_ip_address_type(ORUDoValue *val);

/* ---- Reading ---- */

/* The type code. */
ORU_API int32_t oru_do_value_get_type(ORUDoValue *val);

/*
 * The payload of a value of just that type: nothing is widened. With any other type the status is
 * 101 and the result 0 or null. What pointers point to is borrowed. `len` may be null.
 */
ORU_API uint8_t oru_do_value_get_unsigned_byte(ORUDoValue *val, int32_t *errp);
ORU_API int8_t oru_do_value_get_byte(ORUDoValue *val, int32_t *errp);
ORU_API uint16_t oru_do_value_get_unsigned_short(ORUDoValue *val, int32_t *errp);
ORU_API int16_t oru_do_value_get_short(ORUDoValue *val, int32_t *errp);
ORU_API uint32_t oru_do_value_get_unsigned_int(ORUDoValue *val, int32_t *errp);
ORU_API int32_t oru_do_value_get_int(ORUDoValue *val, int32_t *errp);
ORU_API uint64_t oru_do_value_get_unsigned_long(ORUDoValue *val, int32_t *errp);
ORU_API int64_t oru_do_value_get_long(ORUDoValue *val, int32_t *errp);
ORU_API const char *oru_do_value_get_string(ORUDoValue *val, int32_t *errp);
ORU_API int32_t oru_do_value_get_boolean(ORUDoValue *val, int32_t *errp);
ORU_API float oru_do_value_get_float(ORUDoValue *val, int32_t *errp);
ORU_API double oru_do_value_get_double(ORUDoValue *val, int32_t *errp);
ORU_API int64_t oru_do_value_get_datetime(ORUDoValue *val, int32_t *errp);
ORU_API int64_t oru_do_value_get_duration(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoUri *oru_do_value_get_any_uri(ORUDoValue *val, int32_t *errp);
ORU_API const uint8_t *oru_do_value_get_hex_binary(ORUDoValue *val, int32_t *len, int32_t *errp);
ORU_API const uint8_t *oru_do_value_get_ip_address(ORUDoValue *val, int32_t *len, int32_t *errp);
ORU_API const uint8_t *oru_do_value_get_nsap_address(ORUDoValue *val, int32_t *len, int32_t *errp);
ORU_API const char *oru_do_value_get_enumeration(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoNvlist *oru_do_value_get_choice(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoNvlist *oru_do_value_get_sequence(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoVlist *oru_do_value_get_array(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoUri *oru_do_value_get_mr_uri(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoUri *oru_do_value_get_coll_uri(ORUDoValue *val, int32_t *errp);
ORU_API ORUDoVlist *oru_do_value_get_bits(ORUDoValue *val, int32_t *errp);

/* The length in bytes of a string, hexBinary, ipAddress or nsapAddress; -1 for all others, an
   enumeration among them. */
ORU_API int32_t oru_do_value_get_length(ORUDoValue *val);

/* The URI of any of the three URI types, borrowed; null for all others and for a null value. */
ORU_API ORUDoUri *oru_do_value_get_uri(ORUDoValue *val);

/* Non-zero for a value of that type. Only the last asserts "val"; the others are not to be given
   null. A default value is not null. */
ORU_API int32_t oru_do_value_is_null(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_string(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_array(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_bits(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_enumeration(ORUDoValue *val);

/* Non-zero for a value whose type code is in the group: integer has 0 to 7, signed_int 1, 3, 5, 7,
   12, 13, unsigned_int 0, 2, 4, 6, float 10, 11. */
ORU_API int32_t oru_do_value_is_integer_number(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_signed_int_number(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_unsigned_int_number(ORUDoValue *val);
ORU_API int32_t oru_do_value_is_float_number(ORUDoValue *val);

/* ---- Numbers, widened ----
 * A type that is not accepted gives 101 and 0. */

/* Any integer, dateTime or duration; an unsignedLong keeps its bits. The status is written only on
   refusal, so the caller clears it first. */
ORU_API int64_t oru_do_value_to_long(ORUDoValue *val, int32_t *errp);

/* The signed integer types, dateTime and duration. */
ORU_API int64_t oru_do_value_to_int64(ORUDoValue *val, int32_t *errp);

/* The unsigned integer types. */
ORU_API uint64_t oru_do_value_to_u_int64(ORUDoValue *val, int32_t *errp);

/* float and double; integers are refused. */
ORU_API double oru_do_value_to_double(ORUDoValue *val, int32_t *errp);

/* ---- Comparing ---- */

/*
 * Non-zero for values of one type with equal payloads. Numbers of different types are never equal;
 * floats and doubles are equal when they differ by no more than 1e-5; values without a payload are
 * equal to their kind. Derived types and flags play no part. Asserts "val1" and "val2".
 */
ORU_API int32_t oru_do_value_equals(ORUDoValue *val1, ORUDoValue *val2);

/* Non-zero when the value's text form equals `text`; asserts "val1" and "val2". */
ORU_API int32_t oru_do_value_equals_str(ORUDoValue *val1, const char *text);

/*
 * -1, 0 or 1, and -2 for values that cannot be compared, which callers test first. Integers of all
 * widths and signs compare with each other, dateTime with duration, floats with doubles (a float
 * and a double are never the same). Texts and bytes go by their length first. URIs have no order
 * that means anything: only the same held object is known to give 0. `nostrict` also compares a
 * string with the other types of text and bytes. Assert "val1" and "val2".
 */
ORU_API int32_t oru_do_value_compare(ORUDoValue *val1, ORUDoValue *val2);
ORU_API int32_t oru_do_value_compare_nostrict(ORUDoValue *val1, ORUDoValue *val2);

/* ---- Printing ----
 * The text form indents with `tabs` tabs. Results are 0, 10002 when the buffer failed, or 10000 for
 * a date that cannot be printed and a URI value without a URI. `strbuf` is asserted. */

/* Installs a formatter for all operations that are not given one; null takes it away. To be called
   before other threads print or parse. */
ORU_API void oru_do_value_set_default_formatter(const ORUDoValueFormatter *formatter);

/*
 * The text form. A null value prints nothing. `_fmt` takes a formatter of its own, null for none;
 * `_with_defaults` adds " (default)" behind a value with the default flag; `_opt` prints a secret
 * that is to be hidden without tabs.
 */
ORU_API int32_t oru_do_value_to_strbuf(ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_value_to_strbuf_fmt(ORUDoValue *val, int32_t tabs,
                                           const ORUDoValueFormatter *formatter,
                                           ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_value_to_strbuf_with_defaults(ORUDoValue *val, int32_t tabs,
                                                     ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_value_to_strbuf_opt(ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf,
                                           uint32_t opts);

/*
 * The XML form: an element `name`, "value" for null, with the attributes `type`, `typedef` and, for
 * a null value, `xsi:null`, whose namespace the caller declares. `prefix` is written before each
 * element's name, as a rule a namespace with its colon; it may be null.
 */
ORU_API int32_t oru_do_value_to_xml(const char *prefix, const char *name, ORUDoValue *val,
                                    ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_value_to_xml_opt(const char *prefix, const char *name, ORUDoValue *val,
                                        ORUDoStrbuf *strbuf, uint32_t opts);
ORU_API int32_t oru_do_value_to_xml_fmt(const char *prefix, const char *name, ORUDoValue *val,
                                        const ORUDoValueFormatter *formatter, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_value_to_xml_fmt_opt(const char *prefix, const char *name, ORUDoValue *val,
                                            const ORUDoValueFormatter *formatter,
                                            ORUDoStrbuf *strbuf, uint32_t opts);

/* ---- Derived types and flags ---- */

/* The name of the derived type that the value was made for, borrowed; null when it has none. */
ORU_API const char *oru_do_value_get_typedef_name(ORUDoValue *val);

/* Replaces that name by a copy of `text`, which is not null. Without memory the value has none. */
ORU_API void oru_do_value_set_typedef_name(ORUDoValue *val, const char *text);

/* The same with `n` bytes of `text`; a null text clears. */
ORU_API void oru_do_value_set_typedef_name_l(ORUDoValue *val, const char *text, int32_t n);

/* The flag byte as a whole. */
ORU_API uint8_t oru_do_value_get_flags(ORUDoValue *val);
ORU_API void oru_do_value_set_flags(ORUDoValue *val, uint8_t flags);

/* The default flag in it. A null value is not to be asked. */
ORU_API int32_t oru_do_value_is_default(ORUDoValue *val);

/* Sets the default flag. */
ORU_API void oru_do_value_set_default_flag(ORUDoValue *val);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoValue *oru_do_value_ref(ORUDoValue *val);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_value_deref(ORUDoValue *val);

/* Size the pools of the records, of payloads below 32 bytes and of payloads below 128 bytes. */
ORU_API void *init_chunk_poolheap_oru_do_value(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_value_sml_misc(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_value_misc(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
