// Loading of a directory of packages, and of the bundles that are active.
#include "do/nlist.h"
#include "frame/object.h"
#include "frame/trace.h"
#include "md/forget.h"
#include "md/records.h"
#include "md/store.h"
#include "oru/nlist.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::md_store;

constexpr char kBundleSub[] = "/oru2d";
constexpr char kBundleSuffix[] = ".oru2d";

// Both passes over one directory. The messages tell the sub path.
bool load_passes(const char *dir, const char *sub, const char *suffix) {
    if (_oru_md_init_meta_info(dir, sub, suffix, ORU_MD_PKG_LIBRARY, &md_store, nullptr) !=
        ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to load libraries from %s", sub);
        return false;
    }
    if (md_store->oru_md_resolve_refs(md_store, ORU_MD_PKG_LIBRARY) != ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to resolve refs in %s", sub);
        return false;
    }
    if (_oru_md_init_meta_info(dir, sub, suffix, ORU_MD_PKG_IMPL, &md_store, nullptr) != ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to load impl oru2ds from %s", sub);
        return false;
    }
    if (md_store->oru_md_resolve_refs(md_store, ORU_MD_PKG_IMPL) != ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to resolve refs in %s", sub);
        return false;
    }
    return true;
}

// A name that cannot be had is left out, which only the length shows.
bool add_all(ORUDoNlist *list, const char *const *texts) {
    oru_do_nlist_add_strnames(list, texts);
    int32_t count = 0;
    while (texts[count] != nullptr)
        ++count;
    return oru_do_nlist_get_len(list) == count;
}

// Makes the bundles of a list the active ones.
struct BundleLoad {
    ORUMdPkgBundle **out_new;
    ORUMdPkgBundle **out_removed;
    oru::Ref<ORUDoNlist> names;             // what is left to load
    ORUMdPkgBundle *last_before = nullptr;  // the bundles behind it are new

    int32_t read_names(const char *const *texts);
    void confirm_known();
    void take_out(ORUMdPkgBundle *&link);
    int32_t scan(int32_t pass);
    int32_t load_new();
    int32_t run(const char *const *texts);
};

int32_t BundleLoad::read_names(const char *const *texts) {
    if (texts == nullptr || texts[0] == nullptr || *texts[0] == '\0') {
        ORU_TRACE(Level::failure, "Package list appears to be empty\n");
        return ORU_RC_GENERAL;
    }
    names = oru::Ref<ORUDoNlist>::adopt(oru_do_nlist_new());
    if (!names || !add_all(names.get(), texts)) {
        ORU_TRACE(Level::failure, "Failed to allocate pkg list\n");
        return ORU_RC_MALLOC;
    }
    return ORU_OK;
}

// The store forgets the first package of the bundle, and all of it when it is deleted.
void BundleLoad::take_out(ORUMdPkgBundle *&link) {
    auto *bundle = link;
    if (bundle->pkgs != nullptr)
        md_store->oru_md_remove_pkg(md_store, bundle->pkgs);
    link = bundle->next;
    bundle->next = nullptr;
    if (out_removed != nullptr) {
        *out_removed = bundle;
        return;
    }
    oru::forget_bundle(*md_store, *bundle);
    oru_md_pkg_bundle_delete(bundle);
}

// Takes the names of loaded bundles off the list, up to the first bundle that is not on it.
void BundleLoad::confirm_known() {
    if (out_removed != nullptr)
        *out_removed = nullptr;
    if (md_store == nullptr)
        return;
    for (auto **link = &md_store->bundles; *link != nullptr; link = &(*link)->next) {
        const int32_t index = oru_do_nlist_index_of(names.get(), (*link)->name);
        if (index < 0) {
            ORU_TRACE(Level::detail,
                      "Bundle %s is not in the new active list and will be removed\n",
                      (*link)->name);
            take_out(*link);
            return;
        }
        ORU_TRACE(Level::detail, "Bundle %s confirmed as active\n", (*link)->name);
        oru_do_nlist_remove(names.get(), index);
    }
}

int32_t BundleLoad::scan(int32_t pass) {
    for (auto *item = names->first; item != nullptr; item = item->next) {
        const char *name = oru::text_of(item->name);
        ORU_TRACE(Level::detail, "Bundle %s is new, scanning for metadata\n", name);
        const int32_t code =
            _oru_md_init_meta_info(nullptr, kBundleSub, kBundleSuffix, pass, &md_store, name);
        if (code != ORU_OK) {
            ORU_TRACE(Level::failure, "Failed to load metadata from %s\n", name);
            return code;
        }
    }
    return ORU_OK;
}

int32_t resolve(int32_t pass) {
    if (md_store == nullptr)
        return ORU_OK;
    const int32_t code = md_store->oru_md_resolve_refs(md_store, pass);
    if (code != ORU_OK)
        ORU_TRACE(Level::failure, "Failed to resolve references in the metadata\n");
    return code;
}

int32_t BundleLoad::load_new() {
    for (const int32_t pass : {ORU_MD_PKG_LIBRARY, ORU_MD_PKG_IMPL}) {
        int32_t code = scan(pass);
        if (code == ORU_OK)
            code = resolve(pass);
        if (code != ORU_OK)
            return code;
    }
    if (md_store == nullptr) {
        ORU_TRACE(Level::failure, "None of the packages contains metadata\n");
        return ORU_RC_GENERAL;
    }
    if (md_store->bundles == nullptr) {
        ORU_TRACE(Level::failure, "no package containing oru2ds was found\n");
        return ORU_RC_GENERAL;
    }
    return ORU_OK;
}

int32_t BundleLoad::run(const char *const *texts) {
    int32_t code = read_names(texts);
    if (code != ORU_OK)
        return code;
    confirm_known();
    const bool had_store = md_store != nullptr;
    for (auto *bundle = had_store ? md_store->bundles : nullptr; bundle != nullptr;
         bundle = bundle->next)
        last_before = bundle;
    code = load_new();
    if (code == ORU_OK && out_new != nullptr)
        *out_new = last_before != nullptr ? last_before->next : md_store->bundles;
    return code;
}

}  // namespace

int32_t oru_md_load_dir(const char *dir, const char *sub, const char *suffix,
                        ORUMdPkgBundle **out_bundle) {
    const int32_t locked = oru_md_wrlock();
    if (locked != ORU_OK) {
        oru::md_store_delete();
    } else if (md_store == nullptr) {
        if (!load_passes(dir, sub, suffix))
            oru::md_store_delete();
        else if (out_bundle != nullptr)
            *out_bundle = md_store->bundles;
    }
    return oru_md_unlock() != ORU_OK ? ORU_RC_SYSCALL : locked;
}

int32_t oru_md_load_pkg_list(const char *const *names, ORUMdPkgBundle **out_new,
                             ORUMdPkgBundle **out_removed) {
    const bool own_lock = out_new == nullptr && out_removed == nullptr;
    int32_t code = own_lock ? oru_md_wrlock() : ORU_OK;
    if (code == ORU_OK)
        code = BundleLoad{out_new, out_removed, {}}.run(names);
    if (code != ORU_OK)
        oru::md_store_delete();
    const int32_t unlocked = own_lock ? oru_md_unlock() : ORU_OK;
    return code != ORU_OK ? code : unlocked;
}
