#include "checks.h"

#include <algorithm>
#include <set>

#include "indexes.h"
#include "members.h"

namespace embedded {

namespace {

/* The records of the metadata that belong to the attributes of a type, in their order; null for
   references. */
using Records = std::vector<ORUMdAttrMeta *>;

class RecordsByType {
  public:
    const Records &of(const ResourceType &type) {
        const auto [at, is_new] = records_.try_emplace(&type);
        if (is_new)
            read(type, at->second);
        return at->second;
    }

  private:
    static void read(const ResourceType &type, Records &records) {
        ORUMdMrMeta *const meta = find_record(type.name.c_str());
        for (const AttributeType &attribute : type.attributes) {
            const bool is_known = meta != nullptr && attribute.role != AttributeType::Role::peer;
            records.push_back(is_known ? oru_md_get_attr_meta_w_str(meta, attribute.name.c_str())
                                       : nullptr);
        }
    }

    std::unordered_map<const ResourceType *, Records> records_;
};

/* The constraint that decides about an attribute, in words. */
std::string constraint_text(const AttributeType &attribute, ORUDoProperties *props) {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(attribute.meta.get());
    ORUDoConstraintList *const lists[] = {
        oru_do_prop_meta_get_constraint_list(attribute.meta.get()),
        type != nullptr ? oru_do_typedef_meta_get_constraint_list(type) : nullptr};
    std::string words;
    for (ORUDoConstraintList *list : lists) {
        ORUDoConstraint *const constraint =
            list != nullptr
                ? oru_do_constraint_list_appl_constraint(list, attribute.object.get(), props)
                : nullptr;
        if (constraint != nullptr)
            words += (words.empty() ? "" : " ") +
                     std::string(view(oru_do_constraint_get_str(constraint)));
    }
    return words;
}

std::string type_text(const AttributeType &attribute) {
    const std::string_view type = view(oru_do_get_typestr_by_typecode(attribute.type));
    std::string words = attribute.is_many ? "an array of " : "";
    words += type;
    if (!attribute.type_name.empty())
        words += " (" + attribute.type_name + ")";
    return words;
}

std::string expectation(const AttributeType &attribute, int32_t code, ORUDoProperties *props) {
    const ValueType *const type = attribute.value_type;
    switch (code) {
        case ORU_RC_ENUM_CONSTRAINT:
            return type != nullptr ? labels_in(type->labels.get()) : std::string();
        case ORU_RC_TYPE_MISMATCH:
        case ORU_RC_TYPE_COMPATIBILITY:
        case ORU_RC_CHOICE_CONSTRAINT:
        case ORU_RC_SEQUENCE_CONSTRAINT:
            return type_text(attribute);
        default:
            return constraint_text(attribute, props);
    }
}

/* Whether the attribute has to have a value when the resource is made: the rule of the library. */
bool is_mandatory(const AttributeType &attribute) {
    ORUDoConstraintList *const list = oru_do_prop_meta_get_constraint_list(attribute.meta.get());
    ORUDoConstraint *const constraint =
        list != nullptr ? oru_do_constraint_list_get_constraint_unconditional(list) : nullptr;
    ORUDoRange *const size =
        constraint != nullptr ? oru_do_constraint_get_size(constraint) : nullptr;
    return size != nullptr && oru_do_range_has_strict_max_value(size) != 0;
}

using UriList = std::vector<ORUDoUri *>;

/* The addresses in a value: one, or those of an array. */
UriList addresses_in(ORUDoValue *value) {
    int32_t status = 0;
    if (oru_do_value_is_array(value) == 0) {
        ORUDoUri *const uri = oru_do_value_get_uri(value);
        return uri != nullptr ? UriList{uri} : UriList{};
    }
    UriList found;
    EachValue each(oru_do_value_get_array(value, &status));
    while (ORUDoValue *element = each()) {
        if (ORUDoUri *const uri = oru_do_value_get_uri(element))
            found.push_back(uri);
    }
    return found;
}

/* Whoever reads an address may follow it, and the library ends the process at some texts. */
bool can_be_followed(const std::string &location, ORUDoUri *uri) {
    std::string text(view(oru_do_uri_get_uri_str(uri)));
    if (text.empty())
        return false;
    if (!text.starts_with("//"))
        text = location + (text.starts_with('/') ? "" : "/") + text;
    return static_cast<bool>(Uri(oru_do_uri_validate_new(text.c_str())));
}

/* One address, or an array of them where there are many. */
bool is_of_addresses(const AttributeType &attribute, ORUDoValue *value) {
    int32_t status = 0;
    if (!attribute.is_many)
        return oru_do_value_get_type(value) == ORU_DO_TYPE_MR_URI;
    ORUDoVlist *const elements = oru_do_value_get_array(value, &status);
    return elements != nullptr &&
           addresses_in(value).size() == static_cast<size_t>(oru_do_vlist_get_len(elements));
}

/* The greatest number that a size speaks of: beyond it all numbers fit, or none does. */
size_t greatest_in(ORUDoRange *size) {
    int64_t greatest = 0;
    const auto note = [&](ORUDoValue *bound) {
        int32_t status = 0;
        const int64_t number = bound != nullptr ? oru_do_value_to_long(bound, &status) : 0;
        greatest = std::max(greatest, status == 0 ? number : 0);
    };
    for (oru_range_el *at = oru_do_range_get_range_el(size); at != nullptr;
         at = oru_do_range_get_next_range_el(at)) {
        note(oru_do_range_el_get_lower(at));
        note(oru_do_range_el_get_upper(at));
    }
    return static_cast<size_t>(greatest);
}

class Checker {
  public:
    explicit Checker(Edit &edit) : edit_(edit), drafts_(edit.drafts()) {}

