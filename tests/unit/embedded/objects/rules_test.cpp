/* What a change has to fulfil, rule by rule. */
#include "network.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedRules : public Network {
  protected:
    void SetUp() override {
        Network::SetUp();
        load();
    }
};

TEST_F(EmbeddedRules, OperationsNameWhatTheModelHas) {
    set("/nothing;id=1", R"({"id":{"%uint":1}})");
    remove("/chassis;id=99");
    create("/chassis;id=1", "wheels", "", R"({"id":{"%uint":1}})");
    create("/chassis;id=99", "slots", "", R"({"number":{"%ushort":1}})");
    create("/", "links", "com.example.network:1.0/Vlan", R"({"id":{"%string":"L50"}})");
    create("/", "links", "com.example.network:1.0/Nobody", R"({"id":{"%string":"L50"}})");
    EXPECT_EQ(commit().faults,
              (Texts{"/nothing;id=1: the model has no such address",
                     "/chassis;id=99: there is no such resource",
                     "/chassis;id=99: there is no such resource",
                     "/chassis;id=1: the type com.example.network:1.0/Chassis has no children "
                     "\"wheels\"",
                     "/links: no type of resource for this reference: expected "
                     "com.example.network:1.0/Link, got com.example.network:1.0/Vlan",
                     "/links: no type of resource for this reference: expected "
                     "com.example.network:1.0/Link, got com.example.network:1.0/Nobody"}));
}

TEST_F(EmbeddedRules, MembersOfComplexValuesHaveTheirTypes) {
    set("/", R"({"position":{"%sequence":{"row":2000,"rack":3,"side":"left"}}})");
    EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults,
              (Texts{" position 118 the member row does not fit its type: expected unsignedByte, "
                     "got 2000",
                     " position 117 the member side has no such label: expected front, rear, got "
                     "left"}));
}

TEST_F(EmbeddedRules, AddressesInAttributesCanBeFollowed) {
    const std::string deep = "/a/a/a/a/a/a/a/a/a";
    const std::string words = "/alarms;id=1 resource 118 no address of a resource: expected mrURI";
    for (const std::string &address : {std::string(), deep + "/a", "/" + std::string(64, 'a')}) {
        set("/alarms;id=1", R"({"resource":{"%mr_uri":")" + address + R"("}})");
        EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults,
                  Texts{words + (address.empty() ? "" : ", got " + address)});
    }
    for (const std::string &address : {deep, std::string("//locations;locationId=other/a")}) {
        set("/alarms;id=1", R"({"resource":{"%mr_uri":")" + address + R"("}})");
        EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
        EXPECT_EQ(get("/alarms;id=1", {"resource"}), "resource=" + address);
    }
}

TEST_F(EmbeddedRules, EmptyAddressesThatNobodyFollowsAreKept) {
    set("/logging/targets;name=messages", R"({"path":{"%any_uri":""}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/logging/targets;name=messages", {"path"}), "path=");
}

TEST_F(EmbeddedRules, UnknownOperationsAreRefused) {
    add_operation(9, "/links;id=L1");
    EXPECT_EQ(commit().faults, Texts{"/links;id=L1: unknown operation: expected create, set or "
                                     "delete, got 9"});
}

TEST_F(EmbeddedRules, KeysAreComplete) {
    create("/routers;name=lab/protocols;name=static", "routes", "",
           R"({"destination":{"%ip_address":"0A000000"}})");
    create("/", "links", "", R"({"speed":{"%ulong":1}})");
    create("/", "vlans", "", R"({"id":{"%string":"many"},"name":{"%string":"x"}})");
    EXPECT_EQ(commit().faults,
              (Texts{"/routers;name=lab/protocols;name=static/routes metric 106 a key is missing",
                     "/links id 106 a key is missing",
                     "/vlans id 118 a key of another type: expected unsignedShort, got many"}));
}

TEST_F(EmbeddedRules, AccessIsThatOfTheType) {
    create("/", "chassis", "", R"({"id":{"%uint":9}})");
    create("/chassis;id=1", "fans", "", R"({"id":{"%uint":9}})");
    set("/chassis;id=1/fans;id=1", R"({"rpm":{"%uint":9}})");
    set("/chassis;id=1", R"({"serial":{"%string":"x"}})");
    const std::string type = "resources of the type com.example.network:1.0/";
    EXPECT_EQ(commit().faults,
              (Texts{"/chassis;id=9: " + type + "Chassis cannot be created",
                     "/chassis;id=1/fans;id=9: " + type + "Fan cannot be created",
                     "/chassis;id=1/fans;id=1: " + type + "Fan cannot be changed",
                     "/chassis;id=1 serial 111 operational data is not configured"}));
}

TEST_F(EmbeddedRules, SystemMayDoWhatClientsMayNot) {
    create("/", "chassis", "", R"({"id":{"%uint":9},"serial":{"%string":"x"}})");
    create("/chassis;id=9", "fans", "", R"({"id":{"%uint":1},"rpm":{"%uint":9}})");
    EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
    EXPECT_EQ(get("/chassis;id=9/fans;id=1", {"rpm"}), "rpm=9");
    remove("/chassis;id=9");
    EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
    EXPECT_EQ(get("/chassis;id=9/fans;id=1", {"rpm"}), "code 102");
}

