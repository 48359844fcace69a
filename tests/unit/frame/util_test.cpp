#include "oru/util.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::expect_in_child;
using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kStrdupTag = 0x2900027;
constexpr uint32_t kUtilTag = 0x290003c;

uint64_t live_blocks(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats.live_blocks;
}

// A text that belongs to the caller, as a string; "(null)" for none.
std::string take(char *text) {
    if (text == nullptr)
        return "(null)";
    const std::string copy = text;
    ph_free_named(text);
    return copy;
}

// ---- printf ----

TEST(UtilPrintf, GivesTheSizeOfItsBlock) {
    const auto size_for = [](size_t length) {
        char *out = nullptr;
        const int32_t size = oru_printf(&out, "%s", std::string(length, 'x').c_str());
        EXPECT_EQ(take(out), std::string(length, 'x'));
        return size;
    };
    EXPECT_EQ(size_for(0), 200);
    EXPECT_EQ(size_for(10), 200);
    EXPECT_EQ(size_for(199), 200);
    EXPECT_EQ(size_for(200), 201);
    EXPECT_EQ(size_for(250), 251);
}

TEST(UtilPrintf, UsesItsArgumentsAgainWhenItGrows) {
    char *out = nullptr;
    EXPECT_EQ(oru_printf(&out, "%d %s %d", 1, std::string(300, 'y').c_str(), 2), 305);
    EXPECT_EQ(live_blocks(kUtilTag), 1u);
    EXPECT_EQ(take(out), "1 " + std::string(300, 'y') + " 2");
}

TEST(UtilPrintf, AFormatThatCannotBePrintedIsNegative) {
    char *out = nullptr;
    EXPECT_LT(oru_printf(&out, "%lc", static_cast<wint_t>(0xd800)), 0);
    EXPECT_NE(out, nullptr);
    ph_free_named(out);
}

TEST(UtilPrintf, NeedsMemory) {
    char text[1];
    char *out = text;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_printf(&out, "a"), -1);
    EXPECT_EQ(out, nullptr);
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_printf(&out, "%s", std::string(300, 'x').c_str()), -1);
    poolheap_fail_off();
    EXPECT_EQ(take(out), std::string(199, 'x'));  // the first block
    EXPECT_ASSERTION(oru_printf(nullptr, "a"), "out");
    const char *no_format = nullptr;
    EXPECT_ASSERTION(oru_printf(&out, no_format, 1), "format");
}

// ---- Copies ----

TEST(UtilStrdup, CopiesUnderItsTag) {
    char *copy = oru_util_strdup("text");
    EXPECT_EQ(live_blocks(kStrdupTag), 1u);
    EXPECT_EQ(take(copy), "text");
    EXPECT_EQ(oru_util_strdup(nullptr), nullptr);
    EXPECT_EQ(take(oru_util_strndup("text", 2)), "te");
    EXPECT_EQ(take(oru_util_strndup("text", 0)), "");
    EXPECT_EQ(oru_util_strndup(nullptr, 2), nullptr);
    copy = oru_util_strndup("a\0b", 3);
    EXPECT_EQ(std::memcmp(copy, "a\0b", 4), 0);
    ph_free_named(copy);
}

TEST(UtilExclude, LeavesBytesOut) {
    char dst[16];
    EXPECT_EQ(oru_util_strncpy_excl(dst, "a-b.c-", 6, "-."), 3);
    EXPECT_STREQ(dst, "abc");
    EXPECT_EQ(oru_util_strncpy_excl(dst, "a-b.c-", 3, "-."), 2);  // counts bytes of the source
    EXPECT_STREQ(dst, "ab");
    EXPECT_EQ(oru_util_strncpy_excl(dst, "a-b", 3, nullptr), 3);
    EXPECT_STREQ(dst, "a-b");
    EXPECT_EQ(oru_util_strncpy_excl(dst, "---", 3, "-"), 0);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(oru_util_strncpy_excl(dst, "abc", 0, "-"), 0);
    EXPECT_EQ(oru_util_strncpy_excl(dst, "a\0b", 3, "-"), 3);
    EXPECT_EQ(std::memcmp(dst, "a\0b", 4), 0);
}

