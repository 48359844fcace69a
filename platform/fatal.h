// Ends the process after a message at level 0.
#pragma once

namespace oru::platform {

[[noreturn]] __attribute__((format(printf, 1, 2))) void fatal(const char *format, ...);

}  // namespace oru::platform
