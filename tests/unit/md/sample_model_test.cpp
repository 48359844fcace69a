// The packages and the data of examples/network: they load without a word, leave no name
// unresolved, show every construct of the format, and fit each other.
#include <oru/act_meta.h>
#include <oru/json.h>
#include <oru/mr_meta.h>
#include <oru/prop_meta.h>
#include <oru/properties.h>
#include <oru/properties_list.h>
#include <oru/typedef_meta.h>
#include <oru/uri.h>
#include <oru/util.h>
#include <oru/value.h>
#include <oru/vlist.h>
#include <oruplatform/poolheap.h>

#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Set = std::set<std::string>;

constexpr char kSystem[] = "com.example.network:1.0/System";

class SampleModel : public testing::Test {
  protected:
    void SetUp() override {
        EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
        ASSERT_NE(bundle, nullptr);
        oru_md_set_root_mr_type(kSystem);
    }
    void TearDown() override {
        oru_md_free();
        oru_md_set_root_mr_type("com.tarvex.lumo.orucore/System");
    }

    void for_each_mr(const std::function<void(ORUMdMrMeta &)> &body) {
        for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
            for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
                body(*mr);
        }
    }

    static ORUMdMrMeta *mr(const std::string &name) {
        return oru_md_get_mr_meta_by_name(name.c_str());
    }

    ORUMdPkgBundle *bundle = nullptr;
};

TEST(SampleModelLoad, SaysNothingButDetails) {
    TraceCapture traces(6);
    ORUMdPkgBundle *bundle = nullptr;
    EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
    EXPECT_NE(bundle, nullptr);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
    oru_md_free();
}

TEST_F(SampleModel, HasThreePackagesOfEachKind) {
    std::map<int32_t, int> kinds, resources;
    for (auto *package = bundle->pkgs; package != nullptr; package = package->next)
        ++kinds[package->type];
    for_each_mr([&](const ORUMdMrMeta &record) { ++resources[record.package->type]; });
    EXPECT_EQ(kinds[ORU_MD_PKG_LIBRARY], 3);
    EXPECT_EQ(kinds[ORU_MD_PKG_IMPL], 3);
    EXPECT_EQ(resources[ORU_MD_PKG_LIBRARY], 7);
    EXPECT_EQ(resources[ORU_MD_PKG_IMPL], 31);
}

void expect_typed(ORUDoPropMetaList *list, const std::string &owner) {
    for (int32_t i = 0; list != nullptr && i < oru_do_prop_meta_list_get_len(list); ++i) {
        auto *prop = oru_do_prop_meta_list_get_prop_meta(list, i);
        EXPECT_NE(oru_do_prop_meta_get_typecode(prop), ORU_DO_TYPE_UNKNOWN)
            << owner << " " << text(oru_do_prop_meta_get_name(prop));
    }
}

TEST_F(SampleModel, LeavesNoNameUnresolved) {
    for_each_mr([](const ORUMdMrMeta &record) {
        const std::string name = text(oru_do_mr_meta_get_mr_fq_name(record.do_mr_meta));
        EXPECT_EQ(record.parent_name != nullptr, record.parent_mr != nullptr) << name;
        for (auto *ref = record.refs; ref != nullptr; ref = ref->next)
            EXPECT_NE(ref->target_mr, nullptr) << name << " " << text(ref->name);
        auto *props = oru_do_prop_meta_list_new();
        oru_do_mr_meta_get_all_prop_meta(record.do_mr_meta, props);
        expect_typed(props, name);
        oru_do_prop_meta_list_deref(props);
        auto *actions = oru_do_mr_meta_get_act_meta_list(record.do_mr_meta);
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        if (actions == nullptr)
            return;
        for (oru_do_act_meta_list_iter(actions, &iter); oru_do_act_meta_list_has_next(&iter);) {
            auto *action = oru_do_act_meta_list_get_next(&iter);
            expect_typed(oru_do_act_meta_get_in_params(action), name);
            expect_typed(oru_do_act_meta_get_out_params(action), name);
            expect_typed(oru_do_act_meta_get_err_params(action), name);
        }
    });
}

