#include "oru/config_op.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "oru/error.h"
#include "oru/logger.h"
#include "oru/name.h"
#include "oru/print.h"
#include "oru/properties.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "tests/support/death.h"
#include "tests/support/owned.h"
#include "tests/support/printed.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Deref;
using oru::test::Name;
using oru::test::Strbuf;
using oru::test::TraceCapture;
using oru::test::Uri;
using Op = std::unique_ptr<ORUDoConfigOp, Deref<oru_do_config_op_deref>>;
using Ops = std::unique_ptr<ORUDoConfigOps, Deref<oru_do_config_ops_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;

Op bare_op(int32_t code, const char *uri = "/a") {
    return Op(oru_do_config_op_new(code, Uri(oru_do_uri_new(uri)).get(), nullptr, nullptr, nullptr,
                                   nullptr));
}

Properties one_property() {
    Properties props(oru_do_properties_new());
    oru_do_properties_set_int(props.get(), "n", 5);
    return props;
}

Op full_op() {
    return Op(oru_do_config_op_new(7, Uri(oru_do_uri_new("/a;k=1")).get(), one_property().get(),
                                   Name(oru_do_name_new("child")).get(),
                                   Name(oru_do_name_new("p:1/Mr")).get(),
                                   Name(oru_do_name_new("l:1/Mr")).get()));
}

// The number of tabs plays no part.
std::string text_of(ORUDoConfigOp *op) {
    return oru::test::printed<oru_do_config_op_to_strbuf>(op, 3);
}

std::vector<int32_t> codes_of(ORUDoConfigOps *ops) {
    std::vector<int32_t> codes;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_config_ops_iter(ops, &iter);
    while (oru_do_config_ops_has_next(&iter) != 0)
        codes.push_back(oru_do_config_op_get_op_code(oru_do_config_ops_get_next(&iter)));
    EXPECT_EQ(oru_do_config_ops_get_next(&iter), nullptr);
    return codes;
}

using Codes = std::vector<int32_t>;

Ops set_of(const Codes &codes) {
    Ops ops(oru_do_config_ops_new());
    for (const int32_t code : codes)
        oru_do_config_ops_add_op(ops.get(), bare_op(code).get());
    return ops;
}

TEST(ConfigOp, KeepsWhatItIsMadeOf) {
    const Uri uri(oru_do_uri_new("/a"));
    const Properties props = one_property();
    const Name child(oru_do_name_new("c")), mr(oru_do_name_new("m")), lib(oru_do_name_new("l"));
    const Op op(oru_do_config_op_new(-3, uri.get(), props.get(), child.get(), mr.get(), lib.get()));
    EXPECT_EQ(oru_do_config_op_get_op_code(op.get()), -3);
    EXPECT_EQ(oru_do_config_op_is_noop(op.get()), 0);
    EXPECT_EQ(oru_do_config_op_get_mr_uri(op.get()), uri.get());
    EXPECT_EQ(oru_do_config_op_get_props(op.get()), props.get());
    EXPECT_EQ(oru_do_config_op_get_pr_props(op.get()), nullptr);
    EXPECT_EQ(oru_do_config_op_get_child_ref_name(op.get()), child.get());
    EXPECT_EQ(oru_do_config_op_get_mr_name(op.get()), mr.get());
    EXPECT_EQ(oru_do_config_op_get_new_mr_name(op.get()), mr.get());
    EXPECT_EQ(oru_do_config_op_get_lib_mr_name(op.get()), lib.get());
    EXPECT_EQ(oru_do_config_op_get_err(op.get()), nullptr);
}

TEST(ConfigOp, SettersReplaceAndShare) {
    const Op op = full_op();
    const Uri uri(oru_do_uri_new("/b"));
    const Properties props = one_property();
    const Name name(oru_do_name_new("x"));
    oru_do_config_op_set_op_code(op.get(), 9);
    oru_do_config_op_set_noop(op.get(), 4);
    oru_do_config_op_set_mr_uri(op.get(), uri.get());
    oru_do_config_op_set_props(op.get(), props.get());
    oru_do_config_op_set_child_ref_name(op.get(), name.get());
    oru_do_config_op_set_mr_name(op.get(), name.get());
    oru_do_config_op_set_lib_mr_name(op.get(), name.get());
    EXPECT_EQ(oru_do_config_op_get_op_code(op.get()), 9);
    EXPECT_EQ(oru_do_config_op_is_noop(op.get()), 4);
    EXPECT_EQ(oru_do_config_op_get_mr_uri(op.get()), uri.get());
    EXPECT_EQ(oru_do_config_op_get_props(op.get()), props.get());
    EXPECT_EQ(oru_do_config_op_get_child_ref_name(op.get()), name.get());
    EXPECT_EQ(oru_do_config_op_get_mr_name(op.get()), name.get());
    EXPECT_EQ(oru_do_config_op_get_lib_mr_name(op.get()), name.get());
}

