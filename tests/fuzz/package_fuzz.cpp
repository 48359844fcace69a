// Any text as the content of a library package and of one that implements it, parted by a zero
// byte: loaded, resolved, merged, walked and freed. The mandatory names are put in, since a package
// without them ends the process on purpose.
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/mr_meta.h>
#include <oru/name.h>
#include <oru/prop_meta.h>
#include <oru/uri.h>
#include <oruplatform/poolheap.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/no_locks.h"

namespace {

namespace fs = std::filesystem;

const fs::path &folder() {
    static const fs::path path = [] {
        const auto base = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
        auto made = base / ("oru_package_fuzz_" + std::to_string(getpid()));
        fs::create_directories(made);
        std::atexit([] { fs::remove_all(folder()); });
        return made;
    }();
    return path;
}

// Gives every `<configData` and `<operationalData` a name: a digit behind it chooses which.
std::string with_names(std::string text) {
    for (const std::string element : {"<configData", "<operationalData"}) {
        for (size_t at = 0; (at = text.find(element, at)) != std::string::npos;) {
            at += element.size();
            if (text.compare(at, 3, "Def") == 0)
                continue;
            const bool chosen = at < text.size() && text[at] >= '0' && text[at] <= '9';
            const std::string name = chosen ? std::string(1, text[at]) : "0";
            text.replace(at, chosen ? 1 : 0, " name='d" + name + "' ");
        }
    }
    return text;
}

void write(const char *file, const std::string &root, const std::string &package,
           const std::string &content) {
    std::ofstream(folder() / file)
        << '<' << root << " package='" << package << "' version='1.0' schemaVersion='1.8'>"
        << with_names(content) << "</" << root << '>';
}

void look_at_attrs(ORUMdAttrMeta *first) {
    for (auto *attr = first; attr != nullptr; attr = attr->next) {
        CHECK(attr->name != nullptr && attr->prop_meta != nullptr);
        CHECK(oru_md_attr_meta_find(first, attr->name) != nullptr);
        if (attr->typedef_meta != nullptr)
            oru_md_get_do_typedef_meta(attr->typedef_meta);
    }
}

void look_at(ORUMdMrMeta *mr) {
    CHECK(oru_md_mr_meta_to_string(mr) != nullptr);
    CHECK(oru_do_mr_meta_get_mr_fq_name(mr->do_mr_meta) != nullptr);
    for (auto *chain : {mr->primary_keys, mr->secondary_keys, mr->cd_attrs, mr->od_attrs})
        look_at_attrs(chain);
    for (auto *ref = mr->refs; ref != nullptr; ref = ref->next) {
        CHECK(ref->is_child ==
              (oru_do_prop_meta_get_ref_role(ref->prop_meta) == ORU_REF_CHILD ? 1 : 0));
    }
    for (auto *impl = mr->impl_mr_metas; impl != nullptr; impl = impl->next)
        CHECK(impl->mr->parent_mr == mr);
    ORUDoUri *uri = oru_do_uri_new("/a;k=1/b/c");
    int32_t rest = 0;
    auto *found = oru_md_get_mr_meta_by_uri(uri, 0, mr, &rest, nullptr, nullptr, nullptr);
    CHECK(rest >= 0 && rest <= 2 && (found != nullptr || rest == 0));
    oru_do_uri_deref(uri);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    const size_t part = input.find('\0');
    write("a.oru2d", "oru2dLib", "c.l", input.substr(0, part));
    write("b.oru2d", "oru2dImpl", "c.i",
          part == std::string::npos ? std::string() : input.substr(part + 1));
    const uint64_t live = poolheap_live_blocks();
    ORUMdPkgBundle *bundle = nullptr;
    CHECK(oru_md_load_dir(folder().c_str(), "", ".oru2d", &bundle) == 0);
    for (; bundle != nullptr; bundle = bundle->next) {
        for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
            for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
                look_at(mr);
        }
    }
    CHECK(oru_md_free() == 0);
    CHECK(poolheap_live_blocks() == live);
    return 0;
}
