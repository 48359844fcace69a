#ifndef ORU_SRC_DO_URI_PARSE_H
#define ORU_SRC_DO_URI_PARSE_H

#include "do/uri.h"

namespace oru {

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
