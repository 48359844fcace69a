#include "frame/object.h"

namespace oru {

void trace_ref(const char *type_name, const void *object, uint32_t count) {
    ORU_TRACE(Level::reference, "oru ref %s %p %u", type_name, object, count);
}

void trace_deref(const char *type_name, const void *object, uint32_t count) {
    ORU_TRACE(Level::reference, "oru deref %s %p %u", type_name, object, count);
}

void released_too_often(const char *type_name, const void *object) {
    ORU_FATAL("Fatal problem in %s deref handling %p\n", type_name, object);
}

}  // namespace oru
