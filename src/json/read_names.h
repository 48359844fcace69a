// Names that a text repeats from object to object.
#ifndef ORU_SRC_JSON_READ_NAMES_H
#define ORU_SRC_JSON_READ_NAMES_H

#include <cstring>

#include "do/name.h"
#include "json/read.h"

namespace oru::json {

// The names that were read last, one at each place. Objects of one text that have a name in common
// share it, which takes less time than making it, and no memory.
class NameCache {
  public:
    // Longer names are not kept.
    static constexpr size_t kLongest = sizeof ORUDoName::inline_text - 1;

    NameCache() = default;
    NameCache(const NameCache &) = delete;
    NameCache &operator=(const NameCache &) = delete;
    ~NameCache();

    // A name of this text, with a reference. Null when memory runs out.
    Ref<ORUDoName> get(const char *text, size_t size);

  private:
    static constexpr size_t kPlaces = 64;
    struct Place {
        ORUDoName *name;
        size_t size;  // of the text as it was read, which a zero may have ended sooner
    };

    static size_t place_of(const char *text, size_t size);

    Place places_[kPlaces]{};
};

// The name of a member of an object, or of a text in it.
Ref<ORUDoName> read_name(ORUDoJsonCtxData *ctx, const char *text, int32_t length);

}  // namespace oru::json

#endif
