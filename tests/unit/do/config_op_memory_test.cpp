// Configuration operations while memory runs out, and their records as they lie in memory.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "oru/config_op.h"
#include "oru/error.h"
#include "oru/logger.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Deref;
using oru::test::Name;
using oru::test::oom_hit;
using oru::test::Strbuf;
using oru::test::sweep_oom;
using oru::test::TraceCapture;
using oru::test::Uri;
using Op = std::unique_ptr<ORUDoConfigOp, Deref<oru_do_config_op_deref>>;
using Ops = std::unique_ptr<ORUDoConfigOps, Deref<oru_do_config_ops_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;
using Codes = std::vector<int32_t>;
using Lines = std::vector<std::string>;

Op bare_op(int32_t code) {
    return Op(oru_do_config_op_new(code, nullptr, nullptr, nullptr, nullptr, nullptr));
}

Codes codes_of(ORUDoConfigOps *ops) {
    Codes codes;
    ORUDoIter iter;
    oru_do_config_ops_iter(ops, &iter);
    while (ORUDoConfigOp *op = oru_do_config_ops_get_next(&iter))
        codes.push_back(oru_do_config_op_get_op_code(op));
    return codes;
}

class ConfigOpMemory : public testing::Test {
  protected:
    ConfigOpMemory() {
        oru_do_properties_set_int(props.get(), "n", 5);
        op.reset(oru_do_config_op_new(7, uri.get(), props.get(), child.get(), type.get(),
                                      lib_type.get()));
        oru_do_config_op_set_err(op.get(), oru_do_error_new(5, "e"));
        oru_do_config_op_init_pr_ops(op.get());
        for (const int32_t code : {1, 2, 3})
            oru_do_config_ops_add_op(three.get(), bare_op(code).get());
    }

    Uri uri{oru_do_uri_new(("/a;k=" + std::string(200, 'v')).c_str())};
    Properties props{oru_do_properties_new()};
    Name child{oru_do_name_new("child")};
    Name type{oru_do_name_new("p:1/Mr")};
    Name lib_type{oru_do_name_new("l:1/Mr")};
    Op op;
    Ops three{oru_do_config_ops_new()};
};

TEST_F(ConfigOpMemory, AnOperationIsMadeOrNot) {
    sweep_oom([this] {
        const Op made(oru_do_config_op_new(7, uri.get(), props.get(), child.get(), type.get(),
                                           lib_type.get()));
        EXPECT_EQ(made == nullptr, oom_hit());
    });
}

TEST_F(ConfigOpMemory, ASetIsMadeOrNot) {
    sweep_oom([] {
        const Ops made(oru_do_config_ops_new());
        EXPECT_EQ(made == nullptr, oom_hit());
    });
}

// The tables of a clone may be shorter, as those of any clone.
TEST_F(ConfigOpMemory, ACloneHasAllItsPartsOrThereIsNone) {
    sweep_oom(
        [this] {
            const Op clone(oru_do_config_op_clone(op.get()));
            EXPECT_TRUE(clone != nullptr || oom_hit());
            if (clone == nullptr)
                return;
            EXPECT_NE(oru_do_config_op_get_mr_uri(clone.get()), nullptr);
            EXPECT_NE(oru_do_config_op_get_props(clone.get()), nullptr);
            EXPECT_NE(oru_do_config_op_get_pr_props(clone.get()), nullptr);
            EXPECT_NE(oru_do_config_op_get_child_ref_name(clone.get()), nullptr);
            EXPECT_NE(oru_do_config_op_get_mr_name(clone.get()), nullptr);
            EXPECT_NE(oru_do_config_op_get_lib_mr_name(clone.get()), nullptr);
        },
        {.promised_deaths = {}, .at_least = 10});
}

TEST_F(ConfigOpMemory, TheProvidersTableIsThereOrNot) {
    sweep_oom(
        [this] {
            const Op own(oru_do_config_op_new(1, nullptr, props.get(), nullptr, nullptr, nullptr));
            if (own == nullptr)
                return;
            oru_do_config_op_init_pr_ops(own.get());
            EXPECT_TRUE(oru_do_config_op_get_pr_props(own.get()) != nullptr || oom_hit());
            EXPECT_EQ(oru_do_config_op_get_props(own.get()), props.get());
        },
        {.promised_deaths = {}, .at_least = 3});
}

