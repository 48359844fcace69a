#include "dtl_check.h"

#include <algorithm>
#include <memory>

#include "dtl_elements.h"
#include "dtl_words.h"
#include "fault_words.h"
#include "handles.h"
#include "model_words.h"
#include "object_text.h"

namespace oructl {
namespace {

// No element is read below this level.
constexpr int32_t kMaxLevel = 16;

using Tree = std::unique_ptr<ORUDtlNode, Release<oru_dtl_tree_delete>>;

bool item_has_faults(const DtlItem &item) {
    return !item.faults.empty() || std::ranges::any_of(item.children, item_has_faults);
}

// How many nodes an element with an address makes: one for each implementation of a library
// resource, unless the address tells the type.
int32_t nodes_of_address(const std::string &address, const std::string &mr_name) {
    ORUMdMrMeta *mr = oru_md_get_mr_meta_by_name(mr_name.c_str());
    if (mr == nullptr || oru_md_is_lib_mr(mr) == 0)
        return 1;
    const Uri uri(oru_do_uri_new_parse_unescape_key(address.c_str()));
    if (uri != nullptr && oru_do_uri_has_type_query_part(uri.get()) != 0)
        return 1;
    int32_t count = 0;
    for (auto *entry = oru_md_mr_meta_get_impl_mr_meta_list(mr); entry != nullptr;
         entry = entry->next)
        ++count;
    return count;
}

std::vector<std::string> resources_of(const Model &model) {
    std::vector<std::string> names;
    for (const ORUMdPkgMeta *package : model.packages()) {
        for (ORUMdMrMeta &mr : records(package->mrs))
            names.push_back(qualified_name(mr));
    }
    return names;
}

// Goes through the elements of a document and the nodes that they made side by side.
class Walk {
  public:
    Walk(const DtlDocument &document, std::vector<std::string> resources)
        : document_(document), elements_(document, std::move(resources)) {}

    DtlItem root(ORUDtlNode &node) {
        const xmlNode *element = document_.root();
        DtlItem item = begin(node);
        if (const std::string fault = document_.address_fault(element); !fault.empty())
            elements_.add(item, element, fault);
        else
            check_root(item, node, element);
        add_children(item, node, element, 1);
        end(item, node, element);
        return item;
    }

  private:
    void check_root(DtlItem &item, ORUDtlNode &node, const xmlNode *element) {
        const bool addressed = node.type == ORU_DTL_NODE_MR_OP;
        if (addressed)
            elements_.check_resource(item, element);
        elements_.check_attributes(item, element, addressed ? DtlRole::resource : DtlRole::other);
        elements_.check_order_of_rows(item, node, element);
    }

    DtlItem begin(const ORUDtlNode &node) const {
        return {.title = title_of(node), .details = details_of(node), .faults = {}, .children = {}};
    }

    // What the library found at the node and is not told yet in words that lead to a place.
    void end(DtlItem &item, const ORUDtlNode &node, const xmlNode *element) {
        if (node.error != nullptr && item.faults.empty() && !told_below(item, node))
            elements_.add(item, element, error_words(node.error));
    }
    // Attributes and parameters leave their errors at the node above.
    static bool told_below(const DtlItem &item, const ORUDtlNode &node) {
        return std::ranges::any_of(item.children, [&](const DtlItem &child) {
            return !child.faults.empty() || (is_action(node) && item_has_faults(child));
        });
    }

    void add_left_out(DtlItem &item, const xmlNode *element, const std::string &words) {
        DtlItem &child = item.children.emplace_back();
        child.title = std::string(name_of(element)) + "  (left out)";
        elements_.add(child, element, words);
    }

    void add_children(DtlItem &item, ORUDtlNode &node, const xmlNode *element, int32_t level);
    ORUDtlNode *add_child(DtlItem &item, ORUDtlNode &above, ORUDtlNode *next,
                          const xmlNode *element, int32_t level);
    void add_expanded(DtlItem &item, const ORUDtlNode &node);
    void add_parameters(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                        const xmlNode *element);

