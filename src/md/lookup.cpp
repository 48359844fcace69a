// Lookups by qualified name through the whole store.
#include <cstring>

#include "frame/require.h"
#include "frame/text.h"
#include "md/records.h"
#include "md/store.h"
#include "oru/md_lookup.h"
#include "oru/nvlist.h"

namespace {

// A qualified name, cut up in a copy of its own.
struct QualifiedName {
    oru::Text copy;
    char *package = nullptr;
    char *version = nullptr;
    char *entity = nullptr;
    char *attribute = nullptr;

    explicit QualifiedName(const char *text)
        : copy(text != nullptr ? oru::duplicate(text) : nullptr) {
        if (copy)
            parse_pkg_and_ent_name(copy.get(), &package, &version, &entity, &attribute);
    }

    ORUMdPkgMeta *find_package() const {
        if (oru::md_store == nullptr || package == nullptr || entity == nullptr)
            return nullptr;
        const bool versioned = version != nullptr && *version != '\0';
        return oru::md_store->oru_md_get_pkg(oru::md_store, package, versioned ? version : nullptr);
    }
};

// The record of the entity part in the package's chain that `chain` leads to.
template <class Record>
Record *find_entity(const QualifiedName &name, Record *ORUMdPkgMeta::*chain) {
    const auto *package = name.find_package();
    return package != nullptr ? oru::find_named(package->*chain, name.entity) : nullptr;
}

// The resource of a name that has an attribute part, too.
ORUMdMrMeta *find_holder(const QualifiedName &name) {
    return name.attribute != nullptr ? find_entity(name, &ORUMdPkgMeta::mrs) : nullptr;
}

}  // namespace

ORUMdPkgMeta *oru_md_get_pkg_meta_by_name(const char *pkg_name) {
    if (oru::md_store == nullptr || pkg_name == nullptr)
        return nullptr;
    return oru::md_store->oru_md_get_pkg(oru::md_store, pkg_name, nullptr);
}

ORUMdMrMeta *oru_md_get_mr_meta_by_name(const char *mr_qname) {
    ORU_REQUIRE(mr_qname);
    return find_entity(QualifiedName(mr_qname), &ORUMdPkgMeta::mrs);
}

ORUMdCodMeta *oru_md_get_cd_meta_by_name(const char *cd_qname) {
    ORU_REQUIRE(cd_qname);
    return find_entity(QualifiedName(cd_qname), &ORUMdPkgMeta::cds);
}

ORUMdCodMeta *oru_md_get_od_meta_by_name(const char *od_qname) {
    ORU_REQUIRE(od_qname);
    return find_entity(QualifiedName(od_qname), &ORUMdPkgMeta::ods);
}

ORUMdAttrMeta *oru_md_get_attr_meta_by_name(const char *attr_qname) {
    const QualifiedName name(attr_qname);
    auto *mr = find_holder(name);
    return mr != nullptr ? oru_md_get_attr_meta_w_str(mr, name.attribute) : nullptr;
}

ORUMdRefMeta *oru_md_get_ref_meta_by_name(const char *ref_qname) {
    const QualifiedName name(ref_qname);
    auto *mr = find_holder(name);
    return mr != nullptr ? oru_md_get_ref_meta_w_str(mr, name.attribute) : nullptr;
}

ORUMdTypedefMeta *oru_md_get_typedef_meta_by_name(const char *type_qname) {
    return find_entity(QualifiedName(type_qname), &ORUMdPkgMeta::typedefs);
}

ORUDoValue *oru_md_get_enum_value_by_name(const char *enum_qname) {
    const oru::Text type_name(enum_qname != nullptr ? oru::duplicate(enum_qname) : nullptr);
    char *dot = type_name ? std::strrchr(type_name.get(), '.') : nullptr;
    if (dot == nullptr)
        return nullptr;
    *dot = '\0';
    const auto *type = oru_md_get_typedef_meta_by_name(type_name.get());
    if (type == nullptr || type->enums == nullptr)
        return nullptr;
    return oru_do_nvlist_get_value(type->enums, dot + 1);
}
