// The typed readers and setters of property tables, row by row.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "oru/properties.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/do/properties_support.h"
#include "tests/unit/do/typed_rows.h"

namespace {

using oru::test::printed;
using oru::test::set_int;
using oru::test::Trace;
using oru::test::TraceCapture;

struct Row {
    std::string suffix;
    int32_t type;
    std::string text;
    std::function<int32_t(ORUDoProperties *, const char *)> set;
    // Whether the payload came back; without a status to write, the call is made with a null one.
    std::function<bool(ORUDoProperties *, const char *, int32_t *)> reads_back;
    // Whether the result is 0 or null.
    std::function<bool(ORUDoProperties *, const char *, int32_t *)> reads_nothing;
};

// The length is written by the call that gives the bytes.
bool same_bytes(const uint8_t *bytes, const int32_t &len, const uint8_t *expected, size_t size) {
    return bytes != nullptr && len == static_cast<int32_t>(size) &&
           std::memcmp(bytes, expected, size) == 0;
}

// How each shape is read, and what it reads without a value.
#define READ_NUMBER(suffix) oru_do_properties_get_##suffix(from, name, rc)
#define READ_TEXT(suffix) READ_NUMBER(suffix)
#define READ_HELD(suffix) READ_NUMBER(suffix)
#define READ_BYTES(suffix) oru_do_properties_get_##suffix(from, name, &len, rc)
#define SAME_NUMBER(read, payload) (read) == (payload)
#define SAME_HELD(read, payload) (read) == (payload)
#define SAME_TEXT(read, payload) std::strcmp(read, payload) == 0
#define SAME_BYTES(read, payload) same_bytes(read, len, payload, sizeof(payload))

class PropertiesTyped : public oru::test::TypedTest {
  protected:
    ~PropertiesTyped() override {
        oru_do_properties_deref(props);
        oru::test::restore_properties_settings();
    }

    std::vector<Row> rows() const {
        return {
#define ROW(SHAPE, suffix, code, text, payload)                                               \
    Row{#suffix,                                                                              \
        code,                                                                                 \
        text,                                                                                 \
        [&](ORUDoProperties *to, const char *name) {                                       \
            return oru_do_properties_set_##suffix(to, name, ORU_TYPED_ARGS_##SHAPE(payload)); \
        },                                                                                    \
        [&]([[maybe_unused]] ORUDoProperties *from, const char *name, int32_t *rc) {       \
            [[maybe_unused]] int32_t len = -1;                                                \
            return SAME_##SHAPE(READ_##SHAPE(suffix), payload);                               \
        },                                                                                    \
        [](ORUDoProperties *from, const char *name, int32_t *rc) {                            \
            [[maybe_unused]] int32_t len = -1;                                                \
            return READ_##SHAPE(suffix) == decltype(READ_##SHAPE(suffix)){};                  \
        }},
            ORU_TYPED_ROWS(ROW)
#undef ROW
        };
    }

    // Those that have no reader.
    static std::vector<Row> set_only_rows() {
        return {
            Row{"null", -1, "null",
                [](ORUDoProperties *to, const char *name) {
                    return oru_do_properties_set_null(to, name);
                },
                nullptr, nullptr},
            Row{"default", -2, "__default__",
                [](ORUDoProperties *to, const char *name) {
                    return oru_do_properties_set_default(to, name);
                },
                nullptr, nullptr},
            Row{"mac_address", 15, "0011.2233.AABB",
                [](ORUDoProperties *to, const char *name) {
                    return oru_do_properties_set_mac_address(to, name, oru::test::kTypedMac);
                },
                nullptr, nullptr},
        };
    }

    std::vector<Row> all_rows() const {
        std::vector<Row> all = rows();
        for (const Row &row : set_only_rows())
            all.push_back(row);
        return all;
    }

