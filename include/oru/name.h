/*
 * ORUDoName: the shared text that names attributes, resources and packages. A name is plain, or
 * qualified: "package:version/resource.attribute", with the version left out as a rule.
 *
 * A name never changes once it is built, so it may be shared among threads. Equality is a plain
 * compare of bytes; two equal names may be two records. Every operation asserts "name" on a null
 * name unless it says otherwise.
 */
#ifndef ORU_NAME_H
#define ORU_NAME_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Well-known names ----
 * Names that begin with an underscore belong to the attributes that the model itself adds. */

/* "_uri", "_coll_uri", "_mr", "_snmpIdx", "_sequenceNumber", "_pendingAttrs" and "_timestamp". */
extern ORU_API char *ORU_DO_NAME_URI;
extern ORU_API char *ORU_DO_NAME_COLL_URI;
extern ORU_API char *ORU_DO_NAME_MR;
extern ORU_API char *ORU_DO_NAME_SNMP_IDX;
extern ORU_API char *ORU_DO_NAME_SEQ_NB;
extern ORU_API char *ORU_DO_NAME_PENDING_ATTRS;
extern ORU_API char *ORU_DO_NAME_TIMESTAMP;

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. */

/* A name with a copy of the zero-terminated `text`. Asserts "text". */
ORU_API ORUDoName *oru_do_name_new(const char *text);

/* A name with a copy of `length` bytes. Null for a null text and for a negative length. */
ORU_API ORUDoName *oru_do_name_new_l(const char *text, int32_t length);

/*
 * The qualified form: "package/name", or "package:version/name" when `version` is not null. With a
 * null `package`, and for a name that holds a "/" already, `name` itself with one more reference.
 */
ORU_API ORUDoName *oru_do_name_new_fqname(ORUDoName *name, const char *package,
                                          const char *version);

/*
 * The part behind the first "." that follows the first "/", as a new name. Without a "/", `name`
 * itself with one more reference. Null when no "." follows the "/".
 */
ORU_API ORUDoName *oru_do_name_new_or_ref_unqualified_name(ORUDoName *name);

/* ---- Reading ---- */

/* The text, borrowed. */
ORU_API const char *oru_do_name_get_strname(ORUDoName *name);

/*
 * The part behind the first "." that follows the first "/", borrowed; the whole text without a "/".
 * Null when no "." follows the "/": there is no falling back to what stands behind the slash.
 */
ORU_API const char *oru_do_name_get_unqualified_strname(ORUDoName *name);

/* Non-zero when the text holds a "/". */
ORU_API int32_t oru_do_name_is_fully_qualified(ORUDoName *name);

/* The same for a plain text; 0 for null. */
ORU_API int32_t is_fully_qualified_name(const char *text);

/* Non-zero when the texts are equal. Asserts "name1"; a null second argument is not equal. */
ORU_API int32_t oru_do_name_equals(ORUDoName *name1, ORUDoName *name2);
ORU_API int32_t oru_do_name_equals_w_strname(ORUDoName *name1, const char *text);

/*
 * Non-zero when the first `n` bytes are equal, so also for a name that only begins with them. The
 * strict form wants the name to end there. Assert "name1"; a null text is not equal.
 */
ORU_API int32_t oru_do_name_equals_w_strname_l(ORUDoName *name1, const char *text, int32_t n);
ORU_API int32_t oru_do_name_equals_w_strname_l_strict(ORUDoName *name1, const char *text,
                                                      int32_t n);

/* ---- Taking texts apart ---- */

/*
 * Cuts a qualified text in place and points the outputs into it, null where a part is absent:
 * "a:1.0/b.c" has the package "a", the version "1.0", the entity "b" and the attribute "c"; "a.b"
 * the package "a" and the entity "b"; "a" the entity "a". Result 0, or 10000 for a null text; the
 * outputs, which are all required, are null then.
 */
ORU_API int32_t parse_pkg_and_ent_name(char *text, char **package, char **version, char **entity,
                                       char **attribute);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoName *oru_do_name_ref(ORUDoName *name);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_name_deref(ORUDoName *name);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_name(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
