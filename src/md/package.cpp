// Packages and the definitions in them.
#include "frame/require.h"
#include "frame/text.h"
#include "md/records.h"
#include "oru/md.h"
#include "oru/prop_meta.h"

ORUMdPkgMeta *oru_md_new_pkg_meta(ORUDoName *pkg_name, const char *version, int32_t type) {
    ORU_REQUIRE(pkg_name);
    ORU_REQUIRE(version);
    oru::Text copy(oru::duplicate(version));
    auto *package = copy ? oru::new_record<ORUMdPkgMeta>() : nullptr;
    if (package == nullptr)
        return nullptr;
    package->name = oru_do_name_ref(pkg_name);
    package->version = copy.release();
    package->type = type;
    return package;
}

void oru_md_delete_pkg_meta(ORUMdPkgMeta *pkg_meta) {
    if (pkg_meta == nullptr)
        return;
    oru_do_name_deref(pkg_meta->name);
    ph_free_named(pkg_meta->version);
    oru::delete_records(pkg_meta->mrs, oru_md_delete_mr_meta);
    oru::delete_records(pkg_meta->cds, oru_md_cod_meta_delete);
    oru::delete_records(pkg_meta->ods, oru_md_cod_meta_delete);
    oru::delete_records(pkg_meta->typedefs, oru_md_delete_typedef_meta);
    oru::free_record(pkg_meta);
}

ORUMdPkgMeta *oru_md_remove_pkg_meta(ORUMdPkgMeta *first_pkg_meta, ORUDoName *pkg_name) {
    ORU_REQUIRE(first_pkg_meta);
    ORU_REQUIRE(pkg_name);
    return oru::remove_named(first_pkg_meta, pkg_name, oru_md_delete_pkg_meta);
}

void oru_md_add_mr_meta(ORUMdPkgMeta *pkg_meta, ORUMdMrMeta *mr_meta) {
    ORU_REQUIRE(pkg_meta);
    ORU_REQUIRE(mr_meta);
    oru::append_record(pkg_meta->mrs, mr_meta);
}

void oru_md_add_pkg_cd_meta(ORUMdPkgMeta *pkg_meta, ORUMdCodMeta *cd_meta) {
    ORU_REQUIRE(pkg_meta);
    ORU_REQUIRE(cd_meta);
    oru::append_record(pkg_meta->cds, cd_meta);
}

void oru_md_add_pkg_od_meta(ORUMdPkgMeta *pkg_meta, ORUMdCodMeta *od_meta) {
    ORU_REQUIRE(pkg_meta);
    ORU_REQUIRE(od_meta);
    oru::append_record(pkg_meta->ods, od_meta);
}

void oru_md_add_typedef_meta(ORUMdPkgMeta *pkg_meta, ORUMdTypedefMeta *typedef_meta) {
    ORU_REQUIRE(pkg_meta);
    ORU_REQUIRE(typedef_meta);
    oru::append_record(pkg_meta->typedefs, typedef_meta);
}

ORUDoName *oru_md_qualified_name_new_or_ref(ORUMdPkgMeta *package, ORUDoName *name) {
    ORU_REQUIRE(package);
    ORU_REQUIRE(name);
    return oru_do_name_new_fqname(name, oru::text_of(package->name), package->version);
}

ORUMdCodMeta *oru_md_cod_meta_new(ORUMdPkgMeta *package, ORUDoName *cod_name, const char *extends,
                                  ORUDoPropMetaList *prop_list, int32_t is_lib) {
    ORU_REQUIRE(cod_name);
    auto *cod = oru::new_record<ORUMdCodMeta>();
    if (cod == nullptr)
        return nullptr;
    cod->package = package;
    cod->name = oru_do_name_ref(cod_name);
    cod->prop_list = oru_do_prop_meta_list_ref(prop_list);
    cod->is_lib = is_lib != 0;
    if (extends != nullptr && (cod->extends_name = oru_do_name_new(extends)) == nullptr) {
        oru_md_cod_meta_delete(cod);
        return nullptr;
    }
    return cod;
}

void oru_md_cod_meta_delete(ORUMdCodMeta *cod_meta) {
    if (cod_meta == nullptr)
        return;
    oru_do_name_deref(cod_meta->name);
    oru_do_name_deref(cod_meta->extends_name);
    oru_do_prop_meta_list_deref(cod_meta->prop_list);
    oru::free_record(cod_meta);
}
