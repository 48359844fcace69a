#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "oru/md_lookup.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/parser_support.h"

namespace {

using namespace oru::test;

const std::string kBoxes = "b mr-op coll:get uri=/sys?boxes mr=Box";
const std::string kBox = "b mr-op get uri=/sys/boxes;id=1 mr=Box";

// ---- Entries ----

TEST_F(DtlParser, NullIsRefusedByName) {
    ORUDoError *raised = nullptr;
    EXPECT_ASSERTION(oru_dtl_from_str(nullptr, &raised), "dtl_str");
    EXPECT_ASSERTION(oru_dtl_from_str("<a/>", nullptr), "errp");
    EXPECT_ASSERTION(oru_dtl_from_file(nullptr, &raised), "dtl_filename");
    EXPECT_ASSERTION(oru_dtl_from_file("x", nullptr), "errp");
}

TEST_F(DtlParser, ATextThatIsNoXmlIsRefused) {
    for (const char *text :
         {"", "oops", "<a>", "<a></b>", "<a/><b/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>",
          "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"}) {
        ORUDoError *raised = nullptr;
        TraceCapture traces;
        EXPECT_EQ(oru_dtl_from_str(text, &raised), nullptr) << text;
        ASSERT_NE(raised, nullptr);
        EXPECT_EQ(words_of(raised), "10001 new_dtl_iter: Failed to parse DTL file");
        EXPECT_TRUE(traces.lines().empty());
        oru_do_error_deref(raised);
    }
}

TEST_F(DtlParser, AFileThatIsNotThereIsRefused) {
    ORUDoError *raised = nullptr;
    TraceCapture traces;
    EXPECT_EQ(oru_dtl_from_file("/nowhere/x.dtl", &raised), nullptr);
    EXPECT_EQ(words_of(raised), "10001 new_dtl_iter: Failed to open DTL file");
    EXPECT_TRUE(
        traces.has(3, "Failed to open DTL file '/nowhere/x.dtl': No such file or directory"));
    oru_do_error_deref(raised);
}

class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string &text) {
        char name[] = "/tmp/oru_dtl_XXXXXX";
        close(mkstemp(name));
        path = name;
        std::ofstream(path) << text;
    }
    ~TemporaryFile() { std::remove(path.c_str()); }
    std::string path;
};

TEST_F(DtlParser, AFileIsReadAsATextIs) {
    const TemporaryFile file("<?xml version='1.0'?><r>" + box("<mtu/>") + "</r>");
    ORUDoError *raised = nullptr;
    const Tree read(oru_dtl_from_file(file.path.c_str(), &raised));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(raised, nullptr);
    EXPECT_EQ(describe(read.get()),
              " doc traverse(r root traverse(" + kBox + " cfg=mtu(mtu attr noop)))");
}

TEST_F(DtlParser, AFileThatIsNoXmlIsRefused) {
    const TemporaryFile file("<r>");
    ORUDoError *raised = nullptr;
    TraceCapture traces;
    EXPECT_EQ(oru_dtl_from_file(file.path.c_str(), &raised), nullptr);
    EXPECT_EQ(words_of(raised), "10001 new_dtl_iter: Failed to read DTL file");
    EXPECT_TRUE(traces.has(3, "Failed to read DTL file " + file.path));
    oru_do_error_deref(raised);
}

TEST_F(DtlParser, TheTreeIsTracedAtTheLowestLevel) {
    TraceCapture traces(8);
    parse("<r><x/></r>");
    EXPECT_TRUE(traces.has(8,
                           "<r op=\"traverse\" type=\"root\"><x op=\"traverse\" "
                           "type=\"container\"></x></r>"));
}

// ---- The root ----

TEST_F(DtlParser, ARootMayHaveAnAddress) {
    EXPECT_EQ(describe(parse("<r uri='/sys?boxes' mr='net:1.0/Box'><mtu/></r>")),
              "r mr-op coll:get uri=/sys?boxes mr=Box cfg=mtu(mtu attr noop)");
    EXPECT_EQ(error, nullptr);
}

TEST_F(DtlParser, ARootWithoutItsResourceKeepsTheError) {
    TraceCapture traces;
    EXPECT_EQ(describe(parse("<r uri='/sys?boxes' op='get-all' mr='net/None' batch-size='5'/>")),
              "r mr-op coll:get-all !102 Unknown MR: net/None\n");
    EXPECT_EQ(tree->first_child->batch_size, 5);
    EXPECT_EQ(error, nullptr);
    EXPECT_TRUE(traces.has(3, "<r> Unknown MR net/None"));
    EXPECT_EQ(describe(parse("<r uri='/sys'/>")),
              "r mr-op get !102 MR node requires 'mr' attribute in the DTL node");
    EXPECT_TRUE(traces.has(3, "<r> Missing MR type name"));
}

