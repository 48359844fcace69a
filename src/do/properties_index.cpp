#include "do/properties_index.h"

#include <cstring>

#include "do/name.h"
#include "do/properties_settings.h"
#include "frame/hashtable.h"

namespace {

oru::Pool elem_pool{"oru_do_properties_hashtable_elem", oru::Tag::props_ht_elem,
                    sizeof(oru::HashElement)};

void *alloc_elem() {
    void *element = elem_pool.take();
    return element != nullptr ? std::memset(element, 0, sizeof(oru::HashElement)) : nullptr;
}

void free_elem(void *element) {
    elem_pool.give(element);
}

}  // namespace

void oru::properties_index_make(ORUDoProperties &properties) {
    properties.hash_table = oru_hashtable_create(
        ORU_HASHTABLE_KEY_TEXT, properties_settings.hash_table_size, alloc_elem, free_elem);
    if (properties.hash_table == nullptr)
        ORU_FATAL("Failed to create properties table");
    for (ORUDoProperty *entry = properties.first; entry != nullptr; entry = entry->next)
        properties_index_add(properties, *entry);
}

void oru::properties_index_add(ORUDoProperties &properties, ORUDoProperty &property) {
    const char *name = property.name->str;
    if (oru_hashtable_insert(properties.hash_table, name, &property) != 0)
        ORU_FATAL("Unable to add property to hashtable %s", name);
}

// A search of the table in which keys are known to be the texts of names.
ORUDoProperty *oru::properties_index_find(const ORUDoProperties &properties, const char *name) {
    const ORUHashtable &index = *properties.hash_table;
    const char *end;
    const HashElement *element = &index.buckets[hash_text(name, end) % index.size];
    if (element->key == nullptr)
        return nullptr;
    const NameQuery query(name, static_cast<size_t>(end - name));
    while (element != nullptr && !query.matches(static_cast<const char *>(element->key)))
        element = element->next;
    return element != nullptr ? static_cast<ORUDoProperty *>(element->value) : nullptr;
}

ORUDoProperty *oru::properties_index_take(ORUDoProperties &properties, const char *name) {
    void *entry = nullptr;
    oru_hashtable_remove(properties.hash_table, name, nullptr, &entry);
    return static_cast<ORUDoProperty *>(entry);
}

void oru::properties_index_close(ORUDoProperties &properties) {
    if (properties.hash_table == nullptr)
        return;
    if (oru_hashtable_close(properties.hash_table, nullptr, nullptr) != 0)
        ORU_FATAL("Failed to close hashtable");
    properties.hash_table = nullptr;
}

ORU_POOL_API(elem_pool, oru_do_properties_hashtable_elem)
