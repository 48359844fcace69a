#include "platform/fatal.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "platform/trace_output.h"

namespace oru::platform {

void fatal(const char *format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    record({.module = "oruplatform", .level = 0, .text = text, .place = innermost_place()});
    abort();
}

}  // namespace oru::platform
