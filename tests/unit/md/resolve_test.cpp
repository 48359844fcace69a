// Resolution of names, copies of definitions, and the merge of libraries into implementations.
#include <oru/act_meta.h>
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/ntlist.h>
#include <oru/prop_meta.h>
#include <oru/typedef_meta.h>

#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;

class Resolve : public StoreTest {
  protected:
    static ORUMdMrMeta *lib(const char *name) {
        return oru_md_get_mr_meta_by_name(("com.lib/" + std::string(name)).c_str());
    }
    static ORUMdMrMeta *impl(const char *name) {
        return oru_md_get_mr_meta_by_name(("com.impl/" + std::string(name)).c_str());
    }
};

template <class Record>
Texts names(Record *first) {
    Texts found;
    for (; first != nullptr; first = first->next)
        found.push_back(text(first->name));
    return found;
}

// The names of all properties of a description.
Texts props(ORUMdMrMeta *mr) {
    Texts found;
    auto *list = oru_do_prop_meta_list_new();
    oru_do_mr_meta_get_all_prop_meta(mr->do_mr_meta, list);
    for (int32_t i = 0; i < oru_do_prop_meta_list_get_len(list); ++i)
        found.push_back(
            text(oru_do_prop_meta_get_name(oru_do_prop_meta_list_get_prop_meta(list, i))));
    oru_do_prop_meta_list_deref(list);
    return found;
}

std::string attribute(const std::string &name, const std::string &type = "int") {
    return "<attribute name='" + name + "' type='" + type + "'/>";
}

std::string attributes(const Texts &list) {
    std::string all;
    for (const auto &name : list)
        all += attribute(name);
    return all;
}

// ---- References ----

TEST_F(Resolve, TargetsAreFoundHereAndElsewhere) {
    load_both(resources(resource("A", "<reference name='r' targetIsA='B'/>") + resource("B", "")),
              resources(resource("C",
                                 "<reference name='lib' targetIsA='com.lib:9/A'/>"
                                 "<reference name='here' targetIsA='C'/>")));
    EXPECT_EQ(lib("A")->refs->target_mr, lib("B"));
    EXPECT_EQ(impl("C")->refs->target_mr, lib("A"));
    EXPECT_EQ(impl("C")->refs->next->target_mr, impl("C"));
}

TEST_F(Resolve, UnknownTargetIsToldAndStopsNothing) {
    TraceCapture traces(3);
    auto *bundle = load_lib(
        resources(resource("A", "<reference name='r' targetIsA='None'/><reference name='bare'/>")));
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(traces.at(3), Texts{"Unresolved reference mr com.lib:1.0/None\n"});
    EXPECT_EQ(lib("A")->refs->target_mr, nullptr);
    EXPECT_EQ(lib("A")->refs->next->target_name, nullptr);
}

TEST_F(Resolve, LibraryDoesNotSeeImplementations) {
    TraceCapture traces(3);
    load_both(resources(resource("A", "<reference name='r' targetIsA='com.impl/C'/>")),
              resources(resource("C", "")));
    EXPECT_EQ(traces.at(3), Texts{"Unresolved reference mr com.impl/C\n"});
}

// ---- Types ----

TEST_F(Resolve, TypesOfAttributesKeysAndParametersAreFilledIn) {
    const std::string types =
        "<typeDef><simpleType name='Speed' base='unsignedLong'/>"
        "<enumerationType name='State'><s value='up' intValue='1'/>"
        "</enumerationType></typeDef>";
    load_both(types, resources(resource(
                         "M", "<key>" + attribute("id", "com.lib.Speed") + "</key><configData>" +
                                  attribute("state", "com.lib:1.0/State") +
                                  "</configData>"
                                  "<action name='a'><inputParameter name='p' type='com.lib/State'/>"
                                  "<outputParameter name='q' type='com.lib/Speed'/>"
                                  "<errorParameter name='e' type='int'/></action>")));
    auto *mr = impl("M");
    ASSERT_NE(mr, nullptr);
    EXPECT_STREQ(oru_md_get_type_name(mr->primary_keys), "Speed");
    EXPECT_EQ(oru_do_prop_meta_get_typecode(mr->primary_keys->prop_meta), 6);
    auto *state = mr->cd_attrs->prop_meta;
    EXPECT_EQ(oru_do_prop_meta_get_typecode(state), 103);
    EXPECT_EQ(oru_do_typedef_meta_get_category(oru_do_prop_meta_get_typedef_meta(state)), 2);
    auto *action = oru_do_mr_meta_get_act_meta(mr->do_mr_meta, "a");
    auto *p = oru_do_prop_meta_list_get_prop_meta(oru_do_act_meta_get_in_params(action), 0);
    auto *q = oru_do_prop_meta_list_get_prop_meta(oru_do_act_meta_get_out_params(action), 0);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(p), 103);
    EXPECT_EQ(oru_do_prop_meta_get_typedef_meta(p), oru_do_prop_meta_get_typedef_meta(state));
    EXPECT_EQ(oru_do_prop_meta_get_typecode(q), 6);
}

