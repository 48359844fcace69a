// A script: requests to a back end, and what it has to answer. The format is told in
// docs/behaviours.md.
#ifndef ORU_TESTS_BEHAVIOUR_SCRIPT_H
#define ORU_TESTS_BEHAVIOUR_SCRIPT_H

#include <stdexcept>
#include <string>
#include <vector>

namespace behaviour {

struct Line {
    int number = 0;
    std::string text;
};

// A request, its details, and the answer: one step of a script.
struct Step {
    Line request;
    std::vector<Line> details;
    std::vector<std::string> expected;
};

using Script = std::vector<Step>;

// What cannot be read, in words, with its line in front where that is known.
class ScriptFault : public std::runtime_error {
  public:
    explicit ScriptFault(const std::string &words) : std::runtime_error(words) {}
    ScriptFault(int line, const std::string &words)
        : std::runtime_error("line " + std::to_string(line) + ": " + words), has_line(true) {}

    const bool has_line = false;
};

Script read_script(const std::string &path);

// Runs what reads a line: its faults are of that line, where they are not of another one.
template <class Read>
auto at_line(const Line &line, Read read) {
    try {
        return read();
    } catch (const ScriptFault &fault) {
        if (fault.has_line)
            throw;
        throw ScriptFault(line.number, fault.what());
    }
}

}  // namespace behaviour

#endif
