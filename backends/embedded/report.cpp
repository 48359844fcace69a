#include "report.h"

#include <oruplatform/tracelet.h>

#include "object/errors.h"
#include "store/store.h"

namespace embedded {

void Report::tell(int32_t code, const std::string &words) const {
    static constexpr const char *kFormats[] = {"%s"};
    tracelet_emit(kFormats, 0, trace_module(), kFailureLevel << TRACELET_LEVEL_SHIFT,
                  words.c_str());
    if (listener_ == nullptr)
        return;
    const Error error(oru_do_error_new(code, words.c_str()));
    if (error && oru_do_error_get_msg(error.get()) != nullptr)
        listener_(context_, error.get());
}

int32_t Report::tell(const std::exception &fault) const noexcept {
    const auto *const refusal = dynamic_cast<const Refusal *>(&fault);
    const int32_t code = refusal != nullptr ? refusal->code : code_of(fault);
    try {
        const bool is_of_store = dynamic_cast<const StoreFault *>(&fault) != nullptr;
        tell(code, (is_of_store && !database_.empty() ? database_ + ": " : "") + fault.what());
    } catch (const std::exception &) {
        // lack of memory, which the code tells or hides behind the first fault
    }
    return code;
}

}  // namespace embedded
