// Construction from text, and the parse.
#include <oruplatform/chunk.h>

#include <utility>

#include "tests/support/child.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

using Lines = std::vector<std::string>;

TEST(UriNew, KeepsTheTextAsItWasWritten) {
    for (const char *text : {"", "/", "//", "/a/", "a/b?cd", "///", "//locations;locationId=1/a"})
        EXPECT_EQ(text_of(unparsed(text)), text);
}

TEST(UriNew, TakesTheFirstCharactersOfACountedText) {
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_l("/a/b", 2))), "/a");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_l("/a/b", 0))), "");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_l("/a/b", -1))), "");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_l("/a/b", 4))), "/a/b");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_l("/a", 100))), "/a");
}

TEST(UriNew, ParsesNothing) {
    TraceCapture traces;
    const Uri bad = unparsed("///");
    const Uri counted(oru_do_uri_new_l("///", 3));
    const Uri formatted(oru_do_uri_new_fmt("//%s", "/"));
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriNew, TracesItsCounts) {
    TraceCapture traces(8);
    ORUDoUri *uri = oru_do_uri_new("/a");
    EXPECT_EQ(oru_do_uri_ref(uri), uri);
    oru_do_uri_deref(uri);
    oru_do_uri_deref(uri);
    char place[32];
    std::snprintf(place, sizeof place, "%p", static_cast<void *>(uri));
    const std::string at = std::string("oru_do_uri ") + place;
    EXPECT_EQ(traces.at(8), (Lines{"oru ref " + at + " 1", "oru ref " + at + " 2",
                                   "oru deref " + at + " 2", "oru deref " + at + " 1"}));
}

TEST(UriNew, NullIsAsserted) {
    EXPECT_ASSERTION(oru_do_uri_new(nullptr), "str");
    EXPECT_ASSERTION(oru_do_uri_new_l(nullptr, 1), "str");
    EXPECT_ASSERTION(oru_do_uri_validate_new(nullptr), "str");
    EXPECT_ASSERTION(oru_do_uri_new_parse_unescape_key(nullptr), "str");
    EXPECT_ASSERTION(oru_do_uri_get_uri_str(nullptr), "uri");
    EXPECT_EQ(oru_do_uri_ref(nullptr), nullptr);
    oru_do_uri_deref(nullptr);
    oru_do_uri_str_free(nullptr);
}

TEST(UriNew, TextsLandInTheirClasses) {
    const auto asked = [](size_t length) {
        const std::string text = run_of(length);
        return classes_asked([&] { Uri(oru_do_uri_new(text.c_str())); });
    };
    EXPECT_EQ(asked(0), "small");
    EXPECT_EQ(asked(62), "small");
    EXPECT_EQ(asked(63), "misc");
    EXPECT_EQ(asked(126), "misc");
    EXPECT_EQ(asked(127), "heap");
    for (size_t length : {62u, 63u, 126u, 127u, 1000u})
        EXPECT_EQ(text_of(unparsed(run_of(length))), run_of(length));
}

TEST(UriNew, NeedsARecordAndAText) {
    for (size_t length : {1u, 100u, 200u}) {
        const std::string text = run_of(length);
        sweep_oom(
            [&] {
                const Uri uri(oru_do_uri_new(text.c_str()));
                EXPECT_EQ(uri == nullptr, oom_hit());
                const Uri counted(oru_do_uri_new_l(text.c_str(), 1));
                if (counted) {
                    EXPECT_EQ(text_of(counted), "a");
                }
            },
            {.promised_deaths = {}, .at_least = 4});
    }
}

