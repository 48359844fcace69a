#include "do/uri.h"

#include <cstring>
#include <utility>

#include "frame/text.h"

namespace {

oru::Pool small_pool{"oru_do_uri_sml_misc", oru::Tag::uri_sml_misc, 64};
oru::Pool misc_pool{"oru_do_uri_misc", oru::Tag::uri_misc, 128};

}  // namespace

const oru::SizedPools oru::uri_texts{small_pool, misc_pool};

void oru::UriText::release() {
    uri_texts.give(storage, std::exchange(text, nullptr));
}

bool oru::UriText::assign(std::string_view copied, size_t room) {
    return store(copied, uri_texts.class_for(room));
}

bool oru::UriText::store(std::string_view copied, StorageClass wanted) {
    release();
    storage = wanted;
    if (storage == StorageClass::heap) {
        text = duplicate(copied.data(), copied.size());
        return text != nullptr;
    }
    text = uri_texts.take(storage);
    if (text == nullptr)
        return false;
    std::memcpy(text, copied.data(), copied.size());
    text[copied.size()] = '\0';
    return true;
}

void oru::ObjectType<ORUDoUri>::release_members(ORUDoUri &self) {
    uri_text(self).release();
    deref(self.parent_uri);
    parent_text(self).release();
    // After a parse that failed the count no longer tells which slots were filled.
    for (ORUDoUriSegment &segment : self.segment_table)
        deref(segment.keys);
    query_text(self).release();
}

oru::Ref<ORUDoUri> oru::make_uri(std::string_view text) {
    auto uri = make_ref<ORUDoUri>();
    if (!uri || !uri_text(*uri).assign(text, roomy(text.size())))
        return {};
    return uri;
}

oru::Ref<ORUDoUri> oru::make_uri(const ORUDoStrbuf &buf) {
    if (buf.cur == nullptr)
        return {};
    return make_uri(std::string_view(buf.str, static_cast<size_t>(buf.len)));
}

oru::Ref<ORUDoStrbuf> oru::uri_buffer() {
    auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        ORU_TRACE(Level::failure, "Failed to allocate strbuf.\n");
    return buf;
}

namespace {

ORUDoUri *new_parsed(const char *str, bool unescape, bool soft) {
    auto uri = oru::make_uri(str);
    return uri && oru::uri_parse(*uri, unescape, soft) ? uri.release() : nullptr;
}

}  // namespace

ORUDoUri *oru_do_uri_new(const char *str) {
    ORU_REQUIRE(str);
    return oru::make_uri(str).release();
}

ORUDoUri *oru_do_uri_new_l(const char *str, int32_t len) {
    ORU_REQUIRE(str);
    return oru::make_uri({str, len > 0 ? strnlen(str, static_cast<size_t>(len)) : 0}).release();
}

ORUDoUri *oru_do_uri_validate_new(const char *str) {
    ORU_REQUIRE(str);
    return new_parsed(str, true, true);
}

ORUDoUri *oru_do_uri_new_parse_unescape_key(const char *str) {
    ORU_REQUIRE(str);
    return new_parsed(str, false, false);
}

const char *oru_do_uri_get_uri_str(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return uri->uri_str;
}

void oru_do_uri_str_free(char *str) {
    if (str != nullptr)
        ph_free_named(str);
}

ORU_OBJECT_API(ORUDoUri, oru_do_uri)
ORU_POOL_API(small_pool, oru_do_uri_sml_misc)
ORU_POOL_API(misc_pool, oru_do_uri_misc)
