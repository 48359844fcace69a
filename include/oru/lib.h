/*
 * The frame of the library: bringing it up, binding the back end, sessions and locations.
 *
 * A process calls `oru_lib_init` once, from one thread, before any other thread uses the library.
 * The first call that gets so far opens the back end and binds its entry points; they stay bound
 * for the rest of the process. Names come from the environment, `docs/environment.md` lists them.
 *
 * A broken installation ends the process: one message at trace level 0, then `abort`.
 */
#ifndef ORU_LIB_H
#define ORU_LIB_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* The component of all allocation tags of the library. */
#define ORU_TAG_COMPONENT 0x2900000u

/* ---- Bringing up ---- */

/*
 * Brings up the tagged allocator, tracing and the threading model, applies the environment, binds
 * the back end on the first call and initialises it on every call.
 *
 * `thread_setup`, which may be null, runs on the calling thread before the threading model is
 * announced; its result is ignored. `backend_arg` and `backend_ctx` are handed to the back end;
 * `backend_ctx` must not be null.
 *
 * The result is what a thread layer reported if that is not 0; 10000 for a null `backend_ctx`, in
 * which case tracing, threads and the properties limit are in force already; otherwise what the
 * back end's own initialisation gives. Fatal: a back end that cannot be opened, or that has no
 * initialisation.
 */
ORU_API int32_t oru_lib_init(int32_t (*thread_setup)(void), intptr_t backend_arg,
                             void *backend_ctx);

/* Registers the trace module before `oru_lib_init`, for a process that wants tracing earlier. The
   result is the tracer's. */
ORU_API int32_t oruapi_trace_init(void);

/*
 * Hands its words to the back end's shutdown and returns its result. Nothing is unloaded or
 * cleared. Fatal before the back end is bound, and when it has no shutdown.
 */
ORU_API intptr_t oru_lib_shutdown(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                                  intptr_t a6);

/* The back end's entry points for initialisation and shutdown; null until it is bound. */
extern ORU_API int32_t (*g_lib_init)(intptr_t backend_arg, void *backend_ctx);
extern ORU_API intptr_t (*g_lib_shutdown)(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                          intptr_t a5, intptr_t a6);

/* The number under which the tracer knows the library. */
extern ORU_API uint16_t g_oruapi_trace_module_id;

/* The name of an allocation tag; "error-wrong-component" or "oruapi-invalid" for a number that is
   none. The text is constant. */
ORU_API const char *tag_name_lookup(uint32_t tag);

/* ---- Locations ----
 * The first four go to the back end; what it does not offer of the first two is fatal, of the
 * other two a default of the library answers: `oru_location_get_location_keys` gives 2,
 * `oru_location_from_location_keys` gives -1 and writes 2 through its second word, a pointer to a
 * 32-bit status. Both trace at level 3. */
ORU_API intptr_t oru_location_get_canonical_name(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                                 intptr_t a5, intptr_t a6);
ORU_API intptr_t oru_location_from_canonical_name(intptr_t a1, intptr_t a2, intptr_t a3,
                                                  intptr_t a4, intptr_t a5, intptr_t a6);
ORU_API intptr_t oru_location_get_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                                intptr_t a5, intptr_t a6);
ORU_API intptr_t oru_location_from_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                                 intptr_t a5, intptr_t a6);

/* The two defaults. A back end that depends on the library may find them under these names. */
ORU_API intptr_t _oru_location_get_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                                 intptr_t a5, intptr_t a6);
ORU_API intptr_t _oru_location_from_location_keys(intptr_t a1, int32_t *status, intptr_t a3,
                                                  intptr_t a4, intptr_t a5, intptr_t a6);

/* 1: locations are always on. */
ORU_API int32_t oru_location_is_enabled(void);

/* Does nothing; locations take nothing from the environment. */
ORU_API void oru_location_update_from_env(void);

/* "//", the root of the whole system. */
ORU_API const char *oru_get_system_root_uri_str(void);

/* "//locations;locationId=global". */
ORU_API const char *oru_get_default_root_uri_str(void);

/* "global". */
ORU_API const char *oru_get_default_provider_scope(void);

/*
 * The identifier of the local node, asked of the operating layer once and kept in `locationidStr`.
 * Null when memory runs out. Two racing first calls leak one text; both results are valid.
 */
ORU_API const char *get_locationid_str(void);

/* The kept identifier; null until first asked. */
extern ORU_API char *locationidStr;

ORU_END_DECLS

#endif
