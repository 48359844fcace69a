#include "oru/name.h"

#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Name;
using oru::test::TraceCapture;

// The record as outside code compiled apart sees it.
struct NameRecord {
    uint32_t ref;
    char *str;
    char inline_text[32];
};

const NameRecord &record(const Name &name) {
    return *reinterpret_cast<const NameRecord *>(name.get());
}

std::string text(const Name &name) {
    return oru_do_name_get_strname(name.get());
}

constexpr uint32_t kStrdupTag = 0x2900000 + 39;

uint64_t live_strdups() {
    poolheap_stats_t stats{};
    poolheap_tag_stats(kStrdupTag, &stats);
    return stats.live_blocks;
}

TEST(Name, HoldsACopyOfItsText) {
    char given[] = "ifIndex";
    Name name(oru_do_name_new(given));
    given[0] = 'x';
    EXPECT_EQ(text(name), "ifIndex");
    EXPECT_EQ(record(name).ref, 1u);
}

TEST(Name, MayBeEmpty) {
    EXPECT_EQ(text(Name(oru_do_name_new(""))), "");
    EXPECT_EQ(text(Name(oru_do_name_new_l("abc", 0))), "");
}

TEST(Name, ThirtyOneCharactersAreHeldInline) {
    const uint64_t before = live_strdups();
    Name name(oru_do_name_new(std::string(31, 'n').c_str()));
    EXPECT_EQ(record(name).str, record(name).inline_text);
    EXPECT_EQ(live_strdups(), before);
    EXPECT_EQ(text(name), std::string(31, 'n'));
}

TEST(Name, ThirtyTwoCharactersAreADuplicate) {
    const uint64_t before = live_strdups();
    Name name(oru_do_name_new(std::string(32, 'n').c_str()));
    EXPECT_NE(record(name).str, record(name).inline_text);
    EXPECT_EQ(live_strdups(), before + 1);
    EXPECT_EQ(text(name), std::string(32, 'n'));
    name.reset();
    EXPECT_EQ(live_strdups(), before);
}

TEST(Name, CountedTextsHaveTheSameBound) {
    const std::string longer(40, 'c');
    Name short_name(oru_do_name_new_l(longer.c_str(), 31));
    Name long_name(oru_do_name_new_l(longer.c_str(), 32));
    EXPECT_EQ(record(short_name).str, record(short_name).inline_text);
    EXPECT_NE(record(long_name).str, record(long_name).inline_text);
    EXPECT_EQ(text(short_name), std::string(31, 'c'));
    EXPECT_EQ(text(long_name), std::string(32, 'c'));
}

TEST(Name, AShortCountedTextEndsAtAZero) {
    Name name(oru_do_name_new_l("ab\0cd", 5));
    EXPECT_EQ(text(name), "ab");
    EXPECT_EQ(std::string(record(name).inline_text, 6), std::string(6, '\0').replace(0, 2, "ab"));
}

TEST(Name, CountedTextThatIsNoneGivesNull) {
    EXPECT_EQ(oru_do_name_new_l(nullptr, 3), nullptr);
    EXPECT_EQ(oru_do_name_new_l("abc", -1), nullptr);
}

TEST(Name, WellKnownNamesHaveTheirTexts) {
    EXPECT_STREQ(ORU_DO_NAME_URI, "_uri");
    EXPECT_STREQ(ORU_DO_NAME_COLL_URI, "_coll_uri");
    EXPECT_STREQ(ORU_DO_NAME_MR, "_mr");
    EXPECT_STREQ(ORU_DO_NAME_SNMP_IDX, "_snmpIdx");
    EXPECT_STREQ(ORU_DO_NAME_SEQ_NB, "_sequenceNumber");
    EXPECT_STREQ(ORU_DO_NAME_PENDING_ATTRS, "_pendingAttrs");
    EXPECT_STREQ(ORU_DO_NAME_TIMESTAMP, "_timestamp");
}

TEST(NameEquality, ComparesBytes) {
    Name a(oru_do_name_new("name"));
    Name same(oru_do_name_new("name"));
    Name other_case(oru_do_name_new("Name"));
    EXPECT_TRUE(oru_do_name_equals(a.get(), a.get()));
    EXPECT_TRUE(oru_do_name_equals(a.get(), same.get()));
    EXPECT_FALSE(oru_do_name_equals(a.get(), other_case.get()));
    EXPECT_FALSE(oru_do_name_equals(a.get(), nullptr));
    EXPECT_TRUE(oru_do_name_equals_w_strname(a.get(), "name"));
    EXPECT_FALSE(oru_do_name_equals_w_strname(a.get(), "nam"));
    EXPECT_FALSE(oru_do_name_equals_w_strname(a.get(), "names"));
    EXPECT_FALSE(oru_do_name_equals_w_strname(a.get(), nullptr));
}

