// Attributes of a resource as a command line gives them.
#ifndef ORU_TOOLS_ORUCTL_ASSIGNMENTS_H
#define ORU_TOOLS_ORUCTL_ASSIGNMENTS_H

#include <string>
#include <vector>

#include "addresses.h"
#include "handles.h"
#include "model.h"

namespace oructl {

// The properties that NAME=VALUE arguments give: texts in the type that the model tells, or JSON
// when they begin with {, [ or ". Those of `unset` get a null value. Throws `Failure`.
Properties read_assignments(ORUMdMrMeta &mr, const std::vector<std::string> &texts,
                            const std::vector<std::string> &unset = {});

// Adds the keys of an address to the properties of the resource. Throws `Failure` when they have
// other keys already.
void add_keys(const ORUMdMrMeta &mr, const Address &address, ORUDoProperties *props);

// The names of keys, attributes and references to peers.
std::vector<std::string> attributes_of(const ORUMdMrMeta &mr);

// NAME and VALUE of an argument. Throws `Failure` without a "=".
std::pair<std::string, std::string> split_assignment(const std::string &text);

}  // namespace oructl

#endif
