#include "session.h"

namespace embedded {

namespace {

/* A row without its attributes. */
class OnlyRow final : public RowSink {
  public:
    void row(const Row &row) override {
        label = row.label;
        kind = row.kind;
    }
    void attribute(const Attribute &) override {}

    std::string label;
    std::string kind;
};

const std::vector<std::string> kNoNames;

}  // namespace

std::optional<Place> Source::owner_of(const std::string &index_key, Revision at) const {
    OnlyRow row;
    store->read(index_key, &kNoNames, at, row);
    if (row.label.empty())
        return std::nullopt;
    // without secondary keys: under another model than it was written it may lead to itself
    const Lookup types = {{}, lookup(at).type_at};
    const std::optional<Target> target = addresses.resolve(row.label, types);
    return target ? std::optional(target->place) : std::nullopt;
}

const ResourceType *Source::type_at(const Place &place, Revision at) const {
    OnlyRow row;
    store->read(place.key, &kNoNames, at, row);
    return model->find(row.kind);
}

Lookup Source::lookup(Revision at) const {
    return {[this, at](const std::string &index_key) { return owner_of(index_key, at); },
            [this, at](const Place &place) { return type_at(place, at); }};
}

std::optional<Target> Source::resolve(std::string_view address, Revision at) const {
    return addresses.resolve(address, lookup(at));
}

std::optional<Members> Source::resolve_collection(std::string_view address, Revision at) const {
    return addresses.resolve_collection(address, lookup(at));
}

}  // namespace embedded
