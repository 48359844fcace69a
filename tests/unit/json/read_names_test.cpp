// Names that a text repeats, and values that go from what was read to where they belong.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oru/name.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::Context;
using oru::test::Owned;
using oru::test::parsed;
using oru::test::size_of;

using List = Owned<ORUDoPropertiesList, oru_do_properties_list_deref>;

List list_from(const std::string &text) {
    return List(oru_do_properties_list_from_json(text.data(), size_of(text), nullptr));
}

std::vector<std::string> first_names(const List &list) {
    std::vector<std::string> names;
    for (int32_t i = 0; i < oru_do_properties_list_get_len(list.get()); ++i) {
        ORUDoProperties *properties = oru_do_properties_list_get(list.get(), i);
        ORUDoProperty *entry = oru_do_properties_get_prop_at_index(properties, 0);
        names.emplace_back(oru_do_property_get_name_string(entry));
    }
    return names;
}

TEST(JsonReadNames, ObjectsOfATextShareTheNamesThatTheyHaveInCommon) {
    const List list = list_from(R"({"%properties_list":[{"a":1},{"a":2}]})");
    ASSERT_NE(list, nullptr);
    const auto name_in = [&list](int32_t i) {
        ORUDoProperties *properties = oru_do_properties_list_get(list.get(), i);
        return oru_do_property_get_name(oru_do_properties_get_prop_at_index(properties, 0));
    };
    EXPECT_EQ(name_in(0), name_in(1));
}

TEST(JsonReadNames, EachTextKeepsItsOwnName) {
    const List list = list_from(
        R"({"%properties_list":[{"a":1},{"b":1},{"ab":1},{"ba":1},{"":1},{"a":1},{"a\u0000b":1},)"
        R"({"a":1},{"a\u0000":1},{"a\u0000c":1},{"0123456789012345678901234567890":1},)"
        R"({"01234567890123456789012345678901":1},{"0123456789012345678901234567890":1}]})");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(
        first_names(list),
        (std::vector<std::string>{
            "a", "b", "ab", "ba", "", "a", "a", "a", "a", "a", "0123456789012345678901234567890",
            "01234567890123456789012345678901", "0123456789012345678901234567890"}));
}

TEST(JsonReadNames, MoreNamesThanAreKept) {
    std::string text = R"({"%properties_list":[{"x0":1})";
    std::vector<std::string> expected{"x0"};
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 500; ++i) {
            expected.push_back("x" + std::to_string(i));
            text += R"(,{")" + expected.back() + R"(":1})";
        }
    }
    const List list = list_from(text + "]}");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(first_names(list), expected);
}

// An element of the top level is completed at each closing bracket, with the same values.
TEST(JsonReadNames, WhatIsCompletedTwiceKeepsItsValues) {
    const Context ctx = parsed(R"([[{"%properties":{"a":{"%string":"x"},"b":{"%int":[1,2]}}}]])");
    ASSERT_EQ(ctx->completed_type, 0x400100);
    EXPECT_EQ(oru::test::code_of(ctx), 9);
    EXPECT_EQ(oru::test::written([&ctx](ORUDoStrbuf *buf) {
                  return oru_do_properties_to_json(
                      static_cast<ORUDoProperties *>(ctx->completed_obj), buf);
              }),
              R"({"%properties":{"a":{"%string":"x"},"b":{"%int":[1,2]}}})");
    const Context array = parsed(R"([[{"%array":[{"%string":"x"},{"%int":5}]}]])");
    ASSERT_EQ(array->completed_type, 0x810014);
    EXPECT_EQ(oru::test::json_of(static_cast<ORUDoValue *>(array->completed_obj)),
              R"({"%array":[{"%string":"x"},{"%int":5}]})");
}

}  // namespace
