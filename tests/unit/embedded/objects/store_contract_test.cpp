/* What the object layer makes of the answers and limits of its store. */
#include "network.h"
#include "object/change.h"
#include "object/secrets.h"
#include "recording_store.h"

namespace embedded {
namespace {

class EmbeddedContract : public Network {
  protected:
    void SetUp() override {
        Network::SetUp();
        store = std::make_shared<RecordingStore>();
        const std::shared_ptr<const Model> model = Model::take("com.example.network:1.0/System");
        source = std::make_unique<Source>(
            Source{model, store, std::make_shared<VaultReader>(vault, false),
                   Addresses(*model, "//locations;locationId=global")});
        make_root(*source);
    }
    void TearDown() override {
        source.reset();
        Network::TearDown();
    }

    static Value text(std::string_view bytes) {
        return Value(oru_do_value_new_string_l(bytes.data(), static_cast<int32_t>(bytes.size())));
    }
    static Value vlan_id(uint16_t number) { return Value(oru_do_value_new_unsigned_short(number)); }

    static void add(Operations &operations, int32_t code, const std::string &address,
                    const char *reference,
                    const std::vector<std::pair<const char *, Value>> &values) {
        const Uri uri(oru_do_uri_new(("//locations;locationId=global" + address).c_str()));
        const Properties props(oru_do_properties_new());
        for (const auto &[name, value] : values)
            oru_do_properties_set_value(props.get(), name, value.get());
        const Name child(reference != nullptr ? oru_do_name_new(reference) : nullptr);
        oru_do_config_ops_add(operations.get(), code, uri.get(), props.get(), child.get(), nullptr,
                              nullptr);
    }
    static void create(Operations &operations, const char *reference,
                       const std::vector<std::pair<const char *, Value>> &values) {
        add(operations, ORU_EMBEDDED_OP_CREATE, "", reference, values);
    }
    static void change(Operations &operations, const std::string &address,
                       const std::vector<std::pair<const char *, Value>> &values) {
        add(operations, ORU_EMBEDDED_OP_SET, address, nullptr, values);
    }
    static Operations operations() { return Operations(oru_do_config_ops_new()); }

    ChangeResult carry_out(const Operations &operations, const std::string &request = {},
                           Authority authority = Authority::client) {
        ChangeRequest change;
        change.operations = operations.get();
        change.request = request;
        change.authority = authority;
        return embedded::carry_out(*source, VaultWriter(*vault), change);
    }

    /* The words of the first fault: of the resource, and of its first attribute. */
    static std::string fault_of(const ChangeResult &result) {
        ORUDoError *const of_resource =
            result.error ? oru_do_error_get_cause(result.error.get()) : nullptr;
        if (of_resource == nullptr)
            return "none";
        EachPropErr each(oru_do_error_get_prop_errs(of_resource));
        ORUDoPropErr *const entry = each();
        std::string words = oru_do_error_get_msg(of_resource);
        if (entry != nullptr)
            words += " " + std::string(oru_do_name_get_strname(oru_do_prop_err_get_name(entry))) +
                     " " + oru_do_error_get_msg(oru_do_prop_err_get_err(entry));
        return words.substr(words.find("global") + 6);
    }

