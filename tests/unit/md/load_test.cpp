// Loading directories of packages: which files are read, in which passes, and what a fault does.
#include <oru/mr_meta.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;

class Load : public StoreTest {
  protected:
    int32_t scan(int32_t pass) {
        return _oru_md_init_meta_info(folder.path().c_str(), "", ".oru2d", pass, &store, nullptr);
    }
    ~Load() override { oru_md_map_delete(store); }
    ORUMdMap *store = nullptr;
};

TEST_F(Load, NetworkPackagesLoadWithoutAFailure) {
    TraceCapture traces(3);
    ORUMdPkgBundle *bundle = nullptr;
    EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
    EXPECT_STREQ(bundle->name, "quill_default_bundle");
    auto *port = oru_md_get_mr_meta_by_name("com.example.network:1.0/Port");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(text(oru_do_mr_meta_get_mr_fq_name(port->do_mr_meta)),
              "com.example.network:1.0/Port");
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(port->do_mr_meta), 15);
}

TEST_F(Load, LibrariesComeBeforeImplementations) {
    folder.write("1.oru2d", impl_package("", "impl"));
    folder.write("2.oru2d", lib_package("", "lib"));
    TraceCapture traces;
    auto *bundle = load();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(text(bundle->pkgs->name), "lib");
    EXPECT_EQ(text(bundle->pkgs->next->name), "impl");
    EXPECT_EQ(bundle->pkgs->next->next, nullptr);
    EXPECT_EQ(bundle->next, nullptr);
    EXPECT_TRUE(traces.has(7, "Scanning " + folder.path() + " for metadata\n"));
    EXPECT_TRUE(traces.has(7, "Loading " + folder.file("2.oru2d") + "...\n"));
    EXPECT_TRUE(traces.has(7, "ORU2D type 1 resolution pass on bundle quill_default_bundle\n"));
    EXPECT_TRUE(traces.has(7, "ORU2D type 2 resolution pass on bundle quill_default_bundle\n"));
    EXPECT_TRUE(traces.has(7, "resolving refs in lib\n"));
    EXPECT_TRUE(traces.has(7,
                           "skipping ref resolution since the oru2d type is different from "
                           "requested type\n"));
}

TEST_F(Load, PathIsDirectoryAndSubPathInOne) {
    folder.write("sub/a.oru2d", lib_package("", "lib"));
    EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "/sub", ".oru2d", nullptr), 0);
    EXPECT_NE(oru_md_get_pkg_meta_by_name("lib"), nullptr);
}

TEST_F(Load, SecondLoadIsANoOp) {
    folder.write("a.oru2d", lib_package("", "lib"));
    load();
    folder.write("b.oru2d", lib_package("", "late"));
    ORUMdPkgBundle *bundle = nullptr;
    EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", &bundle), 0);
    EXPECT_EQ(bundle, nullptr);
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("late"), nullptr);
}

TEST_F(Load, StoreIsFreedAndLoadedAgain) {
    folder.write("a.oru2d", lib_package(resources(resource("M", "")), "lib"));
    for (int round = 0; round < 3; ++round) {
        EXPECT_NE(load(), nullptr);
        EXPECT_NE(oru_md_get_mr_meta_by_name("lib/M"), nullptr);
        EXPECT_EQ(oru_md_free(), 0);
        EXPECT_EQ(oru_md_get_mr_meta_by_name("lib/M"), nullptr);
    }
    EXPECT_EQ(oru_md_free(), 0);
}

TEST_F(Load, DescriptionsOutliveTheStore) {
    folder.write("a.oru2d", lib_package(resources(resource("M", "")), "lib"));
    load();
    auto *meta = oru_do_mr_meta_ref(oru_md_get_mr_meta_by_name("lib/M")->do_mr_meta);
    oru_md_free();
    EXPECT_EQ(text(oru_do_mr_meta_get_mr_fq_name(meta)), "lib:1.0/M");
    oru_do_mr_meta_deref(meta);
}

TEST_F(Load, OnlyNamesThatEndAtTheFirstSuffixAreRead) {
    for (const char *name : {"a.oru2d.bak", "x.oru2d.oru2d", "y.xml", "oru2d"})
        folder.write(name, lib_package("", name));
    folder.write("ok.oru2d", lib_package("", "ok"));
    auto *bundle = load();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(text(bundle->pkgs->name), "ok");
    EXPECT_EQ(bundle->pkgs->next, nullptr);
}