TEST_F(DtlParser, ARootWithABrokenAddressHasNone) {
    EXPECT_EQ(describe(parse("<r uri='/a//b' mr='net/Box'/>")), "r root traverse");
}

// ---- Elements with an address ----

TEST_F(DtlParser, WordsGiveOperations) {
    struct Case {
        const char *word;
        int32_t plain;
        int32_t coll;
    };
    for (const auto &[word, plain, coll] :
         {Case{nullptr, 2, 10}, Case{"get", 2, 10}, Case{"get-all", 3, 11},
          Case{"get-all-cfg", 4, 12}, Case{"get-all-oper", 5, 13}, Case{"get-all-r", 6, 14},
          Case{"get-all-cfg-r", 7, 15}, Case{"get-all-oper-r", 8, 16}, Case{"action", 9, 17},
          Case{"frob", 2, 2}, Case{"", 2, 2}, Case{"GET", 2, 2}}) {
        const std::string op = word != nullptr ? std::string("op='") + word + "'" : "";
        EXPECT_EQ(parse("<r uri='/sys' mr='net/Slot' " + op + "/>")->op, plain) << op;
        EXPECT_EQ(parse("<r uri='/sys?slots' mr='net/Slot' " + op + "/>")->op, coll) << op;
    }
}

TEST_F(DtlParser, NumbersAndTheirParameters) {
    struct Case {
        const char *text;
        int32_t batch_size;
        int32_t max_batches;
        bool param;
    };
    for (const auto &[text, size, most, is_param] :
         {Case{"10", 10, 10, false}, Case{"0", 0, 0, false}, Case{"x", 0, 0, false},
          Case{"-1", 0, 0, false}, Case{"7x", 7, 7, false}, Case{"$n", 0, 0, true},
          Case{"99999999999", INT32_MAX, INT32_MAX, false}}) {
        const std::string number(text);
        ORUDtlNode *root = parse("<r uri='/sys' mr='net/Slot' batch-size='" + number +
                                 "' max-batches='" + number + "'/>");
        EXPECT_EQ(root->batch_size, size) << text;
        EXPECT_EQ(root->max_batches, most) << text;
        EXPECT_EQ(oru_dtl_tree_get_batch_size_param(root) != nullptr, is_param);
        EXPECT_EQ(oru_dtl_tree_get_max_batches_param(root) != nullptr, is_param);
    }
}

TEST_F(DtlParser, SettingsHaveOneWordEach) {
    ORUDtlMrInfo *info =
        parse(
            "<r uri='/sys' mr='net/Slot' return-default='false' return-w-child='true' "
            "continue-on-error='true' attr-select='$s' return='one' order='a,b' flatten='true'/>")
            ->mr_info;
    EXPECT_EQ(info->return_default, 0);
    EXPECT_EQ(info->return_w_child, 1);
    EXPECT_EQ(info->continue_on_error, 1);
    EXPECT_STREQ(oru_do_name_get_strname(info->attr_select), "$s");
    EXPECT_EQ(info->return_mode, ORU_DTL_RETURN_ONE);
    EXPECT_STREQ(info->order_param, "a,b");
    EXPECT_EQ(info->flatten, 1);
    info = parse(
               "<r uri='/sys' mr='net/Slot' return-default='no' return-w-child='yes' "
               "continue-on-error='1' return='two' flatten='yes'/>")
               ->mr_info;
    EXPECT_EQ(info->return_default, 1);
    EXPECT_EQ(info->return_w_child, 0);
    EXPECT_EQ(info->continue_on_error, 0);
    EXPECT_EQ(info->attr_select, nullptr);
    EXPECT_EQ(info->return_mode, ORU_DTL_RETURN_ALL);
    EXPECT_EQ(info->order_param, nullptr);
    EXPECT_EQ(info->flatten, 0);
    EXPECT_EQ(parse("<r uri='/sys' mr='net/Slot' return='last'/>")->mr_info->return_mode,
              ORU_DTL_RETURN_LAST);
}

TEST_F(DtlParser, AddressesMayHoldVariables) {
    EXPECT_EQ(below("<a uri='/sys/boxes;id=$i/slots;no=@no' mr='net/Slot'/>"
                    "<a uri='/b;k=%24x' mr='net/Box'/><a uri='$u' mr='net/Box'/>"
                    "<a uri='@(../_uri)' mr='net/Box'/>"),
              "a mr-op get uri=/sys/boxes;id=$i/slots;no=@no mr=Slot; "
              "a mr-op get uri=/b;k=%24x mr=Box; a mr-op get uri=$u mr=Box; "
              "a mr-op get uri=@(../_uri) mr=Box");
}

