// The parameters that a document of the data tree language asks for.
#ifndef ORU_TOOLS_ORUCTL_DTL_PARAMS_H
#define ORU_TOOLS_ORUCTL_DTL_PARAMS_H

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace oructl {

// Every NAME of a `$NAME` in an element and those in it, in order and once.
std::vector<std::string> params_of(const xmlNode *element);

}  // namespace oructl

#endif
