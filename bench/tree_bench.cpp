// Flattening of a data tree beside the same work on containers of the standard library: a branch
// with attributes and a URI whose rows take its place, with their attributes renamed, the branch's
// added, and its URI as one more. Each round works on a tree of its own, which is made and released
// while the clock stands.
// Tracing is off, as it is by default, and all pools are sized.
#include <oru/dtree.h>
#include <oru/name.h>
#include <oru/properties.h>
#include <oru/strbuf.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/ratios.h"

namespace {

constexpr int kRows = 1000;
constexpr int kAttributes = 6;

void size_pools() {
    init_chunk_poolheap_oru_do_dtree(4 * kRows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_name(40 * kRows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_value(40 * kRows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_property(80 * kRows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_properties(8 * kRows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_strbuf(16, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_strbuf_misc(16, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_uri(16, CHUNK_FLAG_GROW);
}

std::string attribute(const char *kind, int index) {
    return std::string(kind) + "Attribute" + std::to_string(index);
}

class Ours {
  public:
    Ours() {
        branch_ = add(root_, "interface");
        fill(branch_, "branch");
        ORUDoUri *uri = oru_do_uri_new("/interfaces;name=eth0");
        oru_do_dtree_set_mr_uri(branch_, uri);
        oru_do_uri_deref(uri);
        for (int i = 0; i < kRows; ++i)
            fill(add(branch_, "address"), "row");
    }
    ~Ours() { oru_do_dtree_deref(root_); }
    void flatten() { benchmark::DoNotOptimize(oru_do_dtree_flatten(root_, branch_, 7)); }

  private:
    static ORUDoDtree *add(ORUDoDtree *parent, const char *name) {
        ORUDoName *object = oru_do_name_new(name);
        ORUDoDtree *node = oru_do_dtree_add_child(parent, object);
        oru_do_name_deref(object);
        return node;
    }
    static void fill(ORUDoDtree *node, const char *kind) {
        ORUDoProperties *props = oru_do_properties_new();
        for (int i = 0; i < kAttributes; ++i)
            oru_do_properties_set_int(props, attribute(kind, i).c_str(), i);
        oru_do_dtree_set_properties(node, props);
        oru_do_properties_deref(props);
    }

    ORUDoDtree *root_ = oru_do_dtree_new_str("doc");
    ORUDoDtree *branch_ = nullptr;
};

class Standard {
  public:
    Standard() {
        root_.children.emplace_back();
        Node &branch = root_.children.back();
        branch.name = "interface";
        branch.uri = std::make_shared<int>(0);
        fill(branch, "branch");
        for (int i = 0; i < kRows; ++i) {
            branch.children.emplace_back();
            branch.children.back().name = "address";
            fill(branch.children.back(), "row");
        }
    }
    void flatten() {
        const auto branch = root_.children.begin();
        for (Node &row : branch->children) {
            std::vector<Attribute> attributes;
            for (Attribute &own : row.attributes)
                attributes.emplace_back(row.name + "." + own.first, std::move(own.second));
            for (const Attribute &taken : branch->attributes)
                attributes.push_back(taken);
            attributes.emplace_back(branch->name + ".__uri", branch->uri);
            row.attributes = std::move(attributes);
            row.name = branch->name + "." + row.name;
        }
        root_.children.splice(branch, branch->children);
        root_.children.erase(branch);
        benchmark::DoNotOptimize(root_.children.front());
    }

  private:
    using Attribute = std::pair<std::string, std::shared_ptr<int>>;
    struct Node {
        std::string name;
        std::shared_ptr<int> uri;
        std::vector<Attribute> attributes;
        std::list<Node> children;
    };
    static void fill(Node &node, const char *kind) {
        for (int i = 0; i < kAttributes; ++i)
            node.attributes.emplace_back(attribute(kind, i), std::make_shared<int>(i));
    }

    Node root_;
};

template <class Tree>
void flatten(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = std::make_unique<Tree>();
        state.ResumeTiming();
        tree->flatten();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    size_pools();
    oru::bench::compare("flatten 1000 rows/ours", flatten<Ours>);
    oru::bench::compare("flatten 1000 rows/std", flatten<Standard>);
    return oru::bench::run_all(argc, argv);
}
