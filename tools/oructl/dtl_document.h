// A document of the data tree language as XML, looked at before the library reads it: some
// addresses and values the library answers by ending the process.
#ifndef ORU_TOOLS_ORUCTL_DTL_DOCUMENT_H
#define ORU_TOOLS_ORUCTL_DTL_DOCUMENT_H

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "source_text.h"

namespace oructl {

// What the text in an element is as a value.
struct ElementText {
    std::string text;   // without blanks around it; empty when there is none
    std::string fault;  // why it is no value; empty when it is one, or a variable
};

class DtlDocument {
  public:
    explicit DtlDocument(const SourceText &source);

    // Null for what is no XML or is refused; the faults tell why.
    const xmlNode *root() const { return xmlDocGetRootElement(document_.get()); }
    const std::vector<Fault> &faults() const { return faults_; }

    Fault fault(const xmlNode *element, std::string words) const;

    // Why the address of an element is none; empty when it is one, or when there is none.
    std::string address_fault(const xmlNode *element) const;
    ElementText text_of(const xmlNode *element) const;

    // The document without what the library cannot take: neither those addresses nor those values.
    std::string safe_text() const;

  private:
    struct FreeDocument {
        void operator()(xmlDoc *document) const { xmlFreeDoc(document); }
    };

    void check_address(xmlNode *element);
    void check_text(xmlNode *element, bool is_condition);
    void check_element(xmlNode *element, bool in_where);

    std::string file_;
    std::unique_ptr<xmlDoc, FreeDocument> document_;
    std::vector<Fault> faults_;
    std::unordered_map<const xmlNode *, std::string> address_faults_;
    std::unordered_map<const xmlNode *, ElementText> texts_;
};

std::string_view name_of(const xmlNode *node);

// The value of an attribute; false without it.
bool read_attribute(const xmlNode *element, std::string_view name, std::string &value);

bool is_where(const xmlNode *element);

// The first element from a node on.
const xmlNode *element_from(const xmlNode *node);

// Why a text is no value; empty when it is one. `later` tells that it is computed by somebody else.
std::string value_fault(const std::string &text, bool later);

}  // namespace oructl

#endif
