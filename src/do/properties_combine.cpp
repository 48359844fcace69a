// Property tables made of, filled from and compared with other collections.
#include "do/name.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/properties.h"
#include "do/value.h"
#include "do/vlist.h"
#include "frame/chain.h"

namespace {

using oru::Level;

// Appends copies of both. False when one of them cannot be had.
bool append_copy(ORUDoProperties &properties, ORUDoName *name, ORUDoValue *value) {
    const auto new_name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(name->str));
    const auto new_value = oru::Ref<ORUDoValue>::adopt(
        new_name && value != nullptr ? oru_do_value_clone(value) : nullptr);
    if (!new_value)
        return false;
    oru::properties_append(properties, new_name.get(), new_value.get());
    return true;
}

void set_pairs(ORUDoProperties &properties, const ORUDoNlist &nlist, const ORUDoVlist &vlist) {
    const ORUDoNlistItem *name = nlist.first;
    const ORUDoVlistItem *value = vlist.first;
    for (; name != nullptr && value != nullptr; name = name->next, value = value->next)
        oru_do_properties_set_value_n(&properties, name->name, value->value);
}

}  // namespace

ORUDoProperties *oru_do_properties_new_init(ORUDoProperties *other) {
    ORUDoProperties *properties = oru_do_properties_new();
    oru_do_properties_set_props(properties, other);
    return properties;
}

ORUDoProperties *oru_do_properties_new_from_vlist(ORUDoNlist *nlist, ORUDoVlist *vlist) {
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(vlist);
    ORU_TRACE(Level::detail, "props from vlist");
    if (nlist->count != vlist->count)
        return nullptr;
    ORUDoProperties *properties = oru_do_properties_new();
    if (properties == nullptr)
        return nullptr;
    ORU_TRACE(Level::detail, "props from vlist oru props %p", static_cast<void *>(properties));
    set_pairs(*properties, *nlist, *vlist);
    return properties;
}

ORUDoProperties *oru_do_properties_clone(ORUDoProperties *props) {
    ORU_REQUIRE(props);
    auto copy = oru::Ref<ORUDoProperties>::adopt(oru_do_properties_new());
    if (!copy)
        return nullptr;
    for (ORUDoProperty *entry = props->first; entry != nullptr; entry = entry->next) {
        if (!append_copy(*copy, entry->name, entry->value))
            return nullptr;
    }
    return copy->count == props->count ? copy.release() : nullptr;
}

void oru_do_properties_set_values(ORUDoProperties *properties, ORUDoNlist *nlist,
                                  ORUDoVlist *vlist) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(nlist);
    ORU_REQUIRE(vlist);
    set_pairs(*properties, *nlist, *vlist);
}

void oru_do_properties_set_values_from_nvlist(ORUDoProperties *properties, ORUDoNvlist *nvlist) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(nvlist);
    for (const ORUDoNvlistItem *item = nvlist->first; item != nullptr; item = item->next)
        oru::properties_set(*properties, item->name, item->value);
}

int32_t oru_do_properties_set_props(ORUDoProperties *props, ORUDoProperties *other) {
    if (props == nullptr || other == nullptr)
        return 0;
    for (ORUDoProperty *entry = other->first; entry != nullptr; entry = entry->next) {
        if (entry->value != nullptr)
            oru_do_properties_set_value_n(props, entry->name, entry->value);
    }
    return 0;
}

// No more entries than there are at the start: the two may be the same table.
void oru_do_properties_add_all(ORUDoProperties *props, ORUDoProperties *other_props) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(other_props);
    ORUDoProperty *entry = other_props->first;
    for (uint32_t left = other_props->count; left > 0; --left, entry = entry->next)
        oru::properties_append(*props, entry->name, entry->value);
}

int32_t oru_do_properties_update(ORUDoProperties *props, ORUDoName *name, ORUDoValue *value) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(name);
    ORU_REQUIRE(value);
    if (append_copy(*props, name, value))
        return 1;
    ORU_TRACE(Level::failure, "failed to allocated memory\n");
    return 0;
}

int32_t oru_do_properties_equals(ORUDoProperties *properties1, ORUDoProperties *properties2) {
    ORU_REQUIRE(properties1);
    ORU_REQUIRE(properties2);
    return oru::same_items(
        properties1->first, properties2->first,
        [](ORUDoProperty &a, ORUDoProperty &b) { return oru_do_property_equals(&a, &b) != 0; });
}
