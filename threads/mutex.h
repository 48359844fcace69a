// Who holds a mutex: shared by the mutex operations and by the waits that give it up.
#pragma once

#include <atomic>

#include "threads/self.h"
#include "threads/storage.h"

namespace oru::threads {

// Only a thread itself ever stores its handle as owner, so a relaxed look tells it the truth
// about itself whatever others do at the time.
inline uintptr_t owner_of(MutexState &mutex) {
    return std::atomic_ref(mutex.owner).load(std::memory_order_relaxed);
}

inline bool held_by_self(MutexState &mutex) {
    return owner_of(mutex) == self();
}

// Called with the POSIX mutex held.
inline void own(MutexState &mutex, uint32_t depth) {
    std::atomic_ref(mutex.owner).store(self(), std::memory_order_relaxed);
    mutex.depth = depth;
}

inline void disown(MutexState &mutex) {
    mutex.depth = 0;
    std::atomic_ref(mutex.owner).store(0, std::memory_order_relaxed);
}

}  // namespace oru::threads
