// Damaged packages and packages that mean harm: each ends in its stated result with its words, in
// a time that goes with its size, and the XML parser prints nothing by itself.
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/properties.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <sstream>

#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;

// Fails when its scope takes longer than any of these files may on a slow machine with checks, or
// when something was printed.
class QuickAndSilent {
  public:
    QuickAndSilent() { testing::internal::CaptureStderr(); }
    ~QuickAndSilent() {
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_LT(std::chrono::steady_clock::now() - begin_, std::chrono::seconds(60));
    }
    QuickAndSilent(const QuickAndSilent &) = delete;
    QuickAndSilent &operator=(const QuickAndSilent &) = delete;

  private:
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

struct Ending {
    int32_t code;
    Texts words;
    friend bool operator==(const Ending &, const Ending &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Ending &ending) {
        return out << ending.code << " " << testing::PrintToString(ending.words);
    }
};

class Hostile : public StoreTest {
  protected:
    ~Hostile() override { oru_md_map_delete(store); }

    // Reads one file as a library package into a store of its own.
    Ending read(const std::string &content) {
        oru_md_map_delete(store);
        store = nullptr;
        folder.write("a.oru2d", content);
        TraceCapture traces(6);
        const QuickAndSilent guard;
        const int32_t code =
            _oru_md_init_meta_info(folder.path().c_str(), "", ".oru2d", 1, &store, nullptr);
        return {code, traces.at(3)};
    }
    Ending read_lib(const std::string &content) { return read(lib_package(content)); }

    Ending unparsed() const {
        const std::string file = folder.file("a.oru2d");
        return {107, {"Failed to parse " + file + "\n", "Failed to load " + file + "\n"}};
    }
    ORUMdPkgMeta *package() const {
        return store != nullptr && store->bundles != nullptr ? store->bundles->pkgs : nullptr;
    }

    // Loads the folder. What was said at level 3.
    Texts load_words() {
        TraceCapture traces(6);
        const QuickAndSilent guard;
        load();
        return traces.at(3);
    }

