#include "faults.h"

#include <algorithm>

namespace embedded {

namespace {

/* "rule: expected X, got Y", as far as it is known. */
std::string words_of(const Fault &fault) {
    std::string words =
        fault.rule.empty() ? std::string(view(oru_do_get_err_msg(fault.code))) : fault.rule;
    const char *between = ": ";
    if (!fault.expected.empty()) {
        words += between + ("expected " + fault.expected);
        between = ", ";
    }
    if (!fault.got.empty())
        words += between + ("got " + fault.got);
    return words;
}

using FaultsOfResource = std::vector<const Fault *>;

/* In the order in which resources were first found faulty. */
std::vector<FaultsOfResource> by_resource(const std::vector<Fault> &faults) {
    std::vector<FaultsOfResource> resources;
    for (const Fault &fault : faults) {
        const auto at = std::find_if(
            resources.begin(), resources.end(),
            [&](const FaultsOfResource &known) { return known.front()->address == fault.address; });
        if (at != resources.end())
            at->push_back(&fault);
        else
            resources.push_back({&fault});
    }
    return resources;
}

Error error_of(const FaultsOfResource &faults, const Error &cause) {
    std::string words = faults.front()->address;
    for (const Fault *fault : faults) {
        if (fault->attribute.empty())
            words += ": " + words_of(*fault);
    }
    Error error =
        made<Error>(oru_do_error_new_w_cause(faults.front()->code, words.c_str(), cause.get()));
    for (const Fault *fault : faults) {
        if (fault->attribute.empty())
            continue;
        const Name name = made<Name>(oru_do_name_new(fault->attribute.c_str()));
        const Error of_attribute =
            made<Error>(oru_do_error_new(fault->code, words_of(*fault).c_str()));
        oru_do_error_set_prop_err(error.get(), name.get(), of_attribute.get());
    }
    return error;
}

}  // namespace

Error Faults::to_error() const {
    const std::vector<FaultsOfResource> resources = by_resource(faults_);
    Error cause;
    for (auto at = resources.rbegin(); at != resources.rend(); ++at)
        cause = error_of(*at, cause);
    const std::string words =
        faults_.size() == 1
            ? "the change was refused: 1 fault"
            : "the change was refused: " + std::to_string(faults_.size()) + " faults";
    return made<Error>(oru_do_error_new_w_cause(code(), words.c_str(), cause.get()));
}

}  // namespace embedded
