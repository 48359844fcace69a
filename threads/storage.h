// What stands behind the name in the public storage types, and the one way to it.
#pragma once

#include <pthread.h>
#include <semaphore.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "oru/thread.h"

namespace oru::threads {

// All zero must be the state after initialisation, `retired` included: static
// locks are used without an initialiser call. The POSIX objects keep to that.

struct MutexState {
    pthread_mutex_t mutex;
    uintptr_t owner;  // handle of the holder, 0 for none
    uint32_t depth;   // written and read by the holder only
    uint32_t retired;
};

struct RwlockState {
    pthread_rwlock_t lock;
    uintptr_t writer;  // handle of the writer, 0 for none
    uint32_t readers;
    uint32_t retired;
};

struct ConditionState {
    pthread_cond_t condition;
    uint32_t retired;
};

struct SemaphoreState {
    sem_t semaphore;
    uint32_t retired;
};

struct AttributeState {
    uint32_t detached;
    uint32_t retired;
};

inline constexpr uint32_t kRetired = 0xdeadu;

template <typename Storage>
struct StateOf;
template <>
struct StateOf<oru_mtx_t> : std::type_identity<MutexState> {};
template <>
struct StateOf<oru_rwlock_t> : std::type_identity<RwlockState> {};
template <>
struct StateOf<oru_cond_t> : std::type_identity<ConditionState> {};
template <>
struct StateOf<oru_sem_t> : std::type_identity<SemaphoreState> {};
template <>
struct StateOf<oru_thread_attr_t> : std::type_identity<AttributeState> {};
template <typename Storage>
struct StateOf<const Storage> : std::type_identity<const typename StateOf<Storage>::type> {};

template <typename Storage>
using State = typename StateOf<Storage>::type;

template <typename Storage>
State<Storage> *state_of(Storage *storage) {
    static_assert(sizeof(Storage) == 128 && alignof(Storage) == 16);
    static_assert(offsetof(Storage, name) == 0 && sizeof(storage->name) == 32);
    static_assert(sizeof(State<Storage>) <= sizeof(storage->state));
    static_assert(offsetof(Storage, state) % alignof(State<Storage>) == 0);
    return reinterpret_cast<State<Storage> *>(storage->state);
}

// The state of an object that may be used; null for null and for a destroyed one.
template <typename Storage>
State<Storage> *live(Storage *storage) {
    if (storage == nullptr) {
        return nullptr;
    }
    State<Storage> *state = state_of(storage);
    return state->retired == 0 ? state : nullptr;
}

// Copies a name, cut to what fits; null is the empty name.
template <size_t size>
void set_name(char (&out)[size], const char *name) {
    const size_t length = name == nullptr ? 0 : strnlen(name, size - 1);
    std::memcpy(out, name == nullptr ? "" : name, length);
    std::memset(out + length, 0, size - length);
}

// Makes storage of any contents a fresh object.
template <typename Storage>
State<Storage> *renew(Storage *storage, const char *name) {
    set_name(storage->name, name);
    std::memset(storage->state, 0, sizeof(storage->state));
    return state_of(storage);
}

}  // namespace oru::threads
