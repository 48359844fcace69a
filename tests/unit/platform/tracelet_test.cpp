#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr uint32_t word(uint32_t level) {
    return level << TRACELET_LEVEL_SHIFT;
}

const char *const kFormats[] = {"plain", "number %d and '%s'", "line\n", "%s",
                                nullptr, "lines\n\n"};

struct Seen {
    std::string module;
    uint32_t level;
    std::string text;
    std::string place;
};

void note(void *context, const char *module, uint32_t level, const char *text,
          const tracelet_place_t *place) {
    std::ostringstream where;
    if (place != nullptr) {
        where << (place->file != nullptr ? place->file : "?") << ":" << place->line << ":"
              << (place->element != nullptr ? place->element : "?");
    }
    static_cast<std::vector<Seen> *>(context)->push_back({module, level, text, where.str()});
}

struct Tracelet : testing::Test {
    Tracelet() {
        EXPECT_EQ(tracelet_module_init_fn("testmodule", &module, nullptr), 0);
        tracelet_set_sink(note, &seen);
    }
    ~Tracelet() override {
        tracelet_set_sink(nullptr, nullptr);
        tracelet_set_threshold(0);
    }
    uint16_t module = 0;
    std::vector<Seen> seen;
};

// Writes to the ordinary output in a child that starts anew with the environment of now.
struct TraceletOutput : testing::Test {
    TraceletOutput() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
    ~TraceletOutput() override {
        testing::FLAGS_gtest_death_test_style = "fast";
        unsetenv("ORU_TRACE_LEVEL");
        unsetenv("ORU_TRACE_FILE");
    }
};

[[noreturn]] void emit_all_levels() {
    uint16_t id = 0;
    tracelet_module_init_fn("mod", &id, nullptr);
    static const char *const formats[] = {"level %u"};
    for (uint32_t level = 0; level <= 8; level++) {
        tracelet_emit(formats, 0, id, word(level), level);
    }
    _exit(0);
}

[[noreturn]] void emit_one(uint32_t index) {
    uint16_t id = 0;
    tracelet_module_init_fn("mod", &id, nullptr);
    tracelet_emit(kFormats, index, id, 0, 5, "x");
    fputs("|", stderr);
    _exit(0);
}

#define STAMP "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z \\[[0-9]+\\] "

}  // namespace

TEST_F(Tracelet, SinkGetsModuleLevelAndText) {
    tracelet_set_threshold(8);
    EXPECT_EQ(tracelet_emit(kFormats, 1, module, word(3), 7, "seven"), 0);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].module, "testmodule");
    EXPECT_EQ(seen[0].level, 3u);
    EXPECT_EQ(seen[0].text, "number 7 and 'seven'");
    EXPECT_EQ(seen[0].place, "");
}

TEST_F(Tracelet, SinkGetsTheTextAsFormattedLineEndIncluded) {
    tracelet_set_threshold(8);
    tracelet_emit(kFormats, 2, module, word(8));
    EXPECT_EQ(seen.at(0).text, "line\n");
}

TEST_F(Tracelet, LevelsAboveTheThresholdAreNotRecorded) {
    tracelet_set_threshold(5);
    EXPECT_EQ(tracelet_threshold, 0x5000000u);
    EXPECT_EQ(tracelet_get_threshold(), 5u);
    for (uint32_t level : {3u, 5u, 6u, 8u}) {
        tracelet_emit(kFormats, 0, module, word(level));
    }
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].level, 3u);
    EXPECT_EQ(seen[1].level, 5u);
}

TEST_F(Tracelet, ThresholdIsBounded) {
    tracelet_set_threshold(100);
    EXPECT_EQ(tracelet_threshold, 0x8000000u);
}

TEST_F(Tracelet, TheWordItselfMayBeSet) {
    tracelet_threshold = 0x7000000;
    EXPECT_EQ(tracelet_get_threshold(), 7u);
    tracelet_emit(kFormats, 0, module, word(7));
    tracelet_emit(kFormats, 0, module, word(8));
    EXPECT_EQ(seen.size(), 1u);
}

TEST_F(Tracelet, SameNameGetsTheSameNumber) {
    uint16_t again = 0, other = 0;
    EXPECT_EQ(tracelet_module_init_fn("testmodule", &again, &again), 0);
    EXPECT_EQ(tracelet_module_init_fn("othermodule", &other, nullptr), 0);
    EXPECT_EQ(again, module);
    EXPECT_NE(other, module);
    EXPECT_NE(other, 0);
}

