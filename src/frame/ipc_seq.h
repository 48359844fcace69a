// What the units of the sequence table share.
#ifndef ORU_SRC_FRAME_IPC_SEQ_H
#define ORU_SRC_FRAME_IPC_SEQ_H

#include "frame/pool.h"
#include "oru/ipc_seq.h"

struct seq_ht_table {
    void *ht;  // of the platform; never changes in the life of the record
    oru_mtx_t lock;
};

namespace oru {

// Tables, wait records and keys alike.
extern Pool ipc_seq_pool;

// An element with all its bytes zero, or null.
void *ipc_seq_take();

// Wakes who waits on `val`, after `change` was made to it. In this order, so that a waiter that
// holds the mutex while it tests `signaled` cannot miss it.
template <class Change>
void ipc_seq_signal(ht_val &val, Change &&change) {
    oru_mtx_lock(&val.lock);
    change(val);
    val.signaled = 1;
    oru_cond_signal(&val.cond);
    oru_mtx_unlock(&val.lock);
}

inline void ipc_seq_signal(ht_val &val) {
    ipc_seq_signal(val, [](ht_val &) {});
}

// Holds a table's mutex for a scope.
class IpcSeqLock {
  public:
    explicit IpcSeqLock(seq_ht_table &table) : lock_(table.lock) { oru_mtx_lock(&lock_); }
    ~IpcSeqLock() { oru_mtx_unlock(&lock_); }
    IpcSeqLock(const IpcSeqLock &) = delete;
    IpcSeqLock &operator=(const IpcSeqLock &) = delete;

  private:
    oru_mtx_t &lock_;
};

// Records without a hash table are made by nobody here; the back end's own may be.
inline bool ipc_seq_usable(const seq_ht_table *table) {
    return table != nullptr && table->ht != nullptr;
}

}  // namespace oru

#endif
