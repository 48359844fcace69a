// Lookups by name, through the whole store and within a record, and the children of a resource.
#include <oru/mr_meta.h>
#include <oru/value.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

constexpr char kLibrary[] =
    "<typeDef><enumerationType name='State'><s value='up' intValue='4'/></enumerationType>"
    "<simpleType name='Plain' base='int'/></typeDef>"
    "<configDataDef><configData name='Cfg'><attribute name='a' type='int'/></configData>"
    "</configDataDef><operationalDataDef><operationalData name='Ops'>"
    "<attribute name='b' type='int'/></operationalData></operationalDataDef>"
    "<managedResourceDef><managedResource name='Port'>"
    "<key><attribute name='id' type='int'/></key><key><attribute name='alias' type='int'/></key>"
    "<reference name='link' targetIsA='Port' targetRole='peer'/>"
    "<configData><attribute name='mtu' type='int'/><attribute name='both' type='int'/>"
    "<attribute name='g.x' type='int'/></configData>"
    "<operationalData><attribute name='both' type='int'/><attribute name='rate' type='int'/>"
    "<attribute name='id' type='int'/></operationalData>"
    "</managedResource></managedResourceDef>";

class Lookup : public StoreTest {
  protected:
    void SetUp() override {
        folder.write("a.oru2d", lib_package(kLibrary, "com.x"));
        ASSERT_NE(load(), nullptr);
        package = oru_md_get_pkg_meta_by_name("com.x");
        ASSERT_NE(package, nullptr);
        port = package->mrs;
    }
    ORUMdPkgMeta *package = nullptr;
    ORUMdMrMeta *port = nullptr;
};

TEST_F(Lookup, FindsResourcesByEveryFormOfTheirName) {
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x/Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x:1.0/Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x:9.9/Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x:/Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x.Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x/Port.mtu"), port);
}

TEST_F(Lookup, NameWithoutPackageOrEntityFindsNothing) {
    for (const char *name :
         {"Port", "", "/", "com.x/", "/Port", "com.y/Port", "com.x/None", "com.x.Port.mtu"}) {
        EXPECT_EQ(oru_md_get_mr_meta_by_name(name), nullptr) << name;
        EXPECT_EQ(oru_md_get_cd_meta_by_name(name), nullptr) << name;
        EXPECT_EQ(oru_md_get_od_meta_by_name(name), nullptr) << name;
        EXPECT_EQ(oru_md_get_typedef_meta_by_name(name), nullptr) << name;
        EXPECT_EQ(oru_md_get_attr_meta_by_name(name), nullptr) << name;
        EXPECT_EQ(oru_md_get_ref_meta_by_name(name), nullptr) << name;
    }
}

TEST_F(Lookup, PackageNameIsTakenAsItStands) {
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.x"), package);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.x:1.0"), nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.x/Port"), nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name(nullptr), nullptr);
}

TEST_F(Lookup, FindsDefinitionsEachInItsChain) {
    EXPECT_EQ(oru_md_get_cd_meta_by_name("com.x/Cfg"), package->cds);
    EXPECT_EQ(oru_md_get_od_meta_by_name("com.x/Cfg"), nullptr);
    EXPECT_EQ(oru_md_get_od_meta_by_name("com.x/Ops"), package->ods);
    EXPECT_EQ(oru_md_get_cd_meta_by_name("com.x/Ops"), nullptr);
}

TEST_F(Lookup, FindsAttributesAndReferences) {
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x:1/Port.mtu"), port->cd_attrs);
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x/Port.g.x"), port->cd_attrs->next->next);
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x/Port"), nullptr);
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x/Port."), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_by_name("com.x/Port."), nullptr);
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x/Port.link"), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_by_name("com.x/Port.link"), port->refs);
    EXPECT_EQ(oru_md_get_ref_meta_by_name("com.x/Port.mtu"), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_by_name("com.x/None.link"), nullptr);
    EXPECT_EQ(oru_md_get_attr_meta_by_name(nullptr), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_by_name(nullptr), nullptr);
}

