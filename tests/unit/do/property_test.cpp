// One entry of a property table, and the text forms of both.
#include <gtest/gtest.h>

#include "oru/properties.h"
#include "tests/support/death.h"
#include "tests/support/printed.h"
#include "tests/unit/do/properties_support.h"

namespace {

using oru::test::printed;
using oru::test::set_int;

class Property : public oru::test::PropertiesTest {
  protected:
    ORUDoProperty *entry() const { return oru_do_properties_get_prop_at_index(props, 0); }
    void set_string(const char *name, const char *text) {
        ORUDoValue *value = oru_do_value_new_string(text);
        oru_do_properties_set_value(props, name, value);
        oru_do_value_deref(value);
    }
};

TEST_F(Property, HoldsItsNameAndItsValue) {
    ORUDoName *name = oru_do_name_new("a");
    oru_do_properties_set_value_n(props, name, one);
    EXPECT_EQ(oru_do_property_get_name(entry()), name);
    EXPECT_STREQ(oru_do_property_get_name_string(entry()), "a");
    EXPECT_EQ(oru_do_property_get_value(entry()), one);
    EXPECT_EQ(oru_do_property_get_type(entry()), 5);
    oru_do_name_deref(name);
}

TEST_F(Property, ItsValueIsReplacedUnlessByNull) {
    oru_do_properties_set_value(props, "a", one);
    oru_do_property_set_value(entry(), two);
    EXPECT_EQ(oru_do_property_get_value(entry()), two);
    oru_do_property_set_value(entry(), nullptr);
    EXPECT_EQ(oru_do_property_get_value(entry()), two);
    oru_do_property_set_value(entry(), two);
    EXPECT_EQ(oru_do_property_get_value(entry()), two);
}

TEST_F(Property, WithoutAValueItHasNoType) {
    oru_do_properties_set_value(props, "a", one);
    oru_do_properties_reset_values(props);
    EXPECT_EQ(oru_do_property_get_value(entry()), nullptr);
    EXPECT_EQ(oru_do_property_get_type(entry()), -1);
    EXPECT_EQ(oru_do_property_get_type_def(entry()), nullptr);
    oru_do_property_set_type_def(entry(), "Name");
    EXPECT_EQ(oru_do_property_get_type_def(entry()), nullptr);
    EXPECT_EQ(oru_do_property_is_ipaddresstype(entry()), 0);
}

TEST_F(Property, ItsDerivedTypeIsThatOfItsValue) {
    oru_do_properties_set_value(props, "a", one);
    EXPECT_EQ(oru_do_property_get_type_def(entry()), nullptr);
    oru_do_property_set_type_def(entry(), "Name");
    EXPECT_STREQ(oru_do_property_get_type_def(entry()), "Name");
    EXPECT_STREQ(oru_do_value_get_typedef_name(one), "Name");
}

TEST_F(Property, AnAddressIsTold) {
    const uint8_t bytes[] = {10, 0, 0, 1};
    ORUDoValue *address = oru_do_value_new_ip_address(bytes, 4);
    oru_do_properties_set_value(props, "a", one);
    EXPECT_EQ(oru_do_property_is_ipaddresstype(entry()), 0);
    oru_do_properties_set_value(props, "a", address);
    EXPECT_EQ(oru_do_property_is_ipaddresstype(entry()), 1);
    oru_do_value_deref(address);
}

TEST_F(Property, EqualityIsOfValueAndName) {
    set_int(props, "a", 1);
    set_int(other, "a", 1);
    set_int(other, "b", 1);
    set_int(other, "c", 2);
    auto at = [this](int32_t index) { return oru_do_properties_get_prop_at_index(other, index); };
    EXPECT_EQ(oru_do_property_equals(entry(), at(0)), 1);
    EXPECT_EQ(oru_do_property_equals(entry(), at(1)), 0);
    EXPECT_EQ(oru_do_property_equals(entry(), at(2)), 0);
    EXPECT_EQ(oru_do_property_equals(at(1), at(2)), 0);
}

TEST_F(Property, PrintsNameAndValueBehindTabs) {
    set_int(props, "a", 1);
    EXPECT_EQ(printed<oru_do_property_to_strbuf>(entry(), 2), "\t\ta : 1");
    EXPECT_EQ(printed<oru_do_property_to_strbuf_with_defaults>(entry(), 1), "\ta : 1");
    oru_do_value_set_default_flag(oru_do_property_get_value(entry()));
    EXPECT_EQ(printed<oru_do_property_to_strbuf>(entry()), "a : 1");
    EXPECT_EQ(printed<oru_do_property_to_strbuf_with_defaults>(entry(), 1), "\ta : 1 (default)");
    oru_do_properties_reset_values(props);
    EXPECT_EQ(printed<oru_do_property_to_strbuf>(entry()), "a : ");
}

TEST_F(Property, NullPrintsNothing) {
    EXPECT_EQ(printed<oru_do_property_to_strbuf>(static_cast<ORUDoProperty *>(nullptr), 2), "");
    EXPECT_EQ(
        printed<oru_do_property_to_strbuf_with_defaults>(static_cast<ORUDoProperty *>(nullptr), 2),
        "");
    EXPECT_EQ(printed<oru_do_properties_to_strbuf>(static_cast<ORUDoProperties *>(nullptr)), "");
    EXPECT_EQ(
        printed<oru_do_properties_to_strbuf_with_defaults>(static_cast<ORUDoProperties *>(nullptr)),
        "");
}

TEST_F(Property, ATablePrintsItsEntriesInBraces) {
    EXPECT_EQ(printed<oru_do_properties_to_strbuf>(props), "{  }");
    EXPECT_EQ(printed<oru_do_properties_to_strbuf_with_defaults>(props), "{  }");
    set_int(props, "a", 1);
    EXPECT_EQ(printed<oru_do_properties_to_strbuf>(props), "{ a : 1 }");
    set_string("b", "two");
    EXPECT_EQ(printed<oru_do_properties_to_strbuf>(props, 3), "{ a : 1, b : two }");
    oru_do_value_set_default_flag(oru_do_properties_get_value(props, "a"));
    EXPECT_EQ(printed<oru_do_properties_to_strbuf>(props), "{ a : 1, b : two }");
    EXPECT_EQ(printed<oru_do_properties_to_strbuf_with_defaults>(props, 3),
              "{ a : 1 (default), b : two }");
}

TEST_F(Property, RequiredArguments) {
    set_int(props, "a", 1);
    EXPECT_ASSERTION(oru_do_property_get_name(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_get_name_string(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_get_value(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_get_type(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_get_type_def(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_is_ipaddresstype(nullptr), "property");
    EXPECT_ASSERTION(oru_do_property_equals(nullptr, entry()), "prop1");
    EXPECT_ASSERTION(oru_do_property_equals(entry(), nullptr), "prop2");
    EXPECT_ASSERTION(oru_do_property_set_value(nullptr, one), "property");
    EXPECT_ASSERTION(oru_do_property_set_type_def(nullptr, "Name"), "property");
    EXPECT_ASSERTION(oru_do_property_to_strbuf(entry(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_property_to_strbuf_with_defaults(entry(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_properties_to_strbuf(props, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_properties_to_strbuf_with_defaults(props, 0, nullptr), "strbuf");
}

}  // namespace
