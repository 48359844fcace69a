// What the attributes and the text of an element say.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "dtl/parser.h"
#include "oru/json.h"
#include "oru/md_lookup.h"
#include "oru/rc.h"
#include "oru/util.h"

namespace oru::dtl {
namespace {

// From GET on.
constexpr const char *kOpWords[] = {"get",       "get-all",       "get-all-cfg",    "get-all-oper",
                                    "get-all-r", "get-all-cfg-r", "get-all-oper-r", "action"};

constexpr char kBlanks[] = " \t\n\r";

// A decimal number, at its bounds what does not fit; 0 for a text that begins with none.
int32_t number_of(const char *text) {
    const long number = std::strtol(text, nullptr, 10);
    return static_cast<int32_t>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
}

void read_batch_size(ORUDtlNode *node, const char *text) {
    if (text[0] == '$') {
        oru_dtl_tree_set_batch_size_param(node, text);
    } else if (const int32_t size = number_of(text); size > 0) {
        oru_dtl_tree_set_batch_size(node, size);
    }
}

void read_max_batches(ORUDtlNode *node, const char *text) {
    if (text[0] == '$') {
        oru_dtl_tree_set_max_batches_param(node, text);
    } else {
        oru_dtl_tree_set_max_batches(node, std::max(number_of(text), 0));
    }
}

void read_flags(ORUDtlNode *node, const xmlNode *element) {
    if (XmlAttribute(element, "return-default").is("false"))
        oru_dtl_tree_set_return_default(node, 0);
    if (XmlAttribute(element, "return-w-child").is("true"))
        oru_dtl_tree_set_return_w_child(node, 1);
    if (XmlAttribute(element, "continue-on-error").is("true"))
        oru_dtl_tree_set_continue_on_error(node, 1);
    const XmlAttribute mode(element, "return");
    if (mode.is("one"))
        oru_dtl_tree_set_return_one(node);
    if (mode.is("last"))
        oru_dtl_tree_set_return_last(node);
}

}  // namespace

FoundMr unknown_mr(const char *element_name, const char *mr_name) {
    ORU_TRACE(Level::failure, "<%s> Unknown MR %s", element_name, mr_name);
    return {nullptr, Ref<ORUDoError>::adopt(oru_do_error_new_fmt(ORU_RC_NO_SUCH_RESOURCE,
                                                                 "Unknown MR: %s\n", mr_name))};
}

FoundMr find_mr(const xmlNode *element) {
    const XmlAttribute name(element, "mr");
    if (!name) {
        ORU_TRACE(Level::failure, "<%s> Missing MR type name", xml_name(element));
        return {nullptr,
                Ref<ORUDoError>::adopt(oru_do_error_new(
                    ORU_RC_NO_SUCH_RESOURCE, "MR node requires 'mr' attribute in the DTL node"))};
    }
    ORUMdMrMeta *mr = oru_md_get_mr_meta_by_name(name.text());
    return mr != nullptr ? FoundMr{mr} : unknown_mr(xml_name(element), name.text());
}

int32_t op_of_word(const char *word, int32_t otherwise) {
    for (size_t i = 0; i < std::size(kOpWords); ++i) {
        if (std::strcmp(word, kOpWords[i]) == 0)
            return ORU_DTL_OP_GET + static_cast<int32_t>(i);
    }
    return otherwise;
}

// A word that is none means a plain read, even of a collection.
void read_mr_op(ORUDtlNode *node, const xmlNode *element, ORUDoUri *uri) {
    constexpr int32_t kNoWord = -1;
    const XmlAttribute word(element, "op");
    int32_t op = word ? op_of_word(word.text(), kNoWord) : ORU_DTL_OP_GET;
    if (op == kNoWord) {
        op = ORU_DTL_OP_GET;
    } else if (oru_do_uri_get_query_part(uri) != nullptr) {
        op += ORU_DTL_OP_COLL;
    }
    oru_dtl_tree_set_op(node, op);
    oru_dtl_tree_set_type(node, ORU_DTL_NODE_MR_OP);
}

void read_mr_attributes(ORUDtlNode *node, const xmlNode *element) {
    if (const XmlAttribute text(element, "batch-size"); text)
        read_batch_size(node, text.text());
    if (const XmlAttribute text(element, "max-batches"); text)
        read_max_batches(node, text.text());
    read_flags(node, element);
    oru_dtl_tree_set_attr_select(node, XmlAttribute(element, "attr-select").text());
    oru_dtl_tree_set_order_param(node, XmlAttribute(element, "order").text());
    oru_dtl_tree_set_flatten(node, XmlAttribute(element, "flatten").text());
}

ElementText::ElementText(const xmlNode *element) : text_(BAD_CAST "") {
    const xmlNode *first = element->children;
    if (first == nullptr)
        return;
    if (first->type == XML_TEXT_NODE && first->next == nullptr) {
        text_ = first->content;
    } else {
        text_ = made_ = xmlNodeGetContent(element);
    }
}

bool ElementText::says_something() const {
    return text_ != nullptr && get()[std::strspn(get(), kBlanks)] != '\0';
}

Text ElementText::stripped() const {
    return Text(
        oru_util_strndup_strip_end_chars(get(), static_cast<int32_t>(std::strlen(get())), kBlanks));
}

Ref<ORUDoValue> read_value(const char *text, const char *variable_starts, ORUDtlNode *node) {
    if (std::strchr(variable_starts, text[0]) != nullptr && text[0] != '\0')
        return Ref<ORUDoValue>::adopt(oru_do_value_new_string(text));
    ORUDoError *error = nullptr;
    auto value = Ref<ORUDoValue>::adopt(
        oru_do_value_from_json(text, static_cast<int32_t>(std::strlen(text)), &error));
    const auto held = Ref<ORUDoError>::adopt(error);
    if (held)
        oru_dtl_tree_set_error(node, held.get());
    return value;
}

}  // namespace oru::dtl
