// Catches what the library traces while it lives, at every level.
#ifndef ORU_TESTS_SUPPORT_TRACE_CAPTURE_H
#define ORU_TESTS_SUPPORT_TRACE_CAPTURE_H

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

struct tracelet_place;

namespace oru::test {

struct Trace {
    uint32_t level;
    std::string text;
    friend bool operator==(const Trace &, const Trace &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Trace &trace) {
        return out << trace.level << " \"" << trace.text << '"';
    }
};

class TraceCapture {
  public:
    // Levels above `highest` are switched off. By default reference counts stay out of the way.
    explicit TraceCapture(uint32_t highest = 7);
    ~TraceCapture();
    TraceCapture(const TraceCapture &) = delete;
    TraceCapture &operator=(const TraceCapture &) = delete;

    // All messages of the library so far, in order.
    std::vector<Trace> lines() const;
    // Those of one level.
    std::vector<std::string> at(uint32_t level) const;
    bool has(uint32_t level, const std::string &text) const;
    void clear();

  private:
    static void receive(void *context, const char *module, uint32_t level, const char *text,
                        const ::tracelet_place *place);

    mutable std::mutex mutex_;
    std::vector<Trace> lines_;
    uint32_t old_threshold_;
};

}  // namespace oru::test

#endif