    ORUMdMap *store = nullptr;
};

const Ending kFine{0, {}};
const Ending kNoRoot{10000, {}};

std::string repeated(const std::string &text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

// The text `make(0)`, `make(1)` and so on.
template <class Make>
std::string numbered(int times, Make &&make) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += make(std::to_string(i));
    return all;
}

// ---- Truncated and garbled ----

TEST_F(Hostile, TruncatedPackagesAreRefusedWhereverTheyEnd) {
    std::stringstream all;
    all << std::ifstream(NETWORK_PACKAGES "/network-lib.oru2d").rdbuf();
    const std::string content = all.str();
    const size_t root_known = content.find("<oru2dLib ") + 10;
    const size_t whole = content.rfind('>') + 1;
    for (size_t length = 0; length < whole; length += length < root_known ? 7 : 89)
        EXPECT_EQ(read(content.substr(0, length)), length < root_known ? kNoRoot : unparsed())
            << length;
    EXPECT_EQ(read(content.substr(0, whole - 1)), unparsed());
    EXPECT_EQ(read(content.substr(0, whole)), kFine);
}

TEST_F(Hostile, ZeroBytesEndWhatIsRead) {
    const std::string zero(1, '\0');
    const std::string good = "<oru2dLib package='p' version='1'></oru2dLib>";
    EXPECT_EQ(read(zero + good), kNoRoot);  // the look for the root ends at it
    EXPECT_EQ(read(zero + "\n" + good), unparsed());
    EXPECT_EQ(read("<oru2dLib package='p" + zero + "q' version='1'/>"), unparsed());
    EXPECT_EQ(read("<oru2dLib package='p' version='1'>" + zero + "</oru2dLib>"), unparsed());
    EXPECT_EQ(read(good + zero), kFine);  // the document was over
}

TEST_F(Hostile, EveryByteMayBeAnyOther) {
    const std::string good =
        lib_package("<typeDef><simpleType name='T' base='int' constraint='values(1)'/></typeDef>" +
                    resources(resource("M", "<key><attribute name='k' type='T'/></key>")));
    for (size_t at = 0; at < good.size(); ++at) {
        std::string bad = good;
        bad[at] = '<';
        const Ending ending = read(bad);
        EXPECT_TRUE(ending == unparsed() || ending == kNoRoot || good[at] == '<') << at;
    }
}

// ---- Encodings ----

TEST_F(Hostile, EncodingsAreReadAsTheyAreTold) {
    const auto with_encoding = [](const std::string &encoding, const std::string &name) {
        return "<?xml version='1.0' encoding='" + encoding + "'?>\n" +
               lib_package(resources(resource(name, "")));
    };
    EXPECT_EQ(read(with_encoding("ISO-8859-1", "M\xe9")), kFine);
    EXPECT_EQ(text(package()->mrs->name), "M\xc3\xa9");
    EXPECT_EQ(read(with_encoding("UTF-8", "M\xc3\xa9")), kFine);
    EXPECT_EQ(text(package()->mrs->name), "M\xc3\xa9");
    EXPECT_EQ(read("\xef\xbb\xbf" + lib_package("")), kFine);
    EXPECT_EQ(read(with_encoding("UTF-8", "M\xe9")), unparsed());
    EXPECT_EQ(read(with_encoding("US-ASCII", "M\xc3\xa9")), unparsed());
    EXPECT_EQ(read(lib_package(resources(resource("\xed\xa0\x80", "")))), unparsed());  // surrogate
    EXPECT_EQ(read(lib_package(resources(resource("\xc0\xaf", "")))), unparsed());      // overlong
    EXPECT_EQ(read(with_encoding("no-such-thing", "M")), unparsed());
}

// The root is looked for byte by byte.
TEST_F(Hostile, WideCharactersShowNoRoot) {
    std::string wide = "\xff\xfe";
    for (const char c : lib_package(""))
        wide += std::string{c, '\0'};
    EXPECT_EQ(read(wide), kNoRoot);
}

// ---- Entities and document types ----

TEST_F(Hostile, OnlyTheEntitiesOfXmlItselfAreKnown) {
    EXPECT_EQ(read_lib(resources(resource("&lt;&#65;&#x42;&amp;", ""))), kFine);
    EXPECT_EQ(text(package()->mrs->name), "<AB&");
    for (const char *reference : {"&other;", "&#0;", "&#xD800;", "&#xFFFFFFFFF;", "&", "&;"})
        EXPECT_EQ(read_lib(resources(resource(reference, ""))), unparsed()) << reference;
}

TEST_F(Hostile, EntitiesAreRefusedWhereTheyAreDeclared) {
    const std::string end = "]>\n<oru2dLib package='p' version='1'/>";  // nobody uses them
    for (const char *declaration : {"<!ENTITY a 'b'>", "<!ENTITY a SYSTEM '/etc/hostname'>",
                                    "<!ENTITY a PUBLIC '-//x' 'http://localhost:1/x'>",
                                    "<!ENTITY % a '<!ENTITY b \"c\">'>%a;", "<!ENTITY a '&a;'>",
                                    "<!ENTITY a '&b;'><!ENTITY b '&a;'>"}) {
        EXPECT_EQ(read(std::string("<!DOCTYPE oru2dLib [") + declaration + end), unparsed())
            << declaration;
    }
}

// A default could be repeated without end by elements that leave the attribute out.
TEST_F(Hostile, DefaultsAreRefusedWhereTheyAreDeclared) {
    const std::string end = "]>\n" + lib_package(resources("<managedResource/>"));
    for (const char *declaration :
         {"<!ATTLIST managedResource name CDATA 'M'>", "<!ATTLIST x y CDATA #FIXED 'z'>",
          "<!ATTLIST x y (a|b) 'a'>", "<!ATTLIST x y CDATA ''>"}) {
        EXPECT_EQ(read(std::string("<!DOCTYPE oru2dLib [") + declaration + end), unparsed())
            << declaration;
    }
    EXPECT_EQ(read("<!DOCTYPE oru2dLib [<!ATTLIST managedResource name CDATA '" +
                   std::string(9000000, 'z') + "'>]>\n" +
                   lib_package(resources(repeated("<managedResource/>", 100000)))),
              unparsed());
}

TEST_F(Hostile, DocumentTypesAddNothing) {
    EXPECT_EQ(
        read("<!DOCTYPE oru2dLib [<!ELEMENT oru2dLib ANY><!ATTLIST x y (a|b) #IMPLIED z CDATA "
             "#REQUIRED><!NOTATION n SYSTEM 'n'>]>\n" +
             lib_package("")),
        kFine);
    EXPECT_EQ(
        read("<!DOCTYPE oru2dLib PUBLIC '-//x' 'http://localhost:1/x.dtd'>\n" + lib_package("")),
        kFine);
    EXPECT_EQ(read_lib("<xi:include xmlns:xi='http://www.w3.org/2001/XInclude' "
                       "href='/etc/hostname' parse='text'/><?xml-stylesheet href='x'?>"),
              kFine);
}

// ---- Size ----

TEST_F(Hostile, NestingEndsAtTheLimitOfTheParser) {
    const auto nested = [](int depth) { return repeated("<a>", depth) + repeated("</a>", depth); };
    EXPECT_EQ(read_lib(nested(200)), kFine);
    EXPECT_EQ(read_lib(nested(300)), unparsed());
    EXPECT_EQ(read_lib(repeated("<a>", 100000)), unparsed());
}

TEST_F(Hostile, AttributesEndAtTheLimitOfTheParser) {
    EXPECT_EQ(read_lib("<a b='" + std::string(9000000, 'x') + "'/>"), kFine);
    EXPECT_EQ(read_lib("<a b='" + std::string(11000000, 'x') + "'/>"), unparsed());
    EXPECT_EQ(read_lib("<" + std::string(60000, 'a') + "/>"), unparsed());
    EXPECT_EQ(read_lib("<a " + std::string(60000, 'b') + "=''/>"), unparsed());
}

TEST_F(Hostile, TextsEndAtTheLimitOfTheParser) {
    EXPECT_EQ(read_lib(std::string(9000000, 'x')), kFine);
    EXPECT_EQ(read_lib(std::string(11000000, 'x')), unparsed());
    EXPECT_EQ(read_lib(repeated("<![CDATA[x]]>", 100000)), kFine);
}

TEST_F(Hostile, LongNamesStayWhole) {
    const std::string name(1000000, 'n');
    EXPECT_EQ(read(lib_package(resources(resource(name, "")), name)), kFine);
    EXPECT_EQ(text(package()->name), name);
    EXPECT_EQ(text(oru_do_mr_meta_get_mr_fq_name(package()->mrs->do_mr_meta)),
              name + ":1.0/" + name);
}

TEST_F(Hostile, NameInAGroupHasABound) {
    const auto in_group = [](size_t length) {
        return resources(resource("M", "<configData name='g'><attribute name='" +
                                           std::string(length, 'a') +
                                           "' type='int'/></configData>"));
    };
    EXPECT_EQ(read_lib(in_group(253)), kFine);  // with "g." 255 characters
    EXPECT_EQ(read_lib(in_group(254)),
              (Ending{10000,
                      {"Failed to build fully qualified name\n",
                       "Error occured instanciating oru_do_prop_meta\n",
                       "Error processing configData node\n",
                       "Error occured processing meta_package com.lib...\n",
                       "Failed to load " + folder.file("a.oru2d") + "\n"}}));
}

TEST_F(Hostile, ThousandsOfEverything) {
    constexpr int kMany = 3000;
    EXPECT_EQ(read_lib(repeated("<a/>", 100000)), kFine);
    const auto types = numbered(
        kMany, [](const std::string &i) { return "<simpleType name='T" + i + "' base='int'/>"; });
    const auto labels =
        "<enumerationType name='E'>" +
        numbered(kMany, [](const std::string &i) { return "<l value='v" + i + "'/>"; }) +
        "</enumerationType>";
    const auto members =
        "<complexType name='S'><sequence>" +
        numbered(kMany, [](const std::string &i) { return "<m name='m" + i + "' type='E'/>"; }) +
        "</sequence></complexType>";
    const auto attributes = "<configData>" +
                            numbered(kMany,
                                     [](const std::string &i) {
                                         return "<attribute name='a" + i + "' type='T" + i + "'/>";
                                     }) +
                            "</configData>";
    const auto others = numbered(kMany, [](const std::string &i) { return resource("M" + i, ""); });
    folder.write("a.oru2d", lib_package("<typeDef>" + types + labels + members + "</typeDef>" +
                                        resources(resource("L", attributes) + others)));
    folder.write("b.oru2d", impl_package(resources(resource("I", "", "implements='com.lib/L'"))));
    EXPECT_EQ(load_words(), Texts{});
    auto *impl = oru_md_get_mr_meta_by_name("com.impl/I");
    ASSERT_NE(impl, nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(impl->do_mr_meta), kMany);
    EXPECT_NE(oru_md_get_mr_meta_by_name("com.lib/M2999"), nullptr);
}

TEST_F(Hostile, ThousandsOfFiles) {
    constexpr int kFiles = 2000;
    for (int i = 0; i < kFiles; ++i)
        folder.write(std::to_string(i) + ".oru2d", lib_package("", "p" + std::to_string(i)));
    EXPECT_EQ(load_words(), Texts{});
    for (int i = 0; i < kFiles; ++i)
        EXPECT_NE(oru_md_get_pkg_meta_by_name(("p" + std::to_string(i)).c_str()), nullptr) << i;
}

TEST_F(Hostile, HundredsOfBrokenFilesAreAllTold) {
    for (int i = 0; i < 300; ++i)
        folder.write(std::to_string(i) + ".oru2d", "<oru2dLib broken");
    EXPECT_EQ(load_words().size(), 2u * 300 + 1);
}

// ---- What is no file ----

TEST_F(Hostile, PipesAndDevicesAreNotWaitedFor) {
    ASSERT_EQ(mkfifo(folder.file("a.oru2d").c_str(), 0600), 0);
    {
        TraceCapture traces(6);
        const QuickAndSilent guard;
        EXPECT_EQ(_oru_md_init_meta_info(folder.path().c_str(), "", ".oru2d", 1, &store, nullptr),
                  10000);
        EXPECT_EQ(traces.at(3), Texts{});
    }
    std::filesystem::remove(folder.file("a.oru2d"));
    std::filesystem::create_symlink("/dev/zero", folder.file("a.oru2d"));
    const QuickAndSilent guard;
    EXPECT_EQ(_oru_md_init_meta_info(folder.path().c_str(), "", ".oru2d", 1, &store, nullptr),
              10000);
}

// ---- Patterns ----

TEST_F(Hostile, PatternsThatExplodeAreReadAndAskedQuickly) {
    for (const auto &pattern :
         {std::string("(((a{1,999}){1,999}){1,999}){1,999}"), std::string("(a*)*(a*)*(a*)*b"),
          repeated("a?", 60) + repeated("a", 60), repeated("[^a]*", 24), std::string("[[:alpha:]"),
          std::string("a\\1\\2\\3"), std::string(100, '('), std::string(100, '{'),
          std::string(1000, '*')}) {
        const QuickAndSilent guard;
        folder.write("a.oru2d",
                     lib_package(resources(resource(
                         "M",
                         "<configData><attribute name='a' type='string'><assert><condition>"
                         "a.regex(\"" +
                             pattern + "\")</condition><constraint>regex(\"" + pattern +
                             "\")</constraint></assert></attribute></configData>"))));
        EXPECT_NE(load(), nullptr) << pattern;
        auto *attr = oru_md_get_attr_meta_by_name("com.lib/M.a");
        ASSERT_NE(attr, nullptr) << pattern;
        const Value text(oru_do_value_new_string(std::string(5000, 'a').c_str()));
        Properties given(oru_do_properties_new());
        oru_do_properties_set_value(given.get(), "a", text.get());
        const int32_t code = oru_md_eval_attr_constraint(attr, text.get(), given.get());
        EXPECT_TRUE(code == 0 || code == 116) << pattern << " " << code;
        oru_md_free();
    }
}

TEST_F(Hostile, WordsWithoutEndLoadAllTheSame) {
    for (const auto &words :
         {repeated("values(", 10000), repeated("1|", 10000) + ")", std::string(10000, ' '),
          "values(" + std::string(10000, '1') + "..*)",
          "default({" + std::string(10000, '[') + "})", repeated("not (", 10000),
          repeated("a.values(1) and ", 1000), repeated("..", 5000),
          std::string("values(%s%n%99999999d)"), std::string("\"")}) {
        const QuickAndSilent guard;
        folder.write("a.oru2d",
                     lib_package(resources(resource(
                         "M", "<configData><attribute name='a' type='int'><assert><condition>" +
                                  words + "</condition><constraint>" + words +
                                  "</constraint></assert></attribute></configData>"))));
        EXPECT_NE(load(), nullptr) << words.substr(0, 20);
        oru_md_free();
    }
}

// ---- Names that stand twice ----

TEST_F(Hostile, OfTwoAlikeTheFirstIsFound) {
    EXPECT_EQ(
        read_lib("<typeDef><simpleType name='T' base='int'/><simpleType name='T' base='long'/>"
                 "<enumerationType name='E'><l value='a' intValue='1'/><l value='a' "
                 "intValue='2'/></enumerationType></typeDef><configDataDef><configData "
                 "name='D'><attribute name='x' type='int'/></configData><configData "
                 "name='D'><attribute name='y' type='int'/></configData></configDataDef>" +
                 resources(resource("M",
                                    "<reference name='r' targetIsA='A'/>"
                                    "<reference name='r' targetIsA='B'/>"
                                    "<configData><attribute name='a' type='int'/>"
                                    "<attribute name='a' type='long'/></configData>"
                                    "<configData ref='D'/>") +
                           resource("M", ""))),
        kFine);
    EXPECT_EQ(oru_md_get_typedef_meta_w_str(package(), "T")->typecode, ORU_DO_TYPE_INT);
    auto *labels = oru_md_get_typedef_meta_w_str(package(), "E")->enums;
    int32_t code = 0;
    EXPECT_EQ(oru_do_value_get_int(oru_do_nvlist_get_value(labels, "a"), &code), 1);
    auto *resource = oru_md_get_mr_meta_w_str(package(), "M");
    EXPECT_EQ(resource, package()->mrs);
    EXPECT_EQ(text(oru_md_get_ref_meta_w_str(resource, "r")->target_name), "com.lib:1.0/A");
    EXPECT_EQ(
        oru_do_prop_meta_get_typecode(oru_do_mr_meta_get_prop_meta_str(resource->do_mr_meta, "a")),
        ORU_DO_TYPE_INT);
    EXPECT_NE(oru_do_mr_meta_get_prop_meta_str(resource->do_mr_meta, "x"), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_prop_meta_str(resource->do_mr_meta, "y"), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(resource->do_mr_meta), 5);
}

// Whether the load fails is told by the last file.
TEST_F(Hostile, PackageMayStandOnceOnly) {
    folder.write("a.oru2d", lib_package("", "p"));
    folder.write("b.oru2d", impl_package("", "p"));
    std::string last;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path()))
        last = entry.path().filename();
    Texts expected{"Metadata collision detected: p is already present\n",
                   "Failed to load " + folder.file("b.oru2d") + "\n"};
    if (last == "b.oru2d")
        expected.push_back("Failed to load impl oru2ds from ");
    EXPECT_EQ(load_words(), expected);
    auto *found = oru_md_get_pkg_meta_by_name("p");
    EXPECT_EQ(found != nullptr, last == "a.oru2d");
    if (found != nullptr) {
        EXPECT_EQ(found->type, ORU_MD_PKG_LIBRARY);
    }
}

