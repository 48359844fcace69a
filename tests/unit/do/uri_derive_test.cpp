// Prefixes, concatenations and copies.
#include "oru/uri_derive.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

// "prefix|rest", or "(null)".
std::string descendant(const Uri &uri, int32_t depth) {
    const char *rest = nullptr;
    const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), depth, &rest));
    const Uri again(oru_do_uri_new_from_descendant(uri.get(), depth, nullptr));
    EXPECT_EQ(text_of(again), text_of(prefix));
    return prefix ? text_of(prefix) + '|' + rest : "(null)";
}

TEST(UriDescendant, CutsAParsedUriAtItsSegments) {
    const Uri uri = parsed("/a;k=1/b/c?de");
    EXPECT_EQ(descendant(uri, 0), "|/a;k=1/b/c?de");
    EXPECT_EQ(descendant(uri, 1), "/a;k=1|/b/c?de");
    EXPECT_EQ(descendant(uri, 2), "/a;k=1/b|/c?de");
    EXPECT_EQ(descendant(uri, 3), "/a;k=1/b/c|?de");
    EXPECT_EQ(descendant(uri, 4), "(null)");
    EXPECT_EQ(descendant(uri, INT32_MAX), "(null)");
    EXPECT_EQ(descendant(uri, -1), "(null)");
}

TEST(UriDescendant, TheLocationDoesNotCountInAParsedUri) {
    const Uri uri = parsed("//l;i=1/a/b");
    EXPECT_EQ(descendant(uri, 0), "//l;i=1|/a/b");
    EXPECT_EQ(descendant(uri, 1), "//l;i=1/a|/b");
    EXPECT_EQ(descendant(uri, 2), "//l;i=1/a/b|");
    EXPECT_EQ(descendant(uri, 3), "(null)");
    EXPECT_EQ(descendant(uri, INT32_MAX), "(null)");
    EXPECT_EQ(descendant(parsed("//"), 0), "(null)");
}

TEST(UriDescendant, CutsATextAtItsSlashes) {
    const Uri uri = unparsed("/a;k=1/b/c");
    EXPECT_EQ(descendant(uri, 0), "|/a;k=1/b/c");
    EXPECT_EQ(descendant(uri, 1), "/a;k=1|/b/c");
    EXPECT_EQ(descendant(uri, 2), "/a;k=1/b|/c");
    EXPECT_EQ(descendant(uri, 3), "/a;k=1/b/c|");
    EXPECT_EQ(descendant(uri, 4), "(null)");
    EXPECT_EQ(descendant(uri, -1), "(null)");
    EXPECT_EQ(descendant(unparsed("a/b"), 1), "a|/b");
    EXPECT_EQ(descendant(unparsed("/a/"), 1), "/a|/");
    EXPECT_EQ(descendant(unparsed("/a/"), 2), "/a/|");
    EXPECT_EQ(descendant(unparsed(""), 0), "|");
    EXPECT_EQ(descendant(unparsed(""), 1), "|");
    EXPECT_EQ(descendant(unparsed(""), 2), "(null)");
    EXPECT_EQ(descendant(unparsed("/"), 1), "/|");
}

TEST(UriDescendant, TheLocationCountsInAText) {
    const Uri uri = unparsed("//l;i=1/a/b");
    EXPECT_EQ(descendant(uri, 0), "/|/l;i=1/a/b");
    EXPECT_EQ(descendant(uri, 1), "//l;i=1|/a/b");
    EXPECT_EQ(descendant(uri, 2), "//l;i=1/a|/b");
    EXPECT_EQ(descendant(uri, 3), "//l;i=1/a/b|");
    EXPECT_EQ(descendant(uri, 4), "(null)");
    EXPECT_EQ(descendant(unparsed("//"), 1), "//|");
    EXPECT_EQ(descendant(unparsed("//"), 2), "(null)");
}

TEST(UriDescendant, OfAParsedUriCountsAsParsed) {
    const Uri uri = parsed("/a;k=1/b/c");
    TraceCapture traces;
    const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), 2, nullptr));
    EXPECT_EQ(model_of(prefix), "a;k=1|b");
    EXPECT_EQ(parent_of(prefix), "/a;k=1/b");  // its own text
    const Uri none(oru_do_uri_new_from_descendant(uri.get(), 0, nullptr));
    EXPECT_EQ(model_of(none), "");
    EXPECT_EQ(parent_of(none), "(null)");
    EXPECT_TRUE(traces.lines().empty());
    const Uri later(oru_do_uri_new_from_descendant(unparsed("/a/b").get(), 1, nullptr));
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(model_of(later), "a");
}

TEST(UriDescendant, OfAFailedUriGoesTheTextWay) {
    const Uri uri = unparsed("/a=b/c");
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
    EXPECT_EQ(descendant(uri, 1), "/a=b|/c");
}

TEST(UriDescendant, ParentsLandInTheirClasses) {
    // The prefix is text and parent alike, both cut from another text.
    const auto asked = [](const std::string &first) {
        return classes_asked(
            [&] { return parsed(first + "/b"); },
            [&](const Uri &uri) {
                const Uri made(oru_do_uri_new_from_descendant(uri.get(), 1, nullptr));
            });
    };
    EXPECT_EQ(asked("/" + run_of(61)), "small");
    EXPECT_EQ(asked("/" + run_of(62)), "misc");
    EXPECT_EQ(asked("/" + run_of(10) + ";k=" + run_of(112)), "misc");  // 126
    EXPECT_EQ(asked("/" + run_of(10) + ";k=" + run_of(113)), "heap");  // 127
}

