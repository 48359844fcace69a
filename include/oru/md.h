/*
 * The metadata store: what every type of managed resource (MR) consists of, read from packages.
 *
 * There is one store in a process, filled by `oru_md_load_dir` or `oru_md_load_pkg_list` and
 * emptied by `oru_md_free`. Library packages declare abstract resources, implementation packages
 * those that implement them; a package is of one kind throughout.
 *
 * One read-write lock, `meta_rwlock`, covers the store. The load operations, `oru_md_free` and
 * `oru_md_set_root_mr_type` take it themselves, everything else runs without: who shares the store
 * with a loader puts its lookups between `oru_md_rdlock` and `oru_md_unlock`, who edits records
 * holds `oru_md_wrlock`. A pointer to a record is valid under the lock only; the counted
 * descriptions that records hold may be kept.
 *
 * The operations here make, chain and delete records. They assert the arguments of which it is
 * said, under their names. Constructors give null when memory runs out. Lookups are in
 * oru/md_lookup.h.
 */
#ifndef ORU_MD_H
#define ORU_MD_H

#include "oru/thread.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Records ---- */

typedef struct ORUMdMap ORUMdMap;
typedef struct ORUMdPkgBundle ORUMdPkgBundle;
typedef struct ORUMdPkgMeta ORUMdPkgMeta;
typedef struct ORUMdMrMeta ORUMdMrMeta;
typedef struct ORUMdAttrMeta ORUMdAttrMeta;
typedef struct ORUMdRefMeta ORUMdRefMeta;
typedef struct ORUMdCodMeta ORUMdCodMeta;
typedef struct ORUMdTypedefMeta ORUMdTypedefMeta;
typedef struct ORUMdComplexEl ORUMdComplexEl;
typedef struct ORUMdMrMetaList ORUMdMrMetaList;

/* The two kinds of packages, which are also the passes of a load. */
enum { ORU_MD_PKG_LIBRARY = 1, ORU_MD_PKG_IMPL = 2 };

/* The name of the bundle that has none. */
#define ORU_MD_DEFAULT_BUNDLE "quill_default_bundle"

/* The store. The table finds packages by the text of their name. */
struct ORUMdMap {
    ORUMdPkgBundle *bundles; /* in order of first load */
    void *pkg_table;         /* does not own the packages */
    int32_t (*oru_md_resolve_refs)(ORUMdMap *store, int32_t pass);
    int32_t (*oru_md_add_pkg)(ORUMdMap *store, ORUMdPkgMeta *package);
    int32_t (*oru_md_remove_pkg)(ORUMdMap *store, ORUMdPkgMeta *package);
    ORUMdPkgMeta *(*oru_md_get_pkg)(ORUMdMap *store, const char *name, const char *version);
};

/* The packages that came together. */
struct ORUMdPkgBundle {
    char *name;
    ORUMdPkgMeta *pkgs; /* in order of reading */
    ORUMdPkgBundle *next;
};

struct ORUMdPkgMeta {
    ORUDoName *name;
    char *version;
    int32_t type; /* ORU_MD_PKG_... */
    ORUMdMrMeta *mrs;
    ORUMdCodMeta *cds; /* definitions of configuration data */
    ORUMdCodMeta *ods; /* definitions of operational data */
    ORUMdTypedefMeta *typedefs;
    ORUMdPkgMeta *next; /* in the bundle */
};

/* A type of managed resource. */
struct ORUMdMrMeta {
    ORUMdPkgMeta *package;
    ORUDoName *name;        /* unqualified */
    ORUDoName *parent_name; /* what it extends or implements; null for nothing */
    ORUMdMrMeta *parent_mr; /* null until resolved */
    ORUDoValue *const_key;  /* the key that selects this implementation; a string or null */
    ORUDoMrMeta *do_mr_meta;
    uint8_t is_lib;
    ORUMdMrMetaList *impl_mr_metas; /* of a library resource, in order of resolution */
    ORUMdAttrMeta *primary_keys;
    ORUMdAttrMeta *secondary_keys;
    ORUMdRefMeta *refs;
    ORUMdAttrMeta *cd_attrs; /* configuration */
    ORUMdAttrMeta *od_attrs; /* operational */
    ORUMdMrMeta *next;       /* in the package */
};