// ---- Circles and chains ----

TEST_F(Hostile, TypesThatHoldEachOtherHaveNoDescription) {
    const std::string two = "<m name='x' type='A'/><m name='y' type='A'/>";
    folder.write("a.oru2d", lib_package("<typeDef><complexType name='A'><sequence>" + two +
                                        "<m name='z' type='B'/></sequence></complexType>"
                                        "<complexType name='B'><choice>" +
                                        two + "</choice></complexType></typeDef>"));
    folder.write("b.oru2d", impl_package(resources(resource(
                                "M", "<configData>" + numbered(100, [](const std::string &i) {
                                         return "<attribute name='a" + i + "' type='com.lib/A'/>";
                                     }) + "</configData>"))));
    EXPECT_EQ(load_words(), Texts(100, "Failed to get typedef meta for com.lib/A\n"));
    EXPECT_NE(oru_md_get_mr_meta_by_name("com.impl/M"), nullptr);
}

TEST_F(Hostile, ResourcesThatExtendEachOtherStopNothing) {
    folder.write("a.oru2d",
                 lib_package(resources(
                     resource("A", "", "extends='B'") + resource("B", "", "extends='A'") +
                     resource("C", "<reference name='r' targetIsA='C'/>", "extends='C'"))));
    folder.write("b.oru2d", impl_package(resources(resource("I", "", "implements='com.lib/A'") +
                                                   resource("J", "", "implements='com.lib/C'"))));
    EXPECT_EQ(load_words(), Texts{});
    auto *impl = oru_md_get_mr_meta_by_name("com.impl/J");
    ASSERT_NE(impl, nullptr);
    const Uri uri(oru_do_uri_new("/r/r/r/r/r/r/r/r/r/r"));
    int32_t rest = 0;
    EXPECT_EQ(oru_md_get_mr_meta_by_uri(uri.get(), 0, impl, &rest, nullptr, nullptr, nullptr),
              oru_md_get_mr_meta_by_name("com.lib/C"));
    EXPECT_EQ(rest, 9);
}