TEST_F(SampleModel, DescribesEveryNamedType) {
    int described = 0;
    for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
        for (auto *base = package->cds; base != nullptr; base = base->next)
            EXPECT_EQ(base->extends_name != nullptr, base->extends_cod != nullptr);
        for (auto *base = package->ods; base != nullptr; base = base->next)
            EXPECT_EQ(base->extends_name != nullptr, base->extends_cod != nullptr);
        for (auto *type = package->typedefs; type != nullptr; type = type->next, ++described) {
            EXPECT_NE(oru_md_get_do_typedef_meta(type), nullptr) << text(type->name);
            EXPECT_NE(type->typecode, ORU_DO_TYPE_UNKNOWN) << text(type->name);
            for (auto *member = type->complex_els; member != nullptr; member = member->next) {
                EXPECT_TRUE(member->typecode != ORU_DO_TYPE_UNKNOWN ||
                            member->typedef_meta != nullptr)
                    << text(type->name) << " " << text(member->name);
            }
        }
    }
    EXPECT_EQ(described, 13 + 9 + 7 + 1);
}

// ---- Every construct ----

// What stands in the packages: elements, `element@attribute`, `attribute=word` for the attributes
// that take words, and the texts of conditions and constraints.
struct Constructs {
    Set names;
    std::string conditions;
    std::string constraints;

    Constructs() {
        for (const auto &entry : std::filesystem::directory_iterator(NETWORK_PACKAGES))
            read(entry.path());
    }

  private:
    void read(const std::filesystem::path &path) {
        std::stringstream all;
        all << std::ifstream(path).rdbuf();
        const std::string content = all.str();
        for (size_t at = 0; (at = content.find('<', at)) != std::string::npos;) {
            const bool is_comment = content.compare(at, 4, "<!--") == 0;
            const size_t end = content.find(is_comment ? "-->" : ">", at);
            if (content[at + 1] != '!' && content[at + 1] != '?' && content[at + 1] != '/')
                read_element(content.substr(at + 1, end - at - 1),
                             content.substr(end + 1, content.find('<', end) - end - 1));
            at = end;
        }
    }
    // `tag` is what stands between the angles, `content` the text behind them.
    void read_element(const std::string &tag, const std::string &content) {
        const std::string element = tag.substr(0, tag.find_first_of(" \n/"));
        names.insert(element);
        size_t quote = element.size();
        while ((quote = tag.find('"', quote)) != std::string::npos) {
            const size_t name = tag.find_last_of(" \n", quote) + 1;
            const size_t end = tag.find('"', quote + 1);
            read_attribute(element, tag.substr(name, quote - 1 - name),
                           tag.substr(quote + 1, end - quote - 1));
            quote = end + 1;
        }
        if (element == "condition")
            conditions += content + "\n";
        if (element == "constraint")
            constraints += content + "\n";
    }
    void read_attribute(const std::string &element, const std::string &name,
                        const std::string &value) {
        names.insert(element + "@" + name);
        names.insert(element + "@" + name + "=" + value);
        if (name == "constraint")
            constraints += value + "\n";
    }
};

TEST(SampleModelText, ShowsEveryElementAndAttributeOfTheFormat) {
    const Constructs found;
    const std::map<std::string, Set> format = {
        {"oru2dLib", {"package", "version", "schemaVersion"}},
        {"oru2dImpl", {"package", "version", "schemaVersion"}},
        {"typeDef", {}},
        {"simpleType", {"name", "base", "constraint"}},
        {"enumerationType", {"name"}},
        {"state", {"value", "intValue"}},
        {"complexType", {"name"}},
        {"sequence", {}},
        {"choice", {}},
        {"member", {"name", "type", "constraint"}},
        {"configDataDef", {}},
        {"operationalDataDef", {}},
        {"configData", {"name", "persistent", "extends", "implements", "ref"}},
        {"operationalData", {"name", "extends", "implements", "ref"}},
        {"attribute", {"name", "type", "multiplicity", "maxAccess", "constraint"}},
        {"managedResourceDef", {}},
        {"managedResource", {"name", "maxAccess", "extends", "implements"}},
        {"key", {}},
        {"reference",
         {"name", "targetIsA", "targetRole", "multiplicity", "maxAccess", "constraint"}},
        {"action", {"name"}},
        {"inputParameter", {"name", "type", "multiplicity"}},
        {"outputParameter", {"name", "type", "multiplicity"}},
        {"errorParameter", {"name", "type", "multiplicity"}},
        {"assert", {}},
        {"condition", {}},
        {"constraint", {}},
    };
    for (const auto &[element, attributes] : format) {
        EXPECT_TRUE(found.names.count(element)) << element;
        for (const auto &attribute : attributes)
            EXPECT_TRUE(found.names.count(element + "@" + attribute))
                << element << " " << attribute;
    }
    EXPECT_TRUE(found.names.count("facility@value=kernel"));  // a label without a number
    EXPECT_FALSE(found.names.count("facility@intValue"));
}