    void run() {
        // checks read further drafts, which are not checked themselves
        std::vector<Draft *> touched;
        for (auto &[key, draft] : drafts_.all()) {
            if (draft.is_touched)
                touched.push_back(&draft);
        }
        for (Draft *draft : touched) {
            if (!draft->after.exists()) {
                check_nobody_refers(*draft);
                continue;
            }
            check_state(*draft);
            if (draft->before.type != draft->after.type)
                check_others_may_refer(*draft);
        }
        check_numbers(touched);
    }

  private:
    void fault(const Draft &draft, int32_t code, const std::string &attribute, std::string rule,
               std::string expected, std::string got) {
        edit_.faults().add({code, drafts_.source().addresses.label_of(draft.place), attribute,
                            std::move(rule), std::move(expected), std::move(got)});
    }

    void check_state(Draft &draft) {
        const Records &records = records_.of(*draft.after.type);
        const std::vector<AttributeType> &attributes = draft.after.type->attributes;
        for (size_t i = 0; i < attributes.size(); i++)
            check_attribute(draft, attributes[i], records, i);
        check_secondary_keys(draft);
    }

    void check_attribute(Draft &draft, const AttributeType &attribute, const Records &records,
                         size_t index) {
        const Value value = draft.after.value(attribute);
        if (!value) {
            if (attribute.role == AttributeType::Role::config && is_mandatory(attribute))
                fault(draft, ORU_RC_COLL_PROPERTY_CONSTRAINT, attribute.name,
                      "a mandatory attribute is missing", type_text(attribute), "nothing");
        } else if (attribute.role == AttributeType::Role::peer) {
            check_references(draft, attribute, value);
        } else if (!attribute.is_secret() || draft.is_given(attribute)) {
            check_value(draft, attribute, records[index], value);
        }
    }

    /* Secrets that are in the store already are not what the constraints speak of. */
    void check_value(const Draft &draft, const AttributeType &attribute, ORUMdAttrMeta *record,
                     const Value &value) {
        ORUDoProperties *const props = draft.after.props.get();
        int32_t code = certain(int32_t{ORU_OK}, [&] {
            return record != nullptr ? oru_md_eval_attr_constraint(record, value.get(), props)
                                     : int32_t{ORU_OK};
        });
        // the library takes a value of the elements' type, too
        if (code == ORU_OK && attribute.is_many && oru_do_value_is_array(value.get()) == 0)
            code = ORU_RC_TYPE_COMPATIBILITY;
        if (code != ORU_OK)
            return fault(draft, code, attribute.name, {}, expectation(attribute, code, props),
                         shown(attribute, value.get()));
        if (draft.is_given(attribute))
            check_inner(draft, attribute, value);
        if (attribute.type == ORU_DO_TYPE_MR_URI)
            check_addresses(draft, attribute, value);
    }

