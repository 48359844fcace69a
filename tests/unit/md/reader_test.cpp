// What becomes of the elements of a package, by every row of the format.
#include <oru/act_meta.h>
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/strbuf.h>
#include <oru/value.h>
#include <oruplatform/poolheap.h>

#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

class Reader : public StoreTest {
  protected:
    // The only package, after a library package with this content was loaded.
    ORUMdPkgMeta *read(const std::string &content) {
        auto *bundle = load_lib(content);
        return bundle != nullptr ? bundle->pkgs : nullptr;
    }
    ORUDoMrMeta *read_mr(const std::string &content, const std::string &attributes = "") {
        auto *package = read(resources(resource("M", content, attributes)));
        return package != nullptr && package->mrs != nullptr ? package->mrs->do_mr_meta : nullptr;
    }
    // The property of a resource that has just this one.
    ORUDoPropMeta *read_prop(const std::string &content) {
        auto *mr = read_mr(content);
        EXPECT_NE(mr, nullptr);
        EXPECT_EQ(oru_do_mr_meta_get_prop_count(mr), 1);
        auto *list = oru_do_prop_meta_list_new();
        oru_do_mr_meta_get_all_prop_meta(mr, list);
        auto *prop = oru_do_prop_meta_list_get_prop_meta(list, 0);
        oru_do_prop_meta_list_deref(list);
        return prop;
    }
    ORUMdTypedefMeta *read_type(const std::string &element) {
        auto *package = read("<typeDef>" + element + "</typeDef>");
        return package != nullptr ? package->typedefs : nullptr;
    }
};

std::vector<std::string> constraint_texts(ORUDoConstraintList *list) {
    std::vector<std::string> texts;
    auto *strbuf = oru_do_strbuf_new();
    for (int32_t i = 0; list != nullptr && i < oru_do_constraint_list_get_len(list); ++i) {
        oru_do_strbuf_clear(strbuf);
        oru_do_constraint_to_strbuf(oru_do_constraint_list_get_constraint(list, i), strbuf);
        texts.push_back(oru_do_strbuf_to_string(strbuf));
    }
    oru_do_strbuf_deref(strbuf);
    return texts;
}

using Texts = std::vector<std::string>;

// ---- Packages ----

TEST_F(Reader, PackageCarriesNameVersionAndKind) {
    folder.write("a.oru2d", lib_package("", "com.a", "3.2"));
    folder.write("b.oru2d", impl_package("", "com.b", "1.0"));
    load();
    auto *a = oru_md_get_pkg_meta_by_name("com.a");
    auto *b = oru_md_get_pkg_meta_by_name("com.b");
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(text(a->name), "com.a");
    EXPECT_STREQ(a->version, "3.2");
    EXPECT_EQ(a->type, 1);
    EXPECT_EQ(b->type, 2);
}

TEST_F(Reader, SchemaVersionIsTold) {
    TraceCapture traces;
    folder.write("a.oru2d", lib_package(""));
    load();
    EXPECT_TRUE(traces.has(7, "Schema version 1.8 found in oru2d file\n"));
    EXPECT_TRUE(traces.has(7, "SUPPORTED MAJOR Version 1 \n"));
    EXPECT_TRUE(
        traces.has(7, "Minor Version Supported : 8, but also accepts all other Minor Versions\n"));
    EXPECT_TRUE(traces.has(7, "Added meta package com.lib...\n"));
    EXPECT_EQ(traces.at(3), Texts{});
}

TEST_F(Reader, ForeignSchemaVersionStopsNothing) {
    TraceCapture traces;
    folder.write("a.oru2d", "<oru2dLib package='p' version='1' schemaVersion='2.0'/>");
    EXPECT_NE(load(), nullptr);
    EXPECT_EQ(traces.at(3), Texts{"Version mismatch in oru2d library expected a major version of 1 "
                                  "got a major version of 2\n"});
}

TEST_F(Reader, MissingSchemaVersionStopsNothing) {
    TraceCapture traces;
    folder.write("a.oru2d", "<oru2dLib package='p' version='1'/>");
    EXPECT_NE(load(), nullptr);
    EXPECT_TRUE(traces.has(7, "Schema version not found in oru2d file\n"));
    EXPECT_EQ(traces.at(3), Texts{});
}

TEST_F(Reader, UnknownElementsAttributesAndTextAreIgnored) {
    auto *package = read("text <!-- comment --><other name='x'/>" +
                         resources("<other/>" + resource("M", "<other/>text", "colour='red'")));
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(text(package->mrs->name), "M");
    EXPECT_EQ(package->mrs->next, nullptr);
}

TEST_F(Reader, NamespacesPlayNoPart) {
    folder.write("a.oru2d",
                 "<oru2dLib xmlns='urn:x' package='p' version='1' schemaVersion='1.8'>"
                 "<typeDef><simpleType name='T' base='int'/></typeDef></oru2dLib>");
    auto *bundle = load();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->pkgs->typedefs->typecode, 5);
}

// ---- Types ----