TEST_F(Lookup, FindsTypesAndTheValuesOfLabels) {
    EXPECT_EQ(oru_md_get_typedef_meta_by_name("com.x/State"), package->typedefs);
    EXPECT_EQ(oru_md_get_typedef_meta_by_name("com.x.State"), package->typedefs);
    EXPECT_EQ(oru_md_get_typedef_meta_by_name(nullptr), nullptr);
    int32_t code = 0;
    auto *up = oru_md_get_enum_value_by_name("com.x:1.0/State.up");
    ASSERT_NE(up, nullptr);
    EXPECT_EQ(oru_do_value_get_int(up, &code), 4);
    EXPECT_EQ(oru_md_get_enum_value_by_name("com.x.State.up"), up);
    for (const char *name : {"com.x/State.down", "com.x/State", "com.x/Plain.up", "up", ""})
        EXPECT_EQ(oru_md_get_enum_value_by_name(name), nullptr) << name;
    EXPECT_EQ(oru_md_get_enum_value_by_name(nullptr), nullptr);
}

TEST_F(Lookup, WithoutAStoreNothingIsFound) {
    oru_md_free();
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.x"), nullptr);
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.x/Port"), nullptr);
    EXPECT_EQ(oru_md_get_cd_meta_by_name("com.x/Cfg"), nullptr);
    EXPECT_EQ(oru_md_get_od_meta_by_name("com.x/Ops"), nullptr);
    EXPECT_EQ(oru_md_get_attr_meta_by_name("com.x/Port.mtu"), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_by_name("com.x/Port.link"), nullptr);
    EXPECT_EQ(oru_md_get_typedef_meta_by_name("com.x/State"), nullptr);
    EXPECT_EQ(oru_md_get_enum_value_by_name("com.x/State.up"), nullptr);
}

TEST_F(Lookup, WithoutMemoryNothingIsFound) {
    sweep_oom([this] {
        auto *found = oru_md_get_mr_meta_by_name("com.x/Port");
        EXPECT_EQ(found, oom_hit() ? nullptr : port);
    });
    sweep_oom([] {
        auto *found = oru_md_get_enum_value_by_name("com.x/State.up");
        EXPECT_EQ(found == nullptr, oom_hit());
    });
}

TEST_F(Lookup, WithinAPackage) {
    auto *name = oru_do_name_new("Port");
    EXPECT_EQ(oru_md_get_mr_meta(package, name), port);
    EXPECT_EQ(oru_md_get_mr_meta_w_str(package, "Port"), port);
    EXPECT_EQ(oru_md_get_mr_meta_w_str(package, "port"), nullptr);
    EXPECT_EQ(oru_md_get_pkg_cd_meta(package, name), nullptr);
    EXPECT_EQ(oru_md_get_pkg_cd_meta_w_str(package, "Cfg"), package->cds);
    EXPECT_EQ(oru_md_get_pkg_od_meta(package, name), nullptr);
    EXPECT_EQ(oru_md_get_pkg_od_meta_w_str(package, "Ops"), package->ods);
    EXPECT_EQ(oru_md_get_typedef_meta(package, name), nullptr);
    EXPECT_EQ(oru_md_get_typedef_meta_w_str(package, "Plain"), package->typedefs->next);
    oru_do_name_deref(name);
}

TEST_F(Lookup, WithinAResourceInTheOrderOfItsChains) {
    auto *cfg_both = port->cd_attrs->next, *ops_both = port->od_attrs;
    auto *both = oru_do_name_new("both");
    EXPECT_EQ(oru_md_get_attr_meta(port, both), cfg_both);
    EXPECT_EQ(oru_md_get_cd_attr_meta(port, both), cfg_both);
    EXPECT_EQ(oru_md_get_od_attr_meta(port, both), ops_both);
    EXPECT_EQ(oru_md_get_key_attr_meta(port, both), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta(port, both), nullptr);
    oru_do_name_deref(both);
    EXPECT_EQ(oru_md_get_attr_meta_w_str(port, "rate"), port->od_attrs->next);
    EXPECT_EQ(oru_md_get_attr_meta_w_str(port, "id"), port->od_attrs->next->next);
    EXPECT_EQ(oru_md_get_key_attr_meta_w_str(port, "id"), port->primary_keys);
    EXPECT_EQ(oru_md_get_key_attr_meta_w_str(port, "alias"), port->secondary_keys);
    EXPECT_EQ(oru_md_get_attr_meta_w_str(port, "alias"), port->secondary_keys);
    EXPECT_EQ(oru_md_get_cd_attr_meta_w_str(port, "rate"), nullptr);
    EXPECT_EQ(oru_md_get_od_attr_meta_w_str(port, "mtu"), nullptr);
    EXPECT_EQ(oru_md_get_ref_meta_w_str(port, "link"), port->refs);
    EXPECT_EQ(oru_md_get_attr_meta_w_str(port, "none"), nullptr);
}

