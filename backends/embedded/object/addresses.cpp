#include "addresses.h"

#include <algorithm>

namespace embedded {

namespace {

std::string_view take_until(std::string_view &rest, char end) {
    const size_t at = rest.find(end);
    const std::string_view part = rest.substr(0, at);
    rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 1);
    return part;
}

struct KeyText {
    std::string_view name;
    std::string_view value; /* escaped */
};

struct Segment {
    std::string_view reference;
    std::vector<KeyText> keys;
};

bool read_segment(std::string_view text, Segment &segment) {
    if (text.ends_with(';'))
        return false;
    segment.reference = take_until(text, ';');
    while (!text.empty()) {
        std::string_view key = take_until(text, ';');
        if (key.find('=') == std::string_view::npos)
            return false;
        const std::string_view name = take_until(key, '=');
        segment.keys.push_back({name, key});
    }
    return !segment.reference.empty();
}

const KeyText *find_key(const Segment &segment, std::string_view name) {
    for (const KeyText &key : segment.keys) {
        if (key.name == name)
            return &key;
    }
    return nullptr;
}

/* Primary keys in any order, but all of them and no others. */
bool add_primary_keys(const Segment &segment, const ResourceType &type, Place &place) {
    if (segment.keys.size() != type.key_count)
        return false;
    for (size_t i = 0; i < type.key_count; i++) {
        const KeyText *const key = find_key(segment, type.attributes[i].name);
        if (key == nullptr || !add_key_text(place, type.attributes[i], key->value))
            return false;
    }
    return true;
}

/* The key of the row that leads to who has these secondary keys; empty when they are none. */
std::string secondary_key_of(const Segment &segment, const ResourceType &type,
                             const Place &collection) {
    for (size_t group = 0; group < type.secondary_keys.size(); group++) {
        if (type.secondary_keys[group].size() != segment.keys.size())
            continue;
        Place values = begin_secondary_key(collection, group);
        const bool fits = std::ranges::all_of(type.secondary_keys[group], [&](size_t index) {
            const KeyText *const key = find_key(segment, type.attributes[index].name);
            return key != nullptr && add_key_text(values, type.attributes[index], key->value);
        });
        if (fits)
            return values.key;
    }
    return {};
}

/* The implementation of a library type whose constant key stands in the segment. */
const ResourceType *choose_implementation(const ResourceType &type, const Segment &segment) {
    if (type.key_count != 1 || segment.keys.size() != 1)
        return &type;
    std::string text;
    append_unescaped(segment.keys[0].value, text);
    for (const ResourceType *implementation : type.implementations) {
        if (!implementation->constant_key.empty() && implementation->constant_key == text)
            return implementation;
    }
    return &type;
}

/* The type that decides on the children of a resource. What implements an abstract type may have
   children of different types under the same name. */
const ResourceType &parent_type(const Target &target, std::string_view reference,
                                const Lookup &lookup) {
    const ResourceType *const found = lookup.type_at && target.type->leaves_open(reference)
                                          ? lookup.type_at(target.place)
                                          : nullptr;
    return found != nullptr ? *found : *target.type;
}

/* Walks the segments of an address from the root on. */
class Walk {
  public:
    Walk(const ResourceType &root, const Lookup &lookup) : lookup_(lookup) {
        target_.place = Place::root();
        target_.type = &root;
    }

    bool enter(std::string_view text) {
        Segment segment;
        if (!target_.is_whole || target_.place.depth() == kMaxDepth || !read_segment(text, segment))
            return false;
        target_.reference =
            parent_type(target_, segment.reference, lookup_).find_child(segment.reference);
        if (target_.reference == nullptr)
            return false;
        target_.parent_key = target_.place.key;
        target_.place = below(target_.place, segment.reference);
        target_.type = target_.reference->target;
        return segment.keys.empty() ? enter_without_keys() : enter_with_keys(segment);
    }

    Target take() { return std::move(target_); }

