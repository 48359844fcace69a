#include "xml_text.h"

#include <libxml/parser.h>

namespace oructl {

void XmlWords::receive(void *context, xmlError *error) {
    auto *self = static_cast<XmlWords *>(context);
    if (!self->words.empty() || error->message == nullptr)
        return;
    self->line = error->line;
    self->words = error->message;
    while (self->words.ends_with('\n'))
        self->words.pop_back();
}

std::string xml_fault(const std::string &text) {
    XmlWords words;
    xmlDoc *document = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                     XML_PARSE_NONET | XML_PARSE_HUGE);
    xmlFreeDoc(document);
    return words.words;
}

}  // namespace oructl
