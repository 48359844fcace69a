/*
 * The embedded back end, liborudbal.so: a store in a file or in memory, under a model that it
 * checks every change against. It is what `oru_lib_init` opens unless the environment names another
 * back end. How it is used:
 *
 *     ORUEmbeddedOptions options = {.size = sizeof options, .database = "network.db",
 *                                   .model_dir = "packages",
 *                                   .root_type = "com.example.network:1.0/System"};
 *     oru_lib_init(NULL, 0, &options);
 *
 *     ORUEmbeddedSession *session = NULL;
 *     ORUDoNvlist *params = oru_do_nvlist_new();
 *     oru_cl_session_open(params, (intptr_t)&session, 0);
 *     ... session->data, session->coll, session->commit ...
 *     oru_cl_session_close((intptr_t)session, 0, 0, 0, 0, 0);
 *
 * Records carry their own size, so that they can grow. What is zero or null in the options has a
 * default.
 */
#ifndef ORUEMBEDDED_H
#define ORUEMBEDDED_H

#include <oru/oru.h>
#include <stddef.h>

ORU_BEGIN_DECLS

/* ---- Start ---- */

/* What a commit survives. */
enum {
    ORU_EMBEDDED_DURABLE = 0, /* the loss of power: a commit ends when it is on disk */
    ORU_EMBEDDED_RELAXED = 1, /* the death of the process only; many times faster */
};

typedef struct ORUEmbeddedOptions {
    size_t size;           /* of this record */
    const char *database;  /* the file; null or empty: in memory, gone with the process */
    const char *model_dir; /* a folder of packages, read unless the process has metadata already;
                              null: see `bundles` */
    const char *root_type; /* the qualified name of the type of the root; required */
    const char *location;  /* the address of the root; null: `oru_get_default_root_uri_str` */
    const char *key_file;  /* the key for secrets that are read back, made when it is missing; null:
                              the name of the database and ".key" */
    int32_t durability;    /* ORU_EMBEDDED_DURABLE or ..._RELAXED */
    uint32_t busy_milliseconds; /* how long a commit waits for one of another process; 0: 5,000 */
    uint32_t keep_commits;  /* an old commit is forgotten when there are this many newer ones, */
    uint32_t keep_seconds;  /* and it is this old; 0: 1,000 and 3,600 */
    intptr_t pool_elements; /* elements in each pool of the library; 0: no pools */

    /*
     * Is told why this start or a session of it was refused: with the code that the call gives, and
     * words with the file and what the system said. The error is lent. Called on the thread of the
     * call before that returns, which may be several at once; `context` is `report_context`, which
     * lives until the next start that succeeds, or the shutdown. Null: nobody. The words are traced
     * at level 3, too.
     */
    void (*report)(void *context, ORUDoError *error);
    void *report_context;

    /*
     * In place of `model_dir`, a null-terminated list of folders: at each start they are made the
     * active bundles by `oru_md_load_pkg_list`, so that bundle B is what lies in
     * "B/usr/halden/etc/oru2d", and a later start with another list changes what is loaded. Lent
     * for the start. A list that fails gives the code of that call, and leaves no metadata. Both,
     * and an empty list: 10000, and the metadata stay as they are. Neither: the process loads them
     * before its first session.
     */
    const char *const *bundles;

    /* What a commit may hold, at most; beyond it is refused with faults. 0, and what is more than
       the defaults: those. */
    uint32_t commit_rows; /* rows that are written: resources, references and secondary keys;
                             1,000,000 */
    uint32_t value_bytes; /* of one attribute; 67,108,864 */
} ORUEmbeddedOptions;

/* ---- Sessions ---- */

/* Operations of a commit, as `oru_do_config_op_new` takes them. */
enum {
    ORU_EMBEDDED_OP_CREATE = 1, /* a child of `mr_uri` under `child_ref_name`, of the type
                                   `mr_name`; its keys are among the properties */
    ORU_EMBEDDED_OP_SET =
        2, /* the properties of `mr_uri`; a null or default value takes one away */
    ORU_EMBEDDED_OP_DELETE = 3, /* `mr_uri` and everything below it */
};

/* How a commit is carried out. */
enum {
    ORU_EMBEDDED_DRY_RUN = 1, /* check everything, write nothing */
    ORU_EMBEDDED_SYSTEM = 2, /* as a provider: operational data too, whatever access the model gives
                                to clients */
};

typedef struct ORUEmbeddedSession ORUEmbeddedSession;

/*
 * What a client session lends until it is closed. One thread at a time.
 *
 * Parameters of `oru_cl_session_open`, all of them strings: "user", who the commits are recorded
 * for; "secrets" with "show", to read secrets as they are.
 */
struct ORUEmbeddedSession {
    size_t size; /* of this record */
    ORUDataIfc *data;
    ORUCollIfc *coll;

    /*
     * Carries out the operations as one change: all of them or none. They are checked against the
     * model first, as they leave the resources, and every fault is told at once. `request`, which
     * may be null, names the change: a second one of that name, while the first is kept, does
     * nothing and succeeds. `revision`, which may be null, gets the number of the commit, 0 when
     * nothing was written.
     *
     * 0; the code of the first fault, with all of them in `*error`, which is the caller's and may
     * be null: code and words, the resources as chain of causes, their attributes as property
     * errors; 104 when another process writes for too long; 15 when the database fails; 10002.
     */
    int32_t (*commit)(ORUEmbeddedSession *session, ORUDoConfigOps *operations, uint32_t flags,
                      const char *request, int64_t *revision, ORUDoError **error);
};

ORU_END_DECLS

#endif
