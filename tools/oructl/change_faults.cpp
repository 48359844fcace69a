#include "change_faults.h"

#include "addresses.h"
#include "command.h"
#include "model_words.h"
#include "terminal_text.h"

namespace oructl {
namespace {

// A screen or two of them: behind those, others are seldom read.
constexpr size_t kMost = 50;

// Values are shown on several lines where they have parts.
std::string on_one_line(const std::string &words) {
    std::string line;
    for (const char c : words) {
        if (static_cast<unsigned char>(c) > ' ')
            line += c;
        else if (!line.ends_with(' '))
            line += ' ';
    }
    while (line.ends_with(' '))
        line.pop_back();
    return line;
}

std::string with_code(const std::string &words, ORUDoError *error) {
    return on_one_line(words) + " (" + std::to_string(oru_do_error_get_code(error)) + ")";
}

// The error of one resource: "ADDRESS", or "ADDRESS: WORDS" for what is wrong with it as a whole.
void add_resource(ORUDoError *error, FaultLines &lines) {
    const std::string words = oru_do_error_get_msg(error);
    const size_t colon = words.find(": ");
    if (colon != std::string::npos)
        lines.add(with_code(without_location(words), error));
    const std::string address = without_location(words.substr(0, colon));
    for (EachPropErr each(oru_do_error_get_prop_errs(error)); ORUDoPropErr *entry = each();) {
        ORUDoError *const of = oru_do_prop_err_get_err(entry);
        lines.add(address + ": " + text_of(oru_do_prop_err_get_name(entry)) + ": " +
                  with_code(without_location(oru_do_error_get_msg(of)), of));
    }
}

}  // namespace

void add_faults_option(CLI::App *command, bool &all) {
    command->add_flag("--all-faults", all,
                      "print every fault; by default the first " + std::to_string(kMost));
}

void FaultLines::add(std::string_view line) {
    if (all_ || count_ < kMost)
        tell(line);
    ++count_;
}

void FaultLines::end() const {
    if (!all_ && count_ > kMost)
        tell("and " + std::to_string(count_ - kMost) + " more; --all-faults prints them");
}

void print_faults(const std::vector<Fault> &faults, bool all) {
    FaultLines lines(all);
    for (const Fault &fault : faults)
        lines.add(line_of(fault));
    lines.end();
}

std::string error_line(ORUDoError *error) {
    return with_code(without_location(oru_do_error_get_msg(error)), error);
}

void print_refusal(const Database::Answer &answer, bool all) {
    if (answer.error == nullptr) {
        tell(answer.file + ": " + oru_do_get_err_msg(answer.code) + " (" +
             std::to_string(answer.code) + ")");
        return;
    }
    ORUDoError *cause = oru_do_error_get_cause(answer.error.get());
    if (cause == nullptr)
        return tell(answer.file + ": " + error_line(answer.error.get()));
    FaultLines lines(all);
    for (; cause != nullptr; cause = oru_do_error_get_cause(cause))
        add_resource(cause, lines);
    lines.end();
    tell(oru_do_error_get_msg(answer.error.get()));
}

}  // namespace oructl
