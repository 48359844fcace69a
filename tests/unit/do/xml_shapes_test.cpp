// Every shape that the XML forms of containers can take, and what happens without memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/event.h"
#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/xml.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Deref;
using oru::test::Name;
using oru::test::Nvlist;
using oru::test::Strbuf;
using oru::test::Uri;
using oru::test::Value;
using oru::test::Vlist;
using ErrorPtr = std::unique_ptr<ORUDoError, Deref<oru_do_error_deref>>;
using Event = std::unique_ptr<ORUDoEvent, Deref<oru_do_event_deref>>;
using List = std::unique_ptr<ORUDoPropertiesList, Deref<oru_do_properties_list_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;
using Table = std::unique_ptr<ORUDoVtable, Deref<oru_do_vtable_deref>>;
using Tree = std::unique_ptr<ORUDoDtree, Deref<oru_do_dtree_deref>>;

constexpr uint32_t kHideSecrets = 1;
constexpr uint32_t kPlain = 2;

using Write = std::function<int32_t(ORUDoStrbuf *)>;

std::string written(const Write &write) {
    const Strbuf strbuf(oru_do_strbuf_new());
    EXPECT_EQ(write(strbuf.get()), 0);
    return oru_do_strbuf_to_string(strbuf.get());
}

Value secret() {
    Value value(oru_do_value_new_string("pw"));
    oru_do_value_set_typedef_name(value.get(), "PasswordString");
    return value;
}

// An integer "n", a secret "s".
Properties sample() {
    Properties props(oru_do_properties_new());
    oru_do_properties_set_int(props.get(), "n", 1);
    oru_do_properties_set_value(props.get(), "s", secret().get());
    return props;
}

constexpr char kOpen[] = R"(<n type="int">1</n><s type="string" typedef="PasswordString">pw</s>)";
constexpr char kHidden[] =
    R"(<n type="int">1</n><s type="string" typedef="PasswordString">&lt;removed&gt;</s>)";
constexpr char kOpenPlain[] = "<n>1</n><s>pw</s>";
constexpr char kHiddenPlain[] = "<n>1</n><s>&lt;removed&gt;</s>";

std::string element(const std::string &name, const std::string &content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

// ---- Tables of properties ----

TEST(XmlShapes, PropertiesUnderEveryOption) {
    const Properties props = sample();
    const auto form = [&](uint32_t opts) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_properties_to_xml_opt(nullptr, nullptr, props.get(), b, opts);
        });
    };
    EXPECT_EQ(form(0), element("properties", kOpen));
    EXPECT_EQ(form(kHideSecrets), element("properties", kHidden));
    EXPECT_EQ(form(kPlain), element("properties", kOpenPlain));
    EXPECT_EQ(form(kPlain | kHideSecrets), element("properties", kHiddenPlain));
}

TEST(XmlShapes, PropertiesWithoutEntries) {
    const Properties props(oru_do_properties_new());
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml("x:", nullptr, props.get(), b);
              }),
              "<x:properties></x:properties>");
}

// Neither the wrapper nor the names of properties are escaped; values are.
TEST(XmlShapes, NamesStandAsTheyAre) {
    const Properties props(oru_do_properties_new());
    oru_do_properties_set_string(props.get(), "a<b", "<&>\"'");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml_opt("&", "w<", props.get(), b, kPlain);
              }),
              "<&w<><&a<b>&lt;&amp;&gt;&quot;&apos;</&a<b></&w<>");
}

TEST(XmlShapes, PropertiesHoldValuesOfEveryKind) {
    const Properties props(oru_do_properties_new());
    const Vlist numbers(oru_do_vlist_new());
    oru_do_vlist_add_int(numbers.get(), 1);
    oru_do_vlist_add_int(numbers.get(), 2);
    oru_do_properties_set_array(props.get(), "a", numbers.get());
    const Nvlist members(oru_do_nvlist_new());
    oru_do_nvlist_add_boolean(members.get(), "m", 1);
    oru_do_properties_set_sequence(props.get(), "q", members.get());
    const Vlist words(oru_do_vlist_new());
    oru_do_vlist_add_enumeration(words.get(), "up");
    oru_do_properties_set_bits(props.get(), "b", words.get());
    oru_do_properties_set_mr_uri(props.get(), "u", Uri(oru_do_uri_new("/a;k=<")).get());
    oru_do_properties_set_default(props.get(), "d");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml("x:", nullptr, props.get(), b);
              }),
              R"(<x:properties>)"
              R"(<x:a type="array"><x:a type="int">1</x:a><x:a type="int">2</x:a></x:a>)"
              R"(<x:q type="sequence"><x:m type="boolean">true</x:m></x:q>)"
              R"(<x:b type="bits"><x:bits><x:b type="enumeration"><x:up/></x:b></x:bits></x:b>)"
              R"(<x:u type="mrURI">/a;k=&lt;</x:u>)"
              R"(<x:d type="__default__"></x:d>)"
              R"(</x:properties>)");
    // Options are not handed down into values.
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml_opt(nullptr, "", props.get(), b, kPlain);
              }),
              R"(<><a><a type="int">1</a><a type="int">2</a></a>)"
              R"(<q><m type="boolean">true</m></q>)"
              R"(<b><bits><b type="enumeration"><up/></b></bits></b>)"
              R"(<u>/a;k=&lt;</u><d></d></>)");
}

