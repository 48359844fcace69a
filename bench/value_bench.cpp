// Values: making and releasing them against the peers' scalars, printing and parsing them against
// the C library on the same numbers, and the memory that each kind takes.
#include <oru/strbuf.h>
#include <oru/value.h>
#include <oruplatform/tracelet.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/memory.h"
#include "bench/ratios.h"

#ifdef ORU_BENCH_GLIB
#include <glib.h>
#endif
#ifdef ORU_BENCH_JANSSON
#include <jansson.h>
#endif

using oru::bench::at_least;
using oru::bench::at_most;
using oru::bench::compare;
using oru::bench::expect;

namespace {

// How many times as fast as the peers' scalars, and as long as the C library, we may be.
constexpr double kIntegerAgainstJansson = 1;
constexpr double kTextAgainstJansson = 1.5;
constexpr double kAgainstGVariant = 5;
constexpr double kAgainstLibrary = 2;

constexpr char kText[] = "GigabitEther0/1";

void size_pools() {
    init_chunk_poolheap_oru_do_value(4096, 0);
    init_chunk_poolheap_oru_do_value_sml_misc(4096, 0);
    init_chunk_poolheap_oru_do_value_misc(4096, 0);
    init_chunk_poolheap_oru_do_strbuf(64, 0);
    init_chunk_poolheap_oru_do_strbuf_misc(64, 0);
}

// ---- Make and release ----

struct Ours {
    static auto *integer(int64_t n) { return oru_do_value_new_long(n); }
    static auto *text(const char *text) { return oru_do_value_new_string(text); }
    static void release(ORUDoValue *val) { oru_do_value_deref(val); }
};

#ifdef ORU_BENCH_GLIB
// A new one is floating: its first release is its last.
struct GLib {
    static auto *integer(int64_t n) { return g_variant_new_int64(n); }
    static auto *text(const char *text) { return g_variant_new_string(text); }
    static void release(GVariant *val) { g_variant_unref(val); }
};
#endif

#ifdef ORU_BENCH_JANSSON
struct Jansson {
    static auto *integer(int64_t n) { return json_integer(n); }
    static auto *text(const char *text) { return json_string(text); }
    static void release(json_t *val) { json_decref(val); }
};
#endif

template <class Contender>
struct Integers {
    static auto *make(int64_t n) { return Contender::integer(n); }
};

template <class Contender>
struct Texts {
    static auto *make(int64_t) { return Contender::text(kText); }
};

// One at a time.
template <class Contender, template <class> class Kind>
void pairs(benchmark::State &state) {
    int64_t n = 0;
    for (auto _ : state) {
        auto *val = Kind<Contender>::make(n++);
        benchmark::DoNotOptimize(val);
        Contender::release(val);
    }
}

// A table's worth of them alive at a time, released in the order in which they came.
template <class Contender, template <class> class Kind>
void batches(benchmark::State &state) {
    std::array<decltype(Kind<Contender>::make(0)), 50> vals;
    while (state.KeepRunningBatch(vals.size())) {
        int64_t n = 0;
        for (auto &val : vals)
            val = Kind<Contender>::make(n++);
        for (auto *val : vals)
            Contender::release(val);
    }
}

template <class Contender>
void add_scalars(const std::string &name) {
    compare("make and release integer/" + name, pairs<Contender, Integers>);
    compare("make and release text/" + name, pairs<Contender, Texts>);
    compare("50 integers, each/" + name, batches<Contender, Integers>);
    compare("50 texts, each/" + name, batches<Contender, Texts>);
}

// Batches are shown without a bound.
void expect_of_scalars(const std::string &peer, double integers, double texts) {
    expect("make and release integer", peer, at_least(integers));
    expect("make and release text", peer, at_least(texts));
}

// ---- Print and parse ----

// Numbers as tables have them: most are short.
constexpr std::array<int64_t, 16> kNumbers = {
    0,         1,         -1,         7,           42,
    100,       -273,      1500,       -32768,      65535,
    1000000,   268435456, 2147483647, -5000000000, 1700000000000000,
    INT64_MAX,
};
constexpr std::array<int32_t, 16> kNarrowNumbers = {
    0, 1, -1, 7, 10, 42, 100, 127, -273, 1500, 9216, -32768, 65535, 1000000, 268435456, 2147483647,
};
constexpr std::array<double, 8> kRealNumbers = {0, 1, -0.5, 3.25, 99.9, 1e6, 6.02214e+23, -40.125};

using PrintPeer = int (*)(char *out, size_t size, size_t i);

constexpr PrintPeer kPrintNarrow = [](char *out, size_t size, size_t i) {
    return std::snprintf(out, size, "%d", kNarrowNumbers[i]);
};
constexpr PrintPeer kPrintWide = [](char *out, size_t size, size_t i) {
    return std::snprintf(out, size, "%lld", static_cast<long long>(kNumbers[i]));
};
constexpr PrintPeer kPrintReal = [](char *out, size_t size, size_t i) {
    return std::snprintf(out, size, "%lg", kRealNumbers[i]);
};

template <auto numbers, auto make>
void print(benchmark::State &state) {
    std::array<ORUDoValue *, numbers.size()> vals;
    for (size_t i = 0; i < vals.size(); ++i)
        vals[i] = make(numbers[i]);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    while (state.KeepRunningBatch(vals.size())) {
        for (ORUDoValue *val : vals) {
            oru_do_strbuf_clear(buf);
            oru_do_value_to_strbuf(val, 0, buf);
        }
    }
    oru_do_strbuf_deref(buf);
    for (ORUDoValue *val : vals)
        oru_do_value_deref(val);
}

template <auto numbers, PrintPeer print_one>
void print_with_library(benchmark::State &state) {
    char out[64];
    while (state.KeepRunningBatch(numbers.size())) {
        for (size_t i = 0; i < numbers.size(); ++i) {
            print_one(out, sizeof out, i);
            benchmark::DoNotOptimize(out);
        }
    }
}

// The texts of the numbers, as both print them.
template <auto numbers, PrintPeer print_one>
auto texts_of() {
    std::array<std::string, numbers.size()> texts;
    for (size_t i = 0; i < numbers.size(); ++i) {
        char out[64];
        print_one(out, sizeof out, i);
        texts[i] = out;
    }
    return texts;
}

template <auto numbers, PrintPeer print_one, int32_t type>
void parse(benchmark::State &state) {
    const auto texts = texts_of<numbers, print_one>();
    while (state.KeepRunningBatch(texts.size())) {
        for (const std::string &text : texts) {
            int32_t rc = 0;
            ORUDoValue *val = oru_do_value_new_from_string(text.c_str(), type, &rc);
            benchmark::DoNotOptimize(val);
            oru_do_value_deref(val);
        }
    }
}

template <auto numbers, PrintPeer print_one, auto parse_one>
void parse_with_library(benchmark::State &state) {
    const auto texts = texts_of<numbers, print_one>();
    while (state.KeepRunningBatch(texts.size())) {
        for (const std::string &text : texts)
            benchmark::DoNotOptimize(parse_one(text.c_str()));
    }
}

constexpr auto kParseInteger = [](const char *text) { return std::strtol(text, nullptr, 10); };
constexpr auto kParseReal = [](const char *text) { return std::strtod(text, nullptr); };

// A value is made and released with each parse, which the C library has no need to do.
template <auto numbers, PrintPeer print_one, auto make, int32_t type, auto parse_one>
void add_numbers(const std::string &name) {
    compare("print " + name + "/ours", print<numbers, make>);
    compare("print " + name + "/snprintf", print_with_library<numbers, print_one>);
    compare("parse " + name + "/ours", parse<numbers, print_one, type>);
    compare("parse " + name + "/strto...", parse_with_library<numbers, print_one, parse_one>);
    expect("print " + name, "snprintf", at_most(kAgainstLibrary));
    expect("parse " + name, "strto...", at_most(kAgainstLibrary));
}

// ---- Memory ----

struct Storage {
    const char *what;
    int32_t length;
};
constexpr Storage kStorages[] = {
    {"value, number", -1},
    {"value, text of 15, small", 15},
    {"value, text of 31, small", 31},
    {"value, text of 127, large", 127},
    {"value, text of 200, heap", 200},
};

void print_memory() {
    const std::string text(256, 'x');
    for (const Storage &storage : kStorages) {
        const auto make = [&](int64_t n) {
            if (storage.length < 0) {
                oru_do_value_new_long(n);
            } else {
                oru_do_value_new_string_l(text.c_str(), storage.length);
            }
        };
        oru::bench::print_bytes_of(storage.what, "pools", size_pools, make);
        oru::bench::print_bytes_of(
            storage.what, "heap", [] {}, make);
    }
#ifdef ORU_BENCH_GLIB
    oru::bench::print_bytes_of(
        "number", "GVariant", [] {}, GLib::integer);
    oru::bench::print_bytes_of(
        "text of 15", "GVariant", [] {}, [](int) { GLib::text(kText); });
#endif
#ifdef ORU_BENCH_JANSSON
    oru::bench::print_bytes_of(
        "number", "jansson", [] {}, Jansson::integer);
    oru::bench::print_bytes_of(
        "text of 15", "jansson", [] {}, [](int) { Jansson::text(kText); });
#endif
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    print_memory();
    size_pools();
    add_scalars<Ours>("ours");
#ifdef ORU_BENCH_GLIB
    add_scalars<GLib>("GVariant");
    expect_of_scalars("GVariant", kAgainstGVariant, kAgainstGVariant);
#endif
#ifdef ORU_BENCH_JANSSON
    add_scalars<Jansson>("jansson");
    expect_of_scalars("jansson", kIntegerAgainstJansson, kTextAgainstJansson);
#endif
    add_numbers<kNarrowNumbers, kPrintNarrow, oru_do_value_new_int, ORU_DO_TYPE_INT, kParseInteger>(
        "int");
    add_numbers<kNumbers, kPrintWide, oru_do_value_new_long, ORU_DO_TYPE_LONG, kParseInteger>(
        "long");
    add_numbers<kRealNumbers, kPrintReal, oru_do_value_new_double, ORU_DO_TYPE_DOUBLE, kParseReal>(
        "double");
    return oru::bench::run_all(argc, argv);
}
