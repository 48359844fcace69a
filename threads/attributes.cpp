#include <cerrno>

#include "threads/storage.h"

using namespace oru::threads;

int32_t oru_thread_attr_init(oru_thread_attr_t *attributes) {
    if (attributes == nullptr) {
        return EINVAL;
    }
    renew(attributes, nullptr);
    return 0;
}

int32_t oru_thread_attr_destroy(oru_thread_attr_t *attributes) {
    AttributeState *state = live(attributes);
    if (state == nullptr) {
        return EINVAL;
    }
    state->retired = kRetired;
    return 0;
}

int32_t oru_thread_attr_setdetachstate(oru_thread_attr_t *attributes, int32_t detached) {
    AttributeState *state = live(attributes);
    if (state == nullptr) {
        return EINVAL;
    }
    state->detached = detached != 0;
    return 0;
}

int32_t oru_thread_attr_setname(oru_thread_attr_t *attributes, const char *name) {
    if (live(attributes) == nullptr || name == nullptr) {
        return EINVAL;
    }
    set_name(attributes->name, name);
    return 0;
}
