#include <gtest/gtest.h>
#include <oruplatform/tracelet.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

const char *const kFormats[] = {"%s"};

void count(void *context, const char *, uint32_t, const char *text, const tracelet_place_t *place) {
    // Each thread tells its own place, so the two must agree.
    if (place != nullptr && std::string(text) == place->element) {
        ++*static_cast<std::atomic<int> *>(context);
    }
}

void run_threads(const char *const (&names)[4], int messages) {
    std::vector<std::thread> threads;
    for (const char *name : names) {
        threads.emplace_back([=] {
            uint16_t id = 0;
            tracelet_module_init_fn(name, &id, nullptr);
            tracelet_place_push("file", 1, name);
            for (int i = 0; i < messages; i++) {
                tracelet_emit(kFormats, 0, id, 3u << TRACELET_LEVEL_SHIFT, name);
            }
            tracelet_place_pop();
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

}  // namespace

TEST(TraceletThreads, PlacesBelongToTheirThread) {
    std::atomic<int> calls{0};
    tracelet_set_sink(count, &calls);
    tracelet_set_threshold(3);
    run_threads({"one", "two", "three", "four"}, 1000);
    tracelet_set_sink(nullptr, nullptr);
    tracelet_set_threshold(0);
    EXPECT_EQ(calls, 4000);
}

TEST(TraceletThreads, SinkMayBeTakenAwayWhileOthersSend) {
    tracelet_set_sink(count, nullptr);
    std::atomic<bool> done{false};
    std::thread switcher([&] {
        while (!done) {
            std::atomic<int> short_lived{0};
            tracelet_set_sink(count, &short_lived);
            tracelet_set_threshold(3);
            tracelet_set_threshold(0);
            tracelet_set_sink(
                [](void *, const char *, uint32_t, const char *, const tracelet_place_t *) {},
                nullptr);
        }
    });
    run_threads({"one", "two", "three", "four"}, 500);
    done = true;
    switcher.join();
    tracelet_set_sink(nullptr, nullptr);
}
