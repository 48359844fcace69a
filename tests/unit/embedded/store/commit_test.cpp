#include <gtest/gtest.h>

#include "rows.h"

namespace embedded {
namespace {

using Status = CommitResult::Status;
using Texts = std::vector<std::string>;

class StoreCommit : public testing::Test {
  protected:
    std::unique_ptr<Store> store = open_sqlite_store({});
};

TEST_F(StoreCommit, EmptyStoreIsAtRevisionZero) {
    EXPECT_EQ(store->head(), 0);
    EXPECT_EQ(store->horizon(), 0);
    EXPECT_EQ(everything_in(*store), Texts{});
}

TEST_F(StoreCommit, EachMakesTheNextRevision) {
    const CommitResult first = commit(*store, {create("a")});
    EXPECT_EQ(first.status, Status::done);
    EXPECT_EQ(first.revision, 1);
    EXPECT_EQ(commit(*store, {create("b")}).revision, 2);
    EXPECT_EQ(commit(*store, {}).revision, 3);
    EXPECT_EQ(store->head(), 3);
}

TEST_F(StoreCommit, KeepsEveryKindOfCellExactly) {
    const std::string bytes("\x00\xff\x01", 3);
    const std::string zero("a\0b", 3);
    commit(*store, {create("a", {{"i", 7, {}, Cell::of_integer(INT64_MIN)},
                                 {"r", 11, "Ratio", Cell::of_real(0.1)},
                                 {"t", 8, "Label", Cell::of_text("")},
                                 {"z", 8, {}, Cell::of_text(zero)},
                                 {"b", 15, {}, Cell::of_blob(bytes)},
                                 {"e", 15, {}, Cell::of_blob("")}})});
    EXPECT_EQ(everything_in(*store),
              Texts{"a:K{i/7=-9223372036854775808,r/11/Ratio=0.100000,t/8/Label=\"\",z/8=\"" +
                    zero + "\",b/15=<" + bytes + ">,e/15=<>}"});
}

TEST_F(StoreCommit, KeysMayHoldAnyByte) {
    const std::string key("a\0\xfe", 3);
    commit(*store, {create(key), create("a")});
    EXPECT_EQ(everything_in(*store), (Texts{"a:K{}", key + ":K{}"}));
    EXPECT_EQ(read_one(*store, key, 1), key + ":K{}");
}

TEST_F(StoreCommit, SetReplacesAddsAndRemoves) {
    commit(*store, {create("a", {number("x", 1), number("y", 2)})});
    commit(*store, {set("a", {number("x", 3), gone("y"), text("z", "new"), gone("w")})});
    EXPECT_EQ(read_one(*store, "a", 2), "a:K{x/5=3,z/8=\"new\"}");
    EXPECT_EQ(read_one(*store, "a", 1), "a:K{x/5=1,y/5=2}");
}

TEST_F(StoreCommit, LenientWritesTakeWhatTheyFind) {
    const auto lenient = [](Write write) {
        write.is_lenient = true;
        return write;
    };
    commit(*store, {create("a", {number("x", 1)}, "Old")});
    EXPECT_EQ(commit(*store, {create("a")}).status, Status::conflict);
    EXPECT_EQ(commit(*store, {erase("b")}).status, Status::conflict);
    EXPECT_EQ(
        commit(*store, {lenient(create("a")), lenient(erase("b")), lenient(create("c"))}).status,
        Status::done);
    EXPECT_EQ(everything_in(*store), (Texts{"a:K{}", "c:K{}"}));
    EXPECT_EQ(read_one(*store, "a", 1), "a:Old{x/5=1}");
    EXPECT_EQ(commit(*store, {lenient(erase("a"))}).status, Status::done);
    EXPECT_EQ(read_one(*store, "a", 3), "missing");
}

TEST_F(StoreCommit, EraseTakesTheAttributesAlong) {
    commit(*store, {create("a", {number("x", 1)})});
    commit(*store, {erase("a")});
    EXPECT_EQ(read_one(*store, "a", 2), "missing");
    commit(*store, {create("a")});
    EXPECT_EQ(read_one(*store, "a", 3), "a:K{}");
    EXPECT_EQ(read_one(*store, "a", 1), "a:K{x/5=1}");
}

TEST_F(StoreCommit, EraseAndCreateOfOneKeyReplaceTheRow) {
    commit(*store, {create("a", {number("x", 1)}, "Old")});
    EXPECT_EQ(commit(*store, {erase("a"), create("a", {number("y", 2)}, "New")}).status,
              Status::done);
    EXPECT_EQ(read_one(*store, "a", 2), "a:New{y/5=2}");
    EXPECT_EQ(read_one(*store, "a", 1), "a:Old{x/5=1}");
}

/* What cannot be done leaves nothing behind, not even of the writes before it. */
TEST_F(StoreCommit, WritesThatDoNotFitAreConflicts) {
    commit(*store, {create("a")});
    EXPECT_EQ(commit(*store, {create("b"), create("a")}).status, Status::conflict);
    EXPECT_EQ(commit(*store, {create("b"), set("c", {})}).status, Status::conflict);
    EXPECT_EQ(commit(*store, {create("b"), erase("c")}).status, Status::conflict);
    EXPECT_EQ(everything_in(*store), Texts{"a:K{}"});
    EXPECT_EQ(store->head(), 1);
}

TEST_F(StoreCommit, WordsOfARefusedCommitAreForgotten) {
    commit(*store, {create("a")});
    commit(*store, {create("b", {number("new", 1)}, "NewKind"), create("a")});
    commit(*store, {create("c", {number("other", 2)}, "OtherKind")});
    commit(*store, {create("d", {number("new", 3)}, "NewKind")});
    EXPECT_EQ(everything_in(*store),
              (Texts{"a:K{}", "c:OtherKind{other/5=2}", "d:NewKind{new/5=3}"}));
}

TEST_F(StoreCommit, NothingIsWrittenWhereMakingTheWritesFails) {
    class Failing final : public WriteSource {
        void hand_to(WriteSink &sink) const override {
            sink.write(create("a", {number("new", 1)}, "NewKind"));
            throw std::bad_alloc();
        }
    };
    EXPECT_THROW(store->commit({}, Failing()), std::bad_alloc);
    EXPECT_EQ(store->head(), 0);
    commit(*store, {create("b", {number("other", 2)}, "OtherKind")});
    commit(*store, {create("c", {number("new", 3)}, "NewKind")});
    EXPECT_EQ(everything_in(*store), (Texts{"b:OtherKind{other/5=2}", "c:NewKind{new/5=3}"}));
}

class StorePrecondition : public StoreCommit {
  protected:
    CommitResult commit_if(Revision base, std::vector<Range> unchanged) {
        Commit change;
        change.base = base;
        change.unchanged = std::move(unchanged);
        return store->commit(change, WriteList{create("new" + std::to_string(next_++))});
    }