TEST_F(Tracelet, ModuleNamesAreCopied) {
    char name[] = "transient";
    uint16_t id = 0;
    tracelet_module_init_fn(name, &id, nullptr);
    name[0] = '#';
    tracelet_set_threshold(8);
    tracelet_emit(kFormats, 0, id, word(3));
    EXPECT_EQ(seen.at(0).module, "transient");
}

TEST_F(Tracelet, BadArgumentsOfRegistrationGive22) {
    uint16_t id = 77;
    EXPECT_EQ(tracelet_module_init_fn(nullptr, &id, nullptr), 22);
    EXPECT_EQ(tracelet_module_init_fn("x", nullptr, nullptr), 22);
    EXPECT_EQ(id, 77);
}

TEST_F(Tracelet, FullModuleTableGives12) {
    EXPECT_EXIT(
        {
            uint16_t id = 0;
            int32_t code = 0;
            for (int i = 0; i < TRACELET_MAX_MODULES; i++) {
                code = tracelet_module_init_fn(std::string("m").append(std::to_string(i)).c_str(),
                                               &id, nullptr);
            }
            uint16_t old = 0;
            const bool known = tracelet_module_init_fn("testmodule", &old, nullptr) == 0;
            _exit(code == 12 && known ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Tracelet, UnknownNumbersAndEmptyTableEntriesDoNoHarm) {
    tracelet_set_threshold(8);
    tracelet_emit(kFormats, 0, 9999, word(3));
    tracelet_emit(kFormats, 0, 0, word(3));
    EXPECT_EQ(tracelet_emit(nullptr, 0, module, word(3)), 0);
    EXPECT_EQ(tracelet_emit(kFormats, 4, module, word(3)), 0);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].module, "?");
    EXPECT_EQ(seen[1].module, "?");
}

TEST_F(Tracelet, LongTextsAreWhole) {
    tracelet_set_threshold(8);
    for (size_t length : {1022u, 1023u, 1024u, 1025u, 100000u}) {
        const std::string text(length, 'y');
        tracelet_emit(kFormats, 3, module, word(3), text.c_str());
        EXPECT_EQ(seen.back().text, text);
    }
}

TEST_F(Tracelet, FailingAllocatorDoesNotTouchMessages) {
    tracelet_set_threshold(8);
    poolheap_fail_nth(1, 1);
    const std::string text(5000, 'y');
    tracelet_emit(kFormats, 3, module, word(3), text.c_str());
    poolheap_fail_off();
    EXPECT_EQ(poolheap_fail_calls(), 0u);
    EXPECT_EQ(seen.at(0).text, text);
}

TEST_F(Tracelet, InnermostPlaceGoesWithTheMessage) {
    tracelet_set_threshold(8);
    tracelet_place_push("a.xml", 3, "outer");
    tracelet_place_push("b.xml", 14, "inner");
    tracelet_emit(kFormats, 0, module, word(3));
    tracelet_place_pop();
    tracelet_emit(kFormats, 0, module, word(3));
    tracelet_place_pop();
    tracelet_emit(kFormats, 0, module, word(3));
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].place, "b.xml:14:inner");
    EXPECT_EQ(seen[1].place, "a.xml:3:outer");
    EXPECT_EQ(seen[2].place, "");
}

TEST_F(Tracelet, PlacesBeyondTheBoundAreCountedOnly) {
    tracelet_set_threshold(8);
    for (int i = 1; i <= TRACELET_MAX_PLACES + 5; i++) {
        tracelet_place_push("f", i, nullptr);
    }
    tracelet_emit(kFormats, 0, module, word(3));
    for (int i = 0; i < 6; i++) {
        tracelet_place_pop();
    }
    tracelet_emit(kFormats, 0, module, word(3));
    EXPECT_EQ(seen[0].place, "f:64:?");
    EXPECT_EQ(seen[1].place, "f:63:?");
    for (int i = 0; i < TRACELET_MAX_PLACES; i++) {
        tracelet_place_pop();
    }
    tracelet_emit(kFormats, 0, module, word(3));
    EXPECT_EQ(seen[2].place, "");
}

