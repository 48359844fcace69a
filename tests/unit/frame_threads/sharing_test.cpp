// What several threads may do at once: raise and release the count of one object, make and release
// objects of one type.
#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "oru/error.h"
#include "oru/strbuf.h"
#include "oru/thread.h"
#include "tests/support/trace_capture.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

// Runs `body` on four threads of the thread layer at once and waits for all.
void on_threads(void *(*body)(void *), void *argument) {
    std::array<oru_thread_t, kThreads> threads{};
    for (oru_thread_t &thread : threads)
        ASSERT_EQ(oru_thread_create(&thread, nullptr, body, argument), 0);
    for (const oru_thread_t thread : threads)
        ASSERT_EQ(oru_thread_join(thread, nullptr), 0);
}

void *raise_and_release(void *argument) {
    auto *buf = static_cast<ORUDoStrbuf *>(argument);
    for (int i = 0; i < kRounds; ++i) {
        EXPECT_EQ(oru_do_strbuf_ref(buf), buf);
        oru_do_strbuf_deref(buf);
    }
    return nullptr;
}

TEST(Sharing, NoCountIsLost) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    on_threads(raise_and_release, buf);
    oru::test::TraceCapture traces(8);
    oru_do_strbuf_deref(buf);
    char words[100];
    std::snprintf(words, sizeof words, "oru deref oru_do_strbuf %p 1", static_cast<void *>(buf));
    EXPECT_TRUE(traces.has(8, words));
}

void *only_release(void *argument) {
    auto *buf = static_cast<ORUDoStrbuf *>(argument);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf), "shared");
    oru_do_strbuf_deref(buf);
    return nullptr;
}

// Whichever thread is the last one destroys the object; live blocks are compared behind the test.
TEST(Sharing, TheLastThreadDestroysTheObject) {
    for (int round = 0; round < 50; ++round) {
        ORUDoStrbuf *buf = oru_do_strbuf_new();
        oru_do_strbuf_add_string(buf, "shared");
        for (int i = 1; i < kThreads; ++i)
            oru_do_strbuf_ref(buf);
        on_threads(only_release, buf);
    }
}

void *make_and_release(void *) {
    std::vector<ORUDoError *> errors(32);
    for (int round = 0; round < 100; ++round) {
        for (size_t i = 0; i < errors.size(); ++i) {
            ORUDoError *cause = i > 0 ? errors[i - 1] : nullptr;
            errors[i] = oru_do_error_new_w_cause(static_cast<int32_t>(i), "text", cause);
        }
        for (ORUDoError *err : errors)
            oru_do_error_deref(err);
    }
    return nullptr;
}

TEST(Sharing, EveryThreadMakesObjectsOfItsOwn) {
    on_threads(make_and_release, nullptr);
}

// A list that is finished may be read by all.
void *read_list(void *argument) {
    auto *list = static_cast<ORUDoErrorList *>(argument);
    for (int round = 0; round < 1000; ++round) {
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        oru_do_error_list_iter(list, &iter);
        for (int32_t code = 0; oru_do_error_list_has_next(&iter) != 0; ++code) {
            ORUDoError *err = oru_do_error_ref(oru_do_error_list_get_next(&iter));
            EXPECT_EQ(oru_do_error_get_code(err), code);
            oru_do_error_deref(err);
        }
    }
    return nullptr;
}

TEST(Sharing, FinishedObjectsAreReadByAll) {
    ORUDoErrorList *list = oru_do_error_list_new();
    for (int32_t code = 0; code < 5; ++code) {
        ORUDoError *err = oru_do_error_new(code, nullptr);
        oru_do_error_list_add(list, err);
        oru_do_error_deref(err);
    }
    on_threads(read_list, list);
    oru_do_error_list_deref(list);
}

}  // namespace
