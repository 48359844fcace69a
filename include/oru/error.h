/*
 * What went wrong. ORUDoError carries a result code with a message for operators, may chain to a
 * cause, and may hold errors of single properties, ORUDoPropErrs. ORUDoErrorList is a plain list.
 * All three are reference counted and finished before they are shared.
 */
#ifndef ORU_ERROR_H
#define ORU_ERROR_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Errors: making ----
 * The results belong to the caller; null when memory runs out. An error whose message alone could
 * not be had comes back without one. */

/* An error with a copy of `msg`, which may be null. `_l` takes `n` bytes of it. */
ORU_API ORUDoError *oru_do_error_new(int32_t code, const char *msg);
ORU_API ORUDoError *oru_do_error_new_l(int32_t code, const char *msg, int32_t n);

/* The message by printf, cut at 255 characters. A format that cannot be printed becomes the
   message itself. */
ORU_API ORUDoError *oru_do_error_new_fmt(int32_t code, const char *format, ...) ORU_PRINTF(2, 3);
ORU_API ORUDoError *oru_do_error_new_va(int32_t code, const char *format, va_list args)
    ORU_PRINTF(2, 0);

/* The current `errno` with the system's text for it. Such a code is not one of `oru/rc.h`. */
ORU_API ORUDoError *oru_do_error_new_syserr(void);

/* As `oru_do_error_new`, with a cause, which may be null. */
ORU_API ORUDoError *oru_do_error_new_w_cause(int32_t code, const char *msg, ORUDoError *cause);

/* ---- Errors: changing ----
 * These assert "err" on null but for the first, which ignores it. */

/* Sets the code, one of oru/rc.h or any other number. */
ORU_API void oru_do_error_set_code(ORUDoError *err, int32_t code);

/* Replaces the cause. Null is ignored: the old one stays. */
ORU_API void oru_do_error_set_cause(ORUDoError *err, ORUDoError *cause);

/* Replaces the label that says which system the code belongs to by a copy of `text`, which is
   asserted. */
ORU_API void oru_do_error_set_namespace(ORUDoError *err, const char *text);

/* The same with `n` bytes of `text`; null clears. */
ORU_API void oru_do_error_set_namespace_l(ORUDoError *err, const char *text, int32_t n);

/* Sets the error of one property, as `oru_do_prop_errs_set_err`; the set is made when it is
   missing. */
ORU_API void oru_do_error_set_prop_err(ORUDoError *err, ORUDoName *name, ORUDoError *prop_err);

/* Replaces the whole set; null clears. */
ORU_API void oru_do_error_set_prop_errs(ORUDoError *err, ORUDoPropErrs *prop_errs);

/* ---- Errors: reading ----
 * Results are borrowed, null where there is nothing. These assert "err" on null. */
ORU_API int32_t oru_do_error_get_code(ORUDoError *err);
ORU_API const char *oru_do_error_get_msg(ORUDoError *err);
ORU_API ORUDoError *oru_do_error_get_cause(ORUDoError *err);
ORU_API const char *oru_do_error_get_namespace(ORUDoError *err);
ORU_API ORUDoPropErrs *oru_do_error_get_prop_errs(ORUDoError *err);

/* Non-zero when code and message are equal; nothing else matters. Asserts "error1"; a null second
   error is not equal. */
ORU_API int32_t oru_do_error_equals(ORUDoError *error1, ORUDoError *err2);

/* ---- Errors: printing ----
 * Of an error that has a message ("err->msg" is asserted); so have its causes and the errors of its
 * properties. The result is 0. */

/* Appends the error, its cause and its property errors, indented by `tabs` tabs. A null error adds
   nothing. Asserts "strbuf". */
ORU_API int32_t oru_do_error_to_strbuf(ORUDoError *err, int32_t tabs, ORUDoStrbuf *strbuf);

/* Prints the same on a stream; nothing when memory runs out. */
ORU_API int32_t oru_do_print_error(FILE *stream, int32_t tabs, ORUDoError *err);

/* ---- Errors of properties ----
 * At most one for each name, in the order in which the names were first set. These assert
 * "prop_errs" and "name" on null unless told otherwise. */

/* An empty set, or null when memory runs out. */
ORU_API ORUDoPropErrs *oru_do_prop_errs_new(void);

