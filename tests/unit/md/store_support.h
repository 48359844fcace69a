// Packages written by tests into a folder of their own, and the store loaded from it.
#ifndef ORU_TESTS_UNIT_MD_STORE_SUPPORT_H
#define ORU_TESTS_UNIT_MD_STORE_SUPPORT_H

#include <gtest/gtest.h>
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/name.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace oru::test {

// A folder that goes with its owner.
class Folder {
  public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "oru_md_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            std::abort();
        path_ = pattern;
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

    void write(const std::string &name, const std::string &text) const {
        std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
        std::ofstream(file(name)) << text;
    }

  private:
    std::string path_;
};

inline std::string lib_package(const std::string &content, const std::string &name = "com.lib",
                               const std::string &version = "1.0") {
    return "<oru2dLib package=\"" + name + "\" version=\"" + version + "\" schemaVersion=\"1.8\">" +
           content + "</oru2dLib>";
}

inline std::string impl_package(const std::string &content, const std::string &name = "com.impl",
                                const std::string &version = "1.0") {
    return "<oru2dImpl package=\"" + name + "\" version=\"" + version +
           "\" schemaVersion=\"1.8\">" + content + "</oru2dImpl>";
}

// Resources in a definition of their own.
inline std::string resources(const std::string &content) {
    return "<managedResourceDef>" + content + "</managedResourceDef>";
}

inline std::string resource(const std::string &name, const std::string &content,
                            const std::string &attributes = "") {
    return "<managedResource name=\"" + name + "\" " + attributes + ">" + content +
           "</managedResource>";
}

// A test with a folder of packages and no store at its beginning and end.
class StoreTest : public testing::Test {
  protected:
    ~StoreTest() override { oru_md_free(); }

    // Loads the folder; the first bundle, null when the load failed.
    ORUMdPkgBundle *load() {
        ORUMdPkgBundle *bundle = nullptr;
        EXPECT_EQ(oru_md_load_dir(folder.path().c_str(), "", ".oru2d", &bundle), 0);
        return bundle;
    }

    // One library package, or one of each kind.
    ORUMdPkgBundle *load_lib(const std::string &content) {
        folder.write("a.oru2d", lib_package(content));
        return load();
    }
    ORUMdPkgBundle *load_both(const std::string &lib, const std::string &impl) {
        folder.write("b.oru2d", impl_package(impl));
        return load_lib(lib);
    }

    Folder folder;
};

// A test whose bundles stand in its folder, the current one while it runs.
class BundleTest : public StoreTest {
  protected:
    BundleTest() {
        here_ = std::filesystem::current_path();
        std::filesystem::current_path(folder.path());
    }
    ~BundleTest() override { std::filesystem::current_path(here_); }

    void write_bundle(const std::string &bundle, const std::string &content,
                      const std::string &file = "a.oru2d") {
        folder.write(bundle + "/usr/halden/etc/oru2d/" + file, content);
    }

  private:
    std::filesystem::path here_;
};

inline std::string text(ORUDoName *name) {
    return name != nullptr ? oru_do_name_get_strname(name) : "(null)";
}

}  // namespace oru::test

#endif
