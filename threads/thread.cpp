#include <cerrno>
#include <cstdlib>

#include "threads/registry.h"
#include "threads/self.h"
#include "threads/storage.h"

using namespace oru::threads;

namespace {

// The first function of every thread made here.
void *run(void *context) {
    auto *record = static_cast<ThreadRecord *>(context);
    become(record->handle);
    if (record->name[0] != '\0') {
        pthread_setname_np(pthread_self(), record->name);
    }
    void *(*const start)(void *) = record->start;
    void *const argument = record->argument;
    release(record);
    return start(argument);
}

ThreadRecord *new_record(const oru_thread_attr_t *attributes, void *(*start)(void *),
                         void *argument) {
    auto *record = static_cast<ThreadRecord *>(std::calloc(1, sizeof(ThreadRecord)));
    if (record != nullptr) {
        record->handle = next_handle();
        record->start = start;
        record->argument = argument;
        record->references = 2;
        set_name(record->name, attributes == nullptr ? nullptr : attributes->name);
    }
    return record;
}

// Starts the thread of a record with two references and takes over the one that the thread does
// not get. The registry is held meanwhile, so that the thread is found as soon as it looks for
// itself.
int launch(ThreadRecord *record, const pthread_attr_t &attributes, bool detached) {
    const RegistryGuard guard;
    pthread_t thread;
    const int rc = pthread_create(&thread, &attributes, run, record);
    if (rc != 0) {
        release(record);
        release(record);
    } else if (detached) {
        release(record);
    } else {
        record->thread = thread;
        registry_add(record);
    }
    return rc;
}

int launch(ThreadRecord *record, bool detached) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes,
                                detached ? PTHREAD_CREATE_DETACHED : PTHREAD_CREATE_JOINABLE);
    const int rc = launch(record, attributes, detached);
    pthread_attr_destroy(&attributes);
    return rc;
}

// The record of a thread that nobody is joining yet; called with the registry held.
int32_t find_joinable(oru_thread_t thread, ThreadRecord **out_record) {
    ThreadRecord *record = registry_find(thread);
    if (record == nullptr) {
        return ESRCH;
    }
    if (record->being_joined) {
        return EINVAL;
    }
    *out_record = record;
    return 0;
}

int32_t begin_join(oru_thread_t thread, ThreadRecord **out_record) {
    const RegistryGuard guard;
    const int32_t rc = find_joinable(thread, out_record);
    if (rc == 0) {
        (*out_record)->being_joined = true;
    }
    return rc;
}

void end_join(ThreadRecord *record, bool joined) {
    const RegistryGuard guard;
    record->being_joined = false;
    if (joined) {
        registry_remove(record);
        release(record);
    }
}

}  // namespace

int32_t oru_thread_create(oru_thread_t *out_thread, const oru_thread_attr_t *attributes,
                          void *(*start)(void *), void *argument) {
    const bool bad_attributes = attributes != nullptr && live(attributes) == nullptr;
    if (out_thread == nullptr || start == nullptr || bad_attributes) {
        return EINVAL;
    }
    ThreadRecord *record = new_record(attributes, start, argument);
    if (record == nullptr) {
        return ENOMEM;
    }
    const oru_thread_t handle = record->handle;
    const bool detached = attributes != nullptr && live(attributes)->detached != 0;
    const int32_t rc = launch(record, detached);
    if (rc == 0) {
        *out_thread = handle;
    }
    return rc;
}

int32_t oru_thread_join(oru_thread_t thread, void **out_result) {
    if (thread == 0) {
        return EINVAL;
    }
    if (thread == self()) {
        return EDEADLK;
    }
    ThreadRecord *record = nullptr;
    int32_t rc = begin_join(thread, &record);
    if (rc != 0) {
        return rc;
    }
    void *result = nullptr;
    rc = pthread_join(record->thread, &result);
    end_join(record, rc == 0);
    if (rc == 0 && out_result != nullptr) {
        *out_result = result;
    }
    return rc;
}

int32_t oru_thread_detach(oru_thread_t thread) {
    if (thread == 0) {
        return EINVAL;
    }
    const RegistryGuard guard;
    ThreadRecord *record = nullptr;
    const int32_t rc = find_joinable(thread, &record);
    if (rc != 0) {
        return rc;
    }
    pthread_detach(record->thread);
    registry_remove(record);
    release(record);
    return 0;
}

int32_t oru_thread_cleanup(oru_thread_t *thread) {
    if (thread == nullptr) {
        return EINVAL;
    }
    *thread = 0;
    return 0;
}
