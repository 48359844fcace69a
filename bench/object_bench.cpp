// Sharing and releasing an object against what it cannot do without: two bare atomic operations on
// a counter. Tracing is off, as it is by default.
#include <oru/strbuf.h>
#include <oruplatform/tracelet.h>

#include <atomic>
#include <cstdint>

#include "bench/ratios.h"

namespace {

// How many times as long as the two bare operations a pair may take.
constexpr double kBound = 1.3;

void ref_and_deref(benchmark::State &state) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    for (auto _ : state)
        oru_do_strbuf_deref(oru_do_strbuf_ref(buf));
    oru_do_strbuf_deref(buf);
}

// A release has to be a compare and exchange: it must see a count of zero before it changes it.
void two_atomic_operations(benchmark::State &state) {
    uint32_t count = 1;
    benchmark::DoNotOptimize(&count);
    for (auto _ : state) {
        const std::atomic_ref shared(count);
        shared.fetch_add(1);
        uint32_t seen = shared.load(std::memory_order_relaxed);
        while (!shared.compare_exchange_weak(seen, seen - 1)) {
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    oru::bench::compare("ref and deref/ours", ref_and_deref);
    oru::bench::compare("ref and deref/two atomic operations", two_atomic_operations);
    oru::bench::expect("ref and deref", "two atomic operations", oru::bench::at_most(kBound));
    return oru::bench::run_all(argc, argv);
}
