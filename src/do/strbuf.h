#ifndef ORU_SRC_DO_STRBUF_H
#define ORU_SRC_DO_STRBUF_H

#include <string_view>

#include "frame/copy.h"
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

// Makes the storage larger by at least `more` bytes. False when it cannot be had, which enters the
// failed state; no later growth leaves it.
bool strbuf_grow_by(ORUDoStrbuf &buf, int64_t more);

// The cursor with room for `more` bytes and the zero behind them; null in the failed state.
inline char *strbuf_room(ORUDoStrbuf &buf, size_t more) {
    if (buf.cur == nullptr) [[unlikely]]
        return nullptr;
    const auto wanted = static_cast<int64_t>(more);
    if (buf.size - buf.len <= wanted && !strbuf_grow_by(buf, wanted)) [[unlikely]]
        return nullptr;
    return buf.cur;
}

// The text now ends at `end`: what was added stands in front of it already. Gives the new length.
// The fields are written before the zero, which for all that the compiler knows could stand in one
// of them.
inline int32_t strbuf_end_at(ORUDoStrbuf &buf, char *end) {
    const int32_t len = buf.len + static_cast<int32_t>(end - buf.cur);
    buf.cur = end;
    buf.len = len;
    *end = '\0';
    return len;
}

// Appends the bytes as they are. False in the failed state.
inline bool strbuf_append(ORUDoStrbuf &buf, std::string_view bytes) {
    char *out = strbuf_room(buf, bytes.size());
    if (out == nullptr) [[unlikely]]
        return false;
    copy_bytes(out, bytes.data(), bytes.size());  // which may be none, at no address
    strbuf_end_at(buf, out + bytes.size());
    return true;
}

}  // namespace oru

#endif
