#include "store.h"

#include <oruplatform/poolheap.h>
#include <stdlib.h>
#include <string.h>

static const char *text_of(ORUDoProperties *props, const char *name) {
    int32_t rc = 0;
    return oru_do_properties_get_string(props, name, &rc);
}

static int32_t index_resources(struct store *store) {
    store->count = oru_do_properties_list_get_len(store->list);
    store->resources = calloc((size_t)store->count + 1, sizeof *store->resources);
    if (store->resources == NULL)
        return ORU_RC_MALLOC;

    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_properties_list_iter(store->list, &iter);
    for (struct resource *at = store->resources; oru_do_properties_list_has_next(&iter); at++) {
        int32_t rc = 0;
        at->props = oru_do_properties_list_get_next(&iter);
        ORUDoUri *uri = oru_do_properties_get_mr_uri(at->props, ORU_DO_NAME_URI, &rc);
        at->type = text_of(at->props, ORU_DO_NAME_MR);
        if (uri == NULL || at->type == NULL) {
            fprintf(stderr, "resource %d has no _uri or no _mr\n", (int)(at - store->resources));
            return ORU_RC_PROPERTY;
        }
        at->uri = oru_do_uri_get_uri_str(uri);
    }
    return ORU_OK;
}

int32_t store_load(struct store *store, const char *path) {
    char *text = NULL;
    int32_t rc = oru_read_file(path, &text);
    if (rc != ORU_OK) {
        fprintf(stderr, "%s: %s\n", path, oru_do_get_err_msg(rc));
        return rc;
    }
    ORUDoError *error = NULL;
    store->list = oru_do_properties_list_from_json(text, (int32_t)strlen(text), &error);
    if (store->list == NULL) {
        rc = error != NULL ? oru_do_error_get_code(error) : ORU_RC_GENERAL;
        fprintf(stderr, "%s: %s\n", path,
                error != NULL ? oru_do_error_get_msg(error) : "not a list of properties");
        oru_do_error_deref(error);
    } else {
        rc = index_resources(store);
    }
    ph_free_named(text);
    return rc;
}

void store_free(struct store *store) {
    free(store->resources);
    oru_do_properties_list_deref(store->list);
    memset(store, 0, sizeof *store);
}

const struct resource *store_find(const struct store *store, const char *uri) {
    for (int32_t i = 0; i < store->count; i++) {
        if (strcmp(store->resources[i].uri, uri) == 0)
            return &store->resources[i];
    }
    return NULL;
}

static int skip(const char **text, const char *part, size_t length) {
    if (strncmp(*text, part, length) != 0)
        return 0;
    *text += length;
    return 1;
}

int store_is_member(const struct resource *resource, const char *parent, size_t parent_length,
                    const char *ref, size_t ref_length, const char *type) {
    const char *rest = resource->uri;
    if (!skip(&rest, parent, parent_length) || !skip(&rest, "/", 1))
        return 0;
    if (!skip(&rest, ref, ref_length) || (*rest != ';' && *rest != '\0'))
        return 0;
    if (strchr(rest, '/') != NULL)
        return 0;
    return type == NULL || strcmp(resource->type, type) == 0;
}

int store_is_below(const struct resource *resource, const char *base, size_t base_length,
                   const char *type) {
    const char *rest = resource->uri;
    return skip(&rest, base, base_length) && *rest == '/' && strcmp(resource->type, type) == 0;
}
