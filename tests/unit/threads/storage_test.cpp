#include <type_traits>

#include "support.h"

namespace oru::threads::test {
namespace {

template <typename Storage>
constexpr bool kHasTheLayout = sizeof(Storage) == 128 && alignof(Storage) == 16 &&
                               offsetof(Storage, name) == 0 && offsetof(Storage, state) == 32;

TEST(ThreadStorage, Is128BytesAlignedTo16WithTheNameInFront) {
    EXPECT_TRUE(kHasTheLayout<oru_mtx_t>);
    EXPECT_TRUE(kHasTheLayout<oru_rwlock_t>);
    EXPECT_TRUE(kHasTheLayout<oru_cond_t>);
    EXPECT_TRUE(kHasTheLayout<oru_sem_t>);
    EXPECT_TRUE(kHasTheLayout<oru_thread_attr_t>);
    EXPECT_TRUE((std::is_same_v<oru_thread_t, uintptr_t>));
}

TEST(ThreadStorage, NamedInitialiserNamesAndZeroesTheRest) {
    static const oru_rwlock_t lock = ORU_THREAD_NAMED("meta_rwlock");
    const unsigned char zero[96] = {};
    EXPECT_STREQ(lock.name, "meta_rwlock");
    EXPECT_EQ(std::memcmp(lock.state, zero, sizeof zero), 0);
}

TEST(ThreadLibraryInit, GivesZeroWithAndWithoutSetup) {
    EXPECT_EQ(oruapi_thread_library_init(0), 0);
    EXPECT_EQ(oruapi_thread_library_init(1), 0);
}

}  // namespace
}  // namespace oru::threads::test