TEST_F(DtlParser, AnElementWhoseAddressIsBrokenIsLeftOut) {
    EXPECT_EQ(below("<a uri='/a//b' mr='net/Box'/><c/>"), "c container traverse");
    EXPECT_EQ(error, nullptr);
}

// An address that has no room is a fault of whoever writes it, wherever it is read.
TEST_F(DtlParser, AnAddressWithoutRoomEndsTheProcess) {
    const auto read = [](const std::string &address) {
        ORUDoError *raised = nullptr;
        const std::string text = "<r><a uri='" + address + "' mr='net/Box'/></r>";
        oru_dtl_tree_delete(oru_dtl_from_str(text.c_str(), &raised));
    };
    const std::string name = "/" + std::string(64, 'n');
    EXPECT_FATAL(read(name), "Not enough room for ref-name 64 64 " + name);
    const std::string eleven = "/a/b/c/d/e/f/g/h/i/j/k";
    EXPECT_FATAL(read(eleven),
                 "Insufficient URI MAX segments: '" + eleven + "'Increase URI_MAX_SEGMENTS 11/10");
    read(name.substr(0, 64));
    read(eleven.substr(0, 20));
}

TEST_F(DtlParser, AnElementWithoutItsResourceShowsAnError) {
    EXPECT_EQ(below("<a uri='/a' mr='net/None'><c/></a><d uri='/d'/>"),
              "a container traverse !102 Unknown MR: net/None\n(c container traverse); d container "
              "traverse !102 MR node requires 'mr' attribute in the DTL node");
    EXPECT_EQ(error, nullptr);
}

// Such an element is not taken for a property, and stays.
TEST_F(DtlParser, AnErrorIsNotMatched) {
    EXPECT_EQ(below(box("<mtu uri='/x' mr='net/None'/>")),
              kBox + "(mtu container traverse !102 Unknown MR: net/None\n)");
}

TEST_F(DtlParser, ALibraryResourceStandsForItsImplementations) {
    EXPECT_EQ(below("<p uri='/sys?ports' mr='net.lib/Port' batch-size='3'/>"),
              "p mr-op coll:get uri=/sys?ports mr=Ethernet; "
              "p mr-op coll:get uri=/sys?ports mr=Optical");
    EXPECT_EQ(tree->first_child->first_child->next->batch_size, 3);
    EXPECT_EQ(below("<p uri='/sys?:net.lib/Port' mr='net.lib/Port'/>"),
              "p mr-op coll:get uri=/sys?:net.lib/Port mr=Port");
    EXPECT_EQ(below("<p uri='/sys?ports' mr='net.lib/Lonely'/>"), "r root traverse");
}

// ---- Attributes ----

TEST_F(DtlParser, AttributesGoIntoTheListsOfTheirKind) {
    EXPECT_EQ(below(box("<id/><mtu/><up/><cfg.speed/><_uri/><_mr/>")),
              kBox +
                  " cfg=id,mtu,cfg.speed,_uri,_mr oper=up(id attr noop; mtu attr noop; up "
                  "oper-attr noop; cfg.speed attr noop; _uri attr noop; _mr attr noop)");
}

TEST_F(DtlParser, AttributesOfOperationalResourcesAreAllOperational) {
    EXPECT_EQ(below("<a uri='/x?alarms' mr='net/Alarm'><id/><text/><since/><_uri/></a>"),
              "a mr-op coll:get uri=/x?alarms mr=Alarm oper=id,text,since,_uri(id oper-attr noop; "
              "text attr noop; since oper-attr noop; _uri oper-attr noop)");
}

TEST_F(DtlParser, APropertyMayHaveAnotherName) {
    EXPECT_EQ(below(box("<shown prop='mtu' default='5'/>")), kBox + " cfg=mtu(shown attr noop)");
    ORUDtlNode *shown = tree->first_child->first_child->first_child;
    EXPECT_STREQ(oru_do_name_get_strname(shown->prop_name), "mtu");
    EXPECT_STREQ(shown->default_expr, "5\n");
}

TEST_F(DtlParser, WhatIsNoPropertyProducesNothing) {
    TraceCapture traces;
    EXPECT_EQ(below(box("<none default='$x'/><full><inner/></full>")),
              kBox + "(none container noop; full container traverse(inner container traverse))");
    EXPECT_TRUE(traces.has(7, "<none> not-a-property"));
    EXPECT_STREQ(tree->first_child->first_child->first_child->default_expr, "$x");
}

TEST_F(DtlParser, ANamedReadWithoutElementsReadsNothing) {
    EXPECT_EQ(below(box("")), kBox);
}