// The deepest chain of definitions that a group can copy.
TEST_F(Hostile, LongChainOfDefinitionsIsRefused) {
    folder.write(
        "a.oru2d",
        lib_package("<configDataDef>" +
                    numbered(1000,
                             [](const std::string &i) {
                                 return "<configData name='D" + i + "' extends='D" +
                                        std::to_string(std::stoi(i) + 1) + "'><attribute name='a" +
                                        i + "' type='int'/></configData>";
                             }) +
                    "<configData name='D1000'><attribute name='a' type='int'/></configData>"
                    "</configDataDef>"));
    folder.write("b.oru2d",
                 impl_package(resources(resource("M", "<configData implements='com.lib/D0'/>"))));
    const Texts words = load_words();
    const auto group = std::find(words.begin(), words.end(), "Error processing configData node\n");
    EXPECT_EQ(std::count(words.begin(), group, "Error occurred in "), group - words.begin());
    EXPECT_GT(group, words.begin());
    ASSERT_GE(words.end() - group, 3);
    EXPECT_EQ(group[1], "Error occured processing meta_package com.impl...\n");
    EXPECT_EQ(group[2], "Failed to load " + folder.file("b.oru2d") + "\n");
    EXPECT_EQ(oru_md_get_mr_meta_by_name("com.impl/M"), nullptr);
}

