// Random documents over random tables: the walk makes the calls and trees of the plain one, and
// comes to an end.
#include <random>

#include "oru/dtree.h"
#include "oru/rc.h"
#include "tests/unit/dtl/plain_check.h"

namespace {

using namespace oru::test;

class Documents {
  public:
    explicit Documents(uint32_t seed) : random_(seed) {}

    uint32_t below(size_t n) { return static_cast<uint32_t>(random_() % n); }
    bool one_in(uint32_t n) { return below(n) == 0; }
    template <class Item>
    Item any_of(std::initializer_list<Item> items) {
        return items.begin()[below(items.size())];
    }

    DocNode document() {
        DocNode doc{.name = ""};
        add_children(doc, 0);
        return doc;
    }

  private:
    std::string new_name() { return {static_cast<char>('a' + names_++ % 26), 's'}; }

    void add_children(DocNode &node, int depth) {
        const uint32_t most = depth == 0 ? 3 : depth < 3 ? 3 - static_cast<uint32_t>(depth) / 2 : 0;
        const uint32_t count = most == 0 ? 0 : depth == 0 ? 1 + below(most) : below(most + 1);
        for (uint32_t i = 0; i < count; ++i)
            node.children.push_back(element(depth));
    }

    DocNode element(int depth) {
        if (one_in(7))
            return plain_element(depth);
        DocNode node = one_in(4) ? read(depth) : rows(depth);
        add_settings(node);
        if (node.op != ORU_DTL_OP_COLL_ACTION && node.op != ORU_DTL_OP_ACTION)
            add_attributes(node);
        add_children(node, depth + 1);
        return node;
    }

    DocNode plain_element(int depth) {
        DocNode node = container(new_name(), {});
        if (one_in(5))
            node.error = 102;
        if (one_in(8))
            node.op = ORU_DTL_OP_NOOP;
        add_children(node, depth + 1);
        return node;
    }

    DocNode read(int depth) {
        const std::string uri = any_of<const char *>(
            {"/r/x", "/r/x;k=$id", "$list", "$text", "$none", "$_PARENT_URI_/x", "@_uri", "@k"});
        const int32_t op =
            any_of<int32_t>({2, 2, 2, 3, 4, 5, 6, 7, 8, ORU_DTL_OP_ACTION, ORU_DTL_OP_ACTION});
        DocNode node = resource(new_name(), op, depth == 0 && one_in(2) ? "/r/y" : uri);
        if (op == ORU_DTL_OP_ACTION)
            add_action(node);
        return node;
    }

    DocNode rows(int depth) {
        const std::string ref = new_name();
        const std::string uri = depth > 0 && !one_in(6) ? "$_PARENT_URI_?" + ref : "/sys?" + ref;
        const int32_t op =
            any_of<int32_t>({10, 10, 10, 10, 10, 2, 11, 12, 13, 14, ORU_DTL_OP_COLL_ACTION});
        DocNode node = resource(ref, op, one_in(12) ? "$lists" : uri);
        if (op == ORU_DTL_OP_COLL_ACTION)
            add_action(node);
        if (one_in(4))
            node.meta = one_in(2) ? DocNode::Meta::oper : DocNode::Meta::config;
        return node;
    }

    void add_action(DocNode &node) {
        if (one_in(10))
            return;
        node.act_name = "reset";
        if (one_in(2))
            node.act_in = {{"a", "$id"}, {"b", "@k"}, {"c", 5}};
    }

    void add_settings(DocNode &node) {
        if (one_in(2))
            node.batch_size = any_of<int32_t>({1, 1, 2, 3});
        if (one_in(12))
            node.batch_size_param = any_of<const char *>({"$n", "$none", "$text"});
        if (one_in(8))
            node.max_batches = any_of<int32_t>({1, 2, 3});
        if (one_in(20))
            node.max_batches_param = any_of<const char *>({"$n", "$none", "$text"});
        if (one_in(5))
            node.return_mode = any_of<int32_t>({1, 1, 2});
        node.return_w_child = one_in(6);
        node.continue_on_error = one_in(3);
        node.flatten = one_in(8);
        node.return_default = !one_in(10);
        if (one_in(10))
            node.attr_select =
                any_of<const char *>({"[\"k\"]", "\"m\"", "[]", "5", "$sel", "oops"});
        if (one_in(10))
            node.order_param = any_of<const char *>({"k", "k,m", "k,", "$order", "$n", "$none"});
        if (one_in(10))
            node.order_by = {"m"};
        if (one_in(6)) {
            node.where = {{any_of<const char *>({"k >=", "k", "k $text", "k >", "m <="}),
                           any_of<FakeValue>({5, FakeValue("$n"), FakeValue("$nothing"), "x"})}};
            node.where_once = one_in(2);
        }
    }

