#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>
#include <regex.h>

#include <cstdlib>
#include <string>

#include "nothing_live.h"

namespace {

constexpr uint32_t kFirst = 0x2b00000;
constexpr uint32_t kSecond = 0x2c00000;

const char *first_names(uint32_t tag) {
    return tag == kFirst + 5 ? "first-five" : "first-other";
}

const char *second_names(uint32_t tag) {
    return tag == kSecond + 5 ? "second-five" : "second-other";
}

std::string report() {
    char *text = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&text, &size);
    poolheap_report(out);
    fclose(out);
    std::string result(text, size);
    free(text);
    return result;
}

bool has_row(const std::string &text, const std::string &row) {
    regex_t regex{};
    EXPECT_EQ(regcomp(&regex, ("^" + row + "$").c_str(), REG_EXTENDED | REG_NEWLINE), 0);
    const bool found = regexec(&regex, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&regex);
    return found;
}

struct PoolheapReport : NothingLive {
    PoolheapReport() {
        poolheap_init(kFirst, first_names);
        poolheap_init(kSecond, second_names);
    }
};

}  // namespace

TEST_F(PoolheapReport, NamesTagsThroughTheirComponents) {
    static int run = 0;  // totals go on when the test is repeated
    const std::string total = std::to_string(++run);
    void *a = ph_malloc_named(kFirst + 5, 100);
    void *b = ph_malloc_named(kSecond + 5, 7);
    void *c = ph_malloc_named(kSecond + 6, 1);
    void *d = ph_malloc_named(0x2d00001, 3);
    ph_free_named(c);
    const std::string text = report();
    EXPECT_TRUE(has_row(text, "0x02b00005 +first-five +1 +100 +100 +" + total)) << text;
    EXPECT_TRUE(has_row(text, "0x02c00005 +second-five +1 +7 +7 +" + total)) << text;
    EXPECT_TRUE(has_row(text, "0x02c00006 +second-other +0 +0 +1 +" + total)) << text;
    EXPECT_TRUE(has_row(text, "0x02d00001 +- +1 +3 +3 +" + total)) << text;
    EXPECT_TRUE(has_row(text, "tag +name +live blocks +live bytes +peak bytes +total blocks"));
    ph_free_named(a);
    ph_free_named(b);
    ph_free_named(d);
}

TEST_F(PoolheapReport, RepeatedInitReplacesTheFunction) {
    EXPECT_STREQ(poolheap_tag_name(kFirst + 5), "first-five");
    poolheap_init(kFirst, second_names);
    EXPECT_STREQ(poolheap_tag_name(kFirst + 5), "second-other");
    poolheap_init(kFirst, nullptr);
    EXPECT_EQ(poolheap_tag_name(kFirst + 5), nullptr);
}

TEST_F(PoolheapReport, UnknownComponentHasNoNamesAndTheOwnOneHas) {
    EXPECT_EQ(poolheap_tag_name(0x2e00000), nullptr);
    EXPECT_STREQ(poolheap_tag_name(0x2800000), "oruplatform");
    EXPECT_STREQ(poolheap_tag_name(0x2800005), "oruplatform-tree-object");
    EXPECT_STREQ(poolheap_tag_name(0x2800006), "oruplatform-invalid");
}

TEST_F(PoolheapReport, ListsPools) {
    void *pool = chunk_create_poolheap(40, 10, 0x101, 1, kFirst + 5);
    void *element = chunk_malloc(pool);
    const std::string text = report();
    EXPECT_TRUE(has_row(text, "0x02b00005 +first-five +40 +1 +1 +1 +1")) << text;
    EXPECT_NE(chunk_free(pool, element), 0);
}

TEST_F(PoolheapReport, MoreTagsThanSlotsShareARow) {
    // In a child of its own, since tags stay for the life of the process.
    EXPECT_EXIT(
        {
            for (uint32_t i = 0; i < POOLHEAP_MAX_TAGS + 10; i++) {
                ph_free_named(ph_malloc_named(0x5000000 + i, 1));
            }
            const std::string text = report();
            fputs(text.c_str() + text.find("(other tags)"), stderr);
            _exit(has_row(text, " +\\(other tags\\) +0 +0 +1 +[0-9]+") ? 0 : 1);
        },
        testing::ExitedWithCode(0), "other tags");
}

TEST_F(PoolheapReport, NullPrintsToStandardError) {
    EXPECT_EXIT((poolheap_report(nullptr), _exit(0)), testing::ExitedWithCode(0), "live blocks");
}
