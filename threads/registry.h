// The threads that can be joined, found by their handles.
#pragma once

#include <pthread.h>

#include <cstdint>

#include "oru/thread.h"

namespace oru::threads {

// The system takes no longer names, the zero included.
inline constexpr size_t kSystemNameSize = 16;

// One for each start of a thread. It belongs to the thread until that has read how to start,
// and to the registry for as long as the thread can be joined.
struct ThreadRecord {
    oru_thread_t handle;
    pthread_t thread;
    void *(*start)(void *);
    void *argument;
    ThreadRecord *next;
    uint32_t references;
    bool being_joined;
    char name[kSystemNameSize];
};

// Gives back one reference; the last one frees the record.
void release(ThreadRecord *record);

// Holds the registry; the functions below need it held.
class RegistryGuard {
  public:
    RegistryGuard();
    ~RegistryGuard();
    RegistryGuard(const RegistryGuard &) = delete;
    RegistryGuard &operator=(const RegistryGuard &) = delete;
};

void registry_add(ThreadRecord *record);
ThreadRecord *registry_find(oru_thread_t handle);
void registry_remove(ThreadRecord *record);

}  // namespace oru::threads
