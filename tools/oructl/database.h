// A database under its model, opened through the embedded back end for as long as it lives.
#ifndef ORU_TOOLS_ORUCTL_DATABASE_H
#define ORU_TOOLS_ORUCTL_DATABASE_H

#include <oruembedded.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "handles.h"
#include "model.h"

namespace CLI {
class App;
}

namespace oructl {

// What ends a command, in words for its user.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct DatabaseOptions {
    std::string file;
    std::string folder;  // of the model
    std::string root;    // empty for the only type that can be one
    std::string user;
    bool show_secrets = false;
};

// The options that every command on a database has.
void add_database_options(CLI::App *command, DatabaseOptions &options);

// Why the back end refused a start or a session.
class Refusal {
  public:
    static void report(void *refusal, ORUDoError *error);

    // Throws `Failure` for any other code than 0.
    void check(int32_t code) const;

  private:
    std::string words_;
};

// What is done about a file that is not there.
enum class Missing { fault, make, pretend };

class Database {
  public:
    // Throws `Failure`.
    Database(const DatabaseOptions &options, Missing missing);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    const Model &model() const { return model_; }
    ORUMdMrMeta &root() const { return *root_; }
    ORUDataIfc *data() const { return session_->data; }
    ORUCollIfc *coll() const { return session_->coll; }

    // The type of the resource at an address; nothing when there is none.
    std::optional<std::string> type_at(const std::string &address) const;
    // The same, as the model has it. Throws `Failure` when there is none.
    ORUMdMrMeta &resource_at(const std::string &address) const;

    struct Answer {
        std::string file;  // of the database
        int32_t code = ORU_OK;
        int64_t revision = 0;
        Error error;
    };
    Answer commit(ORUDoConfigOps *operations, uint32_t flags) const;

  private:
    std::string file_;
    Model model_;
    Refusal refusal_;
    ORUMdMrMeta *root_ = nullptr;
    ORUEmbeddedSession *session_ = nullptr;
};

// The words of what was held when a call failed, or those of its code.
std::string words_of_failure(ORUErrorIfc *holder, int32_t code);

}  // namespace oructl

#endif
