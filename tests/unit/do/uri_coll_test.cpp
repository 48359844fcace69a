// Collections and their members.
#include "oru/uri_derive.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

Keys key(const char *name, const char *text) {
    const Value value(oru_do_value_new_string(text));
    return Keys(oru_do_nvlist_new_from_item(name, value.get()));
}

// The member by every operation that makes it without keys.
std::string member(const Uri &coll) {
    const std::string text = text_of(Uri(oru_do_uri_new_from_coll_uri(coll.get(), nullptr)));
    const OwnText own(oru_do_uri_get_child_from_coll_uri(coll.get()));
    EXPECT_EQ(shown(own.get()), text);
    EXPECT_EQ(text_of(Uri(oru_do_uri_get_child_uri_from_coll_uri(coll.get()))), text);
    const Keys none(oru_do_nvlist_new());
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri(coll.get(), none.get()))), text);
    return text;
}

std::string member_of_text(const char *coll) {
    const std::string text = member(unparsed(coll));
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri_str(coll, nullptr))), text);
    return text;
}

// ---- Members ----

TEST(UriColl, MembersOfTexts) {
    EXPECT_EQ(member_of_text("/ab?c"), "/ab/c");
    EXPECT_EQ(member_of_text("/a?c"), "//c");
    EXPECT_EQ(member_of_text("/a?b"), "//b");
    EXPECT_EQ(member_of_text("a?c"), "/c");
    EXPECT_EQ(member_of_text("a?b"), "/b");
    EXPECT_EQ(member_of_text("?c"), "/c");
    EXPECT_EQ(member_of_text("/?x"), "/x");
    EXPECT_EQ(member_of_text("//?x"), "//x");
    EXPECT_EQ(member_of_text("/ab"), "(null)");
    EXPECT_EQ(member_of_text(""), "(null)");
    EXPECT_EQ(member_of_text("/ab?c?d"), "/ab?c/d");
    EXPECT_EQ(member_of_text("/ab?"), "/ab/");
}

TEST(UriColl, MembersOfParsedCollections) {
    EXPECT_EQ(member(parsed("/a?bc")), "/a/bc");
    EXPECT_EQ(member(parsed("/a/b;k=1?cd")), "/a/b;k=1/cd");
    EXPECT_EQ(member(parsed("//a?bc")), "//a/bc");
    EXPECT_EQ(member(parsed("a?bc")), "a/bc");
    EXPECT_EQ(member(parsed("/a?b?c")), "/a/b?c");
    EXPECT_EQ(member(parsed("/a/?b?cd")), "/a/?b/cd");
    EXPECT_EQ(member(parsed("/a")), "(null)");
    EXPECT_EQ(member(parsed("//")), "(null)");
    EXPECT_EQ(member(parsed("/?b")), "(null)");  // a segment "?b"
}

TEST(UriColl, AFailedCollectionGoesTheTextWay) {
    const Uri coll = unparsed("/a//b?cd");
    EXPECT_EQ(oru_do_uri_get_segment_count(coll.get()), 0);
    EXPECT_EQ(member(coll), "/a//b/cd");
    const Uri one = unparsed("/a?b");
    EXPECT_EQ(oru_do_uri_get_segment_count(one.get()), 0);
    EXPECT_EQ(member(one), "//b");
}

TEST(UriColl, KeysStandBehindTheMember) {
    const Keys keys = key("k", "x/y");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri(unparsed("/ab?c").get(), keys.get()))),
              "/ab/c;k=x%2Fy");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri_str("/ab?c", keys.get()))), "/ab/c;k=x%2Fy");
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri_str("/ab", keys.get()))), "(null)");
}

TEST(UriColl, AStringThatCannotBeReadGivesNoMember) {
    poolheap_fail_nth(2, 0);
    const Value value(oru_do_value_new_string("x"));
    poolheap_fail_off();
    ASSERT_NE(value, nullptr);
    const Keys keys(oru_do_nvlist_new_from_item("k", value.get()));
    EXPECT_EQ(oru_do_uri_new_from_coll_uri(unparsed("/ab?cd").get(), keys.get()), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_coll_uri(parsed("/ab?cd").get(), keys.get()), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_coll_uri_str("/ab?cd", keys.get()), nullptr);
}

