#include "do/properties.h"

#include <cstring>

#include "do/name.h"
#include "do/properties_index.h"
#include "do/properties_settings.h"
#include "do/value.h"
#include "frame/iter.h"

namespace {

using oru::Level;

void link(ORUDoProperties &properties, ORUDoProperty *entry) {
    entry->prev = properties.last;
    (properties.last != nullptr ? properties.last->next : properties.first) = entry;
    properties.last = entry;
    ++properties.count;
}

void unlink(ORUDoProperties &properties, ORUDoProperty *entry) {
    (entry->prev != nullptr ? entry->prev->next : properties.first) = entry->next;
    (entry->next != nullptr ? entry->next->prev : properties.last) = entry->prev;
    --properties.count;
}

void release_entry(ORUDoProperty *entry) {
    oru::deref(entry->name);
    oru::deref(entry->value);
    oru::free_element(entry);
}

void release_entries(ORUDoProperties &properties) {
    ORUDoProperty *entry = std::exchange(properties.first, nullptr);
    properties.last = nullptr;
    properties.count = 0;
    while (entry != nullptr)
        release_entry(std::exchange(entry, entry->next));
    oru::properties_index_close(properties);
}

// A walk of the list; `matches` looks at the name.
template <class Matches>
ORUDoProperty *walk_for(const ORUDoProperties &properties, Matches &&matches) {
    ORUDoProperty *entry = properties.first;
    while (entry != nullptr && !matches(entry->name))
        entry = entry->next;
    return entry;
}

ORUDoProperty *entry_at(const ORUDoProperties &properties, int32_t index) {
    if (index < 0)
        return nullptr;
    ORUDoProperty *entry = properties.first;
    while (entry != nullptr && index-- > 0)
        entry = entry->next;
    return entry;
}

ORUDoValue *value_of(const ORUDoProperty *entry) {
    return entry != nullptr ? entry->value : nullptr;
}

// Gives the entry, when there is one, another value. Whether there was one.
bool refill(ORUDoProperty *entry, ORUDoValue *value) {
    if (entry == nullptr)
        return false;
    oru_do_property_set_value(entry, value);
    return true;
}

void append_new(ORUDoProperties &properties, oru::Ref<ORUDoName> name, ORUDoValue *value) {
    if (name)
        oru::properties_append(properties, name.get(), value);
}

}  // namespace

void oru::ObjectType<ORUDoProperties>::release_members(ORUDoProperties &self) {
    release_entries(self);
}

ORUDoProperty *oru::properties_find(const ORUDoProperties &properties, const char *name) {
    if (properties.hash_table != nullptr)
        return properties_index_find(properties, name);
    return walk_for(properties, [query = NameQuery(name)](const ORUDoName *held) {
        return query.matches(held->str);
    });
}

void oru::properties_append(ORUDoProperties &properties, ORUDoName *name, ORUDoValue *value) {
    ORU_REQUIRE(name);
    ORU_REQUIRE_AS(value, "val");
    properties_hand_over(properties, Ref<ORUDoName>::share(name), Ref<ORUDoValue>::share(value));
}

bool oru::properties_hand_over(ORUDoProperties &properties, Ref<ORUDoName> name,
                               Ref<ORUDoValue> value) {
    auto *entry = make_element<ORUDoProperty>();
    if (entry == nullptr) {
        ORU_TRACE(Level::failure, "Failed to add property: %s\n", name->str);
        return false;
    }
    entry->name = name.release();
    entry->value = value.release();
    entry->ref_count = 1;
    if (properties.hash_table == nullptr &&
        properties.count >= properties_settings.max_size_before_hash_table)
        properties_index_make(properties);
    link(properties, entry);
    if (properties.hash_table != nullptr)
        properties_index_add(properties, *entry);
    ORU_TRACE(Level::detail, "oru props %p added item name: %s", static_cast<void *>(&properties),
              entry->name->str);
    return true;
}

void oru::properties_set(ORUDoProperties &properties, const char *name, ORUDoValue *value) {
    if (refill(properties_find(properties, name), value))
        return;
    ORU_REQUIRE_AS(value, "val");
    append_new(properties, Ref<ORUDoName>::adopt(oru_do_name_new(name)), value);
}

ORUDoProperties *oru_do_properties_new() {
    auto *properties = oru::make<ORUDoProperties>();
    if (properties != nullptr)
        ORU_TRACE(Level::detail, "oru props malloc %p", static_cast<void *>(properties));
    return properties;
}

