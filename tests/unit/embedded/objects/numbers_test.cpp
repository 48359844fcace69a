/* How many children a reference may have, from its parent's first day on. */
#include "cabinet.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedNumbers : public Cabinet {};

TEST_F(EmbeddedNumbers, NewResourceHasTheChildrenThatItMayNotBeWithout) {
    create("/", "books", "", R"({"id":{"%uint":1}})");
    EXPECT_EQ(commit().faults, Texts{"/books;id=1 pages 132 the number of children does not fit: "
                                     "expected size(1..3), got 0"});
    create("/", "books", "", R"({"id":{"%uint":1}})");
    create("/books;id=1", "pages", "", R"({"number":{"%uint":1}})");
    EXPECT_EQ(commit().faults, Texts());
}

TEST_F(EmbeddedNumbers, ResourceMadeAnewCountsItsNewChildren) {
    create("/", "books", "", R"({"id":{"%uint":1}})");
    create("/books;id=1", "pages", "", R"({"number":{"%uint":1}})");
    ASSERT_EQ(commit().faults, Texts());
    remove("/books;id=1");
    create("/", "books", "", R"({"id":{"%uint":1}})");
    EXPECT_EQ(commit().faults, Texts{"/books;id=1 pages 132 the number of children does not fit: "
                                     "expected size(1..3), got 0"});
    remove("/books;id=1/pages;number=1");
    EXPECT_EQ(commit().code, ORU_RC_COLL_SIZE_CONSTRAINT);
    remove("/books;id=1");
    EXPECT_EQ(commit().faults, Texts());
}

TEST_F(EmbeddedNumbers, EachReferenceIsToldOnce) {
    create("/", "books", "", R"({"id":{"%uint":1}})");
    for (const char *const number : {"1", "2", "3", "4"})
        create("/books;id=1", "pages", "", R"({"number":{"%uint":)" + std::string(number) + "}}");
    EXPECT_EQ(commit().faults, Texts{"/books;id=1 pages 132 the number of children does not fit: "
                                     "expected size(1..3), got 4"});
}

}  // namespace
}  // namespace embedded
