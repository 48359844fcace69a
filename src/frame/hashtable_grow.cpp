#include "frame/hashtable.h"

#include "frame/trace.h"
#include "oruplatform/poolheap.h"

namespace oru {
namespace {

double load_of(const ORUHashtable &table, uint64_t size) {
    return static_cast<double>(table.entries) / static_cast<double>(size);
}

// Doubled until the load is below its target; the bound is never passed.
uint32_t grown_size(const ORUHashtable &table) {
    uint64_t size = table.size;
    while (load_of(table, size) >= table.target_load && 2 * size <= table.max_size) {
        size *= 2;
    }
    return static_cast<uint32_t>(size);
}

bool wants_growth(const ORUHashtable &table) {
    return load_of(table, table.size) >= table.grow_load && table.size <= table.max_size;
}

void rehash_entry(ORUHashtable &table, HashElement *buckets, uint32_t size, void *key, void *value,
                  HashElement *element) {
    HashElement &bucket = hashtable_bucket(table, buckets, size, key);
    if (!hashtable_place(table, bucket, key, value, element))
        ORU_FATAL("copy failed");
}

// In the order of the old buckets. Chained elements move along; the entry of a bucket has none to
// bring.
void rehash(ORUHashtable &table, HashElement *buckets, uint32_t size) {
    for (uint32_t i = 0; i < table.size; ++i) {
        HashElement &old = table.buckets[i];
        if (old.key == nullptr)
            continue;
        rehash_entry(table, buckets, size, old.key, old.value, nullptr);
        for (HashElement *element = old.next; element != nullptr;) {
            HashElement *next = element->next;
            rehash_entry(table, buckets, size, element->key, element->value, element);
            element = next;
        }
    }
}

}  // namespace

bool hashtable_grow(ORUHashtable &table) {
    if (!wants_growth(table))
        return true;
    const uint32_t size = grown_size(table);
    if (size <= table.size)
        return true;
    HashElement *buckets = hashtable_make_buckets(size);
    if (buckets == nullptr)
        return false;
    rehash(table, buckets, size);
    ph_free_named(table.buckets);
    table.buckets = buckets;
    table.size = size;
    return true;
}

}  // namespace oru
