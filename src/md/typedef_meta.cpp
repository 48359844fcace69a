#include "md/typedef_meta.h"

#include "oru/constraint.h"
#include "oru/name.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"

namespace {

// A description whose payload is set by the caller.
ORUDoTypedefMeta *new_of_category(ORUDoName *name, int32_t category) {
    auto *meta = oru::make<ORUDoTypedefMeta>();
    if (meta == nullptr)
        return nullptr;
    meta->name = oru_do_name_ref(name);
    meta->category = category;
    return meta;
}

ORUDoTypedefMeta *new_simple(ORUDoName *name, int32_t typecode, ORUDoConstraintList *constraints) {
    auto *meta = new_of_category(name, ORU_TYPEDEF_SIMPLE);
    if (meta == nullptr)
        return nullptr;
    meta->simple = oru::make_element<ORUDoSimpleTypeMeta>(typecode);
    if (meta->simple != nullptr)
        meta->simple->constraint_list = oru_do_constraint_list_ref(constraints);
    return meta;
}

ORUDoTypedefMeta *new_with_members(ORUDoName *name, int32_t category, ORUDoNtlist *members) {
    auto *meta = new_of_category(name, category);
    if (meta != nullptr)
        meta->members = oru_do_ntlist_ref(members);
    return meta;
}

const ORUDoSimpleTypeMeta *simple_part(const ORUDoTypedefMeta &meta) {
    return meta.category == ORU_TYPEDEF_SIMPLE ? meta.simple : nullptr;
}

ORUDoNtlist *members_of(const ORUDoTypedefMeta &meta, int32_t category) {
    return meta.category == category ? meta.members : nullptr;
}

}  // namespace

void oru::ObjectType<ORUDoTypedefMeta>::release_members(ORUDoTypedefMeta &self) {
    oru_do_name_deref(self.name);
    if (self.category == ORU_TYPEDEF_ENUM) {
        oru_do_nvlist_deref(self.enums);
    } else if (self.category != ORU_TYPEDEF_SIMPLE) {
        oru_do_ntlist_deref(self.members);
    } else if (self.simple != nullptr) {
        oru_do_constraint_list_deref(self.simple->constraint_list);
        free_element(self.simple);
    }
}

ORUDoTypedefMeta *oru_do_typedef_meta_new_builtin(int32_t typecode,
                                                  ORUDoConstraintList *constraints) {
    ORUDoName *name = oru_do_name_new("");
    if (name == nullptr)
        return nullptr;
    auto *meta = new_simple(name, typecode, constraints);
    oru_do_name_deref(name);
    return meta;
}

ORUDoTypedefMeta *oru_do_typedef_meta_new_simpletype(ORUDoName *name, int32_t typecode,
                                                     ORUDoConstraintList *constraints) {
    return new_simple(name, typecode, constraints);
}

ORUDoTypedefMeta *oru_do_typedef_meta_new_enum(ORUDoName *name, ORUDoNvlist *enums) {
    auto *meta = new_of_category(name, ORU_TYPEDEF_ENUM);
    if (meta != nullptr)
        meta->enums = oru_do_nvlist_ref(enums);
    return meta;
}

ORUDoTypedefMeta *oru_do_typedef_meta_new_sequence(ORUDoName *name, ORUDoNtlist *members) {
    return new_with_members(name, ORU_TYPEDEF_SEQUENCE, members);
}

ORUDoTypedefMeta *oru_do_typedef_meta_new_choice(ORUDoName *name, ORUDoNtlist *choices) {
    return new_with_members(name, ORU_TYPEDEF_CHOICE, choices);
}

ORUDoName *oru_do_typedef_meta_get_name(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->name;
}

int32_t oru_do_typedef_meta_get_category(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->category;
}

int32_t oru_do_typedef_meta_get_simple_type(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    const auto *simple = simple_part(*meta);
    return simple != nullptr ? simple->typecode : -3;
}

ORUDoConstraintList *oru_do_typedef_meta_get_constraint_list(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    const auto *simple = simple_part(*meta);
    return simple != nullptr ? simple->constraint_list : nullptr;
}

ORUDoConstraint *oru_do_typedef_meta_get_constraint(ORUDoTypedefMeta *meta, ORUDoName *name,
                                                    ORUDoProperties *props) {
    ORUDoConstraintList *list = oru_do_typedef_meta_get_constraint_list(meta);
    return list != nullptr ? oru_do_constraint_list_appl_constraint(list, name, props) : nullptr;
}

ORUDoNvlist *oru_do_typedef_meta_get_enums(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->category == ORU_TYPEDEF_ENUM ? meta->enums : nullptr;
}

ORUDoNtlist *oru_do_typedef_meta_get_sequence_members(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    return members_of(*meta, ORU_TYPEDEF_SEQUENCE);
}

ORUDoNtlist *oru_do_typedef_meta_get_choices(ORUDoTypedefMeta *meta) {
    ORU_REQUIRE(meta);
    return members_of(*meta, ORU_TYPEDEF_CHOICE);
}

ORU_OBJECT_API(ORUDoTypedefMeta, oru_do_typedef_meta)
ORU_POOL_API(oru::pool_of<ORUDoSimpleTypeMeta>, oru_do_simple_type_meta)
