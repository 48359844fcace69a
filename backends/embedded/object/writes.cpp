#include "writes.h"

#include "checks.h"
#include "indexes.h"

namespace embedded {

namespace {

bool is_same(const Value &a, const Value &b) {
    if (!a || !b)
        return !a && !b;
    return oru_do_value_equals(a.get(), b.get()) != 0 &&
           view(oru_do_value_get_typedef_name(a.get())) ==
               view(oru_do_value_get_typedef_name(b.get()));
}

class Writer {
  public:
    Writer(Edit &edit, const SecretWriter &secrets, Texts &texts, std::deque<Value> &values)
        : edit_(edit),
          drafts_(edit.drafts()),
          limits_(drafts_.source().store->limits()),
          secrets_(secrets),
          texts_(texts),
          values_(values) {}

    Commit run() {
        for (auto &[key, draft] : drafts_.all()) {
            if (draft.is_touched)
                write(draft);
        }
        Commit commit;
        commit.base = drafts_.revision();
        commit.unchanged = std::move(drafts_.ranges_read());
        commit.writes = std::move(erased_);
        commit.writes.insert(commit.writes.end(), std::make_move_iterator(writes_.begin()),
                             std::make_move_iterator(writes_.end()));
        if (commit.writes.size() > limits_.commit_writes)
            fault(Place::root(), ORU_RC_SIZE_CONSTRAINT, {}, "too many changes for one commit",
                  std::to_string(limits_.commit_writes), std::to_string(commit.writes.size()));
        return commit;
    }

  private:
    void fault(const Place &place, int32_t code, const std::string &attribute, std::string rule,
               std::string expected, std::string got) {
        edit_.faults().add({code, drafts_.source().addresses.label_of(place), attribute,
                            std::move(rule), std::move(expected), std::move(got)});
    }

    static std::string at_most_bytes(size_t limit) {
        return "at most " + std::to_string(limit) + " bytes";
    }

    void write(const Draft &draft) {
        const bool is_replaced = draft.before.exists() && draft.after.exists() &&
                                 (draft.is_made_anew || draft.before.type != draft.after.type);
        if (draft.is_dropped || (draft.before.exists() && (!draft.after.exists() || is_replaced)))
            writes_.push_back({Write::Kind::erase, draft.place.key, {}, {}, {}});
        if (draft.after.exists() && (!draft.before.exists() || is_replaced))
            create(draft);
        else if (draft.after.exists())
            set(draft);
        write_indexes(draft);
    }

    void create(const Draft &draft) {
        Write write{Write::Kind::create,
                    draft.place.key,
                    drafts_.source().addresses.label_of(draft.place),
                    draft.after.type->name,
                    {}};
        for (const AttributeType &attribute : draft.after.type->attributes)
            add(draft, attribute, write);
        writes_.push_back(std::move(write));
    }

    void set(const Draft &draft) {
        Write write{Write::Kind::set, draft.place.key, {}, {}, {}};
        for (const AttributeType &attribute : draft.after.type->attributes) {
            if (draft.is_given(attribute) &&
                !is_same(draft.before.value(attribute), draft.after.value(attribute)))
                add(draft, attribute, write);
        }
        if (!write.attributes.empty())
            writes_.push_back(std::move(write));
    }

    /* A value that is not there takes the attribute away. */
    void add(const Draft &draft, const AttributeType &attribute, Write &write) {
        Value value = draft.after.value(attribute);
        if (!value && write.kind == Write::Kind::create)
            return;
        if (value && draft.is_given(attribute))
            value = closed(draft, attribute, value);
        if (value && attribute.role == AttributeType::Role::peer)
            value = with_full_addresses(value);
        Attribute written{attribute.name, 0, {}, {}};
        if (value) {
            values_.push_back(value);
            written.type = oru_do_value_get_type(value.get());
            written.type_name = view(oru_do_value_get_typedef_name(value.get()));
            written.cell = cell_of(value.get(), texts_);
            if (written.cell.bytes.size() > limits_.value_bytes)
                fault(draft.place, ORU_RC_LENGTH_CONSTRAINT, attribute.name,
                      "a value is too long for the store", at_most_bytes(limits_.value_bytes),
                      std::to_string(written.cell.bytes.size()));
        }
        write.attributes.push_back(written);
    }

    Value closed(const Draft &draft, const AttributeType &attribute, const Value &value) {
        try {
            return secrets_.close(value);
        } catch (const SecretFault &why) {
            fault(draft.place, ORU_RC_INVALID_PASSWORD, attribute.name, why.what(), {}, {});
            return {};
        }
    }

    /* Addresses are kept as we write them, so that equal ones are equal texts. */
    Value with_full_addresses(const Value &value) {
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

    Value with_full_address(ORUDoValue *value) {
        ORUDoUri *const uri = oru_do_value_get_uri(value);
        const std::optional<Target> target =
            uri != nullptr ? drafts_.resolve(view(oru_do_uri_get_uri_str(uri))) : std::nullopt;
        if (!target)
            return Value::share(value);
        const std::string label = drafts_.source().addresses.label_of(target->place);
        const Uri full = made<Uri>(oru_do_uri_new(label.c_str()));
        return made_value(oru_do_value_new_mr_uri(full.get()));
    }

    /* ---- Rows that lead to the resource ---- */

    IndexRows index_rows(const Draft &draft, const Draft::State &state) {
        IndexRows rows;
        if (!state.exists())
            return rows;
        const Source &source = drafts_.source();
        for (const Target &target : targets_of(drafts_, state))
            rows.emplace(link(target.place.key, draft.place.key),
                         source.addresses.label_of(draft.place));
        add_secondary_keys(source, draft.place, state, rows);
        return rows;
    }

    void write_indexes(const Draft &draft) {
        const IndexRows before = index_rows(draft, draft.before);
        const IndexRows after = index_rows(draft, draft.after);
        for (const auto &[key, label] : before) {
            if (after.count(key) == 0)
                erase_index(key);
        }
        for (const auto &[key, label] : after) {
            if (before.count(key) != 0)
                continue;
            create_index(key, label);
            if (key.size() > limits_.key_bytes)
                fault(draft.place, ORU_RC_LENGTH_CONSTRAINT, {},
                      "a secondary key or a reference is too long for the store",
                      at_most_bytes(limits_.key_bytes), std::to_string(key.size()));
        }
    }

    /* A secondary key may pass from one resource to another. What a model before this one has left
       behind, or not made, is no conflict. */
    void erase_index(const std::string &key) {
        erased_.push_back({Write::Kind::erase, key, {}, {}, {}, true});
    }

    void create_index(const std::string &key, const std::string &label) {
        writes_.push_back({Write::Kind::create, key, label, {}, {}, true});
    }

    Edit &edit_;
    Drafts &drafts_;
    const Limits limits_;
    const SecretWriter &secrets_;
    Texts &texts_;
    std::deque<Value> &values_;
    std::vector<Write> erased_; /* rows that lead to resources, before all others */
    std::vector<Write> writes_;
};

}  // namespace

Commit commit_of(Edit &edit, const SecretWriter &secrets, Texts &texts, std::deque<Value> &values) {
    return Writer(edit, secrets, texts, values).run();
}

}  // namespace embedded
