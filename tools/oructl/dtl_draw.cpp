// The drawing of a checked document.
#include "dtl_check.h"

namespace oructl {
namespace {

std::string place_of(const Fault &fault) {
    return fault.file + (fault.line > 0 ? ":" + std::to_string(fault.line) : "") + ": ";
}

void draw(const DtlItem &item, const std::string &head, const std::string &indent,
          std::string &out) {
    out += head + item.title + "\n";
    const std::string inner = indent + (item.children.empty() ? "    " : "│   ");
    for (const std::string &line : item.details)
        out += inner + line + "\n";
    for (const Fault &fault : item.faults)
        out += inner + "! " + place_of(fault) + "<" + fault.element + ">: " + fault.words + "\n";
    for (size_t i = 0; i < item.children.size(); ++i) {
        const bool last = i + 1 == item.children.size();
        draw(item.children[i], indent + (last ? "└── " : "├── "), indent + (last ? "    " : "│   "),
             out);
    }
}

}  // namespace

std::string draw(const CheckedDtl &checked) {
    std::string out;
    for (const DtlItem &root : checked.roots)
        draw(root, "", "", out);
    return out;
}

}  // namespace oructl
