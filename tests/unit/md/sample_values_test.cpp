// What the constraints and conditions of the sample model say: of its own data, of values that they
// refuse, and of attributes that are not set.
#include <oru/constraint.h>
#include <oru/json.h>
#include <oru/mr_meta.h>
#include <oru/prop_meta.h>
#include <oru/properties.h>
#include <oru/properties_list.h>
#include <oru/util.h>
#include <oru/value.h>
#include <oruplatform/poolheap.h>

#include <cstring>

#include "tests/support/owned.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;

class SampleValues : public testing::Test {
  protected:
    void SetUp() override {
        EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr), 0);
    }
    void TearDown() override { oru_md_free(); }

    // Resources have names of their own, but for the ports.
    static ORUMdMrMeta *mr(const std::string &name) {
        for (const char *package : {"", ".routing", ".management"}) {
            const std::string qualified = "com.example.network" + std::string(package) + "/" + name;
            if (auto *found = oru_md_get_mr_meta_by_name(qualified.c_str()))
                return found;
        }
        return nullptr;
    }
    static ORUMdAttrMeta *attr(const std::string &name, const std::string &attribute) {
        return oru_md_get_attr_meta_w_str(mr(name), attribute.c_str());
    }
};

Value value_of(const char *json) {
    ORUDoError *error = nullptr;
    return Value(oru_do_value_from_json(json, static_cast<int32_t>(std::strlen(json)), &error));
}

// `members` are those of a JSON object.
Properties properties_of(const std::string &members) {
    if (members.empty())
        return Properties(oru_do_properties_new());
    const std::string json = "{\"%properties\":{" + members + "}}";
    ORUDoError *error = nullptr;
    return Properties(
        oru_do_properties_from_json(json.c_str(), static_cast<int32_t>(json.size()), &error));
}

TEST_F(SampleValues, LetTheSampleDataPass) {
    char *json = nullptr;
    ASSERT_EQ(oru_read_file(NETWORK_DATA, &json), 0);
    ORUDoError *error = nullptr;
    auto *rows =
        oru_do_properties_list_from_json(json, static_cast<int32_t>(std::strlen(json)), &error);
    ph_free_named(json);
    int evaluated = 0;
    ORUDoIter at_row, at_prop;
    oru_do_iter_init(&at_row);
    oru_do_iter_init(&at_prop);
    for (oru_do_properties_list_iter(rows, &at_row); oru_do_properties_list_has_next(&at_row);) {
        auto *row = oru_do_properties_list_get_next(&at_row);
        int32_t rc = 0;
        const std::string type = oru_do_properties_get_string(row, ORU_DO_NAME_MR, &rc);
        auto *record = oru_md_get_mr_meta_by_name(type.c_str());
        for (oru_do_properties_iter(row, &at_prop); oru_do_properties_has_next(&at_prop);) {
            auto *prop = oru_do_properties_get_next(&at_prop);
            const char *name = oru_do_property_get_name_string(prop);
            if (oru_attribute_is_builtin(name) != 0 ||
                oru_md_get_ref_meta_w_str(record, name) != nullptr)
                continue;
            auto *meta = oru_md_get_attr_meta_w_str(record, name);
            ASSERT_NE(meta, nullptr) << type << " " << name;
            EXPECT_EQ(oru_md_eval_attr_constraint(meta, oru_do_property_get_value(prop), row), 0)
                << type << " " << name;
            ++evaluated;
        }
        char *message = nullptr;
        EXPECT_EQ(oru_md_eval_mr_constraint(record, row, &message), 0) << type;
    }
    EXPECT_GT(evaluated, 500);
    oru_do_properties_list_deref(rows);
}

struct Evaluation {
    const char *mr;
    const char *attribute;
    const char *value;
    const char *others;  // what else is set
    int32_t code;
};

