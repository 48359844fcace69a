// Documents as plain records: what the walk and its plain model are both given.
#ifndef ORU_TESTS_UNIT_DTL_PLAIN_DOCUMENT_H
#define ORU_TESTS_UNIT_DTL_PLAIN_DOCUMENT_H

#include <string>
#include <utility>
#include <vector>

#include "tests/support/fake_ifc.h"
#include "tests/unit/dtl/tree_support.h"

namespace oru::test {

using NamedValues = std::vector<std::pair<std::string, FakeValue>>;

// What is empty is not given.
struct DocNode {
    std::string name;
    int32_t type = ORU_DTL_NODE_CONTAINER;
    int32_t op = ORU_DTL_OP_TRAVERSE;
    int32_t error = 0;  // a code
    std::string default_expr{};
    int32_t batch_size = 0;
    int32_t max_batches = 0;

    // Of a resource.
    bool addressed = false;
    std::string uri{};
    enum class Meta { none, config, oper } meta = Meta::none;
    std::vector<std::string> cfg{};
    std::vector<std::string> oper{};
    std::string act_name{};
    NamedValues act_in{};
    NamedValues where{};
    bool where_once = false;
    bool return_default = true;
    bool return_w_child = false;
    bool continue_on_error = false;
    bool flatten = false;
    int32_t return_mode = ORU_DTL_RETURN_ALL;
    std::string attr_select{};
    std::string order_param{};
    std::vector<std::string> order_by{};
    std::string batch_size_param{};
    std::string max_batches_param{};

    std::vector<DocNode> children{};
};

// An element with an address.
DocNode resource(std::string name, int32_t op, std::string uri, std::vector<DocNode> children = {});
DocNode container(std::string name, std::vector<DocNode> children);

// Asks the node for an attribute, with an element for it.
DocNode &ask(DocNode &node, const std::string &name, bool oper = false,
             const std::string &default_expr = "");

// The tree that the library walks, with `doc` as its top.
Tree make_tree(const DocNode &doc);

// For messages: `name op uri flags (children)`.
std::string describe(const DocNode &node);

}  // namespace oru::test

#endif
