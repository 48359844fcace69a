/*
 * ORUDoUri: the address of a managed resource, or of a collection of them. It is one text, kept
 * exactly as its maker wrote it, and it is cut into segments, reference names, keys and a query
 * part only when somebody first asks. A text that breaks the grammar makes an object like any
 * other; it then reads as a URI without segments.
 *
 *     uri      [ "//" | "/" ] segment { "/" segment } [ "/" ] [ "?" query ]
 *     segment  name { ";" key "=" value }
 *
 * A URI takes no lock, and its first inspection writes into it: one that threads share is inspected
 * before it is shared. Every operation asserts a null argument under the name it has here, unless
 * it says otherwise.
 */
#ifndef ORU_URI_H
#define ORU_URI_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ----
 * The result has one reference, which the caller releases with `oru_do_uri_deref`. It is null when
 * memory runs out. */

/* A URI of a zero-terminated text, or of its first `len` characters; a `len` below 1 makes an empty
   text. Nothing is parsed. */
ORU_API ORUDoUri *oru_do_uri_new(const char *str);
ORU_API ORUDoUri *oru_do_uri_new_l(const char *str, int32_t len);

/* ---- Reading ---- */

/* The text, borrowed. */
ORU_API const char *oru_do_uri_get_uri_str(ORUDoUri *uri);

/* ---- Comparing ---- */

/* 1 when the two texts are the same byte for byte, else 0. Neither URI is parsed. */
ORU_API int32_t oru_do_uri_equals(ORUDoUri *uri1, ORUDoUri *uri2);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoUri *oru_do_uri_ref(ORUDoUri *uri);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_uri_deref(ORUDoUri *uri);

/* Size the pools of the records, and of texts up to 63 and up to 127 characters. */
ORU_API void *init_chunk_poolheap_oru_do_uri(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_uri_sml_misc(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_uri_misc(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
