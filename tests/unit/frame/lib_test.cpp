#include "oru/lib.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdlib>
#include <string>

#include "oru/properties.h"
#include "oru/thread.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::expect_in_child;
using oru::test::Trace;
using oru::test::TraceCapture;

intptr_t received = 0;
int set_up = 0;

int32_t count_set_up() {
    ++set_up;
    return 99;  // ignored
}

int32_t init(int32_t (*thread_setup)(void) = nullptr) {
    return oru_lib_init(thread_setup, 5, &received);
}

void use(const char *backend) {
    setenv("ORU_DEFAULT_LIB", backend, 1);
}

bool traced(const TraceCapture &traces, uint32_t level, const char *text) {
    return traces.has(level, text);
}

TEST(LibInit, GivesTheBackEndsResultUnchanged) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        received = 1;
        EXPECT_EQ(init(), 4711);
        EXPECT_EQ(received, 6);
    });
}

TEST(LibInit, RunsAllOfItAgainButTheBinding) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        EXPECT_EQ(init(count_set_up), 4711);
        use("another-file.so");
        EXPECT_EQ(init(count_set_up), 4711);
        EXPECT_EQ(set_up, 2);
        EXPECT_EQ(received, 10);
    });
}

TEST(LibInit, AnnouncesTheThreadingModelAfterTheSetUp) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        TraceCapture traces;
        init();
        EXPECT_TRUE(traced(traces, 7, "Faking thread support with internal weak functions 0"));
        traces.clear();
        init(count_set_up);
        EXPECT_TRUE(traced(traces, 7, "Faking thread support with internal weak functions 1"));
    });
}

TEST(LibInit, RefusesANullContextAfterEverythingButTheBinding) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        setenv("ORU_PROPS_MAX_SIZE_BEFORE_HS", "7", 1);
        TraceCapture traces;
        EXPECT_EQ(oru_lib_init(count_set_up, 5, nullptr), 10000);
        EXPECT_EQ(set_up, 1);
        EXPECT_EQ(g_lib_init, nullptr);
        EXPECT_EQ(traces.lines(),
                  (std::vector<Trace>{{7, "Faking thread support with internal weak functions 1"},
                                      {5, "setting oru props max size before hash 7"},
                                      {7, "set max size before ht 7"}}));
        EXPECT_EQ(init(), 4711);
    });
}

struct Limit {
    const char *text;
    const char *applied;  // null for none
};

class PropertiesLimit : public testing::TestWithParam<Limit> {};

TEST_P(PropertiesLimit, ComesFromTheEnvironment) {
    expect_in_child([] {
        setenv("ORU_PROPS_MAX_SIZE_BEFORE_HS", GetParam().text, 1);
        TraceCapture traces;
        oru_lib_init(nullptr, 0, nullptr);
        const auto found = traces.at(5);
        if (GetParam().applied == nullptr) {
            EXPECT_TRUE(found.empty());
        } else {
            EXPECT_EQ(
                found,
                (std::vector<std::string>{std::string("setting oru props max size before hash ") +
                                          GetParam().applied}));
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Texts, PropertiesLimit,
                         testing::Values(Limit{"100", "100"}, Limit{"abc", "0"}, Limit{"", "0"},
                                         Limit{"-1", nullptr}, Limit{"2147483647", nullptr},
                                         Limit{"2147483646", "2147483646"},
                                         Limit{"4294967299", "3"}, Limit{"2147483648", nullptr}));

TEST(LibInit, SymbolNamesComeFromTheEnvironment) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        setenv("ORU_DEFAULT_LIB_INIT", "other_init", 1);
        EXPECT_EQ(init(), 42);
    });
}

TEST(LibInit, AFileThatDoesNotOpenIsFatal) {
    EXPECT_FATAL(
        {
            use("no-such-file.so");
            init();
        },
        "halden_dlopen() Failed: no-such-file.so: cannot open shared object file");
}

// Which stands beside the libraries where the back ends are built, and has no such entry.
TEST(LibInit, WithoutANameTheDefaultFileIsOpened) {
    EXPECT_EXIT(
        {
            unsetenv("ORU_DEFAULT_LIB");
            setenv("ORU_DEFAULT_LIB_INIT", "no_such_init", 1);
            init();
        },
        testing::KilledBySignal(SIGABRT), "liborudbal.so|Failed to find dl symbol no_such_init");
}