TEST_F(Load, EmptyDirectoryLoadsAnEmptyStore) {
    EXPECT_EQ(load(), nullptr);
    EXPECT_EQ(scan(1), 0);
    EXPECT_NE(store, nullptr);
}

TEST_F(Load, MissingDirectoryLeavesNoStoreAndIsNotReported) {
    TraceCapture traces(3);
    EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "/none", ".oru2d", nullptr), 0);
    EXPECT_EQ(traces.at(3), (Texts{"Error opening directory " + folder.path() + "/none\n",
                                   "Failed to load libraries from /none"}));
}

TEST_F(Load, PathThatCannotBeBuiltIsRefused) {
    TraceCapture traces(3);
    EXPECT_EQ(_oru_md_init_meta_info("", "", ".oru2d", 1, &store, nullptr), 10000);
    EXPECT_EQ(_oru_md_init_meta_info(nullptr, nullptr, ".oru2d", 1, &store, nullptr), 10000);
    const std::string longest(4096, 'x');
    EXPECT_EQ(_oru_md_init_meta_info(longest.c_str(), "", ".oru2d", 1, &store, nullptr), 10000);
    EXPECT_EQ(traces.at(3), Texts(3, "Failed to build path to metadata\n"));
    EXPECT_EQ(store, nullptr);
    EXPECT_EQ(_oru_md_init_meta_info("/nowhere-at-all", "", ".oru2d", 1, &store, nullptr), 10004);
}

TEST_F(Load, RootHasToBeFollowedByABlankOnItsLine) {
    folder.write("a.oru2d", "<oru2dLib\npackage='p' version='1'/>");
    TraceCapture traces(3);
    EXPECT_EQ(scan(1), 10000);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
}

TEST_F(Load, RootIsLookedForInPiecesOf127Characters) {
    // The opening starts at the place 120 of a line and so stands in two pieces.
    folder.write("a.oru2d",
                 "<!--" + std::string(113, 'x') + "--><oru2dLib package='p' version='1'/>");
    EXPECT_EQ(scan(1), 10000);
    folder.write("a.oru2d",
                 "<!--" + std::string(110, 'x') + "--><oru2dLib package='p' version='1'/>");
    EXPECT_EQ(scan(1), 0);
}

TEST_F(Load, OtherRootIsNoPackage) {
    folder.write("a.oru2d", "<package name='p'/>");
    EXPECT_EQ(scan(1), 10000);
    folder.write("a.oru2d", "<other><oru2dLib package='p' version='1'/></other>");
    EXPECT_EQ(scan(1), 0);  // looks like one, and holds none
    EXPECT_EQ(store->bundles, nullptr);
}

TEST_F(Load, FileOfTheOtherKindIsSkipped) {
    folder.write("a.oru2d", impl_package(""));
    EXPECT_EQ(scan(1), 0);
    EXPECT_EQ(store->bundles, nullptr);
    EXPECT_EQ(scan(2), 0);
    ASSERT_NE(store->bundles, nullptr);
    EXPECT_EQ(text(store->bundles->pkgs->name), "com.impl");
}

TEST_F(Load, BrokenDocumentIsTold) {
    TraceCapture traces(3);
    folder.write("a.oru2d", "<oru2dLib package='p' version='1'><open></oru2dLib>");
    EXPECT_EQ(scan(1), 107);
    EXPECT_EQ(traces.at(3), (Texts{"Failed to parse " + folder.file("a.oru2d") + "\n",
                                   "Failed to load " + folder.file("a.oru2d") + "\n"}));
}

TEST_F(Load, FileThatCannotBeOpenedIsTold) {
    TraceCapture traces(3);
    ASSERT_EQ(symlink("nowhere", folder.file("a.oru2d").c_str()), 0);
    EXPECT_EQ(scan(1), 10000);
    EXPECT_EQ(traces.at(3), (Texts{"Failed to open " + folder.file("a.oru2d") + "\n",
                                   "Failed to load " + folder.file("a.oru2d") + "\n"}));
}