TEST(ConfigOp, SettersOfObjectsClearWithNull) {
    const Op op = full_op();
    oru_do_config_op_set_mr_uri(op.get(), nullptr);
    oru_do_config_op_set_child_ref_name(op.get(), nullptr);
    oru_do_config_op_set_mr_name(op.get(), nullptr);
    oru_do_config_op_set_lib_mr_name(op.get(), nullptr);
    EXPECT_EQ(oru_do_config_op_get_mr_uri(op.get()), nullptr);
    EXPECT_EQ(oru_do_config_op_get_child_ref_name(op.get()), nullptr);
    EXPECT_EQ(oru_do_config_op_get_mr_name(op.get()), nullptr);
    EXPECT_EQ(oru_do_config_op_get_lib_mr_name(op.get()), nullptr);
}

// The count of live blocks at the end tells that nothing was counted twice.
TEST(ConfigOp, TakesOverTheErrorItIsGiven) {
    const Op op = bare_op(1);
    ORUDoError *error = oru_do_error_new(5, "first");
    oru_do_config_op_set_err(op.get(), error);
    EXPECT_EQ(oru_do_config_op_get_err(op.get()), error);
    oru_do_config_op_set_err(op.get(), oru_do_error_new(6, "second"));
    EXPECT_EQ(oru_do_error_get_code(oru_do_config_op_get_err(op.get())), 6);
    oru_do_config_op_set_err(op.get(), nullptr);
    EXPECT_EQ(oru_do_config_op_get_err(op.get()), nullptr);
}

TEST(ConfigOp, TheProviderGetsATableOfItsOwn) {
    const Op op = full_op();
    oru_do_config_op_init_pr_ops(op.get());
    ORUDoProperties *own = oru_do_config_op_get_pr_props(op.get());
    ASSERT_NE(own, nullptr);
    EXPECT_NE(own, oru_do_config_op_get_props(op.get()));
    EXPECT_EQ(oru_do_properties_equals(own, oru_do_config_op_get_props(op.get())), 1);
    oru_do_properties_set_int(own, "n", 6);
    int32_t code = 0;
    EXPECT_EQ(oru_do_properties_get_int(oru_do_config_op_get_props(op.get()), "n", &code), 5);

    const Op without = bare_op(1);
    oru_do_config_op_init_pr_ops(without.get());
    EXPECT_EQ(oru_do_config_op_get_pr_props(without.get()), nullptr);
}

TEST(ConfigOp, AnEarlierTableOfTheProviderIsNotReleased) {
    const Op op = full_op();
    oru_do_config_op_init_pr_ops(op.get());
    const Properties first(oru_do_config_op_get_pr_props(op.get()));
    oru_do_config_op_init_pr_ops(op.get());
    EXPECT_NE(oru_do_config_op_get_pr_props(op.get()), first.get());
    EXPECT_EQ(oru_do_properties_get_len(first.get()), 1);
}

TEST(ConfigOp, ACloneSharesNothingAndHasNoError) {
    const Op op = full_op();
    oru_do_config_op_set_noop(op.get(), 1);
    oru_do_config_op_init_pr_ops(op.get());
    oru_do_config_op_set_err(op.get(), oru_do_error_new(5, "e"));
    const Op clone(oru_do_config_op_clone(op.get()));
    EXPECT_EQ(oru_do_config_op_get_op_code(clone.get()), 7);
    EXPECT_EQ(oru_do_config_op_is_noop(clone.get()), 1);
    EXPECT_EQ(oru_do_config_op_get_err(clone.get()), nullptr);
    EXPECT_NE(oru_do_config_op_get_mr_uri(clone.get()), oru_do_config_op_get_mr_uri(op.get()));
    EXPECT_NE(oru_do_config_op_get_props(clone.get()), oru_do_config_op_get_props(op.get()));
    EXPECT_NE(oru_do_config_op_get_pr_props(clone.get()), oru_do_config_op_get_pr_props(op.get()));
    EXPECT_NE(oru_do_config_op_get_mr_name(clone.get()), oru_do_config_op_get_mr_name(op.get()));
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_config_op_get_lib_mr_name(clone.get())), "l:1/Mr");
    oru_do_config_op_set_err(op.get(), nullptr);
    EXPECT_EQ(text_of(clone.get()), text_of(op.get()));

    const Op bare(oru_do_config_op_new(1, nullptr, nullptr, nullptr, nullptr, nullptr));
    const Op copy(oru_do_config_op_clone(bare.get()));
    EXPECT_EQ(oru_do_config_op_get_mr_uri(copy.get()), nullptr);
    EXPECT_EQ(oru_do_config_op_get_props(copy.get()), nullptr);
}