TEST(UriPools, HaveTheirNamesSizesAndTags) {
    expect_in_child([] {
        TraceCapture traces;
        void *small = init_chunk_poolheap_oru_do_uri_sml_misc(16, 0);
        void *misc = init_chunk_poolheap_oru_do_uri_misc(8, 0);
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{5, "chunk create oru_do_uri_sml_misc 64 16"},
                                                      {5, "chunk create oru_do_uri_misc 128 8"}}));
        void *records = init_chunk_poolheap_oru_do_uri(4, 0);
        chunk_stats_t stats{};
        const Uri one = unparsed(run_of(62));
        const Uri two = unparsed(run_of(126));
        const Uri long_one = unparsed(run_of(127));
        chunk_pool_stats(small, &stats);
        EXPECT_EQ(stats.live, 1u);
        EXPECT_EQ(stats.tag, kSmallTag);
        chunk_pool_stats(misc, &stats);
        EXPECT_EQ(stats.live, 1u);
        EXPECT_EQ(stats.tag, kMiscTag);
        chunk_pool_stats(records, &stats);
        EXPECT_EQ(stats.live, 3u);
        EXPECT_EQ(stats.tag, 0x290001bu);
    });
}

TEST(UriPools, ARefusedTextEndsTheProcess) {
    const std::string words = "Failed to free ##name from chunk poolheap_chunk_##type";
    EXPECT_FATAL(
        {
            init_chunk_poolheap_oru_do_uri_sml_misc(16, 0);
            ORUDoUri *uri = oru_do_uri_new("/a");
            init_chunk_poolheap_oru_do_uri_sml_misc(16, 0);
            oru_do_uri_deref(uri);
        },
        words);
    EXPECT_FATAL(
        {
            init_chunk_poolheap_oru_do_uri_misc(16, 0);
            ORUDoUri *uri = oru_do_uri_new(run_of(100).c_str());
            init_chunk_poolheap_oru_do_uri_misc(16, 0);
            oru_do_uri_deref(uri);
        },
        words);
}

// ---- Formatted texts ----

TEST(UriFormat, WritesAnyLength) {
    for (size_t length : {0u, 1u, 61u, 62u, 63u, 64u, 125u, 126u, 127u, 128u, 5000u}) {
        const std::string text = run_of(length);
        EXPECT_EQ(text_of(Uri(oru_do_uri_new_fmt("/%s", text.c_str()))), "/" + text);
    }
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_fmt("/a;k=%d/%s", 7, "b"))), "/a;k=7/b");
}

TEST(UriFormat, FormatsIntoTheClassesOfItsTexts) {
    const auto asked = [](size_t length) {
        const std::string text = run_of(length);
        return classes_asked([&] { Uri(oru_do_uri_new_fmt("%s", text.c_str())); });
    };
    EXPECT_EQ(asked(62), "small");
    EXPECT_EQ(asked(63), "small misc");  // the text of 63 fits the first buffer, not the small URI
    EXPECT_EQ(asked(64), "small misc");
    EXPECT_EQ(asked(126), "small misc");
    EXPECT_EQ(asked(127), "small heap");
}

TEST(UriFormat, ABufferThatCannotBeHadIsTraced) {
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_uri_new_fmt("/%d", 1), nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "cant alloc buffer"}}));
    for (int width : {100, 200}) {
        traces.clear();
        poolheap_fail_nth(2, 0);
        EXPECT_EQ(oru_do_uri_new_fmt("/%*d", width, 1), nullptr);
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to alloc buffer"}}));
    }
    poolheap_fail_off();
}

TEST(UriFormat, WhatCannotBeFormattedGivesNone) {
    // A character that the locale "C" cannot write.
    EXPECT_EQ(oru_do_uri_new_fmt("/%ls", L"\u00e9"), nullptr);
    const char *none = nullptr;
    EXPECT_ASSERTION(oru_do_uri_new_fmt(none), "format");
}

TEST(UriFormat, MemoryMayRunOut) {
    for (int width : {10, 100, 200}) {
        sweep_oom(
            [width] {
                const Uri uri(oru_do_uri_new_fmt("/%*d", width, 1));
                EXPECT_EQ(uri == nullptr, oom_hit());
            },
            {.promised_deaths = {}, .at_least = 3});
    }
}

// ---- What parses ----

