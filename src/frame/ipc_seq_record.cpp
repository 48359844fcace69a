// Keys and wait records: the elements that a sequence table is fed with.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "frame/ipc_seq.h"
#include "frame/trace.h"

namespace {

using oru::Level;

constexpr size_t kKeySize = ORU_IPC_SEQ_KEY_LENGTH + 1;

// All elements have the one size.
union Element {
    seq_ht_table table;
    ht_val val;
    char key[kKeySize];
};

// The key of a text. One of just the size of a key is cut, and nobody hears of it.
template <class TraceFailure>
char *build_key(const char *text, TraceFailure &&trace_failure) {
    auto *key = static_cast<char *>(oru::ipc_seq_take());
    if (key == nullptr)
        return nullptr;
    const size_t length = std::strlen(text);
    std::memcpy(key, text, std::min(length, size_t{ORU_IPC_SEQ_KEY_LENGTH}));
    if (length > kKeySize) {
        trace_failure();
    } else if (length < kKeySize) {
        ORU_TRACE(Level::detail, "ht_key: %s %p", key, static_cast<void *>(key));
    }
    return key;
}

}  // namespace

oru::Pool oru::ipc_seq_pool{"seq_ht_table", Tag::seq_ht_table, sizeof(Element)};

void *oru::ipc_seq_take() {
    void *block = ipc_seq_pool.take();
    return block != nullptr ? std::memset(block, 0, sizeof(Element)) : nullptr;
}

char *util_build_key(uint32_t n) {
    ORU_TRACE(Level::detail, "util build key %u", n);
    char digits[kKeySize];
    std::snprintf(digits, sizeof digits, "%X", n);
    return build_key(digits, [n] {  // no number is so long
        ORU_TRACE(Level::failure, "Failed to build hashmap key (sesson=%X)", n);
    });
}

char *util_build_key_from_str(const char *text) {
    if (text == nullptr) {
        ORU_TRACE(Level::failure, "Failed to build hashmap key (input is NULL)");
        return nullptr;
    }
    ORU_TRACE(Level::detail, "util build key str %s", text);
    return build_key(text, [text] {
        ORU_TRACE(Level::failure, "Failed to build hashmap key (input=%s)", text);
    });
}

void ipc_seq_delete_ht_key(char *key) {
    if (key == nullptr) {
        ORU_TRACE(Level::failure, "failed to delete hash table key, key passed in is NULL");
        return;
    }
    ORU_TRACE(Level::detail, "Delete key %s %p", key, static_cast<void *>(key));
    oru::ipc_seq_pool.give(key);
}

ht_val *ipc_seq_create_ht_val(uint32_t session_id) {
    auto *val = static_cast<ht_val *>(oru::ipc_seq_take());
    if (val == nullptr) {
        ORU_TRACE(Level::failure, "Failed to malloc hash table value");
        return nullptr;
    }
    val->session_id = session_id;
    if (oru_mtx_init("oru_ipc_snd_rcv_mutex", &val->lock, nullptr) != 0) {
        ORU_TRACE(Level::failure, "Failed to initialize oru_ipc_snd_rcv_mutex");
        oru::ipc_seq_pool.give(val);
        return nullptr;
    }
    oru_cond_init(&val->cond, nullptr);
    return val;
}

void ipc_seq_delete_ht_val(ht_val *val) {
    if (val == nullptr) {
        ORU_TRACE(Level::failure, "failed to delete hash table value. value passed in is NULL");
        return;
    }
    oru_cond_destroy(&val->cond);
    oru_mtx_destroy(&val->lock);
    ORU_TRACE(Level::detail, "Delete value %p", static_cast<void *>(val));
    oru::ipc_seq_pool.give(val);
}

ORU_POOL_API(oru::ipc_seq_pool, seq_ht_table)