    int next_ = 0;
};

TEST_F(StorePrecondition, RangesThatNobodyTouchedHold) {
    commit(*store, {create("a"), create("c")});
    commit(*store, {set("c", {number("x", 1)})});
    EXPECT_EQ(commit_if(1, {{"a", "c"}}).status, Status::done);
    EXPECT_EQ(commit_if(1, {{"ca", "d"}}).status, Status::done);
    EXPECT_EQ(commit_if(2, {{"a", "d"}}).status, Status::done);
}

TEST_F(StorePrecondition, SingleKeysAreConflictsThemselves) {
    commit(*store, {create("a"), create("c")});
    commit(*store, {set("c", {number("x", 1)})});
    Commit change;
    change.base = 1;
    change.unchanged_keys = {"a", "ca", "b"};
    EXPECT_EQ(store->commit(change, WriteList{}).status, Status::done);
    change.unchanged_keys = {"a", "c"};
    EXPECT_EQ(store->commit(change, WriteList{}).status, Status::conflict);
    change.base = 2;
    EXPECT_EQ(store->commit(change, WriteList{}).status, Status::done);
}

TEST_F(StorePrecondition, EachKindOfChangeIsAConflict) {
    commit(*store, {create("a"), create("b")});
    commit(*store, {create("c")});
    EXPECT_EQ(commit_if(1, {{"b", "d"}}).status, Status::conflict);
    commit(*store, {set("a", {number("x", 1)})});
    EXPECT_EQ(commit_if(2, {{"z", "zz"}, {"a", "b"}}).status, Status::conflict);
    commit(*store, {erase("b")});
    EXPECT_EQ(commit_if(3, {{"b", "c"}}).status, Status::conflict);
    EXPECT_EQ(store->head(), 4);
}

TEST_F(StoreCommit, SecondOfOneNameIsAnsweredAsTheFirst) {
    Commit change;
    change.request = "r1";
    EXPECT_EQ(store->commit(change, WriteList{create("a")}).revision, 1);
    commit(*store, {create("b")});
    const CommitResult again = store->commit(change, WriteList{create("a")});
    EXPECT_EQ(again.status, Status::done);
    EXPECT_EQ(again.revision, 1);
    EXPECT_EQ(store->head(), 2);
}

TEST_F(StoreCommit, NameOfARefusedCommitIsFree) {
    Commit change;
    change.request = "r1";
    EXPECT_EQ(store->commit(change, WriteList{erase("a")}).status, Status::conflict);
    EXPECT_EQ(store->commit(change, WriteList{create("a")}).revision, 1);
}

/* ---- Forgetting ---- */

TEST(StoreHistory, OldCommitsGoAndReadsOfThemExpire) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 2, .keep_seconds = -1});
    commit(*store, {create("a", {number("x", 1)}), create("b")});
    commit(*store, {set("a", {number("x", 2)}), erase("b")});
    commit(*store, {set("a", {number("x", 3)})});
    EXPECT_EQ(store->horizon(), 1);
    commit(*store, {set("a", {number("x", 4)})});
    EXPECT_EQ(store->horizon(), 2);
    EXPECT_EQ(read_one(*store, "a", 1), "expired");
    EXPECT_EQ(read_one(*store, "a", 2), "a:K{x/5=2}");
    EXPECT_EQ(read_one(*store, "a", 4), "a:K{x/5=4}");
    EXPECT_EQ(read_one(*store, "b", 2), "missing");
}

