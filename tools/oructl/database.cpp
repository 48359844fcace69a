#include "database.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "command.h"
#include "fault_words.h"
#include "model_roots.h"
#include "model_words.h"

namespace oructl {
namespace {

constexpr char kBackEnd[] = "liborudbal.so";

// Where the library looks for another back end than ours, which would read other options.
constexpr const char *kVariables[] = {"ORU_DEFAULT_LIB_INIT", "ORU_DEFAULT_LIB_SHUTDOWN",
                                      "ORU_DEFAULT_CL_OPEN", "ORU_DEFAULT_CL_CLOSE"};

std::string user_of_process() {
    const passwd *entry = getpwuid(geteuid());
    return entry != nullptr ? entry->pw_name : std::to_string(geteuid());
}

// The library ends the process when it cannot open the back end; it finds what is open already.
void open_back_end() {
    setenv("ORU_DEFAULT_LIB", kBackEnd, 1);
    for (const char *variable : kVariables)
        unsetenv(variable);
    if (dlopen(kBackEnd, RTLD_NOW | RTLD_GLOBAL) == nullptr)
        throw Failure(std::string("the back end cannot be opened: ") + dlerror());
}

ORUMdMrMeta *choose_root(const Model &model, const std::string &name) {
    const auto found = name.empty() ? find_roots(model) : model.find_resources(name);
    if (found.size() == 1)
        return found.front();
    std::vector<std::string> names;
    for (const ORUMdMrMeta *mr : found)
        names.push_back(qualified_name(*mr));
    if (!found.empty())
        throw Failure("--root tells which of these is at the top: " + joined(names));
    throw Failure(name.empty() ? "every resource of the model is held by another; --root tells "
                                 "which one is at the top"
                               : "the model has no resource " + in_quotes(name));
}

// True when there is such a file, which the back end has a look into.
bool check_file(const std::string &file) {
    if (file.empty())
        throw Failure("--db is empty, where it names the file of the database");
    std::error_code code;
    const auto status = std::filesystem::status(file, code);
    if (!std::filesystem::exists(status)) {
        const auto folder = std::filesystem::absolute(file, code).parent_path();
        if (!std::filesystem::is_directory(folder, code))
            throw Failure(file + ": there is no folder " + folder.string());
        return false;
    }
    if (std::filesystem::is_directory(status))
        throw Failure(file + ": a folder, where the file of a database is wanted");
    if (!std::filesystem::is_regular_file(status))
        throw Failure(file + ": no file that a database could be in");
    return true;
}

// The file, or empty for a store in memory in its place.
std::string choose_file(const std::string &file, Missing missing) {
    if (check_file(file) || missing == Missing::make)
        return file;
    if (missing == Missing::fault)
        throw Failure(file + ": there is no such database; oructl load makes one");
    return "";
}

ORUEmbeddedSession *open_session(const DatabaseOptions &options, const Refusal &refusal) {
    const auto params = made<NameValueList>(oru_do_nvlist_new());
    const std::string user = options.user.empty() ? user_of_process() : options.user;
    oru_do_nvlist_add_string(params.get(), "user", user.c_str());
    if (options.show_secrets)
        oru_do_nvlist_add_string(params.get(), "secrets", "show");
    ORUEmbeddedSession *session = nullptr;
    refusal.check(static_cast<int32_t>(
        oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&session), 0)));
    return session;
}

}  // namespace

void Refusal::report(void *refusal, ORUDoError *error) {
    static_cast<Refusal *>(refusal)->words_ = oru_do_error_get_msg(error);
}

void Refusal::check(int32_t code) const {
    if (code != ORU_OK)
        throw Failure((words_.empty() ? oru_do_get_err_msg(code) : words_) + " (" +
                      std::to_string(code) + ")");
}

void add_database_options(CLI::App *command, DatabaseOptions &options) {
    constexpr char kGroup[] = "Database";
    command->add_option("--db", options.file, "file of the database")
        ->envname("ORUCTL_DB")
        ->required()
        ->group(kGroup);
    command->add_option("-m,--model", options.folder, "folder of package files")
        ->envname("ORUCTL_MODEL")
        ->required()
        ->check(CLI::ExistingDirectory)
        ->group(kGroup);
    command
        ->add_option("-r,--root", options.root,
                     "type of the resource at the top; by default the only one that none holds")
        ->group(kGroup);
    command
        ->add_option("--user", options.user,
                     "who commits are recorded for; by default the user of the process")
        ->group(kGroup);
}

Database::Database(const DatabaseOptions &options, Missing missing)
    : file_(options.file), model_(options.folder) {
    if (!model_.faults().empty()) {
        print(stderr, model_.faults());
        throw Failure(options.folder + ": the model has faults");
    }
    root_ = choose_root(model_, options.root);
    const std::string file = choose_file(options.file, missing);
    open_back_end();
    const std::string root_name = qualified_name(*root_);
    ORUEmbeddedOptions with = {};
    with.size = sizeof with;
    with.database = file.c_str();
    with.root_type = root_name.c_str();
    with.report = Refusal::report;
    with.report_context = &refusal_;
    refusal_.check(oru_lib_init(nullptr, 0, &with));
    try {
        session_ = open_session(options, refusal_);
    } catch (const Failure &) {
        oru_lib_shutdown(0, 0, 0, 0, 0, 0);
        throw;
    }
}

Database::~Database() {
    oru_cl_session_close(reinterpret_cast<intptr_t>(session_), 0, 0, 0, 0, 0);
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
}

std::optional<std::string> Database::type_at(const std::string &address) const {
    const auto uri = made<Uri>(oru_do_uri_new(address.c_str()));
    const auto names = made<NameList>(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), ORU_DO_NAME_MR);
    const auto values = made<ValueList>(oru_do_vlist_new());
    const int32_t code =
        data()->get_cfg_prop_values(data(), uri.get(), names.get(), 0, values.get());
    if (code == ORU_RC_NO_SUCH_RESOURCE)
        return std::nullopt;
    if (code != ORU_OK)
        throw Failure(address + ": " + words_of_failure(data()->get_error_ifc(data()), code));
    EachValue each(values.get());
    int32_t status = 0;
    return oru_do_value_get_string(each(), &status);
}

ORUMdMrMeta &Database::resource_at(const std::string &address) const {
    const auto type = type_at(address);
    ORUMdMrMeta *const mr = type ? oru_md_get_mr_meta_by_name(type->c_str()) : nullptr;
    if (mr == nullptr)
        throw Failure(address + ": there is no such resource");
    return *mr;
}

Database::Answer Database::commit(ORUDoConfigOps *operations, uint32_t flags) const {
    Answer answer{.file = file_, .error = {}};
    ORUDoError *error = nullptr;
    answer.code = session_->commit(session_, operations, flags, nullptr, &answer.revision, &error);
    answer.error.reset(error);
    return answer;
}

std::string words_of_failure(ORUErrorIfc *holder, int32_t code) {
    ORUDoError *const held = holder != nullptr ? holder->get_error(holder) : nullptr;
    // what is held may be of another failure than the one at hand
    const bool is_it = held != nullptr && oru_do_error_get_code(held) == code;
    const char *words = is_it ? oru_do_error_get_msg(held) : nullptr;
    return std::string(words != nullptr ? words : oru_do_get_err_msg(code)) + " (" +
           std::to_string(code) + ")";
}

}  // namespace oructl