TEST(ConfigOp, SettersTakeWhatIsHeldAlready) {
    const Op op = full_op();
    oru_do_config_op_set_mr_uri(op.get(), oru_do_config_op_get_mr_uri(op.get()));
    oru_do_config_op_set_props(op.get(), oru_do_config_op_get_props(op.get()));
    oru_do_config_op_set_child_ref_name(op.get(), oru_do_config_op_get_child_ref_name(op.get()));
    oru_do_config_op_set_mr_name(op.get(), oru_do_config_op_get_mr_name(op.get()));
    oru_do_config_op_set_lib_mr_name(op.get(), oru_do_config_op_get_lib_mr_name(op.get()));
    oru_do_config_op_set_err(op.get(), oru_do_error_new(5, "e"));
    oru_do_config_op_set_err(op.get(), oru_do_error_ref(oru_do_config_op_get_err(op.get())));
    EXPECT_EQ(text_of(op.get()), "(/a;k=1:7:child:p:1/Mr:Error(5) : e\n) { n : 5 }");
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_config_op_get_lib_mr_name(op.get())), "l:1/Mr");
}

// A URI is only read when it is asked for its parts.
TEST(ConfigOp, AUriThatCannotBeReadIsClonedToo) {
    const Op op = bare_op(1, "no uri");
    const Op clone(oru_do_config_op_clone(op.get()));
    ASSERT_NE(clone, nullptr);
    EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_config_op_get_mr_uri(clone.get())), "no uri");
}

TEST(ConfigOp, PrintsItsParts) {
    EXPECT_EQ(text_of(nullptr), "");
    EXPECT_EQ(text_of(bare_op(2).get()), "(/a:2:-) ");
    EXPECT_EQ(text_of(full_op().get()), "(/a;k=1:7:child:p:1/Mr) { n : 5 }");
    const Op failed = bare_op(-1);
    ORUDoError *error = oru_do_error_new(5, "e");
    oru_do_config_op_set_err(failed.get(), error);
    EXPECT_EQ(text_of(failed.get()), "(/a:-1:-:Error(5) : e\n) ");
    const Op nowhere(oru_do_config_op_new(3, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(text_of(nowhere.get()), "(:3:-) ");
}

class Logging : public testing::Test {
  protected:
    ~Logging() override { oru_logger_set_level(before); }
    uint32_t before = oru_logger_get_level();
};

TEST_F(Logging, OperationsAndSetsAreTracedWhenTheLoggerIsAtTheLevel) {
    const Op op = bare_op(2);
    const Ops ops = set_of({2});
    oru_logger_set_level(4);
    {
        const TraceCapture traces(7);
        oru_do_config_op_trace(op.get(), 5);
        oru_do_config_ops_trace(ops.get(), 5);
        EXPECT_TRUE(traces.at(7).empty());
    }
    const TraceCapture traces(7);
    oru_do_config_op_trace(op.get(), 4);
    oru_do_config_ops_trace(ops.get(), 3);
    oru_do_config_ops_trace(nullptr, 4);
    oru_do_config_op_trace(nullptr, 0);
    EXPECT_EQ(traces.at(7), (std::vector<std::string>{"(/a:2:-) \n", "[(/a:2:-) ]\n", "\n", "\n"}));
}

TEST(ConfigOps, KeepTheOrderOfAdding) {
    const Ops ops(oru_do_config_ops_new());
    EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 0);
    EXPECT_EQ(oru_do_config_ops_get_last_op(ops.get()), nullptr);
    const Uri uri(oru_do_uri_new("/a"));
    EXPECT_EQ(oru_do_config_ops_add(ops.get(), 3, uri.get(), nullptr, nullptr, nullptr, nullptr),
              1);
    const Op second = bare_op(1);
    EXPECT_EQ(oru_do_config_ops_add_op(ops.get(), second.get()), 2);
    EXPECT_EQ(oru_do_config_ops_add(ops.get(), 2, uri.get(), nullptr, nullptr, nullptr, nullptr),
              3);
    EXPECT_EQ(codes_of(ops.get()), (Codes{3, 1, 2}));
    EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 3);
    EXPECT_EQ(oru_do_config_ops_get_op(ops.get(), 1), second.get());
    EXPECT_EQ(oru_do_config_ops_get_op(ops.get(), -1), nullptr);
    EXPECT_EQ(oru_do_config_ops_get_op(ops.get(), 3), nullptr);
    EXPECT_EQ(oru_do_config_ops_get_op(ops.get(), INT32_MAX), nullptr);
    EXPECT_EQ(oru_do_config_ops_get_op(ops.get(), INT32_MIN), nullptr);
    EXPECT_EQ(oru_do_config_op_get_op_code(oru_do_config_ops_get_last_op(ops.get())), 2);
}

