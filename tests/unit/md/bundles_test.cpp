// Loading bundles: which are new, which stay, which go, and what becomes of the store.
#include <oru/mr_meta.h>
#include <oru/prop_meta.h>
#include <oruplatform/poolheap.h>

#include <algorithm>

#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;

using Bundles = BundleTest;

const char *const kOnlyA[] = {"A", nullptr};
const char *const kAB[] = {"A", "B", nullptr};
const char *const kOnlyB[] = {"B", nullptr};

TEST_F(Bundles, AreLoadedInTheOrderOfTheList) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", impl_package("", "pb"));
    TraceCapture traces;
    ORUMdPkgBundle *first = nullptr, *removed = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(kAB, &first, &removed), 0);
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->name, "A");
    EXPECT_STREQ(first->next->name, "B");
    EXPECT_EQ(removed, nullptr);
    const auto details = traces.at(7);
    EXPECT_EQ(
        std::count(details.begin(), details.end(), "Bundle A is new, scanning for metadata\n"), 2);
    EXPECT_TRUE(traces.has(7, "Scanning A//usr/halden/etc//oru2d for metadata\n"));
    EXPECT_FALSE(traces.has(7, "Pending requests terminated, holding new requests\n"));
}

TEST_F(Bundles, LockIsTakenOnlyWithoutOutputs) {
    write_bundle("A", lib_package("", "pa"));
    TraceCapture traces;
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    EXPECT_TRUE(traces.has(7, "Pending requests terminated, holding new requests\n"));
    EXPECT_TRUE(traces.has(7, "Request lock released\n"));
}

TEST_F(Bundles, KnownOnesStayAndNewOnesAreGiven) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", lib_package("", "pb"));
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    TraceCapture traces;
    ORUMdPkgBundle *first = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(kAB, &first, nullptr), 0);
    EXPECT_TRUE(traces.has(7, "Bundle A confirmed as active\n"));
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->name, "B");
    EXPECT_EQ(oru_md_load_pkg_list(kAB, &first, nullptr), 0);
    EXPECT_EQ(first, nullptr);  // nothing is new
}

TEST_F(Bundles, FirstOneThatIsNotNamedIsHandedOut) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", lib_package("", "pb"));
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    TraceCapture traces;
    ORUMdPkgBundle *removed = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, &removed), 0);
    EXPECT_TRUE(traces.has(7, "Bundle B is not in the new active list and will be removed\n"));
    ASSERT_NE(removed, nullptr);
    EXPECT_STREQ(removed->name, "B");
    EXPECT_EQ(removed->next, nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("pb"), nullptr);
    oru_md_pkg_bundle_delete(removed);
}

TEST_F(Bundles, OnesBehindARemovedOneAreTakenForNew) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", lib_package("", "pb"));
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    TraceCapture traces(3);
    ORUMdPkgBundle *removed = nullptr;
    // A goes, B stays unchecked, is scanned again and collides; with the failure goes the store.
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyB, nullptr, &removed), 10000);
    EXPECT_TRUE(traces.has(3, "Metadata collision detected: pb is already present\n"));
    EXPECT_TRUE(traces.has(3, "Failed to load metadata from B\n"));
    ASSERT_NE(removed, nullptr);
    EXPECT_STREQ(removed->name, "A");
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("pb"), nullptr);
    oru_md_pkg_bundle_delete(removed);
}

TEST_F(Bundles, DeletedOneLeavesTheTableWithAllItsPackages) {
    write_bundle("A", lib_package(resources(resource("L", "")), "pa"));
    write_bundle("B", impl_package(resources(resource("I1", "", "implements='pa/L'")), "p1"));
    write_bundle("B", impl_package(resources(resource("I2", "", "implements='pa/L'")), "p2"),
                 "b.oru2d");
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    auto *library = oru_md_get_mr_meta_by_name("pa/L");
    ASSERT_NE(library->impl_mr_metas, nullptr);
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("p1"), nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("p2"), nullptr);
    EXPECT_EQ(library->impl_mr_metas, nullptr);
}