TEST_F(Hostile, DefinitionDoesNotReadWhatItRefersTo) {
    EXPECT_EQ(read_lib("<configDataDef><configData name='D' ref='D' extends='D'><attribute "
                       "name='a' type='int'/></configData></configDataDef>" +
                       resources(resource("M", "<configData ref='D'/>"))),
              kFine);
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(package()->mrs->do_mr_meta), 1);
}

// ---- What looks like something else ----

TEST_F(Hostile, CommentMayNameTheOtherKind) {
    folder.write("a.oru2d",
                 "<!-- <oru2dImpl -->\n" +
                     lib_package(resources(resource("M", "<reference name='r' targetIsA='M'/>"))));
    EXPECT_EQ(load_words(), Texts{});
    auto *resource = oru_md_get_mr_meta_by_name("com.lib/M");
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(resource->package->type, ORU_MD_PKG_LIBRARY);
    EXPECT_EQ(resource->refs->target_mr, nullptr);  // the pass over libraries was over
}

TEST_F(Hostile, NamesAreNoFormats) {
    folder.write("a.oru2d", lib_package(resources(resource(
                                "%s",
                                "<reference name='%n' targetIsA='%s%n%9999999d'/>"
                                "<configData><attribute name='a' type='%s%n'/></configData>"))));
    EXPECT_EQ(load_words(), (Texts{"Unresolved reference mr com.lib:1.0/%s%n%9999999d\n",
                                   "type %s%n unresolved\n"}));
}

}  // namespace