TEST_F(SampleValues, RefuseWhatDoesNotFit) {
    constexpr char kFast[] = R"("speed":{"%ulong":10000000000})";
    const Evaluation table[] = {
        {"System", "hostname", R"({"%string":"core-1"})", "", 0},
        {"System", "hostname", R"({"%string":"1core"})", "", 116},
        {"System", "hostname", R"({"%string":""})", "", 115},
        {"System", "hostname", R"({"%int":1})", "", 118},
        {"System", "utcOffset", R"({"%int":840})", "", 0},
        {"System", "utcOffset", R"({"%int":841})", "", 114},
        {"System", "utcOffset", R"({"%long":3000000000})", "", 119},
        {"Chassis", "temperature", R"({"%double":125.5})", "", 114},
        {"Chassis", "operState", R"({"%enumeration":"degraded"})", "", 0},
        {"Chassis", "operState", R"({"%enumeration":"testing"})", "", 117},
        {"Fan", "load", R"({"%ubyte":101})", "", 114},
        {"PowerSupply", "assetTag", R"({"%string":"PS-1"})", "", 0},
        {"PowerSupply", "assetTag", R"({"%string":"PS1"})", "", 116},
        {"Port", "mtu", R"({"%ushort":67})", "", 114},
        {"Port", "speed", R"({"%ulong":9999999})", "", 114},
        {"Port", "vlans", R"({"%ushort":[1,4094]})", "", 0},
        {"Port", "vlans", R"({"%ushort":[1,4095]})", "", 114},
        {"Port", "vlans", R"({"%ushort":1})", "", 0},  // one of the type may stand for many
        {"Port", "vlans", R"({"%string":"1"})", "", 119},
        {"VirtualRouter", "families", R"({"%enumeration":"ipv4"})", "", 112},
        {"Port", "duplex", R"({"%enumeration":"half"})", "", 0},
        {"Port", "duplex", R"({"%enumeration":"half"})", kFast, 114},
        {"Port", "duplex", R"({"%enumeration":"full"})", kFast, 0},
        {"Port", "duplex", R"({"%enumeration":"both"})", "", 117},
        {"Vlan", "id", R"({"%ushort":0})", "", 114},
        {"User", "password", R"({"%string":"short"})", "", 115},
        {"User", "lockReason", R"({"%string":"why"})", "", 115},
        {"User", "lockReason", R"({"%string":"why"})", R"("locked":{"%boolean":true})", 0},
        {"User", "lockReason", R"({"%string":""})", R"("locked":{"%boolean":true})", 115},
        {"Mirror", "session", R"({"%ubyte":5})", "", 114},
        {"Mirror", "length", R"({"%short":63})", R"("sample":{"%uint":10})", 0},
        {"Mirror", "length", R"({"%short":63})",
         R"("sample":{"%uint":10},"truncate":{"%boolean":true})", 114},
        {"VirtualRouter", "routeDistinguisher", R"({"%string":"64512:1"})", "", 0},
        {"VirtualRouter", "routeDistinguisher", R"({"%string":"64512"})", "", 116},
        {"VirtualRouter", "families", R"({"%enumeration":["ipv4","ipv6"]})", "", 0},
        {"VirtualRouter", "families", R"({"%enumeration":[]})", "", 113},
        {"Interface", "adminState", R"({"%enumeration":"up"})", "", 114},
        {"Interface", "adminState", R"({"%enumeration":"up"})",
         R"("addresses":{"%ip_address":["0A000001"]})", 0},
        {"Interface", "metric", R"({"%uint":16777215})", "", 114},
        {"Ospf", "name", R"({"%string":"bgp"})", "", 114},
        {"OspfArea", "stub", R"({"%boolean":true})", R"("id":{"%uint":0})", 114},
        {"OspfArea", "stub", R"({"%boolean":true})", R"("id":{"%uint":1})", 0},
        {"OspfArea", "timers", R"({"%sequence":{"hello":{"%ushort":1},"dead":{"%ushort":2}}})", "",
         0},
        {"OspfArea", "timers", R"({"%sequence":{"dead":{"%ushort":2},"hello":{"%ushort":1}}})", "",
         130},
        {"StaticRoute", "nextHop", R"({"%choice":{"discard":{"%boolean":true}}})", "", 0},
        {"StaticRoute", "nextHop", R"({"%choice":{"nowhere":{"%boolean":true}}})", "", 120},
        {"StaticRoute", "tag", R"({"%long":-2})", "", 114},
        {"BgpNeighbor", "maxPrefixes", R"({"%uint":101})", R"("remoteAs":{"%uint":64999})", 114},
        {"BgpNeighbor", "maxPrefixes", R"({"%uint":101})", R"("remoteAs":{"%uint":3320})", 0},
        {"BgpNeighbor", "maxPrefixes", R"({"%uint":101})", R"("description":{"%string":"lab 1"})",
         114},
        {"BgpNeighbor", "maxPrefixes", R"({"%uint":101})",
         R"("remoteAs":{"%uint":64999},"secret":{"%string":"sixteen letters!"})", 0},
        {"BgpNeighbor", "session.holdTime", R"({"%ushort":0})", "", 0},
        {"BgpNeighbor", "session.holdTime", R"({"%ushort":2})", "", 114},
        {"BgpNeighbor", "session.holdTime", R"({"%ushort":0})",
         R"("session.keepAlive":{"%ushort":30})", 114},
        {"BgpNeighbor", "session.holdTime", R"({"%ushort":0})",
         R"("session.keepAlive":{"%ushort":30},"passive":{"%boolean":true})", 0},
        {"Logging", "bufferSize", R"({"%ushort":64})", "", 0},
        {"Logging", "bufferSize", R"({"%ushort":65})", "", 114},
        {"Logging", "muted", R"({"%enumeration":["kernel","routing","kernel","kernel"]})", "", 113},
        {"HostLog", "tlsSecret", R"({"%string":"sixteen letters!"})",
         R"("tlsSecret":{"%string":"sixteen letters!"})", 0},
        {"HostLog", "tlsSecret", R"({"%string":"sixteen letters!"})",
         R"("tlsSecret":{"%string":"sixteen letters!"},"transport":{"%enumeration":"tls"})", 115},
        {"SeverityFilter", "worst", R"({"%ubyte":7})", "", 0},
        {"SeverityFilter", "worst", R"({"%ubyte":8})", "", 114},
        {"TimeServer", "poll", R"({"%byte":-6})", "", 0},
        {"TimeServer", "poll", R"({"%byte":-7})", "", 114},
    };
    for (const auto &row : table) {
        auto *meta = attr(row.mr, row.attribute);
        const Value value = value_of(row.value);
        const Properties others = properties_of(row.others);
        ASSERT_TRUE(meta != nullptr && value != nullptr && others != nullptr)
            << row.mr << " " << row.attribute << " " << row.value;
        EXPECT_EQ(oru_md_eval_attr_constraint(meta, value.get(), others.get()), row.code)
            << row.mr << " " << row.attribute << " " << row.value << " " << row.others;
    }
}

