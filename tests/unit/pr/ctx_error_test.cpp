#include <oruplatform/poolheap.h>

#include <clocale>

#include "oru/lib.h"
#include "oru/util.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using Calls = std::vector<std::string>;

// The process has the name "provd" and stands at "node-7".
class PrErrors : public oru::test::Request {
  public:
    PrErrors() {
        procName = name_;
        locationidStr = location_;
        make(1);
    }
    ~PrErrors() override {
        procName = nullptr;
        locationidStr = nullptr;
    }

  private:
    char name_[8] = "provd";
    char location_[8] = "node-7";
};

TEST_F(PrErrors, AnErrorSaysWhereItComesFrom) {
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 106, "port %d: %s", 4, "no carrier"), 106);
    EXPECT_EQ(holder.calls, (Calls{"set 106 switch-node-7:provd:port 4: no carrier"}));
}

TEST_F(PrErrors, AWarningStandsAlone) {
    EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 12, "port %d", 4), 12);
    EXPECT_EQ(holder.calls, (Calls{"warn 12 port 4"}));
}

TEST_F(PrErrors, TextsAreCutAtTheSizeOfTheirBuffer) {
    const std::string text(300, 'x');
    EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 1, "%s", text.c_str()), 1);
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 2, "%s", text.c_str()), 2);
    EXPECT_EQ(holder.calls, (Calls{"warn 1 " + text.substr(0, 255),
                                   "set 2 switch-node-7:provd:" + text.substr(0, 255)}));
}

TEST_F(PrErrors, AWholeTextIsCutAt318Characters) {
    char location[64] = "";
    std::fill_n(location, 63, 'l');
    locationidStr = location;
    const std::string text(255, 'x');
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 2, "%s", text.c_str()), 2);
    const std::string whole = "switch-" + std::string(63, 'l') + ":provd:" + text;
    EXPECT_EQ(holder.calls, (Calls{"set 2 " + whole.substr(0, 318)}));
}

TEST_F(PrErrors, AFormatThatFailsSetsNothing) {
    // A wide character that has no form in the "C" locale.
    ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    const wchar_t odd[] = {static_cast<wchar_t>(0x20ac), 0};
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 106, "%ls", odd), 106);
    EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 12, "%ls", odd), 12);
    const char *const no_format = nullptr;
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 106, no_format), 106);
    EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 12, no_format), 12);
    EXPECT_EQ(holder.calls, Calls{});
}

TEST_F(PrErrors, AnErrorObjectIsHandedOnWithItsCode) {
    const oru::test::Error error(oru_do_error_new(34, "words"));
    EXPECT_EQ(oru_pr_orucore_ctx_set_do_error(ctx, error.get()), 34);
    EXPECT_EQ(holder.error, error.get());
    EXPECT_EQ(oru_pr_orucore_ctx_get_error(ctx), error.get());
    oru_pr_orucore_ctx_reset_errors(ctx);
    EXPECT_EQ(holder.calls, (Calls{"set_do", "get", "reset"}));
}

TEST_F(PrErrors, AnErrorObjectIsRequired) {
    EXPECT_ASSERTION(oru_pr_orucore_ctx_set_do_error(ctx, nullptr), "err");
}

TEST_F(PrErrors, EveryOperationReachesTheHolder) {
    for (int32_t code = 1; code <= 10; ++code) {
        make(code);
        holder.calls.clear();
        EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 1, "x"), 1);
        EXPECT_EQ(holder.calls.size(), 1u) << code;
    }
}

void expect_no_holder(ORUPrCtx *ctx) {
    const oru::test::Error error(oru_do_error_new(34, "words"));
    EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 106, "x"), -1);
    EXPECT_EQ(oru_pr_orucore_ctx_add_warning(ctx, 106, "x"), -1);
    EXPECT_EQ(oru_pr_orucore_ctx_set_do_error(ctx, error.get()), -1);
    EXPECT_EQ(oru_pr_orucore_ctx_set_do_error(ctx, nullptr), -1);
    EXPECT_EQ(oru_pr_orucore_ctx_get_error(ctx), nullptr);
    oru_pr_orucore_ctx_reset_errors(ctx);
}

TEST_F(PrErrors, WithoutAHolderNothingIsDone) {
    expect_no_holder(nullptr);
    ORUPrCtx bare{};
    expect_no_holder(&bare);
    ORUPrCrudxHandler *ownerless = oru_pr_crudx_handler_new(nullptr);
    bare.crudx = ownerless;
    expect_no_holder(&bare);
    ORUPrCrudxHandler empty{};
    bare.crudx = &empty;
    expect_no_holder(&bare);
    oru_pr_crudx_handler_delete(ownerless);
    EXPECT_EQ(holder.calls, Calls{});
}

class PrErrorsFresh : public oru::test::Request {};

TEST_F(PrErrorsFresh, NamesAreFoundAtFirstUse) {
    const auto child = oru::test::run_in_child([this] {
        setenv("ORU_LOCATION", "node-9", 1);
        EXPECT_EQ(procName, nullptr);
        EXPECT_EQ(locationidStr, nullptr);
        make(1);
        // A warning needs neither.
        oru_pr_orucore_ctx_add_warning(ctx, 1, "x");
        EXPECT_EQ(procName, nullptr);
        EXPECT_EQ(locationidStr, nullptr);
        oru_pr_orucore_ctx_set_error(ctx, 2, "y");
        EXPECT_EQ(holder.calls.back(), "set 2 switch-node-9:pr_test:y");
        EXPECT_STREQ(procName, "pr_test");
        EXPECT_STREQ(locationidStr, "node-9");
        // They are kept, and nothing else is.
        poolheap_stats_t stats{};
        poolheap_tag_stats(0x290003c, &stats);
        EXPECT_EQ(stats.live_blocks, 2u);
        setenv("ORU_LOCATION", "node-10", 1);
        oru_pr_orucore_ctx_set_error(ctx, 3, "z");
        EXPECT_EQ(holder.calls.back(), "set 3 switch-node-9:pr_test:z");
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_TRUE(child.exited_with(0)) << child.describe();
}

TEST_F(PrErrorsFresh, WithoutMemoryTheTextIsStillSet) {
    oru::test::sweep_oom(
        [this] {
            EXPECT_EQ(oru_pr_orucore_ctx_set_error(ctx, 2, "y"), 2);
            ASSERT_EQ(holder.calls.size(), 1u);
            const std::string &call = holder.calls[0];
            EXPECT_EQ(call.substr(0, 13), "set 2 switch-");
            EXPECT_EQ(call.substr(call.size() - 2), ":y");
            for (char **kept : {&procName, &locationidStr}) {
                if (*kept != nullptr)
                    ph_free_named(std::exchange(*kept, nullptr));
            }
        },
        {.promised_deaths = {}, .at_least = 3}, [this] { make(1); });
}

}  // namespace