TEST(UriParse, TellsEachStep) {
    TraceCapture traces;
    const Uri uri = parsed("/a;k=1;lm=/b?cd");  // 0123456 789...
    const std::string text = "'/a;k=1;lm=/b?cd'";
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "parse uri " + text},
                                                  {7, "parse segment 1 9 " + text},
                                                  {7, "parsed refname 0 a"},
                                                  {7, "parse key 3 4 5 " + text},
                                                  {7, "parsed key value '1'"},
                                                  {7, "parse key 7 9 9 " + text},
                                                  {7, "parsed key value ''"},
                                                  {7, "parse segment 11 11 " + text},
                                                  {7, "parsed refname 1 b"},
                                                  {7, "query part 2 'cd'"}}));
    EXPECT_EQ(model_of(uri), "a;k=1;lm=|b?cd");
}

// The counts of values, without their places.
Lines value_counts(const TraceCapture &traces) {
    Lines counts;
    for (const std::string &line : traces.at(8)) {
        const size_t type = line.find("oru_do_value ");
        if (type != std::string::npos)
            counts.push_back(line.substr(0, type) + line.substr(line.rfind(' ') + 1));
    }
    return counts;
}

TEST(UriParse, ValuesOfKeysAreAddedAndReleased) {
    ORUDoUri *uri = oru_do_uri_new("/a;k=1");
    TraceCapture traces(8);
    oru_do_uri_get_segment_count(uri);
    EXPECT_EQ(value_counts(traces), (Lines{"oru ref 1", "oru ref 2", "oru deref 2"}));
    traces.clear();
    oru_do_uri_deref(uri);
    EXPECT_EQ(value_counts(traces), (Lines{"oru deref 1"}));
}

TEST(UriParse, ValuesOfKeysHaveOneReferenceWhenNobodyLooksToo) {
    ORUDoUri *uri = oru_do_uri_new("/a;k=1;l=2");
    oru_do_uri_get_segment_count(uri);
    TraceCapture traces(8);
    oru_do_uri_deref(uri);
    EXPECT_EQ(value_counts(traces), (Lines{"oru deref 1", "oru deref 1"}));
}

TEST(UriParse, HappensOnce) {
    const Uri uri = parsed("/a/b");
    TraceCapture traces;
    EXPECT_EQ(model_of(uri), "a|b");
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriParse, HappensAtTheFirstInspection) {
    const Uri uri = unparsed("/a;k=x%2Fy");
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 1);
    EXPECT_EQ(traces.lines().front(), (Trace{7, "parse uri '/a;k=x%2Fy'"}));
    EXPECT_EQ(model_of(uri), "a;k=x/y");
}

TEST(UriParse, SlashesAroundCarryNoSegment) {
    for (const char *text : {"/a/b", "a/b", "//a/b", "/a/b/", "a/b/", "//a/b/"}) {
        const Uri uri = parsed(text);
        EXPECT_EQ(model_of(uri), "a|b") << text;
        EXPECT_EQ(text_of(uri), text);
    }
    EXPECT_EQ(model_of("/a//"), "a");
}

TEST(UriParse, RootsHaveNoSegments) {
    for (const char *text : {"/", "//"}) {
        const Uri uri = parsed(text);
        EXPECT_EQ(model_of(uri), "");
        EXPECT_EQ(oru_do_uri_get_segment_last(uri.get()), nullptr);
        EXPECT_EQ(oru_do_uri_get_keys(uri.get()), nullptr);
        EXPECT_EQ(parent_of(uri), "//");
    }
}

TEST(UriParse, TheLocationCounts) {
    EXPECT_EQ(model_of("//locations;locationId=x/a"), "locations;locationId=x|a");
}

TEST(UriParse, ParentsAreThePathBeforeTheLastSegment) {
    const std::pair<const char *, const char *> cases[] = {
        {"a", "//"},       {"/a", "//"},    {"/a/b", "/a"},
        {"//a/b", "//a"},  {"a/b/", "a"},   {"/a;k=1/b;k=2/c", "/a;k=1/b;k=2"},
        {"/a/b?cd", "/a"}, {"/a?cd", "//"}, {"//a;i=1/b", "//a;i=1"},
    };
    for (const auto &[text, parent] : cases)
        EXPECT_EQ(parent_of(parsed(text)), parent) << text;
}

