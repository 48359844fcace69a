// The embedded back end against the same rows read and written by hand in SQL, on one database in a
// file: commits with all checks and without, a paged query and single reads through a document, the
// load of a large store, and what each needs of memory.
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "bench/embedded_by_hand.h"
#include "bench/memory.h"
#include "bench/ratios.h"
#include "object/handles.h"
#include "oruembedded.h"
#include "store/sqlite_store.h"

namespace {

using namespace embedded;
using oru::bench::LinksByHand;

constexpr int kResources = 100'000;
constexpr int kCreates = 10'000;
constexpr int kPage = 100;
constexpr double kSmallCommitSeconds = 0.010;
const std::string kLocation = "//locations;locationId=global";

std::string database;
LinksByHand *by_hand;
Store *store;
ORUEmbeddedSession *session;
int next_link = 0;

std::string link_id(int number) {
    return std::string("L").append(std::to_string(1'000'000 + number));
}

[[noreturn]] void fail(const char *what, int32_t code) {
    std::fprintf(stderr, "%s: %d\n", what, code);
    std::exit(1);
}

bool open_session() {
    ORUEmbeddedOptions options = {};
    options.size = sizeof options;
    options.database = database.c_str();
    options.model_dir = NETWORK_PACKAGES;
    options.root_type = "com.example.network:1.0/System";
    options.pool_elements = 100'000;
    setenv("ORU_DEFAULT_LIB", EMBEDDED_BACKEND, 1);
    if (oru_lib_init(nullptr, 0, &options) != ORU_OK)
        return false;
    const NameValueList params(oru_do_nvlist_new());
    return oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&session), 0) == ORU_OK;
}

// ---- Changes ----

