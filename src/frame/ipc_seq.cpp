// The sequence table: made, filled, asked and destroyed.
#include "frame/ipc_seq.h"

#include "frame/trace.h"
#include "oru/hashtable.h"
#include "oru/rc.h"
#include "oruplatform/hash.h"

namespace {

using oru::ipc_seq_signal;
using oru::ipc_seq_usable;
using oru::IpcSeqLock;
using oru::Level;

// The hash table of a new record, made under its lock; the record holds it on success.
bool make_hash_table(seq_ht_table &table, uint32_t size) {
    const IpcSeqLock lock(table);
    table.ht = hashMakeTable(size, oru_hash_str_calc, oru_hash_str_matcher);
    if (table.ht == nullptr)
        ORU_TRACE(Level::failure, "Failed to create hash map");
    return table.ht != nullptr;
}

// Whoever waits on the record owns it and may free it as soon as it is signalled.
int32_t leave_to_waiter(void *item) {
    if (item == nullptr) {
        ORU_TRACE(Level::failure, "user data is NULL");
        ORU_TRACE(Level::failure, "Hashtable item has no value");
        return 1;
    }
    ORU_TRACE(Level::detail, "sync_snd_rcv(signal)");
    ipc_seq_signal(*static_cast<ht_val *>(item));
    return 1;
}

ht_val *find(const seq_ht_table &table, const char *key) {
    return static_cast<ht_val *>(hashFind(table.ht, key));
}

}  // namespace

seq_ht_table *ipc_seq_ht_init(uint32_t size) {
    auto *table = static_cast<seq_ht_table *>(oru::ipc_seq_take());
    if (table == nullptr) {
        ORU_TRACE(Level::failure, "Failed to allocate memory for seq hash table");
        return nullptr;
    }
    if (oru_mtx_init("oru_ipc_seq_ht_mutex", &table->lock, nullptr) != 0) {
        ORU_TRACE(Level::failure, "Failed to init mutex for seq hash table");
        oru::ipc_seq_pool.give(table);
        return nullptr;
    }
    if (!make_hash_table(*table, size)) {
        oru_mtx_destroy(&table->lock);
        oru::ipc_seq_pool.give(table);
        return nullptr;
    }
    return table;
}

int32_t ipc_seq_ht_destroy(seq_ht_table *table) {
    if (table == nullptr)
        return ORU_RC_GENERAL;
    if (table->ht != nullptr) {
        const IpcSeqLock lock(*table);
        hashCloseWithFunction(table->ht, leave_to_waiter);
        table->ht = nullptr;
    }
    oru_mtx_destroy(&table->lock);
    oru::ipc_seq_pool.give(table);
    return ORU_OK;
}

int32_t ipc_seq_ht_insert(seq_ht_table *table, const char *key, ht_val *val) {
    if (key == nullptr || val == nullptr) {
        ORU_TRACE(Level::failure, "ht_key=%p, ht_val=%p", static_cast<const void *>(key),
                  static_cast<void *>(val));
        return ORU_RC_GENERAL;
    }
    if (!ipc_seq_usable(table)) {
        ORU_TRACE(Level::failure, "Failed to insert, NULL hashmap");
        return ORU_RC_GENERAL;
    }
    const IpcSeqLock lock(*table);
    int32_t rc = ORU_OK;
    if (hashAdd(table->ht, key, val) != 0) {
        ORU_TRACE(Level::failure, "Failed to add key to table");
        rc = ORU_RC_GENERAL;
    }
    ORU_TRACE(Level::detail, "Inserting %s rc=%d", key, rc);
    return rc;
}

ht_val *ipc_seq_ht_find(seq_ht_table *table, const char *key) {
    if (key == nullptr || !ipc_seq_usable(table)) {
        ORU_TRACE(Level::failure, "Failed to find hashmap entry. Hashtable or key not valid");
        return nullptr;
    }
    const IpcSeqLock lock(*table);
    ht_val *val = find(*table, key);
    if (val == nullptr)
        ORU_TRACE(Level::detail, "Find %s value=(NULL)", key);
    ORU_TRACE(Level::detail, "Find %s value=%p", key, static_cast<void *>(val));
    return val;
}

int32_t ipc_seq_ht_find_and_update(seq_ht_table *table, const char *key, intptr_t reply) {
    if (key == nullptr || !ipc_seq_usable(table)) {
        ORU_TRACE(Level::failure, "Failed to find hashmap entry. hash table or key not valid");
        return ORU_OK;  // callers rely on it: there is nobody to be answered
    }
    const IpcSeqLock lock(*table);
    ht_val *val = find(*table, key);
    if (val == nullptr) {
        ORU_TRACE(Level::detail, "Did not find a entry for %s in hashtable", key);
        return ORU_RC_GENERAL;
    }
    ipc_seq_signal(*val, [reply](ht_val &changed) { changed.reply = reply; });
    return ORU_OK;
}

int32_t ipc_seq_ht_remove(seq_ht_table *table, char *key) {
    if (key == nullptr) {
        ORU_TRACE(Level::failure, "key is NULL");
        return ORU_RC_GENERAL;
    }
    if (!ipc_seq_usable(table)) {
        ORU_TRACE(Level::failure, "hash table is NULL");
        return ORU_RC_GENERAL;
    }
    const IpcSeqLock lock(*table);
    auto *val = static_cast<ht_val *>(hashRemove(table->ht, key));
    if (val == nullptr) {
        ORU_TRACE(Level::failure, "Failed to remove the value from Hashmap");
        return ORU_OK;
    }
    ORU_TRACE(Level::detail, "Remove %s %p %p", key, static_cast<void *>(key),
              static_cast<void *>(val));
    ipc_seq_delete_ht_key(key);
    ipc_seq_delete_ht_val(val);
    return ORU_OK;
}
