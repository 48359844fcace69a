// The resources of the store.
#include "frame/require.h"
#include "frame/trace.h"
#include "md/records.h"
#include "oru/md.h"
#include "oru/mr_meta.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

// A string value without memory for its text reads as empty; as a key it would be another one.
ORUDoValue *new_key(const char *text) {
    ORUDoValue *value = oru_do_value_new_string(text);
    int32_t code = ORU_OK;
    if (value != nullptr && oru_do_value_get_string(value, &code) == nullptr) {
        oru_do_value_deref(value);
        return nullptr;
    }
    return value;
}

}  // namespace

ORUMdMrMeta *oru_md_new_mr_meta(ORUMdPkgMeta *package, ORUDoName *mr_name, ORUDoMrMeta *do_mr_meta,
                                const char *parent_name, const char *const_key, int32_t is_lib) {
    ORU_REQUIRE(mr_name);
    ORU_REQUIRE(do_mr_meta);
    auto *mr = oru::new_record<ORUMdMrMeta>();
    if (mr == nullptr)
        return nullptr;
    mr->package = package;
    mr->name = oru_do_name_ref(mr_name);
    mr->do_mr_meta = oru_do_mr_meta_ref(do_mr_meta);
    mr->is_lib = is_lib != 0;
    if (parent_name != nullptr)
        mr->parent_name = oru_do_name_new(parent_name);
    if (const_key != nullptr)
        mr->const_key = new_key(const_key);
    if ((parent_name != nullptr && mr->parent_name == nullptr) ||
        (const_key != nullptr && mr->const_key == nullptr)) {
        oru_md_delete_mr_meta(mr);
        return nullptr;
    }
    return mr;
}

void oru_md_delete_mr_meta(ORUMdMrMeta *mr_meta) {
    if (mr_meta == nullptr)
        return;
    oru_do_name_deref(mr_meta->name);
    oru_do_name_deref(mr_meta->parent_name);
    oru_do_mr_meta_deref(mr_meta->do_mr_meta);
    oru_do_value_deref(mr_meta->const_key);
    oru_md_mr_meta_list_delete_all_items(mr_meta->impl_mr_metas);
    oru::delete_records(mr_meta->primary_keys, oru_md_delete_attr_meta);
    oru::delete_records(mr_meta->secondary_keys, oru_md_delete_attr_meta);
    oru::delete_records(mr_meta->refs, oru_md_delete_ref_meta);
    oru::delete_records(mr_meta->cd_attrs, oru_md_delete_attr_meta);
    oru::delete_records(mr_meta->od_attrs, oru_md_delete_attr_meta);
    oru::free_record(mr_meta);
}

ORUMdMrMeta *oru_md_remove_mr_meta(ORUMdMrMeta *first_mr_meta, ORUDoName *mr_name) {
    ORU_REQUIRE(first_mr_meta);
    ORU_REQUIRE(mr_name);
    return oru::remove_named(first_mr_meta, mr_name, oru_md_delete_mr_meta);
}

void oru_md_add_key_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *key_meta, int32_t is_primary) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(key_meta);
    oru::append_record(is_primary != 0 ? mr_meta->primary_keys : mr_meta->secondary_keys, key_meta);
}

void oru_md_add_ref_meta(ORUMdMrMeta *mr_meta, ORUMdRefMeta *ref_meta) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(ref_meta);
    oru::append_record(mr_meta->refs, ref_meta);
}

void oru_md_add_cd_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *attr_meta) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(attr_meta);
    oru::append_record(mr_meta->cd_attrs, attr_meta);
}

void oru_md_add_od_meta(ORUMdMrMeta *mr_meta, ORUMdAttrMeta *attr_meta) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(attr_meta);
    oru::append_record(mr_meta->od_attrs, attr_meta);
}

int32_t oru_md_is_lib_mr(ORUMdMrMeta *mr_meta) {
    ORU_REQUIRE(mr_meta);
    return mr_meta->is_lib;
}

int32_t oru_md_is_impl_mr(ORUMdMrMeta *mr_meta) {
    ORU_REQUIRE(mr_meta);
    return mr_meta->is_lib == 0;
}

const char *oru_md_mr_meta_to_string(ORUMdMrMeta *mr_meta) {
    ORU_REQUIRE(mr_meta);
    return oru::text_of(mr_meta->name);
}

ORUDoValue *oru_md_get_const_key(ORUMdMrMeta *mr_meta) {
    return mr_meta != nullptr ? mr_meta->const_key : nullptr;
}

ORUMdMrMetaList *oru_md_mr_meta_add_impl_mr_meta(ORUMdMrMeta *lib_mr_meta,
                                                 ORUMdMrMeta *impl_mr_meta) {
    ORU_REQUIRE(lib_mr_meta);
    ORU_REQUIRE(impl_mr_meta);
    ORU_TRACE(oru::Level::detail, "adding subclass %s to %s\n",
              oru_md_mr_meta_to_string(impl_mr_meta), oru_md_mr_meta_to_string(lib_mr_meta));
    auto *entry = oru_md_mr_meta_list_new(impl_mr_meta);
    if (entry != nullptr)
        oru::append_record(lib_mr_meta->impl_mr_metas, entry);
    return entry;
}

ORUMdMrMeta *oru_md_mr_meta_get_impl_mr_meta(ORUMdMrMeta *lib_mr_meta, ORUMdMrMeta *impl_mr_meta) {
    ORU_REQUIRE(lib_mr_meta);
    auto *entry = oru::find_record(
        lib_mr_meta->impl_mr_metas,
        [impl_mr_meta](ORUMdMrMetaList &listed) { return listed.mr == impl_mr_meta; });
    return entry != nullptr ? impl_mr_meta : nullptr;
}

ORUMdMrMetaList *oru_md_mr_meta_get_impl_mr_meta_list(ORUMdMrMeta *lib_mr_meta) {
    ORU_REQUIRE(lib_mr_meta);
    return lib_mr_meta->impl_mr_metas;
}