TEST(NameEquality, CountedCompareMatchesPrefixes) {
    Name name(oru_do_name_new("abcdef"));
    EXPECT_TRUE(oru_do_name_equals_w_strname_l(name.get(), "abc", 3));
    EXPECT_TRUE(oru_do_name_equals_w_strname_l(name.get(), "abcxyz", 3));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l(name.get(), "abd", 3));
    EXPECT_TRUE(oru_do_name_equals_w_strname_l(name.get(), "x", 0));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l(name.get(), nullptr, 3));
}

TEST(NameEquality, StrictCompareWantsTheEndThere) {
    Name name(oru_do_name_new("abcdef"));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l_strict(name.get(), "abc", 3));
    EXPECT_TRUE(oru_do_name_equals_w_strname_l_strict(name.get(), "abcdefgh", 6));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l_strict(name.get(), "abcdef", 7));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l_strict(name.get(), "abcdeg", 6));
    EXPECT_FALSE(oru_do_name_equals_w_strname_l_strict(name.get(), nullptr, 6));
}

TEST(NameQualified, IsOneWithASlash) {
    EXPECT_TRUE(oru_do_name_is_fully_qualified(Name(oru_do_name_new("a/b")).get()));
    EXPECT_FALSE(oru_do_name_is_fully_qualified(Name(oru_do_name_new("a.b")).get()));
    EXPECT_TRUE(is_fully_qualified_name("/"));
    EXPECT_FALSE(is_fully_qualified_name("ab"));
    EXPECT_FALSE(is_fully_qualified_name(nullptr));
}

TEST(NameQualified, IsBuiltFromPackageAndVersion) {
    Name name(oru_do_name_new("b"));
    EXPECT_EQ(text(Name(oru_do_name_new_fqname(name.get(), "p", nullptr))), "p/b");
    EXPECT_EQ(text(Name(oru_do_name_new_fqname(name.get(), "p", "1.0"))), "p:1.0/b");
}

TEST(NameQualified, OfAQualifiedNameIsTheSameRecordWithOneMoreReference) {
    Name name(oru_do_name_new("a/b"));
    TraceCapture traces(8);
    Name again(oru_do_name_new_fqname(name.get(), "p", "1.0"));
    EXPECT_EQ(again.get(), name.get());
    EXPECT_EQ(record(name).ref, 2u);
    ASSERT_EQ(traces.at(8).size(), 1u);
    EXPECT_EQ(traces.at(8)[0].find("oru ref oru_do_name 0x"), 0u);
}

TEST(NameQualified, MayBeLongerThanABuffersFirstStorage) {
    Name name(oru_do_name_new(std::string(200, 'n').c_str()));
    const std::string package(200, 'p');
    EXPECT_EQ(text(Name(oru_do_name_new_fqname(name.get(), package.c_str(), "1.0"))),
              package + ":1.0/" + std::string(200, 'n'));
}

TEST(NameQualified, WithoutAPackageIsTheSameRecord) {
    Name name(oru_do_name_new("b"));
    Name again(oru_do_name_new_fqname(name.get(), nullptr, "1.0"));
    EXPECT_EQ(again.get(), name.get());
    EXPECT_EQ(record(name).ref, 2u);
}

TEST(NameUnqualified, IsThePartBehindTheDotBehindTheSlash) {
    const auto part = [](const char *given) {
        Name name(oru_do_name_new(given));
        const char *result = oru_do_name_get_unqualified_strname(name.get());
        return std::string(result != nullptr ? result : "(null)");
    };
    EXPECT_EQ(part("p/b"), "(null)");
    EXPECT_EQ(part("p/b.c"), "c");
    EXPECT_EQ(part("p/b.c.d"), "c.d");
    EXPECT_EQ(part("b.c"), "b.c");
    EXPECT_EQ(part("p:1.0/b"), "(null)");
    EXPECT_EQ(part("p:1.0/b.c"), "c");
}

TEST(NameUnqualified, BelongsToTheName) {
    Name name(oru_do_name_new("p/b.c"));
    EXPECT_EQ(oru_do_name_get_unqualified_strname(name.get()),
              oru_do_name_get_strname(name.get()) + 4);
}

