// The attributes, keys and references of resources in the store.
#include "frame/require.h"
#include "md/records.h"
#include "oru/constraint.h"
#include "oru/md.h"
#include "oru/prop_meta.h"

namespace {

ORUDoConstraint *first_applicable(ORUDoConstraintList *list, ORUDoName *name,
                                  ORUDoProperties *props) {
    return list != nullptr ? oru_do_constraint_list_appl_constraint(list, name, props) : nullptr;
}

}  // namespace

ORUMdAttrMeta *oru_md_new_attr_meta(ORUDoName *attr_name, ORUDoName *group_name,
                                    ORUDoPropMeta *do_prop_meta) {
    ORU_REQUIRE(attr_name);
    ORU_REQUIRE(do_prop_meta);
    auto *attr = oru::new_record<ORUMdAttrMeta>();
    if (attr == nullptr)
        return nullptr;
    attr->name = oru_do_name_ref(attr_name);
    attr->group_name = oru_do_name_ref(group_name);
    attr->prop_meta = oru_do_prop_meta_ref(do_prop_meta);
    return attr;
}

void oru_md_delete_attr_meta(ORUMdAttrMeta *attr_meta) {
    if (attr_meta == nullptr)
        return;
    oru_do_name_deref(attr_meta->name);
    oru_do_name_deref(attr_meta->group_name);
    oru_do_prop_meta_deref(attr_meta->prop_meta);
    oru::free_record(attr_meta);
}

ORUMdAttrMeta *oru_md_remove_attr_meta(ORUMdAttrMeta *first_attr_meta, ORUDoName *attr_name) {
    ORU_REQUIRE(first_attr_meta);
    ORU_REQUIRE(attr_name);
    return oru::remove_named(first_attr_meta, attr_name, oru_md_delete_attr_meta);
}

ORUMdAttrMeta *oru_md_attr_meta_find(ORUMdAttrMeta *first_attr_meta, ORUDoName *attr_name) {
    return oru::find_named(first_attr_meta, attr_name);
}

ORUMdRefMeta *oru_md_new_ref_meta(ORUDoName *ref_name, ORUDoPropMeta *do_prop_meta) {
    ORU_REQUIRE(ref_name);
    ORU_REQUIRE(do_prop_meta);
    auto *ref = oru::new_record<ORUMdRefMeta>();
    if (ref == nullptr)
        return nullptr;
    ref->name = oru_do_name_ref(ref_name);
    ref->prop_meta = oru_do_prop_meta_ref(do_prop_meta);
    ref->is_child = oru_do_prop_meta_get_ref_role(do_prop_meta) == ORU_REF_CHILD;
    ref->target_name = oru_do_name_ref(oru_do_prop_meta_get_type_name(do_prop_meta));
    return ref;
}

void oru_md_delete_ref_meta(ORUMdRefMeta *ref_meta) {
    if (ref_meta == nullptr)
        return;
    oru_do_name_deref(ref_meta->name);
    oru_do_name_deref(ref_meta->target_name);
    oru_do_prop_meta_deref(ref_meta->prop_meta);
    oru::free_record(ref_meta);
}

ORUMdRefMeta *oru_md_remove_ref_meta(ORUMdRefMeta *first_ref_meta, ORUDoName *ref_name) {
    ORU_REQUIRE(first_ref_meta);
    ORU_REQUIRE(ref_name);
    return oru::remove_named(first_ref_meta, ref_name, oru_md_delete_ref_meta);
}

ORUMdRefMeta *oru_md_ref_meta_find(ORUMdRefMeta *first_ref_meta, ORUDoName *ref_name) {
    return oru::find_named(first_ref_meta, ref_name);
}

int32_t oru_md_has_attr_constraints(ORUMdAttrMeta *attr_meta) {
    return oru_md_get_attr_constraints(attr_meta) != nullptr;
}

ORUDoConstraintList *oru_md_get_attr_constraints(ORUMdAttrMeta *attr_meta) {
    ORU_REQUIRE(attr_meta);
    return oru_do_prop_meta_get_constraint_list(attr_meta->prop_meta);
}

int32_t oru_md_has_ref_constraints(ORUMdRefMeta *ref_meta) {
    return oru_md_get_ref_constraints(ref_meta) != nullptr;
}

ORUDoConstraintList *oru_md_get_ref_constraints(ORUMdRefMeta *ref_meta) {
    ORU_REQUIRE(ref_meta);
    return oru_do_prop_meta_get_constraint_list(ref_meta->prop_meta);
}

ORUDoConstraint *oru_md_get_attr_constraint(ORUMdAttrMeta *attr_meta, ORUDoProperties *props) {
    ORU_REQUIRE(attr_meta);
    return first_applicable(oru_md_get_attr_constraints(attr_meta), attr_meta->name, props);
}

ORUDoConstraint *oru_md_get_ref_constraint(ORUMdRefMeta *ref_meta, ORUDoProperties *props) {
    ORU_REQUIRE(ref_meta);
    return first_applicable(oru_md_get_ref_constraints(ref_meta), ref_meta->name, props);
}

const char *oru_md_get_type_name(ORUMdAttrMeta *attr_meta) {
    if (attr_meta == nullptr || attr_meta->typedef_meta == nullptr)
        return nullptr;
    return oru::text_of(attr_meta->typedef_meta->name);
}
