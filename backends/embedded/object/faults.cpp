#include "faults.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

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

struct FaultsOfResource {
    const std::string &address;
    std::vector<const Fault *> own; /* of the resource itself */
    std::vector<const Fault *> of_attributes;
};

/* In the order in which resources were first found faulty. */
std::vector<FaultsOfResource> by_resource(const std::vector<Fault> &faults) {
    std::vector<FaultsOfResource> resources;
    std::unordered_map<std::string_view, size_t> places;
    for (const Fault &fault : faults) {
        const auto [at, is_new] = places.try_emplace(fault.address, resources.size());
        if (is_new)
            resources.push_back({fault.address, {}, {}});
        FaultsOfResource &resource = resources[at->second];
        (fault.attribute.empty() ? resource.own : resource.of_attributes).push_back(&fault);
    }
    return resources;
}

Error error_of(int32_t code, const std::string &words, const Error &cause) {
    return made<Error>(oru_do_error_new_w_cause(code, words.c_str(), cause.get()));
}

using FaultList = std::vector<const Fault *>;

/* An error has room for one fault of each attribute. */
std::vector<FaultList> in_errors(const FaultList &faults) {
    std::vector<FaultList> errors;
    std::unordered_set<std::string_view> names;
    for (const Fault *fault : faults) {
        const bool is_new = names.insert(fault->attribute).second;
        if (!is_new)
            names = {fault->attribute};
        if (!is_new || errors.empty())
            errors.emplace_back();
        errors.back().push_back(fault);
    }
    return errors;
}

Error errors_of_attributes(const FaultsOfResource &resource, Error cause) {
    const std::vector<FaultList> errors = in_errors(resource.of_attributes);
    for (auto at = errors.rbegin(); at != errors.rend(); ++at) {
        cause = error_of(at->front()->code, resource.address, cause);
        for (const Fault *fault : *at) {
            const Name name = made<Name>(oru_do_name_new(fault->attribute.c_str()));
            const Error of_attribute =
                made<Error>(oru_do_error_new(fault->code, words_of(*fault).c_str()));
            oru_do_error_set_prop_err(cause.get(), name.get(), of_attribute.get());
            ORUDoPropErrs *const set = oru_do_error_get_prop_errs(cause.get());
            if (set == nullptr || oru_do_prop_errs_get_err(set, name.get()) == nullptr)
                throw std::bad_alloc();
        }
    }
    return cause;
}

/* The errors of one resource, in front of those that come behind. */
Error errors_of(const FaultsOfResource &resource, const Error &behind) {
    Error cause = errors_of_attributes(resource, behind);
    for (auto at = resource.own.rbegin(); at != resource.own.rend(); ++at)
        cause = error_of((*at)->code, resource.address + ": " + words_of(**at), cause);
    return cause;
}

}  // namespace

Error Faults::to_error() const {
    const std::vector<FaultsOfResource> resources = by_resource(faults_);
    Error cause;
    for (auto at = resources.rbegin(); at != resources.rend(); ++at)
        cause = errors_of(*at, cause);
    const std::string words =
        faults_.size() == 1
            ? "the change was refused: 1 fault"
            : "the change was refused: " + std::to_string(faults_.size()) + " faults";
    return made<Error>(oru_do_error_new_w_cause(code(), words.c_str(), cause.get()));
}

}  // namespace embedded
