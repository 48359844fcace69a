/*
 * Questions to the metadata store: which record has this name, which resource does this URI lead
 * to, does this value fit that attribute.
 *
 * Nothing here takes the lock on the store but `oru_md_set_root_mr_type`; see oru/md.h. Null means
 * not found, also when there is no store. Records are borrowed.
 */
#ifndef ORU_MD_LOOKUP_H
#define ORU_MD_LOOKUP_H

#include "oru/md.h"

ORU_BEGIN_DECLS

/* ---- By name, through the whole store ----
 * Names are texts of the form `package:version/entity.attribute`. The version is optional and not
 * looked at. Without a "/" what stands behind the last "." is the entity, and there is no
 * attribute. */

/* The package; the name is that of the package alone. Null for null. */
ORU_API ORUMdPkgMeta *oru_md_get_pkg_meta_by_name(const char *pkg_name);

/* The entity of the package: a resource, a definition of configuration or of operational data. They
   assert "mr_qname", "cd_qname" and "od_qname". */
ORU_API ORUMdMrMeta *oru_md_get_mr_meta_by_name(const char *mr_qname);
ORU_API ORUMdCodMeta *oru_md_get_cd_meta_by_name(const char *cd_qname);
ORU_API ORUMdCodMeta *oru_md_get_od_meta_by_name(const char *od_qname);

/* The attribute part of the name in the resource of the entity part, as oru_md_get_attr_meta_w_str
   and oru_md_get_ref_meta_w_str find it. Null for null. */
ORU_API ORUMdAttrMeta *oru_md_get_attr_meta_by_name(const char *attr_qname);
ORU_API ORUMdRefMeta *oru_md_get_ref_meta_by_name(const char *ref_qname);

/* The type. Null for null. */
ORU_API ORUMdTypedefMeta *oru_md_get_typedef_meta_by_name(const char *type_qname);

/* The value of an enumeration's label, borrowed: what stands behind the last "." is the label, what
   stands before it the name of the type. Null for null, and for a type without labels. */
ORU_API ORUDoValue *oru_md_get_enum_value_by_name(const char *enum_qname);

/* ---- Within a package or a resource ----
 * The first record of that name; `_w_str` takes a text. Both arguments are asserted under their
 * names. */

/* In a package: resources, definitions of configuration and of operational data, types. */
ORU_API ORUMdMrMeta *oru_md_get_mr_meta(ORUMdPkgMeta *pkg_meta, ORUDoName *mr_name);
ORU_API ORUMdMrMeta *oru_md_get_mr_meta_w_str(ORUMdPkgMeta *pkg_meta, const char *mr_name);
ORU_API ORUMdCodMeta *oru_md_get_pkg_cd_meta(ORUMdPkgMeta *pkg_meta, ORUDoName *cd_name);
ORU_API ORUMdCodMeta *oru_md_get_pkg_cd_meta_w_str(ORUMdPkgMeta *pkg_meta, const char *cd_name);
ORU_API ORUMdCodMeta *oru_md_get_pkg_od_meta(ORUMdPkgMeta *pkg_meta, ORUDoName *od_name);
ORU_API ORUMdCodMeta *oru_md_get_pkg_od_meta_w_str(ORUMdPkgMeta *pkg_meta, const char *od_name);
ORU_API ORUMdTypedefMeta *oru_md_get_typedef_meta(ORUMdPkgMeta *pkg_meta, ORUDoName *type_name);
ORU_API ORUMdTypedefMeta *oru_md_get_typedef_meta_w_str(ORUMdPkgMeta *pkg_meta,
                                                        const char *type_name);

/* In a resource: any attribute (configuration, operational, primary keys, secondary keys, in this
   order), those of one kind, keys (primary, then secondary), references. */