TEST(UriParse, QueriesRunToTheEnd) {
    EXPECT_EQ(model_of("/a?bc"), "a?bc");
    EXPECT_EQ(model_of("/a?bc/"), "a?bc");
    EXPECT_EQ(model_of("/a?b/c"), "a?b/c");
    EXPECT_EQ(model_of("/a?b?c;=/"), "a?b?c;=");
    EXPECT_EQ(model_of("/a;k=1?bc"), "a;k=1?bc");
    EXPECT_EQ(model_of("/a?:T"), "a?:T");
    EXPECT_EQ(model_of("a?bc"), "a?bc");
}

TEST(UriParse, AQuestionMarkFirstInASegmentIsPartOfTheName) {
    EXPECT_EQ(model_of("/?b"), "?b");
    EXPECT_EQ(model_of("/a/?b"), "a|?b");
    EXPECT_EQ(model_of("?"), "?");
    EXPECT_EQ(model_of("/a/?b?cd"), "a|?b?cd");
}

TEST(UriParse, LongQueriesKeepTheSlashThatOthersLose) {
    for (size_t length : {2u, 63u, 64u, 127u}) {
        const std::string query = run_of(length, 'q');
        EXPECT_EQ(model_of("/a?" + query + "/"), "a?" + query);
    }
    const std::string query = run_of(128, 'q');
    TraceCapture traces;
    EXPECT_EQ(model_of("/a?" + query + "/"), "a?" + query + "/");
    EXPECT_TRUE(traces.has(7, "query part 128 '" + query + "/'"));
    EXPECT_EQ(model_of("/a?" + query), "a?" + query);
}

TEST(UriParse, QueriesLandInTheirClasses) {
    const auto asked = [](size_t length) {
        return classes_asked([&] { return unparsed("/a?" + run_of(length)); },
                             [](const Uri &uri) { oru_do_uri_get_segment_count(uri.get()); });
    };
    // The parent "//" is small.
    EXPECT_EQ(asked(2), "small");
    EXPECT_EQ(asked(63), "small");
    EXPECT_EQ(asked(64), "small misc");
    EXPECT_EQ(asked(127), "small misc");
    EXPECT_EQ(asked(128), "small heap");
}

TEST(UriParse, ParentsLandInTheirClasses) {
    const auto asked = [](const std::string &parent) {
        return classes_asked([&] { return unparsed(parent + "/b"); },
                             [](const Uri &uri) { oru_do_uri_get_segment_count(uri.get()); });
    };
    EXPECT_EQ(asked("/" + run_of(62)), "small");                    // 63
    EXPECT_EQ(asked("/" + run_of(63)), "misc");                     // 64
    EXPECT_EQ(asked("/" + run_of(63) + "/" + run_of(62)), "misc");  // 127
    EXPECT_EQ(asked("/" + run_of(63) + "/" + run_of(63)), "heap");  // 128
}

TEST(UriParse, KeysAreStringsInTextOrder) {
    const Uri uri = parsed("/a;n=12;b=true;n=13");
    EXPECT_EQ(model_of(uri), "a;n=12;b=true;n=13");
    for (int32_t i = 0; i < 3; ++i)
        EXPECT_EQ(oru_do_value_get_type(oru_do_uri_get_key(uri.get(), i)), ORU_DO_TYPE_STRING);
}

TEST(UriParse, KeyValuesMayBeEmpty) {
    EXPECT_EQ(model_of("a;k="), "a;k=");
    EXPECT_EQ(model_of("/a;k=;l="), "a;k=;l=");
}

TEST(UriParse, ValuesAreUnescapedUnlessToldOtherwise) {
    EXPECT_EQ(model_of("/a;k=x%2Fy%3Bz"), "a;k=x/y;z");
    EXPECT_EQ(model_of("/a%2F;k%3B=1?b%2F"), "a%2F;k%3B=1?b%2F");
    const Uri raw(oru_do_uri_new_parse_unescape_key("/a;k=x%2Fy%3Bz"));
    EXPECT_EQ(model_of(raw), "a;k=x%2Fy%3Bz");
    const Uri odd(oru_do_uri_new_parse_unescape_key("/a;k=;l=%41;m=%"));
    EXPECT_EQ(model_of(odd), "a;k=;l=%41;m=%");
    EXPECT_EQ(model_of("/a;k=;l=%41;m=%"), "a;k=;l=;m=%");
}

