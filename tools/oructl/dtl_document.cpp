#include "dtl_document.h"

#include <libxml/parser.h>
#include <oru/oru.h>

#include <algorithm>

#include "json_tree.h"
#include "wire_check.h"
#include "xml_text.h"

namespace oructl {
namespace {

// A document is a small query.
constexpr size_t kMaxSize = 1 << 20;

constexpr char kBlanks[] = " \t\r\n";

std::string text_of(const xmlChar *text) {
    return text != nullptr ? reinterpret_cast<const char *>(text) : "";
}

std::string stripped(const std::string &text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool is_variable(const std::string &text) {
    return text.starts_with('$') || text.starts_with('@');
}

// Declarations would let a short document grow without end. The library refuses them too.
struct Declarations {
    bool found = false;

    static void refuse(void *context) {
        auto *parser = static_cast<xmlParserCtxt *>(context);
        static_cast<Declarations *>(parser->_private)->found = true;
        xmlStopParser(parser);
    }
    static void on_entity(void *context, const xmlChar *, int, const xmlChar *, const xmlChar *,
                          xmlChar *) {
        refuse(context);
    }
    static void on_unparsed(void *context, const xmlChar *, const xmlChar *, const xmlChar *,
                            const xmlChar *) {
        refuse(context);
    }
    static void on_attribute(void *context, const xmlChar *, const xmlChar *, int, int,
                             const xmlChar *, xmlEnumeration *words) {
        xmlFreeEnumeration(words);
        refuse(context);
    }
};

xmlDoc *parse(const std::string &text, Declarations &declarations) {
    xmlParserCtxt *parser = xmlNewParserCtxt();
    if (parser == nullptr)
        throw std::bad_alloc();
    parser->_private = &declarations;
    parser->sax->entityDecl = Declarations::on_entity;
    parser->sax->unparsedEntityDecl = Declarations::on_unparsed;
    parser->sax->attributeDecl = Declarations::on_attribute;
    xmlDoc *document = xmlCtxtReadMemory(parser, text.data(), static_cast<int>(text.size()),
                                         nullptr, nullptr, XML_PARSE_NONET);
    xmlFreeParserCtxt(parser);
    return document;
}

// A text without quotes is the commonest of all.
std::string syntax_words(const std::string &text, std::string fault) {
    if (fault.ends_with('.'))
        fault.pop_back();
    const bool plain = text.find_first_of("\"{}[]\\") == std::string::npos;
    return fault + (plain ? "; a text stands in quotes: \"" + stripped(text) + "\"" : "");
}

// The element's own. What is left in elements within it are whole values, so that all of it
// together is none that goes on behind the first.
void clear_own_text(xmlNode *element) {
    for (xmlNode *node = element->children; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)
            xmlNodeSetContent(node, nullptr);
    }
}

}  // namespace

std::string value_fault(const std::string &text, bool later) {
    if (text.find_first_not_of(kBlanks) == std::string::npos)
        return "";
    const SourceText source("", text);
    const JsonTree tree(source);
    if (tree.fault())
        return syntax_words(text, tree.fault()->words);
    if (tree.documents().size() != 1)
        return "one value is wanted, not " + std::to_string(tree.documents().size());
    const CheckedDocument checked = check_document(source, *tree.documents().front(),
                                                   {.type = "value", .computes_later = later});
    return checked.faults.empty() ? "" : checked.faults.front().words;
}

DtlDocument::DtlDocument(const SourceText &source) : file_(source.file()) {
    const std::string &text = source.content();
    if (text.size() > kMaxSize) {
        faults_.push_back({file_, 0, "", "larger than " + std::to_string(kMaxSize) + " bytes"});
        return;
    }
    if (const size_t zero = text.find('\0'); zero != std::string::npos) {
        faults_.push_back(source.fault(zero, "a zero byte, at which the document would end"));
        return;
    }
    const XmlWords parser;
    Declarations declarations;
    document_.reset(parse(text, declarations));
    if (declarations.found) {
        document_.reset();
        faults_.push_back({file_, 0, "", "declares entities or attributes, which is refused"});
    } else if (!parser.words.empty()) {
        faults_.push_back({file_, parser.line, "", parser.words});
    }
    if (xmlNode *element = xmlDocGetRootElement(document_.get()))
        check_element(element, false);
}

Fault DtlDocument::fault(const xmlNode *element, std::string words) const {
    return {file_, static_cast<int32_t>(xmlGetLineNo(element)), std::string(name_of(element)),
            std::move(words)};
}

std::string DtlDocument::address_fault(const xmlNode *element) const {
    const auto found = address_faults_.find(element);
    return found != address_faults_.end() ? found->second : "";
}

ElementText DtlDocument::text_of(const xmlNode *element) const {
    const auto found = texts_.find(element);
    return found != texts_.end() ? found->second : ElementText{};
}

std::string DtlDocument::safe_text() const {
    xmlChar *text = nullptr;
    int size = 0;
    xmlDocDumpMemory(document_.get(), &text, &size);
    if (text == nullptr)
        throw std::bad_alloc();
    const std::string copy(reinterpret_cast<const char *>(text), static_cast<size_t>(size));
    xmlFree(text);
    return copy;
}

// An empty address does not parse either, but ends nothing.
void DtlDocument::check_address(xmlNode *element) {
    std::string address;
    if (!read_attribute(element, "uri", address))
        return;
    FaultLog log;
    ORUDoUri *uri = oru_do_uri_validate_new(address.c_str());
    oru_do_uri_deref(uri);
    const std::vector<Fault> faults = log.take();
    if (uri != nullptr)
        return;
    address_faults_[element] = faults.empty() ? "no address" : faults.front().words;
    for (xmlAttr *attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (name_of(reinterpret_cast<const xmlNode *>(attribute)) == "uri")
            xmlNodeSetContent(reinterpret_cast<xmlNode *>(attribute), nullptr);
    }
}

// What reads as a value stays, and what is none where none is read does no harm as nothing.
void DtlDocument::check_text(xmlNode *element, bool is_condition) {
    xmlChar *content = xmlNodeGetContent(element);
    const std::string raw = oructl::text_of(content);
    xmlFree(content);
    ElementText entry{.text = stripped(raw), .fault = {}};
    if (entry.text.empty())
        return;
    const std::string &read = is_condition ? raw : entry.text;
    if (is_variable(entry.text) && !is_variable(read))
        entry.fault = "blanks before " + entry.text + ", which is no variable then";
    else if (!is_variable(entry.text))
        entry.fault = value_fault(read, false);
    if (!entry.fault.empty())
        clear_own_text(element);
    texts_[element] = std::move(entry);
}

// The innermost first: what holds it holds its text.
void DtlDocument::check_element(xmlNode *element, bool in_where) {
    const bool where = in_where || is_where(element);
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            check_element(child, where);
    }
    check_address(element);
    check_text(element, in_where);
}

std::string_view name_of(const xmlNode *node) {
    return reinterpret_cast<const char *>(node->name);
}

bool read_attribute(const xmlNode *element, std::string_view name, std::string &value) {
    for (const xmlAttr *attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (name != reinterpret_cast<const char *>(attribute->name))
            continue;
        xmlChar *content = xmlNodeGetContent(reinterpret_cast<const xmlNode *>(attribute));
        value = text_of(content);
        xmlFree(content);
        return true;
    }
    return false;
}

bool is_where(const xmlNode *element) {
    return name_of(element) == "where" && element->ns != nullptr &&
           text_of(element->ns->prefix) == "dtl";
}

const xmlNode *element_from(const xmlNode *node) {
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

}  // namespace oructl
