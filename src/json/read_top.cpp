// The top level: elements that stay, and are completed again and again.
//
// A text of nested arrays may complete an element a thousand times over, whatever its size. What
// comes out but for the last time is seen by nobody; so after the first time it is put off to the
// end of the text, and only what else belongs to it happens at once.
#include <utility>

#include "frame/trace.h"
#include "json/read_stack.h"
#include "oru/error.h"

namespace oru::json {
namespace {

void tell_replaced(ORUDoJsonCtxData &data) {
    if (data.completed_type == kTypeArray)
        return;
    fail(&data, ORU_JSON_ERR_REPLACED);
    ORU_TRACE(Level::failure, "error:tmp_obj already has completed_obj, type=%lx",
              static_cast<unsigned long>(data.completed_type));
}

void give_to_context(ORUDoJsonCtxData &data, int64_t type, void *object) {
    if (data.completed_obj != nullptr) {
        tell_replaced(data);
        oru_do_json_free_obj(data.completed_type, data.completed_obj);
    }
    data.completed_type = type;
    data.completed_obj = object;
}

// Whether what came out once comes out each time, and is all that happens: the caller's functions
// are called each time.
bool may_wait(const ORUDoJsonCtxData &data, const Element &element) {
    const bool calls = data.resolve_fn != nullptr || data.set_fn != nullptr;
    return element.completed && ((element.type_info->type_code & kExpression) == 0 || !calls);
}

// Whether an element that nothing came out of lacks members, which items without a key are not.
bool lacks_members(const Element &element) {
    const int64_t type = element.type_info->type_code;
    return (type & kObject) != 0 && (type & kValue) == 0 && element.items != nullptr &&
           element.pending == nullptr;
}

}  // namespace

void complete_top(Reader &reader, Element &element) {
    if (element.hopeless)
        return;
    if (may_wait(reader.data, element)) {
        tell_replaced(reader.data);
        element.later = true;
        element.last_seen = element.items_tail;
        return;
    }
    const oru_json_type_info &info = *element.type_info;
    void *object = info.deserialiser(&reader.data, &element);
    if (object != nullptr) {
        give_to_context(reader.data, info.type_code, object);
        element.completed = true;
    } else {
        element.hopeless = lacks_members(element);
    }
}

// The error stays the one that followed: what replaces an object that was there is told after it
// was made.
void settle(ORUDoJsonCtxData &data, Element &element) {
    if (!element.later)
        return;
    element.later = false;
    Item *&end = element.last_seen != nullptr ? element.last_seen->next : element.items;
    Item *unseen = std::exchange(end, nullptr);
    ORUDoError *error = std::exchange(data.err, nullptr);
    void *object = element.type_info->deserialiser(&data, &element);
    end = unseen;
    if (object != nullptr)
        oru_do_json_free_obj(data.completed_type, std::exchange(data.completed_obj, object));
    if (object != nullptr || data.err == nullptr)
        std::swap(data.err, error);
    oru_do_error_deref(error);
}

void settle_top(ORUDoJsonCtxData &data) {
    Element *element = data.top;
    while (element != nullptr && element->parent != nullptr)
        element = element->parent;
    if (element != nullptr)
        settle(data, *element);
}

}  // namespace oru::json