// ---- The record ----

// What a program that was compiled apart takes the records to be.
struct SegmentImage {
    ORUDoNvlist *keys;
    uint16_t start;
    uint16_t end;
    char ref_name[64];
};

struct UriImage {
    char *uri_str;
    char *parent_str;
    ORUDoUri *parent_uri;
    SegmentImage *segments;
    char *query_part;
    int32_t ref_count;
    int32_t num_segments;
    SegmentImage segment_table[10];
    int32_t uri_str_alloc;
    int32_t parent_str_alloc;
    int32_t query_alloc;
};

const UriImage &image_of(const Uri &uri) {
    return *reinterpret_cast<const UriImage *>(uri.get());
}

TEST(UriRecord, FieldsStandInOrder) {
    const std::string query = run_of(128, 'q');
    const std::string text = "//" + run_of(63, 'l') + ";i=1/b?" + query;
    const Uri uri = unparsed(text);
    const UriImage &image = image_of(uri);
    EXPECT_EQ(image.uri_str, text);
    EXPECT_EQ(image.segments, nullptr);
    EXPECT_EQ(image.ref_count, 1);
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 2);
    EXPECT_EQ(image.segments, image.segment_table);
    EXPECT_EQ(image.num_segments, 2);
    EXPECT_EQ(image.parent_str, "//" + run_of(63, 'l') + ";i=1");  // 69
    EXPECT_EQ(image.parent_uri, nullptr);
    EXPECT_EQ(image.query_part, query);
    EXPECT_NE(image.segment_table[0].keys, nullptr);
    EXPECT_EQ(image.segment_table[0].start, 2);
    EXPECT_EQ(image.segment_table[0].end, 68);
    EXPECT_EQ(image.segment_table[0].ref_name, run_of(63, 'l'));
    EXPECT_EQ(image.segment_table[1].keys, nullptr);
    EXPECT_EQ(image.segment_table[1].start, 70);
    EXPECT_EQ(image.segment_table[1].end, 70);
    EXPECT_STREQ(image.segment_table[1].ref_name, "b");
    EXPECT_EQ(image.uri_str_alloc, 2);
    EXPECT_EQ(image.parent_str_alloc, 1);
    EXPECT_EQ(image.query_alloc, 2);
    EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), image.parent_uri);
    EXPECT_NE(image.parent_uri, nullptr);
}

TEST(UriRecord, AFailedParseCountsEleven) {
    const Uri failed = unparsed("/a;k=1/b=c");
    EXPECT_EQ(oru_do_uri_get_segment_count(failed.get()), 0);
    EXPECT_EQ(image_of(failed).num_segments, 11);
    EXPECT_EQ(image_of(failed).segments, image_of(failed).segment_table);
    const Uri empty = unparsed("");
    EXPECT_EQ(oru_do_uri_get_segment_count(empty.get()), 0);
    EXPECT_EQ(image_of(empty).segments, nullptr);
    EXPECT_EQ(image_of(empty).num_segments, 0);
}

TEST(UriParse, OneCharacterBehindASemicolonIsPassedOver) {
    EXPECT_EQ(model_of("/a;b"), "a");
    EXPECT_EQ(model_of("/a;;"), "a");
    EXPECT_EQ(model_of("/a;="), "a");
    EXPECT_EQ(model_of("/a;k=1;x"), "a;k=1");
    EXPECT_EQ(model_of("/a;b/c"), "a|c");
    EXPECT_EQ(oru_do_uri_get_keys(parsed("/a;b").get()), nullptr);
}

TEST(UriParse, TenSegmentsFit) {
    const Uri uri = parsed(segments_of(10));
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 10);
    EXPECT_EQ(model_of(uri), "a|a|a|a|a|a|a|a|a|a");
    EXPECT_EQ(oru_do_uri_get_segment_count(parsed(segments_of(10) + "?bc").get()), 10);
    EXPECT_EQ(oru_do_uri_get_segment_count(parsed(segments_of(10) + "/").get()), 10);
}

