#include <libgen.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "frame/require.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "oru/util.h"

char *procName = nullptr;

namespace {

using oru::Level;

constexpr int32_t kNotReadable = -1;
constexpr int32_t kNoCopy = -2;
constexpr int32_t kEmpty = -4;

// Booleans of the interface have four bytes.
constexpr size_t kBooleanSize = sizeof(int32_t);

char *keepable(const char *name) {
    return oru::duplicate(name, oru::Tag::util);
}

// The first line of the process's command line, which ends at the zero behind its first word.
int32_t read_command(pid_t pid, char *line, int size) {
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/cmdline", pid);
    FILE *file = std::fopen(path, "r");
    if (file == nullptr)
        return kNotReadable;
    const bool got = std::fgets(line, size, file) != nullptr;
    std::fclose(file);
    return got && line[0] != '\0' ? 0 : kEmpty;
}

int32_t ask_system(pid_t pid, char **out) {
    char line[256];
    if (const int32_t rc = read_command(pid, line, sizeof line); rc != 0)
        return rc;
    *out = keepable(basename(line));
    return *out != nullptr ? 0 : kNoCopy;
}

}  // namespace

int32_t oru_get_process_name(char **out) {
    ORU_REQUIRE(out);
    *out = nullptr;
    if (procName != nullptr) {
        *out = keepable(procName);
        return 0;
    }
    const pid_t pid = getpid();
    if (pid < 1)
        return 0;
    const int32_t rc = ask_system(pid, out);
    if (*out == nullptr)
        *out = keepable("unknown proc");
    // A substitute is kept too.
    if (*out != nullptr)
        procName = keepable(*out);
    return rc;
}

int32_t verify_boolean_size(size_t n) {
    if (n != kBooleanSize) {
        ORU_TRACE(Level::failure, "boolean size mismatch %zu %zu", n, kBooleanSize);
        return 0;
    }
    ORU_TRACE(Level::config, "boolean verification successful size %zu", n);
    return 1;
}
