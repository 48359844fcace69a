// Resolution of the names by which records refer to each other. What stays unresolved is told and
// stops nothing. Links that are filled already are left alone, so packages of earlier loads pass
// unharmed.
#include <cstring>

#include "frame/trace.h"
#include "md/act_meta.h"
#include "md/merge.h"
#include "md/mr_meta.h"
#include "md/prop_meta.h"
#include "md/records.h"
#include "md/store.h"
#include "oru/md_lookup.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::text_of;

bool holds(ORUDoName *name, char c) {
    return std::strchr(text_of(name), c) != nullptr;
}

void resolve_target(ORUMdPkgMeta *package, ORUMdRefMeta &ref) {
    if (ref.target_mr != nullptr || ref.target_name == nullptr)
        return;
    ref.target_mr = holds(ref.target_name, '/')
                        ? oru_md_get_mr_meta_by_name(text_of(ref.target_name))
                        : oru_md_get_mr_meta(package, ref.target_name);
    if (ref.target_mr == nullptr)
        ORU_TRACE(Level::failure, "Unresolved reference mr %s\n", text_of(ref.target_name));
}

ORUMdTypedefMeta *find_type(ORUMdPkgMeta *package, ORUDoName *name) {
    return holds(name, '.') ? oru_md_get_typedef_meta_by_name(text_of(name))
                            : oru_md_get_typedef_meta(package, name);
}

void resolve_prop_type(ORUMdPkgMeta *package, ORUDoPropMeta &prop, ORUMdTypedefMeta *&out_type) {
    if (prop.typecode != -3)
        return;
    if (prop.type_name == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get type name for %s\n", text_of(prop.name));
        return;
    }
    auto *type = find_type(package, prop.type_name);
    if (type == nullptr) {
        ORU_TRACE(Level::failure, "type %s unresolved\n", text_of(prop.type_name));
        return;
    }
    out_type = type;
    prop.typecode = type->typecode;
    auto *description = oru_md_get_do_typedef_meta(type);
    if (description == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get typedef meta for %s\n", text_of(prop.type_name));
        return;
    }
    oru_do_prop_meta_set_typedef_meta(&prop, description, oru_md_get_enum_value_by_name);
}

void resolve_attrs(ORUMdPkgMeta *package, ORUMdAttrMeta *first) {
    for (auto *attr = first; attr != nullptr; attr = attr->next) {
        if (attr->typedef_meta == nullptr)
            resolve_prop_type(package, *attr->prop_meta, attr->typedef_meta);
    }
}

void resolve_params(ORUMdPkgMeta *package, ORUDoPropMetaList *list) {
    if (list == nullptr)
        return;
    for (auto *item = list->first; item != nullptr; item = item->next) {
        ORUMdTypedefMeta *type = nullptr;
        if (item->object->typedef_meta == nullptr)
            resolve_prop_type(package, *item->object, type);
    }
}

void resolve_types(ORUMdPkgMeta *package, const ORUMdMrMeta &mr) {
    for (auto *chain : {mr.primary_keys, mr.secondary_keys, mr.cd_attrs, mr.od_attrs})
        resolve_attrs(package, chain);
    const auto *actions = mr.do_mr_meta->act_meta_list;
    if (actions == nullptr)
        return;
    for (auto *item = actions->first; item != nullptr; item = item->next) {
        const auto &action = *item->object;
        for (auto *params : {action.in_params, action.out_params, action.err_params})
            resolve_params(package, params);
    }
}

void resolve_members(ORUMdPkgMeta *package, const ORUMdTypedefMeta &type) {
    for (auto *member = type.complex_els; member != nullptr; member = member->next) {
        if (member->typecode != -3 || member->typedef_meta != nullptr)
            continue;
        member->typedef_meta = find_type(package, member->type_name);
        if (member->typedef_meta == nullptr) {
            ORU_TRACE(Level::failure, "Complex element type %s unresolved\n",
                      text_of(member->type_name));
        }
    }
}

void resolve_lib_parent(ORUMdMrMeta &mr) {
    if (mr.parent_name == nullptr || mr.parent_mr != nullptr)
        return;
    mr.parent_mr = oru_md_get_mr_meta_by_name(text_of(mr.parent_name));
    if (mr.parent_mr == nullptr) {
        ORU_TRACE(Level::failure, "Can't resolve library mr extension %s from %s\n",
                  text_of(mr.parent_name), text_of(mr.name));
    }
}