TEST_F(Tracelet, SinkThatSendsMessagesIsNotCalledFromItself) {
    tracelet_set_threshold(8);
    static uint16_t id;
    static int calls;
    id = module, calls = 0;
    tracelet_set_sink(
        [](void *, const char *, uint32_t, const char *, const tracelet_place_t *) {
            calls++;
            tracelet_emit(kFormats, 0, id, word(3));
        },
        nullptr);
    testing::internal::CaptureStderr();
    tracelet_emit(kFormats, 0, module, word(3));
    EXPECT_EQ(calls, 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("L3 testmodule: plain\n"),
              std::string::npos);
}

TEST_F(Tracelet, LevelZeroIsWrittenOutBesideTheSink) {
    testing::internal::CaptureStderr();
    tracelet_emit(kFormats, 0, module, 0);
    tracelet_set_threshold(3);
    tracelet_emit(kFormats, 0, module, word(3));
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("L0 testmodule: plain\n"), std::string::npos);
    EXPECT_EQ(text.find("L3"), std::string::npos);
    EXPECT_EQ(seen.size(), 2u);
}

TEST_F(TraceletOutput, LineHasTimeThreadLevelAndModule) {
    EXPECT_EXIT(emit_one(1), testing::ExitedWithCode(0),
                "^" STAMP "L0 mod: number 5 and 'x'\n\\|$");
}

TEST_F(TraceletOutput, LineEndOfAFormatIsNotDoubled) {
    EXPECT_EXIT(emit_one(2), testing::ExitedWithCode(0), "^" STAMP "L0 mod: line\n\\|$");
    EXPECT_EXIT(emit_one(5), testing::ExitedWithCode(0), "^" STAMP "L0 mod: lines\n\n\\|$");
}

TEST_F(TraceletOutput, LineEndsWithThePlace) {
    EXPECT_EXIT((tracelet_place_push("p.xml", 12, "mr"), emit_one(0)), testing::ExitedWithCode(0),
                "L0 mod: plain \\(p.xml:12: mr\\)\n");
    EXPECT_EXIT((tracelet_place_push("p.xml", 12, nullptr), emit_one(0)),
                testing::ExitedWithCode(0), "L0 mod: plain \\(p.xml:12\\)\n");
    EXPECT_EXIT((tracelet_place_push(nullptr, 12, "mr"), emit_one(0)), testing::ExitedWithCode(0),
                "L0 mod: plain \\(\\?:12: mr\\)\n");
}

TEST_F(TraceletOutput, DefaultLevelIsZero) {
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "^" STAMP "L0 mod: level 0\n$");
}

TEST_F(TraceletOutput, EnvironmentSetsTheLevel) {
    setenv("ORU_TRACE_LEVEL", "3", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "L2 mod: level 2\n.*L3.*level 3\n$");
    setenv("ORU_TRACE_LEVEL", "99", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "level 8\n$");
    setenv("ORU_TRACE_LEVEL", "-1", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "level 0\n$");
    setenv("ORU_TRACE_LEVEL", "loud", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "level 0\n$");
}

TEST_F(TraceletOutput, EnvironmentNamesTheFile) {
    const std::string name = testing::TempDir() + "oruplatform-trace-test";
    unlink(name.c_str());
    setenv("ORU_TRACE_FILE", name.c_str(), 1);
    setenv("ORU_TRACE_LEVEL", "1", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "^$");
    std::stringstream text;
    text << std::ifstream(name).rdbuf();
    unlink(name.c_str());
    EXPECT_NE(text.str().find("L0 mod: level 0\n"), std::string::npos);
    EXPECT_NE(text.str().find("L1 mod: level 1\n"), std::string::npos);
    EXPECT_EQ(text.str().find("level 2"), std::string::npos);
}

TEST_F(TraceletOutput, FileThatCannotBeOpenedMeansStandardError) {
    setenv("ORU_TRACE_FILE", "/no/such/folder/trace", 1);
    EXPECT_EXIT(emit_all_levels(), testing::ExitedWithCode(0), "level 0\n$");
}

TEST_F(TraceletOutput, LevelZeroGetsOutBeforeAbort) {
    EXPECT_EXIT((fputs("", stderr), tracelet_emit(kFormats, 0, 0, 0), abort()),
                testing::KilledBySignal(SIGABRT), "L0 \\?: plain\n");
}
