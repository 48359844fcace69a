// Absolute and relative forms, and what stands in a location.
#include <cstring>

#include "oru/lib.h"
#include "oru/uri_derive.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

constexpr const char *kAt = "//locations;locationId=1";

std::string absolute(const char *text, const char *location) {
    const OwnText own(oru_do_uri_str_new_absolute(text, location));
    const Uri uri(oru_do_uri_new_absolute_from_uri_str(text, location));
    EXPECT_EQ(text_of(uri), shown(own.get()));
    const Uri base(text != nullptr ? oru_do_uri_new(text) : nullptr);
    const Uri place(location != nullptr ? oru_do_uri_new(location) : nullptr);
    const Uri from_uris(oru_do_uri_new_absolute(base.get(), place.get()));
    EXPECT_EQ(text_of(from_uris), shown(own.get()));
    return shown(own.get());
}

TEST(UriLocation, HandlingIsAlwaysOn) {
    EXPECT_EQ(oru_location_is_enabled(), 1);
    oru_location_update_from_env();
    EXPECT_EQ(oru_location_is_enabled(), 1);
    EXPECT_STREQ(oru_get_system_root_uri_str(), "//");
}

TEST(UriLocation, TheLocationComesFirst) {
    EXPECT_EQ(absolute("/a/b", kAt), "//locations;locationId=1/a/b");
    EXPECT_EQ(absolute("/a?bc", kAt), "//locations;locationId=1/a?bc");
    EXPECT_EQ(absolute("/", kAt), kAt);
    EXPECT_EQ(absolute("", kAt), kAt);
}

TEST(UriLocation, ACollectionAtTheRootLosesItsSlash) {
    EXPECT_EQ(absolute("/?x", kAt), "//locations;locationId=1?x");
    EXPECT_EQ(absolute("/?", kAt), "//locations;locationId=1?");
    EXPECT_EQ(absolute("/?x?y", kAt), "//locations;locationId=1/?x?y");  // the last one counts
    EXPECT_EQ(absolute("/x?", kAt), "//locations;locationId=1/x?");
}

TEST(UriLocation, SomeTextsStayAsTheyAre) {
    EXPECT_EQ(absolute("//x/a", kAt), "//x/a");
    EXPECT_EQ(absolute("//", kAt), "//");
    EXPECT_EQ(absolute("a/b", kAt), "a/b");
    EXPECT_EQ(absolute("/a", ""), "/a");
    EXPECT_EQ(absolute("/", ""), "/");
    for (const char *text : {"/a", "/", "", "a", "//a", "/?x"})
        EXPECT_EQ(absolute(text, nullptr), text);
}

TEST(UriLocation, NoTextGivesNone) {
    EXPECT_EQ(absolute(nullptr, kAt), "(null)");
    EXPECT_EQ(absolute(nullptr, nullptr), "(null)");
}

TEST(UriLocation, ABufferThatCannotBeHadIsTraced) {
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_uri_str_new_absolute("/a", kAt), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to allocate strbuf.\n"}}));
}

TEST(UriLocation, TheRootOfALocation) {
    const auto root = [](const std::string &text) {
        return text_of(Uri(oru_do_uri_new_absolute_root_from_uri(unparsed(text).get())));
    };
    EXPECT_EQ(root("//locations;locationId=x/a/b"), "//locations;locationId=x");
    EXPECT_EQ(root("//locations;locationId=x"), "//locations;locationId=x");
    EXPECT_EQ(root("//a?bc"), "//a");
    EXPECT_EQ(root("/" + segments_of(10)), "//a");
    EXPECT_EQ(root("//"), "(null)");
    EXPECT_EQ(root("/a/b"), "(null)");
    EXPECT_EQ(root("a"), "(null)");
    EXPECT_EQ(root("///"), "(null)");
    EXPECT_EQ(root("//a//b"), "(null)");
}

TEST(UriLocation, RelativeFormsAreCut) {
    const auto relative = [](const char *text) {
        return text_of(Uri(oru_do_uri_new_relative(text)));
    };
    EXPECT_EQ(relative("//locations;locationId=1/a/b"), "/a/b");
    EXPECT_EQ(relative("//ab"), "(null)");
    EXPECT_EQ(relative("//a"), "//a");
    EXPECT_EQ(relative("/a"), "/a");
    EXPECT_EQ(relative("a/b"), "a/b");
}

