#include "frame/hashtable.h"

#include <cstring>

#include "frame/trace.h"
#include "oruplatform/poolheap.h"

namespace {

using oru::HashElement;
using oru::Level;

constexpr int32_t kRefused = 1;
constexpr int32_t kNotFound = 2;
constexpr int32_t kNoMemory = 12;
constexpr int32_t kExists = 17;
constexpr int32_t kBadArgument = 22;

constexpr float kTargetLoad = 0.5F;
constexpr float kGrowLoad = 4.0F;

// Stands for the entry at hand once that was removed: no key is equal to its key.
HashElement removed_at_hand{};

void *alloc_heap_element() {
    return ph_calloc_named(oru::tag_word(oru::Tag::ht_array), 1, sizeof(HashElement));
}

void free_heap_element(void *element) {
    ph_free_named(element);
}

uint32_t hash_of(const ORUHashtable &table, const void *key) {
    switch (table.key_kind) {
        case ORU_HASHTABLE_KEY_TEXT:
            return oru::hash_text(static_cast<const char *>(key));
        case ORU_HASHTABLE_KEY_CUSTOM:
            return table.hash(key);
        default:
            ORU_FATAL("default case");
    }
}

bool same_key(const ORUHashtable &table, const void *stored, const void *key) {
    if (stored == key)
        return true;
    if (table.key_kind == ORU_HASHTABLE_KEY_CUSTOM)
        return table.match(stored, key) != 0;
    const auto *a = static_cast<const char *>(stored);
    const auto *b = static_cast<const char *>(key);
    return *a == *b && std::strcmp(a, b) == 0;
}

ORUHashtable *create(const ORUHashtable &settings) {
    if (settings.alloc_elem == nullptr || settings.free_elem == nullptr) {
        ORU_TRACE(Level::failure, "Invalid memory management functions alloc %p free %p",
                  reinterpret_cast<void *>(settings.alloc_elem),
                  reinterpret_cast<void *>(settings.free_elem));
        return nullptr;
    }
    auto *table = oru::make_element<ORUHashtable>(settings);
    if (table == nullptr) {
        ORU_TRACE(Level::failure, "Failed to allocate table");
        return nullptr;
    }
    table->buckets = oru::hashtable_make_buckets(settings.size);
    if (table->buckets == nullptr) {
        ORU_TRACE(Level::failure, "Failed to allocate hashtable bucket array");
        oru::free_element(table);
        return nullptr;
    }
    return table;
}

ORUHashtable *create_fixed(ORUHashtable settings) {
    if (settings.alloc_elem == nullptr && settings.free_elem == nullptr) {
        settings.alloc_elem = alloc_heap_element;
        settings.free_elem = free_heap_element;
    }
    return create(settings);
}

HashElement &bucket_of(ORUHashtable &table, const void *key) {
    return oru::hashtable_bucket(table, table.buckets, table.size, key);
}

// What both inserts look at first; 0 when the entry can be stored.
int32_t prepare_insert(ORUHashtable *table, const void *key) {
    if (table == nullptr) {
        ORU_TRACE(Level::failure, "hashtable null");
        return kBadArgument;
    }
    if (key == nullptr) {
        ORU_TRACE(Level::failure, "null key");
        return kBadArgument;
    }
    if (table->walking != nullptr)
        return kRefused;
    if (table->dynamic != 0 && !oru::hashtable_grow(*table))
        return kNoMemory;
    return 0;
}

// Links a new element at the end of the chain, unless the key is in it.
int32_t append_to_chain(ORUHashtable &table, HashElement *element, void *key, void *value) {
    for (;; element = element->next) {
        if (same_key(table, element->key, key))
            return kExists;
        if (element->next == nullptr)
            break;
    }
    auto *added = static_cast<HashElement *>(table.alloc_elem());
    if (added == nullptr) {
        ORU_TRACE(Level::failure, "failed to alloc elem");
        return kNoMemory;
    }
    *added = {key, value, nullptr};
    element->next = added;
    ++table.conflicts;
    return 0;
}

// An entry, and the element in front of it: null when the entry is the bucket itself.
struct Place {
    HashElement *before;
    HashElement *element;
};

// During a walk keys that were inserted quickly may occur twice: the entry at hand is meant then.
bool is_wanted(const ORUHashtable &table, const HashElement *element, const void *key) {
    return (table.walking == nullptr || table.walking == element) &&
           same_key(table, element->key, key);
}

Place find(ORUHashtable &table, const void *key) {
    HashElement *element = &bucket_of(table, key);
    if (element->key == nullptr)
        return {nullptr, nullptr};
    HashElement *before = nullptr;
    while (element != nullptr && !is_wanted(table, element, key)) {
        before = element;
        element = element->next;
    }
    return {before, element};
}

void unlink(ORUHashtable &table, Place place) {
    HashElement *freed = place.element;
    if (place.before != nullptr) {
        place.before->next = place.element->next;
        --table.conflicts;
    } else if (HashElement *next = place.element->next; next != nullptr) {
        *place.element = *next;
        freed = next;
    } else {
        *place.element = {};
        freed = nullptr;
    }
    if (freed != nullptr)
        table.free_elem(freed);
    --table.entries;
}

// One step of a walk: false when the function wants no more. `element` becomes the one to go on
// with. The link is read ahead, but a bucket whose entry was removed may hold the next one itself.
template <class Function>
bool visit(ORUHashtable &table, HashElement &bucket, HashElement *&element, Function &&function) {
    HashElement *next = element->next;
    table.walking = element;
    const bool go_on = function(*element);
    const bool refilled = element == &bucket && table.walking == &removed_at_hand;
    table.walking = nullptr;
    if (refilled)
        next = bucket.key != nullptr ? &bucket : nullptr;
    element = next;
    return go_on;
}

void close_chain(ORUHashtable &table, HashElement &bucket, void *context,
                 void (*close)(void *, void *, void *)) {
    if (bucket.key == nullptr)
        return;
    for (HashElement *element = &bucket; element != nullptr;) {
        HashElement *next = element->next;
        if (close != nullptr)
            close(element->key, element->value, context);
        if (element != &bucket)
            table.free_elem(element);
        element = next;
    }
}

}  // namespace

