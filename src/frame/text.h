// Texts of the tagged heap.
#ifndef ORU_SRC_FRAME_TEXT_H
#define ORU_SRC_FRAME_TEXT_H

#include <cstring>
#include <utility>

#include "frame/tags.h"
#include "oruplatform/poolheap.h"

namespace oru {

// A zero-terminated copy of `size` bytes, or null. Bytes behind a zero are copied too.
inline char *duplicate(const char *bytes, size_t size, Tag tag = Tag::strdup) {
    auto *copy = static_cast<char *>(ph_malloc_named(tag_word(tag), size + 1));
    if (copy == nullptr)
        return nullptr;
    std::memcpy(copy, bytes, size);
    copy[size] = '\0';
    return copy;
}

inline char *duplicate(const char *text, Tag tag = Tag::strdup) {
    return duplicate(text, std::strlen(text), tag);
}

// Owns a text (or any block) of the tagged heap for a scope.
class Text {
  public:
    explicit Text(char *block = nullptr) : block_(block) {}
    Text(Text &&other) noexcept : block_(other.release()) {}
    Text &operator=(Text &&other) noexcept {
        reset(other.release());
        return *this;
    }
    ~Text() { reset(nullptr); }

    char *get() const { return block_; }
    explicit operator bool() const { return block_ != nullptr; }
    [[nodiscard]] char *release() { return std::exchange(block_, nullptr); }
    void reset(char *block) {
        if (char *old = std::exchange(block_, block))
            ph_free_named(old);
    }

  private:
    char *block_;
};

// Replaces a text that a record owns by a copy of `text`; null clears.
inline void replace_text(char *&held, const char *text) {
    char *copy = text != nullptr ? duplicate(text) : nullptr;
    if (char *old = std::exchange(held, copy))
        ph_free_named(old);
}

}  // namespace oru

#endif
