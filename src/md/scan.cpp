// The scan of a directory for packages of one kind.
#include <dirent.h>
#include <fcntl.h>
#include <libxml/xmlversion.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "frame/require.h"
#include "frame/trace.h"
#include "md/reader.h"
#include "md/records.h"
#include "md/store.h"
#include "oru/rc.h"

namespace {

using oru::Level;

constexpr int kParserVersion = 20908;
constexpr size_t kPathSize = 4096;
constexpr char kBundlePath[] = "/usr/halden/etc";

using Path = char[kPathSize];

const char *or_empty(const char *text) {
    return text != nullptr ? text : "";
}

bool fits(int length) {
    return length > 0 && static_cast<size_t>(length) < kPathSize;
}

bool build_directory(Path &path, const char *base, const char *sub, const char *bundle) {
    return fits(
        bundle != nullptr
            ? std::snprintf(path, sizeof path, "%s/%s/%s", bundle, kBundlePath, or_empty(sub))
            : std::snprintf(path, sizeof path, "%s%s", or_empty(base), or_empty(sub)));
}

// Only the first occurrence of the suffix counts, and nothing may stand behind it.
bool has_suffix(const char *name, const char *suffix) {
    const char *found = std::strstr(name, suffix);
    return found != nullptr && found[std::strlen(suffix)] == '\0';
}

// Nobody waits for the other end of a pipe, nor for that of a device.
int open_without_waiting(const char *path) {
    return open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

std::FILE *open_stream(const char *path) {
    const int fd = open_without_waiting(path);
    std::FILE *file = fd >= 0 ? fdopen(fd, "r") : nullptr;
    if (file == nullptr && fd >= 0)
        close(fd);
    return file;
}

bool is_regular(std::FILE *file) {
    struct stat status;
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

// Looks into a file for the opening of its root element, which has to stand on one line with a
// blank behind the name. `out_kind` is set to the kind of the package, 0 for none.
int32_t peek(const char *path, int32_t &out_kind) {
    std::FILE *file = open_stream(path);
    if (file == nullptr) {
        ORU_TRACE(Level::failure, "Failed to open %s\n", path);
        return ORU_RC_GENERAL;
    }
    out_kind = 0;
    const bool readable = is_regular(file);
    char chunk[128];
    while (readable && out_kind == 0 && std::fgets(chunk, sizeof chunk, file) != nullptr) {
        if (std::strstr(chunk, "<oru2dLib ") != nullptr)
            out_kind = ORU_MD_PKG_LIBRARY;
        else if (std::strstr(chunk, "<oru2dImpl ") != nullptr)
            out_kind = ORU_MD_PKG_IMPL;
    }
    std::fclose(file);
    return ORU_OK;
}

// False for a file that cannot be had as a document.
bool parse(const char *path, oru::XmlDocument &out) {
    const int fd = open_without_waiting(path);
    if (fd < 0) {
        ORU_TRACE(Level::failure, "Failed to open file '%s': %s\n", path, std::strerror(errno));
        return false;
    }
    out = oru::read_xml(fd, path);
    close(fd);
    if (!out)
        ORU_TRACE(Level::failure, "Failed to parse %s\n", path);
    return static_cast<bool>(out);
}

int32_t read_packages(const char *path, const oru::XmlDocument &document, ORUMdMap *store,
                      ORUMdPkgMeta *&out_package) {
    int32_t code = ORU_OK;
    for (const auto *root = oru::xml_element_from(document.root()); root != nullptr;
         root = oru::xml_element_from(root->next)) {
        const bool is_lib = oru::xml_is(root, "oru2dLib");
        if (is_lib || oru::xml_is(root, "oru2dImpl"))
            code = oru::read_package(path, root, store, is_lib, out_package);
    }
    return code;
}

struct Scan {
    int32_t pass;
    ORUMdMap *store;
    const char *bundle;
    ORUMdPkgMeta *last = nullptr;  // read by this scan
    bool ended = false;            // no bundle could be had

    bool chain(ORUMdPkgMeta *package);
    int32_t load(const char *path);
    int32_t scan_file(const char *path);
    int32_t scan_directory(DIR *directory, const char *path, const char *suffix);
};

// Behind the package before it; else behind the last of its bundle; else in a new bundle.
bool Scan::chain(ORUMdPkgMeta *package) {
    if (last != nullptr) {
        last->next = package;
    } else if (auto *known = oru_md_pkg_bundle_get(store->bundles, bundle)) {
        oru::append_record(known->pkgs, package);
    } else {
        auto *made = oru_md_pkg_bundle_new(bundle, package);
        if (made == nullptr)
            return false;
        oru::append_record(store->bundles, made);
    }
    last = package;
    return true;
}

int32_t Scan::load(const char *path) {
    ORU_TRACE(Level::detail, "Loading %s...\n", path);
    oru::XmlDocument document;
    if (!parse(path, document))
        return ORU_RC_METADATA;
    ORUMdPkgMeta *package = nullptr;
    const int32_t code = read_packages(path, document, store, package);
    if (package == nullptr || chain(package))
        return code;
    ORU_TRACE(Level::failure, "Failed to allocate metadata bundle\n");
    store->oru_md_remove_pkg(store, package);
    oru_md_delete_pkg_meta(package);
    ended = true;
    return ORU_RC_MALLOC;
}

int32_t Scan::scan_file(const char *path) {
    const oru::Place place(path, 0, nullptr);
    int32_t kind = 0;
    int32_t code = peek(path, kind);
    if (code == ORU_OK) {
        if (kind == 0)
            return ORU_RC_GENERAL;
        if (kind != pass)
            return ORU_OK;
        code = load(path);
    }
    if (code != ORU_OK && !ended)
        ORU_TRACE(Level::failure, "Failed to load %s\n", path);
    return code;
}

// The result is that of the last file with the suffix.
int32_t Scan::scan_directory(DIR *directory, const char *path, const char *suffix) {
    int32_t code = ORU_OK;
    while (const dirent *entry = readdir(directory)) {
        if (!has_suffix(entry->d_name, suffix))
            continue;
        Path file;
        if (!fits(std::snprintf(file, sizeof file, "%s/%s", path, entry->d_name)))
            continue;
        code = scan_file(file);
        if (ended)
            break;
    }
    return code;
}

DIR *open_directory(const char *path, const char *bundle) {
    DIR *directory = opendir(path);
    if (directory != nullptr)
        return directory;
    if (bundle != nullptr)
        ORU_TRACE(Level::detail, "Bundle %s doesn't contain metadata\n", bundle);
    else
        ORU_TRACE(Level::failure, "Error opening directory %s\n", path);
    return nullptr;
}

}  // namespace

int32_t _oru_md_init_meta_info(const char *base, const char *sub, const char *suffix, int32_t pass,
                               ORUMdMap **store, const char *bundle) {
    ORU_REQUIRE(suffix);
    ORU_REQUIRE(store);
    Path path;
    if (!build_directory(path, base, sub, bundle)) {
        ORU_TRACE(Level::failure, "Failed to build path to metadata\n");
        return ORU_RC_GENERAL;
    }
    ORU_TRACE(Level::detail, "Scanning %s for metadata\n", path);
    xmlCheckVersion(kParserVersion);
    DIR *directory = open_directory(path, bundle);
    if (directory == nullptr)
        return ORU_RC_FILE_NOT_FOUND;
    int32_t code = ORU_RC_MALLOC;
    if (*store == nullptr)
        *store = oru_md_map_new();
    if (*store != nullptr)
        code = Scan{pass, *store, bundle}.scan_directory(directory, path, suffix);
    else
        ORU_TRACE(Level::failure, "Failed to allocate package array\n");
    closedir(directory);
    return code;
}
