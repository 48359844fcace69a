#include <gtest/gtest.h>

#include <string>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/xml.h"
#include "tests/support/death.h"

namespace {

template <class Write>
std::string written(Write &&write) {
    ORUDoStrbuf *strbuf = oru_do_strbuf_new();
    EXPECT_EQ(write(strbuf), 0);
    std::string text = oru_do_strbuf_to_string(strbuf);
    oru_do_strbuf_deref(strbuf);
    return text;
}

class XmlObjects : public testing::Test {
  protected:
    XmlObjects() {
        oru_do_properties_set_int(props, "a", 1);
        oru_do_properties_set_null(props, "b");
    }
    ~XmlObjects() override { oru_do_properties_deref(props); }
    ORUDoProperties *props = oru_do_properties_new();
};

TEST_F(XmlObjects, Properties) {
    const auto form = [&](const char *prefix, const char *wrapper, uint32_t opts) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_properties_to_xml_opt(prefix, wrapper, props, b, opts);
        });
    };
    const std::string content = R"(<a type="int">1</a><b type="null" xsi:null="true"></b>)";
    EXPECT_EQ(form(nullptr, nullptr, 0), "<properties>" + content + "</properties>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml(nullptr, nullptr, props, b);
              }),
              "<properties>" + content + "</properties>");
    EXPECT_EQ(form(nullptr, "", 0), "<>" + content + "</>");
    EXPECT_EQ(form("x:", "w", 2), "<x:w><x:a>1</x:a><x:b></x:b></x:w>");
}

TEST_F(XmlObjects, ListsAndTablesHandTheOptionsDown) {
    ORUDoPropertiesList *list = oru_do_properties_list_new();
    oru_do_properties_list_add(list, props);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_list_to_xml_opt(nullptr, nullptr, list, b, 2);
              }),
              "<properties_list><properties><a>1</a><b></b></properties></properties_list>");
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_properties_list_to_xml("x:", "w", list, b); }),
        R"(<x:w><x:properties><x:a type="int">1</x:a>)"
        R"(<x:b type="null" xsi:null="true"></x:b></x:properties></x:w>)");
    oru_do_properties_list_deref(list);

    ORUDoVtable *table = oru_do_vtable_new();
    ORUDoVlist *row = oru_do_vlist_new();
    oru_do_vlist_add_int(row, 1);
    oru_do_vtable_add(table, row);
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_vtable_to_xml(nullptr, nullptr, table, b); }),
        R"(<vtable><vlist type="int"><value type="int">1</value></vlist></vtable>)");
    EXPECT_EQ(
        written([&](ORUDoStrbuf *b) { return oru_do_vtable_to_xml_opt("x:", "w", table, b, 2); }),
        R"(<x:w><x:vlist type="int"><x:value>1</x:value></x:vlist></x:w>)");
    oru_do_vlist_deref(row);
    oru_do_vtable_deref(table);
}

TEST_F(XmlObjects, Errors) {
    ORUDoError *cause = oru_do_error_new(2, nullptr);
    ORUDoError *err = oru_do_error_new_w_cause(1, "a<b", cause);
    ORUDoName *name = oru_do_name_new("p&");
    oru_do_error_set_namespace(err, "n\"");
    oru_do_error_set_prop_err(err, name, cause);
    const std::string inner = "<error><code>2</code><message></message></error>";
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_xml(nullptr, err, b); }),
              R"(<error namespace="n&quot;"><code>1</code><message>a&lt;b</message><cause>)" +
                  inner + "</cause><prop_errs><prop_errs><prop_err><property>p&</property><error>" +
                  inner + "</error></prop_err></prop_errs></prop_errs></error>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_error_to_xml("x:", cause, b); }),
              "<x:error><x:code>2</x:code><x:message></x:message></x:error>");
    oru_do_name_deref(name);
    oru_do_error_deref(err);
    oru_do_error_deref(cause);
}

TEST_F(XmlObjects, ErrorsOfPropertiesByThemselves) {
    ORUDoPropErrs *errs = oru_do_prop_errs_new();
    const auto form = [&](const char *prefix) {
        return written([&](ORUDoStrbuf *b) { return oru_do_prop_errs_to_xml(prefix, errs, b); });
    };
    EXPECT_EQ(form(nullptr), "<prop_errs></prop_errs>");
    ORUDoError *err = oru_do_error_new(-7, "m");
    for (const char *text : {"p", "q"}) {
        ORUDoName *name = oru_do_name_new(text);
        oru_do_prop_errs_set_err(errs, name, err);
        oru_do_name_deref(name);
    }
    const std::string error =
        "<x:error><x:error><x:code>-7</x:code><x:message>m</x:message></x:error></x:error>";
    EXPECT_EQ(form("x:"), "<x:prop_errs><x:prop_err><x:property>p</x:property>" + error +
                              "</x:prop_err><x:prop_err><x:property>q</x:property>" + error +
                              "</x:prop_err></x:prop_errs>");
    oru_do_error_deref(err);
    oru_do_prop_errs_deref(errs);
}

