// Nodes of the data tree language in words.
#ifndef ORU_TOOLS_ORUCTL_DTL_WORDS_H
#define ORU_TOOLS_ORUCTL_DTL_WORDS_H

#include <oru/oru.h>

#include <string>
#include <vector>

namespace oructl {

// "port  mr-op  coll:get  com.example:1.0/Port  /chassis;id=1?ports".
std::string title_of(const ORUDtlNode &node);

// What the node reads and how, a line each.
std::vector<std::string> details_of(const ORUDtlNode &node);

// The names of a list, which may be null.
std::vector<std::string> names_of(ORUDoNlist *list);
std::vector<std::string> names_of(ORUDoPropMetaList *list);

}  // namespace oructl

#endif
