#include "do/dtree.h"
#include "json/write.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/uri.h"

namespace {

using oru::json::Members;
using oru::json::put;
using oru::json::put_escaped;

void put_node(ORUDoStrbuf *buf, ORUDoDtree *node);

void put_children(ORUDoStrbuf *buf, ORUDoDtree *node) {
    put(buf, ",\"children\":{\"%dtree\":[");
    Members members(buf);
    ORUDoIter iter;
    oru_do_dtree_child_iter(node, &iter);
    while (ORUDoDtree *child = oru_do_dtree_get_next_child(&iter)) {
        members.next();
        put_node(buf, child);
    }
    put(buf, "]}");
}

// A node without its tag.
void put_node(ORUDoStrbuf *buf, ORUDoDtree *node) {
    put(buf, "{\"name\":");
    put_escaped(buf, oru_do_name_get_strname(node->name));
    if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(node)) {
        put(buf, ",\"mr_uri\":");
        oru::json::put_raw(buf, oru_do_uri_get_uri_str(uri));
    }
    if (node->error != nullptr) {
        put(buf, ",\"err\":");
        oru_do_error_to_json(node->error, buf);
    }
    if (node->properties != nullptr) {
        put(buf, ",\"props\":");
        oru_do_properties_to_json(node->properties, buf);
    }
    if (node->children != nullptr)
        put_children(buf, node);
    put(buf, "}");
}

}  // namespace

int32_t oru_do_properties_to_json(ORUDoProperties *props, ORUDoStrbuf *buf) {
    return oru_do_properties_to_json_opt(props, buf, 0);
}

int32_t oru_do_properties_to_json_opt(ORUDoProperties *props, ORUDoStrbuf *buf, uint32_t options) {
    ORU_REQUIRE(props);
    const bool compact = (options & ORU_JSON_OPT_COMPACT) != 0;
    put(buf, compact ? "{" : "{\"%properties\":{");
    Members members(buf);
    ORUDoIter iter;
    oru_do_properties_iter(props, &iter);
    while (ORUDoProperty *entry = oru_do_properties_get_next(&iter)) {
        members.next(oru_do_property_get_name_string(entry));
        if (ORUDoValue *value = oru_do_property_get_value(entry)) {
            oru_do_value_to_json_opt(value, buf, options);
        } else {
            put(buf, "null");
        }
    }
    put(buf, compact ? "}" : "}}");
    return 0;
}

int32_t oru_do_properties_list_to_json(ORUDoPropertiesList *list, ORUDoStrbuf *buf) {
    return oru_do_properties_list_to_json_opt(list, buf, 0);
}

int32_t oru_do_properties_list_to_json_opt(ORUDoPropertiesList *list, ORUDoStrbuf *buf,
                                           uint32_t options) {
    ORU_REQUIRE(list);
    put(buf, "{\"%properties_list\":[");
    Members members(buf);
    ORUDoIter iter;
    oru_do_properties_list_iter(list, &iter);
    while (ORUDoProperties *props = oru_do_properties_list_get_next(&iter)) {
        members.next();
        oru_do_properties_to_json_opt(props, buf, options);
    }
    put(buf, "]}");
    return 0;
}

int32_t oru_do_error_to_json(ORUDoError *err, ORUDoStrbuf *buf) {
    ORU_REQUIRE(err);
    put(buf, "{\"%error\":{\"code\":");
    oru_do_strbuf_add_long(buf, oru_do_error_get_code(err));
    if (const char *msg = oru_do_error_get_msg(err)) {
        put(buf, ",\"msg\":");
        put_escaped(buf, msg);
    }
    if (const char *name_space = oru_do_error_get_namespace(err)) {
        put(buf, ",\"namespace\":");
        put_escaped(buf, name_space);
    }
    if (ORUDoError *cause = oru_do_error_get_cause(err)) {
        put(buf, ",\"cause\":");
        oru_do_error_to_json(cause, buf);
    }
    if (ORUDoPropErrs *prop_errs = oru_do_error_get_prop_errs(err)) {
        put(buf, ",\"prop_errs\":");
        oru_do_prop_errs_to_json(prop_errs, buf);
    }
    put(buf, "}}");
    return 0;
}

int32_t oru_do_prop_errs_to_json(ORUDoPropErrs *prop_errs, ORUDoStrbuf *buf) {
    ORU_REQUIRE(prop_errs);
    put(buf, "{\"%prop_errs\":{");
    Members members(buf);
    ORUDoIter iter;
    oru_do_prop_errs_iter(prop_errs, &iter);
    while (ORUDoPropErr *entry = oru_do_prop_errs_get_next(&iter)) {
        members.next(oru_do_name_get_strname(oru_do_prop_err_get_name(entry)));
        oru_do_error_to_json(oru_do_prop_err_get_err(entry), buf);
    }
    put(buf, "}}");
    return 0;
}

int32_t oru_do_dtree_to_json(ORUDoDtree *dtree, ORUDoStrbuf *buf) {
    ORU_REQUIRE(dtree);
    put(buf, "{\"%dtree\":");
    put_node(buf, dtree);
    put(buf, "}");
    return 0;
}
