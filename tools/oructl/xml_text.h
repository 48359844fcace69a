// XML texts, looked at with the parser's own words.
#ifndef ORU_TOOLS_ORUCTL_XML_TEXT_H
#define ORU_TOOLS_ORUCTL_XML_TEXT_H

#include <libxml/xmlerror.h>

#include <cstdint>
#include <string>

namespace oructl {

// Keeps the first thing that the parser says while it lives.
struct XmlWords {
    int32_t line = 0;
    std::string words;

    XmlWords() { xmlSetStructuredErrorFunc(this, receive); }
    ~XmlWords() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
    XmlWords(const XmlWords &) = delete;
    XmlWords &operator=(const XmlWords &) = delete;

  private:
    static void receive(void *context, xmlError *error);
};

// Why a text is no XML document; empty when it is one.
std::string xml_fault(const std::string &text);

}  // namespace oructl

#endif
