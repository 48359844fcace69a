// The keys of a segment, ";name=value" each.
#include "do/strbuf.h"
#include "do/uri_parse.h"
#include "oru/nvlist.h"
#include "oru/value.h"

namespace {

using oru::Level;
using oru::Ref;
using Parse = oru::UriParse;
using Segment = oru::UriParseSegment;

// A key at hand. Without an equal sign `equal` is null.
struct Key {
    const char *first;
    const char *equal;
    const char *last;
};

bool find_key_end(const Parse &parse, const Segment &segment, Key &key) {
    if (*key.first == ';')
        ORU_FAIL_SEGMENT("failure - extra ; char %d %d '%s'");
    if (*key.first == '=')
        ORU_FAIL_SEGMENT("failure - misplaced = char %d %d '%s'");
    const char *end = oru::uri_scan_part(key.first + 1);
    if (*end == '=') {
        key.equal = end;
        end = oru::uri_scan_part(end + 1);
        if (*end == '=')
            ORU_FAIL_SEGMENT("failure - multiple = chars %d %d '%s'");
    }
    if (end == segment.last)
        ORU_FAIL_SEGMENT("failure - no keys after semi %d %d '%s'");
    key.last = end - 1;
    return true;
}

bool check_key_name(const Parse &parse, const Key &key) {
    const long first = parse.offset(key.first);
    const long equal = parse.offset(key.equal);
    const long last = parse.offset(key.last);
    ORU_TRACE(Level::detail, "parse key %ld %ld %ld '%s'", first, equal, last, parse.text());
    if (key.equal != nullptr)
        return true;
    ORU_TRACE(Level::failure, "key name cant be null %ld %ld %ld %s", first, equal, last,
              parse.text());
    return false;
}

// A key whose value finds no memory is left out.
void add_key(const Parse &parse, const Segment &segment, const Key &key) {
    const auto buffer = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buffer)
        return;
    const std::string_view raw(key.equal + 1, static_cast<size_t>(key.last - key.equal));
    if (parse.unescape) {
        oru::uri_unescape(raw, *buffer);
    } else {
        oru::strbuf_append(*buffer, raw);
    }
    if (buffer->cur == nullptr)
        return;
    const std::string_view name(key.first, static_cast<size_t>(key.equal - key.first));
    ORUDoValue *value = oru_do_value_new_string_l(buffer->str, buffer->len);
    if (oru::nvlist_hand_over(*segment.record.keys, name, value) > 0)
        ORU_TRACE(Level::detail, "parsed key value '%s'", buffer->str);
}

bool parse_key(const Parse &parse, const Segment &segment, Key &key) {
    if (!find_key_end(parse, segment, key))
        return false;
    if (segment.record.keys == nullptr)
        segment.record.keys = oru_do_nvlist_new();
    if (segment.record.keys == nullptr || !check_key_name(parse, key))
        return false;
    add_key(parse, segment, key);
    return true;
}

}  // namespace

// What stands alone at the segment's end is not looked at: "a;b" and "a;;" pass without keys.
bool oru::uri_parse_keys(const UriParse &parse, const UriParseSegment &segment) {
    const char *cursor = segment.name_end + 1;
    while (cursor < segment.last) {
        Key key{cursor, nullptr, nullptr};
        if (!parse_key(parse, segment, key))
            return false;
        cursor = key.last + 2;
    }
    return true;
}