TEST(LibInit, AMissingInitialisationIsFatal) {
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND);
            setenv("ORU_DEFAULT_LIB_INIT", "no_such_init", 1);
            init();
        },
        "Failed to find dl symbol no_such_init");
}

TEST(LibInit, ALaterEnvironmentDoesNotChangeTheBinding) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        EXPECT_EQ(init(), 4711);
        setenv("ORU_DEFAULT_LIB_INIT", "other_init", 1);
        setenv("ORU_DEFAULT_LIB_SHUTDOWN", "no_such_shutdown", 1);
        EXPECT_EQ(init(), 4711);
        EXPECT_EQ(oru_lib_shutdown(0, 0, 0, 0, 0, 0), 1000000);
        // Neither does shutting down.
        EXPECT_EQ(init(), 4711);
        EXPECT_EQ(oru_location_get_canonical_name(0, 0, 0, 0, 0, 0), 2000000);
    });
}

TEST(LibShutdown, HandsOnItsWords) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        init();
        EXPECT_EQ(oru_lib_shutdown(1, 2, 3, 4, 5, 6), 1123456);
        EXPECT_NE(g_lib_shutdown, nullptr);
    });
}

TEST(LibShutdown, IsFatalBeforeTheBinding) {
    EXPECT_FATAL(oru_lib_shutdown(0, 0, 0, 0, 0, 0), "Failed to find dl symbol (null)");
}

TEST(LibShutdown, AMissingSymbolShowsAtTheFirstCall) {
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND);
            setenv("ORU_DEFAULT_LIB_SHUTDOWN", "no_such_shutdown", 1);
            if (init() == 4711)
                oru_lib_shutdown(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol no_such_shutdown");
}

TEST(Location, CallsGoToTheBackEnd) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        init();
        EXPECT_EQ(oru_location_get_canonical_name(1, 2, 3, 4, 5, 6), 2123456);
        EXPECT_EQ(oru_location_from_canonical_name(1, 2, 3, 4, 5, 6), 3123456);
        EXPECT_EQ(oru_location_get_location_keys(1, 2, 3, 4, 5, 6), 4123456);
        EXPECT_EQ(oru_location_from_location_keys(1, 2, 3, 4, 5, 6), 5123456);
    });
}

// Its look-ups find the library's own defaults; the canonical names are found nowhere.
TEST(Location, KeysHaveDefaultsBehindABackEndThatDependsOnTheLibrary) {
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND_LINKED);
            EXPECT_EQ(init(), 4711);
            TraceCapture traces;
            EXPECT_EQ(oru_location_get_location_keys(0, 0, 0, 0, 0, 0), 2);
            int32_t status = 0;
            EXPECT_EQ(
                oru_location_from_location_keys(0, reinterpret_cast<intptr_t>(&status), 0, 0, 0, 0),
                -1);
            EXPECT_EQ(status, 2);
            EXPECT_EQ(traces.at(3).size(), 2u);
            if (!testing::Test::HasFailure())
                oru_location_get_canonical_name(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol _oru_location_get_canonical_name");
}

TEST(Location, KeysHaveDefaults) {
    expect_in_child([] {
        use(FAKE_BACKEND_BARE);
        setenv("ORU_DEFAULT_GET_LOC_KEYS", "no_such_keys", 1);
        setenv("ORU_DEFAULT_GET_LOC_FROM_KEYS", "no_such_keys", 1);
        EXPECT_EQ(init(), 4711);
        TraceCapture traces;
        EXPECT_EQ(oru_location_get_location_keys(0, 0, 0, 0, 0, 0), 2);
        int32_t status = 0;
        EXPECT_EQ(
            oru_location_from_location_keys(0, reinterpret_cast<intptr_t>(&status), 0, 0, 0, 0),
            -1);
        EXPECT_EQ(status, 2);
        EXPECT_EQ(traces.lines(),
                  (std::vector<Trace>{{3, "_oru location_get_location_keys is not defined"},
                                      {3, "_oru location_from_location_keys is not defined"}}));
    });
}

