#include "oru/logger.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <safeclib/safe_str_lib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

bool comparison_fails = false;

}  // namespace

// Stands in front of the bounded string library, whose comparison never fails for what the logger
// hands it.
extern "C" [[gnu::visibility("default")]] errno_t _strcmp_s_chk(const char *dest, rsize_t dmax,
                                                                const char *src, int *result,
                                                                const size_t dest_size,
                                                                const size_t src_size) {
    using Compare = errno_t(const char *, rsize_t, const char *, int *, size_t, size_t);
    static auto *const real = reinterpret_cast<Compare *>(dlsym(RTLD_NEXT, "_strcmp_s_chk"));
    return comparison_fails ? ESLEMIN : real(dest, dmax, src, result, dest_size, src_size);
}

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

struct Received {
    std::vector<std::string> lines;
};

void receive(void *context, uint32_t level, const char *format, va_list args, ...) {
    char text[200];
    std::vsnprintf(text, sizeof text, format, args);
    static_cast<Received *>(context)->lines.push_back(std::to_string(level) + " " + text);
}

class Logger : public testing::Test {
  protected:
    ~Logger() override { oru_logger_set_logger(nullptr, 2, nullptr); }
    Received received;
};

TEST_F(Logger, StartsAtErrorWithoutAFunction) {
    EXPECT_EQ(oru_logger_get_level(), 2u);
    _oru_log(1, "%s", "to nobody");
}

TEST_F(Logger, HandsOnMessagesOfEveryLevel) {
    oru_logger_set_logger(receive, 4, &received);
    EXPECT_EQ(oru_logger_get_level(), 4u);
    _oru_log(2, "%s is %d", "this", 42);
    _oru_log(9, "not tested");
    EXPECT_EQ(received.lines, (std::vector<std::string>{"2 this is 42", "9 not tested"}));
    oru_logger_set_logger(nullptr, 4, nullptr);
    _oru_log(2, "nobody");
    EXPECT_EQ(received.lines.size(), 2u);
}

TEST_F(Logger, SetsItsLevel) {
    oru_logger_set_level(7);
    EXPECT_EQ(oru_logger_get_level(), 7u);
    oru_logger_set_level(1000);
    EXPECT_EQ(oru_logger_get_level(), 1000u);
}

struct LevelName {
    int32_t index;
    const char *name;
};

class LoggerLevel : public testing::TestWithParam<LevelName> {};

TEST_P(LoggerLevel, HasANameAndANumber) {
    EXPECT_STREQ(oru_logger_get_level_name(GetParam().index), GetParam().name);
    EXPECT_EQ(oru_logger_get_level_index(GetParam().name), GetParam().index);
}

INSTANTIATE_TEST_SUITE_P(Table, LoggerLevel,
                         testing::Values(LevelName{0, "OFF"}, LevelName{1, "FATAL"},
                                         LevelName{2, "ERROR"}, LevelName{3, "WARN"},
                                         LevelName{4, "INFO"}, LevelName{5, "DEBUG"},
                                         LevelName{6, "TRACE"}, LevelName{7, "ALL"},
                                         LevelName{8, "EVENT"}, LevelName{9, "LOCK"}));

TEST_F(Logger, NamesNumbersThatAreNoneUnknown) {
    EXPECT_STREQ(oru_logger_get_level_name(10), "<unknown>");
    EXPECT_STREQ(oru_logger_get_level_name(-1), "<unknown>");
}

TEST_F(Logger, KnowsNamesInCapitalsOnly) {
    TraceCapture traces;
    EXPECT_EQ(oru_logger_get_level_index("warn"), -1);
    EXPECT_EQ(oru_logger_get_level_index("WAR"), -1);
    EXPECT_EQ(oru_logger_get_level_index("WARNING"), -1);
    EXPECT_EQ(oru_logger_get_level_index("WARN "), -1);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Invalid log level: warn"},
                                                  {3, "Invalid log level: WAR"},
                                                  {3, "Invalid log level: WARNING"},
                                                  {3, "Invalid log level: WARN "}}));
}

TEST_F(Logger, EmptyAndLongNamesAreJustNoNames) {
    const oru::test::ChildResult child = oru::test::run_in_child([] {
        TraceCapture traces;
        const std::string very_long(40000, 'W');
        EXPECT_EQ(oru_logger_get_level_index(""), -1);
        EXPECT_EQ(oru_logger_get_level_index("FATALITIES"), -1);
        EXPECT_EQ(oru_logger_get_level_index(very_long.c_str()), -1);
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Invalid log level: "},
                                                      {3, "Invalid log level: FATALITIES"},
                                                      {3, "Invalid log level: " + very_long}}));
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_TRUE(child.exited_with(0)) << child.describe();
    EXPECT_EQ(child.output, "");  // nobody prints but the tracer
}

TEST_F(Logger, AComparisonThatFailsIsFatal) {
    EXPECT_FATAL(
        {
            comparison_fails = true;
            oru_logger_get_level_index("WARN");
        },
        "Bad string comparison for log level name");
}

TEST_F(Logger, ANullNameIsTold) {
    TraceCapture traces;
    EXPECT_EQ(oru_logger_get_level_index(nullptr), -1);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "No log level name provided"}}));
}

TEST_F(Logger, SetsItsLevelByName) {
    TraceCapture traces;
    oru_logger_set_level_by_name("DEBUG");
    EXPECT_EQ(oru_logger_get_level(), 5u);
    oru_logger_set_level_by_name("debug");
    oru_logger_set_level_by_name(nullptr);
    EXPECT_EQ(oru_logger_get_level(), 5u);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{6, "Current Log level: 5\n"},
                                                  {3, "Invalid log level: debug"},
                                                  {3, "Invalid log level"},
                                                  {3, "No log level name provided"},
                                                  {3, "Invalid log level"}}));
}

}  // namespace
