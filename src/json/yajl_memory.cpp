#include "json/yajl_memory.h"

#include "frame/tags.h"
#include "oruplatform/poolheap.h"

namespace oru::json {

YajlMemory::YajlMemory() : functions_{allocate, reallocate, give_back, this} {}

// Puts a block into the chain and gives its bytes.
void *YajlMemory::link(Block *block) {
    if (block == nullptr)
        std::longjmp(way_out_, 1);
    block->before = nullptr;
    block->behind = blocks_;
    if (blocks_ != nullptr)
        blocks_->before = block;
    blocks_ = block;
    return block + 1;
}

void *YajlMemory::allocate(void *memory, size_t size) {
    return static_cast<YajlMemory *>(memory)->link(
        static_cast<Block *>(ph_malloc_named(tag_word(Tag::json), sizeof(Block) + size)));
}

void *YajlMemory::reallocate(void *memory, void *bytes, size_t size) {
    if (bytes == nullptr)
        return allocate(memory, size);
    auto *self = static_cast<YajlMemory *>(memory);
    Block *block = static_cast<Block *>(bytes) - 1;
    auto *moved =
        static_cast<Block *>(ph_realloc_named(tag_word(Tag::json), block, sizeof(Block) + size));
    if (moved == nullptr)
        std::longjmp(self->way_out_, 1);
    (moved->before != nullptr ? moved->before->behind : self->blocks_) = moved;
    if (moved->behind != nullptr)
        moved->behind->before = moved;
    return moved + 1;
}

void YajlMemory::give_back(void *memory, void *bytes) {
    if (bytes == nullptr)
        return;
    Block *block = static_cast<Block *>(bytes) - 1;
    (block->before != nullptr ? block->before->behind
                              : static_cast<YajlMemory *>(memory)->blocks_) = block->behind;
    if (block->behind != nullptr)
        block->behind->before = block->before;
    ph_free_named(block);
}

void YajlMemory::release() {
    while (blocks_ != nullptr)
        give_back(this, blocks_ + 1);
}

}  // namespace oru::json