TEST(XmlShapes, PropertiesListsUnderEveryOptionAndWrapper) {
    const List list(oru_do_properties_list_new());
    const auto form = [&](const char *prefix, const char *wrapper, uint32_t opts) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_properties_list_to_xml_opt(prefix, wrapper, list.get(), b, opts);
        });
    };
    EXPECT_EQ(form(nullptr, nullptr, 0), "<properties_list></properties_list>");
    EXPECT_EQ(form("x:", "", 0), "<x:></x:>");
    oru_do_properties_list_add(list.get(), sample().get());
    oru_do_properties_list_add(list.get(), Properties(oru_do_properties_new()).get());
    const std::string empty = "<properties></properties>";
    EXPECT_EQ(form(nullptr, nullptr, 0),
              element("properties_list", element("properties", kOpen) + empty));
    EXPECT_EQ(form(nullptr, "w", kHideSecrets),
              element("w", element("properties", kHidden) + empty));
    EXPECT_EQ(form(nullptr, "", kPlain), element("", element("properties", kOpenPlain) + empty));
    EXPECT_EQ(form(nullptr, "w", kPlain | kHideSecrets),
              element("w", element("properties", kHiddenPlain) + empty));
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_list_to_xml(nullptr, nullptr, list.get(), b);
              }),
              element("properties_list", element("properties", kOpen) + empty));
}

// ---- Lists and tables of values ----

TEST(XmlShapes, AListOfValuesTellsEveryTypeThatIsOne) {
    const auto form = [](const Vlist &list) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_vlist_to_xml_opt(nullptr, nullptr, nullptr, list.get(), b, kPlain);
        });
    };
    const Vlist nulls(oru_do_vlist_new());
    oru_do_vlist_add(nulls.get(), Value(oru_do_value_new_null()).get());
    EXPECT_EQ(form(nulls), R"(<vlist type="null"><value></value></vlist>)");
    const Vlist defaults(oru_do_vlist_new());
    oru_do_vlist_add(defaults.get(), Value(oru_do_value_new_default()).get());
    EXPECT_EQ(form(defaults), R"(<vlist type="__default__"><value></value></vlist>)");
    const Vlist texts(oru_do_vlist_new());
    oru_do_vlist_add_string(texts.get(), "a");
    oru_do_vlist_add_string(texts.get(), "b");
    EXPECT_EQ(form(texts), R"(<vlist type="string"><value>a</value><value>b</value></vlist>)");
    oru_do_vlist_add_int(texts.get(), 1);
    EXPECT_EQ(form(texts), "<vlist><value>a</value><value>b</value><value>1</value></vlist>");
}

TEST(XmlShapes, ListsOfNamedValuesUnderEveryOptionAndWrapper) {
    const Nvlist list(oru_do_nvlist_new());
    const auto form = [&](const char *prefix, const char *wrapper, uint32_t opts) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_nvlist_to_xml_opt(prefix, wrapper, list.get(), b, opts);
        });
    };
    EXPECT_EQ(form("x:", nullptr, 0), "<x:nvlist></x:nvlist>");
    EXPECT_EQ(form("x:", "", 0), "");
    oru_do_nvlist_add_int(list.get(), "n", 1);
    oru_do_nvlist_add(list.get(), "s", secret().get());
    EXPECT_EQ(form(nullptr, nullptr, 0), element("nvlist", kOpen));
    EXPECT_EQ(form(nullptr, "", kHideSecrets), kHidden);
    EXPECT_EQ(form(nullptr, "w", kPlain), element("w", kOpenPlain));
    EXPECT_EQ(form(nullptr, "", kPlain | kHideSecrets), kHiddenPlain);
}