/* A key or an attribute. */
struct ORUMdAttrMeta {
    ORUDoName *name;       /* `group.attribute` in a group */
    ORUDoName *group_name; /* or null */
    ORUDoPropMeta *prop_meta;
    ORUMdTypedefMeta *typedef_meta; /* null for a built-in type, and until resolved */
    ORUMdAttrMeta *next;
};

struct ORUMdRefMeta {
    ORUDoName *name;
    ORUDoPropMeta *prop_meta;
    uint8_t is_child;
    ORUDoName *target_name; /* null for a reference without target */
    ORUMdMrMeta *target_mr; /* null until resolved */
    ORUMdRefMeta *next;
};

/* A definition of configuration or operational data, which groups of resources copy. */
struct ORUMdCodMeta {
    ORUMdPkgMeta *package;
    ORUDoName *name;
    ORUDoPropMetaList *prop_list;
    ORUDoName *extends_name;   /* or null */
    ORUMdCodMeta *extends_cod; /* null until resolved */
    uint8_t is_lib;
    ORUMdCodMeta *next;
};

struct ORUMdTypedefMeta {
    ORUDoName *name;                      /* unqualified */
    int32_t typecode;                     /* -3 for a type that cannot be used */
    ORUDoNvlist *enums;                   /* of an enumeration: labels and their numbers */
    ORUMdComplexEl *complex_els;          /* of a sequence or choice */
    ORUDoConstraintList *constraint_list; /* or null */
    ORUDoTypedefMeta *do_typedef_meta;    /* null until first asked */
    ORUMdTypedefMeta *next;
};

/* A member of a sequence or choice. */
struct ORUMdComplexEl {
    ORUDoName *name;
    ORUDoName *type_name;                 /* as written */
    int32_t typecode;                     /* -3 when the type is not built in */
    ORUMdTypedefMeta *typedef_meta;       /* null for a built-in type, and until resolved */
    ORUDoConstraintList *constraint_list; /* or null */
    ORUMdComplexEl *next;
};

struct ORUMdMrMetaList {
    ORUMdMrMeta *mr; /* not owned */
    ORUMdMrMetaList *next;
};

/* ---- Store and lock ---- */

/* The lock on the store. */
extern ORU_API oru_rwlock_t meta_rwlock;

/* Take the lock for writing or for reading, and release it. 0, or 10001 when the lock's operation
   fails. Success is traced at level 7. */
ORU_API int32_t oru_md_wrlock(void);
ORU_API int32_t oru_md_rdlock(void);
ORU_API int32_t oru_md_unlock(void);

/* A new empty store; null on failure, which is traced at level 3. */
ORU_API ORUMdMap *oru_md_map_new(void);

/* Deletes a store with all its bundles; null is ignored. */
ORU_API void oru_md_map_delete(ORUMdMap *store);

/* Takes the write lock, deletes the store of the process and releases the lock. 0; 10001 when the
   lock cannot be had, with nothing changed, or cannot be released. */
ORU_API int32_t oru_md_free(void);

/* A new bundle, which owns the packages from `first_pkg` on. The name is copied; null stands for
   ORU_MD_DEFAULT_BUNDLE. */
ORU_API ORUMdPkgBundle *oru_md_pkg_bundle_new(const char *name, ORUMdPkgMeta *first_pkg);

/* Deletes this bundle and every one behind it, with their packages; null is ignored. Who wants one
   deleted clears its `next` first. */
ORU_API void oru_md_pkg_bundle_delete(ORUMdPkgBundle *first_bundle);

/* The bundle of that name, or null; a null name stands for ORU_MD_DEFAULT_BUNDLE. */
ORU_API ORUMdPkgBundle *oru_md_pkg_bundle_get(ORUMdPkgBundle *first_bundle, const char *name);

/* Traces at level 7 and does nothing. Weak: names are resolved by the store's own operation. */
ORU_API void oru_md_resolve_name_refs(void);

/* ---- Loading ---- */

