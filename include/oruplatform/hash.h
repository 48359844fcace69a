/*
 * Open hash table keyed by text. Keys are kept by address, not copied, and must live as long as
 * their entry; they are read only while an entry with the same hash is looked for, so that
 * releasing an item together with its key from a walk or from the closing function is fine. The
 * table grows with its load and walks in the order of insertion.
 *
 * A table does no locking: calls that change it exclude all others, finds and walks may go on side
 * by side.
 */
#ifndef ORUPLATFORM_HASH_H
#define ORUPLATFORM_HASH_H

#include <oru/base.h>

ORU_BEGIN_DECLS

/* An empty table for about `size` entries to begin with, 0 for a default; keyed by text. Null when
 * memory runs out. The caller owns it and ends it with `hashCloseWithFunction`. */
ORU_API void *hashMake(uint32_t size);

/* The same with a hash function and a match function of its own. `match` is called in the sense of
 * `strcmp`, 0 means the same key; its first argument is the key that is looked for. Null functions
 * mean those of `hashMake`. */
ORU_API void *hashMakeTable(uint32_t size, uint32_t (*hash)(const char *),
                            int32_t (*match)(const char *, const char *));

/* Adds an item, null allowed, at the end. 0; 12 when memory ran out, 17 for a key that is in the
 * table already, 22 for a null table or key; the table is then unchanged. */
ORU_API int32_t hashAdd(void *table, const char *key, void *item);

/* The item of a key, lent; null when there is none, and for a null table or key. */
ORU_API void *hashFind(void *table, const char *key);

/* Takes an entry out and gives its item, which stays the caller's; null when there is none, and for
 * a null table or key. */
ORU_API void *hashRemove(void *table, const char *key);

/* Calls `fn` on each entry until it gives 0. 0 when all entries were visited, 1 when the function
 * ended the walk, 22 for a null table or function. `one` is not looked at. The function may remove
 * any entry and add entries; a removed one is not visited any more, an added one is. It must not
 * close the table. */
ORU_API int32_t hashWalk(void *table, int32_t one, int32_t (*fn)(void *table, void *item));
ORU_API int32_t hashWalkWithContext(void *table, int32_t one,
                                    int32_t (*fn)(void *table, void *item, const char *key,
                                                  void *context),
                                    void *context);

/* Calls `fn`, which may be null, on each item, whatever it gives, and destroys the table. Null
 * table is ignored. The function must not use the table. */
ORU_API void hashCloseWithFunction(void *table, int32_t (*fn)(void *item));

ORU_END_DECLS

#endif
