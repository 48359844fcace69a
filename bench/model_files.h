// Files of a generated model, in a folder that goes with the object: packages, or YANG modules with
// the same nodes. An implementation resource holds a key, 14 attributes of configuration, 15 of
// operation, a peer and up to four children, so that all of them hang below the first one.
#pragma once

#include <string>
#include <vector>

namespace oru::bench {

struct Model {
    static constexpr int kResourcesEach = 20;   // in a package
    static constexpr int kAttributesEach = 30;  // in a resource
    static constexpr int kChildrenEach = 4;

    int packages;

    // One package in ten is a library, which the others implement in turn.
    int libraries() const { return packages / 10; }
    int resources() const { return packages * kResourcesEach; }
    int attributes() const { return resources() * kAttributesEach; }

    // The implementation resources have numbers, from 0 for the root.
    int implementations() const { return (packages - libraries()) * kResourcesEach; }
    std::string name(int resource) const;
    std::vector<int> children(int resource) const;
    std::string uri(int resource) const;
};

class Folder {
  public:
    Folder();
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const std::string &path() const { return path_; }
    const std::vector<std::string> &files() const { return files_; }
    void add(const std::string &name, const std::string &text);

  private:
    std::string path_;
    std::vector<std::string> files_;
};

void write_packages(const Model &model, Folder &folder);
void write_modules(const Model &model, Folder &folder);

}  // namespace oru::bench
