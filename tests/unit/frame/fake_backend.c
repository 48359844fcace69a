/* A back end that tells what it was handed. With FAKE_BACKEND_BARE it has an initialisation only.
 */
#include <oru/base.h>

ORU_API int32_t _oru_lib_init(intptr_t backend_arg, void *backend_ctx);
ORU_API int32_t _oru_lib_init(intptr_t backend_arg, void *backend_ctx) {
    *(intptr_t *)backend_ctx += backend_arg;
    return 4711;
}

ORU_API int32_t other_init(intptr_t backend_arg, void *backend_ctx);
ORU_API int32_t other_init(intptr_t backend_arg, void *backend_ctx) {
    (void)backend_arg;
    (void)backend_ctx;
    return 42;
}

#ifndef FAKE_BACKEND_BARE

/* Each entry gives its number and its six words as one decimal number. */
#define ENTRY(name, number)                                                                       \
    ORU_API intptr_t name(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,        \
                          intptr_t a6);                                                           \
    ORU_API intptr_t name(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,        \
                          intptr_t a6) {                                                          \
        return number * 1000000 + a1 * 100000 + a2 * 10000 + a3 * 1000 + a4 * 100 + a5 * 10 + a6; \
    }

ENTRY(_oru_lib_shutdown, 1)
ENTRY(_oru_location_get_canonical_name, 2)
ENTRY(_oru_location_from_canonical_name, 3)
ENTRY(_oru_location_get_location_keys, 4)
ENTRY(_oru_location_from_location_keys, 5)
ENTRY(_oru_cl_session_close, 6)
ENTRY(_oru_pr_session_close, 7)
ENTRY(_oru_ev_session_close, 8)
ENTRY(_oru_ev_session_open, 9)

/* The opens with parameters tell through their third word what they were handed. */
#define OPEN_ENTRY(name, number)                                  \
    ORU_API intptr_t name(void *params, intptr_t a2, void **a3);  \
    ORU_API intptr_t name(void *params, intptr_t a2, void **a3) { \
        *a3 = params;                                             \
        return number * 100 + a2;                                 \
    }

OPEN_ENTRY(_oru_cl_session_open, 1)
OPEN_ENTRY(_oru_pr_session_open, 2)

#endif