TEST(UtilExclude, WithoutATextItIsTheLengthOfTheSet) {
    char dst[4] = "abc";
    EXPECT_EQ(oru_util_strncpy_excl(nullptr, "abc", 3, "12345"), 5);
    EXPECT_EQ(oru_util_strncpy_excl(dst, nullptr, 3, "12"), 2);
    EXPECT_EQ(oru_util_strncpy_excl(dst, nullptr, 3, nullptr), 0);
    EXPECT_STREQ(dst, "abc");
}

TEST(UtilExclude, CopiesIntoANewBlock) {
    char *copy = oru_util_strndup_excl("(a b)", 5, "( )");
    EXPECT_EQ(live_blocks(kStrdupTag), 1u);
    EXPECT_EQ(take(copy), "ab");
    EXPECT_EQ(oru_util_strndup_excl(nullptr, 5, "("), nullptr);
    EXPECT_EQ(take(oru_util_strndup_excl("ab", -1, "(")), "");
}

TEST(UtilStrip, CutsBothEndsAndKeepsWhatIsInside) {
    char dst[16];
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(dst, "  a b \t", 7, " \t"), 3);
    EXPECT_STREQ(dst, "a b");
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(dst, "  a b \t", 4, " \t"), 1);
    EXPECT_STREQ(dst, "a");
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(dst, "    ", 4, " "), 0);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(dst, " a ", 3, nullptr), 3);
    EXPECT_STREQ(dst, " a ");
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(dst, "a", 0, " "), 0);
    char in_place[] = "--x--";
    EXPECT_EQ(oru_util_strncpy_strip_end_chars(in_place, in_place, 5, "-"), 1);
    EXPECT_STREQ(in_place, "x");
    EXPECT_ASSERTION(oru_util_strncpy_strip_end_chars(nullptr, "a", 1, " "), "dst");
    EXPECT_ASSERTION(oru_util_strncpy_strip_end_chars(dst, nullptr, 1, " "), "src");
}

TEST(UtilStrip, CopiesIntoANewBlock) {
    char *copy = oru_util_strndup_strip_end_chars("\"a\"b\"", 5, "\"");
    EXPECT_EQ(live_blocks(kStrdupTag), 1u);
    EXPECT_EQ(take(copy), "a\"b");
    EXPECT_EQ(oru_util_strndup_strip_end_chars(nullptr, 5, "\""), nullptr);
}

TEST(UtilCopies, NeedMemory) {
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_util_strdup("a"), nullptr);
    EXPECT_EQ(oru_util_strndup("a", 1), nullptr);
    EXPECT_EQ(oru_util_strndup_excl("a", 1, nullptr), nullptr);
    EXPECT_EQ(oru_util_strndup_strip_end_chars("a", 1, nullptr), nullptr);
    poolheap_fail_off();
}

// ---- Looking at texts ----

TEST(UtilIsInt, TakesDigitsBehindBlanksAndNothingElse) {
    EXPECT_EQ(oru_util_is_int_str("  42"), 1);
    EXPECT_EQ(oru_util_is_int_str("\t7"), 1);
    EXPECT_EQ(oru_util_is_int_str("0123456789"), 1);
    EXPECT_EQ(oru_util_is_int_str(""), 1);
    EXPECT_EQ(oru_util_is_int_str("   "), 1);
    EXPECT_EQ(oru_util_is_int_str("-5"), 0);
    EXPECT_EQ(oru_util_is_int_str("+5"), 0);
    EXPECT_EQ(oru_util_is_int_str("4 2"), 0);
    EXPECT_EQ(oru_util_is_int_str("42 "), 0);
    EXPECT_EQ(oru_util_is_int_str("4a"), 0);
    EXPECT_ASSERTION(oru_util_is_int_str(nullptr), "text");
}

TEST(UtilIgnoreCase, RaisesLowerCase) {
    EXPECT_EQ(oru_util_strcmp_ignore_case("abc", "ABC"), 0);
    EXPECT_EQ(oru_util_strcmp_ignore_case("", ""), 0);
    EXPECT_EQ(oru_util_strcmp_ignore_case("abc", "ABD"), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("B", "a"), 1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("_", "a"), 1);  // '_' is above 'A'
    EXPECT_EQ(oru_util_strcmp_ignore_case("{", "z"), 1);
}

