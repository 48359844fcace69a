#include "faults.h"
#include "terminal_text.h"

#include <algorithm>
#include <utility>

namespace oructl {
namespace {

constexpr uint32_t kFailureLevel = 3;

std::string text_or_empty(const char *text) {
    return text != nullptr ? text : "";
}

// Some messages end in a line feed.
std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
        text.pop_back();
    return text;
}

}  // namespace

std::string line_of(const Fault &fault) {
    std::string text = fault.file;
    if (fault.line > 0)
        text += ":" + std::to_string(fault.line);
    if (fault.column > 0)
        text += ":" + std::to_string(fault.column);
    if (!text.empty())
        text += ": ";
    if (!fault.element.empty())
        text += "<" + fault.element + ">: ";
    return text + fault.words;
}

void print(std::FILE *stream, const Fault &fault) {
    std::fprintf(stream, "%s\n", shown_in_line(line_of(fault)).c_str());
}

void print(std::FILE *stream, const std::vector<Fault> &faults) {
    for (const Fault &fault : faults)
        print(stream, fault);
}

FaultLog::FaultLog() : former_threshold_(tracelet_get_threshold()) {
    tracelet_set_sink(receive, this);
    tracelet_set_threshold(std::max(former_threshold_, kFailureLevel));
}

FaultLog::~FaultLog() {
    tracelet_set_threshold(former_threshold_);
    tracelet_set_sink(nullptr, nullptr);
}

std::vector<Fault> FaultLog::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(faults_, {});
}

void FaultLog::receive(void *context, const char *, uint32_t level, const char *text,
                       const tracelet_place_t *place) {
    if (level > kFailureLevel)
        return;
    Fault fault{.words = trimmed(text)};
    if (place != nullptr) {
        fault.file = text_or_empty(place->file);
        fault.line = place->line;
        fault.element = text_or_empty(place->element);
    }
    auto *self = static_cast<FaultLog *>(context);
    const std::lock_guard lock(self->mutex_);
    self->faults_.push_back(std::move(fault));
}

}  // namespace oructl
