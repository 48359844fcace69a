// Counted objects of the library, owned by scope.
#ifndef ORU_TESTS_BEHAVIOUR_HANDLES_H
#define ORU_TESTS_BEHAVIOUR_HANDLES_H

#include "tools/oructl/handles.h"

namespace behaviour {

using namespace oructl;

using EachItem = Each<ORUDoNvlist, ORUDoNvlistItem, oru_do_nvlist_iter, oru_do_nvlist_has_next,
                      oru_do_nvlist_get_next>;

// A text of the library, which is null for nothing.
inline std::string text_or_empty(const char *text) {
    return text != nullptr ? text : "";
}

}  // namespace behaviour

#endif
