#include "draft.h"

#include <algorithm>

#include "indexes.h"

namespace embedded {

namespace {

constexpr uint32_t kPage = 1000;

/* The rows that are expected stay: the change asks for a revision that is kept. */
[[noreturn]] void fail_expired() {
    throw StoreFault(StoreFault::Kind::busy, "the store changed too much meanwhile");
}

}  // namespace

Value Draft::State::value(const AttributeType &attribute) const {
    return Value::share(oru_do_properties_get_value_n(props.get(), attribute.object.get()));
}

bool Draft::is_given(const AttributeType &attribute) const {
    return !given.empty() && given[after.type->index_of(attribute)];
}

void Draft::note_given(const AttributeType &attribute) {
    given.resize(after.type->attributes.size());
    given[after.type->index_of(attribute)] = true;
}

void set_property(Properties &props, const AttributeType &attribute, const Value &value) {
    if (!value) {
        oru_do_properties_remove_by_name(props.get(), attribute.name.c_str());
        return;
    }
    set_property(props.get(), attribute.object.get(), value);
}

namespace {

/* All of them: the copy of the library leaves out what it has no memory for. */
Properties copy_of(const Properties &props) {
    Properties copy = made<Properties>(oru_do_properties_new());
    EachProperty each(props.get());
    while (ORUDoProperty *property = each())
        set_property(copy.get(), oru_do_property_get_name(property),
                     Value::share(oru_do_property_get_value(property)));
    return copy;
}

}  // namespace

/* Makes the states of the rows that it is handed. Secrets stay as they are kept. */
class DraftReader final : public RowSink {
  public:
    explicit DraftReader(Drafts &drafts) : drafts_(drafts) {}

    void row(const Row &row) override {
        finish();
        const size_t location = drafts_.source_.addresses.location().size();
        draft_ = &drafts_.add({std::string(row.key), std::string(row.label.substr(location))});
        draft_->before.type = drafts_.source_.model->find(row.kind);
        if (!draft_->before.exists())
            draft_->unknown_kind = row.kind;
        draft_->before.props = made<Properties>(oru_do_properties_new());
    }

    void attribute(const Attribute &attribute) override {
        const AttributeType *const known = draft_->before.type != nullptr
                                               ? draft_->before.type->find_attribute(attribute.name)
                                               : nullptr;
        if (known != nullptr)
            set_property(draft_->before.props, *known, value_of(attribute));
    }

    void finish() {
        if (draft_ == nullptr)
            return;
        draft_->after.type = draft_->before.type;
        draft_->after.props = copy_of(draft_->before.props);
        draft_ = nullptr;
    }

  private:
    Drafts &drafts_;
    Draft *draft_ = nullptr;
};

namespace {

/* The rows of a range that have no draft yet. */
class NewRows final : public RowSink {
  public:
    NewRows(const Drafts::ByKey &known, DraftReader &reader) : known_(known), reader_(reader) {}

    void row(const Row &row) override {
        is_new_ = known_.count(row.key) == 0;
        if (is_new_)
            reader_.row(row);
    }
    void attribute(const Attribute &attribute) override {
        if (is_new_)
            reader_.attribute(attribute);
    }

  private:
    const Drafts::ByKey &known_;
    DraftReader &reader_;
    bool is_new_ = false;
};

class KeyList final : public RowSink {
  public:
    void row(const Row &row) override { keys.emplace_back(row.key); }
    void attribute(const Attribute &) override {}

