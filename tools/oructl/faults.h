// Faults with their places. The library tells what it meets through the tracer; a log stands there
// and keeps it.
#ifndef ORU_TOOLS_ORUCTL_FAULTS_H
#define ORU_TOOLS_ORUCTL_FAULTS_H

#include <oruplatform/tracelet.h>

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace oructl {

struct Fault {
    std::string file;  // empty where only the words tell
    int32_t line = 0;  // 0 where it is the whole file
    std::string element;
    std::string words;
    int32_t column = 0;  // 0 where it is the whole line
};

// `file:line:column: <element>: words` as far as the place is known.
std::string line_of(const Fault &fault);

void print(std::FILE *stream, const Fault &fault);
void print(std::FILE *stream, const std::vector<Fault> &faults);

// Keeps the failures that are traced while it lives, whichever thread sends them.
class FaultLog {
  public:
    FaultLog();
    ~FaultLog();
    FaultLog(const FaultLog &) = delete;
    FaultLog &operator=(const FaultLog &) = delete;

    std::vector<Fault> take();

  private:
    static void receive(void *context, const char *module, uint32_t level, const char *text,
                        const tracelet_place_t *place);

    uint32_t former_threshold_;
    std::mutex mutex_;
    std::vector<Fault> faults_;
};

}  // namespace oructl

#endif
