// Ways to get and give back a block, with the same face for ours and the peers'.
#pragma once

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace oru::bench {

// Small blocks all have this size, that of a typical record.
inline constexpr size_t kRecordSize = 48;

struct Pool {
    static void *handle() {
        static void *const pool = chunk_create_poolheap(kRecordSize, 4096, 0x101, 1, 0x2f00000);
        return pool;
    }
    void *pool = handle();
    void *take(size_t) const { return chunk_malloc(pool); }
    void give_back(void *element) const { chunk_free(pool, element); }
};

struct Tagged {
    static void *take(size_t size) { return ph_malloc_named(0x2f00001, size); }
    static void give_back(void *block) { ph_free_named(block); }
};

struct Glibc {
    static void *take(size_t size) { return malloc(size); }
    static void give_back(void *block) { free(block); }
};

// Opened at run time: linked, it would take the place of the C library's allocator for all
// contenders. Where it is not installed its rows are left out.
struct Mimalloc {
    using Take = void *(*)(size_t);
    using GiveBack = void (*)(void *);

    static void *library() {
        static void *const handle = dlopen("libmimalloc.so.2", RTLD_NOW | RTLD_LOCAL);
        return handle;
    }
    Take take = reinterpret_cast<Take>(dlsym(library(), "mi_malloc"));
    GiveBack give_back = reinterpret_cast<GiveBack>(dlsym(library(), "mi_free"));
};

// One block at a time: taken, written to, given back.
template <class Contender>
void pairs(benchmark::State &state) {
    const Contender contender;
    for (auto _ : state) {
        void *block = contender.take(kRecordSize);
        *static_cast<volatile char *>(block) = 1;
        contender.give_back(block);
    }
}

// Many blocks live at a time, given back in the order in which they came.
template <class Contender, size_t kCount>
void batches(benchmark::State &state) {
    const Contender contender;
    std::array<void *, kCount> blocks;
    for (auto _ : state) {
        for (void *&block : blocks) {
            block = contender.take(kRecordSize);
            *static_cast<volatile char *>(block) = 1;
        }
        for (void *block : blocks) {
            contender.give_back(block);
        }
    }
}

// Sizes of a mixed run, 16 to 512 bytes, with 256 blocks live that are replaced one by one.
template <class Contender>
void mixed_sizes(benchmark::State &state) {
    const Contender contender;
    std::array<void *, 256> blocks{};
    uint32_t random = 12345;
    for (auto _ : state) {
        random = random * 1664525u + 1013904223u;
        void *&block = blocks[random >> 24];
        if (block != nullptr) {
            contender.give_back(block);
        }
        block = contender.take(16 + (random >> 8) % 497);
        *static_cast<volatile char *>(block) = 1;
    }
    for (void *block : blocks) {
        if (block != nullptr) {
            contender.give_back(block);
        }
    }
}

using Work = void (*)(benchmark::State &);

// Registers a work for one contender on one and on two threads.
inline void add(const std::string &name, Work work) {
    benchmark::RegisterBenchmark(name.c_str(), work)->Threads(1)->Threads(2)->UseRealTime();
}

}  // namespace oru::bench
