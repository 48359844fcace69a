// Size-classed storage of short payloads: values and URIs keep theirs in a small block, a large
// block, or on the heap, and remember which beside the pointer.
#ifndef ORU_SRC_FRAME_SIZED_STORAGE_H
#define ORU_SRC_FRAME_SIZED_STORAGE_H

#include "frame/pool.h"

namespace oru {

enum class StorageClass : int32_t { small = 0, large = 1, heap = 2 };

// The two pools of one kind of payload.
struct SizedPools {
    Pool &small;
    Pool &large;

    // The class of a payload that needs `bytes` bytes, its terminating zero included.
    StorageClass class_for(size_t bytes) const {
        if (bytes <= small.element_size) [[likely]]
            return StorageClass::small;
        return bytes <= large.element_size ? StorageClass::large : StorageClass::heap;
    }

    // A pooled block of the class; null for the heap class, whose blocks the owner makes.
    char *take(StorageClass storage) const {
        if (storage == StorageClass::heap) [[unlikely]]
            return nullptr;
        if (storage == StorageClass::small) [[likely]]
            return static_cast<char *>(small.take());
        return static_cast<char *>(large.take());
    }

    // Returns a block to where its class says. Null is ignored.
    void give(StorageClass storage, void *block) const {
        if (block == nullptr) [[unlikely]]
            return;
        if (storage == StorageClass::small) [[likely]] {
            small.give(block);
        } else if (storage == StorageClass::large) {
            large.give(block);
        } else {
            ph_free_named(block);
        }
    }
};

}  // namespace oru

#endif
