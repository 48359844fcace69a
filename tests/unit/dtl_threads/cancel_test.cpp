// Canceling a walk from another thread: the one thing that a second thread may do to a context.
#include <atomic>

#include "oru/thread.h"
#include "tests/unit/dtl/walk_support.h"

namespace {

using namespace oru::test;

// Waits until the walk has made some calls, then cancels it, as the owner of a context does.
struct Canceler {
    ORUDtlCtx *ctx = nullptr;
    std::atomic<int> calls{0};
    std::atomic<bool> is_done{false};
    int after = 0;

    // A walk that is far ahead of the thread waits for it, since it would come to its end.
    void count_call() {
        constexpr int kAhead = 100;
        if (calls.fetch_add(1, std::memory_order_relaxed) < after + kAhead)
            return;
        while (!is_done.load(std::memory_order_relaxed))
            oru_thread_yield();
    }

    static void *run(void *argument) {
        auto &self = *static_cast<Canceler *>(argument);
        while (self.calls.load(std::memory_order_relaxed) < self.after)
            oru_thread_yield();
        __atomic_store_n(&self.ctx->canceled, uint8_t{1}, __ATOMIC_RELAXED);
        self.is_done.store(true, std::memory_order_relaxed);
        return nullptr;
    }
};

Canceler *g_canceler;

class DtlCancel : public DtlWalk {
  protected:
    // Rows in rows without end: every collection has as many as anybody asks for.
    DtlCancel() {
        ORUDtlNode *a = collection(doc.get(), "a", "/sys?as");
        ORUDtlNode *b = collection(a, "b", "$_PARENT_URI_?bs");
        oru_dtl_tree_set_batch_size(a, 10);
        oru_dtl_tree_set_batch_size(b, 10);
        for (int i = 1; i <= 200; ++i)
            system.rows["/sys?as"].push_back({"/sys/as;id=" + std::to_string(i)});
        system.provide = [this](const std::string &uri) {
            for (int i = 1; uri != "/sys?as" && i <= 20 && system.rows[uri].size() < 20; ++i)
                system.rows[uri].push_back({"/b" + std::to_string(i)});
        };
        system.before_call = [](FakeSystem &) { g_canceler->count_call(); };
        ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
        canceler.ctx = ctx;
        g_canceler = &canceler;
    }

    // Walks until something else than more rows comes back, with a thread that cancels.
    int32_t walk_canceled(int32_t count, int after) {
        canceler.calls = 0;
        canceler.is_done = false;
        canceler.after = after;
        oru_thread_t thread = 0;
        EXPECT_EQ(oru_thread_create(&thread, nullptr, Canceler::run, &canceler), 0);
        int32_t rc = ORU_OK;
        while (rc == ORU_OK)
            rc = next(count);
        EXPECT_EQ(oru_thread_join(thread, nullptr), 0);
        return rc;
    }

    Canceler canceler;
};

TEST_F(DtlCancel, EndsAWalkBetweenItsBatches) {
    for (const int after : {0, 1, 5, 50}) {
        oru_dtl_ctx_delete(ctx);
        canceler.ctx = ctx = oru_dtl_ctx_new(doc.get(), system.data(), system.coll());
        EXPECT_EQ(walk_canceled(-1, after), ORU_RC_CANCELED) << after;
        // Nothing more comes, whether a level was left to go on with or not.
        EXPECT_NE(next(-1), ORU_OK) << after;
    }
}

TEST_F(DtlCancel, EndsOneLongCall) {
    EXPECT_EQ(walk_canceled(0, 20), ORU_RC_CANCELED);
    // No level is left that could go on.
    EXPECT_EQ(ctx->child, nullptr);
    EXPECT_EQ(system.open_cursors(), 0);
}

TEST_F(DtlCancel, LeavesAWalkThatMayGoOn) {
    EXPECT_EQ(walk_canceled(5, 50), ORU_RC_CANCELED);
    __atomic_store_n(&ctx->canceled, uint8_t{0}, __ATOMIC_RELAXED);
    int32_t rc = ORU_OK;
    for (int call = 0; rc == ORU_OK && call < 2000; ++call)
        rc = next(5);
    EXPECT_EQ(rc, ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(system.open_cursors(), 0);
}

}  // namespace
