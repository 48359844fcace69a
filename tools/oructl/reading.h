// Resources read from a database.
#ifndef ORU_TOOLS_ORUCTL_READING_H
#define ORU_TOOLS_ORUCTL_READING_H

#include <functional>
#include <string>
#include <vector>

#include "database.h"

namespace oructl {

// The attributes of one resource that have a value, in the order of the names. Throws `Failure`.
Properties read_resource(const Database &database, const std::string &address,
                         const std::vector<std::string> &names, bool with_defaults);

// The members of a collection, one after the other. Throws `Failure`.
using TakeRow = std::function<void(Properties)>;
void read_collection(const Database &database, const std::string &address,
                     const std::vector<std::string> &names, bool with_defaults,
                     const TakeRow &take);

// The type of the members of a collection as far as the model tells; null for none.
ORUMdMrMeta *type_of_collection(const Database &database, const std::string &address);

// What is read of a resource when nothing was asked for by name: address, type and all attributes.
std::vector<std::string> all_names(const ORUMdMrMeta &mr);

// Throws `Failure` for a name that resources of the type do not have.
void check_names(const ORUMdMrMeta &mr, const std::vector<std::string> &names);

}  // namespace oructl

#endif
