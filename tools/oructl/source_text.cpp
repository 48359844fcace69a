#include "source_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace oructl {
namespace {

// Lengths of texts are signed 32-bit numbers in the library; some room is left for what is put
// around a text.
constexpr size_t kMaxSize = INT32_MAX - 65536;

struct CloseFile {
    void operator()(std::FILE *stream) const {
        if (stream != stdin)
            std::fclose(stream);
    }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void throw_error(const std::string &file) {
    throw std::system_error(errno, std::generic_category(), file);
}

[[noreturn]] void throw_too_large(const std::string &file) {
    throw std::length_error(file + ": larger than " + std::to_string(kMaxSize) + " bytes");
}

std::string content_of(std::FILE *stream, const std::string &file) {
    constexpr size_t kStep = 1 << 16;
    std::string content;
    for (;;) {
        const size_t size = content.size();
        content.resize(size + kStep);
        const size_t count = std::fread(content.data() + size, 1, kStep, stream);
        content.resize(size + count);
        if (content.size() > kMaxSize)
            throw_too_large(file);
        if (std::ferror(stream) != 0)
            throw_error(file);
        if (count == 0)
            return content;
    }
}

bool begins_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

SourceText::SourceText(std::string file, std::string content)
    : file_(std::move(file)), content_(std::move(content)) {
    if (!content_.ends_with('\n'))
        content_ += '\n';
}

SourceText SourceText::read(const std::string &file) {
    if (file == kStandardInput)
        return {file, content_of(stdin, file)};
    std::error_code no_size;
    const auto size = std::filesystem::file_size(file, no_size);
    if (!no_size && size > kMaxSize)
        throw_too_large(file);
    const File stream(std::fopen(file.c_str(), "rbe"));
    if (!stream)
        throw_error(file);
    return {file, content_of(stream.get(), file)};
}

size_t SourceText::line_of(size_t offset) const {
    if (line_starts_.empty()) {
        line_starts_.push_back(0);
        for (size_t at = 0; (at = content_.find('\n', at)) != std::string::npos;)
            line_starts_.push_back(++at);
    }
    const auto behind = std::upper_bound(line_starts_.begin(), line_starts_.end(), offset);
    return static_cast<size_t>(behind - line_starts_.begin());
}

int32_t SourceText::column_of(size_t offset, size_t line_start) const {
    if (counted_to_ < line_start || counted_to_ > offset) {
        counted_to_ = line_start;
        column_ = 1;
    }
    const char *text = content_.data();
    column_ +=
        static_cast<int32_t>(std::count_if(text + counted_to_, text + offset, begins_character));
    counted_to_ = offset;
    return column_;
}

Fault SourceText::fault(size_t offset, std::string words) const {
    offset = std::min(offset, content_.size());
    const size_t line = line_of(offset);
    return {.file = file_,
            .line = static_cast<int32_t>(line),
            .element = {},
            .words = std::move(words),
            .column = column_of(offset, line_starts_[line - 1])};
}

}  // namespace oructl
