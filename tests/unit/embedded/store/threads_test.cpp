#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "rows.h"

namespace embedded {
namespace {

/* One store, as the sessions of a process without a file share it. */
TEST(StoreThreads, ScanCommitAndEndBesideEachOther) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 5, .keep_seconds = -1});
    std::vector<Write> writes;
    for (int i = 0; i < 50; i++)
        writes.push_back(create("k" + std::to_string(100 + i), {number("n", i)}));
    commit(*store, std::move(writes));

    std::atomic<bool> is_over = false;
    std::atomic<int> cut = 0;
    const auto read = [&](bool is_sorted) {
        while (!is_over) {
            Query query = everything(store->head());
            if (is_sorted)
                query.order = {{"n", true, false, {}}};
            Rows rows;
            const std::unique_ptr<Scan> scan = store->scan(std::move(query));
            ReadStatus status = ReadStatus::more;
            while (status == ReadStatus::more)
                status = scan->next(7, rows);
            cut += status == ReadStatus::last && rows.texts.size() != 50 ? 1 : 0;
        }
    };
    std::thread by_key(read, false);
    std::thread by_attribute(read, true);
    bool are_done = true;
    for (int i = 0; i < 200; i++)
        are_done = are_done && commit(*store, {set("k120", {number("n", i)})}).revision == i + 2;
    is_over = true;
    by_key.join();
    by_attribute.join();
    EXPECT_TRUE(are_done);
    EXPECT_EQ(cut, 0);
}

}  // namespace
}  // namespace embedded
