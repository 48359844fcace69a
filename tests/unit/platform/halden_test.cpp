#include <dlfcn.h>
#include <gtest/gtest.h>
#include <oruplatform/halden.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

// The state in which the library hands a record over.
halden_location_t unfilled() {
    halden_location_t record{};
    record.type = 3;
    memset(record.ones, 0xff, sizeof record.ones);
    record.text[0] = static_cast<char>(0xff);
    return record;
}

struct Location : testing::Test {
    void TearDown() override { unsetenv("ORU_LOCATION"); }
    std::string printed(int32_t capacity) {
        std::string text(200, '#');
        EXPECT_EQ(halden_location_to_str(&record, text.data(), capacity), 0);
        EXPECT_EQ(text[static_cast<size_t>(capacity)], '#');
        return text.c_str();
    }
    halden_location_t record = unfilled();
};

using DlFn = void *(*)(const char *, int32_t);

int answer_of(void *handle) {
    auto *fn = reinterpret_cast<int (*)()>(dlsym(handle, "platform_probe_answer"));
    return fn == nullptr ? -1 : fn();
}

}  // namespace

TEST_F(Location, RecordIsTypeOnesAndText) {
    EXPECT_EQ(sizeof(halden_location_t), 72u);
    EXPECT_EQ(offsetof(halden_location_t, ones), 2u);
    EXPECT_EQ(offsetof(halden_location_t, text), 8u);
}

TEST_F(Location, EnvironmentNamesTheNode) {
    setenv("ORU_LOCATION", "rack-7/slot 2", 1);
    EXPECT_EQ(halden_resolve_local(0, &record), 0);
    EXPECT_EQ(printed(63), "rack-7/slot 2");
    EXPECT_EQ(record.type, 3);
    for (uint8_t byte : record.ones) {
        EXPECT_EQ(byte, 0xff);
    }
}

TEST_F(Location, HostNameIsTheDefault) {
    char host[256] = "";
    ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
    EXPECT_EQ(halden_resolve_local(0, &record), 0);
    EXPECT_EQ(printed(100), std::string(host).substr(0, 63));
    setenv("ORU_LOCATION", "", 1);
    EXPECT_EQ(halden_resolve_local(0, &record), 0);
    EXPECT_EQ(printed(100), std::string(host).substr(0, 63));
}

TEST_F(Location, LongNameIsCutAt63Characters) {
    setenv("ORU_LOCATION", std::string(63, 'a').c_str(), 1);
    EXPECT_EQ(halden_resolve_local(0, &record), 0);
    EXPECT_EQ(printed(64), std::string(63, 'a'));
    setenv("ORU_LOCATION", (std::string(63, 'b') + "cd").c_str(), 1);
    EXPECT_EQ(halden_resolve_local(0, &record), 0);
    EXPECT_EQ(printed(64), std::string(63, 'b'));
}

TEST_F(Location, ShorterNameLeavesNothingOfTheLongerOne) {
    setenv("ORU_LOCATION", "long name", 1);
    halden_resolve_local(0, &record);
    setenv("ORU_LOCATION", "x", 1);
    halden_resolve_local(0, &record);
    EXPECT_EQ(memcmp(record.text, "x\0\0\0\0\0\0\0\0", 9), 0);
}

TEST_F(Location, CapacityCountsTheZero) {
    setenv("ORU_LOCATION", "abcdef", 1);
    halden_resolve_local(0, &record);
    EXPECT_EQ(printed(7), "abcdef");
    EXPECT_EQ(printed(6), "abcde");
    EXPECT_EQ(printed(1), "");
}

TEST_F(Location, TextAreaWithoutAZeroEndsAtItsSize) {
    memset(record.text, 'q', sizeof record.text);
    EXPECT_EQ(printed(100), std::string(64, 'q'));
}

TEST_F(Location, BadArgumentsGive22) {
    char text[8] = "keep";
    EXPECT_EQ(halden_resolve_local(0, nullptr), 22);
    EXPECT_EQ(halden_location_to_str(&record, nullptr, 8), 22);
    EXPECT_EQ(halden_location_to_str(&record, text, 0), 22);
    EXPECT_EQ(halden_location_to_str(&record, text, -1), 22);
    EXPECT_STREQ(text, "keep");
    EXPECT_EQ(halden_location_to_str(nullptr, text, 8), 22);
    EXPECT_STREQ(text, "");
}

TEST_F(Location, RecordThatWasNeverFilledGives22) {
    char text[8] = "old";
    EXPECT_EQ(halden_location_to_str(&record, text, 8), 22);
    EXPECT_STREQ(text, "");
}

TEST(Loader, OpensByPathAndByNull) {
    void *handle = halden_dlopen(ORU_PROBE_FILE, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_EQ(answer_of(handle), 42);
    EXPECT_EQ(dlclose(handle), 0);
    handle = halden_dlopen(nullptr, RTLD_NOW);
    EXPECT_NE(handle, nullptr);
    dlclose(handle);
}

TEST(Loader, OpensWhatLiesBesideItself) {
    void *handle = halden_dlopen(ORU_PROBE_NAME, 0x102);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_EQ(answer_of(handle), 42);
    EXPECT_EQ(dlclose(handle), 0);
}

TEST(Loader, FailureIsReadableThroughDlerror) {
    dlerror();
    EXPECT_EQ(halden_dlopen("no_such_library.so", 0x102), nullptr);
    const char *words = dlerror();
    ASSERT_NE(words, nullptr);
    EXPECT_NE(strstr(words, "no_such_library.so"), nullptr);
}

#ifndef ORUAPI_SANITIZED
// A second copy of the library in a folder of its own: nobody's search path but its own leads
// there.
TEST(Loader, MovedFolderStillFindsItsLibraries) {
    namespace fs = std::filesystem;
    char folder[] = "/tmp/oruplatform-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const fs::path moved(folder);
    fs::create_directories(moved / "bin");
    fs::create_directories(moved / "lib");
    fs::copy_file(ORU_PLATFORM_FILE, moved / "bin/copy_of_platform.so");
    fs::copy_file(ORU_PROBE_FILE, moved / "bin/moved_beside.so");
    fs::copy_file(ORU_PROBE_FILE, moved / "lib/moved_to_lib.so");
    void *copy = dlopen((moved / "bin/copy_of_platform.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(copy, nullptr) << dlerror();
    auto open = reinterpret_cast<DlFn>(dlsym(copy, "halden_dlopen"));
    ASSERT_NE(open, nullptr);
    EXPECT_EQ(dlopen("moved_beside.so", RTLD_NOW), nullptr);
    void *beside = open("moved_beside.so", RTLD_NOW);
    void *in_lib = open("moved_to_lib.so", RTLD_NOW);
    EXPECT_EQ(answer_of(beside), 42);
    EXPECT_EQ(answer_of(in_lib), 42);
    dlclose(beside);
    dlclose(in_lib);
    fs::remove_all(moved);
}
#endif
