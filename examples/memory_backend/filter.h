/* Where clauses and orders of a query, on properties in memory. */
#ifndef FILTER_H
#define FILTER_H

#include <oru/oru.h>

/*
 * 1 when the resource passes, 0 when it does not, -1 for a comparison that is not known here. An
 * item's name is an attribute's name with an operator behind a blank, "mtu >="; none means equal.
 * " AND " and " OR " hold a sequence of further items. A null clause passes all.
 */
int filter_passes(ORUDoNvlist *where, ORUDoProperties *props);

/* Less than 0, 0, more than 0. An entry of `order` is an attribute's name, with " desc" behind it
   for falling order; a null order leaves all equal. */
int filter_order(ORUDoNlist *order, ORUDoProperties *a, ORUDoProperties *b);

#endif
