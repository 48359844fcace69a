// The escaped form of key values.
#include <utility>

#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

const std::pair<char, const char *> kEscapes[] = {
    {' ', "%20"}, {'!', "%21"},  {'#', "%23"}, {'$', "%24"}, {'%', "%25"},
    {'&', "%26"}, {'\'', "%27"}, {'(', "%28"}, {')', "%29"}, {'*', "%2A"},
    {',', "%2C"}, {'/', "%2F"},  {':', "%3A"}, {';', "%3B"}, {'=', "%3D"},
    {'?', "%3F"}, {'@', "%40"},  {'[', "%5B"}, {']', "%5D"}, {'+', "%2B"},
};

std::string escaped(const std::string &text) {
    const Buffer buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_uri_escape_str(text.c_str(), buf.get()), 0);
    return oru_do_strbuf_to_string(buf.get());
}

std::string unescaped(const std::string &text) {
    const Buffer buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_uri_unescape_str(text.c_str(), buf.get()), 0);
    return oru_do_strbuf_to_string(buf.get());
}

const char *escape_of(char c) {
    for (const auto &[character, escape] : kEscapes) {
        if (character == c)
            return escape;
    }
    return nullptr;
}

TEST(UriEscape, TwentyCharactersAreEscapedAndAllOthersStay) {
    for (int c = 1; c < 256; ++c) {
        const std::string text(1, static_cast<char>(c));
        const char *escape = escape_of(text[0]);
        EXPECT_EQ(escaped(text), escape != nullptr ? escape : text) << c;
    }
}

TEST(UriEscape, RunsBetweenAreKept) {
    EXPECT_EQ(escaped("a b"), "a%20b");
    EXPECT_EQ(escaped("/ab//c"), "%2Fab%2F%2Fc");
    EXPECT_EQ(escaped(""), "");
    EXPECT_EQ(escaped("plain-text_1.0~\"<>\\"), "plain-text_1.0~\"<>\\");
    EXPECT_EQ(escaped(std::string(300, ' ')).size(), 900u);
}

TEST(UriEscape, EachEscapeReadsBack) {
    for (const auto &[character, escape] : kEscapes) {
        EXPECT_EQ(unescaped(escape), std::string(1, character));
        EXPECT_EQ(unescaped(std::string("x") + escape + "y"), std::string("x") + character + "y");
    }
}

TEST(UriEscape, OtherPairsVanish) {
    EXPECT_EQ(unescaped("a%2fb"), "ab");
    EXPECT_EQ(unescaped("%41"), "");
    EXPECT_EQ(unescaped("%5b%5d%3f"), "");
    EXPECT_EQ(unescaped("a%zzb"), "ab");
    EXPECT_EQ(unescaped("a%%20b"), "a0b");
    EXPECT_EQ(unescaped("%00%22%2D%5C%FF"), "");
    EXPECT_EQ(unescaped("%20%20"), "  ");
}

TEST(UriEscape, APercentSignAtTheEndStays) {
    EXPECT_EQ(unescaped("a%2Fb"), "a/b");
    EXPECT_EQ(unescaped("a%2"), "a%2");
    EXPECT_EQ(unescaped("a%"), "a%");
    EXPECT_EQ(unescaped("%%"), "%%");
    EXPECT_EQ(unescaped("%25%"), "%%");
    EXPECT_EQ(unescaped(""), "");
}

TEST(UriEscape, CountedTextsEndWithTheirCount) {
    const Buffer buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_uri_escape_str_l("a/b", 2, buf.get()), 0);
    EXPECT_EQ(oru_do_uri_unescape_str_l("%2F%2F", 3, buf.get()), 0);
    EXPECT_EQ(oru_do_uri_unescape_str_l("%2F", 2, buf.get()), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "a%2F/%2");
}

TEST(UriEscape, NoLengthWritesNothing) {
    const Buffer buf(oru_do_strbuf_new());
    for (int32_t len : {0, -1}) {
        EXPECT_EQ(oru_do_uri_escape_str_l("/", len, buf.get()), 0);
        EXPECT_EQ(oru_do_uri_unescape_str_l("/", len, buf.get()), 0);
    }
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "");
}

TEST(UriEscape, AnyTextComesBackWhole) {
    std::string text;
    for (int c = 1; c < 256; ++c)
        text += static_cast<char>(c);
    EXPECT_EQ(unescaped(escaped(text)), text);
    EXPECT_EQ(unescaped(escaped("%2F%")), "%2F%");
}

TEST(UriEscape, AnEscapedValueComesBackThroughAParse) {
    for (const char *text : {"a;b=c/d?e", "%41", "100%", "; ="})
        EXPECT_EQ(model_of("/a;k=" + escaped(text) + "/b"), std::string("a;k=") + text + "|b");
}

TEST(UriEscape, TheResultIsTheBuffersErrorState) {
    const std::string text(1000, '/');
    for (auto operation : {oru_do_uri_escape_str, oru_do_uri_unescape_str}) {
        const Buffer buf(oru_do_strbuf_new());
        poolheap_fail_nth(1, 1);
        EXPECT_EQ(operation(text.c_str(), buf.get()), 10002);
        poolheap_fail_off();
        EXPECT_EQ(operation("a", buf.get()), 10002);
    }
}

TEST(UriEscape, NullIsAsserted) {
    const Buffer buf(oru_do_strbuf_new());
    EXPECT_ASSERTION(oru_do_uri_escape_str(nullptr, buf.get()), "str");
    EXPECT_ASSERTION(oru_do_uri_escape_str_l(nullptr, 1, buf.get()), "str");
    EXPECT_ASSERTION(oru_do_uri_unescape_str(nullptr, buf.get()), "str");
    EXPECT_ASSERTION(oru_do_uri_unescape_str_l(nullptr, 1, buf.get()), "str");
    EXPECT_ASSERTION(oru_do_uri_escape_str("a", nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_uri_escape_str_l("a", 1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_uri_unescape_str("a", nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_uri_unescape_str_l("a", 1, nullptr), "strbuf");
}

}  // namespace