/*
 * Loads the packages of one directory, libraries first. The path is `dir` and `sub` in one; files
 * whose name ends in `suffix`, where it occurs first, are read. `out_bundle`, which may be null,
 * gets the first bundle. With a store already there the call changes nothing.
 *
 * 0, or 10001 when the lock fails. A load that fails is traced at level 3, leaves no store, and is
 * still 0: look for the store.
 */
ORU_API int32_t oru_md_load_dir(const char *dir, const char *sub, const char *suffix,
                                ORUMdPkgBundle **out_bundle);

/*
 * Makes the bundles of a null-terminated array of names the active ones: loads those that are new,
 * each from "NAME//usr/halden/etc//oru2d", and takes out the first that is not named any more, one
 * a call.
 *
 * `out_new` gets the first new bundle, `out_removed` the bundle that was taken out, which is then
 * the caller's, or null; without `out_removed` it is deleted, and no record of the others links
 * to it any more. Only with both null the call takes the write lock itself.
 *
 * 0 or the code of the first failure: 10000 for an empty list or when nothing was found, 10001 for
 * the lock, 10002 without memory, 10004 for a bundle without packages. After a failure there is no
 * store, whatever was loaded before.
 */
ORU_API int32_t oru_md_load_pkg_list(const char *const *names, ORUMdPkgBundle **out_new,
                                     ORUMdPkgBundle **out_removed);

/*
 * Reads the packages of one kind, `pass`, ORU_MD_PKG_..., from one directory into `*store`, which
 * is made when it is null: from "`bundle`//usr/halden/etc/`sub`", or from `base` and `sub` in one
 * for a null `bundle`. The caller holds the write lock.
 *
 * The result is that of the last file that matched the suffix; 10000 for a path that cannot be
 * built, 10002 without memory, 10004 when the directory cannot be opened.
 */
ORU_API int32_t _oru_md_init_meta_info(const char *base, const char *sub, const char *suffix,
                                       int32_t pass, ORUMdMap **store, const char *bundle);

/* ---- Packages ---- */

/* A package without contents. Takes a reference to `pkg_name` and copies `version`; asserts
   both. */
ORU_API ORUMdPkgMeta *oru_md_new_pkg_meta(ORUDoName *pkg_name, const char *version, int32_t type);

/* Deletes a package with its contents; null is ignored. */
ORU_API void oru_md_delete_pkg_meta(ORUMdPkgMeta *pkg_meta);

/* Deletes the package of that name and gives the head of the chain without it; null when there is
   no such package, or none is left. Asserts both arguments. */
ORU_API ORUMdPkgMeta *oru_md_remove_pkg_meta(ORUMdPkgMeta *first_pkg_meta, ORUDoName *pkg_name);

/* Append to the package, which owns the record then. They assert "pkg_meta" and the record. */
ORU_API void oru_md_add_mr_meta(ORUMdPkgMeta *pkg_meta, ORUMdMrMeta *mr_meta);
ORU_API void oru_md_add_pkg_cd_meta(ORUMdPkgMeta *pkg_meta, ORUMdCodMeta *cd_meta);
ORU_API void oru_md_add_pkg_od_meta(ORUMdPkgMeta *pkg_meta, ORUMdCodMeta *od_meta);
ORU_API void oru_md_add_typedef_meta(ORUMdPkgMeta *pkg_meta, ORUMdTypedefMeta *typedef_meta);

/* The name qualified with the package's name and version; `name` itself, with one more reference,
   when it is qualified already. Asserts both. The reference is the caller's. */
ORU_API ORUDoName *oru_md_qualified_name_new_or_ref(ORUMdPkgMeta *package, ORUDoName *name);

/* ---- Resources ---- */

/* A resource without contents. Takes references to `mr_name` and `do_mr_meta`, which it asserts;
   the two texts are copied, either may be null. */
ORU_API ORUMdMrMeta *oru_md_new_mr_meta(ORUMdPkgMeta *package, ORUDoName *mr_name,
                                        ORUDoMrMeta *do_mr_meta, const char *parent_name,
                                        const char *const_key, int32_t is_lib);

