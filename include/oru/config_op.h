/*
 * ORUDoConfigOp: one change to one managed resource: an operation code, the URI that it works on,
 * the properties that it sets, and the names that place it. ORUDoConfigOps: an ordered set of them,
 * the unit in which configuration moves between client and provider.
 *
 * The library only carries operations: it executes none, and but for
 * `oru_do_properties_list_to_config_ops` it neither writes nor reads their codes, on which client
 * and back end agree. Operations may stand in several sets at a time. Only the reference counts are
 * safe among threads.
 */
#ifndef ORU_CONFIG_OP_H
#define ORU_CONFIG_OP_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Operations: making ----
 * The results belong to the caller; null when memory runs out. */

/* An operation that shares the objects, each of which may be null. `mr_uri` is that of the resource
   or, for an operation that makes a child, of its parent. */
ORU_API ORUDoConfigOp *oru_do_config_op_new(int32_t op_code, ORUDoUri *mr_uri,
                                            ORUDoProperties *props, ORUDoName *child_ref_name,
                                            ORUDoName *mr_name, ORUDoName *lib_mr_name);

/* A deep copy: nothing is shared, and the URI is parsed anew when it is needed. The error is not
   copied. Asserts "op". */
ORU_API ORUDoConfigOp *oru_do_config_op_clone(ORUDoConfigOp *op);

/* ---- Operations: reading ----
 * Results are borrowed, null where there is nothing. All assert "op". */
ORU_API int32_t oru_do_config_op_get_op_code(ORUDoConfigOp *op);
ORU_API int32_t oru_do_config_op_is_noop(ORUDoConfigOp *op);
ORU_API ORUDoUri *oru_do_config_op_get_mr_uri(ORUDoConfigOp *op);
ORU_API ORUDoProperties *oru_do_config_op_get_props(ORUDoConfigOp *op);
ORU_API ORUDoProperties *oru_do_config_op_get_pr_props(ORUDoConfigOp *op);
ORU_API ORUDoName *oru_do_config_op_get_child_ref_name(ORUDoConfigOp *op);
ORU_API ORUDoName *oru_do_config_op_get_mr_name(ORUDoConfigOp *op);
ORU_API ORUDoName *oru_do_config_op_get_new_mr_name(ORUDoConfigOp *op); /* the same field */
ORU_API ORUDoName *oru_do_config_op_get_lib_mr_name(ORUDoConfigOp *op);
ORU_API ORUDoError *oru_do_config_op_get_err(ORUDoConfigOp *op);

/* ---- Operations: changing ----
 * All assert "op". Objects are shared and replace the earlier one; null clears but for the
 * properties, which are asserted as "props". */
ORU_API void oru_do_config_op_set_op_code(ORUDoConfigOp *op, int32_t op_code);
ORU_API void oru_do_config_op_set_mr_uri(ORUDoConfigOp *op, ORUDoUri *mr_uri);
ORU_API void oru_do_config_op_set_props(ORUDoConfigOp *op, ORUDoProperties *props);
ORU_API void oru_do_config_op_set_child_ref_name(ORUDoConfigOp *op, ORUDoName *child_ref_name);
ORU_API void oru_do_config_op_set_mr_name(ORUDoConfigOp *op, ORUDoName *mr_name);
ORU_API void oru_do_config_op_set_lib_mr_name(ORUDoConfigOp *op, ORUDoName *lib_mr_name);

/* Non-zero marks an operation that is to be dropped, see oru_do_config_ops_remove_noops. */
ORU_API void oru_do_config_op_set_noop(ORUDoConfigOp *op, int32_t noop);

/* Replaces the error and takes over the caller's reference. */
ORU_API void oru_do_config_op_set_err(ORUDoConfigOp *op, ORUDoError *err);

/* Gives the provider its own table of the same names and values, when the operation has properties.
   An earlier table of the provider is not released. */
ORU_API void oru_do_config_op_init_pr_ops(ORUDoConfigOp *op);

/* ---- Operations: printing ---- */

/* Appends "(URI:code:child:name:error) properties", with "-" for a missing child, and without name
   and error where they are missing. `tabs` is not looked at. A null operation adds nothing. Result
   0. */
ORU_API int32_t oru_do_config_op_to_strbuf(ORUDoConfigOp *op, int32_t tabs, ORUDoStrbuf *strbuf);

/* Traces the text and a newline at level 7, when the logger's level is at least `level`. */
ORU_API void oru_do_config_op_trace(ORUDoConfigOp *op, uint32_t level);

/* ---- Operations: life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoConfigOp *oru_do_config_op_ref(ORUDoConfigOp *op);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_config_op_deref(ORUDoConfigOp *op);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_config_op(intptr_t count, uintptr_t flags);

/* ---- Sets: making ----
 * The results belong to the caller; null when memory runs out. An operation whose item finds no
 * memory, which is traced at level 3, is left out. They assert "ops". */

