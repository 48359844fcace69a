/*
 * Runs a document against a network and prints what each call answers.
 *
 *     query MODEL DATA DOCUMENT COUNT [NAME=VALUE ...]
 *
 * MODEL is a folder of package files, DATA what the back end in memory reads, DOCUMENT a file of
 * the data tree language, COUNT how many leaf rows a call shall answer (0: all). A NAME=VALUE is a
 * parameter of the document; the value is JSON, or else a text. Each call's tree is printed as
 * JSON, one line each, and at the end the result in words.
 *
 * The back end is the library that ORU_DEFAULT_LIB names.
 */
#include <oru/oru.h>
#include <stdlib.h>
#include <string.h>

#include "memory_backend/memory_backend.h"

static int fail(const char *what, int32_t rc, ORUDoError *error) {
    const char *words = error != NULL ? oru_do_error_get_msg(error) : oru_do_get_err_msg(rc);
    fprintf(stderr, "%s: %s\n", what, words);
    oru_do_error_deref(error);
    return 1;
}

/* ---- Parameters ---- */

static ORUDoValue *read_value(const char *text) {
    ORUDoError *error = NULL;
    ORUDoValue *value = oru_do_value_from_json(text, (int32_t)strlen(text), &error);
    oru_do_error_deref(error);
    return value != NULL ? value : oru_do_value_new_string(text);
}

static ORUDoNvlist *read_params(int count, char **texts) {
    ORUDoNvlist *params = oru_do_nvlist_new();
    for (int i = 0; i < count; i++) {
        const char *equal = strchr(texts[i], '=');
        if (equal == NULL)
            continue;
        ORUDoValue *value = read_value(equal + 1);
        oru_do_nvlist_add_l(params, texts[i], (int32_t)(equal - texts[i]), value);
        oru_do_value_deref(value);
    }
    return params;
}

/* ---- The model ---- */

static int load_model(const char *folder) {
    ORUMdPkgBundle *bundle = NULL;
    oru_md_set_root_mr_type("com.example.network:1.0/System");
    int32_t rc = oru_md_load_dir(folder, "", ".oru2d", &bundle);
    if (rc != ORU_OK)
        return fail(folder, rc, NULL);
    return bundle != NULL ? 0 : fail(folder, ORU_RC_METADATA, NULL);
}

/* ---- Running a document ---- */

static void print_tree(ORUDoDtree *tree) {
    ORUDoStrbuf *text = oru_do_strbuf_new();
    oru_do_dtree_to_json(tree, text);
    oru_do_strbuf_add_char(text, '\n');
    oru_do_strbuf_print_fp(text, stdout);
    oru_do_strbuf_deref(text);
}

/* A call answers 0 as long as more may follow; the last one may bring rows too. Rows of earlier
   calls go when the walk comes back to their place, and after its end when we let them go. */
static int32_t run(ORUDtlCtx *ctx, ORUDataIfc *data, ORUDoNvlist *params, int32_t count) {
    int32_t rc = ORU_OK;
    for (int call = 1; rc == ORU_OK; call++) {
        rc = oru_dtl_get_next(data, ctx, params, count);
        if (oru_do_dtree_get_unhidden_child_count(ctx->dtree_node) == 0)
            continue;
        printf("-- call %d\n", call);
        print_tree(ctx->dtree_node);
        if (ctx->state == ORU_DTL_STATE_FINISHED)
            oru_do_dtree_remove_children(ctx->dtree_node);
    }
    printf("-- %s\n", oru_do_get_err_msg(rc));
    return rc;
}

static ORUDtlNode *read_document(const char *file, ORUDoError **error) {
    oru_md_rdlock();
    ORUDtlNode *document = oru_dtl_from_file(file, error);
    oru_md_unlock();
    return document;
}

static int query(struct memory_session *session, const char *file, int32_t count,
                 ORUDoNvlist *params) {
    ORUDoError *error = NULL;
    ORUDtlNode *document = read_document(file, &error);
    if (document == NULL)
        return fail(file, ORU_RC_GENERAL, error);
    if (error != NULL)
        fail(file, ORU_RC_GENERAL, error);

    ORUDtlCtx *ctx = oru_dtl_ctx_new(document, session->data, session->coll);
    int32_t rc = ctx != NULL ? run(ctx, session->data, params, count) : ORU_RC_MALLOC;
    oru_dtl_ctx_delete(ctx);
    oru_dtl_tree_delete(document);
    return rc > ORU_RC_NO_MORE_VALUE;
}

int main(int argc, char **argv) {
    if (argc < 5) {
        fprintf(stderr, "usage: %s MODEL DATA DOCUMENT COUNT [NAME=VALUE ...]\n", argv[0]);
        return 2;
    }
    struct memory_backend_options options = {sizeof options, argv[2]};
    int32_t rc = oru_lib_init(NULL, 0, &options);
    if (rc != ORU_OK)
        return fail(argv[2], rc, NULL);
    int status = load_model(argv[1]);

    ORUDoNvlist *session_params = oru_do_nvlist_new();
    struct memory_session *session = NULL;
    if (status == 0 && oru_cl_session_open(session_params, (intptr_t)&session, 0) == ORU_OK) {
        ORUDoNvlist *params = read_params(argc - 5, argv + 5);
        status = query(session, argv[3], atoi(argv[4]), params);
        oru_do_nvlist_deref(params);
        oru_cl_session_close((intptr_t)session, 0, 0, 0, 0, 0);
    }
    oru_do_nvlist_deref(session_params);
    oru_md_free();
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    return status;
}