struct Default {
    const char *mr;
    const char *attribute;
    const char *others;
    const char *expected;  // the text of the default; null for none
};

TEST_F(SampleValues, GiveDefaults) {
    const Default table[] = {
        {"System", "utcOffset", "", "0"},
        {"System", "hostname", "", nullptr},
        {"Chassis", "service.beacon", "", "false"},
        {"Slot", "enabled", "", "true"},
        {"Port", "adminState", "", "down"},
        {"Port", "mtu", "", "1500"},
        {"Port", "duplex", "", "auto"},
        {"Port", "duplex", R"("speed":{"%ulong":1000000000})", "auto"},
        {"Port", "duplex", R"("speed":{"%ulong":1000000001})", "full"},
        {"Link", "cost", "", "100"},
        {"Link", "cost", R"("speed":{"%ulong":999999999})", "100"},
        {"Link", "cost", R"("speed":{"%ulong":1000000000})", "10"},
        {"Vlan", "flooding.multicast", "", nullptr},
        {"Vlan", "flooding.multicast", R"("flooding.limit":{"%choice":{"percent":{"%ubyte":1}}})",
         "true"},
        {"Mirror", "sample", "", "1"},
        {"Mirror", "length", R"("truncate":{"%boolean":true},"sample":{"%uint":100})", "128"},
        {"Mirror", "length", R"("truncate":{"%boolean":true},"sample":{"%uint":7})", nullptr},
        {"Interface", "preference", "", "100"},
        {"Interface", "metric", "", "10"},
        {"Interface", "adminState", "", "down"},
        {"Interface", "adminState", R"("addresses":{"%ip_address":["0A000001"]})", "up"},
        {"StaticRoute", "tag", "", "-1"},
        {"Ospf", "referenceBandwidth", "", "100000000000"},
        {"Ospf", "adminState", "", "up"},
        {"OspfArea", "defaultCost", R"("stub":{"%boolean":true})", "1"},
        {"OspfArea", "defaultCost", R"("stub":{"%boolean":false})", nullptr},
        {"BgpNeighbor", "passive", "", "false"},
        {"BgpNeighbor", "maxPrefixes", R"("remoteAs":{"%uint":64512})", "10"},
        {"BgpNeighbor", "maxPrefixes", R"("remoteAs":{"%uint":64511})", "10000"},
        {"BgpNeighbor", "session.holdTime", "", "180"},
        {"BgpNeighbor", "session.holdTime", R"("session.keepAlive":{"%ushort":1})", "90"},
        {"Logging", "bufferSize", "", "256"},
        {"FileLog", "severity", "", "warning"},
        {"FileLog", "limits.keep", "", "5"},
        {"HostLog", "transport", "", "udp"},
        {"SeverityFilter", "worst", "", "0"},
        {"TimeServer", "poll", "", "6"},
    };
    for (const auto &row : table) {
        auto *meta = attr(row.mr, row.attribute);
        const Properties others = properties_of(row.others);
        ASSERT_TRUE(meta != nullptr && others != nullptr) << row.mr << " " << row.attribute;
        auto *list = oru_do_prop_meta_get_constraint_list(meta->prop_meta);
        auto *value = list != nullptr
                          ? oru_do_constraint_list_get_default(list, meta->name, others.get())
                          : nullptr;
        const std::string where = std::string(row.mr) + " " + row.attribute + " " + row.others;
        ASSERT_EQ(value != nullptr, row.expected != nullptr) << where;
        if (value != nullptr) {
            EXPECT_NE(oru_do_value_equals_str(value, row.expected), 0) << where;
            EXPECT_EQ(oru_do_value_get_type(value), oru_do_prop_meta_get_typecode(meta->prop_meta))
                << where;
        }
    }
}

