// How far a long command is, for somebody who looks on.
#ifndef ORU_TOOLS_ORUCTL_PROGRESS_H
#define ORU_TOOLS_ORUCTL_PROGRESS_H

#include <chrono>
#include <string>

namespace oructl {

// A line on standard error that comes and goes, on a terminal only. Nothing is shown of what is
// over at once.
class Progress {
  public:
    Progress();
    ~Progress() { clear(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Whether somebody waits for the next line.
    bool is_due() const;
    void show(const std::string &line);
    void clear();

  private:
    using Clock = std::chrono::steady_clock;

    bool is_watched_;
    bool is_shown_ = false;
    Clock::time_point next_;
};

}  // namespace oructl

#endif
