// `oructl set`, `create` and `delete`: one commit from the command line.
#include <cstdio>
#include <memory>

#include "assignments.h"
#include "change_faults.h"
#include "command.h"
#include "database.h"
#include "fault_words.h"
#include "model_words.h"
#include "operations.h"

namespace oructl {
namespace {

struct Arguments {
    DatabaseOptions database;
    std::string address;
    std::string type;
    std::vector<std::string> assignments;
    std::vector<std::string> unset;
    std::vector<std::string> addresses;
    bool is_dry_run = false;
    bool is_system = false;
    bool all_faults = false;
};

int commit(const Database &database, Change &change, const Arguments &arguments) {
    uint32_t flags = 0;
    if (arguments.is_dry_run)
        flags |= ORU_EMBEDDED_DRY_RUN;
    if (arguments.is_system)
        flags |= ORU_EMBEDDED_SYSTEM;
    const Database::Answer answer = database.commit(change.get(), flags);
    if (answer.code != ORU_OK) {
        print_refusal(answer, arguments.all_faults);
        return kFaults;
    }
    if (arguments.is_dry_run)
        std::printf("nothing is wrong; nothing was written\n");
    else if (answer.revision == 0)
        std::printf("nothing changes; nothing was written\n");
    else
        std::printf("written as revision %lld\n", static_cast<long long>(answer.revision));
    return kDone;
}

int set(const Arguments &arguments) {
    const Address address = read_address(arguments.address);
    const Database database(arguments.database, Missing::fault);
    ORUMdMrMeta &mr = database.resource_at(address.path);
    const Properties props = read_assignments(mr, arguments.assignments, arguments.unset);
    Change change;
    change.set(address, props.get());
    return commit(database, change, arguments);
}

// By the name that was given, or by what the model has at the address.
ORUMdMrMeta *choose_type(const Database &database, const Address &address,
                         const std::string &name) {
    if (name.empty()) {
        ORUMdMrMeta *const mr = type_by_model(database.root(), address);
        if (mr == nullptr)
            throw Failure(address.path + ": the model has no such address");
        return mr;
    }
    const auto found = database.model().find_resources(name);
    if (found.empty())
        throw Failure("the model has no resource " + in_quotes(name));
    if (found.size() > 1)
        throw Failure(in_quotes(name) + " is not only " + qualified_name(*found.front()) +
                      ": say which");
    return found.front();
}

std::string implementations_of(const ORUMdMrMeta &mr) {
    std::vector<std::string> names;
    for (const ORUMdMrMetaList &entry : records(mr.impl_mr_metas))
        names.push_back(qualified_name(*entry.mr));
    return joined(names);
}

int create(const Arguments &arguments) {
    const Address address = read_address(arguments.address);
    const Database database(arguments.database, Missing::make);
    if (address.reference.empty())
        throw Failure("the resource at the top is always there");
    ORUMdMrMeta *const mr = choose_type(database, address, arguments.type);
    if (mr->is_lib != 0)
        throw Failure(qualified_name(*mr) + " is a library resource; --type tells which of these " +
                      "it is: " + implementations_of(*mr));
    const Properties props = read_assignments(*mr, arguments.assignments);
    add_keys(*mr, address, props.get());
    Change change;
    change.create(address, qualified_name(*mr), props.get());
    return commit(database, change, arguments);
}

int remove(const Arguments &arguments) {
    std::vector<Address> addresses;
    for (const std::string &text : arguments.addresses)
        addresses.push_back(read_address(text));
    const Database database(arguments.database, Missing::fault);
    Change change;
    for (const Address &address : addresses)
        change.remove(address);
    return commit(database, change, arguments);
}

void add_change_options(CLI::App *command, Arguments &arguments) {
    add_database_options(command, arguments.database);
    command->add_flag("--dry-run", arguments.is_dry_run, "check everything, write nothing");
    command->add_flag("--system", arguments.is_system,
                      "as a provider: operational data too, whatever clients may do");
    add_faults_option(command, arguments.all_faults);
}

constexpr char kAssignmentWords[] =
    "NAME=VALUE; a text in the type of the attribute, or JSON that begins with {, [ or \"";

}  // namespace

void add_change_commands(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();

    auto *set_command = app.add_subcommand("set", "Changes attributes of a resource");
    set_command->add_option("address", arguments->address, "/chassis;id=1")->required();
    set_command->add_option("assignment", arguments->assignments, kAssignmentWords);
    set_command->add_option("--unset", arguments->unset, "attribute whose value is taken away")
        ->take_all()
        ->expected(1);
    add_change_options(set_command, *arguments);
    set_command->callback([arguments, &status] { status = set(*arguments); });

    auto *create_command = app.add_subcommand("create", "Creates a resource");
    create_command->add_option("address", arguments->address, "of the new resource, with its keys")
        ->required();
    create_command->add_option("assignment", arguments->assignments, kAssignmentWords);
    create_command->add_option("-t,--type", arguments->type,
                               "type of the resource, where the model has more than one");
    add_change_options(create_command, *arguments);
    create_command->callback([arguments, &status] { status = create(*arguments); });

    auto *delete_command =
        app.add_subcommand("delete", "Deletes resources with everything below them");
    delete_command->add_option("address", arguments->addresses, "/chassis;id=1")->required();
    add_change_options(delete_command, *arguments);
    delete_command->callback([arguments, &status] { status = remove(*arguments); });
}

}  // namespace oructl