TEST(UriColl, KeysThatAreNoStringsAreCollectedInEscapedForm) {
    const Uri link = unparsed("/x");
    const Value value(oru_do_value_new_mr_uri(link.get()));
    const Keys keys(oru_do_nvlist_new_from_item("k k", value.get()));
    const Uri uri(oru_do_uri_new_from_coll_uri(parsed("/a?bc").get(), keys.get()));
    EXPECT_EQ(text_of(uri), "/a/bc;k k=%2Fx");
    EXPECT_EQ(model_of(uri), "a|bc;k k=%2Fx");
    const Uri by_text(oru_do_uri_new_from_coll_uri(unparsed("/aa?bc").get(), keys.get()));
    EXPECT_EQ(model_of(by_text), "aa|bc;k k=/x");
}

TEST(UriColl, AMemberOfAParsedCollectionCountsAsParsed) {
    const Uri coll = parsed("/a;i=1?bc");
    const Keys keys = key("k", "x/y");
    const Uri uri(oru_do_uri_new_from_coll_uri(coll.get(), keys.get()));
    TraceCapture traces;
    EXPECT_EQ(text_of(uri), "/a;i=1/bc;k=x%2Fy");
    EXPECT_EQ(model_of(uri), "a;i=1|bc;k=x/y");
    EXPECT_EQ(segment_text(uri, 0), "a;i=1");
    EXPECT_EQ(segment_text(uri, 1), "bc;k=x%2Fy");
    EXPECT_EQ(parent_of(uri), "/a;i=1");
    EXPECT_TRUE(traces.lines().empty());
    const Uri bare(oru_do_uri_new_from_coll_uri(coll.get(), nullptr));
    EXPECT_EQ(model_of(bare), "a;i=1|bc");
    EXPECT_EQ(segment_text(bare, 1), "bc");
    EXPECT_EQ(oru_do_uri_get_keys(bare.get()), nullptr);
}

TEST(UriColl, AMembersOffsetsAreThoseOfAParse) {
    const Keys keys = key("k", "1");
    for (ORUDoNvlist *list : {keys.get(), static_cast<ORUDoNvlist *>(nullptr)}) {
        const Uri uri(oru_do_uri_new_from_coll_uri(parsed("/a?bc").get(), list));
        const std::string own = list != nullptr ? "bc;k=1" : "bc";
        const Keys none(oru_do_nvlist_new());
        const Uri below(oru_do_uri_new_from_parent_uri(uri.get(), name("d").get(), none.get()));
        EXPECT_EQ(segment_text(below, 1), own);
        EXPECT_EQ(segment_text(below, 2), "d");
        const char *rest = nullptr;
        const Uri prefix(oru_do_uri_new_from_descendant(below.get(), 2, &rest));
        EXPECT_EQ(text_of(prefix), "/a/" + own);
        EXPECT_STREQ(rest, "/d");
    }
}

TEST(UriColl, NineSegmentsTakeAMemberAndTenDoNot) {
    const Uri nine = parsed(segments_of(9) + "?bc");
    EXPECT_EQ(
        oru_do_uri_get_segment_count(Uri(oru_do_uri_new_from_coll_uri(nine.get(), nullptr)).get()),
        10);
    const std::string text = segments_of(10) + "?bc";
    const Uri ten = parsed(text);
    const std::string words =
        "Insufficient URI MAX segments: '" + text + "'Increase URI_MAX_SEGMENTS 10/10";
    EXPECT_FATAL(oru_do_uri_new_from_coll_uri(ten.get(), nullptr), words);
    EXPECT_FATAL(oru_do_uri_get_child_from_coll_uri(ten.get()), words);
    EXPECT_FATAL(oru_do_uri_get_child_uri_from_coll_uri(ten.get()), words);
}

TEST(UriColl, ALongQueryIsNoReferenceName) {
    const std::string query = run_of(64, 'q');
    const Uri coll = parsed("/a?" + query);
    const Keys keys = key("k", "1");
    const std::string words = "Not enough room for ref name 64 64 " + query;
    EXPECT_FATAL(oru_do_uri_new_from_coll_uri(coll.get(), keys.get()), words);
    EXPECT_FATAL(oru_do_uri_new_from_coll_uri(coll.get(), nullptr), words);
    const OwnText own(oru_do_uri_get_child_from_coll_uri(coll.get()));
    EXPECT_EQ(shown(own.get()), "/a/" + query);
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri(unparsed("/ab?" + query).get(), nullptr))),
              "/ab/" + query);
    const Uri longest(oru_do_uri_new_from_coll_uri(parsed("/a?" + run_of(63, 'q')).get(), nullptr));
    EXPECT_EQ(model_of(longest), "a|" + run_of(63, 'q'));
}

