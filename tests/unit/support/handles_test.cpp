// Owners of counted objects, walks of collections, and texts.
#include "support/handles.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/support/oom.h"

namespace {

using namespace handles;

std::string text_of(const Name &name) {
    return oru_do_name_get_strname(name.get());
}

TEST(Handles, AreEmptyAtFirst) {
    const Name none;
    EXPECT_FALSE(none);
    EXPECT_TRUE(none == nullptr);
    EXPECT_EQ(none.get(), nullptr);
    const Name copy = none;
    EXPECT_TRUE(copy == nullptr);
}

TEST(Handles, CopiesShareTheObject) {
    Name one(oru_do_name_new("one"));
    EXPECT_TRUE(one != nullptr);
    Name two = one;
    EXPECT_EQ(one.get(), two.get());
    one = Name();
    EXPECT_EQ(text_of(two), "one");
    const Name &same = two;
    two = same;
    EXPECT_EQ(text_of(two), "one");
}

TEST(Handles, MovesLeaveNothingBehind) {
    Name one(oru_do_name_new("one"));
    ORUDoName *const object = one.get();
    const Name two = std::move(one);
    EXPECT_EQ(two.get(), object);
    EXPECT_EQ(one.get(), nullptr);
}

TEST(Handles, ShareLeavesTheReferenceOfTheOther) {
    ORUDoName *const lent = oru_do_name_new("lent");
    EXPECT_EQ(Name::share(lent).get(), lent);
    EXPECT_STREQ(oru_do_name_get_strname(lent), "lent");
    oru_do_name_deref(lent);
}

TEST(Handles, ResetAndReleaseHandOver) {
    Name one(oru_do_name_new("one"));
    one.reset(oru_do_name_new("two"));
    EXPECT_EQ(text_of(one), "two");
    ORUDoName *const object = one.release();
    EXPECT_FALSE(one);
    one.reset();
    EXPECT_STREQ(oru_do_name_get_strname(object), "two");
    oru_do_name_deref(object);
}

TEST(Handles, MadeObjectsAreThere) {
    EXPECT_EQ(text_of(made<Name>(oru_do_name_new("one"))), "one");
    EXPECT_THROW(made<Name>(static_cast<ORUDoName *>(nullptr)), std::bad_alloc);
}

TEST(Handles, WhatIsNotCountedIsReleasedByItsOwnCall) {
    const std::unique_ptr<ORUDtlNode, Release<oru_dtl_tree_delete>> tree(oru_dtl_tree_new());
    EXPECT_NE(tree, nullptr);
}

TEST(Handles, WalksGiveEveryElementInOrder) {
    const NameList list(oru_do_nlist_new());
    for (const char *name : {"a", "b", "a"})
        oru_do_nlist_add_string(list.get(), name);
    std::vector<std::string> names;
    for (EachName each(list.get()); ORUDoName *name = each();)
        names.emplace_back(oru_do_name_get_strname(name));
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "a"}));
}

TEST(Handles, WalksOfNothingEndAtOnce) {
    EachName nowhere(nullptr);
    EXPECT_EQ(nowhere(), nullptr);
    EXPECT_EQ(nowhere(), nullptr);
    const NameList list(oru_do_nlist_new());
    EachName nobody(list.get());
    EXPECT_EQ(nobody(), nullptr);
}

TEST(Handles, WrittenTextIsWhatWentIntoTheBuffer) {
    EXPECT_EQ(written([](ORUDoStrbuf *buf) { oru_do_strbuf_add_string(buf, "text"); }), "text");
    EXPECT_EQ(written([](ORUDoStrbuf *) {}), "");
}

TEST(Handles, WrittenTextIsWholeOrThereIsNone) {
    oru::test::sweep_oom([] {
        try {
            const std::string text = written([](ORUDoStrbuf *buf) {
                for (int i = 0; i < 1000; i++)
                    oru_do_strbuf_add_string(buf, "0123456789");
            });
            EXPECT_EQ(text.size(), 10000U);
        } catch (const std::bad_alloc &) {
            EXPECT_TRUE(oru::test::oom_hit());
        }
    });
}

TEST(Handles, NullTextsAreEmptyViews) {
    EXPECT_EQ(view(nullptr), "");
    EXPECT_EQ(view("text"), "text");
}

}  // namespace
