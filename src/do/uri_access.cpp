// Reading a URI: its segments, keys and query part. Whatever needs them has the text parsed first.
#include <algorithm>

#include "do/uri.h"
#include "frame/text.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

ORUDoUriSegment *segment_at(ORUDoUri &uri, int32_t index) {
    if (!oru::uri_inspect(uri) || index < 0 || index >= uri.num_segments)
        return nullptr;
    return &uri.segment_table[index];
}

ORUDoUriSegment *last_segment(ORUDoUri &uri) {
    return oru::uri_inspect(uri) ? segment_at(uri, uri.num_segments - 1) : nullptr;
}

ORUDoNvlist *last_keys(ORUDoUri &uri) {
    ORUDoUriSegment *segment = last_segment(uri);
    return segment != nullptr ? segment->keys : nullptr;
}

ORUDoValue *key_at(ORUDoNvlist *keys, int32_t index) {
    ORUDoNvlistItem *item = keys != nullptr ? oru_do_nvlist_get_item(keys, index) : nullptr;
    return item != nullptr ? oru_do_nvlist_item_get_value(item) : nullptr;
}

oru::Ref<ORUDoUri> parent_of(ORUDoUri &uri) {
    auto parent = oru::make_uri(uri.parent_str);
    if (!parent)
        return {};
    oru::uri_copy_segments(*parent, uri, uri.num_segments - 1);
    // The child's own path, not the path above the parent.
    if (!oru::uri_set_parent_from_prefix(*parent, uri, uri.num_segments))
        return {};
    return parent;
}

ORUDoValue *no_key(int32_t *rc) {
    *rc = ORU_RC_GENERAL;
    return nullptr;
}

}  // namespace

const char *oru_do_uri_get_query_part(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return oru::uri_inspect(*uri) ? uri->query_part : nullptr;
}

int32_t oru_do_uri_has_type_query_part(ORUDoUri *uri) {
    const char *query = oru_do_uri_get_query_part(uri);
    return query != nullptr && query[0] == ':';
}

ORUDoUri *oru_do_uri_get_parent_uri(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    if (!oru::uri_inspect(*uri))
        return nullptr;
    if (uri->parent_uri == nullptr && uri->parent_str != nullptr)
        uri->parent_uri = parent_of(*uri).release();
    return uri->parent_uri;
}

int32_t oru_do_uri_get_segment_count(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return oru::uri_inspect(*uri) ? uri->num_segments : 0;
}

ORUDoUriSegment *oru_do_uri_get_segment(ORUDoUri *uri, int32_t index) {
    ORU_REQUIRE(uri);
    return segment_at(*uri, index);
}

ORUDoUriSegment *oru_do_uri_get_segment_last(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return last_segment(*uri);
}

const char *oru_do_uri_segment_get_name(ORUDoUriSegment *segment) {
    ORU_REQUIRE(segment);
    return segment->ref_name;
}

ORUDoNvlist *oru_do_uri_segment_get_keys(ORUDoUriSegment *segment) {
    ORU_REQUIRE(segment);
    return segment->keys;
}

char *oru_do_uri_segment_get_str_copy(ORUDoUri *uri, ORUDoUriSegment *segment) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(segment);
    const int32_t length = segment->end + 1 - segment->start;
    if (length < 0)
        return nullptr;
    // The offsets of a pre-filled segment may lie behind the text.
    const std::string_view text(uri->uri_str);
    const size_t start = std::min(size_t{segment->start}, text.size());
    const std::string_view part = text.substr(start, static_cast<size_t>(length));
    char *copy = oru::duplicate(part.data(), part.size());
    if (copy == nullptr)
        ORU_TRACE(oru::Level::failure, "failed to alloc str for segment string");
    return copy;
}

ORUDoValue *oru_do_uri_segment_get_key_w_type(ORUDoUriSegment *segment, int32_t index, int32_t type,
                                              int32_t *rc) {
    ORU_REQUIRE(segment);
    ORU_REQUIRE(rc);
    ORUDoValue *key = key_at(segment->keys, index);
    if (key == nullptr)
        return no_key(rc);
    *rc = ORU_OK;
    const char *text = oru_do_value_get_string(key, rc);
    if (*rc != ORU_OK)
        return nullptr;
    return oru_do_value_new_from_string(text != nullptr ? text : "", type, rc);
}

ORUDoValue *oru_do_uri_get_key(ORUDoUri *uri, int32_t index) {
    ORU_REQUIRE(uri);
    return key_at(last_keys(*uri), index);
}

ORUDoNvlist *oru_do_uri_get_keys(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return last_keys(*uri);
}

ORUDoValue *oru_do_uri_get_key_w_type(ORUDoUri *uri, int32_t index, int32_t type, int32_t *rc) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(rc);
    ORUDoValue *key = key_at(last_keys(*uri), index);
    return key != nullptr ? oru_do_value_new_from_conversion(key, type, rc) : no_key(rc);
}

ORUDoValue *oru_do_uri_get_key_by_name_w_type(ORUDoUri *uri, const char *name, int32_t type,
                                              int32_t *rc) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(name);
    ORU_REQUIRE(rc);
    ORUDoNvlist *keys = last_keys(*uri);
    ORUDoValue *key = keys != nullptr ? oru_do_nvlist_get_value(keys, name) : nullptr;
    return key != nullptr ? oru_do_value_new_from_conversion(key, type, rc) : no_key(rc);
}

int32_t oru_do_uri_to_strbuf(ORUDoUri *uri, int32_t tabs, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    if (uri == nullptr)
        return 0;
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru::strbuf_append(*strbuf, uri->uri_str);
    return 0;
}
