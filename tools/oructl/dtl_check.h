// Documents of the data tree language against a model: the tree that the library makes of one, with
// every fault at its node.
#ifndef ORU_TOOLS_ORUCTL_DTL_CHECK_H
#define ORU_TOOLS_ORUCTL_DTL_CHECK_H

#include <oru/oru.h>

#include <string>
#include <vector>

#include "dtl_document.h"
#include "model.h"

namespace oructl {

// A node as it is drawn.
struct DtlItem {
    std::string title;
    std::vector<std::string> details;
    std::vector<Fault> faults;
    std::vector<DtlItem> children;
};

struct CheckedDtl {
    std::vector<Fault> faults;   // of the document as a whole
    std::vector<DtlItem> roots;  // one, or none when nothing could be read
};

CheckedDtl check_dtl(const DtlDocument &document, const Model &model);

bool has_faults(const CheckedDtl &checked);

// The tree, with faults behind a "!" under their nodes.
std::string draw(const CheckedDtl &checked);

}  // namespace oructl

#endif