void add_create(const Operations &operations, int number) {
    static const Uri root(oru_do_uri_new(kLocation.c_str()));
    static const Name links(oru_do_name_new("links"));
    const Properties props(oru_do_properties_new());
    oru_do_properties_set_string(props.get(), "id", link_id(number).c_str());
    const Value cost(oru_do_value_new_unsigned_int(static_cast<uint32_t>(number)));
    const Value speed(oru_do_value_new_unsigned_long(1'000'000'000));
    oru_do_properties_set_value(props.get(), "cost", cost.get());
    oru_do_properties_set_value(props.get(), "speed", speed.get());
    oru_do_config_ops_add(operations.get(), ORU_EMBEDDED_OP_CREATE, root.get(), props.get(),
                          links.get(), nullptr, nullptr);
}

void commit(const Operations &operations) {
    const int32_t code = session->commit(session, operations.get(), 0, nullptr, nullptr, nullptr);
    if (code != ORU_OK)
        fail("commit", code);
}

Operations creates(int count) {
    Operations operations(oru_do_config_ops_new());
    for (int i = 0; i < count; i++)
        add_create(operations, next_link++);
    return operations;
}

void create_with_checks(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        const Operations operations = creates(kCreates);
        state.ResumeTiming();
        commit(operations);
    }
}

std::vector<Write> link_writes(int count) {
    std::vector<Write> writes;
    for (int i = 0; i < count; i++) {
        const int number = next_link++;
        const std::string id = link_id(number);
        writes.push_back(
            {Write::Kind::create,
             oru::bench::link_key(id),
             kLocation + "/links;id=" + id,
             "com.example.network:1.0/Link",
             {{"id", ORU_DO_TYPE_STRING, {}, Cell::of_text(id)},
              {"cost", ORU_DO_TYPE_UNSIGNED_INT, {}, Cell::of_integer(number)},
              {"speed", ORU_DO_TYPE_UNSIGNED_LONG, {}, Cell::of_integer(1'000'000'000)}}});
    }
    return writes;
}

void create_in_store(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        const WriteList writes(link_writes(kCreates));
        state.ResumeTiming();
        if (store->commit({}, writes).status != CommitResult::Status::done)
            fail("commit in the store", 0);
    }
}

void create_by_hand(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::string> ids;
        for (int i = 0; i < kCreates; i++)
            ids.push_back(link_id(next_link++));
        state.ResumeTiming();
        by_hand->insert(ids);
    }
}

double seconds_of(const auto &work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The best of some, by the clock: it waits for the disk.
double small_commit_seconds() {
    double best = 1;
    for (int i = 0; i < 20; i++) {
        const Operations operations(oru_do_config_ops_new());
        const Uri link(oru_do_uri_new((kLocation + "/links;id=" + link_id(5000 + i)).c_str()));
        const Properties props(oru_do_properties_new());
        const Value cost(oru_do_value_new_unsigned_int(static_cast<uint32_t>(getpid() + i)));
        oru_do_properties_set_value(props.get(), "cost", cost.get());
        oru_do_config_ops_add(operations.get(), ORU_EMBEDDED_OP_SET, link.get(), props.get(),
                              nullptr, nullptr, nullptr);
        best = std::min(best, seconds_of([&] { commit(operations); }));
    }
    return best;
}

// ---- Reading ----

constexpr char kEveryLink[] =
    "<link uri='//locations;locationId=global?links' mr='com.example.network:1.0/Link' op='get'>"
    "<id/><cost/><speed/></link>";
constexpr char kOneLink[] =
    "<link uri='//locations;locationId=global/links;id=$id' mr='com.example.network:1.0/Link' "
    "op='get'><id/><cost/><speed/></link>";

ORUDtlNode *document(const char *text) {
    ORUDoError *error = nullptr;
    ORUDtlNode *const read = oru_dtl_from_str(text, &error);
    if (read == nullptr || error != nullptr)
        fail("document", 0);
    return read;
}

// The rows that a document reads, batch by batch, up to as many as were loaded: others make more
// beside it.
int rows_of(ORUDtlNode *node, const NameValueList &params, int32_t count) {
    int rows = 0;
    ORUDtlCtx *const ctx = oru_dtl_ctx_new(node, session->data, session->coll);
    for (int32_t code = ORU_OK; code == ORU_OK && rows < kResources;) {
        code = oru_dtl_get_next(session->data, ctx, params.get(), count);
        rows += oru_do_dtree_get_unhidden_child_count(ctx->dtree_node);
        oru_do_dtree_remove_children(ctx->dtree_node);
    }
    oru_dtl_ctx_delete(ctx);
    return rows;
}

void query_document(benchmark::State &state) {
    ORUDtlNode *const node = document(kEveryLink);
    const NameValueList params(oru_do_nvlist_new());
    for (auto _ : state) {
        const int rows = rows_of(node, params, kPage);
        if (rows < kResources)
            fail("rows", rows);
    }
    oru_dtl_tree_delete(node);
}

// The rows as the back end gives them, without a document and its tree.
void query_cursor(benchmark::State &state) {
    const Uri links(oru_do_uri_new((kLocation + "?links").c_str()));
    const NameList names(oru_do_nlist_new());
    for (const char *name : {"_uri", "_mr", "id", "cost", "speed"})
        oru_do_nlist_add_string(names.get(), name);
    for (auto _ : state) {
        ORUDtlCursor *cursor = nullptr;
        session->coll->new_config_cursor(session->coll, links.get(), names.get(), nullptr, nullptr,
                                         1, &cursor);
        int rows = 0;
        for (int32_t code = ORU_OK; code == ORU_OK && rows < kResources;) {
            ORUDoVtable *const page = oru_do_vtable_new();
            code = cursor->cursor_get_next(cursor, kPage, page);
            rows += oru_do_vtable_get_row_num(page);
            oru_do_vtable_deref(page);
        }
        cursor->cursor_close(cursor);
        if (rows < kResources)
            fail("rows of the cursor", rows);
    }
}

size_t page_through(LinksByHand &hand) {
    std::string key("r\1links\0", 8);
    size_t rows = 0;
    for (size_t last = 1; last != 0 && rows < kResources; rows += last) {
        const std::vector<oru::bench::Link> links = hand.page(key, kPage);
        benchmark::DoNotOptimize(links.data());
        last = links.size();
    }
    return rows;
}

void query_by_hand(benchmark::State &state) {
    for (auto _ : state) {
        if (page_through(*by_hand) < kResources)
            fail("rows by hand", 0);
    }
}

void read_document(benchmark::State &state) {
    ORUDtlNode *const node = document(kOneLink);
    int number = 0;
    for (auto _ : state) {
        const NameValueList params(oru_do_nvlist_new());
        number = (number + 7919) % kResources;
        oru_do_nvlist_add_string(params.get(), "id", link_id(number).c_str());
        const int rows = rows_of(node, params, 0);
        if (rows != 1)
            fail("a row", rows);
    }
    oru_dtl_tree_delete(node);
}

void read_by_hand(benchmark::State &state) {
    int number = 0;
    for (auto _ : state) {
        number = (number + 7919) % kResources;
        const oru::bench::Link link = by_hand->one(link_id(number));
        if (link.id.empty())
            fail("a row by hand", number);
    }
}

// ---- Load and memory ----

void load() {
    for (int i = 0; i < kResources / kCreates; i++)
        commit(creates(kCreates));
}

void print_limit(const char *what, double seconds, double most) {
    std::printf("%-40s %8.2f ms (%.0f or less: %s)\n", what, seconds * 1e3, most * 1e3,
                seconds <= most ? "holds" : "DOES NOT HOLD");
}

// In processes of their own, which load the database that the rest of the program works on.
void measure_memory() {
    const auto print = [](const char *what, void (*work)()) {
        const double bytes = oru::bench::peak_bytes_of([work] {
            open_session();
            work();
            oru_cl_session_close(reinterpret_cast<intptr_t>(session), 0, 0, 0, 0, 0);
        });
        std::printf("%-40s %8.1f MB at most\n", what, bytes / 1e6);
    };
    print("session alone", [] {});
    print("load, in commits of 10,000 creates", [] {
        std::printf("load of %d resources: %.2f s\n", kResources, seconds_of(load));
        std::fflush(stdout);
    });
    print("small commit", [] { small_commit_seconds(); });
    print("paged query", [] {
        ORUDtlNode *const node = document(kEveryLink);
        rows_of(node, NameValueList(oru_do_nvlist_new()), kPage);
    });
    print("paged query by hand", [] {
        LinksByHand hand(database);
        page_through(hand);
    });
}

}  // namespace

int main(int argc, char **argv) {
    char path[] = "/tmp/embedded_bench_XXXXXX";
    if (mkdtemp(path) == nullptr)
        return 1;
    const std::string folder = path;
    database = folder + "/network.db";
    measure_memory();
    if (!open_session())
        fail("the network does not open", 0);
    next_link = kResources;
    print_limit("small commit", small_commit_seconds(), kSmallCommitSeconds);

    const std::unique_ptr<Store> lower = open_sqlite_store({database});
    store = lower.get();
    LinksByHand hand(database);
    by_hand = &hand;
    using oru::bench::at_most;
    using oru::bench::compare;
    using oru::bench::expect;
    compare("10,000 creates, checked/ours", create_with_checks, 5);
    compare("10,000 creates, checked/sql", create_by_hand, 5);
    expect("10,000 creates, checked", "sql", at_most(3));
    compare("10,000 creates, in the store/ours", create_in_store, 5);
    compare("10,000 creates, in the store/sql", create_by_hand, 5);
    expect("10,000 creates, in the store", "sql", at_most(2));
    compare("paged query/ours", query_document, 8);
    compare("paged query/sql", query_by_hand, 8);
    expect("paged query", "sql", at_most(3));
    compare("paged cursor/ours", query_cursor, 8);
    compare("paged cursor/sql", query_by_hand, 8);
    compare("point read/ours", read_document, 100);
    compare("point read/sql", read_by_hand, 100);
    expect("point read", "sql", at_most(2));
    const int status = oru::bench::run_all(argc, argv);
    oru_cl_session_close(reinterpret_cast<intptr_t>(session), 0, 0, 0, 0, 0);
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    std::filesystem::remove_all(folder);
    return status;
}
