#include "network.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedRead : public Network {
  protected:
    void SetUp() override {
        Network::SetUp();
        load();
    }
};

TEST_F(EmbeddedRead, ValuesComeInTheOrderOfTheNames) {
    EXPECT_EQ(get("/chassis;id=1", {"serial", "_uri", "id", "_mr", "nothing"}),
              "serial=CH-1001 _uri=/chassis;id=1 id=1 _mr=com.example.network:1.0/Chassis "
              "nothing=-");
    EXPECT_EQ(get("/", {"hostname", "_mr"}), "hostname=core-1 _mr=com.example.network:1.0/System");
}

TEST_F(EmbeddedRead, AddressesMayLeaveOutTheLocationAndWriteKeysAnyWay) {
    EXPECT_EQ(get("//locations;locationId=global/chassis;id=01", {"id"}), "id=1");
    EXPECT_EQ(get("/chassis;id=1/slots;number=1/ports;name=1%2F1", {"name"}), "name=1/1");
    EXPECT_EQ(get("/logging", {"_mr"}), "_mr=com.example.network.management:1.0/Logging");
}

TEST_F(EmbeddedRead, WhatIsNotThereIsNoSuchResource) {
    EXPECT_EQ(get("/chassis;id=9", {"id"}), "code 102");
    EXPECT_EQ(get("/chassis;id=x", {"id"}), "code 102");
    EXPECT_EQ(get("/chassis", {"id"}), "code 102");
    EXPECT_EQ(get("/nothing;id=1", {"id"}), "code 102");
    EXPECT_EQ(get("//locations;locationId=other/chassis;id=1", {"id"}), "code 102");
    EXPECT_EQ(get("/chassis;id=4294967296", {"id"}), "code 102");
    EXPECT_EQ(get("/a/b/c/d/e/f/g/h/i/j/k/l/m", {"id"}), "code 102");
    EXPECT_EQ(get("/chassis;id=1;", {"id"}), "code 102");
}

TEST_F(EmbeddedRead, SecondaryKeysLeadToResources) {
    EXPECT_EQ(get("/vlans;name=staff", {"id"}), get("/vlans;id=10", {"id"}));
}

TEST_F(EmbeddedRead, CollectionsComeInTheOrderOfTheirKeys) {
    EXPECT_EQ(query("/?chassis", {"_uri"}), (Texts{"/chassis;id=1", "/chassis;id=2"}));
    const Texts links = query("/?links", {"id"});
    EXPECT_EQ(links.size(), 10U);
    EXPECT_EQ(links.front(), "L1");
    EXPECT_EQ(links.back(), "L10");  // texts go by their length first
    EXPECT_EQ(query("/chassis;id=1?slots", {"number"}), (Texts{"1", "2", "3"}));
    EXPECT_EQ(query("/chassis;id=1/slots?:com.example.network:1.0/Slot", {"number"}),
              (Texts{"1", "2", "3"}));
    EXPECT_EQ(query("/?logging", {"_uri"}), (Texts{"/logging"}));
    EXPECT_EQ(query("/logging?:com.example.network.management:1.0/Logging", {"_uri"}),
              (Texts{"/logging"}));
}

TEST_F(EmbeddedRead, WildcardsGoDownAnyDepth) {
    EXPECT_EQ(query("//?:com.example.network:1.0/Port", {"_uri"}).size(), 24U);
    EXPECT_EQ(query("/chassis;id=1?:com.example.network:1.0/Port", {"_uri"}).size(), 12U);
    EXPECT_EQ(query("/chassis;id=1*?:com.example.network:1.0/Port", {"_uri"}).size(), 12U);
    EXPECT_EQ(query("//?:com.example.network/Port", {"_uri"}, {}, {}, 5).size(), 24U);
    EXPECT_EQ(query("//?:com.example.network:1.0/System", {"_uri"}), Texts{""});
}

TEST_F(EmbeddedRead, AbstractTypesStandForWhatImplementsThem) {
    EXPECT_EQ(query("//?:com.example.network.management.lib:1.0/LogTarget", {"_mr"}).size(), 3U);
}

TEST_F(EmbeddedRead, BatchesGiveEachRowOnce) {
    const Texts all = query("//?:com.example.network:1.0/Port", {"_uri", "mtu"});
    for (uint32_t count = 1; count < 26; count++)
        EXPECT_EQ(query("//?:com.example.network:1.0/Port", {"_uri", "mtu"}, {}, {}, count), all)
            << count;
}

