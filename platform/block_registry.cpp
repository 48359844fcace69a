#include "platform/block_registry.h"

#include <pthread.h>

#include <cstdlib>

#include "platform/fatal.h"
#include "platform/tag_names.h"

namespace oru::platform {

namespace {

enum class State : uint32_t { empty, live, freed };

// The address is kept inverted: the leak check must not take the registry for an owner.
struct Entry {
    uintptr_t inverted;
    uint32_t tag;
    State state;
};

// Entries of freed blocks stay until the table is laid out anew, so that a double free is told from
// a foreign pointer.
struct Shard {
    pthread_mutex_t lock;
    Entry *entries;
    uint32_t capacity;  // a power of two
    uint32_t used;      // entries that are not empty
    uint32_t live;
    bool gave_up;  // no memory: knows nothing any more, and lets everything pass
};

constexpr uint32_t kShards = 64;
constexpr uint32_t kFirstCapacity = 256;
Shard g_shards[kShards];

uint64_t mix(uintptr_t address) {
    return (address >> 4) * 0x9E3779B97F4A7C15ull;
}

Shard &shard_of(uintptr_t address) {
    return g_shards[mix(address) >> 58];
}

// The entry of the address, or the empty one where it would stand.
Entry &find(const Shard &shard, uintptr_t address) {
    uint64_t at = mix(address) >> 20;
    for (;; at++) {
        Entry &entry = shard.entries[at & (shard.capacity - 1)];
        if (entry.state == State::empty || entry.inverted == ~address) {
            return entry;
        }
    }
}

bool lay_out(Shard &shard, uint32_t capacity) {
    auto *entries = static_cast<Entry *>(calloc(capacity, sizeof(Entry)));
    if (entries == nullptr) {
        return false;
    }
    const Shard old = shard;
    shard.entries = entries;
    shard.capacity = capacity;
    shard.used = shard.live;
    for (uint32_t i = 0; i < old.capacity; i++) {
        if (old.entries[i].state == State::live) {
            find(shard, ~old.entries[i].inverted) = old.entries[i];
        }
    }
    free(old.entries);
    return true;
}

bool make_room(Shard &shard) {
    if (shard.capacity == 0) {
        return lay_out(shard, kFirstCapacity);
    }
    if ((shard.used + 1) * 4 < shard.capacity * 3) {
        return true;
    }
    return lay_out(shard, shard.live * 2 < shard.capacity ? shard.capacity : shard.capacity * 2);
}

void add(Shard &shard, uintptr_t address, uint32_t tag) {
    if (shard.gave_up || !make_room(shard)) {
        shard.gave_up = true;
        return;
    }
    Entry &entry = find(shard, address);
    shard.used += entry.state == State::empty ? 1 : 0;
    shard.live++;
    entry = {.inverted = ~address, .tag = tag, .state = State::live};
}

// What was known of the address before it was taken out.
Entry take_out(Shard &shard, uintptr_t address) {
    if (shard.gave_up) {
        return {.state = State::live};
    }
    if (shard.capacity == 0) {
        return {};
    }
    Entry &entry = find(shard, address);
    const Entry known = entry;
    if (known.state == State::live) {
        entry.state = State::freed;
        shard.live--;
    }
    return known;
}

}  // namespace

void register_block(const void *block, uint32_t tag) {
    const auto address = reinterpret_cast<uintptr_t>(block);
    Shard &shard = shard_of(address);
    pthread_mutex_lock(&shard.lock);
    add(shard, address, tag);
    pthread_mutex_unlock(&shard.lock);
}

void unregister_block(const void *block, const char *operation) {
    const auto address = reinterpret_cast<uintptr_t>(block);
    Shard &shard = shard_of(address);
    pthread_mutex_lock(&shard.lock);
    const Entry known = take_out(shard, address);
    pthread_mutex_unlock(&shard.lock);
    if (known.state == State::live) {
        return;
    }
    if (known.state == State::empty) {
        fatal("%s: foreign pointer %p", operation, block);
    }
    const char *name = tag_name(known.tag);
    fatal("%s: double free of %p, tag 0x%x %s", operation, block, known.tag,
          name != nullptr ? name : "");
}

}  // namespace oru::platform
