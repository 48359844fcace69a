#include "md/mr_meta.h"

#include "oru/act_meta.h"
#include "oru/name.h"
#include "oru/prop_meta.h"

void oru::ObjectType<ORUDoMrMeta>::release_members(ORUDoMrMeta &self) {
    oru_do_name_deref(self.pkg_name);
    oru_do_name_deref(self.mr_name);
    oru_do_name_deref(self.mr_fq_name);
    oru_do_mr_meta_bool_deref(self.is_non_persistent);
    oru_do_act_meta_list_deref(self.act_meta_list);
    oru_do_prop_meta_list_deref(self.prop_meta_list);
    oru_do_mr_meta_list_deref(self.impl_mr_meta);
}

ORUDoMrMeta *oru_do_mr_meta_new(ORUDoName *pkg_name, const char *version, ORUDoName *mr_name,
                                uint8_t max_access, ORUDoPropMetaList *prop_meta_list,
                                ORUDoMrMetaBool *non_persistent) {
    auto meta = oru::make_ref<ORUDoMrMeta>();
    if (!meta)
        return nullptr;
    const char *package = pkg_name != nullptr ? oru_do_name_get_strname(pkg_name) : nullptr;
    meta->mr_fq_name = oru_do_name_new_fqname(mr_name, package, version);
    if (meta->mr_fq_name == nullptr)
        return nullptr;
    meta->pkg_name = oru_do_name_ref(pkg_name);
    meta->mr_name = oru_do_name_ref(mr_name);
    meta->max_access = max_access;
    meta->prop_meta_list = oru_do_prop_meta_list_ref(prop_meta_list);
    meta->is_non_persistent = oru_do_mr_meta_bool_ref(non_persistent);
    return meta.release();
}

#define ORU_MR_META_GETTER(Type, suffix, expression)  \
    Type oru_do_mr_meta_##suffix(ORUDoMrMeta *meta) { \
        ORU_REQUIRE(meta);                            \
        return expression;                            \
    }

ORU_MR_META_GETTER(ORUDoName *, get_pkg_name, meta->pkg_name)
ORU_MR_META_GETTER(ORUDoName *, get_mr_name, meta->mr_name)
ORU_MR_META_GETTER(ORUDoName *, get_mr_fq_name, meta->mr_fq_name)
ORU_MR_META_GETTER(uint8_t, get_max_access, meta->max_access)
ORU_MR_META_GETTER(int32_t, is_lib_mr, meta->is_lib_mr)
ORU_MR_META_GETTER(int32_t, is_createable, (meta->max_access & ORU_ACCESS_CREATE) != 0)
ORU_MR_META_GETTER(int32_t, is_readable, (meta->max_access & ORU_ACCESS_READ) != 0)
ORU_MR_META_GETTER(int32_t, is_updateable, (meta->max_access & ORU_ACCESS_UPDATE) != 0)
ORU_MR_META_GETTER(int32_t, is_deleteable, (meta->max_access & ORU_ACCESS_DELETE) != 0)
ORU_MR_META_GETTER(int32_t, is_oper_data, meta->max_access == 0)
ORU_MR_META_GETTER(ORUDoActMetaList *, get_act_meta_list, meta->act_meta_list)

int32_t oru_do_mr_meta_is_non_persistent_mr(ORUDoMrMeta *meta) {
    ORU_REQUIRE(meta);
    ORU_REQUIRE(meta->is_non_persistent);
    return meta->is_non_persistent->value;
}

ORUDoActMeta *oru_do_mr_meta_get_act_meta(ORUDoMrMeta *meta, const char *name) {
    ORU_REQUIRE(meta);
    if (meta->act_meta_list == nullptr)
        return nullptr;
    return oru_do_act_meta_list_get_act_meta_strname(meta->act_meta_list, name);
}

ORUDoMrMetaList *oru_do_mr_meta_get_impl_mr_meta(ORUDoMrMeta *lib_meta) {
    ORU_REQUIRE(lib_meta);
    return lib_meta->impl_mr_meta;
}

void oru_do_mr_meta_set_is_lib_mr(ORUDoMrMeta *meta, int32_t is_lib_mr) {
    ORU_REQUIRE(meta);
    meta->is_lib_mr = is_lib_mr;
}

void oru_do_mr_meta_set_non_persistent_bool(ORUDoMrMeta *meta, ORUDoMrMetaBool *non_persistent) {
    if (meta == nullptr || meta->is_non_persistent == non_persistent)
        return;
    oru::replace(meta->is_non_persistent, non_persistent);
}

void oru_do_mr_meta_set_act_meta_list(ORUDoMrMeta *meta, ORUDoActMetaList *list) {
    ORU_REQUIRE(meta);
    ORUDoActMetaList *old = meta->act_meta_list;
    meta->act_meta_list = oru_do_act_meta_list_ref(list);
    oru_do_act_meta_list_deref(old);
}

int32_t oru_do_mr_meta_add_impl_mr_meta(ORUDoMrMeta *lib_meta, ORUDoMrMeta *impl_meta) {
    ORU_REQUIRE(lib_meta);
    if (lib_meta->impl_mr_meta == nullptr)
        lib_meta->impl_mr_meta = oru_do_mr_meta_list_new();
    if (lib_meta->impl_mr_meta == nullptr)
        return 0;
    return oru_do_mr_meta_list_add(lib_meta->impl_mr_meta, impl_meta);
}

ORU_OBJECT_API(ORUDoMrMeta, oru_do_mr_meta)

ORUDoMrMetaBool *oru_do_mr_meta_bool_new(int32_t value) {
    auto *meta_bool = oru::make<ORUDoMrMetaBool>();
    if (meta_bool != nullptr)
        meta_bool->value = value;
    return meta_bool;
}

void oru_do_mr_meta_bool_set_bool(ORUDoMrMetaBool *meta_bool, int32_t value) {
    ORU_REQUIRE(meta_bool);
    meta_bool->value = value;
}

ORU_OBJECT_API(ORUDoMrMetaBool, oru_do_mr_meta_bool)
