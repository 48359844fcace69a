// Operations that create again what was read.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <memory>
#include <string>
#include <vector>

#include "oru/config_op.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using oru::test::Deref;
using oru::test::Strbuf;
using oru::test::TraceCapture;
using oru::test::Uri;
using Ops = std::unique_ptr<ORUDoConfigOps, Deref<oru_do_config_ops_deref>>;
using List = std::unique_ptr<ORUDoPropertiesList, Deref<oru_do_properties_list_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;
using Lines = std::vector<std::string>;

// A table with that URI and type, each left out when null.
Properties table(const char *uri, const char *mr = nullptr) {
    Properties props(oru_do_properties_new());
    if (uri != nullptr)
        oru_do_properties_set_mr_uri(props.get(), "_uri", Uri(oru_do_uri_new(uri)).get());
    if (mr != nullptr)
        oru_do_properties_set_string(props.get(), "_mr", mr);
    return props;
}

class CreatingAgain : public oru::test::StoreTest {
  protected:
    void add(const Properties &props) { oru_do_properties_list_add(list.get(), props.get()); }

    int32_t convert(int32_t check_keys = 0, ORUDoUri *location = nullptr) {
        return oru_do_properties_list_to_config_ops(list.get(), ops.get(), location, check_keys);
    }

    void load_port() {
        load_lib(oru::test::resources(oru::test::resource(
            "Port",
            "<key><attribute name=\"name\" type=\"string\"/></key>"
            "<key><attribute name=\"number\" type=\"int\"/></key>"
            "<configData><attribute name=\"mtu\" type=\"int\"/></configData>")));
    }

    std::string text() {
        const Strbuf buffer(oru_do_strbuf_new());
        oru_do_config_ops_to_strbuf(ops.get(), 0, buffer.get());
        return oru_do_strbuf_to_string(buffer.get());
    }

    List list{oru_do_properties_list_new()};
    Ops ops{oru_do_config_ops_new()};
};

TEST_F(CreatingAgain, MakesAnOperationOnTheParentForEachTable) {
    const Properties first = table("/a;k=1/b;n=2", "p:1/B");
    oru_do_properties_set_int(first.get(), "mtu", 9);
    add(first);
    add(table("/c"));
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(text(), "[(/a;k=1:1:b:p:1/B) { mtu : 9 }, (//:1:c) {  }]");
    ORUDoConfigOp *op = oru_do_config_ops_get_op(ops.get(), 0);
    EXPECT_EQ(oru_do_config_op_get_op_code(op), 1);
    EXPECT_EQ(oru_do_config_op_get_lib_mr_name(op), nullptr);
    EXPECT_EQ(oru_do_config_op_is_noop(op), 0);
}

TEST_F(CreatingAgain, LeavesOutWhatLeadsElsewhereAndWhatIsNull) {
    const Properties props = table("/a/b");
    const Uri uri(oru_do_uri_new("/x"));
    oru_do_properties_set_null(props.get(), "nothing");
    oru_do_properties_set_any_uri(props.get(), "any", uri.get());
    oru_do_properties_set_mr_uri(props.get(), "mr", uri.get());
    oru_do_properties_set_coll_uri(props.get(), "coll", uri.get());
    oru_do_properties_set_string(props.get(), "s", "t");
    add(props);
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(text(), "[(/a:1:b) { s : t }]");
    EXPECT_EQ(oru_do_properties_get_len(props.get()), 6);
}

TEST_F(CreatingAgain, ALocationMakesUrisAbsolute) {
    add(table("/a/b"));
    const Uri location(oru_do_uri_new("//loc;id=1"));
    EXPECT_EQ(convert(0, location.get()), 0);
    EXPECT_EQ(text(), "[(//loc;id=1/a:1:b) {  }]");
}

TEST_F(CreatingAgain, ATableWithoutUriEndsTheWalk) {
    add(table("/a/b"));
    add(table(nullptr, "p:1/B"));
    add(table("/a/c"));
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 10000);
    EXPECT_EQ(traces.at(3), Lines{"MR URI expected to be set\n"});
    EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 1);
}

TEST_F(CreatingAgain, TheRootHasNoSegment) {
    add(table("/"));
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 10000);
    EXPECT_EQ(traces.at(3).back(), "Failed to get last segment (rc=10000)\n");
}

TEST_F(CreatingAgain, UriAndTypeHaveTheirTypes) {
    const Properties no_uri(oru_do_properties_new());
    oru_do_properties_set_string(no_uri.get(), "_uri", "/a");
    add(no_uri);
    {
        const TraceCapture traces(3);
        EXPECT_EQ(convert(), 101);
        EXPECT_EQ(traces.at(3), Lines{"Failed to get _uri value (rc=101)\n"});
    }
    const Properties no_type = table("/a");
    oru_do_properties_set_int(no_type.get(), "_mr", 1);
    oru_do_properties_list_clear(list.get());
    add(no_type);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 101);
    EXPECT_EQ(traces.at(3), Lines{"Failed to get _mr value (rc=101)\n"});
}

