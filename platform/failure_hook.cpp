#include "platform/failure_hook.h"

#include "oruplatform/poolheap.h"

namespace oru::platform {

// On a cache line that nothing else writes to.
alignas(64) std::atomic<FailureRule> g_failure_rule{FailureRule::none};

namespace {

struct alignas(64) State {
    std::atomic<uint64_t> nth;
    std::atomic<uint32_t> tag;
    std::atomic<uint64_t> calls;
    std::atomic<uint64_t> hits;
};
State g_state;

void set_rule(FailureRule rule, uint64_t nth, uint32_t tag) {
    g_failure_rule.store(FailureRule::none);
    g_state.nth.store(nth);
    g_state.tag.store(tag);
    g_state.calls.store(0);
    g_state.hits.store(0);
    g_failure_rule.store(rule);
}

bool is_hit(uint64_t call, uint32_t tag) {
    switch (g_failure_rule.load()) {
        case FailureRule::nth:
            return call == g_state.nth.load();
        case FailureRule::from_nth:
            return call >= g_state.nth.load();
        case FailureRule::tag:
            return tag == g_state.tag.load();
        default:
            return false;
    }
}

}  // namespace

bool count_call(uint32_t tag) {
    const bool hit = is_hit(g_state.calls.fetch_add(1) + 1, tag);
    if (hit) {
        g_state.hits.fetch_add(1);
    }
    return hit;
}

bool fails_tag(uint32_t tag) {
    return g_failure_rule.load() == FailureRule::tag && g_state.tag.load() == tag;
}

}  // namespace oru::platform

using namespace oru::platform;

void poolheap_fail_nth(uint64_t nth, int32_t for_good) {
    set_rule(for_good != 0 && nth != 0 ? FailureRule::from_nth : FailureRule::nth, nth, 0);
}

void poolheap_fail_tag(uint32_t tag) {
    set_rule(FailureRule::tag, 0, tag);
}

void poolheap_fail_off(void) {
    g_failure_rule.store(FailureRule::none);
}

uint64_t poolheap_fail_calls(void) {
    return g_state.calls.load();
}

uint64_t poolheap_fail_hits(void) {
    return g_state.hits.load();
}
