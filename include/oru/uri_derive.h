/*
 * URIs made of other URIs: children of a parent, members of a collection, collections, prefixes,
 * absolute and relative forms.
 *
 * Every maker gives a new URI with one reference, which the caller releases with
 * `oru_do_uri_deref`, or null: when memory runs out, and where it is told. The sources stay as
 * they are, and nothing is parsed. A source that was parsed hands its segments on: the new URI then
 * counts as parsed, and shares the key lists. Derived texts are not checked; one that breaks the
 * grammar shows it at its first inspection.
 *
 * A null argument is asserted under the name it has here, unless told otherwise.
 */
#ifndef ORU_URI_DERIVE_H
#define ORU_URI_DERIVE_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Of a parent and keys ----
 * A reference name of 64 characters and more ends the process. Names of keys are written as they
 * are, values in escaped form. */

/*
 * "<parent>/<ref>;<key>=<value>" from texts and a string, a value or a number. The parent "/" is
 * left out. Null when a text but the string is null or empty, or the value is null.
 */
ORU_API ORUDoUri *oru_do_uri_new_str(const char *parent, const char *ref, const char *key,
                                     const char *str);
ORU_API ORUDoUri *oru_do_uri_new_val(const char *parent, const char *ref, const char *key,
                                     ORUDoValue *val);
ORU_API ORUDoUri *oru_do_uri_new_num(const char *parent, const char *ref, const char *key,
                                     int64_t num);

/*
 * The child of a parent with any number of keys. It keeps the parent alive and gives it back as
 * `oru_do_uri_get_parent_uri`. Null for a null argument, and for a string among the keys that
 * cannot be read. In the segments that a parsed parent's child has from the start, its own
 * segment ends one character further than a parse would tell; a parent with ten segments hands
 * none on.
 */
ORU_API ORUDoUri *oru_do_uri_new_from_parent_uri(ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                                 ORUDoNvlist *keys);

/*
 * The same with keys from properties: those that the child's type calls primary keys, in the order
 * of the type. A key that is not among the properties is traced, and the result is null.
 */
ORU_API ORUDoUri *oru_do_uri_new_from_parent_uri_props(ORUDoUri *parent_uri,
                                                       ORUDoName *child_ref_name,
                                                       ORUDoProperties *props,
                                                       ORUDoMrMeta *child_do_mr_meta);

/* The same with every property as a key, in their order. Null when one has no value. */
ORU_API ORUDoUri *oru_do_uri_new_from_parent_uri_key_props(ORUDoUri *parent_uri,
                                                           ORUDoName *child_ref_name,
                                                           ORUDoProperties *props);

/* ---- Of a collection ----
 * A collection that was parsed gives the member that stands for all of its kind: its "?" becomes a
 * slash; null without a query part or without a segment, and the end of the process with ten
 * segments, or when the query part is no reference name for its length. On text alone the last "?"
 * counts, null when there is none; it becomes a slash, and a base of one character is lost with
 * it. */

/* The member with the keys; none for a null list. A null collection gives null. */
ORU_API ORUDoUri *oru_do_uri_new_from_coll_uri(ORUDoUri *coll_uri, ORUDoNvlist *keys);

/* The same from text. */
ORU_API ORUDoUri *oru_do_uri_new_from_coll_uri_str(const char *uri_str, ORUDoNvlist *keys);

/* The member without keys. */
ORU_API ORUDoUri *oru_do_uri_get_child_uri_from_coll_uri(ORUDoUri *coll_uri);

/* The text of the member without keys, which the caller frees with `oru_do_uri_str_free`. */
ORU_API char *oru_do_uri_get_child_from_coll_uri(ORUDoUri *coll_uri);

/* ---- A collection ---- */

/* "<uri>?<ref>"; with a null `ref` the collection that the last segment of the URI belongs to,
   null for a text without a slash or with one at its end. */
ORU_API ORUDoUri *oru_do_uri_new_coll(ORUDoUri *uri, const char *ref);

/* "<uri>?<ref>:<type>", with "/" for a null URI; "//?:<type>" when `ref` is null too. `ref` may be
   empty, and is asserted with a URI. */
ORU_API ORUDoUri *oru_do_uri_new_coll_wildcard(ORUDoUri *uri, const char *ref, const char *type);

/* ---- Of one URI ---- */

/*
 * The URI's first `depth` segments, null when it has less. `rest` may be null; it gets the place in
 * the source's text behind them. The location does not count when the URI was parsed, and counts
 * when the text alone has to do. A parsed URI's prefix keeps its own text as its parent's.
 */
ORU_API ORUDoUri *oru_do_uri_new_from_descendant(ORUDoUri *uri, int32_t depth, const char **rest);

/* The first `prefix_len` characters of `prefix`, all of them for 0; the URI's text; `suffix`. No
   slash is added. Null for either text adds nothing. */
ORU_API ORUDoUri *oru_do_uri_new_from_merge(ORUDoUri *base_uri, const char *prefix,
                                            int32_t prefix_len, const char *suffix);

/* An equal URI. */
ORU_API ORUDoUri *oru_do_uri_clone(ORUDoUri *uri);

/* ---- Locations ---- */

/*
 * The text at a location: the location's text and then the URI's. An absolute text stays as it is,
 * and so do an infix one and any text without a location. "/" gives the location, and "/?x" loses
 * its slash. The caller frees the text with `oru_do_uri_str_free`. A null `uri_str` gives null.
 */
ORU_API char *oru_do_uri_str_new_absolute(const char *uri_str, const char *location_str);

/* A URI of that text. Either argument may be null. */
ORU_API ORUDoUri *oru_do_uri_new_absolute(ORUDoUri *uri, ORUDoUri *location_uri);
ORU_API ORUDoUri *oru_do_uri_new_absolute_from_uri_str(const char *uri_str,
                                                       const char *location_str);

/* The root of an absolute URI's location, "//" and its first segment. The URI is parsed. Null for
   any other. */
ORU_API ORUDoUri *oru_do_uri_new_absolute_root_from_uri(ORUDoUri *uri);

/* The URI of `oru_do_uri_get_relative_str`, or null when that is. */
ORU_API ORUDoUri *oru_do_uri_new_relative(const char *uri_str);

ORU_END_DECLS

#endif