TEST(UriColl, AMemberOfAChildsCollection) {
    // The child's own segment ends one further than a parse tells.
    const Keys none(oru_do_nvlist_new());
    const Uri child(
        oru_do_uri_new_from_parent_uri(parsed("/a").get(), name("b").get(), none.get()));
    const Uri coll(oru_do_uri_new_coll(child.get(), "cd"));
    EXPECT_EQ(text_of(coll), "/a/b?cd");
    EXPECT_EQ(member(coll), "/a/b/cd");
    const Uri again(oru_do_uri_new_coll(child.get(), "b"));
    EXPECT_EQ(member(again), "/a/b/b");
}

TEST(UriColl, NullCollections) {
    EXPECT_EQ(oru_do_uri_new_from_coll_uri(nullptr, nullptr), nullptr);
    EXPECT_ASSERTION(oru_do_uri_new_from_coll_uri_str(nullptr, nullptr), "uri_str");
    EXPECT_ASSERTION(oru_do_uri_get_child_uri_from_coll_uri(nullptr), "coll_uri");
    EXPECT_ASSERTION(oru_do_uri_get_child_from_coll_uri(nullptr), "coll_uri");
}

// ---- Collections ----

std::string coll(const Uri &uri, const char *ref) {
    return text_of(Uri(oru_do_uri_new_coll(uri.get(), ref)));
}

TEST(UriColl, ACollectionUnderAUri) {
    for (const auto &uri : {unparsed("/a/b"), parsed("/a/b")})
        EXPECT_EQ(coll(uri, "c"), "/a/b?c");
    EXPECT_EQ(coll(unparsed("a"), "c"), "a?c");
    EXPECT_EQ(coll(unparsed(""), ""), "?");
}

TEST(UriColl, TheCollectionOfTheLastSegment) {
    EXPECT_EQ(coll(unparsed("/a/b"), nullptr), "/a?b");
    EXPECT_EQ(coll(unparsed("/b"), nullptr), "/?b");
    EXPECT_EQ(coll(unparsed("a/b"), nullptr), "a?b");
    EXPECT_EQ(coll(unparsed("//b"), nullptr), "/?b");
    EXPECT_EQ(coll(unparsed("/a/"), nullptr), "(null)");
    EXPECT_EQ(coll(unparsed("a"), nullptr), "(null)");
    EXPECT_EQ(coll(unparsed("/"), nullptr), "(null)");
    EXPECT_EQ(coll(unparsed("//"), nullptr), "(null)");
    EXPECT_EQ(coll(unparsed(""), nullptr), "(null)");
    EXPECT_EQ(coll(parsed("/a/"), nullptr), "(null)");
}

TEST(UriColl, ACollectionOfAParsedUriCountsAsParsed) {
    const Uri uri = parsed("/a;k=1/b");
    TraceCapture traces;
    const Uri under(oru_do_uri_new_coll(uri.get(), "c"));
    EXPECT_EQ(model_of(under), "a;k=1|b?c");
    EXPECT_EQ(parent_of(under), "/a;k=1/b");
    const Uri last(oru_do_uri_new_coll(uri.get(), nullptr));
    EXPECT_EQ(text_of(last), "/a;k=1?b");
    EXPECT_EQ(model_of(last), "a;k=1?b");
    EXPECT_EQ(parent_of(last), "/a;k=1");
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriColl, ThePathAtTheRootKeepsItsQuery) {
    const Uri last(oru_do_uri_new_coll(parsed("/b").get(), nullptr));
    EXPECT_EQ(text_of(last), "/?b");
    EXPECT_EQ(model_of(last), "?b");
    EXPECT_EQ(oru_do_uri_get_segment_count(last.get()), 0);
    EXPECT_STREQ(oru_do_uri_get_query_part(last.get()), "b");
    EXPECT_EQ(oru_do_uri_get_parent_uri(last.get()), nullptr);
    EXPECT_EQ(oru_do_uri_is_coll_uri(last.get()), 1);
    EXPECT_EQ(member(last), "(null)");  // without segments there is no base
}

