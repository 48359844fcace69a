// Documents for which memory runs out.
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <vector>

#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/parser_support.h"

namespace {

using namespace oru::test;

// What comes of a document for each single allocation that fails: the tree, a bar, the words of the
// error, and for each failure that was traced a bar and its words.
std::vector<std::string> outcomes(const std::string &text) {
    std::vector<std::string> seen;
    for (uint64_t nth = 1; nth < 10000; ++nth) {
        TraceCapture traces;
        ORUDoError *raised = nullptr;
        poolheap_fail_nth(nth, 0);
        const Tree tree(oru_dtl_from_str(text.c_str(), &raised));
        poolheap_fail_off();
        if (poolheap_fail_hits() == 0) {
            oru_do_error_deref(raised);
            return seen;
        }
        std::string outcome;
        if (tree)
            outcome = tree->first_child != nullptr ? describe(tree->first_child) : "empty";
        outcome += "|" + (raised != nullptr ? words_of(raised) : "");
        for (const std::string &words : traces.at(3))
            outcome += "|" + words;
        seen.push_back(outcome);
        oru_do_error_deref(raised);
    }
    ADD_FAILURE() << "no end";
    return seen;
}

bool contains(const std::vector<std::string> &seen, const std::string &outcome) {
    return std::find(seen.begin(), seen.end(), outcome) != seen.end();
}

TEST_F(DtlParser, NodesThatCannotBeHadAreReported) {
    const std::string words = "|10001 Failed to allocate DTL Node";
    const auto seen = outcomes("<r><a/></r>");
    EXPECT_TRUE(contains(seen, words)) << testing::PrintToString(seen);
    EXPECT_TRUE(contains(seen, "empty" + words)) << testing::PrintToString(seen);
    EXPECT_TRUE(contains(seen, "r root traverse" + words)) << testing::PrintToString(seen);

    const auto addressed = outcomes("<r><a uri='/sys' mr='net/Slot'/><b/></r>");
    EXPECT_TRUE(contains(addressed, "r root traverse(b container traverse)" + words))
        << testing::PrintToString(addressed);

    const auto params = outcomes(
        "<r uri='/sys' mr='net/Box' op='action'><reset><mode>1</mode><n>2</n></reset></r>");
    EXPECT_TRUE(contains(params,
                         "r mr-op action uri=/sys mr=Box act=reset{n:2}(reset action "
                         "noop(n action-param noop))" +
                             words))
        << testing::PrintToString(params);

    const auto expanded = outcomes("<r uri='/sys' mr='net/System' op='get-all-oper-r'/>");
    EXPECT_TRUE(contains(expanded,
                         "r mr-op get-all-oper-r uri=/sys mr=System(ports mr-op "
                         "coll:get-all-oper uri=$_PARENT_URI_?ports mr=Ethernet "
                         "oper=up; ports mr-op coll:get-all-oper "
                         "uri=$_PARENT_URI_?ports mr=Optical)" +
                             words))
        << testing::PrintToString(expanded);
}

// A node without its address is there, and reads nothing; the error tells.
TEST_F(DtlParser, AddressesThatCannotBeHadAreReported) {
    const std::string words = "|10001 Failed to allocate DTL Node";
    const auto root = outcomes("<r uri='/sys' mr='net/Box'/>");
    EXPECT_TRUE(contains(root, "r mr-op get" + words)) << testing::PrintToString(root);
    // All properties of the resource or none: without them nothing is matched.
    const auto inner = outcomes("<r><b uri='/sys' mr='net/Box'><id/><slots/></b></r>");
    for (const char *outcome :
         {"b mr-op get(id container noop; slots container noop)",
          "b mr-op get uri=/sys mr=Box(id container noop; slots container noop)",
          "b mr-op get uri=/sys mr=Box cfg=id(id attr noop; slots child-ref coll:get)",
          "b mr-op get uri=/sys mr=Box cfg=id(id attr noop; slots child-ref coll:get mr=Slot)"})
        EXPECT_TRUE(contains(inner, "r root traverse(" + std::string(outcome) + ")" + words))
            << outcome << testing::PrintToString(inner);
}

// What a read by metadata leads to is there, or the error tells that something is missing.
TEST_F(DtlParser, AnExpansionWithoutMemoryIsReported) {
    const auto seen = outcomes("<r uri='/sys' mr='net/Slot' op='get-all-oper-r'/>");
    EXPECT_TRUE(contains(seen,
                         "r mr-op get-all-oper-r uri=/sys mr=Slot|10001 Failed to allocate "
                         "DTL Node"))
        << testing::PrintToString(seen);
}

TEST_F(DtlParser, ConditionsThatCannotBeHadAreDropped) {
    const std::string root = "r mr-op coll:get uri=/sys?boxes mr=Box";
    const auto seen = outcomes(
        "<r xmlns:dtl='urn:dtl' uri='/sys?boxes' mr='net/Box'><dtl:where><or><mtu>1</mtu>"
        "<id>2</id></or><mtu>3</mtu></dtl:where></r>");
    for (const char *outcome :
         {// The list of the element, and that of a group.
          "||Failed to allocate nvlist.", " where={mtu:3}||Failed to allocate nvlist.",
          // A name costs one condition, a buffer the rest of its list.
          " where={ OR :{id:2},mtu:3}||Failed to create name",
          " where={ OR :{mtu:1},mtu:3}||Failed to create name",
          " where={ OR :{mtu:1,id:2}}||Failed to create name",
          " where={ OR :{},mtu:3}||Failed to allocate strbuf.",
          " where={ OR :{mtu:1},mtu:3}||Failed to allocate strbuf.",
          " where={ OR :{mtu:1,id:2}}||Failed to allocate strbuf."})
        EXPECT_TRUE(contains(seen, root + outcome)) << outcome << testing::PrintToString(seen);
}

// Every element and every attribute that there is.
const char *const kEverything =
    "<r xmlns:dtl='urn:dtl'>"
    "<b uri='/sys?boxes' mr='net/Box' op='get' batch-size='5' max-batches='2' "
    "return-default='false' return-w-child='true' continue-on-error='true' attr-select='[]' "
    "return='one' order='a,b' flatten='true'>"
    "<dtl:where use-once='true'><or><mtu op='gt'>5</mtu><and><id op='in'>$i</id></and></or>"
    "<none>1</none><up>1</up><mtu>oops</mtu><id>\"x\"</id></dtl:where>"
    "<mtu order='desc'>6</mtu><id order='asc'>@i</id><x prop='cfg.speed' order='snmp' "
    "default='5'>7</x><up/><_uri/><_mr/><plain/>"
    "<slots op='get-all' mr='net/Slot' batch-size='$b' max-batches='$m' return='last'/>"
    "<link op='get-all-cfg'><mtu/></link><system op='get-all-oper'/><alarms mr='net/None'/>"
    "<ghost op='action'/></b>"
    "<g uri='/sys/boxes;id=1' mr='net/Box' op='get-all'><cfg/><stats/><nothing/></g>"
    "<c uri='/sys/boxes;id=1' mr='net/Box' op='get-all-cfg'><cfg/></c>"
    "<o uri='/sys/boxes;id=1' mr='net/Box' op='get-all-oper'><stats/></o>"
    "<a uri='/x?alarms' mr='net/Alarm' op='get-all'/>"
    "<p uri='/sys?ports' mr='net.lib/Port'/>"
    "<act uri='/sys?boxes' mr='net/Box' op='action'><reset><mode> \"fast\" </mode><n>$n</n>"
    "<k>oops</k></reset><explode/></act>"
    "<s uri='/sys' mr='net/Slot' op='get-all-r'/><t uri='/sys' mr='net/Slot' op='get-all-cfg-r'/>"
    "<u uri='/sys' mr='net/Slot' op='get-all-oper-r'/>"
    "<d uri='/d'/><e uri='/e' mr='net/None'/><f uri='/a//b'/>"
    "<n><n><n><n><n><n><n><n><n><n><n><n><n><n><n><n/></n></n></n></n></n></n></n></n></n></n></n>"
    "</n></n></n></n></r>";

TEST(DtlParserMemory, RunningOutLosesNothing) {
    sweep_oom(
        [] {
            ORUDoError *raised = nullptr;
            const Tree tree(oru_dtl_from_str(kEverything, &raised));
            const Error error(raised);
            EXPECT_TRUE(tree != nullptr || oom_hit());
            // What is wrong with a document is told even so, but by a call that lacks memory.
            EXPECT_TRUE(error != nullptr || oom_hit());
        },
        {}, [] { oru_md_load_dir(ORU_TEST_PACKAGES, "", ".oru2d", nullptr); });
}

}  // namespace
