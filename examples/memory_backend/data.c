#include "data.h"

#include <oru/md.h>
#include <string.h>

int32_t data_append_values(const struct resource *resource, ORUDoNlist *names, ORUDoVlist *values) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_nlist_iter(names, &iter); oru_do_nlist_has_next(&iter);) {
        ORUDoName *name = oru_do_nlist_get_next(&iter);
        ORUDoValue *value = oru_do_properties_get_value_n(resource->props, name);
        int32_t length =
            value != NULL ? oru_do_vlist_add(values, value) : oru_do_vlist_add_null(values);
        if (length < 0)
            return ORU_RC_MALLOC;
    }
    return ORU_OK;
}

static const struct resource *find(struct data *data, ORUDoUri *uri) {
    const char *text = oru_do_uri_get_uri_str(uri);
    const struct resource *resource = store_find(data->store, text);
    data->errors.table.reset_errors(&data->errors.table);
    if (resource == NULL)
        errors_fail(&data->errors, ORU_RC_NO_SUCH_RESOURCE, "No such resource: %s", text);
    return resource;
}

static int32_t get_values(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *names, ORUDoVlist *values) {
    const struct resource *resource = find((struct data *)ifc, uri);
    return resource != NULL ? data_append_values(resource, names, values) : ORU_RC_NO_SUCH_RESOURCE;
}

/* The data holds what is set; attributes that are not set have no default here. */
static int32_t get_cfg_prop_values(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                   uint8_t return_default, ORUDoVlist *values) {
    (void)return_default;
    return get_values(ifc, uri, names, values);
}

static int32_t get_oper_prop_values(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                    ORUDoVlist *values) {
    return get_values(ifc, uri, names, values);
}

/* The model tells which attributes of a type are operational; all others are configuration. */
static int32_t get_props(ORUDataIfc *ifc, ORUDoUri *uri, int operational, ORUDoProperties *props) {
    const struct resource *resource = find((struct data *)ifc, uri);
    if (resource == NULL)
        return ORU_RC_NO_SUCH_RESOURCE;
    oru_md_rdlock();
    ORUMdMrMeta *meta = oru_md_get_mr_meta_by_name(resource->type);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_properties_iter(resource->props, &iter); oru_do_properties_has_next(&iter);) {
        ORUDoProperty *prop = oru_do_properties_get_next(&iter);
        const char *name = oru_do_property_get_name_string(prop);
        int is_operational = meta != NULL && oru_md_get_od_attr_meta_w_str(meta, name) != NULL;
        if (is_operational == operational)
            oru_do_properties_set_value_n(props, oru_do_property_get_name(prop),
                                          oru_do_property_get_value(prop));
    }
    oru_md_unlock();
    return ORU_OK;
}

static int32_t get_cfg_props(ORUDataIfc *ifc, ORUDoUri *uri, void *filter, ORUDoProperties *props) {
    (void)filter;
    return get_props(ifc, uri, 0, props);
}

static int32_t get_oper_props(ORUDataIfc *ifc, ORUDoUri *uri, void *filter,
                              ORUDoProperties *props) {
    (void)filter;
    return get_props(ifc, uri, 1, props);
}

/* The data file writes addresses with their location; documents leave it out. */
static ORUDoUri *get_context_uri(ORUDataIfc *ifc) {
    return ((struct data *)ifc)->context;
}

/* Every action answers what it was called with. */
static int32_t invoke_action(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoName *action,
                             ORUDoProperties *in_props, ORUDoProperties *out_props) {
    if (find((struct data *)ifc, uri) == NULL)
        return ORU_RC_NO_SUCH_RESOURCE;
    oru_do_properties_set_string(out_props, "action", oru_do_name_get_strname(action));
    return oru_do_properties_set_props(out_props, in_props);
}

static ORUErrorIfc *get_error_ifc(ORUDataIfc *ifc) {
    return &((struct data *)ifc)->errors.table;
}

int32_t data_init(struct data *data, const struct store *store) {
    memset(data, 0, sizeof *data);
    data->store = store;
    data->context = oru_do_uri_new(oru_get_default_root_uri_str());
    errors_init(&data->errors);
    data->table.get_cfg_prop_values = get_cfg_prop_values;
    data->table.get_oper_prop_values = get_oper_prop_values;
    data->table.get_cfg_props = get_cfg_props;
    data->table.get_oper_props = get_oper_props;
    data->table.get_context_uri = get_context_uri;
    data->table.invoke_action = invoke_action;
    data->table.get_error_ifc = get_error_ifc;
    return data->context != NULL ? ORU_OK : ORU_RC_MALLOC;
}

void data_free(struct data *data) {
    oru_do_uri_deref(data->context);
    errors_free(&data->errors);
}
