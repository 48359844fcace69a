// Counted objects of the library, owned by scope.
#ifndef ORU_TESTS_BEHAVIOUR_HANDLES_H
#define ORU_TESTS_BEHAVIOUR_HANDLES_H

#include "support/handles.h"

namespace behaviour {

using namespace handles;

// A text of the library, which is null for nothing.
inline std::string text_or_empty(const char *text) {
    return text != nullptr ? text : "";
}

}  // namespace behaviour

#endif
