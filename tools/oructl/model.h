// The metadata of a folder of packages in the library's store, for as long as it lives.
#ifndef ORU_TOOLS_ORUCTL_MODEL_H
#define ORU_TOOLS_ORUCTL_MODEL_H

#include <oru/oru.h>

#include <filesystem>
#include <ranges>
#include <string>
#include <vector>

#include "faults.h"

namespace oructl {

// The records of a chain: `for (ORUMdMrMeta &mr : records(package.mrs))`.
template <class Record>
class records {
  public:
    explicit records(Record *first) : first_(first) {}

    class iterator {
      public:
        explicit iterator(Record *record) : record_(record) {}
        Record &operator*() const { return *record_; }
        iterator &operator++() {
            record_ = record_->next;
            return *this;
        }
        bool operator!=(const iterator &other) const { return record_ != other.record_; }

      private:
        Record *record_;
    };

    iterator begin() const { return iterator(first_); }
    iterator end() const { return iterator(nullptr); }

  private:
    Record *first_;
};

class Model {
  public:
    explicit Model(const std::filesystem::path &folder);
    ~Model();
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

    // What was found at loading. There may be packages nevertheless.
    const std::vector<Fault> &faults() const { return faults_; }

    // In order of reading, libraries first.
    const std::vector<ORUMdPkgMeta *> &packages() const { return packages_; }

    // The resources of that name, qualified or not; with a version or without.
    std::vector<ORUMdMrMeta *> find_resources(const std::string &name) const;

  private:
    std::vector<Fault> faults_;
    std::vector<ORUMdPkgMeta *> packages_;
};

}  // namespace oructl

#endif
