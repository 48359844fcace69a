// What the commands of `oructl model` print to standard output. False when there was nothing to
// print, which is told on standard error.
#ifndef ORU_TOOLS_ORUCTL_MODEL_PRINT_H
#define ORU_TOOLS_ORUCTL_MODEL_PRINT_H

#include <string>

#include "model.h"

namespace oructl {

bool print_list(const Model &model);

// Everything of that name: resources, definitions, types.
bool print_entity(const Model &model, const std::string &name);

// From the resource `root`, or from all that no other holds when it is empty. `depth` 0 is all.
bool print_tree(const Model &model, const std::string &root, int32_t depth);

}  // namespace oructl

#endif
