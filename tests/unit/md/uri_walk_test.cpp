// The walk of a URI through the metadata.
#include <oru/mr_meta.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;
using Texts = std::vector<std::string>;

std::string key(const std::string &name) {
    return "<key><attribute name='" + name + "' type='string'/></key>";
}

std::string ref(const std::string &name, const std::string &target,
                const std::string &role = "child") {
    return "<reference name='" + name + "' targetIsA='" + target + "' targetRole='" + role +
           "' multiplicity='many'/>";
}

// A system of shelves with cards, whose kinds the data or a constant key tells, and of users.
class UriWalk : public StoreTest {
  protected:
    void SetUp() override {
        load_both(resources(resource("Card", key("id") + ref("common", "com.impl/Common"))),
                  resources(resource("System", ref("shelves", "Shelf") + ref("users", "User") +
                                                   ref("logs", "Log") + ref("lost", "None")) +
                            resource("Shelf", key("id") + ref("cards", "com.lib/Card") +
                                                  ref("owner", "User", "peer")) +
                            resource("EthCard", ref("ports", "Port") + ref("both", "Port"),
                                     "implements='com.lib/Card'") +
                            resource("OptCard", ref("lasers", "Laser") + ref("both", "Laser"),
                                     "implements='com.lib/Card'") +
                            resource("Port", key("id") + key("mac")) +
                            resource("Laser", key("color")) + resource("Common", "") +
                            resource("User", key("name") + key("uid") + ref("keys", "Log")) +
                            resource("Log", key("id") + key("seq"), "maxAccess='oper-data'")));
        oru_md_set_root_mr_type("com.impl/System");
    }
    void TearDown() override { oru_md_set_root_mr_type("com.tarvex.lumo.orucore/System"); }

    static ORUMdMrMeta *mr(const std::string &name) {
        return oru_md_get_mr_meta_by_name(("com.impl/" + name).c_str());
    }
    static ORUMdMrMeta *card() { return oru_md_get_mr_meta_by_name("com.lib/Card"); }

    // What a walk reached; null for nothing.
    std::string walk(const std::string &address, int32_t last_segs = 0,
                     ORUMdMrMeta *start = nullptr) {
        auto *uri = oru_do_uri_new(address.c_str());
        remainder = -1;
        secondary = 0;
        peer = nullptr;
        ORUDoNvlist *keys = nullptr;
        auto *found =
            oru_md_get_mr_meta_by_uri(uri, last_segs, start, &remainder, &keys, &secondary, &peer);
        nkeys = keys != nullptr ? oru_do_nvlist_get_len(keys) : -1;
        oru_do_uri_deref(uri);
        return found != nullptr ? oru_md_mr_meta_to_string(found) : "(null)";
    }

    int32_t remainder = -1;
    int32_t nkeys = -1;
    uint8_t secondary = 0;
    ORUMdRefMeta *peer = nullptr;
};

TEST_F(UriWalk, RootIsTheRootType) {
    EXPECT_EQ(walk("//"), "System");
    EXPECT_EQ(remainder, 0);
}

TEST_F(UriWalk, RootThatIsALibraryResourceGivesItsFirstImplementation) {
    EXPECT_EQ(walk("//", 0, card()), "EthCard");
    oru_md_set_root_mr_type("com.lib/Card");
    EXPECT_EQ(walk("//"), "EthCard");
    oru_md_mr_meta_list_delete_all_items(card()->impl_mr_metas);
    card()->impl_mr_metas = nullptr;
    EXPECT_EQ(walk("//"), "(null)");
}

TEST_F(UriWalk, RootWithLastSegmentsIsNoRoot) {
    EXPECT_EQ(walk("//", 1), "(null)");
}

TEST_F(UriWalk, UnknownRootTypeReachesNothing) {
    oru_md_set_root_mr_type("com.none/System");
    EXPECT_EQ(walk("/shelves;id=1"), "(null)");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(walk("//"), "(null)");
    EXPECT_EQ(remainder, 0);
}

