// How much of a child is read at a time.
#include "dtl/variables.h"
#include "dtl/walk.h"

namespace oru::dtl {
namespace {

// What a parameter resolves to; null when it does not.
Ref<ORUDoValue> param_value(const WalkLevel &at, const char *param) {
    return resolve(at.call.params, param, nullptr, nullptr, nullptr);
}

// False for a value that is no number.
bool number_of_value(ORUDoValue *value, int32_t &number) {
    int32_t rc = 0;
    number = static_cast<int32_t>(oru_do_value_to_long(value, &rc));
    if (rc != 0)
        number = 0;
    return rc == 0;
}

int32_t batch_size_of(const WalkLevel &at) {
    const char *param = oru_dtl_tree_get_batch_size_param(at.ch);
    if (param == nullptr)
        return oru_dtl_tree_get_batch_size(at.ch);
    int32_t number = 0;
    const auto value = param_value(at, param);
    if (value && !number_of_value(value.get(), number))
        ORU_TRACE(Level::failure, "Non numeric batch_size param value %s", param);
    return number;
}

// The call has its rows: the next one goes on with this child, or where the last one stopped when
// that place was not reached yet.
void stop_with_leaves(WalkLevel &at) {
    ORU_TRACE(Level::detail, "Leafnode count reached , return batch");
    if (at.resume == nullptr)
        go_on_here(at);
    at.ctx->state = ORU_DTL_STATE_STOPPED;
    at.rc = 0;
}

}  // namespace

// 5.
void find_max_batches(WalkLevel &at) {
    const char *param = oru_dtl_tree_get_max_batches_param(at.ch);
    at.max_batches = param == nullptr ? oru_dtl_tree_get_max_batches(at.ch) : 0;
    if (param == nullptr)
        return;
    const auto value = param_value(at, param);
    if (value && !number_of_value(value.get(), at.max_batches))
        ORU_TRACE(Level::failure, "Non numeric max-batches param value %s", param);
}

// 9 and 10. False when the level stops.
bool find_fetch(WalkLevel &at) {
    at.fetch = at.call.count;
    if (!at.has_inner && !at.no_limit) {
        if (at.call.leaf_count >= at.call.count) {
            stop_with_leaves(at);
            return false;
        }
        at.fetch = at.call.count - at.call.leaf_count;
    }
    if (at.fetch == -1) {
        const int32_t size = batch_size_of(at);
        at.fetch = size > 0 ? size : 0;
    }
    return true;
}

}  // namespace oru::dtl
