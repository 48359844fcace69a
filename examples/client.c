/*
 * A client of the embedded back end: commits a change, walks a document batch by batch, and has a
 * change refused with all that is wrong with it.
 *
 *     client DATABASE MODEL [DOCUMENT]
 *
 * DATABASE is a file, which is made when it is missing; MODEL is the folder of the packages of the
 * sample network, DOCUMENT a file of the data tree language.
 */
#include <inttypes.h>
#include <oru/oru.h>
#include <oruembedded.h>

static const char vlans[] =
    "<vlan uri='//locations;locationId=global?vlans' mr='com.example.network:1.0/Vlan'>"
    "<id/><name/><description/></vlan>";

/* Why the start or a session was refused, and what is wrong with a document. */
static void print_reason(void *what, ORUDoError *error) {
    fprintf(stderr, "%s: %s\n", (const char *)what, oru_do_error_get_msg(error));
}

/* ---- Reading ---- */

static void print_properties(ORUDoProperties *props) {
    ORUDoIter at;
    oru_do_iter_init(&at);
    for (oru_do_properties_iter(props, &at); oru_do_properties_has_next(&at);) {
        ORUDoProperty *property = oru_do_properties_get_next(&at);
        printf(" %s=", oru_do_property_get_name_string(property));
        oru_do_print_value(stdout, 0, oru_do_property_get_value(property));
    }
}

static void print_children(ORUDoDtree *node, int depth) {
    ORUDoIter at;
    oru_do_iter_init(&at);
    for (oru_do_dtree_child_iter(node, &at); oru_do_dtree_has_next_child(&at);) {
        ORUDoDtree *child = oru_do_dtree_get_next_child(&at);
        printf("%*s%s", 2 * depth, "", oru_do_name_get_strname(oru_do_dtree_get_name(child)));
        if (oru_do_dtree_get_properties(child) != NULL)
            print_properties(oru_do_dtree_get_properties(child));
        if (oru_do_dtree_get_error(child) != NULL)
            printf(" failed: %s", oru_do_error_get_msg(oru_do_dtree_get_error(child)));
        printf("\n");
        print_children(child, depth + 1);
    }
}

/* Each call answers up to two rows. 0 says that more may follow; the last call may bring some, too.
   The walk takes away the rows of earlier calls as it goes on, and leaves those of its end to us.
 */
static int32_t print_batches(ORUEmbeddedSession *session, ORUDtlCtx *ctx, ORUDoNvlist *params) {
    int32_t rc = ORU_OK;
    for (int call = 1; rc == ORU_OK; call++) {
        rc = oru_dtl_get_next(session->data, ctx, params, 2);
        if (oru_do_dtree_get_unhidden_child_count(ctx->dtree_node) == 0)
            continue;
        printf("call %d\n", call);
        print_children(ctx->dtree_node, 1);
        if (ctx->state == ORU_DTL_STATE_FINISHED)
            oru_do_dtree_remove_children(ctx->dtree_node);
    }
    return rc;
}

static int32_t walk(ORUEmbeddedSession *session, const char *file) {
    ORUDoError *error = NULL;
    oru_md_rdlock(); /* the document is checked against the model */
    ORUDtlNode *document =
        file != NULL ? oru_dtl_from_file(file, &error) : oru_dtl_from_str(vlans, &error);
    oru_md_unlock();
    int32_t rc = ORU_RC_GENERAL;
    if (error != NULL) {
        print_reason("document", error);
    } else {
        ORUDoNvlist *params = oru_do_nvlist_new(); /* values for $ in the document */
        ORUDtlCtx *ctx = oru_dtl_ctx_new(document, session->data, session->coll);
        rc = print_batches(session, ctx, params);
        printf("%s\n", oru_do_get_err_msg(rc));
        oru_dtl_ctx_delete(ctx);
        oru_do_nvlist_deref(params);
    }
    oru_dtl_tree_delete(document);
    oru_do_error_deref(error);
    return rc;
}

/* ---- Changing ---- */

