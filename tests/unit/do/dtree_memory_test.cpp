// Data trees while memory runs out, and their record as it lies in memory.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/do/dtree_support.h"

namespace {

using oru::test::Dtree;

class DtreeMemory : public Dtree {
  protected:
    DtreeMemory() {
        set_uri(root, "/a");
        set(root, "x", 1);
        error = oru_do_error_new(5, "e");
        oru_do_dtree_set_error(root, error);
    }
    static constexpr const char *kLongName =
        "a name of more characters than fit into the record of any name, so that it needs storage";
};

TEST_F(DtreeMemory, NodesAreWholeOrNone) {
    ORUDoName *name = oru_do_name_new("n");
    oru::test::sweep_oom([name] {
        ORUDoDtree *node = oru_do_dtree_new(name);
        EXPECT_EQ(node == nullptr, oru::test::oom_hit());
        oru_do_dtree_deref(node);
    });
    oru::test::sweep_oom(
        [] {
            ORUDoDtree *node = oru_do_dtree_new_str(kLongName);
            EXPECT_EQ(node == nullptr, oru::test::oom_hit());
            oru_do_dtree_deref(node);
        },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom([this, name] {
        ORUDoDtree *child = oru_do_dtree_add_child(root, name);
        EXPECT_EQ(child == nullptr, oru::test::oom_hit());
        EXPECT_EQ(oru_do_dtree_get_child_count(root), child != nullptr ? 1 : 0);
        oru_do_dtree_remove_children(root);
    });
    oru_do_name_deref(name);
}

TEST_F(DtreeMemory, AUriWithoutAValueLeavesNone) {
    ORUDoUri *uri = oru_do_uri_new("/b");
    oru::test::sweep_oom([uri] {
        ORUDoDtree *node = oru_do_dtree_new_str("n");
        if (node == nullptr)
            return;
        oru_do_dtree_set_mr_uri(node, uri);
        EXPECT_EQ(oru_do_dtree_get_mr_uri(node), oru::test::oom_hit() ? nullptr : uri);
        oru_do_dtree_deref(node);
    });
    poolheap_fail_nth(1, 1);
    oru_do_dtree_set_mr_uri(root, uri);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_dtree_get_mr_uri(root), nullptr);
    oru_do_uri_deref(uri);
}

TEST_F(DtreeMemory, AValueIsSetOrNothingHappens) {
    ORUDoValue *value = oru_do_value_new_int(7);
    oru::test::sweep_oom(
        [value] {
            ORUDoDtree *node = oru_do_dtree_new_str("n");
            if (node == nullptr)
                return;
            oru_do_dtree_set_value(node, kLongName, value);
            EXPECT_EQ(oru_do_dtree_get_value(node, kLongName),
                      oru::test::oom_hit() ? nullptr : value);
            oru_do_dtree_deref(node);
        },
        {.promised_deaths = {}, .at_least = 4});
    oru_do_value_deref(value);
}

// With the value, or with an error of its own that belongs to the caller.
TEST_F(DtreeMemory, LookupsFindOrTell) {
    const auto expect_either = [](ORUDoError *told, bool found) {
        EXPECT_EQ(found, !oru::test::oom_hit());
        if (told != nullptr) {
            EXPECT_EQ(oru_do_error_get_code(told), 10002);
            EXPECT_FALSE(found);
        }
        oru_do_error_deref(told);
    };
    oru::test::sweep_oom(
        [&] {
            ORUDoError *told = nullptr;
            expect_either(told, oru_do_dtree_get_node_by_path(root, "./.", &told) == root);
        },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [&] {
            ORUDoError *told = nullptr;
            ORUDoValue *found = oru_do_dtree_get_value_by_path(root, "./x", nullptr, &told);
            expect_either(told, found != nullptr);
        },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [&] {
            ORUDoError *told = nullptr;
            ORUDoValue *found = oru_do_dtree_get_value_by_uri(root, "/a#./x", nullptr, &told);
            expect_either(told, found != nullptr);
        },
        {.promised_deaths = {}, .at_least = 4});
}

// The copy of the query, the URI (its record and its text), the copy of the path, its segments.
TEST_F(DtreeMemory, QueriesSayWhatFailed) {
    const char *const kWords[] = {"failed to dup uri", "failed to dup uri", "failed to dup uri",
                                  "failed to dup path", "failed to alloc segments"};
    uint64_t nth = 0;
    for (const char *words : kWords) {
        ORUDoError *told = nullptr;
        poolheap_fail_nth(++nth, 0);
        EXPECT_EQ(oru_do_dtree_get_value_by_uri(root, "/a#x", nullptr, &told), nullptr);
        poolheap_fail_off();
        ASSERT_NE(told, nullptr);
        EXPECT_EQ(oru_do_error_get_code(told), 10002);
        EXPECT_STREQ(oru_do_error_get_msg(told), words);
        oru_do_error_deref(told);
    }
}

TEST_F(DtreeMemory, ErrorsThatFindNoMemoryAreNotCounted) {
    oru::test::sweep_oom([this] {
        ORUDoErrorList *list = oru_do_error_list_new();
        if (list == nullptr)
            return;
        const int32_t added = oru_do_dtree_get_errors(root, list);
        EXPECT_EQ(added, oru::test::oom_hit() ? 0 : 1);
        oru_do_error_list_deref(list);
    });
}

// ---- The record ----

struct DtreeImage {
    ORUDoName *name;
    ORUDoValue *mr_uri;
    ORUDoProperties *properties;
    ORUDoError *error;
    ORUDoDtree *next;
    ORUDoDtree *children;
    ORUDoDtree *parent;
    int32_t hidden;
    uint32_t ref_count;
};

TEST_F(DtreeMemory, TheRecordHasItsFieldsInOrder) {
    ORUDoDtree *a = add(root, "a");
    ORUDoDtree *b = add(root, "b");
    oru_do_dtree_hide_node(a, 9);
    const auto &image = *reinterpret_cast<DtreeImage *>(root);
    EXPECT_EQ(image.name, oru_do_dtree_get_name(root));
    EXPECT_EQ(image.mr_uri, oru_do_dtree_get_value(root, "_uri"));
    EXPECT_EQ(image.properties, oru_do_dtree_get_properties(root));
    EXPECT_EQ(image.error, error);
    EXPECT_EQ(image.next, nullptr);
    EXPECT_EQ(image.children, a);
    EXPECT_EQ(image.parent, nullptr);
    EXPECT_EQ(image.hidden, 0);
    EXPECT_EQ(image.ref_count, 1u);
    const auto &child = *reinterpret_cast<DtreeImage *>(a);
    EXPECT_EQ(child.mr_uri, nullptr);
    EXPECT_EQ(child.properties, nullptr);
    EXPECT_EQ(child.error, nullptr);
    EXPECT_EQ(child.next, b);
    EXPECT_EQ(child.children, nullptr);
    EXPECT_EQ(child.parent, root);
    EXPECT_EQ(child.hidden, 9);
    EXPECT_EQ(child.ref_count, 1u);
}

TEST_F(DtreeMemory, TheLastReferenceReleasesItsPartsInOrder) {
    ORUDoDtree *a = oru_do_dtree_ref(add(root, "a"));
    ORUDoDtree *b = oru_do_dtree_ref(add(root, "b"));
    ORUDoName *name = oru_do_name_ref(oru_do_dtree_get_name(root));
    ORUDoValue *uri = oru_do_value_ref(oru_do_dtree_get_value(root, "_uri"));
    ORUDoProperties *props = oru_do_properties_ref(oru_do_dtree_get_properties(root));
    const auto words = [](const char *type, void *object, const char *count) {
        char text[100];
        std::snprintf(text, sizeof text, "oru deref %s %p %s", type, object, count);
        return std::string(text);
    };
    const std::vector<std::string> expected = {
        words("oru_do_dtree", root, "1"),  words("oru_do_name", name, "2"),
        words("oru_do_value", uri, "2"),   words("oru_do_properties", props, "2"),
        words("oru_do_error", error, "2"), words("oru_do_dtree", a, "2"),
        words("oru_do_dtree", b, "2")};
    {
        const oru::test::TraceCapture traces(8);
        oru_do_dtree_deref(std::exchange(root, nullptr));
        EXPECT_EQ(traces.at(8), expected);
    }
    EXPECT_EQ(name_of(a), "a");
    oru_do_properties_deref(props);
    oru_do_value_deref(uri);
    oru_do_name_deref(name);
    oru_do_dtree_deref(a);
    oru_do_dtree_deref(b);
}

}  // namespace
