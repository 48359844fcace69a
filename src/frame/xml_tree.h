// The nodes of a document, built while it is parsed. They are the parser's own kind of node, but
// stand in blocks that are freed at once: most of the time that a document takes would go into its
// single allocations. A document in the parser's sense does not stand behind them.
#ifndef ORU_SRC_FRAME_XML_TREE_H
#define ORU_SRC_FRAME_XML_TREE_H

#include "frame/xml.h"

namespace oru {

// A growing text of a parse.
class XmlText {
  public:
    XmlText() = default;
    ~XmlText() { xmlFree(text_); }
    XmlText(const XmlText &) = delete;
    XmlText &operator=(const XmlText &) = delete;

    bool append(const xmlChar *text, size_t size);  // false without memory, and above the limit
    void clear() { size_ = 0; }
    const xmlChar *text() const { return text_; }
    size_t size() const { return size_; }

  private:
    xmlChar *text_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

// Takes the events of a parser for the contents of elements.
class XmlTreeBuilder {
  public:
    explicit XmlTreeBuilder(xmlParserCtxt &parser);

    // What was built, for the caller to own.
    XmlDocument take_document();

    // Makes the parser give up: its text is no document.
    static void refuse(void *context);

  private:
    static XmlTreeBuilder &of(void *context);
    static void on_start(void *context, const xmlChar *name, const xmlChar *prefix,
                         const xmlChar *uri, int namespace_count, const xmlChar **namespaces,
                         int count, int defaulted, const xmlChar **attributes);
    static void on_end(void *context, const xmlChar *name, const xmlChar *prefix,
                       const xmlChar *uri);
    static void on_text(void *context, const xmlChar *text, int size);
    static void on_cdata(void *context, const xmlChar *text, int size);
    static void on_comment(void *context, const xmlChar *text);
    static void on_instruction(void *context, const xmlChar *target, const xmlChar *text);
    static void on_reference(void *context, const xmlChar *name);

    void start(const xmlChar *name, const xmlChar *prefix, const xmlChar *uri);
    void add_attributes(const xmlChar **attributes, int count);
    void add_text(xmlElementType type, const xmlChar *text, int size);
    void end_text();
    void add_node(xmlElementType type, const xmlChar *name, const xmlChar *text);
    template <class Node>
    Node *append(xmlElementType type, const xmlChar *name);
    xmlNs *namespace_of(const xmlChar *prefix, const xmlChar *uri);
    xmlChar *copy(const xmlChar *text, size_t size);
    template <class T>
    T *checked(T *made);

    xmlParserCtxt &parser_;
    XmlArena arena_;
    XmlElement *root_ = nullptr;
    XmlElement *current_ = nullptr;
    xmlNs *last_namespace_ = nullptr;
    XmlText text_;  // not yet a node
    xmlElementType text_type_ = XML_TEXT_NODE;
    bool in_text_ = false;
};

}  // namespace oru

#endif
