// Runs scripts against a back end:
//
//     behaviour [--library FILE] [--file | --database NAME] [--root TYPE] MODEL SCRIPT...
//
// Each script finds an empty store: in memory, in a file of its own with --file, or in what
// --database names, which the caller has emptied. The status is 0 when all answers are those of the
// scripts, 1 when some are not, 2 when something cannot be read or started.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <thread>

#include "commit.h"
#include "compare.h"
#include "reader.h"
#include "reads.h"

namespace behaviour {
namespace {

struct Arguments {
    StartOptions start = {{}, {}, "depot:1.0/Depot"};
    bool is_in_file = false;
    Lines scripts;
};

// A folder that goes with its owner.
class Folder {
  public:
    Folder() : path_(std::filesystem::temp_directory_path() / "behaviour_XXXXXX") {
        if (mkdtemp(path_.data()) == nullptr)
            throw ScriptFault("no folder can be made");
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    std::string file(const char *name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// The first request may tell how much history is kept: "start keep_commits=1 keep_seconds=1".
void take_start(Script &script, StartOptions &options) {
    if (script.empty() || Reader(script.front().request.text).word() != "start")
        return;
    Reader reader(script.front().request.text);
    reader.word();
    at_line(script.front().request, [&] {
        while (!reader.at_end()) {
            const std::string name = reader.name();
            const auto number = static_cast<uint32_t>(std::atoi(reader.word().c_str()));
            if (name != "keep_commits" && name != "keep_seconds")
                throw ScriptFault("there is no option \"" + name + "\"");
            (name == "keep_commits" ? options.keep_commits : options.keep_seconds) = number;
        }
    });
    script.erase(script.begin());
}

Lines wait(const Step &step) {
    Reader reader(step.request.text);
    reader.word();
    std::this_thread::sleep_for(std::chrono::seconds(std::atoi(reader.word().c_str())));
    return {};
}

Lines answer(const Step &step, Committer &commits, ReadRequests &reads) {
    const std::string verb = Reader(step.request.text).word();
    if (verb == "commit")
        return commits.carry_out(step);
    if (verb == "read")
        return reads.read(step);
    if (verb == "rows")
        return reads.rows(step);
    if (verb == "open")
        return reads.open(step);
    if (verb == "next")
        return reads.next(step);
    if (verb == "close")
        return reads.close(step);
    if (verb == "invoke")
        return reads.invoke(step);
    if (verb == "wait")
        return wait(step);
    throw ScriptFault("there is no request \"" + verb + "\"");
}

// Whether the answer is the one that is expected; if not, both are printed.
bool is_answered(const std::string &path, const Step &step, Committer &commits,
                 ReadRequests &reads) {
    Lines expected = step.expected;
    if (expected == Lines{"nothing"})
        expected.clear();
    const Lines got = at_line(step.request, [&] { return answer(step, commits, reads); });
    if (is_same(expected, got))
        return true;
    std::cout << path << ":" << step.request.number << ": " << step.request.text << "\n";
    for (const Line &detail : step.details)
        std::cout << "    " << detail.text << "\n";
    std::cout << "  expected (-) and got (+):\n";
    for (const std::string &line : difference(expected, got))
        std::cout << "    " << line << "\n";
    return false;
}

int run(const std::string &path, const Arguments &arguments) {
    Script script = read_script(path);
    const Folder folder;
    StartOptions start = arguments.start;
    take_start(script, start);
    if (arguments.is_in_file)
        start.database = folder.file("depot.db");
    const BackEnd back_end(start);
    if (back_end.snapshot().size() != 1)
        throw ScriptFault("the store is not empty");
    Committer commits(back_end);
    ReadRequests reads(back_end);
    int wrong = 0;
    for (const Step &step : script)
        wrong += is_answered(path, step, commits, reads) ? 0 : 1;
    std::cout << path << ": " << script.size() << " requests, " << wrong << " answered wrongly\n";
    return wrong;
}

bool read_arguments(int count, char **given, Arguments &arguments) {
    Lines rest;
    for (int i = 1; i < count; i++) {
        const std::string option = given[i];
        const bool has_value = i + 1 < count;
        if (option == "--file")
            arguments.is_in_file = true;
        else if (option == "--library" && has_value)
            setenv("ORU_DEFAULT_LIB", given[++i], 1);
        else if (option == "--database" && has_value)
            arguments.start.database = given[++i];
        else if (option == "--root" && has_value)
            arguments.start.root_type = given[++i];
        else
            rest.push_back(option);
    }
    if (rest.size() < 2)
        return false;
    arguments.start.model_dir = rest.front();
    arguments.scripts.assign(rest.begin() + 1, rest.end());
    return true;
}

int run_all(const Arguments &arguments) {
    int status = 0;
    for (const std::string &path : arguments.scripts) {
        try {
            status = std::max(status, run(path, arguments) == 0 ? 0 : 1);
        } catch (const std::exception &fault) {
            std::cout << path << ": " << fault.what() << "\n";
            status = 2;
        }
    }
    return status;
}

}  // namespace
}  // namespace behaviour

int main(int count, char **given) {
    behaviour::Arguments arguments;
    if (!behaviour::read_arguments(count, given, arguments)) {
        std::cerr << "usage: behaviour [--library FILE] [--file | --database NAME] [--root TYPE] "
                     "MODEL SCRIPT...\n";
        return 2;
    }
    return behaviour::run_all(arguments);
}