TEST(StoreHistory, YoungCommitsStayHoweverManyThereAre) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 1, .keep_seconds = 60});
    for (int i = 0; i < 5; i++)
        commit(*store, {create(std::to_string(i))});
    EXPECT_EQ(store->horizon(), 0);
    EXPECT_EQ(read_one(*store, "0", 1), "0:K{}");
}

TEST(StoreHistory, PreconditionBehindTheHorizonIsAConflict) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 1, .keep_seconds = -1});
    for (int i = 0; i < 4; i++)
        commit(*store, {create(std::to_string(i))});
    Commit change;
    change.base = 1;
    change.unchanged = {{"x", "y"}};
    EXPECT_EQ(store->commit(change, WriteList{}).status, Status::conflict);
    change.base = store->horizon();
    EXPECT_EQ(store->commit(change, WriteList{}).status, Status::done);
}

TEST(StoreHistory, OpenScanExpires) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 1, .keep_seconds = -1});
    commit(*store, {create("a"), create("b")});
    const std::unique_ptr<Scan> scan = store->scan(everything(1));
    Rows rows;
    EXPECT_EQ(scan->next(1, rows), ReadStatus::more);
    commit(*store, {erase("b")});
    commit(*store, {});
    EXPECT_EQ(scan->next(1, rows), ReadStatus::expired);
    EXPECT_EQ(rows.texts, Texts{"a:K{}"});
}

TEST(StoreKeeping, IsFoundByItsNameWhileItIsKept) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 1, .keep_seconds = -1});
    Commit change;
    change.request = "first";
    EXPECT_EQ(store->find_commit("first"), 0);
    EXPECT_EQ(store->commit(change, WriteList{create("a")}).revision, 1);
    EXPECT_EQ(store->find_commit("first"), 1);
    EXPECT_EQ(store->find_commit(""), 0);
    commit(*store, {create("b")});
    EXPECT_EQ(store->find_commit("first"), 0);
}

TEST(StoreKeeping, BeyondTheLimitsIsRefusedAndNothingIsWritten) {
    const std::unique_ptr<Store> store = open_sqlite_store({});
    const Limits limits = store->limits();
    const std::string longest(limits.key_bytes, 'k');
    const std::string value(limits.value_bytes + 1, 'v');
    EXPECT_EQ(commit(*store, {create(longest)}).revision, 1);
    const auto kind_of_fault = [&](std::vector<Write> writes) {
        try {
            commit(*store, std::move(writes));
        } catch (const StoreFault &fault) {
            return fault.kind;
        }
        return StoreFault::Kind::io;
    };
    using Kind = StoreFault::Kind;
    EXPECT_EQ(kind_of_fault({create("a"), create(longest + "k")}), Kind::beyond_limits);
    EXPECT_EQ(kind_of_fault({create("a", {text("t", value)})}), Kind::beyond_limits);
    EXPECT_EQ(kind_of_fault(std::vector<Write>(limits.commit_writes + 1)), Kind::beyond_limits);
    EXPECT_EQ(store->head(), 1);
}

TEST(StoreKeeping, LargeOldOneIsForgottenInParts) {
    const std::unique_ptr<Store> store = open_sqlite_store({.keep_commits = 1, .keep_seconds = -1});
    std::vector<Write> writes;
    std::vector<Write> changes;
    for (int i = 0; i < 1000; i++) {
        writes.push_back(create("k" + std::to_string(i), {number("n", 1)}));
        changes.push_back(set("k" + std::to_string(i), {number("n", 2)}));
    }
    commit(*store, std::move(writes));
    commit(*store, std::move(changes));
    // 256 of the changes at a time, and what is small behind them
    const Revision horizons[] = {2, 2, 2, 5, 6};
    for (int i = 3; i < 8; i++) {
        EXPECT_EQ(commit(*store, {create("c" + std::to_string(i))}).revision, i);
        EXPECT_EQ(store->horizon(), horizons[i - 3]);
        EXPECT_EQ(read_one(*store, "k7", i), "k7:K{n/5=2}");
        EXPECT_EQ(read_one(*store, "k7", 1), "expired");
    }
}

TEST(StoreKeeping, BinaryTextsComeBackAsTheyWere) {
    const std::unique_ptr<Store> store = open_sqlite_store({});
    const std::string zero("a\0b", 3);
    const std::string broken = "\xff\xc0\x80";
    commit(*store, {create(zero, {text("z", zero), text("b", broken), text("e", "")})});
    EXPECT_EQ(read_one(*store, zero, 1),
              zero + ":K{z/8=\"" + zero + "\",b/8=\"" + broken + "\",e/8=\"\"}");
    EXPECT_EQ(read_one(*store, "a", 1), "missing");
}

}  // namespace
}  // namespace embedded