TEST_F(Load, DirectoryWithThatSuffixIsNoPackage) {
    mkdir(folder.file("a.oru2d").c_str(), 0700);
    EXPECT_EQ(scan(1), 10000);
}

// The names in the order in which the directory shows them, which stays while files are written
// anew.
Texts shown(const Folder &folder) {
    Texts names;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path()))
        names.push_back(entry.path().filename());
    return names;
}

TEST_F(Load, LastFileDecides) {
    for (const char *name : {"a.oru2d", "b.oru2d", "c.oru2d"})
        folder.write(name, "");
    const auto order = shown(folder);
    ASSERT_EQ(order.size(), 3u);
    folder.write(order[0], lib_package("", "first"));
    folder.write(order[1], "<oru2dLib broken");
    folder.write(order[2], lib_package("", "last"));
    EXPECT_EQ(scan(1), 0);
    EXPECT_NE(store->oru_md_get_pkg(store, "first", nullptr), nullptr);
    EXPECT_NE(store->oru_md_get_pkg(store, "last", nullptr), nullptr);
    oru_md_map_delete(std::exchange(store, nullptr));
    folder.write(order[2], "<oru2dLib broken");
    EXPECT_EQ(scan(1), 107);
    EXPECT_NE(store->oru_md_get_pkg(store, "first", nullptr), nullptr);
    oru_md_map_delete(std::exchange(store, nullptr));
    folder.write(order[2], impl_package(""));  // of the other kind
    EXPECT_EQ(scan(1), 0);
}

TEST_F(Load, BadFileBeforeAGoodOneIsForgotten) {
    folder.write("a.oru2d", "");
    folder.write("b.oru2d", "");
    const auto order = shown(folder);
    folder.write(order[0],
                 lib_package("<typeDef><complexType name='x'> </complexType></typeDef>", "bad"));
    folder.write(order[1], lib_package("", "good"));
    auto *bundle = load();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(text(bundle->pkgs->name), "good");
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("bad"), nullptr);
}

// Every step of a load in its order.
TEST_F(Load, EventsComeInOrder) {
    folder.write("a.oru2d", lib_package(resources(resource("L", ""))));
    folder.write("b.oru2d", impl_package(resources(resource("I", "", "implements='com.lib/L'"))));
    TraceCapture traces;
    EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", nullptr), 0);
    const std::string skip =
        "skipping ref resolution since the oru2d type is different from requested type\n";
    const std::string minor =
        "Minor Version Supported : 8, but also accepts all other Minor Versions\n";
    const Texts expected{"Pending requests terminated, holding new requests\n",
                         "Scanning " + folder.path() + " for metadata\n",
                         "Loading " + folder.file("a.oru2d") + "...\n",
                         "Schema version 1.8 found in oru2d file\n",
                         "SUPPORTED MAJOR Version 1 \n",
                         minor,
                         "Added meta package com.lib...\n",
                         "ORU2D type 1 resolution pass on bundle quill_default_bundle\n",
                         "resolving refs in com.lib\n",
                         "Scanning " + folder.path() + " for metadata\n",
                         "Loading " + folder.file("b.oru2d") + "...\n",
                         "Schema version 1.8 found in oru2d file\n",
                         "SUPPORTED MAJOR Version 1 \n",
                         minor,
                         "Added meta package com.impl...\n",
                         "ORU2D type 2 resolution pass on bundle quill_default_bundle\n",
                         "resolving refs in com.lib\n",
                         skip,
                         "resolving refs in com.impl\n",
                         "adding subclass I to L\n",
                         "Request lock released\n"};
    EXPECT_EQ(traces.at(7), expected);
    EXPECT_EQ(traces.at(3), Texts{});
}

// Takes the file away between the look into it and the parse, and notes what failed.
class LoadOfAFileThatGoes : public Load {
  protected:
    LoadOfAFileThatGoes() : threshold_(tracelet_get_threshold()) {
        folder.write("a.oru2d", lib_package(""));
        tracelet_set_sink(
            [](void *context, const char *, uint32_t level, const char *words,
               const tracelet_place *) {
                static_cast<LoadOfAFileThatGoes *>(context)->hear(level, words);
            },
            this);
        tracelet_set_threshold(7);
    }
    ~LoadOfAFileThatGoes() override {
        tracelet_set_threshold(threshold_);
        tracelet_set_sink(nullptr, nullptr);
    }

