// Operations of a commit.
#ifndef ORU_TOOLS_ORUCTL_OPERATIONS_H
#define ORU_TOOLS_ORUCTL_OPERATIONS_H

#include "addresses.h"
#include "handles.h"

namespace oructl {

class Change {
  public:
    Change()
        : operations_(made<Operations>(oru_do_config_ops_new())),
          recent_(made<Operations>(oru_do_config_ops_new())) {}

    // The type may be empty where the model has only one there.
    void create(const Address &address, const std::string &type, ORUDoProperties *props);
    void set(const Address &address, ORUDoProperties *props);
    void remove(const Address &address);

    size_t size() const { return size_; }
    ORUDoConfigOps *get();

  private:
    void add(int32_t code, const std::string &address, ORUDoProperties *props,
             const std::string &reference, const std::string &type);
    void flush();

    // A set is walked to its end for each operation that is added to it, so that many go to a small
    // one first.
    Operations operations_;
    Operations recent_;
    size_t size_ = 0;
};

}  // namespace oructl

#endif
