/* The entry points that the library looks up. */
#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>

#include "object/change.h"
#include "object/secrets.h"
#include "oruembedded.h"
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

/* The pools of the library can be sized before the first object is made, and once. */
void size_pools(intptr_t elements) {
    static std::once_flag once;
    if (elements <= 0)
        return;
    std::call_once(once, [elements] {
        init_chunk_poolheap_oru_do_name(elements, 0);
        init_chunk_poolheap_oru_do_value(elements, 0);
        init_chunk_poolheap_oru_do_value_sml_misc(elements, 0);
        init_chunk_poolheap_oru_do_value_misc(elements, 0);
        init_chunk_poolheap_oru_do_uri(elements, 0);
        init_chunk_poolheap_oru_do_uri_sml_misc(elements, 0);
        init_chunk_poolheap_oru_do_uri_misc(elements, 0);
        init_chunk_poolheap_oru_do_nlist_item(elements, 0);
        init_chunk_poolheap_oru_do_nvlist_item(elements, 0);
        init_chunk_poolheap_oru_do_vlist(elements, 0);
        init_chunk_poolheap_oru_do_vlist_item(elements, 0);
        init_chunk_poolheap_oru_do_vtable_item(elements, 0);
        init_chunk_poolheap_oru_do_dtree(elements, 0);
        init_chunk_poolheap_oru_do_properties(elements, 0);
        init_chunk_poolheap_oru_do_property(elements, 0);
        init_chunk_poolheap_oru_do_strbuf(elements, 0);
        init_chunk_poolheap_oru_do_strbuf_misc(elements, 0);
        init_chunk_poolheap_oru_do_error(elements, 0);
        init_chunk_poolheap_oru_do_config_op(elements, 0);
        init_chunk_poolheap_oru_do_config_ops(elements, 0);
    });
}

int32_t load_model(const ORUEmbeddedOptions &options, const std::string &root_type) {
    if (options.model_dir != nullptr) {
        ORUMdPkgBundle *bundle = nullptr;
        const std::string folder = std::string(options.model_dir) + "/";
        const int32_t code = oru_md_load_dir(folder.c_str(), "", ".oru2d", &bundle);
        if (code != ORU_OK)
            return code;
    }
    // the library keeps the address of the text
    static std::string root;
    root = root_type;
    oru_md_set_root_mr_type(root.c_str());
    return ORU_OK;
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

void start(const ORUEmbeddedOptions &options) {
    auto started = std::make_unique<BackEnd>();
    started->root_type = options.root_type;
    started->location = text_or(options.location, oru_get_default_root_uri_str());
    started->store.path = text_or(options.database, "");
    started->store.durable = options.durability == ORU_EMBEDDED_DURABLE;
    if (options.busy_milliseconds != 0)
        started->store.busy_milliseconds = static_cast<int>(options.busy_milliseconds);
    if (options.keep_commits != 0)
        started->store.keep_commits = options.keep_commits;
    if (options.keep_seconds != 0)
        started->store.keep_seconds = options.keep_seconds;
    const std::string key_file =
        started->store.path.empty() ? std::string() : started->store.path + ".key";
    started->vault = std::make_shared<Vault>(text_or(options.key_file, key_file.c_str()));
    if (started->store.path.empty())
        started->memory = open_sqlite_store(started->store);
    back_end = std::move(started);
}

/* The options of a caller, whose record may be shorter or longer than ours. */
ORUEmbeddedOptions options_at(const void *given) {
    ORUEmbeddedOptions options = {};
    size_t size = 0;
    if (given == nullptr)
        return options;
    std::memcpy(&size, given, sizeof size);
    std::memcpy(&options, given, std::min(size, sizeof options));
    return options;
}

template <typename Body>
int32_t guarded(Body body) {
    try {
        return body();
    } catch (const std::exception &fault) {
        return code_of(fault);
    }
}

}  // namespace

int32_t _oru_lib_init(intptr_t, void *backend_ctx) {
    return guarded([&]() -> int32_t {
        const ORUEmbeddedOptions options = options_at(backend_ctx);
        if (options.root_type == nullptr)
            return ORU_RC_GENERAL;
        size_pools(options.pool_elements);
        const std::lock_guard lock(mutex);
        const int32_t code = load_model(options, options.root_type);
        if (code == ORU_OK)
            start(options);
        return code;
    });
}

intptr_t _oru_lib_shutdown(void) {
    const std::lock_guard lock(mutex);
    back_end.reset();
    return ORU_OK;
}

intptr_t _oru_cl_session_open(ORUDoNvlist *params, intptr_t out_session, intptr_t) {
    return guarded([&]() -> int32_t {
        const std::lock_guard lock(mutex);
        if (back_end == nullptr)
            return ORU_RC_CLOSE_IFC;
        if (back_end->model == nullptr)
            back_end->model = Model::take(back_end->root_type.c_str());
        if (back_end->model == nullptr)
            return ORU_RC_METADATA;
        auto session = std::make_unique<Session>(*back_end, params);
        *reinterpret_cast<ORUEmbeddedSession **>(out_session) = session.release()->lent();
        return ORU_OK;
    });
}

intptr_t _oru_cl_session_close(intptr_t session) {
    if (session != 0)
        delete &Session::of(reinterpret_cast<ORUEmbeddedSession *>(session));
    return ORU_OK;
}
