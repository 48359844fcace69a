/* The entry points that the library looks up. */
#include <stdlib.h>

#include "collection.h"
#include "data.h"
#include "memory_backend.h"

static struct store network;

struct session {
    struct memory_session lent; /* first: what the client sees */
    struct data data;
    struct collection collection;
};

ORU_API int32_t _oru_lib_init(intptr_t backend_arg, void *backend_ctx);
ORU_API intptr_t _oru_lib_shutdown(void);
ORU_API intptr_t _oru_cl_session_open(ORUDoNvlist *params, intptr_t out_session, intptr_t unused);
ORU_API intptr_t _oru_cl_session_close(intptr_t session);

int32_t _oru_lib_init(intptr_t backend_arg, void *backend_ctx) {
    const struct memory_backend_options *options = backend_ctx;
    (void)backend_arg;
    if (options->size < sizeof *options)
        return ORU_RC_GENERAL;
    store_free(&network);
    return store_load(&network, options->data_file);
}

intptr_t _oru_lib_shutdown(void) {
    store_free(&network);
    return ORU_OK;
}

intptr_t _oru_cl_session_open(ORUDoNvlist *params, intptr_t out_session, intptr_t unused) {
    (void)params;
    (void)unused;
    struct session *session = calloc(1, sizeof *session);
    if (session == NULL)
        return ORU_RC_MALLOC;
    int32_t rc = data_init(&session->data, &network);
    if (rc != ORU_OK) {
        free(session);
        return rc;
    }
    collection_init(&session->collection, &network);
    session->lent.data = &session->data.table;
    session->lent.coll = &session->collection.table;
    *(struct memory_session **)out_session = &session->lent;
    return ORU_OK;
}

intptr_t _oru_cl_session_close(intptr_t handle) {
    struct session *session = (struct session *)handle;
    if (session != NULL)
        data_free(&session->data);
    free(session);
    return ORU_OK;
}
