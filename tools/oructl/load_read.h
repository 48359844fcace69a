// Resources from files of properties lists.
#ifndef ORU_TOOLS_ORUCTL_LOAD_READ_H
#define ORU_TOOLS_ORUCTL_LOAD_READ_H

#include <string>
#include <vector>

#include "addresses.h"
#include "faults.h"
#include "handles.h"
#include "progress.h"

namespace oructl {

struct LoadedResource {
    Properties props;  // without "_uri" and "_mr"
    Address address;
    std::string type;  // empty where the file does not tell
    size_t file = 0;
    int32_t line = 0;
    int32_t column = 0;
};

struct LoadedFiles {
    std::vector<std::string> names;
    std::vector<LoadedResource> resources;  // parents before their children
    std::vector<Fault> faults;

    Fault fault(const LoadedResource &resource, std::string words) const;
};

// Reads lists of properties, and properties one by one, each with "_uri".
LoadedFiles read_resources(const std::vector<std::string> &files, Progress &progress);

}  // namespace oructl

#endif
