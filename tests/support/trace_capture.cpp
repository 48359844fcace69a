#include "tests/support/trace_capture.h"

#include <oru/lib.h>
#include <oruplatform/tracelet.h>

#include <algorithm>
#include <cstring>

namespace oru::test {

TraceCapture::TraceCapture(uint32_t highest) : old_threshold_(tracelet_get_threshold()) {
    oruapi_trace_init();
    tracelet_set_sink(receive, this);
    tracelet_set_threshold(highest);
}

TraceCapture::~TraceCapture() {
    tracelet_set_threshold(old_threshold_);
    tracelet_set_sink(nullptr, nullptr);
}

std::vector<Trace> TraceCapture::lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
}

std::vector<std::string> TraceCapture::at(uint32_t level) const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> texts;
    for (const Trace &line : lines_) {
        if (line.level == level)
            texts.push_back(line.text);
    }
    return texts;
}

bool TraceCapture::has(uint32_t level, const std::string &text) const {
    std::lock_guard lock(mutex_);
    return std::find(lines_.begin(), lines_.end(), Trace{level, text}) != lines_.end();
}

void TraceCapture::clear() {
    std::lock_guard lock(mutex_);
    lines_.clear();
}

void TraceCapture::receive(void *context, const char *module, uint32_t level, const char *text,
                           const ::tracelet_place *) {
    if (std::strcmp(module, "oruapi") != 0)
        return;
    auto *self = static_cast<TraceCapture *>(context);
    std::lock_guard lock(self->mutex_);
    self->lines_.push_back({level, text});
}

}  // namespace oru::test
