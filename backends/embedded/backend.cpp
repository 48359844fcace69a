/* The entry points that the library looks up. */
#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>

#include "object/change.h"
#include "object/secrets.h"
#include "oruembedded.h"
#include "report.h"
#include "start.h"
#include "store/sqlite_store.h"

using namespace embedded;

extern "C" {
ORU_API int32_t _oru_lib_init(intptr_t backend_arg, void *backend_ctx);
ORU_API intptr_t _oru_lib_shutdown(void);
ORU_API intptr_t _oru_cl_session_open(ORUDoNvlist *params, intptr_t out_session, intptr_t unused);
ORU_API intptr_t _oru_cl_session_close(intptr_t session);
}

namespace {

/* What all sessions of the process share. */
struct BackEnd {
    Report report;
    SqliteOptions store;
    std::string root_type;
    std::string location;
    std::shared_ptr<Vault> vault;
    std::shared_ptr<Store> memory; /* the one store of a process that has no file */
    std::shared_ptr<const Model> model;
};

std::mutex mutex;
std::unique_ptr<BackEnd> back_end;

std::string text_or(const char *text, const char *other) {
    return text != nullptr && text[0] != '\0' ? text : other;
}

class Session {
  public:
    Session(const BackEnd &shared, ORUDoNvlist *params)
        : vault_(shared.vault),
          writer_(*vault_),
          who_(param(params, "user")),
          source_(std::make_shared<Source>(Source{
              shared.model,
              shared.memory != nullptr ? shared.memory
                                       : std::shared_ptr<Store>(open_sqlite_store(shared.store)),
              std::make_shared<VaultReader>(vault_, param(params, "secrets") == "show"),
              Addresses(*shared.model, shared.location)})),
          data_(source_),
          collection_(source_, data_.errors()) {
        make_root(*source_);
        lent_.owner = this;
        lent_.table = {sizeof(ORUEmbeddedSession), data_.table(), collection_.table(), commit};
    }

    ORUEmbeddedSession *lent() { return &lent_.table; }

    static Session &of(ORUEmbeddedSession *session) { return Lent::of(session); }

  private:
    using Lent = OwnedTable<ORUEmbeddedSession, Session>;

    static std::string param(ORUDoNvlist *params, const char *name) {
        ORUDoValue *const value = oru_do_nvlist_get_value(params, name);
        int32_t status = 0;
        return value != nullptr && oru_do_value_is_string(value) != 0
                   ? std::string(view(oru_do_value_get_string(value, &status)))
                   : std::string();
    }

    static int32_t commit(ORUEmbeddedSession *session, ORUDoConfigOps *operations, uint32_t flags,
                          const char *request, int64_t *revision, ORUDoError **error) {
        ChangeResult result;
        try {
            result = of(session).carry_out(operations, flags, view(request));
        } catch (const std::exception &fault) {
            result.code = code_of(fault);
            result.error = Error(oru_do_error_new(result.code, fault.what()));
        }
        if (revision != nullptr)
            *revision = result.revision;
        if (error != nullptr)
            *error = oru_do_error_ref(result.error.get());
        return result.code;
    }

    ChangeResult carry_out(ORUDoConfigOps *operations, uint32_t flags, std::string_view request) {
        ChangeRequest change;
        change.operations = operations;
        change.authority =
            (flags & ORU_EMBEDDED_SYSTEM) != 0 ? Authority::system : Authority::client;
        change.is_dry_run = (flags & ORU_EMBEDDED_DRY_RUN) != 0;
        change.who = who_;
        change.request = request;
        return embedded::carry_out(*source_, writer_, change);
    }

    Lent lent_;
    std::shared_ptr<Vault> vault_;
    VaultWriter writer_;
    std::string who_;
    std::shared_ptr<const Source> source_;
    DataInterface data_;
    CollectionInterface collection_;
};

/* Options narrow what the store can keep; nothing widens it. */
Limits limits_of(const ORUEmbeddedOptions &options, Limits limits) {
    if (options.commit_rows != 0)
        limits.commit_writes = std::min<size_t>(limits.commit_writes, options.commit_rows);
    if (options.value_bytes != 0)
        limits.value_bytes = std::min<size_t>(limits.value_bytes, options.value_bytes);
    return limits;
}

void start(const ORUEmbeddedOptions &options, const Report &report) {
    auto started = std::make_unique<BackEnd>();
    started->report = report;
    started->root_type = options.root_type;
    started->location = text_or(options.location, oru_get_default_root_uri_str());
    started->store.path = text_or(options.database, "");
    started->store.durable = options.durability == ORU_EMBEDDED_DURABLE;
    if (options.busy_milliseconds != 0)
        started->store.busy_milliseconds = static_cast<int>(
            std::min<uint32_t>(options.busy_milliseconds, std::numeric_limits<int>::max()));
    if (options.keep_commits != 0)
        started->store.keep_commits = options.keep_commits;
    if (options.keep_seconds != 0)
        started->store.keep_seconds = options.keep_seconds;
    started->store.limits = limits_of(options, started->store.limits);
    const std::string key_file =
        started->store.path.empty() ? std::string() : started->store.path + ".key";
    started->vault = std::make_shared<Vault>(text_or(options.key_file, key_file.c_str()));
    if (started->store.path.empty())
        started->memory = open_sqlite_store(started->store);
    back_end = std::move(started);
}

/* Runs what may throw, and gives 0 or the code of what it threw, after that was told. */
template <typename Body>
int32_t guarded(Report &report, Body body) {
    try {
        body();
        return ORU_OK;
    } catch (const std::exception &fault) {
        return report.tell(fault);
    }
}

}  // namespace

int32_t _oru_lib_init(intptr_t, void *backend_ctx) {
    Report report;
    return guarded(report, [&] {
        const ORUEmbeddedOptions options = options_at(backend_ctx);
        report = Report(options);
        if (options.root_type == nullptr)
            throw Refusal(ORU_RC_GENERAL, "the options have no root type");
        size_pools(options.pool_elements);
        const std::lock_guard lock(mutex);
        load_model(options);
        start(options, report);
    });
}

intptr_t _oru_lib_shutdown(void) {
    const std::lock_guard lock(mutex);
    back_end.reset();
    return ORU_OK;
}

intptr_t _oru_cl_session_open(ORUDoNvlist *params, intptr_t out_session, intptr_t) {
    Report report;
    return guarded(report, [&] {
        const std::lock_guard lock(mutex);
        if (back_end == nullptr)
            throw Refusal(ORU_RC_CLOSE_IFC, "the back end is not started");
        report = back_end->report;
        if (back_end->model == nullptr)
            back_end->model = Model::take(back_end->root_type.c_str());
        if (back_end->model == nullptr)
            throw Refusal(ORU_RC_METADATA,
                          "the metadata of the process has no resource " + back_end->root_type);
        if (const std::string key = back_end->model->find_secret_key(); !key.empty())
            throw Refusal(ORU_RC_METADATA, key + ": a secret, which cannot be a key");
        auto session = std::make_unique<Session>(*back_end, params);
        *reinterpret_cast<ORUEmbeddedSession **>(out_session) = session.release()->lent();
    });
}

intptr_t _oru_cl_session_close(intptr_t session) {
    if (session != 0)
        delete &Session::of(reinterpret_cast<ORUEmbeddedSession *>(session));
    return ORU_OK;
}
