#include "oru/properties_list.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "oru/iter.h"
#include "oru/logger.h"
#include "oru/properties.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/printed.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::printed;

struct Logged {
    uint32_t level;
    std::string text;
    friend bool operator==(const Logged &, const Logged &) = default;
};

// What the logger was handed.
std::vector<Logged> logged;

void keep(void *, uint32_t level, const char *format, va_list args, ...) {
    char text[200];
    std::vsnprintf(text, sizeof text, format, args);
    logged.push_back({level, text});
}

class PropertiesList : public testing::Test {
  protected:
    PropertiesList() { oru_do_properties_set_int(one, "a", 1); }
    ~PropertiesList() override {
        oru_do_properties_list_deref(list);
        oru_do_properties_deref(one);
        oru_do_properties_deref(two);
    }

    ORUDoPropertiesList *list = oru_do_properties_list_new();
    ORUDoProperties *one = oru_do_properties_new();
    ORUDoProperties *two = oru_do_properties_new();
};

TEST_F(PropertiesList, KeepsTheOrderOfAdding) {
    EXPECT_EQ(oru_do_properties_list_get_len(list), 0);
    EXPECT_EQ(oru_do_properties_list_add(list, two), 1);
    EXPECT_EQ(oru_do_properties_list_add(list, one), 2);
    EXPECT_EQ(oru_do_properties_list_add(list, two), 3);
    EXPECT_EQ(oru_do_properties_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_properties_list_get_len(list), 3);
    EXPECT_EQ(oru_do_properties_list_get(list, 0), two);
    EXPECT_EQ(oru_do_properties_list_get(list, 1), one);
    EXPECT_EQ(oru_do_properties_list_get(list, 3), nullptr);
    EXPECT_EQ(oru_do_properties_list_get(list, -1), nullptr);
}

TEST_F(PropertiesList, CountsItsOwnReference) {
    ORUDoProperties *table = oru_do_properties_new();
    oru_do_properties_list_add(list, table);
    oru_do_properties_deref(table);
    oru_do_properties_set_int(oru_do_properties_list_get(list, 0), "x", 1);
    EXPECT_EQ(oru_do_properties_get_len(oru_do_properties_list_get(list, 0)), 1);
}

TEST_F(PropertiesList, ClearsAndGoesOn) {
    oru_do_properties_list_add(list, one);
    oru_do_properties_list_clear(list);
    EXPECT_EQ(oru_do_properties_list_get_len(list), 0);
    EXPECT_EQ(oru_do_properties_list_add(list, two), 1);
    EXPECT_EQ(oru_do_properties_list_get(list, 0), two);
}

TEST_F(PropertiesList, AWalkGivesTheTablesInOrder) {
    oru_do_properties_list_add(list, one);
    oru_do_properties_list_add(list, two);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_properties_list_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 8);
    EXPECT_EQ(iter.collection, list);
    EXPECT_EQ(oru_do_properties_list_get_next(&iter), one);
    EXPECT_NE(oru_do_properties_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_properties_list_get_next(&iter), two);
    EXPECT_EQ(oru_do_properties_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_properties_list_get_next(&iter), nullptr);
}

TEST_F(PropertiesList, PrintsItsTablesInBrackets) {
    EXPECT_EQ(printed<oru_do_properties_list_to_strbuf>(list), "");
    oru_do_properties_list_add(list, one);
    EXPECT_EQ(printed<oru_do_properties_list_to_strbuf>(list, 1), "[{ a : 1 }]");
    oru_do_properties_list_add(list, two);
    EXPECT_EQ(printed<oru_do_properties_list_to_strbuf>(list, 1), "[{ a : 1 }, {  }]");
    EXPECT_EQ(
        printed<oru_do_properties_list_to_strbuf>(static_cast<ORUDoPropertiesList *>(nullptr)), "");
}

TEST_F(PropertiesList, IsLoggedWhenTheLoggerIsAtTheLevel) {
    oru_do_properties_list_add(list, one);
    const uint32_t level = oru_logger_get_level();
    oru::test::TraceCapture traces;
    oru_logger_set_logger(keep, 4, nullptr);
    oru_do_properties_list_trace(list, 5);
    EXPECT_TRUE(logged.empty());
    oru_do_properties_list_trace(list, 4);
    oru_do_properties_list_trace(list, 1);
    EXPECT_EQ(logged, (std::vector<Logged>{{4, "[{ a : 1 }]\n"}, {1, "[{ a : 1 }]\n"}}));
    EXPECT_TRUE(traces.lines().empty());
    logged.clear();
    for (uint64_t nth = 1; nth <= 2; ++nth) {
        poolheap_fail_nth(nth, 0);
        oru_do_properties_list_trace(list, 1);
        poolheap_fail_off();
    }
    EXPECT_TRUE(logged.empty());
    oru_logger_set_logger(nullptr, level, nullptr);
}

TEST_F(PropertiesList, RequiredArguments) {
    oru_do_properties_list_add(list, one);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_properties_list_get_len(nullptr), "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_get(nullptr, 0), "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_iter(nullptr, &iter), "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_list_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_PROPERTIES_LIST");
    EXPECT_ASSERTION(oru_do_properties_list_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_properties_list_add(nullptr, one), "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_clear(nullptr), "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_to_strbuf(list, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_properties_list_trace(nullptr, 9), "list");
    EXPECT_EQ(oru_do_properties_list_ref(nullptr), nullptr);
    oru_do_properties_list_deref(nullptr);
}

TEST_F(PropertiesList, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [&] {
            ORUDoPropertiesList *tables = oru_do_properties_list_new();
            if (tables == nullptr)
                return;
            const int32_t added = oru_do_properties_list_add(tables, one);
            EXPECT_EQ(added, oru::test::oom_hit() ? -1 : 1);
            oru_do_properties_list_deref(tables);
        },
        {.promised_deaths = {}, .at_least = 2});
}

}  // namespace
