#ifndef ORU_SRC_DO_URI_H
#define ORU_SRC_DO_URI_H

#include <string_view>

#include "do/nvlist.h"
#include "do/strbuf.h"
#include "frame/object.h"
#include "frame/sized_storage.h"
#include "oru/uri.h"

namespace oru {

inline constexpr int32_t kUriMaxSegments = URI_MAX_SEGMENTS;
inline constexpr int32_t kUriFailed = kUriMaxSegments + 1;
inline constexpr int32_t kUriRefNameRoom = 64;
inline constexpr std::string_view kUriSystemRoot = "//";

}  // namespace oru

struct ORUDoUriSegment {
    ORUDoNvlist *keys;  // in text order, null for none; URIs made of each other share it
    uint16_t start;     // offsets in the text, which wrap in a text of more than 65,535 characters
    uint16_t end;       // inclusive
    char ref_name[oru::kUriRefNameRoom];
};

struct ORUDoUri {
    char *uri_str;
    char *parent_str;
    ORUDoUri *parent_uri;
    ORUDoUriSegment *segments;  // null until the URI was parsed or pre-filled, then segment_table
    char *query_part;
    int32_t ref_count;
    int32_t num_segments;  // kUriFailed after a parse that failed
    ORUDoUriSegment segment_table[oru::kUriMaxSegments];
    oru::StorageClass uri_str_alloc;
    oru::StorageClass parent_str_alloc;
    oru::StorageClass query_alloc;
};

template <>
struct oru::ObjectType<ORUDoUri> {
    static constexpr const char *name = "oru_do_uri";
    static constexpr Tag tag = Tag::uri;
    static auto &count(ORUDoUri &self) { return self.ref_count; }
    static void release_members(ORUDoUri &self);
};

namespace oru {

// The pools of the texts.
extern const SizedPools uri_texts;

// One of the texts of a URI, with the class that is recorded beside it.
struct UriText {
    char *&text;
    StorageClass &storage;

    // Replaces the text by a copy. Its class is that of a text which needs `room` bytes: the bound
    // differs by one between the texts, so the caller tells it. False when memory runs out; there
    // is no text then.
    bool assign(std::string_view copied, size_t room);
    // The same with the class given.
    bool store(std::string_view copied, StorageClass wanted);
    void release();
};

inline UriText uri_text(ORUDoUri &uri) {
    return {uri.uri_str, uri.uri_str_alloc};
}

inline UriText parent_text(ORUDoUri &uri) {
    return {uri.parent_str, uri.parent_str_alloc};
}

inline UriText query_text(ORUDoUri &uri) {
    return {uri.query_part, uri.query_alloc};
}

// The room that the texts of plain construction and those cut from another URI's text ask for: one
// byte more than they fill.
constexpr size_t roomy(size_t length) {
    return length + 2;
}

// The room that all other texts ask for.
constexpr size_t exact_room(size_t length) {
    return length + 1;
}

// A URI of a counted text, not parsed. Null when memory runs out.
Ref<ORUDoUri> make_uri(std::string_view text);

// The same of a buffer's text. Null for a buffer in the failed state too.
Ref<ORUDoUri> make_uri(const ORUDoStrbuf &buf);

// Cuts the text into its segments, keys and query part, once: a URI that was looked at already
// only answers. False for one that breaks the grammar. `unescape` tells whether key values are
// unescaped; `soft`, whether a segment or name too many fails or ends the process.
bool uri_parse(ORUDoUri &uri, bool unescape, bool soft);

// A buffer to write a derived text into; one that cannot be had is traced.
Ref<ORUDoStrbuf> uri_buffer();

// What every accessor does first.
inline bool uri_inspect(ORUDoUri &uri) {
    return uri_parse(uri, true, false);
}

// Parsed and good, or pre-filled.
inline bool uri_is_parsed(const ORUDoUri &uri) {
    return uri.segments != nullptr && uri.num_segments < kUriFailed;
}

// The text through the end of its `n`-th segment, from 1; empty for an `n` below 1.
std::string_view uri_prefix(const ORUDoUri &uri, int32_t n);

// Pre-filling, of URIs whose segments their maker knows. Both do nothing unless `src` is parsed and
// has `n` segments.
void uri_copy_segments(ORUDoUri &dst, const ORUDoUri &src, int32_t n);
// False when memory runs out.
bool uri_set_parent_from_prefix(ORUDoUri &dst, const ORUDoUri &src, int32_t n);

// Both.
bool uri_prefill(ORUDoUri &dst, const ORUDoUri &src, int32_t n);

// One more segment behind those of a pre-filled URI, whose table has room. The reference on `keys`
// is handed over.
void uri_append_segment(ORUDoUri &dst, size_t start, size_t end, std::string_view ref_name,
                        Ref<ORUDoNvlist> keys);

// The way back from the escaped form; a failure is the buffer's.
void uri_unescape(std::string_view text, ORUDoStrbuf &out);

// Keys as text, ";name=value" each, appended to `buf`. With `collected` the list that a parse of
// that text would give is made too. False for a value that cannot be read, and without memory.
bool uri_add_keys(ORUDoStrbuf &buf, ORUDoNvlist &keys, Ref<ORUDoNvlist> *collected);

}  // namespace oru

#endif
