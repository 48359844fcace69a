#include "collection.h"

#include <stdlib.h>
#include <string.h>

#include "data.h"
#include "filter.h"

struct cursor {
    ORUDtlCursor table; /* first: callers see the table alone */
    struct errors errors;
    ORUDoNlist *names;
    const struct resource **rows; /* those that pass, in order */
    int32_t count;
    int32_t next;
};

/* ---- Cursors ---- */

static int32_t cursor_close(ORUDtlCursor *table) {
    struct cursor *cursor = (struct cursor *)table;
    oru_do_nlist_deref(cursor->names);
    errors_free(&cursor->errors);
    free(cursor->rows);
    free(cursor);
    return ORU_OK;
}

static int32_t append_row(struct cursor *cursor, ORUDoVtable *out) {
    ORUDoVlist *row = oru_do_vlist_new();
    if (row == NULL)
        return ORU_RC_MALLOC;
    int32_t rc = data_append_values(cursor->rows[cursor->next], cursor->names, row);
    if (rc == ORU_OK && oru_do_vtable_add(out, row) < 0)
        rc = ORU_RC_MALLOC;
    oru_do_vlist_deref(row);
    cursor->next++;
    return rc;
}

/* A count of 0 asks for all rows that are left. */
static int32_t cursor_get_next(ORUDtlCursor *table, uint32_t count, ORUDoVtable *out) {
    struct cursor *cursor = (struct cursor *)table;
    for (uint32_t i = 0; (count == 0 || i < count) && cursor->next < cursor->count; i++) {
        int32_t rc = append_row(cursor, out);
        if (rc != ORU_OK)
            return errors_fail(&cursor->errors, rc, "no memory for a row");
    }
    return cursor->next < cursor->count ? ORU_OK : ORU_RC_NO_MORE_VALUE;
}

static ORUErrorIfc *cursor_get_error_ifc(ORUDtlCursor *table) {
    return &((struct cursor *)table)->errors.table;
}

static struct cursor *cursor_new(const struct store *store, ORUDoNlist *names) {
    struct cursor *cursor = calloc(1, sizeof *cursor);
    if (cursor == NULL)
        return NULL;
    errors_init(&cursor->errors);
    cursor->table.cursor_close = cursor_close;
    cursor->table.cursor_get_next = cursor_get_next;
    cursor->table.cursor_get_error_ifc = cursor_get_error_ifc;
    cursor->names = oru_do_nlist_ref(names);
    cursor->rows = calloc((size_t)store->count + 1, sizeof *cursor->rows);
    if (cursor->rows != NULL)
        return cursor;
    cursor_close(&cursor->table);
    return NULL;
}

/* ---- Finding the rows ---- */

/* What a collection's address asks for: children of `parent` under a reference, of one type or of
   any; and with a `base`, what of the type stands below that. */
struct request {
    const char *base;
    size_t base_length;
    const char *parent;
    size_t parent_length;
    const char *ref;
    size_t ref_length;
    const char *type;
};

/* "/a/b?ref" and "/a/b?ref:type": names of references hold no colon, names of types do. */
static void read_plain(const char *text, const char *mark, struct request *request) {
    const char *colon = strchr(mark + 1, ':');
    request->parent_length = (size_t)(mark - text);
    request->ref = mark + 1;
    request->ref_length = colon != NULL ? (size_t)(colon - mark) - 1 : strlen(mark + 1);
    request->type = colon != NULL ? colon + 1 : NULL;
}

/* "/a/b/ref?:type" for children, "/a/b;key=value?:type" for all that is below: no resource is meant
   by both. */
static void read_typed(const char *text, const char *mark, struct request *request) {
    const char *slash = mark;
    while (slash > text && *slash != '/')
        slash--;
    request->base = text;
    request->base_length = (size_t)(mark - text);
    request->parent_length = (size_t)(slash - text);
    request->ref = slash + 1;
    request->ref_length = (size_t)(mark - slash) - 1;
    request->type = mark + 2;
}

static int read_request(ORUDoUri *uri, struct request *request) {
    const char *text = oru_do_uri_get_uri_str(uri);
    const char *mark = strchr(text, '?');
    if (mark == NULL)
        return 0;
    memset(request, 0, sizeof *request);
    request->parent = text;
    if (mark[1] == ':') {
        read_typed(text, mark, request);
    } else {
        read_plain(text, mark, request);
    }
    return 1;
}

static int is_member(const struct resource *resource, const struct request *request) {
    if (request->base != NULL &&
        store_is_below(resource, request->base, request->base_length, request->type))
        return 1;
    return store_is_member(resource, request->parent, request->parent_length, request->ref,
                           request->ref_length, request->type);
}

static int32_t collect(struct cursor *cursor, const struct store *store,
                       const struct request *request, ORUDoNvlist *where) {
    for (int32_t i = 0; i < store->count; i++) {
        const struct resource *resource = &store->resources[i];
        if (!is_member(resource, request))
            continue;
        int verdict = filter_passes(where, resource->props);
        if (verdict < 0)
            return ORU_RC_UNSUPPORTED_FEATURE;
        if (verdict > 0)
            cursor->rows[cursor->count++] = resource;
    }
    return ORU_OK;
}

/* Few rows, and equal ones must keep their order. */
static void sort(struct cursor *cursor, ORUDoNlist *order) {
    for (int32_t i = 1; i < cursor->count; i++) {
        const struct resource *row = cursor->rows[i];
        int32_t at = i;
        for (; at > 0 && filter_order(order, cursor->rows[at - 1]->props, row->props) > 0; at--)
            cursor->rows[at] = cursor->rows[at - 1];
        cursor->rows[at] = row;
    }
}

static int32_t open_cursor(ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *names, ORUDoNvlist *where,
                           ORUDoNlist *order, ORUDtlCursor **out_cursor) {
    const struct store *store = ((struct collection *)ifc)->store;
    struct request request;
    if (!read_request(uri, &request))
        return ORU_RC_NO_SUCH_COLLECTION;
    struct cursor *cursor = cursor_new(store, names);
    if (cursor == NULL)
        return ORU_RC_MALLOC;
    int32_t rc = collect(cursor, store, &request, where);
    if (rc != ORU_OK) {
        cursor_close(&cursor->table);
        return rc;
    }
    sort(cursor, order);
    *out_cursor = &cursor->table;
    return ORU_OK;
}

static int32_t new_config_cursor(ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                 ORUDoNvlist *where, ORUDoNlist *order, uint8_t return_default,
                                 ORUDtlCursor **out_cursor) {
    (void)return_default;
    return open_cursor(ifc, uri, names, where, order, out_cursor);
}

static int32_t new_oper_cursor(ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                               ORUDoNvlist *where, ORUDoNlist *order, ORUDtlCursor **out_cursor) {
    return open_cursor(ifc, uri, names, where, order, out_cursor);
}

void collection_init(struct collection *collection, const struct store *store) {
    memset(collection, 0, sizeof *collection);
    collection->store = store;
    collection->table.new_config_cursor = new_config_cursor;
    collection->table.new_oper_cursor = new_oper_cursor;
}
