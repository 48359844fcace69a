/* The resources in memory, in the order of the data file. */
#ifndef STORE_H
#define STORE_H

#include <oru/oru.h>

struct resource {
    ORUDoProperties *props; /* borrowed from the list that was read */
    const char *uri;
    const char *type; /* qualified name of its type */
};

struct store {
    ORUDoPropertiesList *list;
    struct resource *resources;
    int32_t count;
};

/* Reads a data file. 0, 10004 for a file that is not there, or the reader's code; what is wrong
   goes to standard error. */
int32_t store_load(struct store *store, const char *path);
void store_free(struct store *store);

/* The resource at that address, or null. */
const struct resource *store_find(const struct store *store, const char *uri);

/* Non-zero when the resource is a child of `parent` under the reference `ref`, both counted texts,
   and of `type` unless that is null. */
int store_is_member(const struct resource *resource, const char *parent, size_t parent_length,
                    const char *ref, size_t ref_length, const char *type);

/* Non-zero when the resource is of `type` and stands below the one at `base`, at any depth. */
int store_is_below(const struct resource *resource, const char *base, size_t base_length,
                   const char *type);

#endif