TEST_F(Resolve, PlainTypeIsLookedForInItsPackageOnly) {
    TraceCapture traces(3);
    load_both(
        "<typeDef><simpleType name='Speed' base='int'/></typeDef>" +
            resources(resource("L", "<configData>" + attribute("a", "Speed") + "</configData>")),
        resources(resource("M", "<configData>" + attribute("a", "Speed") + "</configData>")));
    EXPECT_EQ(traces.at(3), Texts{"type Speed unresolved\n"});
    EXPECT_EQ(oru_do_prop_meta_get_typecode(lib("L")->cd_attrs->prop_meta), 5);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(impl("M")->cd_attrs->prop_meta), -3);
    EXPECT_EQ(impl("M")->cd_attrs->typedef_meta, nullptr);
}

TEST_F(Resolve, TypeWithoutADescriptionIsTold) {
    TraceCapture traces(3);
    load_lib("<typeDef><enumerationType name='Empty'/></typeDef>" +
             resources(resource("M", "<configData>" + attribute("a", "Empty") + "</configData>")));
    EXPECT_EQ(traces.at(3), Texts{"Failed to get typedef meta for Empty\n"});
    auto *attr = lib("M")->cd_attrs;
    EXPECT_STREQ(oru_md_get_type_name(attr), "Empty");
    EXPECT_EQ(oru_do_prop_meta_get_typecode(attr->prop_meta), 103);
    EXPECT_EQ(oru_do_prop_meta_get_typedef_meta(attr->prop_meta), nullptr);
}

TEST_F(Resolve, MembersFindTypesThatStandBehindThem) {
    TraceCapture traces(3);
    auto *bundle = load_lib(
        "<typeDef><complexType name='C'><sequence><m name='a' type='Later'/>"
        "<m name='b' type='None'/><m name='c' type='int'/></sequence>"
        "</complexType><simpleType name='Later' base='int'/></typeDef>");
    ASSERT_NE(bundle, nullptr);
    auto *type = bundle->pkgs->typedefs;
    EXPECT_EQ(type->complex_els->typedef_meta, type->next);
    EXPECT_EQ(type->complex_els->next->typedef_meta, nullptr);
    EXPECT_EQ(type->complex_els->next->next->typedef_meta, nullptr);
    EXPECT_EQ(traces.at(3), Texts{"Complex element type None unresolved\n"});
}

TEST_F(Resolve, TypesInACircleStopNothing) {
    auto *bundle = load_lib(
        "<typeDef><complexType name='A'><sequence><m name='b' type='B'/></sequence></complexType>"
        "<complexType name='B'><choice><m name='a' type='A'/></choice></complexType></typeDef>" +
        resources(resource("M", "<configData>" + attribute("a", "A") + "</configData>")));
    EXPECT_NE(bundle, nullptr);
}

