/*
 * Where the answer to a request that was sent to another process finds who waits for it: a table
 * from text keys to wait records. The sender makes a wait record and a key, inserts both, sends,
 * and waits on the record's condition; who receives the answer updates the record by its key.
 * Sessions that end cancel or wake what waits for them. The waiting itself and the transport are
 * the back end's:
 *
 *     ht_val *val = ipc_seq_create_ht_val(session_id);
 *     char *key = util_build_key(sequence_number);
 *     ipc_seq_ht_insert(table, key, val);
 *     ... send ...
 *     oru_mtx_lock(&val->lock);
 *     while (val->signaled == 0)
 *         oru_cond_wait(&val->cond, &val->lock);
 *     intptr_t reply = val->reply;
 *     int32_t rc = val->rc;
 *     oru_mtx_unlock(&val->lock);
 *     ipc_seq_ht_remove(table, key);
 *
 * Threads: all operations on a table take its mutex, and then, one after the other, those of the
 * wait records that they signal. A waiter therefore gives up its record's mutex before it calls any
 * operation of the table. All of this needs a thread layer. Making keys and wait records takes no
 * lock.
 *
 * Results are 0 or 10000. Failures are traced at level 3, and "no table" means a null argument
 * here.
 */
#ifndef ORU_IPC_SEQ_H
#define ORU_IPC_SEQ_H

#include "oru/thread.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

typedef struct seq_ht_table seq_ht_table;

/* A wait record. `signaled`, `reply` and `rc` are guarded by `lock`. */
typedef struct ht_val {
    oru_mtx_t lock;      /* "oru_ipc_snd_rcv_mutex" */
    oru_cond_t cond;     /* signalled whenever `signaled` is set */
    uint8_t signaled;    /* 0 until a wake-up was given; what the wait loop tests */
    intptr_t reply;      /* the answer; the table does not look at it */
    uint32_t session_id; /* the session that the request belongs to */
    int32_t rc;          /* 0, or 33 for a wait that was cancelled */
} ht_val;

/* Characters of a key at most. */
#define ORU_IPC_SEQ_KEY_LENGTH 64

/* ---- Keys ----
 * The caller owns a key and ends it with `ipc_seq_delete_ht_key`, or with its entry by
 * `ipc_seq_ht_remove`. Null when memory runs out. Traced at level 7: "util build key %u" or "util
 * build key str %s" for the input, "ht_key: %s %p" for a key that holds all of it.
 */

/* The key of a sequence number: upper-case hexadecimal without a prefix. */
ORU_API char *util_build_key(uint32_t n);

/* The key of a text, cut at 64 characters. One of more than 65 is traced, "Failed to build hashmap
   key (input=%s)", and cut all the same. A null text gives null and the trace "Failed to build
   hashmap key (input is NULL)". */
ORU_API char *util_build_key_from_str(const char *text);

/* Ends a key, traced at level 7 as "Delete key %s %p". Null is traced as "failed to delete hash
   table key, key passed in is NULL". */
ORU_API void ipc_seq_delete_ht_key(char *key);

/* ---- Wait records ---- */

/* A wait record of that session, with its mutex and condition, all else 0; the caller's, who ends
   it with `ipc_seq_delete_ht_val` or with its entry by `ipc_seq_ht_remove`. Null with "Failed to
   malloc hash table value" or "Failed to initialize oru_ipc_snd_rcv_mutex". */
ORU_API ht_val *ipc_seq_create_ht_val(uint32_t session_id);

/* Ends a wait record that is in no table and on which nobody waits, traced at level 7 as "Delete
   value %p". Null is traced as "failed to delete hash table value. value passed in is NULL". */
ORU_API void ipc_seq_delete_ht_val(ht_val *val);

/* ---- Tables ---- */

/* A table for about `size` entries to begin with. Null with "Failed to allocate memory for seq hash
   table", "Failed to init mutex for seq hash table" or "Failed to create hash map". */
ORU_API seq_ht_table *ipc_seq_ht_init(uint32_t size);

/* Ends a table, which nobody may be using any more. Wait records still in it are signalled, each
   traced at level 7 as "sync_snd_rcv(signal)", and left to those who wait on them; keys are left to
   their owners. An entry without record is traced: "user data is NULL", "Hashtable item has no
   value". 10000 for null. */
ORU_API int32_t ipc_seq_ht_destroy(seq_ht_table *table);

/* ---- Entries ---- */

/* Adds a wait record. Key and record stay the caller's and must live as long as the entry. 10000
   for a null key or record ("ht_key=%p, ht_val=%p"), for no table ("Failed to insert, NULL
   hashmap"), for a key that is there already and when memory runs out ("Failed to add key to
   table"). Traced at level 7 as "Inserting %s rc=%d" with the result. */
ORU_API int32_t ipc_seq_ht_insert(seq_ht_table *table, const char *key, ht_val *val);

/* The wait record of a key, which stays in the table, or null. It is lent: whoever may remove it
   meanwhile ends it. Traced at level 7: "Find %s value=%p", and in front of it "Find %s
   value=(NULL)" where there is none. No key or no table is traced as "Failed to find hashmap entry.
   Hashtable or key not valid". */
ORU_API ht_val *ipc_seq_ht_find(seq_ht_table *table, const char *key);

/* Stores `reply` in the wait record of a key and signals it. 10000 when there is none, traced at
   level 7 as "Did not find a entry for %s in hashtable". No key or no table is traced, "Failed to
   find hashmap entry. hash table or key not valid", and gives 0. */
ORU_API int32_t ipc_seq_ht_find_and_update(seq_ht_table *table, const char *key, intptr_t reply);

/* Takes an entry out and ends its wait record, and with it `key` itself, which may be another text
   than the one that was inserted; that one is then still its owner's. 10000 for a null key ("key is
   NULL") and for no table ("hash table is NULL"). Where there is no such entry nothing is freed and
   the result is 0, traced as "Failed to remove the value from Hashmap". A removal is traced at
   level 7 as "Remove %s %p %p", and then as the two deletions are. */
ORU_API int32_t ipc_seq_ht_remove(seq_ht_table *table, char *key);

/* ---- Waking ----
 * What is woken stays in the table. No table is traced at level 6: "HASHMAP ptr s->ht is NULL", in
 * the last operation "GHashTable ptr s->ht is NULL".
 */

/* Gives every wait record of the session the status 33 and a signal. 0, for no table too; 10000
   when an entry had no record, traced as "Failed to get ht_val"; the others are cancelled all the
   same. Traced at level 6: "Canceling (session_id=%u)", and for each of the session's records
   "match found, canceling (session_id=%u)". */
ORU_API int32_t ipc_seq_ht_cancel(seq_ht_table *table, uint32_t session_id);

/* Signals every wait record; their statuses stay. Always 0. Traced at level 6: "Waking up all the
   clients waiting on snd_rcv", and for each record "sync_snd_rcv(signal): wake all ht waiting
   threads". */
ORU_API int32_t ipc_seq_ht_wake_all(seq_ht_table *table);

/* Signals every wait record of the session; their statuses stay. 0, or 10000 for no table. Traced
   at level 7 for each record of the table: "ipc_sync_snd_rcv(signal): wake dst hdl callback". */
ORU_API int32_t ipc_seq_ht_wake_session_id(seq_ht_table *table, uint32_t session_id);

/* ---- Life ---- */

/* Sizes the pool that tables, wait records and keys come from, before the first one is made. */
ORU_API void *init_chunk_poolheap_seq_ht_table(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
