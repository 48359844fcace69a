// Objects from one wire form to another.
#ifndef ORU_TOOLS_ORUCTL_CONVERT_H
#define ORU_TOOLS_ORUCTL_CONVERT_H

#include <string>
#include <vector>

#include "source_text.h"
#include "wire_check.h"

namespace oructl {

enum class OutputForm { json, compact, xml, text };

struct ConvertOptions {
    WireOptions wire;
    OutputForm form = OutputForm::json;
    int32_t indent = -1;  // tabs; -1 for none and no layout
};

struct Converted {
    std::string text;  // of the documents that could be converted
    std::vector<Fault> faults;
};

Converted convert(const SourceText &source, const ConvertOptions &options);

}  // namespace oructl

#endif
