#include "package_view.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "package_files.h"

namespace oructl {
namespace {

namespace fs = std::filesystem;

fs::path new_folder() {
    std::string name = fs::temp_directory_path() / "oructl.XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), name);
    return name;
}

void replace_all(std::string &text, const std::string &from, const std::string &to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

}  // namespace

PackageView::PackageView(const fs::path &folder, const std::set<std::string> &left_out)
    : folder_(folder), path_(left_out.empty() ? folder : new_folder()) {
    if (left_out.empty())
        return;
    for (const fs::path &file : package_files(folder)) {
        if (left_out.count(file.string()) == 0)
            fs::create_symlink(fs::absolute(file), path_ / file.filename());
    }
}

PackageView::~PackageView() {
    std::error_code ignored;
    if (path_ != folder_)
        fs::remove_all(path_, ignored);
}

// The library puts a slash of its own behind the folder's.
void PackageView::translate(Fault &fault) const {
    for (std::string *text : {&fault.file, &fault.words}) {
        replace_all(*text, path_.string() + "//", path_.string() + "/");
        replace_all(*text, path_.string() + "/", (folder_ / "").string());
    }
}

}  // namespace oructl
