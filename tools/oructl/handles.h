// Counted objects of the library, owned by scope.
#ifndef ORU_TOOLS_ORUCTL_HANDLES_H
#define ORU_TOOLS_ORUCTL_HANDLES_H

#include "support/handles.h"

namespace oructl {

using namespace handles;

}  // namespace oructl

#endif
