// The hash index that a property table keeps beside its entries once it has grown.
#ifndef ORU_SRC_DO_PROPERTIES_INDEX_H
#define ORU_SRC_DO_PROPERTIES_INDEX_H

#include "do/properties.h"

namespace oru {

// Makes the index of all entries that are there. Failing that, and two entries of one name, are
// fatal.
void properties_index_make(ORUDoProperties &properties);

// Adds an entry. A name that is there already is fatal, as is memory that runs out.
void properties_index_add(ORUDoProperties &properties, ORUDoProperty &property);

// The entry of that name, or null.
ORUDoProperty *properties_index_find(const ORUDoProperties &properties, const char *name);

// Takes the entry of that name out of the index and gives it; null when there is none.
ORUDoProperty *properties_index_take(ORUDoProperties &properties, const char *name);

// Gives the index up, when there is one.
void properties_index_close(ORUDoProperties &properties);

}  // namespace oru

#endif