// Members are resolved behind the attributes of resources, so what is described on their way knows
// the members of named types by their names alone.
TEST_F(Resolve, TypeThatIsDescribedBeforeItsMembersAreResolvedKeepsThemUnknown) {
    const std::string types =
        "<typeDef><simpleType name='Inner' base='int'/><complexType name='C'><sequence>"
        "<m name='a' type='Inner'/></sequence></complexType></typeDef>";
    const auto member_type = [] {
        auto *type = oru_md_get_typedef_meta_by_name("com.lib/C");
        auto *members = oru_do_typedef_meta_get_sequence_members(oru_md_get_do_typedef_meta(type));
        EXPECT_EQ(type->complex_els->typedef_meta,
                  oru_md_get_typedef_meta_by_name("com.lib/Inner"));
        return oru_do_ntlist_item_get_typedef(oru_do_ntlist_get_item(members, 0));
    };
    load_lib(types +
             resources(resource("M", "<configData>" + attribute("c", "C") + "</configData>")));
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(member_type()), -3);
    EXPECT_EQ(text(oru_do_typedef_meta_get_name(member_type())), "");
    oru_md_free();
    // An implementation comes when the members of libraries are known.
    load_both(types, resources(resource(
                         "M", "<configData>" + attribute("c", "com.lib/C") + "</configData>")));
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(member_type()), 5);
    EXPECT_EQ(text(oru_do_typedef_meta_get_name(member_type())), "Inner");
}

TEST_F(Resolve, StepsOfAPackageComeInOrder) {
    const auto resource_with_faults = [](const std::string &name) {
        return resource(name,
                        "<reference name='r' targetIsA='NoTarget" + name + "'/><operationalData>" +
                            attribute("o", "NoOper" + name) + "</operationalData><configData>" +
                            attribute("c", "NoConfig" + name) + "</configData><key>" +
                            attribute("k", "NoKey" + name) + "</key><key>" +
                            attribute("s", "NoSecond" + name) +
                            "</key><action name='a'><errorParameter name='e' type='NoErr" + name +
                            "'/><outputParameter name='u' type='NoOut" + name +
                            "'/><inputParameter name='i' type='NoIn" + name + "'/></action>",
                        "extends='NoBase" + name + "'");
    };
    const auto definition = [](const std::string &element) {
        return "<" + element + "Def><" + element + " name='D' extends='No" + element + "'>" +
               attribute("a") + "</" + element + "></" + element + "Def>";
    };
    TraceCapture traces(3);
    load_lib(definition("operationalData") + definition("configData") +
             resources(resource_with_faults("A") + resource_with_faults("B")) +
             "<typeDef><complexType name='T'><choice><m name='m' type='NoMember'/></choice>"
             "</complexType></typeDef>");
    Texts expected{"Unresolved reference mr com.lib:1.0/NoTargetA\n",
                   "Unresolved reference mr com.lib:1.0/NoTargetB\n"};
    for (const std::string mr : {"A", "B"}) {
        for (const char *type :
             {"NoKey", "NoSecond", "NoConfig", "NoOper", "NoIn", "NoOut", "NoErr"})
            expected.push_back("type " + (type + mr) + " unresolved\n");
    }
    const std::string cant = "Can't resolve library mr extension com.lib:1.0/No";
    for (const std::string &line :
         {std::string("Complex element type NoMember unresolved\n"), cant + "BaseA from A\n",
          cant + "BaseB from B\n", cant + "configData from D\n", cant + "operationalData from D\n"})
        expected.push_back(line);
    EXPECT_EQ(traces.at(3), expected);
}

// ---- Parents ----

TEST_F(Resolve, LibraryResourceKnowsWhatItExtends) {
    TraceCapture traces(3);
    load_lib(resources(resource("A", "", "extends='B'") + resource("B", "", "extends='None'")));
    EXPECT_EQ(lib("A")->parent_mr, lib("B"));
    EXPECT_EQ(lib("B")->parent_mr, nullptr);
    EXPECT_EQ(lib("B")->impl_mr_metas, nullptr);
    EXPECT_EQ(traces.at(3), Texts{"Can't resolve library mr extension com.lib:1.0/None from B\n"});
}

TEST_F(Resolve, DefinitionsKnowWhatTheyExtend) {
    TraceCapture traces(3);
    const auto definition = [](const char *element, const char *name, const char *base) {
        return "<" + std::string(element) + " name='" + name + "' extends='" + base + "'>" +
               attribute("a") + "</" + element + ">";
    };
    auto *bundle = load_lib("<configDataDef>" + definition("configData", "A", "B") +
                            definition("configData", "B", "None") + "</configDataDef>" +
                            "<operationalDataDef>" + definition("operationalData", "C", "D") +
                            definition("operationalData", "D", "A") + "</operationalDataDef>");
    ASSERT_NE(bundle, nullptr);
    auto *package = bundle->pkgs;
    EXPECT_EQ(package->cds->extends_cod, package->cds->next);
    EXPECT_EQ(package->ods->extends_cod, package->ods->next);
    EXPECT_EQ(traces.at(3), (Texts{"Can't resolve library mr extension com.lib:1.0/None from B\n",
                                   "Can't resolve library mr extension com.lib:1.0/A from D\n"}));
}

