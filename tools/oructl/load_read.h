// Resources from files of properties lists.
#ifndef ORU_TOOLS_ORUCTL_LOAD_READ_H
#define ORU_TOOLS_ORUCTL_LOAD_READ_H

#include <memory>
#include <string>
#include <vector>

#include "addresses.h"
#include "handles.h"
#include "source_text.h"

namespace oructl {

struct LoadedResource {
    Properties props;
    Address address;
    std::string type;  // empty where the file does not tell
    const SourceText *source = nullptr;
    size_t offset = 0;
};

struct LoadedFiles {
    std::vector<std::unique_ptr<SourceText>> sources;
    std::vector<LoadedResource> resources;  // parents before their children
    std::vector<Fault> faults;
};

// Reads lists of properties, and properties one by one, each with "_uri".
LoadedFiles read_resources(const std::vector<std::string> &files);

}  // namespace oructl

#endif
