// The one thread-local block of the layer. It is in the initial-exec model, so that reaching it
// costs one instruction; a library opened at run time can have that for small blocks only.
#pragma once

#include <cstdint>

namespace oru::platform {

struct Magazine;
struct ThreadTags;
struct PlaceStack;
struct MoreMagazines;

// Pools beyond this number are found through `more_magazines`.
inline constexpr uint32_t kDirectPools = 64;

struct ThreadBlock {
    // The entry behind the last stays null: it sends the pools without a place of their own the
    // slow way round.
    Magazine *magazines[kDirectPools + 1];
    MoreMagazines *more_magazines;
    ThreadTags *tags;
    PlaceStack *places;
    uint8_t armed;
    uint8_t exit_rounds;
    bool in_sink;
};

extern __thread ThreadBlock t_block
    __attribute__((tls_model("initial-exec"), visibility("hidden")));

// Sees to it that the block is emptied when the thread ends. False when nothing may be kept in it:
// out of memory, or the thread is past the last round of its clean-up.
bool arm_thread_block();

// What the parts do at the end of a thread, each in its own unit.
void release_magazines(ThreadBlock &block);
void release_tags(ThreadBlock &block);
void release_places(ThreadBlock &block);

}  // namespace oru::platform