TEST_F(ConfigOpMemory, AddingGivesTheLengthOrNothing) {
    sweep_oom(
        [this] {
            const Ops ops(oru_do_config_ops_new());
            if (ops == nullptr)
                return;
            const int32_t made =
                oru_do_config_ops_add(ops.get(), 1, uri.get(), nullptr, nullptr, nullptr, nullptr);
            EXPECT_EQ(made, oom_hit() ? 0 : 1);
            const int32_t length = oru_do_config_ops_get_len(ops.get());
            EXPECT_EQ(length, made);
            const int32_t added = oru_do_config_ops_add_op(ops.get(), op.get());
            EXPECT_TRUE(added == length + 1 || (added == 0 && oom_hit()));
            EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), added != 0 ? added : length);
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST_F(ConfigOpMemory, AnItemThatIsNotToBeHadIsTold) {
    const TraceCapture traces(3);
    const Lines words{"Failed to allocate config ops item\n"};
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_config_ops_add_op(three.get(), op.get()), 0);
    poolheap_fail_off();
    EXPECT_EQ(traces.at(3), words);
    EXPECT_EQ(codes_of(three.get()), (Codes{1, 2, 3}));
    EXPECT_EQ(oru_do_config_ops_add_op(three.get(), op.get()), 4);
}

TEST_F(ConfigOpMemory, AppendedSetsLeaveOutWhatFindsNoItem) {
    const Ops ops(oru_do_config_ops_new());
    const TraceCapture traces(3);
    poolheap_fail_nth(2, 0);
    oru_do_config_ops_add_ops(ops.get(), three.get());
    poolheap_fail_off();
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 3}));
    EXPECT_EQ(traces.at(3), Lines{"Failed to allocate config ops item\n"});
    poolheap_fail_nth(1, 1);
    oru_do_config_ops_add_ops(ops.get(), three.get());
    poolheap_fail_off();
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 3}));
    EXPECT_EQ(traces.at(3).size(), 4u);
}

TEST_F(ConfigOpMemory, ReversedSetsLeaveOutWhatFindsNoItem) {
    const TraceCapture traces(3);
    poolheap_fail_nth(3, 0);  // the set, then its items
    const Ops reversed(oru_do_config_ops_reverse_order(three.get()));
    poolheap_fail_off();
    EXPECT_EQ(codes_of(reversed.get()), (Codes{3, 1}));
    EXPECT_EQ(traces.at(3), Lines{"Failed to allocate config ops item\n"});
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_config_ops_reverse_order(three.get()), nullptr);
    poolheap_fail_off();
}

// The set, then the clone and the item of each operation.
TEST_F(ConfigOpMemory, ClonedSetsLeaveOutWhatFindsNoItemAndFailWithAnOperation) {
    const TraceCapture traces(3);
    const struct {
        uint64_t nth;
        Codes codes;
    } shorter[] = {{3, {2, 3}}, {5, {1, 3}}, {7, {1, 2}}};
    for (const auto &step : shorter) {
        poolheap_fail_nth(step.nth, 0);
        const Ops clones(oru_do_config_ops_clone(three.get()));
        poolheap_fail_off();
        ASSERT_NE(clones, nullptr);
        EXPECT_EQ(codes_of(clones.get()), step.codes);
    }
    EXPECT_EQ(traces.at(3), Lines(3, "Failed to allocate config ops item\n"));
    for (const uint64_t nth : {1, 2, 4, 6}) {
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(oru_do_config_ops_clone(three.get()), nullptr);
        poolheap_fail_off();
    }
    EXPECT_EQ(codes_of(three.get()), (Codes{1, 2, 3}));
}

TEST_F(ConfigOpMemory, CopiesAndReversedSetsAreWholeOrShorter) {
    oru_do_config_ops_add_op(three.get(), op.get());
    sweep_oom(
        [this] {
            const Ops reversed(oru_do_config_ops_reverse_order(three.get()));
            const Ops clones(oru_do_config_ops_clone(three.get()));
            for (ORUDoConfigOps *set : {reversed.get(), clones.get()}) {
                const int32_t length = set != nullptr ? oru_do_config_ops_get_len(set) : 0;
                EXPECT_LE(length, 4);
                EXPECT_TRUE(length == 4 || oom_hit());
            }
        },
        {.promised_deaths = {}, .at_least = 25});
}