    void check_addresses(const Draft &draft, const AttributeType &attribute, const Value &value) {
        for (ORUDoUri *uri : addresses_in(value.get())) {
            if (!can_be_followed(drafts_.source().addresses.location(), uri))
                fault(draft, ORU_RC_TYPE_MISMATCH, attribute.name, "no address of a resource",
                      type_text(attribute), std::string(view(oru_do_uri_get_uri_str(uri))));
        }
    }

    /* What was not given was checked when it was, and its secrets are closed by now. */
    void check_inner(const Draft &draft, const AttributeType &attribute, const Value &value) {
        check_inside(attribute, value.get(), [&](const InnerFault &inner) {
            fault(draft, inner.code, attribute.name, inner.rule, inner.expected,
                  shown(attribute, inner.got));
        });
    }

    /* What was not given was checked when it was. */
    void check_references(Draft &draft, const AttributeType &attribute, const Value &value) {
        if (!draft.is_given(attribute))
            return;
        if (!is_of_addresses(attribute, value.get()))
            return fault(draft, ORU_RC_TYPE_MISMATCH, attribute.name, {}, type_text(attribute),
                         shown(attribute, value.get()));
        for (ORUDoUri *uri : addresses_in(value.get()))
            check_reference(draft, attribute, uri);
        ORUDoConstraintList *const list =
            oru_do_prop_meta_get_constraint_list(attribute.meta.get());
        const int32_t rest = certain(int32_t{ORU_OK}, [&] {
            return oru_do_constraint_list_eval(list, attribute.object.get(), value.get(),
                                               draft.after.props.get());
        });
        if (rest != ORU_OK)
            fault(draft, rest, attribute.name, {},
                  expectation(attribute, rest, draft.after.props.get()),
                  shown(attribute, value.get()));
    }

    void check_reference(const Draft &draft, const AttributeType &attribute, ORUDoUri *uri) {
        const std::string address(view(oru_do_uri_get_uri_str(uri)));
        const std::string expected =
            attribute.target != nullptr ? attribute.target->name : std::string("a resource");
        const std::optional<Target> target = drafts_.resolve(address);
        const Draft *const found = target ? &drafts_.at(target->place) : nullptr;
        if (found == nullptr || !found->after.exists())
            fault(draft, ORU_RC_NO_SUCH_RESOURCE, attribute.name, "a reference leads to nothing",
                  expected, address);
        else if (attribute.target != nullptr && !found->after.type->is_a(*attribute.target))
            fault(draft, ORU_RC_TYPE_MISMATCH, attribute.name,
                  "a reference leads to a resource of another type", expected,
                  address + " of the type " + found->after.type->name);
    }

    /* Of those who referred to the resource before, and stay. */
    void check_nobody_refers(const Draft &draft) {
        for (const Draft *from : referrers_of(draft)) {
            if (refers(*from, draft))
                fault(draft, ORU_RC_CONFIG_VALIDATION, {},
                      "another resource refers to it: " +
                          drafts_.source().addresses.label_of(from->place),
                      {}, {});
        }
    }

    /* A resource that is made anew may be of another type, which others did not refer to. */
    void check_others_may_refer(const Draft &draft) {
        for (const Draft *from : referrers_of(draft)) {
            for (const AttributeType &attribute : from->after.type->attributes) {
                if (attribute.role == AttributeType::Role::peer && !from->is_given(attribute))
                    check_references_to(draft, *from, attribute);
            }
        }
    }

    void check_references_to(const Draft &draft, const Draft &from,
                             const AttributeType &attribute) {
        const Value value = from.after.value(attribute);
        for (ORUDoUri *uri : value ? addresses_in(value.get()) : UriList()) {
            const std::optional<Target> target = drafts_.resolve(view(oru_do_uri_get_uri_str(uri)));
            if (target && target->place.key == draft.place.key)
                check_reference(from, attribute, uri);
        }
    }

    /* Who referred to the resource before the change, and is there behind it. */
    std::vector<const Draft *> referrers_of(const Draft &draft) {
        std::vector<const Draft *> found;
        if (!draft.was_there())
            return found;
        for (const std::string &key : drafts_.keys(links_to(draft.place.key))) {
            const Draft &from = drafts_.at(place_of(source_of_link(key)));
            if (from.after.exists())
                found.push_back(&from);
        }
        return found;
    }