// What stays has names to resolve again where its links led.
TEST_F(Bundles, DeletedOneLeavesNoLinkToItsRecords) {
    const std::string definitions =
        "<typeDef><simpleType name='T' base='int'/></typeDef>"
        "<configDataDef><configData name='D'><attribute name='a' type='int'/></configData>"
        "</configDataDef><operationalDataDef><operationalData name='O'><attribute name='a' "
        "type='int'/></operationalData></operationalDataDef>";
    const std::string attribute = "<attribute name='t' type='pa.T'/>";
    write_bundle("A", lib_package(definitions + resources(resource("L", "")), "pa"));
    write_bundle(
        "B",
        impl_package(resources(resource("I",
                                        "<reference name='r' targetIsA='pa/L'/><key>" + attribute +
                                            "</key><configData name='c'>" + attribute +
                                            "</configData><operationalData name='o'>" + attribute +
                                            "</operationalData>",
                                        "implements='pa/L'")),
                     "pi"));
    write_bundle("B",
                 lib_package("<typeDef><complexType name='C'><choice><m name='m' type='pa.T'/>"
                             "</choice></complexType></typeDef><configDataDef><configData name='E' "
                             "extends='pa/D'><attribute name='a' type='int'/></configData>"
                             "</configDataDef><operationalDataDef><operationalData name='P' "
                             "extends='pa/O'><attribute name='a' type='int'/></operationalData>"
                             "</operationalDataDef>" +
                                 resources(resource("M", "", "extends='pa/L'")),
                             "pl"),
                 "b.oru2d");
    write_bundle("D", lib_package("", "pD"));
    write_bundle("F", lib_package("", "pF"));
    const char *const other[] = {"D", nullptr}, *const third[] = {"F", nullptr};
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    auto *impl = oru_md_get_mr_meta_by_name("pi/I"), *library = oru_md_get_mr_meta_by_name("pl/M");
    auto *package = oru_md_get_pkg_meta_by_name("pl");
    const auto links = [&] {
        return std::vector<const void *>{impl->parent_mr,
                                         impl->refs->target_mr,
                                         impl->primary_keys->typedef_meta,
                                         impl->cd_attrs->typedef_meta,
                                         impl->od_attrs->typedef_meta,
                                         library->parent_mr,
                                         package->cds->extends_cod,
                                         package->ods->extends_cod,
                                         package->typedefs->complex_els->typedef_meta};
    };
    for (const auto *link : links())
        EXPECT_NE(link, nullptr);
    EXPECT_EQ(oru_md_load_pkg_list(other, nullptr, nullptr), 0);
    EXPECT_EQ(links(), std::vector<const void *>(9));
    EXPECT_EQ(oru_md_load_pkg_list(third, nullptr, nullptr), 0);  // the one that linked goes
    EXPECT_EQ(oru_md_get_mr_meta_by_name("pi/I"), nullptr);
    EXPECT_NE(oru_md_get_pkg_meta_by_name("pF"), nullptr);
}

TEST_F(Bundles, LinksAreResolvedAnewWhenTheirLibraryComesBack) {
    write_bundle("A", lib_package(resources(resource("L", "")), "pa"));
    write_bundle("B", impl_package(resources(resource("I", "", "implements='pa/L'")), "pb"));
    write_bundle("C", lib_package(resources(resource("L", "")), "pa", "2.0"));
    const char *const newer[] = {"C", nullptr};
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    EXPECT_EQ(oru_md_load_pkg_list(newer, nullptr, nullptr), 0);
    auto *library = oru_md_get_mr_meta_by_name("pa/L"), *impl = oru_md_get_mr_meta_by_name("pb/I");
    ASSERT_NE(library, nullptr);
    ASSERT_NE(impl, nullptr);
    EXPECT_STREQ(library->package->version, "2.0");
    EXPECT_EQ(impl->parent_mr, library);
    ASSERT_NE(library->impl_mr_metas, nullptr);
    EXPECT_EQ(library->impl_mr_metas->mr, impl);
}

