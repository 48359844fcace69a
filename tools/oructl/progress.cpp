#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace oructl {
namespace {

constexpr std::chrono::milliseconds kAtOnce{300};
constexpr std::chrono::milliseconds kBetween{100};
constexpr char kEmptyLine[] = "\r\033[K";

}  // namespace

Progress::Progress() : is_watched_(isatty(STDERR_FILENO) != 0), next_(Clock::now() + kAtOnce) {}

bool Progress::is_due() const {
    return is_watched_ && Clock::now() >= next_;
}

void Progress::show(const std::string &line) {
    if (!is_watched_)
        return;
    std::fprintf(stderr, "%s%s", kEmptyLine, line.c_str());
    is_shown_ = true;
    next_ = Clock::now() + kBetween;
}

void Progress::clear() {
    if (is_shown_)
        std::fputs(kEmptyLine, stderr);
    is_shown_ = false;
}

}  // namespace oructl
