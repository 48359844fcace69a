#ifndef ORU_SRC_DO_URI_H
#define ORU_SRC_DO_URI_H

#include <string_view>

#include "frame/object.h"
#include "frame/sized_storage.h"
#include "oru/uri.h"

namespace oru {

inline constexpr int32_t kUriMaxSegments = 10;
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

}  // namespace oru

#endif