TEST_F(UriWalk, ReachesTheEnd) {
    TraceCapture traces;
    EXPECT_EQ(walk("/shelves;id=1"), "Shelf");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(nkeys, 1);
    EXPECT_EQ(secondary, 0);
    EXPECT_EQ(peer, nullptr);
    EXPECT_TRUE(traces.has(7, "seg_idx 0 resolved to Shelf\n"));
    EXPECT_EQ(walk("/shelves"), "Shelf");
    EXPECT_EQ(nkeys, -1);
}

TEST_F(UriWalk, OptionalOutputsMayBeLeftOut) {
    auto *uri = oru_do_uri_new("/users;uid=7/keys");
    int32_t rest = -1;
    EXPECT_EQ(oru_md_get_mr_meta_by_uri(uri, 0, nullptr, &rest, nullptr, nullptr, nullptr),
              mr("User"));
    EXPECT_EQ(rest, 1);
    oru_do_uri_deref(uri);
}

TEST_F(UriWalk, StartsAnywhereWithTheLastSegments) {
    EXPECT_EQ(walk("/x/y/ports;id=1", 1, mr("EthCard")), "Port");
    EXPECT_EQ(walk("/shelves;id=1/cards;id=9", 2), "Card");
    EXPECT_EQ(walk("/ports;id=1", 0, mr("EthCard")), "Port");
    EXPECT_EQ(walk("/ports;id=1", -5, mr("EthCard")), "Port");
}

TEST_F(UriWalk, MoreLastSegmentsThanThereAreFail) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/shelves;id=1", 3), "(null)");
    EXPECT_EQ(traces.at(3), Texts{"seg_idx -2 in /shelves;id=1 unresolved\n"});
}

TEST_F(UriWalk, UnknownSegmentFails) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/shelves;id=1/fans"), "(null)");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(traces.at(3), Texts{"seg_idx 1 in /shelves;id=1/fans unresolved\n"});
}

TEST_F(UriWalk, AddressThatIsNoneReachesNothing) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/shelves;id=1//cards"), "(null)");
    EXPECT_EQ(walk(""), "(null)");
    EXPECT_EQ(remainder, 0);
    for (const auto &line : traces.at(3))
        EXPECT_EQ(line.find("seg_idx"), std::string::npos) << line;  // no walk was begun
}

TEST_F(UriWalk, ReferenceWithoutATargetFails) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/lost"), "(null)");
    EXPECT_EQ(traces.at(3),
              (Texts{"No target MR found, exiting\n", "seg_idx 0 in /lost unresolved\n"}));
}

TEST_F(UriWalk, LibraryResourceEndsTheWalk) {
    EXPECT_EQ(walk("/shelves;id=1/cards;id=9/ports;id=2"), "Card");
    EXPECT_EQ(remainder, 1);
    EXPECT_EQ(walk("/shelves;id=1/cards;anything=9"), "Card");  // its keys are not checked
    EXPECT_EQ(remainder, 0);
}

TEST_F(UriWalk, ConstantKeyPicksTheImplementation) {
    mr("OptCard")->const_key = oru_do_value_new_string("opt");
    EXPECT_EQ(walk("/shelves;id=1/cards;id=opt/lasers;color=red"), "Laser");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(walk("/shelves;id=1/cards;id=eth/lasers;color=red"), "Card");
    EXPECT_EQ(walk("/shelves;id=1/cards;id=opt;x=1/lasers;color=red"), "Card");
    EXPECT_EQ(walk("/shelves;id=1/cards/lasers;color=red"), "Card");
    EXPECT_EQ(remainder, 1);
}