TEST(SampleModelText, ShowsEveryWordThatAnAttributeMayHave) {
    const Constructs found;
    const std::map<std::string, Set> words = {
        {"managedResource@maxAccess",
         {"read-only", "read-write", "read-create", "read-update", "oper-data", "[CRUD]",
          "[-RU-]"}},
        {"attribute@maxAccess", {"read-only", "read-create", "read-write"}},
        {"reference@maxAccess", {"read-only", "read-create", "oper-data", "read-write"}},
        {"reference@targetRole", {"child", "parent", "peer"}},
        {"reference@multiplicity", {"many"}},
        {"attribute@multiplicity", {"many", "one"}},
        {"configData@persistent", {"false"}},
    };
    for (const auto &[attribute, values] : words) {
        for (const auto &value : values)
            EXPECT_TRUE(found.names.count(attribute + "=" + value)) << attribute << " " << value;
    }
}

TEST(SampleModelText, ShowsEveryBuiltInTypeThatAnAttributeMayHave) {
    const Constructs found;
    for (const char *type :
         {"unsignedByte", "byte",     "unsignedShort", "short",     "unsignedInt", "int",
          "unsignedLong", "long",     "string",        "boolean",   "float",       "double",
          "dateTime",     "duration", "anyURI",        "hexBinary", "ipAddress",   "nsapAddress",
          "mrURI",        "collURI",  "bits"}) {
        EXPECT_TRUE(found.names.count(std::string("attribute@type=") + type)) << type;
    }
}

TEST(SampleModelText, ShowsEveryWordOfConditionsAndConstraints) {
    const Constructs found;
    for (const char *word : {" and ", " or ", "not ", "(", "|", "..", "*", ".values(", ".size(",
                             "strlen(", ".regex(", ".is_null()", ".not_null()"})
        EXPECT_NE(found.conditions.find(word), std::string::npos) << word;
    for (const char *word : {"values(", "size(", "strlen(", "regex(", "ordered_by(user)",
                             "unique()", "default(", "default({", "|", "..", "..*", "Severity."})
        EXPECT_NE(found.constraints.find(word), std::string::npos) << word;
    // A condition on the attribute itself, and one on another attribute.
    EXPECT_NE(found.conditions.find(" strlen("), std::string::npos);
}

// ---- What the model says ----

Set impl_names(const std::string &library) {
    Set names;
    auto *record = oru_md_get_mr_meta_by_name(library.c_str());
    for (auto *entry = record->impl_mr_metas; entry != nullptr; entry = entry->next)
        names.insert(oru_md_mr_meta_to_string(entry->mr));
    return names;
}

TEST_F(SampleModel, LibraryResourcesKnowTheirImplementations) {
    EXPECT_EQ(impl_names("com.example.network.lib/Port"), Set{"Port"});
    EXPECT_EQ(impl_names("com.example.network.lib/Equipment"), Set{});
    EXPECT_EQ(impl_names("com.example.network.lib/Module"), Set{"PowerSupply"});
    EXPECT_EQ(impl_names("com.example.network.routing.lib/Protocol"),
              (Set{"StaticRouting", "Ospf", "Bgp"}));
    EXPECT_EQ(impl_names("com.example.network.management.lib/LogTarget"),
              (Set{"ConsoleLog", "FileLog", "HostLog"}));
    EXPECT_EQ(impl_names("com.example.network.management.lib/LogFilter"),
              (Set{"SeverityFilter", "FacilityFilter"}));
}

TEST_F(SampleModel, OnlyProtocolsHaveConstantKeys) {
    std::map<std::string, std::string> keys;
    for_each_mr([&](ORUMdMrMeta &record) {
        int32_t rc = 0;
        if (auto *key = oru_md_get_const_key(&record))
            keys[oru_md_mr_meta_to_string(&record)] = oru_do_value_get_string(key, &rc);
    });
    const std::map<std::string, std::string> expected = {
        {"StaticRouting", "static"}, {"Ospf", "ospf"}, {"Bgp", "bgp"}};
    EXPECT_EQ(keys, expected);
}

TEST_F(SampleModel, MirrorsAloneAreNotPersistent) {
    Set names;
    for_each_mr([&](const ORUMdMrMeta &record) {
        if (oru_do_mr_meta_is_non_persistent_mr(record.do_mr_meta) != 0)
            names.insert(text(record.name));
    });
    EXPECT_EQ(names, Set{"Mirror"});
    auto *chassis = mr("com.example.network/Chassis");
    EXPECT_EQ(oru_do_prop_meta_is_persistent(
                  oru_md_get_cd_attr_meta_w_str(chassis, "service.beacon")->prop_meta),
              0);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(
                  oru_md_get_cd_attr_meta_w_str(chassis, "description")->prop_meta),
              1);
}

