#include "frame/require.h"
#include "oru/util.h"

namespace {

constexpr int64_t kMicroseconds = 1000000;
constexpr int32_t kBadArgument = 22;

// Times from outside may be anything: sums wrap.
int64_t wrapping(uint64_t sum) {
    return static_cast<int64_t>(sum);
}

uint64_t bits(int64_t number) {
    return static_cast<uint64_t>(number);
}

int32_t order(int64_t a, int64_t b) {
    return a < b ? -1 : a > b;
}

}  // namespace

int32_t oru_compare_time(const ORUTime *t1, const ORUTime *t2) {
    ORU_REQUIRE(t1);
    ORU_REQUIRE(t2);
    const int32_t by_seconds = order(t1->seconds, t2->seconds);
    return by_seconds != 0 ? by_seconds : order(t1->fraction, t2->fraction);
}

int64_t oru_calc_duration(const ORUTime *start, const ORUTime *end) {
    ORU_REQUIRE(start);
    ORU_REQUIRE(end);
    if (oru_compare_time(end, start) < 0)
        return -1;
    return wrapping((bits(end->seconds) - bits(start->seconds)) * bits(kMicroseconds) +
                    bits(end->fraction) - bits(start->fraction));
}

void oru_calc_timestamp(const ORUTime *start, int64_t microseconds, ORUTime *out) {
    ORU_REQUIRE(start);
    ORU_REQUIRE(out);
    const int64_t sum = wrapping(bits(start->fraction) + bits(microseconds));
    const auto carry = static_cast<int32_t>(sum / kMicroseconds);
    out->seconds = wrapping(bits(start->seconds) + bits(carry));
    out->fraction = sum % kMicroseconds;
}

int32_t oru_time_get_timespec_realtime(struct timespec *ts) {
    return ts != nullptr ? clock_gettime(CLOCK_REALTIME, ts) : kBadArgument;
}
