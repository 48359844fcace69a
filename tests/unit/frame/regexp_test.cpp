#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "oru/util.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kUtilTag = 0x290003c;

class Regexp : public testing::Test {
  protected:
    ~Regexp() override { release(); }
    int32_t compile(const std::string &pattern, int32_t flags = REG_EXTENDED) {
        release();
        return oru_regcomp(&re, pattern.c_str(), flags);
    }
    int32_t match(const char *text) { return oru_regexec(re, text, 0, nullptr, 0); }
    void release() {
        if (re == nullptr)
            return;
        oru_regfree(re);
        ph_free_named(re);
        re = nullptr;
    }
    oru_regexp *re = nullptr;
};

TEST_F(Regexp, MatchesAsTheCLibraryDoes) {
    EXPECT_EQ(compile("^a+(b|c)$"), 0);
    ASSERT_NE(re, nullptr);
    EXPECT_EQ(match("aab"), 0);
    EXPECT_EQ(match("aad"), REG_NOMATCH);
    EXPECT_EQ(compile("^a\\{2\\}$", 0), 0);
    EXPECT_EQ(match("aa"), 0);
    EXPECT_EQ(match("a"), REG_NOMATCH);
    EXPECT_EQ(compile("ABC", REG_ICASE), 0);
    EXPECT_EQ(match("xabcx"), 0);
}

TEST_F(Regexp, LivesInTwoBlocksOfItsTag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(kUtilTag, &stats);
    const uint64_t before = stats.live_blocks;
    compile("a");
    poolheap_tag_stats(kUtilTag, &stats);
    EXPECT_EQ(stats.live_blocks, before + 2);
    oru_regfree(re);
    poolheap_tag_stats(kUtilTag, &stats);
    EXPECT_EQ(stats.live_blocks, before + 1);  // the holder is the caller's
    EXPECT_EQ(re->p, nullptr);
    oru_regfree(re);
}

TEST_F(Regexp, AFailureGivesItsCodeAndWords) {
    TraceCapture traces;
    EXPECT_EQ(compile("a(b"), REG_EPAREN);
    EXPECT_EQ(re, nullptr);
    EXPECT_EQ(compile("[a"), REG_EBRACK);
    EXPECT_EQ(
        traces.lines(),
        (std::vector<Trace>{{3, "Error compiling regexp a(b : Unmatched ( or \\("},
                            {3, "Error compiling regexp [a : Unmatched [, [^, [:, [., or [="}}));
}

TEST_F(Regexp, WithoutAHolderSuccessLeavesTheOutput) {
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_regcomp(&re, "a", REG_EXTENDED), 0);
    poolheap_fail_off();
    EXPECT_EQ(re, nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to malloc oru_regexp\n"}}));
}

TEST_F(Regexp, WithoutMemoryForTheExpressionItIsTwelve) {
    TraceCapture traces;
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_regcomp(&re, "a", REG_EXTENDED), 12);
    poolheap_fail_off();
    EXPECT_EQ(re, nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Unable to malloc preg->p\n"}}));
}

TEST_F(Regexp, ANullOrEmptyHolderMatches) {
    oru_regexp empty{nullptr};
    EXPECT_EQ(oru_regexec(nullptr, "a", 0, nullptr, 0), 0);
    EXPECT_EQ(oru_regexec(&empty, "a", 0, nullptr, 0), 0);
    EXPECT_EQ(oru_regexec(nullptr, nullptr, 0, nullptr, 0), 0);
}

TEST_F(Regexp, PlacesAreNotTold) {
    compile("b");
    regmatch_t places[2] = {{-7, -7}, {-7, -7}};
    EXPECT_EQ(oru_regexec(re, "abc", 2, places, 0), 0);
    EXPECT_EQ(oru_regexec(re, "abc", 2, nullptr, 0), 0);
    EXPECT_EQ(oru_regexec(re, "abc", 2, places, REG_STARTEND), 0);
    EXPECT_EQ(places[0].rm_so, -7);
    EXPECT_EQ(places[1].rm_eo, -7);
    compile("^b");
    EXPECT_EQ(oru_regexec(re, "b", 0, nullptr, 0), 0);
    EXPECT_EQ(oru_regexec(re, "b", 0, nullptr, REG_NOTBOL), REG_NOMATCH);
}

std::string nested(int levels, const std::string &repeat) {
    std::string pattern(static_cast<size_t>(levels), '(');
    pattern += 'a';
    for (int i = 0; i < levels; ++i)
        pattern += ")" + repeat;
    return pattern;
}

struct Costly {
    std::string pattern;
    bool refused;
    int32_t flags = REG_EXTENDED;
};

class RegexpCost : public testing::TestWithParam<Costly> {};

