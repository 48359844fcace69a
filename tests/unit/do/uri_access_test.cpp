// Segments, keys and parents, read from a URI.
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

int64_t int_of(const Value &value) {
    int32_t rc = 0;
    return value ? oru_do_value_get_int(value.get(), &rc) : -1;
}

TEST(UriAccess, SegmentsAreCountedFromZero) {
    const Uri uri = parsed("/a/b;k=1/c");
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 3);
    EXPECT_STREQ(oru_do_uri_segment_get_name(oru_do_uri_get_segment(uri.get(), 0)), "a");
    EXPECT_STREQ(oru_do_uri_segment_get_name(oru_do_uri_get_segment(uri.get(), 2)), "c");
    EXPECT_EQ(oru_do_uri_get_segment_last(uri.get()), oru_do_uri_get_segment(uri.get(), 2));
    EXPECT_EQ(oru_do_uri_get_segment(uri.get(), 3), nullptr);
    EXPECT_EQ(oru_do_uri_get_segment(uri.get(), -1), nullptr);
}

TEST(UriAccess, KeysOfASegment) {
    const Uri uri = parsed("/a/b;k=1;l=2");
    EXPECT_EQ(oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri.get(), 0)), nullptr);
    ORUDoNvlist *keys = oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri.get(), 1));
    EXPECT_EQ(keys_of(keys), ";k=1;l=2");
    EXPECT_EQ(oru_do_uri_get_keys(uri.get()), keys);
    EXPECT_EQ(key_text(oru_do_uri_get_key(uri.get(), 1)), "2");
    EXPECT_EQ(oru_do_uri_get_key(uri.get(), 2), nullptr);
    EXPECT_EQ(oru_do_uri_get_key(uri.get(), -1), nullptr);
    EXPECT_EQ(oru_do_uri_get_keys(parsed("/a;k=1/b").get()), nullptr);
    EXPECT_EQ(oru_do_uri_get_key(parsed("/a;k=1/b").get(), 0), nullptr);
}

TEST(UriAccess, SegmentTextsAreCopied) {
    const Uri uri = parsed("//a;k=1/b?cd");
    EXPECT_EQ(segment_text(uri, 0), "a;k=1");
    EXPECT_EQ(segment_text(uri, 1), "b");
}

TEST(UriAccess, ASegmentTextThatCannotBeHadIsTraced) {
    const Uri uri = parsed("/a");
    TraceCapture traces;
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_uri_segment_get_str_copy(uri.get(), oru_do_uri_get_segment(uri.get(), 0)),
              nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "failed to alloc str for segment string"}}));
}

TEST(UriAccess, KeysAsTypedValues) {
    const Uri uri = parsed("/a;k=1;n=x;k=2");
    ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0);
    int32_t rc = -1;
    EXPECT_EQ(int_of(Value(oru_do_uri_segment_get_key_w_type(segment, 2, ORU_DO_TYPE_INT, &rc))),
              2);
    EXPECT_EQ(rc, 0);
    rc = -1;
    EXPECT_EQ(int_of(Value(oru_do_uri_get_key_w_type(uri.get(), 0, ORU_DO_TYPE_INT, &rc))), 1);
    EXPECT_EQ(rc, 0);
    rc = -1;
    const Value named(oru_do_uri_get_key_by_name_w_type(uri.get(), "k", ORU_DO_TYPE_INT, &rc));
    EXPECT_EQ(int_of(named), 1);
    EXPECT_EQ(rc, 0);
}