TEST_F(SampleModel, AccessIsAsWritten) {
    const std::map<std::string, int> expected = {
        {"com.example.network/System", 6},      {"com.example.network/Port", 15},
        {"com.example.network/PowerSupply", 6}, {"com.example.network/SshKey", 13},
        {"com.example.network/Fan", 0},         {"com.example.network/Link", 15},
        {"com.example.network.lib/Module", 4}};
    for (const auto &[name, access] : expected)
        EXPECT_EQ(oru_do_mr_meta_get_max_access(mr(name)->do_mr_meta), access) << name;
}

TEST_F(SampleModel, ImplementationsHaveWhatTheirLibraryDeclares) {
    auto *host = mr("com.example.network.management/HostLog");
    EXPECT_NE(oru_md_get_key_attr_meta_w_str(host, "name"), nullptr);
    for (const char *name : {"enabled", "severity", "endpoint", "transport", "tlsSecret", "retry"})
        EXPECT_NE(oru_md_get_cd_attr_meta_w_str(host, name), nullptr) << name;
    EXPECT_NE(oru_md_get_od_attr_meta_w_str(host, "written"), nullptr);
    EXPECT_EQ(text(oru_md_get_ref_meta_w_str(host, "filters")->target_mr->name), "LogFilter");
    auto *ospf = mr("com.example.network.routing/Ospf");
    EXPECT_NE(oru_md_get_cd_attr_meta_w_str(ospf, "preference"), nullptr);
    EXPECT_EQ(ospf->primary_keys->next, nullptr);  // its own key stands for the library's
}

TEST_F(SampleModel, KeysComeInGroups) {
    auto *interface = mr("com.example.network.routing/Interface");
    auto *port = interface->secondary_keys->prop_meta;
    auto *unit = interface->secondary_keys->next->prop_meta;
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(port), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(unit), port);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(unit), 2);
    EXPECT_EQ(oru_do_prop_meta_is_primary_key(unit), 0);
    auto *route = mr("com.example.network.routing/Route");
    EXPECT_EQ(text(route->primary_keys->name), "destination");
    EXPECT_EQ(text(route->primary_keys->next->name), "protocol");
}

// ---- The data ----

// The records of the sample data.
class SampleData : public SampleModel {
  protected:
    SampleData() {
        char *json = nullptr;
        EXPECT_EQ(oru_read_file(NETWORK_DATA, &json), 0);
        ORUDoError *error = nullptr;
        list = oru_do_properties_list_from_json(
            json, static_cast<int32_t>(std::string_view(json).size()), &error);
        EXPECT_EQ(error, nullptr);
        ph_free_named(json);
    }
    ~SampleData() override { oru_do_properties_list_deref(list); }

    void for_each_row(const std::function<void(ORUDoProperties *)> &body) {
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_properties_list_iter(list, &iter); oru_do_properties_list_has_next(&iter);)
            body(oru_do_properties_list_get_next(&iter));
    }

    static std::string type_of(ORUDoProperties *row) {
        int32_t rc = 0;
        return oru_do_properties_get_string(row, ORU_DO_NAME_MR, &rc);
    }
    static std::string uri_of(ORUDoProperties *row) {
        int32_t rc = 0;
        return oru_do_uri_get_uri_str(oru_do_properties_get_mr_uri(row, ORU_DO_NAME_URI, &rc));
    }

    ORUDoPropertiesList *list = nullptr;
};

TEST_F(SampleData, HasResourcesOfEveryType) {
    Set types, uris;
    for_each_row([&](ORUDoProperties *row) {
        types.insert(type_of(row));
        EXPECT_TRUE(uris.insert(uri_of(row)).second) << uri_of(row);
    });
    EXPECT_EQ(uris.size(), 107u);
    for_each_mr([&](const ORUMdMrMeta &record) {
        const std::string name = text(oru_do_mr_meta_get_mr_fq_name(record.do_mr_meta));
        EXPECT_EQ(types.count(name), record.is_lib != 0 ? 0u : 1u) << name;
    });
}

