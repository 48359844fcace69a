#include "writes.h"

#include <algorithm>

#include "checks.h"

namespace embedded {

namespace {

bool is_same(const Value &a, const Value &b) {
    if (!a || !b)
        return !a && !b;
    return oru_do_value_equals(a.get(), b.get()) != 0 &&
           view(oru_do_value_get_typedef_name(a.get())) ==
               view(oru_do_value_get_typedef_name(b.get()));
}

/* Whether another resource takes the place of the one that was there. */
bool is_replaced(const Draft &draft) {
    return draft.before.exists() && draft.after.exists() &&
           (draft.is_made_anew || draft.before.type != draft.after.type);
}

bool is_erased(const Draft &draft) {
    return draft.is_dropped ||
           (draft.before.exists() && (!draft.after.exists() || is_replaced(draft)));
}

bool is_created(const Draft &draft) {
    return draft.after.exists() && (!draft.before.exists() || is_replaced(draft));
}

/* Once the values are prepared what was given is what differs. */
bool is_set(const Draft &draft) {
    return draft.after.exists() && !is_created(draft) &&
           std::ranges::find(draft.given, true) != draft.given.end();
}

Attribute written(const AttributeType &attribute, const Value &value, Texts &texts) {
    if (!value)
        return {attribute.name, 0, {}, {}};
    return {attribute.name, oru_do_value_get_type(value.get()),
            view(oru_do_value_get_typedef_name(value.get())), cell_of(value.get(), texts)};
}

std::string at_most_bytes(size_t limit) {
    return "at most " + std::to_string(limit) + " bytes";
}

}  // namespace

EditWrites::EditWrites(Edit &edit, const SecretWriter &secrets)
    : edit_(edit),
      drafts_(edit.drafts()),
      limits_(drafts_.source().store->limits()),
      secrets_(secrets) {}

std::string EditWrites::label(const Draft &draft) const {
    return drafts_.source().addresses.label_of(draft.place);
}

void EditWrites::fault(const Place &place, int32_t code, const std::string &attribute,
                       std::string rule, std::string expected, std::string got) {
    edit_.faults().add({code, drafts_.source().addresses.label_of(place), attribute,
                        std::move(rule), std::move(expected), std::move(got)});
}

/* First what leads to the resources: it is of the values as they were given. */
void EditWrites::prepare() {
    for (const auto &[key, draft] : drafts_.all()) {
        if (draft->is_touched)
            prepare_indexes(*draft);
    }
    count_ = gone_.size() + new_.size();
    for (const auto &[key, draft] : drafts_.all()) {
        if (!draft->is_touched)
            continue;
        prepare_values(*draft);
        count_ += (is_erased(*draft) ? 1 : 0) + (is_created(*draft) || is_set(*draft) ? 1 : 0);
    }
    if (count_ > limits_.commit_writes)
        fault(Place::root(), ORU_RC_SIZE_CONSTRAINT, {}, "too many changes for one commit",
              std::to_string(limits_.commit_writes), std::to_string(count_));
}

/* ---- Values ---- */

/* What is given as it was is not written. */
void EditWrites::prepare_values(Draft &draft) {
    if (!draft.after.exists())
        return;
    const std::vector<AttributeType> &attributes = draft.after.type->attributes;
    for (size_t i = 0; i < draft.given.size(); i++) {
        if (!draft.given[i])
            continue;
        draft.given[i] = is_created(draft) || !is_same(draft.before.value(attributes[i]),
                                                       draft.after.value(attributes[i]));
        if (draft.given[i])
            prepare_value(draft, attributes[i]);
    }
}

void EditWrites::prepare_value(Draft &draft, const AttributeType &attribute) {
    const Value given = draft.after.value(attribute);
    if (!given)
        return;
    const Value kept = attribute.role == AttributeType::Role::peer
                           ? with_full_addresses(given)
                           : closed(draft, attribute, given);
    if (!kept)
        return;
    if (kept.get() != given.get())
        set_property(draft.after.props, attribute, kept);
    Texts texts;
    const size_t length = cell_of(kept.get(), texts).bytes.size();
    if (length > limits_.value_bytes)
        fault(draft.place, ORU_RC_LENGTH_CONSTRAINT, attribute.name,
              "a value is too long for the store", at_most_bytes(limits_.value_bytes),
              std::to_string(length));
}

Value EditWrites::closed(const Draft &draft, const AttributeType &attribute, const Value &value) {
    try {
        return secrets_.close(value);
    } catch (const SecretFault &why) {
        fault(draft.place, ORU_RC_INVALID_PASSWORD, attribute.name, why.what(), {}, {});
        return {};
    }
}

/* Addresses are kept as we write them, so that equal ones are equal texts. */
Value EditWrites::with_full_addresses(const Value &value) {
    int32_t status = 0;
    if (oru_do_value_is_array(value.get()) == 0)
        return with_full_address(value.get());
    const ValueList list = made<ValueList>(oru_do_vlist_new());
    EachValue each(oru_do_value_get_array(value.get(), &status));
    while (ORUDoValue *element = each()) {
        if (oru_do_vlist_add(list.get(), with_full_address(element).get()) < 0)
            throw std::bad_alloc();
    }
    return made_value(oru_do_value_new_array(list.get()));
}

Value EditWrites::with_full_address(ORUDoValue *value) {
    ORUDoUri *const uri = oru_do_value_get_uri(value);
    const std::optional<Target> target =
        uri != nullptr ? drafts_.resolve(view(oru_do_uri_get_uri_str(uri))) : std::nullopt;
    if (!target)
        return Value::share(value);
    const std::string label = drafts_.source().addresses.label_of(target->place);
    const Uri full = made<Uri>(oru_do_uri_new(label.c_str()));
    return made_value(oru_do_value_new_mr_uri(full.get()));
}

/* ---- Rows that lead to resources ---- */

IndexKeys EditWrites::index_keys(const Draft &draft, const Draft::State &state) {
    IndexKeys keys;
    if (!state.exists())
        return keys;
    for (const Target &target : targets_of(drafts_, state))
        keys.insert(link(target.place.key, draft.place.key));
    add_secondary_keys(draft.place, state, keys);
    return keys;
}

void EditWrites::prepare_indexes(const Draft &draft) {
    const IndexKeys before = index_keys(draft, draft.before);
    const IndexKeys after = index_keys(draft, draft.after);
    std::ranges::set_difference(before, after, std::back_inserter(gone_));
    for (const std::string &key : after) {
        if (before.count(key) != 0)
            continue;
        new_.emplace_back(key, &draft);
        if (key.size() > limits_.key_bytes)
            fault(draft.place, ORU_RC_LENGTH_CONSTRAINT, {},
                  "a secondary key or a reference is too long for the store",
                  at_most_bytes(limits_.key_bytes), std::to_string(key.size()));
    }
}

/* ---- Handing over ---- */

/* A secondary key may pass from one resource to another: first all of them let go. What a model
   before this one has left behind, or not made, is no conflict. */
void EditWrites::hand_to(WriteSink &sink) const {
    for (const std::string &key : gone_)
        sink.write({Write::Kind::erase, key, {}, {}, {}, true});
    for (const auto &[key, draft] : drafts_.all()) {
        if (draft->is_touched)
            hand_over(*draft, sink);
    }
    for (const auto &[key, draft] : new_)
        sink.write({Write::Kind::create, key, label(*draft), {}, {}, true});
}

void EditWrites::hand_over(const Draft &draft, WriteSink &sink) const {
    const bool is_new = is_created(draft);
    if (is_erased(draft))
        sink.write({Write::Kind::erase, draft.place.key, {}, {}, {}});
    if (!is_new && !is_set(draft))
        return;
    Write write{is_new ? Write::Kind::create : Write::Kind::set, draft.place.key, {}, {}, {}};
    if (is_new) {
        write.label = label(draft);
        write.row_kind = draft.after.type->name;
    }
    Texts texts;
    for (const AttributeType &attribute : draft.after.type->attributes) {
        const Value value = draft.is_given(attribute) ? draft.after.value(attribute) : Value();
        // without a value it goes, where there was one
        if (value || (draft.is_given(attribute) && !is_new))
            write.attributes.push_back(written(attribute, value, texts));
    }
    sink.write(write);
}

Commit preconditions_of(Drafts &drafts) {
    Commit commit;
    commit.base = drafts.revision();
    commit.unchanged = std::move(drafts.ranges_read());
    const std::vector<std::string> &keys = drafts.keys_read();
    commit.unchanged_keys.assign(keys.begin(), keys.end());
    for (const auto &[key, draft] : drafts.all())
        commit.unchanged_keys.push_back(key);
    return commit;
}

}  // namespace embedded