    const DtlDocument &document_;
    DtlElements elements_;
};

void Walk::add_children(DtlItem &item, ORUDtlNode &node, const xmlNode *element, int32_t level) {
    const xmlNode *child = element_from(element->children);
    if (oru_dtl_tree_is_recursive_op(&node) != 0) {
        if (child != nullptr)
            elements_.add(item, child,
                          std::string(oru_dtl_tree_get_op_str(node.op)) +
                              " reads all by metadata, and no elements");
        add_expanded(item, node);
        return;
    }
    ORUDtlNode *next = node.first_child;
    for (; child != nullptr; child = element_from(child->next)) {
        if (level >= kMaxLevel) {
            add_left_out(item, child,
                         "Max Level Exceeded: no element is read " + std::to_string(kMaxLevel) +
                             " levels below the root");
            return;
        }
        if (is_where(child))
            elements_.check_where(item, node, child);
        else
            next = add_child(item, node, next, child, level);
    }
}

// The nodes of an element; the result is what comes behind them.
ORUDtlNode *Walk::add_child(DtlItem &item, ORUDtlNode &above, ORUDtlNode *next,
                            const xmlNode *element, int32_t level) {
    if (const std::string fault = document_.address_fault(element); !fault.empty()) {
        add_left_out(item, element, fault);
        return next;
    }
    std::string address;
    std::string mr;
    const bool addressed = read_attribute(element, "uri", address);
    read_attribute(element, "mr", mr);
    const int32_t count = addressed ? nodes_of_address(address, mr) : 1;
    if (count == 0)
        add_left_out(item, element, mr + " is a library resource that nothing implements");
    for (int32_t i = 0; i < count && next != nullptr; ++i, next = next->next) {
        DtlItem child = begin(*next);
        const DtlRole role =
            addressed ? DtlRole::resource : elements_.check_node(child, above, *next, element);
        if (addressed)
            elements_.check_resource(child, element);
        // What is wrong with an element is wrong with all its nodes.
        if (i == 0) {
            elements_.check_attributes(child, element, role);
            elements_.check_order_of_rows(child, *next, element);
        }
        if (next->type == ORU_DTL_NODE_ACTION)
            add_parameters(child, above, *next, element);
        else
            add_children(child, *next, element, level + 1);
        end(child, *next, element);
        item.children.push_back(std::move(child));
    }
    return next;
}

void Walk::add_expanded(DtlItem &item, const ORUDtlNode &node) {
    for (const ORUDtlNode *child = node.first_child; child != nullptr; child = child->next) {
        DtlItem expanded = begin(*child);
        add_expanded(expanded, *child);
        item.children.push_back(std::move(expanded));
    }
}

void Walk::add_parameters(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                          const xmlNode *element) {
    ORUDoActMeta *action = oru_do_mr_meta_get_act_meta(meta_of(above), text_of(node.name).c_str());
    const auto known = action != nullptr ? names_of(oru_do_act_meta_get_in_params(action))
                                         : names_of(static_cast<ORUDoNlist *>(nullptr));
    const ORUDtlNode *param = node.first_child;
    const xmlNode *child = element_from(element->children);
    for (; param != nullptr && child != nullptr;
         param = param->next, child = element_from(child->next)) {
        DtlItem entry = begin(*param);
        elements_.check_attributes(entry, child, DtlRole::other);
        const ElementText text = document_.text_of(child);
        if (std::ranges::find(known, name_of(child)) == known.end())
            elements_.add(entry, child,
                          "no parameter of " + in_quotes(text_of(node.name)) +
                              similar_question(name_of(child), known));
        if (text.text.empty())
            elements_.add(entry, child, "a parameter without a value is left out");
        else if (!text.fault.empty())
            elements_.add(entry, child, text.fault);
        else if (text.text.starts_with('@'))
            elements_.add(entry, child,
                          "a parameter takes a value or a $parameter, not " + text.text);
        item.children.push_back(std::move(entry));
    }
}

bool told_in(const std::vector<DtlItem> &items) {
    return std::ranges::any_of(items, item_has_faults);
}

}  // namespace

CheckedDtl check_dtl(const DtlDocument &document, const Model &model) {
    CheckedDtl checked{document.faults(), {}};
    if (document.root() == nullptr)
        return checked;
    ORUDoError *error = nullptr;
    const MetadataLock lock;
    const Tree tree(oru_dtl_from_str(document.safe_text().c_str(), &error));
    if (tree != nullptr && tree->first_child != nullptr)
        checked.roots.push_back(Walk(document, resources_of(model)).root(*tree->first_child));
    if (error != nullptr && !told_in(checked.roots))
        checked.faults.push_back(document.fault(document.root(), error_words(error)));
    oru_do_error_deref(error);
    return checked;
}

bool has_faults(const CheckedDtl &checked) {
    return !checked.faults.empty() || told_in(checked.roots);
}

}  // namespace oructl