int32_t oru_do_properties_get_len(ORUDoProperties *properties) {
    ORU_REQUIRE(properties);
    return static_cast<int32_t>(properties->count);
}

ORUDoProperty *oru_do_properties_get_prop(ORUDoProperties *properties, const char *name) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    return oru::properties_find(*properties, name);
}

ORUDoProperty *oru_do_properties_get_prop_n(ORUDoProperties *properties, ORUDoName *name) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    return oru::properties_find(*properties, name->str);
}

ORUDoProperty *oru_do_properties_get_prop_at_index(ORUDoProperties *props, int32_t index) {
    ORU_REQUIRE(props);
    return entry_at(*props, index);
}

ORUDoValue *oru_do_properties_get_value(ORUDoProperties *properties, const char *name) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    return value_of(oru::properties_find(*properties, name));
}

ORUDoValue *oru_do_properties_get_value_n(ORUDoProperties *properties, ORUDoName *name) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    return value_of(oru::properties_find(*properties, name->str));
}

void oru_do_properties_iter(ORUDoProperties *properties, ORUDoIter *iter) {
    ORU_REQUIRE(properties);
    oru::iter_bind(iter, DO_COLL_PROPERTIES, properties, properties->first);
}

int32_t oru_do_properties_has_next(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_PROPERTIES);
}

ORUDoProperty *oru_do_properties_get_next(ORUDoIter *iter) {
    return oru::iter_advance<ORUDoProperty>(iter);
}

void oru_do_properties_set_value(ORUDoProperties *properties, const char *name, ORUDoValue *value) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    oru::properties_set(*properties, name, value);
}

void oru_do_properties_set_value_n(ORUDoProperties *properties, ORUDoName *name,
                                   ORUDoValue *value) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    if (!refill(oru::properties_find(*properties, name->str), value))
        oru::properties_append(*properties, name, value);
}

// The index takes zero-terminated texts only, so this one always walks.
void oru_do_properties_set_value_l(ORUDoProperties *properties, const char *name, int32_t len,
                                   ORUDoValue *value) {
    ORU_REQUIRE(properties);
    ORU_REQUIRE(name);
    ORUDoProperty *entry = walk_for(*properties, [name, len](ORUDoName *held) {
        return oru_do_name_equals_w_strname_l_strict(held, name, len) != 0;
    });
    if (refill(entry, value))
        return;
    ORU_REQUIRE_AS(value, "val");
    append_new(*properties, oru::Ref<ORUDoName>::adopt(oru_do_name_new_l(name, len)), value);
}

void oru_do_properties_remove(ORUDoProperties *props, int32_t index) {
    ORU_REQUIRE(props);
    ORUDoProperty *entry = entry_at(*props, index);
    if (entry == nullptr)
        return;
    const char *name = entry->name->str;
    if (name == nullptr)
        ORU_FATAL("Name is NULL");
    if (props->hash_table != nullptr && oru::properties_index_take(*props, name) == nullptr)
        ORU_FATAL("Cant find prop in hashtable %s", name);
    unlink(*props, entry);
    ORU_TRACE(Level::detail, "oru props %p removed item by index idx=%d name :%s",
              static_cast<void *>(props), index, name);
    release_entry(entry);
}

void oru_do_properties_remove_by_name(ORUDoProperties *props, const char *name) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(name);
    ORUDoProperty *entry = props->hash_table != nullptr ? oru::properties_index_take(*props, name)
                                                        : oru::properties_find(*props, name);
    if (entry == nullptr) {
        if (props->hash_table != nullptr)
            ORU_TRACE(Level::failure, "Failed to remove property from props table");
        return;
    }
    unlink(*props, entry);
    ORU_TRACE(Level::detail, "oru props %p removed item name: %s", static_cast<void *>(props),
              entry->name->str);
    release_entry(entry);
}

void oru_do_properties_clear(ORUDoProperties *props) {
    if (props == nullptr)
        return;
    release_entries(*props);
    ORU_TRACE(Level::detail, "oru props %p cleaned", static_cast<void *>(props));
}

void oru_do_properties_reset_values(ORUDoProperties *props) {
    ORU_REQUIRE(props);
    for (ORUDoProperty *entry = props->first; entry != nullptr; entry = entry->next)
        oru::deref(std::exchange(entry->value, nullptr));
}

ORU_OBJECT_API(ORUDoProperties, oru_do_properties)