TEST(UriParse, ANameOfSixtyThreeCharactersFits) {
    EXPECT_EQ(model_of("/" + run_of(63)), run_of(63));
    EXPECT_EQ(model_of("/" + run_of(63) + ";k=1"), run_of(63) + ";k=1");
}

TEST(UriParse, KeysMayBeLong) {
    const std::string value = run_of(1000, 'v');
    const std::string key = run_of(300, 'k');
    EXPECT_EQ(model_of("/a;" + key + "=" + value), "a;" + key + "=" + value);
}

TEST(UriParse, WrappedOffsetsStayWithinTheText) {
    // The value fills 5 to 65540, so the segment ends at 65540 - 65536 and the next is at 6.
    const Uri uri = parsed("/a;k=" + run_of(65536, 'v') + "/b");
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 2);
    EXPECT_EQ(segment_text(uri, 0), "a;k=");
    EXPECT_EQ(segment_text(uri, 1), "v");
    EXPECT_EQ(parent_of(uri), "/a;k=");
    EXPECT_STREQ(oru_do_uri_segment_get_name(oru_do_uri_get_segment(uri.get(), 1)), "b");
}

TEST(UriParse, ASegmentThatWrapsHasNoText) {
    const Uri uri = parsed("/abcdef;k=" + run_of(65530, 'v'));  // 1 through 65539, which is 3
    EXPECT_EQ(segment_text(uri, 0), "abc");
    const Uri later = parsed("/" + run_of(9) + "/b;k=" + run_of(65521, 'v'));  // 11 through 65535
    EXPECT_EQ(segment_text(later, 1), "b;k=" + run_of(65521, 'v'));
    const Uri none = parsed("/" + run_of(9) + "/b;k=" + run_of(65526, 'v'));  // 11 through 4
    EXPECT_EQ(segment_text(none, 1), "(null)");
    const Uri two = parsed("/" + run_of(9) + "/b;k=" + run_of(65531, 'v'));  // 11 through 9
    EXPECT_EQ(segment_text(two, 1), "(null)");
    const Uri one = parsed("/" + run_of(9) + "/b;k=" + run_of(65532, 'v'));  // 11 through 10
    EXPECT_EQ(segment_text(one, 1), "");
}

// ---- What does not ----

struct Failure {
    std::string text;
    Lines lines;
};

void expect_failures(const std::vector<Failure> &failures) {
    for (const Failure &failure : failures) {
        TraceCapture traces;
        EXPECT_EQ(oru_do_uri_validate_new(failure.text.c_str()), nullptr) << failure.text;
        EXPECT_EQ(traces.at(3), failure.lines);
        for (const Trace &line : traces.lines())
            EXPECT_TRUE(line.level == 3 || line.level == 7) << line;
    }
}

// The words of a failure within a segment, with those behind it.
Failure in_segment(const std::string &text, const std::string &words, int segment) {
    return {text, {words, "Failed to parse uri '" + text + "' segment " + std::to_string(segment)}};
}

TEST(UriParseFailure, EmptyText) {
    expect_failures({{"", {"Invalid empty uri"}}});
}

TEST(UriParseFailure, DoubledSlash) {
    expect_failures({{"///", {"Invalid uri '///'"}},
                     {"////", {"Invalid uri '////'"}},
                     {"///a", {"Invalid uri '///a'"}},
                     {"/a//b", {"Invalid uri '/a//b'"}},
                     {"a//b", {"Invalid uri 'a//b'"}},
                     {"/a///", {"Invalid uri '/a///'"}}});
}

TEST(UriParseFailure, EleventhSegment) {
    const std::string text = segments_of(11);
    expect_failures(
        {{text, {"Insufficient URI MAX segments: '" + text + "'Increase URI_MAX_SEGMENTS 11/10"}}});
}

TEST(UriParseFailure, EleventhSegmentIsSeenBeforeItsFaults) {
    const std::string text = segments_of(10) + "/;";
    expect_failures(
        {{text, {"Insufficient URI MAX segments: '" + text + "'Increase URI_MAX_SEGMENTS 11/10"}}});
}