TEST_F(SampleValues, DefaultOfAnArrayIsAnArray) {
    auto *meta = attr("VirtualRouter", "families");
    const Properties none = properties_of("");
    auto *value = oru_do_constraint_list_get_default(
        oru_do_prop_meta_get_constraint_list(meta->prop_meta), meta->name, none.get());
    ASSERT_NE(value, nullptr);
    const Value expected = value_of(R"({"%enumeration":["ipv4"]})");
    EXPECT_NE(oru_do_value_equals(value, expected.get()), 0);
}

TEST_F(SampleValues, TellWhatACreatedResourceNeeds) {
    struct Row {
        const char *mr;
        const char *given;
        int32_t code;
    };
    const Row table[] = {
        {"VirtualRouter", "", 133},
        {"VirtualRouter", R"("routerId":{"%ip_address":"0A000001"})", 0},
        {"Bgp", R"("name":{"%string":"bgp"})", 133},
        {"Bgp", R"("asNumber":{"%uint":64512})", 0},
        {"BgpNeighbor", R"("passive":{"%boolean":true})", 133},
        {"Port", "", 0},
        {"Interface", "", 0},
        {"Mirror", "", 0},
    };
    for (const auto &row : table) {
        const Properties given = properties_of(row.given);
        ASSERT_NE(given, nullptr);
        char *message = nullptr;
        EXPECT_EQ(oru_md_eval_mr_constraint(mr(row.mr), given.get(), &message), row.code)
            << row.mr << " " << row.given;
    }
}

}  // namespace
