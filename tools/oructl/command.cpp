#include "command.h"

#include <filesystem>

#include "source_text.h"

namespace oructl {
namespace {

std::string check_file(const std::string &file) {
    if (file == kStandardInput || std::filesystem::exists(file))
        return "";
    return "File does not exist: " + file;
}

}  // namespace

CLI::Validator input_file() {
    return {check_file, "FILE", "file"};
}

}  // namespace oructl