TEST_F(Resolve, ImplementationIsListedAtItsLibrary) {
    load_both(resources(resource("L", "")),
              resources(resource("I1", "", "implements='com.lib/L'") +
                        resource("I2", "", "implements='com.lib:7/L'")));
    EXPECT_EQ(impl("I1")->parent_mr, lib("L"));
    auto *list = lib("L")->impl_mr_metas;
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->mr, impl("I1"));
    EXPECT_EQ(list->next->mr, impl("I2"));
    EXPECT_EQ(list->next->next, nullptr);
    auto *descriptions = oru_do_mr_meta_get_impl_mr_meta(lib("L")->do_mr_meta);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(descriptions, impl("I2")->do_mr_meta), 1);
}

TEST_F(Resolve, ImplementationOfNothingStaysAsItIs) {
    TraceCapture traces(3);
    load_both("", resources(resource("I", "", "implements='com.lib/None'")));
    EXPECT_EQ(traces.at(3), Texts{"Can't resolve impl mr extension com.lib/None from I\n"});
    ASSERT_NE(impl("I"), nullptr);
    EXPECT_EQ(impl("I")->parent_mr, nullptr);
    EXPECT_EQ(props(impl("I")), Texts{});
}

TEST_F(Resolve, ImplementationOfItselfIsNone) {
    TraceCapture traces(3);
    load_both("", resources(resource("I", "", "implements='com.impl/I'") +
                            resource("A", "", "implements='com.impl/B'") +
                            resource("B", "", "implements='com.impl/C'") +
                            resource("C", "", "implements='com.impl/A'")));
    EXPECT_EQ(traces.at(3), (Texts{"Can't resolve impl mr extension com.impl/I from I\n",
                                   "Can't resolve impl mr extension com.impl/A from C\n"}));
    EXPECT_EQ(impl("A")->parent_mr, impl("B"));
    EXPECT_EQ(impl("C")->parent_mr, nullptr);
}

// ---- The merge ----

TEST_F(Resolve, LibraryKeysStandInFront) {
    load_both(resources(resource("L", "<key>" + attributes({"p1", "p2", "own"}) + "</key><key>" +
                                          attributes({"s1", "s2"}) + "</key>")),
              resources(resource("I",
                                 "<key>" + attributes({"own", "own2"}) + "</key><key>" +
                                     attributes({"t"}) + "</key>",
                                 "implements='com.lib/L'")));
    EXPECT_EQ(names(impl("I")->primary_keys), (Texts{"p1", "p2", "own", "own2"}));
    EXPECT_EQ(names(impl("I")->secondary_keys), (Texts{"s1", "s2", "t"}));
    EXPECT_EQ(props(impl("I")), (Texts{"s1", "s2", "p1", "p2", "own", "own2", "t"}));
    EXPECT_NE(impl("I")->primary_keys, lib("L")->primary_keys);
    EXPECT_EQ(impl("I")->primary_keys->prop_meta, lib("L")->primary_keys->prop_meta);
    EXPECT_EQ(names(lib("L")->primary_keys), (Texts{"p1", "p2", "own"}));
}

TEST_F(Resolve, LibraryReferencesStandInFrontInReverse) {
    load_both(resources(resource("L",
                                 "<reference name='a' targetIsA='L'/>"
                                 "<reference name='b' targetIsA='L' targetRole='peer'/>"
                                 "<reference name='own' targetIsA='L'/>")),
              resources(resource("I", "<reference name='own' targetIsA='I'/>",
                                 "implements='com.lib/L'")));
    auto *refs = impl("I")->refs;
    EXPECT_EQ(names(refs), (Texts{"b", "a", "own"}));
    EXPECT_EQ(refs->target_mr, lib("L"));
    EXPECT_EQ(refs->is_child, 0);
    EXPECT_EQ(refs->next->is_child, 1);
    EXPECT_EQ(refs->next->next->target_mr, impl("I"));
    EXPECT_EQ(props(impl("I")), (Texts{"own", "a", "b"}));
}

