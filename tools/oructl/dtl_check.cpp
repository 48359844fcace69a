#include "dtl_check.h"

#include <algorithm>
#include <memory>

#include "addresses.h"
#include "dtl_attributes.h"
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

ORUDoMrMeta *meta_of(const ORUDtlNode &node) {
    return node.mr_info != nullptr ? node.mr_info->mr_meta : nullptr;
}

bool is_attribute(const ORUDtlNode &node) {
    return node.type == ORU_DTL_NODE_ATTR || node.type == ORU_DTL_NODE_OPER_ATTR;
}

bool is_reference(const ORUDtlNode &node) {
    return node.type == ORU_DTL_NODE_CHILD_REF || node.type == ORU_DTL_NODE_PEER_REF ||
           node.type == ORU_DTL_NODE_PARENT_REF;
}

bool is_group(const ORUDtlNode &node) {
    return node.type == ORU_DTL_NODE_CFG_DATA || node.type == ORU_DTL_NODE_OPER_DATA;
}

bool reads_rows(ORUDtlNode &node) {
    return oru_dtl_tree_is_collection_op(&node) != 0 && node.op != ORU_DTL_OP_COLL_ACTION;
}

bool is_action(const ORUDtlNode &node) {
    return node.op == ORU_DTL_OP_ACTION || node.op == ORU_DTL_OP_COLL_ACTION;
}

// Attributes of a group have its name in front of theirs.
std::string group_question(const std::string &name, const std::vector<std::string> &known) {
    for (const std::string &other : known) {
        if (other.ends_with("." + name))
            return "; is it " + in_quotes(other) + "?";
        if (other.starts_with(name + "."))
            return ", but attributes of that group, like " + in_quotes(other);
    }
    return similar_question(name, known);
}

bool contains(const std::vector<std::string> &names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

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
        : document_(document), resources_(std::move(resources)) {}

    DtlItem root(ORUDtlNode &node) {
        const xmlNode *element = document_.root();
        DtlItem item = begin(node);
        if (const std::string fault = document_.address_fault(element); !fault.empty())
            add(item, element, fault);
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
            check_resource(item, element);
        add_attributes(item, element, addressed ? DtlRole::resource : DtlRole::other);
        check_order_of_rows(item, node, element);
    }

    DtlItem begin(const ORUDtlNode &node) const {
        return {.title = title_of(node), .details = details_of(node), .faults = {}, .children = {}};
    }

    // What the library found at the node and is not told yet in words that lead to a place.
    void end(DtlItem &item, const ORUDtlNode &node, const xmlNode *element) {
        if (node.error != nullptr && item.faults.empty() && !told_below(item, node))
            add(item, element, error_words(node.error));
    }
    // Attributes and parameters leave their errors at the node above.
    static bool told_below(const DtlItem &item, const ORUDtlNode &node) {
        return std::ranges::any_of(item.children, [&](const DtlItem &child) {
            return !child.faults.empty() || (is_action(node) && item_has_faults(child));
        });
    }

    void add(DtlItem &item, const xmlNode *element, const std::string &words) {
        item.faults.push_back(document_.fault(element, words));
    }
    void add_attributes(DtlItem &item, const xmlNode *element, DtlRole role) {
        for (const std::string &words : attribute_faults(element, role))
            add(item, element, words);
    }
    void add_left_out(DtlItem &item, const xmlNode *element, const std::string &words) {
        DtlItem &child = item.children.emplace_back();
        child.title = std::string(name_of(element)) + "  (left out)";
        add(child, element, words);
    }

    void add_children(DtlItem &item, ORUDtlNode &node, const xmlNode *element, int32_t level);
    ORUDtlNode *add_child(DtlItem &item, ORUDtlNode &above, ORUDtlNode *next,
                          const xmlNode *element, int32_t level);
    void add_expanded(DtlItem &item, const ORUDtlNode &node);
    void add_parameters(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                        const xmlNode *element);

    void check_resource(DtlItem &item, const xmlNode *element);
    void check_keys(DtlItem &item, const xmlNode *element, const ORUMdMrMeta &mr);
    DtlRole check_node(DtlItem &item, ORUDtlNode &above, const ORUDtlNode &node,
                       const xmlNode *element);
    void check_unmatched(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                         const xmlNode *element);
    void check_order_of_rows(DtlItem &item, ORUDtlNode &node, const xmlNode *element);
    void check_filter(DtlItem &item, ORUDtlNode &above, const xmlNode *element);
    void check_where(DtlItem &item, const ORUDtlNode &node, const xmlNode *where);
    void check_condition(DtlItem &item, const ORUDtlNode &node, const xmlNode *element);
    std::string selection_fault(const ORUDtlNode &node, const std::string &name) const;

    const DtlDocument &document_;
    std::vector<std::string> resources_;  // all that the model has
};

