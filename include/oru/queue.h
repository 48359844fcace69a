/*
 * ORUQueue: an intrusive queue, a thin face of the platform's. An item is any record that begins
 * with a link word; it stays its owner's and is in one queue at most. No locking.
 *
 * Operations assert "queue" and "item" on null.
 */
#ifndef ORU_QUEUE_H
#define ORU_QUEUE_H

#include <oruplatform/fifo.h>

#include "oru/types.h"

ORU_BEGIN_DECLS

typedef struct ORUQueue {
    uintptr_t header; /* the owner's */
    fifo_t queue;
} ORUQueue;

/* Empties the queue, without a look at what it held. Up to five words behind it are handed on to
   the platform's `fifo_init`. `header` stays as it is. */
ORU_API void oru_queue_init(ORUQueue *queue, ...);

/* Adds an item at the tail, or puts it in front of the head; gives `item`. */
ORU_API void *oru_queue_enqueue(ORUQueue *queue, void *item);
ORU_API void *oru_queue_requeue(ORUQueue *queue, void *item);

/* Takes `item` out, wherever it stands; gives `item`. */
ORU_API void *oru_queue_unqueue(ORUQueue *queue, void *item);

/* Takes the head out; null when the queue is empty. */
ORU_API void *oru_queue_dequeue(ORUQueue *queue);

/* The head, which stays; null when the queue is empty. */
ORU_API void *oru_queue_peek_head(ORUQueue *queue);

/* The item behind `item`, or null. */
ORU_API void *oru_queue_get_next(void *item);

/* The number of items, and whether there is none. */
ORU_API int32_t oru_queue_size(ORUQueue *queue);
ORU_API int32_t oru_queue_empty(ORUQueue *queue);

ORU_END_DECLS

#endif
