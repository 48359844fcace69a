// Values and resources against what the metadata asks of them.
#include "do/value.h"
#include "do/vlist.h"
#include "md/records.h"
#include "md/type_check.h"
#include "oru/constraint.h"
#include "oru/md_lookup.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/rc.h"

namespace {

bool is_null(ORUDoValue *value) {
    return value == nullptr || oru_do_value_is_null(value) != 0;
}

// Elements are held against the type alone, not against the labels.
int32_t eval_labels(const ORUMdAttrMeta &attr, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const ORUDoVlist *elements = oru_do_value_get_array(value, &status);
    if (elements == nullptr)
        return ORU_RC_CONSTRAINT;
    for (auto *item = elements->first; item != nullptr; item = item->next) {
        if (const int32_t code = oru::check_attr_type(attr, item->value); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t eval_label(ORUDoNvlist *enums, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const char *label = oru_do_value_get_enumeration(value, &status);
    if (label == nullptr)
        return ORU_RC_CONSTRAINT;
    return oru_do_nvlist_get_value(enums, label) != nullptr ? ORU_OK : ORU_RC_ENUM_CONSTRAINT;
}

int32_t eval_enumeration(const ORUMdAttrMeta &attr, ORUDoValue *value) {
    if (is_null(value))
        return ORU_OK;
    return oru_do_prop_meta_get_multiplicity(attr.prop_meta) < ORU_MULTIPLICITY_MANY
               ? eval_label(attr.typedef_meta->enums, value)
               : eval_labels(attr, value);
}

// What the named type asks, beside its members.
int32_t eval_typedef(const ORUMdAttrMeta &attr, ORUDoValue *value, ORUDoProperties *props) {
    const auto &type = *attr.typedef_meta;
    const int32_t code = oru_do_constraint_list_eval(type.constraint_list, attr.name, value, props);
    if (code != ORU_OK || type.enums == nullptr)
        return code;
    return eval_enumeration(attr, value);
}

// A size with a bound to its maximum makes an attribute one that has to be there.
bool is_mandatory(ORUDoConstraintList *list) {
    if (list == nullptr)
        return false;
    auto *constraint = oru_do_constraint_list_get_constraint_unconditional(list);
    ORUDoRange *size = constraint != nullptr ? oru_do_constraint_get_size(constraint) : nullptr;
    return size != nullptr && oru_do_range_has_strict_max_value(size) != 0;
}

}  // namespace

int32_t oru_md_eval_attr_constraint(ORUMdAttrMeta *attr_meta, ORUDoValue *value,
                                    ORUDoProperties *props) {
    ORU_REQUIRE(attr_meta);
    if (attr_meta->prop_meta == nullptr)
        return ORU_RC_CONSTRAINT;
    if (const int32_t code = oru::check_attr_type(*attr_meta, value); code != ORU_OK)
        return code;
    if (attr_meta->typedef_meta != nullptr) {
        if (const int32_t code = eval_typedef(*attr_meta, value, props); code != ORU_OK)
            return code;
    }
    return oru_do_constraint_list_eval(oru_do_prop_meta_get_constraint_list(attr_meta->prop_meta),
                                       attr_meta->name, value, props);
}

// The words that would tell which attribute is missing never reach the caller, who learns the code.
int32_t oru_md_eval_mr_constraint(ORUMdMrMeta *mr_meta, ORUDoProperties *props, char **message) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(message);
    for (auto *attr = mr_meta->cd_attrs; attr != nullptr; attr = attr->next) {
        if (is_mandatory(oru_do_prop_meta_get_constraint_list(attr->prop_meta)) &&
            oru_do_properties_get_prop(props, oru::text_of(attr->name)) == nullptr)
            return ORU_RC_COLL_PROPERTY_CONSTRAINT;
    }
    return ORU_OK;
}