TEST_F(UriWalk, SegmentOfOneImplementationIsFoundThroughItsLibrary) {
    TraceCapture traces;
    EXPECT_EQ(walk("/lasers;color=red", 0, card()), "Laser");
    EXPECT_TRUE(traces.has(7, "Analyzing EthCard\n"));
    EXPECT_TRUE(traces.has(7, "Analyzing OptCard\n"));
    card()->refs->target_mr = mr("Common");
    EXPECT_EQ(walk("/common", 0, card()), "Common");  // its own reference comes first
}

TEST_F(UriWalk, KeysChooseBetweenImplementations) {
    EXPECT_EQ(walk("/both;id=1", 0, card()), "Port");
    EXPECT_EQ(walk("/both;color=red", 0, card()), "Laser");
    EXPECT_EQ(walk("/both;none=1", 0, card()), "(null)");
}

TEST_F(UriWalk, TwoImplementationsThatFitAreAmbiguous) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/both", 0, card()), "(null)");
    EXPECT_EQ(traces.at(3),
              (Texts{"ambiguous ref meta exiting\n", "seg_idx 0 in /both unresolved\n"}));
}

TEST_F(UriWalk, ImplementationWhoseReferenceHasNoTargetDoesNotCount) {
    oru_md_get_ref_meta_w_str(mr("EthCard"), "both")->target_mr = nullptr;
    EXPECT_EQ(walk("/both", 0, card()), "Laser");
    oru_md_get_ref_meta_w_str(mr("OptCard"), "both")->target_mr = nullptr;
    EXPECT_EQ(walk("/both", 0, card()), "(null)");
}

TEST_F(UriWalk, PeerReferenceOfAnImplementationEndsAtTheLibraryResource) {
    auto *ports = oru_md_get_ref_meta_w_str(mr("EthCard"), "ports");
    oru_do_prop_meta_set_ref_role(ports->prop_meta, ORU_REF_PEER);
    EXPECT_EQ(walk("/ports;id=1/more", 0, card()), "Card");
    EXPECT_EQ(remainder, 1);
    EXPECT_EQ(peer, ports);
}

TEST_F(UriWalk, KeysOfAPeerAreCheckedToo) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/shelves;id=1/owner;none=1"), "(null)");
    EXPECT_EQ(peer, nullptr);
    EXPECT_EQ(traces.at(3), (Texts{"Incorrect keys in target MR\n",
                                   "seg_idx 1 in /shelves;id=1/owner;none=1 unresolved\n"}));
}

TEST_F(UriWalk, SomeOfTheKeysAreEnough) {
    TraceCapture traces(3);
    auto *color = mr("Laser")->primary_keys;
    auto *id = oru_md_new_attr_meta(color->name, nullptr, color->prop_meta);
    oru_md_add_key_meta(mr("Laser"), id, 1);  // two keys, of which one is given
    EXPECT_EQ(walk("/lasers;color=red", 0, mr("OptCard")), "Laser");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(traces.at(3), Texts{});
}

// What a walk goes through asks for no memory.
TEST_F(UriWalk, NeedsNoMemory) {
    auto *uri = oru_do_uri_new("/shelves;id=1/cards;id=9/ports;id=2");
    oru_do_uri_get_segment_count(uri);  // parses it
    auto *root = mr("System");
    int32_t rest = 0;
    poolheap_fail_nth(1, 1);
    auto *found = oru_md_get_mr_meta_by_uri(uri, 0, root, &rest, nullptr, nullptr, nullptr);
    EXPECT_EQ(poolheap_fail_hits(), 0u);
    poolheap_fail_off();
    EXPECT_EQ(found, card());
    EXPECT_EQ(rest, 1);
    oru_do_uri_deref(uri);
}

TEST_F(UriWalk, OnlyTheImplementationThatIsTakenMarksASecondaryKey) {
    EXPECT_EQ(walk("/both;mac=1", 0, card()), "Port");
    EXPECT_EQ(secondary, 1);
    EXPECT_EQ(walk("/both;color=red", 0, card()), "Laser");
    EXPECT_EQ(secondary, 0);
}