TEST(ConfigOps, WhatIsAddedIsTheSetsAlone) {
    const Ops ops(oru_do_config_ops_new());
    const Uri uri(oru_do_uri_new("/a"));
    oru_do_config_ops_add(ops.get(), 1, uri.get(), nullptr, nullptr, nullptr, nullptr);
    const Op shared = bare_op(2);
    oru_do_config_ops_add_op(ops.get(), shared.get());
    const auto count_of = [&](int32_t index) {
        return *reinterpret_cast<uint32_t *>(oru_do_config_ops_get_op(ops.get(), index));
    };
    EXPECT_EQ(count_of(0), 1u);
    EXPECT_EQ(count_of(1), 2u);
    oru_do_config_ops_remove(ops.get(), 1);
    EXPECT_EQ(text_of(shared.get()), "(/a:2:-) ");
}

TEST(ConfigOps, AllNoopsAreTakenOut) {
    const Ops ops = set_of({1, 2, 3, 4});
    for (const int32_t index : {0, 1, 3})
        oru_do_config_op_set_noop(oru_do_config_ops_get_op(ops.get(), index), index + 1);
    EXPECT_EQ(oru_do_config_ops_remove_noops(ops.get()), 3);
    EXPECT_EQ(codes_of(ops.get()), Codes{3});
}

TEST(ConfigOps, NoopsAreTakenOut) {
    const Ops ops = set_of({1, 2, 3});
    oru_do_config_op_set_noop(oru_do_config_ops_get_op(ops.get(), 1), 1);
    EXPECT_EQ(oru_do_config_ops_remove_noops(ops.get()), 1);
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 3}));
    EXPECT_EQ(oru_do_config_ops_remove_noops(ops.get()), 0);
    const Ops only = set_of({1});
    oru_do_config_op_set_noop(oru_do_config_ops_get_op(only.get(), 0), 1);
    EXPECT_EQ(oru_do_config_ops_remove_noops(only.get()), 1);
    EXPECT_EQ(oru_do_config_ops_get_len(only.get()), 0);
}

TEST(ConfigOps, RemovesByPosition) {
    const Ops ops = set_of({1, 2, 3});
    oru_do_config_ops_remove(ops.get(), 3);
    oru_do_config_ops_remove(ops.get(), INT32_MAX);
    oru_do_config_ops_remove(ops.get(), -1);
    oru_do_config_ops_remove(nullptr, 0);
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 2, 3}));
    oru_do_config_ops_remove(ops.get(), 2);
    oru_do_config_ops_remove(ops.get(), 0);
    EXPECT_EQ(codes_of(ops.get()), Codes{2});
}

TEST(ConfigOps, AppendingASetSharesItsOperations) {
    const Ops ops = set_of({1}), more = set_of({2, 3});
    oru_do_config_ops_add_ops(ops.get(), more.get());
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 2, 3}));
    oru_do_config_op_set_op_code(oru_do_config_ops_get_op(more.get(), 0), 9);
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 9, 3}));
    oru_do_config_ops_add_ops(ops.get(), ops.get());
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 9, 3, 1, 9, 3}));
}

