// References of a load in batches. Those that lead to resources of later batches wait until these
// are written.
#ifndef ORU_TOOLS_ORUCTL_LOAD_LATER_H
#define ORU_TOOLS_ORUCTL_LOAD_LATER_H

#include <string>
#include <unordered_map>
#include <vector>

#include "load_read.h"
#include "model.h"

namespace oructl {

struct LaterReferences {
    Address address;   // of the resource that has them
    Properties props;  // they and nothing else
};

class Later {
  public:
    // Whether any reference can have to wait, which costs a table of all addresses.
    Later(const std::vector<LoadedResource> &resources, size_t batch);

    // Takes the references out of the resource at a place that have to wait.
    void take(const ORUMdMrMeta &mr, const LoadedResource &resource, size_t place);

    const std::vector<LaterReferences> &taken() const { return taken_; }

  private:
    bool has_to_wait(const std::string &address, size_t end) const;
    bool has_to_wait(ORUDoValue *value, size_t end) const;

    size_t batch_;
    std::unordered_map<std::string, size_t> places_;
    std::vector<LaterReferences> taken_;
};

}  // namespace oructl

#endif
