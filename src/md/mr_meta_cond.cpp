// What a provider has to read beside what it was asked for.
#include "do/name.h"
#include "do/nlist.h"
#include "do/properties.h"
#include "frame/trace.h"
#include "md/mr_meta.h"
#include "oru/constraint.h"
#include "oru/nlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::Level;
using oru::Ref;

constexpr int32_t kEveryProperty = -1;
constexpr int32_t kNullProperties = 1;

bool is_counted(const ORUDoProperty &prop, int32_t kind) {
    if (kind == kNullProperties)
        return prop.value == nullptr || oru_do_value_is_null(prop.value) != 0;
    return kind == kEveryProperty;
}

// The names that the conditions on one property read.
int32_t gather(ORUDoMrMeta *mr_meta, const ORUDoProperty &prop, int32_t kind, ORUDoNlist *&names) {
    const char *name = oru_do_name_get_strname(prop.name);
    if (oru_attribute_is_builtin(name) != 0)
        return ORU_OK;
    auto *meta = oru_do_mr_meta_get_prop_meta_str(mr_meta, name);
    if (meta == nullptr) {
        ORU_TRACE(Level::failure, "Unable to find prop meta for %s\n", name);
        return ORU_RC_METADATA;
    }
    auto *list = oru_do_prop_meta_get_constraint_list(meta);
    return list != nullptr ? oru_do_constraint_list_get_cond_prop_names(list, kind, &names)
                           : ORU_OK;
}

int32_t add_name(ORUDoNlist *&out, ORUDoName *name) {
    if (out == nullptr)
        out = oru_do_nlist_new();
    return out != nullptr && oru_do_nlist_add(out, name) > 0 ? ORU_OK : ORU_RC_MALLOC;
}

}  // namespace

int32_t oru_do_mr_meta_get_cond_prop_names(ORUDoMrMeta *mr_meta, ORUDoProperties *props,
                                           int32_t kind, ORUDoNlist **extra_prop_names) {
    ORU_REQUIRE(mr_meta);
    ORU_REQUIRE(props);
    ORU_REQUIRE(extra_prop_names);
    ORUDoNlist *gathered = nullptr;
    int32_t code = ORU_OK;
    for (auto *prop = props->first; prop != nullptr && code == ORU_OK; prop = prop->next) {
        if (is_counted(*prop, kind))
            code = gather(mr_meta, *prop, kind, gathered);
    }
    const auto names = Ref<ORUDoNlist>::adopt(gathered);
    for (auto *item = names ? names->first : nullptr; item != nullptr && code == ORU_OK;
         item = item->next) {
        if (oru_do_properties_get_prop_n(props, item->name) == nullptr)
            code = add_name(*extra_prop_names, item->name);
    }
    return code;
}
