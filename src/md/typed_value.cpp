// Values against the types that metadata gives: references, and texts that came from outside.
#include "do/nvlist.h"
#include "frame/require.h"
#include "frame/trace.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace {

using oru::Level;

int32_t check_ref_type(ORUDoPropMeta *prop, ORUDoValue *value) {
    if (oru_do_value_get_type(value) == oru_do_prop_meta_get_typecode(prop))
        return ORU_OK;
    if (oru_do_prop_meta_get_multiplicity(prop) < ORU_MULTIPLICITY_MANY)
        return ORU_RC_TYPE_MISMATCH;
    int32_t status = ORU_OK;
    ORUDoVlist *elements = oru_do_value_get_array(value, &status);
    if (status != ORU_OK || elements == nullptr)
        return ORU_RC_TYPE_COMPATIBILITY;
    const int32_t count = oru_do_vlist_get_len(elements);
    for (int32_t i = 0; i < count; ++i) {
        const int32_t code = check_ref_type(prop, oru_do_vlist_get_value(elements, i));
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

// Adds the typed form of an item to `typed`. The result code.
int32_t add_typed(ORUDoNvlist *typed, const char *name, ORUDoValue *text, ORUDoMrMeta *mr_meta) {
    int32_t code = ORU_OK;
    ORUDoValue *value = oru_do_value_new_from_mr_meta(text, mr_meta, name, &code);
    if (value == nullptr || code != ORU_OK) {
        oru_do_value_deref(value);
        if (code == ORU_OK)
            code = ORU_RC_VALUE_TYPE;
        ORU_TRACE(Level::failure, "unable to type value for %s from metadata (rc=%d)\n", name,
                  static_cast<int>(code));
        return code;
    }
    const int32_t length = oru_do_nvlist_add(typed, name, value);
    oru_do_value_deref(value);
    return length > 0 ? ORU_OK : ORU_RC_MALLOC;
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
        *rc = add_typed(typed.get(), item->name, item->value, mr_meta);
        if (*rc != ORU_OK)
            return nullptr;
    }
    return typed.release();
}
