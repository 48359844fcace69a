// What the parts of the fuzzer of documents share.
#ifndef ORU_TESTS_FUZZ_DTL_FUZZ_H
#define ORU_TESTS_FUZZ_DTL_FUZZ_H

#include <string>

#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_ifc.h"

namespace fuzz {

// ---- What the first bytes of an input choose ----

struct Options {
    uint8_t bytes[8];

    int32_t count() const {
        constexpr int32_t kCounts[] = {0, 1, 2, 5, -1, 1000, -7, 3};
        return kCounts[bytes[0] % 8];
    }
    int rows() const { return bytes[1] % 4; }
    uint32_t batch() const { return bytes[1] / 4 % 4; }
    bool flag(int bit) const { return (bytes[2] >> bit & 1) != 0; }
    int failing_call() const { return bytes[3]; }
    int32_t failure() const {
        constexpr int32_t kCodes[] = {102, 105, 106, 10001, 100, 10002, 33, 1};
        return kCodes[bytes[4] % 8];
    }
    int canceling_call() const { return bytes[5]; }
    size_t most_values() const { return bytes[6] == 0 ? SIZE_MAX : bytes[6] % 8; }
    uint8_t seed() const { return bytes[7]; }
    uint64_t failing_allocation() const { return 1 + bytes[7] * 4u + bytes[5] % 4u; }
};

// ---- Documents that end the process (dtl_limits.cpp) ----

bool is_harmless(const std::string &document);

// Rows below an address that has more slashes would get one that has too many.
constexpr int kMostRowSlashes = 4;

// ---- The back end (dtl_backend.cpp) ----

// Calls after which a walk is canceled: each level of a document multiplies its rows.
constexpr int kMostCalls = 400;

// A back end that makes up rows and values for every address that is asked for. It cancels the walk
// of `context` when it is time.
struct MadeUp : oru::test::FakeSystem {
    const Options &options;
    ORUDtlCtx *context = nullptr;
    int calls = 0;

    explicit MadeUp(const Options &chosen);
};

}  // namespace fuzz

#endif