/* An empty set. */
ORU_API ORUDoConfigOps *oru_do_config_ops_new(void);

/* A set of copies. Null when an operation cannot be copied. */
ORU_API ORUDoConfigOps *oru_do_config_ops_clone(ORUDoConfigOps *ops);

/* A set with the same operations, shared, in reverse order. */
ORU_API ORUDoConfigOps *oru_do_config_ops_reverse_order(ORUDoConfigOps *ops);

/* ---- Sets: reading ----
 * They assert "config_ops". Operations are borrowed. */

/* How many operations there are; the set is walked. */
ORU_API int32_t oru_do_config_ops_get_len(ORUDoConfigOps *config_ops);

/* The operation at `index` from 0, or null. */
ORU_API ORUDoConfigOp *oru_do_config_ops_get_op(ORUDoConfigOps *config_ops, int32_t index);

/* The last operation; null for an empty set. */
ORU_API ORUDoConfigOp *oru_do_config_ops_get_last_op(ORUDoConfigOps *config_ops);

/* Walking, see oru/iter.h. `_has_next` asserts "iter->coll_type == DO_COLL_CONFIG_OPS". `_get_next`
   gives null at the end. */
ORU_API void oru_do_config_ops_iter(ORUDoConfigOps *config_ops, ORUDoIter *iter);
ORU_API int32_t oru_do_config_ops_has_next(ORUDoIter *iter);
ORU_API ORUDoConfigOp *oru_do_config_ops_get_next(ORUDoIter *iter);

/* ---- Sets: changing ---- */

/* Append an operation, made of the arguments as oru_do_config_op_new does, or a shared one. The
   result is the new length; 0 when memory runs out, which is traced at level 3 for an item. They
   assert "ops", and "op". */
ORU_API int32_t oru_do_config_ops_add(ORUDoConfigOps *ops, int32_t op_code, ORUDoUri *mr_uri,
                                      ORUDoProperties *props, ORUDoName *child_ref_name,
                                      ORUDoName *mr_name, ORUDoName *lib_mr_name);
ORU_API int32_t oru_do_config_ops_add_op(ORUDoConfigOps *ops, ORUDoConfigOp *op);

/* Appends all operations of `new_ops` in order, shared; one that finds no memory is left out.
   Asserts "config_ops" and "new_ops". */
ORU_API void oru_do_config_ops_add_ops(ORUDoConfigOps *config_ops, ORUDoConfigOps *new_ops);

/* Takes out the operation at `index` from 0. A null set and an index out of range are ignored. */
ORU_API void oru_do_config_ops_remove(ORUDoConfigOps *config_ops, int32_t index);

/* Takes out all operations that are marked so, and gives how many. Asserts "config_ops". */
ORU_API int32_t oru_do_config_ops_remove_noops(ORUDoConfigOps *config_ops);

/* oru_do_config_op_init_pr_ops on each. Asserts "config_ops". */
ORU_API void oru_do_config_ops_init_pr_ops(ORUDoConfigOps *config_ops);

/*
 * Appends the operations, of code 1, that create the resources of a read again: one for each table,
 * on the parent of its `_uri`, with the reference that leads from there and the type name `_mr`.
 * The properties are those of the table but for these two and for values of the types null, anyURI,
 * mrURI and collURI. `location_uri`, which may be null, makes URIs absolute. With `check_keys` a
 * table that has nothing but primary keys makes no operation; the types are looked up in the
 * metadata, whose lock the caller holds.
 *
 * 0, or the code of the first table that failed, with what was appended before it left there: 10000
 * for a missing or unknown `_mr` with `check_keys`, for a missing `_uri` and for one without
 * segments; 101 for a `_uri` or `_mr` of another type or without a value; 10002 when memory runs
 * out. All failures are traced at level 3. Asserts "properties_list" and "config_ops".
 */
ORU_API int32_t oru_do_properties_list_to_config_ops(ORUDoPropertiesList *properties_list,
                                                     ORUDoConfigOps *config_ops,
                                                     ORUDoUri *location_uri, int32_t check_keys);

/* ---- Sets: printing ---- */

/* Appends "[", the operations separated by ", ", and "]". `tabs` is not looked at. A null set adds
   nothing. Result 0. */
ORU_API int32_t oru_do_config_ops_to_strbuf(ORUDoConfigOps *config_ops, int32_t tabs,
                                            ORUDoStrbuf *strbuf);

/* Traces the text and a newline at level 7, when the logger's level is at least `level`. */
ORU_API void oru_do_config_ops_trace(ORUDoConfigOps *config_ops, uint32_t level);

/* ---- Sets: life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoConfigOps *oru_do_config_ops_ref(ORUDoConfigOps *config_ops);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_config_ops_deref(ORUDoConfigOps *config_ops);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_config_ops(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
