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
    release();
    storage = uri_texts.class_for(room);
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
    query_text(self).release();
}

oru::Ref<ORUDoUri> oru::make_uri(std::string_view text) {
    auto uri = make_ref<ORUDoUri>();
    if (!uri || !uri_text(*uri).assign(text, roomy(text.size())))
        return {};
    return uri;
}

ORUDoUri *oru_do_uri_new(const char *str) {
    ORU_REQUIRE(str);
    return oru::make_uri(str).release();
}

ORUDoUri *oru_do_uri_new_l(const char *str, int32_t len) {
    ORU_REQUIRE(str);
    return oru::make_uri({str, len > 0 ? strnlen(str, static_cast<size_t>(len)) : 0}).release();
}

const char *oru_do_uri_get_uri_str(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return uri->uri_str;
}

int32_t oru_do_uri_equals(ORUDoUri *uri1, ORUDoUri *uri2) {
    ORU_REQUIRE(uri1);
    ORU_REQUIRE(uri2);
    return std::strcmp(uri1->uri_str, uri2->uri_str) == 0;
}

ORU_OBJECT_API(ORUDoUri, oru_do_uri)
ORU_POOL_API(small_pool, oru_do_uri_sml_misc)
ORU_POOL_API(misc_pool, oru_do_uri_misc)
