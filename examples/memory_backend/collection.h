/* The collection interface of a session: cursors over the members of a collection. */
#ifndef COLLECTION_H
#define COLLECTION_H

#include "errors.h"
#include "store.h"

struct collection {
    ORUCollIfc table; /* first: callers see the table alone */
    const struct store *store;
};

void collection_init(struct collection *collection, const struct store *store);

#endif