TEST_F(DtlParser, WideReadsWithoutElementsReadAllOfTheirKind) {
    EXPECT_EQ(below(box("", "get-all")),
              "b mr-op get-all uri=/sys/boxes;id=1 mr=Box "
              "cfg=mtu,cfg.speed oper=up,stats.rx");
    EXPECT_EQ(below(box("", "get-all-cfg")),
              "b mr-op get-all-cfg uri=/sys/boxes;id=1 mr=Box cfg=mtu,cfg.speed");
    EXPECT_EQ(below(box("<dtl:where/>", "get-all-oper")),
              "b mr-op get-all-oper uri=/sys/boxes;id=1 mr=Box oper=up,stats.rx where={}");
    EXPECT_EQ(below("<a uri='/x?alarms' mr='net/Alarm' op='get-all'/>"),
              "a mr-op coll:get-all uri=/x?alarms mr=Alarm oper=text,since");
    EXPECT_EQ(below(box("<mtu/>", "get-all")),
              "b mr-op get-all uri=/sys/boxes;id=1 mr=Box cfg=mtu(mtu attr noop)");
    // An element that makes no node counts.
    EXPECT_EQ(below(box("<x uri='/a//b'/>", "get-all")),
              "b mr-op get-all uri=/sys/boxes;id=1 mr=Box");
}

TEST_F(DtlParser, GroupsAreMatchedByTheWidthOfTheRead) {
    const std::string all = "b mr-op get-all uri=/sys/boxes;id=1 mr=Box";
    EXPECT_EQ(below(box("<cfg/><stats/><none/>", "get-all")),
              all +
                  " cfg=cfg.speed oper=stats.rx cfg-data=cfg oper-data=stats(cfg cfg-data noop; "
                  "stats oper-data noop; none oper-data noop)");
    EXPECT_EQ(below(box("<cfg/><stats/>", "get-all-cfg")),
              "b mr-op get-all-cfg uri=/sys/boxes;id=1 mr=Box cfg=cfg.speed cfg-data=cfg(cfg "
              "cfg-data noop; stats cfg-data noop)");
    EXPECT_EQ(below(box("<cfg/><stats/>", "get-all-oper")),
              "b mr-op get-all-oper uri=/sys/boxes;id=1 mr=Box oper=stats.rx oper-data=stats(cfg "
              "oper-data noop; stats oper-data noop)");
    EXPECT_EQ(below(box("<cfg/>")), kBox + "(cfg container noop)");
}

// A property that stands in no package, added to a resource of the model.
void add_property(const char *mr, const Prop &prop) {
    const MrMeta made = make_mr("Maker", {prop});
    oru_do_mr_meta_add_prop_meta(oru_md_get_mr_meta_by_name(mr)->do_mr_meta,
                                 oru_do_mr_meta_get_prop_meta_str(made.get(), prop.name));
}

TEST_F(DtlParser, APropertyOfNoKnownKindIsAContainer) {
    add_property("net/Box", {"odd", 4});
    EXPECT_EQ(below(box("<odd default='5'/><x prop='odd'><y/></x>")),
              kBox + "(odd container noop; x container traverse(y container traverse))");
    EXPECT_STREQ(tree->first_child->first_child->first_child->default_expr, "5\n");
}

// ---- References ----

TEST_F(DtlParser, ReferencesGetTheirAddressByRole) {
    EXPECT_EQ(below(box("<slots><no/></slots><link/><system/><alarms op='get-all'/>")),
              kBox +
                  " cfg=link(slots child-ref coll:get uri=$_PARENT_URI_?slots mr=Slot cfg=no(no "
                  "attr noop); link peer-ref get uri=$_PEER_URI_link mr=Box; system parent-ref "
                  "get uri=$_URI_PARENT_system mr=System; alarms child-ref coll:get-all "
                  "uri=$_PARENT_URI_?alarms mr=Alarm oper=text,since)");
}

TEST_F(DtlParser, APeerOfAnOperationalResourceIsReadOperationally) {
    EXPECT_EQ(below("<a uri='/x?alarms' mr='net/Alarm'><source op='action'/></a>"),
              "a mr-op coll:get uri=/x?alarms mr=Alarm oper=source(source peer-ref action "
              "uri=$_PEER_URI_source mr=Box)");
}

TEST_F(DtlParser, ReferencesTakeThePlainWordsOnly) {
    struct Case {
        const char *word;
        const char *child;
        const char *peer;
    };
    for (const auto &[word, child, peer] :
         {Case{"get", "coll:get", "get"}, Case{"get-all", "coll:get-all", "get-all"},
          Case{"get-all-cfg", "coll:get-all-cfg", "get-all-cfg"},
          Case{"get-all-oper", "coll:get-all-oper", "get-all-oper"},
          Case{"action", "coll:action", "action"}, Case{"get-all-r", "noop", "noop"},
          Case{"get-all-cfg-r", "noop", "noop"}, Case{"frob", "noop", "noop"}}) {
        const std::string op = std::string(" op='") + word + "'";
        below(box("<slots" + op + "/><link" + op + "/>"));
        const ORUDtlNode *slots = tree->first_child->first_child->first_child;
        EXPECT_STREQ(oru_dtl_tree_get_op_str(slots->op), child) << word;
        EXPECT_STREQ(oru_dtl_tree_get_op_str(slots->next->op), peer) << word;
    }
}

