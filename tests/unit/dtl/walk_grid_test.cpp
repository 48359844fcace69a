// Every kind of document with every kind of count: the calls and trees of the plain walk.
#include "tests/unit/dtl/plain_check.h"

namespace {

using namespace oru::test;

constexpr int32_t kGet = ORU_DTL_OP_GET;
constexpr int32_t kRows = ORU_DTL_OP_COLL_GET;

DocNode inner(std::string name, std::vector<DocNode> children = {}) {
    std::string uri = "$_PARENT_URI_?" + name + "s";
    return resource(std::move(name), kRows, std::move(uri), std::move(children));
}

DocNode outer(std::string name, std::vector<DocNode> children = {}) {
    std::string uri = "/sys?" + name + "s";
    return resource(std::move(name), kRows, std::move(uri), std::move(children));
}

DocNode single(std::string name, std::string uri) {
    DocNode node = resource(std::move(name), kGet, std::move(uri));
    return ask(node, "k");
}

DocNode action(std::string name, int32_t op, std::string uri) {
    DocNode node = resource(std::move(name), op, std::move(uri));
    node.act_name = "reset";
    node.act_in = {{"p", "$id"}};
    return node;
}

// The children of a document whose parts are known by these names.
struct Shape {
    const char *name;
    std::vector<DocNode> children;
};

const std::vector<Shape> &shapes() {
    static const std::vector<Shape> all{
        {"flat", {outer("a")}},
        {"two deep", {outer("a", {inner("b")})}},
        {"three deep", {outer("a", {inner("b", {inner("c")})})}},
        {"siblings", {outer("a"), outer("b")}},
        {"siblings in a container", {container("r", {outer("a"), outer("b"), outer("c")})}},
        {"siblings in rows", {outer("a", {inner("b"), inner("c")})}},
        {"rows behind rows in rows", {outer("a", {inner("b", {inner("c")}), inner("d")})}},
        {"single reads in rows", {outer("a", {single("x", "$_PARENT_URI_/x"), inner("b")})}},
        {"a single read in front", {single("x", "/r/x"), outer("a", {inner("b")})}},
        {"a single read behind", {outer("a", {inner("b")}), single("x", "/r/x")}},
        {"a container in rows", {outer("a", {container("q", {inner("b")})})}},
        {"an empty container in rows", {outer("a", {container("q", {}), inner("b")})}},
        {"actions in rows", {outer("a", {action("act", ORU_DTL_OP_ACTION, "@_uri")})}},
        {"actions on rows", {action("act", ORU_DTL_OP_COLL_ACTION, "/sys?as"), outer("b")}},
        {"actions on rows of rows",
         {outer("a", {action("act", ORU_DTL_OP_COLL_ACTION, "$_PARENT_URI_?bs"), inner("c")})}},
        {"a list of resources", {single("x", "$list"), outer("a")}},
        {"a list of collections", {resource("x", kGet, "$lists", {inner("b")}), outer("a")}},
    };
    return all;
}

struct Setting {
    const char *name;
    void (*apply)(DocNode &node);
};

void ask_for_peer(DocNode &node) {
    node.cfg.emplace_back("pr");
    DocNode peer = single("pr", "$_PEER_URI_pr");
    peer.type = ORU_DTL_NODE_PEER_REF;
    node.children.push_back(peer);
}

constexpr Setting kSettings[] = {
    {"none", [](DocNode &) {}},
    {"batch 1", [](DocNode &node) { node.batch_size = 1; }},
    {"batch 2", [](DocNode &node) { node.batch_size = 2; }},
    {"return one", [](DocNode &node) { node.return_mode = ORU_DTL_RETURN_ONE; }},
    {"return one, batch 1",
     [](DocNode &node) {
         node.return_mode = ORU_DTL_RETURN_ONE;
         node.batch_size = 1;
     }},
    {"return last", [](DocNode &node) { node.return_mode = ORU_DTL_RETURN_LAST; }},
    {"return last, batch 1",
     [](DocNode &node) {
         node.return_mode = ORU_DTL_RETURN_LAST;
         node.batch_size = 1;
     }},
    {"with children", [](DocNode &node) { node.return_w_child = true; }},
    {"with children, batch 1",
     [](DocNode &node) {
         node.return_w_child = true;
         node.batch_size = 1;
     }},
    {"one batch", [](DocNode &node) { node.max_batches = 1; }},
    {"two batches, batch 1",
     [](DocNode &node) {
         node.max_batches = 2;
         node.batch_size = 1;
     }},
    {"continue on error", [](DocNode &node) { node.continue_on_error = true; }},
    {"flatten", [](DocNode &node) { node.flatten = true; }},
    {"where",
     [](DocNode &node) {
         node.where = {{"k >=", FakeValue("$n")}};
     }},
    {"where once",
     [](DocNode &node) {
         node.where = {{"k >=", 1}};
         node.where_once = true;
     }},
    {"defaults",
     [](DocNode &node) {
         ask(node, "k", false, "@(../k)-x");
         ask(node, "none", false, "7");
         ask(node, "_dtlChildIndex");
     }},
    {"operational attributes", [](DocNode &node) { ask(node, "o", true); }},
    {"operational rows", [](DocNode &node) { node.meta = DocNode::Meta::oper; }},
    {"known rows", [](DocNode &node) { node.meta = DocNode::Meta::config; }},
    {"peers", ask_for_peer},
    {"an error", [](DocNode &node) { node.error = 102; }},
};

// The shape with a setting on its nth node that has an address; false behind the last.
bool apply_to(std::vector<DocNode> &nodes, const Setting &setting, int &n) {
    for (DocNode &node : nodes) {
        if (node.addressed && n-- == 0) {
            setting.apply(node);
            return true;
        }
        if (apply_to(node.children, setting, n))
            return true;
    }
    return false;
}

const Params kParams{{"id", "7"},
                     {"n", 2},
                     {"list", std::vector<UriText>{{"/r/l1"}, {"/r/l2"}}},
                     {"lists", std::vector<UriText>{{"/sys?xx"}, {"/sys?yy"}}}};

bool check(const DocNode &doc, int32_t count, uint32_t variant) {
    SCOPED_TRACE("count " + std::to_string(count) + ", variant " + std::to_string(variant));
    FakeSystem system;
    system.answer = {{"done", 1}};
    system.late_end = variant == 1;
    system.batch = variant == 2 ? 2 : 0;
    Population population{.seed = 7 + variant, .most_rows = 3, .failing = variant == 3};
    populate(system, population);
    return check_walk(doc, system, kParams, [count] { return count; });
}

bool check_setting(const Shape &shape, const Setting &setting) {
    for (int place = 0;; ++place) {
        DocNode doc{.name = ""};
        doc.children = shape.children;
        int n = place;
        if (!apply_to(doc.children, setting, n))
            return true;
        for (const int32_t count : {-1, 0, 1, 2, 5, 1000}) {
            // One back end that answers as most do, and one that does not.
            const uint32_t other = 1 + static_cast<uint32_t>(place + count + 3) % 3;
            if (!check(doc, count, 0) || !check(doc, count, other))
                return false;
        }
    }
}

TEST(DtlWalkGrid, EveryDocumentWithEveryCount) {
    for (const Shape &shape : shapes()) {
        for (const Setting &setting : kSettings) {
            SCOPED_TRACE(std::string(shape.name) + ", " + setting.name);
            if (!check_setting(shape, setting))
                return;
        }
    }
}

// ---- However a result is cut ----

Population rows_for(uint32_t seed) {
    return {.seed = seed, .most_rows = 4};
}

std::vector<std::string> leaves(const DocNode &doc, uint32_t seed, size_t depth,
                                const std::function<int32_t()> &count) {
    FakeSystem system;
    system.late_end = seed % 3 == 0;
    Population population = rows_for(seed);
    populate(system, population);
    std::vector<std::string> rows = delivered(doc, system, {}, count);
    // Rows of the outer collection have one key, those of the inner one two.
    std::erase_if(rows, [depth](const std::string &row) {
        return static_cast<size_t>(std::count(row.begin(), row.end(), ';')) != depth;
    });
    return rows;
}

void expect_same_rows(const DocNode &doc, size_t depth) {
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto all = leaves(doc, seed, depth, [] { return 0; });
        EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
        for (const int32_t count : {-1, 1, 2, 3, 4, 5, 7, 1000})
            EXPECT_EQ(leaves(doc, seed, depth, [count] { return count; }), all) << count;
        uint32_t call = seed;
        EXPECT_EQ(leaves(doc, seed, depth,
                         [&call] {
                             constexpr int32_t kCounts[] = {1, 4, 3, 2, 1, 5};
                             return kCounts[call++ % std::size(kCounts)];
                         }),
                  all);
    }
}

TEST(DtlWalkGrid, EveryRowOfACollectionComesOnce) {
    for (const int32_t batch : {0, 1, 2, 3}) {
        DocNode doc{.name = ""};
        doc.children = {outer("a")};
        doc.children[0].batch_size = batch;
        expect_same_rows(doc, 1);
    }
}

TEST(DtlWalkGrid, EveryRowInsideOfRowsComesOnce) {
    for (const int32_t outer_batch : {0, 1, 2}) {
        for (const int32_t inner_batch : {0, 1, 3}) {
            DocNode doc{.name = ""};
            doc.children = {outer("a", {inner("b")})};
            doc.children[0].batch_size = outer_batch;
            doc.children[0].children[0].batch_size = inner_batch;
            expect_same_rows(doc, 2);
        }
    }
}

}  // namespace
