#include "platform/tag_names.h"

#include <atomic>

#include "oruplatform/poolheap.h"

namespace oru::platform {

namespace {

using NameFn = const char *(*)(uint32_t);

const char *own_tag_name(uint32_t tag) {
    static constexpr const char *kNames[] = {"oruplatform",
                                             "oruplatform-hash",
                                             "oruplatform-hash-array",
                                             "oruplatform-hash-entry",
                                             "oruplatform-tree",
                                             "oruplatform-tree-object"};
    const uint32_t index = tag & ~POOLHEAP_COMPONENT_MASK;
    return index < sizeof kNames / sizeof *kNames ? kNames[index] : "oruplatform-invalid";
}

// `owner` is the component's number plus one, 0 in a free row; it is claimed once and stays.
struct Component {
    std::atomic<uint32_t> owner;
    std::atomic<NameFn> name;
};

constexpr uint32_t kMaxComponents = 16;
constinit Component g_components[kMaxComponents] = {
    {.owner = POOLHEAP_COMPONENT_PLATFORM + 1, .name = own_tag_name}};

// The row of the component, claimed if need be; null when there is none.
Component *find_component(uint32_t component, bool claim) {
    for (Component &row : g_components) {
        uint32_t owner = row.owner.load(std::memory_order_acquire);
        if (owner == 0 && (!claim || row.owner.compare_exchange_strong(owner, component + 1))) {
            return claim ? &row : nullptr;
        }
        if (owner == component + 1) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

const char *tag_name(uint32_t tag) {
    const Component *row = find_component(tag & POOLHEAP_COMPONENT_MASK, false);
    const NameFn name = row == nullptr ? nullptr : row->name.load(std::memory_order_acquire);
    return name == nullptr ? nullptr : name(tag);
}

}  // namespace oru::platform

using namespace oru::platform;

void poolheap_init(uint32_t component, const char *(*tag_name_of)(uint32_t tag)) {
    Component *row = find_component(component & POOLHEAP_COMPONENT_MASK, true);
    if (row != nullptr) {
        row->name.store(tag_name_of, std::memory_order_release);
    }
}

const char *poolheap_tag_name(uint32_t tag) {
    return tag_name(tag);
}
