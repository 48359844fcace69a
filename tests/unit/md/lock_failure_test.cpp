// What the store does when its lock fails, or the resolution of a store. The program brings a
// thread layer of three operations, and stores whose resolution can be made to fail.
#include <dlfcn.h>
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/uri.h>

#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {
int32_t lock_result, unlock_result, unlocks;
int32_t resolve_result, failing_pass;
int32_t (*resolve_refs)(ORUMdMap *, int32_t);

int32_t resolve_or_fail(ORUMdMap *store, int32_t pass) {
    const int32_t code = resolve_refs(store, pass);
    return pass == failing_pass ? resolve_result : code;
}
}  // namespace

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
ORU_API ORUMdMap *oru_md_map_new() {
    const auto real = reinterpret_cast<ORUMdMap *(*)()>(dlsym(RTLD_NEXT, "oru_md_map_new"));
    auto *store = real();
    resolve_refs = store->oru_md_resolve_refs;
    store->oru_md_resolve_refs = resolve_or_fail;
    return store;
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

// ---- Bundles, and resolution that fails ----

class BundleFailure : public BundleTest {
  protected:
    void SetUp() override {
        lock_result = unlock_result = resolve_result = failing_pass = 0;
        write_bundle("A", lib_package(resources(resource("M", ""))));
    }
    void TearDown() override {
        lock_result = unlock_result = resolve_result = failing_pass = 0;
        oru_md_free();
    }
    static bool loaded() { return oru_md_get_mr_meta_by_name("com.lib/M") != nullptr; }
    const char *const names[2] = {"A", nullptr};
};

TEST_F(BundleFailure, UnlockThatFailedIsToldOfALoadThatDidNot) {
    unlock_result = 22;
    EXPECT_EQ(oru_md_load_pkg_list(names, nullptr, nullptr), 10001);
    EXPECT_TRUE(loaded());
}

TEST_F(BundleFailure, LockIsTheCallersWithOutputs) {
    lock_result = unlock_result = 22;
    unlocks = 0;
    ORUMdPkgBundle *first = nullptr;
    EXPECT_EQ(oru_md_load_pkg_list(names, &first, nullptr), 0);
    EXPECT_EQ(unlocks, 0);
    EXPECT_TRUE(loaded());
}

TEST_F(BundleFailure, ResolutionThatFailsFailsTheLoadInEachPass) {
    for (const int32_t pass : {1, 2}) {
        failing_pass = pass;
        resolve_result = 107;
        TraceCapture traces(3);
        EXPECT_EQ(oru_md_load_pkg_list(names, nullptr, nullptr), 107);
        EXPECT_EQ(traces.at(3),
                  std::vector<std::string>{"Failed to resolve references in the metadata\n"});
        EXPECT_FALSE(loaded());
    }
}

TEST_F(BundleFailure, ResolutionThatFailsLeavesNoStoreOfADirectory) {
    for (const int32_t pass : {1, 2}) {
        failing_pass = pass;
        resolve_result = 107;
        TraceCapture traces(3);
        EXPECT_EQ(oru_md_load_dir("A/usr", "/halden/etc/oru2d", ".oru2d", nullptr), 0);
        EXPECT_EQ(traces.at(3),
                  std::vector<std::string>{"Failed to resolve refs in /halden/etc/oru2d"});
        EXPECT_FALSE(loaded());
    }
}

}  // namespace
