#include "script.h"

#include <fstream>

namespace behaviour {
namespace {

std::string trimmed(const std::string &text) {
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos
               ? std::string()
               : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

class Builder {
  public:
    void add(int number, const std::string &line) {
        const std::string text = trimmed(line);
        if (text.empty() || text[0] == '#')
            return;
        if (line[0] == '>')
            step(number).expected.push_back(trimmed(line.substr(1)));
        else if (line[0] == ' ' || line[0] == '\t')
            add_detail({number, text});
        else
            script_.push_back({{number, text}, {}, {}});
    }

    Script take() { return std::move(script_); }

  private:
    Step &step(int number) {
        if (script_.empty())
            throw ScriptFault(number, "there is no request yet");
        return script_.back();
    }

    void add_detail(const Line &line) {
        Step &to = step(line.number);
        if (!to.expected.empty())
            throw ScriptFault(line.number, "a request begins at the left margin");
        to.details.push_back(line);
    }

    Script script_;
};

}  // namespace

Script read_script(const std::string &path) {
    std::ifstream file(path);
    if (!file)
        throw ScriptFault("the file cannot be read");
    Builder builder;
    std::string line;
    for (int number = 1; std::getline(file, line); number++)
        builder.add(number, line);
    return builder.take();
}

}  // namespace behaviour
