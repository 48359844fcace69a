#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "oru/error.h"
#include "oru/name.h"
#include "oru/strbuf.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

class PropErrs : public testing::Test {
  protected:
    ~PropErrs() override { oru_do_prop_errs_deref(errs); }

    void set(const char *text, int32_t code) {
        ORUDoName *name = oru_do_name_new(text);
        ORUDoError *err = oru_do_error_new(code, "msg");
        oru_do_prop_errs_set_err(errs, name, err);
        oru_do_error_deref(err);
        oru_do_name_deref(name);
    }

    // "name=code" of each entry.
    std::vector<std::string> entries() const {
        std::vector<std::string> all;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_prop_errs_iter(errs, &iter); oru_do_prop_errs_has_next(&iter) != 0;) {
            ORUDoPropErr *entry = oru_do_prop_errs_get_next(&iter);
            all.push_back(std::string(oru_do_name_get_strname(oru_do_prop_err_get_name(entry))) +
                          "=" +
                          std::to_string(oru_do_error_get_code(oru_do_prop_err_get_err(entry))));
        }
        EXPECT_EQ(oru_do_prop_errs_get_next(&iter), nullptr);
        return all;
    }

    ORUDoPropErr *first() const {
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        oru_do_prop_errs_iter(errs, &iter);
        return oru_do_prop_errs_get_next(&iter);
    }

    ORUDoPropErrs *errs = oru_do_prop_errs_new();
};

TEST_F(PropErrs, StartEmpty) {
    EXPECT_TRUE(entries().empty());
    EXPECT_EQ(oru_do_prop_errs_get_err_w_strname(errs, "a"), nullptr);
}

TEST_F(PropErrs, StayInTheOrderOfTheirFirstSetting) {
    set("b", 1);
    set("a", 2);
    set("c", 3);
    EXPECT_EQ(entries(), (std::vector<std::string>{"b=1", "a=2", "c=3"}));
}

TEST_F(PropErrs, ASecondErrorOfANameTakesTheFirstOnesPlace) {
    set("a", 1);
    set("b", 2);
    set("a", 3);
    EXPECT_EQ(entries(), (std::vector<std::string>{"a=3", "b=2"}));
    // The very error that is held.
    ORUDoName *name = oru_do_name_new("a");
    oru_do_prop_errs_set_err(errs, name, oru_do_prop_errs_get_err(errs, name));
    EXPECT_EQ(entries(), (std::vector<std::string>{"a=3", "b=2"}));
    oru_do_name_deref(name);
}

TEST_F(PropErrs, AreFoundByNameAndByText) {
    set("a", 1);
    set("b", 2);
    ORUDoName *name = oru_do_name_new("b");
    EXPECT_EQ(oru_do_error_get_code(oru_do_prop_errs_get_err(errs, name)), 2);
    EXPECT_EQ(oru_do_error_get_code(oru_do_prop_errs_get_err_w_strname(errs, "a")), 1);
    EXPECT_EQ(oru_do_prop_errs_get_err_w_strname(errs, "c"), nullptr);
    oru_do_name_deref(name);
    name = oru_do_name_new("c");
    EXPECT_EQ(oru_do_prop_errs_get_err(errs, name), nullptr);
    oru_do_name_deref(name);
}

TEST_F(PropErrs, AnEntryMayBeRenamed) {
    set("a", 1);
    ORUDoName *name = oru_do_name_new("z");
    oru_do_prop_err_set_name(first(), name);
    oru_do_name_deref(name);
    EXPECT_EQ(entries(), (std::vector<std::string>{"z=1"}));
    oru_do_prop_err_set_name(first(), nullptr);
    oru_do_prop_err_set_name(first(), oru_do_prop_err_get_name(first()));
    EXPECT_EQ(entries(), (std::vector<std::string>{"z=1"}));
}

TEST_F(PropErrs, PrintInBraces) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_EQ(oru_do_prop_errs_to_strbuf(nullptr, 1, buf), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf), "");
    oru_do_prop_errs_to_strbuf(errs, 1, buf);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf), "\t{\n\t}\n");
    oru_do_strbuf_clear(buf);
    set("a", 1);
    set("b", 2);
    EXPECT_EQ(oru_do_prop_errs_to_strbuf(errs, 0, buf), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf),
                 "{\n"
                 "\ta : Error(1) : msg\n"
                 ", \tb : Error(2) : msg\n"
                 "}\n");
    oru_do_strbuf_deref(buf);
}

TEST_F(PropErrs, ClearingReleasesWhatIsHeld) {
    ORUDoName *name = oru_do_name_new("a");
    const uint64_t blocks = poolheap_live_blocks();
    ORUDoError *err = oru_do_error_new(1, nullptr);
    oru_do_prop_errs_set_err(errs, name, err);
    oru_do_error_deref(err);
    oru_do_prop_errs_clear(errs);
    EXPECT_EQ(poolheap_live_blocks(), blocks);
    oru_do_name_deref(name);
}