TEST(XmlShapes, ValueTablesUnderEveryOptionAndWrapper) {
    const Table table(oru_do_vtable_new());
    const auto form = [&](const char *prefix, const char *wrapper, uint32_t opts) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_vtable_to_xml_opt(prefix, wrapper, table.get(), b, opts);
        });
    };
    EXPECT_EQ(form(nullptr, nullptr, 0), "<vtable></vtable>");
    EXPECT_EQ(form("x:", "", 0), "<x:></x:>");
    const Vlist mixed(oru_do_vlist_new());
    oru_do_vlist_add_int(mixed.get(), 1);
    oru_do_vlist_add(mixed.get(), secret().get());
    oru_do_vtable_add(table.get(), mixed.get());
    oru_do_vtable_add(table.get(), Vlist(oru_do_vlist_new()).get());
    EXPECT_EQ(form(nullptr, nullptr, kHideSecrets),
              R"(<vtable><vlist><value type="int">1</value>)"
              R"(<value type="string" typedef="PasswordString">&lt;removed&gt;</value></vlist>)"
              R"(<vlist></vlist></vtable>)");
    EXPECT_EQ(form("x:", "w", kPlain),
              "<x:w><x:vlist><x:value>1</x:value><x:value>pw</x:value></x:vlist>"
              "<x:vlist></x:vlist></x:w>");
    EXPECT_EQ(form(nullptr, "", kPlain | kHideSecrets),
              "<><vlist><value>1</value><value>&lt;removed&gt;</value></vlist><vlist></vlist></>");
}

// ---- Errors ----

TEST(XmlShapes, CausesStandInEachOther) {
    const ErrorPtr first(oru_do_error_new(1, "a"));
    const ErrorPtr second(oru_do_error_new_w_cause(-2, "b", first.get()));
    const ErrorPtr third(oru_do_error_new_w_cause(3, nullptr, second.get()));
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_xml(nullptr, third.get(), b); }),
              "<error><code>3</code><message></message><cause>"
              "<error><code>-2</code><message>b</message><cause>"
              "<error><code>1</code><message>a</message></error>"
              "</cause></error></cause></error>");
}

TEST(XmlShapes, NamespacesAndMessagesAreEscaped) {
    const ErrorPtr err(oru_do_error_new(1, "<&>\"'"));
    oru_do_error_set_namespace(err.get(), "<&>\"'");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_xml("x:", err.get(), b); }),
              R"(<x:error namespace="&lt;&amp;&gt;&quot;&apos;"><x:code>1</x:code>)"
              R"(<x:message>&lt;&amp;&gt;&quot;&apos;</x:message></x:error>)");
    oru_do_error_set_namespace(err.get(), "");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_error_to_xml(nullptr, err.get(), b);
              }).substr(0, 20),
              R"(<error namespace="">)");
}

// The set of an error has its element twice, and so has the error of each entry.
TEST(XmlShapes, AnEmptySetOfAnErrorIsThere) {
    const ErrorPtr err(oru_do_error_new(1, "m"));
    ORUDoPropErrs *none = oru_do_prop_errs_new();
    oru_do_error_set_prop_errs(err.get(), none);
    oru_do_prop_errs_deref(none);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_xml("x:", err.get(), b); }),
              "<x:error><x:code>1</x:code><x:message>m</x:message>"
              "<x:prop_errs><x:prop_errs></x:prop_errs></x:prop_errs></x:error>");
}

// ---- Events ----

TEST(XmlShapes, AnEventUnderAnEmptyWrapperHasAnElementWithoutAName) {
    const Event event(oru_do_event_new(Name(oru_do_name_new("e")).get(),
                                       Uri(oru_do_uri_new("/a")).get(), INT64_MIN, INT32_MIN,
                                       nullptr));
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_event_to_xml("x:", "", event.get(), b); }),
        "<x:><x:name>e</x:name><x:uri>/a</x:uri><x:time>-9223372036854775808</x:time>"
        "<x:severity>-2147483648</x:severity><x:info></x:info></x:>");
}

// The package plays no part, and the secrets of an event are shown.
TEST(XmlShapes, TheInfoOfAnEventIsWrittenInFull) {
    const Event event(oru_do_event_new_2(Name(oru_do_name_new("p")).get(), "1.0",
                                         Name(oru_do_name_new("e")).get(), nullptr, 1, 2,
                                         sample().get()));
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_event_to_xml(nullptr, "w", event.get(), b); }),
        "<w><name>e</name><uri></uri><time>1</time><severity>2</severity><info>" +
            element("properties", kOpen) + "</info></w>");
}