TEST_F(CreatingAgain, ATableOfKeysAloneIsPassedOver) {
    load_port();
    const Properties props = table("/ports;name=a", "com.lib:1.0/Port");
    oru_do_properties_set_string(props.get(), "name", "a");
    add(props);
    {
        const TraceCapture traces(7);
        EXPECT_EQ(convert(1), 0);
        const auto lines = traces.at(7);
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines[lines.size() - 2], "prop_name = name\n");
        EXPECT_EQ(lines.back(), "No properties in the list, skip config op creation \n");
        EXPECT_TRUE(traces.at(3).empty());
    }
    EXPECT_EQ(text(), "[]");
    EXPECT_EQ(convert(0), 0);
    EXPECT_EQ(text(), "[(//:1:ports:com.lib:1.0/Port) { name : a }]");
}

TEST_F(CreatingAgain, SoIsATableOfNothingElse) {
    load_port();
    add(table("/ports;name=a", "com.lib:1.0/Port"));
    EXPECT_EQ(convert(1), 0);
    EXPECT_EQ(text(), "[]");
}

TEST_F(CreatingAgain, AnAttributeASecondaryKeyAndAnUnknownOneAreNoPrimaryKeys) {
    load_port();
    for (const char *name : {"mtu", "number", "unknown"}) {
        const Properties props = table("/ports;name=a", "com.lib:1.0/Port");
        oru_do_properties_set_int(props.get(), name, 1);
        oru_do_properties_list_clear(list.get());
        ops.reset(oru_do_config_ops_new());
        add(props);
        const TraceCapture traces(7);
        EXPECT_EQ(convert(1), 0);
        EXPECT_TRUE(traces.has(7, "Found non primary kep prop\n")) << name;
        EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 1) << name;
    }
}

TEST_F(CreatingAgain, KeysAreCheckedAgainstATypeThatIsThere) {
    load_port();
    add(table("/a"));
    {
        const TraceCapture traces(3);
        EXPECT_EQ(convert(1), 10000);
        EXPECT_EQ(traces.at(3), Lines{"mr_uri_typename is NULL\n"});
    }
    oru_do_properties_list_clear(list.get());
    add(table("/a", "com.lib:1.0/Lid"));
    const TraceCapture traces(3);
    EXPECT_EQ(convert(1), 10000);
    EXPECT_EQ(traces.at(3), Lines{"Unable to find mr_meta for com.lib:1.0/Lid\n"});
}

// ---- What a table has twice, or by name alone ----

TEST_F(CreatingAgain, ASecondUriFails) {
    const Properties props = table("/a/b");
    oru_do_properties_add_all(props.get(), table("/a/c").get());
    add(props);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 10000);
    EXPECT_EQ(traces.at(3), Lines{"parent_uri already set (rc=10000)\n"});
    EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 0);
}

// The root has no parent; it was seen all the same.
TEST_F(CreatingAgain, ASecondUriFailsBehindTheRootToo) {
    const Properties props = table("/");
    oru_do_properties_add_all(props.get(), table("/a/c").get());
    add(props);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 10000);
    EXPECT_EQ(traces.at(3).back(), "parent_uri already set (rc=10000)\n");
}

TEST_F(CreatingAgain, ASecondTypeFails) {
    const Properties props = table("/a/b", "p:1/B");
    oru_do_properties_add_all(props.get(), table(nullptr, "p:1/C").get());
    add(props);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 10000);
    EXPECT_EQ(traces.at(3), Lines{"mr_uri_typename already set (rc=10000)\n"});
}

TEST_F(CreatingAgain, UriAndTypeWithoutAValueAreOfNoType) {
    const Properties no_uri = table("/a");
    oru_do_properties_reset_values(no_uri.get());
    add(no_uri);
    {
        const TraceCapture traces(3);
        EXPECT_EQ(convert(), 101);
        EXPECT_EQ(traces.at(3), Lines{"Failed to get _uri value (rc=101)\n"});
    }
    const Properties no_type = table(nullptr, "p:1/B");
    oru_do_properties_reset_values(no_type.get());
    oru_do_properties_list_clear(list.get());
    add(no_type);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(), 101);
    EXPECT_EQ(traces.at(3), Lines{"Failed to get _mr value (rc=101)\n"});
}

// A string whose storage could not be had reads as empty.
TEST_F(CreatingAgain, ATypeWithoutStorageHasAnEmptyName) {
    const Properties props = table("/a/b");
    poolheap_fail_nth(2, 0);
    const oru::test::Value lost(oru_do_value_new_string("lost"));
    poolheap_fail_off();
    oru_do_properties_set_value(props.get(), "_mr", lost.get());
    add(props);
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(text(), "[(/a:1:b:) {  }]");
}

TEST_F(CreatingAgain, AnAttributeWithoutAValueIsLeftOut) {
    const Properties props(oru_do_properties_new());
    oru_do_properties_set_int(props.get(), "mtu", 9);
    oru_do_properties_reset_values(props.get());
    oru_do_properties_add_all(props.get(), table("/a/b").get());
    add(props);
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(text(), "[(/a:1:b) {  }]");
}