/* Deletes a resource with its contents; null is ignored. */
ORU_API void oru_md_delete_mr_meta(ORUMdMrMeta *mr_meta);

/* As oru_md_remove_pkg_meta, in a chain of resources. */
ORU_API ORUMdMrMeta *oru_md_remove_mr_meta(ORUMdMrMeta *first_mr_meta, ORUDoName *mr_name);

/* Append to the resource, which owns the record then: to the primary keys or the secondary ones, to
   the references, the configuration or the operational attributes. They assert "mr_meta" and the
   record. */
ORU_API void oru_md_add_key_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *key_meta, int32_t is_primary);
ORU_API void oru_md_add_ref_meta(ORUMdMrMeta *mr_meta, ORUMdRefMeta *ref_meta);
ORU_API void oru_md_add_cd_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *attr_meta);
ORU_API void oru_md_add_od_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *attr_meta);

/* Whether the resource is of a library, or not. They assert "mr_meta". */
ORU_API int32_t oru_md_is_lib_mr(ORUMdMrMeta *mr_meta);
ORU_API int32_t oru_md_is_impl_mr(ORUMdMrMeta *mr_meta);

/* The unqualified name, borrowed. Asserts "mr_meta". */
ORU_API const char *oru_md_mr_meta_to_string(ORUMdMrMeta *mr_meta);

/* The constant key, borrowed; null for null and where there is none. */
ORU_API ORUDoValue *oru_md_get_const_key(ORUMdMrMeta *mr_meta);

/* Appends an implementation to a library resource, traced at level 7. The new entry, or null when
   memory runs out. Both assert "lib_mr_meta" and "impl_mr_meta". */
ORU_API ORUMdMrMetaList *oru_md_mr_meta_add_impl_mr_meta(ORUMdMrMeta *lib_mr_meta,
                                                         ORUMdMrMeta *impl_mr_meta);

/* `impl_mr_meta` when this very record is listed already, else null. */
ORU_API ORUMdMrMeta *oru_md_mr_meta_get_impl_mr_meta(ORUMdMrMeta *lib_mr_meta,
                                                     ORUMdMrMeta *impl_mr_meta);

/* The first entry of the implementations, or null. Asserts "lib_mr_meta". */
ORU_API ORUMdMrMetaList *oru_md_mr_meta_get_impl_mr_meta_list(ORUMdMrMeta *lib_mr_meta);

/* ---- Lists of resources: entries that do not own them ---- */

/* A single entry. Asserts "md_mr_meta". */
ORU_API ORUMdMrMetaList *oru_md_mr_meta_list_new(ORUMdMrMeta *md_mr_meta);

/* Frees one entry; null is ignored. */
ORU_API void oru_md_mr_meta_list_delete(ORUMdMrMetaList *entry);

/* Frees this entry and every one behind it; null is ignored. */
ORU_API void oru_md_mr_meta_list_delete_all_items(ORUMdMrMetaList *first);

/* Appends and gives the new length, 0 when memory runs out. Asserts "head". */
ORU_API int32_t oru_md_mr_meta_list_add(ORUMdMrMetaList **head, ORUMdMrMeta *md_mr_meta);

/* The first resource of that qualified name, or null, also for a null name. */
ORU_API ORUMdMrMeta *oru_md_mr_meta_list_get_by_fq_name(ORUMdMrMetaList *first, ORUDoName *name);

/* The same, and takes the entry out. Asserts "head". */
ORU_API ORUMdMrMeta *oru_md_mr_meta_list_remove_by_fq_name(ORUMdMrMetaList **head, ORUDoName *name);

/* The first resource whose constant key equals the value, or null, also for a null value. */
ORU_API ORUMdMrMeta *oru_md_mr_meta_by_key(ORUMdMrMetaList *first, ORUDoValue *value);

/* ---- Attributes and references ---- */

/* A key or attribute. Takes references; `group_name` may be null, the others are asserted. */
ORU_API ORUMdAttrMeta *oru_md_new_attr_meta(ORUDoName *attr_name, ORUDoName *group_name,
                                            ORUDoPropMeta *do_prop_meta);