    const std::string path = folder.file("a.oru2d");
    std::function<void()> take_its_place = [] {};
    Texts failures;

  private:
    void hear(uint32_t level, const std::string &words) {
        if (words == "Loading " + path + "...\n") {
            std::filesystem::remove(path);
            take_its_place();
        }
        if (level == 3)
            failures.push_back(words);
    }
    const uint32_t threshold_;
};

TEST_F(LoadOfAFileThatGoes, IsTold) {
    EXPECT_EQ(scan(1), 107);
    EXPECT_EQ(failures, (Texts{"Failed to open file '" + path + "': No such file or directory\n",
                               "Failed to load " + path + "\n"}));
}

TEST_F(LoadOfAFileThatGoes, WaitsForNoPipeInItsPlace) {
    take_its_place = [this] { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); };
    EXPECT_EQ(scan(1), 107);
    EXPECT_EQ(failures, (Texts{"Failed to parse " + path + "\n", "Failed to load " + path + "\n"}));
}

TEST_F(Load, SamePackageTwiceCollides) {
    TraceCapture traces(3);
    folder.write("a.oru2d", lib_package(""));
    EXPECT_EQ(scan(1), 0);
    EXPECT_EQ(scan(1), 10000);
    EXPECT_EQ(traces.at(3), (Texts{"Metadata collision detected: com.lib is already present\n",
                                   "Failed to load " + folder.file("a.oru2d") + "\n"}));
    EXPECT_EQ(store->bundles->pkgs->next, nullptr);
}

TEST_F(Load, PackagesOfALaterScanGoBehindThoseOfTheirBundle) {
    folder.write("a.oru2d", lib_package("", "lib"));
    folder.write("b.oru2d", impl_package("", "impl"));
    EXPECT_EQ(scan(1), 0);
    EXPECT_EQ(scan(2), 0);
    EXPECT_EQ(text(store->bundles->pkgs->next->name), "impl");
    EXPECT_EQ(store->bundles->next, nullptr);
}

TEST_F(Load, FailedImplementationsLeaveNoStore) {
    TraceCapture traces(3);
    folder.write("a.oru2d", lib_package("", "lib"));
    folder.write("b.oru2d",
                 impl_package("<typeDef><complexType name='x'> </complexType></typeDef>"));
    folder.write("c.oru2d",
                 impl_package("<typeDef><complexType name='x'> </complexType></typeDef>"));
    std::filesystem::remove(folder.file("a.oru2d"));
    EXPECT_EQ(load(), nullptr);
    EXPECT_EQ(traces.at(3).back(), "Failed to load impl oru2ds from ");
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("lib"), nullptr);
}

TEST_F(Load, FaultsLeadToTheirPlace) {
    folder.write("a.oru2d",
                 "<oru2dLib package='p' version='1' schemaVersion='1.8'>\n"
                 "<managedResourceDef>\n<managedResource name='M'>\n"
                 "<configData>\n<attribute name='a'/></configData>\n"
                 "</managedResource></managedResourceDef></oru2dLib>");
    std::vector<std::string> places;
    tracelet_set_sink(
        [](void *context, const char *, uint32_t level, const char *words,
           const tracelet_place *place) {
            if (level == 3 && place != nullptr) {
                const auto name = std::filesystem::path(place->file).filename().string();
                static_cast<std::vector<std::string> *>(context)->push_back(
                    name + ":" + std::to_string(place->line) + ": " +
                    (place->element != nullptr ? place->element : "-") + ": " + words);
            }
        },
        &places);
    const uint32_t before = tracelet_get_threshold();
    tracelet_set_threshold(3);
    EXPECT_EQ(scan(1), 10000);
    tracelet_set_threshold(before);
    tracelet_set_sink(nullptr, nullptr);
    EXPECT_EQ(places, (Texts{"a.oru2d:5: attribute: ORU2D property names and types are mandatory\n",
                             "a.oru2d:5: attribute: Error occured instanciating oru_do_prop_meta\n",
                             "a.oru2d:4: configData: Error processing configData node\n",
                             "a.oru2d:1: oru2dLib: Error occured processing meta_package p...\n",
                             "a.oru2d:0: -: Failed to load " + folder.file("a.oru2d") + "\n"}));
}

