#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "frame/require.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "oru/rc.h"
#include "oru/util.h"

namespace {

using oru::Level;

struct CloseFile {
    void operator()(FILE *file) const { std::fclose(file); }
};

// Fills the block and ends it with a zero. A file that gives nothing is a failure, an empty one
// too.
bool fill(const char *path, FILE *file, char *block, size_t size) {
    errno = 0;
    const size_t got = std::fread(block, 1, size, file);
    if (got == 0 || std::ferror(file) != 0) {
        ORU_TRACE(Level::failure, "Failed to read file '%s': %s\n", path, std::strerror(errno));
        return false;
    }
    block[got] = '\0';
    return true;
}

}  // namespace

int32_t oru_read_file(const char *path, char **out) {
    ORU_REQUIRE(path);
    ORU_REQUIRE(out);
    *out = nullptr;
    struct stat status {};
    if (stat(path, &status) != 0)
        return ORU_RC_FILE_NOT_FOUND;
    const auto size = static_cast<size_t>(status.st_size);
    oru::Text block(static_cast<char *>(ph_malloc_named(oru::tag_word(oru::Tag::util), size + 1)));
    if (!block)
        return ORU_RC_MALLOC;
    const std::unique_ptr<FILE, CloseFile> file(std::fopen(path, "r"));
    if (file == nullptr) {
        ORU_TRACE(Level::failure, "Failed to open file '%s': %s\n", path, std::strerror(errno));
        return ORU_RC_SYSCALL;
    }
    if (!fill(path, file.get(), block.get(), size))
        return ORU_RC_SYSCALL;
    *out = block.release();
    return ORU_OK;
}
