/* Why a start or a session was refused, told to the client and to the tracer. */
#ifndef EMBEDDED_REPORT_H
#define EMBEDDED_REPORT_H

#include <exception>
#include <stdexcept>
#include <string>

#include "oruembedded.h"

namespace embedded {

/* What is wrong with the options or the model. */
struct Refusal : std::runtime_error {
    Refusal(int32_t result, const std::string &words) : std::runtime_error(words), code(result) {}

    int32_t code;
};

class Report {
  public:
    Report() = default;
    explicit Report(const ORUEmbeddedOptions &options)
        : listener_(options.report),
          context_(options.report_context),
          database_(options.database != nullptr ? options.database : "") {}

    /* Gives the code of what was thrown. Throws nothing: without memory nobody is told. */
    int32_t tell(const std::exception &fault) const noexcept;

  private:
    void tell(int32_t code, const std::string &words) const;

    void (*listener_)(void *context, ORUDoError *error) = nullptr;
    void *context_ = nullptr;
    std::string database_;
};

}  // namespace embedded

#endif
