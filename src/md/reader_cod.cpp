// Configuration and operational data in packages: definitions, groups of resources, and the
// attributes of both.
#include <cstring>

#include "frame/trace.h"
#include "md/reader.h"
#include "md/records.h"
#include "oru/md_lookup.h"
#include "oru/rc.h"
#include "oru/typedef_meta.h"
#include "oru/value.h"

namespace {

using oru::CodElement;
using oru::Level;
using oru::PackageReader;
using oru::Ref;
using oru::Text;
using oru::XmlAttribute;

// Definitions may extend each other in a circle, which no packages that make sense do.
constexpr int kDeepestBase = 100;

uint8_t access_of(const XmlAttribute &access) {
    if (!access)
        return 2;
    if (access.is("read-only"))
        return 1;
    return access.is("read-create") ? 5 : 7;
}

// A copy of a definition's property under the name that it has in the group.
Ref<ORUDoPropMeta> copy_property(const ORUMdCodMeta &cod, const ORUDoPropMeta &prop,
                                 const char *prefix) {
    char buffer[oru::kDottedNameSize];
    auto name = Ref<ORUDoName>::share(prop.name);
    if (prefix != nullptr && *prefix != '\0') {
        if (!oru::dotted_name(buffer, prefix, oru::text_of(prop.name)))
            return {};
        name = Ref<ORUDoName>::adopt(oru_do_name_new(buffer));
    }
    const auto type_name =
        Ref<ORUDoName>::adopt(oru_md_qualified_name_new_or_ref(cod.package, prop.type_name));
    if (!name || !type_name)
        return {};
    auto copy = Ref<ORUDoPropMeta>::adopt(
        oru_do_prop_meta_new(name.get(), prop.category, prop.primary_key, prop.key_idx,
                             prop.first_key_in_group, prop.typecode, type_name.get(),
                             prop.multiplicity, prop.ref_role, prop.max_access, prop.persistent));
    if (!copy)
        return {};
    copy->constraint_list = oru_do_constraint_list_ref(prop.constraint_list);
    copy->typedef_meta = oru_do_typedef_meta_ref(prop.typedef_meta);
    return copy;
}

// Copies the properties of a definition, those of its bases first where `follow` is set.
int32_t copy_cod_props(const ORUMdCodMeta &cod, ORUDoPropMetaList *list, const char *prefix,
                       bool follow, int depth = 0) {
    if (follow && cod.extends_cod != nullptr &&
        (depth > kDeepestBase ||
         copy_cod_props(*cod.extends_cod, list, prefix, follow, depth + 1) != ORU_OK)) {
        ORU_TRACE(Level::failure, "Error occurred in ");
        return ORU_RC_METADATA;
    }
    if (cod.prop_list == nullptr) {
        ORU_TRACE(Level::failure, "Property meta list NULL\n");
        return ORU_RC_METADATA;
    }
    for (auto *item = cod.prop_list->first; item != nullptr; item = item->next) {
        const auto copy = copy_property(cod, *item->object, prefix);
        if (!copy || oru_do_prop_meta_list_add(list, copy.get()) < 0) {
            ORU_TRACE(Level::failure, "Property meta array NULL\n");
            return ORU_RC_METADATA;
        }
    }
    return ORU_OK;
}

ORUMdCodMeta *find_by_name(int32_t category, const char *name) {
    return category == ORU_PROP_CONFIG ? oru_md_get_cd_meta_by_name(name)
                                       : oru_md_get_od_meta_by_name(name);
}

// The definition that `ref` names: in this package, or in another one that it tells.
ORUMdCodMeta *find_by_ref(const PackageReader &reader, int32_t category, const char *ref) {
    const Text copy(oru::duplicate(ref));
    if (!copy)
        return nullptr;
    char *package, *version, *entity, *attribute;
    parse_pkg_and_ent_name(copy.get(), &package, &version, &entity, &attribute);
    if (package != nullptr && oru_do_name_equals_w_strname(reader.package->name, package) == 0)
        return find_by_name(category, ref);
    if (entity == nullptr)
        return nullptr;
    return category == ORU_PROP_CONFIG ? oru_md_get_pkg_cd_meta_w_str(reader.package, entity)
                                       : oru_md_get_pkg_od_meta_w_str(reader.package, entity);
}

int32_t take_from_ref(const PackageReader &reader, const CodElement &cod, const char *ref,
                      ORUDoPropMetaList *list) {
    const auto *definition = find_by_ref(reader, cod.category, ref);
    if (definition != nullptr)
        return copy_cod_props(*definition, list, cod.group, false);
    if (cod.category == ORU_PROP_CONFIG)
        ORU_TRACE(Level::failure, "Cannot resolve configData %s\n", ref);
    else
        ORU_TRACE(Level::failure, "Cannot resolve operationalData %s\n", ref);
    return ORU_RC_METADATA;
}

int32_t take_from_parent(const CodElement &cod, const char *parent, ORUDoPropMetaList *list) {
    const auto *definition = find_by_name(cod.category, parent);
    if (definition != nullptr)
        return copy_cod_props(*definition, list, cod.group, true);
    ORU_TRACE(Level::failure, "Cannot resolve configData %s\n", parent);
    return ORU_RC_METADATA;
}

int32_t read_attributes(const PackageReader &reader, const CodElement &cod,
                        ORUDoPropMetaList *list) {
    const char *prefix = cod.nested ? cod.group : nullptr;
    for (const xmlNode *child : oru::XmlChildren(cod.element)) {
        if (!oru::xml_is(child, "attribute"))
            continue;
        const oru::ElementPlace place(reader, child);
        const auto prop = oru::read_property(child, cod.category, prefix, cod.persistent);
        if (!prop) {
            ORU_TRACE(Level::failure, "Error occured instanciating oru_do_prop_meta\n");
            return ORU_RC_GENERAL;
        }
        oru::read_prop_assertions(reader, child, prop.get());
        if (oru_do_prop_meta_list_add(list, prop.get()) < 0)
            return ORU_RC_MALLOC;
    }
    return ORU_OK;
}

// Adds a definition to the package, when there is anything in it.
int32_t read_definition(const PackageReader &reader, const CodElement &cod, ORUDoName *name,
                        ORUDoPropMetaList *list) {
    Text parent;
    if (const int32_t code = oru::read_cod(reader, cod, list, parent); code != ORU_OK)
        return code;
    if (oru_do_prop_meta_list_get_len(list) == 0)
        return ORU_OK;
    auto *definition = oru_md_cod_meta_new(reader.package, name, parent.get(), list, reader.is_lib);
    if (definition == nullptr)
        return ORU_RC_MALLOC;
    if (cod.category == ORU_PROP_CONFIG)
        oru_md_add_pkg_cd_meta(reader.package, definition);
    else
        oru_md_add_pkg_od_meta(reader.package, definition);
    return ORU_OK;
}

// The mandatory name of a definition: a file without it ends the process.
Ref<ORUDoName> definition_name(const xmlNode *element) {
    return Ref<ORUDoName>::adopt(oru_do_name_new(XmlAttribute(element, "name").text()));
}

int32_t read_config_definition(const PackageReader &reader, const xmlNode *element) {
    const oru::ElementPlace place(reader, element);
    const auto name = definition_name(element);
    if (!name) {
        ORU_TRACE(Level::failure, "Failed to allocate cd_name\n");
        return ORU_RC_MALLOC;
    }
    const auto list = Ref<ORUDoPropMetaList>::adopt(oru_do_prop_meta_list_new());
    if (!list) {
        ORU_TRACE(Level::failure, "Failed to allocate prop meta\n");
        return ORU_RC_MALLOC;
    }
    const bool persistent = !XmlAttribute(element, "persistent").is("false");
    return read_definition(reader, {element, ORU_PROP_CONFIG, nullptr, false, persistent},
                           name.get(), list.get());
}

int32_t read_oper_definition(const PackageReader &reader, const xmlNode *element) {
    const oru::ElementPlace place(reader, element);
    const auto name = definition_name(element);
    if (!name) {
        ORU_TRACE(Level::failure, "Failed to allocate od_name.\n");
        return ORU_RC_MALLOC;
    }
    const auto list = Ref<ORUDoPropMetaList>::adopt(oru_do_prop_meta_list_new());
    if (!list) {
        ORU_TRACE(Level::failure, "Failed to allocate prop_metas\n");
        return ORU_RC_MALLOC;
    }
    return read_definition(reader, {element, ORU_PROP_OPER, nullptr, false, false}, name.get(),
                           list.get());
}

}  // namespace

