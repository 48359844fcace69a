#include "check_parts.h"
#include "members.h"

namespace embedded {

namespace {

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

}  // namespace

void tell(Edit &edit, const Draft &draft, int32_t code, const std::string &attribute,
          std::string rule, std::string expected, std::string got) {
    edit.faults().add({code, edit.drafts().source().addresses.label_of(draft.place), attribute,
                       std::move(rule), std::move(expected), std::move(got)});
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

ORUDoConstraint *size_constraint_of(ORUDoPropMeta *meta) {
    ORUDoConstraintList *const list = oru_do_prop_meta_get_constraint_list(meta);
    ORUDoConstraint *const constraint =
        list != nullptr ? oru_do_constraint_list_get_constraint_unconditional(list) : nullptr;
    return constraint != nullptr && oru_do_constraint_get_size(constraint) != nullptr ? constraint
                                                                                      : nullptr;
}

}  // namespace embedded
