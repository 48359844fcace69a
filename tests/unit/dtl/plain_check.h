// Runs the walk of the library and the plain one side by side.
#ifndef ORU_TESTS_UNIT_DTL_PLAIN_CHECK_H
#define ORU_TESTS_UNIT_DTL_PLAIN_CHECK_H

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/unit/dtl/plain_walk.h"

namespace oru::test {

using Params = std::map<std::string, FakeValue>;

// What the library gives, call after call.
class LibraryWalk {
  public:
    LibraryWalk(const DocNode &doc, FakeSystem &system, const Params &params);
    ~LibraryWalk() { end(); }

    int32_t next(int32_t count) {
        return oru_dtl_get_next(system_.data(), ctx_, params_.get(), count);
    }
    std::string tree() const;
    ORUDtlCtx *ctx() const { return ctx_; }
    void end() { oru_dtl_ctx_delete(std::exchange(ctx_, nullptr)); }

  private:
    FakeSystem &system_;
    Tree doc_;
    Nvlist params_;
    ORUDtlCtx *ctx_;
};

inline constexpr int kMostCalls = 400;

// Compares result codes, calls and trees until both say that nothing more comes, at most
// `kMostCalls` times, with the counts that `count` gives. Failures are called past a few times.
// False, with a test failure, where they differ or do not end.
bool check_walk(const DocNode &doc, FakeSystem &system, const Params &params,
                const std::function<int32_t()> &count);

// The addresses of the rows, hidden ones left out, that all calls deliver with the counts that
// `count` gives; in order.
std::vector<std::string> delivered(const DocNode &doc, FakeSystem &system, const Params &params,
                                   const std::function<int32_t()> &count);

// Gives every address some rows and attributes, the same ones whenever it is asked.
struct Population {
    uint32_t seed = 0;
    int most_rows = 3;
    bool failing = false;
    std::set<std::string> seen{};
};
void populate(FakeSystem &system, Population &population);

}  // namespace oru::test

#endif
