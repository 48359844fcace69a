// Operations of a commit.
#ifndef ORU_TOOLS_ORUCTL_OPERATIONS_H
#define ORU_TOOLS_ORUCTL_OPERATIONS_H

#include <unordered_map>
#include <vector>

#include "addresses.h"
#include "handles.h"

namespace oructl {

class Change {
  public:
    // The type may be empty where the model has only one there.
    void create(const Address &address, const std::string &type, ORUDoProperties *props);
    void set(const Address &address, ORUDoProperties *props);
    void remove(const Address &address);

    size_t size() const { return size_; }
    ORUDoConfigOps *get();

  private:
    struct Part {
        Operations operations;
        size_t size;
    };

    void add(int32_t code, const std::string &address, ORUDoProperties *props, ORUDoName *reference,
             ORUDoName *type);
    ORUDoName *shared_name(const std::string &name);
    void join_last_two();

    // A set is walked to its end for each operation that is added to it. So they go to small ones,
    // and two of a size become one: the sizes fall from the first to the last.
    std::vector<Part> parts_;
    size_t size_ = 0;

    // What many operations share: the parent of the last one, and the few names of a model.
    std::string last_address_;
    Uri last_uri_;
    std::unordered_map<std::string, Name> names_;
};

}  // namespace oructl

#endif