TEST_F(Reader, SimpleTypeHasTheCodeOfItsBase) {
    EXPECT_EQ(read_type("<simpleType name='T' base='unsignedLong'/>")->typecode, 6);
}

TEST_F(Reader, SimpleTypeWithoutAKnownBaseStaysUnknown) {
    auto *package = read(
        "<typeDef><simpleType name='A'/><simpleType name='B' base='Other'/>"
        "<otherType name='C'/><simpleType base='int'/></typeDef>");
    EXPECT_EQ(package->typedefs->typecode, -3);
    EXPECT_EQ(package->typedefs->next->typecode, -3);
    EXPECT_EQ(text(package->typedefs->next->next->name), "C");
    EXPECT_EQ(package->typedefs->next->next->typecode, -3);
    EXPECT_EQ(package->typedefs->next->next->next, nullptr);  // no name, no type
}

TEST_F(Reader, SimpleTypeTakesItsConstraintAttributeThoughItIsEmpty) {
    auto *type = read_type("<simpleType name='T' base='int' constraint='values(1 .. 5)'/>");
    EXPECT_EQ(constraint_texts(type->constraint_list), Texts{"Constraint: values(1..5)\n"});
}

TEST_F(Reader, EnumerationHasLabelsAndNumbers) {
    auto *type = read_type(
        "<enumerationType name='E'><a value='up' intValue='7'/>"
        "<b value='down'/><c intValue='9'/><d value='hex' intValue='0x10'/>"
        "</enumerationType>");
    EXPECT_EQ(type->typecode, 103);
    ASSERT_EQ(oru_do_nvlist_get_len(type->enums), 3);
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_get_int(oru_do_nvlist_get_value(type->enums, "up"), &code), 7);
    EXPECT_EQ(oru_do_value_get_int(oru_do_nvlist_get_value(type->enums, "down"), &code), -1);
    EXPECT_EQ(oru_do_value_get_int(oru_do_nvlist_get_value(type->enums, "hex"), &code), 0);
    EXPECT_EQ(code, 0);
}

TEST_F(Reader, EnumerationWithoutLabelsHasNoList) {
    EXPECT_EQ(read_type("<enumerationType name='E'/>")->enums, nullptr);
}

TEST_F(Reader, ComplexTypeTakesItsFirstFormOnly) {
    auto *type = read_type(
        "<complexType name='C'><other/><sequence><m name='a' type='int'/>"
        "<m name='b' type='Inner' constraint='strlen(1)'><assert><constraint>size(2)</constraint>"
        "</assert></m><m name='c'/><m type='int'/></sequence><choice><m name='d' type='int'/>"
        "</choice></complexType>");
    EXPECT_EQ(type->typecode, 105);
    auto *a = type->complex_els;
    EXPECT_EQ(text(a->name), "a");
    EXPECT_EQ(a->typecode, 5);
    EXPECT_EQ(a->constraint_list, nullptr);
    auto *b = a->next;
    EXPECT_EQ(text(b->type_name), "Inner");
    EXPECT_EQ(b->typecode, -3);
    EXPECT_EQ(constraint_texts(b->constraint_list),
              (Texts{"Constraint: size(2)\n", "Constraint: strlen(1)\n"}));
    EXPECT_EQ(b->next, nullptr);
}

TEST_F(Reader, ComplexTypeMayBeAChoice) {
    EXPECT_EQ(read_type("<complexType name='C'><choice/></complexType>")->typecode, 104);
}

TEST_F(Reader, ComplexTypeWithoutChildrenStaysUnknown) {
    EXPECT_EQ(read_type("<complexType name='C'/>")->typecode, -3);
}

TEST_F(Reader, ComplexTypeWithoutAFormFailsItsPackage) {
    TraceCapture traces(3);
    EXPECT_EQ(read_type("<complexType name='C'> </complexType>"), nullptr);
    EXPECT_EQ(traces.at(3), (Texts{"Complex type doesnot contain sequence or choice.\n",
                                   "Error occured processing typedef in com.lib...\n",
                                   "Failed to load " + folder.file("a.oru2d") + "\n",
                                   "Failed to load libraries from "}));
    EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.lib"), nullptr);
}

// ---- Definitions ----

TEST_F(Reader, DefinitionsKeepTheirAttributesUnderPlainNames) {
    auto *package = read(
        "<configDataDef><configData name='cfg' persistent='false' extends='base'>"
        "<attribute name='a' type='int'/></configData></configDataDef>"
        "<operationalDataDef><operationalData name='ops'>"
        "<attribute name='b' type='int'/></operationalData></operationalDataDef>");
    ASSERT_NE(package, nullptr);
    auto *cfg = package->cds;
    auto *ops = package->ods;
    EXPECT_EQ(text(cfg->name), "cfg");
    EXPECT_EQ(text(cfg->extends_name), "com.lib:1.0/base");
    EXPECT_EQ(cfg->is_lib, 1);
    auto *a = oru_do_prop_meta_list_get_prop_meta(cfg->prop_list, 0);
    EXPECT_EQ(text(oru_do_prop_meta_get_name(a)), "a");
    EXPECT_EQ(oru_do_prop_meta_get_category(a), 2);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(a), 0);
    EXPECT_EQ(text(ops->name), "ops");
    EXPECT_EQ(ops->extends_name, nullptr);
    auto *b = oru_do_prop_meta_list_get_prop_meta(ops->prop_list, 0);
    EXPECT_EQ(oru_do_prop_meta_get_category(b), 3);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(b), 0);
}