static void print_attribute_faults(ORUDoPropErrs *faults) {
    ORUDoIter at;
    oru_do_iter_init(&at);
    for (oru_do_prop_errs_iter(faults, &at); oru_do_prop_errs_has_next(&at);) {
        ORUDoPropErr *entry = oru_do_prop_errs_get_next(&at);
        printf("    %s: %s\n", oru_do_name_get_strname(oru_do_prop_err_get_name(entry)),
               oru_do_error_get_msg(oru_do_prop_err_get_err(entry)));
    }
}

/* The resources are a chain of causes, each with the faults of its attributes. */
static void print_faults(ORUDoError *error) {
    printf("%s\n", oru_do_error_get_msg(error));
    while ((error = oru_do_error_get_cause(error)) != NULL) {
        printf("  %s\n", oru_do_error_get_msg(error));
        if (oru_do_error_get_prop_errs(error) != NULL)
            print_attribute_faults(oru_do_error_get_prop_errs(error));
    }
}

/* Carries out the operations as one change and releases them. One that bears a name is carried out
   once, however often it is sent. */
static int32_t commit(ORUEmbeddedSession *session, ORUDoConfigOps *ops, const char *request) {
    int64_t revision = 0;
    ORUDoError *error = NULL;
    int32_t rc = session->commit(session, ops, 0, request, &revision, &error);
    if (error != NULL)
        print_faults(error);
    else
        printf("committed as revision %" PRId64 "\n", revision);
    oru_do_error_deref(error);
    oru_do_config_ops_deref(ops);
    return rc;
}

static void create_vlan(ORUDoConfigOps *ops, uint16_t id, const char *name) {
    ORUDoUri *parent = oru_do_uri_new("/");
    ORUDoName *reference = oru_do_name_new("vlans");
    ORUDoProperties *props = oru_do_properties_new();
    oru_do_properties_set_unsigned_short(props, "id", id);
    oru_do_properties_set_string(props, "name", name);
    oru_do_config_ops_add(ops, ORU_EMBEDDED_OP_CREATE, parent, props, reference, NULL, NULL);
    oru_do_properties_deref(props);
    oru_do_name_deref(reference);
    oru_do_uri_deref(parent);
}

static int32_t change(ORUEmbeddedSession *session) {
    ORUDoConfigOps *ops = oru_do_config_ops_new();
    create_vlan(ops, 101, "guests");
    create_vlan(ops, 102, "cameras");
    create_vlan(ops, 103, "phones");
    return commit(session, ops, "the first change of client.c");
}

static int32_t bad_change(ORUEmbeddedSession *session) {
    ORUDoConfigOps *ops = oru_do_config_ops_new();
    create_vlan(ops, 5000, "");
    ORUDoUri *nobody = oru_do_uri_new("/vlans;id=999");
    oru_do_config_ops_add(ops, ORU_EMBEDDED_OP_DELETE, nobody, NULL, NULL, NULL, NULL);
    oru_do_uri_deref(nobody);
    return commit(session, ops, NULL);
}

int main(int argc, char **argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: %s DATABASE MODEL [DOCUMENT]\n", argv[0]);
        return 2;
    }
    ORUEmbeddedOptions options = {.size = sizeof options,
                                  .database = argv[1],
                                  .model_dir = argv[2],
                                  .root_type = "com.example.network:1.0/System",
                                  .report = print_reason,
                                  .report_context = argv[0]};
    if (oru_lib_init(NULL, 0, &options) != ORU_OK)
        return 1;

    ORUEmbeddedSession *session = NULL;
    ORUDoNvlist *params = oru_do_nvlist_new();
    oru_do_nvlist_add_string(params, "user", "client"); /* who the commits are recorded for */
    int status = oru_cl_session_open(params, (intptr_t)&session, 0) != ORU_OK;
    oru_do_nvlist_deref(params);
    if (status == 0) {
        status |= change(session) != ORU_OK;
        status |= walk(session, argc > 3 ? argv[3] : NULL) != ORU_RC_NO_MORE_VALUE;
        status |= bad_change(session) == ORU_OK;
        oru_cl_session_close((intptr_t)session, 0, 0, 0, 0, 0);
    }
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    oru_md_free();
    return status;
}