    void add_attributes(DocNode &node) {
        for (const char *name : {"k", "m", "k >"}) {
            if (one_in(3))
                ask(node, name, false,
                    one_in(2) ? ""
                              : any_of<const char *>({"5", "\"x\"", "@k", "@(../m)", "@(./k)",
                                                      "@(../../k)-s", "$n", "$none"}));
        }
        if (one_in(4))
            ask(node, "o", true);
        if (one_in(8))
            node.children.push_back(
                {.name = "_dtlChildIndex", .type = ORU_DTL_NODE_ATTR, .op = ORU_DTL_OP_NOOP});
        if (one_in(6)) {
            node.cfg.emplace_back("pr");
            DocNode peer = resource("pr", one_in(4) ? 3 : 2, "$_PEER_URI_pr");
            peer.type = ORU_DTL_NODE_PEER_REF;
            add_settings(peer);
            ask(peer, "k");
            node.children.push_back(peer);
        }
        if (one_in(8)) {
            DocNode above = resource("up", 2, "$_URI_PARENT_up");
            above.type = ORU_DTL_NODE_PARENT_REF;
            ask(above, "k");
            node.children.push_back(above);
        }
    }

    std::mt19937 random_;
    uint32_t names_ = 0;
};

const Params kParams{{"id", "7"},
                     {"n", 2},
                     {"text", "/r/t"},
                     {"sel", "[\"k\",\"o\"]"},
                     {"order", "m,k"},
                     {"nothing", FakeValue()},
                     {"list", std::vector<UriText>{{"/r/l1"}, {"/r/l2"}}},
                     {"lists", std::vector<UriText>{{"/sys?xx"}, {"/sys?yy"}, {"/sys?zz"}}}};

// Set ORU_TEST_SEEDS for a longer run, ORU_TEST_FIRST_SEED for another.
uint32_t from_environment(const char *name, uint32_t otherwise) {
    const char *text = std::getenv(name);
    return text != nullptr ? static_cast<uint32_t>(std::stoul(text)) : otherwise;
}

// A back end of any kind, and how it is asked.
struct Scenario {
    explicit Scenario(uint32_t seed) : make(seed), doc(make.document()) {
        system.answer = {{"done", 1}};
        system.late_end = make.one_in(4);
        system.batch = make.one_in(4) ? 2 : 0;
        system.silent = make.one_in(8);
        system.without_uri = make.one_in(40);
        if (make.one_in(10))
            system.most_values = 2;
        if (make.one_in(40))
            system.failures["next"] = 105;
        population = {.seed = seed, .most_rows = 3, .failing = make.one_in(3)};
        populate(system, population);
        varied = make.one_in(3);
        fixed = make.any_of<int32_t>({-1, -1, 0, 1, 1, 2, 2, 3, 5, 1000, -2});
    }
    int32_t count() { return varied ? make.any_of<int32_t>({-1, 0, 1, 2, 5, 1000, -2}) : fixed; }

    Documents make;
    DocNode doc;
    FakeSystem system;
    Population population;
    bool varied = false;
    int32_t fixed = 0;
};

bool check_seed(uint32_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scenario scenario(seed);
    return check_walk(scenario.doc, scenario.system, kParams, [&] { return scenario.count(); });
}

// The owner of the results clears them, or a part of them, as it likes.
void clear_some(ORUDoDtree *root, Documents &make) {
    ORUDoDtree *node = root;
    while (node != nullptr && oru_do_dtree_get_child_count(node) > 0 && !make.one_in(3))
        node = oru_do_dtree_get_child(node, static_cast<int32_t>(make.below(static_cast<size_t>(
                                                oru_do_dtree_get_child_count(node)))));
    oru_do_dtree_remove_children(node);
}

bool check_cleared(uint32_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scenario scenario(seed);
    LibraryWalk walk(scenario.doc, scenario.system, kParams);
    int32_t rc = ORU_OK;
    for (int call = 0; rc != ORU_RC_NO_MORE_VALUE; ++call) {
        if (call == kMostCalls) {
            ADD_FAILURE() << "no end\n" << describe(scenario.doc);
            return false;
        }
        rc = walk.next(scenario.count());
        if (scenario.make.one_in(2))
            clear_some(walk.ctx()->dtree_node, scenario.make);
    }
    walk.end();
    EXPECT_EQ(scenario.system.open_cursors(), 0);
    return !testing::Test::HasFailure();
}

void check_seeds(bool (*check)(uint32_t), uint32_t otherwise) {
    const uint32_t first = from_environment("ORU_TEST_FIRST_SEED", 1);
    const uint32_t seeds = from_environment("ORU_TEST_SEEDS", otherwise);
    for (uint32_t seed = first; seed < first + seeds && check(seed); ++seed) {
    }
}

TEST(DtlWalkRandom, FollowsThePlainWalk) {
    check_seeds(check_seed, 800);
}

TEST(DtlWalkRandom, EndsWhereResultsAreCleared) {
    check_seeds(check_cleared, 400);
}

// A list of peers, one a string: what stopped below one row was taken for the next row's.
TEST(DtlWalkRandom, EndsWhereItDidNot) {
    check_seed(48160);
}

}  // namespace