/* Deletes a record; null is ignored. */
ORU_API void oru_md_delete_attr_meta(ORUMdAttrMeta *attr_meta);

/* As oru_md_remove_pkg_meta, in a chain of attributes. */
ORU_API ORUMdAttrMeta *oru_md_remove_attr_meta(ORUMdAttrMeta *first_attr_meta,
                                               ORUDoName *attr_name);

/* The first record of that name in the chain, or null, also for a null name. */
ORU_API ORUMdAttrMeta *oru_md_attr_meta_find(ORUMdAttrMeta *first_attr_meta, ORUDoName *attr_name);

/* A reference, with the target that its property names. Takes references and asserts both. */
ORU_API ORUMdRefMeta *oru_md_new_ref_meta(ORUDoName *ref_name, ORUDoPropMeta *do_prop_meta);

/* Deletes a record; null is ignored. */
ORU_API void oru_md_delete_ref_meta(ORUMdRefMeta *ref_meta);

/* As oru_md_remove_pkg_meta, in a chain of references. */
ORU_API ORUMdRefMeta *oru_md_remove_ref_meta(ORUMdRefMeta *first_ref_meta, ORUDoName *ref_name);

/* The first record of that name in the chain, or null, also for a null name. */
ORU_API ORUMdRefMeta *oru_md_ref_meta_find(ORUMdRefMeta *first_ref_meta, ORUDoName *ref_name);

/* Whether the property has constraints, and which; borrowed. They assert the record under
   "attr_meta" and "ref_meta". */
ORU_API int32_t oru_md_has_attr_constraints(ORUMdAttrMeta *attr_meta);
ORU_API ORUDoConstraintList *oru_md_get_attr_constraints(ORUMdAttrMeta *attr_meta);
ORU_API int32_t oru_md_has_ref_constraints(ORUMdRefMeta *ref_meta);
ORU_API ORUDoConstraintList *oru_md_get_ref_constraints(ORUMdRefMeta *ref_meta);

/* The first of these constraints that applies to the property's name and the properties of the
   resource, which may be null, see oru/constraint.h; borrowed. Null when none does. */
ORU_API ORUDoConstraint *oru_md_get_attr_constraint(ORUMdAttrMeta *attr_meta,
                                                    ORUDoProperties *props);
ORU_API ORUDoConstraint *oru_md_get_ref_constraint(ORUMdRefMeta *ref_meta, ORUDoProperties *props);

/* The name of the type that the attribute's was resolved to, borrowed; null for null and for a
   built-in type. */
ORU_API const char *oru_md_get_type_name(ORUMdAttrMeta *attr_meta);

/* ---- Definitions and types ---- */

/* A definition. Takes references to `cod_name`, which it asserts, and to the list; the text is
   copied and may be null. */
ORU_API ORUMdCodMeta *oru_md_cod_meta_new(ORUMdPkgMeta *package, ORUDoName *cod_name,
                                          const char *extends, ORUDoPropMetaList *prop_list,
                                          int32_t is_lib);

/* Deletes a definition; null is ignored. */
ORU_API void oru_md_cod_meta_delete(ORUMdCodMeta *cod_meta);

/* A type without contents, of type code -3. Asserts "type_name". */
ORU_API ORUMdTypedefMeta *oru_md_new_typedef_meta(const char *type_name);

/* Deletes a type with its members; null is ignored. */
ORU_API void oru_md_delete_typedef_meta(ORUMdTypedefMeta *typedef_meta);

/* Appends a member and gives it; null when memory runs out. Asserts "typedef_meta", "name" and
   "type". */
ORU_API ORUMdComplexEl *oru_md_add_complex_el_meta(ORUMdTypedefMeta *typedef_meta, const char *name,
                                                   const char *type, int32_t typecode);

/*
 * The description of the type, borrowed; made once and kept. Null for an enumeration without
 * labels, for a type that contains itself, and when memory runs out; it is tried again with the
 * next call. Members that are enumerations without labels are left out. Asserts "typedef_meta".
 */
ORU_API ORUDoTypedefMeta *oru_md_get_do_typedef_meta(ORUMdTypedefMeta *typedef_meta);

ORU_END_DECLS

#endif