ORU_API ORUMdAttrMeta *oru_md_get_attr_meta(ORUMdMrMeta *mr_meta, ORUDoName *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_attr_meta_w_str(ORUMdMrMeta *mr_meta, const char *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_cd_attr_meta(ORUMdMrMeta *mr_meta, ORUDoName *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_cd_attr_meta_w_str(ORUMdMrMeta *mr_meta, const char *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_od_attr_meta(ORUMdMrMeta *mr_meta, ORUDoName *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_od_attr_meta_w_str(ORUMdMrMeta *mr_meta, const char *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_key_attr_meta(ORUMdMrMeta *mr_meta, ORUDoName *attr_name);
ORU_API ORUMdAttrMeta *oru_md_get_key_attr_meta_w_str(ORUMdMrMeta *mr_meta, const char *attr_name);
ORU_API ORUMdRefMeta *oru_md_get_ref_meta(ORUMdMrMeta *mr_meta, ORUDoName *ref_name);
ORU_API ORUMdRefMeta *oru_md_get_ref_meta_w_str(ORUMdMrMeta *mr_meta, const char *ref_name);

/* ---- Children ----
 * They assert "mr_meta". Nothing is added to a null list. */

/* 1 when a reference leads to a child, else 0. */
ORU_API int32_t oru_md_has_child_mr(ORUMdMrMeta *mr_meta);

/* Appends the descriptions of the children, in the order of the references. Those whose type was
   not found are left out. */
ORU_API void oru_md_get_child_mr_meta_list(ORUMdMrMeta *mr_meta, ORUDoMrMetaList *list);

/* The same two levels deep: behind each child its own children. */
ORU_API void oru_md_get_descendant_mr_meta_list(ORUMdMrMeta *mr_meta, ORUDoMrMetaList *list);

/* ---- By URI ---- */

/* Sets the qualified name of the resource type at the root of all URIs. The text is not copied and
   must live on; "com.tarvex.lumo.orucore/System" at start. Takes the write lock, and changes
   nothing when that fails. It outlives the store. */
ORU_API void oru_md_set_root_mr_type(const char *name);

/*
 * Walks a URI through the metadata and gives the resource type that it reaches. The last
 * `last_segs` segments are walked, all of them for a `last_segs` below 1, starting at `start_mr`,
 * or at the root type for null.
 *
 * `ret_remainder_uri_segs` is set to how many segments are left when the walk ends early: at a
 * library resource whose implementation only the data can tell; at a peer reference, whose holder
 * is the result then; at a resource selected by a secondary key that is not operational. It is 0
 * for a URI that was walked to its end, and when nothing was found.
 *
 * The others may be null. `ret_keys` gets the keys of the last segment, borrowed from the URI, null
 * for none. `ret_secondary` is set when a secondary key selected, `ret_peer_ref` to the peer
 * reference; both are read as well and must be cleared before the call.
 *
 * Null when the URI does not fit the metadata; traced at level 3. Asserts "uri" and
 * "ret_remainder_uri_segs".
 */
ORU_API ORUMdMrMeta *oru_md_get_mr_meta_by_uri(ORUDoUri *uri, int32_t last_segs,
                                               ORUMdMrMeta *start_mr,
                                               int32_t *ret_remainder_uri_segs,
                                               ORUDoNvlist **ret_keys, uint8_t *ret_secondary,
                                               ORUMdRefMeta **ret_peer_ref);

/* ---- Values ---- */

/*
 * Whether a value fits an attribute, by its type and the constraints of its type and its own.
 * `props` are the properties of the resource, for the conditions of constraints; null is accepted.
 * Asserts "attr_meta". A null value passes the check of the type; the constraints decide.
 *
 * The result is 0 or the first that applies:
 * 112, the attribute has no description, or its enumeration is given no enumeration;
 * 117, the label is none of the enumeration's;
 * 118, the type is another, traced at level 3 as "type %d violates constraint for \"%s\" (expected
 *   %d)\n"; a property "entIdx" passes all the same;
 * 119, the number does not fit the attribute's type; an attribute of many values is given no array,
 *   or an element of another type than its own;
 * 120, 130, the members of a choice or sequence are not those of its type; 101 or 10000 when they
 *   cannot be read, traced at level 3 as "Failed to extract choice value (rc=%d)\n" and "Failed to
 *   extract sequence value (rc=%d)\n";
 * 113 to 116 of `oru_do_constraint_eval`.
 *
 * Numbers of one kind may be of another width. Of the other floating type, 0 and negative numbers
 * are refused with 119. Texts, enumerations and URIs of resources pass for each other. Within a
 * choice or sequence only the names of the members count.
 */
ORU_API int32_t oru_md_eval_attr_constraint(ORUMdAttrMeta *attr_meta, ORUDoValue *value,
                                            ORUDoProperties *props);

/*
 * Whether a resource with these properties may be created: 133 when an attribute of its
 * configuration is missing whose first constraint without a condition has a `size` of one element
 * without an upper bound (`oru_do_range_has_strict_max_value`), else 0. `message` is not written.
 * Asserts "mr_meta" and "message".
 */
ORU_API int32_t oru_md_eval_mr_constraint(ORUMdMrMeta *mr_meta, ORUDoProperties *props,
                                          char **message);

/*
 * Whether the value has the type of the reference: 0; 118 when not; 119 for a reference to many
 * whose value is no array. The elements of an array are checked one by one. Asserts "ref_meta" and
 * "value".
 */
ORU_API int32_t oru_md_eval_peer_ref_basic_type_constraint(ORUMdRefMeta *ref_meta,
                                                           ORUDoValue *value);

/*
 * Makes a typed value out of a text value, by the type of a property of the description. Null for a
 * property that there is not, with the code 0; 101 for a value that is no string; else the code of
 * the parse. Asserts "val" and "errp".
 */
ORU_API ORUDoValue *oru_do_value_new_from_mr_meta(ORUDoValue *val, ORUDoMrMeta *mr_meta,
                                                  const char *prop_name, int32_t *errp);

/* The same for each item of a list: a new list. Null at the first item that fails, traced at level
   3, with its code, 101 when it has none. Asserts "nvlist" and "rc". */
ORU_API ORUDoNvlist *oru_do_nvlist_new_from_mr_meta(ORUDoNvlist *nvlist, ORUDoMrMeta *mr_meta,
                                                    int32_t *rc);

/* The same into a table: 0, or the code of the first pair that fails; what was set before it stays.
   Asserts "properties" and "nvlist". */
ORU_API int32_t oru_do_properties_set_from_nvlist_and_meta(ORUDoProperties *properties,
                                                           ORUDoNvlist *nvlist,
                                                           ORUDoMrMeta *mr_meta);

ORU_END_DECLS

#endif