TEST_F(Bundles, ResolvedImplementationsAreNotAddedAgain) {
    write_bundle("A", lib_package(resources(resource("L", "")), "pa"));
    write_bundle("A", impl_package(resources(resource("I", "", "implements='pa/L'")), "pi"),
                 "b.oru2d");
    write_bundle("B", lib_package("", "pb"));
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    TraceCapture traces;
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    EXPECT_TRUE(traces.has(7,
                           "the reference between I and its parent library has already been "
                           "resolved, no action needs to betaken\n"));
    auto *library = oru_md_get_mr_meta_by_name("pa/L");
    EXPECT_EQ(library->impl_mr_metas->next, nullptr);
    EXPECT_EQ(oru_do_mr_meta_list_get_len(oru_do_mr_meta_get_impl_mr_meta(library->do_mr_meta)), 1);
}

TEST_F(Bundles, OfTwoWithTheSamePackageTheSecondFailsTheLoad) {
    write_bundle("A", lib_package("", "twin"));
    write_bundle("B", lib_package("", "twin", "2.0"));
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 10000);
    EXPECT_EQ(traces.at(3), (Texts{"Metadata collision detected: twin is already present\n",
                                   "Failed to load B//usr/halden/etc//oru2d/a.oru2d\n",
                                   "Failed to load metadata from B\n"}));
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("twin"), nullptr);
}

TEST_F(Bundles, OutputsOfAFailedLoad) {
    ORUMdPkgBundle some{};
    ORUMdPkgBundle *first = &some, *removed = &some;
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, &first, &removed), 10004);
    EXPECT_EQ(first, &some);  // there was no store
    EXPECT_EQ(removed, nullptr);
}

TEST_F(Bundles, EmptyListIsRefusedAndTakesTheStoreWithIt) {
    const char *const none[] = {nullptr};
    const char *const empty[] = {"", "A", nullptr};
    for (const char *const *list : {static_cast<const char *const *>(nullptr), none, empty}) {
        write_bundle("A", lib_package("", "pa"));
        EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
        TraceCapture traces(3);
        EXPECT_EQ(oru_md_load_pkg_list(list, nullptr, nullptr), 10000);
        EXPECT_EQ(traces.at(3), Texts{"Package list appears to be empty\n"});
        EXPECT_EQ(oru_md_get_pkg_meta_by_name("pa"), nullptr);
    }
}

TEST_F(Bundles, WithoutItsDirectoryABundleFailsTheLoad) {
    TraceCapture traces;
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 10004);
    EXPECT_TRUE(traces.has(7, "Bundle A doesn't contain metadata\n"));
    EXPECT_EQ(traces.at(3), Texts{"Failed to load metadata from A\n"});
}

TEST_F(Bundles, DirectoriesWithoutPackagesAreRefused) {
    std::filesystem::create_directories(folder.file("A/usr/halden/etc/oru2d"));
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 10000);
    EXPECT_EQ(traces.at(3), Texts{"no package containing oru2ds was found\n"});
}

TEST_F(Bundles, OneCallTakesOneOut) {
    for (const char *name : {"A", "B", "C"})
        write_bundle(name, lib_package("", std::string("p") + name));
    const char *const all[] = {"A", "B", "C", nullptr};
    EXPECT_EQ(oru_md_load_pkg_list(all, nullptr, nullptr), 0);
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("pB"), nullptr);
    EXPECT_NE(oru_md_get_pkg_meta_by_name("pC"), nullptr);  // was not looked at
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("pC"), nullptr);
    EXPECT_NE(oru_md_get_pkg_meta_by_name("pA"), nullptr);
}

TEST_F(Bundles, OneGoesAndAnotherComes) {
    for (const char *name : {"A", "B", "C"})
        write_bundle(name, lib_package("", std::string("p") + name));
    const char *const next[] = {"C", "A", nullptr};
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    TraceCapture traces;
    ORUMdPkgBundle *first = nullptr, *removed = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(next, &first, &removed), 0);
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->name, "C");
    EXPECT_EQ(first->next, nullptr);
    ASSERT_NE(removed, nullptr);
    EXPECT_STREQ(removed->name, "B");
    oru_md_pkg_bundle_delete(removed);
    const auto details = traces.at(7);
    ASSERT_GE(details.size(), 3u);
    EXPECT_EQ(details[0], "Bundle A confirmed as active\n");
    EXPECT_EQ(details[1], "Bundle B is not in the new active list and will be removed\n");
    EXPECT_EQ(details[2], "Bundle C is new, scanning for metadata\n");
}