void resolve_bases(ORUMdCodMeta *first, ORUMdCodMeta *(*find)(const char *name)) {
    for (auto *cod = first; cod != nullptr; cod = cod->next) {
        if (cod->extends_name == nullptr || cod->extends_cod != nullptr)
            continue;
        cod->extends_cod = find(text_of(cod->extends_name));
        if (cod->extends_cod == nullptr) {
            ORU_TRACE(Level::failure, "Can't resolve library mr extension %s from %s\n",
                      text_of(cod->extends_name), text_of(cod->name));
        }
    }
}

// Whether `mr` is implemented by itself, over however many others: descriptions would hold each
// other for ever.
bool is_circle(const ORUMdMrMeta *library, const ORUMdMrMeta &mr) {
    while (library != nullptr && library != &mr && library->is_lib == 0)
        library = library->parent_mr;
    return library == &mr;
}

// Lists the resource at its library, as a record and as a description: both or none.
bool list_impl(ORUMdMrMeta &library, ORUMdMrMeta &mr) {
    if (oru_md_mr_meta_add_impl_mr_meta(&library, &mr) == nullptr)
        return false;
    if (oru_do_mr_meta_add_impl_mr_meta(library.do_mr_meta, mr.do_mr_meta) > 0)
        return true;
    auto *&link = oru::find_link(library.impl_mr_metas,
                                 [&mr](ORUMdMrMetaList &entry) { return entry.mr == &mr; });
    oru_md_mr_meta_list_delete(std::exchange(link, nullptr));
    return false;
}

void tell_unresolved_impl(const ORUMdMrMeta &mr) {
    ORU_TRACE(Level::failure, "Can't resolve impl mr extension %s from %s\n",
              text_of(mr.parent_name), text_of(mr.name));
}

// What memory does not allow to list stays unresolved, for a later load to try again.
void resolve_impl_parent(ORUMdMrMeta &mr) {
    if (mr.parent_name == nullptr)
        return;
    auto *library = oru_md_get_mr_meta_by_name(text_of(mr.parent_name));
    if (library == nullptr || is_circle(library, mr)) {
        tell_unresolved_impl(mr);
        return;
    }
    if (oru_md_mr_meta_get_impl_mr_meta(library, &mr) != nullptr) {
        ORU_TRACE(Level::detail,
                  "the reference between %s and its parent library has already been resolved, no "
                  "action needs to betaken\n",
                  text_of(mr.name));
        return;
    }
    if (!list_impl(*library, mr)) {
        tell_unresolved_impl(mr);
        return;
    }
    oru::merge_library(*library, mr);
    mr.parent_mr = library;
}

void resolve_library(const ORUMdPkgMeta &package) {
    for (auto *mr = package.mrs; mr != nullptr; mr = mr->next)
        resolve_lib_parent(*mr);
    resolve_bases(package.cds, oru_md_get_cd_meta_by_name);
    resolve_bases(package.ods, oru_md_get_od_meta_by_name);
}

void resolve_package(ORUMdPkgMeta *package, int32_t pass) {
    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next) {
        for (auto *ref = mr->refs; ref != nullptr; ref = ref->next)
            resolve_target(package, *ref);
    }
    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
        resolve_types(package, *mr);
    for (auto *type = package->typedefs; type != nullptr; type = type->next)
        resolve_members(package, *type);
    if (pass == ORU_MD_PKG_LIBRARY) {
        resolve_library(*package);
        return;
    }
    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
        resolve_impl_parent(*mr);
}

}  // namespace

int32_t oru::md_resolve_refs(ORUMdMap *store, int32_t pass) {
    for (auto *bundle = store->bundles; bundle != nullptr; bundle = bundle->next) {
        ORU_TRACE(Level::detail, "ORU2D type %d resolution pass on bundle %s\n",
                  static_cast<int>(pass), bundle->name);
        for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
            ORU_TRACE(Level::detail, "resolving refs in %s\n", text_of(package->name));
            if (package->type == pass) {
                resolve_package(package, pass);
                continue;
            }
            ORU_TRACE(Level::detail,
                      "skipping ref resolution since the oru2d type is different from requested "
                      "type\n");
        }
    }
    return ORU_OK;
}
