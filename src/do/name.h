#ifndef ORU_SRC_DO_NAME_H
#define ORU_SRC_DO_NAME_H

#include <bit>
#include <cstring>

#include "frame/object.h"
#include "oru/name.h"

struct ORUDoName {
    uint32_t ref;
    char *str;             // never null once built
    char inline_text[32];  // what `str` points to, for a text that fits
};

template <>
struct oru::ObjectType<ORUDoName> {
    static constexpr const char *name = "oru_do_name";
    static constexpr Tag tag = Tag::name;
    static auto &count(ORUDoName &self) { return self.ref; }
    static void release_members(ORUDoName &self);
};

namespace oru {

// The text of a name that is known to be there, borrowed.
inline const char *name_text(const ORUDoName *name) {
    return name->str;
}

// A zero-terminated text to find among many names. A step of a walk costs the comparison of one
// word; texts are compared only where that word is the same.
class NameQuery {
  public:
    explicit NameQuery(const char *text) : text_(text) {
        for (size_t i = 0; i < sizeof first_; ++i) {
            first_ |= uint64_t{static_cast<uint8_t>(text[i])} << (8 * i);
            if (text[i] == '\0') {
                seen_ >>= 8 * (sizeof first_ - 1 - i);
                whole_ = true;
                break;
            }
        }
    }

    // `name` is the text of a record. It can be read to the end of a word in any case: it stands
    // inside the record, or is longer than what fits there.
    bool matches(const char *name) const {
        if (((first_word(name) ^ first_) & seen_) != 0)
            return false;
        return whole_ || std::strcmp(name + sizeof first_, text_ + sizeof first_) == 0;
    }

  private:
    static uint64_t first_word(const char *name) {
        static_assert(sizeof first_ <= sizeof ORUDoName::inline_text);
        uint64_t word;
        std::memcpy(&word, name, sizeof word);
        return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
    }

    const char *text_;
    uint64_t first_ = 0;           // the first character lowest
    uint64_t seen_ = ~uint64_t{};  // through the terminating zero, if that is among them
    bool whole_ = false;
};

inline bool same_name(const ORUDoName *a, const ORUDoName *b) {
    return a == b || std::strcmp(a->str, b->str) == 0;
}

}  // namespace oru

#endif
