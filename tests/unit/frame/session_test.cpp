#include "oru/session.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "oru/iter.h"
#include "oru/lib.h"
#include "oru/nvlist.h"
#include "oru/value.h"
#include "tests/support/child.h"
#include "tests/support/death.h"

namespace {

using oru::test::expect_in_child;

void bind(const char *backend) {
    static intptr_t received = 0;
    setenv("ORU_DEFAULT_LIB", backend, 1);
    ASSERT_EQ(oru_lib_init(nullptr, 0, &received), 4711);
}

// "name=text" of each item.
std::vector<std::string> items(ORUDoNvlist *params) {
    std::vector<std::string> all;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_nvlist_iter(params, &iter); oru_do_nvlist_has_next(&iter) != 0;) {
        ORUDoNvlistItem *item = oru_do_nvlist_get_next(&iter);
        int32_t rc = -1;
        const char *text = oru_do_value_get_string(oru_do_nvlist_item_get_value(item), &rc);
        EXPECT_EQ(rc, 0);
        all.push_back(std::string(oru_do_nvlist_item_get_name(item)) + "=" + text);
    }
    return all;
}

using Open = intptr_t(ORUDoNvlist *, intptr_t, intptr_t);

class SessionOpen : public testing::TestWithParam<std::pair<Open *, intptr_t>> {
  protected:
    static intptr_t open(ORUDoNvlist *params, intptr_t a2, void **handed) {
        return GetParam().first(params, a2, reinterpret_cast<intptr_t>(handed));
    }
};

TEST_P(SessionOpen, StampsItsParametersAndHandsOnThreeWords) {
    expect_in_child([] {
        bind(FAKE_BACKEND);
        ORUDoNvlist *params = oru_do_nvlist_new();
        oru_do_nvlist_add_string(params, "user", "admin");
        void *handed = nullptr;
        EXPECT_EQ(open(params, 42, &handed), GetParam().second * 100 + 42);
        EXPECT_EQ(handed, params);
        EXPECT_EQ(items(params), (std::vector<std::string>{"user=admin", "version=1.0"}));
        EXPECT_EQ(open(params, -1, &handed), GetParam().second * 100 - 1);
        EXPECT_EQ(items(params),
                  (std::vector<std::string>{"user=admin", "version=1.0", "version=1.0"}));
        oru_do_nvlist_deref(params);
    });
}

TEST_P(SessionOpen, GoesOnWithoutMemoryForTheStamp) {
    expect_in_child([] {
        bind(FAKE_BACKEND);
        ORUDoNvlist *params = oru_do_nvlist_new();
        void *handed = nullptr;
        poolheap_fail_nth(1, 1);
        EXPECT_EQ(open(params, 7, &handed), GetParam().second * 100 + 7);
        poolheap_fail_off();
        EXPECT_EQ(handed, params);
        EXPECT_TRUE(items(params).empty());
        oru_do_nvlist_deref(params);
    });
}

TEST_P(SessionOpen, NeedsParameters) {
    EXPECT_ASSERTION(GetParam().first(nullptr, 0, 0), "nvlist");
}

INSTANTIATE_TEST_SUITE_P(Kinds, SessionOpen,
                         testing::Values(std::pair<Open *, intptr_t>(oru_cl_session_open, 1),
                                         std::pair<Open *, intptr_t>(oru_pr_session_open, 2)));

TEST(Session, EveryOtherCallHandsOnItsWords) {
    expect_in_child([] {
        bind(FAKE_BACKEND);
        EXPECT_EQ(oru_cl_session_close(1, 2, 3, 4, 5, 6), 6123456);
        EXPECT_EQ(oru_pr_session_close(1, 2, 3, 4, 5, 6), 7123456);
        EXPECT_EQ(oru_ev_session_close(1, 2, 3, 4, 5, 6), 8123456);
        EXPECT_EQ(oru_ev_session_open(1, 2, 3, 4, 5, 6), 9123456);
    });
}

struct Slot {
    const char *name;  // of the symbol
    const char *variable;
    intptr_t (*call)();
};

intptr_t open_empty(Open *open) {
    ORUDoNvlist *params = oru_do_nvlist_new();
    return open(params, 0, 0);
}

class SessionSlot : public testing::TestWithParam<Slot> {};

TEST_P(SessionSlot, AnEmptyOneIsFatalWithItsName) {
    EXPECT_FATAL(
        {
            bind(FAKE_BACKEND_BARE);
            GetParam().call();
        },
        std::string("Failed to find dl symbol ") + GetParam().name);
    EXPECT_FATAL(
        {
            setenv(GetParam().variable, "no_such_entry", 1);
            bind(FAKE_BACKEND);
            GetParam().call();
        },
        "Failed to find dl symbol no_such_entry");
    EXPECT_FATAL(GetParam().call(), "Failed to find dl symbol (null)");
}

INSTANTIATE_TEST_SUITE_P(
    All, SessionSlot,
    testing::Values(Slot{"_oru_cl_session_open", "ORU_DEFAULT_CL_OPEN",
                         [] { return open_empty(oru_cl_session_open); }},
                    Slot{"_oru_cl_session_close", "ORU_DEFAULT_CL_CLOSE",
                         [] { return oru_cl_session_close(0, 0, 0, 0, 0, 0); }},
                    Slot{"_oru_pr_session_open", "ORU_DEFAULT_PR_OPEN",
                         [] { return open_empty(oru_pr_session_open); }},
                    Slot{"_oru_pr_session_close", "ORU_DEFAULT_PR_CLOSE",
                         [] { return oru_pr_session_close(0, 0, 0, 0, 0, 0); }},
                    Slot{"_oru_ev_session_open", "ORU_DEFAULT_EV_OPEN",
                         [] { return oru_ev_session_open(0, 0, 0, 0, 0, 0); }},
                    Slot{"_oru_ev_session_close", "ORU_DEFAULT_EV_CLOSE",
                         [] { return oru_ev_session_close(0, 0, 0, 0, 0, 0); }}));

}  // namespace
