/*
 * JSON: the text form in which objects cross between processes and in which debug output shows
 * them. A tagged object has one key, its type: {"%int":5}, {"%properties":{"a":{"%string":"x"}}};
 * a value may have a second one, {"%string":"x","%typedef":"Name"}. The compact form is plain JSON
 * and needs to be read by somebody who knows the types.
 *
 * Keys, names, URIs and enumerations are written between quotes as they stand; a quote in one of
 * them makes broken JSON. All other texts are escaped.
 */
#ifndef ORU_JSON_H
#define ORU_JSON_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Writing ----
 * Writers append to a buffer, which is required ("strbuf"), as is the object, under the name that
 * it has here. They always give 0: who wants to know whether memory ran out asks
 * `oru_do_strbuf_get_err`. */

/* Options of the `_opt` writers; the others write with 0. Bits 2 and 8 concern the list that is
   written, not lists within it. */
#define ORU_JSON_OPT_COMPACT 0x1u        /* values in compact form */
#define ORU_JSON_OPT_VLIST 0x2u          /* a list under the tag "%vlist" */
#define ORU_JSON_OPT_HIDE_PASSWORDS 0x4u /* "<removed>" for strings of a password's typedef */
#define ORU_JSON_OPT_BITS 0x8u           /* a list under the tag "%bits" */

/*
 * A value: a scalar, an array or bits. Complex values are tagged, with tagged members, in the
 * compact form too; the compact form has no typedef names. `_compact` is the compact form that
 * shows passwords.
 */
