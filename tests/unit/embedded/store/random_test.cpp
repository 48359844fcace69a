/* Random commits and reads, compared with plain maps that keep every revision whole. */
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "rows.h"

namespace embedded {
namespace {

using Attributes = std::map<std::string, int64_t>;
using Content = std::map<std::string, Attributes>;

constexpr const char *kNames[] = {"x", "y", "z"};

class Model {
  public:
    explicit Model(uint32_t seed) : random_(seed), revisions_(1) {}

    uint32_t below(uint32_t end) { return static_cast<uint32_t>(random_() % end); }

    /* Writes that fit the newest revision, at most one a key. */
    std::vector<Write> change() {
        Content next = revisions_.back();
        std::map<std::string, Write> writes;
        for (uint32_t i = below(6); i > 0; i--) {
            const std::string key(1, static_cast<char>('a' + below(8)));
            if (writes.count(key) == 0)
                writes.emplace(key, change(key, next));
        }
        std::vector<Write> result;
        for (auto &[key, write] : writes)
            result.push_back(std::move(write));
        revisions_.push_back(std::move(next));
        return result;
    }

    std::vector<std::string> texts(Revision at) const {
        std::vector<std::string> result;
        for (const auto &[key, attributes] : revisions_[static_cast<size_t>(at)])
            result.push_back(key + sorted(attributes));
        return result;
    }

    static std::string sorted(const Attributes &attributes) {
        std::string text;
        for (const auto &[name, value] : attributes)
            text += " " + name + "=" + std::to_string(value);
        return text;
    }

    Revision head() const { return static_cast<Revision>(revisions_.size()) - 1; }

  private:
    Write change(const std::string &key, Content &next) {
        const auto row = next.find(key);
        if (row == next.end()) {
            Attributes &made = next[key];
            return create(key, values(made, false));
        }
        if (below(3) == 0) {
            next.erase(row);
            return erase(key);
        }
        return set(key, values(row->second, true));
    }

    std::vector<Attribute> values(Attributes &attributes, bool may_remove) {
        std::vector<Attribute> result;
        for (const char *const name : kNames) {
            const uint32_t choice = below(4);
            if (choice == 0 && may_remove) {
                attributes.erase(name);
                result.push_back(gone(name));
            } else if (choice < 3) {
                attributes[name] = below(100);
                result.push_back(number(name, attributes[name]));
            }
        }
        return result;
    }

    std::mt19937 random_;
    std::vector<Content> revisions_;
};

/* Rows with their attributes by name. */
class SortedRows final : public RowSink {
  public:
    void row(const Row &row) override { rows.emplace_back(row.key, Attributes()); }
    void attribute(const Attribute &attribute) override {
        rows.back().second[std::string(attribute.name)] = attribute.cell.integer;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const auto &[key, attributes] : rows)
            result.push_back(key + Model::sorted(attributes));
        return result;
    }

    std::vector<std::pair<std::string, Attributes>> rows;
};

TEST(StoreRandom, EveryRevisionReadsAsItWasHoweverItIsCut) {
    for (uint32_t seed = 0; seed < 20; seed++) {
        Model model(seed);
        const std::unique_ptr<Store> store =
            open_sqlite_store({.keep_commits = 20, .keep_seconds = -1});
        for (int i = 0; i < 40; i++) {
            const CommitResult result = commit(*store, model.change());
            ASSERT_EQ(result.status, CommitResult::Status::done);
            ASSERT_EQ(result.revision, model.head());

            const Revision oldest = store->horizon();
            const auto span = static_cast<uint32_t>(model.head() - oldest + 1);
            const Revision at = oldest + model.below(span);
            SortedRows rows;
            const std::unique_ptr<Scan> scan = store->scan(everything(at));
            while (scan->next(1 + model.below(4), rows) == ReadStatus::more) {
            }
            ASSERT_EQ(rows.texts(), model.texts(at)) << "seed " << seed << " at " << at;
        }
        EXPECT_EQ(store->horizon(), 20);
    }
}

}  // namespace
}  // namespace embedded
