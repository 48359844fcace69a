// Questions that the text alone answers.
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

int32_t equal(const char *a, const char *b) {
    return oru_do_uri_equals(unparsed(a).get(), unparsed(b).get());
}

int32_t relative_equal(const char *a, const char *b) {
    return oru_do_uri_relative_equals(unparsed(a).get(), unparsed(b).get());
}

TEST(UriCompare, EqualTextsOnly) {
    EXPECT_EQ(equal("/a", "/a"), 1);
    EXPECT_EQ(equal("", ""), 1);
    EXPECT_EQ(equal("/a", "/a/"), 0);
    EXPECT_EQ(equal("/a", "a"), 0);
    EXPECT_EQ(equal("/a;k=%2F", "/a;k=%2f"), 0);
    EXPECT_EQ(equal("/a", "/A"), 0);
}

TEST(UriCompare, NothingIsParsed) {
    TraceCapture traces;
    EXPECT_EQ(equal("///", "///"), 1);
    EXPECT_EQ(relative_equal("///a", "/a"), 1);
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriCompare, LocationsAreCut) {
    const auto cut = [](const char *text) { return shown(oru_do_uri_get_relative_str(text)); };
    EXPECT_EQ(cut("//ab"), "(null)");
    EXPECT_EQ(cut("//a"), "//a");
    EXPECT_EQ(cut("/a"), "/a");
    EXPECT_EQ(cut("//"), "//");
    EXPECT_EQ(cut("///"), "///");
    EXPECT_EQ(cut(""), "");
    EXPECT_EQ(cut("a//b/c"), "a//b/c");
    EXPECT_EQ(cut("//a/"), "/");
    EXPECT_EQ(cut("///a"), "/a");
    EXPECT_EQ(cut("//locations;locationId=1/a/b"), "/a/b");
}

TEST(UriCompare, RelativeFormsAreComparedBehindTheLocation) {
    EXPECT_EQ(relative_equal("//locations;locationId=1/a", "/a"), 1);
    EXPECT_EQ(relative_equal("//locations;locationId=1/a", "//locations;locationId=2/a"), 1);
    EXPECT_EQ(relative_equal("//locations;locationId=1/a", "/b"), 0);
    EXPECT_EQ(relative_equal("/a", "/a"), 1);
    EXPECT_EQ(relative_equal("//ab", "//ab"), 0);
    EXPECT_EQ(relative_equal("//ab", "/a"), 0);
    EXPECT_EQ(relative_equal("/a", "//ab"), 0);
}

TEST(UriCompare, RootIsTwoSlashes) {
    EXPECT_EQ(oru_do_uri_str_is_root("//"), 1);
    for (const char *text : {"", "/", "///", "//a", "a"}) {
        EXPECT_EQ(oru_do_uri_str_is_root(text), 0) << text;
        EXPECT_EQ(oru_do_uri_is_root(unparsed(text).get()), 0) << text;
    }
    EXPECT_EQ(oru_do_uri_is_root(unparsed("//").get()), 1);
    EXPECT_EQ(oru_do_uri_str_is_root(nullptr), 0);
}

TEST(UriCompare, AbsoluteBeginsWithTwoSlashes) {
    for (const char *text : {"//", "//a", "///"}) {
        EXPECT_EQ(oru_do_uri_str_is_absolute(text), 1) << text;
        EXPECT_EQ(oru_do_uri_is_absolute(unparsed(text).get()), 1) << text;
    }
    for (const char *text : {"", "/", "/a", "a//", "a"}) {
        EXPECT_EQ(oru_do_uri_str_is_absolute(text), 0) << text;
        EXPECT_EQ(oru_do_uri_is_absolute(unparsed(text).get()), 0) << text;
    }
    EXPECT_EQ(oru_do_uri_str_is_absolute(nullptr), 0);
}

TEST(UriCompare, InfixDoesNotBeginWithASlash) {
    EXPECT_EQ(oru_do_uri_str_is_infix(""), 1);
    EXPECT_EQ(oru_do_uri_str_is_infix("a/b"), 1);
    EXPECT_EQ(oru_do_uri_str_is_infix("?x"), 1);
    EXPECT_EQ(oru_do_uri_str_is_infix("/"), 0);
    EXPECT_EQ(oru_do_uri_str_is_infix("//a"), 0);
    EXPECT_EQ(oru_do_uri_str_is_infix(nullptr), 0);
}

TEST(UriCompare, NullIsAsserted) {
    const Uri uri = unparsed("/a");
    EXPECT_ASSERTION(oru_do_uri_equals(nullptr, uri.get()), "uri1");
    EXPECT_ASSERTION(oru_do_uri_equals(uri.get(), nullptr), "uri2");
    EXPECT_ASSERTION(oru_do_uri_relative_equals(nullptr, uri.get()), "uri1");
    EXPECT_ASSERTION(oru_do_uri_relative_equals(uri.get(), nullptr), "uri2");
    EXPECT_ASSERTION(oru_do_uri_get_relative_str(nullptr), "uri_str");
    EXPECT_ASSERTION(oru_do_uri_is_root(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_is_absolute(nullptr), "uri");
}

}  // namespace
