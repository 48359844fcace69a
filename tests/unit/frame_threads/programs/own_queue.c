/* A program that brings the queue of the platform: what the library hands on to it. */
#include <oru/queue.h>
#include <stdarg.h>

#include "check.h"

static ORUQueue queue;
static int item;
static int other;
static char last = '-';

void fifo_init(fifo_t *inner, ...) {
    va_list args;
    intptr_t word;
    CHECK(inner == &queue.queue);
    va_start(args, inner);
    for (word = 1; word <= 5; ++word)
        CHECK(va_arg(args, intptr_t) == word * 11);
    va_end(args);
    last = 'i';
}

static void *seen(char operation, const fifo_t *inner, void *given) {
    CHECK(inner == &queue.queue);
    CHECK(given == &item);
    last = operation;
    return &other; /* the library gives back what it was given */
}

void *fifo_enqueue(fifo_t *inner, void *given) {
    return seen('e', inner, given);
}

void *fifo_requeue(fifo_t *inner, void *given) {
    return seen('r', inner, given);
}

void *fifo_unqueue(fifo_t *inner, void *given) {
    return seen('u', inner, given);
}

void *fifo_dequeue(fifo_t *inner) {
    return seen('d', inner, &item);
}

void *fifo_get_next(void *given) {
    CHECK(given == &item);
    return &other;
}

int main(void) {
    oru_queue_init(&queue, (intptr_t)11, (intptr_t)22, (intptr_t)33, (intptr_t)44, (intptr_t)55);
    CHECK(last == 'i');
    CHECK(oru_queue_enqueue(&queue, &item) == &item);
    CHECK(last == 'e');
    CHECK(oru_queue_requeue(&queue, &item) == &item);
    CHECK(last == 'r');
    CHECK(oru_queue_unqueue(&queue, &item) == &item);
    CHECK(last == 'u');
    CHECK(oru_queue_dequeue(&queue) == &other);
    CHECK(last == 'd');
    CHECK(oru_queue_get_next(&item) == &other);

    /* Head and count are read in place. */
    queue.queue.head = &item;
    queue.queue.count = 7;
    CHECK(oru_queue_peek_head(&queue) == &item);
    CHECK(oru_queue_size(&queue) == 7);
    CHECK(!oru_queue_empty(&queue));
    queue.queue.head = NULL;
    CHECK(oru_queue_empty(&queue));
    return 0;
}
