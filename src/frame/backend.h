// The one back end of the process: opened once, its entry points bound for good.
#ifndef ORU_SRC_FRAME_BACKEND_H
#define ORU_SRC_FRAME_BACKEND_H

#include <cstdint>

#include "oru/lib.h"

namespace oru {

// Entry points that dispatch plain words.
using Words = intptr_t(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t);

// In the order in which names are read and symbols are looked up.
enum class Entry {
    lib_init,
    lib_shutdown,
    cl_open,
    cl_close,
    pr_open,
    pr_close,
    ev_open,
    ev_close,
    location_get_canonical_name,
    location_from_canonical_name,
    location_get_location_keys,
    location_from_location_keys,
    count_
};

// Opens the back end and looks up its entry points, unless that was done. Ends the process when
// the file does not open or has no initialisation.
void bind_backend();

// The bound entry, or null.
Words *find_entry(Entry entry);

// The bound entry; none ends the process with the name that was looked for.
Words *need_entry(Entry entry);

// The bound shutdown, likewise.
Words *need_shutdown();

}  // namespace oru

#endif