// ---- Data trees ----

ORUDoDtree *add(const Tree &parent, ORUDoDtree *node, const char *name) {
    return oru_do_dtree_add_child(node != nullptr ? node : parent.get(),
                                  Name(oru_do_name_new(name)).get());
}

// r (error) > a (URI, properties) > nameless (property) > b; r > c, hidden, > d; r > e.
Tree sample_tree() {
    Tree root(oru_do_dtree_new_str("r"));
    oru_do_dtree_set_error(root.get(), ErrorPtr(oru_do_error_new(5, "m")).get());
    ORUDoDtree *a = add(root, nullptr, "a");
    oru_do_dtree_set_mr_data(a, Uri(oru_do_uri_new("/u;k=<")).get(), sample().get());
    ORUDoDtree *nameless = add(root, a, "");
    oru_do_dtree_set_value(nameless, "t", Value(oru_do_value_new_boolean(0)).get());
    oru_do_dtree_set_mr_uri(nameless, Uri(oru_do_uri_new("/lost")).get());
    add(root, nameless, "b");
    ORUDoDtree *c = add(root, nullptr, "c");
    oru_do_dtree_hide_node(c, 1);
    add(root, c, "d");
    add(root, nullptr, "e");
    return root;
}

constexpr char kError[] = "<e:error><e:code>5</e:code><e:message>m</e:message></e:error>";

TEST(XmlShapes, ATreeWithLayout) {
    const Tree tree = sample_tree();
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_opt(1, "x:", "e:", tree.get(), b, kPlain);
              }),
              std::string("\n\t<x:r>") + kError +
                  "\n\t\t<x:a uri=\"/u;k=&lt;\">"
                  "\n\t\t\t<x:n>1</x:n>"
                  "\n\t\t\t<x:s>pw</x:s>"
                  "\n\t\t\t<x:t>false</x:t>"
                  "\n\t\t\t<x:b>"
                  "\n\t\t\t</x:b>"
                  "\n\t\t</x:a>"
                  "\n\t\t<x:e>"
                  "\n\t\t</x:e>"
                  "\n\t</x:r>");
}

TEST(XmlShapes, ATreeWithoutLayout) {
    const Tree tree = sample_tree();
    const std::string expected =
        std::string("<r>") + kError +
        "<a uri=\"/u;k=&lt;\">\n<n>1</n>\n<s>&lt;removed&gt;</s>\n<t>false</t><b></b></a><e></e>"
        "</r>";
    for (const int32_t indent : {-1, -7, INT32_MIN}) {
        EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                      return oru_do_dtree_to_xml_opt(indent, nullptr, "e:", tree.get(), b,
                                                     kPlain | kHideSecrets);
                  }),
                  expected);
    }
}

TEST(XmlShapes, TheShortFormsOfTreesHaveNoOptions) {
    const Tree tree(oru_do_dtree_new_str("r"));
    oru_do_dtree_set_properties(tree.get(), sample().get());
    oru_do_dtree_set_error(tree.get(), ErrorPtr(oru_do_error_new(5, "m")).get());
    const std::string n = R"(<n type="int">1</n>)";
    const std::string s = R"(<s type="string" typedef="PasswordString">pw</s>)";
    const std::string plain_error = "<error><code>5</code><message>m</message></error>";
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml(nullptr, nullptr, tree.get(), b);
              }),
              "<r>" + plain_error + "\n" + n + "\n" + s + "</r>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_tab(0, nullptr, nullptr, tree.get(), b);
              }),
              "\n<r>" + plain_error + "\n\t" + n + "\n\t" + s + "\n</r>");
}

TEST(XmlShapes, ANamelessRootLeavesItsChildrenAtItsDepth) {
    const Tree tree(oru_do_dtree_new_str(""));
    add(tree, nullptr, "c");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_tab(0, "x:", nullptr, tree.get(), b);
              }),
              "\n<x:c>\n</x:c>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml(nullptr, nullptr, tree.get(), b);
              }),
              "<c></c>");
    const Tree empty(oru_do_dtree_new_str(""));
    oru_do_dtree_set_mr_uri(empty.get(), Uri(oru_do_uri_new("/lost")).get());
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_tab(0, "x:", nullptr, empty.get(), b);
              }),
              "");
}