    ORUDoProperties *props = oru_do_properties_new();
};

TEST_F(PropertiesTyped, EachSetsAValueOfItsTypeAndReadsItBack) {
    EXPECT_EQ(rows().size(), 25u);
    for (const Row &row : rows()) {
        EXPECT_EQ(row.set(props, row.suffix.c_str()), 0) << row.suffix;
        int32_t rc = -1;
        EXPECT_TRUE(row.reads_back(props, row.suffix.c_str(), &rc)) << row.suffix;
        EXPECT_EQ(rc, 0) << row.suffix;
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 25);
}

TEST_F(PropertiesTyped, ValuesHaveTheTypeAndTheTextOfTheirRow) {
    for (const Row &row : all_rows()) {
        EXPECT_EQ(row.set(props, "x"), 0) << row.suffix;
        ORUDoValue *value = oru_do_properties_get_value(props, "x");
        EXPECT_EQ(oru_do_value_get_type(value), row.type) << row.suffix;
        EXPECT_EQ(printed<oru_do_value_to_strbuf>(value), row.text) << row.suffix;
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 1);
}

TEST_F(PropertiesTyped, AMacAddressIsAHexBinaryOfSixBytes) {
    EXPECT_EQ(oru_do_properties_set_mac_address(props, "x", oru::test::kTypedMac), 0);
    ORUDoValue *value = oru_do_properties_get_value(props, "x");
    EXPECT_STREQ(oru_do_value_get_typedef_name(value), "MACAddress");
    EXPECT_EQ(oru_do_value_get_length(value), 6);
}

TEST_F(PropertiesTyped, AnotherTypeIsRefused) {
    for (const Row &row : rows()) {
        oru_do_properties_set_default(props, "x");
        int32_t rc = -1;
        EXPECT_TRUE(row.reads_nothing(props, "x", &rc)) << row.suffix;
        EXPECT_EQ(rc, 101) << row.suffix;
    }
    // Nothing is widened.
    oru_do_properties_set_short(props, "x", 3);
    int32_t rc = -1;
    EXPECT_EQ(oru_do_properties_get_int(props, "x", &rc), 0);
    EXPECT_EQ(rc, 101);
}

TEST_F(PropertiesTyped, AMissingEntryAndAMissingValueAre106) {
    for (const Row &row : rows()) {
        int32_t rc = -1;
        EXPECT_TRUE(row.reads_nothing(props, row.suffix.c_str(), &rc)) << row.suffix;
        EXPECT_EQ(rc, 106) << row.suffix;
        row.set(props, row.suffix.c_str());
        oru_do_properties_reset_values(props);
        rc = -1;
        EXPECT_TRUE(row.reads_nothing(props, row.suffix.c_str(), &rc)) << row.suffix;
        EXPECT_EQ(rc, 106) << row.suffix;
    }
}

TEST_F(PropertiesTyped, TheLengthOfBytesIsOptional) {
    oru_do_properties_set_hex_binary(props, "x", oru::test::kTypedHex, 3);
    int32_t rc = -1;
    EXPECT_NE(oru_do_properties_get_hex_binary(props, "x", nullptr, &rc), nullptr);
    EXPECT_EQ(rc, 0);
}

TEST_F(PropertiesTyped, SettingKeepsThePlace) {
    for (const char *name : {"a", "b", "c"})
        oru_do_properties_set_int(props, name, 1);
    oru_do_properties_set_int(props, "a", 2);
    EXPECT_EQ(oru::test::walked(props), "a2 b1 c1 ");
}

TEST_F(PropertiesTyped, IndexedTablesAreReadAndSetAlike) {
    oru_do_properties_set_max_size_before_hash_table(2);
    for (const Row &row : rows())
        EXPECT_EQ(row.set(props, row.suffix.c_str()), 0) << row.suffix;
    ASSERT_NE(oru::test::index_of(props), nullptr);
    for (const Row &row : rows()) {
        EXPECT_EQ(row.set(props, row.suffix.c_str()), 0) << row.suffix;
        int32_t rc = -1;
        EXPECT_TRUE(row.reads_back(props, row.suffix.c_str(), &rc)) << row.suffix;
        EXPECT_TRUE(row.reads_nothing(props, "missing", &rc)) << row.suffix;
        EXPECT_EQ(rc, 106);
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 25);
}

TEST_F(PropertiesTyped, NullPayloadsMakeNullValues) {
    oru_do_properties_set_string(props, "a", nullptr);
    oru_do_properties_set_array(props, "b", nullptr);
    oru_do_properties_set_ip_address(props, "c", nullptr, 4);
    oru_do_properties_set_coll_uri(props, "d", nullptr);
    oru_do_properties_set_mac_address(props, "e", nullptr);
    for (int32_t i = 0; i < 5; ++i) {
        ORUDoProperty *entry = oru_do_properties_get_prop_at_index(props, i);
        EXPECT_EQ(oru_do_property_get_type(entry), -1);
    }
}

TEST_F(PropertiesTyped, WithoutMemoryForTheValueTheResultIs10002) {
    for (const Row &row : all_rows()) {
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(row.set(props, "x"), 10002) << row.suffix;
        poolheap_fail_off();
    }
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
}

// The value is the first allocation, the name the second, the entry the third.
TEST_F(PropertiesTyped, ANameOrAnEntryThatCannotBeHadDropsTheValue) {
    TraceCapture traces;
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_do_properties_set_int(props, "x", 1), 0);
    poolheap_fail_off();
    EXPECT_TRUE(traces.lines().empty());
    poolheap_fail_nth(3, 0);
    EXPECT_EQ(oru_do_properties_set_int(props, "x", 1), 0);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to add property: x\n"}}));
    EXPECT_EQ(oru_do_properties_get_len(props), 0);
}

TEST_F(PropertiesTyped, RequiredArguments) {
    for (const Row &row : all_rows()) {
        EXPECT_ASSERTION(row.set(nullptr, "x"), "props") << row.suffix;
        EXPECT_ASSERTION(row.set(props, nullptr), "name") << row.suffix;
    }
    for (const Row &row : rows()) {
        int32_t rc = 0;
        EXPECT_ASSERTION(row.reads_nothing(nullptr, "x", &rc), "props") << row.suffix;
        EXPECT_ASSERTION(row.reads_nothing(props, nullptr, &rc), "name") << row.suffix;
        EXPECT_ASSERTION(row.reads_nothing(props, "x", nullptr), "rc") << row.suffix;
    }
}

TEST_F(PropertiesTyped, EveryAllocationMayFail) {
    for (const Row &row : all_rows()) {
        oru::test::sweep_oom(
            [&row] {
                ORUDoProperties *table = oru_do_properties_new();
                if (table == nullptr)
                    return;
                const int32_t rc = row.set(table, "x");
                EXPECT_TRUE(rc == 0 || (rc == 10002 && oru::test::oom_hit())) << row.suffix;
                if (!oru::test::oom_hit()) {
                    EXPECT_EQ(oru_do_properties_get_len(table), 1) << row.suffix;
                }
                oru_do_properties_deref(table);
            },
            {.promised_deaths = {}, .at_least = 4});
    }
}

}  // namespace