TEST_F(DtlParser, AReferenceMayNameItsTarget) {
    TraceCapture traces;
    EXPECT_EQ(below(box("<ghost/><slots mr='net/Alarm' batch-size='4'/><alarms mr='net/None'/>")),
              kBox +
                  "(ghost child-ref coll:get uri=$_PARENT_URI_?ghost; slots child-ref coll:get "
                  "uri=$_PARENT_URI_?slots mr=Alarm; alarms child-ref coll:get "
                  "uri=$_PARENT_URI_?alarms !102 Unknown MR: net/None\n)");
    EXPECT_EQ(tree->first_child->first_child->first_child->next->batch_size, 4);
    EXPECT_TRUE(traces.has(3, "<alarms> Unknown MR net/None"));
}

TEST_F(DtlParser, AReferenceIsReadAsAnAddressIs) {
    EXPECT_EQ(below(boxes("<slots default='5' return='last' order='asc' flatten='true' "
                          "max-batches='2' return-default='false'/>")),
              kBoxes + "(slots child-ref coll:get uri=$_PARENT_URI_?slots mr=Slot)");
    const ORUDtlNode *slots = tree->first_child->first_child->first_child;
    EXPECT_EQ(slots->default_expr, nullptr);
    EXPECT_EQ(slots->max_batches, 2);
    EXPECT_EQ(slots->mr_info->return_mode, ORU_DTL_RETURN_LAST);
    EXPECT_STREQ(slots->mr_info->order_param, "asc");
    EXPECT_EQ(slots->mr_info->flatten, 1);
    EXPECT_EQ(slots->mr_info->return_default, 0);
}

// A role below that of a parent is one of children; beyond peers there is no address.
TEST_F(DtlParser, ReferencesOfOtherRoles) {
    add_property("net/Box", {"loose", ORU_PROP_REF, ORU_REF_NONE, "net/Slot"});
    add_property("net/Box", {"strange", ORU_PROP_REF, ORU_REF_PEER + 1, "net/Slot"});
    EXPECT_EQ(below(box("<loose/><strange default='5'/><strange op='frob'/>")),
              kBox +
                  "(loose child-ref coll:get uri=$_PARENT_URI_?loose mr=Slot; strange container "
                  "get mr=Slot; strange container noop mr=Slot)");
    EXPECT_STREQ(tree->first_child->first_child->first_child->next->default_expr, "5\n");
}

TEST_F(DtlParser, AnyMatchTakesTheOtherName) {
    EXPECT_EQ(below(box("<c prop='slots'/><p prop='link'/><u prop='system'/><a prop='_uri'/>")),
              kBox +
                  " cfg=link,_uri(c child-ref coll:get uri=$_PARENT_URI_?slots mr=Slot; p peer-ref "
                  "get uri=$_PEER_URI_link mr=Box; u parent-ref get uri=$_URI_PARENT_system "
                  "mr=System; a attr noop)");
    EXPECT_EQ(below(box("<x prop='cfg'/><y prop='stats'/>", "get-all")),
              "b mr-op get-all uri=/sys/boxes;id=1 mr=Box cfg=cfg.speed oper=stats.rx cfg-data=cfg "
              "oper-data=stats(x cfg-data noop; y oper-data noop)");
}

// Reading goes on with the elements of a reference whose resource is not known.
TEST_F(DtlParser, AnUnknownTargetDoesNotEndTheReading) {
    EXPECT_EQ(below(box("<slots mr='net/None' return='one'><no/></slots><mtu/>")),
              kBox +
                  " cfg=mtu(slots child-ref coll:get uri=$_PARENT_URI_?slots !102 Unknown MR: "
                  "net/None\n(no container noop); mtu attr noop)");
    EXPECT_EQ(tree->first_child->first_child->first_child->mr_info->return_mode,
              ORU_DTL_RETURN_ONE);
    EXPECT_EQ(error, nullptr);
}

// ---- Expansion by metadata ----

