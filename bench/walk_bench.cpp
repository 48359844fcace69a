// Flat and nested queries over an interface whose rows are there already: what the walk costs,
// against a loop that asks the same cursors for batches of the same size and makes the same tree
// through the same calls of the library. Counts of 10, 100 and 0, which is all at once. And what a
// walk of a million rows in batches of 500 needs in memory, against a walk of ten batches.
#include <oru/oru.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/memory.h"
#include "bench/ratios.h"

namespace {

// How many times as long as the loop a walk may take.
constexpr double kBound = 2;
constexpr int kRows = 100;  // that exist; longer collections give them again and again
constexpr int kFlatRows = 10000;

/* ---- The interface ---- */

struct Cursor {
    ORUDtlCursor table = {};
    const std::vector<ORUDoVlist *> *rows = nullptr;
    int left = 0;
    size_t next = 0;
};

int32_t get_next(ORUDtlCursor *table, uint32_t count, ORUDoVtable *out) {
    auto *cursor = reinterpret_cast<Cursor *>(table);
    for (uint32_t i = 0; (count == 0 || i < count) && cursor->left > 0; i++, cursor->left--) {
        oru_do_vtable_add(out, (*cursor->rows)[cursor->next]);
        cursor->next = (cursor->next + 1) % kRows;
    }
    return cursor->left > 0 ? ORU_OK : ORU_RC_NO_MORE_VALUE;
}

int32_t close_cursor(ORUDtlCursor *table) {
    delete reinterpret_cast<Cursor *>(table);
    return ORU_OK;
}

std::vector<ORUDoVlist *> slots;
std::vector<ORUDoVlist *> ports;
int rows_of_a_collection = kRows;

int32_t open_cursor(ORUCollIfc *, ORUDoUri *uri, ORUDoNlist *, ORUDoNvlist *, ORUDoNlist *, uint8_t,
                    ORUDtlCursor **out_cursor) {
    const bool is_slots = std::string_view(oru_do_uri_get_uri_str(uri)).ends_with("Slot");
    auto *cursor = new Cursor;
    cursor->table.cursor_get_next = get_next;
    cursor->table.cursor_close = close_cursor;
    cursor->table.cursor_get_error_ifc = [](ORUDtlCursor *) -> ORUErrorIfc * { return nullptr; };
    cursor->rows = is_slots ? &slots : &ports;
    cursor->left = rows_of_a_collection;
    *out_cursor = &cursor->table;
    return ORU_OK;
}

ORUCollIfc coll;
ORUDataIfc data;

ORUDoVlist *new_row(const std::string &address, const char *type, uint32_t number) {
    ORUDoVlist *row = oru_do_vlist_new();
    ORUDoUri *uri = oru_do_uri_new(address.c_str());
    ORUDoValue *const values[] = {oru_do_value_new_mr_uri(uri), oru_do_value_new_string(type),
                                  oru_do_value_new_unsigned_int(number),
                                  oru_do_value_new_string("some text of a row")};
    for (ORUDoValue *value : values) {
        oru_do_vlist_add(row, value);
        oru_do_value_deref(value);
    }
    oru_do_uri_deref(uri);
    return row;
}

void fill_interface() {
    coll.new_config_cursor = open_cursor;
    data.get_context_uri = [](ORUDataIfc *) -> ORUDoUri * { return nullptr; };
    data.get_error_ifc = [](ORUDataIfc *) -> ORUErrorIfc * { return nullptr; };
    const std::string chassis = "//locations;locationId=global/chassis;id=1";
    for (uint32_t i = 0; i < kRows; i++) {
        const std::string slot = chassis + "/slots;number=" + std::to_string(i);
        slots.push_back(new_row(slot, "com.example.network:1.0/Slot", i));
        ports.push_back(new_row(slot + "/ports;name=p", "com.example.network:1.0/Port", i));
    }
}

/* ---- By document ---- */

constexpr char kFlat[] = R"(
<port uri="//locations;locationId=global/chassis;id=1/slots;number=1?ports"
      mr="com.example.network:1.0/Port" op="get"><name/><mtu/></port>)";
constexpr char kNested[] = R"(
<slot uri="//locations;locationId=global/chassis;id=1?slots"
      mr="com.example.network:1.0/Slot" op="get">
  <number/><cardType/><ports op="get"><name/><mtu/></ports>
</slot>)";

ORUDtlNode *read_document(const char *text) {
    ORUDoError *error = nullptr;
    oru_md_rdlock();
    ORUDtlNode *document = oru_dtl_from_str(text, &error);
    oru_md_unlock();
    return error == nullptr ? document : nullptr;
}

void walk(ORUDtlNode *document, int32_t count) {
    ORUDoNvlist *params = oru_do_nvlist_new();
    ORUDtlCtx *ctx = oru_dtl_ctx_new(document, &data, &coll);
    while (oru_dtl_get_next(&data, ctx, params, count) == ORU_OK &&
           ctx->state != ORU_DTL_STATE_FINISHED) {
    }
    oru_dtl_ctx_delete(ctx);
    oru_do_nvlist_deref(params);
}

/* ---- By hand ---- */

struct Collection {
    ORUDoUri *uri;
    ORUDoName *name;
    ORUDoNlist *names;
};