  private:
    bool enter_without_keys() {
        target_.is_whole = target_.type->key_count == 0;
        return target_.is_whole || target_.reference->is_many;
    }

    bool enter_with_keys(const Segment &segment) {
        Place place = target_.place;
        if (add_primary_keys(segment, *target_.type, place)) {
            target_.place = std::move(place);
            target_.type = choose_implementation(*target_.type, segment);
            return true;
        }
        const std::string key = secondary_key_of(segment, *target_.type, target_.place);
        if (key.empty() || !lookup_.owner_of)
            return false;
        std::optional<Place> found = lookup_.owner_of(key);
        if (!found)
            return false;
        target_.place = std::move(*found);
        return true;
    }

    const Lookup &lookup_;
    Target target_;
};

std::optional<Target> walk(const ResourceType &root, std::string_view path, const Lookup &lookup) {
    Walk at(root, lookup);
    if (path.ends_with('/'))
        path.remove_suffix(1);
    if (path.starts_with('/'))
        path.remove_prefix(1);
    bool fits = true;
    while (fits && !path.empty())
        fits = at.enter(take_until(path, '/'));
    return fits ? std::optional(at.take()) : std::nullopt;
}

/* Everything below a resource; the only child of a reference is a member itself. */
Members below_at_any_depth(const Target &target, const ResourceType *type) {
    const Place &base = target.place;
    const bool is_only = target.reference == nullptr || target.type->key_count == 0;
    Members members{{}, type, true};
    for (size_t levels = is_only ? 0 : 1; base.depth() + levels <= kMaxDepth; levels++)
        members.ranges.push_back(descendants_of(base, levels));
    return members;
}

}  // namespace

Addresses::Addresses(const Model &model, std::string location)
    : model_(model), location_(std::move(location)) {}

std::optional<std::string_view> Addresses::behind_location(std::string_view address) const {
    if (!address.starts_with("//"))
        return address;
    if (address == "//")
        return std::string_view();
    if (!address.starts_with(location_))
        return std::nullopt;
    address.remove_prefix(location_.size());
    if (!address.empty() && address[0] != '/' && address[0] != '?')
        return std::nullopt;
    return address;
}

std::optional<Target> Addresses::resolve(std::string_view address, const Lookup &lookup) const {
    const std::optional<std::string_view> path = behind_location(address);
    if (address.empty() || !path || path->find('?') != std::string_view::npos)
        return std::nullopt;
    std::optional<Target> target = walk(model_.root(), *path, lookup);
    return target && target->is_whole ? std::move(target) : std::nullopt;
}

std::optional<Members> Addresses::resolve_collection(std::string_view address,
                                                     const Lookup &lookup) const {
    const size_t mark = address.find('?');
    if (mark == std::string_view::npos)
        return std::nullopt;
    std::string_view base_text = address.substr(0, mark);
    std::string_view type_text = address.substr(mark + 1);
    const std::string_view reference = take_until(type_text, ':');
    // a star says what the form without it says, too
    if (base_text.ends_with('*'))
        base_text.remove_suffix(1);

    const ResourceType *const type = type_text.empty() ? nullptr : model_.find(type_text);
    const std::optional<std::string_view> path = behind_location(base_text);
    if (!path || (type == nullptr && (!type_text.empty() || reference.empty())))
        return std::nullopt;
    const std::optional<Target> base = walk(model_.root(), *path, lookup);
    if (!base || (!reference.empty() && !base->is_whole))
        return std::nullopt;

    if (base->is_whole && reference.empty())
        return below_at_any_depth(*base, type);
    const ChildReference *const child =
        base->is_whole ? parent_type(*base, reference, lookup).find_child(reference)
                       : base->reference;
    if (child == nullptr)
        return std::nullopt;
    const Place place = base->is_whole ? below(base->place, reference) : base->place;
    return Members{{range_of(place.key)}, type != nullptr ? type : child->target, type != nullptr};
}

}  // namespace embedded