HashElement *oru::hashtable_make_buckets(uint32_t size) {
    return static_cast<HashElement *>(
        ph_calloc_named(tag_word(Tag::ht_array), size, sizeof(HashElement)));
}

HashElement &oru::hashtable_bucket(const ORUHashtable &table, HashElement *buckets, uint32_t size,
                                   const void *key) {
    return buckets[hash_of(table, key) % size];
}

bool oru::hashtable_place(ORUHashtable &table, HashElement &bucket, void *key, void *value,
                          HashElement *brought) {
    if (bucket.key == nullptr) {
        bucket = {key, value, nullptr};
        if (brought != nullptr)
            table.free_elem(brought);
        return true;
    }
    auto *element = brought != nullptr ? brought : static_cast<HashElement *>(table.alloc_elem());
    if (element == nullptr)
        return false;
    *element = {key, value, bucket.next};
    bucket.next = element;
    return true;
}

ORUHashtable *oru_hashtable_create(uint32_t key_kind, uint32_t size, void *(*alloc_elem)(void),
                                   void (*free_elem)(void *element)) {
    ORUHashtable settings{};
    settings.key_kind = key_kind;
    settings.size = size;
    settings.alloc_elem = alloc_elem;
    settings.free_elem = free_elem;
    return create_fixed(settings);
}

ORUHashtable *oru_hashtable_create_custom(uint32_t size, uint32_t (*hash)(const void *key),
                                          int32_t (*match)(const void *a, const void *b),
                                          void *(*alloc_elem)(void),
                                          void (*free_elem)(void *element)) {
    ORUHashtable settings{};
    settings.key_kind = ORU_HASHTABLE_KEY_CUSTOM;
    settings.size = size;
    settings.hash = hash;
    settings.match = match;
    settings.alloc_elem = alloc_elem;
    settings.free_elem = free_elem;
    return create_fixed(settings);
}

ORUHashtable *oru_hashtable_dynamic_create(uint32_t key_kind, uint32_t size, uint32_t max_size,
                                           void *(*alloc_elem)(void),
                                           void (*free_elem)(void *element)) {
    ORUHashtable settings{};
    settings.key_kind = key_kind;
    settings.size = size;
    settings.alloc_elem = alloc_elem;
    settings.free_elem = free_elem;
    settings.dynamic = 1;
    settings.target_load = kTargetLoad;
    settings.grow_load = kGrowLoad;
    settings.initial_size = size;
    settings.max_size = max_size;
    return create(settings);
}

