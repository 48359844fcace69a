// Which function names the tags of which component.
#pragma once

#include <cstdint>

namespace oru::platform {

// Null when nobody names the component.
const char *tag_name(uint32_t tag);

}  // namespace oru::platform