    std::vector<std::string> keys;
};

}  // namespace

Draft &Drafts::at(const Place &place) {
    const auto known = drafts_.find(place.key);
    if (known != drafts_.end())
        return *known->second;
    DraftReader reader(*this);
    const ReadStatus status = source_.store->read(place.key, nullptr, at_, reader);
    if (status == ReadStatus::expired)
        fail_expired();
    if (status == ReadStatus::missing)
        return add(place);
    reader.finish();
    return *drafts_.find(place.key)->second;
}

Draft &Drafts::add(Place place) {
    auto draft = std::make_unique<Draft>();
    draft->place = std::move(place);
    const std::string_view key = draft->place.key;
    return *drafts_.emplace(key, std::move(draft)).first->second;
}

void Drafts::read(const Range &range) {
    ranges_.push_back(range);
    Query query;
    query.ranges = {range};
    query.all_names = true;
    query.at = at_;
    const std::unique_ptr<Scan> scan = source_.store->scan(std::move(query));
    DraftReader reader(*this);
    NewRows rows(drafts_, reader);
    ReadStatus status = ReadStatus::more;
    while (status == ReadStatus::more)
        status = scan->next(kPage, rows);
    if (status == ReadStatus::expired)
        fail_expired();
    reader.finish();
}

std::vector<std::string> Drafts::keys(const Range &range, size_t most) {
    Query query;
    query.ranges = {range};
    query.at = at_;
    const std::unique_ptr<Scan> scan = source_.store->scan(std::move(query));
    KeyList list;
    ReadStatus status = ReadStatus::more;
    while (status == ReadStatus::more && list.keys.size() < most)
        status = scan->next(static_cast<uint32_t>(std::min<size_t>(kPage, most - list.keys.size())),
                            list);
    if (status == ReadStatus::expired)
        fail_expired();
    // what comes behind the last key was not asked for
    ranges_.push_back(status == ReadStatus::more ? Range{range.first, list.keys.back() + '\0'}
                                                 : range);
    return std::move(list.keys);
}

std::optional<Target> Drafts::resolve(std::string_view address) {
    return source_.addresses.resolve(address,
                                     {[this](const std::string &key) { return owner_of(key); },
                                      [this](const Place &place) { return type_at(place); }});
}

/* Of what goes, the type that it had: addresses that led below it are looked for, too. */
const ResourceType *Drafts::type_at(const Place &place) {
    const Draft &draft = at(place);
    return draft.after.exists() ? draft.after.type : draft.before.type;
}

std::optional<Place> Drafts::stored_owner_of(const std::string &key) {
    keys_.push_back(key);
    return source_.owner_of(key, at_);
}

/* ---- Secondary keys on the way ---- */

void Drafts::note_change(Draft &draft) {
    const auto has_some = [](const Draft::State &state) {
        return state.exists() && !state.type->secondary_keys.empty();
    };
    if (has_some(draft.before) || has_some(draft.after))
        changed_.push_back(&draft);
}

Drafts::Keys Drafts::secondary_keys_of(const Draft &draft, const Draft::State &state) {
    IndexKeys keys;
    if (state.exists())
        add_secondary_keys(draft.place, state, keys);
    return {keys.begin(), keys.end()};
}

/* First all of them let go of what they had, then they take what they have. */
void Drafts::catch_up() {
    for (const Draft *draft : changed_) {
        const auto known = keys_of_changed_.find(draft);
        const Keys had = known != keys_of_changed_.end() ? std::move(known->second)
                                                         : secondary_keys_of(*draft, draft->before);
        keys_of_changed_[draft] = {};
        for (const std::string &key : had) {
            std::optional<Place> &owner = owners_.try_emplace(key, draft->place).first->second;
            if (owner && owner->key == draft->place.key)
                owner.reset();
        }
    }
    for (const Draft *draft : changed_) {
        Keys has = secondary_keys_of(*draft, draft->after);
        for (const std::string &key : has)
            owners_[key] = draft->place;
        keys_of_changed_[draft] = std::move(has);
    }
    changed_.clear();
}

std::optional<Place> Drafts::owner_of(const std::string &key) {
    catch_up();
    const auto known = owners_.find(key);
    return known != owners_.end() ? known->second : stored_owner_of(key);
}

std::vector<Draft *> Drafts::below(const Place &place) {
    std::vector<Draft *> found;
    for (size_t levels = 0; place.depth() + levels <= kMaxDepth; levels++) {
        const Range range = descendants_of(place, levels);
        const auto end = drafts_.lower_bound(range.end);
        for (auto at = drafts_.lower_bound(range.first); at != end; ++at)
            found.push_back(at->second.get());
    }
    return found;
}

size_t Drafts::count_after(const Range &range, size_t most) {
    size_t made = 0;
    size_t gone = 0;
    const auto end = drafts_.lower_bound(range.end);
    for (auto at = drafts_.lower_bound(range.first); at != end; ++at) {
        const Draft &draft = *at->second;
        made += !draft.was_there() && draft.is_there() ? 1 : 0;
        gone += draft.was_there() && !draft.is_there() ? 1 : 0;
    }
    // all that the drafts take away may be among those that are read
    return keys(range, most + 1 + gone).size() + made - gone;
}

}  // namespace embedded
