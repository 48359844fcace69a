/*
 * A back end that keeps a network's data in memory: the smallest one that answers queries. It reads
 * a JSON properties list at start-up, one table of properties a resource, each with its address
 * under `_uri` and its type under `_mr`.
 *
 * What a process hands over and gets back:
 *
 *     struct memory_backend_options options = {sizeof options, "data.json"};
 *     oru_lib_init(NULL, 0, &options);
 *
 *     struct memory_session *session = NULL;
 *     ORUDoNvlist *params = oru_do_nvlist_new();
 *     oru_cl_session_open(params, (intptr_t)&session, 0);
 *     ... session->data, session->coll ...
 *     oru_cl_session_close((intptr_t)session, 0, 0, 0, 0, 0);
 *
 * Sessions belong to one thread at a time; the data is read only while the process runs, but for
 * what actions change.
 */
#ifndef MEMORY_BACKEND_H
#define MEMORY_BACKEND_H

#include <oru/pr.h>
#include <stddef.h>

struct memory_backend_options {
    size_t size;           /* of this record, so that it can grow */
    const char *data_file; /* the properties list */
};

/* What a client session lends until it is closed. */
struct memory_session {
    ORUDataIfc *data;
    ORUCollIfc *coll;
};

#endif