TEST_F(DtlParser, ARecursiveReadIsExpandedOnceAType) {
    // Box is the second type on the way; below Slot it comes again and stays bare.
    EXPECT_EQ(below("<s uri='/sys' mr='net/Slot' op='get-all-cfg-r'><no/></s>"),
              "s mr-op get-all-cfg-r uri=/sys mr=Slot cfg=size(boxes mr-op coll:get-all-cfg "
              "uri=$_PARENT_URI_?boxes mr=Box cfg=mtu,cfg.speed(slots mr-op coll:get-all-cfg "
              "uri=$_PARENT_URI_?slots mr=Slot); ports mr-op coll:get-all-cfg "
              "uri=$_PARENT_URI_?ports mr=Ethernet cfg=mtu; ports mr-op coll:get-all-cfg "
              "uri=$_PARENT_URI_?ports mr=Optical cfg=mtu)");
}

TEST_F(DtlParser, RecursionOverAllTakesOperationalResourcesAlong) {
    const std::string text = below("<b uri='/x?boxes' mr='net/Box' op='get-all-r'/>");
    EXPECT_NE(text.find("alarms mr-op coll:get-all uri=$_PARENT_URI_?alarms mr=Alarm "
                        "oper=text,since"),
              std::string::npos);
    const std::string oper = below("<b uri='/x?boxes' mr='net/Box' op='get-all-oper-r'/>");
    EXPECT_EQ(oper.rfind("b mr-op coll:get-all-oper-r uri=/x?boxes mr=Box oper=up,stats.rx(slots "
                         "mr-op coll:get-all-oper ",
                         0),
              0u);
}

// ---- Conditions ----

TEST_F(DtlParser, ComparisonsHaveTheirWords) {
    struct Case {
        const char *op;
        const char *name;
    };
    for (const auto &[op, name] :
         {Case{nullptr, "mtu"}, Case{"eq", "mtu ="}, Case{"gt", "mtu >"}, Case{"ge", "mtu >="},
          Case{"lt", "mtu <"}, Case{"le", "mtu <="}, Case{"ne", "mtu <>"}, Case{"ex", "mtu ex"},
          Case{"nx", "mtu nx"}, Case{"gx", "mtu"}, Case{"lx", "mtu"}, Case{"in", "mtu in"},
          Case{"like", "mtu like"}, Case{"g", "mtu g"}, Case{"", "mtu "}, Case{"gtt", "mtu gtt"}}) {
        const std::string word = op != nullptr ? std::string(" op='") + op + "'" : "";
        EXPECT_EQ(below(boxes("<dtl:where><mtu" + word + ">5</mtu></dtl:where>")),
                  kBoxes + " where={" + name + ":5}");
    }
}

TEST_F(DtlParser, ConditionsNest) {
    EXPECT_EQ(below(boxes("<dtl:where use-once='true'><mtu>\"a\"</mtu><or><mtu op='gt'>$m</mtu>"
                          "<and><id>@x</id></and><or/></or></dtl:where>")),
              kBoxes + " where={mtu:'a', OR :{mtu >:'$m', AND :{id:'@x'}, OR :{}}}");
    EXPECT_EQ(tree->first_child->first_child->mr_info->use_where_clause_once, 1);
    below(boxes("<dtl:where use-once='yes'/>"));
    EXPECT_EQ(tree->first_child->first_child->mr_info->use_where_clause_once, 0);
}

TEST_F(DtlParser, ConditionsWithoutAValueAddNothing) {
    EXPECT_EQ(below(boxes("<dtl:where><mtu/><mtu>  </mtu><mtu>null</mtu></dtl:where>")),
              kBoxes + " where={mtu:null}");
}

TEST_F(DtlParser, TheRawTextOfAConditionIsWhatIsRead) {
    const std::string text = below(boxes("<dtl:where><mtu> $x</mtu></dtl:where>"));
    EXPECT_EQ(text.rfind(kBoxes + " where={} !7 ", 0), 0u) << text;
}

TEST_F(DtlParser, ConditionsOnOtherAttributesAreDropped) {
    TraceCapture traces;
    EXPECT_EQ(below(boxes("<dtl:where><none>1</none><mtu>2</mtu></dtl:where>")),
              kBoxes + " where={mtu:2} !106 Unknown attrib in where clause");
    EXPECT_TRUE(traces.has(3, "<b> Unknown attribute in where clause: none"));
    EXPECT_EQ(below(boxes("<dtl:where><up>1</up></dtl:where>")),
              kBoxes + " where={} !106 Oper-data attrib in where clause");
    EXPECT_TRUE(traces.has(3,
                           "<b> Non oper-data MR query where-clause contains oper-data attribute: "
                           "up. Only config-data attributes are allowed"));
    EXPECT_EQ(
        below("<a uri='/x?alarms' mr='net/Alarm'><dtl:where><since>1</since></dtl:where></a>"),
        "a mr-op coll:get uri=/x?alarms mr=Alarm where={since:1}");
}

