#include "md/store.h"

#include <cstring>

#include "frame/require.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "md/records.h"
#include "oru/rc.h"
#include "oruplatform/hash.h"

oru_rwlock_t meta_rwlock = ORU_THREAD_NAMED("meta_rwlock");

namespace oru {

ORUMdMap *md_store = nullptr;

void md_store_delete() {
    oru_md_map_delete(std::exchange(md_store, nullptr));
}

int32_t md_add_pkg(ORUMdMap *store, ORUMdPkgMeta *package) {
    const char *name = text_of(package->name);
    if (name == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get package name\n");
        return ORU_RC_GENERAL;
    }
    if (hashFind(store->pkg_table, name) != nullptr) {
        ORU_TRACE(Level::failure, "Metadata collision detected: %s is already present\n", name);
        return ORU_RC_GENERAL;
    }
    return hashAdd(store->pkg_table, name, package) == 0 ? ORU_OK : ORU_RC_MALLOC;
}

// The library resources that the package implements forget it. Nothing else is undone: a library
// outlives what implements it.
int32_t md_remove_pkg(ORUMdMap *store, ORUMdPkgMeta *package) {
    hashRemove(store->pkg_table, text_of(package->name));
    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next) {
        if (mr->is_lib != 0 || mr->parent_mr == nullptr)
            continue;
        auto *&link = find_link(mr->parent_mr->impl_mr_metas,
                                [mr](ORUMdMrMetaList &entry) { return entry.mr == mr; });
        if (auto *entry = link; entry != nullptr) {
            link = entry->next;
            oru_md_mr_meta_list_delete(entry);
        }
    }
    return ORU_OK;
}

// A package is known by its name alone.
ORUMdPkgMeta *md_get_pkg(ORUMdMap *store, const char *name, const char *) {
    return static_cast<ORUMdPkgMeta *>(hashFind(store->pkg_table, name));
}

}  // namespace oru

namespace {

int32_t code_of_lock(int32_t result) {
    return result == 0 ? ORU_OK : ORU_RC_SYSCALL;
}

// The table does not own the packages.
int32_t keep_item(void *) {
    return 0;
}

const char *bundle_name(const char *name) {
    return name != nullptr ? name : ORU_MD_DEFAULT_BUNDLE;
}

void delete_bundle(ORUMdPkgBundle *bundle) {
    const oru::Text name(bundle->name);
    oru::delete_records(bundle->pkgs, oru_md_delete_pkg_meta);
    oru::free_record(bundle);
}

}  // namespace

int32_t oru_md_wrlock() {
    const int32_t code = code_of_lock(oru_rwlock_wrlock(&meta_rwlock));
    if (code == ORU_OK)
        ORU_TRACE(oru::Level::detail, "Pending requests terminated, holding new requests\n");
    return code;
}

int32_t oru_md_rdlock() {
    const int32_t code = code_of_lock(oru_rwlock_rdlock(&meta_rwlock));
    if (code == ORU_OK)
        ORU_TRACE(oru::Level::detail, "Request initiation granted\n");
    return code;
}

int32_t oru_md_unlock() {
    const int32_t code = code_of_lock(oru_rwlock_unlock(&meta_rwlock));
    if (code == ORU_OK)
        ORU_TRACE(oru::Level::detail, "Request lock released\n");
    return code;
}

ORUMdMap *oru_md_map_new() {
    auto *store = oru::new_record<ORUMdMap>();
    if (store == nullptr) {
        ORU_TRACE(oru::Level::failure, "Failed to allocate metadata container\n");
        return nullptr;
    }
    store->pkg_table = hashMake(0);
    if (store->pkg_table == nullptr) {
        ORU_TRACE(oru::Level::failure, "Failed to initialize pkg_meta hashtable\n");
        oru::free_record(store);
        return nullptr;
    }
    store->oru_md_resolve_refs = oru::md_resolve_refs;
    store->oru_md_add_pkg = oru::md_add_pkg;
    store->oru_md_remove_pkg = oru::md_remove_pkg;
    store->oru_md_get_pkg = oru::md_get_pkg;
    return store;
}

void oru_md_map_delete(ORUMdMap *store) {
    if (store == nullptr)
        return;
    hashCloseWithFunction(store->pkg_table, keep_item);
    oru_md_pkg_bundle_delete(store->bundles);
    oru::free_record(store);
}

int32_t oru_md_free() {
    if (oru_md_wrlock() != ORU_OK)
        return ORU_RC_SYSCALL;
    oru::md_store_delete();
    return oru_md_unlock();
}

ORUMdPkgBundle *oru_md_pkg_bundle_new(const char *name, ORUMdPkgMeta *first_pkg) {
    auto *bundle = oru::new_record<ORUMdPkgBundle>();
    if (bundle == nullptr)
        return nullptr;
    bundle->name = oru::duplicate(bundle_name(name));
    if (bundle->name == nullptr) {
        oru::free_record(bundle);
        return nullptr;
    }
    bundle->pkgs = first_pkg;
    return bundle;
}

void oru_md_pkg_bundle_delete(ORUMdPkgBundle *first_bundle) {
    oru::delete_records(first_bundle, delete_bundle);
}

ORUMdPkgBundle *oru_md_pkg_bundle_get(ORUMdPkgBundle *first_bundle, const char *name) {
    return oru::find_record(first_bundle, [wanted = bundle_name(name)](ORUMdPkgBundle &bundle) {
        return std::strcmp(bundle.name, wanted) == 0;
    });
}

[[gnu::weak]] void oru_md_resolve_name_refs() {
    ORU_TRACE(oru::Level::detail,
              "Invoking weak definition for ORU MD's resolve_name_refs function");
}