TEST(NameUnqualified, AsANameIsNewOrTheSame) {
    Name plain(oru_do_name_new("b.c"));
    Name same(oru_do_name_new_or_ref_unqualified_name(plain.get()));
    EXPECT_EQ(same.get(), plain.get());
    EXPECT_EQ(record(plain).ref, 2u);

    Name qualified(oru_do_name_new("p/b.c"));
    Name part(oru_do_name_new_or_ref_unqualified_name(qualified.get()));
    EXPECT_EQ(text(part), "c");
    EXPECT_EQ(record(qualified).ref, 1u);

    Name without(oru_do_name_new("p/b"));
    EXPECT_EQ(oru_do_name_new_or_ref_unqualified_name(without.get()), nullptr);
}

struct Parts {
    int32_t rc = -1;
    std::string package, version, entity, attribute;
    friend bool operator==(const Parts &, const Parts &) = default;
};

Parts parts_of(std::string given) {
    char stale[] = "stale";
    char *package = stale, *version = stale, *entity = stale, *attribute = stale;
    Parts parts;
    parts.rc = parse_pkg_and_ent_name(given.data(), &package, &version, &entity, &attribute);
    const auto text_of = [](const char *part) { return part != nullptr ? part : "(null)"; };
    parts.package = text_of(package);
    parts.version = text_of(version);
    parts.entity = text_of(entity);
    parts.attribute = text_of(attribute);
    return parts;
}

TEST(NameParts, OfQualifiedTexts) {
    EXPECT_EQ(parts_of("a/b"), (Parts{0, "a", "(null)", "b", "(null)"}));
    EXPECT_EQ(parts_of("a:1.0/b"), (Parts{0, "a", "1.0", "b", "(null)"}));
    EXPECT_EQ(parts_of("a:1.0/b.c"), (Parts{0, "a", "1.0", "b", "c"}));
    EXPECT_EQ(parts_of("a:1.0/b.c.d"), (Parts{0, "a", "1.0", "b", "c.d"}));
}

TEST(NameParts, WithoutASlashTheLastDotSplits) {
    EXPECT_EQ(parts_of("a.b"), (Parts{0, "a", "(null)", "b", "(null)"}));
    EXPECT_EQ(parts_of("a.b.c"), (Parts{0, "a.b", "(null)", "c", "(null)"}));
    EXPECT_EQ(parts_of("a:1.b"), (Parts{0, "a", "1", "b", "(null)"}));
}

TEST(NameParts, WithNeitherTheWholeIsTheEntity) {
    EXPECT_EQ(parts_of("ab"), (Parts{0, "(null)", "(null)", "ab", "(null)"}));
    EXPECT_EQ(parts_of("a:b"), (Parts{0, "(null)", "(null)", "a:b", "(null)"}));
    EXPECT_EQ(parts_of(""), (Parts{0, "(null)", "(null)", "", "(null)"}));
}

TEST(NameParts, TheLastSlashAndTheLastColonCount) {
    EXPECT_EQ(parts_of("a/b/c"), (Parts{0, "a/b", "(null)", "c", "(null)"}));
    EXPECT_EQ(parts_of("a:b:c/d"), (Parts{0, "a:b", "c", "d", "(null)"}));
    EXPECT_EQ(parts_of("a/b:c"), (Parts{0, "a", "(null)", "b:c", "(null)"}));
}

TEST(NameParts, AnEmptyRestHasNoEntity) {
    EXPECT_EQ(parts_of("a:1/"), (Parts{0, "a", "1", "(null)", "(null)"}));
    EXPECT_EQ(parts_of("a/"), (Parts{0, "a", "(null)", "(null)", "(null)"}));
    EXPECT_EQ(parts_of("/b."), (Parts{0, "", "(null)", "b", ""}));
}

TEST(NameParts, ANullTextClearsTheOutputs) {
    char stale[] = "stale";
    char *package = stale, *version = stale, *entity = stale, *attribute = stale;
    EXPECT_EQ(parse_pkg_and_ent_name(nullptr, &package, &version, &entity, &attribute), 10000);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(version, nullptr);
    EXPECT_EQ(entity, nullptr);
    EXPECT_EQ(attribute, nullptr);
}

TEST(NameLife, SharesAndReleases) {
    EXPECT_EQ(oru_do_name_ref(nullptr), nullptr);
    oru_do_name_deref(nullptr);
    Name name(oru_do_name_new("a"));
    Name shared(oru_do_name_ref(name.get()));
    EXPECT_EQ(shared.get(), name.get());
    EXPECT_EQ(record(name).ref, 2u);
    shared.reset();
    EXPECT_EQ(record(name).ref, 1u);
}

TEST(NameMemory, AShortNameIsOneAllocation) {
    poolheap_fail_nth(0, 0);
    Name name(oru_do_name_new("short"));
    poolheap_fail_off();
    EXPECT_EQ(poolheap_fail_calls(), 1u);
}

