/*
 * ORUDoUri: the address of a managed resource, or of a collection of them. It is one text, kept
 * exactly as its maker wrote it, and it is cut into segments, reference names, keys and a query
 * part only when somebody first asks. A text that breaks the grammar makes an object like any
 * other; it then reads as a URI without segments.
 *
 *     uri      [ "//" | "/" ] segment { "/" segment } [ "/" ] [ "?" query ]
 *     segment  name { ";" key "=" value }
 *
 * A URI has at most 10 segments, and a name at most 63 characters: a text with more of either that
 * was not tried by `oru_do_uri_validate_new` ends the process when it is first looked at. In an
 * absolute URI, one that begins with "//", the first segment is the location.
 *
 * A URI takes no lock, and its first inspection writes into it: one that threads share is inspected
 * before it is shared. Every operation asserts a null argument under the name it has here, unless
 * it says otherwise. Results are borrowed from the URI unless told.
 */
#ifndef ORU_URI_H
#define ORU_URI_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* How many segments a URI can have. */
#define URI_MAX_SEGMENTS 10

/* Kinds of collections, by the form of the text. */
enum {
    ORU_URI_NO_COLL = 0,              /* no question mark, or nothing behind it */
    ORU_URI_COLL_PLAIN = 1,           /* base?ref, and every text below three characters */
    ORU_URI_COLL_SYSTEM_TYPE = 2,     /* //?:type, all of a type in the system */
    ORU_URI_COLL_REF_TYPE = 3,        /* base?ref:type */
    ORU_URI_COLL_TYPE = 4,            /* /base?:type */
    ORU_URI_COLL_INFIX_TYPE = 5,      /* base?:type */
    ORU_URI_COLL_STAR_TYPE = 6,       /* /base*?:type */
    ORU_URI_COLL_INFIX_STAR_TYPE = 7, /* base*?:type */
};

/* ---- Making ----
 * The result has one reference, which the caller releases with `oru_do_uri_deref`. It is null when
 * memory runs out. More makers stand in oru/uri_derive.h. */

/* A URI of a zero-terminated text, or of its first `len` characters; a `len` below 1 makes an empty
   text. Nothing is parsed. */
ORU_API ORUDoUri *oru_do_uri_new(const char *str);
ORU_API ORUDoUri *oru_do_uri_new_l(const char *str, int32_t len);

/* The same of a formatted text. Traces "cant alloc buffer" or "Failed to alloc buffer" when the
   room to format in cannot be had, and gives null. */
ORU_API ORUDoUri *oru_do_uri_new_fmt(const char *format, ...) ORU_PRINTF(1, 2);

/* A URI that was parsed, or null, with the reason traced, when the text breaks the grammar. No
   text ends the process here. */
ORU_API ORUDoUri *oru_do_uri_validate_new(const char *str);

/* A URI that was parsed with its key values left in their escaped form, or null when the text
   breaks the grammar. Too many segments and too long a name end the process. */
ORU_API ORUDoUri *oru_do_uri_new_parse_unescape_key(const char *str);

/* ---- Reading the text ----
 * These do not parse. */

/* The text. */
ORU_API const char *oru_do_uri_get_uri_str(ORUDoUri *uri);

/* 1 for the exact text "//". A null text gives 0. */
ORU_API int32_t oru_do_uri_is_root(ORUDoUri *uri);
ORU_API int32_t oru_do_uri_str_is_root(const char *uri_str);

/* 1 for a text that begins with "//". A null text gives 0. */
ORU_API int32_t oru_do_uri_is_absolute(ORUDoUri *uri);
ORU_API int32_t oru_do_uri_str_is_absolute(const char *uri_str);

/* 1 for an empty text and for one that does not begin with "/". A null text gives 0. */
ORU_API int32_t oru_do_uri_str_is_infix(const char *uri_str);

/* 1 for a URI that was parsed with a query part, and for any other with a "?" in its text. */
ORU_API int32_t oru_do_uri_is_coll_uri(ORUDoUri *uri);

/* The kind of collection, ORU_URI_... above. "?:type" without a base is none and is traced. */
ORU_API int32_t oru_do_uri_get_coll_type(ORUDoUri *coll_uri);

/* The text behind the location: the place of the third slash in an absolute text of four
   characters and more, null when there is none; any other text is its own. */
ORU_API const char *oru_do_uri_get_relative_str(const char *uri_str);

/*
 * The identifier in "//locations;locationId=<id>", into `len` bytes at `buf`, which are cleared
 * first. 10000 for a text that begins otherwise, and for an identifier that leaves no room for a
 * zero: the buffer is full then, and not terminated.
 */
ORU_API int32_t oru_do_uri_get_location_str(ORUDoUri *uri, char *buf, int32_t len);

/* 1 when the text is absolute and what stands behind its first "=", to the next slash, is
   `locationId`. */
ORU_API int32_t oru_do_uri_is_at(ORUDoUri *uri, const char *locationId);

/* ---- Reading the segments ----
 * The first of these parses the text. One that breaks the grammar, which is traced once, has no
 * segments, no keys, no query part and no parent. */

/* What stands behind the "?" of a collection, or null. */
ORU_API const char *oru_do_uri_get_query_part(ORUDoUri *uri);

