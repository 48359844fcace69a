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
// word; the rest is compared only where that word is the same.
class NameQuery {
  public:
    explicit NameQuery(const char *text) : NameQuery(text, std::strlen(text)) {}

    NameQuery(const char *text, size_t length) : text_(text), size_(length + 1) {
        if (size_ >= kWord) {
            first_ = word_at(text);
            return;
        }
        for (size_t i = 0; i < length; ++i)
            first_ |= uint64_t{static_cast<uint8_t>(text[i])} << (8 * i);
        seen_ >>= 8 * (kWord - size_);
    }

    // `name` is the text of a record. It can be read as far as a record's own text may go: it
    // stands inside the record, or is longer than what fits there.
    bool matches(const char *name) const {
        if (((word_at(name) ^ first_) & seen_) != 0)
            return false;
        return size_ <= kWord || has_rest(name);
    }

  private:
    static constexpr size_t kWord = sizeof(uint64_t);

    // The first character lowest.
    static uint64_t word_at(const char *place) {
        uint64_t word;
        std::memcpy(&word, place, kWord);
        return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
    }

    // What stands behind the first word, in words of which the last two may overlap.
    bool has_rest(const char *name) const {
        if (size_ > sizeof ORUDoName::inline_text)
            return std::strcmp(name + kWord, text_ + kWord) == 0;
        const size_t last = size_ - kWord;
        for (size_t at = kWord; at < last; at += kWord) {
            if (word_at(name + at) != word_at(text_ + at))
                return false;
        }
        return word_at(name + last) == word_at(text_ + last);
    }

    const char *text_;
    size_t size_;  // the terminating zero included
    uint64_t first_ = 0;
    uint64_t seen_ = ~uint64_t{};  // the part of the word that the text fills
};

inline bool same_name(const ORUDoName *a, const ORUDoName *b) {
    return a == b || std::strcmp(a->str, b->str) == 0;
}

}  // namespace oru

#endif
