// Operations that create again what was read.
#include "do/config_op.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/properties_list.h"
#include "do/uri.h"
#include "oru/md_lookup.h"
#include "oru/name.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/uri.h"
#include "oru/uri_derive.h"
#include "oru/value.h"

namespace {

using oru::Level;
using oru::Ref;

constexpr int32_t kCreate = 1;

// What one table tells of its resource.
struct Creation {
    ORUDoUri *location_uri;
    Ref<ORUDoProperties> props;
    Ref<ORUDoUri> mr_uri;
    ORUDoUri *parent_uri = nullptr;  // lent by the URI
    Ref<ORUDoName> mr_name;

    int32_t take_uri(ORUDoValue *value);
    int32_t take_type(ORUDoValue *value);
    int32_t take(const ORUDoProperty &entry);
    int32_t read(const ORUDoProperties &table);
    int32_t find_type(ORUMdMrMeta *&out_type) const;
    bool has_only_keys(ORUMdMrMeta &type) const;
    int32_t append_to(ORUDoConfigOps *config_ops) const;
};

int32_t out_of_memory() {
    ORU_TRACE(Level::failure, "Out of memory (rc=%d)\n", ORU_RC_MALLOC);
    return ORU_RC_MALLOC;
}

int32_t Creation::take_uri(ORUDoValue *value) {
    if (mr_uri) {
        ORU_TRACE(Level::failure, "parent_uri already set (rc=%d)\n", ORU_RC_GENERAL);
        return ORU_RC_GENERAL;
    }
    int32_t code = ORU_RC_VALUE_TYPE;  // an entry may have no value at all
    ORUDoUri *uri = value != nullptr ? oru_do_value_get_mr_uri(value, &code) : nullptr;
    if (code != ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to get _uri value (rc=%d)\n", static_cast<int>(code));
        return code;
    }
    if (location_uri != nullptr)
        mr_uri = Ref<ORUDoUri>::adopt(oru_do_uri_new_absolute(uri, location_uri));
    if (!mr_uri)
        mr_uri = Ref<ORUDoUri>::share(uri);
    parent_uri = oru_do_uri_get_parent_uri(mr_uri.get());
    return ORU_OK;
}

int32_t Creation::take_type(ORUDoValue *value) {
    if (mr_name) {
        ORU_TRACE(Level::failure, "mr_uri_typename already set (rc=%d)\n", ORU_RC_GENERAL);
        return ORU_RC_GENERAL;
    }
    int32_t code = ORU_RC_VALUE_TYPE;
    const char *text = value != nullptr ? oru_do_value_get_string(value, &code) : nullptr;
    if (code != ORU_OK) {
        ORU_TRACE(Level::failure, "Failed to get _mr value (rc=%d)\n", static_cast<int>(code));
        return code;
    }
    // A string whose storage could not be had reads as empty.
    mr_name = Ref<ORUDoName>::adopt(oru_do_name_new(text != nullptr ? text : ""));
    return mr_name ? ORU_OK : out_of_memory();
}

// What refers to other resources is not created with this one.
bool is_left_out(ORUDoValue *value) {
    switch (value != nullptr ? oru_do_value_get_type(value) : ORU_DO_TYPE_NULL) {
        case ORU_DO_TYPE_NULL:
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return true;
        default:
            return false;
    }
}

int32_t Creation::take(const ORUDoProperty &entry) {
    if (oru_do_name_equals_w_strname(entry.name, ORU_DO_NAME_URI) != 0)
        return take_uri(entry.value);
    if (oru_do_name_equals_w_strname(entry.name, ORU_DO_NAME_MR) != 0)
        return take_type(entry.value);
    if (!is_left_out(entry.value))
        oru_do_properties_set_value_n(props.get(), entry.name, entry.value);
    return ORU_OK;
}

int32_t Creation::read(const ORUDoProperties &table) {
    props = Ref<ORUDoProperties>::adopt(oru_do_properties_new());
    if (!props)
        return out_of_memory();
    for (const ORUDoProperty *entry = table.first; entry != nullptr; entry = entry->next) {
        if (const int32_t code = take(*entry); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t Creation::find_type(ORUMdMrMeta *&out_type) const {
    if (!mr_name) {
        ORU_TRACE(Level::failure, "mr_uri_typename is NULL\n");
        return ORU_RC_GENERAL;
    }
    out_type = oru_md_get_mr_meta_by_name(mr_name->str);
    if (out_type == nullptr) {
        ORU_TRACE(Level::failure, "Unable to find mr_meta for %s\n", mr_name->str);
        return ORU_RC_GENERAL;
    }
    return ORU_OK;
}

// An attribute that the type does not know is no key.
bool is_primary_key(ORUMdMrMeta &type, ORUDoName *name) {
    const ORUMdAttrMeta *attr = oru_md_get_attr_meta(&type, name);
    return attr != nullptr && oru_do_prop_meta_is_primary_key(attr->prop_meta) != 0;
}

bool Creation::has_only_keys(ORUMdMrMeta &type) const {
    for (const ORUDoProperty *entry = props->first; entry != nullptr; entry = entry->next) {
        ORU_TRACE(Level::detail, "prop_name = %s\n", entry->name->str);
        if (!is_primary_key(type, entry->name)) {
            ORU_TRACE(Level::detail, "Found non primary kep prop\n");
            return false;
        }
    }
    ORU_TRACE(Level::detail, "No properties in the list, skip config op creation \n");
    return true;
}

int32_t Creation::append_to(ORUDoConfigOps *config_ops) const {
    if (!mr_uri) {
        ORU_TRACE(Level::failure, "MR URI expected to be set\n");
        return ORU_RC_GENERAL;
    }
    ORUDoUriSegment *last = oru_do_uri_get_segment_last(mr_uri.get());
    if (last == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get last segment (rc=%d)\n", ORU_RC_GENERAL);
        return ORU_RC_GENERAL;
    }
    const auto child = Ref<ORUDoName>::adopt(oru_do_name_new(oru_do_uri_segment_get_name(last)));
    if (!child) {
        ORU_TRACE(Level::failure, "Failed to create oru_do_name (rc=%d)\n", ORU_RC_MALLOC);
        return ORU_RC_MALLOC;
    }
    if (oru_do_config_ops_add(config_ops, kCreate, parent_uri, props.get(), child.get(),
                              mr_name.get(), nullptr) < 1) {
        ORU_TRACE(Level::failure, "%s (rc=%d)\n", "Failed to add reverse config op",
                  ORU_RC_GENERAL);
        return ORU_RC_GENERAL;
    }
    return ORU_OK;
}

int32_t create_again(const ORUDoProperties &table, ORUDoConfigOps *config_ops,
                     ORUDoUri *location_uri, bool check_keys) {
    Creation creation{.location_uri = location_uri};
    if (const int32_t code = creation.read(table); code != ORU_OK)
        return code;
    if (check_keys) {
        ORUMdMrMeta *type = nullptr;
        if (const int32_t code = creation.find_type(type); code != ORU_OK)
            return code;
        if (creation.has_only_keys(*type))
            return ORU_OK;
    }
    return creation.append_to(config_ops);
}

}  // namespace

int32_t oru_do_properties_list_to_config_ops(ORUDoPropertiesList *properties_list,
                                             ORUDoConfigOps *config_ops, ORUDoUri *location_uri,
                                             int32_t check_keys) {
    ORU_REQUIRE(properties_list);
    ORU_REQUIRE(config_ops);
    for (const auto *item = properties_list->first; item != nullptr; item = item->next) {
        const int32_t code =
            create_again(*item->properties, config_ops, location_uri, check_keys != 0);
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}
