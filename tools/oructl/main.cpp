// oructl: the library from the command line.
#include <cstdio>
#include <exception>

#include "command.h"

namespace {

int run(int argc, char **argv) {
    CLI::App app{"Models of managed resources, their data in a database, objects and documents.",
                 "oructl"};
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 faults were found, 2 wrong use.");

    int status = oructl::kDone;
    oructl::add_model_commands(app, status);
    oructl::add_convert_command(app, status);
    oructl::add_dtl_commands(app, status);
    oructl::add_load_command(app, status);
    oructl::add_export_command(app, status);
    oructl::add_get_command(app, status);
    oructl::add_change_commands(app, status);
    oructl::add_query_command(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? oructl::kDone : oructl::kUsage;
    }
    return status;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "oructl: %s\n", error.what());
        return oructl::kFaults;
    }
}
