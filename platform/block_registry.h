// Debug builds know every live block exactly, so that a pointer can be judged without reading it.
#pragma once

#include <cstdint>

namespace oru::platform {

#ifdef NDEBUG
inline constexpr bool kWithRegistry = false;
#else
inline constexpr bool kWithRegistry = true;
#endif

void register_block(const void *block, uint32_t tag);

// Ends the process, naming what is wrong, unless the block is live. `operation` is the one at
// fault.
void unregister_block(const void *block, const char *operation);

}  // namespace oru::platform
