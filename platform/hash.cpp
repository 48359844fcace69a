#include "oruplatform/hash.h"

#include <atomic>
#include <cstring>

#include "oruplatform/poolheap.h"
#include "platform/codes.h"

using namespace oru::platform;

namespace {

using HashFn = uint32_t (*)(const char *);
using MatchFn = int32_t (*)(const char *, const char *);

constexpr uint32_t kDefaultSize = 16;
constexpr uint32_t kMaxSize = 1u << 28;

struct Entry {
    Entry *chain;  // next in the bucket
    Entry *before;
    Entry *after;  // in the order of insertion
    const char *key;
    void *item;
    uint32_t hash;
    bool removed;
};

// Entries that are removed while somebody walks stay in the order of insertion, out of their bucket
// and marked, until the last walk ends.
struct Table {
    HashFn hash;
    MatchFn match;
    Entry **buckets;
    uint32_t bucket_count;  // a power of two
    uint32_t count;
    Entry *first;
    Entry *last;
    std::atomic<uint32_t> walks;
    bool has_removed;
};

uint32_t hash_text(const char *text) {
    uint32_t hash = 2166136261u;
    for (; *text != '\0'; text++) {
        hash = (hash ^ static_cast<unsigned char>(*text)) * 16777619u;
    }
    return hash ^ (hash >> 15);
}

int32_t match_text(const char *a, const char *b) {
    return strcmp(a, b);
}

uint32_t bucket_count_for(uint32_t size) {
    uint32_t count = kDefaultSize;
    while (count < size && count < kMaxSize) {
        count *= 2;
    }
    return count;
}

Entry **make_buckets(uint32_t count) {
    return static_cast<Entry **>(ph_calloc_named(kTagHashBuckets, count, sizeof(Entry *)));
}

Entry *&bucket_of(Table &table, uint32_t hash) {
    return table.buckets[hash & (table.bucket_count - 1)];
}

// The link that leads to the entry of the key; it holds null when there is none.
Entry **find_link(Table &table, const char *key, uint32_t hash) {
    Entry **link = &bucket_of(table, hash);
    while (*link != nullptr && ((*link)->hash != hash || table.match(key, (*link)->key) != 0)) {
        link = &(*link)->chain;
    }
    return link;
}

// Without memory the chains just become longer.
void grow(Table &table) {
    if (table.count < table.bucket_count || table.bucket_count >= kMaxSize) {
        return;
    }
    Entry **buckets = make_buckets(table.bucket_count * 2);
    if (buckets == nullptr) {
        return;
    }
    ph_free_named(table.buckets);
    table.buckets = buckets;
    table.bucket_count *= 2;
    for (Entry *entry = table.first; entry != nullptr; entry = entry->after) {
        if (!entry->removed) {
            Entry *&bucket = bucket_of(table, entry->hash);
            entry->chain = bucket;
            bucket = entry;
        }
    }
}

void append(Table &table, Entry *entry) {
    entry->before = table.last;
    (table.last == nullptr ? table.first : table.last->after) = entry;
    table.last = entry;
}

void unlink_and_free(Table &table, Entry *entry) {
    (entry->before == nullptr ? table.first : entry->before->after) = entry->after;
    (entry->after == nullptr ? table.last : entry->after->before) = entry->before;
    ph_free_named(entry);
}

void sweep(Table &table) {
    table.has_removed = false;
    for (Entry *entry = table.first; entry != nullptr;) {
        Entry *after = entry->after;
        if (entry->removed) {
            unlink_and_free(table, entry);
        }
        entry = after;
    }
}

template <class Visit>
int32_t walk(Table &table, Visit visit) {
    int32_t result = 0;
    table.walks.fetch_add(1);
    for (Entry *entry = table.first; entry != nullptr; entry = entry->after) {
        if (!entry->removed && visit(*entry) == 0) {
            result = 1;
            break;
        }
    }
    if (table.walks.fetch_sub(1) == 1 && table.has_removed) {
        sweep(table);
    }
    return result;
}

}  // namespace

void *hashMake(uint32_t size) {
    return hashMakeTable(size, nullptr, nullptr);
}

void *hashMakeTable(uint32_t size, uint32_t (*hash)(const char *),
                    int32_t (*match)(const char *, const char *)) {
    auto *table = static_cast<Table *>(ph_calloc_named(kTagHashTable, 1, sizeof(Table)));
    if (table == nullptr) {
        return nullptr;
    }
    table->hash = hash != nullptr ? hash : hash_text;
    table->match = match != nullptr ? match : match_text;
    table->bucket_count = bucket_count_for(size);
    table->buckets = make_buckets(table->bucket_count);
    if (table->buckets == nullptr) {
        ph_free_named(table);
        return nullptr;
    }
    return table;
}

int32_t hashAdd(void *handle, const char *key, void *item) {
    if (handle == nullptr || key == nullptr) {
        return kInvalid;
    }
    auto &table = *static_cast<Table *>(handle);
    const uint32_t hash = table.hash(key);
    if (*find_link(table, key, hash) != nullptr) {
        return kExists;
    }
    auto *entry = static_cast<Entry *>(ph_malloc_named(kTagHashEntry, sizeof(Entry)));
    if (entry == nullptr) {
        return kNoMemory;
    }
    grow(table);
    Entry *&bucket = bucket_of(table, hash);
    *entry = {.chain = bucket, .key = key, .item = item, .hash = hash};
    bucket = entry;
    append(table, entry);
    table.count++;
    return kOk;
}

void *hashFind(void *handle, const char *key) {
    if (handle == nullptr || key == nullptr) {
        return nullptr;
    }
    auto &table = *static_cast<Table *>(handle);
    const Entry *entry = *find_link(table, key, table.hash(key));
    return entry == nullptr ? nullptr : entry->item;
}

void *hashRemove(void *handle, const char *key) {
    if (handle == nullptr || key == nullptr) {
        return nullptr;
    }
    auto &table = *static_cast<Table *>(handle);
    Entry **link = find_link(table, key, table.hash(key));
    Entry *entry = *link;
    if (entry == nullptr) {
        return nullptr;
    }
    void *item = entry->item;
    *link = entry->chain;
    table.count--;
    if (table.walks.load() == 0) {
        unlink_and_free(table, entry);
    } else {
        entry->removed = true;
        table.has_removed = true;
    }
    return item;
}

int32_t hashWalk(void *handle, int32_t, int32_t (*fn)(void *table, void *item)) {
    if (handle == nullptr || fn == nullptr) {
        return kInvalid;
    }
    return walk(*static_cast<Table *>(handle),
                [=](const Entry &entry) { return fn(handle, entry.item); });
}

int32_t hashWalkWithContext(void *handle, int32_t,
                            int32_t (*fn)(void *table, void *item, const char *key, void *context),
                            void *context) {
    if (handle == nullptr || fn == nullptr) {
        return kInvalid;
    }
    return walk(*static_cast<Table *>(handle),
                [=](const Entry &entry) { return fn(handle, entry.item, entry.key, context); });
}

void hashCloseWithFunction(void *handle, int32_t (*fn)(void *item)) {
    if (handle == nullptr) {
        return;
    }
    auto *table = static_cast<Table *>(handle);
    for (Entry *entry = table->first; entry != nullptr;) {
        Entry *after = entry->after;
        if (fn != nullptr && !entry->removed) {
            fn(entry->item);
        }
        ph_free_named(entry);
        entry = after;
    }
    ph_free_named(table->buckets);
    ph_free_named(table);
}
