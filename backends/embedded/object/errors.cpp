#include "errors.h"

#include <oruplatform/tracelet.h>

#include "store/store.h"

namespace embedded {

int32_t code_of(const std::exception &fault) {
    if (dynamic_cast<const std::bad_alloc *>(&fault) != nullptr)
        return ORU_RC_MALLOC;
    const auto *const store_fault = dynamic_cast<const StoreFault *>(&fault);
    if (store_fault == nullptr)
        return ORU_RC_GENERAL;
    return store_fault->kind == StoreFault::Kind::busy ? ORU_RC_RESOURCE_LOCKED : ORU_RC_DATABASE;
}

uint16_t trace_module() {
    static const uint16_t module = [] {
        uint16_t id = 0;
        tracelet_module_init_fn("orudbal", &id, nullptr);
        return id;
    }();
    return module;
}

ErrorHolder::ErrorHolder() {
    table_.owner = this;
    ORUErrorIfc &entries = table_.table;
    entries.get_error = [](ORUErrorIfc *table) { return Table::of(table).held_.get(); };
    entries.set_error = [](ORUErrorIfc *table, int32_t code, const char *text) {
        Table::of(table).held_ = Error(oru_do_error_new(code, text));
    };
    entries.set_do_error = [](ORUErrorIfc *table, ORUDoError *error) {
        Table::of(table).held_ = Error::share(error);
    };
    entries.add_warning = [](ORUErrorIfc *, int32_t, const char *) {};
    entries.reset_errors = [](ORUErrorIfc *table) { Table::of(table).clear(); };
}

int32_t ErrorHolder::fail(int32_t code, const char *words) noexcept {
    held_ = Error(oru_do_error_new(code, words));
    return code;
}

void ErrorHolder::trace(std::string_view where) const {
    if (tracelet_get_threshold() < kFailureLevel || !held_)
        return;
    constexpr const char *kFormats[] = {"%.*s: %s"};
    tracelet_emit(kFormats, 0, trace_module(), kFailureLevel << TRACELET_LEVEL_SHIFT,
                  static_cast<int>(where.size()), where.data(), oru_do_error_get_msg(held_.get()));
}

int32_t ErrorHolder::fail(const std::exception &fault) noexcept {
    return fail(code_of(fault), fault.what());
}

}  // namespace embedded
