// XML documents from outside, read by libxml2: nothing is fetched, entities and defaults of
// attributes that a document declares itself make it unreadable, nothing is printed, and nesting
// has the parser's own limit.
#ifndef ORU_SRC_FRAME_XML_H
#define ORU_SRC_FRAME_XML_H

#define U_SHOW_CPLUSPLUS_API 0
#include <libxml/tree.h>

#include <cstring>
#include <utility>

#include "frame/xml_arena.h"

namespace oru {

// Names mostly differ in their first letter.
inline bool same_text(const char *a, const char *b) {
    return *a == *b && std::strcmp(a, b) == 0;
}

// An attribute that stands in no namespace.
struct XmlProperty {
    const char *name;
    const char *value;
    const XmlProperty *next;
};

// What all elements of a document are.
struct XmlElement : xmlNode {
    const XmlProperty *first_property;
};

// Owns a parsed document.
class XmlDocument {
  public:
    XmlDocument() = default;
    XmlDocument(XmlArena arena, xmlDict *names, const XmlElement *root)
        : arena_(std::move(arena)), names_(names), root_(root) {}
    XmlDocument(XmlDocument &&other) noexcept { *this = std::move(other); }
    XmlDocument &operator=(XmlDocument &&other) noexcept {
        std::swap(arena_, other.arena_);
        std::swap(names_, other.names_);
        std::swap(root_, other.root_);
        return *this;
    }
    ~XmlDocument() { xmlDictFree(names_); }

    explicit operator bool() const { return root_ != nullptr; }
    const xmlNode *root() const { return root_; }

  private:
    XmlArena arena_;
    xmlDict *names_ = nullptr;
    const XmlElement *root_ = nullptr;
};

// Parses what the descriptor gives; false where it is no document. `path` is for places only.
XmlDocument read_xml(int fd, const char *path);

// The same for a text.
XmlDocument read_xml_text(const char *text, size_t size);

// The value of an attribute that stands in no namespace, lent by the document; null for one that
// there is not.
class XmlAttribute {
  public:
    XmlAttribute(const xmlNode *element, const char *name);

    const char *text() const { return text_; }
    explicit operator bool() const { return text_ != nullptr; }
    bool is(const char *text) const { return text_ != nullptr && same_text(text_, text); }

  private:
    const char *text_ = nullptr;
};

inline const char *xml_name(const xmlNode *node) {
    return reinterpret_cast<const char *>(node->name);
}

inline bool xml_is(const xmlNode *node, const char *name) {
    return same_text(xml_name(node), name);
}

// The element at `node` or the first behind it, or null.
inline const xmlNode *xml_element_from(const xmlNode *node) {
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

// The child elements of an element: `for (const xmlNode *child : XmlChildren(element))`.
class XmlChildren {
  public:
    explicit XmlChildren(const xmlNode *parent) : first_(xml_element_from(parent->children)) {}

    class Iterator {
      public:
        explicit Iterator(const xmlNode *node) : node_(node) {}
        const xmlNode *operator*() const { return node_; }
        Iterator &operator++() {
            node_ = xml_element_from(node_->next);
            return *this;
        }
        bool operator!=(const Iterator &other) const { return node_ != other.node_; }

      private:
        const xmlNode *node_;
    };

    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(nullptr); }

  private:
    const xmlNode *first_;
};

}  // namespace oru

#endif
