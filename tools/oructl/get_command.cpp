// `oructl get`: attributes of a resource, or of the members of a collection.
#include <cstdio>
#include <memory>

#include "addresses.h"
#include "command.h"
#include "fault_words.h"
#include "model_words.h"
#include "output.h"
#include "reading.h"

namespace oructl {
namespace {

struct Arguments {
    DatabaseOptions database;
    std::string address;
    std::vector<std::string> names;
    DataForm form = DataForm::table;
};

void get_resource(const Database &database, const Arguments &arguments) {
    const Address address = read_address(arguments.address);
    const ORUMdMrMeta &mr = database.resource_at(address.path);
    check_names(mr, arguments.names);
    const Properties props = read_resource(
        database, address.path, arguments.names.empty() ? all_names(mr) : arguments.names, true);
    std::fputs(resource_text(props.get(), arguments.form).c_str(), stdout);
}

// Where no collection is: what may have been meant by the reference or the type behind the `?`.
std::string collection_question(const Database &database, const std::string &address) {
    const size_t mark = address.find('?');
    const size_t colon = address.find(':', mark);
    if (colon != std::string::npos) {
        const auto found = database.model().find_resources(address.substr(colon + 1));
        return found.size() == 1 ? "; is it " + in_quotes(qualified_name(*found.front())) + "?"
                                 : "";
    }
    const Address base = read_address(mark == 0 ? "/" : address.substr(0, mark));
    const ORUMdMrMeta *const mr = type_by_model(database.root(), base);
    std::vector<std::string> references;
    for (const ORUMdRefMeta &ref : records(mr != nullptr ? mr->refs : nullptr)) {
        if (ref.is_child != 0)
            references.push_back(text_of(ref.name));
    }
    return similar_question(address.substr(mark + 1), references);
}

void get_collection(const Database &database, const Arguments &arguments) {
    check_collection(arguments.address);
    ORUMdMrMeta *const mr = type_of_collection(database, arguments.address);
    if (mr == nullptr)
        throw Failure(arguments.address + ": the model has no such collection" +
                      collection_question(database, arguments.address));
    check_names(*mr, arguments.names);
    std::vector<std::string> names = arguments.names;
    if (names.empty()) {
        names = all_names(*mr);
        // the same in every row
        std::erase(names, ORU_DO_NAME_MR);
    }
    std::vector<Properties> rows;
    read_collection(database, arguments.address, names, true,
                    [&](Properties props) { rows.push_back(std::move(props)); });
    std::fputs(resources_text(rows, names, arguments.form).c_str(), stdout);
}

int run(const Arguments &arguments) {
    const Database database(arguments.database, Missing::fault);
    if (arguments.address.find('?') != std::string::npos)
        get_collection(database, arguments);
    else
        get_resource(database, arguments);
    return kDone;
}

}  // namespace

void add_get_command(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *command = app.add_subcommand("get", "Prints attributes of a resource or a collection");
    command->add_option("address", arguments->address, "/chassis;id=1, or /chassis;id=1?slots")
        ->required();
    command->add_option("attribute", arguments->names, "attributes; by default all");
    add_reading_options(command, arguments->database, arguments->form);
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace oructl
