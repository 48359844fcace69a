// Where records come from: a fixed-size pool once the process has sized one for the type, the
// tagged heap otherwise. The handle is read again at each release, so a type's pool has to exist
// before the first record of the type is made, or never.
#ifndef ORU_SRC_FRAME_POOL_H
#define ORU_SRC_FRAME_POOL_H

#include <cstddef>
#include <cstdint>

#include "frame/tags.h"
#include "oruplatform/chunk.h"
#include "oruplatform/poolheap.h"

namespace oru {

struct Pool {
    const char *type_name;
    Tag tag;
    size_t element_size;
    void *handle = nullptr;

    // A block for one element, or null. Zeroed from the heap, undefined from a pool.
    void *take() {
        if (handle != nullptr) [[likely]]
            return chunk_malloc(handle);
        return take_from_heap();
    }

    // Returns a block that `take` gave. A pool that refuses it ends the process.
    void give(void *block) {
        if (handle == nullptr) [[unlikely]] {
            ph_free_named(block);
        } else if (chunk_free(handle, block) == 0) [[unlikely]] {
            refused();
        }
    }

    // Sizes the pool; what cannot be sized ends the process. A second call forgets the first pool.
    void *create(intptr_t count, uintptr_t flags);

  private:
    // Apart, so that processes which size their pools do not step round it.
    [[gnu::noinline]] void *take_from_heap() const;
    [[noreturn]] static void refused();
};

}  // namespace oru

// The exported `init_chunk_poolheap_NAME` of a pool.
#define ORU_POOL_API(pool, name)                                        \
    void *init_chunk_poolheap_##name(intptr_t count, uintptr_t flags) { \
        return (pool).create(count, flags);                             \
    }

#endif