TEST_F(Reader, DefinitionWithoutAttributesIsDropped) {
    TraceCapture traces(3);
    EXPECT_EQ(read("<configDataDef><configData name='cfg'/></configDataDef>" +
                   resources(resource("M", "<configData name='g' ref='cfg'/>"))),
              nullptr);
    EXPECT_TRUE(traces.has(3, "Cannot resolve configData cfg\n"));
}

TEST_F(Reader, DefinitionInAnImplementationKeepsWhatItImplementsAsText) {
    load_both("",
              "<configDataDef><configData name='cfg' implements='x' extends='y'>"
              "<attribute name='a' type='int'/></configData></configDataDef>");
    auto *package = oru_md_get_pkg_meta_by_name("com.impl");
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(text(package->cds->extends_name), "x");
    EXPECT_EQ(package->cds->extends_cod, nullptr);
    EXPECT_EQ(package->cds->is_lib, 0);
}

TEST_F(Reader, FaultyConfigDefinitionFailsItsPackage) {
    TraceCapture traces(3);
    EXPECT_EQ(read("<configDataDef><configData name='cfg'><attribute name='a'/></configData>"
                   "</configDataDef>"),
              nullptr);
    EXPECT_EQ(traces.at(3)[0], "ORU2D property names and types are mandatory\n");
    EXPECT_EQ(traces.at(3)[1], "Error occured instanciating oru_do_prop_meta\n");
    EXPECT_EQ(traces.at(3)[2], "Error occured processing meta_package com.lib...\n");
}

TEST_F(Reader, LastOperationalDefinitionDecides) {
    const std::string bad = "<operationalData name='bad'><attribute type='int'/></operationalData>";
    const std::string good =
        "<operationalData name='good'><attribute name='a' type='int'/></operationalData>";
    auto *package = read("<operationalDataDef>" + bad + good + "</operationalDataDef>");
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(text(package->ods->name), "good");
    oru_md_free();
    EXPECT_EQ(read("<operationalDataDef>" + good + bad + "</operationalDataDef>"), nullptr);
}

TEST_F(Reader, DefinitionsOfAllKindsAreReadWhereverTheyStand) {
    const std::string ops =
        "<operationalDataDef><operationalData name='O'><attribute name='a' type='int'/>"
        "</operationalData></operationalDataDef>";
    const std::string cfg =
        "<configDataDef><configData name='C'><attribute name='a' type='int'/></configData>"
        "</configDataDef>";
    auto *package = read(resources(resource("M", "<configData ref='C'/>")) + ops + cfg + ops + cfg);
    ASSERT_NE(package, nullptr);
    EXPECT_NE(package->cds->next, nullptr);
    EXPECT_NE(package->ods->next, nullptr);
    EXPECT_EQ(text(package->mrs->cd_attrs->name), "a");
}

TEST_F(Reader, AttributesInANamespaceAreOthers) {
    auto *mr = read_mr("", "xmlns:x='urn:x' x:maxAccess='read-only'");
    ASSERT_NE(mr, nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_max_access(mr), 15);
}

// ---- Attributes ----

TEST_F(Reader, AttributeHasItsDefaults) {
    auto *prop = read_prop("<configData><attribute name='mtu' type='int'/></configData>");
    EXPECT_EQ(text(oru_do_prop_meta_get_name(prop)), "mtu");
    EXPECT_EQ(oru_do_prop_meta_get_category(prop), 2);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(prop), 5);
    EXPECT_EQ(text(oru_do_prop_meta_get_type_name(prop)), "int");
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(prop), 1);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(prop), 2);
    EXPECT_EQ(oru_do_prop_meta_get_ref_role(prop), 0);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(prop), 0);
    EXPECT_EQ(oru_do_prop_meta_is_primary_key(prop), 0);
    EXPECT_NE(oru_do_prop_meta_is_persistent(prop), 0);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(prop), nullptr);
}

TEST_F(Reader, AttributeAccessByWord) {
    const struct {
        const char *word;
        uint8_t access;
    } rows[] = {{"read-only", 1}, {"read-create", 5}, {"read-write", 7}, {"", 7}, {"Read-only", 7}};
    for (const auto &row : rows) {
        auto *prop = read_prop("<operationalData><attribute name='a' type='int' maxAccess='" +
                               std::string(row.word) + "'/></operationalData>");
        EXPECT_EQ(oru_do_prop_meta_get_max_access(prop), row.access) << row.word;
        EXPECT_EQ(oru_do_prop_meta_get_category(prop), 3);
        EXPECT_EQ(oru_do_prop_meta_is_persistent(prop), 0);
        oru_md_free();
    }
}