TEST(UtilIgnoreCase, BytesAreSignedButABeginningSortsFirst) {
    EXPECT_EQ(oru_util_strcmp_ignore_case("\xc3", "a"), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("a", "\xc3"), 1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("ab", "abc"), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("abc", "ab"), 1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("a", "a\xc3"), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("a\xc3", "a"), 1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("", "a"), -1);
}

TEST(UtilIgnoreCase, NullIsLess) {
    EXPECT_EQ(oru_util_strcmp_ignore_case(nullptr, "a"), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case("a", nullptr), -1);
    EXPECT_EQ(oru_util_strcmp_ignore_case(nullptr, nullptr), -1);
}

// ---- Console ----

TEST(UtilBufClean, CutsALineAtItsNewline) {
    FILE *stream = std::tmpfile();
    std::fputs("next\n", stream);
    std::rewind(stream);
    char text[] = "line\nrest";
    oru_cl_buf_clean(text, stream);
    EXPECT_STREQ(text, "line");
    EXPECT_EQ(std::ftell(stream), 0);
    std::fclose(stream);
}

TEST(UtilBufClean, DropsTheRestOfALineThatDidNotFit) {
    FILE *stream = std::tmpfile();
    std::fputs("rest of it\nnext\n", stream);
    std::rewind(stream);
    char text[] = "line";
    oru_cl_buf_clean(text, stream);
    EXPECT_STREQ(text, "line");
    EXPECT_EQ(std::ftell(stream), 11);
    oru_cl_buf_clean(text, stream);
    oru_cl_buf_clean(text, stream);  // at the end there is nothing to drop
    std::fclose(stream);
    EXPECT_ASSERTION(oru_cl_buf_clean(nullptr, stdin), "text");
    EXPECT_ASSERTION(oru_cl_buf_clean(text, nullptr), "stream");
}

struct Dialogue {
    int32_t min;
    int32_t max;
    std::string input;
    int32_t result;
    std::string output;
};

class UtilReadInt : public testing::TestWithParam<Dialogue> {};

TEST_P(UtilReadInt, AsksUntilANumberIsInRange) {
    const Dialogue &dialogue = GetParam();
    const oru::test::ChildResult child = oru::test::run_in_child([&dialogue] {
        FILE *input = std::tmpfile();
        std::fputs(dialogue.input.c_str(), input);
        std::rewind(input);
        dup2(fileno(input), STDIN_FILENO);
        return oru_util_read_int(dialogue.min, dialogue.max) == dialogue.result ? 0 : 1;
    });
    EXPECT_TRUE(child.exited_with(0)) << child.describe();
    EXPECT_EQ(child.output, dialogue.output);
}

constexpr char kNoNumber[] = "Failed to convert string to int\nEnter new value: ";
constexpr char kNotFrom1[] = "Not in range (min=1)\nEnter new value: ";
constexpr char kNotFrom1To9[] = "Not in range (min=1, max=9)\nEnter new value: ";

INSTANTIATE_TEST_SUITE_P(
    Lines, UtilReadInt,
    testing::Values(Dialogue{1, 9, "5\n", 5, ""}, Dialogue{1, 9, "1\n", 1, ""},
                    Dialogue{1, 9, "9", 9, ""}, Dialogue{1, 9, " 7 \r\n", 7, ""},
                    Dialogue{1, 9, "0\n10\n5\n", 5, std::string(kNotFrom1To9) + kNotFrom1To9},
                    Dialogue{1, 9, "x\n\n5x\n5\n", 5,
                             std::string(kNoNumber) + kNoNumber + kNoNumber},
                    Dialogue{1, -1, "0\n2147483648\n2147483647\n", INT32_MAX,
                             std::string(kNotFrom1) + kNotFrom1},
                    Dialogue{1, -1, "99999999999999999999\n3\n", 3, kNotFrom1},
                    Dialogue{-5, 5, "-5\n", -5, ""}, Dialogue{4, 9, "", 4, ""},
                    Dialogue{4, 9, "x\n", 4, kNoNumber},
                    Dialogue{1, 9, std::string(300, 'x') + "\n5\n", 5, kNoNumber}));

// ---- Times ----

