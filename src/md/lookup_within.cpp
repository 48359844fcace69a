// Lookups within a package or a resource, and the children of a resource.
#include <initializer_list>

#include "frame/require.h"
#include "md/records.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"

namespace {

// The first record of that name, a text or an ORUDoName, in the chains, in order.
template <class Name>
ORUMdAttrMeta *find_in(std::initializer_list<ORUMdAttrMeta *> chains, Name name) {
    for (auto *chain : chains) {
        if (auto *found = oru::find_named(chain, name))
            return found;
    }
    return nullptr;
}

void add_children(const ORUMdMrMeta &mr, ORUDoMrMetaList *list, bool with_theirs) {
    for (auto *ref = mr.refs; ref != nullptr; ref = ref->next) {
        if (ref->is_child == 0 || ref->target_mr == nullptr)
            continue;
        oru_do_mr_meta_list_add(list, ref->target_mr->do_mr_meta);
        if (with_theirs)
            add_children(*ref->target_mr, list, false);
    }
}

}  // namespace

// Both forms of a lookup, by ORUDoName and by text.
#define ORU_MD_LOOKUP(Result, operation, Owner, owner, name, expression) \
    Result *operation(Owner *owner, ORUDoName *name) {                   \
        ORU_REQUIRE(owner);                                              \
        ORU_REQUIRE(name);                                               \
        return expression;                                               \
    }                                                                    \
    Result *operation##_w_str(Owner *owner, const char *name) {          \
        ORU_REQUIRE(owner);                                              \
        ORU_REQUIRE(name);                                               \
        return expression;                                               \
    }

ORU_MD_LOOKUP(ORUMdMrMeta, oru_md_get_mr_meta, ORUMdPkgMeta, pkg_meta, mr_name,
              oru::find_named(pkg_meta->mrs, mr_name))
ORU_MD_LOOKUP(ORUMdCodMeta, oru_md_get_pkg_cd_meta, ORUMdPkgMeta, pkg_meta, cd_name,
              oru::find_named(pkg_meta->cds, cd_name))
ORU_MD_LOOKUP(ORUMdCodMeta, oru_md_get_pkg_od_meta, ORUMdPkgMeta, pkg_meta, od_name,
              oru::find_named(pkg_meta->ods, od_name))
ORU_MD_LOOKUP(ORUMdTypedefMeta, oru_md_get_typedef_meta, ORUMdPkgMeta, pkg_meta, type_name,
              oru::find_named(pkg_meta->typedefs, type_name))

ORU_MD_LOOKUP(ORUMdAttrMeta, oru_md_get_attr_meta, ORUMdMrMeta, mr_meta, attr_name,
              find_in({mr_meta->cd_attrs, mr_meta->od_attrs, mr_meta->primary_keys,
                       mr_meta->secondary_keys},
                      attr_name))
ORU_MD_LOOKUP(ORUMdAttrMeta, oru_md_get_cd_attr_meta, ORUMdMrMeta, mr_meta, attr_name,
              find_in({mr_meta->cd_attrs}, attr_name))
ORU_MD_LOOKUP(ORUMdAttrMeta, oru_md_get_od_attr_meta, ORUMdMrMeta, mr_meta, attr_name,
              find_in({mr_meta->od_attrs}, attr_name))
ORU_MD_LOOKUP(ORUMdAttrMeta, oru_md_get_key_attr_meta, ORUMdMrMeta, mr_meta, attr_name,
              find_in({mr_meta->primary_keys, mr_meta->secondary_keys}, attr_name))
ORU_MD_LOOKUP(ORUMdRefMeta, oru_md_get_ref_meta, ORUMdMrMeta, mr_meta, ref_name,
              oru::find_named(mr_meta->refs, ref_name))

int32_t oru_md_has_child_mr(ORUMdMrMeta *mr_meta) {
    ORU_REQUIRE(mr_meta);
    return oru::find_record(mr_meta->refs, [](ORUMdRefMeta &ref) { return ref.is_child != 0; }) !=
           nullptr;
}

void oru_md_get_child_mr_meta_list(ORUMdMrMeta *mr_meta, ORUDoMrMetaList *list) {
    ORU_REQUIRE(mr_meta);
    add_children(*mr_meta, list, false);
}

void oru_md_get_descendant_mr_meta_list(ORUMdMrMeta *mr_meta, ORUDoMrMetaList *list) {
    ORU_REQUIRE(mr_meta);
    add_children(*mr_meta, list, true);
}