// ---- Files that mean harm ----

TEST_F(Load, DeclaredEntitiesAreRefused) {
    const std::string root = "<oru2dLib package='p' version='1'>&a;</oru2dLib>";
    const char *declarations[] = {
        "<!ENTITY a 'b'>",
        "<!ENTITY a SYSTEM 'file:///etc/passwd'>",
        "<!ENTITY % a 'b'>",
        "<!ENTITY % a SYSTEM 'http://localhost/x'> %a;",
        "<!NOTATION n SYSTEM 'n'><!ENTITY a SYSTEM 'x' NDATA n>",
    };
    for (const char *declaration : declarations) {
        TraceCapture traces(3);
        folder.write("a.oru2d", "<!DOCTYPE x [" + std::string(declaration) + "]>\n" + root);
        EXPECT_EQ(scan(1), 107) << declaration;
        EXPECT_EQ(traces.at(3)[0], "Failed to parse " + folder.file("a.oru2d") + "\n");
    }
    EXPECT_EQ(store->oru_md_get_pkg(store, "p", nullptr), nullptr);
}

TEST_F(Load, EntitiesThatMultiplyCostNothing) {
    std::string declarations = "<!ENTITY e0 'lol'>";
    for (int i = 1; i < 12; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        declarations += "<!ENTITY e" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j)
            declarations += before;
        declarations += "'>";
    }
    folder.write("a.oru2d",
                 "<!DOCTYPE x [" + declarations + "]>\n<oru2dLib package='&e11;' version='1'/>");
    EXPECT_EQ(scan(1), 107);
}

TEST_F(Load, ForeignDocumentTypeIsNotFetched) {
    folder.write("evil.dtd", "<!ELEMENT x ANY><!ATTLIST oru2dLib package CDATA 'from-dtd'>");
    folder.write("a.oru2d",
                 "<!DOCTYPE oru2dLib SYSTEM 'evil.dtd'>\n"
                 "<oru2dLib package='p' version='1'/>");
    EXPECT_EQ(scan(1), 0);
    EXPECT_EQ(text(store->bundles->pkgs->name), "p");
}

TEST_F(Load, DeepNestingIsRefused) {
    std::string open, close;
    for (int i = 0; i < 100000; ++i) {
        open += "<a>";
        close += "</a>";
    }
    folder.write("a.oru2d", lib_package(open + close));
    EXPECT_EQ(scan(1), 107);
}

TEST_F(Load, GarbageIsRefusedWithoutAWordOfTheParser) {
    const std::string contents[] = {
        std::string("<oru2dLib \0\0\0", 13),
        "<oru2dLib package='p' version='1'>\xff\xfe</oru2dLib>",
        "<oru2dLib package='p' package='q' version='1'/>",
        "<?xml version='1.0' encoding='none-such'?><oru2dLib package='p' version='1'/>",
        "<oru2dLib <oru2dLib ",
        "<oru2dLib package='p' version='1'><x:y/></oru2dLib",
    };
    for (const auto &content : contents) {
        folder.write("a.oru2d", content);
        const auto child = run_in_child([&] { return scan(1) == 107 ? 0 : 1; });
        EXPECT_TRUE(child.exited_with(0)) << content;
        EXPECT_EQ(child.output, "") << content;
    }
}

TEST_F(Load, PackageNeedsItsNameAndVersion) {
    folder.write("a.oru2d", "<oru2dLib version='1'/>");
    EXPECT_ASSERTION(scan(1), "text");  // of the name that cannot be made
    folder.write("a.oru2d", "<oru2dLib package='p'/>");
    EXPECT_ASSERTION(scan(1), "version");
    folder.write("a.oru2d", lib_package("<configDataDef><configData/></configDataDef>"));
    EXPECT_ASSERTION(scan(1), "text");
}

TEST_F(Load, NullIsRefusedByName) {
    EXPECT_ASSERTION(_oru_md_init_meta_info("/", "", nullptr, 1, &store, nullptr), "suffix");
    EXPECT_ASSERTION(_oru_md_init_meta_info("/", "", "x", 1, nullptr, nullptr), "store");
}

// ---- Memory ----