// The flag speaks of a node among its siblings: who asks for it by itself gets it.
TEST(XmlShapes, AHiddenRootIsWritten) {
    const Tree tree(oru_do_dtree_new_str("r"));
    oru_do_dtree_hide_node(tree.get(), 1);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml(nullptr, nullptr, tree.get(), b);
              }),
              "<r></r>");
}

// ---- Memory: the result is 0, the buffer tells ----

void expect_buffer_tells(const Write &write) {
    oru::test::sweep_oom(
        [&write] {
            const Strbuf buf(oru_do_strbuf_new());
            if (buf == nullptr)
                return;
            EXPECT_EQ(write(buf.get()), 0);
            EXPECT_EQ(oru_do_strbuf_get_err(buf.get()), oru::test::oom_hit() ? 10002 : 0);
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST(XmlShapesMemory, TheBufferTellsOfWhatIsMissing) {
    const std::string text(400, '<');
    const Properties props = sample();
    oru_do_properties_set_string(props.get(), "long", text.c_str());
    const List list(oru_do_properties_list_new());
    oru_do_properties_list_add(list.get(), props.get());
    const Vlist row(oru_do_vlist_new());
    oru_do_vlist_add_string(row.get(), text.c_str());
    const Table table(oru_do_vtable_new());
    oru_do_vtable_add(table.get(), row.get());
    const ErrorPtr cause(oru_do_error_new(1, text.c_str()));
    const ErrorPtr err(oru_do_error_new_w_cause(2, text.c_str(), cause.get()));
    oru_do_error_set_prop_err(err.get(), Name(oru_do_name_new("p")).get(), cause.get());
    const Event event(
        oru_do_event_new(Name(oru_do_name_new(text.c_str())).get(), nullptr, 1, 2, props.get()));
    const Tree tree = sample_tree();
    oru_do_dtree_set_properties(tree.get(), props.get());
    oru_do_dtree_set_error(tree.get(), err.get());

    expect_buffer_tells(
        [&](ORUDoStrbuf *b) { return oru_do_properties_to_xml(nullptr, nullptr, props.get(), b); });
    expect_buffer_tells([&](ORUDoStrbuf *b) {
        return oru_do_properties_list_to_xml(nullptr, nullptr, list.get(), b);
    });
    expect_buffer_tells(
        [&](ORUDoStrbuf *b) { return oru_do_vtable_to_xml(nullptr, nullptr, table.get(), b); });
    expect_buffer_tells([&](ORUDoStrbuf *b) { return oru_do_error_to_xml(nullptr, err.get(), b); });
    expect_buffer_tells([&](ORUDoStrbuf *b) {
        return oru_do_prop_errs_to_xml(nullptr, oru_do_error_get_prop_errs(err.get()), b);
    });
    expect_buffer_tells(
        [&](ORUDoStrbuf *b) { return oru_do_event_to_xml(nullptr, nullptr, event.get(), b); });
    expect_buffer_tells(
        [&](ORUDoStrbuf *b) { return oru_do_dtree_to_xml_tab(0, "x:", "e:", tree.get(), b); });
}

// ---- Required arguments of the forms with options ----

TEST(XmlShapes, RequiredArgumentsAreAsserted) {
    const Strbuf strbuf(oru_do_strbuf_new());
    ORUDoStrbuf *b = strbuf.get();
    const Properties props = sample();
    const List list(oru_do_properties_list_new());
    const Table table(oru_do_vtable_new());
    const Tree tree(oru_do_dtree_new_str("r"));
    const ErrorPtr err(oru_do_error_new(1, "m"));
    EXPECT_ASSERTION(oru_do_properties_to_xml_opt(nullptr, nullptr, nullptr, b, 0), "props");
    EXPECT_ASSERTION(oru_do_properties_to_xml_opt(nullptr, nullptr, props.get(), nullptr, 0),
                     "strbuf");
    EXPECT_ASSERTION(oru_do_properties_list_to_xml_opt(nullptr, nullptr, nullptr, b, 0), "list");
    EXPECT_ASSERTION(oru_do_properties_list_to_xml(nullptr, nullptr, list.get(), nullptr),
                     "strbuf");
    EXPECT_ASSERTION(oru_do_vtable_to_xml_opt(nullptr, nullptr, nullptr, b, 0), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_to_xml(nullptr, nullptr, table.get(), nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_error_to_xml(nullptr, err.get(), nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_dtree_to_xml_tab(0, nullptr, nullptr, nullptr, b), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_to_xml_opt(0, nullptr, nullptr, tree.get(), nullptr, 0),
                     "strbuf");
}

}  // namespace