TEST_F(EmbeddedRules, AbstractTypesHaveNoResources) {
    create("/logging", "targets", "", R"({"name":{"%string":"t"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_LIB_MR_NOT_IMPLEMENTED);
    EXPECT_EQ(answer.faults, Texts{"/logging/targets: the type is abstract: expected "
                                   "com.example.network.management:1.0/ConsoleLog, "
                                   "com.example.network.management:1.0/FileLog, "
                                   "com.example.network.management:1.0/HostLog, got "
                                   "com.example.network.management.lib:1.0/LogTarget"});
}

TEST_F(EmbeddedRules, MandatoryAttributesHaveValues) {
    create("/routers;name=lab/protocols;name=bgp", "neighbors", "",
           R"({"address":{"%ip_address":"0A000001"}})");
    create("/routers;name=lab", "protocols", "com.example.network.routing:1.0/Bgp",
           R"({"name":{"%string":"bgp"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_NO_SUCH_RESOURCE);
    create("/routers;name=lab", "protocols", "com.example.network.routing:1.0/Bgp",
           R"({"name":{"%string":"bgp"}})");
    EXPECT_EQ(commit().faults,
              Texts{"/routers;name=lab/protocols;name=bgp asNumber 133 a mandatory attribute is "
                    "missing: expected unsignedInt (AsNumber), got nothing"});
}

TEST_F(EmbeddedRules, MandatoryAttributesAreNotTakenAway) {
    set("/routers;name=default/protocols;name=bgp", R"({"asNumber":{"%null":null}})");
    EXPECT_EQ(commit().code, ORU_RC_COLL_PROPERTY_CONSTRAINT);
}

/* Who is locked out is told why, and nobody else. */
TEST_F(EmbeddedRules, ConditionsSpeakOfOldAndNewValues) {
    set("/users;name=ada", R"({"lockReason":{"%string":"left"}})");
    EXPECT_EQ(commit().code, ORU_RC_LENGTH_CONSTRAINT);
    set("/users;name=ada", R"({"locked":{"%boolean":true}})");
    EXPECT_EQ(commit().faults, Texts());
    set("/users;name=ada", R"({"lockReason":{"%string":"left"}})");
    EXPECT_EQ(commit().faults, Texts());
    set("/users;name=ada", R"({"locked":{"%boolean":false}})");
    EXPECT_EQ(commit().code, ORU_RC_LENGTH_CONSTRAINT);
    set("/users;name=ada", R"({"locked":{"%boolean":false},"lockReason":{"%null":null}})");
    EXPECT_EQ(commit().faults, Texts());
}

TEST_F(EmbeddedRules, ReferencesHaveAsManyChildrenAsTheyMay) {
    for (const char *const address : {"0A000001", "0A000002", "0A000003"})
        create("/", "timeServers", "",
               R"({"address":{"%ip_address":")" + std::string(address) + R"("}})");
    EXPECT_EQ(commit().faults, Texts{" timeServers 132 the number of children does not fit: "
                                     "expected size(0..4), got 5"});
    for (const char *const address : {"0A000001", "0A000002", "0A000003"})
        create("/", "timeServers", "",
               R"({"address":{"%ip_address":")" + std::string(address) + R"("}})");
    remove("/timeServers;address=0A010107");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(query("/?timeServers", {"address"}).size(), 4U);
}

TEST_F(EmbeddedRules, ReferencesWithinOneChangeHold) {
    create("/", "links", "", R"({"id":{"%string":"L99"}})");
    set("/chassis;id=1/slots;number=1/ports;name=1%2F1", R"({"link":{"%mr_uri":"/links;id=L99"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/chassis;id=1/slots;number=1/ports;name=1%2F1", {"link"}), "link=/links;id=L99");
    remove("/links;id=L99");
    EXPECT_EQ(commit().code, ORU_RC_CONFIG_VALIDATION);
    remove("/links;id=L99");
    set("/chassis;id=1/slots;number=1/ports;name=1%2F1", R"({"link":{"%null":null}})");
    EXPECT_EQ(commit().faults, Texts());
}

TEST_F(EmbeddedRules, ReferencesAreOfTheirShape) {
    set("/links;id=L1", R"({"from":{"%mr_uri":["/chassis;id=1"]}})");
    set("/groups;name=operators", R"({"members":{"%mr_uri":"/users;name=ada"}})");
    const Answer answer = commit();
    ASSERT_EQ(answer.faults.size(), 2U);
    EXPECT_TRUE(answer.faults[0].starts_with("/groups;name=operators members 118 "));
    EXPECT_TRUE(answer.faults[1].starts_with("/links;id=L1 from 118 "));
}

TEST_F(EmbeddedRules, SecondaryKeysMayMoveWithinOneChange) {
    set("/vlans;id=10", R"({"name":{"%string":"guests"}})");
    EXPECT_EQ(commit().code, ORU_RC_RESOURCE_EXISTS);
    set("/vlans;id=10", R"({"name":{"%string":"guests"}})");
    set("/vlans;id=20", R"({"name":{"%string":"staff"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/vlans;name=guests", {"id"}), "id=10");
    EXPECT_EQ(get("/vlans;name=staff", {"id"}), "id=20");
    remove("/vlans;id=10");
    create("/", "vlans", "", R"({"id":{"%ushort":30},"name":{"%string":"guests"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/vlans;name=guests", {"id"}), "id=30");
}