int32_t oru_hashtable_insert(ORUHashtable *table, const void *key, void *value) {
    if (const int32_t rc = prepare_insert(table, key); rc != 0)
        return rc;
    auto *stored_key = const_cast<void *>(key);
    HashElement &bucket = bucket_of(*table, key);
    if (bucket.key == nullptr) {
        bucket = {stored_key, value, nullptr};
    } else if (const int32_t rc = append_to_chain(*table, &bucket, stored_key, value); rc != 0) {
        return rc;
    }
    ++table->entries;
    return 0;
}

int32_t oru_hashtable_insert_quick(ORUHashtable *table, const void *key, void *value) {
    if (const int32_t rc = prepare_insert(table, key); rc != 0)
        return rc;
    HashElement &bucket = bucket_of(*table, key);
    if (!oru::hashtable_place(*table, bucket, const_cast<void *>(key), value, nullptr))
        return kNoMemory;
    ++table->entries;
    return 0;
}

int32_t oru_hashtable_search(ORUHashtable *table, const void *key, void **value_out) {
    if (table == nullptr || key == nullptr || value_out == nullptr)
        return kBadArgument;
    const HashElement *element = &bucket_of(*table, key);
    if (element->key == nullptr)
        return kNotFound;
    while (element != nullptr && !same_key(*table, element->key, key))
        element = element->next;
    if (element == nullptr)
        return kNotFound;
    *value_out = element->value;
    return 0;
}

int32_t oru_hashtable_remove(ORUHashtable *table, const void *key, void **key_out,
                             void **value_out) {
    if (table == nullptr || key == nullptr)
        return kBadArgument;
    if (HashElement *at_hand = table->walking;
        at_hand != nullptr && (at_hand->key == nullptr || !same_key(*table, at_hand->key, key))) {
        return kRefused;
    }
    const Place place = find(*table, key);
    if (place.element == nullptr)
        return kNotFound;
    if (key_out != nullptr)
        *key_out = place.element->key;
    if (value_out != nullptr)
        *value_out = place.element->value;
    unlink(*table, place);
    if (table->walking != nullptr)
        table->walking = &removed_at_hand;
    return 0;
}

int32_t oru_hashtable_walk(ORUHashtable *table, void *context,
                           int32_t (*walk)(void *key, void *value, void *context, void *element)) {
    if (table == nullptr || walk == nullptr)
        return kBadArgument;
    if (table->walking != nullptr)
        return kRefused;
    const auto call = [context, walk](HashElement &element) {
        return walk(element.key, element.value, context, &element) != 0;
    };
    for (uint32_t i = 0; i < table->size; ++i) {
        HashElement &bucket = table->buckets[i];
        HashElement *element = bucket.key != nullptr ? &bucket : nullptr;
        while (element != nullptr) {
            if (!visit(*table, bucket, element, call))
                return 0;
        }
    }
    return 0;
}

int32_t oru_hashtable_close(ORUHashtable *table, void *context,
                            void (*close)(void *key, void *value, void *context)) {
    if (table == nullptr || table->buckets == nullptr)
        return kBadArgument;
    for (uint32_t i = 0; i < table->size; ++i)
        close_chain(*table, table->buckets[i], context, close);
    ph_free_named(table->buckets);
    oru::free_element(table);
    return 0;
}

int32_t oru_hashtable_num_entries(ORUHashtable *table) {
    ORU_REQUIRE(table);
    return static_cast<int32_t>(table->entries);
}

int32_t oru_hashtable_get_size(ORUHashtable *table) {
    ORU_REQUIRE(table);
    return static_cast<int32_t>(table->size);
}

int32_t oru_hashtable_get_conflicts(ORUHashtable *table) {
    ORU_REQUIRE(table);
    return static_cast<int32_t>(table->conflicts);
}

double oru_hashtable_get_load_factor(ORUHashtable *table) {
    ORU_REQUIRE(table);
    return static_cast<double>(table->entries) / static_cast<double>(table->size);
}

ORU_POOL_API(oru::pool_of<ORUHashtable>, oru_hashtable)