TEST_F(Reader, AttributeMultiplicityByWord) {
    auto *many = read_prop(
        "<configData><attribute name='a' type='int' multiplicity='many'/>"
        "</configData>");
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(many), 2);
    oru_md_free();
    auto *other = read_prop(
        "<configData><attribute name='a' type='int' multiplicity='two'/>"
        "</configData>");
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(other), 1);
}

TEST_F(Reader, GroupIsThePrefixOfItsAttributes) {
    auto *prop = read_prop("<configData name='g'><attribute name='a' type='int'/></configData>");
    EXPECT_EQ(text(oru_do_prop_meta_get_name(prop)), "g.a");
}

TEST_F(Reader, GroupedNameHasABound) {
    TraceCapture traces(3);
    const std::string name(253, 'a');  // with "g." 255 characters
    EXPECT_EQ(text(oru_do_prop_meta_get_name(read_prop("<configData name='g'><attribute name='" +
                                                       name + "' type='int'/></configData>"))),
              "g." + name);
    oru_md_free();
    EXPECT_EQ(
        read_mr("<configData name='g'><attribute name='a" + name + "' type='int'/></configData>"),
        nullptr);
    EXPECT_EQ(traces.at(3)[0], "Failed to build fully qualified name\n");
    EXPECT_EQ(traces.at(3)[1], "Error occured instanciating oru_do_prop_meta\n");
    EXPECT_EQ(traces.at(3)[2], "Error processing configData node\n");
}

TEST_F(Reader, AttributeWithoutNameOrTypeFailsItsPackage) {
    for (const char *attribute : {"<attribute name='a'/>", "<attribute type='int'/>"}) {
        TraceCapture traces(3);
        EXPECT_EQ(read_mr("<operationalData>" + std::string(attribute) + "</operationalData>"),
                  nullptr);
        EXPECT_EQ(traces.at(3)[0], "ORU2D property names and types are mandatory\n");
        EXPECT_EQ(traces.at(3)[1], "Error occured instanciating oru_do_prop_meta\n");
        EXPECT_EQ(traces.at(3)[2], "Error processing operationalData node\n");
        EXPECT_EQ(traces.at(3)[3], "Error occured processing meta_package com.lib...\n");
    }
}

// ---- Constraints ----

TEST_F(Reader, ConstraintsKeepTheirOrderAndTheAttributeComesLast) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int' constraint='values(9)'>"
        "<assert><condition>b.not_null()</condition><constraint>values(1 .. 2)</constraint>"
        "</assert><assert><constraint>values(3)</constraint></assert></attribute></configData>");
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(prop)),
              (Texts{"Condition: b.not_null()\nConstraint: values(1..2)\n",
                     "Constraint: values(3)\n", "Constraint: values(9)\n"}));
    auto *list = oru_do_prop_meta_get_constraint_list(prop);
    EXPECT_EQ(oru_do_constraint_list_get_constraint_unconditional(list),
              oru_do_constraint_list_get_constraint(list, 1));
    EXPECT_EQ(oru_do_prop_meta_get_constraint(prop, 2),
              oru_do_constraint_list_get_constraint(list, 2));
    EXPECT_EQ(oru_do_prop_meta_get_constraint(prop, 3), nullptr);
}

TEST_F(Reader, ConstraintAttributeOfAnEmptyElementIsNotRead) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int' constraint='values(9)'/></configData>");
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(prop), nullptr);
}

TEST_F(Reader, ConstraintAttributeOfAnEmptyReferenceIsNotReadAndThatOfAMemberIs) {
    auto *ref = read_prop("<reference name='r' targetIsA='T' constraint='size(1)'/>");
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(ref), nullptr);
    oru_md_free();
    auto *type = read_type(
        "<complexType name='C'><choice><m name='a' type='int' constraint='values(1)'/></choice>"
        "</complexType>");
    EXPECT_EQ(constraint_texts(type->complex_els->constraint_list),
              Texts{"Constraint: values(1)\n"});
}

TEST_F(Reader, AssertIsReadByItsFirstChildNodes) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int'><assert><constraint/></assert><assert>"
        "<constraint>values(1)<!-- x -->default(2)</constraint></assert></attribute></configData>");
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(prop)),
              Texts{"Constraint: values(1)\n"});
}

