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
    const char *end = key.first + 1;
    for (; end <= segment.last && *end != ';'; ++end) {
        if (*end != '=')
            continue;
        if (key.equal != nullptr)
            ORU_FAIL_SEGMENT("failure - multiple = chars %d %d '%s'");
        key.equal = end;
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
    const char *raw = key.equal + 1;
    const auto length = static_cast<int32_t>(key.last - key.equal);
    if (parse.unescape) {
        oru_do_uri_unescape_str_l(raw, length, buffer.get());
    } else {
        oru_do_strbuf_add_string_l(buffer.get(), raw, length);
    }
    if (oru_do_strbuf_get_err(buffer.get()) != 0)
        return;
    const char *text = oru_do_strbuf_to_string(buffer.get());
    ORUDoValue *value = oru_do_value_new_string_l(text, oru_do_strbuf_get_len(buffer.get()));
    const int32_t added = oru_do_nvlist_add_l(segment.record.keys, key.first,
                                              static_cast<int32_t>(key.equal - key.first), value);
    oru_do_value_deref(value);
    if (added > 0)
        ORU_TRACE(Level::detail, "parsed key value '%s'", text);
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
