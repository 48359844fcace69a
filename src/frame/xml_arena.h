// Memory for the nodes of one document, freed at once.
#ifndef ORU_SRC_FRAME_XML_ARENA_H
#define ORU_SRC_FRAME_XML_ARENA_H

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace oru {

class XmlArena {
  public:
    XmlArena() = default;
    XmlArena(XmlArena &&other) noexcept { *this = std::move(other); }
    XmlArena &operator=(XmlArena &&other) noexcept {
        std::swap(blocks_, other.blocks_);
        std::swap(next_, other.next_);
        std::swap(left_, other.left_);
        return *this;
    }
    ~XmlArena();

    // Null when memory runs out.
    void *take(size_t size) {
        size = (size + kAlignment - 1) / kAlignment * kAlignment;
        if (size > left_ && !add_block(size)) [[unlikely]]
            return nullptr;
        left_ -= size;
        return std::exchange(next_, next_ + size);
    }

    // A record that is all zero.
    template <class T>
    T *make() {
        static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= kAlignment);
        void *place = take(sizeof(T));
        return place != nullptr ? ::new (place) T{} : nullptr;
    }

  private:
    static constexpr size_t kAlignment = alignof(void *);
    static constexpr size_t kBlockSize = size_t{32} << 10;

    struct Block {
        Block *next;
    };

    bool add_block(size_t size);

    Block *blocks_ = nullptr;
    char *next_ = nullptr;
    size_t left_ = 0;
};

}  // namespace oru

#endif