    bool refers(const Draft &from, const Draft &to) {
        const std::vector<Target> targets = targets_of(drafts_, from.after);
        return std::any_of(targets.begin(), targets.end(),
                           [&](const Target &target) { return target.place.key == to.place.key; });
    }

    /* The address stands in the draft once it is read. */
    static Place place_of(const std::string &key) { return {key, {}}; }

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
            fault(draft, ORU_RC_RESOURCE_EXISTS, first.name,
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
        IndexRows rows;
        add_secondary_keys(drafts_.source(), other.place, other.after, rows);
        return rows.count(key) != 0;
    }

    /* How many children a reference may have: those that lead to what comes or goes, and those of a
       new resource that may not be without. */
    void check_numbers(const std::vector<Draft *> &touched) {
        std::set<std::string> seen;
        for (const Draft *draft : touched) {
            if (draft->was_there() != draft->is_there())
                check_number_beside(*draft, seen);
        }
        for (const Draft *draft : touched) {
            if (draft->after.exists() && (!draft->before.exists() || draft->is_made_anew))
                check_least_numbers(*draft, seen);
        }
    }

    void check_number_beside(const Draft &draft, std::set<std::string> &seen) {
        const std::optional<Target> target =
            drafts_.source().addresses.resolve(draft.place.path, {});
        if (!target || target->reference == nullptr)
            return;
        const Place collection = collection_of(draft.place);
        if (seen.insert(collection.key).second)
            check_number(drafts_.at(parent_of(collection, *target)), *target->reference,
                         collection);
    }

    void check_least_numbers(const Draft &draft, std::set<std::string> &seen) {
        for (const ChildReference &reference : draft.after.type->children) {
            ORUDoConstraint *const constraint = size_constraint_of(reference);
            if (constraint == nullptr || certain(true, [&] {
                    return oru_do_range_eval_long(oru_do_constraint_get_size(constraint), 0) != 0;
                }))
                continue;
            const Place collection = below(draft.place, reference.name);
            if (seen.insert(collection.key).second)
                check_number(draft, reference, collection);
        }
    }

    static ORUDoConstraint *size_constraint_of(const ChildReference &reference) {
        ORUDoConstraintList *const list =
            oru_do_prop_meta_get_constraint_list(reference.meta.get());
        ORUDoConstraint *const constraint =
            list != nullptr ? oru_do_constraint_list_get_constraint_unconditional(list) : nullptr;
        return constraint != nullptr && oru_do_constraint_get_size(constraint) != nullptr
                   ? constraint
                   : nullptr;
    }

    void check_number(const Draft &parent, const ChildReference &reference,
                      const Place &collection) {
        ORUDoConstraint *const constraint = size_constraint_of(reference);
        if (constraint == nullptr || !parent.after.exists())
            return;
        ORUDoRange *const size = oru_do_constraint_get_size(constraint);
        const size_t count = drafts_.count_after(range_of(collection.key), greatest_in(size));
        if (!certain(true, [&] {
                return oru_do_range_eval_long(size, static_cast<int64_t>(count)) != 0;
            }))
            fault(parent, ORU_RC_COLL_SIZE_CONSTRAINT, reference.name,
                  "the number of children does not fit",
                  std::string(view(oru_do_constraint_get_str(constraint))), std::to_string(count));
    }

    static Place parent_of(const Place &collection, const Target &target) {
        const size_t slash = collection.path.rfind('/');
        return {target.parent_key, collection.path.substr(0, slash)};
    }

    Edit &edit_;
    Drafts &drafts_;
    RecordsByType records_;
    std::map<std::string, const Draft *> taken_; /* secondary keys */
};

}  // namespace

void check(Edit &edit) {
    const MetadataLock lock;
    Checker(edit).run();
}

std::vector<Target> targets_of(Drafts &drafts, const Draft::State &state) {
    std::vector<Target> targets;
    for (const AttributeType &attribute : state.type->attributes) {
        if (attribute.role != AttributeType::Role::peer)
            continue;
        const Value value = state.value(attribute);
        if (!value)
            continue;
        for (ORUDoUri *uri : addresses_in(value.get())) {
            if (std::optional<Target> target = drafts.resolve(view(oru_do_uri_get_uri_str(uri))))
                targets.push_back(std::move(*target));
        }
    }
    return targets;
}

}  // namespace embedded