TEST_P(RegexpCost, IsBoundedForNestedCounts) {
    oru_regexp *re = nullptr;
    TraceCapture traces;
    const int32_t rc = oru_regcomp(&re, GetParam().pattern.c_str(), GetParam().flags);
    EXPECT_EQ(rc, GetParam().refused ? 12 : 0) << GetParam().pattern.substr(0, 80);
    EXPECT_EQ(re == nullptr, GetParam().refused);
    if (GetParam().refused) {
        EXPECT_EQ(traces.lines(),
                  (std::vector<Trace>{{3, "Error compiling regexp " + GetParam().pattern +
                                              " : Memory exhausted"}}));
    }
    if (re != nullptr) {
        oru_regfree(re);
        ph_free_named(re);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, RegexpCost,
    testing::Values(Costly{"(a{100}){100}", false}, Costly{"(a{100}){101}", true},
                    Costly{"((a{100}){100}){2}", true}, Costly{"a{100}{101}", true},
                    Costly{"(a{1,100}b){0,101}", true}, Costly{"(x(a{5000,})){3}", true},
                    Costly{"(a{,200}){,51}", true}, Costly{"(a{,200}){,50}", false},
                    Costly{"a{20000}", false},                      // nothing is nested
                    Costly{"a{200}b{200}", false},                  // side by side
                    Costly{"(a{200}|b){1}c{200}", false},           //
                    Costly{"(a{200})\\*{200}", false},              // repeats the star
                    Costly{"([a{200}]){200}", false},               // no count in brackets
                    Costly{"([]a{200}]){200}", false},              //
                    Costly{"([^]a{200}]){200}", false},             //
                    Costly{"([[:alpha:]{200}]){200}", false},       //
                    Costly{"([[a{200}]){200}", false},              //
                    Costly{"([[.a.]{200}]){200}", false},           //
                    Costly{"([[=a=]{200}]){200}", false},           //
                    Costly{"[a](b{101}){100}", true},               //
                    Costly{"\\(a{200}\\){200}", false},             // no group
                    Costly{"\\(a\\{101\\}\\)\\{100\\}", true, 0},   // basic syntax
                    Costly{"\\(a\\{100\\}\\)\\{100\\}", false, 0},  //
                    Costly{"(a{200}){200}", false, 0},              // plain text there
                    Costly{nested(12, "+"), false}, Costly{nested(14, "+"), true},
                    Costly{nested(30, "+"), true}, Costly{nested(30, "*"), false},
                    Costly{nested(30, "?"), false}, Costly{nested(900, ""), false},
                    Costly{nested(1000, ""), true}, Costly{nested(100000, ""), true}));

// Each of those that are refused would take the C library seconds, minutes or gigabytes.
INSTANTIATE_TEST_SUITE_P(
    EmptyRows, RegexpCost,
    testing::Values(Costly{"a*++++++++", false}, Costly{"a*+++++++++", true},
                    Costly{"a++++*++++++++;++", true}, Costly{"((a*)+)+++++++++", true},
                    Costly{"(a*){400}", false}, Costly{"(a*){1000}", true},
                    Costly{"(a?b?c?){200}", false}, Costly{"(a?b?c?){400}", true},
                    Costly{"(a*b){3000}", false},  // something stands between
                    Costly{"(a*|b*){1000}", true}, Costly{"(()|()){1000}", true},
                    Costly{"a{0,4000}", false},  // one element
                    Costly{"(a*){1000,}", true}, Costly{"(a*){1,}b", false}));

INSTANTIATE_TEST_SUITE_P(
    Places, RegexpCost,
    testing::Values(
        Costly{"^(([0-9]|[1-9][0-9]|25[0-5])\\.){3}[0-9]+$", false},
        Costly{"(^|,)[a-z]+(,|$)", false}, Costly{"\\b[a-z]+\\b", false}, Costly{"(^a|b$)*", false},
        Costly{"(x(^|$)y){500}", false}, Costly{std::string(20, '$'), false},
        Costly{std::string(21, '$'), true}, Costly{"($){19}", false}, Costly{"($){1000}", true},
        Costly{"(^|$){9}", false}, Costly{"(^|$){100}", true}, Costly{"(\\b){100}", true},
        Costly{"(\\B){100}", true}, Costly{"(\\<|\\>){100}", true}, Costly{"(\\`|\\'){100}", true},
        Costly{"(\\b)+", false}, Costly{"(\\b)++++", true}, Costly{"(^|$)+", false},
        Costly{"(^|$)+++", true}, Costly{"((\\b)*){2}", false}, Costly{"((\\b)*){9}", true},
        Costly{"$" + std::string(100, '*'), true}, Costly{"(\\b\\b\\b)*", true},
        Costly{"((^|$)?){9}", true}, Costly{"((\\b)?){9}", false},
        Costly{"((^|$|\\b|\\<)*)*", true}, Costly{"(\\[^$^$^$^$^$^$^$^$^$^$^$^$\\])", true},
        Costly{"([$^$^$^$^$^$^$^$^$^$^$^$]){9}", false}));

// What is no pattern is left to the C library, whatever its cost would be.
TEST_F(Regexp, PatternsThatAreNoneGetTheCodeOfTheCLibrary) {
    for (const char *pattern : {"[[:a", "a\\", "\\(a", "(a", "a\\)", "a)", "a{5", "a\\{5", "a{5,3}",
                                "*a", "[z-a]", "a{9999999999}"}) {
        for (const int32_t flags : {0, REG_EXTENDED}) {
            regex_t direct;
            const int32_t code = regcomp(&direct, pattern, flags);
            if (code == 0)
                regfree(&direct);
            EXPECT_EQ(compile(pattern, flags), code) << pattern;
        }
    }
}

TEST_F(Regexp, RequiredArgumentsAreNamed) {
    compile("a");
    EXPECT_ASSERTION(oru_regcomp(nullptr, "a", 0), "out");
    EXPECT_ASSERTION(oru_regcomp(&re, nullptr, 0), "pattern");
    EXPECT_ASSERTION(oru_regexec(re, nullptr, 0, nullptr, 0), "text");
    EXPECT_ASSERTION(oru_regfree(nullptr), "re");
}

TEST(RegexpMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            oru_regexp *re = nullptr;
            const int32_t rc = oru_regcomp(&re, "a(b)*", REG_EXTENDED);
            if (re == nullptr) {
                EXPECT_TRUE(rc == 0 || rc == 12);
                return;
            }
            EXPECT_EQ(oru_regexec(re, "abb", 0, nullptr, 0), 0);
            oru_regfree(re);
            ph_free_named(re);
        },
        {.promised_deaths = {}, .at_least = 2});
}

}  // namespace
