/*
 * ORUDoStrbuf: the growable text on which all printing is built. It never fails loudly: a growth
 * that gets no memory latches the buffer in a failed state in which appends do nothing, so a chain
 * of appends needs one look at its end, `oru_do_strbuf_get_err`. The text up to the failure stays.
 *
 * A buffer belongs to one thread at a time. Every operation asserts "strbuf" on a null buffer
 * unless it says otherwise.
 */
#ifndef ORU_STRBUF_H
#define ORU_STRBUF_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/*
 * A new empty buffer with one reference, or null when its record cannot be had. A record whose
 * storage cannot be had comes back all the same, born in the failed state.
 */
ORU_API ORUDoStrbuf *oru_do_strbuf_new(void);

/* ---- Reading ---- */

/* The text, borrowed; in the failed state what was there before the failure, null for a buffer
   that was born without storage. */
ORU_API const char *oru_do_strbuf_to_string(ORUDoStrbuf *strbuf);

/*
 * A copy of the text in a block of its own, which the caller frees with `ph_free_named`. It is
 * stored through `strptr` (asserted) and returned. Null, and `strptr` untouched, when memory runs
 * out.
 */
ORU_API char *oru_do_strbuf_to_string_ptr(ORUDoStrbuf *strbuf, char **strptr);

/* The length of the text in bytes. */
ORU_API int32_t oru_do_strbuf_get_len(ORUDoStrbuf *strbuf);

/* 0, or 10002 for a buffer in the failed state and for null, which is accepted here. */
ORU_API int32_t oru_do_strbuf_get_err(ORUDoStrbuf *strbuf);

/* Writes the text to a stream. The result is that of `fputs`. */
ORU_API int32_t oru_do_strbuf_print_fp(ORUDoStrbuf *strbuf, FILE *stream);

/* ---- Changing ---- */

/* Empties the text and keeps the capacity. Ends a failed state, when there is storage. */
ORU_API void oru_do_strbuf_clear(ORUDoStrbuf *strbuf);

/*
 * Removes a known ending; the text must be at least as long as `footer`. The result is the new
 * length, or -1 when the text ends otherwise or there is no storage.
 */
ORU_API int32_t oru_do_strbuf_remove_ftr(ORUDoStrbuf *strbuf, const char *footer);

/* ---- Appending ----
 * The result is the new length in bytes unless told otherwise. */

/* A zero-terminated text; asserts "text". -1 for an empty text, which changes nothing, and in the failed
   state. */
ORU_API int32_t oru_do_strbuf_add_string(ORUDoStrbuf *strbuf, const char *text);

/*
 * `n` bytes of `text`. The copy stops early at a zero byte, the length grows by `n` either way.
 * -1 for an `n` below 1 and in the failed state.
 */
ORU_API int32_t oru_do_strbuf_add_string_l(ORUDoStrbuf *strbuf, const char *text, int32_t n);

/* Those of the `n` bytes that do not occur in the zero-terminated set `excl`; a null set excludes
   nothing. The result is the length in the failed state and for an `n` below 1 too. */
ORU_API int32_t oru_do_strbuf_add_string_l_excl(ORUDoStrbuf *strbuf, const char *text, int32_t n,
                                                const char *excl);

/* The low byte of `c`. A zero byte counts in the length though it ends the text for readers. -1 in
   the failed state. */
ORU_API int32_t oru_do_strbuf_add_char(ORUDoStrbuf *strbuf, int32_t c);

/* An identifier in the style of a column: "_", then `text` with each "." as "_". A null text adds
   nothing. */
ORU_API int32_t oru_do_strbuf_add_string_encode_for_sql(ORUDoStrbuf *strbuf, const char *text);

/* `text` with the five characters that XML reserves as entities. Null and empty add nothing. */
ORU_API int32_t oru_do_strbuf_add_string_encode_for_xml(ORUDoStrbuf *strbuf, const char *text);

/* A number in decimal. -1 in the failed state. */
ORU_API int32_t oru_do_strbuf_add_long(ORUDoStrbuf *strbuf, int64_t n);
ORU_API int32_t oru_do_strbuf_add_unsigned_long(ORUDoStrbuf *strbuf, uint64_t n);

/* A number by "%lg", six significant digits. -1 in the failed state. */
ORU_API int32_t oru_do_strbuf_add_double(ORUDoStrbuf *strbuf, double x);

/* `n` bytes as upper-case hexadecimal, two digits a byte, in one run. An `n` below 1 adds
   nothing. */
ORU_API int32_t oru_do_strbuf_add_hexbuf(ORUDoStrbuf *strbuf, const void *bytes, int32_t n);

/*
 * The same with the text `sep` before each byte whose index is a multiple of `group`, but the
 * first. No separator with a null `sep` or a `group` below 1. `_l` prints in lower case.
 */
ORU_API int32_t oru_do_strbuf_add_hexbuf_sep(ORUDoStrbuf *strbuf, const void *bytes, int32_t n,
                                             const char *sep, int32_t group);
ORU_API int32_t oru_do_strbuf_add_hexbuf_sep_l(ORUDoStrbuf *strbuf, const void *bytes, int32_t n,
                                               const char *sep, int32_t group);

/* The compact JSON form of a value, which is required ("val"). The result is 0. */
ORU_API int32_t oru_do_strbuf_add_value(ORUDoStrbuf *strbuf, ORUDoValue *val);

/* `n` tab characters, none for an `n` below 1. */
ORU_API int32_t oru_do_strbuf_add_tab(ORUDoStrbuf *strbuf, int32_t n);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoStrbuf *oru_do_strbuf_ref(ORUDoStrbuf *strbuf);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_strbuf_deref(ORUDoStrbuf *strbuf);

/* Size the pools of the records and of their first storage of 256 bytes. */
ORU_API void *init_chunk_poolheap_oru_do_strbuf(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_strbuf_misc(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