/* 1 when the query part begins with ":". */
ORU_API int32_t oru_do_uri_has_type_query_part(ORUDoUri *uri);

/* The parent. It is made at the first call and lives as long as the URI. A parent so made counts
   as parsed, and its own parent is the URI's text with one segment less in its table: who climbs
   further derives from the text. Null when memory runs out too. */
ORU_API ORUDoUri *oru_do_uri_get_parent_uri(ORUDoUri *uri);

/* How many segments there are. */
ORU_API int32_t oru_do_uri_get_segment_count(ORUDoUri *uri);

/* The segment at `index` from 0, or the last one; null when there is none. */
ORU_API ORUDoUriSegment *oru_do_uri_get_segment(ORUDoUri *uri, int32_t index);
ORU_API ORUDoUriSegment *oru_do_uri_get_segment_last(ORUDoUri *uri);

/* The reference name. */
ORU_API const char *oru_do_uri_segment_get_name(ORUDoUriSegment *segment);

/* The keys, in text order, or null for a segment without. After a parse their values are strings
   whatever they look like. */
ORU_API ORUDoNvlist *oru_do_uri_segment_get_keys(ORUDoUriSegment *segment);

/* The segment as it stands in the text of its URI, as a text that the caller frees with
   `oru_do_uri_str_free`. Null when memory runs out, which is traced, and for a segment whose
   offsets wrapped. */
ORU_API char *oru_do_uri_segment_get_str_copy(ORUDoUri *uri, ORUDoUriSegment *segment);

/*
 * A new value of a type, read from the text of a key: the segment's at `index`. `rc` is the code
 * of the conversion, or 10000 when there is no such key; the result is null then. The caller
 * releases it.
 */
ORU_API ORUDoValue *oru_do_uri_segment_get_key_w_type(ORUDoUriSegment *segment, int32_t index,
                                                      int32_t type, int32_t *rc);

/* The keys of the last segment, or null; the value of the one at `index`, or null. */
ORU_API ORUDoNvlist *oru_do_uri_get_keys(ORUDoUri *uri);
ORU_API ORUDoValue *oru_do_uri_get_key(ORUDoUri *uri, int32_t index);

/* A new value of a type, read from a key of the last segment: the one at `index`, or the first of
   that name. `rc` as above. The caller releases the value. */
ORU_API ORUDoValue *oru_do_uri_get_key_w_type(ORUDoUri *uri, int32_t index, int32_t type,
                                              int32_t *rc);
ORU_API ORUDoValue *oru_do_uri_get_key_by_name_w_type(ORUDoUri *uri, const char *name,
                                                      int32_t type, int32_t *rc);

/* ---- Comparing ----
 * Nothing is parsed: texts that write one address in two ways differ. */

/* 1 when the two texts are the same byte for byte, else 0. */
ORU_API int32_t oru_do_uri_equals(ORUDoUri *uri1, ORUDoUri *uri2);

/* The same behind the locations, as `oru_do_uri_get_relative_str` cuts them; 0 when either has
   nothing there. */
ORU_API int32_t oru_do_uri_relative_equals(ORUDoUri *uri1, ORUDoUri *uri2);

/* ---- Escaping ----
 * A key value stands in a URI with each of the twenty characters
 *     blank ! # $ % & ' ( ) * + , / : ; = ? @ [ ]
 * as "%" and two upper-case hexadecimal digits. Texts are appended to `strbuf`; the result is its
 * error state, 0 or 10002. A `len` below 1 writes nothing. */

/* A text, or `len` characters of it, in escaped form. */
ORU_API int32_t oru_do_uri_escape_str(const char *str, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_uri_escape_str_l(const char *str, int32_t len, ORUDoStrbuf *strbuf);

/* The way back. A "%" and two characters that are none of the twenty escapes, lower-case digits
   among them, are left out; a "%" with less than two characters behind it stays. */
ORU_API int32_t oru_do_uri_unescape_str(const char *str, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_uri_unescape_str_l(const char *str, int32_t len, ORUDoStrbuf *strbuf);

/*
 * A value as the text of a key, in escaped form: numbers, times and durations in decimal, floating
 * point by "%lg", strings, enumerations and URIs by their text, booleans as "true" and "false",
 * bytes in upper-case hexadecimal, lists as they print, and "null", "__default__" or "__unknown__".
 * A null value writes nothing.
 */
ORU_API int32_t oru_do_uri_value_to_keystr(ORUDoValue *value, ORUDoStrbuf *strbuf);

/* ---- Printing ---- */

/* `tabs` tab characters and the text. A null URI adds nothing. Gives 0. */
ORU_API int32_t oru_do_uri_to_strbuf(ORUDoUri *uri, int32_t tabs, ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoUri *oru_do_uri_ref(ORUDoUri *uri);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_uri_deref(ORUDoUri *uri);

/* Frees a text that an operation made for its caller; null is ignored. */
ORU_API void oru_do_uri_str_free(char *str);

/* Size the pools of the records, and of texts up to 63 and up to 127 characters. */
ORU_API void *init_chunk_poolheap_oru_do_uri(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_uri_sml_misc(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_uri_misc(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
