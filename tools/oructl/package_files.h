// The package files of a folder, looked at as XML before the library reads them: some faults the
// library answers by ending the process, others it passes over, and what it meets when it resolves
// names has no place any more.
#ifndef ORU_TOOLS_ORUCTL_PACKAGE_FILES_H
#define ORU_TOOLS_ORUCTL_PACKAGE_FILES_H

#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

#include "faults.h"

namespace oructl {

inline constexpr char kPackageSuffix[] = ".oru2d";

// The files that the library takes for packages, by name.
std::vector<std::filesystem::path> package_files(const std::filesystem::path &folder);

class PackageFiles {
  public:
    explicit PackageFiles(const std::filesystem::path &folder);

    // Faults of files that the library cannot use: it would end the process, or not tell why.
    const std::vector<Fault> &faults() const { return faults_; }

    // Gives a fault without a file the place of the first element that mentions its longest name.
    void locate(Fault &fault) const;

  private:
    struct Reader;

    std::vector<Fault> faults_;
    std::unordered_map<std::string, Fault> mentions_;  // by the value of an attribute
};

}  // namespace oructl

#endif
