// The adders of both value lists that make the value, row by row.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <functional>
#include <string>
#include <vector>

#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"
#include "tests/unit/do/typed_rows.h"

namespace {

using oru::test::printed;

struct Row {
    std::string suffix;
    int32_t type;
    std::string text;
    std::function<int32_t(ORUDoNvlist *, const char *)> add_named;
    std::function<int32_t(ORUDoVlist *)> add;
};

class TypedAdders : public oru::test::TypedTest {
  protected:
    ~TypedAdders() override {
        oru_do_nvlist_deref(named);
        oru_do_vlist_deref(list);
    }

    static void expect_value(const Row &row, ORUDoValue *value) {
        ASSERT_NE(value, nullptr) << row.suffix;
        EXPECT_EQ(oru_do_value_get_type(value), row.type) << row.suffix;
        EXPECT_EQ(printed<oru_do_value_to_strbuf>(value), row.text) << row.suffix;
    }

    std::vector<Row> rows() const {
        return {
#define ROW(SHAPE, suffix, code, text, payload)                                           \
    Row{#suffix, code, text,                                                              \
        [&](ORUDoNvlist *to, const char *name) {                                       \
            return oru_do_nvlist_add_##suffix(to, name, ORU_TYPED_ARGS_##SHAPE(payload)); \
        },                                                                                \
        [&](ORUDoVlist *to) {                                                          \
            return oru_do_vlist_add_##suffix(to, ORU_TYPED_ARGS_##SHAPE(payload));        \
        }},
            ORU_LISTED_TYPED_ROWS(ROW)
#undef ROW
                Row{"null", -1, "null",
                    [](ORUDoNvlist *to, const char *name) {
                        return oru_do_nvlist_add_null(to, name);
                    },
                    [](ORUDoVlist *to) { return oru_do_vlist_add_null(to); }},
            Row{"hex_binary_typedef", 15, "0011.2233.AABB",
                [](ORUDoNvlist *to, const char *name) {
                    return oru_do_nvlist_add_hex_binary_typedef(to, name, oru::test::kTypedMac, 6,
                                                                "MACAddress");
                },
                [](ORUDoVlist *to) {
                    return oru_do_vlist_add_hex_binary_typedef(to, oru::test::kTypedMac, 6,
                                                               "MACAddress");
                }},
        };
    }

    ORUDoNvlist *named = oru_do_nvlist_new();
    ORUDoVlist *list = oru_do_vlist_new();
};

TEST_F(TypedAdders, EachMakesAValueOfItsType) {
    int32_t length = 0;
    for (const Row &row : rows()) {
        ++length;
        EXPECT_EQ(row.add_named(named, row.suffix.c_str()), length) << row.suffix;
        EXPECT_EQ(row.add(list), length) << row.suffix;
        expect_value(row, oru_do_nvlist_get_value(named, row.suffix.c_str()));
        expect_value(row, oru_do_vlist_get_value(list, length - 1));
    }
    EXPECT_EQ(length, 26);
}

TEST_F(TypedAdders, TheUriAdderMakesAnAnyUri) {
    EXPECT_EQ(oru_do_nvlist_add_uri(named, "x", uri), 1);
    ORUDoValue *value = oru_do_nvlist_get_value(named, "x");
    EXPECT_EQ(oru_do_value_get_type(value), 14);
    EXPECT_EQ(oru_do_value_get_uri(value), uri);
    EXPECT_EQ(oru_do_nvlist_add_uri(named, nullptr, uri), -1);
    EXPECT_ASSERTION(oru_do_nvlist_add_uri(nullptr, "x", uri), "nvlist");
}

TEST_F(TypedAdders, CountedTextsAreAddedToValues) {
    EXPECT_EQ(oru_do_vlist_add_string_l(list, "abc", 2), 1);
    EXPECT_EQ(printed<oru_do_value_to_strbuf>(oru_do_vlist_get_value(list, 0)), "ab");
    EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(list, 0)), 8);
    EXPECT_EQ(oru_do_vlist_add_string_l(list, nullptr, 2), 2);
    EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(list, 1)), -1);
    EXPECT_ASSERTION(oru_do_vlist_add_string_l(nullptr, "abc", 2), "vlist");
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_vlist_add_string_l(list, "abc", 2), -1);
    poolheap_fail_off();
}

TEST_F(TypedAdders, NullPayloadsMakeNullValues) {
    EXPECT_EQ(oru_do_nvlist_add_string(named, "a", nullptr), 1);
    EXPECT_EQ(oru_do_nvlist_add_choice(named, "b", nullptr), 2);
    EXPECT_EQ(oru_do_nvlist_add_hex_binary(named, "c", nullptr, 3), 3);
    EXPECT_EQ(oru_do_nvlist_add_mr_uri(named, "d", nullptr), 4);
    for (int32_t i = 0; i < 4; ++i) {
        ORUDoValue *value = oru_do_nvlist_item_get_value(oru_do_nvlist_get_item(named, i));
        EXPECT_EQ(oru_do_value_get_type(value), -1);
    }
}

TEST_F(TypedAdders, WithoutANameNothingIsAdded) {
    for (const Row &row : rows())
        EXPECT_EQ(row.add_named(named, nullptr), -1) << row.suffix;
    EXPECT_EQ(oru_do_nvlist_get_len(named), 0);
}

TEST_F(TypedAdders, EachAssertsItsList) {
    for (const Row &row : rows()) {
        EXPECT_ASSERTION(row.add_named(nullptr, "x"), "nvlist") << row.suffix;
        EXPECT_ASSERTION(row.add(nullptr), "vlist") << row.suffix;
    }
    EXPECT_ASSERTION(
        oru_do_nvlist_add_hex_binary_typedef(named, "x", oru::test::kTypedMac, 6, nullptr),
        "type_name");
    EXPECT_ASSERTION(oru_do_vlist_add_hex_binary_typedef(list, oru::test::kTypedMac, 6, nullptr),
                     "type_name");
}

TEST_F(TypedAdders, WithoutMemoryForTheValueTheResultIsMinusOne) {
    for (const Row &row : rows()) {
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(row.add_named(named, "x"), -1) << row.suffix;
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(row.add(list), -1) << row.suffix;
        poolheap_fail_off();
    }
    EXPECT_EQ(oru_do_nvlist_get_len(named), 0);
    EXPECT_EQ(oru_do_vlist_get_len(list), 0);
}

TEST_F(TypedAdders, EveryAllocationMayFail) {
    for (const Row &row : rows()) {
        oru::test::sweep_oom(
            [&row] {
                ORUDoNvlist *names = oru_do_nvlist_new();
                ORUDoVlist *values = oru_do_vlist_new();
                if (names != nullptr && values != nullptr) {
                    const int32_t added = row.add_named(names, "x");
                    EXPECT_EQ(oru_do_nvlist_get_len(names), added == 1 ? 1 : 0);
                    const int32_t appended = row.add(values);
                    EXPECT_EQ(oru_do_vlist_get_len(values), appended == 1 ? 1 : 0);
                }
                oru_do_nvlist_deref(names);
                oru_do_vlist_deref(values);
            },
            {.promised_deaths = {}, .at_least = 4});
    }
}

}  // namespace
