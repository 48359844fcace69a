#include "errors.h"

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

int32_t ErrorHolder::fail(const std::exception &fault) noexcept {
    return fail(code_of(fault), fault.what());
}

}  // namespace embedded