/* Sets the error of a name: replaces the one of an equal name, or adds an entry at the end. Asserts
   "err" too. Nothing happens when memory runs out. */
ORU_API void oru_do_prop_errs_set_err(ORUDoPropErrs *prop_errs, ORUDoName *name, ORUDoError *err);

/* The error of a name, borrowed, or null. */
ORU_API ORUDoError *oru_do_prop_errs_get_err(ORUDoPropErrs *prop_errs, ORUDoName *name);
ORU_API ORUDoError *oru_do_prop_errs_get_err_w_strname(ORUDoPropErrs *prop_errs, const char *name);

/* Releases all entries, for an owner that is about to abandon the set: it is not to be used
   again. */
ORU_API void oru_do_prop_errs_clear(ORUDoPropErrs *prop_errs);

/* Iteration, DO_COLL_PROP_ERRS. `_get_next` gives the entry, borrowed, or null at the end. */
ORU_API void oru_do_prop_errs_iter(ORUDoPropErrs *prop_errs, ORUDoIter *iter);
ORU_API int32_t oru_do_prop_errs_has_next(ORUDoIter *iter);
ORU_API ORUDoPropErr *oru_do_prop_errs_get_next(ORUDoIter *iter);

/* Read an entry; borrowed. Assert "prop_err". */
ORU_API ORUDoName *oru_do_prop_err_get_name(ORUDoPropErr *prop_err);
ORU_API ORUDoError *oru_do_prop_err_get_err(ORUDoPropErr *prop_err);

/* Replaces the name of an entry; a null name is ignored. Asserts "prop_err". */
ORU_API void oru_do_prop_err_set_name(ORUDoPropErr *prop_err, ORUDoName *name);

/* Appends the set in braces, indented by `tabs` tabs. A null set adds nothing. Asserts "strbuf".
   The result is 0. */
ORU_API int32_t oru_do_prop_errs_to_strbuf(ORUDoPropErrs *prop_errs, int32_t tabs,
                                           ORUDoStrbuf *strbuf);

/* ---- Lists of errors ---- */

/* An empty list, or null when memory runs out. */
ORU_API ORUDoErrorList *oru_do_error_list_new(void);

/* Appends an error and gives the new length; -1 for a null argument and when memory runs out. */
ORU_API int32_t oru_do_error_list_add(ORUDoErrorList *list, ORUDoError *err);

/* Appends all errors of `src`, but for those that memory runs out for, and gives the new length.
   Asserts "dst" and "src". */
ORU_API int32_t oru_do_error_list_add_all(ORUDoErrorList *dst, ORUDoErrorList *src);

/* Iteration, DO_COLL_ERROR_LIST; the errors are borrowed. Asserts "list". */
ORU_API void oru_do_error_list_iter(ORUDoErrorList *list, ORUDoIter *iter);
ORU_API int32_t oru_do_error_list_has_next(ORUDoIter *iter);
ORU_API ORUDoError *oru_do_error_list_get_next(ORUDoIter *iter);

/* The length; -1 for a null list. */
ORU_API int32_t oru_do_error_list_get_len(ORUDoErrorList *list);

/* The error at an index from 0, borrowed, or null. Asserts "list". */
ORU_API ORUDoError *oru_do_error_list_get_error(ORUDoErrorList *list, int32_t index);

/* Empties the list, which stays usable; null is ignored. */
ORU_API void oru_do_error_list_clear(ORUDoErrorList *list);

/* Non-zero when both lists have equal errors in the same order. Asserts "errlist1" and
   "errlist2". */
ORU_API int32_t oru_do_error_list_equals(ORUDoErrorList *errlist1, ORUDoErrorList *errlist2);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoError *oru_do_error_ref(ORUDoError *err);
ORU_API ORUDoPropErrs *oru_do_prop_errs_ref(ORUDoPropErrs *prop_errs);
ORU_API ORUDoErrorList *oru_do_error_list_ref(ORUDoErrorList *list);

/* Release one reference; null is ignored. */
ORU_API void oru_do_error_deref(ORUDoError *err);
ORU_API void oru_do_prop_errs_deref(ORUDoPropErrs *prop_errs);
ORU_API void oru_do_error_list_deref(ORUDoErrorList *list);

/* Size the pools of the three records. */
ORU_API void *init_chunk_poolheap_oru_do_error(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_prop_errs(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_error_list(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