TEST(UriDescendant, ALongParentIsTheWholeTextEndedAtTheCut) {
    const std::string first = "/" + run_of(10) + ";k=" + run_of(113);  // 127
    const Uri uri = parsed(first + "/" + run_of(40));                  // 168
    poolheap_stats_t before{};
    poolheap_tag_stats(kStrdupTag, &before);
    const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), 1, nullptr));
    poolheap_stats_t after{};
    poolheap_tag_stats(kStrdupTag, &after);
    EXPECT_EQ(text_of(prefix), first);
    EXPECT_EQ(after.live_bytes - before.live_bytes, 128u + 169u);
    EXPECT_EQ(parent_of(prefix), first);
}

TEST(UriMerge, WritesWhatItIsGiven) {
    const Uri uri = unparsed("/a");
    const auto merged = [&](const char *prefix, int32_t length, const char *suffix) {
        return text_of(Uri(oru_do_uri_new_from_merge(uri.get(), prefix, length, suffix)));
    };
    EXPECT_EQ(merged(nullptr, 0, nullptr), "/a");
    EXPECT_EQ(merged("/x/y", 0, nullptr), "/x/y/a");
    EXPECT_EQ(merged("/x/y", 2, nullptr), "/x/a");
    EXPECT_EQ(merged("/x/y", 99, "/z"), "/x/y/a/z");
    EXPECT_EQ(merged("/x", -1, "z"), "/az");
    EXPECT_EQ(merged(nullptr, 5, "?cd"), "/a?cd");
    EXPECT_EQ(merged("", 0, ""), "/a");
}

TEST(UriMerge, IsNotParsed) {
    const Uri uri = parsed("/a");
    TraceCapture traces;
    const Uri merged(oru_do_uri_new_from_merge(uri.get(), "/x", 0, "/y"));
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(model_of(merged), "x|a|y");
}

TEST(UriClone, KeepsTheTextOnly) {
    const Uri clone(oru_do_uri_clone(unparsed("///").get()));
    EXPECT_EQ(text_of(clone), "///");
    const Uri failed = unparsed("/a=b");
    EXPECT_EQ(oru_do_uri_get_segment_count(failed.get()), 0);
    const Uri of_failed(oru_do_uri_clone(failed.get()));
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_get_segment_count(of_failed.get()), 0);
    EXPECT_EQ(traces.at(3).size(), 2u);  // it is parsed anew
}

TEST(UriClone, OfAParsedUriCountsAsParsed) {
    for (const std::string &query : {std::string(), run_of(10), run_of(100), run_of(200)}) {
        const std::string text =
            "/" + run_of(63) + ";k=1/b;l=2/c" + (query.empty() ? "" : "?" + query);
        const Uri uri = parsed(text);
        TraceCapture traces;
        const Uri clone(oru_do_uri_clone(uri.get()));
        EXPECT_EQ(oru_do_uri_equals(clone.get(), uri.get()), 1);
        EXPECT_EQ(model_of(clone), model_of(uri));
        EXPECT_EQ(parent_of(clone), parent_of(uri));
        EXPECT_NE(oru_do_uri_get_parent_uri(clone.get()), oru_do_uri_get_parent_uri(uri.get()));
        EXPECT_TRUE(traces.lines().empty());
    }
}

TEST(UriClone, SharesTheKeyListsBeyondTheLifeOfItsSource) {
    Uri uri = parsed("/a;k=1");
    const Uri clone(oru_do_uri_clone(uri.get()));
    EXPECT_EQ(oru_do_uri_get_keys(clone.get()), oru_do_uri_get_keys(uri.get()));
    uri.reset();
    EXPECT_EQ(model_of(clone), "a;k=1");
}

TEST(UriDerive, MemoryMayRunOut) {
    const Uri uri = parsed("/a;k=1/b/" + run_of(60) + "?" + run_of(70));
    const Uri text = unparsed("/a/b");
    sweep_oom(
        [&] {
            const Uri clone(oru_do_uri_clone(uri.get()));
            EXPECT_TRUE(clone != nullptr || oom_hit());
            if (clone) {
                EXPECT_EQ(model_of(clone), model_of(uri));
            }
            const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), 3, nullptr));
            if (prefix) {
                EXPECT_EQ(model_of(prefix), "a;k=1|b|" + run_of(60));
            }
            const Uri cut(oru_do_uri_new_from_descendant(text.get(), 1, nullptr));
            const Uri merged(oru_do_uri_new_from_merge(uri.get(), "/x", 0, run_of(300).c_str()));
            EXPECT_TRUE((prefix && cut && merged) || oom_hit());
        },
        {.promised_deaths = {}, .at_least = 14});
}

// Texts of the heap too: the prefix, its parent's text, the parent of a clone.
TEST(UriDerive, MemoryMayRunOutForLongTexts) {
    const std::string first = "/" + run_of(10) + ";k=" + run_of(300);
    const Uri uri = parsed(first + "/b?" + run_of(300));
    sweep_oom(
        [&] {
            const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), 1, nullptr));
            EXPECT_EQ(prefix == nullptr, oom_hit());
            if (prefix) {
                EXPECT_EQ(text_of(prefix), first);
            }
        },
        {.promised_deaths = {}, .at_least = 3});
    sweep_oom(
        [&] {
            const Uri clone(oru_do_uri_clone(uri.get()));
            EXPECT_EQ(clone == nullptr, oom_hit());
            if (clone) {
                EXPECT_EQ(model_of(clone), model_of(uri));
            }
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST(UriDerive, NullIsAsserted) {
    const char *rest = nullptr;
    EXPECT_ASSERTION(oru_do_uri_new_from_descendant(nullptr, 1, &rest), "uri");
    EXPECT_ASSERTION(oru_do_uri_new_from_merge(nullptr, "a", 0, "b"), "base_uri");
    EXPECT_ASSERTION(oru_do_uri_clone(nullptr), "uri");
}

}  // namespace