TEST(UriColl, ACollectionOfAFailedUriIsItsTextOnly) {
    const Uri failed = unparsed("/a=b/c");
    EXPECT_EQ(oru_do_uri_get_segment_count(failed.get()), 0);
    TraceCapture traces;
    const Uri under(oru_do_uri_new_coll(failed.get(), "de"));
    const Uri last(oru_do_uri_new_coll(failed.get(), nullptr));
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(text_of(under), "/a=b/c?de");
    EXPECT_EQ(text_of(last), "/a=b?c");
    EXPECT_EQ(oru_do_uri_get_query_part(under.get()), nullptr);
    EXPECT_TRUE(traces.has(3, "failure - equal sign in refname 1 3 '/a=b/c?de'"));
}

TEST(UriColl, ThereAndBack) {
    const Uri there(oru_do_uri_new_coll(parsed("/a/b").get(), nullptr));
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri(there.get(), nullptr))), "/a/b");
    const Uri text_way(oru_do_uri_new_coll(unparsed("/a/b").get(), nullptr));
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_from_coll_uri(text_way.get(), nullptr))), "//b");
}

TEST(UriColl, QueriesLandInTheirClasses) {
    const auto asked = [](size_t length) {
        const std::string ref = run_of(length);
        return classes_asked(
            [] { return parsed("/"); },
            [&](const Uri &uri) { const Uri made(oru_do_uri_new_coll(uri.get(), ref.c_str())); });
    };
    EXPECT_EQ(asked(60), "small");       // the text has 62
    EXPECT_EQ(asked(63), "small misc");  // the text has 65
    EXPECT_EQ(asked(64), "misc");
    EXPECT_EQ(asked(124), "misc");
    EXPECT_EQ(asked(127), "misc heap");
    EXPECT_EQ(asked(128), "heap");
}

// ---- Wildcards ----

std::string wildcard(const Uri &uri, const char *ref, const char *type) {
    return text_of(Uri(oru_do_uri_new_coll_wildcard(uri.get(), ref, type)));
}

TEST(UriColl, Wildcards) {
    const Uri none;
    EXPECT_EQ(wildcard(none, nullptr, "T"), "//?:T");
    EXPECT_EQ(oru_do_uri_get_coll_type(unparsed("//?:T").get()), 2);
    EXPECT_EQ(wildcard(unparsed("/a"), "b", "T"), "/a?b:T");
    EXPECT_EQ(wildcard(unparsed("/a"), "", "T"), "/a?:T");
    EXPECT_EQ(wildcard(none, "b", "T"), "/?b:T");
    EXPECT_EQ(wildcard(none, "", "T"), "/?:T");
    EXPECT_EQ(wildcard(unparsed("a*"), "", ""), "a*?:");
}

TEST(UriColl, BuffersThatCannotBeHadAreTraced) {
    const Uri uri = unparsed("/ab?c");
    const Uri plain = unparsed("/ab");
    TraceCapture traces;
    poolheap_fail_tag(0x290001a);
    EXPECT_EQ(oru_do_uri_new_coll_wildcard(nullptr, nullptr, "T"), nullptr);
    EXPECT_EQ(oru_do_uri_new_coll(plain.get(), "c"), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_coll_uri_str("/ab?c", nullptr), nullptr);
    EXPECT_EQ(oru_do_uri_get_child_from_coll_uri(uri.get()), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_coll_uri(uri.get(), nullptr), nullptr);
    EXPECT_EQ(oru_do_uri_get_child_uri_from_coll_uri(uri.get()), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to allocate strbuf\n"},
                                                  {3, "Failed to allocate strbuf.\n"},
                                                  {3, "Failed to allocate strbuf.\n"},
                                                  {3, "Failed to allocate strbuf.\n"},
                                                  {3, "Failed to allocate strbuf.\n"},
                                                  {3, "Failed to allocate strbuf.\n"}}));
}

// ---- Kinds ----

int32_t kind(const char *text) {
    return oru_do_uri_get_coll_type(unparsed(text).get());
}