TEST(NameMemory, ANameWithoutItsDuplicateIsReleased) {
    const std::string longer(32, 'n');
    TraceCapture traces(8);
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_do_name_new(longer.c_str()), nullptr);
    poolheap_fail_off();
    const auto lines = traces.at(8);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].find("oru ref oru_do_name 0x"), 0u);
    EXPECT_EQ(lines[1].find("oru deref oru_do_name 0x"), 0u);
}

TEST(NameMemory, APoolHoldsTheRecords) {
    oru::test::expect_in_child([] {
        TraceCapture traces;
        void *pool = init_chunk_poolheap_oru_do_name(4, 0);
        EXPECT_EQ(traces.at(5), (std::vector<std::string>{"chunk create oru_do_name 48 4"}));
        chunk_stats_t stats{};
        Name name(oru_do_name_new(std::string(31, 'n').c_str()));
        chunk_pool_stats(pool, &stats);
        EXPECT_EQ(stats.tag, 0x2900000u + 1);
        EXPECT_EQ(stats.live, 1u);
        EXPECT_EQ(live_strdups(), 0u);
        name.reset();
        chunk_pool_stats(pool, &stats);
        EXPECT_EQ(stats.live, 0u);
    });
}

TEST(NameFatal, ARecordThatIsNotOfThePool) {
    EXPECT_FATAL(
        {
            ORUDoName *name = oru_do_name_new("a");
            init_chunk_poolheap_oru_do_name(4, 0);
            oru_do_name_deref(name);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

void expect_name_or_exhaustion(ORUDoName *made, const std::string &expected) {
    Name name(made);
    if (name == nullptr) {
        EXPECT_TRUE(oru::test::oom_hit());
    } else {
        EXPECT_EQ(text(name), expected);
    }
}

TEST(NameMemory, EveryAllocationMayFail) {
    const std::string package(300, 'p');
    oru::test::sweep_oom([] { expect_name_or_exhaustion(oru_do_name_new("a"), "a"); });
    oru::test::sweep_oom(
        [&] { expect_name_or_exhaustion(oru_do_name_new(package.c_str()), package); },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [&] {
            expect_name_or_exhaustion(oru_do_name_new_l(package.c_str(), 40), std::string(40, 'p'));
        },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [&] {
            Name name(oru_do_name_new("b"));
            if (name != nullptr)
                expect_name_or_exhaustion(
                    oru_do_name_new_fqname(name.get(), package.c_str(), "1.0"), package + ":1.0/b");
        },
        {.promised_deaths = {}, .at_least = 6});
    oru::test::sweep_oom(
        [] {
            Name name(oru_do_name_new("p/b.c"));
            if (name != nullptr)
                expect_name_or_exhaustion(oru_do_name_new_or_ref_unqualified_name(name.get()), "c");
        },
        {.promised_deaths = {}, .at_least = 2});
}

TEST(NameNull, ArgumentsAreAsserted) {
    char text[] = "a/b";
    char *part = nullptr;
    EXPECT_ASSERTION(oru_do_name_new(nullptr), "text");
    EXPECT_ASSERTION(parse_pkg_and_ent_name(text, nullptr, &part, &part, &part), "package");
    EXPECT_ASSERTION(parse_pkg_and_ent_name(text, &part, nullptr, &part, &part), "version");
    EXPECT_ASSERTION(parse_pkg_and_ent_name(text, &part, &part, nullptr, &part), "entity");
    EXPECT_ASSERTION(parse_pkg_and_ent_name(text, &part, &part, &part, nullptr), "attribute");
    EXPECT_ASSERTION(oru_do_name_get_strname(nullptr), "name");
    EXPECT_ASSERTION(oru_do_name_equals(nullptr, nullptr), "name1");
    EXPECT_ASSERTION(oru_do_name_equals_w_strname(nullptr, "a"), "name1");
    EXPECT_ASSERTION(oru_do_name_equals_w_strname_l(nullptr, "a", 1), "name1");
    EXPECT_ASSERTION(oru_do_name_equals_w_strname_l_strict(nullptr, "a", 1), "name1");
    EXPECT_ASSERTION(oru_do_name_is_fully_qualified(nullptr), "name");
    EXPECT_ASSERTION(oru_do_name_new_fqname(nullptr, "p", nullptr), "name");
    EXPECT_ASSERTION(oru_do_name_get_unqualified_strname(nullptr), "name");
    EXPECT_ASSERTION(oru_do_name_new_or_ref_unqualified_name(nullptr), "name");
}

TEST(NameFatal, OneReleaseTooMany) {
    NameRecord dead{};
    EXPECT_FATAL(oru_do_name_deref(reinterpret_cast<ORUDoName *>(&dead)),
                 "Fatal problem in oru_do_name deref handling 0x");
}

}  // namespace