TEST(UriAccess, AKeyOfAnotherTypeGivesTheCodeOfTheConversion) {
    const Uri uri = parsed("/a;n=x");
    ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0);
    int32_t rc = 0;
    EXPECT_EQ(oru_do_uri_segment_get_key_w_type(segment, 0, ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
    rc = 0;
    EXPECT_EQ(oru_do_uri_get_key_w_type(uri.get(), 0, ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
    rc = 0;
    EXPECT_EQ(oru_do_uri_get_key_by_name_w_type(uri.get(), "n", ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
}

// Lists are lent, and who holds one may add to it.
TEST(UriAccess, AKeyThatIsNoStringHasNoTypedForm) {
    const Uri uri = parsed("/a;k=1");
    oru_do_nvlist_add_int(oru_do_uri_get_keys(uri.get()), "n", 7);
    ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0);
    int32_t rc = 0;
    EXPECT_EQ(oru_do_uri_segment_get_key_w_type(segment, 1, ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
    rc = 0;
    EXPECT_EQ(oru_do_uri_get_key_w_type(uri.get(), 1, ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
    rc = 0;
    EXPECT_EQ(oru_do_uri_get_key_by_name_w_type(uri.get(), "n", ORU_DO_TYPE_INT, &rc), nullptr);
    EXPECT_EQ(rc, 101);
}

TEST(UriAccess, AKeyThatIsNotThereIsAGeneralError) {
    for (const char *text : {"/a;k=1", "/a", "//", "///"}) {
        const Uri uri = unparsed(text);
        for (int32_t index : {-1, 1}) {
            int32_t rc = 0;
            EXPECT_EQ(oru_do_uri_get_key_w_type(uri.get(), index, ORU_DO_TYPE_INT, &rc), nullptr);
            EXPECT_EQ(rc, 10000);
            rc = 0;
            if (ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0)) {
                EXPECT_EQ(oru_do_uri_segment_get_key_w_type(segment, index, ORU_DO_TYPE_INT, &rc),
                          nullptr);
                EXPECT_EQ(rc, 10000);
            }
        }
        int32_t rc = 0;
        EXPECT_EQ(oru_do_uri_get_key_by_name_w_type(uri.get(), "x", ORU_DO_TYPE_INT, &rc), nullptr);
        EXPECT_EQ(rc, 10000);
    }
}

TEST(UriAccess, TypeQueriesBeginWithAColon) {
    EXPECT_EQ(oru_do_uri_has_type_query_part(parsed("/a?:T").get()), 1);
    EXPECT_EQ(oru_do_uri_has_type_query_part(parsed("/a?b:T").get()), 0);
    EXPECT_EQ(oru_do_uri_has_type_query_part(parsed("/a").get()), 0);
    EXPECT_EQ(oru_do_uri_has_type_query_part(unparsed("//?:T").get()), 0);  // a segment "?:T"
}

TEST(UriAccess, AParentIsMadeOnceAndLivesWithItsChild) {
    const Uri uri = unparsed("/a;k=1/b");
    ORUDoUri *parent = oru_do_uri_get_parent_uri(uri.get());
    EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), parent);
    EXPECT_STREQ(oru_do_uri_get_uri_str(parent), "/a;k=1");
    EXPECT_EQ(model_of(parent), "a;k=1");
    EXPECT_EQ(oru_do_uri_get_keys(parent),
              oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri.get(), 0)));
}

TEST(UriAccess, AMadeParentCountsAsParsed) {
    const Uri uri = parsed("/a/b/c");
    TraceCapture traces;
    EXPECT_EQ(model_of(oru_do_uri_get_parent_uri(uri.get())), "a|b");
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriAccess, TheSecondStepUpIsTheChildWithOneSegmentLess) {
    const Uri uri = parsed("/a/b/c");
    ORUDoUri *parent = oru_do_uri_get_parent_uri(uri.get());
    EXPECT_EQ(parent_of(parent), "/a/b/c");
    EXPECT_EQ(model_of(oru_do_uri_get_parent_uri(parent)), "a");
}

TEST(UriAccess, TheParentOfTheRootCountsMinusOne) {
    for (const char *text : {"//", "/"}) {
        const Uri root = parsed(text);
        ORUDoUri *parent = oru_do_uri_get_parent_uri(root.get());
        ASSERT_NE(parent, nullptr);
        EXPECT_STREQ(oru_do_uri_get_uri_str(parent), "//");
        EXPECT_EQ(oru_do_uri_get_segment_count(parent), -1);
        EXPECT_EQ(oru_do_uri_get_segment(parent, 0), nullptr);
        EXPECT_EQ(oru_do_uri_get_segment_last(parent), nullptr);
        EXPECT_EQ(oru_do_uri_get_keys(parent), nullptr);
        EXPECT_EQ(oru_do_uri_get_parent_uri(parent), nullptr);
    }
}

TEST(UriAccess, TheParentOfOneSegmentIsTheRootWithoutSegments) {
    const Uri uri = parsed("/a");
    ORUDoUri *parent = oru_do_uri_get_parent_uri(uri.get());
    EXPECT_EQ(oru_do_uri_get_segment_count(parent), 0);
    EXPECT_EQ(parent_of(parent), "/a");
}

TEST(UriAccess, AParentMayNotBeHad) {
    sweep_oom(
        [] {
            const Uri uri(oru_do_uri_validate_new("/a;k=1/b"));
            if (!uri)
                return;
            ORUDoUri *parent = oru_do_uri_get_parent_uri(uri.get());
            if (parent != nullptr) {
                EXPECT_STREQ(oru_do_uri_get_uri_str(parent), "/a;k=1");
            }
        },
        {.promised_deaths = {}, .at_least = 10});
}

TEST(UriAccess, PrintsBehindTabs) {
    const Buffer buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_uri_to_strbuf(unparsed("/a/").get(), 2, buf.get()), 0);
    EXPECT_EQ(oru_do_uri_to_strbuf(nullptr, 2, buf.get()), 0);
    EXPECT_EQ(oru_do_uri_to_strbuf(unparsed("").get(), 0, buf.get()), 0);
    EXPECT_EQ(oru_do_uri_to_strbuf(unparsed("///").get(), -1, buf.get()), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()), "\t\t/a////");
}

TEST(UriAccess, TypedKeysMayNotBeHad) {
    sweep_oom([] {
        const Uri uri(oru_do_uri_validate_new("/a;k=1"));
        if (!uri)
            return;
        int32_t rc = 0;
        const Value value(oru_do_uri_get_key_w_type(uri.get(), 0, ORU_DO_TYPE_INT, &rc));
        const Value other(oru_do_uri_get_key_by_name_w_type(uri.get(), "k", ORU_DO_TYPE_INT, &rc));
        if (ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0)) {
            const Value own(oru_do_uri_segment_get_key_w_type(segment, 0, ORU_DO_TYPE_INT, &rc));
            EXPECT_TRUE(own != nullptr || oom_hit());
        }
        if (value) {
            EXPECT_EQ(int_of(value), 1);
        }
        if (other) {
            EXPECT_EQ(int_of(other), 1);
        }
    });
}

