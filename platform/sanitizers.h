// What the checked builds want to know about memory that is handed out.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define ORU_WITH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORU_WITH_ASAN 1
#endif
#endif
#ifndef ORU_WITH_ASAN
#define ORU_WITH_ASAN 0
#endif

#if ORU_WITH_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

#include <cstddef>

namespace oru::platform {

inline constexpr bool kWithAsan = ORU_WITH_ASAN != 0;

inline void poison([[maybe_unused]] const void *memory, [[maybe_unused]] std::size_t size) {
#if ORU_WITH_ASAN
    __asan_poison_memory_region(memory, size);
#endif
}

inline void unpoison([[maybe_unused]] const void *memory, [[maybe_unused]] std::size_t size) {
#if ORU_WITH_ASAN
    __asan_unpoison_memory_region(memory, size);
#endif
}

// Makes the leak check look for heap blocks in memory that it does not know by itself. Poisoned
// parts are passed over, so that free elements hide no leak.
inline void add_leak_root([[maybe_unused]] const void *memory, [[maybe_unused]] std::size_t size) {
#if ORU_WITH_ASAN
    __lsan_register_root_region(memory, size);
#endif
}

}  // namespace oru::platform
