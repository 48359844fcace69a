/* The error holder that a session and each cursor have, and what failed in words. */
#ifndef EMBEDDED_ERRORS_H
#define EMBEDDED_ERRORS_H

#include <exception>

#include "handles.h"

namespace embedded {

class ErrorHolder {
  public:
    ErrorHolder();
    ErrorHolder(const ErrorHolder &) = delete;
    ErrorHolder &operator=(const ErrorHolder &) = delete;

    ORUErrorIfc *table() { return &table_.table; }

    void clear() { held_ = {}; }

    /* Holds a new error and gives its code. Throws nothing: without memory nothing is held. */
    int32_t fail(int32_t code, const char *words) noexcept;

    /* Sends what is held to the tracer, at the level of failures, for those who do not ask. */
    void trace(std::string_view where) const;

    /* Runs what may throw, and gives its code or that of what it threw. */
    template <typename Body>
    int32_t guard(Body body) {
        clear();
        try {
            return body();
        } catch (const std::exception &fault) {
            return fail(fault);
        }
    }

  private:
    using Table = OwnedTable<ORUErrorIfc, ErrorHolder>;

    int32_t fail(const std::exception &fault) noexcept;

    Table table_;
    Error held_;
};

/* The result code that stands for an exception of the back end. */
int32_t code_of(const std::exception &fault);

/* The level of failures, and the number under which the tracer knows the back end. */
constexpr uint32_t kFailureLevel = 3;
uint16_t trace_module();

}  // namespace embedded

#endif
