// Resources in packages.
#include "frame/trace.h"
#include "md/act_meta.h"
#include "md/mr_meta.h"
#include "md/reader.h"
#include "md/records.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::ElementPlace;
using oru::Level;
using oru::PackageReader;
using oru::Ref;
using oru::Text;
using oru::XmlAttribute;

// What all resources of one `managedResourceDef` share.
struct MrGroup {
    Ref<ORUDoName> empty_name;
    Ref<ORUDoMrMetaBool> non_persistent;
};

// One `managedResource` while its children are read.
struct MrReader {
    const PackageReader &package;
    const MrGroup &group;
    const xmlNode *element;
    Ref<ORUDoName> name;
    uint8_t max_access = 15;
    Text parent = Text();
    Text const_key = Text();
    bool has_primary_key = false;
    Ref<ORUDoPropMetaList> props;
    Ref<ORUDoActMetaList> actions;
};

uint8_t ref_access_of(const XmlAttribute &attribute) {
    if (!attribute || attribute.is("read-only"))
        return 1;
    if (attribute.is("read-create"))
        return 5;
    return attribute.is("oper-data") ? 0 : 7;
}

int32_t role_of(const XmlAttribute &attribute) {
    if (attribute.is("parent"))
        return ORU_REF_PARENT;
    return attribute.is("peer") ? ORU_REF_PEER : ORU_REF_CHILD;
}

Ref<ORUDoPropMeta> new_key(const xmlNode *element, bool primary, int32_t index,
                           ORUDoPropMeta *first) {
    const XmlAttribute name(element, "name");
    const XmlAttribute type(element, "type");
    if (!name || !type) {
        ORU_TRACE(Level::failure, "Name and type are mandatory for attributes\n");
        return {};
    }
    const auto key_name = Ref<ORUDoName>::adopt(oru_do_name_new(name.text()));
    const auto type_name = Ref<ORUDoName>::adopt(oru_do_name_new(type.text()));
    if (!key_name || !type_name)
        return {};
    return Ref<ORUDoPropMeta>::adopt(
        oru_do_prop_meta_new(key_name.get(), ORU_PROP_KEY, primary, index, first,
                             oru_do_get_typecode_by_typestr(type.text()), type_name.get(),
                             ORU_MULTIPLICITY_ONE, ORU_REF_NONE, 1, 0));
}

// The only value that the first key with such a constraint can have selects this resource.
void take_const_key(MrReader &mr, const ORUDoPropMeta &key) {
    if (mr.const_key || key.constraint_list == nullptr)
        return;
    const ORUDoRange *values = key.constraint_list->first->object->values;
    if (values != nullptr && oru::is_single_value(*values))
        mr.const_key = oru::text_of_value(values->first_el->lower);
}

int32_t read_key(MrReader &mr, const xmlNode *element) {
    const bool primary = !mr.has_primary_key;
    mr.has_primary_key = true;
    ORUDoPropMeta *first = nullptr;
    int32_t index = 0;
    for (const xmlNode *child : oru::XmlChildren(element)) {
        if (!oru::xml_is(child, "attribute"))
            continue;
        const ElementPlace place(mr.package, child);
        const auto key = new_key(child, primary, ++index, first);
        if (!key || oru_do_prop_meta_list_add(mr.props.get(), key.get()) < 0) {
            ORU_TRACE(Level::failure, "Error processing key node\n");
            return ORU_RC_GENERAL;
        }
        if (first == nullptr)
            first = key.get();
        oru::read_prop_assertions(mr.package, child, key.get());
        take_const_key(mr, *key);
    }
    return ORU_OK;
}