// A failed constraint of a type or member fails the package, that of an attribute only itself.
TEST_F(Reader, ConstraintThatCannotBeHadFailsThePackageOfATypeOnly) {
    const std::string assertion =
        "<assert><condition>b.is_null()</condition><constraint>values(1)</constraint></assert>";
    const struct {
        std::string content;
        bool fails;
    } rows[] = {
        {"<typeDef><simpleType name='T' base='int'>" + assertion + "</simpleType></typeDef>", true},
        {"<typeDef><complexType name='C'><choice><m name='a' type='int'>" + assertion +
             "</m></choice></complexType></typeDef>",
         true},
        {resources(resource("M", "<configData><attribute name='a' type='int'>" + assertion +
                                     "</attribute></configData>")),
         false},
        {resources(resource(
             "M", "<key><attribute name='a' type='int'>" + assertion + "</attribute></key>")),
         false},
        {resources(
             resource("M", "<reference name='a' targetIsA='M'>" + assertion + "</reference>")),
         false},
    };
    for (const auto &row : rows) {
        folder.write("a.oru2d", lib_package(row.content));
        int told = 0;
        for (uint64_t nth = 1;; ++nth) {
            ASSERT_LT(nth, 10000u);
            TraceCapture traces(3);
            poolheap_fail_nth(nth, 0);
            EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", nullptr), 0);
            const bool failed = poolheap_fail_hits() > 0;
            poolheap_fail_off();
            if (traces.has(3, "oru_do_condition creation failed.\n") ||
                traces.has(3, "oru_do_constraint creation failed.\n")) {
                ++told;
                EXPECT_EQ(oru_md_get_pkg_meta_by_name("com.lib") == nullptr, row.fails);
                EXPECT_TRUE(traces.has(3, row.fails
                                              ? "Error occured processing typedef in com.lib...\n"
                                              : "Error 10002 while parsing assert element"));
            }
            oru_md_free();
            if (!failed)
                break;
        }
        EXPECT_GE(told, 4) << row.content;  // condition and constraint, each a record and a text
    }
}

TEST_F(Reader, ConditionBehindTheConstraintHasNoEffect) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int'><assert>"
        "<constraint>values(1)</constraint><condition>b.is_null()</condition>"
        "</assert></attribute></configData>");
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(prop)),
              Texts{"Constraint: values(1)\n"});
}

TEST_F(Reader, SecondConditionAndConstraintOfAnAssertAreIgnored) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int'><assert>"
        "<condition>b.is_null()</condition><condition>c.is_null()</condition>"
        "<constraint>values(1)</constraint><constraint>values(2)</constraint>"
        "</assert></attribute></configData>");
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(prop)),
              Texts{"Condition: b.is_null()\nConstraint: values(1)\n"});
}

TEST_F(Reader, AssertWithoutConstraintAddsNothing) {
    auto *prop = read_prop(
        "<configData><attribute name='a' type='int'><assert>"
        "<condition>b.is_null()</condition></assert></attribute></configData>");
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(prop), nullptr);
}

TEST_F(Reader, TextOfAConstraintIsThatOfItsFirstNode) {
    const auto read_text = [this](const std::string &content) {
        auto *prop = read_prop("<configData><attribute name='a' type='int'><assert><constraint>" +
                               content + "</constraint></assert></attribute></configData>");
        const Texts texts = constraint_texts(oru_do_prop_meta_get_constraint_list(prop));
        oru_md_free();
        return texts.empty() ? "none" : texts[0];
    };
    EXPECT_EQ(read_text("regex(a&amp;&#38;#38;&lt;&#98;)"), "Constraint: regex(a&&#38;<b)\n");
    EXPECT_EQ(read_text("<![CDATA[values]]><![CDATA[(1)]]>"), "Constraint: values(1)\n");
    EXPECT_EQ(read_text("values<![CDATA[(1)]]>"), "Constraint: values\n");
    EXPECT_EQ(read_text("values(1)<!---->|values(2)"), "Constraint: values(1)\n");
    EXPECT_EQ(read_text("<!--values(2)-->values(1)"), "Constraint: values(2)\n");
    EXPECT_EQ(read_text("<b>values<i>(1)</i></b>values(2)"), "Constraint: values(1)\n");
    EXPECT_EQ(read_text("<?values (3)?>values(1)"), "Constraint: (3)\n");
    EXPECT_EQ(read_text("<?values?>values(1)"), "none");
    EXPECT_EQ(read_text(""), "none");
}

TEST_F(Reader, ReferencesInAttributesStandForTheirCharacters) {
    auto *type = read_type("<simpleType name='&lt;&amp;&#38;#38;&#65;&quot;' base='int'/>");
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(text(type->name), "<&&#38;A\"");
}

// ---- Resources ----

TEST_F(Reader, ResourceAccessByWord) {
    const struct {
        const char *word;
        uint8_t access;
    } rows[] = {{"read-only", 4}, {"read-write", 15}, {"read-create", 13}, {"read-update", 6},
                {"oper-data", 0}, {"[CRUD]", 15},     {"[crud]", 15},      {"[-R-D]", 5},
                {"[C-u-]", 10},   {"[----]", 0},      {"[DURC]", 0},       {"(CRUD)", 15},
                {"[CRUD] ", 15},  {"[CRU]", 15},      {"something", 15},   {"", 15}};
    for (const auto &row : rows) {
        auto *mr = read_mr("", "maxAccess='" + std::string(row.word) + "'");
        ASSERT_NE(mr, nullptr);
        EXPECT_EQ(oru_do_mr_meta_get_max_access(mr), row.access) << row.word;
        oru_md_free();
    }
    EXPECT_EQ(oru_do_mr_meta_get_max_access(read_mr("")), 15);
}

