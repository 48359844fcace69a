// Actions.
#include "do/error.h"
#include "do/name.h"
#include "dtl/fetch.h"
#include "dtl/variables.h"
#include "oru/properties.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

using PropertiesRef = Ref<ORUDoProperties>;

// A parameter that is a variable and does not resolve stays its own text.
Ref<ORUDoValue> param_value(const Fetch &fetch, ORUDoValue *value) {
    const char *text = variable_text(value);
    return text != nullptr ? resolve(fetch.params, text, value, fetch.parent, fetch.root)
                           : Ref<ORUDoValue>::share(value);
}

PropertiesRef params_of(const Fetch &fetch) {
    PropertiesRef in = PropertiesRef::adopt(oru_do_properties_new());
    const ORUDoProperties *asked = fetch.mr_info->act_in_params;
    for (auto *prop = asked->first; in && prop != nullptr; prop = prop->next) {
        if (prop->value == nullptr)
            continue;
        const auto value = param_value(fetch, prop->value);
        if (value)
            oru_do_properties_set_value_n(in.get(), prop->name, value.get());
    }
    return in;
}

// The action's answer stands below the result node, under the name of the action.
void add_answer(const Fetch &fetch, ORUDoDtree *child, ORUDoUri *uri, ORUDoProperties *out) {
    oru_do_dtree_set_mr_uri(child, uri);
    ORUDoDtree *answer = oru_do_dtree_add_child(child, fetch.mr_info->act_name);
    if (answer == nullptr)
        return;
    ++*fetch.node_added;
    oru_do_dtree_set_mr_data(answer, nullptr, out);
}

}  // namespace

int32_t invoke_action(const Fetch &fetch, ORUDoUri *uri) {
    const ORUDtlMrInfo *mr_info = fetch.mr_info;
    ORU_REQUIRE(mr_info);
    ORU_REQUIRE_AS(mr_info->act_name, "act_name");
    ORU_REQUIRE_AS(mr_info->act_in_params, "act_in_params");
    const PropertiesRef in = params_of(fetch);
    const PropertiesRef out = PropertiesRef::adopt(oru_do_properties_new());
    ORUDoDtree *child = in && out ? add_result(fetch, fetch.node->name) : nullptr;
    if (child == nullptr)
        return ORU_OK;
    ORUDataIfc *data = fetch.ctx->crudx;
    const int32_t rc = data->invoke_action(data, uri, mr_info->act_name, in.get(), out.get());
    if (rc != ORU_OK) {
        take_data_error(data, child);
    } else {
        add_answer(fetch, child, uri, out.get());
    }
    return rc;
}

}  // namespace oru::dtl
