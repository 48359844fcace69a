#include "support.h"

namespace oru::threads::test {
namespace {

TEST(ThreadAttributes, NullGives22) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("kept");
    EXPECT_EQ(oru_thread_attr_init(nullptr), 22);
    EXPECT_EQ(oru_thread_attr_destroy(nullptr), 22);
    EXPECT_EQ(oru_thread_attr_setdetachstate(nullptr, 1), 22);
    EXPECT_EQ(oru_thread_attr_setname(nullptr, "x"), 22);
    EXPECT_EQ(oru_thread_attr_setname(&attributes, nullptr), 22);
    EXPECT_STREQ(attributes.name, "kept");
}

TEST(ThreadAttributes, InitialisesStorageOfAnyContentsWithoutName) {
    auto attributes = garbage<oru_thread_attr_t>();
    EXPECT_EQ(oru_thread_attr_init(&attributes), 0);
    EXPECT_STREQ(attributes.name, "");
    EXPECT_EQ(oru_thread_attr_destroy(&attributes), 0);
}

TEST(ThreadAttributes, NameIsCutAt31BytesAndReplacedWhole) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_thread_attr_setname(&attributes, kLongName), 0);
    EXPECT_STREQ(attributes.name, kLongNameCut);
    EXPECT_EQ(oru_thread_attr_setname(&attributes, "b"), 0);
    const char expected[32] = "b";
    EXPECT_EQ(std::memcmp(attributes.name, expected, sizeof expected), 0);
}

TEST(ThreadAttributes, DestroyedOnesGive22UntilInitialisedAgain) {
    oru_thread_attr_t attributes = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_thread_attr_destroy(&attributes), 0);
    EXPECT_EQ(oru_thread_attr_destroy(&attributes), 22);
    EXPECT_EQ(oru_thread_attr_setdetachstate(&attributes, 1), 22);
    EXPECT_EQ(oru_thread_attr_setname(&attributes, "x"), 22);
    EXPECT_EQ(oru_thread_attr_init(&attributes), 0);
    EXPECT_EQ(oru_thread_attr_setname(&attributes, "x"), 0);
}

}  // namespace
}  // namespace oru::threads::test