TEST_F(Reader, ResourceIsDescribedAndStored) {
    auto *package = read(resources(resource("M", "", "extends='Base' implements='x'")));
    auto *mr = package->mrs;
    EXPECT_EQ(mr->package, package);
    EXPECT_EQ(text(mr->name), "M");
    EXPECT_EQ(text(mr->parent_name), "com.lib:1.0/Base");
    EXPECT_EQ(mr->is_lib, 1);
    EXPECT_EQ(text(oru_do_mr_meta_get_mr_fq_name(mr->do_mr_meta)), "com.lib:1.0/M");
    EXPECT_EQ(text(oru_do_mr_meta_get_pkg_name(mr->do_mr_meta)), "com.lib");
    EXPECT_NE(oru_do_mr_meta_is_lib_mr(mr->do_mr_meta), 0);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(mr->do_mr_meta), 0);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta_list(mr->do_mr_meta), nullptr);
}

TEST_F(Reader, QualifiedParentStays) {
    auto *package = read(resources(resource("M", "", "extends='other:2/Base'")));
    EXPECT_EQ(text(package->mrs->parent_name), "other:2/Base");
}

TEST_F(Reader, ResourceWithoutANameFailsItsPackage) {
    TraceCapture traces(3);
    EXPECT_EQ(read(resources("<managedResource/>")), nullptr);
    EXPECT_EQ(traces.at(3)[0], "Mandatory field 'name' is missing, rc=10000\n");
    EXPECT_EQ(traces.at(3)[1], "Error occured processing meta_package com.lib...\n");
}

TEST_F(Reader, OneNonPersistentGroupSpeaksForItsDefinition) {
    auto *package =
        read(resources(resource("A", "") +
                       resource("B",
                                "<configData persistent='false'><attribute name='a' type='int'/>"
                                "</configData>") +
                       resource("C",
                                "<configData persistent='no'><attribute name='a' type='int'/>"
                                "</configData>")) +
             resources(resource("D", "")));
    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next) {
        EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(mr->do_mr_meta), text(mr->name) != "D");
    }
    auto *b = oru_md_get_mr_meta_w_str(package, "B"), *c = oru_md_get_mr_meta_w_str(package, "C");
    EXPECT_EQ(oru_do_prop_meta_is_persistent(b->cd_attrs->prop_meta), 0);
    EXPECT_NE(oru_do_prop_meta_is_persistent(c->cd_attrs->prop_meta), 0);
}

TEST_F(Reader, PropertiesStandInDocumentOrderAndInTheirChains) {
    auto *package = read(resources(resource(
        "M",
        "<operationalData><attribute name='o' type='int'/></operationalData>"
        "<reference name='r' targetIsA='M'/><key><attribute name='k1' type='int'/>"
        "<attribute name='k2' type='string'/></key><configData><attribute name='c' type='int'/>"
        "</configData><key><attribute name='s' type='int'/></key>")));
    auto *mr = package->mrs;
    auto *list = oru_do_prop_meta_list_new();
    oru_do_mr_meta_get_all_prop_meta(mr->do_mr_meta, list);
    Texts names;
    for (int32_t i = 0; i < oru_do_prop_meta_list_get_len(list); ++i)
        names.push_back(
            text(oru_do_prop_meta_get_name(oru_do_prop_meta_list_get_prop_meta(list, i))));
    oru_do_prop_meta_list_deref(list);
    EXPECT_EQ(names, (Texts{"o", "r", "k1", "k2", "c", "s"}));
    EXPECT_EQ(text(mr->primary_keys->name), "k1");
    EXPECT_EQ(text(mr->primary_keys->next->name), "k2");
    EXPECT_EQ(text(mr->secondary_keys->name), "s");
    EXPECT_EQ(text(mr->refs->name), "r");
    EXPECT_EQ(text(mr->cd_attrs->name), "c");
    EXPECT_EQ(text(mr->od_attrs->name), "o");
    EXPECT_EQ(text(mr->od_attrs->group_name), "");
    EXPECT_EQ(mr->od_attrs->group_name, mr->cd_attrs->group_name);
}

TEST_F(Reader, KeysKnowTheirPlaceInTheirGroup) {
    auto *package =
        read(resources(resource("M",
                                "<key><attribute name='k1' type='int' maxAccess='read-create' "
                                "multiplicity='many' constraint='values(1)'/><attribute name='k2' "
                                "type='string' constraint='strlen(2)'> </attribute></key>"
                                "<key><attribute name='s1' type='int'/></key>")));
    auto *k1 = package->mrs->primary_keys->prop_meta;
    auto *k2 = package->mrs->primary_keys->next->prop_meta;
    auto *s1 = package->mrs->secondary_keys->prop_meta;
    EXPECT_EQ(oru_do_prop_meta_get_category(k1), 0);
    EXPECT_NE(oru_do_prop_meta_is_primary_key(k1), 0);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(k1), 1);
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(k1), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(k1), 1);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(k1), 1);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(k1), 0);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(k1), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(k2), 2);
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(k2), k1);
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(k2)),
              Texts{"Constraint: strlen(2)\n"});
    EXPECT_EQ(oru_do_prop_meta_is_primary_key(s1), 0);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(s1), 1);
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(s1), nullptr);
}

