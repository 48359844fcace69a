#ifndef ORU_SRC_DO_STRBUF_H
#define ORU_SRC_DO_STRBUF_H

#include <string_view>

#include "frame/object.h"
#include "oru/strbuf.h"

struct ORUDoStrbuf {
    char *str;
    int32_t size;
    char *cur;     // the terminating zero; null is the failed state
    int32_t left;  // reserved, nothing reads it
    int32_t len;
    uint32_t ref;
    int32_t on_heap;
};

template <>
struct oru::ObjectType<ORUDoStrbuf> {
    static constexpr const char *name = "oru_do_strbuf";
    static constexpr Tag tag = Tag::strbuf;
    static auto &count(ORUDoStrbuf &self) { return self.ref; }
    static void release_members(ORUDoStrbuf &self);
};

namespace oru {

// Appends the bytes as they are. False in the failed state, which a failed growth enters.
bool strbuf_append(ORUDoStrbuf &buf, std::string_view bytes);

}  // namespace oru

#endif
