/* What is wrong with a set of operations, all of it, as the caller gets it. */
#ifndef EMBEDDED_FAULTS_H
#define EMBEDDED_FAULTS_H

#include <vector>

#include "handles.h"

namespace embedded {

struct Fault {
    int32_t code = 0;
    std::string address;   /* of the resource */
    std::string attribute; /* empty for the resource itself */
    std::string rule;      /* what was broken, in words */
    std::string expected;
    std::string got;
};

class Faults {
  public:
    void add(Fault fault) { faults_.push_back(std::move(fault)); }
    bool empty() const { return faults_.empty(); }
    int32_t code() const { return faults_.front().code; }

    /*
     * One error with the code of the first fault and how many there are; its cause is the first
     * error of the first resource, the cause of that one the next, and so on: one for each fault of
     * the resource itself, "ADDRESS: WORDS", and one, "ADDRESS", with the errors of its
     * attributes.
     */
    Error to_error() const;

  private:
    std::vector<Fault> faults_;
};

}  // namespace embedded

#endif
