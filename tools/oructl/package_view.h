// A folder of packages without some of its files: the library ends a load at a file that it cannot
// use when that is the last it meets, and says nothing then of the others.
#ifndef ORU_TOOLS_ORUCTL_PACKAGE_VIEW_H
#define ORU_TOOLS_ORUCTL_PACKAGE_VIEW_H

#include <filesystem>
#include <set>
#include <string>

#include "faults.h"

namespace oructl {

class PackageView {
  public:
    // The folder itself when nothing is left out, else a folder of links that lives as long as
    // this.
    PackageView(const std::filesystem::path &folder, const std::set<std::string> &left_out);
    ~PackageView();
    PackageView(const PackageView &) = delete;
    PackageView &operator=(const PackageView &) = delete;

    const std::filesystem::path &path() const { return path_; }

    // Puts the folder's own path where the fault speaks of the links.
    void translate(Fault &fault) const;

  private:
    std::filesystem::path folder_;
    std::filesystem::path path_;
};

}  // namespace oructl

#endif
