/* What a change writes to the store. */
#ifndef EMBEDDED_WRITES_H
#define EMBEDDED_WRITES_H

#include "edit.h"

namespace embedded {

/* What becomes of the secrets in a value before it is written. */
class SecretWriter {
  public:
    virtual ~SecretWriter() = default;
    /* Throws `SecretFault`. */
    virtual Value close(const Value &clear) const = 0;
};

/* A secret that cannot be kept, in words. */
class SecretFault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/* The writes of an edit without faults, with the preconditions of all that it read. What the
   writes point to is lent by the edit and by `texts` and `values`. What the store does not take is
   added to the faults of the edit. */
Commit commit_of(Edit &edit, const SecretWriter &secrets, Texts &texts, std::deque<Value> &values);

}  // namespace embedded

#endif
