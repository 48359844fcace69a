// The cache of query results beside two that are put together from parts of a library each: a map
// and a list, as the standard library and GLib have them. A hit finds the entry and makes it the
// newest; a miss finds nothing, and adds an entry to a full cache, from which the oldest one goes.
// Most of our hit is the hash of the key, whose steps wait for each other byte by byte; GLib's has
// shorter ones, that of the standard library takes eight bytes at a time.
// Tracing is off, as it is by default, and all pools are sized.
#include <oru/properties.h>
#include <oru/record_cache.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>

#include <list>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "bench/ratios.h"

#ifdef ORU_BENCH_GLIB
#include <glib.h>
#endif

namespace {

constexpr size_t kSize = 500;
constexpr uint32_t kKeyTag = 0x2f00001;

void size_pools() {
    init_chunk_poolheap_record_cache(4 * kSize, CHUNK_FLAG_GROW);
    init_chunk_poolheap_record_cache_hashtable_elem(2 * kSize, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_properties(16, CHUNK_FLAG_GROW);
}

// Addresses as queries have them, asked for in an order that no predictor follows.
class Addresses {
  public:
    explicit Addresses(size_t count) {
        for (size_t i = 0; i < count; ++i) {
            texts_.push_back("//locations;locationId=global/chassis;id=" + std::to_string(i / 50) +
                             "/slots;number=" + std::to_string(i % 50) + "?ports");
        }
    }
    const std::string &at(size_t i) const { return texts_[i]; }
    const std::string &any() {
        random_ = random_ * 1664525u + 1013904223u;
        return texts_[(random_ >> 8) % texts_.size()];
    }
    // One after the other: the one that comes next is always gone from a cache of half of them.
    const std::string &next() { return texts_[at_++ % texts_.size()]; }

  private:
    std::vector<std::string> texts_;
    uint32_t random_ = 12345;
    size_t at_ = 0;
};

class Ours {
  public:
    Ours() { init_query_record_cache(&cache_, kSize, free_key); }
    ~Ours() {
        destroy_query_record_cache(&cache_);
        oru_do_properties_deref(record_);
    }
    void add(const std::string &key) {
        add_query_record_cache(&cache_, ph_strdup_named(kKeyTag, key.c_str()),
                               oru_do_properties_ref(record_));
    }
    void *find(const std::string &key) { return find_query_record_cache(&cache_, key.c_str()); }

  private:
    static void free_key(void *key) { ph_free_named(key); }

    query_record_cache cache_{};
    ORUDoProperties *record_ = oru_do_properties_new();
};

class Unordered {
  public:
    void add(const std::string &key) {
        if (map_.size() == kSize) {
            map_.erase(entries_.back().key);
            entries_.pop_back();
        }
        entries_.push_front({key, record_});
        map_.emplace(entries_.front().key, entries_.begin());
    }
    void *find(const std::string &key) {
        const auto found = map_.find(key);
        if (found == map_.end())
            return nullptr;
        entries_.splice(entries_.begin(), entries_, found->second);
        return found->second->record.get();
    }

  private:
    struct Entry {
        std::string key;
        std::shared_ptr<int> record;
    };
    std::list<Entry> entries_;
    std::unordered_map<std::string_view, std::list<Entry>::iterator> map_;
    std::shared_ptr<int> record_ = std::make_shared<int>(1);
};

#ifdef ORU_BENCH_GLIB
class Glib {
  public:
    ~Glib() {
        g_hash_table_destroy(map_);
        g_queue_free_full(ages_, g_free);
        g_atomic_rc_box_release(record_);
    }
    void add(const std::string &key) {
        if (g_hash_table_size(map_) == kSize) {
            char *oldest = static_cast<char *>(g_queue_pop_tail(ages_));
            g_hash_table_remove(map_, oldest);
            g_free(oldest);
        }
        g_queue_push_head(ages_, g_strdup(key.c_str()));
        GList *node = g_queue_peek_head_link(ages_);
        g_atomic_rc_box_acquire(record_);
        g_hash_table_insert(map_, node->data, new Item{node, record_});
    }
    void *find(const std::string &key) {
        auto *item = static_cast<Item *>(g_hash_table_lookup(map_, key.c_str()));
        if (item == nullptr)
            return nullptr;
        g_queue_unlink(ages_, item->node);
        g_queue_push_head_link(ages_, item->node);
        return item->record;
    }

  private:
    struct Item {
        GList *node;
        void *record;
    };
    static void free_item(void *data) {
        auto *item = static_cast<Item *>(data);
        g_atomic_rc_box_release(item->record);
        delete item;
    }

    GHashTable *map_ = g_hash_table_new_full(g_str_hash, g_str_equal, nullptr, free_item);
    GQueue *ages_ = g_queue_new();
    void *record_ = g_atomic_rc_box_alloc0(sizeof(int));
};
#endif

template <class Cache>
void hit(benchmark::State &state) {
    Cache cache;
    Addresses addresses(kSize);
    for (size_t i = 0; i < kSize; ++i)
        cache.add(addresses.at(i));
    for (auto _ : state)
        benchmark::DoNotOptimize(cache.find(addresses.any()));
}

template <class Cache>
void miss(benchmark::State &state) {
    Cache cache;
    Addresses addresses(2 * kSize);
    for (auto _ : state) {
        const std::string &key = addresses.next();
        benchmark::DoNotOptimize(cache.find(key));
        cache.add(key);
    }
}

template <class Cache>
void add(const std::string &contender) {
    oru::bench::compare("hit in 500 entries/" + contender, hit<Cache>);
    oru::bench::compare("miss, add, prune/" + contender, miss<Cache>);
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    size_pools();
    add<Ours>("ours");
    add<Unordered>("unordered_map");
#ifdef ORU_BENCH_GLIB
    add<Glib>("GHashTable");
#endif
    return oru::bench::run_all(argc, argv);
}
