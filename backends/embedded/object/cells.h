/* Values of the library as cells of the store, and back, without loss. */
#ifndef EMBEDDED_CELLS_H
#define EMBEDDED_CELLS_H

#include <deque>

#include "handles.h"
#include "store/store.h"

namespace embedded {

/* Texts that cells point to, for as long as it lives. */
using Texts = std::deque<std::string>;

/*
 * Numbers, booleans and times are integers, unsigned ones beyond the signed range are blobs, which
 * order behind all integers; floating numbers are reals, texts, labels and addresses of resources
 * texts, other bytes blobs. What is made of values is their JSON text. Null and default values are
 * null cells. Bytes are lent by the value, or kept in `texts`.
 */
Cell cell_of(ORUDoValue *value, Texts &texts);

/* The value of an attribute, with the name of its derived type. Throws `StoreFault` for what no
   value was written as. */
Value value_of(const Attribute &attribute);

}  // namespace embedded

#endif