int32_t read_reference(MrReader &mr, const xmlNode *element) {
    const XmlAttribute name(element, "name");
    if (!name)
        return ORU_OK;
    const XmlAttribute target(element, "targetIsA");
    const bool many = XmlAttribute(element, "multiplicity").is("many");
    const auto ref_name = Ref<ORUDoName>::adopt(oru_do_name_new(name.text()));
    const auto target_name =
        target ? oru::qualified_name(mr.package, target.text()) : Ref<ORUDoName>();
    if (!ref_name || (target && !target_name))
        return ORU_RC_MALLOC;
    const auto ref = Ref<ORUDoPropMeta>::adopt(
        oru_do_prop_meta_new(ref_name.get(), ORU_PROP_REF, 0, 0, nullptr,
                             many ? ORU_DO_TYPE_COLL_URI : ORU_DO_TYPE_MR_URI, target_name.get(),
                             many ? ORU_MULTIPLICITY_MANY : ORU_MULTIPLICITY_ONE,
                             role_of(XmlAttribute(element, "targetRole")),
                             ref_access_of(XmlAttribute(element, "maxAccess")), 0));
    if (!ref || oru_do_prop_meta_list_add(mr.props.get(), ref.get()) < 0)
        return ORU_RC_MALLOC;
    oru::read_prop_assertions(mr.package, element, ref.get());
    return ORU_OK;
}

int32_t read_config_data(MrReader &mr, const xmlNode *element) {
    const XmlAttribute group(element, "name");
    const bool persistent = !XmlAttribute(element, "persistent").is("false");
    if (!persistent)
        oru_do_mr_meta_bool_set_bool(mr.group.non_persistent.get(), 1);
    Text parent;
    const int32_t code =
        oru::read_cod(mr.package, {element, ORU_PROP_CONFIG, group.text(), true, persistent},
                      mr.props.get(), parent);
    if (code != ORU_OK)
        ORU_TRACE(Level::failure, "Error processing configData node\n");
    return code;
}

int32_t read_oper_data(MrReader &mr, const xmlNode *element) {
    const XmlAttribute group(element, "name");
    Text parent;
    const int32_t code = oru::read_cod(
        mr.package, {element, ORU_PROP_OPER, group.text(), true, false}, mr.props.get(), parent);
    if (code != ORU_OK)
        ORU_TRACE(Level::failure, "Error processing operationalData node\n");
    return code;
}

int32_t read_child(MrReader &mr, const xmlNode *child) {
    const ElementPlace place(mr.package, child);
    if (oru::xml_is(child, "key"))
        return read_key(mr, child);
    if (oru::xml_is(child, "reference"))
        return read_reference(mr, child);
    if (oru::xml_is(child, "configData"))
        return read_config_data(mr, child);
    if (oru::xml_is(child, "operationalData"))
        return read_oper_data(mr, child);
    if (oru::xml_is(child, "action"))
        return oru::read_action(mr.package, child, mr.actions);
    return ORU_OK;
}

int32_t read_head(MrReader &mr) {
    const XmlAttribute name(mr.element, "name");
    if (!name) {
        ORU_TRACE(Level::failure, "Mandatory field 'name' is missing, rc=%d\n", ORU_RC_GENERAL);
        return ORU_RC_GENERAL;
    }
    mr.name = Ref<ORUDoName>::adopt(oru_do_name_new(name.text()));
    if (!mr.name) {
        ORU_TRACE(Level::failure, "Failed to allocate mr_name, rc=%d\n", ORU_RC_MALLOC);
        return ORU_RC_MALLOC;
    }
    mr.props = Ref<ORUDoPropMetaList>::adopt(oru_do_prop_meta_list_new());
    if (!mr.props) {
        ORU_TRACE(Level::failure, "Failed to allocate prop_metas, rc=%d\n", ORU_RC_MALLOC);
        return ORU_RC_MALLOC;
    }
    mr.max_access = oru::mr_access_of(XmlAttribute(mr.element, "maxAccess"));
    return oru::read_parent_attr(mr.package, mr.element, mr.parent) ? ORU_OK : ORU_RC_MALLOC;
}

