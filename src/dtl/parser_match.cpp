// What an element means for the resource of the node above: an attribute, a reference, a group of
// attributes or an action.
#include <cstring>
#include <string_view>

#include "do/strbuf.h"
#include "dtl/parser.h"
#include "dtl/uri_build.h"
#include "md/prop_meta.h"
#include "oru/md_lookup.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

using PropListRef = Ref<ORUDoPropMetaList>;

bool is_oper(ORUDtlNode *node) {
    return oru_dtl_tree_mr_is_oper(node) != 0;
}

void become(ORUDtlNode *node, int32_t type, int32_t op) {
    oru_dtl_tree_set_type(node, type);
    oru_dtl_tree_set_op(node, op);
}

// Asks for the attribute in the list where its resource has it.
void ask_for(ORUDtlNode *above, ORUDoName *name, bool oper) {
    if (oper) {
        oru_dtl_tree_add_oper_attr(above, name);
    } else {
        oru_dtl_tree_add_cfg_attr(above, name);
    }
}

// ---- References ----

int32_t type_of_role(int32_t role) {
    if (role < ORU_REF_PARENT)
        return ORU_DTL_NODE_CHILD_REF;
    if (role == ORU_REF_PARENT)
        return ORU_DTL_NODE_PARENT_REF;
    return role == ORU_REF_PEER ? ORU_DTL_NODE_PEER_REF : ORU_DTL_NODE_CONTAINER;
}

// Of the words of an address only the plain ones; those that go on by metadata give nothing.
int32_t op_of_reference(const xmlNode *element, int32_t role) {
    const XmlAttribute word(element, "op");
    int32_t op = word ? op_of_word(word.text(), ORU_DTL_OP_NOOP) : ORU_DTL_OP_GET;
    if (op >= ORU_DTL_OP_GET_ALL_R && op <= ORU_DTL_OP_GET_ALL_OPER_R)
        op = ORU_DTL_OP_NOOP;
    return op != ORU_DTL_OP_NOOP && role < ORU_REF_PARENT ? op + ORU_DTL_OP_COLL : op;
}

// The target that the element names, or that of the metadata. Only the first is missed.
ORUDoMrMeta *target_of(ORUDtlNode *node, const xmlNode *element, ORUDoPropMeta *prop) {
    const XmlAttribute name(element, "mr");
    const char *type = name ? name.text() : name_text(prop->type_name);
    if (ORUMdMrMeta *mr = oru_md_get_mr_meta_by_name(type))
        return mr->do_mr_meta;
    if (name) {
        const FoundMr unknown = unknown_mr(xml_name(element), type);
        oru_dtl_tree_set_error(node, unknown.error.get());
    }
    return nullptr;
}

// How the address of a reference begins; the empty text for a role that has none.
std::string_view template_start(int32_t role) {
    if (role < ORU_REF_PARENT)
        return "$_PARENT_URI_?";
    if (role == ORU_REF_PARENT)
        return kUriParent;
    return role == ORU_REF_PEER ? kPeerUri : "";
}

Ref<ORUDoUri> template_uri(std::string_view start, const char *name) {
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return {};
    strbuf_append(*text, start);
    if (!strbuf_append(*text, name))
        return {};
    return Ref<ORUDoUri>::adopt(oru_do_uri_new(oru_do_strbuf_to_string(text.get())));
}

void match_reference(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element,
                     ORUDoPropMeta *prop) {
    const int32_t role = prop->ref_role;
    become(node, type_of_role(role), op_of_reference(element, role));
    if (role == ORU_REF_PEER)
        ask_for(above, prop->name, is_oper(above));
    address_reference(parser, node, role, prop->name, target_of(node, element, prop));
    read_mr_attributes(node, element);
}

// ---- Properties ----

bool match_attribute(ORUDtlNode *above, ORUDtlNode *node, int32_t category) {
    const bool oper = is_oper(above);
    switch (category) {
        case ORU_PROP_KEY:
            ask_for(above, node->prop_name, oper);
            become(node, oper ? ORU_DTL_NODE_OPER_ATTR : ORU_DTL_NODE_ATTR, ORU_DTL_OP_NOOP);
            return true;
        case ORU_PROP_CONFIG:
            ask_for(above, node->prop_name, oper);
            become(node, ORU_DTL_NODE_ATTR, ORU_DTL_OP_NOOP);
            return true;
        case ORU_PROP_OPER:
            ask_for(above, node->prop_name, true);
            become(node, ORU_DTL_NODE_OPER_ATTR, ORU_DTL_OP_NOOP);
            return true;
        default:
            become(node, ORU_DTL_NODE_CONTAINER, ORU_DTL_OP_TRAVERSE);
            return false;
    }
}

bool find_property(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    const char *name = name_text(node->prop_name);
    if (std::strcmp(name, ORU_DO_NAME_URI) == 0 || std::strcmp(name, ORU_DO_NAME_MR) == 0)
        return match_attribute(above, node, ORU_PROP_KEY);
    ORUDoPropMetaList *props = above->mr_info->prop_meta_list;
    if (props == nullptr)
        return false;
    ORUDoPropMeta *prop = oru_do_prop_meta_list_get_prop_meta_name(props, node->prop_name);
    if (prop == nullptr) {
        ORU_TRACE(Level::detail, "<%s> not-a-property", xml_name(element));
        return false;
    }
    if (prop->category != ORU_PROP_REF)
        return match_attribute(above, node, prop->category);
    match_reference(parser, above, node, element, prop);
    return true;
}

