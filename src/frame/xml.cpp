#include "frame/xml.h"

#include <libxml/SAX2.h>
#include <libxml/xmlerror.h>

#include <cstdint>

#include "frame/xml_tree.h"

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

void refuse_entity(void *context, const xmlChar *, int, const xmlChar *, const xmlChar *,
                   xmlChar *) {
    oru::XmlTreeBuilder::refuse(context);
}

void refuse_unparsed_entity(void *context, const xmlChar *, const xmlChar *, const xmlChar *,
                            const xmlChar *) {
    oru::XmlTreeBuilder::refuse(context);
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
    oru::XmlTreeBuilder::refuse(context);
}

constexpr int kOptions = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET;

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

    // `parse` makes the parser's own document, which holds what is declared and no elements.
    template <class Parse>
    oru::XmlDocument read(Parse parse) {
        if (context_ == nullptr)
            return {};
        oru::XmlTreeBuilder builder(*context_);
        xmlDoc *declared = parse(context_);
        if (declared == nullptr)
            return {};
        xmlFreeDoc(declared);
        return builder.take_document();
    }

  private:
    xmlParserCtxt *context_;
};

}  // namespace

oru::XmlDocument oru::read_xml(int fd, const char *path) {
    const SilentParser silent;
    return Parser().read(
        [=](xmlParserCtxt *parser) { return xmlCtxtReadFd(parser, fd, path, nullptr, kOptions); });
}

oru::XmlDocument oru::read_xml_text(const char *text, size_t size) {
    if (size > INT32_MAX)
        return {};
    const SilentParser silent;
    return Parser().read([=](xmlParserCtxt *parser) {
        return xmlCtxtReadMemory(parser, text, static_cast<int>(size), nullptr, nullptr, kOptions);
    });
}

oru::XmlAttribute::XmlAttribute(const xmlNode *element, const char *name) {
    for (auto *property = static_cast<const XmlElement *>(element)->first_property;
         property != nullptr; property = property->next) {
        if (same_text(property->name, name)) {
            text_ = property->value;
            return;
        }
    }
}