TEST(UriColl, KindsByTheFormOfTheText) {
    for (const char *text : {"", "a", "/", "/?", "?b", ":?"})
        EXPECT_EQ(kind(text), 1) << text;
    for (const char *text : {"//?:T", "//?:", "//?:a:b"})
        EXPECT_EQ(kind(text), 2) << text;
    for (const char *text : {"/ab", "/ab?", "//?", "/a/b:c"})
        EXPECT_EQ(kind(text), 0) << text;
    for (const char *text : {"/a?b", "a?b", "/a?bcd", "/a?b?c", "//?b", "/a:b?c"})
        EXPECT_EQ(kind(text), 1) << text;
    for (const char *text : {"/a?b:T", "a?b:T", "/a?b:c:T", "base?:b:T", "/a?b:", "?b:T", "/?::"})
        EXPECT_EQ(kind(text), 3) << text;
    for (const char *text : {"/base?:T", "/?:T", "/b?:", "/b*c?:T"})
        EXPECT_EQ(kind(text), 4) << text;
    for (const char *text : {"base?:T", "*b?:T"})
        EXPECT_EQ(kind(text), 5) << text;
    for (const char *text : {"/base*?:T", "/*?:T", "//*?:T"})
        EXPECT_EQ(kind(text), 6) << text;
    for (const char *text : {"base*?:T", "*?:T"})
        EXPECT_EQ(kind(text), 7) << text;
}

TEST(UriColl, ATypeWithoutABaseIsTraced) {
    TraceCapture traces;
    EXPECT_EQ(kind("?:type"), 0);
    EXPECT_EQ(
        traces.lines(),
        (std::vector<Trace>{{3, "Error in oru_do_uri_get_coll_type, URI base is of length 0\n"}}));
}

TEST(UriColl, CollectionsHaveAQuery) {
    EXPECT_EQ(oru_do_uri_is_coll_uri(unparsed("/a?b").get()), 1);
    EXPECT_EQ(oru_do_uri_is_coll_uri(unparsed("/a").get()), 0);
    EXPECT_EQ(oru_do_uri_is_coll_uri(unparsed("/?b").get()), 1);
    EXPECT_EQ(oru_do_uri_is_coll_uri(parsed("/?b").get()), 0);  // a segment "?b"
    EXPECT_EQ(oru_do_uri_is_coll_uri(parsed("/a?bc").get()), 1);
    EXPECT_EQ(oru_do_uri_is_coll_uri(parsed("/a").get()), 0);
    const Uri failed = unparsed("/a?b");
    EXPECT_EQ(oru_do_uri_get_segment_count(failed.get()), 0);
    EXPECT_EQ(oru_do_uri_is_coll_uri(failed.get()), 1);
    TraceCapture traces;
    oru_do_uri_is_coll_uri(unparsed("///?").get());
    EXPECT_TRUE(traces.lines().empty());
}

// ---- Memory and null ----

TEST(UriColl, MemoryMayRunOut) {
    sweep_oom(
        [] {
            const Uri uri(oru_do_uri_validate_new("/a;k=1/b"));
            const Value value(oru_do_value_new_string("x"));
            const Keys keys(oru_do_nvlist_new());
            if (!uri || !keys || oru_do_nvlist_add(keys.get(), "l", value.get()) < 1)
                return;
            const Uri under(oru_do_uri_new_coll(uri.get(), "c"));
            const Uri last(oru_do_uri_new_coll(uri.get(), nullptr));
            const Uri wild(oru_do_uri_new_coll_wildcard(uri.get(), "c", "T"));
            if (!under)
                return;
            EXPECT_STREQ(oru_do_uri_get_query_part(under.get()), "c");
            const Uri member(oru_do_uri_new_from_coll_uri(under.get(), keys.get()));
            if (member) {
                EXPECT_EQ(text_of(member), "/a;k=1/b/c;l=x");
                EXPECT_EQ(oru_do_uri_get_segment_count(member.get()), 3);
            }
            const Uri by_text(oru_do_uri_new_from_coll_uri_str("/ab?c", keys.get()));
            if (by_text) {
                EXPECT_EQ(text_of(by_text), "/ab/c;l=x");
            }
            const OwnText own(oru_do_uri_get_child_from_coll_uri(under.get()));
        },
        {.promised_deaths = {}, .at_least = 20});
}

TEST(UriColl, NullIsAsserted) {
    const Uri uri = unparsed("/a");
    EXPECT_ASSERTION(oru_do_uri_new_coll(nullptr, "c"), "uri");
    EXPECT_ASSERTION(oru_do_uri_new_coll_wildcard(uri.get(), "c", nullptr), "type");
    EXPECT_ASSERTION(oru_do_uri_new_coll_wildcard(uri.get(), nullptr, "T"), "ref");
    EXPECT_ASSERTION(oru_do_uri_get_coll_type(nullptr), "coll_uri");
    EXPECT_ASSERTION(oru_do_uri_is_coll_uri(nullptr), "uri");
}

}  // namespace
