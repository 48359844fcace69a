// Reading a document: its text read, checked against the sample model and freed, against the same
// text read and freed by libxml2 alone.
#include <libxml/parser.h>
#include <oru/dtl.h>
#include <oru/error.h>
#include <oru/md.h>

#include <cstdio>
#include <string>

#include "bench/ratios.h"

namespace {

// How many times as long as bare libxml2 a document may take.
constexpr double kBound = 3;

// Two collections, one in the other.
constexpr char kNested[] = R"(<slot uri="/chassis;id=1?slots" mr="com.example.network:1.0/Slot">
  <number/>
  <cardType/>
  <ports op="get">
    <name/>
    <adminState/>
  </ports>
</slot>)";

// What a page of a screen asks for: a hundred resources, with attributes, conditions and orders.
std::string page() {
    std::string text = R"(<page xmlns:dtl="urn:oru:dtl">)";
    for (int i = 0; i < 100; ++i)
        text += R"(
  <ports uri="/chassis;id=1/slots;number=)" +
                std::to_string(i) + R"(?ports" mr="com.example.network:1.0/Port" batch-size="50">
    <dtl:where><mtu op="ge">$mtu</mtu><or><speed op="gt">1000</speed></or></dtl:where>
    <name order="asc"/>
    <adminState/>
    <speed default="0"/>
    <operState/>
    <link><id/><cost/></link>
  </ports>)";
    return text + "\n</page>";
}

void read_by_us(benchmark::State &state, const std::string &text) {
    for (auto _ : state) {
        ORUDoError *error = nullptr;
        ORUDtlNode *tree = oru_dtl_from_str(text.c_str(), &error);
        if (tree == nullptr || error != nullptr || tree->first_child->error != nullptr)
            state.SkipWithError("the document is refused");
        oru_dtl_tree_delete(tree);
        oru_do_error_deref(error);
    }
}

void read_by_libxml2(benchmark::State &state, const std::string &text) {
    for (auto _ : state) {
        xmlDoc *document = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr,
                                         nullptr, XML_PARSE_NOERROR);
        if (document == nullptr)
            state.SkipWithError("the document is refused");
        xmlFreeDoc(document);
    }
}

void nested(benchmark::State &state) {
    read_by_us(state, kNested);
}

void nested_libxml2(benchmark::State &state) {
    read_by_libxml2(state, kNested);
}

void large(benchmark::State &state) {
    read_by_us(state, page());
}

void large_libxml2(benchmark::State &state) {
    read_by_libxml2(state, page());
}

}  // namespace

int main(int argc, char **argv) {
    if (oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr) != 0) {
        std::fprintf(stderr, "the model does not load\n");
        return 1;
    }
    oru::bench::compare("nested query/ours", nested);
    oru::bench::compare("nested query/libxml2", nested_libxml2);
    oru::bench::compare("page of 100 queries/ours", large);
    oru::bench::compare("page of 100 queries/libxml2", large_libxml2);
    for (const char *work : {"nested query", "page of 100 queries"})
        oru::bench::expect(work, "libxml2", oru::bench::at_most(kBound));
    return oru::bench::run_all(argc, argv);
}