TEST_F(Reader, KeyWithoutNameOrTypeFailsItsPackage) {
    for (const char *attribute : {"<attribute name='a'/>", "<attribute type='int'/>"}) {
        TraceCapture traces(3);
        EXPECT_EQ(read_mr("<key>" + std::string(attribute) + "</key>"), nullptr);
        EXPECT_EQ(traces.at(3)[0], "Name and type are mandatory for attributes\n");
        EXPECT_EQ(traces.at(3)[1], "Error processing key node\n");
    }
}

TEST_F(Reader, ReferenceHasItsDefaults) {
    auto *prop = read_prop("<reference name='r' targetIsA='Target'/><reference targetIsA='X'/>");
    EXPECT_EQ(oru_do_prop_meta_get_category(prop), 1);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(prop), 107);
    EXPECT_EQ(text(oru_do_prop_meta_get_type_name(prop)), "com.lib:1.0/Target");
    EXPECT_EQ(oru_do_prop_meta_get_ref_role(prop), 1);
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(prop), 1);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(prop), 1);
}

TEST_F(Reader, ReferenceByWords) {
    const struct {
        const char *attributes;
        int32_t role, multiplicity, typecode;
        uint8_t access;
    } rows[] = {
        {"targetRole='child' maxAccess='read-only'", 1, 1, 107, 1},
        {"targetRole='parent' maxAccess='read-create'", 2, 1, 107, 5},
        {"targetRole='peer' maxAccess='oper-data'", 3, 1, 107, 0},
        {"targetRole='other' maxAccess='other'", 1, 1, 107, 7},
        {"multiplicity='many'", 1, 2, 108, 1},
        {"multiplicity='one'", 1, 1, 107, 1},
    };
    for (const auto &row : rows) {
        auto *prop = read_prop("<reference name='r' " + std::string(row.attributes) + "/>");
        EXPECT_EQ(oru_do_prop_meta_get_ref_role(prop), row.role) << row.attributes;
        EXPECT_EQ(oru_do_prop_meta_get_multiplicity(prop), row.multiplicity) << row.attributes;
        EXPECT_EQ(oru_do_prop_meta_get_typecode(prop), row.typecode) << row.attributes;
        EXPECT_EQ(oru_do_prop_meta_get_max_access(prop), row.access) << row.attributes;
        EXPECT_EQ(oru_do_prop_meta_get_type_name(prop), nullptr);
        oru_md_free();
    }
}

TEST_F(Reader, ReferenceKeepsAQualifiedTargetAndItsConstraints) {
    auto *prop = read_prop(
        "<reference name='r' targetIsA='p:1/T' constraint='size(1)'><assert>"
        "<constraint>size(2)</constraint></assert></reference>");
    EXPECT_EQ(text(oru_do_prop_meta_get_type_name(prop)), "p:1/T");
    EXPECT_EQ(constraint_texts(oru_do_prop_meta_get_constraint_list(prop)),
              (Texts{"Constraint: size(2)\n", "Constraint: size(1)\n"}));
}

// ---- Constant keys ----

TEST_F(Reader, OnlyValueOfAKeyIsTheConstantKey) {
    const struct {
        const char *type;
        const char *constraint;
        const char *key;  // null for none
    } rows[] = {
        {"string", "values(eth)", "eth"},
        {"string", "values(\"eth\")", "eth"},
        {"int", "values(7)", "7"},
        {"int", "strlen(1) values( 7 ) default(9)", "7"},
        {"int", "values(*..7)", "7"},  // one bound, whatever side is open
        {"int", "values(7..*)", "7"},
        {"int", "values(7..7)", nullptr},
        {"int", "values(7|8)", nullptr},
        {"int", "values(7|bad)", "7"},  // a bound that does not fit is dropped
        {"int", "values(bad)", nullptr},
        {"int", "values(7,8)", "7"},
        {"int", "default(7)", nullptr},
        {"unsignedInt", "values(-7)", "0"},
        {"int", "values(com.lib/E.up)", "4"},
        {"Unknown", "values(7)", "7"},
        {"Unknown", "values(eth)", "eth"},
        {"Unknown", "values(\"7\")", "7"},
        {"Unknown", "values(true)", "true"},
        {"Unknown", "values(10.0.0.1)", "10.0.0.1"},
        {"Unknown", "values(-7)", "-7"},
        {"Unknown", "values()", nullptr},
    };
    for (const auto &row : rows) {
        auto *package = read(
            "<typeDef><enumerationType name='E'><v value='up' intValue='4'/></enumerationType>"
            "</typeDef>" +
            resources(resource("M",
                               "<key><attribute name='a' type='string'/><attribute name='k' "
                               "type='" +
                                   std::string(row.type) + "'><assert><constraint>" +
                                   row.constraint + "</constraint></assert></attribute></key>")));
        ASSERT_NE(package, nullptr);
        auto *key = oru_md_get_const_key(package->mrs);
        ASSERT_EQ(key != nullptr, row.key != nullptr) << row.type << ' ' << row.constraint;
        int32_t code = 0;
        if (key != nullptr) {
            EXPECT_STREQ(oru_do_value_get_string(key, &code), row.key) << row.constraint;
        }
        oru_md_free();
    }
}

