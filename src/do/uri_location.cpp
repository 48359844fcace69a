// The location of a URI: its absolute and its relative form.
#include "do/uri.h"
#include "frame/text.h"
#include "oru/uri_derive.h"

namespace {

// Whether a text with a location given is left as it is.
bool stays(std::string_view text, const char *location) {
    if (oru_do_uri_str_is_absolute(text.data()) != 0 || location == nullptr)
        return true;
    const bool infix = !text.empty() && text.front() != '/';
    return infix || location[0] == '\0';
}

char *join(std::string_view location, std::string_view text) {
    const auto buf = oru::uri_buffer();
    if (!buf)
        return nullptr;
    // A collection at the root keeps no slash before its question mark.
    if (text.rfind('?') == 1)
        text.remove_prefix(1);
    oru::strbuf_append(*buf, location);
    oru::strbuf_append(*buf, text);
    if (oru_do_strbuf_get_err(buf.get()) != 0)
        return nullptr;
    return oru::duplicate(buf->str, static_cast<size_t>(buf->len));
}

}  // namespace

char *oru_do_uri_str_new_absolute(const char *uri_str, const char *location_str) {
    if (uri_str == nullptr)
        return nullptr;
    const std::string_view text(uri_str);
    if (stays(text, location_str))
        return oru::duplicate(uri_str);
    if (text == "/")
        return oru::duplicate(location_str);
    return join(location_str, text);
}

ORUDoUri *oru_do_uri_new_absolute(ORUDoUri *uri, ORUDoUri *location_uri) {
    return oru_do_uri_new_absolute_from_uri_str(
        uri != nullptr ? uri->uri_str : nullptr,
        location_uri != nullptr ? location_uri->uri_str : nullptr);
}

ORUDoUri *oru_do_uri_new_absolute_from_uri_str(const char *uri_str, const char *location_str) {
    const oru::Text text(oru_do_uri_str_new_absolute(uri_str, location_str));
    return text ? oru_do_uri_new(text.get()) : nullptr;
}

ORUDoUri *oru_do_uri_new_absolute_root_from_uri(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    if (oru_do_uri_is_absolute(uri) == 0)
        return nullptr;
    ORUDoUriSegment *location = oru_do_uri_get_segment(uri, 0);
    if (location == nullptr)
        return nullptr;
    const oru::Text name(oru_do_uri_segment_get_str_copy(uri, location));
    const auto buf = oru::Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!name || !buf)
        return nullptr;
    oru::strbuf_append(*buf, oru::kUriSystemRoot);
    oru::strbuf_append(*buf, name.get());
    return oru::make_uri(*buf).release();
}

ORUDoUri *oru_do_uri_new_relative(const char *uri_str) {
    const char *relative = oru_do_uri_get_relative_str(uri_str);
    return relative != nullptr ? oru_do_uri_new(relative) : nullptr;
}
