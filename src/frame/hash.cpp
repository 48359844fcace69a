// Hash and match functions of the hash tables.
#include <cstring>

#include "frame/hashtable.h"
#include "frame/require.h"

namespace {

template <size_t size>
uint32_t hash_of(const void *key) {
    ORU_REQUIRE(key);
    return oru_hash_calculate(key, size);
}

template <size_t size>
bool same_bytes(const void *a, const void *b) {
    ORU_REQUIRE(a);
    ORU_REQUIRE(b);
    return std::memcmp(a, b, size) == 0;
}

const char *held_text(const void *holder) {
    return *static_cast<const char *const *>(holder);
}

}  // namespace

uint32_t oru_hash_calculate(const void *bytes, int32_t n) {
    ORU_REQUIRE_AS(bytes != nullptr || n < 1, "bytes");
    const auto *byte = static_cast<const char *>(bytes);
    uint32_t hash = 0;
    for (int32_t i = 0; i < n; ++i)
        hash = oru::hash_step(hash, byte[i]);
    return oru::hash_end(hash);
}

uint32_t oru_hash_str_calc(const char *text) {
    ORU_REQUIRE(text);
    return oru::hash_text(text);
}

uint32_t oru_hashset_str_calc(const void *holder) {
    ORU_REQUIRE(holder);
    return oru_hash_str_calc(held_text(holder));
}

uint32_t oru_hash_int_calc(const void *key) {
    return hash_of<sizeof(int32_t)>(key);
}

uint32_t oru_hash_unsigned_int_calc(const void *key) {
    return hash_of<sizeof(uint32_t)>(key);
}

uint32_t oru_hashset_int_calc(const void *key) {
    return hash_of<sizeof(int32_t)>(key);
}

uint32_t oru_hash_long_calc(const void *key) {
    return hash_of<sizeof(int64_t)>(key);
}

uint32_t oru_hashset_long_calc(const void *key) {
    return hash_of<sizeof(int64_t)>(key);
}

int32_t oru_hash_int_matcher(const void *a, const void *b) {
    return same_bytes<sizeof(int32_t)>(a, b);
}

int32_t oru_hash_unsigned_int_matcher(const void *a, const void *b) {
    return same_bytes<sizeof(uint32_t)>(a, b);
}

int32_t oru_hashset_int_matcher(const void *a, const void *b) {
    return same_bytes<sizeof(int32_t)>(a, b);
}

int32_t oru_hashset_long_matcher(const void *a, const void *b) {
    return same_bytes<sizeof(int64_t)>(a, b);
}

// The other way round: made for tables that want a comparison.
int32_t oru_hash_long_matcher(const void *a, const void *b) {
    return !same_bytes<sizeof(int64_t)>(a, b);
}

int32_t oru_hash_str_matcher(const char *a, const char *b) {
    ORU_REQUIRE(a);
    ORU_REQUIRE(b);
    return std::strcmp(a, b);
}

int32_t oru_hashset_str_matcher(const void *holder1, const void *holder2) {
    ORU_REQUIRE(holder1);
    ORU_REQUIRE(holder2);
    return oru_hash_str_matcher(held_text(holder1), held_text(holder2)) == 0;
}