// The store forgets the first package only of a bundle that is the caller's.
TEST_F(Bundles, OneThatIsHandedOutIsUnchanged) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", lib_package("", "p1"));
    write_bundle("B", lib_package("", "p2"), "b.oru2d");
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    ORUMdPkgBundle *removed = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, &removed), 0);
    ASSERT_NE(removed, nullptr);
    const auto *first = removed->pkgs, *second = first->next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->next, nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name(oru_do_name_get_strname(first->name)), nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name(oru_do_name_get_strname(second->name)), second);
    oru_md_free();
    oru_md_pkg_bundle_delete(removed);
}

TEST_F(Bundles, NewOneNamedTwiceCollidesWithItself) {
    write_bundle("A", lib_package("", "pa"));
    const char *const twice[] = {"A", "A", nullptr};
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(twice, nullptr, nullptr), 10000);
    EXPECT_EQ(traces.at(3)[0], "Metadata collision detected: pa is already present\n");
}

TEST_F(Bundles, LibrariesOfAllComeBeforeTheImplementationsOfAny) {
    write_bundle("A", impl_package(resources(resource("I", "", "implements='pb/L'")), "pa"));
    write_bundle("B", lib_package(resources(resource("L", "")), "pb"));
    TraceCapture traces;
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    Texts steps;
    for (const auto &line : traces.at(7)) {
        if (line.starts_with("Bundle ") || line.starts_with("Added ") || line.starts_with("ORU2D "))
            steps.push_back(line);
    }
    // Only a bundle with a package is one: B came first, with its library.
    EXPECT_EQ(steps,
              (Texts{"Bundle A is new, scanning for metadata\n",
                     "Bundle B is new, scanning for metadata\n", "Added meta package pb...\n",
                     "ORU2D type 1 resolution pass on bundle B\n",
                     "Bundle A is new, scanning for metadata\n", "Added meta package pa...\n",
                     "Bundle B is new, scanning for metadata\n",
                     "ORU2D type 2 resolution pass on bundle B\n",
                     "ORU2D type 2 resolution pass on bundle A\n"}));
    EXPECT_EQ(oru_md_get_mr_meta_by_name("pa/I")->parent_mr, oru_md_get_mr_meta_by_name("pb/L"));
}

TEST_F(Bundles, FailedImplementationTakesEverythingWithIt) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", impl_package(resources("<managedResource/>"), "pb"));
    EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 10000);
    EXPECT_EQ(traces.at(3).back(), "Failed to load metadata from B\n");
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("pa"), nullptr);
}

TEST_F(Bundles, ListThatCannotBeHadIsTold) {
    write_bundle("A", lib_package("", "pa"));
    for (const uint64_t nth : {1u, 2u}) {  // the list, a name on it
        EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
        TraceCapture traces(3);
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 10002);
        poolheap_fail_off();
        EXPECT_EQ(traces.at(3), Texts{"Failed to allocate pkg list\n"});
        EXPECT_EQ(oru_md_get_pkg_meta_by_name("pa"), nullptr);
    }
}

// ---- Records that were changed between two loads ----

class EditedDefinition : public Bundles {
  protected:
    void SetUp() override {
        write_bundle("A", lib_package("<configDataDef><configData name='D'><attribute name='a' "
                                      "type='int'/></configData></configDataDef>",
                                      "pa"));
        write_bundle("B", impl_package(resources(resource("M", "<configData ref='pa/D'/>")), "pb"));
        ASSERT_EQ(oru_md_load_pkg_list(kOnlyA, nullptr, nullptr), 0);
        definition = oru_md_get_cd_meta_by_name("pa/D");
        ASSERT_NE(definition, nullptr);
    }
    ORUMdCodMeta *definition = nullptr;
};

