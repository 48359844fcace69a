// Copies of a few bytes, which are most of those that texts are put together from: the call that
// they are spared takes longer than the copy.
#ifndef ORU_SRC_FRAME_COPY_H
#define ORU_SRC_FRAME_COPY_H

#include <cstdint>
#include <cstring>

namespace oru {

// From `size` to 2 * `size` bytes, in two steps that may overlap.
template <size_t size>
void copy_in_two(char *out, const char *bytes, size_t n) {
    char first[size];
    char last[size];
    std::memcpy(first, bytes, size);
    std::memcpy(last, bytes + n - size, size);
    std::memcpy(out, first, size);
    std::memcpy(out + n - size, last, size);
}

inline void copy_bytes(char *out, const char *bytes, size_t n) {
    if (n >= 8) {
        if (n <= 16) {
            copy_in_two<8>(out, bytes, n);
        } else if (n <= 32) {
            copy_in_two<16>(out, bytes, n);
        } else {
            std::memcpy(out, bytes, n);
        }
    } else if (n >= 4) {
        copy_in_two<4>(out, bytes, n);
    } else if (n >= 2) {
        copy_in_two<2>(out, bytes, n);
    } else if (n == 1) {
        *out = *bytes;
    }
}

}  // namespace oru

#endif