TEST_F(DtlParser, AWhereElementOfAnotherNamespaceIsAnElement) {
    EXPECT_EQ(below("<where/>"), "where container traverse");
    EXPECT_EQ(below("<o:where xmlns:o='urn:dtl'/>"), "where container traverse");
    EXPECT_EQ(below("<where xmlns='urn:dtl'/>"), "where container traverse");
    EXPECT_EQ(describe(parse("<r><dtl:where/></r>")),
              "r root traverse(dtl:where container traverse)");
}

TEST_F(DtlParser, AnEmptyConditionIsCounted) {
    EXPECT_EQ(below(boxes("<dtl:where/><mtu/>")), kBoxes + " cfg=mtu where={}(mtu attr noop)");
    EXPECT_EQ(oru_dtl_tree_count_where_clause(tree.get()), 1);
}

// Nothing is known of the attributes there; without an address there is no place for the list.
TEST_F(DtlParser, ConditionsWithoutAResourceAreNotChecked) {
    TraceCapture traces;
    EXPECT_EQ(below("<n><dtl:where><any>1</any></dtl:where></n>"), "n container traverse");
    EXPECT_EQ(below(box("<ghost><dtl:where><any op='gt'>1</any></dtl:where></ghost>")),
              kBox + "(ghost child-ref coll:get uri=$_PARENT_URI_?ghost where={any >:1})");
    EXPECT_TRUE(traces.at(3).empty());
}

TEST_F(DtlParser, ReferencesAndTheRootHaveConditions) {
    EXPECT_EQ(
        below(box("<slots><dtl:where use-once='true'><no op='le'>@n</no></dtl:where>"
                  "</slots>")),
        kBox + "(slots child-ref coll:get uri=$_PARENT_URI_?slots mr=Slot where={no <=:'@n'})");
    EXPECT_EQ(tree->first_child->first_child->first_child->mr_info->use_where_clause_once, 1);
    EXPECT_EQ(describe(parse("<r xmlns:dtl='urn:dtl' uri='/sys?boxes' mr='net/Box'><dtl:where>"
                             "<mtu>1</mtu></dtl:where></r>")),
              "r mr-op coll:get uri=/sys?boxes mr=Box where={mtu:1}");
}

// ---- Attributes of collections: filters and order ----

TEST_F(DtlParser, TheTextOfAnAttributeFiltersItsCollection) {
    EXPECT_EQ(below(boxes("<mtu> 5 </mtu><id>$i</id>")),
              kBoxes + " cfg=mtu,id where={mtu:5,id:'$i'}(mtu attr noop; id attr noop)");
    EXPECT_EQ(below(box("<mtu>5</mtu>")), kBox + " cfg=mtu(mtu attr noop)");
    EXPECT_EQ(below(boxes("<up>true</up>")),
              kBoxes + " oper=up !106 Oper-data attrib in where clause(up oper-attr noop)");
}

TEST_F(DtlParser, AttributesGiveTheOrderOfTheirCollection) {
    EXPECT_EQ(below(boxes("<mtu order='asc'/><id order='desc'/><x prop='cfg.speed' order='snmp'/>"
                          "<mtu order='up'/>")),
              kBoxes +
                  " cfg=mtu,id,cfg.speed,mtu order=mtu,id desc,cfg.speed snmp(mtu attr noop; "
                  "id attr noop; x attr noop; mtu attr noop)");
    EXPECT_EQ(below(box("<mtu order='asc'/>")), kBox + " cfg=mtu(mtu attr noop)");
}

// By the name of the element, whatever property it reads.
TEST_F(DtlParser, FiltersAreCheckedAsConditionsAre) {
    TraceCapture traces;
    EXPECT_EQ(below(boxes("<size prop='mtu'>5</size>")),
              kBoxes + " cfg=mtu !106 Unknown attrib in where clause(size attr noop)");
    EXPECT_TRUE(traces.has(3, "<b> Unknown attribute in where clause: size"));
    EXPECT_EQ(below("<a uri='/x?alarms' mr='net/Alarm'><since>5</since></a>"),
              "a mr-op coll:get uri=/x?alarms mr=Alarm oper=since where={since:5}(since "
              "oper-attr noop)");
    const std::string broken = below(boxes("<mtu>oops</mtu><id>@(a)</id>"));
    EXPECT_EQ(broken.rfind(kBoxes + " cfg=mtu,id where={id:'@(a)'} !7 ", 0), 0u) << broken;
}

TEST_F(DtlParser, FiltersJoinTheConditions) {
    EXPECT_EQ(below(boxes("<dtl:where><mtu op='gt'>1</mtu></dtl:where><mtu>5</mtu>", "get-all")),
              "b mr-op coll:get-all uri=/sys?boxes mr=Box cfg=mtu where={mtu >:1,mtu:5}(mtu attr "
              "noop)");
}