    std::shared_ptr<Vault> vault = std::make_shared<Vault>("");
    std::shared_ptr<RecordingStore> store;
    std::unique_ptr<Source> source;
};

TEST_F(EmbeddedContract, SecondaryKeyThatPassesOnMeanwhileIsFollowed) {
    Operations vlans = operations();
    create(vlans, "vlans", {{"id", vlan_id(1)}, {"name", text("staff")}});
    create(vlans, "vlans", {{"id", vlan_id(2)}, {"name", text("guests")}});
    ASSERT_EQ(fault_of(carry_out(vlans)), "none");
    store->before_commit = [&] {
        Operations pass = operations();
        change(pass, "/vlans;id=1", {{"name", text("nobody")}});
        change(pass, "/vlans;id=2", {{"name", text("staff")}});
        EXPECT_EQ(carry_out(pass).code, ORU_OK);
    };
    Operations rename = operations();
    change(rename, "/vlans;name=staff", {{"name", text("people")}});
    EXPECT_EQ(fault_of(carry_out(rename)), "none");
    EXPECT_EQ(source->resolve("/vlans;name=people", kNewest)->place.path, "/vlans;id=2");
    EXPECT_EQ(source->resolve("/vlans;name=nobody", kNewest)->place.path, "/vlans;id=1");
}

TEST_F(EmbeddedContract, RepeatedCreateOfOneNameSucceeds) {
    Operations link = operations();
    create(link, "links", {{"id", text("L1")}});
    const ChangeResult first = carry_out(link, "one");
    const ChangeResult second = carry_out(link, "one");
    EXPECT_EQ(first.code, ORU_OK);
    EXPECT_EQ(second.code, ORU_OK);
    EXPECT_EQ(second.revision, first.revision);
    EXPECT_EQ(carry_out(link, "two").code, ORU_RC_RESOURCE_EXISTS);
}

TEST_F(EmbeddedContract, LostAnswerIsFoundByTheName) {
    Operations link = operations();
    create(link, "links", {{"id", text("L1")}});
    store->forgets_answer = true;
    const ChangeResult result = carry_out(link, "one");
    EXPECT_EQ(result.code, ORU_OK);
    EXPECT_EQ(result.revision, store->head());
}

TEST_F(EmbeddedContract, LostAnswerWithoutANameIsTold) {
    Operations link = operations();
    create(link, "links", {{"id", text("L1")}});
    store->forgets_answer = true;
    const ChangeResult result = carry_out(link);
    EXPECT_EQ(result.code, ORU_RC_DATABASE);
    EXPECT_STREQ(oru_do_error_get_msg(result.error.get()),
                 "nobody knows whether the change was written");
}

TEST_F(EmbeddedContract, LimitsOfTheStoreAreFaultsOfTheChange) {
    store->told_limits = {40, 20, 2};
    Operations link = operations();
    create(link, "links", {{"id", text(std::string(30, 'x'))}});
    ChangeResult result = carry_out(link);
    EXPECT_EQ(result.code, ORU_RC_INVALID_URI);
    EXPECT_EQ(fault_of(result), "/links: the keys are too long for the store");

    store->told_limits = {30, 100, 2};
    Operations vlan = operations();
    create(vlan, "vlans", {{"id", vlan_id(1)}, {"name", text(std::string(21, 'x'))}});
    result = carry_out(vlan);
    EXPECT_EQ(result.code, ORU_RC_LENGTH_CONSTRAINT);
    // 's', the collection with 8 bytes, the group, 's', 4 bytes of length, 21 of the name
    EXPECT_EQ(fault_of(result),
              "/vlans;id=1: a secondary key or a reference is too long for the store: expected at "
              "most 30 bytes, got 36");

    store->told_limits = {4096, 20, 2};
    result = carry_out(vlan);
    EXPECT_EQ(result.code, ORU_RC_LENGTH_CONSTRAINT);
    EXPECT_EQ(fault_of(result),
              "/vlans;id=1 name a value is too long for the store: expected at most 20 bytes, got "
              "21");

    Operations many = operations();
    for (const char *id : {"a", "b", "c"})
        create(many, "links", {{"id", text(id)}});
    result = carry_out(many);
    EXPECT_EQ(result.code, ORU_RC_SIZE_CONSTRAINT);
    EXPECT_EQ(fault_of(result), ": too many changes for one commit: expected 2, got 3");
    EXPECT_EQ(store->head(), 1);
}

TEST_F(EmbeddedContract, KeysWithAZeroAreNone) {
    Operations link = operations();
    create(link, "links", {{"id", text(std::string_view("a\0b", 3))}});
    EXPECT_EQ(carry_out(link).code, ORU_RC_TYPE_MISMATCH);
}

TEST_F(EmbeddedContract, KeysOfAnyBytesLeadToTheirResource) {
    const std::string odd = "\xff\xc0\x80 ;/?%\n\"<\x01";
    Operations link = operations();
    create(link, "links", {{"id", text(odd)}});
    ASSERT_EQ(fault_of(carry_out(link)), "none");
    const std::string path = "/links;id=\xff\xc0\x80%20%3B%2F%3F%25\n\"<\x01";
    const std::optional<Target> found = source->resolve(path, kNewest);
    ASSERT_TRUE(found.has_value());
    class Label final : public RowSink {
      public:
        void row(const Row &row) override { text = row.label; }
        void attribute(const Attribute &) override {}
        std::string text;
    } label;
    EXPECT_EQ(store->read(found->place.key, nullptr, kNewest, label), ReadStatus::last);
    EXPECT_EQ(label.text, "//locations;locationId=global" + path);
}

TEST_F(EmbeddedContract, RootStays) {
    Operations root = operations();
    add(root, ORU_EMBEDDED_OP_DELETE, "", nullptr, {});
    const ChangeResult result = carry_out(root, {}, Authority::system);
    EXPECT_EQ(result.code, ORU_RC_ACCESS_DENIED);
    EXPECT_EQ(fault_of(result), ": the root cannot be deleted");
}

TEST_F(EmbeddedContract, PasswordThatCannotBeHashedIsAFault) {
    EXPECT_THROW(Vault::hash(std::string(512, 'p')), SecretFault);
    EXPECT_THROW(Vault::hash(std::string_view("p\0w", 3)), SecretFault);
    EXPECT_EQ(Vault::hash(std::string(511, 'p')).substr(0, 3), "$y$");

    class Refusing final : public SecretWriter {
        Value close(const Value &) const override { throw SecretFault("no such secret"); }
    };
    Operations link = operations();
    create(link, "links", {{"id", text("L1")}});
    ChangeRequest change;
    change.operations = link.get();
    const ChangeResult result = embedded::carry_out(*source, Refusing(), change);
    EXPECT_EQ(result.code, ORU_RC_INVALID_PASSWORD);
    EXPECT_EQ(fault_of(result), "/links;id=L1 id no such secret");
}

TEST_F(EmbeddedContract, NumbersOfChildrenAreCountedAsFarAsTheSizeAsks) {
    Operations servers = operations();
    const auto add_server = [&](uint8_t last) {
        const uint8_t address[] = {10, 0, 0, last};
        create(servers, "timeServers",
               {{"address", Value(oru_do_value_new_ip_address(address, 4))}});
    };
    for (uint8_t last = 1; last <= 3; last++)
        add_server(last);
    ASSERT_EQ(fault_of(carry_out(servers)), "none");
    servers = operations();
    add_server(4);
    ASSERT_EQ(fault_of(carry_out(servers)), "none");
    servers = operations();
    add_server(5);
    ChangeResult result = carry_out(servers);
    EXPECT_EQ(result.code, ORU_RC_COLL_SIZE_CONSTRAINT);
    EXPECT_EQ(fault_of(result),
              " timeServers the number of children does not fit: expected size(0..4), got 5");
    add(servers, ORU_EMBEDDED_OP_DELETE, "/timeServers;address=10.0.0.1", nullptr, {});
    EXPECT_EQ(fault_of(carry_out(servers)), "none");
}

TEST_F(EmbeddedContract, DatabaseOfAnotherLocationIsRefused) {
    const Source elsewhere{source->model, store, source->secrets,
                           Addresses(*source->model, "//locations;locationId=other")};
    EXPECT_THROW(make_root(elsewhere), StoreFault);
}

}  // namespace
}  // namespace embedded
