#include "scarce.h"

#include <oruplatform/poolheap.h>
#include <sqlite3.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace embedded {
namespace {

/* Counts the allocations of one kind down to those that fail. */
class Countdown {
  public:
    void begin(uint64_t nth, bool for_good) {
        passed_ = 0;
        hits_ = 0;
        for_good_ = for_good;
        nth_ = nth;
    }
    void end() { nth_ = 0; }

    bool fails() {
        if (nth_ == 0)
            return false;
        const uint64_t number = ++passed_;
        const bool is_hit = for_good_ ? number >= nth_ : number == nth_;
        hits_ += is_hit ? 1 : 0;
        return is_hit;
    }

    bool was_met() const { return hits_ > 0; }

  private:
    std::atomic<uint64_t> nth_{0}; /* 0: none */
    std::atomic<uint64_t> passed_{0};
    std::atomic<uint64_t> hits_{0};
    std::atomic<bool> for_good_{false};
};

constinit Countdown news;
constinit Countdown engine;
constinit std::atomic<int64_t> live{0};

sqlite3_mem_methods methods_below;

/* The engine has to be told before it is first used. */
[[maybe_unused]] const int engine_is_told = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &methods_below);
    sqlite3_mem_methods methods = methods_below;
    methods.xMalloc = [](int size) -> void * {
        return engine.fails() ? nullptr : methods_below.xMalloc(size);
    };
    methods.xRealloc = [](void *block, int size) -> void * {
        return engine.fails() ? nullptr : methods_below.xRealloc(block, size);
    };
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
}();

}  // namespace

std::ostream &operator<<(std::ostream &out, Allocator which) {
    constexpr const char *kNames[] = {"library", "language", "engine"};
    return out << kNames[static_cast<int>(which)];
}

Scarcity::Scarcity(Allocator which, uint64_t nth, bool for_good) : which_(which) {
    if (which == Allocator::library)
        poolheap_fail_nth(nth, for_good);
    else
        (which == Allocator::language ? news : engine).begin(nth, for_good);
}

Scarcity::~Scarcity() {
    poolheap_fail_off();
    news.end();
    engine.end();
}

bool Scarcity::was_met() const {
    if (which_ == Allocator::library)
        return poolheap_fail_hits() > 0;
    return (which_ == Allocator::language ? news : engine).was_met();
}

int64_t live_news() {
    return live;
}

}  // namespace embedded

void *operator new(size_t size) {
    void *const block = embedded::news.fails() ? nullptr : std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
        throw std::bad_alloc();
    embedded::live++;
    return block;
}

void *operator new(size_t size, const std::nothrow_t &) noexcept {
    void *const block = embedded::news.fails() ? nullptr : std::malloc(size != 0 ? size : 1);
    embedded::live += block != nullptr ? 1 : 0;
    return block;
}

void operator delete(void *block) noexcept {
    embedded::live -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete(void *block, size_t) noexcept {
    operator delete(block);
}
