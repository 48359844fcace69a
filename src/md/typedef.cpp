// The named types of the store and their descriptions.
#include <atomic>

#include "do/ntlist.h"
#include "frame/object.h"
#include "md/records.h"
#include "md/typedef_meta.h"
#include "oru/constraint.h"
#include "oru/md.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/value.h"

namespace {

// Types may contain each other in a circle, which no packages that make sense do.
constexpr int kDeepestType = 100;

void delete_member(ORUMdComplexEl *member) {
    oru_do_name_deref(member->name);
    oru_do_name_deref(member->type_name);
    oru_do_constraint_list_deref(member->constraint_list);
    oru::free_record(member);
}

ORUDoTypedefMeta *description_of(ORUMdTypedefMeta &type, int depth);

bool is_describable(const ORUMdTypedefMeta &type) {
    return type.typecode != ORU_DO_TYPE_ENUMERATION || type.enums != nullptr;
}

// A member whose type never has a description is left out. False when one could not be had.
bool add_member(ORUDoNtlist *list, const ORUMdComplexEl &member, int depth) {
    if (member.typedef_meta == nullptr) {
        return oru_do_ntlist_add_builtin_type(list, member.name, member.typecode,
                                              member.constraint_list) > 0;
    }
    if (!is_describable(*member.typedef_meta))
        return true;
    return oru_do_ntlist_add_typedef_meta(list, member.name,
                                          description_of(*member.typedef_meta, depth + 1)) > 0;
}

ORUDoTypedefMeta *make_complex(const ORUMdTypedefMeta &type, int depth) {
    const auto list = oru::Ref<ORUDoNtlist>::adopt(oru_do_ntlist_new());
    if (!list)
        return nullptr;
    for (auto *member = type.complex_els; member != nullptr; member = member->next) {
        if (!add_member(list.get(), *member, depth))
            return nullptr;
    }
    return type.typecode == ORU_DO_TYPE_SEQUENCE
               ? oru_do_typedef_meta_new_sequence(type.name, list.get())
               : oru_do_typedef_meta_new_choice(type.name, list.get());
}

ORUDoTypedefMeta *make_description(const ORUMdTypedefMeta &type, int depth) {
    switch (type.typecode) {
        case ORU_DO_TYPE_ENUMERATION:
            return is_describable(type) ? oru_do_typedef_meta_new_enum(type.name, type.enums)
                                        : nullptr;
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            return make_complex(type, depth);
        default:
            return oru_do_typedef_meta_new_simpletype(type.name, type.typecode,
                                                      type.constraint_list);
    }
}

// Readers fill the cache side by side: the first one installs its description.
ORUDoTypedefMeta *description_of(ORUMdTypedefMeta &type, int depth) {
    std::atomic_ref cache(type.do_typedef_meta);
    ORUDoTypedefMeta *known = cache.load(std::memory_order_acquire);
    if (known != nullptr || depth > kDeepestType)
        return known;
    ORUDoTypedefMeta *made = make_description(type, depth);
    if (made == nullptr || cache.compare_exchange_strong(known, made, std::memory_order_acq_rel))
        return made;
    oru_do_typedef_meta_deref(made);
    return known;
}

}  // namespace

ORUMdTypedefMeta *oru_md_new_typedef_meta(const char *type_name) {
    ORU_REQUIRE(type_name);
    auto *type = oru::new_record<ORUMdTypedefMeta>();
    if (type == nullptr)
        return nullptr;
    type->name = oru_do_name_new(type_name);
    type->typecode = ORU_DO_TYPE_UNKNOWN;
    if (type->name == nullptr) {
        oru::free_record(type);
        return nullptr;
    }
    return type;
}

void oru_md_delete_typedef_meta(ORUMdTypedefMeta *typedef_meta) {
    if (typedef_meta == nullptr)
        return;
    oru_do_name_deref(typedef_meta->name);
    oru_do_nvlist_deref(typedef_meta->enums);
    oru::delete_records(typedef_meta->complex_els, delete_member);
    oru_do_constraint_list_deref(typedef_meta->constraint_list);
    oru_do_typedef_meta_deref(typedef_meta->do_typedef_meta);
    oru::free_record(typedef_meta);
}

ORUMdComplexEl *oru_md_add_complex_el_meta(ORUMdTypedefMeta *typedef_meta, const char *name,
                                           const char *type, int32_t typecode) {
    ORU_REQUIRE(typedef_meta);
    ORU_REQUIRE(name);
    ORU_REQUIRE(type);
    auto *member = oru::new_record<ORUMdComplexEl>();
    if (member == nullptr)
        return nullptr;
    member->name = oru_do_name_new(name);
    member->type_name = oru_do_name_new(type);
    member->typecode = typecode;
    if (member->name == nullptr || member->type_name == nullptr) {
        delete_member(member);
        return nullptr;
    }
    oru::append_record(typedef_meta->complex_els, member);
    return member;
}

ORUDoTypedefMeta *oru_md_get_do_typedef_meta(ORUMdTypedefMeta *typedef_meta) {
    ORU_REQUIRE(typedef_meta);
    return description_of(*typedef_meta, 0);
}
