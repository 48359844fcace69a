#include "bench/model_files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace oru::bench {

namespace {

// How a kind of attribute is written in a package and in a module.
struct Kind {
    const char *type;
    const char *assertion;  // or empty
    const char *yang;       // the statements of the leaf
};

constexpr Kind kKey = {"unsignedInt", "<constraint>values(1..4096)</constraint>",
                       "type uint32 { range \"1..4096\"; }"};

constexpr Kind kConfigKinds[] = {
    {"string", "<constraint>strlen(1..64)</constraint>", "type string { length \"1..64\"; }"},
    {"int", "<constraint>values(68..9216) default(1500)</constraint>",
     "type int32 { range \"68..9216\"; } default 1500;"},
    {"boolean", "", "type boolean;"},
    {"State", "", "type state;"},
    {"Percent", "", "type percent;"},
    {"unsignedInt",
     "<condition>config.mtu.values(1500..9216)</condition>"
     "<constraint>values(1..100|200)</constraint>",
     "type uint32 { range \"1..100 | 200\"; } must \"../mtu >= 1500\";"},
    {"string", "", "type string;"},
};

constexpr Kind kStateKinds[] = {
    {"unsignedLong", "", "type uint64;"}, {"State", "", "type state;"},
    {"string", "", "type string;"},       {"unsignedLong", "", "type uint64;"},
    {"int", "", "type int32;"},
};

constexpr const char *kConfigNames[] = {
    "description", "mtu",  "enabled", "adminState", "loadThreshold", "holdTime",  "owner",
    "alias",       "cost", "learn",   "mode",       "burstLimit",    "queueSize", "contact"};

constexpr const char *kStateNames[] = {"inOctets",   "operState",  "lastChange", "outOctets",
                                       "inErrors",   "inPackets",  "linkState",  "hardware",
                                       "outPackets", "outErrors",  "discards",   "testState",
                                       "firmware",   "multicasts", "temperature"};

static_assert(1 + std::size(kConfigNames) + std::size(kStateNames) == Model::kAttributesEach);

constexpr char kPackageTypes[] = R"(  <typeDef>
    <enumerationType name="State">
      <enumeration value="up" intValue="1"/>
      <enumeration value="down" intValue="2"/>
      <enumeration value="testing" intValue="3"/>
    </enumerationType>
    <simpleType name="Percent" base="unsignedByte">
      <assert><constraint>values(0..100)</constraint></assert>
    </simpleType>
  </typeDef>
)";

constexpr char kModuleTypes[] = R"(
  typedef state {
    type enumeration { enum up { value 1; } enum down { value 2; } enum testing { value 3; } }
  }
  typedef percent { type uint8 { range "0..100"; } }
)";

std::string numbered(std::string text, int n) {
    return text += std::to_string(n);
}

std::string resource_name(int resource) {
    return numbered("R", resource);
}

std::string library_name(int library) {
    return numbered("com.example.lib", library);
}

// A group of attributes, in the form that `write_one` gives each.
template <class Names, class Kinds, class WriteOne>
std::string each_attribute(const Names &names, const Kinds &kinds, WriteOne write_one) {
    std::string text;
    for (size_t i = 0; i < std::size(names); i++)
        text += write_one(names[i], kinds[i % std::size(kinds)]);
    return text;
}

// ---- Packages ----

std::string package_attribute(const char *name, const Kind &kind, const char *access) {
    const std::string head = std::string("        <attribute name=\"") + name + "\" type=\"" +
                             kind.type + "\" maxAccess=\"" + access + "\"";
    if (*kind.assertion == '\0')
        return head + "/>\n";
    return head + ">\n          <assert>" + kind.assertion + "</assert>\n        </attribute>\n";
}

std::string package_attributes() {
    return "      <key>\n" + package_attribute("id", kKey, "read-only") +
           "      </key>\n      <configData name=\"config\">\n" +
           each_attribute(kConfigNames, kConfigKinds,
                          [](const char *name, const Kind &kind) {
                              return package_attribute(name, kind, "read-write");
                          }) +
           "      </configData>\n      <operationalData name=\"state\">\n" +
           each_attribute(kStateNames, kStateKinds,
                          [](const char *name, const Kind &kind) {
                              return package_attribute(name, kind, "read-only");
                          }) +
           "      </operationalData>\n";
}

