// Where clauses of documents.
#include <cstring>

#include "do/strbuf.h"
#include "dtl/parser.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

using NvlistRef = Ref<ORUDoNvlist>;

struct Comparison {
    const char *word;
    const char *text;
};

constexpr Comparison kComparisons[] = {{"eq", " ="}, {"gt", " >"},  {"ge", " >="},
                                       {"lt", " <"}, {"le", " <="}, {"ne", " <>"}};

// Two letters of which the first is `g` or `l` and which mean nothing add nothing.
bool is_dropped(const char *word) {
    return (word[0] == 'g' || word[0] == 'l') && std::strlen(word) == 2;
}

bool append_comparison(ORUDoStrbuf &out, const char *word) {
    if (word == nullptr)
        return true;
    for (const Comparison &comparison : kComparisons) {
        if (std::strcmp(word, comparison.word) == 0)
            return strbuf_append(out, comparison.text);
    }
    return is_dropped(word) || (strbuf_append(out, " ") && strbuf_append(out, word));
}

void set_where_error(ORUDtlNode *node, const char *words) {
    const auto error = Ref<ORUDoError>::adopt(oru_do_error_new(ORU_RC_PROPERTY, words));
    if (error)
        oru_dtl_tree_set_error(node, error.get());
}

// Blanks at the ends count, where there is more.
Ref<ORUDoValue> read_operand(ORUDtlNode *node, const xmlNode *element) {
    const ElementText text(element);
    return text.says_something() ? read_value(text.get(), "$@", node) : Ref<ORUDoValue>();
}

void read_conditions(Parser &parser, ORUDtlNode *node, const xmlNode *element, ORUDoNvlist *out);

void read_group(Parser &parser, ORUDtlNode *node, const xmlNode *element, const char *name,
                ORUDoNvlist *out) {
    const NvlistRef inner = NvlistRef::adopt(oru_do_nvlist_new());
    if (!inner) {
        ORU_TRACE(Level::failure, "Failed to allocate nvlist.");
        return;
    }
    read_conditions(parser, node, element, inner.get());
    const auto group = Ref<ORUDoValue>::adopt(oru_do_value_new_sequence(inner.get()));
    if (group)
        oru_do_nvlist_add(out, name, group.get());
}

// False when the rest of the list is not read.
bool read_condition(ORUDtlNode *node, const xmlNode *element, ORUDoNvlist *out) {
    const char *attr = xml_name(element);
    if (!check_where_attr(node, attr))
        return true;
    const auto name = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!name) {
        ORU_TRACE(Level::failure, "Failed to allocate strbuf.");
        return false;
    }
    strbuf_append(*name, attr);
    const XmlAttribute word(element, "op");
    const bool named = append_comparison(*name, word.text());
    const auto value = read_operand(node, element);
    if (named && value && oru_do_strbuf_get_err(name.get()) == 0)
        oru_do_nvlist_add(out, oru_do_strbuf_to_string(name.get()), value.get());
    return true;
}

void read_conditions(Parser &parser, ORUDtlNode *node, const xmlNode *element, ORUDoNvlist *out) {
    for (const xmlNode *child : XmlChildren(element)) {
        const ElementPlace place(parser, child);
        if (xml_is(child, "and")) {
            read_group(parser, node, child, " AND ", out);
        } else if (xml_is(child, "or")) {
            read_group(parser, node, child, " OR ", out);
        } else if (!read_condition(node, child, out)) {
            return;
        }
    }
}

}  // namespace

bool is_where(const xmlNode *element) {
    const xmlNs *ns = element->ns;
    return xml_is(element, "where") && ns != nullptr && ns->prefix != nullptr &&
           std::strcmp(reinterpret_cast<const char *>(ns->prefix), "dtl") == 0;
}

void read_where_element(Parser &parser, ORUDtlNode *node, const xmlNode *element) {
    const ElementPlace place(parser, element);
    const NvlistRef where = NvlistRef::adopt(oru_do_nvlist_new());
    if (!where) {
        ORU_TRACE(Level::failure, "Failed to allocate nvlist.");
        return;
    }
    read_conditions(parser, node, element, where.get());
    oru_dtl_tree_set_where_clause(node, where.get());
    if (XmlAttribute(element, "use-once").is("true"))
        oru_dtl_tree_set_use_where_clause_once(node, 1);
}

bool check_where_attr(ORUDtlNode *node, const char *name) {
    ORUDoMrMeta *meta = node->mr_info != nullptr ? node->mr_info->mr_meta : nullptr;
    if (meta == nullptr)
        return true;
    const auto attr = Ref<ORUDoName>::adopt(oru_do_name_new(name));
    if (!attr) {
        ORU_TRACE(Level::failure, "Failed to create name");
        return false;
    }
    ORUDoPropMeta *prop = oru_do_mr_meta_get_prop_meta(meta, attr.get());
    if (prop == nullptr) {
        ORU_TRACE(Level::failure, "<%s> Unknown attribute in where clause: %s",
                  name_text(node->name), name);
        set_where_error(node, "Unknown attrib in where clause");
        return false;
    }
    if (oru_do_prop_meta_get_category(prop) == ORU_PROP_OPER &&
        oru_do_mr_meta_is_oper_data(meta) == 0) {
        ORU_TRACE(Level::failure,
                  "<%s> Non oper-data MR query where-clause contains oper-data attribute: %s. Only "
                  "config-data attributes are allowed",
                  name_text(node->name), name);
        set_where_error(node, "Oper-data attrib in where clause");
        return false;
    }
    return true;
}

}  // namespace oru::dtl
