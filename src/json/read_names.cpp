#include "json/read_names.h"

namespace oru::json {

NameCache::~NameCache() {
    for (const Place &place : places_)
        deref(place.name);
}

size_t NameCache::place_of(const char *text, size_t size) {
    const auto at = [text](size_t i) { return size_t{static_cast<uint8_t>(text[i])}; };
    return (size + at(0) * 3 + at(size / 2) * 7 + at(size - 1) * 17) % kPlaces;
}

Ref<ORUDoName> NameCache::get(const char *text, size_t size) {
    Place &place = places_[place_of(text, size)];
    if (place.name == nullptr || place.size != size ||
        std::memcmp(place.name->inline_text, text, size) != 0) {
        ORUDoName *name = oru_do_name_new_l(text, static_cast<int32_t>(size));
        if (name == nullptr)
            return {};
        deref(std::exchange(place.name, name));
        place.size = size;
    }
    return Ref<ORUDoName>::share(place.name);
}

Ref<ORUDoName> read_name(ORUDoJsonCtxData *ctx, const char *text, int32_t length) {
    const auto size = static_cast<size_t>(length);
    NameCache *names = reader_of(ctx).names;
    if (names == nullptr || length < 1 || size > NameCache::kLongest)
        return Ref<ORUDoName>::adopt(oru_do_name_new_l(text, length));
    return names->get(text, size);
}

}  // namespace oru::json