TEST_F(Load, WithoutMemoryALoadLeavesNoStore) {
    folder.write(
        "a.oru2d",
        lib_package("<typeDef><enumerationType name='E'><v value='a'/></enumerationType>"
                    "<complexType name='C'><choice><m name='a' type='E'/></choice>"
                    "</complexType></typeDef><configDataDef><configData name='D'>"
                    "<attribute name='a' type='E'><assert><condition>x.is_null()"
                    "</condition><constraint>values(1)</constraint></assert></attribute>"
                    "</configData></configDataDef>" +
                    resources(resource("L", "<key><attribute name='id' type='int'/></key>"))));
    folder.write("b.oru2d",
                 impl_package(resources(resource(
                     "I",
                     "<reference name='r' targetIsA='I'/><configData implements='com.lib/D'/>"
                     "<operationalData><attribute name='o' type='int'/></operationalData>"
                     "<action name='a'><inputParameter name='p' type='int'/></action>",
                     "implements='com.lib/L'"))));
    sweep_oom([this] {
        ORUMdPkgBundle *bundle = nullptr;
        EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", &bundle), 0);
        EXPECT_TRUE(bundle != nullptr || oom_hit());
        EXPECT_EQ(oru_md_free(), 0);
    });
}

// Every message about memory has an allocation that brings it.
TEST_F(Load, WhatCannotBeHadIsToldByItsWords) {
    folder.write(
        "a.oru2d",
        lib_package("<configDataDef><configData name='D'><attribute name='a' type='int'/>"
                    "</configData></configDataDef><operationalDataDef><operationalData "
                    "name='O'><attribute name='a' type='int'/></operationalData>"
                    "</operationalDataDef>" +
                    resources(resource("M",
                                       "<configData ref='D'/><configData><attribute name='b' "
                                       "type='int'><assert><condition>x.is_null()</condition>"
                                       "<constraint>values(1)</constraint></assert></attribute>"
                                       "</configData><action name='a'><inputParameter name='p' "
                                       "type='int'/></action>"))));
    std::vector<std::string> told;
    const auto note_with_failure = [&](uint64_t nth) {
        TraceCapture traces(3);
        poolheap_fail_nth(nth, false);
        EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", nullptr), 0);
        const bool failed = poolheap_fail_hits() > 0;
        poolheap_fail_off();
        oru_md_free();
        const auto lines = traces.at(3);
        told.insert(told.end(), lines.begin(), lines.end());
        return failed;
    };
    for (uint64_t nth = 1; note_with_failure(nth); ++nth)
        ASSERT_LT(nth, 10000u);
    for (const char *words : {"Failed to allocate metadata container\n",
                              "Failed to initialize pkg_meta hashtable\n",
                              "Failed to allocate package array\n",
                              "Failed to allocate metadata bundle\n",
                              "Failed to allocate cd_name\n",
                              "Failed to allocate od_name.\n",
                              "Failed to allocate prop meta\n",
                              "Failed to allocate prop_metas\n",
                              "Failed to allocate name\n",
                              "Failed to allocate bool, rc=10002\n",
                              "Failed to allocate mr_name, rc=10002\n",
                              "Failed to allocate prop_metas, rc=10002\n",
                              "oru_do_condition creation failed.\n",
                              "oru_do_constraint creation failed.\n",
                              "Error 10002 while parsing assert element",
                              "Property meta array NULL\n",
                              "Failed to allocate list of arguments\n",
                              "Failed to add to arg list\n",
                              "Failed to allocate action list\n",
                              "Failed to add to action list\n",
                              "Failed to allocate MR metadata\n"}) {
        EXPECT_NE(std::find(told.begin(), told.end(), words), told.end()) << words;
    }
}

// The version of the schema is told before anything of the package is made.
TEST_F(Load, SchemaVersionIsToldThoughThePackageCannotBeHad) {
    folder.write("a.oru2d", lib_package(""));
    sweep_oom([this] {
        TraceCapture traces;
        scan(1);
        EXPECT_EQ(traces.has(7, "Loading " + folder.file("a.oru2d") + "...\n"),
                  traces.has(7, "Schema version 1.8 found in oru2d file\n"));
        oru_md_map_delete(store);
        store = nullptr;
    });
}

}  // namespace