TEST(UtilTime, ComparesBySecondsThenFraction) {
    const ORUTime early{1, 900};
    const ORUTime middle{2, 1};
    const ORUTime late{2, 2};
    EXPECT_EQ(oru_compare_time(&early, &middle), -1);
    EXPECT_EQ(oru_compare_time(&middle, &early), 1);
    EXPECT_EQ(oru_compare_time(&middle, &late), -1);
    EXPECT_EQ(oru_compare_time(&late, &middle), 1);
    EXPECT_EQ(oru_compare_time(&late, &late), 0);
    EXPECT_ASSERTION(oru_compare_time(nullptr, &late), "t1");
    EXPECT_ASSERTION(oru_compare_time(&late, nullptr), "t2");
}

TEST(UtilTime, DurationsAreMicroseconds) {
    const ORUTime start{1, 999999};
    const ORUTime end{2, 0};
    EXPECT_EQ(oru_calc_duration(&start, &end), 1);
    EXPECT_EQ(oru_calc_duration(&end, &start), -1);
    EXPECT_EQ(oru_calc_duration(&end, &end), 0);
    const ORUTime later{5, 500000};
    EXPECT_EQ(oru_calc_duration(&end, &later), 3500000);
    EXPECT_ASSERTION(oru_calc_duration(nullptr, &end), "start");
    EXPECT_ASSERTION(oru_calc_duration(&start, nullptr), "end");
}

TEST(UtilTime, TimestampsCarryIntoTheSeconds) {
    const ORUTime start{10, 999999};
    ORUTime out{};
    oru_calc_timestamp(&start, 1, &out);
    EXPECT_EQ(out.seconds, 11);
    EXPECT_EQ(out.fraction, 0);
    oru_calc_timestamp(&start, 2500002, &out);
    EXPECT_EQ(out.seconds, 13);
    EXPECT_EQ(out.fraction, 500001);
    oru_calc_timestamp(&out, 0, &out);
    EXPECT_EQ(out.seconds, 13);
    // 2^32 and 3 seconds carry 3.
    oru_calc_timestamp(&start, (4294967296 + 3) * 1000000, &out);
    EXPECT_EQ(out.seconds, 13);
    EXPECT_EQ(out.fraction, 999999);
    EXPECT_ASSERTION(oru_calc_timestamp(nullptr, 0, &out), "start");
    EXPECT_ASSERTION(oru_calc_timestamp(&start, 0, nullptr), "out");
}

TEST(UtilTime, RealTimeIsTheSystems) {
    struct timespec ts {};
    EXPECT_EQ(oru_time_get_timespec_realtime(nullptr), 22);
    EXPECT_EQ(oru_time_get_timespec_realtime(&ts), 0);
    const time_t now = time(nullptr);
    EXPECT_LE(ts.tv_sec, now + 1);
    EXPECT_GE(ts.tv_sec, now - 60);
}

// ---- Files ----

class UtilReadFile : public testing::Test {
  protected:
    UtilReadFile() {
        char name[] = "/tmp/oru-read-file-XXXXXX";
        close(mkstemp(name));
        path = name;
    }
    ~UtilReadFile() override { unlink(path.c_str()); }
    void write(const std::string &text) { std::ofstream(path, std::ios::binary) << text; }
    std::string path;
    char *out = &untouched;
    static inline char untouched = 'x';
};

TEST_F(UtilReadFile, GivesTheWholeFileAndAZero) {
    const std::string text = "first\nsecond\0third" + std::string(100000, 'x');
    write(text);
    EXPECT_EQ(oru_read_file(path.c_str(), &out), 0);
    EXPECT_EQ(live_blocks(kUtilTag), 1u);
    EXPECT_EQ(std::memcmp(out, text.c_str(), text.size() + 1), 0);
    ph_free_named(out);
}

TEST_F(UtilReadFile, AMissingOneIsNotFound) {
    EXPECT_EQ(oru_read_file((path + ".none").c_str(), &out), 10004);
}

TEST_F(UtilReadFile, AnEmptyOneIsAFailure) {
    TraceCapture traces;
    EXPECT_EQ(oru_read_file(path.c_str(), &out), 10001);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to read file '" + path + "': Success\n"}}));
}