std::string reference(const std::string &name, const std::string &target, const char *role) {
    return "      <reference name=\"" + name + "\" targetIsA=\"" + target + "\" targetRole=\"" +
           role + "\" multiplicity=\"many\"/>\n";
}

std::string references(const Model &model, int resource) {
    std::string text = reference("peer", model.name(resource / 2), "peer");
    for (int child : model.children(resource))
        text += reference(numbered("r", child), model.name(child), "child");
    return text;
}

std::string package_of(const char *root, const std::string &name, const std::string &resources) {
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<") + root + " package=\"" +
           name + "\" version=\"1.0\" schemaVersion=\"1.8\">\n" + kPackageTypes +
           "  <managedResourceDef>\n" + resources + "  </managedResourceDef>\n</" + root + ">\n";
}

std::string library(int index) {
    std::string resources;
    for (int i = 0; i < Model::kResourcesEach; i++)
        resources += "    <managedResource name=\"" + resource_name(i) + "\">\n" +
                     package_attributes() + "    </managedResource>\n";
    return package_of("oru2dLib", library_name(index), resources);
}

std::string implements(const Model &model, int package, int index) {
    if (model.libraries() == 0)
        return "";
    return " implements=\"" + library_name(package % model.libraries()) + ":1.0/" +
           resource_name(index) + "\"";
}

std::string implementation(const Model &model, int package) {
    std::string resources;
    for (int i = 0; i < Model::kResourcesEach; i++) {
        const int resource = package * Model::kResourcesEach + i;
        resources += "    <managedResource name=\"" + resource_name(resource) + "\"" +
                     implements(model, package, i) + ">\n" + package_attributes() +
                     references(model, resource) + "    </managedResource>\n";
    }
    return package_of("oru2dImpl", numbered("com.example.net", package), resources);
}

// ---- Modules ----

std::string leaf(const char *name, const Kind &kind) {
    return std::string("      leaf ") + name + " { " + kind.yang + " }\n";
}

// A reference is a list of pointers at other instances.
std::string pointers(const std::string &name) {
    return "    leaf-list " + name + " { type instance-identifier; }\n";
}

std::string list(const Model &model, int resource) {
    std::string text =
        "  list " + resource_name(resource) + " {\n    key id;\n" + leaf("id", kKey) +
        "    container config {\n" + each_attribute(kConfigNames, kConfigKinds, leaf) +
        "    }\n    container state {\n      config false;\n" +
        each_attribute(kStateNames, kStateKinds, leaf) + "    }\n" + pointers("peer");
    for (int child : model.children(resource))
        text += pointers(numbered("r", child));
    return text + "  }\n";
}

std::string module(const Model &model, int index) {
    const std::string name = numbered("m", index);
    std::string text = "module " + name +
                       " {\n  yang-version 1.1;\n  namespace \"urn:example:" + name +
                       "\";\n  prefix " + name + ";\n" + kModuleTypes;
    for (int i = 0; i < Model::kResourcesEach; i++)
        text += list(model, index * Model::kResourcesEach + i);
    return text + "}\n";
}

}  // namespace

std::string Model::name(int resource) const {
    return numbered("com.example.net", resource / kResourcesEach) + ":1.0/" +
           resource_name(resource);
}

std::string Model::uri(int resource) const {
    if (resource == 0)
        return "";
    return uri((resource - 1) / kChildrenEach) + numbered("/r", resource) + ";id=7";
}

std::vector<int> Model::children(int resource) const {
    std::vector<int> children;
    const int first = resource * kChildrenEach + 1;
    for (int i = first; i < first + kChildrenEach && i < implementations(); i++)
        children.push_back(i);
    return children;
}

Folder::Folder()
    : path_((std::filesystem::temp_directory_path() / "oruapi_bench_XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr)
        std::abort();
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void Folder::add(const std::string &name, const std::string &text) {
    files_.push_back(path_ + "/" + name);
    std::ofstream(files_.back()) << text;
}

void write_packages(const Model &model, Folder &folder) {
    for (int i = 0; i < model.libraries(); i++)
        folder.add(numbered("lib", i) + ".oru2d", library(i));
    for (int i = 0; i < model.packages - model.libraries(); i++)
        folder.add(numbered("net", i) + ".oru2d", implementation(model, i));
}

void write_modules(const Model &model, Folder &folder) {
    for (int i = 0; i < model.packages; i++)
        folder.add(numbered("m", i) + ".yang", module(model, i));
}

}  // namespace oru::bench
