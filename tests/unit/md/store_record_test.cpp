// The records of the store in memory, field by field, and the constructors of each without memory.
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/typedef_meta.h>
#include <oru/value.h>

#include <cstddef>

#include "tests/support/oom.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

// The places of fields that follow each other, with the alignment of C.
#define FOLLOWS(Record, field, before) \
    static_assert(offsetof(Record, field) == offsetof(Record, before) + sizeof(void *))

static_assert(offsetof(ORUMdMap, bundles) == 0);
FOLLOWS(ORUMdMap, pkg_table, bundles);
FOLLOWS(ORUMdMap, oru_md_resolve_refs, pkg_table);
FOLLOWS(ORUMdMap, oru_md_add_pkg, oru_md_resolve_refs);
FOLLOWS(ORUMdMap, oru_md_remove_pkg, oru_md_add_pkg);
FOLLOWS(ORUMdMap, oru_md_get_pkg, oru_md_remove_pkg);

static_assert(offsetof(ORUMdPkgBundle, name) == 0);
FOLLOWS(ORUMdPkgBundle, pkgs, name);
FOLLOWS(ORUMdPkgBundle, next, pkgs);

static_assert(offsetof(ORUMdPkgMeta, name) == 0);
FOLLOWS(ORUMdPkgMeta, version, name);
FOLLOWS(ORUMdPkgMeta, type, version);
FOLLOWS(ORUMdPkgMeta, mrs, type);  // 32 bits and as many to fill up
FOLLOWS(ORUMdPkgMeta, cds, mrs);
FOLLOWS(ORUMdPkgMeta, ods, cds);
FOLLOWS(ORUMdPkgMeta, typedefs, ods);
FOLLOWS(ORUMdPkgMeta, next, typedefs);

static_assert(offsetof(ORUMdMrMeta, package) == 0);
FOLLOWS(ORUMdMrMeta, name, package);
FOLLOWS(ORUMdMrMeta, parent_name, name);
FOLLOWS(ORUMdMrMeta, parent_mr, parent_name);
FOLLOWS(ORUMdMrMeta, const_key, parent_mr);
FOLLOWS(ORUMdMrMeta, do_mr_meta, const_key);
FOLLOWS(ORUMdMrMeta, is_lib, do_mr_meta);
FOLLOWS(ORUMdMrMeta, impl_mr_metas, is_lib);
FOLLOWS(ORUMdMrMeta, primary_keys, impl_mr_metas);
FOLLOWS(ORUMdMrMeta, secondary_keys, primary_keys);
FOLLOWS(ORUMdMrMeta, refs, secondary_keys);
FOLLOWS(ORUMdMrMeta, cd_attrs, refs);
FOLLOWS(ORUMdMrMeta, od_attrs, cd_attrs);
FOLLOWS(ORUMdMrMeta, next, od_attrs);

static_assert(offsetof(ORUMdAttrMeta, name) == 0);
FOLLOWS(ORUMdAttrMeta, group_name, name);
FOLLOWS(ORUMdAttrMeta, prop_meta, group_name);
FOLLOWS(ORUMdAttrMeta, typedef_meta, prop_meta);
FOLLOWS(ORUMdAttrMeta, next, typedef_meta);

static_assert(offsetof(ORUMdRefMeta, name) == 0);
FOLLOWS(ORUMdRefMeta, prop_meta, name);
FOLLOWS(ORUMdRefMeta, is_child, prop_meta);
FOLLOWS(ORUMdRefMeta, target_name, is_child);
FOLLOWS(ORUMdRefMeta, target_mr, target_name);
FOLLOWS(ORUMdRefMeta, next, target_mr);

static_assert(offsetof(ORUMdCodMeta, package) == 0);
FOLLOWS(ORUMdCodMeta, name, package);
FOLLOWS(ORUMdCodMeta, prop_list, name);
FOLLOWS(ORUMdCodMeta, extends_name, prop_list);
FOLLOWS(ORUMdCodMeta, extends_cod, extends_name);
FOLLOWS(ORUMdCodMeta, is_lib, extends_cod);
FOLLOWS(ORUMdCodMeta, next, is_lib);

static_assert(offsetof(ORUMdTypedefMeta, name) == 0);
FOLLOWS(ORUMdTypedefMeta, typecode, name);
FOLLOWS(ORUMdTypedefMeta, enums, typecode);
FOLLOWS(ORUMdTypedefMeta, complex_els, enums);
FOLLOWS(ORUMdTypedefMeta, constraint_list, complex_els);
FOLLOWS(ORUMdTypedefMeta, do_typedef_meta, constraint_list);
FOLLOWS(ORUMdTypedefMeta, next, do_typedef_meta);

static_assert(offsetof(ORUMdComplexEl, name) == 0);
FOLLOWS(ORUMdComplexEl, type_name, name);
FOLLOWS(ORUMdComplexEl, typecode, type_name);
FOLLOWS(ORUMdComplexEl, typedef_meta, typecode);
FOLLOWS(ORUMdComplexEl, constraint_list, typedef_meta);
FOLLOWS(ORUMdComplexEl, next, constraint_list);

static_assert(offsetof(ORUMdMrMetaList, mr) == 0);
FOLLOWS(ORUMdMrMetaList, next, mr);

// ---- Memory ----

constexpr char kLong[] = "a.name.too.long.to.be.kept.inside.of.its.record";

