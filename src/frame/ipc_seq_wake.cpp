// Walks of the sequence table that wake who waits. Their functions go on whatever they meet.
#include "frame/ipc_seq.h"
#include "frame/trace.h"
#include "oru/rc.h"
#include "oruplatform/hash.h"

namespace {

using oru::ipc_seq_signal;
using oru::ipc_seq_usable;
using oru::IpcSeqLock;
using oru::Level;

constexpr int32_t kWholeTable = 1;
constexpr int32_t kGoOn = 1;

struct Cancel {
    uint32_t session_id;
    int32_t rc;
};

int32_t cancel_one(void *, void *item, const char *, void *context) {
    auto &cancel = *static_cast<Cancel *>(context);
    auto *val = static_cast<ht_val *>(item);
    if (val == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get ht_val");
        cancel.rc = ORU_RC_GENERAL;
    } else if (val->session_id == cancel.session_id) {
        ORU_TRACE(Level::action, "match found, canceling (session_id=%u)", cancel.session_id);
        ipc_seq_signal(*val, [](ht_val &changed) { changed.rc = ORU_RC_CANCELED; });
    }
    return kGoOn;
}

int32_t wake_one(void *, void *item) {
    if (item != nullptr) {
        ORU_TRACE(Level::action, "sync_snd_rcv(signal): wake all ht waiting threads");
        ipc_seq_signal(*static_cast<ht_val *>(item));
    }
    return kGoOn;
}

int32_t wake_one_of_session(void *, void *item, const char *, void *context) {
    if (auto *val = static_cast<ht_val *>(item); val != nullptr) {
        ORU_TRACE(Level::detail, "ipc_sync_snd_rcv(signal): wake dst hdl callback");
        if (val->session_id == *static_cast<const uint32_t *>(context))
            ipc_seq_signal(*val);
    }
    return kGoOn;
}

}  // namespace

int32_t ipc_seq_ht_cancel(seq_ht_table *table, uint32_t session_id) {
    ORU_TRACE(Level::action, "Canceling (session_id=%u)", session_id);
    if (!ipc_seq_usable(table)) {
        ORU_TRACE(Level::action, "HASHMAP ptr s->ht is NULL");
        return ORU_OK;
    }
    const IpcSeqLock lock(*table);
    Cancel cancel{session_id, ORU_OK};
    hashWalkWithContext(table->ht, kWholeTable, cancel_one, &cancel);
    return cancel.rc;
}

int32_t ipc_seq_ht_wake_all(seq_ht_table *table) {
    ORU_TRACE(Level::action, "Waking up all the clients waiting on snd_rcv");
    if (!ipc_seq_usable(table)) {
        ORU_TRACE(Level::action, "HASHMAP ptr s->ht is NULL");
        return ORU_OK;
    }
    const IpcSeqLock lock(*table);
    hashWalk(table->ht, kWholeTable, wake_one);
    return ORU_OK;
}

int32_t ipc_seq_ht_wake_session_id(seq_ht_table *table, uint32_t session_id) {
    if (!ipc_seq_usable(table)) {
        ORU_TRACE(Level::action, "GHashTable ptr s->ht is NULL");
        return ORU_RC_GENERAL;
    }
    const IpcSeqLock lock(*table);
    hashWalkWithContext(table->ht, kWholeTable, wake_one_of_session, &session_id);
    return ORU_OK;
}
