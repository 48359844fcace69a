// Collections: URIs with a query part, their members, their kinds.
#include "do/uri.h"
#include "frame/text.h"
#include "oru/nvlist.h"
#include "oru/uri_derive.h"

namespace {

using oru::Level;
using oru::Ref;
using oru::Text;

// Where a parsed collection's question mark stands: behind its last segment. In a text whose
// segments were counted one too long by a maker it is found from the query part instead.
size_t question_mark(const ORUDoUri &uri) {
    const std::string_view text(uri.uri_str);
    const size_t behind = size_t{uri.segment_table[uri.num_segments - 1].end} + 1;
    if (behind < text.size() && text[behind] == '?')
        return behind;
    const size_t query = text.rfind(uri.query_part);
    return text.rfind('?', query - 1);
}

char *member_of_parsed(const ORUDoUri &coll) {
    if (coll.query_part == nullptr || coll.num_segments < 1)
        return nullptr;
    if (coll.num_segments >= oru::kUriMaxSegments) {
        ORU_FATAL("Insufficient URI MAX segments: '%s'Increase URI_MAX_SEGMENTS %d/%d",
                  coll.uri_str, coll.num_segments, oru::kUriMaxSegments);
    }
    const size_t mark = question_mark(coll);
    char *member = oru::duplicate(coll.uri_str);
    if (member != nullptr && mark != std::string_view::npos)
        member[mark] = '/';
    return member;
}

// The index alone tells "/?x" and "//?x", so a base of one character is lost too.
char *member_of_text(std::string_view coll) {
    const size_t mark = coll.rfind('?');
    if (mark == std::string_view::npos)
        return nullptr;
    const auto buf = oru::uri_buffer();
    if (!buf)
        return nullptr;
    const std::string_view base = mark == 1   ? std::string_view("")
                                  : mark == 2 ? std::string_view("/")
                                              : coll.substr(0, mark);
    oru::strbuf_append(*buf, base);
    oru::strbuf_append(*buf, "/");
    oru::strbuf_append(*buf, coll.substr(mark + 1));
    if (oru_do_strbuf_get_err(buf.get()) != 0)
        return nullptr;
    return oru::duplicate(buf->str, static_cast<size_t>(buf->len));
}

char *member_text(const ORUDoUri &coll) {
    return oru::uri_is_parsed(coll) ? member_of_parsed(coll) : member_of_text(coll.uri_str);
}

// The member's URI with the keys behind it, none for a null list, and as text how long they are.
Ref<ORUDoUri> member_with_keys(const char *member, ORUDoNvlist *keys, size_t &added,
                               Ref<ORUDoNvlist> *collected) {
    added = 0;
    if (keys == nullptr || oru_do_nvlist_get_len(keys) == 0)
        return oru::make_uri(member);
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        return {};
    oru::strbuf_append(*buf, member);
    const int32_t before = buf->len;
    if (!oru::uri_add_keys(*buf, *keys, collected))
        return {};
    added = static_cast<size_t>(buf->len - before);
    return oru::make_uri(*buf);
}

void check_query_room(std::string_view query) {
    if (query.size() >= oru::kUriRefNameRoom) {
        ORU_FATAL("Not enough room for ref name %d %d %s", oru::kUriRefNameRoom,
                  static_cast<int>(query.size()), query.data());
    }
}

Ref<ORUDoUri> member_of_parsed(ORUDoUri &coll, const char *member, ORUDoNvlist *keys) {
    const std::string_view query(coll.query_part);
    Ref<ORUDoNvlist> collected;
    size_t added = 0;
    auto uri = member_with_keys(member, keys, added, &collected);
    check_query_room(query);
    if (!uri || !oru::uri_prefill(*uri, coll, coll.num_segments))
        return {};
    const size_t start = size_t{coll.segment_table[coll.num_segments - 1].end} + 2;
    oru::uri_append_segment(*uri, start, start + query.size() + added - 1, query,
                            std::move(collected));
    return uri;
}

// "<base>?<name>" of a URI's last segment. False when the text has no name at its end.
bool write_coll_of_last(std::string_view text, ORUDoStrbuf &buf) {
    const size_t slash = text.rfind('/');
    if (slash == std::string_view::npos || slash + 1 == text.size())
        return false;
    oru::strbuf_append(buf, slash == 0 ? std::string_view("/") : text.substr(0, slash));
    oru::strbuf_append(buf, "?");
    oru::strbuf_append(buf, text.substr(slash + 1));
    return true;
}

// The query is what stands behind the base; the parser could not find it in a base without
// segments.
bool prefill_coll(ORUDoUri &coll, const ORUDoUri &uri, const char *ref) {
    const std::string_view text(uri.uri_str);
    const std::string_view query = ref != nullptr ? ref : text.substr(text.rfind('/') + 1);
    const int32_t n = ref != nullptr ? uri.num_segments : uri.num_segments - 1;
    return oru::uri_prefill(coll, uri, n) &&
           oru::query_text(coll).assign(query, oru::exact_room(query.size()));
}

}  // namespace