// ---- Nodes ----

void Walk::add_children(DtlItem &item, ORUDtlNode &node, const xmlNode *element, int32_t level) {
    const xmlNode *child = element_from(element->children);
    if (oru_dtl_tree_is_recursive_op(&node) != 0) {
        if (child != nullptr)
            add(item, child,
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
            check_where(item, node, child);
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
            addressed ? DtlRole::resource : check_node(child, above, *next, element);
        if (addressed)
            check_resource(child, element);
        // What is wrong with an element is wrong with all its nodes.
        if (i == 0) {
            add_attributes(child, element, role);
            check_order_of_rows(child, *next, element);
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
        add_attributes(entry, child, DtlRole::other);
        const ElementText text = document_.text_of(child);
        if (!contains(known, name_of(child)))
            add(entry, child,
                "no parameter of " + in_quotes(text_of(node.name)) +
                    similar_question(name_of(child), known));
        if (text.text.empty())
            add(entry, child, "a parameter without a value is left out");
        else if (!text.fault.empty())
            add(entry, child, text.fault);
        else if (text.text.starts_with('@'))
            add(entry, child, "a parameter takes a value or a $parameter, not " + text.text);
        item.children.push_back(std::move(entry));
    }
}

// ---- What an element means ----

void Walk::check_resource(DtlItem &item, const xmlNode *element) {
    std::string mr;
    if (!read_attribute(element, "mr", mr))
        add(item, element, "an element with an address needs the attribute \"mr\"");
    else if (ORUMdMrMeta *record = oru_md_get_mr_meta_by_name(mr.c_str()))
        check_keys(item, element, *record);
    else
        add(item, element, "Unknown MR: " + mr + similar_question(mr, resources_));
    std::string address;
    read_attribute(element, "uri", address);
    if (const std::string fault = query_mark_fault(address); !fault.empty())
        add(item, element, fault);
}

// The last segment of an address that leads to one resource has that resource's keys.
void Walk::check_keys(DtlItem &item, const xmlNode *element, const ORUMdMrMeta &mr) {
    std::string address;
    read_attribute(element, "uri", address);
    const Uri uri(oru_do_uri_validate_new(address.c_str()));
    if (uri == nullptr || oru_do_uri_get_query_part(uri.get()) != nullptr)
        return;
    std::vector<std::string> known;
    for (const ORUMdAttrMeta &key : records(mr.primary_keys))
        known.push_back(text_of(key.name));
    for (const ORUMdAttrMeta &key : records(mr.secondary_keys))
        known.push_back(text_of(key.name));
    ORUDoNvlist *keys = oru_do_uri_get_keys(uri.get());
    for (int32_t i = 0; keys != nullptr && i < oru_do_nvlist_get_len(keys); ++i) {
        const std::string name = oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(keys, i));
        if (!contains(known, name))
            add(item, element,
                text_of(mr.name) + " has no key " + in_quotes(name) +
                    (known.empty() ? "" : "; its keys are " + joined(known)));
    }
}

DtlRole Walk::check_node(DtlItem &item, ORUDtlNode &above, const ORUDtlNode &node,
                         const xmlNode *element) {
    if (is_attribute(node)) {
        check_filter(item, above, element);
        return DtlRole::attribute;
    }
    if (is_reference(node)) {
        std::string mr;
        if (read_attribute(element, "mr", mr))
            check_resource(item, element);
        else if (meta_of(node) == nullptr)
            add(item, element, "the model has not what this leads to");
        return DtlRole::reference;
    }
    if (node.type == ORU_DTL_NODE_ACTION || meta_of(above) == nullptr)
        return DtlRole::other;
    check_unmatched(item, above, node, element);
    return is_action(above) || is_group(node) ? DtlRole::other : DtlRole::unmatched;
}

// Nothing of the resource. It may hold other elements, or have a value of its own.
void Walk::check_unmatched(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                           const xmlNode *element) {
    const std::string name = text_of(node.prop_name);
    const std::string mr = text_of(oru_do_mr_meta_get_mr_name(meta_of(above)));
    if (is_action(above)) {
        add(item, element, "Invalid action name: " + mr + " has no action " + in_quotes(name));
        return;
    }
    const bool grouped = contains(names_of(above.mr_info->cfg_data_nlist), name) ||
                         contains(names_of(above.mr_info->oper_data_nlist), name);
    if (name_of(element) == "where") {
        add(item, element, "conditions stand in dtl:where");
        return;
    }
    std::string prop;
    const bool is_named = read_attribute(element, "prop", prop);
    const bool holds = element_from(element->children) != nullptr;
    if ((is_group(node) && grouped) || (!is_named && (node.default_expr != nullptr || holds)))
        return;
    add(item, element,
        mr + " has no " + in_quotes(name) +
            group_question(name, names_of(above.mr_info->prop_meta_list)));
}

// The order of an element's own rows. What a variable leads to is not known yet.
void Walk::check_order_of_rows(DtlItem &item, ORUDtlNode &node, const xmlNode *element) {
    std::string address;
    std::string order;
    read_attribute(element, "uri", address);
    const bool is_known = node.mr_info != nullptr && !address.starts_with('$') &&
                          !address.starts_with('@') && oru_dtl_tree_is_collection_op(&node) == 0;
    if (is_known && read_attribute(element, "order", order))
        add(item, element, "an order is read in a collection only");
}

// The text of an attribute selects rows.
void Walk::check_filter(DtlItem &item, ORUDtlNode &above, const xmlNode *element) {
    const ElementText text = document_.text_of(element);
    std::string order;
    if (read_attribute(element, "order", order) && !reads_rows(above))
        add(item, element, "an order is read in a collection only");
    if (text.text.empty())
        return;
    if (!reads_rows(above))
        add(item, element, "a value that selects rows is read in a collection only");
    else if (!text.fault.empty())
        add(item, element, text.fault);
    else if (const std::string fault = selection_fault(above, std::string(name_of(element)));
             !fault.empty())
        add(item, element, fault);
}

// ---- Conditions ----

std::string Walk::selection_fault(const ORUDtlNode &node, const std::string &name) const {
    ORUDoMrMeta *meta = meta_of(node);
    if (meta == nullptr)
        return "";
    ORUDoPropMeta *prop = oru_do_mr_meta_get_prop_meta_str(meta, name.c_str());
    const std::string mr = text_of(oru_do_mr_meta_get_mr_name(meta));
    if (prop == nullptr)
        return mr + " has no " + in_quotes(name) + " to select rows by" +
               group_question(name, names_of(node.mr_info->prop_meta_list));
    if (oru_do_prop_meta_get_category(prop) == ORU_PROP_OPER &&
        oru_do_mr_meta_is_oper_data(meta) == 0)
        return in_quotes(name) + " is operational, and rows of " + mr +
               " are selected by configuration only";
    return "";
}

void Walk::check_where(DtlItem &item, const ORUDtlNode &node, const xmlNode *where) {
    if (node.mr_info == nullptr)
        add(item, where, "conditions without a resource whose rows they could select");
    add_attributes(item, where, DtlRole::where);
    for (const xmlNode *child = element_from(where->children); child != nullptr;
         child = element_from(child->next))
        check_condition(item, node, child);
}

void Walk::check_condition(DtlItem &item, const ORUDtlNode &node, const xmlNode *element) {
    const std::string_view name = name_of(element);
    if (name == "and" || name == "or") {
        add_attributes(item, element, DtlRole::other);
        if (element_from(element->children) == nullptr)
            add(item, element, "a group without conditions");
        for (const xmlNode *child = element_from(element->children); child != nullptr;
             child = element_from(child->next))
            check_condition(item, node, child);
        return;
    }
    add_attributes(item, element, DtlRole::condition);
    const ElementText text = document_.text_of(element);
    if (const std::string fault = selection_fault(node, std::string(name)); !fault.empty())
        add(item, element, fault);
    else if (text.text.empty())
        add(item, element, "a condition without a value is left out");
    else if (!text.fault.empty())
        add(item, element, text.fault);
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
    oru_md_rdlock();
    const Tree tree(oru_dtl_from_str(document.safe_text().c_str(), &error));
    if (tree != nullptr && tree->first_child != nullptr)
        checked.roots.push_back(Walk(document, resources_of(model)).root(*tree->first_child));
    oru_md_unlock();
    if (error != nullptr && !told_in(checked.roots))
        checked.faults.push_back(document.fault(document.root(), error_words(error)));
    oru_do_error_deref(error);
    return checked;
}

bool has_faults(const CheckedDtl &checked) {
    return !checked.faults.empty() || told_in(checked.roots);
}

}  // namespace oructl
