#include "oruplatform/poolheap.h"

#include <cstdlib>
#include <cstring>

#include "platform/block_registry.h"
#include "platform/codes.h"
#include "platform/failure_hook.h"
#include "platform/fatal.h"
#include "platform/sanitizers.h"
#include "platform/tag_counters.h"

using namespace oru::platform;

namespace {

// In front of every block. Each block is one of the C library, so that the checked builds see its
// bounds and its life; the header itself is then poisoned.
struct alignas(16) Header {
    size_t size;
    uint32_t slot;
    uint32_t mark;
};
static_assert(sizeof(Header) == 16);

constexpr uint32_t kMark = 0x70683a31;
constexpr size_t kMaxSize = PTRDIFF_MAX - sizeof(Header);

// The leak check does not see a pointer that only touches the end of a block, as one to an empty
// block behind its header would.
size_t whole_size(size_t size) {
    return sizeof(Header) + (kWithAsan && size == 0 ? 1 : size);
}

// Fills the header of a block that was just made and hands it out.
void *hand_out(void *raw, size_t size, uint32_t slot, uint32_t tag) {
    auto *header = static_cast<Header *>(raw);
    *header = {.size = size, .slot = slot, .mark = kMark};
    poison(header, sizeof *header);
    void *block = header + 1;
    if constexpr (kWithRegistry) {
        register_block(block, tag);
    }
    return block;
}

void *count_and_hand_out(void *raw, size_t size, uint32_t tag) {
    if (raw == nullptr) {
        return nullptr;
    }
    const uint32_t slot = tag_slot(tag);
    count_taken(slot, size);
    return hand_out(raw, size, slot, tag);
}

void *make_block(uint32_t tag, size_t size) {
    return size > kMaxSize ? nullptr : count_and_hand_out(malloc(whole_size(size)), size, tag);
}

// The header of a block that the caller gives back. Without the registry a foreign pointer is known
// by its missing mark, if it can be read at all.
Header *take_in(void *block, const char *operation) {
    if constexpr (kWithRegistry) {
        unregister_block(block, operation);
    }
    Header *header = static_cast<Header *>(block) - 1;
    unpoison(header, sizeof *header);
    if (header->mark != kMark) {
        fatal("%s: %p is no block, or is free already", operation, block);
    }
    return header;
}

void *resize(uint32_t tag, void *block, size_t size) {
    Header *header = take_in(block, "ph_realloc_named");
    const Header old = *header;
    void *raw = realloc(header, whole_size(size));
    if (raw == nullptr) {
        hand_out(header, old.size, old.slot, g_slot_tags[old.slot]);
        return nullptr;
    }
    const uint32_t slot = tag_slot(tag);
    const uint64_t blocks = slot == old.slot ? 0 : 1;
    count_given_back(old.slot, old.size, blocks);
    count_taken(slot, size, blocks);
    return hand_out(raw, size, slot, tag);
}

}  // namespace

void *ph_malloc_named(uint32_t tag, size_t size) {
    return must_fail(tag) ? nullptr : make_block(tag, size);
}

void *ph_calloc_named(uint32_t tag, size_t count, size_t size) {
    size_t bytes = 0;
    if (must_fail(tag) || __builtin_mul_overflow(count, size, &bytes) || bytes > kMaxSize) {
        return nullptr;
    }
    return count_and_hand_out(calloc(1, whole_size(bytes)), bytes, tag);
}

void *ph_realloc_named(uint32_t tag, void *block, size_t size) {
    if (must_fail(tag) || size > kMaxSize) {
        return nullptr;
    }
    return block == nullptr ? make_block(tag, size) : resize(tag, block, size);
}

char *ph_strdup_named(uint32_t tag, const char *text) {
    if (text == nullptr || must_fail(tag)) {
        return nullptr;
    }
    const size_t size = strlen(text) + 1;
    void *copy = make_block(tag, size);
    return copy == nullptr ? nullptr : static_cast<char *>(memcpy(copy, text, size));
}

int32_t ph_free_named(void *block) {
    if (block == nullptr) {
        return kOk;
    }
    Header *header = take_in(block, "ph_free_named");
    count_given_back(header->slot, header->size);
    header->mark = 0;
    free(header);
    return kOk;
}
