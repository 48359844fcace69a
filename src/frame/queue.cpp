#include "oru/queue.h"

#include <cstdarg>

#include "frame/require.h"

void oru_queue_init(ORUQueue *queue, ...) {
    ORU_REQUIRE(queue);
    va_list args;
    va_start(args, queue);
    intptr_t words[5];
    for (intptr_t &word : words)
        word = va_arg(args, intptr_t);
    va_end(args);
    fifo_init(&queue->queue, words[0], words[1], words[2], words[3], words[4]);
}

void *oru_queue_enqueue(ORUQueue *queue, void *item) {
    ORU_REQUIRE(queue);
    ORU_REQUIRE(item);
    fifo_enqueue(&queue->queue, item);
    return item;
}

void *oru_queue_requeue(ORUQueue *queue, void *item) {
    ORU_REQUIRE(queue);
    ORU_REQUIRE(item);
    fifo_requeue(&queue->queue, item);
    return item;
}

void *oru_queue_unqueue(ORUQueue *queue, void *item) {
    ORU_REQUIRE(queue);
    ORU_REQUIRE(item);
    fifo_unqueue(&queue->queue, item);
    return item;
}

void *oru_queue_dequeue(ORUQueue *queue) {
    ORU_REQUIRE(queue);
    return fifo_dequeue(&queue->queue);
}

void *oru_queue_peek_head(ORUQueue *queue) {
    ORU_REQUIRE(queue);
    return queue->queue.head;
}

void *oru_queue_get_next(void *item) {
    ORU_REQUIRE(item);
    return fifo_get_next(item);
}

int32_t oru_queue_size(ORUQueue *queue) {
    ORU_REQUIRE(queue);
    return queue->queue.count;
}

int32_t oru_queue_empty(ORUQueue *queue) {
    ORU_REQUIRE(queue);
    return queue->queue.head == nullptr;
}
