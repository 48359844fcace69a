// `oructl convert`: reads objects in any JSON form and writes them in another.
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "command.h"
#include "convert.h"

namespace oructl {
namespace {

struct Arguments {
    std::vector<std::string> files;
    std::string output;
    std::string form = "json";
    ConvertOptions options;
};

const std::map<std::string, OutputForm> kForms{{"json", OutputForm::json},
                                               {"compact", OutputForm::compact},
                                               {"xml", OutputForm::xml},
                                               {"text", OutputForm::text}};

void write_all(std::FILE *stream, const std::string &text, const std::string &name) {
    const bool whole = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (std::fflush(stream) != 0 || !whole)
        throw std::system_error(errno, std::generic_category(), name);
}

// A file is written at the end, so that it may be one of those that are read, and only when there
// is something to write.
void write_output(const std::string &file, const std::string &text) {
    if (file.empty()) {
        write_all(stdout, text, "standard output");
        return;
    }
    if (text.empty())
        return;
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(std::fopen(file.c_str(), "wbe"),
                                                                  std::fclose);
    if (!stream)
        throw std::system_error(errno, std::generic_category(), file);
    write_all(stream.get(), text, file);
}

int run(const Arguments &arguments) {
    std::string output;
    bool faulty = false;
    for (const std::string &file : arguments.files) {
        const Converted converted = convert(SourceText::read(file), arguments.options);
        print(stderr, converted.faults);
        faulty = faulty || !converted.faults.empty();
        if (!arguments.output.empty())
            output += converted.text;
        else
            write_output("", converted.text);
    }
    if (!arguments.output.empty())
        write_output(arguments.output, output);
    return faulty ? kFaults : kDone;
}

std::string check_form(const std::string &form) {
    return kForms.count(form) != 0 ? "" : form + " is no form; known are: json compact xml text";
}

std::string check_type(const std::string &type) {
    if (type == "value" ||
        (find_form("%" + type) != nullptr && whole_tag("%" + type) == "%" + type))
        return "";
    return type + " is no type; known are: value " + known_types();
}

}  // namespace

void add_convert_command(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *command = app.add_subcommand("convert", "Reads objects and writes them in another form");
    command->add_option("file", arguments->files, "files; - or none is standard input")
        ->check(input_file());
    command->add_option("-t,--to", arguments->form, "json (the default), compact, xml or text")
        ->check(CLI::Validator(check_form, "FORM", "form"));
    command
        ->add_option("--type", arguments->options.wire.type,
                     "what each document is, without %; by default its tag tells")
        ->check(CLI::Validator(check_type, "TYPE", "type"));
    command->add_option("-o,--output", arguments->output,
                        "file to write instead of standard output");
    command
        ->add_option("--indent", arguments->options.indent,
                     "tabs in front of text, and of a tree in XML, which is laid out then")
        ->check(number_within(0, 100));
    command->add_flag("--show-secrets", arguments->options.wire.show_secrets,
                      "write passwords, which are hidden otherwise");
    command->callback([arguments, &status] {
        if (arguments->files.empty())
            arguments->files.emplace_back(kStandardInput);
        arguments->options.form = kForms.at(arguments->form);
        status = run(*arguments);
    });
}

}  // namespace oructl
