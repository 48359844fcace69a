#include "frame/xml.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <cstdint>

namespace {

void stay_silent(void *, xmlError *) {}

// The parser would print what it meets outside of a document, through this thread's handler.
class SilentParser {
  public:
    SilentParser() : handler_(xmlStructuredError), context_(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, stay_silent);
    }
    ~SilentParser() { xmlSetStructuredErrorFunc(context_, handler_); }
    SilentParser(const SilentParser &) = delete;
    SilentParser &operator=(const SilentParser &) = delete;

  private:
    xmlStructuredErrorFunc handler_;
    void *context_;
};

void refuse(void *context) {
    auto *parser = static_cast<xmlParserCtxt *>(context);
    parser->wellFormed = 0;
    xmlStopParser(parser);
}

void refuse_entity(void *context, const xmlChar *, int, const xmlChar *, const xmlChar *,
                   xmlChar *) {
    refuse(context);
}

void refuse_unparsed_entity(void *context, const xmlChar *, const xmlChar *, const xmlChar *,
                            const xmlChar *) {
    refuse(context);
}

// A short document could repeat a long default without end, once for every element that leaves the
// attribute out.
void refuse_default(void *context, const xmlChar *element, const xmlChar *name, int type, int kind,
                    const xmlChar *value, xmlEnumeration *words) {
    if (value == nullptr) {
        xmlSAX2AttributeDecl(context, element, name, type, kind, value, words);
        return;
    }
    xmlFreeEnumeration(words);
    refuse(context);
}

class Parser {
  public:
    Parser() : context_(xmlNewParserCtxt()) {
        if (context_ == nullptr)
            return;
        context_->sax->serror = stay_silent;
        context_->sax->entityDecl = refuse_entity;
        context_->sax->unparsedEntityDecl = refuse_unparsed_entity;
        context_->sax->attributeDecl = refuse_default;
    }
    ~Parser() { xmlFreeParserCtxt(context_); }
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;

    xmlDoc *read(int fd, const char *path) {
        if (context_ == nullptr)
            return nullptr;
        return xmlCtxtReadFd(context_, fd, path, nullptr, kOptions);
    }

    xmlDoc *read(const char *text, size_t size) {
        if (context_ == nullptr || size > INT32_MAX)
            return nullptr;
        return xmlCtxtReadMemory(context_, text, static_cast<int>(size), nullptr, nullptr,
                                 kOptions);
    }

  private:
    // Short texts stand in their nodes: the tree is only read.
    static constexpr int kOptions =
        XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_COMPACT;

    xmlParserCtxt *context_;
};

const char *name_of(const xmlAttr &attribute) {
    return reinterpret_cast<const char *>(attribute.name);
}

}  // namespace

oru::XmlDocument oru::read_xml(int fd, const char *path) {
    const SilentParser silent;
    return XmlDocument(Parser().read(fd, path));
}

oru::XmlDocument oru::read_xml_text(const char *text, size_t size) {
    const SilentParser silent;
    return XmlDocument(Parser().read(text, size));
}

// Defaults that a document declares do not get here, so what the element has is all there is.
oru::XmlAttribute::XmlAttribute(const xmlNode *element, const char *name) {
    const xmlAttr *attribute = element->properties;
    while (attribute != nullptr &&
           (attribute->ns != nullptr || !same_text(name_of(*attribute), name)))
        attribute = attribute->next;
    if (attribute == nullptr)
        return;
    const xmlNode *value = attribute->children;
    const bool lent = value != nullptr && value->next == nullptr && value->type == XML_TEXT_NODE;
    if (!lent)
        gathered_ = xmlGetNoNsProp(element, attribute->name);
    text_ = reinterpret_cast<const char *>(lent ? value->content : gathered_);
}

oru::XmlAttribute::~XmlAttribute() {
    if (gathered_ != nullptr)
        xmlFree(gathered_);
}
