// Shutdown and locations are the back end's business: one-line dispatchers that hand on their words
// and hand back the result.
#include "frame/backend.h"
#include "oru/lib.h"

using oru::Entry;

intptr_t oru_lib_shutdown(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                          intptr_t a6) {
    return oru::need_shutdown()(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_location_get_canonical_name(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                         intptr_t a5, intptr_t a6) {
    return oru::need_entry(Entry::location_get_canonical_name)(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_location_from_canonical_name(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                          intptr_t a5, intptr_t a6) {
    return oru::need_entry(Entry::location_from_canonical_name)(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_location_get_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                        intptr_t a5, intptr_t a6) {
    oru::Words *bound = oru::find_entry(Entry::location_get_location_keys);
    return bound != nullptr ? bound(a1, a2, a3, a4, a5, a6)
                            : _oru_location_get_location_keys(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_location_from_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                         intptr_t a5, intptr_t a6) {
    oru::Words *bound = oru::find_entry(Entry::location_from_location_keys);
    if (bound != nullptr)
        return bound(a1, a2, a3, a4, a5, a6);
    auto *status = reinterpret_cast<int32_t *>(a2);
    return _oru_location_from_location_keys(a1, status, a3, a4, a5, a6);
}
