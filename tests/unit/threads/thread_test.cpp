#include <pthread.h>

#include <string>

#include "support.h"

namespace oru::threads::test {
namespace {

void *give_back(void *argument) {
    return argument;
}

// What the thread found out about itself.
struct SelfView {
    oru_thread_t handle = 0;
    uint64_t id = 0;
    char name[16] = "";
};

void *look_at_self(void *view) {
    auto *self = static_cast<SelfView *>(view);
    self->handle = oru_self_thread();
    self->id = oru_self_thread_id();
    pthread_getname_np(pthread_self(), self->name, sizeof self->name);
    return nullptr;
}

std::string system_name_with(const oru_thread_attr_t *attributes) {
    SelfView view;
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, attributes, look_at_self, &view), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 0);
    return view.name;
}

TEST(ThreadCreate, NullArgumentsGive22AndWriteNothing) {
    oru_thread_t thread = 99;
    EXPECT_EQ(oru_thread_create(nullptr, nullptr, give_back, nullptr), 22);
    EXPECT_EQ(oru_thread_create(&thread, nullptr, nullptr, nullptr), 22);
    EXPECT_EQ(thread, 99u);
}

TEST(ThreadCreate, DestroyedAttributesGive22) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    oru_thread_t thread = 99;
    EXPECT_EQ(oru_thread_attr_destroy(&attributes), 0);
    EXPECT_EQ(oru_thread_create(&thread, &attributes, give_back, nullptr), 22);
    EXPECT_EQ(thread, 99u);
}

TEST(ThreadCreate, NameIsCutTo15BytesForTheSystem) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_thread_attr_setname(&attributes, kLongName), 0);
    EXPECT_EQ(system_name_with(&attributes), "abcdefghijklmno");
    EXPECT_EQ(oru_thread_attr_setname(&attributes, "worker"), 0);
    EXPECT_EQ(system_name_with(&attributes), "worker");
}

TEST(ThreadCreate, WithoutNameKeepsItsMakers) {
    char own[16] = "";
    pthread_getname_np(pthread_self(), own, sizeof own);
    const oru_thread_attr_t nameless = ORU_THREAD_NAMED("");
    EXPECT_EQ(system_name_with(nullptr), own);
    EXPECT_EQ(system_name_with(&nameless), own);
}

TEST(ThreadJoin, GivesTheResult) {
    int value = 0;
    void *result = nullptr;
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, nullptr, give_back, &value), 0);
    EXPECT_NE(thread, 0u);
    EXPECT_EQ(oru_thread_join(thread, &result), 0);
    EXPECT_EQ(result, &value);
}

TEST(ThreadJoin, TakesTheResultOfPthreadExitToo) {
    int value = 0;
    void *result = nullptr;
    oru_thread_t thread = 0;
    const auto leave = [](void *argument) -> void * { pthread_exit(argument); };
    EXPECT_EQ(oru_thread_create(&thread, nullptr, leave, &value), 0);
    EXPECT_EQ(oru_thread_join(thread, &result), 0);
    EXPECT_EQ(result, &value);
}

TEST(ThreadJoin, HandleZeroGives22) {
    void *result = &result;
    EXPECT_EQ(oru_thread_join(0, &result), 22);
    EXPECT_EQ(result, &result);
}

TEST(ThreadJoin, HandleOutOfUseGives3) {
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, nullptr, give_back, nullptr), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 3);
    EXPECT_EQ(oru_thread_detach(thread), 3);
    EXPECT_EQ(oru_thread_join(UINTPTR_MAX, nullptr), 3);
}

TEST(ThreadJoin, OfItselfGives35) {
    EXPECT_EQ(oru_thread_join(oru_self_thread(), nullptr), 35);
    EXPECT_EQ(in_other_thread([] { return oru_thread_join(oru_self_thread(), nullptr); }), 35);
}

TEST(ThreadJoin, OfAThreadNotMadeHereGives3) {
    const oru_thread_t main_thread = oru_self_thread();
    EXPECT_EQ(in_other_thread([&] { return oru_thread_join(main_thread, nullptr); }), 3);
    EXPECT_EQ(in_other_thread([&] { return oru_thread_detach(main_thread); }), 3);
}

TEST(ThreadJoin, WhileSomebodyElseJoinsGives22) {
    oru_sem_t leave = ORU_THREAD_NAMED("");
    oru_thread_t thread = 0;
    const auto wait_for = [](void *semaphore) -> void * {
        oru_sem_wait(static_cast<oru_sem_t *>(semaphore));
        return nullptr;
    };
    EXPECT_EQ(oru_thread_create(&thread, nullptr, wait_for, &leave), 0);
    // Of two joiners one gets 22 at once and lets the thread go; the other one then gets 0.
    int32_t results[2] = {-1, -1};
    const auto join = [&](int index) {
        results[index] = oru_thread_join(thread, nullptr);
        if (results[index] == 22) {
            EXPECT_EQ(oru_thread_detach(thread), 22);
            EXPECT_EQ(oru_sem_post(&leave), 0);
        }
    };
    {
        const Thread a([&] { join(0); }), b([&] { join(1); });
    }
    EXPECT_EQ(results[0] + results[1], 22);
    EXPECT_TRUE(results[0] == 0 || results[1] == 0);
}