TEST_F(EmbeddedRead, UnknownCollectionsAreNone) {
    for (const char *const uri : {"/?nothing", "/chassis;id=1", "/chassis?slots", "//?:Nobody",
                                  "/nothing?slots", "//locations;locationId=x?chassis"}) {
        query(uri, {"_uri"});
        EXPECT_EQ(query_code, ORU_RC_NO_SUCH_COLLECTION) << uri;
    }
}

TEST_F(EmbeddedRead, WhereIsAnsweredByStoreAndLibraryAlike) {
    const auto ports = [&](const std::string &where) {
        return query("/chassis;id=1/slots;number=1?ports", {"name"}, where);
    };
    EXPECT_EQ(ports(R"({"%nvlist":{"mtu":{"%ushort":9000}}})"), (Texts{"1/2", "1/4"}));
    EXPECT_EQ(ports(R"({"%nvlist":{"mtu <":{"%int":9000}}})"), (Texts{"1/1", "1/3"}));
    EXPECT_EQ(ports(R"({"%nvlist":{"name <>":{"%string":"1/1"},"mtu <=":{"%int":1500}}})"),
              (Texts{"1/3"}));
    EXPECT_EQ(ports(R"({"%nvlist":{"alias LIKE":{"%string":"1-3$"}}})"), (Texts{"1/3"}));
    EXPECT_EQ(
        ports(
            R"({"%nvlist":{" OR ":{"%sequence":{"name":{"%string":"1/1"},"mtu >":{"%int":8999}}}}})"),
        (Texts{"1/1", "1/2", "1/4"}));
}

TEST_F(EmbeddedRead, OrderSorts) {
    const auto ports = [&](const Texts &order, uint32_t count) {
        return query("/chassis;id=1/slots;number=1?ports", {"name"}, {}, order, count);
    };
    for (const uint32_t count : {0U, 1U, 2U, 3U, 4U, 5U}) {
        EXPECT_EQ(ports({"name desc"}, count), (Texts{"1/4", "1/3", "1/2", "1/1"})) << count;
        EXPECT_EQ(ports({"mtu desc", "name desc"}, count), (Texts{"1/4", "1/2", "1/3", "1/1"}));
        EXPECT_EQ(ports({"mtu"}, count), (Texts{"1/1", "1/3", "1/2", "1/4"}));
    }
    query("/?chassis", {"id"}, {}, {"nothing"});
    EXPECT_EQ(query_code, ORU_RC_NO_SUCH_ATTRIBUTE);
}

TEST_F(EmbeddedRead, DefaultsAreFlagged) {
    EXPECT_EQ(get("/links;id=L1", {"cost"}, false), get("/links;id=L1", {"cost"}, false));
    EXPECT_EQ(get("/", {"utcOffset"}), "utcOffset=60");
}

/* ---- Data of other sizes ---- */

std::string generated(int resources) {
    const std::string command = std::string(NETWORK_GENERATE) + " " + std::to_string(resources);
    std::FILE *const output = popen(command.c_str(), "r");
    std::string text;
    char part[4096];
    while (const size_t size = std::fread(part, 1, sizeof part, output))
        text.append(part, size);
    EXPECT_EQ(pclose(output), 0);
    return text;
}

class EmbeddedGenerated : public Network {};

TEST_F(EmbeddedGenerated, DataFitsTheModel) {
    for (const int resources : {50, 600}) {
        const Answer answer = load(generated(resources));
        EXPECT_EQ(answer.faults, Texts());
        const auto ports = query("//?:com.example.network:1.0/Port", {"_uri"}).size();
        EXPECT_EQ(ports, resources == 50 ? 16U : 576U) << resources;
        restart();
    }
}

TEST_F(EmbeddedRead, ConfigurationAndOperationalDataAreKeptApart) {
    EXPECT_EQ(get_all("/chassis;id=1"), "id=1 description=Upper chassis");
    EXPECT_EQ(get_all("/chassis;id=1", true), "operState=up temperature=31.5 serial=CH-1001");
    EXPECT_EQ(get_all("/chassis;id=1/fans;id=1"), "");
    EXPECT_EQ(get_all("/chassis;id=1/fans;id=1", true), "id=1 rpm=4110 load=20");
    EXPECT_EQ(get_all("/chassis;id=7"), "code 102");
}

}  // namespace
}  // namespace embedded
