// Looks at a document before the library's reader gets it. The reader goes on past what it cannot
// take and keeps only its last failure, without a place; some texts it takes otherwise than they
// were meant, and some would end the process.
#ifndef ORU_TOOLS_ORUCTL_WIRE_CHECK_H
#define ORU_TOOLS_ORUCTL_WIRE_CHECK_H

#include <string>
#include <vector>

#include "json_tree.h"
#include "wire_forms.h"

namespace oructl {

struct WireOptions {
    std::string type;  // what a document is, without "%"; "value" for any; empty to go by its tag
    bool show_secrets = false;
    bool computes_later = false;  // functions that can end the process are not called here
};

struct CheckedDocument {
    std::vector<Fault> faults;
    bool readable = true;        // what is faulty in another one is lost or read otherwise
    const Form *form = nullptr;  // null for any value
    std::string text;            // what the reader is to get; empty for a list that was split
    size_t expression = std::string::npos;  // where the first one begins
};

CheckedDocument check_document(const SourceText &source, const JsonNode &document,
                               const WireOptions &options);

}  // namespace oructl

#endif
