// Loading a directory of packages.
#include <oru/act_meta.h>
#include <oru/mr_meta.h>
#include <oru/prop_meta.h>

#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

class Load : public StoreTest {};

TEST_F(Load, NetworkPackagesLoadWithoutAFailure) {
    TraceCapture traces(3);
    ORUMdPkgBundle *bundle = nullptr;
    EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(traces.lines(), std::vector<Trace>{});
    EXPECT_STREQ(bundle->name, "quill_default_bundle");
    auto *port = oru_md_get_mr_meta_by_name("com.example.network:1.0/Port");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(text(oru_do_mr_meta_get_mr_fq_name(port->do_mr_meta)),
              "com.example.network:1.0/Port");
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(port->do_mr_meta), 14);
}

}  // namespace
