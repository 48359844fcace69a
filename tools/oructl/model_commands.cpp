// `oructl model`: checks packages and prints what they hold.
#include <functional>
#include <memory>
#include <string>

#include "command.h"
#include "model.h"
#include "model_print.h"

namespace oructl {
namespace {

struct Arguments {
    std::string folder;
    std::string name;
    int32_t depth = 0;
};

int check(const Arguments &arguments) {
    const Model model(arguments.folder);
    print(stdout, model.faults());
    return model.faults().empty() ? kDone : kFaults;
}

// Prints what there is, and behind it that it may not be all.
int show_model(const Arguments &arguments, const std::function<bool(const Model &)> &show) {
    const Model model(arguments.folder);
    const bool shown = show(model);
    std::fflush(stdout);
    print(stderr, model.faults());
    return shown && model.faults().empty() ? kDone : kFaults;
}

void add_folder(CLI::App *command, Arguments &arguments) {
    command->add_option("-m,--model", arguments.folder, "folder of package files")
        ->envname("ORUCTL_MODEL")
        ->required()
        ->check(CLI::ExistingDirectory);
}

}  // namespace

void add_model_commands(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *model = app.add_subcommand("model", "Checks packages and prints what they hold");
    model->require_subcommand(1);

    auto *check_command = model->add_subcommand("check", "Loads packages and reports every fault");
    check_command->add_option("folder", arguments->folder, "folder of package files")
        ->required()
        ->check(CLI::ExistingDirectory);
    check_command->callback([arguments, &status] { status = check(*arguments); });

    auto *list_command = model->add_subcommand("list", "Lists packages with what they define");
    add_folder(list_command, *arguments);
    list_command->callback([arguments, &status] {
        status = show_model(*arguments, [](const Model &held) { return print_list(held); });
    });

    auto *show_command = model->add_subcommand("show", "Shows a resource, a definition or a type");
    show_command->add_option("name", arguments->name, "name, with or without its package")
        ->required();
    add_folder(show_command, *arguments);
    show_command->callback([arguments, &status] {
        status = show_model(*arguments,
                            [&](const Model &held) { return print_entity(held, arguments->name); });
    });

    auto *tree_command = model->add_subcommand("tree", "Draws which resources hold which");
    tree_command->add_option("-r,--root", arguments->name,
                             "resource to begin at; by default all that none holds");
    tree_command->add_option("-d,--depth", arguments->depth, "levels to draw; by default all")
        ->check(number_within(1, INT32_MAX));
    add_folder(tree_command, *arguments);
    tree_command->callback([arguments, &status] {
        status = show_model(*arguments, [&](const Model &held) {
            return print_tree(held, arguments->name, arguments->depth);
        });
    });
}

}  // namespace oructl
