// What the tests of the thread layer share.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <utility>

#include "oru/thread.h"

namespace oru::threads::test {

// Runs a body in a thread of the layer and joins it at the end of the scope.
class Thread {
  public:
    explicit Thread(std::function<void()> body) : body_(std::move(body)) {
        EXPECT_EQ(oru_thread_create(&handle_, nullptr, run, this), 0);
    }
    ~Thread() { join(); }
    Thread(const Thread &) = delete;
    Thread &operator=(const Thread &) = delete;

    void join() {
        if (handle_ != 0) {
            EXPECT_EQ(oru_thread_join(handle_, nullptr), 0);
            handle_ = 0;
        }
    }
    oru_thread_t handle() const { return handle_; }

  private:
    static void *run(void *self) {
        static_cast<Thread *>(self)->body_();
        return nullptr;
    }
    std::function<void()> body_;
    oru_thread_t handle_ = 0;
};

// What `call` gives in another thread.
template <typename Call>
int32_t in_other_thread(Call call) {
    int32_t rc = -1;
    Thread([&] { rc = call(); }).join();
    return rc;
}

inline int64_t elapsed_ms(const std::function<void()> &body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    const auto spent = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(spent).count();
}

// Storage as an uninitialised one may look.
template <typename Storage>
Storage garbage() {
    Storage storage;
    std::memset(&storage, 0xa5, sizeof storage);
    return storage;
}

inline constexpr char kLongName[] = "abcdefghijklmnopqrstuvwxyz0123456789";
inline constexpr char kLongNameCut[] = "abcdefghijklmnopqrstuvwxyz01234";  // 31 bytes

}  // namespace oru::threads::test