TEST_F(Resolve, LibraryConfigurationStandsInFrontInReverse) {
    load_both("<typeDef><simpleType name='T' base='int'/></typeDef>" +
                  resources(resource("L", "<configData>" + attribute("a", "T") +
                                              attributes({"b", "own"}) + "</configData>")),
              resources(resource("I", "<configData>" + attributes({"own"}) + "</configData>",
                                 "implements='com.lib/L'")));
    EXPECT_EQ(names(impl("I")->cd_attrs), (Texts{"b", "a", "own"}));
    EXPECT_EQ(props(impl("I")), (Texts{"own", "a", "b"}));
    EXPECT_EQ(impl("I")->cd_attrs->next->typedef_meta, lib("L")->cd_attrs->typedef_meta);
}

TEST_F(Resolve, LibraryOperationalAttributeTakesThePlaceOfTheFirst) {
    load_both(
        resources(resource("L", "<operationalData>" + attributes({"a"}) + "</operationalData>")),
        resources(resource("I",
                           "<operationalData>" + attributes({"x", "y", "z"}) + "</operationalData>",
                           "implements='com.lib/L'")));
    EXPECT_EQ(names(impl("I")->od_attrs), (Texts{"a", "y", "z"}));
    EXPECT_EQ(props(impl("I")), (Texts{"x", "y", "z", "a"}));
}

TEST_F(Resolve, EachLibraryOperationalAttributeReplacesTheOneBefore) {
    load_both(
        resources(resource(
            "L", "<operationalData>" + attributes({"a", "b", "own"}) + "</operationalData>")),
        resources(resource("I",
                           "<operationalData>" + attributes({"x", "own"}) + "</operationalData>",
                           "implements='com.lib/L'") +
                  resource("J", "", "implements='com.lib/L'")));
    EXPECT_EQ(names(impl("I")->od_attrs), (Texts{"b", "own"}));
    EXPECT_EQ(names(impl("J")->od_attrs), Texts{"own"});
    EXPECT_EQ(props(impl("J")), (Texts{"a", "b", "own"}));
}

TEST_F(Resolve, OnlyTheNamedLibraryResourceIsMerged) {
    load_both(resources(resource("Base", "<configData>" + attributes({"base"}) + "</configData>") +
                        resource("L", "<configData>" + attributes({"a"}) + "</configData>",
                                 "extends='Base'")),
              resources(resource("I", "", "implements='com.lib/L'")));
    EXPECT_EQ(props(impl("I")), Texts{"a"});
}

// ---- Copies of definitions ----

constexpr char kDefinitions[] =
    "<typeDef><simpleType name='T' base='string'/></typeDef>"
    "<configDataDef><configData name='Base'><attribute name='b' type='int'/></configData>"
    "<configData name='D' extends='Base' persistent='false'><attribute name='a' type='T' "
    "multiplicity='many' maxAccess='read-create'><assert><constraint>values(1)</constraint>"
    "</assert></attribute></configData></configDataDef>"
    "<operationalDataDef><operationalData name='O'><attribute name='o' type='int'/>"
    "</operationalData></operationalDataDef>";

TEST_F(Resolve, RefCopiesADefinitionWithoutItsBaseAndWithoutTheGroupsOwn) {
    load_both(kDefinitions, resources(resource("M", "<configData name='g' ref='com.lib:1.0/D'>" +
                                                        attribute("own") +
                                                        "</configData>"
                                                        "<operationalData ref='com.lib/O'/>")));
    EXPECT_EQ(props(impl("M")), (Texts{"g.a", "o"}));
    auto *a = impl("M")->cd_attrs->prop_meta;
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(a), 2);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(a), 5);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(a), 0);
    EXPECT_EQ(text(oru_do_prop_meta_get_type_name(a)), "com.lib:1.0/T");
    EXPECT_EQ(oru_do_prop_meta_get_typecode(a), 8);  // resolved by its qualified name
    auto *original =
        oru_do_prop_meta_list_get_prop_meta(oru_md_get_cd_meta_by_name("com.lib/D")->prop_list, 0);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(a),
              oru_do_prop_meta_get_constraint_list(original));
    EXPECT_NE(oru_do_prop_meta_get_constraint_list(a), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(original), -3);
    EXPECT_EQ(text(oru_do_prop_meta_get_type_name(impl("M")->od_attrs->prop_meta)),
              "com.lib:1.0/int");
}