TEST_F(UriWalk, PeerReferenceEndsAtItsHolder) {
    EXPECT_EQ(walk("/shelves;id=1/owner;name=joe/keys;id=3"), "Shelf");
    EXPECT_EQ(remainder, 1);
    EXPECT_EQ(peer, oru_md_get_ref_meta_w_str(mr("Shelf"), "owner"));
    EXPECT_EQ(walk("/shelves;id=1/owner"), "Shelf");
    EXPECT_EQ(remainder, 0);
}

TEST_F(UriWalk, SecondaryKeyEndsTheWalk) {
    EXPECT_EQ(walk("/users;uid=7/keys;id=1"), "User");
    EXPECT_EQ(remainder, 1);
    EXPECT_EQ(secondary, 1);
}

TEST_F(UriWalk, SecondaryKeyOfOperationalDataIsNone) {
    EXPECT_EQ(walk("/logs;seq=7"), "Log");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(secondary, 0);
}

TEST_F(UriWalk, PrimaryKeyBeforeASecondaryOneIsRefused) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/users;name=joe;uid=7"), "(null)");
    EXPECT_EQ(traces.at(3),
              (Texts{"URI error at uid: primary and secondary keys are not allowed to appear "
                     "together\n",
                     "Incorrect keys in target MR\n",
                     "seg_idx 0 in /users;name=joe;uid=7 unresolved\n"}));
    EXPECT_EQ(walk("/users;uid=7;name=joe"), "User");  // the other order passes
    EXPECT_EQ(secondary, 1);
}

TEST_F(UriWalk, UnknownKeyFails) {
    TraceCapture traces(3);
    EXPECT_EQ(walk("/users;none=1"), "(null)");
    EXPECT_EQ(traces.at(3)[0], "Incorrect keys in target MR\n");
}

TEST_F(UriWalk, OutputsThatAreNotClearedAreBelieved) {
    auto *uri = oru_do_uri_new("/shelves;id=1/cards;id=2");
    int32_t rest = 0;
    uint8_t mark = 1;
    ORUMdRefMeta *some = mr("System")->refs;
    EXPECT_EQ(oru_md_get_mr_meta_by_uri(uri, 0, nullptr, &rest, nullptr, &mark, nullptr),
              mr("Shelf"));
    EXPECT_EQ(rest, 1);
    EXPECT_EQ(oru_md_get_mr_meta_by_uri(uri, 0, nullptr, &rest, nullptr, nullptr, &some),
              mr("Shelf"));
    EXPECT_EQ(rest, 1);
    oru_do_uri_deref(uri);
}

TEST_F(UriWalk, NetworkOfTheExamplesIsReached) {
    oru_md_free();
    EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr), 0);
    oru_md_set_root_mr_type("com.example.network/System");
    EXPECT_EQ(walk("/chassis;id=1/slots;number=2/ports;name=eth0"), "Port");
    EXPECT_EQ(remainder, 0);
    EXPECT_EQ(walk("/chassis;id=1/slots;number=2/ports;name=eth0/link/from"), "Port");
    EXPECT_EQ(remainder, 1);
    EXPECT_EQ(walk("/users;uid=1"), "User");
    EXPECT_EQ(secondary, 1);
}

TEST_F(UriWalk, NullIsRefusedByName) {
    auto *uri = oru_do_uri_new("/users");
    int32_t rest = 0;
    EXPECT_ASSERTION(
        oru_md_get_mr_meta_by_uri(nullptr, 0, nullptr, &rest, nullptr, nullptr, nullptr), "uri");
    EXPECT_ASSERTION(oru_md_get_mr_meta_by_uri(uri, 0, nullptr, nullptr, nullptr, nullptr, nullptr),
                     "ret_remainder_uri_segs");
    oru_do_uri_deref(uri);
}

}  // namespace
