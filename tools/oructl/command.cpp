#include "command.h"

#include <charconv>
#include <filesystem>

#include "fault_words.h"
#include "source_text.h"

namespace oructl {
namespace {

std::string check_file(const std::string &file) {
    std::error_code code;
    if (file == kStandardInput || std::filesystem::exists(file, code))
        return "";
    return "there is no file " + in_quotes(file);
}

}  // namespace

CLI::Validator number_within(int64_t least, int64_t most) {
    const auto check = [=](const std::string &text) -> std::string {
        int64_t number = 0;
        const char *const end = text.data() + text.size();
        const auto [at, code] = std::from_chars(text.data(), end, number);
        if (code == std::errc() && at == end && number >= least && number <= most)
            return "";
        return in_quotes(text) + " is no number from " + std::to_string(least) + " to " +
               std::to_string(most);
    };
    return {check, "", "number"};
}

CLI::Validator input_file() {
    return {check_file, "FILE", "file"};
}

}  // namespace oructl
