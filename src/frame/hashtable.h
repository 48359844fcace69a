#ifndef ORU_SRC_FRAME_HASHTABLE_H
#define ORU_SRC_FRAME_HASHTABLE_H

#include "frame/object.h"
#include "oru/hashtable.h"

namespace oru {

// A bucket, and an element chained behind one. A bucket with a null key is empty.
struct HashElement {
    void *key;
    void *value;
    HashElement *next;
};

}  // namespace oru

struct ORUHashtable {
    oru::HashElement *buckets;
    uint32_t size;
    uint32_t (*hash)(const void *key);               // custom keys only
    int32_t (*match)(const void *a, const void *b);  // custom keys only
    void *(*alloc_elem)();
    void (*free_elem)(void *element);
    uint32_t key_kind;
    uint32_t dynamic;
    float target_load;
    float grow_load;
    uint32_t initial_size;  // nothing reads it
    uint32_t max_size;
    oru::HashElement *walking;  // what a running walk has at hand
    uint32_t conflicts;
    uint32_t entries;
};

template <>
struct oru::ObjectType<ORUHashtable> {
    static constexpr const char *name = "oru_hashtable";
    static constexpr Tag tag = Tag::hashtable;
};

namespace oru {

// One character of a hash. Characters are added with their sign: stored hashes and bucket orders of
// texts above 0x7f rely on it. The sum times 1025 is taken apart, so that only a shift and an
// addition wait for the characters before.
inline uint32_t hash_step(uint32_t hash, char character) {
    const auto added = static_cast<uint32_t>(static_cast<signed char>(character));
    hash = (hash << 10) + (hash + added * 1025U);
    return hash ^ (hash >> 6);
}

inline uint32_t hash_end(uint32_t hash) {
    hash += hash << 3;
    hash ^= hash >> 11;
    return hash + (hash << 15);
}

// The hash of a zero-terminated text, in one pass; `end` becomes the place of the zero.
inline uint32_t hash_text(const char *text, const char *&end) {
    uint32_t hash = 0;
    for (end = text; *end != '\0'; ++end)
        hash = hash_step(hash, *end);
    return hash_end(hash);
}

inline uint32_t hash_text(const char *text) {
    const char *end;
    return hash_text(text, end);
}

// Growth of dynamic tables. False when memory for the larger bucket array cannot be had; the table
// is then as it was.
bool hashtable_grow(ORUHashtable &table);

// The bucket that a key belongs to in an array of `size` buckets.
HashElement &hashtable_bucket(const ORUHashtable &table, HashElement *buckets, uint32_t size,
                              const void *key);

// Stores an entry without a look at the keys that are there. `brought` is an element to use if one
// is needed; it is given back otherwise. False when an element is needed and cannot be had.
bool hashtable_place(ORUHashtable &table, HashElement &bucket, void *key, void *value,
                     HashElement *brought);

// A zeroed bucket array, or null.
HashElement *hashtable_make_buckets(uint32_t size);

}  // namespace oru

#endif
