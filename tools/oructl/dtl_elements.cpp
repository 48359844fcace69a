#include "dtl_elements.h"

#include <algorithm>

#include "addresses.h"
#include "dtl_words.h"
#include "fault_words.h"
#include "handles.h"
#include "model_words.h"

namespace oructl {
namespace {

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

bool contains(const std::vector<std::string> &names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
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

// Why rows of a resource are not selected by an attribute; empty where they are.
std::string selection_fault(const ORUDtlNode &node, const std::string &name) {
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

}  // namespace

ORUDoMrMeta *meta_of(const ORUDtlNode &node) {
    return node.mr_info != nullptr ? node.mr_info->mr_meta : nullptr;
}

bool is_action(const ORUDtlNode &node) {
    return node.op == ORU_DTL_OP_ACTION || node.op == ORU_DTL_OP_COLL_ACTION;
}

void DtlElements::add(DtlItem &item, const xmlNode *element, const std::string &words) const {
    item.faults.push_back(document_.fault(element, words));
}

void DtlElements::check_attributes(DtlItem &item, const xmlNode *element, DtlRole role) const {
    for (const std::string &words : attribute_faults(element, role))
        add(item, element, words);
}

void DtlElements::check_resource(DtlItem &item, const xmlNode *element) const {
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
void DtlElements::check_keys(DtlItem &item, const xmlNode *element, const ORUMdMrMeta &mr) const {
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
    for (EachItem each(oru_do_uri_get_keys(uri.get())); ORUDoNvlistItem *key = each();) {
        const std::string name = oru_do_nvlist_item_get_name(key);
        if (!contains(known, name))
            add(item, element,
                text_of(mr.name) + " has no key " + in_quotes(name) +
                    (known.empty() ? "" : "; its keys are " + joined(known)));
    }
}

DtlRole DtlElements::check_node(DtlItem &item, ORUDtlNode &above, const ORUDtlNode &node,
                                const xmlNode *element) const {
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
void DtlElements::check_unmatched(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                                  const xmlNode *element) const {
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
void DtlElements::check_order_of_rows(DtlItem &item, ORUDtlNode &node,
                                      const xmlNode *element) const {
    std::string address;
    std::string order;
    read_attribute(element, "uri", address);
    const bool is_known = node.mr_info != nullptr && !address.starts_with('$') &&
                          !address.starts_with('@') && oru_dtl_tree_is_collection_op(&node) == 0;
    if (is_known && read_attribute(element, "order", order))
        add(item, element, "an order is read in a collection only");
}

// The text of an attribute selects rows.
void DtlElements::check_filter(DtlItem &item, ORUDtlNode &above, const xmlNode *element) const {
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

void DtlElements::check_where(DtlItem &item, const ORUDtlNode &node, const xmlNode *where) const {
    if (node.mr_info == nullptr)
        add(item, where, "conditions without a resource whose rows they could select");
    check_attributes(item, where, DtlRole::where);
    for (const xmlNode *child = element_from(where->children); child != nullptr;
         child = element_from(child->next))
        check_condition(item, node, child);
}

void DtlElements::check_condition(DtlItem &item, const ORUDtlNode &node,
                                  const xmlNode *element) const {
    const std::string_view name = name_of(element);
    if (name == "and" || name == "or") {
        check_attributes(item, element, DtlRole::other);
        if (element_from(element->children) == nullptr)
            add(item, element, "a group without conditions");
        for (const xmlNode *child = element_from(element->children); child != nullptr;
             child = element_from(child->next))
            check_condition(item, node, child);
        return;
    }
    check_attributes(item, element, DtlRole::condition);
    const ElementText text = document_.text_of(element);
    if (const std::string fault = selection_fault(node, std::string(name)); !fault.empty())
        add(item, element, fault);
    else if (text.text.empty())
        add(item, element, "a condition without a value is left out");
    else if (!text.fault.empty())
        add(item, element, text.fault);
}

}  // namespace oructl