Collection new_collection(const std::string &uri, const char *name, const char *first,
                          const char *second) {
    const char *names[] = {"_uri", "_mr", first, second, nullptr};
    return {oru_do_uri_new(uri.c_str()), oru_do_name_new(name), oru_do_nlist_new_strnames(names)};
}

void free_collection(const Collection &collection) {
    oru_do_uri_deref(collection.uri);
    oru_do_name_deref(collection.name);
    oru_do_nlist_deref(collection.names);
}

void read_rows(ORUDoDtree *parent, const Collection &collection, uint32_t count, bool is_outer);

void read_ports(ORUDoDtree *slot, ORUDoUri *uri, uint32_t count) {
    const Collection inner = new_collection(
        std::string(oru_do_uri_get_uri_str(uri)) + "/ports?:com.example.network:1.0/Port", "ports",
        "name", "mtu");
    read_rows(slot, inner, count, false);
    free_collection(inner);
}

// The rows of a batch go when the next one comes.
void read_rows(ORUDoDtree *parent, const Collection &collection, uint32_t count, bool is_outer) {
    ORUDtlCursor *cursor = nullptr;
    coll.new_config_cursor(&coll, collection.uri, collection.names, nullptr, nullptr, 1, &cursor);
    int32_t more = ORU_OK;
    while (more == ORU_OK) {
        oru_do_dtree_remove_children(parent);
        ORUDoVtable *table = oru_do_vtable_new();
        more = cursor->cursor_get_next(cursor, count, table);
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        for (oru_do_vtable_iter(table, &iter); oru_do_vtable_has_next(&iter);) {
            ORUDoVlist *row = oru_do_vtable_get_next(&iter);
            int32_t rc = 0;
            ORUDoUri *uri = oru_do_value_get_mr_uri(oru_do_vlist_get_value(row, 0), &rc);
            ORUDoDtree *node = oru_do_dtree_add_child(parent, collection.name);
            ORUDoProperties *props = oru_do_properties_new();
            oru_do_properties_set_values(props, collection.names, row);
            oru_do_dtree_set_mr_data(node, uri, props);
            oru_do_properties_deref(props);
            if (is_outer)
                read_ports(node, uri, count);
        }
        oru_do_vtable_deref(table);
    }
    cursor->cursor_close(cursor);
}

void loop(bool is_nested, uint32_t count) {
    const std::string chassis = "//locations;locationId=global/chassis;id=1";
    const Collection collection =
        is_nested ? new_collection(chassis + "/slots?:com.example.network:1.0/Slot", "slot",
                                   "number", "cardType")
                  : new_collection(chassis + "/slots;number=1/ports?:com.example.network:1.0/Port",
                                   "port", "name", "mtu");
    ORUDoDtree *root = oru_do_dtree_new_str("");
    read_rows(root, collection, count, is_nested);
    oru_do_dtree_deref(root);
    free_collection(collection);
}

/* ---- The programme ---- */

template <typename Body>
void add(const std::string &name, Body body) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [body](benchmark::State &state) {
                                     for (auto _ : state)
                                         body();
                                     state.SetItemsProcessed(state.iterations() * kFlatRows);
                                 })
        ->UseRealTime()
        ->Repetitions(3);
}

// Both have 10,000 leaf rows.
void compare(const char *what, ORUDtlNode *document, bool is_nested, int32_t count) {
    const int rows = is_nested ? kRows : kFlatRows;
    const std::string name = std::string(what) + " query, " +
                             (count == 0 ? "all rows" : std::to_string(count) + " rows a call");
    add(name + "/ours", [=] {
        rows_of_a_collection = rows;
        walk(document, count);
    });
    add(name + "/loop", [=] {
        rows_of_a_collection = rows;
        loop(is_nested, static_cast<uint32_t>(count));
    });
    oru::bench::expect(name, "loop", oru::bench::at_most(kBound));
}

void print_memory(ORUDtlNode *document) {
    constexpr int kBatch = 500;
    const auto peak = [&](int rows) {
        return oru::bench::peak_bytes_of([&] {
            rows_of_a_collection = rows;
            walk(document, kBatch);
        });
    };
    const double ten_batches = peak(10 * kBatch);
    const double million = peak(1'000'000);
    std::printf(
        "peak of a walk in batches of %d: 5,000 rows %.0f kB, 1,000,000 rows %.0f kB, "
        "%.2f times (at most 1.10: %s)\n",
        kBatch, ten_batches / 1024, million / 1024, million / ten_batches,
        million <= 1.1 * ten_batches ? "holds" : "DOES NOT HOLD");
}

}  // namespace

int main(int argc, char **argv) {
    oru_md_set_root_mr_type("com.example.network:1.0/System");
    oru_md_load_dir(NETWORK_PACKAGES, "/", ".oru2d", nullptr);
    fill_interface();
    ORUDtlNode *flat = read_document(kFlat);
    ORUDtlNode *nested = read_document(kNested);
    if (flat == nullptr || nested == nullptr) {
        std::fprintf(stderr, "the documents do not fit the model\n");
        return 1;
    }
    print_memory(flat);
    for (const int32_t count : {10, 100, 0}) {
        compare("flat", flat, false, count);
        compare("nested", nested, true, count);
    }
    return oru::bench::run_all(argc, argv);
}