bool add_attr(const MrReader &mr, ORUMdMrMeta *record, ORUDoPropMeta *prop) {
    auto *attr = oru_md_new_attr_meta(prop->name, mr.group.empty_name.get(), prop);
    if (attr == nullptr)
        return false;
    if (prop->category == ORU_PROP_KEY)
        oru_md_add_key_meta(record, attr, prop->primary_key);
    else if (prop->category == ORU_PROP_CONFIG)
        oru_md_add_cd_meta(record, attr);
    else
        oru_md_add_od_meta(record, attr);
    return true;
}

bool add_ref(ORUMdMrMeta *record, ORUDoPropMeta *prop) {
    auto *ref = oru_md_new_ref_meta(prop->name, prop);
    if (ref != nullptr)
        oru_md_add_ref_meta(record, ref);
    return ref != nullptr;
}

// Sorts a property into the lists of the record. False when memory ran out.
bool sort_in(const MrReader &mr, ORUMdMrMeta *record, ORUDoPropMeta *prop) {
    switch (prop->category) {
        case ORU_PROP_REF:
            return add_ref(record, prop);
        case ORU_PROP_KEY:
        case ORU_PROP_CONFIG:
        case ORU_PROP_OPER:
            return add_attr(mr, record, prop);
        default:
            ORU_TRACE(Level::failure, "Unknown prop category\n");
            return true;
    }
}

Ref<ORUDoMrMeta> describe(const MrReader &mr) {
    auto description = Ref<ORUDoMrMeta>::adopt(
        oru_do_mr_meta_new(mr.package.package->name, mr.package.package->version, mr.name.get(),
                           mr.max_access, mr.props.get(), mr.group.non_persistent.get()));
    if (!description) {
        ORU_TRACE(Level::failure, "Failed to allocate MR metadata\n");
        return {};
    }
    oru_do_mr_meta_set_act_meta_list(description.get(), mr.actions.get());
    oru_do_mr_meta_set_is_lib_mr(description.get(), mr.package.is_lib);
    return description;
}

int32_t store(const MrReader &mr) {
    const auto description = describe(mr);
    if (!description)
        return ORU_RC_MALLOC;
    auto *record = oru_md_new_mr_meta(mr.package.package, mr.name.get(), description.get(),
                                      mr.parent.get(), mr.const_key.get(), mr.package.is_lib);
    if (record == nullptr)
        return ORU_RC_MALLOC;
    for (auto *item = mr.props->first; item != nullptr; item = item->next) {
        if (!sort_in(mr, record, item->object)) {
            oru_md_delete_mr_meta(record);
            return ORU_RC_MALLOC;
        }
    }
    oru_md_add_mr_meta(mr.package.package, record);
    return ORU_OK;
}

int32_t read_mr(const PackageReader &reader, const MrGroup &group, const xmlNode *element) {
    const ElementPlace place(reader, element);
    MrReader mr{reader, group, element};
    if (const int32_t code = read_head(mr); code != ORU_OK)
        return code;
    for (const xmlNode *child : oru::XmlChildren(element)) {
        if (const int32_t code = read_child(mr, child); code != ORU_OK)
            return code;
    }
    return store(mr);
}

}  // namespace

int32_t oru::read_mr_definitions(const PackageReader &reader, const xmlNode *element) {
    const MrGroup group{Ref<ORUDoName>::adopt(oru_do_name_new("")),
                        Ref<ORUDoMrMetaBool>::adopt(oru_do_mr_meta_bool_new(0))};
    if (!group.non_persistent)
        ORU_TRACE(Level::failure, "Failed to allocate bool, rc=%d\n", ORU_RC_MALLOC);
    if (!group.non_persistent || !group.empty_name)
        return ORU_RC_MALLOC;
    for (const xmlNode *child : XmlChildren(element)) {
        if (!xml_is(child, "managedResource"))
            continue;
        if (const int32_t code = read_mr(reader, group, child); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}
