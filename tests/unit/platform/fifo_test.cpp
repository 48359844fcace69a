#include <gtest/gtest.h>
#include <oruplatform/fifo.h>

#include <vector>

namespace {

struct Item {
    void *link = nullptr;
    int number = 0;
};

std::vector<int> numbers(const fifo_t &queue) {
    std::vector<int> result;
    for (void *item = queue.head; item != nullptr; item = fifo_get_next(item)) {
        result.push_back(static_cast<Item *>(item)->number);
    }
    return result;
}

struct Fifo : testing::Test {
    Fifo() {
        for (int i = 0; i < 4; i++) {
            items[i].number = i;
        }
        fifo_init(&queue);
    }
    void fill(int count) {
        for (int i = 0; i < count; i++) {
            ASSERT_EQ(fifo_enqueue(&queue, &items[i]), &items[i]);
        }
    }
    fifo_t queue{&queue, &queue, 77};
    Item items[4];
};

}  // namespace

TEST_F(Fifo, InitEmptiesWhateverWasThere) {
    EXPECT_EQ(queue.head, nullptr);
    EXPECT_EQ(queue.tail, nullptr);
    EXPECT_EQ(queue.count, 0);
}

TEST_F(Fifo, InitAcceptsFurtherArgumentsAndNull) {
    fill(1);
    fifo_init(&queue, 1, 2L, &queue);
    EXPECT_EQ(queue.count, 0);
    fifo_init(nullptr);
}

TEST_F(Fifo, EnqueueAddsAtTheTail) {
    fill(3);
    EXPECT_EQ(numbers(queue), (std::vector{0, 1, 2}));
    EXPECT_EQ(queue.head, &items[0]);
    EXPECT_EQ(queue.tail, &items[2]);
    EXPECT_EQ(queue.count, 3);
}

TEST_F(Fifo, RequeuePutsInFrontOfTheHead) {
    fill(2);
    EXPECT_EQ(fifo_requeue(&queue, &items[3]), &items[3]);
    EXPECT_EQ(numbers(queue), (std::vector{3, 0, 1}));
    EXPECT_EQ(queue.tail, &items[1]);
}

TEST_F(Fifo, RequeueIntoAnEmptyQueueSetsTheTailToo) {
    fifo_requeue(&queue, &items[0]);
    fifo_enqueue(&queue, &items[1]);
    EXPECT_EQ(numbers(queue), (std::vector{0, 1}));
    EXPECT_EQ(queue.count, 2);
}

TEST_F(Fifo, DequeueTakesTheHeadAndEmptiesAtLast) {
    fill(2);
    EXPECT_EQ(fifo_dequeue(&queue), &items[0]);
    EXPECT_EQ(items[0].link, nullptr);
    EXPECT_EQ(fifo_dequeue(&queue), &items[1]);
    EXPECT_EQ(queue.tail, nullptr);
    EXPECT_EQ(queue.count, 0);
    EXPECT_EQ(fifo_dequeue(&queue), nullptr);
    EXPECT_EQ(queue.count, 0);
}

TEST_F(Fifo, UnqueueTakesHeadMiddleAndTail) {
    fill(4);
    EXPECT_EQ(fifo_unqueue(&queue, &items[1]), &items[1]);
    EXPECT_EQ(numbers(queue), (std::vector{0, 2, 3}));
    EXPECT_EQ(fifo_unqueue(&queue, &items[3]), &items[3]);
    EXPECT_EQ(queue.tail, &items[2]);
    EXPECT_EQ(fifo_unqueue(&queue, &items[0]), &items[0]);
    EXPECT_EQ(numbers(queue), (std::vector{2}));
    EXPECT_EQ(fifo_unqueue(&queue, &items[2]), &items[2]);
    EXPECT_EQ(queue.head, nullptr);
    EXPECT_EQ(queue.tail, nullptr);
    EXPECT_EQ(queue.count, 0);
}

TEST_F(Fifo, UnqueueOfAnAbsentItemLeavesTheQueue) {
    fill(2);
    EXPECT_EQ(fifo_unqueue(&queue, &items[3]), nullptr);
    EXPECT_EQ(numbers(queue), (std::vector{0, 1}));
    EXPECT_EQ(queue.tail, &items[1]);
    EXPECT_EQ(queue.count, 2);
}

TEST_F(Fifo, UnqueueFromAnEmptyQueueIsNull) {
    EXPECT_EQ(fifo_unqueue(&queue, &items[0]), nullptr);
    EXPECT_EQ(queue.count, 0);
}

TEST_F(Fifo, NullArgumentsGiveNull) {
    EXPECT_EQ(fifo_enqueue(nullptr, &items[0]), nullptr);
    EXPECT_EQ(fifo_enqueue(&queue, nullptr), nullptr);
    EXPECT_EQ(fifo_requeue(nullptr, &items[0]), nullptr);
    EXPECT_EQ(fifo_requeue(&queue, nullptr), nullptr);
    EXPECT_EQ(fifo_dequeue(nullptr), nullptr);
    EXPECT_EQ(fifo_unqueue(nullptr, &items[0]), nullptr);
    EXPECT_EQ(fifo_unqueue(&queue, nullptr), nullptr);
    EXPECT_EQ(fifo_get_next(nullptr), nullptr);
    EXPECT_EQ(queue.count, 0);
}
