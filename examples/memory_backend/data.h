/* The data interface of a session: reads of single resources, and their actions. */
#ifndef DATA_H
#define DATA_H

#include "errors.h"
#include "store.h"

struct data {
    ORUDataIfc table; /* first: callers see the table alone */
    const struct store *store;
    ORUDoUri *context; /* what addresses of documents are relative to */
    struct errors errors;
};

/* 0, or 10002. */
int32_t data_init(struct data *data, const struct store *store);
void data_free(struct data *data);

/* Appends the resource's value of each name, a null value where it has none. */
int32_t data_append_values(const struct resource *resource, ORUDoNlist *names, ORUDoVlist *values);

#endif
