// Commits of scripts.
#ifndef ORU_TESTS_BEHAVIOUR_COMMIT_H
#define ORU_TESTS_BEHAVIOUR_COMMIT_H

#include "back_end.h"
#include "script.h"

namespace behaviour {

class Committer {
  public:
    explicit Committer(const BackEnd &back_end) : back_end_(back_end) {}

    // Carries out "commit [as system] [dry] [named NAME]" with an operation in each detail.
    Lines carry_out(const Step &step);

  private:
    const BackEnd &back_end_;
    int64_t revision_ = 0; /* of the last commit that wrote */
};

}  // namespace behaviour

#endif
