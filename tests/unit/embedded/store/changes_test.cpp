#include <gtest/gtest.h>

#include "rows.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

/* "revision who request", "+key:kind" and so on, "name before -> after". */
class Changes final : public ChangeSink {
  public:
    void commit(const CommitView &commit) override {
        EXPECT_GE(commit.time, last_time_);
        last_time_ = commit.time;
        texts.push_back(std::to_string(commit.revision) + " " + std::string(commit.who) + " " +
                        std::string(commit.request));
    }
    void row(const Row &row, Write::Kind what) override {
        const char *const sign = what == Write::Kind::create ? "+"
                                 : what == Write::Kind::set  ? "="
                                                             : "-";
        texts.push_back(sign + std::string(row.key) + ":" + std::string(row.kind));
    }
    void attribute(const Attribute &before, const Attribute &after) override {
        EXPECT_EQ(before.name, after.name);
        texts.push_back(std::string(before.name) + " " + text_of(before.cell) + " -> " +
                        text_of(after.cell));
    }

    Texts texts;

  private:
    int64_t last_time_ = 1'600'000'000'000'000;
};

class StoreChanges : public testing::Test {
  protected:
    Texts changes(Revision after, uint32_t limit = 10) {
        Changes seen;
        status = store->changes(after, limit, seen);
        return seen.texts;
    }

    std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 3, .keep_seconds = -1});
    ReadStatus status = ReadStatus::missing;
};

TEST_F(StoreChanges, TellWhatEachCommitDid) {
    Commit change;
    change.who = "ann";
    change.request = "r1";
    store->commit(change, WriteList{create("a", {number("x", 1), text("t", "old text")})});
    commit(*store, {set("a", {number("x", 2), gone("t"), number("y", 3), gone("z")})});
    commit(*store, {erase("a"), create("b")});
    EXPECT_EQ(changes(0), (Texts{"1 ann r1", "+a:K", "x - -> 1", "t - -> \"old text\"", "2 test ",
                                 "=a:K", "x 1 -> 2", "t \"old text\" -> -", "y - -> 3", "3 test ",
                                 "-a:K", "x 2 -> -", "y 3 -> -", "+b:K"}));
    EXPECT_EQ(status, ReadStatus::last);
    EXPECT_EQ(changes(3), Texts{});
}

TEST_F(StoreChanges, ReplacedRowIsErasedAndThenMade) {
    commit(*store, {create("a", {number("x", 1)}, "Old")});
    commit(*store, {erase("a"), create("a", {number("x", 2)}, "New")});
    EXPECT_EQ(changes(1), (Texts{"2 test ", "-a:Old", "x 1 -> -", "+a:New", "x - -> 2"}));
}

TEST_F(StoreChanges, ComeAsWholeCommits) {
    commit(*store, {create("a"), create("b")});
    commit(*store, {create("c")});
    EXPECT_EQ(changes(0, 1), (Texts{"1 test ", "+a:K", "+b:K"}));
    EXPECT_EQ(status, ReadStatus::more);
    EXPECT_EQ(changes(1, 1), (Texts{"2 test ", "+c:K"}));
    EXPECT_EQ(changes(2, 1), Texts{});
    EXPECT_EQ(status, ReadStatus::last);
}

TEST_F(StoreChanges, BehindTheHorizonAreGone) {
    for (int i = 0; i < 5; i++)
        commit(*store, {create(std::to_string(i))});
    ASSERT_EQ(store->horizon(), 2);
    EXPECT_EQ(changes(1), Texts{});
    EXPECT_EQ(status, ReadStatus::expired);
    EXPECT_EQ(changes(2), (Texts{"3 test ", "+2:K", "4 test ", "+3:K", "5 test ", "+4:K"}));
}

}  // namespace
}  // namespace embedded
