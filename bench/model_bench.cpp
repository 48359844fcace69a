// Loading a model of 200 packages, 4,000 resources and 120,000 attributes, against a parse of the
// same files that keeps nothing and against a loader of YANG modules with as many nodes; the memory
// that an attribute takes; a walk of five segments; and what lookups cost as the model grows, of
// which `--plot=FILE` writes the points. Tracing is off, as it is by default, and all pools are
// sized.
#include <libxml/parser.h>
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/oru.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>

#include "bench/memory.h"
#include "bench/model_files.h"
#include "bench/ratios.h"

#ifdef ORU_BENCH_LIBYANG
#include <libyang/libyang.h>
#endif

namespace {

using oru::bench::Folder;
using oru::bench::Model;

constexpr Model kModel{200};
constexpr int kRepetitions = 12;

std::unique_ptr<Folder> packages;
std::unique_ptr<Folder> modules;

void size_pools() {
    for (auto *init :
         {init_chunk_poolheap_oru_do_name,         init_chunk_poolheap_oru_do_value,
          init_chunk_poolheap_oru_do_strbuf,       init_chunk_poolheap_oru_do_strbuf_misc,
          init_chunk_poolheap_oru_do_nlist,        init_chunk_poolheap_oru_do_nlist_item,
          init_chunk_poolheap_oru_do_nvlist,       init_chunk_poolheap_oru_do_nvlist_item,
          init_chunk_poolheap_oru_do_prop_meta,    init_chunk_poolheap_oru_do_prop_meta_list,
          init_chunk_poolheap_oru_do_mr_meta,      init_chunk_poolheap_oru_do_mr_meta_list,
          init_chunk_poolheap_oru_do_mr_meta_bool, init_chunk_poolheap_oru_do_typedef_meta,
          init_chunk_poolheap_oru_do_constraint,   init_chunk_poolheap_oru_do_constraint_list,
          init_chunk_poolheap_oru_do_condition,    init_chunk_poolheap_oru_do_range,
          init_chunk_poolheap_oru_do_uri,          init_chunk_poolheap_oru_do_uri_misc,
          init_chunk_poolheap_oru_do_uri_sml_misc, init_chunk_poolheap_oru_do_simple_type_meta}) {
        init(1024, CHUNK_FLAG_GROW);
    }
}

// ---- Loading ----

// Loads where nothing is loaded. False where not every resource is there.
bool load(const Model &model, const Folder &folder) {
    oru_md_load_dir(folder.path().c_str(), "", ".oru2d", nullptr);
    return oru_md_get_mr_meta_by_name(model.name(model.implementations() - 1).c_str()) != nullptr;
}

// What was freed in small pieces is put together at the next large block, whoever asks for it.
void settle_heap() {
    constexpr size_t kLarge = 100000;
    void *block = std::malloc(kLarge);
    benchmark::DoNotOptimize(block);
    std::free(block);
}

void load_packages(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        oru_md_free();
        settle_heap();
        state.ResumeTiming();
        if (!load(kModel, *packages))
            state.SkipWithError("not loaded");
    }
}

void parse_packages(benchmark::State &state) {
    for (auto _ : state) {
        for (const std::string &file : packages->files()) {
            xmlDoc *document = xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET);
            if (document == nullptr)
                state.SkipWithError("not parsed");
            xmlFreeDoc(document);
        }
    }
}

#ifdef ORU_BENCH_LIBYANG
// All modules are compiled at once, which is its fastest way. Null where one is faulty.
ly_ctx *load_modules() {
    ly_ctx *context = nullptr;
    bool loaded = ly_ctx_new(nullptr, LY_CTX_EXPLICIT_COMPILE, &context) == LY_SUCCESS;
    for (const std::string &file : modules->files())
        loaded =
            loaded && lys_parse_path(context, file.c_str(), LYS_IN_YANG, nullptr) == LY_SUCCESS;
    if (loaded && ly_ctx_compile(context) == LY_SUCCESS)
        return context;
    ly_ctx_destroy(context);
    return nullptr;
}

void load_with_libyang(benchmark::State &state) {
    for (auto _ : state) {
        ly_ctx *context = load_modules();
        if (context == nullptr)
            state.SkipWithError("not loaded");
        state.PauseTiming();
        ly_ctx_destroy(context);
        settle_heap();
        state.ResumeTiming();
    }
}
#endif

void print_memory() {
    const auto load_all = [] { load(kModel, *packages); };
    oru::bench::print_bytes_each("attribute in a model", "pools", kModel.attributes(), size_pools,
                                 load_all);
    oru::bench::print_bytes_each(
        "attribute in a model", "heap", kModel.attributes(), [] {}, load_all);
#ifdef ORU_BENCH_LIBYANG
    oru::bench::print_bytes_each(
        "leaf in a YANG context", "libyang", kModel.attributes(), [] {}, [] { load_modules(); });
#endif
}

// ---- Looking up ----

struct Uri {
    ORUDoUri *uri;
    explicit Uri(const std::string &text) : uri(oru_do_uri_new(text.c_str())) {
        oru_do_uri_get_segment_count(uri);
    }
    Uri(const Uri &) = delete;
    Uri &operator=(const Uri &) = delete;
    ~Uri() { oru_do_uri_deref(uri); }
};