ORU_API int32_t oru_do_value_to_json(ORUDoValue *val, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_value_to_json_opt(ORUDoValue *val, ORUDoStrbuf *buf, uint32_t options);
ORU_API int32_t oru_do_value_to_compact_json(ORUDoValue *val, ORUDoStrbuf *buf);

/*
 * A list of values. One whose values all have the same type, not a complex one, is written under
 * that type's tag with compact elements, {"%int":[1,2]}, or as a bare array with the compact bit.
 * Any other, and every list with the bits VLIST or BITS, is {"%array":[...]}, {"%vlist":[...]} or
 * {"%bits":[...]}; the compact bit then speaks of the elements. `typedef_name`, which may be null,
 * follows behind the elements, but for the bare array. The form without options is that of VLIST.
 */
ORU_API int32_t oru_do_vlist_to_json(ORUDoVlist *vlist, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_vlist_to_json_opt(ORUDoVlist *vlist, ORUDoStrbuf *buf, uint32_t options,
                                         const char *typedef_name);

/* {"%nlist":["name",...]} */
ORU_API int32_t oru_do_nlist_to_json(ORUDoNlist *nlist, ORUDoStrbuf *buf);

/* {"%nvlist":{"name":value,...}}; the options are for the values. */
ORU_API int32_t oru_do_nvlist_to_json(ORUDoNvlist *nvlist, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_nvlist_to_json_opt(ORUDoNvlist *nvlist, ORUDoStrbuf *buf, uint32_t options);

/* {"%properties":{"name":value,...}}, compact {"name":value,...}; an entry without a value is
   written as null. */
ORU_API int32_t oru_do_properties_to_json(ORUDoProperties *props, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_properties_to_json_opt(ORUDoProperties *props, ORUDoStrbuf *buf,
                                              uint32_t options);

/* {"%properties_list":[properties,...]}; the options are for the tables. */
ORU_API int32_t oru_do_properties_list_to_json(ORUDoPropertiesList *list, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_properties_list_to_json_opt(ORUDoPropertiesList *list, ORUDoStrbuf *buf,
                                                   uint32_t options);

/* {"%vtable":[row,...]}: the first row is written with the options, all others compact. */
ORU_API int32_t oru_do_vtable_to_json(ORUDoVtable *vtable, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_vtable_to_json_opt(ORUDoVtable *vtable, ORUDoStrbuf *buf, uint32_t options);

/* {"%error":{"code":n,"msg":text,"namespace":text,"cause":error,"prop_errs":prop_errs}} without the
   parts that the error has not, and {"%prop_errs":{"name":error,...}}. */
ORU_API int32_t oru_do_error_to_json(ORUDoError *err, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_prop_errs_to_json(ORUDoPropErrs *prop_errs, ORUDoStrbuf *buf);

/* {"%dtree":{"name":text,"mr_uri":"...","err":error,"props":properties,
   "children":{"%dtree":[...]}}} without the parts that the node has not. Hidden children are left
   out; nodes in the list of children have no tag of their own. */
ORU_API int32_t oru_do_dtree_to_json(ORUDoDtree *dtree, ORUDoStrbuf *buf);

/* {"%config_ops":[{"mr_uri":"...","op_code":n,"props":properties,"child_ref_name":"...",
   "mr_name":"...","lib_mr_name":"...","err":error},...]} without the parts that an operation has
   not; texts as they stand. The options are for the properties. Asserts "config_ops". */
ORU_API int32_t oru_do_config_ops_to_json(ORUDoConfigOps *config_ops, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_config_ops_to_json_opt(ORUDoConfigOps *config_ops, ORUDoStrbuf *buf,
                                              uint32_t options);

/* {"%event":{"name":"...","mr_uri":"...","time":n,"sev":n,"info":properties}} without the parts
   that the event has not; texts as they stand. The options are for `info`. Asserts "event". */
ORU_API int32_t oru_do_event_to_json(ORUDoEvent *event, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_event_to_json_opt(ORUDoEvent *event, ORUDoStrbuf *buf, uint32_t options);

/*
 * {"%typedef_meta":{"name":"...",...}} with "simple_type" and its "constraint_list", "enum",
 * "sequence" or "choice"; a description that lacks its part ends with a comma, which is no JSON.
 * {"%ntlist":{"name":typedef_meta,...}}
 */
ORU_API int32_t oru_do_typedef_meta_to_json(ORUDoTypedefMeta *meta, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_ntlist_to_json(ORUDoNtlist *ntlist, ORUDoStrbuf *buf);

/* {"%constraint":{"condition":text,"constraint_str":text}}, the condition only when there is one,
   and {"%constraint_list":[constraint,...]}. */
ORU_API int32_t oru_do_constraint_to_json(ORUDoConstraint *constraint, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_constraint_list_to_json(ORUDoConstraintList *list, ORUDoStrbuf *buf);

/* {"%prop_meta":{"prop_name":"...","prop_category":n,"primary_key":n,"key_idx":n,"type_code":n,
   "type_name":"...","max_access":n,"multiplicity":n,"ref_role":n}} and
   {"%prop_meta_list":[prop_meta,...]}. */
ORU_API int32_t oru_do_prop_meta_to_json(ORUDoPropMeta *meta, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_prop_meta_list_to_json(ORUDoPropMetaList *list, ORUDoStrbuf *buf);

/* {"%mr_meta":{"pkg_name":"...","mr_name":"...","max_access":n,"prop_meta_list":list}} and
   {"%mr_meta_list":[mr_meta,...]}. The text stays open when memory for the list runs out. */
ORU_API int32_t oru_do_mr_meta_to_json(ORUDoMrMeta *meta, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_mr_meta_list_to_json(ORUDoMrMetaList *list, ORUDoStrbuf *buf);

/* Bare JSON: a number, a text of `length` bytes, null, true or false. */
ORU_API int32_t oru_do_integer_to_json(int64_t value, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_double_to_json(ORUDoStrbuf *buf, double value);
ORU_API int32_t oru_do_string_to_json(const char *text, int32_t length, ORUDoStrbuf *buf);
ORU_API int32_t oru_do_null_to_json(ORUDoStrbuf *buf);
ORU_API int32_t oru_do_bool_to_json(int32_t value, ORUDoStrbuf *buf);

/* ---- Reading ----
 * The text has `length` bytes and need not end with a zero. Comments are allowed. The result is a
 * new object for the caller, or null for a text that is of another type or broken; `errp`, which
 * may be null, then receives a reference to what went wrong, if that is known: an error with one of
 * the codes below. It is untouched otherwise. An object without a tag is read as what the operation
 * is for. A text that nests deeper than 1,000 levels counts as memory that ran out there. */

/* Codes of reading errors. */
enum {
    ORU_JSON_ERR_MEMORY = 1,
    ORU_JSON_ERR_NO_CONTEXT = 2,
    ORU_JSON_ERR_NO_ELEMENT = 3,
    ORU_JSON_ERR_NO_ITEMS = 4,
    ORU_JSON_ERR_TYPE = 5,
    ORU_JSON_ERR_ARRAY = 6,        /* an array directly in an object that takes none */
    ORU_JSON_ERR_PARSE = 7,        /* no JSON; the text tells where */
    ORU_JSON_ERR_UNKNOWN_TYPE = 8, /* a tag that is not known; the text is the input from it on */
    ORU_JSON_ERR_REPLACED = 9,     /* a second object at the top level replaced the first */
};

/*
 * A value, tagged or a bare scalar. A bare integer becomes a long at the top level and an int
 * within an object, of which only the low 32 bits are kept. Numbers out of range are dropped: their
 * member reads as null.
 */
ORU_API ORUDoValue *oru_do_value_from_json(const char *text, int32_t length, ORUDoError **errp);

/* The other objects. */
ORU_API ORUDoProperties *oru_do_properties_from_json(const char *text, int32_t length,
                                                     ORUDoError **errp);
ORU_API ORUDoPropertiesList *oru_do_properties_list_from_json(const char *text, int32_t length,
                                                              ORUDoError **errp);
ORU_API ORUDoNlist *oru_do_nlist_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoNvlist *oru_do_nvlist_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoVlist *oru_do_vlist_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoVtable *oru_do_vtable_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoError *oru_do_error_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoPropErrs *oru_do_prop_errs_from_json(const char *text, int32_t length,
                                                  ORUDoError **errp);
ORU_API ORUDoDtree *oru_do_dtree_from_json(const char *text, int32_t length, ORUDoError **errp);

/*
 * Operations: one is made as soon as its code (-1 when it comes later), its URI and its properties
 * are there, so names behind the properties are lost; without properties, or with the code 0, there
 * is none. Errors are not read.
 */
ORU_API ORUDoConfigOps *oru_do_config_ops_from_json(const char *text, int32_t length,
                                                    ORUDoError **errp);

/* An event, which needs name, URI and info. */
ORU_API ORUDoEvent *oru_do_event_from_json(const char *text, int32_t length, ORUDoError **errp);

/*
 * Descriptions. Types of a kind that is not told give nothing. Of a property "category" and
 * "targetRole" are read, which writers call "prop_category" and "ref_role"; of a resource no
 * properties are read.
 */
ORU_API ORUDoNtlist *oru_do_ntlist_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_from_json(const char *text, int32_t length,
                                                        ORUDoError **errp);
ORU_API ORUDoConstraint *oru_do_constraint_from_json(const char *text, int32_t length,
                                                     ORUDoError **errp);
ORU_API ORUDoConstraintList *oru_do_constraint_list_from_json(const char *text, int32_t length,
                                                              ORUDoError **errp);
ORU_API ORUDoPropMeta *oru_do_prop_meta_from_json(const char *text, int32_t length,
                                                  ORUDoError **errp);
ORU_API ORUDoPropMetaList *oru_do_prop_meta_list_from_json(const char *text, int32_t length,
                                                           ORUDoError **errp);
ORU_API ORUDoMrMeta *oru_do_mr_meta_from_json(const char *text, int32_t length, ORUDoError **errp);
ORU_API ORUDoMrMetaList *oru_do_mr_meta_list_from_json(const char *text, int32_t length,
                                                       ORUDoError **errp);

/* ---- The reader itself ----
 * For who reads objects of types that are only known from the text. */

/* An object that is not finished yet; opaque. */
typedef struct ORUDoJsonTmpObj ORUDoJsonTmpObj;

/* One parse. */
typedef struct ORUDoJsonCtxData {
    int64_t expected;       /* the type of an object without a tag at the top level, 0 for none */
    ORUDoJsonTmpObj *top;   /* of the stack of unfinished objects */
    int64_t completed_type; /* what was read, and of which type; who takes the object clears the */
    void *completed_obj;    /* field */
    ORUDoError *err;        /* the last failure, or null */
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value);
    void (*set_fn)(void *user, const char *text, ORUDoValue *value);
    void *user;
} ORUDoJsonCtxData;

/* A row of the table of types. Several tags may name one type. */
typedef struct oru_json_type_info {
    const char *tag;
    int64_t type_code;
    int32_t value_type_code; /* ORU_DO_TYPE_..., -3 for what is no value */
    void *(*deserialiser)(ORUDoJsonCtxData *ctx, ORUDoJsonTmpObj *element);
} oru_json_type_info;

/*
 * Reads one text; `expected` is the JSON type code for an object without a tag, or 0. The result is
 * a context that is released with `oru_do_json_delete_ctx_data`, null when it cannot be made. A
 * number that ends the text is not seen. `_allow_expr` hands the functions to expressions in the
 * text: `resolve_fn` gives a new reference to the value of a variable, or null; `set_fn` stores
 * one.
 */
ORU_API ORUDoJsonCtxData *oru_do_json_parse(const char *text, int32_t length, int64_t expected);
ORU_API ORUDoJsonCtxData *oru_do_json_parse_allow_expr(
    const char *text, int32_t length, int64_t expected,
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value),
    void (*set_fn)(void *user, const char *text, ORUDoValue *value), void *user);

/* Replaces the context's error; a null context is ignored, a null text is a null message. */
ORU_API void oru_do_json_ctx_data_set_err(ORUDoJsonCtxData *ctx, int32_t code, const char *text);

/* Releases a context with its error and the object that nobody took. Null is ignored. */
ORU_API void oru_do_json_delete_ctx_data(ORUDoJsonCtxData *ctx);

/* Releases one reference to an object of a JSON type. Null is ignored. */
ORU_API void oru_do_json_free_obj(int64_t type, void *object);

/*
 * The first row of the table for a tag, a JSON type code or a value type code; null when there is
 * none. A tag is compared over its `length` bytes, so the beginning of a tag will do.
 */
ORU_API const oru_json_type_info *oru_json_get_type_info(const char *text, int32_t length);
ORU_API const oru_json_type_info *oru_json_get_type_info_by_type_code(int64_t code);
ORU_API const oru_json_type_info *oru_json_get_type_info_by_value_type_code(int32_t code);

/* Clears `errno` and feeds yajl's parser `handle`; the result is yajl's status. */
struct yajl_handle_t;
ORU_API int32_t oru_do_yajl_parse(struct yajl_handle_t *handle, const char *text, size_t length);

/* ---- Expressions ----
 * {"_add()":[1,"$n"]}: functions of values, which are computed where they are closed, innermost
 * first, in every text that is read. docs/expressions.md tells them. */

/*
 * Evaluates a text. `resolve_fn` gives the value of a reference, a new reference, or null;
 * `default_value` is what to give for one that is not known. `set_fn` stores a value. Both may be
 * null, both get `user`.
 *
 * The result is a new value for the caller; null for a text that gives none. `errp`, which may be
 * null, gets a reference to the last error whenever there was one, with a value or without.
 *
 * A division by zero, or of the lowest number by -1, ends the process with the processor's fault.
 */
ORU_API ORUDoValue *oru_do_json_eval_expr(
    const char *text, int32_t length,
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value),
    void (*set_fn)(void *user, const char *text, ORUDoValue *value), void *user, ORUDoError **errp);

/* One function by its JSON type code, of a list of arguments that is not null. A new value; null
   for a code that is no function and when there is none. An error overwrites `*errp`. */
ORU_API ORUDoValue *oru_do_json_eval_expr_internal(
    int64_t code, ORUDoVlist *args,
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value),
    void (*set_fn)(void *user, const char *text, ORUDoValue *value), void *user, ORUDoError **errp);

/* What the rows of functions in the table of types call: the value, or null with the failure in the
   context. */
ORU_API void *oru_json_expr_deser(ORUDoJsonCtxData *ctx, ORUDoJsonTmpObj *element);

/* ---- Files and stored texts ---- */

/*
 * Read an object from a file. 0; the code of oru_read_file when that fails, traced at level 3; the
 * code of the reader's error, or 10000 without one, traced at level 3 as well. `*plist`, `*props`
 * and `*nlist` hold what was read, also beside an error, and stay as they are when there is no
 * text. Assert "filename" and the place of the result.
 */
ORU_API int32_t oru_json_file_to_prop_list(const char *filename, ORUDoPropertiesList **plist);
ORU_API int32_t oru_json_file_to_properties(const char *filename, ORUDoProperties **props);
ORU_API int32_t oru_json_file_to_nlist(const char *filename, ORUDoNlist **nlist);

/*
 * The pending attributes that a provider keeps as a text in `val`: a new table in `*out`, an empty
 * one for a null value. 0; 10002 when memory runs out for that; otherwise the code of what is wrong
 * with the value or the text, which `holder` is told too.
 */
ORU_API int32_t oru_pending_attrs_from_oru_do_value_to_properties(ORUErrorIfc *holder,
                                                                  ORUDoValue *val,
                                                                  ORUDoProperties **out);

/* ---- Life ---- */

/* Sizes the pool of the reader's records. */
ORU_API void *init_chunk_poolheap_json(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
