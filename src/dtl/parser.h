// The reader of documents: what its steps share. The document's elements become nodes; what is
// wrong with an element sits as an error on its node, and the document goes on.
#ifndef ORU_SRC_DTL_PARSER_H
#define ORU_SRC_DTL_PARSER_H

#include "do/error.h"
#include "do/name.h"
#include "do/nvlist.h"
#include "do/uri.h"
#include "do/value.h"
#include "frame/place.h"
#include "frame/text.h"
#include "frame/xml.h"
#include "md/mr_meta.h"
#include "oru/dtl.h"
#include "oru/md.h"

namespace oru::dtl {

struct Parser {
    const char *file;  // null for a document from memory
    Ref<ORUDoError> error{};

    void fail(int32_t code, const char *words);
    // Memory ran out for a node, or for what makes it more than a name.
    void lack_node();
    // A node that may not have been had; null is reported.
    ORUDtlNode *made(ORUDtlNode *node);
    // Gives a node its address and its resource.
    void address(ORUDtlNode *node, ORUDoUri *uri, ORUDoMrMeta *mr_meta);
};

// Tells that the reader stands at an element.
struct ElementPlace : Place {
    ElementPlace(const Parser &parser, const xmlNode *element)
        : Place(parser.file, static_cast<int32_t>(xmlGetLineNo(element)), xml_name(element)) {}
};

// ---- Children of a node (parser_children.cpp) ----

void read_children(Parser &parser, ORUDtlNode *node, const xmlNode *element, int32_t level);

// ---- What an element says (parser_element.cpp) ----

// The record of the resource that an element names, or null and why not.
struct FoundMr {
    ORUMdMrMeta *mr = nullptr;
    Ref<ORUDoError> error{};
};
FoundMr find_mr(const xmlNode *element);
FoundMr unknown_mr(const char *element_name, const char *mr_name);

// The operation of an element with an address; it makes the node one of type 3.
void read_mr_op(ORUDtlNode *node, const xmlNode *element, ORUDoUri *uri);

// How an element with an address, or a reference, is read.
void read_mr_attributes(ORUDtlNode *node, const xmlNode *element);

// The op that a word stands for, from GET to ACTION; `otherwise` for any other word.
int32_t op_of_word(const char *word, int32_t otherwise);

// The text in an element, mostly lent by the document. Null without memory.
class ElementText {
  public:
    explicit ElementText(const xmlNode *element);
    ~ElementText() { xmlFree(made_); }
    ElementText(const ElementText &) = delete;
    ElementText &operator=(const ElementText &) = delete;

    const char *get() const { return reinterpret_cast<const char *>(text_); }
    // Whether there is more in it than blanks.
    bool says_something() const;
    // Without the blanks at its ends.
    Text stripped() const;

  private:
    const xmlChar *text_;
    xmlChar *made_ = nullptr;
};

// The value that a text stands for: itself when it begins with one of `variable_starts`, JSON
// otherwise. What is wrong with it becomes the error of `node`.
Ref<ORUDoValue> read_value(const char *text, const char *variable_starts, ORUDtlNode *node);

// ---- Matching against the metadata of the node above (parser_match.cpp) ----

// True when the node became an attribute or a reference.
void match(Parser &parser, ORUDtlNode *above, ORUDtlNode *node, const xmlNode *element);

// Gives a reference its target and its address, a template; a role that has none leaves it without.
void address_reference(Parser &parser, ORUDtlNode *node, int32_t role, ORUDoName *name,
                       ORUDoMrMeta *target);

// ---- Attributes by metadata (parser_expand.cpp) ----

void add_all_cfg_attrs(ORUDtlNode *node);
void add_all_oper_attrs(ORUDtlNode *node);

// Gives a node with a recursive op its attributes and children, and those theirs.
void expand_by_metadata(Parser &parser, ORUDtlNode *node);

// ---- Conditions (parser_where.cpp) ----

bool is_where(const xmlNode *element);
void read_where_element(Parser &parser, ORUDtlNode *node, const xmlNode *element);

// Whether rows of the node may be selected by that attribute; if not, the node has the error.
bool check_where_attr(ORUDtlNode *node, const char *name);

}  // namespace oru::dtl

#endif