// False where it does not lead all the way.
bool walk(const Uri &uri) {
    int32_t remainder = 0;
    return oru_md_get_mr_meta_by_uri(uri.uri, 0, nullptr, &remainder, nullptr, nullptr, nullptr) !=
               nullptr &&
           remainder == 0;
}

const char *root_name() {
    static const std::string name = kModel.name(0);
    return name.c_str();
}

void walk_five_segments(benchmark::State &state) {
    constexpr int kAtDepthFive = 682;
    load(kModel, *packages);
    const Uri uri(kModel.uri(kAtDepthFive));
    if (oru_do_uri_get_segment_count(uri.uri) != 5)
        state.SkipWithError("not five segments");
    for (auto _ : state) {
        if (!walk(uri))
            state.SkipWithError("not found");
    }
}

void look_up_by_name(benchmark::State &state) {
    load(kModel, *packages);
    const std::string name = kModel.name(682) + ".config.mtu";
    for (auto _ : state) {
        if (oru_md_get_attr_meta_by_name(name.c_str()) == nullptr)
            state.SkipWithError("not found");
    }
}

// ---- Lookups as the model grows ----

struct Point {
    int resources;
    double by_name;  // nanoseconds
    double by_uri;
};

double processor_time() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// The best time of one step, of rounds that take each of them once, the order mixed.
template <class Step>
double best_time(int count, Step step) {
    constexpr int kStride = 7919;  // prime to all counts
    double best = 1e18;
    for (int round = 0; round < 20 + 20000 / count; round++) {
        const double start = processor_time();
        for (int i = 0; i < count; i++)
            step(static_cast<size_t>(i * kStride % count));
        best = std::min(best, processor_time() - start);
    }
    return best / count;
}

Point measure(const Model &model) {
    Folder folder;
    write_packages(model, folder);
    load(model, folder);
    std::vector<std::string> names;
    std::vector<std::unique_ptr<Uri>> uris;
    for (int i = 0; i < model.implementations(); i++) {
        names.push_back(model.name(i));
        uris.push_back(std::make_unique<Uri>(model.uri(i == 0 ? 1 : i)));
    }
    const auto by_name = [&names](size_t i) { oru_md_get_mr_meta_by_name(names[i].c_str()); };
    const auto by_uri = [&uris](size_t i) { walk(*uris[i]); };
    const Point point{model.resources(), best_time(model.implementations(), by_name),
                      best_time(model.implementations(), by_uri)};
    oru_md_free();
    return point;
}

void plot(const char *what, const std::vector<Point> &points, double Point::*time) {
    constexpr double kWidth = 50;
    double most = 0;
    for (const Point &point : points)
        most = std::max(most, point.*time);
    std::printf("\n%s\n", what);
    for (const Point &point : points) {
        const std::string bar(static_cast<size_t>(point.*time / most * kWidth), '#');
        std::printf("%6d resources %8.1f ns %s\n", point.resources, point.*time, bar.c_str());
    }
}

void plot_lookups(const std::string &data_file) {
    oru_md_free();
    std::vector<Point> points;
    for (const int count : {1, 5, 10, 20, 50, 100, 200})
        points.push_back(measure(Model{count}));
    plot("a resource by its name", points, &Point::by_name);
    plot("a resource by its URI, of up to six segments", points, &Point::by_uri);
    if (data_file.empty())
        return;
    std::FILE *file = std::fopen(data_file.c_str(), "w");
    if (file == nullptr)
        return;
    std::fprintf(file, "resources\tby_name_ns\tby_uri_ns\n");
    for (const Point &point : points)
        std::fprintf(file, "%d\t%.1f\t%.1f\n", point.resources, point.by_name, point.by_uri);
    std::fclose(file);
}

// Takes `--plot=FILE` out of the arguments.
std::string take_plot_option(int &argc, char **argv) {
    constexpr std::string_view kOption = "--plot=";
    std::string file;
    int kept = 0;
    for (int i = 0; i < argc; i++) {
        if (std::string_view(argv[i]).starts_with(kOption))
            file = argv[i] + kOption.size();
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return file;
}

void compare_loading() {
    oru::bench::compare("load a model/ours", load_packages, kRepetitions);
    oru::bench::compare("load a model/libxml2", parse_packages, kRepetitions);
    oru::bench::expect("load a model", "libxml2", oru::bench::at_most(2));
#ifdef ORU_BENCH_LIBYANG
    oru::bench::compare("load a model/libyang", load_with_libyang, kRepetitions);
    oru::bench::expect("load a model", "libyang", oru::bench::at_least(1));
#endif
}

}  // namespace

int main(int argc, char **argv) {
    const std::string data_file = take_plot_option(argc, argv);
    tracelet_set_threshold(0);
    packages = std::make_unique<Folder>();
    write_packages(kModel, *packages);
    oru_md_set_root_mr_type(root_name());
#ifdef ORU_BENCH_LIBYANG
    ly_log_level(LY_LLERR);
    modules = std::make_unique<Folder>();
    write_modules(kModel, *modules);
#endif
    print_memory();
    size_pools();
    compare_loading();
    oru::bench::compare("walk of five segments/ours", walk_five_segments);
    oru::bench::compare("attribute by name/ours", look_up_by_name);
    const int result = oru::bench::run_all(argc, argv);
    plot_lookups(data_file);
    packages.reset();
    modules.reset();
    return result;
}
