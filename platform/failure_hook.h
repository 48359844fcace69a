// Failing allocations on purpose. Off, it costs one test of a word that hardly ever changes.
#pragma once

#include <atomic>
#include <cstdint>

namespace oru::platform {

enum class FailureRule : uint32_t { none, nth, from_nth, tag };

extern std::atomic<FailureRule> g_failure_rule __attribute__((visibility("hidden")));

// Counts a call while a rule is on; true when it must fail.
bool count_call(uint32_t tag);

inline bool failures_are_off() {
    return __builtin_expect(g_failure_rule.load(std::memory_order_relaxed) == FailureRule::none, 1);
}

inline bool must_fail(uint32_t tag) {
    return !failures_are_off() && count_call(tag);
}

// True when allocations of the tag are failed; does not count.
bool fails_tag(uint32_t tag);

}  // namespace oru::platform
