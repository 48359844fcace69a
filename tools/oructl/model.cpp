#include "model.h"

#include <algorithm>
#include <set>

#include "model_words.h"
#include "package_files.h"
#include "package_view.h"

namespace oructl {
namespace {

using Files = std::set<std::string>;

Files files_of(const std::vector<Fault> &faults) {
    Files files;
    for (const Fault &fault : faults)
        files.insert(fault.file);
    return files;
}

// The files that a load gave up.
Files given_up(const std::vector<Fault> &faults) {
    Files files;
    for (const Fault &fault : faults) {
        if (!fault.file.empty() && fault.words == "Failed to load " + fault.file)
            files.insert(fault.file);
    }
    return files;
}

struct Load {
    std::vector<Fault> faults;
    ORUMdPkgBundle *bundles = nullptr;
};

Load load(const PackageView &view, const PackageFiles &files) {
    FaultLog log;
    Load loaded;
    oru_md_load_dir((view.path() / "").c_str(), "", kPackageSuffix, &loaded.bundles);
    loaded.faults = log.take();
    for (Fault &fault : loaded.faults) {
        view.translate(fault);
        files.locate(fault);
    }
    return loaded;
}

std::vector<ORUMdPkgMeta *> packages_of(ORUMdPkgBundle *first_bundle) {
    std::vector<ORUMdPkgMeta *> packages;
    for (const ORUMdPkgBundle &bundle : records(first_bundle)) {
        for (ORUMdPkgMeta &package : records(bundle.pkgs))
            packages.push_back(&package);
    }
    return packages;
}

}  // namespace

Model::Model(const std::filesystem::path &folder) {
    const PackageFiles files(folder);
    faults_ = files.faults();
    Files left_out = files_of(faults_);
    for (;;) {
        const Load loaded = load(PackageView(folder, left_out), files);
        const Files bad = loaded.bundles == nullptr ? given_up(loaded.faults) : Files{};
        for (const Fault &fault : loaded.faults) {
            if (bad.empty() || bad.count(fault.file) != 0)
                faults_.push_back(fault);
        }
        if (bad.empty()) {
            packages_ = packages_of(loaded.bundles);
            break;
        }
        left_out.insert(bad.begin(), bad.end());
    }
    // In a folder the files have no order.
    std::ranges::stable_sort(faults_, {}, &Fault::file);
}

Model::~Model() {
    oru_md_free();
}

std::vector<ORUMdMrMeta *> Model::find_resources(const std::string &name) const {
    std::vector<ORUMdMrMeta *> found;
    if (name.find('/') != std::string::npos) {
        if (ORUMdMrMeta *mr = oru_md_get_mr_meta_by_name(name.c_str()))
            found.push_back(mr);
        return found;
    }
    for (ORUMdPkgMeta *package : packages_) {
        for (ORUMdMrMeta &mr : records(package->mrs)) {
            if (text_of(mr.name) == name)
                found.push_back(&mr);
        }
    }
    return found;
}

}  // namespace oructl