class XmlDtree : public XmlObjects {
  protected:
    XmlDtree() {
        ORUDoName *name = oru_do_name_new("c");
        child = oru_do_dtree_add_child(root, name);
        hidden = oru_do_dtree_add_child(root, name);
        oru_do_dtree_hide_node(hidden, 1);
        oru_do_name_deref(name);
        ORUDoUri *uri = oru_do_uri_new("/u?\"");
        oru_do_dtree_set_mr_data(child, uri, props);
        oru_do_uri_deref(uri);
    }
    ~XmlDtree() override { oru_do_dtree_deref(root); }

    std::string form(int32_t indent) {
        return written([&](ORUDoStrbuf *b) {
            return oru_do_dtree_to_xml_opt(indent, nullptr, "e:", root, b, 2);
        });
    }

    ORUDoDtree *root = oru_do_dtree_new_str("r");
    ORUDoDtree *child;
    ORUDoDtree *hidden;
};

TEST_F(XmlDtree, WithLayout) {
    EXPECT_EQ(form(0), "\n<r>\n\t<c uri=\"/u?&quot;\">\n\t\t<a>1</a>\n\t\t<b></b>\n\t</c>\n</r>");
}

TEST_F(XmlDtree, WithoutLayoutOnlyPropertiesHaveALineFeed) {
    EXPECT_EQ(form(-1), "<r><c uri=\"/u?&quot;\">\n<a>1</a>\n<b></b></c></r>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_dtree_to_xml("x:", nullptr, child, b); }),
              "<x:c uri=\"/u?&quot;\">\n<x:a type=\"int\">1</x:a>"
              "\n<x:b type=\"null\" xsi:null=\"true\"></x:b></x:c>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_tab(1, nullptr, nullptr, hidden, b);
              }),
              "\n\t<c>\n\t</c>");
}

TEST_F(XmlDtree, ANodeWithoutANameGivesItsContent) {
    ORUDoDtree *nameless = oru_do_dtree_new_str("");
    ORUDoError *err = oru_do_error_new(5, "m");
    oru_do_dtree_set_error(nameless, err);
    oru_do_error_deref(err);
    ORUDoName *name = oru_do_name_new("c");
    oru_do_dtree_add_child(nameless, name);
    oru_do_name_deref(name);
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_dtree_to_xml_tab(0, nullptr, "e:", nameless, b);
              }),
              "<e:error><e:code>5</e:code><e:message>m</e:message></e:error>\n<c>\n</c>");
    oru_do_dtree_deref(nameless);
}

TEST_F(XmlDtree, PropertiesWithoutAValueAreLeftOut) {
    oru_do_properties_reset_values(props);
    EXPECT_EQ(form(-1), "<r><c uri=\"/u?&quot;\"></c></r>");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) {
                  return oru_do_properties_to_xml(nullptr, nullptr, props, b);
              }),
              "<properties></properties>");
}

TEST_F(XmlDtree, RequiredArgumentsAreAsserted) {
    ORUDoStrbuf *b = oru_do_strbuf_new();
    EXPECT_ASSERTION(oru_do_properties_to_xml(nullptr, nullptr, nullptr, b), "props");
    EXPECT_ASSERTION(oru_do_properties_to_xml(nullptr, nullptr, props, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_properties_list_to_xml(nullptr, nullptr, nullptr, b), "list");
    EXPECT_ASSERTION(oru_do_vtable_to_xml(nullptr, nullptr, nullptr, b), "vtable");
    ORUDoPropErrs *errs = oru_do_prop_errs_new();
    EXPECT_ASSERTION(oru_do_prop_errs_to_xml(nullptr, errs, nullptr), "strbuf");
    oru_do_prop_errs_deref(errs);
    EXPECT_ASSERTION(oru_do_error_to_xml(nullptr, nullptr, b), "err");
    EXPECT_ASSERTION(oru_do_prop_errs_to_xml(nullptr, nullptr, b), "prop_errs");
    EXPECT_ASSERTION(oru_do_dtree_to_xml(nullptr, nullptr, nullptr, b), "dtree");
    EXPECT_ASSERTION(oru_do_dtree_to_xml(nullptr, nullptr, root, nullptr), "strbuf");
    oru_do_strbuf_deref(b);
}

}  // namespace
