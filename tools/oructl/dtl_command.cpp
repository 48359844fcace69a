// `oructl dtl`: documents of the data tree language.
#include <cstdio>
#include <filesystem>
#include <memory>

#include "command.h"
#include "dtl_check.h"
#include "terminal_text.h"

namespace oructl {
namespace {

struct Arguments {
    std::string document;
    std::string folder;
};

int check(const Arguments &arguments) {
    const Model model(arguments.folder);
    const DtlDocument document(SourceText::read(arguments.document));
    const CheckedDtl checked = check_dtl(document, model);
    print(stdout, checked.faults);
    put("%s", draw(checked).c_str());
    std::fflush(stdout);
    print(stderr, model.faults());
    return has_faults(checked) || !model.faults().empty() ? kFaults : kDone;
}

}  // namespace

void add_dtl_commands(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *dtl = app.add_subcommand("dtl", "Checks documents of the data tree language");
    dtl->require_subcommand(1);

    auto *command = dtl->add_subcommand("check", "Draws what is read, with every fault");
    command->add_option("document", arguments->document, "file; - is standard input")
        ->required()
        ->check(input_file());
    command->add_option("-m,--model", arguments->folder, "folder of package files")
        ->envname("ORUCTL_MODEL")
        ->required()
        ->check(CLI::ExistingDirectory);
    command->callback([arguments, &status] { status = check(*arguments); });
}

}  // namespace oructl