TEST(UriLocation, TheIdentifierIsCopied) {
    const auto identifier = [](const char *text, int32_t expected) {
        char buf[16];
        std::memset(buf, '#', sizeof buf);
        EXPECT_EQ(oru_do_uri_get_location_str(unparsed(text).get(), buf, sizeof buf), expected);
        return std::string(buf);
    };
    EXPECT_EQ(identifier("//locations;locationId=global/a", 0), "global");
    EXPECT_EQ(identifier("//locations;locationId=global", 0), "global");
    EXPECT_EQ(identifier("//locations;locationId=/a", 0), "");
    EXPECT_EQ(identifier("//locations;locationId=", 0), "");
    EXPECT_EQ(identifier("//locations;locationI=x", 10000), "");
    EXPECT_EQ(identifier("/locations;locationId=x", 10000), "");
    EXPECT_EQ(identifier("", 10000), "");
}

TEST(UriLocation, AnIdentifierThatFillsTheBufferIsNotTerminated) {
    const Uri uri = unparsed("//locations;locationId=global/a");
    char buf[8];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(oru_do_uri_get_location_str(uri.get(), buf, 7), 0);
    EXPECT_STREQ(buf, "global");
    EXPECT_EQ(buf[7], '#');
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(oru_do_uri_get_location_str(uri.get(), buf, 6), 10000);
    EXPECT_EQ(std::string(buf, 8), "global##");
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(oru_do_uri_get_location_str(uri.get(), buf, 3), 10000);
    EXPECT_EQ(std::string(buf, 8), "glo#####");
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(oru_do_uri_get_location_str(uri.get(), buf, 0), 10000);
    EXPECT_EQ(oru_do_uri_get_location_str(uri.get(), buf, -1), 10000);
    EXPECT_EQ(std::string(buf, 8), "########");
}

TEST(UriLocation, IsAtItsLocation) {
    const auto at = [](const char *text, const char *id) {
        return oru_do_uri_is_at(unparsed(text).get(), id);
    };
    EXPECT_EQ(at("//locations;locationId=1/a", "1"), 1);
    EXPECT_EQ(at("//locations;locationId=1", "1"), 1);
    EXPECT_EQ(at("//locations;locationId=1/a", "12"), 0);
    EXPECT_EQ(at("//locations;locationId=12/a", "1"), 0);
    EXPECT_EQ(at("//locations;locationId=/a", ""), 1);
    EXPECT_EQ(at("//locations;locationId=1/a", ""), 0);
    EXPECT_EQ(at("//x;y=1/a", "1"), 1);
    EXPECT_EQ(at("/locations;locationId=1/a", "1"), 0);
    EXPECT_EQ(at("//a/b", "1"), 0);
}

TEST(UriLocation, MemoryMayRunOut) {
    sweep_oom(
        [] {
            const Uri uri(oru_do_uri_new_absolute_from_uri_str("/a", kAt));
            EXPECT_EQ(uri == nullptr, oom_hit());
            const OwnText copy(oru_do_uri_str_new_absolute("//a", kAt));
            const OwnText location(oru_do_uri_str_new_absolute("/", kAt));
            const Uri relative(oru_do_uri_new_relative("/a"));
            if (uri) {
                const Uri root(oru_do_uri_new_absolute_root_from_uri(uri.get()));
                EXPECT_TRUE(root != nullptr || oom_hit());
            }
        },
        {.promised_deaths = {}, .at_least = 12});
}

TEST(UriLocation, LongTextsToo) {
    const std::string text = "/" + run_of(600);
    EXPECT_EQ(absolute(text.c_str(), kAt), kAt + text);
    sweep_oom([&] {
        const OwnText own(oru_do_uri_str_new_absolute(text.c_str(), kAt));
        EXPECT_EQ(own == nullptr, oom_hit());
    });
}

TEST(UriLocation, NullIsAsserted) {
    const Uri uri = unparsed("/a");
    char buf[4];
    EXPECT_ASSERTION(oru_do_uri_get_location_str(nullptr, buf, 4), "uri");
    EXPECT_ASSERTION(oru_do_uri_get_location_str(uri.get(), nullptr, 4), "buf");
    EXPECT_ASSERTION(oru_do_uri_is_at(nullptr, "1"), "uri");
    EXPECT_ASSERTION(oru_do_uri_is_at(uri.get(), nullptr), "locationId");
    EXPECT_ASSERTION(oru_do_uri_new_absolute_root_from_uri(nullptr), "uri");
    EXPECT_ASSERTION(oru_do_uri_new_relative(nullptr), "uri_str");
}

}  // namespace