TEST_F(DtlParser, OnlyElementsAreLookedAt) {
    EXPECT_EQ(below("text<!-- c --><?pi x?><a/><![CDATA[<b/>]]>"), "a container traverse");
    EXPECT_EQ(below(boxes("<mtu><![CDATA[5]]><!-- 6 --></mtu>")),
              kBoxes + " cfg=mtu where={mtu:5}(mtu attr noop)");
}

// ---- Actions ----

TEST_F(DtlParser, ActionsReadTheirParameters) {
    EXPECT_EQ(
        below(box("<reset><mode> \"fast\" </mode><n>$n</n><empty/><k>5</k></reset>", "action")),
        "b mr-op action uri=/sys/boxes;id=1 mr=Box act=reset{mode:'fast',n:'$n',k:5}(reset "
        "action noop(mode action-param noop; n action-param noop; empty action-param noop; k "
        "action-param noop))");
    EXPECT_EQ(error, nullptr);
}

TEST_F(DtlParser, ActionsOfCollectionsAreReadAlike) {
    EXPECT_EQ(below(boxes("<reset><n>$$</n></reset>", "action")),
              "b mr-op coll:action uri=/sys?boxes mr=Box act=reset{n:'$$'}(reset action noop(n "
              "action-param noop))");
    // The last action counts, and begins without parameters.
    EXPECT_EQ(below(boxes("<reset><n>1</n></reset><reset/>", "action")),
              "b mr-op coll:action uri=/sys?boxes mr=Box act=reset{}(reset action noop(n "
              "action-param noop); reset action noop)");
    // An attribute is no action, and its text no condition.
    EXPECT_EQ(below(boxes("<mtu>5</mtu>", "action")),
              "b mr-op coll:action uri=/sys?boxes mr=Box(mtu container traverse)");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(words_of(error.get()), "10000 Invalid action name");
}

TEST_F(DtlParser, ParametersDoNotKeepReferencesToTheTree) {
    const std::string text = below(box("<reset><mode>@x</mode></reset>", "action"));
    EXPECT_NE(text.find("act=reset{} !7 "), std::string::npos) << text;
}

TEST_F(DtlParser, AnUnknownActionIsAnErrorOfTheDocument) {
    TraceCapture traces;
    EXPECT_EQ(below(box("<explode/>", "action")),
              "b mr-op action uri=/sys/boxes;id=1 mr=Box(explode container traverse)");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(words_of(error.get()), "10000 Invalid action name");
    EXPECT_TRUE(traces.has(3, "Invalid action name explode"));
}

// ---- Depth ----

std::string nested(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<n>";
    for (int i = 0; i < depth; ++i)
        text += "</n>";
    return text;
}

TEST_F(DtlParser, FifteenLevelsAreRead) {
    const ORUDtlNode *node = parse("<r>" + nested(15) + "</r>");
    EXPECT_EQ(error, nullptr);
    int levels = 0;
    for (; node->first_child != nullptr; node = node->first_child)
        ++levels;
    EXPECT_EQ(levels, 15);
}

TEST_F(DtlParser, TheSixteenthIsNot) {
    const ORUDtlNode *node = parse("<r>" + nested(16) + "</r>");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(words_of(error.get()), "10000 Max Level Exceeded");
    int levels = 0;
    for (; node->first_child != nullptr; node = node->first_child)
        ++levels;
    EXPECT_EQ(levels, 15);
}

// A read by metadata does not look at the elements; one without elements needs no level.
TEST_F(DtlParser, OnlyAnElementIsTooDeep) {
    std::string text = "<b uri='/sys/boxes;id=1' mr='net/Box' op='get-all-cfg'/>";
    for (int i = 0; i < 14; ++i)
        text = "<n>" + text + "</n>";
    const ORUDtlNode *node = parse("<r>" + text + "</r>");
    EXPECT_EQ(error, nullptr);
    while (node->first_child != nullptr)
        node = node->first_child;
    EXPECT_EQ(describe(node), "b mr-op get-all-cfg uri=/sys/boxes;id=1 mr=Box cfg=mtu,cfg.speed");
}

TEST_F(DtlParser, AnElementWithoutItsResourceClearsTheErrorOfTheDocument) {
    parse("<r>" + nested(16) + "<d uri='/d'/></r>");
    EXPECT_EQ(error, nullptr);
    parse("<r><d uri='/d'/>" + nested(16) + "</r>");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(words_of(error.get()), "10000 Max Level Exceeded");
}

TEST_F(DtlParser, ReadingGoesOnBehindWhatIsTooDeep) {
    const ORUDtlNode *root = parse("<r>" + nested(16) + "<last/></r>");
    EXPECT_NE(error, nullptr);
    EXPECT_EQ(describe(root->first_child->next), "last container traverse");
}

}  // namespace
