#include "md/reader.h"

#include "frame/trace.h"
#include "md/records.h"
#include "md/store.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::PackageReader;

constexpr char kMajorVersion[] = "1";
constexpr char kMinorVersion[] = "8";

// Tells what schema the file has. A version that is not supported stops nothing.
void check_schema(const xmlNode *root) {
    const oru::XmlAttribute schema(root, "schemaVersion");
    if (!schema) {
        ORU_TRACE(Level::detail, "Schema version not found in oru2d file\n");
        return;
    }
    ORU_TRACE(Level::detail, "Schema version %s found in oru2d file\n", schema.text());
    ORU_TRACE(Level::detail, "SUPPORTED MAJOR Version %s \n", kMajorVersion);
    ORU_TRACE(Level::detail,
              "Minor Version Supported : %s, but also accepts all other Minor Versions\n",
              kMinorVersion);
    const char major[] = {schema.text()[0], '\0'};
    if (major[0] != kMajorVersion[0]) {
        ORU_TRACE(Level::failure,
                  "Version mismatch in oru2d library expected a major version of %s got a major "
                  "version of %s\n",
                  kMajorVersion, major);
    }
}

// A package with the attributes of the root. Package and version are mandatory: a file without
// them ends the process.
ORUMdPkgMeta *new_package(const xmlNode *root, bool is_lib) {
    const oru::XmlAttribute package(root, "package");
    const oru::XmlAttribute version(root, "version");
    const auto name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(package.text()));
    if (!name)
        return nullptr;
    return oru_md_new_pkg_meta(name.get(), version.text(),
                               is_lib ? ORU_MD_PKG_LIBRARY : ORU_MD_PKG_IMPL);
}

int32_t read_types(const PackageReader &reader, const xmlNode *root) {
    for (const xmlNode *group : oru::XmlChildren(root)) {
        if (!oru::xml_is(group, "typeDef"))
            continue;
        for (const xmlNode *element : oru::XmlChildren(group)) {
            if (const int32_t code = oru::read_typedef(reader, element); code != ORU_OK)
                return code;
        }
    }
    return ORU_OK;
}

int32_t read_definitions(const PackageReader &reader, const xmlNode *root) {
    for (const xmlNode *element : oru::XmlChildren(root)) {
        int32_t code = ORU_OK;
        if (oru::xml_is(element, "configDataDef"))
            code = oru::read_config_definitions(reader, element);
        else if (oru::xml_is(element, "operationalDataDef"))
            code = oru::read_oper_definitions(reader, element);
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t read_resources(const PackageReader &reader, const xmlNode *root) {
    for (const xmlNode *element : oru::XmlChildren(root)) {
        if (!oru::xml_is(element, "managedResourceDef"))
            continue;
        if (const int32_t code = oru::read_mr_definitions(reader, element); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

// The three walks over the root's children.
int32_t read_contents(const PackageReader &reader, const xmlNode *root) {
    const char *name = oru::text_of(reader.package->name);
    int32_t code = read_types(reader, root);
    if (code != ORU_OK) {
        ORU_TRACE(Level::failure, "Error occured processing typedef in %s...\n", name);
        return code;
    }
    code = read_definitions(reader, root);
    if (code == ORU_OK)
        code = read_resources(reader, root);
    if (code != ORU_OK)
        ORU_TRACE(Level::failure, "Error occured processing meta_package %s...\n", name);
    return code;
}

}  // namespace

int32_t oru::read_package(const char *file, const xmlNode *root, ORUMdMap *store, bool is_lib,
                          ORUMdPkgMeta *&out_package) {
    PackageReader reader{file, nullptr, is_lib};
    const ElementPlace place(reader, root);
    check_schema(root);
    auto *package = reader.package = new_package(root, is_lib);
    if (package == nullptr)
        return ORU_RC_MALLOC;
    int32_t code = store->oru_md_add_pkg(store, package);
    if (code != ORU_OK) {
        oru_md_delete_pkg_meta(package);
        return code;
    }
    ORU_TRACE(Level::detail, "Added meta package %s...\n", text_of(package->name));
    code = read_contents(reader, root);
    if (code != ORU_OK) {
        store->oru_md_remove_pkg(store, package);
        oru_md_delete_pkg_meta(package);
        return code;
    }
    out_package = package;
    return ORU_OK;
}

bool oru::read_parent_attr(const PackageReader &reader, const xmlNode *element, Text &out) {
    const XmlAttribute parent(element, reader.is_lib ? "extends" : "implements");
    if (!parent)
        return true;
    if (!reader.is_lib) {
        out.reset(duplicate(parent.text()));
    } else if (const auto name = qualified_name(reader, parent.text())) {
        out.reset(duplicate(text_of(name.get())));
    }
    return static_cast<bool>(out);
}

oru::Ref<ORUDoName> oru::qualified_name(const PackageReader &reader, const char *text) {
    const auto name = Ref<ORUDoName>::adopt(oru_do_name_new(text));
    if (!name)
        return {};
    return Ref<ORUDoName>::adopt(oru_md_qualified_name_new_or_ref(reader.package, name.get()));
}