TEST_F(Reader, FirstConstantKeyCounts) {
    const auto key = [](const char *value) {
        return "<attribute name='k' type='string'><assert><constraint>" + std::string(value) +
               "</constraint></assert><assert><constraint>values(second)</constraint></assert>"
               "</attribute>";
    };
    auto *package = read(resources(resource(
        "M", "<key>" + key("strlen(3)") + key("values(one)") + key("values(two)") + "</key>")));
    int32_t code = 0;
    EXPECT_STREQ(oru_do_value_get_string(oru_md_get_const_key(package->mrs), &code), "one");
}

// ---- Actions ----

TEST_F(Reader, ActionHasThreeListsOfParameters) {
    auto *mr = read_mr(
        "<action name='reset'><inputParameter name='a' type='int' multiplicity='many' "
        "maxAccess='read-only' constraint='values(1)'><assert><constraint>values(2)"
        "</constraint></assert></inputParameter><outputParameter name='b' "
        "type='string'/><outputParameter name='c' type='int'/><errorParameter "
        "name='d' type='int'/><other/></action><action name='plain'/>");
    auto *reset = oru_do_mr_meta_get_act_meta(mr, "reset");
    ASSERT_NE(reset, nullptr);
    auto *in = oru_do_act_meta_get_in_params(reset);
    ASSERT_EQ(oru_do_prop_meta_list_get_len(in), 1);
    auto *a = oru_do_prop_meta_list_get_prop_meta(in, 0);
    EXPECT_EQ(text(oru_do_prop_meta_get_name(a)), "a");
    EXPECT_EQ(oru_do_prop_meta_get_category(a), -1);
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(a), 2);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(a), 1);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(a), 0);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(a), nullptr);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(oru_do_act_meta_get_out_params(reset)), 2);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(oru_do_act_meta_get_err_params(reset)), 1);
    auto *plain = oru_do_mr_meta_get_act_meta(mr, "plain");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(oru_do_act_meta_get_in_params(plain), nullptr);
    EXPECT_EQ(oru_do_act_meta_list_get_len(oru_do_mr_meta_get_act_meta_list(mr)), 2);
}

TEST_F(Reader, ActionWithoutANameFailsItsPackage) {
    TraceCapture traces(3);
    EXPECT_EQ(read_mr("<action/>"), nullptr);
    EXPECT_EQ(traces.at(3)[0], "Unable to parse action name\n");
    EXPECT_EQ(traces.at(3)[1], "Error processing action node\n");
}

TEST_F(Reader, FaultyParameterFailsItsPackage) {
    TraceCapture traces(3);
    EXPECT_EQ(read_mr("<action name='a'><errorParameter name='x'/></action>"), nullptr);
    EXPECT_EQ(traces.at(3)[0], "ORU2D property names and types are mandatory\n");
    EXPECT_EQ(traces.at(3)[1], "Error instantiating oru_do_prop_meta\n");
    EXPECT_EQ(traces.at(3)[2], "Error processing action node\n");
}

TEST_F(Reader, SmallImplementationIsReadWhole) {
    folder.write("a.oru2d", lib_package(resources(resource("Port", "")), "com.example.lib"));
    folder.write("b.oru2d",
                 "<oru2dImpl package='com.example.net' version='1.0' schemaVersion='1.8'>"
                 "<managedResourceDef><managedResource name='Port' "
                 "implements='com.example.lib:1.0/Port'>"
                 "<key><attribute name='id' type='unsignedInt'/></key>"
                 "<reference name='peer' targetIsA='Link' targetRole='peer'/>"
                 "<configData name='cfg'><attribute name='mtu' type='int'><assert><constraint>"
                 "values(68..9216) default(1500)</constraint></assert></attribute></configData>"
                 "<action name='reset'><inputParameter name='delay' type='int'/></action>"
                 "</managedResource></managedResourceDef></oru2dImpl>");
    ASSERT_NE(load(), nullptr);
    auto *port = oru_md_get_mr_meta_by_name("com.example.net/Port");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->parent_mr, oru_md_get_mr_meta_by_name("com.example.lib/Port"));
    EXPECT_EQ(text(port->primary_keys->name), "id");
    EXPECT_EQ(oru_do_prop_meta_get_typecode(port->primary_keys->prop_meta), 4);
    EXPECT_EQ(text(port->refs->target_name), "com.example.net:1.0/Link");
    EXPECT_EQ(port->refs->is_child, 0);
    EXPECT_EQ(port->refs->target_mr, nullptr);
    EXPECT_EQ(text(port->cd_attrs->name), "cfg.mtu");
    auto *constraint = oru_do_prop_meta_get_constraint(port->cd_attrs->prop_meta, 0);
    EXPECT_STREQ(oru_do_constraint_get_str(constraint), "values(68..9216)default(1500)");
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_get_int(oru_do_constraint_get_default_value(constraint), &code), 1500);
    EXPECT_NE(oru_do_mr_meta_get_act_meta(port->do_mr_meta, "reset"), nullptr);
}

}  // namespace