TEST_F(EmbeddedRules, SecondaryKeysMeanWhatTheOperationsBeforeLeave) {
    set("/vlans;id=10", R"({"name":{"%string":"guests"}})");
    set("/vlans;id=20", R"({"name":{"%string":"staff"}})");
    set("/vlans;name=guests", R"({"description":{"%string":"first ten"}})");
    set("/vlans;name=staff", R"({"name":{"%string":"people"}})");
    create("/", "vlans", "", R"({"id":{"%ushort":30},"name":{"%string":"staff"}})");
    set("/vlans;name=staff", R"({"description":{"%string":"then thirty"}})");
    remove("/vlans;name=people");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/vlans;name=guests", {"id", "description"}), "id=10 description=first ten");
    EXPECT_EQ(get("/vlans;name=staff", {"id", "description"}), "id=30 description=then thirty");
    EXPECT_EQ(get("/vlans;id=20", {"id"}), "code 102");
}

TEST_F(EmbeddedRules, SecondaryKeysThatWereGivenAwayAreNobodys) {
    set("/vlans;id=10", R"({"name":{"%string":"people"}})");
    set("/vlans;name=staff", R"({"description":{"%string":"x"}})");
    remove("/vlans;id=20");
    remove("/vlans;name=guests");
    EXPECT_EQ(commit().faults, (Texts{"/vlans;name=staff: the model has no such address",
                                      "/vlans;name=guests: the model has no such address"}));
}

// one name is had twice on the way: the last to take it has it
TEST_F(EmbeddedRules, SecondaryKeysMayBeHadTwiceOnTheWay) {
    set("/vlans;id=20", R"({"name":{"%string":"staff"}})");
    set("/vlans;name=staff", R"({"description":{"%string":"twenty"}})");
    set("/vlans;id=10", R"({"name":{"%string":"people"}})");
    set("/vlans;name=staff", R"({"flooding.multicast":{"%boolean":true}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/vlans;name=staff", {"id", "description"}), "id=20 description=twenty");
}

TEST_F(EmbeddedRules, ResourcesAreMadeAnewInOneChange) {
    remove("/vlans;id=20");
    create("/", "vlans", "", R"({"id":{"%ushort":20},"name":{"%string":"anew"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get_all("/vlans;id=20"), "id=20 name=anew");
    create("/", "vlans", "", R"({"id":{"%ushort":40},"name":{"%string":"gone"}})");
    remove("/vlans;id=40");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/vlans;id=40", {"id"}), "code 102");
}

TEST_F(EmbeddedRules, ChildrenMayFollowTheirParentsInOneChange) {
    create("/", "routers", "",
           R"({"name":{"%string":"new"},"routerId":{"%ip_address":"0A0A0A0A"}})");
    create("/routers;name=new", "interfaces", "",
           R"({"name":{"%string":"a/b c"},"portName":{"%string":"1/1"},"unit":{"%ushort":5}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/routers;name=new/interfaces;portName=1%2F1;unit=5", {"name", "_uri"}),
              "name=a/b c _uri=/routers;name=new/interfaces;name=a%2Fb%20c");
}

TEST_F(EmbeddedRules, ValuesTakeTheirTypes) {
    set("/chassis;id=1/slots;number=1/ports;name=1%2F1",
        R"({"mtu":{"%ulong":2000},"adminState":{"%string":"down"},"vlans":{"%ulong":[7,8]}})");
    EXPECT_EQ(commit().faults, Texts());
    const auto ports = [&](const std::string &where) {
        return query("/chassis;id=1/slots;number=1?ports", {"name"}, where);
    };
    EXPECT_EQ(ports(R"({"%nvlist":{"mtu":{"%ushort":2000}}})"), Texts{"1/1"});
    EXPECT_EQ(ports(R"({"%nvlist":{"adminState":{"%enumeration":"down"}}})"),
              (Texts{"1/1", "1/4"}));
}

TEST_F(EmbeddedRules, DefaultsFollowTheirConditions) {
    const std::string port = "/chassis;id=1/slots;number=1/ports;name=1%2F1";
    set(port, R"({"duplex":{"%null":null},"speed":{"%ulong":1000000000}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get(port, {"duplex"}), "duplex=(auto)");
    EXPECT_EQ(get(port, {"duplex"}, false), "duplex=-");
    set(port, R"({"speed":{"%ulong":10000000000}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get(port, {"duplex"}), "duplex=(full)");
    EXPECT_EQ(query("/chassis;id=1/slots;number=1?ports", {"name", "duplex"},
                    R"({"%nvlist":{"duplex":{"%enumeration":"full"}}})"),
              Texts{"1/1 (full)"});
}

}  // namespace
}  // namespace embedded