class StoreMemory : public testing::Test {
  protected:
    StoreMemory() {
        package = oru_md_new_pkg_meta(name, "1.0", ORU_MD_PKG_LIBRARY);
        description = oru_do_mr_meta_new(name, "1.0", name, 15, nullptr, nullptr);
        prop = oru_do_prop_meta_new(name, ORU_PROP_REF, 0, 0, nullptr, 107, name, 1, 1, 1, 0);
    }
    ~StoreMemory() override {
        oru_do_prop_meta_deref(prop);
        oru_do_mr_meta_deref(description);
        oru_md_delete_pkg_meta(package);
        oru_do_name_deref(name);
    }

    // A constructor gives null exactly where an allocation failed, and leaves nothing behind.
    template <class Make, class Release>
    static void sweep(Make &&make, Release &&release, int at_least = 0) {
        sweep_oom(
            [&] {
                auto *made = make();
                EXPECT_EQ(made == nullptr, oom_hit());
                release(made);
            },
            {.promised_deaths = {}, .at_least = at_least});
    }

    ORUDoName *name = oru_do_name_new(kLong);
    ORUMdPkgMeta *package = nullptr;
    ORUDoMrMeta *description = nullptr;
    ORUDoPropMeta *prop = nullptr;
};

TEST_F(StoreMemory, ConstructorsOfRecordsGiveNull) {
    sweep([] { return oru_md_map_new(); }, oru_md_map_delete, 1);
    sweep([] { return oru_md_pkg_bundle_new("b", nullptr); }, oru_md_pkg_bundle_delete, 1);
    sweep([this] { return oru_md_new_pkg_meta(name, "1.0", 1); }, oru_md_delete_pkg_meta, 1);
    sweep([this] { return oru_md_new_mr_meta(package, name, description, kLong, "key", 0); },
          oru_md_delete_mr_meta, 4);
    sweep([this] { return oru_md_new_attr_meta(name, name, prop); }, oru_md_delete_attr_meta);
    sweep([this] { return oru_md_new_ref_meta(name, prop); }, oru_md_delete_ref_meta);
    sweep([this] { return oru_md_cod_meta_new(package, name, kLong, nullptr, 0); },
          oru_md_cod_meta_delete, 2);
    sweep([] { return oru_md_new_typedef_meta(kLong); }, oru_md_delete_typedef_meta, 2);
    sweep(
        [this] {
            auto *plain = oru_do_name_new("a");
            auto *made =
                plain != nullptr ? oru_md_qualified_name_new_or_ref(package, plain) : nullptr;
            oru_do_name_deref(plain);
            return made;
        },
        oru_do_name_deref, 2);
}

TEST_F(StoreMemory, EntryOfAnImplementationIsNotAdded) {
    auto *library = oru_md_new_mr_meta(package, name, description, nullptr, nullptr, 1);
    sweep_oom([&] {
        auto *entry = oru_md_mr_meta_add_impl_mr_meta(library, library);
        EXPECT_EQ(entry == nullptr, oom_hit());
        EXPECT_EQ(library->impl_mr_metas, entry);
        oru_md_mr_meta_list_delete_all_items(library->impl_mr_metas);
        library->impl_mr_metas = nullptr;
        ORUMdMrMetaList *list = nullptr;
        const int32_t length = oru_md_mr_meta_list_add(&list, library);
        EXPECT_EQ(length, list != nullptr ? 1 : 0);
        EXPECT_TRUE(length == 1 || oom_hit());
        oru_md_mr_meta_list_delete_all_items(list);
    });
    oru_md_delete_mr_meta(library);
}

TEST_F(StoreMemory, PackageThatCannotBeAddedIsTold) {
    auto *store = oru_md_map_new();
    sweep_oom([&] {
        const int32_t code = store->oru_md_add_pkg(store, package);
        EXPECT_EQ(code, oom_hit() ? 10002 : 0);
        EXPECT_EQ(store->oru_md_get_pkg(store, kLong, nullptr), code == 0 ? package : nullptr);
        if (code == 0)
            store->oru_md_remove_pkg(store, package);
    });
    oru_md_map_delete(store);
}

// Whatever fails, the type has no description then, and has it with the next call.
TEST_F(StoreMemory, DescriptionOfATypeIsTriedAgain) {
    auto *inner = oru_md_new_typedef_meta("Inner");
    inner->typecode = ORU_DO_TYPE_ENUMERATION;
    inner->enums = oru_do_nvlist_new();
    auto *outer = oru_md_new_typedef_meta("Outer");
    outer->typecode = ORU_DO_TYPE_SEQUENCE;
    oru_md_add_complex_el_meta(outer, "a", "int", ORU_DO_TYPE_INT);
    oru_md_add_complex_el_meta(outer, "b", "Inner", -3)->typedef_meta = inner;
    sweep_oom(
        [&] {
            auto *made = oru_md_get_do_typedef_meta(outer);
            EXPECT_TRUE(made != nullptr || oom_hit());
            EXPECT_EQ(made, outer->do_typedef_meta);
            for (auto *type : {outer, inner}) {
                oru_do_typedef_meta_deref(type->do_typedef_meta);
                type->do_typedef_meta = nullptr;
            }
        },
        {.promised_deaths = {}, .at_least = 5});
    EXPECT_NE(oru_md_get_do_typedef_meta(outer), nullptr);
    oru_md_delete_typedef_meta(outer);
    oru_md_delete_typedef_meta(inner);
}

}  // namespace
