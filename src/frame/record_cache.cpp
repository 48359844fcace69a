#include "oru/record_cache.h"

#include <cstring>

#include "frame/hashtable.h"
#include "frame/pool.h"
#include "frame/require.h"
#include "frame/trace.h"
#include "oru/properties.h"

// The place of an entry in the order of age.
struct cache_size_tracker_t {
    const char *key;
    cache_size_tracker_t *newer;
    cache_size_tracker_t *older;
};

// What the table holds for a key.
struct record_cache_type_t {
    ORUDoProperties *properties;
    cache_size_tracker_t *node;
};

namespace {

using oru::Level;

// Places and items share a pool.
union Element {
    cache_size_tracker_t node;
    record_cache_type_t item;
};

oru::Pool pool{"record_cache", oru::Tag::record_cache, sizeof(Element)};
oru::Pool elem_pool{"record_cache_hashtable_elem", oru::Tag::rec_cache_elem,
                    sizeof(oru::HashElement)};

template <class T>
T *take(const T &fields) {
    void *block = pool.take();
    return block != nullptr ? ::new (block) T{fields} : nullptr;
}

void *alloc_elem() {
    void *element = elem_pool.take();
    return element != nullptr ? std::memset(element, 0, sizeof(oru::HashElement)) : nullptr;
}

void free_elem(void *element) {
    elem_pool.give(element);
}

// Two buckets for each place keep chains short for good. Null also where so many cannot be counted.
ORUHashtable *make_table(uint32_t max_size) {
    if (max_size > UINT32_MAX / 2)
        return nullptr;
    return oru_hashtable_create(ORU_HASHTABLE_KEY_TEXT, max_size * 2, alloc_elem, free_elem);
}

void link_newest(query_record_cache &cache, cache_size_tracker_t *node) {
    node->newer = nullptr;
    node->older = cache.newest;
    (cache.newest != nullptr ? cache.newest->newer : cache.oldest) = node;
    cache.newest = node;
    ++cache.size;
}

void unlink(query_record_cache &cache, cache_size_tracker_t *node) {
    (node->newer != nullptr ? node->newer->older : cache.newest) = node->older;
    (node->older != nullptr ? node->older->newer : cache.oldest) = node->newer;
    --cache.size;
}

// Takes the oldest entry out of the order and out of the table. Its key stays with its node.
record_cache_type_t *take_oldest(query_record_cache &cache) {
    const char *key = cache.oldest->key;
    unlink(cache, cache.oldest);
    void *item = nullptr;
    if (oru_hashtable_remove(cache.records, key, nullptr, &item) != 0 || item == nullptr)
        ORU_FATAL("Missing record cache value %s", key);
    return static_cast<record_cache_type_t *>(item);
}

void release_item(record_cache_type_t *item) {
    oru_do_properties_deref(item->properties);
    pool.give(item);
}

void release_node(cache_size_tracker_t *node, void (*free_key)(void *key)) {
    free_key(const_cast<char *>(node->key));
    pool.give(node);
}

void free_heap_key(void *key) {
    ph_free_named(key);
}

void prune(query_record_cache &cache) {
    cache_size_tracker_t *node = cache.oldest;
    record_cache_type_t *item = take_oldest(cache);
    ORU_TRACE(Level::detail, "Record cache full - prune %s", node->key);
    release_item(item);
    release_node(node, cache.free_func != nullptr ? cache.free_func : free_heap_key);
}

void clean(query_record_cache &cache) {
    cache_size_tracker_t *node = cache.oldest;
    record_cache_type_t *item = take_oldest(cache);
    ORU_TRACE(Level::detail, "Clean cache record %s", node->key);
    release_item(item);
    if (cache.free_func == nullptr)
        ORU_FATAL("no free func");
    release_node(node, cache.free_func);
}

[[noreturn]] void refused(const query_record_cache &cache, const record_cache_type_t *item,
                          const char *key) {
    const void *records = cache.records;
    if (records != nullptr) {
        ORU_TRACE(Level::failure,
                  "Failed to insert into record cache records %p cacheitem %p uri %s", records,
                  static_cast<const void *>(item), key);
    } else {
        ORU_TRACE(Level::failure, "Failed to insert into record cache records %p cacheitem %p",
                  records, static_cast<const void *>(item));
    }
    ORU_FATAL("Record cache add failed %s", key);
}

}  // namespace

int32_t init_query_record_cache(query_record_cache *cache, uint32_t max_size,
                                void (*free_func)(void *key)) {
    ORU_REQUIRE(cache);
    if (free_func == nullptr) {
        ORU_TRACE(Level::failure, "No free_func specified");
        return 0;
    }
    *cache = {.max_size = max_size, .free_func = free_func, .records = make_table(max_size)};
    if (cache->records == nullptr)
        ORU_FATAL("Failed to create record cache hashtable");
    return 1;
}

int32_t add_query_record_cache(query_record_cache *cache, const char *key,
                               ORUDoProperties *properties) {
    ORU_REQUIRE(cache);
    ORU_TRACE(Level::detail, "Record cache add %s", key);
    // A destroyed cache is full and empty.
    if (cache->size >= cache->max_size && cache->oldest != nullptr)
        prune(*cache);
    auto *node = take(cache_size_tracker_t{.key = key});
    if (node == nullptr)
        ORU_FATAL("cant alloc cache_size_tracker_t");
    link_newest(*cache, node);
    auto *item = take(record_cache_type_t{.properties = properties, .node = node});
    if (item == nullptr)
        ORU_FATAL("cant alloc record_cache_type_t");
    if (oru_hashtable_insert(cache->records, key, item) != 0)
        refused(*cache, item, key);
    return 1;
}

ORUDoProperties *find_query_record_cache(query_record_cache *cache, const char *key) {
    ORU_REQUIRE(cache);
    void *found = nullptr;
    if (oru_hashtable_search(cache->records, key, &found) != 0)
        return nullptr;
    const auto *item = static_cast<record_cache_type_t *>(found);
    unlink(*cache, item->node);
    link_newest(*cache, item->node);
    return item->properties;
}

int32_t get_record_cache_size(query_record_cache *cache) {
    ORU_REQUIRE(cache);
    return static_cast<int32_t>(cache->size);
}

int32_t record_cache_sanity_check(query_record_cache *cache) {
    ORU_REQUIRE(cache);
    const int32_t entries = oru_hashtable_num_entries(cache->records);
    const auto size = static_cast<int32_t>(cache->size);
    if (entries == size)
        return 1;
    ORU_TRACE(Level::failure, "record cache size mismatch %d/%d", entries, size);
    return 0;
}

int32_t destroy_query_record_cache(query_record_cache *cache) {
    ORU_REQUIRE(cache);
    while (cache->oldest != nullptr)
        clean(*cache);
    if (oru_hashtable_close(cache->records, nullptr, nullptr) != 0)
        ORU_FATAL("Failed to close record cache table");
    cache->records = nullptr;
    cache->max_size = 0;
    return 1;
}

ORU_POOL_API(pool, record_cache)
ORU_POOL_API(elem_pool, record_cache_hashtable_elem)