TEST(UriParseFailure, LongName) {
    const std::string name = run_of(64);
    expect_failures({
        in_segment("/" + name, "Not enough room for ref-name 64 64 '/" + name + "'", 1),
        in_segment("/a/b" + name + ";k=1",
                   "Not enough room for ref-name 64 65 '/a/b" + name + ";k=1'", 2),
    });
}

TEST(UriParseFailure, EmptyName) {
    expect_failures({
        in_segment("/;k=1", "failure - empty ref name 1 4 '/;k=1'", 1),
        in_segment("/a/=b", "failure - empty ref name 3 4 '/a/=b'", 2),
        in_segment(";", "failure - empty ref name 0 0 ';'", 1),
    });
}

TEST(UriParseFailure, EqualSignInAName) {
    expect_failures({
        in_segment("/a=b", "failure - equal sign in refname 1 3 '/a=b'", 1),
        in_segment("/a/b=;k=1", "failure - equal sign in refname 3 8 '/a/b=;k=1'", 2),
    });
}

TEST(UriParseFailure, NothingBehindASemicolon) {
    expect_failures({
        in_segment("/a;", "failure - no keys after semi 1 2 '/a;'", 1),
        in_segment("/a;/b", "failure - no keys after semi 1 2 '/a;/b'", 1),
        in_segment("/a/b;k=1;", "failure - no keys after semi 3 8 '/a/b;k=1;'", 2),
        in_segment("/a;b;", "failure - no keys after semi 1 4 '/a;b;'", 1),
        in_segment("/a;?bc", "failure - no keys after semi 1 2 '/a;?bc'", 1),
    });
}

TEST(UriParseFailure, ExtraSemicolon) {
    expect_failures({
        in_segment("/a;;k=1", "failure - extra ; char 1 6 '/a;;k=1'", 1),
        in_segment("/a;k=1;;l=2", "failure - extra ; char 1 10 '/a;k=1;;l=2'", 1),
    });
}

TEST(UriParseFailure, MisplacedEqualSign) {
    expect_failures({
        in_segment("/a;=1", "failure - misplaced = char 1 4 '/a;=1'", 1),
        in_segment("/a/b;k=1;=2", "failure - misplaced = char 3 10 '/a/b;k=1;=2'", 2),
    });
}

TEST(UriParseFailure, TwoEqualSigns) {
    expect_failures({
        in_segment("/a;k=1=2", "failure - multiple = chars 1 7 '/a;k=1=2'", 1),
        in_segment("/a;k==", "failure - multiple = chars 1 5 '/a;k=='", 1),
    });
}

TEST(UriParseFailure, KeyWithoutAnEqualSign) {
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_validate_new("/a;bc"), nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "parse uri '/a;bc'"},
                                                  {7, "parse segment 1 4 '/a;bc'"},
                                                  {7, "parsed refname 0 a"},
                                                  {7, "parse key 3 -1 4 '/a;bc'"},
                                                  {3, "key name cant be null 3 -1 4 /a;bc"},
                                                  {3, "Failed to parse uri '/a;bc' segment 1"}}));
    expect_failures({
        in_segment("/x/a;bc;k=1", "key name cant be null 5 -1 6 /x/a;bc;k=1", 2),
        in_segment("/a;k=1;bc", "key name cant be null 7 -1 8 /a;k=1;bc", 1),
    });
}

TEST(UriParseFailure, QueryOfLessThanTwoCharacters) {
    for (const char *text : {"/a?b", "/a?", "/a?b/", "/a?/", "a;k=1?b"}) {
        expect_failures(
            {{text, {std::string("Failed to parse uri '") + text + "' query part empty"}}});
    }
}