// Walks the segments behind the location; where a library resource or the data has to tell more,
// the walk goes on from the resource that stands there.
void expect_leads_to(const std::string &address, ORUMdMrMeta *target,
                     const std::map<std::string, std::string> &types) {
    const Uri uri(oru_do_uri_new(address.c_str()));
    int32_t rest = oru_do_uri_get_segment_count(uri.get()) - 1;
    ORUMdMrMeta *start = nullptr;
    while (rest > 0) {
        int32_t left = 0;
        auto *found =
            oru_md_get_mr_meta_by_uri(uri.get(), rest, start, &left, nullptr, nullptr, nullptr);
        ASSERT_NE(found, nullptr) << address;
        std::string prefix = address;
        for (int32_t i = 0; i < left; ++i)
            prefix.erase(prefix.rfind('/'));
        ASSERT_TRUE(types.count(prefix)) << prefix << " has no resource";
        start = oru_md_get_mr_meta_by_name(types.at(prefix).c_str());
        EXPECT_TRUE(found == start || oru_md_mr_meta_get_impl_mr_meta(found, start) != nullptr)
            << prefix;
        rest = left;
    }
    if (start != nullptr) {
        EXPECT_EQ(start, target) << address;
    }
}

TEST_F(SampleData, AddressesLeadToTheirResources) {
    std::map<std::string, std::string> types;
    for_each_row([&](ORUDoProperties *row) { types[uri_of(row)] = type_of(row); });
    for (const auto &[address, type] : types)
        expect_leads_to(address, mr(type), types);
}

// An array for `many`, of elements of the type; many references hold single ones.
void expect_fits(ORUDoPropMeta *prop, ORUDoValue *value, const std::string &where) {
    const int32_t type = oru_do_prop_meta_get_typecode(prop);
    const bool many = oru_do_prop_meta_get_multiplicity(prop) == ORU_MULTIPLICITY_MANY;
    if (!many) {
        EXPECT_EQ(oru_do_value_get_type(value), type) << where;
        return;
    }
    int32_t rc = 0;
    auto *elements = oru_do_value_get_array(value, &rc);
    ASSERT_EQ(rc, 0) << where;
    for (int32_t i = 0; i < oru_do_vlist_get_len(elements); ++i) {
        EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(elements, i)),
                  type == ORU_DO_TYPE_COLL_URI ? ORU_DO_TYPE_MR_URI : type)
            << where;
    }
}

TEST_F(SampleData, ValuesHaveTheTypesOfTheirAttributes) {
    for_each_row([&](ORUDoProperties *row) {
        auto *meta = mr(type_of(row))->do_mr_meta;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_properties_iter(row, &iter); oru_do_properties_has_next(&iter);) {
            auto *entry = oru_do_properties_get_next(&iter);
            const char *name = oru_do_property_get_name_string(entry);
            if (oru_attribute_is_builtin(name) != 0)
                continue;
            auto *prop = oru_do_mr_meta_get_prop_meta_str(meta, name);
            const std::string where = uri_of(row) + " " + name;
            ASSERT_NE(prop, nullptr) << where;
            expect_fits(prop, oru_do_property_get_value(entry), where);
        }
    });
}

// Every reference leads to a resource that there is, of the type that the model tells.
TEST_F(SampleData, PeersAreThere) {
    std::map<std::string, std::string> types;
    for_each_row([&](ORUDoProperties *row) { types[uri_of(row)] = type_of(row); });
    int peers = 0;
    const auto expect_peer = [&](ORUMdRefMeta *ref, ORUDoUri *uri) {
        const std::string address = oru_do_uri_get_uri_str(uri);
        ASSERT_TRUE(types.count(address)) << address;
        EXPECT_EQ(mr(types[address]), ref->target_mr) << address;
        ++peers;
    };
    for_each_row([&](ORUDoProperties *row) {
        auto *record = mr(type_of(row));
        for (auto *ref = record->refs; ref != nullptr; ref = ref->next) {
            auto *value = oru_do_properties_get_value_n(row, ref->name);
            if (value == nullptr)
                continue;
            int32_t rc = 0;
            if (oru_do_prop_meta_get_multiplicity(ref->prop_meta) != ORU_MULTIPLICITY_MANY) {
                expect_peer(ref, oru_do_value_get_mr_uri(value, &rc));
                continue;
            }
            auto *elements = oru_do_value_get_array(value, &rc);
            for (int32_t i = 0; i < oru_do_vlist_get_len(elements); ++i)
                expect_peer(ref, oru_do_value_get_mr_uri(oru_do_vlist_get_value(elements, i), &rc));
        }
    });
    EXPECT_GT(peers, 40);
}

}  // namespace
