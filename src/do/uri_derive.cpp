// URIs made of another URI: prefixes, copies, concatenations.
#include "oru/uri_derive.h"

#include "do/uri.h"

namespace {

using oru::Ref;

// A place in a text: so many characters of it belong to the prefix.
struct Cut {
    bool found;
    size_t length;
};

Cut cut_segments(const ORUDoUri &uri, int64_t n) {
    if (uri.num_segments < n)
        return {false, 0};
    return {true, oru::uri_prefix(uri, static_cast<int32_t>(n)).size()};
}

// Without segments the slashes count, so that here the location is a level too.
Cut cut_text(std::string_view text, bool absolute, int32_t depth) {
    size_t at = absolute ? 1 : 0;
    for (; depth > 0; --depth) {
        at = at < text.size() ? text.find('/', at + 1) : std::string_view::npos;
        if (at == std::string_view::npos)
            return {depth == 1, text.size()};
    }
    return {true, at};
}

// A copy of a text that another URI keeps, of the same class.
bool copy_text(oru::UriText dst, oru::UriText src) {
    return src.text == nullptr || dst.store(src.text, src.storage);
}

}  // namespace

ORUDoUri *oru_do_uri_new_from_descendant(ORUDoUri *uri, int32_t depth, const char **rest) {
    ORU_REQUIRE(uri);
    if (depth < 0)
        return nullptr;
    const bool absolute = oru_do_uri_is_absolute(uri) != 0;
    const bool parsed = oru::uri_is_parsed(*uri);
    const int64_t n = int64_t{depth} + (absolute ? 1 : 0);
    const Cut cut = parsed ? cut_segments(*uri, n) : cut_text(uri->uri_str, absolute, depth);
    if (!cut.found)
        return nullptr;
    auto prefix = oru::make_uri(std::string_view(uri->uri_str, cut.length));
    if (!prefix)
        return nullptr;
    if (parsed && !oru::uri_prefill(*prefix, *uri, static_cast<int32_t>(n)))
        return nullptr;
    if (rest != nullptr)
        *rest = uri->uri_str + cut.length;
    return prefix.release();
}

ORUDoUri *oru_do_uri_new_from_merge(ORUDoUri *base_uri, const char *prefix, int32_t prefix_len,
                                    const char *suffix) {
    ORU_REQUIRE(base_uri);
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        return nullptr;
    std::string_view before(prefix != nullptr ? prefix : "");
    if (prefix_len != 0)
        before = before.substr(0, prefix_len > 0 ? static_cast<size_t>(prefix_len) : 0);
    oru::strbuf_append(*buf, before);
    oru::strbuf_append(*buf, base_uri->uri_str);
    oru::strbuf_append(*buf, suffix != nullptr ? suffix : "");
    return oru::make_uri(*buf).release();
}

ORUDoUri *oru_do_uri_clone(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    auto clone = oru::make_uri(uri->uri_str);
    if (!clone || !oru::uri_is_parsed(*uri))
        return clone.release();
    oru::uri_copy_segments(*clone, *uri, uri->num_segments);
    if (!copy_text(oru::parent_text(*clone), oru::parent_text(*uri)) ||
        !copy_text(oru::query_text(*clone), oru::query_text(*uri)))
        return nullptr;
    return clone.release();
}
