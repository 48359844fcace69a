#include "oruplatform/halden.h"

#include <dlfcn.h>
#include <string.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/codes.h"

using namespace oru::platform;

namespace {

constexpr auto kUnfilled = static_cast<char>(0xff);

#ifdef ORUAPI_SANITIZED
// The sanitizers' own `dlopen` stands between the loader and this library, so that its search path
// does not count; the two folders are then looked through by hand.
void *open_in(const char *folder, size_t folder_length, const char *relative, const char *file,
              int32_t flags) {
    char path[4096];
    const int length = snprintf(path, sizeof path, "%.*s%s%s", static_cast<int>(folder_length),
                                folder, relative, file);
    if (length < 0 || static_cast<size_t>(length) >= sizeof path || access(path, F_OK) != 0) {
        return nullptr;
    }
    return dlopen(path, flags);
}

void *open_beside_this_library(const char *file, int32_t flags) {
    Dl_info self{};
    if (file == nullptr || strchr(file, '/') != nullptr ||
        dladdr(reinterpret_cast<void *>(&halden_dlopen), &self) == 0) {
        return nullptr;
    }
    const char *slash = strrchr(self.dli_fname, '/');
    const size_t folder_length =
        slash == nullptr ? 0 : static_cast<size_t>(slash + 1 - self.dli_fname);
    void *handle = open_in(self.dli_fname, folder_length, "", file, flags);
    return handle != nullptr ? handle
                             : open_in(self.dli_fname, folder_length, "../lib/", file, flags);
}
#else
void *open_beside_this_library(const char *, int32_t) {
    return nullptr;
}
#endif

void copy_text(char *out, size_t capacity, const char *text, size_t length) {
    const size_t kept = length < capacity ? length : capacity - 1;
    memcpy(out, text, kept);
    out[kept] = '\0';
}

}  // namespace

void *halden_dlopen(const char *file, int32_t flags) {
    void *handle = open_beside_this_library(file, flags);
    if (handle == nullptr) {
        handle = dlopen(file, flags);
    }
    // The loader looks at its return address to find the caller whose search path counts, so the
    // call above must not become a jump.
    asm volatile("" : "+r"(handle));
    return handle;
}

int32_t halden_resolve_local(int32_t, void *record) {
    if (record == nullptr) {
        return kInvalid;
    }
    auto *location = static_cast<halden_location_t *>(record);
    char host[256] = "";
    const char *name = getenv("ORU_LOCATION");
    if (name == nullptr || *name == '\0') {
        if (gethostname(host, sizeof host - 1) != 0 || *host == '\0') {
            return kNotFound;
        }
        name = host;
    }
    memset(location->text, 0, sizeof location->text);
    copy_text(location->text, sizeof location->text, name, strlen(name));
    return kOk;
}

int32_t halden_location_to_str(const void *record, char *text, int32_t capacity) {
    if (text == nullptr || capacity < 1) {
        return kInvalid;
    }
    *text = '\0';
    const auto *location = static_cast<const halden_location_t *>(record);
    if (location == nullptr || location->text[0] == kUnfilled) {
        return kInvalid;
    }
    copy_text(text, static_cast<size_t>(capacity), location->text,
              strnlen(location->text, sizeof location->text));
    return kOk;
}
