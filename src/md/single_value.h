// The one value that a constraint allows, where it allows one.
#ifndef ORU_SRC_MD_SINGLE_VALUE_H
#define ORU_SRC_MD_SINGLE_VALUE_H

#include "frame/text.h"
#include "md/constraint.h"

namespace oru {

// The text of the only bound in the `values` of a constraint; empty when there are none, more than
// one, or a pair, and when memory runs out. `typecode` is the type of the values, -3 to tell it
// from the first bound.
Text single_value(const ORUDoConstraint &constraint, int32_t typecode);

}  // namespace oru

#endif