TEST_F(UtilReadFile, AFolderCannotBeRead) {
    TraceCapture traces;
    EXPECT_EQ(oru_read_file("/tmp", &out), 10001);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to read file '/tmp': Is a directory\n"}}));
}

TEST_F(UtilReadFile, OneThatDoesNotOpenIsTold) {
    write("text");
    expect_in_child([this] {
        TraceCapture traces;
        const struct rlimit none {};
        setrlimit(RLIMIT_NOFILE, &none);
        EXPECT_EQ(oru_read_file(path.c_str(), &out), 10001);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(
            traces.lines(),
            (std::vector<Trace>{{3, "Failed to open file '" + path + "': Too many open files\n"}}));
        EXPECT_EQ(live_blocks(kUtilTag), 0u);
    });
}

TEST_F(UtilReadFile, NeedsMemory) {
    write("text");
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_read_file(path.c_str(), &out), 10002);
    poolheap_fail_off();
    EXPECT_EQ(out, nullptr);
    EXPECT_ASSERTION(oru_read_file(nullptr, &out), "path");
    EXPECT_ASSERTION(oru_read_file(path.c_str(), nullptr), "out");
}

// ---- The process ----

TEST(UtilProcess, ItsNameIsThatOfItsProgram) {
    expect_in_child([] {
        char *name = nullptr;
        EXPECT_EQ(procName, nullptr);
        EXPECT_EQ(oru_get_process_name(&name), 0);
        EXPECT_STREQ(name, "frame_test");
        ASSERT_NE(procName, nullptr);
        EXPECT_STREQ(procName, "frame_test");
        EXPECT_NE(procName, name);
        EXPECT_EQ(live_blocks(kUtilTag), 2u);
        ph_free_named(name);
    });
}

TEST(UtilProcess, AKnownNameIsCopied) {
    expect_in_child([] {
        char known[] = "known";
        procName = known;
        char *name = nullptr;
        EXPECT_EQ(oru_get_process_name(&name), 0);
        EXPECT_EQ(take(name), "known");
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(oru_get_process_name(&name), 0);
        poolheap_fail_off();
        EXPECT_EQ(name, nullptr);
        EXPECT_STREQ(procName, "known");
    });
}

void expect_unknown(int32_t rc) {
    char *name = nullptr;
    EXPECT_EQ(oru_get_process_name(&name), rc);
    EXPECT_EQ(take(name), "unknown proc");
    EXPECT_STREQ(procName, "unknown proc");
}

TEST(UtilProcess, ACommandLineThatDoesNotOpenGivesASubstitute) {
    expect_in_child([] {
        struct rlimit limit {};
        getrlimit(RLIMIT_NOFILE, &limit);
        const struct rlimit none { 0, limit.rlim_max };
        setrlimit(RLIMIT_NOFILE, &none);
        expect_unknown(-1);
        setrlimit(RLIMIT_NOFILE, &limit);
        char *name = nullptr;
        EXPECT_EQ(oru_get_process_name(&name), 0);  // the substitute stays
        EXPECT_EQ(take(name), "unknown proc");
    });
}

TEST(UtilProcess, AnEmptyCommandLineGivesASubstitute) {
    expect_in_child([] {
        *program_invocation_name = '\0';
        expect_unknown(-4);
    });
}

TEST(UtilProcess, ACopyThatFailsGivesASubstitute) {
    expect_in_child([] {
        poolheap_fail_nth(1, 0);
        expect_unknown(-2);
        poolheap_fail_off();
    });
    expect_in_child([] {
        char *name = nullptr;
        poolheap_fail_nth(1, 1);
        EXPECT_EQ(oru_get_process_name(&name), -2);
        poolheap_fail_off();
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(procName, nullptr);
    });
    EXPECT_ASSERTION(oru_get_process_name(nullptr), "out");
}

TEST(UtilProcess, BooleansHaveFourBytes) {
    TraceCapture traces;
    EXPECT_EQ(verify_boolean_size(4), 1);
    EXPECT_EQ(verify_boolean_size(1), 0);
    EXPECT_EQ(verify_boolean_size(8), 0);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{5, "boolean verification successful size 4"},
                                                  {3, "boolean size mismatch 1 4"},
                                                  {3, "boolean size mismatch 8 4"}}));
}

}  // namespace
