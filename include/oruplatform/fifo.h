/*
 * Intrusive queue: an item is any record that begins with a link word, which the queue uses. Items
 * stay their owner's. An item is in one queue at most, once. No locking.
 */
#ifndef ORUPLATFORM_FIFO_H
#define ORUPLATFORM_FIFO_H

#include <oru/base.h>

ORU_BEGIN_DECLS

typedef struct fifo {
    void *head;
    void *tail;
    int32_t count;
} fifo_t;

/* Empties the queue without a look at what it held. Further arguments are accepted and not used. A
 * null queue is ignored, here and by giving null below. */
ORU_API void fifo_init(fifo_t *queue, ...);

/* Adds an item at the tail; gives the item. A null item adds nothing and gives null. */
ORU_API void *fifo_enqueue(fifo_t *queue, void *item);

/* Puts an item in front of the head; gives the item. A null item adds nothing and gives null. */
ORU_API void *fifo_requeue(fifo_t *queue, void *item);

/* Takes the head out; null when the queue is empty. The item's link word is cleared. */
ORU_API void *fifo_dequeue(fifo_t *queue);

/* Takes an item out, wherever it stands, in time that grows with its position; gives the item. An
 * item that is not in the queue gives null and leaves the queue as it is. */
ORU_API void *fifo_unqueue(fifo_t *queue, void *item);

/* The item behind `item`, null for the last one and for null. */
ORU_API void *fifo_get_next(void *item);

ORU_END_DECLS

#endif
