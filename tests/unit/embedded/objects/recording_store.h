/* A store in memory under the object layer, on whose commits a test can act. */
#ifndef TESTS_EMBEDDED_RECORDING_STORE_H
#define TESTS_EMBEDDED_RECORDING_STORE_H

#include <functional>

#include "store/sqlite_store.h"

namespace embedded {

class RecordingStore final : public Store {
  public:
    Limits limits() const override { return told_limits; }
    Revision head() override { return store_->head(); }
    Revision horizon() override { return store_->horizon(); }
    ReadStatus read(std::string_view key, const std::vector<std::string> *names, Revision at,
                    RowSink &sink) override {
        return store_->read(key, names, at, sink);
    }
    std::unique_ptr<Scan> scan(Query query) override { return store_->scan(std::move(query)); }
    Revision find_commit(std::string_view request) override { return store_->find_commit(request); }
    ReadStatus changes(Revision after, uint32_t limit, ChangeSink &sink) override {
        return store_->changes(after, limit, sink);
    }
    CommitResult commit(const Commit &commit, const WriteSource &writes) override {
        // a commit of the action is none that it acts on
        if (const auto act = std::exchange(before_commit, nullptr))
            act();
        CommitResult result = store_->commit(commit, writes);
        if (result.status == CommitResult::Status::done && std::exchange(forgets_answer, false))
            result = {CommitResult::Status::unknown, 0};
        return result;
    }

    Limits told_limits = {4096, 1 << 20, 1000};
    std::function<void()> before_commit; /* the next one */
    bool forgets_answer = false;         /* of the next one */

  private:
    std::unique_ptr<Store> store_ = open_sqlite_store({});
};

}  // namespace embedded

#endif