TEST_F(Lookup, NullIsRefusedByName) {
    auto *name = oru_do_name_new("a");
    EXPECT_ASSERTION(oru_md_get_mr_meta_by_name(nullptr), "mr_qname");
    EXPECT_ASSERTION(oru_md_get_cd_meta_by_name(nullptr), "cd_qname");
    EXPECT_ASSERTION(oru_md_get_od_meta_by_name(nullptr), "od_qname");
    EXPECT_ASSERTION(oru_md_get_mr_meta(nullptr, name), "pkg_meta");
    EXPECT_ASSERTION(oru_md_get_mr_meta(package, nullptr), "mr_name");
    EXPECT_ASSERTION(oru_md_get_mr_meta_w_str(nullptr, "a"), "pkg_meta");
    EXPECT_ASSERTION(oru_md_get_mr_meta_w_str(package, nullptr), "mr_name");
    EXPECT_ASSERTION(oru_md_get_pkg_cd_meta(nullptr, name), "pkg_meta");
    EXPECT_ASSERTION(oru_md_get_pkg_cd_meta(package, nullptr), "cd_name");
    EXPECT_ASSERTION(oru_md_get_pkg_od_meta(nullptr, name), "pkg_meta");
    EXPECT_ASSERTION(oru_md_get_pkg_od_meta(package, nullptr), "od_name");
    EXPECT_ASSERTION(oru_md_get_typedef_meta(nullptr, name), "pkg_meta");
    EXPECT_ASSERTION(oru_md_get_typedef_meta(package, nullptr), "type_name");
    EXPECT_ASSERTION(oru_md_get_attr_meta(nullptr, name), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_attr_meta(port, nullptr), "attr_name");
    EXPECT_ASSERTION(oru_md_get_attr_meta_w_str(nullptr, "a"), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_attr_meta_w_str(port, nullptr), "attr_name");
    EXPECT_ASSERTION(oru_md_get_cd_attr_meta(nullptr, name), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_od_attr_meta(nullptr, name), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_key_attr_meta(nullptr, name), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_ref_meta(nullptr, name), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_ref_meta(port, nullptr), "ref_name");
    EXPECT_ASSERTION(oru_md_get_ref_meta_w_str(port, nullptr), "ref_name");
    EXPECT_ASSERTION(oru_md_has_child_mr(nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_child_mr_meta_list(nullptr, nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_get_descendant_mr_meta_list(nullptr, nullptr), "mr_meta");
    oru_do_name_deref(name);
}

// ---- Children ----

class Children : public StoreTest {
  protected:
    static std::vector<std::string> listed(ORUDoMrMetaList *list) {
        std::vector<std::string> names;
        for (int32_t i = 0; i < oru_do_mr_meta_list_get_len(list); ++i)
            names.push_back(
                text(oru_do_mr_meta_get_mr_name(oru_do_mr_meta_list_get_mr_meta(list, i))));
        oru_do_mr_meta_list_deref(list);
        return names;
    }
};

TEST_F(Children, AreListedOneLevelOrTwoDeep) {
    const auto child = [](const char *name) {
        return "<reference name='" + std::string(name) + "' targetIsA='" + name + "'/>";
    };
    load_lib(resources(resource("A", child("B") + child("None") +
                                         "<reference name='p' "
                                         "targetIsA='D' targetRole='peer'/>" +
                                         child("C")) +
                       resource("B", child("D")) + resource("C", "") + resource("D", child("E")) +
                       resource("E", "")));
    auto *a = oru_md_get_mr_meta_by_name("com.lib/A");
    auto *c = oru_md_get_mr_meta_by_name("com.lib/C");
    EXPECT_EQ(oru_md_has_child_mr(a), 1);
    EXPECT_EQ(oru_md_has_child_mr(c), 0);
    auto *children = oru_do_mr_meta_list_new(), *descendants = oru_do_mr_meta_list_new();
    oru_md_get_child_mr_meta_list(a, children);
    oru_md_get_descendant_mr_meta_list(a, descendants);
    oru_md_get_child_mr_meta_list(a, nullptr);
    oru_md_get_descendant_mr_meta_list(a, nullptr);
    EXPECT_EQ(listed(children), (std::vector<std::string>{"B", "C"}));
    EXPECT_EQ(listed(descendants), (std::vector<std::string>{"B", "D", "C"}));
}

}  // namespace
