#include <algorithm>

#include "check_parts.h"
#include "checks.h"
#include "indexes.h"

namespace embedded {

namespace {

/* One address, or an array of them where there are many. */
bool is_of_addresses(const AttributeType &attribute, ORUDoValue *value) {
    int32_t status = 0;
    if (!attribute.is_many)
        return oru_do_value_get_type(value) == ORU_DO_TYPE_MR_URI;
    ORUDoVlist *const elements = oru_do_value_get_array(value, &status);
    return elements != nullptr &&
           addresses_in(value).size() == static_cast<size_t>(oru_do_vlist_get_len(elements));
}

/* The address stands in the draft once it is read. */
Place place_of(const std::string &key) {
    return {key, {}};
}

}  // namespace

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

void ReferenceChecker::check_value(const Draft &draft, const AttributeType &attribute,
                                   const Value &value) {
    if (!is_of_addresses(attribute, value.get()))
        return tell(edit_, draft, ORU_RC_TYPE_MISMATCH, attribute.name, {}, type_text(attribute),
                    shown(attribute, value.get()));
    for (ORUDoUri *uri : addresses_in(value.get()))
        check_reference(draft, attribute, uri);
    ORUDoConstraintList *const list = oru_do_prop_meta_get_constraint_list(attribute.meta.get());
    const int32_t rest = certain(int32_t{ORU_OK}, [&] {
        return oru_do_constraint_list_eval(list, attribute.object.get(), value.get(),
                                           draft.after.props.get());
    });
    if (rest != ORU_OK)
        tell(edit_, draft, rest, attribute.name, {},
             expectation(attribute, rest, draft.after.props.get()), shown(attribute, value.get()));
}

void ReferenceChecker::check_reference(const Draft &draft, const AttributeType &attribute,
                                       ORUDoUri *uri) {
    const std::string address(view(oru_do_uri_get_uri_str(uri)));
    const std::string expected =
        attribute.target != nullptr ? attribute.target->name : std::string("a resource");
    const std::optional<Target> target = drafts_.resolve(address);
    const Draft *const found = target ? &drafts_.at(target->place) : nullptr;
    if (found == nullptr || !found->after.exists())
        tell(edit_, draft, ORU_RC_NO_SUCH_RESOURCE, attribute.name, "a reference leads to nothing",
             expected, address);
    else if (attribute.target != nullptr && !found->after.type->is_a(*attribute.target))
        tell(edit_, draft, ORU_RC_TYPE_MISMATCH, attribute.name,
             "a reference leads to a resource of another type", expected,
             address + " of the type " + found->after.type->name);
}

void ReferenceChecker::check_nobody_refers(const Draft &draft) {
    for (const Draft *from : referrers_of(draft)) {
        if (refers(*from, draft))
            tell(edit_, draft, ORU_RC_CONFIG_VALIDATION, {},
                 "another resource refers to it: " +
                     drafts_.source().addresses.label_of(from->place),
                 {}, {});
    }
}

void ReferenceChecker::check_others_may_refer(const Draft &draft) {
    for (const Draft *from : referrers_of(draft)) {
        for (const AttributeType &attribute : from->after.type->attributes) {
            if (attribute.role == AttributeType::Role::peer && !from->is_given(attribute))
                check_references_to(draft, *from, attribute);
        }
    }
}

void ReferenceChecker::check_references_to(const Draft &draft, const Draft &from,
                                           const AttributeType &attribute) {
    const Value value = from.after.value(attribute);
    for (ORUDoUri *uri : value ? addresses_in(value.get()) : UriList()) {
        const std::optional<Target> target = drafts_.resolve(view(oru_do_uri_get_uri_str(uri)));
        if (target && target->place.key == draft.place.key)
            check_reference(from, attribute, uri);
    }
}

/* Who referred to the resource before the change, and is there behind it. */
std::vector<const Draft *> ReferenceChecker::referrers_of(const Draft &draft) {
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

bool ReferenceChecker::refers(const Draft &from, const Draft &to) {
    const std::vector<Target> targets = targets_of(drafts_, from.after);
    return std::any_of(targets.begin(), targets.end(),
                       [&](const Target &target) { return target.place.key == to.place.key; });
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
