// The records of constraints and conditions: their fields, and the order in which they go.
#include <oru/lib.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>

#include "oru/constraint.h"
#include "oru/json.h"
#include "oru/nvlist.h"
#include "oru/util.h"
#include "tests/support/oom.h"
#include "tests/unit/md/constraint_support.h"

namespace {

using namespace oru::test;

struct Record {
    uint32_t ref;
    char *constraint_str;
    ORUDoCondition *condition;
    ORUDoRange *size;
    ORUDoRange *values;
    ORUDoRange *strlen;
    char *regex_str;
    oru_regexp *regex;
    uint32_t ordered_by_user;
    uint32_t unique;
    ORUDoValue *default_value;
    int32_t typecode;
};

struct ItemRecord {
    ORUDoConstraint *constraint;
    ItemRecord *next;
};

struct ListRecord {
    ItemRecord *first;
    ItemRecord *last;
    uint32_t length;
    uint32_t ref;
};

const Record &record_of(const Constraint &constraint) {
    return *reinterpret_cast<Record *>(constraint.get());
}

TEST(ConstraintRecords, HaveTheirFieldsInOrder) {
    const auto c = guarded("b.values(1)", "size(1)values(2)strlen(3)regex(a)default(4)", kInt);
    const Record &record = record_of(c);
    EXPECT_EQ(record.ref, 1u);
    EXPECT_STREQ(record.constraint_str, "size(1)values(2)strlen(3)regex(a)default(4)");
    EXPECT_STREQ(oru_do_condition_get_expr(record.condition), "b.values(1)");
    EXPECT_EQ(elements(record.size), "1 7:1..-");
    EXPECT_EQ(elements(record.values), "1 5:2..-");
    EXPECT_EQ(elements(record.strlen), "1 7:3..-");
    EXPECT_STREQ(record.regex_str, "a");
    EXPECT_NE(record.regex, nullptr);
    EXPECT_EQ(record.ordered_by_user, 0u);
    EXPECT_EQ(record.unique, 0u);
    EXPECT_EQ(text_of(record.default_value), "4");
    EXPECT_EQ(record.typecode, -3);  // whatever type it was read with
}

TEST(ConstraintRecords, OrderedByAndUniqueAreKept) {
    struct Row {
        const char *text;
        uint32_t ordered_by_user, unique;
    };
    const Row rows[] = {
        {"ordered_by(user)", 1, 0},   {"ordered_by(username)", 1, 0},
        {"ordered_by(system)", 0, 0}, {"ordered_by(myuser)", 0, 0},
        {"unique()", 0, 1},           {"values(1)unique()", 0, 1},
        {"values(1)", 0, 0},          {"ordered_by(user),ordered_by(system)", 1, 0},
    };
    for (const auto &row : rows) {
        const auto c = constraint(row.text);
        EXPECT_EQ(record_of(c).ordered_by_user, row.ordered_by_user) << row.text;
        EXPECT_EQ(record_of(c).unique, row.unique) << row.text;
    }
}

TEST(ConstraintRecords, PatternThatDoesNotCompileLeavesNoHolder) {
    const auto c = constraint("regex([)");
    EXPECT_STREQ(record_of(c).regex_str, "[");
    EXPECT_EQ(record_of(c).regex, nullptr);
}

TEST(ConstraintRecords, ListsHaveTheirFieldsInOrder) {
    const auto first = constraint("values(1)");
    const auto second = constraint("values(2)");
    const auto list = list_of({&first, &second});
    const auto &record = *reinterpret_cast<ListRecord *>(list.get());
    EXPECT_EQ(record.first->constraint, first.get());
    EXPECT_EQ(record.first->next, record.last);
    EXPECT_EQ(record.last->constraint, second.get());
    EXPECT_EQ(record.last->next, nullptr);
    EXPECT_EQ(record.length, 2u);
    EXPECT_EQ(record.ref, 1u);
    EXPECT_EQ(record_of(first).ref, 2u);
}

// Each release of an object, with the number of texts that are gone by then.
class Releases {
  public:
    Releases() : texts_(texts()), threshold_(tracelet_get_threshold()) {
        oruapi_trace_init();
        tracelet_set_sink(receive, this);
        tracelet_set_threshold(8);
    }
    Releases(const Releases &) = delete;
    Releases &operator=(const Releases &) = delete;
    ~Releases() {
        tracelet_set_threshold(threshold_);
        tracelet_set_sink(nullptr, nullptr);
    }
    std::vector<std::string> seen;

  private:
    static uint64_t texts() {
        poolheap_stats_t stats{};
        poolheap_tag_stats(ORU_TAG_COMPONENT + 39, &stats);
        return stats.live_blocks;
    }
    static void receive(void *context, const char *, uint32_t, const char *text,
                        const tracelet_place *) {
        auto *self = static_cast<Releases *>(context);
        constexpr std::string_view kVerb = "oru deref oru_do_";
        const std::string_view line(text);
        if (!line.starts_with(kVerb))
            return;
        const auto rest = line.substr(kVerb.size());
        self->seen.push_back(std::string(rest.substr(0, rest.find(' '))) + " " +
                             std::to_string(self->texts_ - texts()));
    }

    uint64_t texts_;
    uint32_t threshold_;
};

TEST(ConditionRecords, ReleaseTheTreeThenTheTextThenTheNames) {
    auto c = condition("a.values(1)");
    Releases releases;
    c.reset();
    EXPECT_EQ(releases.seen, (std::vector<std::string>{"condition 0", "name 0", "range 0",
                                                       "value 0", "nlist 1", "name 1"}));
}

TEST(ConstraintRecords, ReleaseTheirPartsInOrder) {
    auto c = guarded("a.values(1)", "size(1)values(2)strlen(3)regex(a)default(4)", kInt);
    Releases releases;
    c.reset();
    EXPECT_EQ(releases.seen, (std::vector<std::string>{
                                 "constraint 0",
                                 // the text is gone
                                 "condition 1", "name 1", "range 1", "value 1", "nlist 2", "name 2",
                                 // the ranges
                                 "range 2", "value 2", "range 2", "value 2", "range 2", "value 2",
                                 // the pattern, then the default
                                 "value 3"}));
}

// A constraint under the condition of a where clause, whose text is only built when it is printed.
template <class Print>
void sweep_printing(Print &&print, const char *whole) {
    const Nvlist where(oru_do_nvlist_new());
    oru_do_nvlist_add(where.get(), "a >", number(1).get());
    sweep_oom([&] {
        const Condition when(oru_do_condition_new_from_where(where.get()));
        const Constraint c(oru_do_constraint_new(when.get(), "values(1)"));
        const Strbuf strbuf(oru_do_strbuf_new());
        if (c == nullptr || strbuf == nullptr)
            return;
        print(c.get(), strbuf.get());
        if (!oom_hit()) {
            EXPECT_STREQ(oru_do_strbuf_to_string(strbuf.get()), whole);
        }
    });
}

TEST(ConstraintRecords, WhereClauseWithoutATextPrintsAsNothing) {
    sweep_printing(oru_do_constraint_to_strbuf,
                   "Condition: a.values(1:*)\nConstraint: values(1)\n");
    sweep_printing(
        oru_do_constraint_to_json,
        "{\"%constraint\":{\"condition\":\"a.values(1:*)\",\"constraint_str\":\"values(1)\"}}");
}

}  // namespace
