// The attributes that elements of a document may carry, and what they may say.
#ifndef ORU_TOOLS_ORUCTL_DTL_ATTRIBUTES_H
#define ORU_TOOLS_ORUCTL_DTL_ATTRIBUTES_H

#include <string>
#include <vector>

#include "dtl_document.h"

namespace oructl {

enum class DtlRole { resource, reference, attribute, unmatched, where, condition, other };

// What is wrong with the attributes of an element in that role: a name or a word that nobody reads.
std::vector<std::string> attribute_faults(const xmlNode *element, DtlRole role);

}  // namespace oructl

#endif