bool oru::dotted_name(char (&out)[kDottedNameSize], const char *group, const char *name) {
    const size_t prefix = std::strlen(group);
    const size_t rest = std::strlen(name);
    if (prefix + 1 + rest >= sizeof out)
        return false;
    std::memcpy(out, group, prefix);
    out[prefix] = '.';
    std::memcpy(out + prefix + 1, name, rest + 1);
    return true;
}

int32_t oru::read_config_definitions(const PackageReader &reader, const xmlNode *element) {
    for (const xmlNode *child : XmlChildren(element)) {
        if (!xml_is(child, "configData"))
            continue;
        if (const int32_t code = read_config_definition(reader, child); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

// The last element decides: a fault in an earlier one loses that definition only.
int32_t oru::read_oper_definitions(const PackageReader &reader, const xmlNode *element) {
    int32_t code = ORU_OK;
    for (const xmlNode *child : XmlChildren(element)) {
        if (xml_is(child, "operationalData"))
            code = read_oper_definition(reader, child);
    }
    return code;
}

int32_t oru::read_cod(const PackageReader &reader, const CodElement &cod, ORUDoPropMetaList *list,
                      Text &out_parent) {
    if (text_of(reader.package->name) == nullptr) {
        ORU_TRACE(Level::failure, "PackageMeta has invalid name value\n");
        return ORU_RC_METADATA;
    }
    if (!read_parent_attr(reader, cod.element, out_parent))
        return ORU_RC_MALLOC;
    if (cod.nested) {
        const XmlAttribute ref(cod.element, "ref");
        if (ref)
            return take_from_ref(reader, cod, ref.text(), list);
        if (!reader.is_lib && out_parent) {
            if (const int32_t code = take_from_parent(cod, out_parent.get(), list); code != ORU_OK)
                return code;
        }
    }
    return read_attributes(reader, cod, list);
}

oru::Ref<ORUDoPropMeta> oru::read_property(const xmlNode *element, int32_t category,
                                           const char *prefix, bool persistent) {
    const XmlAttribute name(element, "name");
    const XmlAttribute type(element, "type");
    if (!name || !type) {
        ORU_TRACE(Level::failure, "ORU2D property names and types are mandatory\n");
        return {};
    }
    char buffer[kDottedNameSize];
    if (prefix != nullptr && !dotted_name(buffer, prefix, name.text())) {
        ORU_TRACE(Level::failure, "Failed to build fully qualified name\n");
        return {};
    }
    const auto full_name =
        Ref<ORUDoName>::adopt(oru_do_name_new(prefix != nullptr ? buffer : name.text()));
    const auto type_name = Ref<ORUDoName>::adopt(oru_do_name_new(type.text()));
    if (!full_name || !type_name) {
        ORU_TRACE(Level::failure, "Failed to allocate name\n");
        return {};
    }
    const bool many = XmlAttribute(element, "multiplicity").is("many");
    return Ref<ORUDoPropMeta>::adopt(oru_do_prop_meta_new(
        full_name.get(), category, 0, 0, nullptr, oru_do_get_typecode_by_typestr(type.text()),
        type_name.get(), many ? ORU_MULTIPLICITY_MANY : ORU_MULTIPLICITY_ONE, ORU_REF_NONE,
        access_of(XmlAttribute(element, "maxAccess")), persistent));
}
