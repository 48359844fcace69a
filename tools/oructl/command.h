// What the commands of the tool share.
#ifndef ORU_TOOLS_ORUCTL_COMMAND_H
#define ORU_TOOLS_ORUCTL_COMMAND_H

#include <CLI/CLI.hpp>
#include <cstdint>

namespace oructl {

// Exit statuses. What was asked for wrongly is told apart from what was found faulty.
enum : int { kDone = 0, kFaults = 1, kUsage = 2 };

// Takes an existing file, or "-" for standard input.
CLI::Validator input_file();

// Takes a whole number.
CLI::Validator number_within(int64_t least, int64_t most);

// Each adds a command. When it is chosen its result is stored in `status`, which must live on.
void add_change_commands(CLI::App &app, int &status);
void add_convert_command(CLI::App &app, int &status);
void add_dtl_commands(CLI::App &app, int &status);
void add_export_command(CLI::App &app, int &status);
void add_get_command(CLI::App &app, int &status);
void add_load_command(CLI::App &app, int &status);
void add_model_commands(CLI::App &app, int &status);
void add_query_command(CLI::App &app, int &status);

}  // namespace oructl

#endif
