// `oructl export`: resources as a properties list that `oructl load` reads.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "addresses.h"
#include "command.h"
#include "model_words.h"
#include "output.h"
#include "reading.h"
#include "secrets.h"
#include "terminal_text.h"

namespace oructl {
namespace {

struct Arguments {
    DatabaseOptions database;
    std::string address = "/";
};

// The types that can be met from the root on, parents before their children.
std::vector<ORUMdMrMeta *> types_from(ORUMdMrMeta &root) {
    std::vector<ORUMdMrMeta *> types{&root};
    const auto add = [&](ORUMdMrMeta *mr) {
        if (mr != nullptr && std::ranges::find(types, mr) == types.end())
            types.push_back(mr);
    };
    for (size_t i = 0; i < types.size(); ++i) {
        for (const ORUMdRefMeta &ref : records(types[i]->refs)) {
            if (ref.is_child != 0)
                add(ref.target_mr);
        }
        for (const ORUMdMrMetaList &entry : records(types[i]->impl_mr_metas))
            add(entry.mr);
    }
    std::erase_if(types, [](const ORUMdMrMeta *mr) { return mr->is_lib != 0; });
    return types;
}

// A value is as secret as the most secret one in it.
Secret secrecy_of(ORUDoValue *value);

Secret secrecy_of_members(ORUDoNvlist *members) {
    Secret most = Secret::none;
    for (EachItem each(members); ORUDoNvlistItem *item = each();)
        most = std::max(most, secrecy_of(oru_do_nvlist_item_get_value(item)));
    return most;
}

Secret secrecy_of(ORUDoValue *value) {
    int32_t status = ORU_OK;
    switch (oru_do_value_get_type(value)) {
        case ORU_DO_TYPE_STRING:
            return secrecy_of_type(view(oru_do_value_get_typedef_name(value)));
        case ORU_DO_TYPE_SEQUENCE:
            return secrecy_of_members(oru_do_value_get_sequence(value, &status));
        case ORU_DO_TYPE_CHOICE:
            return secrecy_of_members(oru_do_value_get_choice(value, &status));
        case ORU_DO_TYPE_ARRAY:
            break;
        default:
            return Secret::none;
    }
    Secret most = Secret::none;
    for (EachValue each(oru_do_value_get_array(value, &status)); ORUDoValue *element = each();)
        most = std::max(most, secrecy_of(element));
    return most;
}

class Export {
  public:
    Export(const Database &database, bool show_secrets)
        : database_(database), show_secrets_(show_secrets) {}

    void run(const Address &base) {
        std::fputs("{\"%properties_list\":[", stdout);
        const auto types = types_from(database_.root());
        // one with keys is no member of what is below it
        if (!base.keys.empty())
            write_base(base);
        const std::string below = base.path == "/" ? "//" : base.path;
        for (ORUMdMrMeta *mr : types)
            read_collection(database_, below + "?:" + qualified_name(*mr), all_names(*mr), false,
                            [&](Properties props) { write(props.get()); });
        std::fputs("\n]}\n", stdout);
        if (left_out_ != 0)
            tell(count_of(left_out_, "secret") + " left out" +
                 (show_secrets_ ? ": passwords are not kept in a form that loads"
                                : "; --show-secrets writes those that can be read back"));
    }

  private:
    void write_base(const Address &base) {
        const auto type = database_.type_at(base.path);
        ORUMdMrMeta *const mr = type ? oru_md_get_mr_meta_by_name(type->c_str()) : nullptr;
        if (mr != nullptr)
            write(read_resource(database_, base.path, all_names(*mr), false).get());
    }

    void write(ORUDoProperties *props) {
        auto kept = made<Properties>(oru_do_properties_new());
        for (EachProperty each(props); ORUDoProperty *property = each();) {
            ORUDoValue *const value = oru_do_property_get_value(property);
            const Secret secret = secrecy_of(value);
            const bool is_readable =
                secret == Secret::none || (secret == Secret::sealed && show_secrets_);
            if (is_readable)
                oru_do_properties_set_value(kept.get(), oru_do_property_get_name_string(property),
                                            value);
            else
                ++left_out_;
        }
        std::printf("%s%s", is_first_ ? "\n" : ",\n", properties_json(kept.get(), 0).c_str());
        is_first_ = false;
    }

    const Database &database_;
    bool show_secrets_;
    bool is_first_ = true;
    size_t left_out_ = 0;
};

int run(const Arguments &arguments) {
    const Address base = read_address(arguments.address);
    const Database database(arguments.database, Missing::fault);
    if (!database.type_at(base.path))
        throw Failure(base.path + ": there is no such resource");
    Export(database, arguments.database.show_secrets).run(base);
    return kDone;
}

}  // namespace

void add_export_command(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *command = app.add_subcommand("export", "Writes resources as a file that load reads");
    command->add_option("address", arguments->address,
                        "resource with everything below it; by default all");
    add_database_options(command, arguments->database);
    command->add_flag("--show-secrets", arguments->database.show_secrets,
                      "write secrets that can be read back");
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace oructl
