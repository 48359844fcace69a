/* Sizes that nobody means well with. */
#include <numeric>

#include "cabinet.h"
#include "object/indexes.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedHostile : public Cabinet {
  protected:
    static std::string folder(const std::string &name) {
        return R"({"name":{"%string":")" + name + R"("}})";
    }

    void create_folders(int count) {
        for (int i = 0; i < count; i++)
            create("/", "folders", "", folder("f" + std::to_string(i)));
    }
};

// the location is one of ten segments; the library ends the process at an eleventh
TEST_F(EmbeddedHostile, AddressesHaveTenSegments) {
    std::string address;
    for (int depth = 1; depth <= 9; depth++) {
        create(address.empty() ? "/" : address, "folders", "", folder("f"));
        ASSERT_EQ(commit().faults, Texts()) << depth;
        address += "/folders;name=f";
    }
    EXPECT_EQ(get(address, {"name"}), "name=f");
    create(address, "folders", "", folder("g"));
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_INVALID_URI);
    EXPECT_EQ(answer.faults, Texts{address + "/folders: the keys make no address"});
    EXPECT_EQ(get(address + "/folders;name=g", {"name"}), "code 102");
    EXPECT_EQ(query("//?:com.example.cabinet:1.0/Folder", {"_uri"}).size(), 9U);
    remove("/folders;name=f");
    EXPECT_EQ(commit().faults, Texts());
}

TEST_F(EmbeddedHostile, KeysAreAsLongAsTheStoreTakes) {
    // 'r', the depth, "folders" and a zero, 's' and 4 bytes of length are in front
    const std::string longest(4096 - 15, 'x');
    create("/", "folders", "", folder(longest));
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/folders;name=" + longest, {"name"}), "name=" + longest);
    create("/", "folders", "", folder(longest + "x"));
    EXPECT_EQ(commit().faults, Texts{"/folders: the keys are too long for the store"});
    EXPECT_EQ(get("/folders;name=" + std::string(1 << 20, 'y'), {"name"}), "code 102");
}

TEST_F(EmbeddedHostile, ReferencesThatAreNoAddressesLeadToNothing) {
    create("/", "folders", "", R"({"name":{"%string":"a"},"twin":{"%string":"//bad//x"}})");
    create("/", "folders", "",
           R"({"name":{"%string":"b"},"twin":{"%string":"/a/b/c/d/e/f/g/h/i/j/k"}})");
    create("/", "folders", "", R"({"name":{"%string":"c"},"twin":{"%string":""}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_NO_SUCH_RESOURCE);
    EXPECT_EQ(answer.faults.size(), 3U);
}

// keys and addresses of a damaged database need not fit together
TEST_F(EmbeddedHostile, DamagedKeysAreFaults) {
    EXPECT_THROW(collection_of({std::string("r\1", 2), "/folders;name=a"}), StoreFault);
    EXPECT_THROW(collection_of({std::string("r\1folders\0s\0\0", 13), "/folders;name=a"}),
                 StoreFault);
    EXPECT_THROW(source_of_link("l\1"), std::exception);
    EXPECT_THROW(source_of_link(std::string("l\0\0\0\x9r", 6)), std::exception);
}

TEST_F(EmbeddedHostile, LongValuesAreCutBetweenCharacters) {
    std::string text = "x";
    for (int i = 0; i < 60; i++)
        text += "\u00e9";
    set("/", R"({"weight":{"%string":")" + text + R"("}})");
    const Answer answer = commit();
    ASSERT_EQ(answer.faults.size(), 1U);
    EXPECT_TRUE(answer.faults[0].ends_with("\u00e9...")) << answer.faults[0];
}

TEST_F(EmbeddedHostile, ManyFaultsAreAllTold) {
    constexpr int kMany = 20000;
    for (int i = 0; i < kMany; i++)
        remove("/folders;name=f" + std::to_string(i));
    EXPECT_EQ(commit().faults.size(), size_t{kMany});
}

TEST_F(EmbeddedHostile, WhereMayNestAndBeLong) {
    create_folders(20);
    ASSERT_EQ(commit().faults, Texts());
    std::string deep = R"({"%sequence":{"name":{"%string":"f7"}}})";
    for (int i = 0; i < 100; i++)
        deep =
            R"({"%sequence":{" )" + std::string(i % 2 == 0 ? "AND" : "OR") + R"( ":)" + deep + "}}";
    EXPECT_EQ(query("/?folders", {"name"}, R"({"%nvlist":{" OR ":)" + deep + "}}"), Texts{"f7"});

    std::string any = R"({"%sequence":{"name":{"%string":"f7"})";
    for (int i = 0; i < 2000; i++)
        any += R"(,"name":{"%string":"x)" + std::to_string(i) + R"("})";
    EXPECT_EQ(query("/?folders", {"name"}, R"({"%nvlist":{" OR ":)" + any + "}}}}"), Texts{"f7"});
}

TEST_F(EmbeddedHostile, OrdersMayBeLong) {
    create_folders(12);
    ASSERT_EQ(commit().faults, Texts());
    Texts order;
    for (int i = 0; i < 3000; i++)
        order.insert(order.end(), {"note desc", "tag", "name desc"});
    const Texts rows = query("/?folders", {"name"}, {}, order, 5);
    ASSERT_EQ(rows.size(), 12U);
    EXPECT_EQ(rows.front(), "f11");
    EXPECT_EQ(rows.back(), "f0");
}

TEST_F(EmbeddedHostile, ArraysMayBeLarge) {
    std::string numbers = "0";
    for (int i = 1; i < 100000; i++)
        numbers += "," + std::to_string(i);
    set("/", R"({"numbers":{"%long":[)" + numbers + "]}}");
    ASSERT_EQ(commit().faults, Texts());
    const std::string read = get("/", {"numbers"});
    EXPECT_NE(read.find("99999"), std::string::npos);
    EXPECT_EQ(std::count(read.begin(), read.end(), ','), 99999);
}

}  // namespace
}  // namespace embedded