// A detached thread says through a semaphore that it ran.
void *post(void *semaphore) {
    oru_sem_post(static_cast<oru_sem_t *>(semaphore));
    return nullptr;
}

TEST(ThreadDetach, DetachedThreadRunsAndCannotBeJoined) {
    static oru_sem_t ran;
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, nullptr, post, &ran), 0);
    EXPECT_EQ(oru_thread_detach(thread), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 3);
    EXPECT_EQ(oru_thread_detach(thread), 3);
    EXPECT_EQ(oru_sem_wait(&ran), 0);
}

TEST(ThreadDetach, HandleZeroGives22) {
    EXPECT_EQ(oru_thread_detach(0), 22);
}

TEST(ThreadDetach, ThreadMayDetachItselfAtOnce) {
    static oru_sem_t ran;
    oru_thread_t thread = 0;
    const auto detach_self = [](void *) -> void * {
        EXPECT_EQ(oru_thread_detach(oru_self_thread()), 0);
        EXPECT_EQ(oru_thread_detach(oru_self_thread()), 3);
        return post(&ran);
    };
    EXPECT_EQ(oru_thread_create(&thread, nullptr, detach_self, nullptr), 0);
    EXPECT_EQ(oru_sem_wait(&ran), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 3);
}

TEST(ThreadDetach, AttributeMakesTheThreadDetached) {
    static oru_sem_t ran;
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_attr_setdetachstate(&attributes, 1), 0);
    EXPECT_EQ(oru_thread_create(&thread, &attributes, post, &ran), 0);
    EXPECT_NE(thread, 0u);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 3);
    EXPECT_EQ(oru_sem_wait(&ran), 0);
}

TEST(ThreadDetach, AttributeTakenBackMakesItJoinable) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_attr_setdetachstate(&attributes, -1), 0);
    EXPECT_EQ(oru_thread_attr_setdetachstate(&attributes, 0), 0);
    EXPECT_EQ(oru_thread_create(&thread, &attributes, give_back, nullptr), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 0);
}

TEST(ThreadCleanup, ForgetsTheHandleOnly) {
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, nullptr, give_back, nullptr), 0);
    const oru_thread_t copy = thread;
    EXPECT_EQ(oru_thread_cleanup(&thread), 0);
    EXPECT_EQ(thread, 0u);
    EXPECT_EQ(oru_thread_cleanup(&thread), 0);
    EXPECT_EQ(oru_thread_join(copy, nullptr), 0);
    EXPECT_EQ(oru_thread_cleanup(nullptr), 22);
}

TEST(ThreadSelf, SeesTheHandleThatItsMakerGot) {
    SelfView view;
    oru_thread_t thread = 0;
    EXPECT_EQ(oru_thread_create(&thread, nullptr, look_at_self, &view), 0);
    EXPECT_EQ(oru_thread_join(thread, nullptr), 0);
    EXPECT_EQ(view.handle, thread);
    EXPECT_EQ(view.id, oru_thread_id(thread));
}

TEST(ThreadSelf, NumbersAreStableDistinctAndNeverZero) {
    const uint64_t own = oru_self_thread_id();
    EXPECT_NE(own, 0u);
    EXPECT_NE(oru_self_thread(), 0u);
    EXPECT_EQ(oru_thread_id(oru_self_thread()), own);
    uint64_t first = 0;
    uint64_t second = 0;
    in_other_thread([&] { return first = oru_self_thread_id(), 0; });
    in_other_thread([&] { return second = oru_self_thread_id(), 0; });
    EXPECT_NE(first, 0u);
    EXPECT_NE(second, 0u);
    EXPECT_NE(first, second);
    EXPECT_NE(first, own);
    EXPECT_NE(second, own);
    EXPECT_EQ(oru_self_thread_id(), own);
    EXPECT_EQ(oru_thread_id(0), 0u);
}

TEST(ThreadSelf, ThreadsNotMadeHereHaveHandlesToo) {
    SelfView view;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, look_at_self, &view), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_NE(view.handle, 0u);
    EXPECT_NE(view.handle, oru_self_thread());
    EXPECT_EQ(view.id, oru_thread_id(view.handle));
}

TEST(ThreadRegistry, KeepsManyThreadsApart) {
    // More than the registry has buckets, joined in another order than made.
    constexpr int kThreads = 300;
    int values[kThreads];
    oru_thread_t threads[kThreads] = {};
    for (int i = 0; i < kThreads; ++i) {
        ASSERT_EQ(oru_thread_create(&threads[i], nullptr, give_back, &values[i]), 0);
    }
    for (int step = 0; step < kThreads; ++step) {
        const int i = step * 7 % kThreads;
        void *result = nullptr;
        EXPECT_EQ(oru_thread_join(threads[i], &result), 0);
        EXPECT_EQ(result, &values[i]);
    }
}

}  // namespace
}  // namespace oru::threads::test
