// The parse of a URI's text, made at the first inspection: one function a step, in the order in
// which the steps are taken.
#include <cstring>

#include "do/uri_parse.h"

namespace {

using oru::Level;
using Parse = oru::UriParse;
using Segment = oru::UriParseSegment;

void trim_slashes(Parse &parse) {
    for (int i = 0; i < 2 && parse.cursor <= parse.last; ++i) {
        if (*parse.cursor == '/')
            ++parse.cursor;
    }
    if (parse.last > parse.cursor && *parse.last == '/')
        --parse.last;
}

bool fail(Parse &parse) {
    parse.uri.num_segments = oru::kUriFailed;
    return false;
}

bool check_single_slash(Parse &parse) {
    if (*parse.cursor != '/')
        return true;
    ORU_TRACE(Level::failure, "Invalid uri '%s'", parse.text());
    return fail(parse);
}

// Where the name and the segment end. The first character takes no part, so a segment may begin
// with a question mark.
struct Ends {
    const char *name;
    const char *segment;
};

Ends find_ends(Parse &parse) {
    const char *name = oru::uri_scan_part(parse.cursor + 1);
    const char *segment = oru::uri_scan(name, oru::kUriSegmentStop);
    if (*segment == '?')
        parse.query = segment + 1;
    return {name, segment};
}

bool check_segment_room(Parse &parse) {
    if (parse.uri.num_segments < oru::kUriMaxSegments)
        return true;
    fail(parse);
    if (!parse.soft) {
        ORU_FATAL("Insufficient URI MAX segments: '%s'Increase URI_MAX_SEGMENTS %d/%d",
                  parse.text(), oru::kUriFailed, oru::kUriMaxSegments);
    }
    ORU_TRACE(Level::failure, "Insufficient URI MAX segments: '%s'Increase URI_MAX_SEGMENTS %d/%d",
              parse.text(), oru::kUriFailed, oru::kUriMaxSegments);
    return false;
}

bool check_name(const Parse &parse, const Segment &segment) {
    if (segment.last < segment.first)
        ORU_FAIL_SEGMENT("failure - empty segment %d %d '%s'");
    if (*segment.first == ';' || *segment.first == '=')
        ORU_FAIL_SEGMENT("failure - empty ref name %d %d '%s'");
    if (*segment.name_end == '=')
        ORU_FAIL_SEGMENT("failure - equal sign in refname %d %d '%s'");
    if (segment.name_end == segment.last)
        ORU_FAIL_SEGMENT("failure - no keys after semi %d %d '%s'");
    return true;
}

bool copy_name(const Parse &parse, const Segment &segment) {
    const auto length = static_cast<size_t>(segment.name_end - segment.first);
    if (length >= oru::kUriRefNameRoom) {
        if (!parse.soft) {
            ORU_FATAL("Not enough room for ref-name %d %d %s", oru::kUriRefNameRoom,
                      static_cast<int>(length), parse.text());
        }
        ORU_TRACE(Level::failure, "Not enough room for ref-name %d %d '%s'", oru::kUriRefNameRoom,
                  static_cast<int>(length), parse.text());
        return false;
    }
    std::memcpy(segment.record.ref_name, segment.first, length);
    segment.record.ref_name[length] = '\0';
    ORU_TRACE(Level::detail, "parsed refname %d %s", parse.uri.num_segments,
              segment.record.ref_name);
    return true;
}

bool parse_segment(Parse &parse, Ends ends) {
    const Segment segment{parse.uri.segment_table[parse.uri.num_segments], parse.cursor,
                          ends.segment - 1, ends.name};
    segment.record.start = static_cast<uint16_t>(parse.offset(segment.first));
    segment.record.end = static_cast<uint16_t>(parse.offset(segment.last));
    ORU_TRACE(Level::detail, "parse segment %d %d '%s'", segment.record.start, segment.record.end,
              parse.text());
    if (check_name(parse, segment) && copy_name(parse, segment) &&
        oru::uri_parse_keys(parse, segment))
        return true;
    ORU_TRACE(Level::failure, "Failed to parse uri '%s' segment %d", parse.text(),
              parse.uri.num_segments + 1);
    return fail(parse);
}

bool next_segment(Parse &parse) {
    if (!check_single_slash(parse))
        return false;
    const Ends ends = find_ends(parse);
    if (!check_segment_room(parse) || !parse_segment(parse, ends))
        return false;
    ++parse.uri.num_segments;
    parse.cursor = ends.segment + 1;
    return true;
}

// A query of one character counts as empty. A long one is kept to the end of the text, and so
// keeps the slash at its end that a short one loses.
bool set_query(Parse &parse) {
    if (parse.query == nullptr)
        return true;
    if (parse.query >= parse.last) {
        ORU_TRACE(Level::failure, "Failed to parse uri '%s' query part empty", parse.text());
        return fail(parse);
    }
    const auto length = static_cast<size_t>(parse.last - parse.query + 1);
    const size_t room = oru::exact_room(length);
    const bool is_long = oru::uri_texts.class_for(room) == oru::StorageClass::heap;
    const std::string_view kept =
        is_long ? std::string_view(parse.query) : std::string_view(parse.query, length);
    if (!oru::query_text(parse.uri).assign(kept, room))
        return fail(parse);
    ORU_TRACE(Level::detail, "query part %d '%s'", static_cast<int>(length), parse.uri.query_part);
    return true;
}

bool set_parent(Parse &parse) {
    const int32_t above = parse.uri.num_segments - 1;
    const std::string_view parent =
        above > 0 ? oru::uri_prefix(parse.uri, above) : oru::kUriSystemRoot;
    return oru::parent_text(parse.uri).assign(parent, oru::exact_room(parent.size())) ||
           fail(parse);
}

}  // namespace

bool oru::uri_parse(ORUDoUri &uri, bool unescape, bool soft) {
    if (uri.segments != nullptr)
        return uri_is_parsed(uri);
    const size_t length = std::strlen(uri.uri_str);
    if (length == 0) {
        ORU_TRACE(Level::failure, "Invalid empty uri");
        return false;
    }
    ORU_TRACE(Level::detail, "parse uri '%s'", uri.uri_str);
    uri.segments = uri.segment_table;
    uri.num_segments = 0;
    Parse parse{uri, unescape, soft, uri.uri_str, uri.uri_str + length - 1};
    trim_slashes(parse);
    while (parse.cursor <= parse.last && parse.query == nullptr) {
        if (!next_segment(parse))
            return false;
    }
    return set_query(parse) && set_parent(parse);
}