TEST(UriParseFailure, IsFinalAndSilentAfterwards) {
    for (const char *text : {"/a;k=1/b=;c", "///", "/a;k=1?b", "/a;k=1;;l=2"}) {
        const Uri uri = unparsed(text);
        EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
        TraceCapture traces;
        int32_t rc = 0;
        EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
        EXPECT_EQ(oru_do_uri_get_segment(uri.get(), 0), nullptr);
        EXPECT_EQ(oru_do_uri_get_segment_last(uri.get()), nullptr);
        EXPECT_EQ(oru_do_uri_get_query_part(uri.get()), nullptr);
        EXPECT_EQ(oru_do_uri_has_type_query_part(uri.get()), 0);
        EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), nullptr);
        EXPECT_EQ(oru_do_uri_get_keys(uri.get()), nullptr);
        EXPECT_EQ(oru_do_uri_get_key(uri.get(), 0), nullptr);
        EXPECT_EQ(oru_do_uri_get_key_w_type(uri.get(), 0, ORU_DO_TYPE_INT, &rc), nullptr);
        EXPECT_EQ(rc, 10000);
        EXPECT_EQ(text_of(uri), text);
        EXPECT_TRUE(traces.lines().empty());
    }
}

TEST(UriParseFailure, AnEmptyUriTellsItEachTime) {
    const Uri uri = unparsed("");
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
    EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), nullptr);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Invalid empty uri"}, {3, "Invalid empty uri"}}));
}

TEST(UriParseFailure, EagerParseWithoutUnescapingGivesNull) {
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_new_parse_unescape_key("/a=b"), nullptr);
    EXPECT_EQ(traces.at(3), (Lines{"failure - equal sign in refname 1 3 '/a=b'",
                                   "Failed to parse uri '/a=b' segment 1"}));
}

TEST(UriParseFatal, TheEleventhSegmentEndsTheProcess) {
    const std::string text = segments_of(11);
    const std::string words =
        "Insufficient URI MAX segments: '" + text + "'Increase URI_MAX_SEGMENTS 11/10";
    const Uri uri = unparsed(text);
    EXPECT_FATAL(oru_do_uri_get_segment_count(uri.get()), words);
    EXPECT_FATAL(oru_do_uri_new_parse_unescape_key(text.c_str()), words);
}

TEST(UriParseFatal, ALongNameEndsTheProcess) {
    const std::string text = "/" + run_of(64);
    const std::string words = "Not enough room for ref-name 64 64 " + text;
    const Uri uri = unparsed(text);
    EXPECT_FATAL(oru_do_uri_get_segment_last(uri.get()), words);
    EXPECT_FATAL(oru_do_uri_new_parse_unescape_key(text.c_str()), words);
}

// ---- Memory ----

TEST(UriParseMemory, AKeyWithoutMemoryIsLeftOutAndTheRestParses) {
    sweep_oom(
        [] {
            const Uri uri(oru_do_uri_validate_new("/a;key=value;l=2/b?cd"));
            if (!uri)
                return;
            EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 2);
            EXPECT_STREQ(oru_do_uri_get_query_part(uri.get()), "cd");
            if (!oom_hit()) {
                EXPECT_EQ(model_of(uri), "a;key=value;l=2|b?cd");
            }
        },
        {.promised_deaths = {}, .at_least = 10});
}

TEST(UriParseMemory, WithoutAListTheParseFailsWithoutWordsOfItsOwn) {
    const Uri uri = unparsed("/a;k=1");
    TraceCapture traces;
    poolheap_fail_tag(0x2900013);
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
    poolheap_fail_off();
    EXPECT_EQ(traces.at(3), (Lines{"Failed to parse uri '/a;k=1' segment 1"}));
}

TEST(UriParseMemory, WithoutABufferAKeyIsSkipped) {
    const Uri uri = unparsed("/a;k=1;l=2/b");
    TraceCapture traces;
    poolheap_fail_tag(0x290001a);
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 2);
    poolheap_fail_off();
    EXPECT_TRUE(traces.at(3).empty());
    EXPECT_EQ(model_of(uri), "a|b");
    EXPECT_NE(oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri.get(), 0)), nullptr);
}

TEST(UriParseMemory, LongTextsToo) {
    const std::string parent = "/" + run_of(63) + ";k=" + run_of(300, 'v');
    const std::string text = parent + "/b?" + run_of(200, 'q');
    sweep_oom(
        [&] {
            const Uri uri(oru_do_uri_new_parse_unescape_key(text.c_str()));
            if (uri) {
                EXPECT_EQ(oru_do_uri_get_query_part(uri.get()), run_of(200, 'q'));
            }
        },
        {.promised_deaths = {}, .at_least = 10});
}

}  // namespace
