#include "session.h"

namespace embedded {

namespace {

class OnlyLabel final : public RowSink {
  public:
    void row(const Row &row) override { label = row.label; }
    void attribute(const Attribute &) override {}

    std::string label;
};

}  // namespace

std::optional<Place> Source::owner_of(const std::string &index_key, Revision at) const {
    OnlyLabel row;
    store->read(index_key, nullptr, at, row);
    if (row.label.empty())
        return std::nullopt;
    const std::optional<Target> target = addresses.resolve(row.label, {});
    return target ? std::optional(target->place) : std::nullopt;
}

FindBySecondaryKey Source::finder(Revision at) const {
    return [this, at](const std::string &index_key) { return owner_of(index_key, at); };
}

std::optional<Target> Source::resolve(std::string_view address, Revision at) const {
    return addresses.resolve(address, finder(at));
}

std::optional<Members> Source::resolve_collection(std::string_view address, Revision at) const {
    return addresses.resolve_collection(address, finder(at));
}

}  // namespace embedded
