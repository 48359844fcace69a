#include "md/prop_meta.h"

#include <algorithm>
#include <string_view>

#include "oru/constraint.h"
#include "oru/name.h"
#include "oru/typedef_meta.h"

namespace {

constexpr std::string_view kBuiltinAttributes[] = {"_mr", "_uri", "_pendingAttrs", "_snmpIdx",
                                                   "_sequenceNumber"};

}  // namespace

void oru::ObjectType<ORUDoPropMeta>::release_members(ORUDoPropMeta &self) {
    oru_do_name_deref(self.name);
    oru_do_name_deref(self.type_name);
    oru_do_constraint_list_deref(self.constraint_list);
    oru_do_typedef_meta_deref(self.typedef_meta);
}

ORUDoPropMeta *oru_do_prop_meta_new(ORUDoName *name, int32_t category, int32_t is_primary_key,
                                    int32_t key_idx, ORUDoPropMeta *first_key_in_group,
                                    int32_t typecode, ORUDoName *type_name, int32_t multiplicity,
                                    int32_t ref_role, uint8_t max_access, int32_t persistent) {
    auto *meta = oru::make<ORUDoPropMeta>();
    if (meta == nullptr)
        return nullptr;
    meta->name = oru_do_name_ref(name);
    meta->category = category;
    meta->primary_key = is_primary_key;
    meta->key_idx = key_idx;
    meta->first_key_in_group = first_key_in_group;
    meta->typecode = typecode;
    meta->type_name = oru_do_name_ref(type_name);
    meta->multiplicity = multiplicity;
    meta->ref_role = ref_role;
    meta->max_access = max_access;
    meta->persistent = persistent;
    return meta;
}

#define ORU_PROP_META_GETTER(Type, suffix, expression)    \
    Type oru_do_prop_meta_##suffix(ORUDoPropMeta *meta) { \
        ORU_REQUIRE(meta);                                \
        return expression;                                \
    }

ORU_PROP_META_GETTER(ORUDoName *, get_name, meta->name)
ORU_PROP_META_GETTER(int32_t, get_category, meta->category)
ORU_PROP_META_GETTER(ORUDoName *, get_type_name, meta->type_name)
ORU_PROP_META_GETTER(int32_t, get_typecode, meta->typecode)
ORU_PROP_META_GETTER(ORUDoTypedefMeta *, get_typedef_meta, meta->typedef_meta)
ORU_PROP_META_GETTER(uint8_t, get_max_access, meta->max_access)
ORU_PROP_META_GETTER(int32_t, is_primary_key, meta->primary_key)
ORU_PROP_META_GETTER(int32_t, get_key_idx, meta->key_idx)
ORU_PROP_META_GETTER(ORUDoPropMeta *, get_first_key_in_group, meta->first_key_in_group)
ORU_PROP_META_GETTER(int32_t, get_multiplicity, meta->multiplicity)
ORU_PROP_META_GETTER(int32_t, get_ref_role, meta->ref_role)
ORU_PROP_META_GETTER(ORUDoConstraintList *, get_constraint_list, meta->constraint_list)
ORU_PROP_META_GETTER(int32_t, is_persistent, meta->persistent)
ORU_PROP_META_GETTER(int32_t, is_oper_data, meta->max_access == 0)

// Access is checked on the resource; callers depend on these three to say yes.
ORU_PROP_META_GETTER(int32_t, is_readable, 1)
ORU_PROP_META_GETTER(int32_t, is_writeable, 1)
ORU_PROP_META_GETTER(int32_t, is_createable, 1)

ORUDoConstraint *oru_do_prop_meta_get_constraint(ORUDoPropMeta *meta, int32_t index) {
    ORU_REQUIRE(meta);
    if (meta->constraint_list == nullptr)
        return nullptr;
    return oru_do_constraint_list_get_constraint(meta->constraint_list, index);
}

int32_t oru_attribute_is_builtin(const char *name) {
    ORU_REQUIRE(name);
    return std::ranges::find(kBuiltinAttributes, name) != std::ranges::end(kBuiltinAttributes);
}

void oru_do_prop_meta_set_typecode(ORUDoPropMeta *meta, int32_t typecode) {
    ORU_REQUIRE(meta);
    meta->typecode = typecode;
}

void oru_do_prop_meta_set_ref_role(ORUDoPropMeta *meta, int32_t ref_role) {
    ORU_REQUIRE(meta);
    meta->ref_role = ref_role;
}

void oru_do_prop_meta_set_typedef_meta(ORUDoPropMeta *meta, ORUDoTypedefMeta *typedef_meta,
                                       ORUDoEnumResolver resolver) {
    ORU_REQUIRE(meta);
    meta->typedef_meta = oru_do_typedef_meta_ref(typedef_meta);
    oru_do_constraint_list_set_typedef_meta(meta->constraint_list, typedef_meta, resolver);
}

void oru_do_prop_meta_set_constraint_list(ORUDoPropMeta *meta,
                                          ORUDoConstraintList *constraint_list) {
    ORU_REQUIRE(meta);
    ORU_REQUIRE(constraint_list);
    meta->constraint_list = oru_do_constraint_list_ref(constraint_list);
}

ORU_OBJECT_API(ORUDoPropMeta, oru_do_prop_meta)
