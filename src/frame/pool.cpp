#include "frame/pool.h"

#include "frame/trace.h"

namespace oru {
namespace {

// The flag bits that all pools of the library have in common.
constexpr uintptr_t kLibraryFlags = 0x101;

}  // namespace

void *Pool::create(intptr_t count, uintptr_t flags) {
    ORU_TRACE(Level::config, "chunk create %s %zu %lu", type_name, element_size,
              static_cast<unsigned long>(count));
    handle = chunk_create_poolheap(element_size, count, flags | kLibraryFlags, 1, tag_word(tag));
    if (handle == nullptr)
        ORU_FATAL("Unable to create chunk for %s", type_name);
    return handle;
}

void *Pool::take_from_heap() const {
    return ph_calloc_named(tag_word(tag), 1, element_size);
}

void Pool::refused() {
    ORU_FATAL("Failed to free ##name from chunk poolheap_chunk_##type");
}

}  // namespace oru