TEST(ConfigOps, ReversingSharesAndLeavesTheSource) {
    const Ops ops = set_of({1, 2, 3});
    const Ops reversed(oru_do_config_ops_reverse_order(ops.get()));
    EXPECT_EQ(codes_of(reversed.get()), (Codes{3, 2, 1}));
    EXPECT_EQ(codes_of(ops.get()), (Codes{1, 2, 3}));
    EXPECT_EQ(oru_do_config_ops_get_op(reversed.get(), 2), oru_do_config_ops_get_op(ops.get(), 0));
    const Ops none(oru_do_config_ops_new());
    const Ops reversed_none(oru_do_config_ops_reverse_order(none.get()));
    EXPECT_EQ(oru_do_config_ops_get_len(reversed_none.get()), 0);
}

TEST(ConfigOps, ClonesAreIndependent) {
    const Ops ops = set_of({1, 2});
    const Ops clones(oru_do_config_ops_clone(ops.get()));
    oru_do_config_op_set_op_code(oru_do_config_ops_get_op(ops.get(), 0), 9);
    EXPECT_EQ(codes_of(clones.get()), (Codes{1, 2}));
}

TEST(ConfigOps, GiveEachProviderTableOfItsOwn) {
    const Ops ops(oru_do_config_ops_new());
    oru_do_config_ops_add_op(ops.get(), full_op().get());
    oru_do_config_ops_add_op(ops.get(), bare_op(1).get());
    oru_do_config_ops_init_pr_ops(ops.get());
    EXPECT_NE(oru_do_config_op_get_pr_props(oru_do_config_ops_get_op(ops.get(), 0)), nullptr);
    EXPECT_EQ(oru_do_config_op_get_pr_props(oru_do_config_ops_get_op(ops.get(), 1)), nullptr);
}

TEST(ConfigOps, PrintBetweenBrackets) {
    ORUDoConfigOps *nothing = nullptr;
    EXPECT_EQ(oru::test::printed<oru_do_config_ops_to_strbuf>(nothing), "");
    EXPECT_EQ(oru::test::printed<oru_do_config_ops_to_strbuf>(set_of({}).get()), "[]");
    EXPECT_EQ(oru::test::printed<oru_do_config_ops_to_strbuf>(set_of({1, 2}).get(), 2),
              "[(/a:1:-) , (/a:2:-) ]");
}

TEST(ConfigOps, RequiredArgumentsAreAsserted) {
    const Op op = bare_op(1);
    const Ops ops(oru_do_config_ops_new());
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_config_op_clone(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_op_code(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_is_noop(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_mr_uri(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_props(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_pr_props(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_child_ref_name(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_mr_name(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_new_mr_name(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_lib_mr_name(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_get_err(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_op_code(nullptr, 1), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_noop(nullptr, 1), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_mr_uri(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_props(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_props(op.get(), nullptr), "props");
    EXPECT_ASSERTION(oru_do_config_op_set_child_ref_name(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_mr_name(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_lib_mr_name(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_set_err(nullptr, nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_init_pr_ops(nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_op_to_strbuf(op.get(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_config_ops_add(nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr),
                     "ops");
    EXPECT_ASSERTION(oru_do_config_ops_add_op(nullptr, op.get()), "ops");
    EXPECT_ASSERTION(oru_do_config_ops_add_op(ops.get(), nullptr), "op");
    EXPECT_ASSERTION(oru_do_config_ops_add_ops(nullptr, ops.get()), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_add_ops(ops.get(), nullptr), "new_ops");
    EXPECT_ASSERTION(oru_do_config_ops_get_len(nullptr), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_get_op(nullptr, 0), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_get_last_op(nullptr), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_iter(nullptr, &iter), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_iter(ops.get(), nullptr), "iter");
    EXPECT_ASSERTION(oru_do_config_ops_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_config_ops_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_config_ops_to_strbuf(ops.get(), 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_config_ops_remove_noops(nullptr), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_init_pr_ops(nullptr), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_clone(nullptr), "ops");
    EXPECT_ASSERTION(oru_do_config_ops_reverse_order(nullptr), "ops");
    EXPECT_ASSERTION(oru_do_config_ops_has_next(&iter), "iter->coll_type == DO_COLL_CONFIG_OPS");
    EXPECT_EQ(oru_do_config_op_ref(nullptr), nullptr);
    EXPECT_EQ(oru_do_config_ops_ref(nullptr), nullptr);
    oru_do_config_op_deref(nullptr);
    oru_do_config_ops_deref(nullptr);
}

}  // namespace
