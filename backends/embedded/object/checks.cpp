#include "checks.h"

#include "check_parts.h"
#include "indexes.h"
#include "members.h"

namespace embedded {

namespace {

/* The records of the metadata that belong to the attributes of a type, in their order; null for
   references. Nothing when the process has let go of them. */
using Records = std::optional<std::vector<ORUMdAttrMeta *>>;

class RecordsByType {
  public:
    const Records &of(const ResourceType &type) {
        const auto [at, is_new] = records_.try_emplace(&type);
        if (is_new)
            at->second = read(type);
        return at->second;
    }

  private:
    static Records read(const ResourceType &type) {
        ORUMdMrMeta *const meta = find_record(type.name.c_str());
        if (meta == nullptr)
            return std::nullopt;
        std::vector<ORUMdAttrMeta *> records;
        for (const AttributeType &attribute : type.attributes) {
            const bool is_reference = attribute.role == AttributeType::Role::peer;
            records.push_back(
                is_reference ? nullptr : oru_md_get_attr_meta_w_str(meta, attribute.name.c_str()));
            if (!is_reference && records.back() == nullptr)
                return std::nullopt;
        }
        return records;
    }

    std::unordered_map<const ResourceType *, Records> records_;
};

/* Whether the attribute has to have a value when the resource is made: the rule of the library. */
bool is_mandatory(const AttributeType &attribute) {
    ORUDoConstraint *const constraint = size_constraint_of(attribute.meta.get());
    return constraint != nullptr &&
           oru_do_range_has_strict_max_value(oru_do_constraint_get_size(constraint)) != 0;
}

/* Whoever reads an address may follow it, and the library ends the process at some texts. */
bool can_be_followed(const std::string &location, ORUDoUri *uri) {
    std::string text(view(oru_do_uri_get_uri_str(uri)));
    if (text.empty())
        return false;
    if (!text.starts_with("//"))
        text = location + (text.starts_with('/') ? "" : "/") + text;
    return certain(true, [&] {
        const Uri followed(oru_do_uri_validate_new(text.c_str()));
        return static_cast<bool>(followed);
    });
}

class Checker {
  public:
    explicit Checker(Edit &edit) : edit_(edit), drafts_(edit.drafts()), references_(edit) {}

    void run() {
        // checks read further drafts, which are not checked themselves
        std::vector<Draft *> touched;
        for (auto &[key, draft] : drafts_.all()) {
            if (draft->is_touched)
                touched.push_back(draft.get());
        }
        for (Draft *draft : touched) {
            if (!draft->after.exists()) {
                references_.check_nobody_refers(*draft);
                continue;
            }
            check_state(*draft);
            if (draft->before.type != draft->after.type)
                references_.check_others_may_refer(*draft);
        }
        check_numbers(edit_, touched);
    }

  private:
    void check_state(Draft &draft) {
        const Records &records = records_.of(*draft.after.type);
        const std::vector<AttributeType> &attributes = draft.after.type->attributes;
        if (!records)
            return tell(edit_, draft, ORU_RC_METADATA, {},
                        "the metadata of the process has no type " + draft.after.type->name +
                            " any more, or another one of that name",
                        {}, {});
        for (size_t i = 0; i < attributes.size(); i++)
            check_attribute(draft, attributes[i], (*records)[i]);
        check_secondary_keys(draft);
    }

    void check_attribute(Draft &draft, const AttributeType &attribute, ORUMdAttrMeta *record) {
        const Value value = draft.after.value(attribute);
        if (!value) {
            if (attribute.role != AttributeType::Role::oper && is_mandatory(attribute))
                tell(edit_, draft, ORU_RC_COLL_PROPERTY_CONSTRAINT, attribute.name,
                     "a mandatory attribute is missing", type_text(attribute), "nothing");
        } else if (attribute.role == AttributeType::Role::peer) {
            // what was not given was checked when it was
            if (draft.is_given(attribute))
                references_.check_value(draft, attribute, value);
        } else if (!attribute.is_secret() || draft.is_given(attribute)) {
            check_value(draft, attribute, record, value);
        }
    }

    /* Secrets that are in the store already are not what the constraints speak of. */
    void check_value(const Draft &draft, const AttributeType &attribute, ORUMdAttrMeta *record,
                     const Value &value) {
        ORUDoProperties *const props = draft.after.props.get();
        int32_t code = certain(int32_t{ORU_OK}, [&] {
            return oru_md_eval_attr_constraint(record, value.get(), props);
        });
        // the library takes a value of the elements' type, too
        if (code == ORU_OK && attribute.is_many && oru_do_value_is_array(value.get()) == 0)
            code = ORU_RC_TYPE_COMPATIBILITY;
        if (code != ORU_OK)
            return tell(edit_, draft, code, attribute.name, {}, expectation(attribute, code, props),
                        shown(attribute, value.get()));
        if (draft.is_given(attribute))
            check_inner(draft, attribute, value);
        if (attribute.type == ORU_DO_TYPE_MR_URI)
            check_addresses(draft, attribute, value);
    }

    void check_addresses(const Draft &draft, const AttributeType &attribute, const Value &value) {
        for (ORUDoUri *uri : addresses_in(value.get())) {
            if (!can_be_followed(drafts_.source().addresses.location(), uri))
                tell(edit_, draft, ORU_RC_TYPE_MISMATCH, attribute.name, "no address of a resource",
                     type_text(attribute), std::string(view(oru_do_uri_get_uri_str(uri))));
        }
    }

    /* What was not given was checked when it was, and its secrets are closed by now. */
    void check_inner(const Draft &draft, const AttributeType &attribute, const Value &value) {
        check_inside(attribute, value.get(), [&](const InnerFault &inner) {
            tell(edit_, draft, inner.code, attribute.name, inner.rule, inner.expected,
                 shown(attribute, inner.got));
        });
    }

    void check_secondary_keys(const Draft &draft) {
        const Place collection = collection_of(draft.place);
        for (size_t group = 0; group < draft.after.type->secondary_keys.size(); group++) {
            const std::string key =
                secondary_key(collection, *draft.after.type, group, draft.after.props.get());
            if (key.empty() || !is_taken(draft, key))
                continue;
            const AttributeType &first =
                draft.after.type->attributes[draft.after.type->secondary_keys[group].front()];
            const Value value = draft.after.value(first);
            tell(edit_, draft, ORU_RC_RESOURCE_EXISTS, first.name,
                 "another resource has this secondary key", {}, shown(first, value.get()));
        }
    }

    /* By a draft that has it after the change, or by a resource in the store that keeps it. */
    bool is_taken(const Draft &draft, const std::string &key) {
        const auto [at, is_new] = taken_.emplace(key, &draft);
        if (!is_new && at->second != &draft)
            return true;
        const std::optional<Place> owner = drafts_.stored_owner_of(key);
        if (!owner || owner->key == draft.place.key)
            return false;
        const Draft &other = drafts_.at(*owner);
        if (!other.after.exists())
            return false;
        IndexKeys keys;
        add_secondary_keys(other.place, other.after, keys);
        return keys.count(key) != 0;
    }

    Edit &edit_;
    Drafts &drafts_;
    ReferenceChecker references_;
    RecordsByType records_;
    std::unordered_map<std::string, const Draft *> taken_; /* secondary keys */
};

}  // namespace

void check(Edit &edit) {
    const MetadataLock lock;
    Checker(edit).run();
}

}  // namespace embedded
