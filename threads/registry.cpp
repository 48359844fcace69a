#include "threads/registry.h"

#include <atomic>
#include <cstdlib>

namespace oru::threads {
namespace {

// Handles count up, so their low bits spread evenly.
constexpr size_t kBuckets = 256;

pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
ThreadRecord *g_buckets[kBuckets];

ThreadRecord **bucket_of(oru_thread_t handle) {
    return &g_buckets[handle % kBuckets];
}

}  // namespace

void release(ThreadRecord *record) {
    if (std::atomic_ref(record->references).fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::free(record);
    }
}

RegistryGuard::RegistryGuard() {
    pthread_mutex_lock(&g_lock);
}

RegistryGuard::~RegistryGuard() {
    pthread_mutex_unlock(&g_lock);
}

void registry_add(ThreadRecord *record) {
    ThreadRecord **bucket = bucket_of(record->handle);
    record->next = *bucket;
    *bucket = record;
}

ThreadRecord *registry_find(oru_thread_t handle) {
    ThreadRecord *record = *bucket_of(handle);
    while (record != nullptr && record->handle != handle) {
        record = record->next;
    }
    return record;
}

void registry_remove(ThreadRecord *record) {
    ThreadRecord **link = bucket_of(record->handle);
    while (*link != record) {
        link = &(*link)->next;
    }
    *link = record->next;
}

}  // namespace oru::threads