TEST_F(ConfigOpMemory, TheBufferTellsOfWhatIsMissing) {
    oru_do_config_ops_add_op(three.get(), op.get());
    oru_do_config_ops_add_op(three.get(), op.get());
    sweep_oom(
        [this] {
            const Strbuf text(oru_do_strbuf_new());
            if (text == nullptr)
                return;
            EXPECT_EQ(oru_do_config_ops_to_strbuf(three.get(), 1, text.get()), 0);
            EXPECT_EQ(oru_do_strbuf_get_err(text.get()), oom_hit() ? 10002 : 0);
        },
        {.promised_deaths = {}, .at_least = 3});
}

TEST_F(ConfigOpMemory, WithoutABufferNothingIsTraced) {
    const TraceCapture traces(7);
    const uint32_t level = oru_logger_get_level();
    for (const uint64_t nth : {1, 2}) {  // the buffer, and its storage
        poolheap_fail_nth(nth, 1);
        oru_do_config_op_trace(op.get(), level);
        poolheap_fail_off();
        poolheap_fail_nth(nth, 1);
        oru_do_config_ops_trace(three.get(), level);
        poolheap_fail_off();
    }
    EXPECT_TRUE(traces.at(7).empty());
}

// ---- The records ----

struct OpImage {
    uint32_t ref_count;
    int32_t op_code;
    int32_t noop;
    ORUDoUri *mr_uri;
    ORUDoProperties *props;
    ORUDoProperties *pr_props;
    ORUDoName *child_ref_name;
    ORUDoName *mr_name;
    ORUDoName *lib_mr_name;
    ORUDoError *err;
};

struct OpsItemImage {
    ORUDoConfigOp *op;
    OpsItemImage *next;
};

struct OpsImage {
    uint32_t ref_count;
    OpsItemImage *first;
};

TEST_F(ConfigOpMemory, TheRecordsHaveTheirFieldsInOrder) {
    oru_do_config_op_set_noop(op.get(), 9);
    const auto &image = *reinterpret_cast<OpImage *>(op.get());
    EXPECT_EQ(image.ref_count, 1u);
    EXPECT_EQ(image.op_code, 7);
    EXPECT_EQ(image.noop, 9);
    EXPECT_EQ(image.mr_uri, uri.get());
    EXPECT_EQ(image.props, props.get());
    EXPECT_EQ(image.pr_props, oru_do_config_op_get_pr_props(op.get()));
    EXPECT_NE(image.pr_props, nullptr);
    EXPECT_EQ(image.child_ref_name, child.get());
    EXPECT_EQ(image.mr_name, type.get());
    EXPECT_EQ(image.lib_mr_name, lib_type.get());
    EXPECT_EQ(image.err, oru_do_config_op_get_err(op.get()));
    EXPECT_NE(image.err, nullptr);

    const auto &set = *reinterpret_cast<OpsImage *>(three.get());
    EXPECT_EQ(set.ref_count, 1u);
    EXPECT_EQ(set.first->op, oru_do_config_ops_get_op(three.get(), 0));
    EXPECT_EQ(set.first->next->op, oru_do_config_ops_get_op(three.get(), 1));
    EXPECT_EQ(set.first->next->next->next, nullptr);
}

TEST_F(ConfigOpMemory, TheLastReferenceReleasesItsPartsInOrder) {
    const Properties own(oru_do_properties_ref(oru_do_config_op_get_pr_props(op.get())));
    ORUDoError *error = oru_do_error_ref(oru_do_config_op_get_err(op.get()));
    const auto words = [](const char *record, void *object, const char *count) {
        char text[100];
        std::snprintf(text, sizeof text, "oru deref %s %p %s", record, object, count);
        return std::string(text);
    };
    const Lines expected = {
        words("oru_do_config_op", op.get(), "1"),     words("oru_do_uri", uri.get(), "2"),
        words("oru_do_properties", props.get(), "2"), words("oru_do_properties", own.get(), "2"),
        words("oru_do_name", child.get(), "2"),       words("oru_do_name", type.get(), "2"),
        words("oru_do_name", lib_type.get(), "2"),    words("oru_do_error", error, "2")};
    {
        const TraceCapture traces(8);
        op.reset();
        EXPECT_EQ(traces.at(8), expected);
    }
    oru_do_error_deref(error);
}

}  // namespace