bool is_reference(const ORUDtlNode *node) {
    return node->type == ORU_DTL_NODE_CHILD_REF || node->type == ORU_DTL_NODE_PEER_REF ||
           node->type == ORU_DTL_NODE_PARENT_REF;
}

bool match_property(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    oru_dtl_tree_set_prop_name(node, XmlAttribute(element, "prop").text());
    const bool matched = find_property(parser, above, node, element);
    if (!is_reference(node))
        oru_dtl_tree_set_default_expr(node, XmlAttribute(element, "default").text());
    return matched;
}

// ---- Groups ----

bool match_cfg_group(ORUDtlNode *above, ORUDtlNode *node) {
    const PropListRef props = PropListRef::adopt(oru_do_prop_meta_list_new());
    const char *name = name_text(node->prop_name);
    const bool matched =
        props && oru_do_mr_meta_get_cfg_prop_meta(above->mr_info->mr_meta, name, props.get()) > 0;
    if (matched) {
        oru_dtl_tree_add_cfg_data(above, node->prop_name);
        for (auto *item = props->first; item != nullptr; item = item->next)
            oru_dtl_tree_add_cfg_attr(above, item->object->name);
    }
    become(node, ORU_DTL_NODE_CFG_DATA, ORU_DTL_OP_NOOP);
    return matched;
}

void match_oper_group(ORUDtlNode *above, ORUDtlNode *node) {
    const PropListRef props = PropListRef::adopt(oru_do_prop_meta_list_new());
    const char *name = name_text(node->prop_name);
    if (props &&
        oru_do_mr_meta_get_oper_prop_meta(above->mr_info->mr_meta, name, props.get()) > 0) {
        oru_dtl_tree_add_oper_data(above, node->prop_name);
        for (auto *item = props->first; item != nullptr; item = item->next)
            oru_dtl_tree_add_oper_attr(above, item->object->name);
    }
    become(node, ORU_DTL_NODE_OPER_DATA, ORU_DTL_OP_NOOP);
}

// ---- Actions ----

void read_param(Parser &parser, ORUDtlNode *above, ORUDtlNode *action, const xmlNode *element) {
    const ElementPlace place(parser, element);
    ORUDtlNode *node = parser.made(oru_dtl_tree_add_child_w_strname_type(
        action, xml_name(element), ORU_DTL_NODE_ACTION_PARAM));
    if (node == nullptr)
        return;
    oru_dtl_tree_set_op(node, ORU_DTL_OP_NOOP);
    const ElementText raw(element);
    const Text text = raw.says_something() ? raw.stripped() : Text();
    if (!text)
        return;
    const auto value = read_value(text.get(), "$", above);
    if (value)
        oru_dtl_tree_set_act_in_param(above, node->name, value.get());
}

void match_action(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    const char *name = name_text(node->name);
    if (oru_do_mr_meta_get_act_meta(above->mr_info->mr_meta, name) == nullptr) {
        ORU_TRACE(Level::failure, "Invalid action name %s", name);
        parser.fail(ORU_RC_GENERAL, "Invalid action name");
        return;
    }
    oru_dtl_tree_set_act_name(above, node->name);
    become(node, ORU_DTL_NODE_ACTION, ORU_DTL_OP_NOOP);
    for (const xmlNode *child : XmlChildren(element))
        read_param(parser, above, node, child);
}

}  // namespace

void address_reference(Parser &parser, ORUDtlNode *node, int32_t role, ORUDoName *name,
                       ORUDoMrMeta *target) {
    const std::string_view start = template_start(role);
    const auto uri = start.empty() ? Ref<ORUDoUri>() : template_uri(start, name_text(name));
    if (!uri && !start.empty())
        parser.lack_node();
    parser.address(node, uri.get(), target);
}

void match(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element) {
    switch (above->op) {
        case ORU_DTL_OP_GET:
        case ORU_DTL_OP_COLL_GET:
            match_property(parser, above, node, element);
            break;
        case ORU_DTL_OP_GET_ALL:
        case ORU_DTL_OP_COLL_GET_ALL:
            if (!match_property(parser, above, node, element) && !match_cfg_group(above, node))
                match_oper_group(above, node);
            break;
        case ORU_DTL_OP_GET_ALL_CFG:
        case ORU_DTL_OP_COLL_GET_ALL_CFG:
            if (!match_property(parser, above, node, element))
                match_cfg_group(above, node);
            break;
        case ORU_DTL_OP_GET_ALL_OPER:
        case ORU_DTL_OP_COLL_GET_ALL_OPER:
            if (!match_property(parser, above, node, element))
                match_oper_group(above, node);
            break;
        case ORU_DTL_OP_ACTION:
        case ORU_DTL_OP_COLL_ACTION:
            match_action(parser, above, node, element);
            break;
        default:
            break;
    }
}

}  // namespace oru::dtl
