#include "network.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedChange : public Network {
  protected:
    void SetUp() override {
        Network::SetUp();
        load();
    }
};

TEST_F(EmbeddedChange, CreateSetAndDelete) {
    create("/", "links", "com.example.network:1.0/Link",
           R"({"id":{"%string":"L99"},"speed":{"%ulong":10}})");
    Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_OK);
    EXPECT_EQ(answer.faults, Texts());
    EXPECT_GT(answer.revision, 0);
    EXPECT_EQ(get("/links;id=L99", {"_mr", "id", "speed", "cost"}),
              "_mr=com.example.network:1.0/Link id=L99 speed=10 cost=(100)");

    set("/links;id=L99", R"({"speed":{"%ulong":5000000000},"cost":{"%uint":7}})");
    EXPECT_EQ(commit().code, ORU_OK);
    EXPECT_EQ(get("/links;id=L99", {"speed", "cost"}), "speed=5000000000 cost=7");
    set("/links;id=L99", R"({"cost":{"%null":null}})");
    EXPECT_EQ(commit().code, ORU_OK);
    EXPECT_EQ(get("/links;id=L99", {"cost"}), "cost=(10)");

    remove("/links;id=L99");
    EXPECT_EQ(commit().code, ORU_OK);
    EXPECT_EQ(get("/links;id=L99", {"id"}), "code 102");
}

TEST_F(EmbeddedChange, TypeMayBeLeftToTheReference) {
    create("/", "links", "", R"({"id":{"%string":"L99"}})");
    EXPECT_EQ(commit().code, ORU_OK);
    EXPECT_EQ(get("/links;id=L99", {"_mr"}), "_mr=com.example.network:1.0/Link");
}

TEST_F(EmbeddedChange, NothingIsWrittenWhenAnythingIsWrong) {
    create("/", "links", "", R"({"id":{"%string":"L98"}})");
    create("/", "links", "", R"({"id":{"%string":"L1"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_RESOURCE_EXISTS);
    EXPECT_EQ(answer.revision, 0);
    EXPECT_EQ(answer.faults, Texts{"/links;id=L1: the resource exists already"});
    EXPECT_EQ(get("/links;id=L98", {"id"}), "code 102");
}

TEST_F(EmbeddedChange, AllFaultsComeBackAtOnce) {
    set("/chassis;id=1/slots;number=1/ports;name=1%2F1",
        R"({"mtu":{"%ushort":10},"adminState":{"%enumeration":"sideways"},"nothing":{"%int":1}})");
    set("/links;id=L1", R"({"speed":{"%string":"fast"}})");
    remove("/chassis;id=1");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_NO_SUCH_ATTRIBUTE);
    const std::string port = "/chassis;id=1/slots;number=1/ports;name=1%2F1";
    EXPECT_EQ(answer.faults,
              (Texts{port + " nothing 108 no such attribute",
                     port + " mtu 114 Property values constraint violation: expected "
                            "values(68..9216)default(1500), got 10",
                     port + " adminState 117 Property enum values violation: expected down, up, "
                            "testing, got sideways",
                     "/chassis;id=1: resources of the type com.example.network:1.0/Chassis cannot "
                     "be deleted",
                     "/links;id=L1 speed 118 Property type mismatch violation: expected "
                     "unsignedLong, got fast"}));
}

TEST_F(EmbeddedChange, DryRunWritesNothing) {
    set("/links;id=L1", R"({"cost":{"%uint":3}})");
    const Answer answer = commit(ORU_EMBEDDED_DRY_RUN);
    EXPECT_EQ(answer.code, ORU_OK);
    EXPECT_EQ(answer.revision, 0);
    EXPECT_NE(get("/links;id=L1", {"cost"}), "cost=3");
}

TEST_F(EmbeddedChange, DeleteTakesTheChildrenAlong) {
    remove("/routers;name=lab");
    const Answer answer = commit();
    EXPECT_EQ(answer.faults, Texts());
    EXPECT_EQ(query("/routers;name=lab?:com.example.network.routing:1.0/Interface", {"_uri"}),
              Texts());
}

TEST_F(EmbeddedChange, WhatOthersReferToStays) {
    remove("/links;id=L1");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_CONFIG_VALIDATION);
    const std::string words = ": another resource refers to it: ";
    EXPECT_EQ(answer.faults,
              (Texts{"/links;id=L1" + words + "/chassis;id=1/slots;number=1/ports;name=1%2F1",
                     "/links;id=L1" + words + "/chassis;id=2/slots;number=1/ports;name=1%2F1"}));
}

TEST_F(EmbeddedChange, ReferencesLeadToResourcesOfTheirType) {
    set("/links;id=L1", R"({"from":{"%mr_uri":"/chassis;id=9/slots;number=1/ports;name=x"}})");
    set("/links;id=L2", R"({"from":{"%mr_uri":"/chassis;id=1"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.faults,
              (Texts{"/links;id=L1 from 102 a reference leads to nothing: expected "
                     "com.example.network:1.0/Port, got "
                     "/chassis;id=9/slots;number=1/ports;name=x",
                     "/links;id=L2 from 118 a reference leads to a resource of another type: "
                     "expected com.example.network:1.0/Port, got /chassis;id=1 of the type "
                     "com.example.network:1.0/Chassis"}));
}

TEST_F(EmbeddedChange, SecondaryKeysAreUnique) {
    create("/", "vlans", "", R"({"id":{"%ushort":77},"name":{"%string":"staff"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_RESOURCE_EXISTS);
    EXPECT_EQ(answer.faults, Texts{"/vlans;id=77 name 105 another resource has this secondary "
                                   "key: got staff"});
}

TEST_F(EmbeddedChange, KeysDoNotChange) {
    set("/vlans;id=10", R"({"id":{"%ushort":10}})");
    EXPECT_EQ(commit().code, ORU_OK);
    set("/vlans;id=10", R"({"id":{"%ushort":11}})");
    EXPECT_EQ(commit().faults,
              Texts{"/vlans;id=10 id 111 keys cannot be changed: expected 10, got 11"});
}

TEST_F(EmbeddedChange, SecondCommitOfOneNameDoesNothing) {
    set("/links;id=L1", R"({"cost":{"%uint":3}})");
    const Answer first = commit(0, "request 1");
    set("/links;id=L1", R"({"cost":{"%uint":4}})");
    const Answer second = commit(0, "request 1");
    EXPECT_EQ(second.code, ORU_OK);
    EXPECT_EQ(second.revision, first.revision);
    EXPECT_EQ(get("/links;id=L1", {"cost"}), "cost=3");
}

}  // namespace
}  // namespace embedded
