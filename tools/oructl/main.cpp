// oructl: the library from the command line.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <sstream>
#include <system_error>

#include "command.h"
#include "fault_words.h"
#include "terminal_text.h"

namespace {

using oructl::tell;

constexpr char kFirstSteps[] =
    "First steps, in a folder of package files and data:\n"
    "  export ORUCTL_MODEL=packages ORUCTL_DB=network.db\n"
    "  oructl model tree                      what holds what\n"
    "  oructl load data.json                  data into a new database\n"
    "  oructl get '/?links'                   the members of a collection\n"
    "  oructl set '/links;id=L1' cost=20      a change, checked and committed\n"
    "  oructl query document.xml              a document, answered from the database\n"
    "\n"
    "oructl COMMAND --help tells all of a command.\n"
    "Exit status: 0 done, 1 faults were found, 2 wrong use.";
constexpr char kExitStatus[] = "Exit status: 0 done, 1 faults were found, 2 wrong use.";

constexpr std::pair<const char *, const char *> kGroups[] = {
    {"model", "Models"},  {"load", "Data"},      {"export", "Data"}, {"get", "Data"},
    {"set", "Data"},      {"create", "Data"},    {"delete", "Data"}, {"query", "Data"},
    {"dtl", "Documents"}, {"convert", "Objects"}};

std::vector<std::string> names_of(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands(nullptr))
        names.push_back(command->get_name());
    return names;
}

// The command that was chosen, with its own, as it is called.
std::string called(const CLI::App &app) {
    const CLI::App *command = &app;
    std::string name = app.get_name();
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        name += " " + command->get_name();
    }
    return name;
}

const CLI::App &chosen(const CLI::App &app) {
    return app.get_subcommands().empty() ? app : chosen(*app.get_subcommands().front());
}

// In words of our own where those of the parser tell little.
std::string words_of(const CLI::App &app, const CLI::ParseError &error) {
    const CLI::App &command = chosen(app);
    const std::vector<std::string> rest = app.remaining(true);
    const bool wants_command =
        error.get_name() == "RequiredError" && !command.get_subcommands(nullptr).empty();
    if (!wants_command)
        return error.what();
    const std::vector<std::string> known = names_of(command);
    if (rest.empty())
        return "a command is wanted: " + CLI::detail::join(known, ", ");
    return oructl::in_quotes(rest.front()) + " is no command" +
           oructl::similar_question(rest.front(), known);
}

int refuse(const CLI::App &app, const CLI::ParseError &error) {
    std::ostringstream help;
    if (app.exit(error, help, help) == 0) {
        oructl::put("%s", help.str().c_str());
        return oructl::kDone;
    }
    const std::string name = called(app);
    tell(name + ": " + words_of(app, error));
    tell(name + " --help tells more");
    return oructl::kUsage;
}

int run(int argc, char **argv) {
    CLI::App app{"Models of managed resources, their data in a database, objects and documents.",
                 "oructl"};
    app.require_subcommand(1);
    app.footer(kExitStatus);  // of the commands, too
    int status = oructl::kDone;
    oructl::add_model_commands(app, status);
    oructl::add_load_command(app, status);
    oructl::add_export_command(app, status);
    oructl::add_get_command(app, status);
    oructl::add_change_commands(app, status);
    oructl::add_query_command(app, status);
    oructl::add_dtl_commands(app, status);
    oructl::add_convert_command(app, status);
    for (const auto &[name, group] : kGroups)
        app.get_subcommand(name)->group(group);
    app.footer(kFirstSteps);
    if (argc == 1) {
        oructl::put("%s", app.help().c_str());
        return oructl::kUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return refuse(app, error);
    }
    return status;
}

// What was printed must have reached its place.
int finish(int status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    tell("oructl: standard output: " + std::generic_category().message(errno));
    return status == oructl::kDone ? oructl::kFaults : status;
}

}  // namespace

int main(int argc, char **argv) {
    // beyond a limit writing fails as on a full disk
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return finish(run(argc, argv));
    } catch (const std::exception &error) {
        std::fflush(stdout);
        tell(std::string("oructl: ") + error.what());
        return oructl::kFaults;
    }
}