TEST_F(EditedDefinition, WithoutItsListFailsThePackage) {
    oru_do_prop_meta_list_deref(std::exchange(definition->prop_list, nullptr));
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 107);
    EXPECT_EQ(traces.at(3)[0], "Property meta list NULL\n");
    EXPECT_EQ(traces.at(3)[1], "Error processing configData node\n");
}

TEST_F(EditedDefinition, PropertyOfNoKnownKindStaysInTheDescriptionOnly) {
    auto *name = oru_do_name_new("odd");
    auto *odd = oru_do_prop_meta_new(name, 9, 0, 0, nullptr, 5, name, 1, 0, 1, 0);
    oru_do_prop_meta_list_add(definition->prop_list, odd);
    oru_do_prop_meta_deref(odd);
    oru_do_name_deref(name);
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_pkg_list(kAB, nullptr, nullptr), 0);
    EXPECT_EQ(traces.at(3), Texts{"Unknown prop category\n"});
    auto *mr = oru_md_get_mr_meta_by_name("pb/M");
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(mr->do_mr_meta), 2);
    EXPECT_EQ(oru_md_get_attr_meta_w_str(mr, "odd"), nullptr);
    EXPECT_NE(oru_md_get_attr_meta_w_str(mr, "a"), nullptr);
}

// ---- Memory ----

// What a library gives is there as a record and as a property, or is told to be missing.
void look_at_merged(ORUMdMrMeta *impl, const char *name, const TraceCapture &traces) {
    const void *record = oru_md_get_attr_meta_w_str(impl, name);
    if (record == nullptr)
        record = oru_md_get_ref_meta_w_str(impl, name);
    const bool described = oru_do_mr_meta_get_prop_meta_str(impl->do_mr_meta, name) != nullptr;
    EXPECT_EQ(record != nullptr, described) << name;
    if (!described) {
        EXPECT_TRUE(traces.has(3, "Failed to merge " + std::string(name) + " into I\n") ||
                    traces.has(3, "Can't resolve impl mr extension pa/L from I\n"))
            << name;
    }
}

TEST_F(Bundles, WithoutMemoryTheMergeTellsWhatIsMissing) {
    write_bundle(
        "A",
        lib_package(resources(resource("L",
                                       "<key><attribute name='k' type='int'/></key><key><attribute "
                                       "name='s' type='int'/></key><reference name='r' "
                                       "targetIsA='L'/><configData><attribute name='c' type='int'/>"
                                       "</configData><operationalData><attribute name='o' "
                                       "type='int'/></operationalData>")),
                    "pa"));
    write_bundle("B", impl_package(resources(resource("I", "", "implements='pa/L'")), "pb"));
    sweep_oom(
        [] {
            TraceCapture traces(3);
            if (oru_md_load_pkg_list(kAB, nullptr, nullptr) == 0) {
                auto *impl = oru_md_get_mr_meta_by_name("pb/I");
                auto *library = oru_md_get_mr_meta_by_name("pa/L");
                if (impl != nullptr && library != nullptr) {
                    const bool resolved = impl->parent_mr != nullptr;
                    EXPECT_EQ(library->impl_mr_metas != nullptr, resolved);
                    auto *listed = oru_do_mr_meta_get_impl_mr_meta(library->do_mr_meta);
                    EXPECT_EQ(listed != nullptr && oru_do_mr_meta_list_get_len(listed) == 1,
                              resolved);
                    for (const char *name : {"k", "s", "r", "c", "o"})
                        look_at_merged(impl, name, traces);
                }
                EXPECT_TRUE(impl != nullptr || oom_hit());
            }
            oru_md_free();
        },
        {.promised_deaths = {}, .at_least = 40});
}

TEST_F(Bundles, WithoutMemoryTheStoreIsGone) {
    write_bundle("A", lib_package("", "pa"));
    write_bundle("B", impl_package("", "pb"));
    sweep_oom([] {
        const int32_t code = oru_md_load_pkg_list(kAB, nullptr, nullptr);
        EXPECT_EQ(code == 0, oru_md_get_pkg_meta_by_name("pb") != nullptr);
        EXPECT_TRUE(code == 0 || oom_hit());
        oru_md_free();
    });
}

}  // namespace
