// The demo's nested query, slots of a chassis and the ports of each, from the back end in memory:
// what the document and its walk cost, against a loop that asks the same cursors and makes the same
// tree through the same calls of the library. Both count leaf rows, the ports.
#include <oru/oru.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/ratios.h"
#include "examples/memory_backend/memory_backend.h"

namespace {

// How many times as long as the loop a query may take.
constexpr double kBound = 2;
constexpr int64_t kLeafRows = 12;
constexpr char kModel[] = "com.example.network:1.0/";

memory_session *session;
ORUDtlNode *document;
ORUDoNvlist *params;

bool open_network() {
    const std::string folder = NETWORK_DIR;
    const std::string data = folder + "/data.json";
    setenv("ORU_DEFAULT_LIB", MEMORY_BACKEND, 1);
    memory_backend_options options{sizeof options, data.c_str()};
    if (oru_lib_init(nullptr, 0, &options) != ORU_OK)
        return false;
    oru_md_load_dir((folder + "/packages").c_str(), "", ".oru2d", nullptr);
    params = oru_do_nvlist_new();
    oru_cl_session_open(params, reinterpret_cast<intptr_t>(&session), 0);
    ORUDoError *error = nullptr;
    document = oru_dtl_from_file((folder + "/documents/06-inventory.xml").c_str(), &error);
    return session != nullptr && document != nullptr && error == nullptr;
}

void by_document(benchmark::State &state, int32_t count) {
    int64_t leaf_rows = 0;
    for (auto _ : state) {
        ORUDtlCtx *ctx = oru_dtl_ctx_new(document, session->data, session->coll);
        while (oru_dtl_get_next(session->data, ctx, params, count) == ORU_OK &&
               ctx->state != ORU_DTL_STATE_FINISHED) {
        }
        oru_dtl_ctx_delete(ctx);
        leaf_rows += kLeafRows;
    }
    state.SetItemsProcessed(leaf_rows);
}

// ---- The same by hand ----

struct Collection {
    const char *name;
    const char *type;
    const char *attributes[5];
};

constexpr Collection kSlots{"slots", "Slot", {"_uri", "_mr", "number", "cardType", nullptr}};
constexpr Collection kPorts{"ports", "Port", {"_uri", "_mr", "name", "adminState", nullptr}};

void add_rows(ORUDoDtree *parent, const std::string &parent_uri, const Collection &collection,
              const Collection *inner) {
    const std::string address =
        parent_uri + '/' + collection.name + "?:" + kModel + collection.type;
    ORUDoUri *uri = oru_do_uri_new(address.c_str());
    ORUDoName *name = oru_do_name_new(collection.name);
    ORUDoNlist *names = oru_do_nlist_new_strnames(const_cast<const char **>(collection.attributes));
    ORUDtlCursor *cursor = nullptr;
    session->coll->new_config_cursor(session->coll, uri, names, nullptr, nullptr, 1, &cursor);
    ORUDoVtable *table = oru_do_vtable_new();
    cursor->cursor_get_next(cursor, 0, table);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_vtable_iter(table, &iter); oru_do_vtable_has_next(&iter);) {
        ORUDoVlist *row = oru_do_vtable_get_next(&iter);
        int32_t rc = 0;
        ORUDoUri *row_uri = oru_do_value_get_mr_uri(oru_do_vlist_get_value(row, 0), &rc);
        ORUDoDtree *node = oru_do_dtree_add_child(parent, name);
        ORUDoProperties *props = oru_do_properties_new();
        oru_do_properties_set_values(props, names, row);
        oru_do_dtree_set_mr_data(node, row_uri, props);
        oru_do_properties_deref(props);
        if (inner != nullptr)
            add_rows(node, oru_do_uri_get_uri_str(row_uri), *inner, nullptr);
    }
    cursor->cursor_close(cursor);
    oru_do_vtable_deref(table);
    oru_do_nlist_deref(names);
    oru_do_name_deref(name);
    oru_do_uri_deref(uri);
}

void by_hand(benchmark::State &state) {
    int64_t leaf_rows = 0;
    const std::string chassis = std::string(oru_get_default_root_uri_str()) + "/chassis;id=1";
    for (auto _ : state) {
        ORUDoDtree *root = oru_do_dtree_new_str("");
        add_rows(root, chassis, kSlots, &kPorts);
        oru_do_dtree_deref(root);
        leaf_rows += kLeafRows;
    }
    state.SetItemsProcessed(leaf_rows);
}

void add(const char *name, void (*body)(benchmark::State &)) {
    benchmark::RegisterBenchmark(name, body)->UseRealTime()->Repetitions(3);
}

}  // namespace

int main(int argc, char **argv) {
    if (!open_network()) {
        std::fprintf(stderr, "the network does not open\n");
        return 1;
    }
    add("nested query, all rows/ours", [](auto &state) { by_document(state, 0); });
    add("nested query, all rows/loop", by_hand);
    add("nested query, 5 rows a call/ours", [](auto &state) { by_document(state, 5); });
    add("nested query, 5 rows a call/loop, all rows", by_hand);
    oru::bench::expect("nested query, all rows", "loop", oru::bench::at_most(kBound));
    return oru::bench::run_all(argc, argv);
}