TEST(Location, CanonicalNamesHaveNone) {
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND_BARE);
            init();
            oru_location_get_canonical_name(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol _oru_location_get_canonical_name");
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND_BARE);
            init();
            oru_location_from_canonical_name(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol _oru_location_from_canonical_name");
    EXPECT_FATAL(oru_location_get_canonical_name(0, 0, 0, 0, 0, 0),
                 "Failed to find dl symbol (null)");
    EXPECT_FATAL(oru_location_from_canonical_name(0, 0, 0, 0, 0, 0),
                 "Failed to find dl symbol (null)");
}

TEST(Location, SymbolNamesComeFromTheEnvironment) {
    expect_in_child([] {
        use(FAKE_BACKEND);
        setenv("ORU_DEFAULT_GET_LOC_CANONICAL", "_oru_location_get_location_keys", 1);
        setenv("ORU_DEFAULT_GET_LOC_FROM_CANONICAL", "_oru_ev_session_open", 1);
        setenv("ORU_DEFAULT_GET_LOC_KEYS", "_oru_lib_shutdown", 1);
        setenv("ORU_DEFAULT_GET_LOC_FROM_KEYS", "_oru_location_get_canonical_name", 1);
        setenv("ORU_DEFAULT_LIB_SHUTDOWN", "_oru_cl_session_close", 1);
        EXPECT_EQ(init(), 4711);
        EXPECT_EQ(oru_location_get_canonical_name(1, 2, 3, 4, 5, 6), 4123456);
        EXPECT_EQ(oru_location_from_canonical_name(1, 2, 3, 4, 5, 6), 9123456);
        EXPECT_EQ(oru_location_get_location_keys(1, 2, 3, 4, 5, 6), 1123456);
        EXPECT_EQ(oru_location_from_location_keys(1, 2, 3, 4, 5, 6), 2123456);
        EXPECT_EQ(oru_lib_shutdown(1, 2, 3, 4, 5, 6), 6123456);
    });
}

TEST(Location, CanonicalNamesThatAreMissingAreToldAsAskedFor) {
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND);
            setenv("ORU_DEFAULT_GET_LOC_CANONICAL", "no_such_name", 1);
            init();
            oru_location_get_canonical_name(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol no_such_name");
    EXPECT_FATAL(
        {
            use(FAKE_BACKEND);
            setenv("ORU_DEFAULT_GET_LOC_FROM_CANONICAL", "no_such_name", 1);
            init();
            oru_location_from_canonical_name(0, 0, 0, 0, 0, 0);
        },
        "Failed to find dl symbol no_such_name");
}

TEST(Location, KeysOfTheDefaultNeedAPlaceForTheStatus) {
    EXPECT_ASSERTION(_oru_location_from_location_keys(0, nullptr, 0, 0, 0, 0), "status");
}

TEST(Location, PolicyIsAnsweredLocally) {
    EXPECT_EQ(oru_location_is_enabled(), 1);
    oru_location_update_from_env();
    EXPECT_STREQ(oru_get_system_root_uri_str(), "//");
    EXPECT_STREQ(oru_get_default_root_uri_str(), "//locations;locationId=global");
    EXPECT_STREQ(oru_get_default_provider_scope(), "global");
}

TEST(Location, TheLocalIdentifierIsKept) {
    expect_in_child([] {
        setenv("ORU_LOCATION", "node-7", 1);
        EXPECT_EQ(locationidStr, nullptr);
        const char *id = get_locationid_str();
        EXPECT_STREQ(id, "node-7");
        EXPECT_EQ(locationidStr, id);
        setenv("ORU_LOCATION", "node-8", 1);
        EXPECT_EQ(get_locationid_str(), id);
        poolheap_stats_t stats{};
        poolheap_tag_stats(0x290003c, &stats);
        EXPECT_EQ(stats.live_blocks, 1u);
    });
}

TEST(Location, TheLocalIdentifierNeedsMemory) {
    expect_in_child([] {
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(get_locationid_str(), nullptr);
        poolheap_fail_off();
        EXPECT_NE(get_locationid_str(), nullptr);
    });
}

TEST(Trace, TheModuleCanBeRegisteredAhead) {
    expect_in_child([] {
        EXPECT_EQ(oruapi_trace_init(), 0);
        const uint16_t id = g_oruapi_trace_module_id;
        EXPECT_NE(id, 0);
        EXPECT_EQ(oruapi_trace_init(), 0);
        EXPECT_EQ(g_oruapi_trace_module_id, id);
    });
}

}  // namespace
