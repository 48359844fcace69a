// A text from a file or a pipe, and the places in it.
#ifndef ORU_TOOLS_ORUCTL_SOURCE_TEXT_H
#define ORU_TOOLS_ORUCTL_SOURCE_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

#include "faults.h"

namespace oructl {

// Standard input, as a name of a file.
inline constexpr char kStandardInput[] = "-";

class SourceText {
  public:
    // Throws what the system says when the file cannot be read, and std::length_error for one that
    // is larger than the library's lengths.
    static SourceText read(const std::string &file);

    // The content ends in a line feed, which is added where it is missing.
    SourceText(std::string file, std::string content);

    const std::string &file() const { return file_; }
    const std::string &content() const { return content_; }

    // A fault at an offset. Columns count characters from 1.
    Fault fault(size_t offset, std::string words) const;

  private:
    size_t line_of(size_t offset) const;
    int32_t column_of(size_t offset, size_t line_start) const;

    std::string file_;
    std::string content_;
    mutable std::vector<size_t> line_starts_;  // filled for the first fault
    // The last place, from which the next in its line is counted on: lines may be long, and faults
    // many.
    mutable size_t counted_to_ = 0;
    mutable int32_t column_ = 1;
};

}  // namespace oructl

#endif