TEST_F(CreatingAgain, AUriThatIsAbsoluteStaysWithItsLocation) {
    add(table("//other;id=2/a/b"));
    const Uri location(oru_do_uri_new("//loc;id=1"));
    EXPECT_EQ(convert(0, location.get()), 0);
    EXPECT_EQ(text(), "[(//other;id=2/a:1:b) {  }]");
}

TEST_F(CreatingAgain, ALocationThatCannotBeHadLeavesTheUri) {
    add(table("/a/b"));
    EXPECT_EQ(convert(), 0);  // a URI keeps what was once read of it
    ops.reset(oru_do_config_ops_new());
    const Uri location(oru_do_uri_new("//loc;id=1"));
    poolheap_fail_nth(2, 0);  // the first is the new table
    EXPECT_EQ(convert(0, location.get()), 0);
    poolheap_fail_off();
    EXPECT_EQ(text(), "[(/a:1:b) {  }]");
}

// ---- Checking keys ----

TEST_F(CreatingAgain, KeysAreLookedAtUpToTheFirstThatIsNone) {
    load_port();
    const Properties props = table("/ports;name=a", "com.lib:1.0/Port");
    oru_do_properties_set_string(props.get(), "name", "a");
    oru_do_properties_set_int(props.get(), "mtu", 1);
    oru_do_properties_set_int(props.get(), "number", 1);
    add(props);
    const TraceCapture traces(7);
    EXPECT_EQ(convert(1), 0);
    Lines looked_at;
    for (const std::string &line : traces.at(7)) {
        if (line.rfind("prop_name", 0) == 0 || line.rfind("Found", 0) == 0)
            looked_at.push_back(line);
    }
    EXPECT_EQ(looked_at,
              (Lines{"prop_name = name\n", "prop_name = mtu\n", "Found non primary kep prop\n"}));
    EXPECT_TRUE(traces.at(3).empty());
    EXPECT_EQ(text(), "[(//:1:ports:com.lib:1.0/Port) { name : a, mtu : 1, number : 1 }]");
}

TEST_F(CreatingAgain, KeysAreCheckedBeforeTheUriIsAskedFor) {
    load_port();
    const Properties props = table(nullptr, "com.lib:1.0/Port");
    oru_do_properties_set_string(props.get(), "name", "a");
    add(props);
    EXPECT_EQ(convert(1), 0);
    oru_do_properties_set_int(props.get(), "mtu", 1);
    const TraceCapture traces(3);
    EXPECT_EQ(convert(1), 10000);
    EXPECT_EQ(traces.at(3), Lines{"MR URI expected to be set\n"});
}

TEST_F(CreatingAgain, AnEmptyListMakesNothing) {
    EXPECT_EQ(convert(1), 0);
    EXPECT_EQ(text(), "[]");
}

// ---- Memory ----

// The table, the type's name, the child's name, the operation, its item.
TEST_F(CreatingAgain, EachAllocationIsToldInItsWords) {
    add(table("/a/b", "B"));
    EXPECT_EQ(convert(), 0);  // a URI keeps what was once read of it
    const struct {
        int32_t code;
        Lines words;
    } cases[] = {
        {10002, {"Out of memory (rc=10002)\n"}},
        {10002, {"Out of memory (rc=10002)\n"}},
        {10002, {"Failed to create oru_do_name (rc=10002)\n"}},
        {10000, {"Failed to add reverse config op (rc=10000)\n"}},
        {10000,
         {"Failed to allocate config ops item\n", "Failed to add reverse config op (rc=10000)\n"}},
    };
    uint64_t nth = 0;
    for (const auto &step : cases) {
        ops.reset(oru_do_config_ops_new());
        const TraceCapture traces(3);
        poolheap_fail_nth(++nth, 0);
        EXPECT_EQ(convert(), step.code) << nth;
        poolheap_fail_off();
        EXPECT_EQ(traces.at(3), step.words) << nth;
        EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), 0) << nth;
    }
}

TEST_F(CreatingAgain, RequiredArgumentsAreAsserted) {
    EXPECT_ASSERTION(oru_do_properties_list_to_config_ops(nullptr, ops.get(), nullptr, 0),
                     "properties_list");
    EXPECT_ASSERTION(oru_do_properties_list_to_config_ops(list.get(), nullptr, nullptr, 0),
                     "config_ops");
}

TEST_F(CreatingAgain, EveryAllocationMayFail) {
    const Properties props = table("/a/b;n=2", "p:1/B");
    oru_do_properties_set_int(props.get(), "mtu", 9);
    add(props);
    EXPECT_EQ(convert(), 0);  // a URI keeps what was once read of it
    oru::test::sweep_oom(
        [this] {
            const Ops made(oru_do_config_ops_new());
            if (made == nullptr)
                return;
            const TraceCapture traces(3);
            const int32_t code =
                oru_do_properties_list_to_config_ops(list.get(), made.get(), nullptr, 0);
            EXPECT_EQ(oru_do_config_ops_get_len(made.get()), code == 0 ? 1 : 0);
            EXPECT_TRUE(code == 0 || !traces.at(3).empty());
        },
        {.at_least = 6});
}

}  // namespace