ORUDoUri *oru_do_uri_new_from_coll_uri(ORUDoUri *coll_uri, ORUDoNvlist *keys) {
    if (coll_uri == nullptr)
        return nullptr;
    const Text member(member_text(*coll_uri));
    if (!member)
        return nullptr;
    if (oru::uri_is_parsed(*coll_uri))
        return member_of_parsed(*coll_uri, member.get(), keys).release();
    size_t added = 0;
    return member_with_keys(member.get(), keys, added, nullptr).release();
}

ORUDoUri *oru_do_uri_new_from_coll_uri_str(const char *uri_str, ORUDoNvlist *keys) {
    ORU_REQUIRE(uri_str);
    const Text member(member_of_text(uri_str));
    size_t added = 0;
    return member ? member_with_keys(member.get(), keys, added, nullptr).release() : nullptr;
}

ORUDoUri *oru_do_uri_get_child_uri_from_coll_uri(ORUDoUri *coll_uri) {
    ORU_REQUIRE(coll_uri);
    return oru_do_uri_new_from_coll_uri(coll_uri, nullptr);
}

char *oru_do_uri_get_child_from_coll_uri(ORUDoUri *coll_uri) {
    ORU_REQUIRE(coll_uri);
    return member_text(*coll_uri);
}

ORUDoUri *oru_do_uri_new_coll(ORUDoUri *uri, const char *ref) {
    ORU_REQUIRE(uri);
    const auto buf = oru::uri_buffer();
    if (!buf)
        return nullptr;
    if (ref != nullptr) {
        oru::strbuf_append(*buf, uri->uri_str);
        oru::strbuf_append(*buf, "?");
        oru::strbuf_append(*buf, ref);
    } else if (!write_coll_of_last(uri->uri_str, *buf)) {
        return nullptr;
    }
    auto coll = oru::make_uri(*buf);
    if (coll && oru::uri_is_parsed(*uri) && !prefill_coll(*coll, *uri, ref))
        return nullptr;
    return coll.release();
}

ORUDoUri *oru_do_uri_new_coll_wildcard(ORUDoUri *uri, const char *ref, const char *type) {
    ORU_REQUIRE(type);
    const bool whole_system = uri == nullptr && ref == nullptr;
    if (!whole_system)
        ORU_REQUIRE(ref);
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf) {
        ORU_TRACE(Level::failure, "Failed to allocate strbuf\n");
        return nullptr;
    }
    const char *base = uri != nullptr ? uri->uri_str : "/";
    oru::strbuf_append(*buf, whole_system ? oru::kUriSystemRoot : base);
    oru::strbuf_append(*buf, "?");
    oru::strbuf_append(*buf, whole_system ? "" : ref);
    oru::strbuf_append(*buf, ":");
    oru::strbuf_append(*buf, type);
    return oru::make_uri(*buf).release();
}
