// Children whose keys come from a property table.
#include "do/uri.h"
#include "oru/iter.h"
#include "oru/mr_meta.h"
#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/uri_derive.h"

namespace {

using oru::Ref;

void trace_missing(ORUDoName *key, ORUDoProperties *props) {
    if (!oru::trace_enabled(oru::Level::failure))
        return;
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (text)
        oru_do_properties_to_strbuf(props, 0, text.get());
    ORU_TRACE(oru::Level::failure, "unable to find %s in %s\n", oru_do_name_get_strname(key),
              text && text->str != nullptr ? text->str : "");
}

bool add_key(ORUDoNvlist *keys, ORUDoName *name, ORUDoProperty *property) {
    ORUDoValue *value = oru_do_property_get_value(property);
    return name != nullptr && value != nullptr &&
           oru_do_nvlist_add(keys, oru_do_name_get_strname(name), value) > 0;
}

bool add_primary_keys(ORUDoNvlist *keys, ORUDoProperties *props, ORUDoPropMetaList *metas) {
    ORUDoIter iter;
    oru_do_prop_meta_list_iter(metas, &iter);
    while (ORUDoPropMeta *meta = oru_do_prop_meta_list_get_next(&iter)) {
        if (oru_do_prop_meta_is_primary_key(meta) == 0)
            continue;
        ORUDoName *name = oru_do_prop_meta_get_name(meta);
        ORUDoProperty *property = oru_do_properties_get_prop_n(props, name);
        if (property == nullptr) {
            trace_missing(name, props);
            return false;
        }
        if (!add_key(keys, name, property))
            return false;
    }
    return true;
}

bool add_all_keys(ORUDoNvlist *keys, ORUDoProperties *props) {
    ORUDoIter iter;
    oru_do_properties_iter(props, &iter);
    while (ORUDoProperty *property = oru_do_properties_get_next(&iter)) {
        if (!add_key(keys, oru_do_property_get_name(property), property))
            return false;
    }
    return true;
}

}  // namespace

ORUDoUri *oru_do_uri_new_from_parent_uri_props(ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                               ORUDoProperties *props,
                                               ORUDoMrMeta *child_do_mr_meta) {
    ORU_REQUIRE(parent_uri);
    ORU_REQUIRE(child_ref_name);
    ORU_REQUIRE(props);
    ORU_REQUIRE(child_do_mr_meta);
    ORUDoPropMetaList *metas = oru_do_prop_meta_list_new();
    const auto keys = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    ORUDoUri *child = nullptr;
    if (metas != nullptr && keys) {
        if (oru_do_mr_meta_get_key_prop_meta(child_do_mr_meta, metas) >= 0 &&
            add_primary_keys(keys.get(), props, metas))
            child = oru_do_uri_new_from_parent_uri(parent_uri, child_ref_name, keys.get());
    }
    oru_do_prop_meta_list_deref(metas);
    return child;
}

ORUDoUri *oru_do_uri_new_from_parent_uri_key_props(ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                                   ORUDoProperties *props) {
    ORU_REQUIRE(parent_uri);
    ORU_REQUIRE(child_ref_name);
    ORU_REQUIRE(props);
    const auto keys = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    if (!keys || !add_all_keys(keys.get(), props))
        return nullptr;
    return oru_do_uri_new_from_parent_uri(parent_uri, child_ref_name, keys.get());
}
