#include "frame/backend.h"

#include <dlfcn.h>

#include <cstdlib>
#include <iterator>

#include "frame/trace.h"
#include "oruplatform/halden.h"

int32_t (*g_lib_init)(intptr_t, void *) = nullptr;
intptr_t (*g_lib_shutdown)(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) = nullptr;

namespace oru {
namespace {

struct EntryName {
    const char *variable;
    const char *fallback;
};

constexpr EntryName kEntryNames[] = {
    {"ORU_DEFAULT_LIB_INIT", "_oru_lib_init"},
    {"ORU_DEFAULT_LIB_SHUTDOWN", "_oru_lib_shutdown"},
    {"ORU_DEFAULT_CL_OPEN", "_oru_cl_session_open"},
    {"ORU_DEFAULT_CL_CLOSE", "_oru_cl_session_close"},
    {"ORU_DEFAULT_PR_OPEN", "_oru_pr_session_open"},
    {"ORU_DEFAULT_PR_CLOSE", "_oru_pr_session_close"},
    {"ORU_DEFAULT_EV_OPEN", "_oru_ev_session_open"},
    {"ORU_DEFAULT_EV_CLOSE", "_oru_ev_session_close"},
    {"ORU_DEFAULT_GET_LOC_CANONICAL", "_oru_location_get_canonical_name"},
    {"ORU_DEFAULT_GET_LOC_FROM_CANONICAL", "_oru_location_from_canonical_name"},
    {"ORU_DEFAULT_GET_LOC_KEYS", "_oru_location_get_location_keys"},
    {"ORU_DEFAULT_GET_LOC_FROM_KEYS", "_oru_location_from_location_keys"},
};
static_assert(std::size(kEntryNames) == static_cast<size_t>(Entry::count_));

constexpr int kBindNowGlobal = 0x102;
static_assert(kBindNowGlobal == (RTLD_NOW | RTLD_GLOBAL));

// What was asked for is remembered: the operator sees it when a symbol is missing. The file name
// tells that binding has taken place.
const char *backend_file = nullptr;
const char *asked_names[std::size(kEntryNames)];
void *symbols[std::size(kEntryNames)];

const char *environment_or(const char *variable, const char *fallback) {
    const char *text = std::getenv(variable);
    return text != nullptr ? text : fallback;
}

void *open_backend() {
    backend_file = environment_or("ORU_DEFAULT_LIB", "liborudbal.so");
    void *handle = halden_dlopen(backend_file, kBindNowGlobal);
    if (handle == nullptr)
        ORU_FATAL("halden_dlopen() Failed: %s\n", dlerror());
    return handle;
}

// A missing symbol is no failure here: it is noticed at the first call through its slot.
void bind_entries(void *handle) {
    for (size_t i = 0; i < std::size(kEntryNames); ++i) {
        asked_names[i] = environment_or(kEntryNames[i].variable, kEntryNames[i].fallback);
    }
    for (size_t i = 0; i < std::size(kEntryNames); ++i) {
        symbols[i] = dlsym(handle, asked_names[i]);
    }
    g_lib_init =
        reinterpret_cast<decltype(g_lib_init)>(symbols[static_cast<size_t>(Entry::lib_init)]);
    g_lib_shutdown = find_entry(Entry::lib_shutdown);
}

[[noreturn]] void missing(Entry entry) {
    ORU_FATAL("Failed to find dl symbol %s", asked_names[static_cast<size_t>(entry)]);
}

}  // namespace

void bind_backend() {
    if (backend_file == nullptr)
        bind_entries(open_backend());
    if (g_lib_init == nullptr)
        missing(Entry::lib_init);
}

// The exported slot is the one that counts.
Words *need_shutdown() {
    if (g_lib_shutdown == nullptr)
        missing(Entry::lib_shutdown);
    return g_lib_shutdown;
}

Words *find_entry(Entry entry) {
    return reinterpret_cast<Words *>(symbols[static_cast<size_t>(entry)]);
}

Words *need_entry(Entry entry) {
    Words *found = find_entry(entry);
    if (found == nullptr)
        missing(entry);
    return found;
}

}  // namespace oru
