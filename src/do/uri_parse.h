#ifndef ORU_SRC_DO_URI_PARSE_H
#define ORU_SRC_DO_URI_PARSE_H

#include <array>

#include "do/uri.h"

namespace oru {

// What cuts a text. Behind the last character that is read stands a slash or the terminating zero,
// so that a scan needs no other bound.
enum UriStop : uint8_t {
    kUriSegmentStop = 1,  // a slash, a question mark, the zero
    kUriKeyStop = 2,      // a semicolon, an equal sign
};

inline constexpr std::array<uint8_t, 256> kUriStops = [] {
    std::array<uint8_t, 256> stops{};
    stops['\0'] = stops['/'] = stops['?'] = kUriSegmentStop;
    stops[';'] = stops['='] = kUriKeyStop;
    return stops;
}();

inline const char *uri_scan(const char *place, int stops) {
    while ((kUriStops[static_cast<uint8_t>(*place)] & stops) == 0)
        ++place;
    return place;
}

// The end of what stands at `place` inside a segment: of a name, a key's name or a value.
inline const char *uri_scan_part(const char *place) {
    return uri_scan(place, kUriSegmentStop | kUriKeyStop);
}

// What the steps of a parse share.
struct UriParse {
    ORUDoUri &uri;
    bool unescape;
    bool soft;           // whether running out of room fails, or ends the process
    const char *cursor;  // the first character of the next segment
    const char *last;    // the last character that is read
    const char *query = nullptr;

    const char *text() const { return uri.uri_str; }
    long offset(const char *place) const { return place != nullptr ? place - uri.uri_str : -1; }
};

// The segment at hand: from its first character through its last.
struct UriParseSegment {
    ORUDoUriSegment &record;
    const char *first;
    const char *last;
    const char *name_end;  // behind the reference name
};

// The keys behind the name of a segment. False for keys that break the grammar, which is traced,
// and without memory for their list.
bool uri_parse_keys(const UriParse &parse, const UriParseSegment &segment);

}  // namespace oru

// The line of a failure within a segment, told with the segment's place.
#define ORU_FAIL_SEGMENT(format)                                                           \
    do {                                                                                   \
        ORU_TRACE(::oru::Level::failure, format, segment.record.start, segment.record.end, \
                  parse.text());                                                           \
        return false;                                                                      \
    } while (false)

#endif
