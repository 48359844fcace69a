#include "oru/queue.h"

#include <gtest/gtest.h>

#include "tests/support/death.h"

namespace {

struct Item {
    void *link;
    int number;
};

class Queue : public testing::Test {
  protected:
    Queue() {
        queue.header = 4711;
        oru_queue_init(&queue);
    }
    ORUQueue queue;
    Item a{nullptr, 1};
    Item b{nullptr, 2};
    Item c{nullptr, 3};
};

TEST_F(Queue, StartsEmpty) {
    EXPECT_EQ(oru_queue_size(&queue), 0);
    EXPECT_NE(oru_queue_empty(&queue), 0);
    EXPECT_EQ(oru_queue_peek_head(&queue), nullptr);
    EXPECT_EQ(oru_queue_dequeue(&queue), nullptr);
    EXPECT_EQ(queue.header, 4711u);
}

TEST_F(Queue, GivesItemsInTheOrderTheyCame) {
    EXPECT_EQ(oru_queue_enqueue(&queue, &a), &a);
    EXPECT_EQ(oru_queue_enqueue(&queue, &b), &b);
    EXPECT_EQ(oru_queue_size(&queue), 2);
    EXPECT_EQ(oru_queue_empty(&queue), 0);
    EXPECT_EQ(oru_queue_peek_head(&queue), &a);
    EXPECT_EQ(oru_queue_size(&queue), 2);
    EXPECT_EQ(oru_queue_dequeue(&queue), &a);
    EXPECT_EQ(oru_queue_dequeue(&queue), &b);
    EXPECT_EQ(oru_queue_dequeue(&queue), nullptr);
    EXPECT_NE(oru_queue_empty(&queue), 0);
}

TEST_F(Queue, RequeuePutsInFront) {
    EXPECT_EQ(oru_queue_requeue(&queue, &b), &b);
    EXPECT_EQ(oru_queue_requeue(&queue, &a), &a);
    EXPECT_EQ(oru_queue_enqueue(&queue, &c), &c);
    EXPECT_EQ(oru_queue_peek_head(&queue), &a);
    EXPECT_EQ(oru_queue_get_next(&a), &b);
    EXPECT_EQ(oru_queue_get_next(&b), &c);
    EXPECT_EQ(oru_queue_get_next(&c), nullptr);
}

TEST_F(Queue, UnqueueTakesFromAnywhere) {
    oru_queue_enqueue(&queue, &a);
    oru_queue_enqueue(&queue, &b);
    oru_queue_enqueue(&queue, &c);
    EXPECT_EQ(oru_queue_unqueue(&queue, &b), &b);
    EXPECT_EQ(oru_queue_get_next(&a), &c);
    EXPECT_EQ(oru_queue_unqueue(&queue, &c), &c);
    EXPECT_EQ(oru_queue_size(&queue), 1);
    EXPECT_EQ(oru_queue_enqueue(&queue, &b), &b);
    EXPECT_EQ(oru_queue_get_next(&a), &b);
    EXPECT_EQ(oru_queue_unqueue(&queue, &c), &c);  // not in the queue
    EXPECT_EQ(oru_queue_size(&queue), 2);
}

TEST_F(Queue, IsEmptiedByAnotherInitialisation) {
    oru_queue_enqueue(&queue, &a);
    oru_queue_init(&queue, intptr_t{1}, intptr_t{2}, intptr_t{3}, intptr_t{4}, intptr_t{5});
    EXPECT_EQ(oru_queue_size(&queue), 0);
    EXPECT_EQ(queue.header, 4711u);
}

TEST_F(Queue, IsAWordAndThePlatformsQueue) {
    EXPECT_EQ(offsetof(ORUQueue, queue), sizeof(void *));
    EXPECT_EQ(sizeof(ORUQueue), sizeof(void *) + sizeof(fifo_t));
}

TEST_F(Queue, NeedsAQueueAndAnItem) {
    EXPECT_ASSERTION(oru_queue_init(nullptr), "queue");
    EXPECT_ASSERTION(oru_queue_enqueue(nullptr, &a), "queue");
    EXPECT_ASSERTION(oru_queue_requeue(nullptr, &a), "queue");
    EXPECT_ASSERTION(oru_queue_unqueue(nullptr, &a), "queue");
    EXPECT_ASSERTION(oru_queue_dequeue(nullptr), "queue");
    EXPECT_ASSERTION(oru_queue_peek_head(nullptr), "queue");
    EXPECT_ASSERTION(oru_queue_size(nullptr), "queue");
    EXPECT_ASSERTION(oru_queue_empty(nullptr), "queue");
    EXPECT_ASSERTION(oru_queue_enqueue(&queue, nullptr), "item");
    EXPECT_ASSERTION(oru_queue_requeue(&queue, nullptr), "item");
    EXPECT_ASSERTION(oru_queue_unqueue(&queue, nullptr), "item");
    EXPECT_ASSERTION(oru_queue_get_next(nullptr), "item");
}

}  // namespace
