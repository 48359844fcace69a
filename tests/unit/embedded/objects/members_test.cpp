/* Types and constraints of what is inside of complex values. */
#include "cabinet.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedMembers : public Cabinet {
  protected:
    Texts faults_of(const std::string &props) {
        set("/", props);
        return commit().faults;
    }

    static std::string hop(const std::string &share, const std::string &name,
                           const std::string &via) {
        return R"({"share":)" + share + R"(,"name":")" + name + R"(","via":{"%choice":)" + via +
               "}}";
    }
};

TEST_F(EmbeddedMembers, ConstraintsOfDerivedTypesHold) {
    EXPECT_EQ(
        faults_of(R"({"hop":{"%sequence":)" + hop("101", "overlong1", R"({"steps":1})") + "}}"),
        (Texts{" hop 114 the member share: Property values constraint violation: expected "
               "values(0..100), got 101",
               " hop 115 the member name: Property string length constraint violation: "
               "expected strlen(1..8), got overlong1"}));
    EXPECT_EQ(get("/", {"hop"}), "hop=-");
    EXPECT_EQ(
        faults_of(R"({"hop":{"%sequence":)" + hop("100", "not long", R"({"steps":1})") + "}}"),
        Texts());
}

TEST_F(EmbeddedMembers, ConstraintsOfMembersHoldAtAnyDepth) {
    EXPECT_EQ(faults_of(R"({"hop":{"%sequence":)" + hop("1", "a", R"({"steps":10})") + "}}"),
              Texts{" hop 114 the member via.steps: Property values constraint violation: expected "
                    "values(1..9), got 10"});
    EXPECT_EQ(faults_of(R"({"hop":{"%sequence":)" + hop("1", "a", R"({"colour":"blue"})") + "}}"),
              Texts{" hop 117 the member via.colour has no such label: expected red, green, got "
                    "blue"});
    EXPECT_EQ(
        faults_of(R"({"hop":{"%sequence":)" + hop("1", "a", R"({"address":"10.0.0.1"})") + "}}"),
        Texts{" hop 118 the member via.address does not fit its type: expected ipAddress, "
              "got 10.0.0.1"});
}

TEST_F(EmbeddedMembers, ElementsOfArraysAreToldByTheirPlace) {
    const std::string good = hop("1", "a", R"({"steps":1})");
    EXPECT_EQ(faults_of(R"({"hops":{"%sequence":[)" + good + "," +
                        hop("200", "b", R"({"steps":0})") + "]}}"),
              (Texts{" hops 114 the member [1].share: Property values constraint violation: "
                     "expected values(0..100), got 200",
                     " hops 114 the member [1].via.steps: Property values constraint violation: "
                     "expected values(1..9), got 0"}));
    EXPECT_EQ(faults_of(R"({"colours":{"%enumeration":["red","blue"]}})"),
              Texts{" colours 117 the element [1] has no such label: expected red, green, got "
                    "blue"});
    EXPECT_EQ(faults_of(R"({"hops":{"%sequence":[)" + good + "," + good +
                        R"(]},"colours":{"%enumeration":["green","red"]}})"),
              Texts());
}

TEST_F(EmbeddedMembers, InnerValuesHaveTheShapeOfTheirTypes) {
    EXPECT_EQ(
        faults_of(R"({"route":{"%sequence":{"first":{"%sequence":{"share":1,"via":{"%choice":)"
                  R"({"steps":1}}}},"pin":"1234"}}})"),
        Texts{" route 130 the member first has other members than its type: expected share, "
              "name, via, got {share : 1, via : {steps : 1}}"});
    EXPECT_EQ(
        faults_of(R"({"hop":{"%sequence":)" + hop("1", "a", R"({"steps":1,"colour":"red"})") + "}}")
            .size(),
        1U);
}

TEST_F(EmbeddedMembers, SecretsInsideAreCheckedAsTheyAreGivenAndNeverShown) {
    const std::string first = hop("1", "a", R"({"steps":1})");
    EXPECT_EQ(faults_of(R"({"route":{"%sequence":{"first":{"%sequence":)" + first +
                        R"(},"pin":"123456789"}}})"),
              Texts{" route 115 the member pin: Property string length constraint violation: "
                    "expected strlen(4..8), got <removed>"});
    EXPECT_EQ(faults_of(R"({"route":{"%sequence":{"first":{"%sequence":)" + first +
                        R"(},"pin":"1234"}}})"),
              Texts());
    // the hash that is kept is longer than the type allows
    EXPECT_EQ(faults_of(R"({"note":{"%string":"x"}})"), Texts());
}

}  // namespace
}  // namespace embedded
