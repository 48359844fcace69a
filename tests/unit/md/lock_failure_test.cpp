// What the store does when its lock fails. The program brings a thread layer of three operations.
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/uri.h>

#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {
int32_t lock_result, unlock_result, unlocks;
}

extern "C" {
ORU_API int32_t oru_rwlock_wrlock(oru_rwlock_t *) {
    return lock_result;
}
ORU_API int32_t oru_rwlock_rdlock(oru_rwlock_t *) {
    return lock_result;
}
ORU_API int32_t oru_rwlock_unlock(oru_rwlock_t *) {
    ++unlocks;
    return unlock_result;
}
}

namespace {

using namespace oru::test;

class LockFailure : public StoreTest {
  protected:
    void SetUp() override {
        lock_result = unlock_result = 0;
        folder.write("a.oru2d", lib_package(resources(resource("M", ""))));
        ASSERT_NE(load(), nullptr);
        unlocks = 0;
    }
    void TearDown() override {
        lock_result = unlock_result = 0;
        oru_md_free();
    }
    static bool loaded() { return oru_md_get_mr_meta_by_name("com.lib/M") != nullptr; }
    int32_t load_again() { return oru_md_load_dir(folder.path().c_str(), "", ".oru2d", nullptr); }
};

TEST_F(LockFailure, IsASystemCallThatFailedWithoutATrace) {
    lock_result = unlock_result = 22;
    TraceCapture traces;
    EXPECT_EQ(oru_md_wrlock(), 10001);
    EXPECT_EQ(oru_md_rdlock(), 10001);
    EXPECT_EQ(oru_md_unlock(), 10001);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
}

TEST_F(LockFailure, FreeChangesNothing) {
    lock_result = 22;
    EXPECT_EQ(oru_md_free(), 10001);
    EXPECT_EQ(unlocks, 0);
    EXPECT_TRUE(loaded());
}

TEST_F(LockFailure, FreeTellsOfAnUnlockThatFailed) {
    unlock_result = 22;
    EXPECT_EQ(oru_md_free(), 10001);
    EXPECT_FALSE(loaded());
}

TEST_F(LockFailure, LoadOfADirectoryDeletesTheStoreAndUnlocks) {
    lock_result = 22;
    EXPECT_EQ(load_again(), 10001);
    EXPECT_EQ(unlocks, 1);
    EXPECT_FALSE(loaded());
}

TEST_F(LockFailure, LoadOfADirectoryTellsOfAnUnlockThatFailed) {
    unlock_result = 22;
    EXPECT_EQ(load_again(), 10001);
    EXPECT_TRUE(loaded());
}

TEST_F(LockFailure, LoadOfBundlesDeletesTheStoreAndUnlocks) {
    const char *const names[] = {"A", nullptr};
    lock_result = 22;
    EXPECT_EQ(oru_md_load_pkg_list(names, nullptr, nullptr), 10001);
    EXPECT_EQ(unlocks, 1);
    EXPECT_FALSE(loaded());
}

TEST_F(LockFailure, LoadOfBundlesKeepsTheCodeOfItsFailure) {
    unlock_result = 22;
    EXPECT_EQ(oru_md_load_pkg_list(nullptr, nullptr, nullptr), 10000);
    EXPECT_EQ(unlocks, 1);
}

TEST_F(LockFailure, RootTypeStaysAsItIs) {
    folder.write("b.oru2d", impl_package(resources(resource("System", ""))));
    oru_md_free();
    ASSERT_NE(load(), nullptr);
    oru_md_set_root_mr_type("com.impl/System");
    lock_result = 22;
    oru_md_set_root_mr_type("com.none/System");
    auto *uri = oru_do_uri_new("//");
    int32_t rest = 0;
    EXPECT_EQ(oru_md_get_mr_meta_by_uri(uri, 0, nullptr, &rest, nullptr, nullptr, nullptr),
              oru_md_get_mr_meta_by_name("com.impl/System"));
    oru_do_uri_deref(uri);
}

}  // namespace
