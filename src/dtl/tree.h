// Making nodes where the end of a chain of siblings is known.
#ifndef ORU_SRC_DTL_TREE_H
#define ORU_SRC_DTL_TREE_H

#include "oru/dtl.h"

namespace oru::dtl {

// A new node with no children, at the null link that ends its siblings. Null when memory runs out.
ORUDtlNode *add_node(ORUDtlNode **end, ORUDoName *name, int32_t type);

}  // namespace oru::dtl

#endif
