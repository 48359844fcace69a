#ifndef ORU_SRC_DO_NAME_H
#define ORU_SRC_DO_NAME_H

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

inline bool same_name(const ORUDoName *a, const ORUDoName *b) {
    return a == b || std::strcmp(a->str, b->str) == 0;
}

}  // namespace oru

#endif
