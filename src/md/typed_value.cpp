// Values against the types that metadata gives: references, and texts that came from outside.
#include "do/nvlist.h"
#include "do/value.h"
#include "do/vlist.h"
#include "frame/require.h"
#include "frame/trace.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::Level;

int32_t check_ref_type(ORUDoPropMeta *prop, ORUDoValue *value) {
    if (oru_do_value_get_type(value) == oru_do_prop_meta_get_typecode(prop))
        return ORU_OK;
    if (oru_do_prop_meta_get_multiplicity(prop) < ORU_MULTIPLICITY_MANY)
        return ORU_RC_TYPE_MISMATCH;
    int32_t status = ORU_OK;
    const ORUDoVlist *elements = oru_do_value_get_array(value, &status);
    if (elements == nullptr)
        return ORU_RC_TYPE_COMPATIBILITY;
    for (auto *item = elements->first; item != nullptr; item = item->next) {
        const int32_t code = check_ref_type(prop, item->value);
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

// The typed form of a pair. Without one `code` is not 0, and that is told.
oru::Ref<ORUDoValue> typed_form(const ORUDoNvlistItem &pair, ORUDoMrMeta *mr_meta, int32_t &code) {
    auto value = oru::Ref<ORUDoValue>::adopt(
        oru_do_value_new_from_mr_meta(pair.value, mr_meta, pair.name, &code));
    if (value && code == ORU_OK)
        return value;
    if (code == ORU_OK)
        code = ORU_RC_VALUE_TYPE;
    ORU_TRACE(Level::failure, "unable to type value for %s from metadata (rc=%d)\n", pair.name,
              static_cast<int>(code));
    return {};
}

}  // namespace

int32_t oru_md_eval_peer_ref_basic_type_constraint(ORUMdRefMeta *ref_meta, ORUDoValue *value) {
    ORU_REQUIRE(ref_meta);
    ORU_REQUIRE(value);
    return check_ref_type(ref_meta->prop_meta, value);
}

ORUDoValue *oru_do_value_new_from_mr_meta(ORUDoValue *val, ORUDoMrMeta *mr_meta,
                                          const char *prop_name, int32_t *errp) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    *errp = ORU_OK;
    const bool is_text = oru_do_value_get_type(val) == ORU_DO_TYPE_STRING;
    int32_t status = ORU_OK;
    const char *text = is_text ? oru_do_value_get_string(val, &status) : nullptr;
    if (text == nullptr) {
        *errp = ORU_RC_VALUE_TYPE;
        ORU_TRACE(Level::failure, "unable to interpret value for %s as string (rc=%d)\n", prop_name,
                  static_cast<int>(*errp));
        return nullptr;
    }
    auto *prop = oru_do_mr_meta_get_prop_meta_str(mr_meta, prop_name);
    if (prop == nullptr)
        return nullptr;
    return oru_do_value_new_from_string(text, oru_do_prop_meta_get_typecode(prop), errp);
}

ORUDoNvlist *oru_do_nvlist_new_from_mr_meta(ORUDoNvlist *nvlist, ORUDoMrMeta *mr_meta,
                                            int32_t *rc) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(rc);
    *rc = ORU_OK;
    auto typed = oru::Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    if (!typed) {
        ORU_TRACE(Level::failure, "Failed to allocate nvlist\n");
        *rc = ORU_RC_MALLOC;
        return nullptr;
    }
    for (auto *item = nvlist->first; item != nullptr; item = item->next) {
        const auto value = typed_form(*item, mr_meta, *rc);
        if (!value)
            return nullptr;
        if (oru_do_nvlist_add(typed.get(), item->name, value.get()) < 0) {
            *rc = ORU_RC_MALLOC;
            return nullptr;
        }
    }
    return typed.release();
}

int32_t oru_do_properties_set_from_nvlist_and_meta(ORUDoProperties *properties, ORUDoNvlist *nvlist,
                                                   ORUDoMrMeta *mr_meta) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(nvlist);
    for (auto *item = nvlist->first; item != nullptr; item = item->next) {
        int32_t code = ORU_OK;
        const auto value = typed_form(*item, mr_meta, code);
        if (!value)
            return code;
        oru_do_properties_set_value(properties, item->name, value.get());
    }
    return ORU_OK;
}
