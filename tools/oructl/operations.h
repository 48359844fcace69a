// Operations of a commit.
#ifndef ORU_TOOLS_ORUCTL_OPERATIONS_H
#define ORU_TOOLS_ORUCTL_OPERATIONS_H

#include "addresses.h"
#include "handles.h"

namespace oructl {

class Change {
  public:
    Change() : operations_(made<Operations>(oru_do_config_ops_new())) {}

    // The type may be empty where the model has only one there.
    void create(const Address &address, const std::string &type, ORUDoProperties *props);
    void set(const Address &address, ORUDoProperties *props);
    void remove(const Address &address);

    size_t size() const { return size_; }
    ORUDoConfigOps *get() const { return operations_.get(); }

  private:
    void add(int32_t code, const std::string &address, ORUDoProperties *props,
             const std::string &reference, const std::string &type);

    Operations operations_;
    size_t size_ = 0;
};

}  // namespace oructl

#endif
