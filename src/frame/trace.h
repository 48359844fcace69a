// Every message of the library goes to the platform's tracer through ORU_TRACE. With the level
// switched off a trace costs one load and a branch; its arguments are not evaluated.
#ifndef ORU_SRC_FRAME_TRACE_H
#define ORU_SRC_FRAME_TRACE_H

#include <cstdint>
#include <cstdlib>

#include "oru/lib.h"
#include "oruplatform/tracelet.h"

// A tracer that brings no threshold gets every message.
extern "C" uint32_t tracelet_threshold __attribute__((weak));

namespace oru {

// The level word of the tracer has the level in its top byte.
enum class Level : uint32_t {
    fatal = 0,
    failure = 0x3000000,
    config = 0x5000000,
    action = 0x6000000,
    detail = 0x7000000,
    reference = 0x8000000,
};

inline bool trace_enabled(Level level) {
    return &tracelet_threshold == nullptr ||
           static_cast<uint32_t>(level) <= __atomic_load_n(&tracelet_threshold, __ATOMIC_RELAXED);
}

// Never called: the compiler checks the arguments of a message against its format here.
[[gnu::format(printf, 1, 2)]] inline void check_format(const char *, ...) {}

}  // namespace oru

#define ORU_TRACE(level, format, ...)                                                 \
    do {                                                                              \
        if (false)                                                                    \
            ::oru::check_format(format __VA_OPT__(, ) __VA_ARGS__);                   \
        if (::oru::trace_enabled(level)) {                                            \
            static constexpr const char *oru_trace_formats[] = {format};              \
            ::tracelet_emit(oru_trace_formats, 0, g_oruapi_trace_module_id,           \
                            static_cast<uint32_t>(level) __VA_OPT__(, ) __VA_ARGS__); \
        }                                                                             \
    } while (false)

// A broken installation or a corrupt object: one message at level 0, then abort.
#define ORU_FATAL(format, ...)                                             \
    do {                                                                   \
        ORU_TRACE(::oru::Level::fatal, format __VA_OPT__(, ) __VA_ARGS__); \
        ::std::abort();                                                    \
    } while (false)

#endif