TEST_F(PropErrs, WithoutMemoryNothingHappens) {
    set("a", 1);
    ORUDoName *name = oru_do_name_new("b");
    ORUDoError *err = oru_do_error_new(2, nullptr);
    poolheap_fail_nth(1, 0);
    oru_do_prop_errs_set_err(errs, name, err);
    poolheap_fail_off();
    EXPECT_EQ(entries(), (std::vector<std::string>{"a=1"}));
    oru_do_prop_errs_set_err(errs, name, err);
    EXPECT_EQ(entries(), (std::vector<std::string>{"a=1", "b=2"}));
    oru_do_error_deref(err);
    oru_do_name_deref(name);

    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_prop_errs_new(), nullptr);
    poolheap_fail_off();
}

TEST_F(PropErrs, EveryAllocationMayFail) {
    ORUDoName *name = oru_do_name_new("a");
    ORUDoError *err = oru_do_error_new(2, "text");
    oru::test::sweep_oom(
        [name, err] {
            ORUDoPropErrs *set = oru_do_prop_errs_new();
            if (set == nullptr)
                return;
            oru_do_prop_errs_set_err(set, name, err);
            ORUDoError *held = oru_do_prop_errs_get_err(set, name);
            EXPECT_EQ(held, oru::test::oom_hit() ? nullptr : err);
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            if (buf != nullptr) {
                EXPECT_EQ(oru_do_prop_errs_to_strbuf(set, 300, buf), 0);
            }
            oru_do_strbuf_deref(buf);
            oru_do_prop_errs_deref(set);
        },
        {.promised_deaths = {}, .at_least = 5});
    oru_do_error_deref(err);
    oru_do_name_deref(name);
}

TEST_F(PropErrs, TheRecordsHaveTheirFieldsInOrder) {
    struct Entry {
        ORUDoName *name;
        ORUDoError *err;
        Entry *next;
    };
    struct Record {
        Entry *head;
        uint32_t ref;
    };
    set("a", 1);
    set("b", 2);
    const auto &fields = *reinterpret_cast<Record *>(errs);
    EXPECT_EQ(fields.ref, 1u);
    EXPECT_EQ(fields.head, reinterpret_cast<Entry *>(first()));
    EXPECT_EQ(fields.head->name, oru_do_prop_err_get_name(first()));
    EXPECT_EQ(fields.head->err, oru_do_prop_err_get_err(first()));
    EXPECT_STREQ(oru_do_name_get_strname(fields.head->next->name), "b");
    EXPECT_EQ(fields.head->next->next, nullptr);
}

TEST_F(PropErrs, EntriesAreBlocksOfTheirTag) {
    set("a", 1);
    set("b", 2);
    poolheap_stats_t stats{};
    poolheap_tag_stats(0x2900026, &stats);
    EXPECT_EQ(stats.live_blocks, 2u);
}

TEST_F(PropErrs, RequiredArgumentsAreNamed) {
    set("a", 1);
    ORUDoName *name = oru_do_name_new("a");
    ORUDoError *err = oru_do_prop_errs_get_err(errs, name);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_prop_errs_set_err(nullptr, name, err), "prop_errs");
    EXPECT_ASSERTION(oru_do_prop_errs_set_err(errs, nullptr, err), "name");
    EXPECT_ASSERTION(oru_do_prop_errs_set_err(errs, name, nullptr), "err");
    EXPECT_ASSERTION(oru_do_prop_errs_get_err(nullptr, name), "prop_errs");
    EXPECT_ASSERTION(oru_do_prop_errs_get_err(errs, nullptr), "name");
    EXPECT_ASSERTION(oru_do_prop_errs_get_err_w_strname(nullptr, "a"), "prop_errs");
    EXPECT_ASSERTION(oru_do_prop_errs_get_err_w_strname(errs, nullptr), "name");
    EXPECT_ASSERTION(oru_do_prop_errs_clear(nullptr), "prop_errs");
    EXPECT_ASSERTION(oru_do_prop_errs_iter(nullptr, &iter), "prop_errs");
    EXPECT_ASSERTION(oru_do_prop_errs_iter(errs, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_prop_errs_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_prop_errs_has_next(&iter), "iter->coll_type == DO_COLL_PROP_ERRS");
    EXPECT_ASSERTION(oru_do_prop_errs_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_prop_err_get_name(nullptr), "prop_err");
    EXPECT_ASSERTION(oru_do_prop_err_get_err(nullptr), "prop_err");
    EXPECT_ASSERTION(oru_do_prop_err_set_name(nullptr, name), "prop_err");
    EXPECT_ASSERTION(oru_do_prop_errs_to_strbuf(errs, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_prop_errs_to_strbuf(nullptr, 0, nullptr), "strbuf");
    EXPECT_EQ(oru_do_prop_errs_ref(nullptr), nullptr);
    oru_do_prop_errs_deref(nullptr);
    oru_do_name_deref(name);
}

}  // namespace