TEST_F(Resolve, RefWithoutAPackageMeansThisOne) {
    load_lib(kDefinitions + resources(resource("M",
                                               "<configData ref='D'/><configData name='x' "
                                               "ref='com.lib:1.0/Base'/>"
                                               "<operationalData name='y' ref='O'/>")));
    EXPECT_EQ(props(lib("M")), (Texts{"a", "x.b", "y.o"}));
}

TEST_F(Resolve, CopiedTypeWithoutADotInItsPackageStaysUnresolved) {
    TraceCapture traces(3);
    folder.write("a.oru2d", lib_package(kDefinitions, "lib", "1"));
    folder.write("b.oru2d", impl_package(resources(resource("M", "<configData ref='lib/D'/>"))));
    EXPECT_NE(load(), nullptr);
    EXPECT_EQ(traces.at(3), Texts{"type lib:1/T unresolved\n"});
}

TEST_F(Resolve, ImplementedDefinitionComesWithItsBaseAndTheGroupsOwn) {
    load_both(
        kDefinitions,
        resources(resource("M", "<configData name='g' implements='com.lib/D'>" + attribute("own") +
                                    "</configData>"
                                    "<operationalData implements='com.lib/O'/>")));
    EXPECT_EQ(props(impl("M")), (Texts{"g.b", "g.a", "g.own", "o"}));
}

TEST_F(Resolve, ParentOfAGroupInALibraryIsDropped) {
    TraceCapture traces(3);
    load_lib(
        resources(resource("M", "<configData extends='None'>" + attribute("a") + "</configData>")));
    EXPECT_EQ(props(lib("M")), Texts{"a"});
    EXPECT_EQ(traces.at(3), Texts{});
}

TEST_F(Resolve, UnknownDefinitionFailsThePackage) {
    const struct {
        const char *group;
        const char *words;
        const char *after;
    } rows[] = {
        {"<configData ref='com.lib/None'/>", "Cannot resolve configData com.lib/None\n",
         "Error processing configData node\n"},
        {"<configData ref='None'/>", "Cannot resolve configData None\n",
         "Error processing configData node\n"},
        {"<configData ref='com.impl/'/>", "Cannot resolve configData com.impl/\n",
         "Error processing configData node\n"},
        {"<operationalData ref='com.lib/D'/>", "Cannot resolve operationalData com.lib/D\n",
         "Error processing operationalData node\n"},
        {"<configData implements='com.lib/None'/>", "Cannot resolve configData com.lib/None\n",
         "Error processing configData node\n"},
        {"<operationalData implements='com.lib/D'/>", "Cannot resolve configData com.lib/D\n",
         "Error processing operationalData node\n"},
    };
    for (const auto &row : rows) {
        TraceCapture traces(3);
        load_both(kDefinitions, resources(resource("M", row.group)));
        ASSERT_GE(traces.at(3).size(), 3u) << row.group;
        EXPECT_EQ(traces.at(3)[0], row.words);
        EXPECT_EQ(traces.at(3)[1], row.after);
        EXPECT_EQ(traces.at(3)[2], "Error occured processing meta_package com.impl...\n");
        EXPECT_EQ(impl("M"), nullptr);
        oru_md_free();
    }
}

TEST_F(Resolve, DefinitionsInACircleFailThePackage) {
    TraceCapture traces(3);
    load_both("<configDataDef><configData name='A' extends='B'>" + attribute("a") +
                  "</configData><configData name='B' extends='A'>" + attribute("b") +
                  "</configData></configDataDef>",
              resources(resource("M", "<configData implements='com.lib/A'/>")));
    EXPECT_EQ(traces.at(3)[0], "Error occurred in ");
    EXPECT_EQ(impl("M"), nullptr);
}

TEST_F(Resolve, CopiedNameHasABound) {
    TraceCapture traces(3);
    load_lib(kDefinitions + resources(resource("M", "<configData name='" + std::string(254, 'g') +
                                                        "' ref='D'/>")));
    EXPECT_EQ(traces.at(3)[0], "Property meta array NULL\n");
    EXPECT_EQ(traces.at(3)[1], "Error processing configData node\n");
}

}  // namespace
