// Where records go: the sink that somebody set, or lines on a file descriptor.
#pragma once

#include <cstdint>

#include "oruplatform/tracelet.h"

namespace oru::platform {

struct TraceRecord {
    const char *module;
    uint32_t level;
    const char *text;
    const tracelet_place_t *place;
};

// Hands a record to the sink, or writes it; at level 0 does both.
void record(const TraceRecord &record);

// The innermost place of the calling thread, or null.
const tracelet_place_t *innermost_place();

}  // namespace oru::platform