TEST(UriAccess, NullIsAsserted) {
    const Uri uri = parsed("/a");
    ORUDoUriSegment *segment = oru_do_uri_get_segment(uri.get(), 0);
    int32_t rc = 0;
    EXPECT_ASSERTION(oru_do_uri_get_query_part(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_has_type_query_part(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_parent_uri(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_segment_count(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_segment(nullptr, 0), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_segment_last(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_segment_get_name(nullptr), "segment");
    EXPECT_ASSERTION(oru_do_uri_segment_get_keys(nullptr), "segment");
    EXPECT_ASSERTION(oru_do_uri_segment_get_str_copy(nullptr, segment), "uri");
    EXPECT_ASSERTION(oru_do_uri_segment_get_str_copy(uri.get(), nullptr), "segment");
    EXPECT_ASSERTION(oru_do_uri_segment_get_key_w_type(nullptr, 0, 8, &rc), "segment");
    EXPECT_ASSERTION(oru_do_uri_segment_get_key_w_type(segment, 0, 8, nullptr), "rc");
    EXPECT_ASSERTION(oru_do_uri_get_key(nullptr, 0), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_keys(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_key_w_type(nullptr, 0, 8, &rc), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_key_w_type(uri.get(), 0, 8, nullptr), "rc");
    EXPECT_ASSERTION(oru_do_uri_get_key_by_name_w_type(nullptr, "k", 8, &rc), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_key_by_name_w_type(uri.get(), nullptr, 8, &rc), "name");
    EXPECT_ASSERTION(oru_do_uri_get_key_by_name_w_type(uri.get(), "k", 8, nullptr), "rc");
    EXPECT_ASSERTION(oru_do_uri_to_strbuf(uri.get(), 0, nullptr), "strbuf");
}

}  // namespace
