// `oructl load`: properties lists into a database.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "assignments.h"
#include "change_faults.h"
#include "command.h"
#include "database.h"
#include "load_later.h"
#include "load_read.h"
#include "model_words.h"
#include "operations.h"
#include "progress.h"
#include "source_text.h"
#include "terminal_text.h"

namespace oructl {
namespace {

struct Arguments {
    DatabaseOptions database;
    std::vector<std::string> files;
    size_t batch = 0;  // resources in a commit; 0 for all in one
    bool is_dry_run = false;
    bool all_faults = false;
};

class Load {
  public:
    Load(const Database &database, const Arguments &arguments, LoadedFiles &files,
         Progress &progress)
        : database_(database),
          arguments_(arguments),
          files_(files),
          progress_(progress),
          later_(files.resources, arguments.batch) {}

    int run() {
        if (!write_resources())
            return kFaults;
        if (!faults_.empty()) {
            progress_.clear();
            print_faults(faults_, arguments_.all_faults);
            tell_written();
            return kFaults;
        }
        if (!write_references())
            return kFaults;
        progress_.clear();
        std::printf("%zu created, %zu updated%s\n", created_, updated_,
                    arguments_.is_dry_run ? "; nothing was written" : "");
        return kDone;
    }

  private:
    bool write_resources() {
        for (LoadedResource &resource : files_.resources) {
            add(resource);
            resource = {};  // the change has what is left of it
            ++looked_at_;
            if (progress_.is_due())
                progress_.show("looking up " + far());
            if (change_.size() == arguments_.batch && !commit())
                return false;
        }
        return change_.size() == 0 || commit();
    }

    // The resources are there now that these lead to.
    bool write_references() {
        for (const LaterReferences &references : later_.taken()) {
            change_.set(references.address, references.props.get());
            if (change_.size() == arguments_.batch && !commit())
                return false;
        }
        return change_.size() == 0 || commit();
    }

    void add(const LoadedResource &resource) try {
        const auto there = database_.type_at(resource.address.path);
        const ORUMdMrMeta *const type =
            there ? oru_md_get_mr_meta_by_name(there->c_str()) : type_of(resource);
        if (type != nullptr)
            later_.take(*type, resource, looked_at_);
        if (there) {
            change_.set(resource.address, resource.props.get());
            ++updates_;
            return;
        }
        if (type != nullptr)
            add_keys(*type, resource.address, resource.props.get());
        change_.create(resource.address, resource.type, resource.props.get());
        ++creates_;
    } catch (const Failure &failure) {
        faults_.push_back(files_.fault(resource, failure.what()));
    }

    // Null for one that the model does not have, which the commit tells.
    ORUMdMrMeta *type_of(const LoadedResource &resource) const {
        return resource.type.empty() ? type_by_model(database_.root(), resource.address)
                                     : oru_md_get_mr_meta_by_name(resource.type.c_str());
    }

    bool commit() {
        if (!faults_.empty())
            return true;
        constexpr size_t kMany = 2000;
        if (change_.size() >= kMany || progress_.is_due())
            progress_.show("writing " + far());
        uint32_t flags = ORU_EMBEDDED_SYSTEM;
        if (arguments_.is_dry_run)
            flags |= ORU_EMBEDDED_DRY_RUN;
        const Database::Answer answer = database_.commit(change_.get(), flags);
        if (answer.code != ORU_OK) {
            progress_.clear();
            print_refusal(answer, arguments_.all_faults);
            tell_written();
            return false;
        }
        created_ += std::exchange(creates_, 0);
        updated_ += std::exchange(updates_, 0);
        change_ = {};
        return true;
    }

    std::string far() const {
        return std::to_string(looked_at_) + " of " + count_of(files_.resources.size(), "resource");
    }

    // What came before a fault stays.
    void tell_written() const {
        const size_t written = created_ + updated_;
        if (written != 0)
            tell(count_of(written, "resource") + " before it: written already");
        else
            tell("nothing was written");
    }

    const Database &database_;
    const Arguments &arguments_;
    LoadedFiles &files_;
    Progress &progress_;
    Later later_;
    Change change_;
    std::vector<Fault> faults_;
    size_t looked_at_ = 0;
    size_t creates_ = 0;  // in the change
    size_t updates_ = 0;
    size_t created_ = 0;
    size_t updated_ = 0;
};

int run(const Arguments &arguments) {
    Progress progress;
    LoadedFiles files = read_resources(arguments.files, progress);
    if (!files.faults.empty()) {
        progress.clear();
        print_faults(files.faults, arguments.all_faults);
        tell("nothing was written");
        return kFaults;
    }
    const Database database(arguments.database,
                            arguments.is_dry_run ? Missing::pretend : Missing::make);
    return Load(database, arguments, files, progress).run();
}

}  // namespace

void add_load_command(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *command = app.add_subcommand("load", "Creates and updates the resources of files");
    command->add_option("file", arguments->files, "properties lists; - is standard input")
        ->required()
        ->check(input_file());
    command->parse_complete_callback([arguments] {
        if (std::ranges::count(arguments->files, kStandardInput) > 1)
            throw CLI::ValidationError("- is given twice, and standard input ends once");
    });
    add_database_options(command, arguments->database);
    auto *batch = command->add_option("--batch", arguments->batch,
                                      "resources in a commit; by default all are in one");
    batch->check(number_within(1, INT32_MAX));
    command->add_flag("--dry-run", arguments->is_dry_run, "check everything, write nothing")
        ->excludes(batch);
    add_faults_option(command, arguments->all_faults);
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace oructl
