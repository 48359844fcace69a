#include "md/act_meta.h"

#include "oru/name.h"
#include "oru/prop_meta.h"

void oru::ObjectType<ORUDoActMeta>::release_members(ORUDoActMeta &self) {
    oru_do_name_deref(self.name);
    oru_do_prop_meta_list_deref(self.in_params);
    oru_do_prop_meta_list_deref(self.out_params);
    oru_do_prop_meta_list_deref(self.err_params);
}

ORUDoActMeta *oru_do_act_meta_new(ORUDoName *name, ORUDoPropMetaList *in_params,
                                  ORUDoPropMetaList *out_params, ORUDoPropMetaList *err_params) {
    auto *meta = oru::make<ORUDoActMeta>();
    if (meta == nullptr)
        return nullptr;
    meta->name = oru_do_name_ref(name);
    meta->in_params = oru_do_prop_meta_list_ref(in_params);
    meta->out_params = oru_do_prop_meta_list_ref(out_params);
    meta->err_params = oru_do_prop_meta_list_ref(err_params);
    return meta;
}

ORUDoName *oru_do_act_meta_get_name(ORUDoActMeta *meta) {
    return meta != nullptr ? meta->name : nullptr;
}

ORUDoPropMetaList *oru_do_act_meta_get_in_params(ORUDoActMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->in_params;
}

ORUDoPropMetaList *oru_do_act_meta_get_out_params(ORUDoActMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->out_params;
}

ORUDoPropMetaList *oru_do_act_meta_get_err_params(ORUDoActMeta *meta) {
    ORU_REQUIRE(meta);
    return meta->err_params;
}

ORU_OBJECT_API(ORUDoActMeta, oru_do_act_meta)

int32_t oru_do_act_meta_list_add(ORUDoActMetaList *list, ORUDoActMeta *meta) {
    ORU_REQUIRE(list);
    return oru::meta_list_append(*list, meta);
}

ORUDoActMeta *oru_do_act_meta_list_get_act_meta_name(ORUDoActMetaList *list, ORUDoName *name) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(name);
    return oru_do_act_meta_list_get_act_meta_strname(list, oru_do_name_get_strname(name));
}

ORUDoActMeta *oru_do_act_meta_list_get_act_meta_strname(ORUDoActMetaList *list, const char *name) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(name);
    return oru::meta_list_find(*list, [name](const ORUDoActMeta &meta) {
        ORUDoName *cur_name = meta.name;
        ORU_REQUIRE(cur_name);
        return oru_do_name_equals_w_strname(cur_name, name) != 0;
    });
}

ORU_META_LIST_API(ORUDoActMetaList, ORUDoActMeta, oru_do_act_meta_list, DO_COLL_ACT_META_LIST)
ORU_META_LIST_LENGTH_API(ORUDoActMetaList, oru_do_act_meta_list)
