#include "oruplatform/fifo.h"

namespace {

struct Item {
    Item *next;
};

Item *as_item(void *item) {
    return static_cast<Item *>(item);
}

// The item whose link leads to `item`: null for the head, and for an item that is not there.
Item *find_previous(const fifo_t &queue, const Item *item) {
    Item *previous = nullptr;
    for (Item *at = as_item(queue.head); at != nullptr && at != item; at = at->next) {
        previous = at;
    }
    return previous;
}

void unlink_item(fifo_t &queue, Item *previous, Item *item) {
    if (previous == nullptr) {
        queue.head = item->next;
    } else {
        previous->next = item->next;
    }
    if (queue.tail == item) {
        queue.tail = previous;
    }
    item->next = nullptr;
    queue.count--;
}

}  // namespace

void fifo_init(fifo_t *queue, ...) {
    if (queue != nullptr) {
        *queue = {};
    }
}

void *fifo_enqueue(fifo_t *queue, void *item) {
    if (queue == nullptr || item == nullptr) {
        return nullptr;
    }
    as_item(item)->next = nullptr;
    if (queue->tail == nullptr) {
        queue->head = item;
    } else {
        as_item(queue->tail)->next = as_item(item);
    }
    queue->tail = item;
    queue->count++;
    return item;
}

void *fifo_requeue(fifo_t *queue, void *item) {
    if (queue == nullptr || item == nullptr) {
        return nullptr;
    }
    as_item(item)->next = as_item(queue->head);
    if (queue->tail == nullptr) {
        queue->tail = item;
    }
    queue->head = item;
    queue->count++;
    return item;
}

void *fifo_dequeue(fifo_t *queue) {
    if (queue == nullptr || queue->head == nullptr) {
        return nullptr;
    }
    Item *item = as_item(queue->head);
    unlink_item(*queue, nullptr, item);
    return item;
}

void *fifo_unqueue(fifo_t *queue, void *item) {
    if (queue == nullptr || item == nullptr) {
        return nullptr;
    }
    Item *previous = find_previous(*queue, as_item(item));
    const void *found = previous == nullptr ? queue->head : previous->next;
    if (found != item) {
        return nullptr;
    }
    unlink_item(*queue, previous, as_item(item));
    return item;
}

void *fifo_get_next(void *item) {
    return item == nullptr ? nullptr : as_item(item)->next;
}
