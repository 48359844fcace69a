// Reading and writing JSON documents of 1 kB, 100 kB and 10 MB: lists of properties, trees and
// tables of values. Reading stands against yajl's events with nobody listening and against
// libraries that build a tree of the same data; writing against generators that write the same text
// from trees of their own. Reading 10 MB is also compared by the memory that it takes at its peak.
// Tracing is off and all pools are sized, as in a process that serves.
#include <oruplatform/tracelet.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "bench/json_contenders.h"
#include "bench/memory.h"
#include "bench/ratios.h"

namespace {

using oru::bench::Bound;
using oru::bench::Contender;
using oru::bench::Document;
using oru::bench::Shape;

struct Size {
    const char *name;
    size_t bytes;
    int repetitions;
};

constexpr Size kSizes[] = {{"1 kB", 1000, 60}, {"100 kB", 100000, 30}, {"10 MB", 10000000, 7}};

struct NamedShape {
    const char *name;
    Shape shape;
};

constexpr NamedShape kShapes[] = {{"properties", Shape::properties_list},
                                  {"tree", Shape::data_tree},
                                  {"table", Shape::value_table}};

using Shared = std::shared_ptr<const Document>;

Shared make_document(Shape shape, size_t size) {
    auto document = std::make_shared<Document>();
    int ports = 0;
    document->shape = shape;
    document->wire = oru::bench::wire_document(shape, size, ports);
    document->yang = oru::bench::yang_document(shape, ports);
    return document;
}

// As many trees as make a time that can be measured are kept, and released while no clock runs.
void read_only(benchmark::State &state, const Contender &contender, const Document &document) {
    const size_t batch = 1 + 200000 / document.wire.size();
    std::vector<void *> trees(batch);
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(batch))) {
        for (void *&tree : trees)
            tree = contender.read(document);
        state.PauseTiming();
        for (void *tree : trees) {
            if (tree == nullptr)
                state.SkipWithError("not read");
            else
                contender.release(tree);
        }
        state.ResumeTiming();
    }
}

void read_and_release(benchmark::State &state, const Contender &contender,
                      const Document &document) {
    for (auto _ : state) {
        void *tree = contender.read(document);
        if (tree == nullptr)
            state.SkipWithError("not read");
        else
            contender.release(tree);
    }
}

void write(benchmark::State &state, const Contender &contender, const Document &document) {
    void *tree = contender.read(document);
    size_t length = 0;
    for (auto _ : state)
        length = contender.write(tree, document.shape);
    if (length < document.wire.size() / 2)
        state.SkipWithError("not written");
    contender.release(tree);
}

using Body = void (*)(benchmark::State &, const Contender &, const Document &);

void compare(const std::string &work, const std::vector<Contender> &contenders,
             const Shared &document, int repetitions, Body body) {
    for (const Contender &contender : contenders)
        oru::bench::compare(
            work + '/' + contender.name,
            [body, contender, document](benchmark::State &state) {
                body(state, contender, *document);
            },
            repetitions);
}

void expect_reading(const std::string &work, Bound of_yajl) {
    oru::bench::expect(work, "yajl", of_yajl);
    for (const char *peer : {"jansson", "json-c", "libyang"})
        oru::bench::expect(work, peer, oru::bench::at_least(1));
}

// What libyang takes for a module's rows grows with their square, which is minutes for the largest.
std::vector<Contender> readers_of(const Document &document) {
    constexpr size_t kMostForLibyang = 1000000;
    auto contenders = oru::bench::readers(document.shape);
    if (document.wire.size() > kMostForLibyang && contenders.back().name == std::string("libyang"))
        contenders.pop_back();
    return contenders;
}

void compare_memory(const std::string &what, const Shared &document) {
    const std::string work = "memory to read " + what;
    for (const Contender &contender : readers_of(*document)) {
        const double bytes =
            oru::bench::peak_bytes_of([&] { benchmark::DoNotOptimize(contender.read(*document)); });
        if (contender.name != std::string("yajl"))
            oru::bench::measure_bytes(work, contender.name, bytes);
    }
    // A value of a table is an object with a count, a type and a place of its own for its text.
    if (document->shape == Shape::value_table)
        return;
    for (const char *peer : {"jansson", "json-c"})
        oru::bench::expect(work, peer, oru::bench::at_least(1));
}

void compare_reading(const std::string &what, const Shared &document, int repetitions) {
    const auto contenders = readers_of(*document);
    compare("read " + what, contenders, document, repetitions, read_only);
    expect_reading("read " + what, oru::bench::at_most(3));
    compare("read, release " + what, contenders, document, repetitions, read_and_release);
    expect_reading("read, release " + what, oru::bench::at_most(4));
}

// The peers write what we wrote: the forms that are read and written differ for a table.
void compare_writing(const std::string &what, const Shared &document, int repetitions) {
    const std::string work = "write " + what;
    compare(work, oru::bench::writers(document->shape), document, repetitions, write);
    oru::bench::expect(work, "yajl_gen", oru::bench::at_least(1));
    oru::bench::expect(work, "jansson", oru::bench::at_least(1));
    oru::bench::expect(work, "RapidJSON", oru::bench::at_most(1.5));
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    oru::bench::size_json_pools();
    for (const Size &size : kSizes) {
        for (const NamedShape &shape : kShapes) {
            const std::string what = std::string(size.name) + ' ' + shape.name;
            const Shared document = make_document(shape.shape, size.bytes);
            compare_reading(what, document, size.repetitions);
            compare_writing(what, document, size.repetitions);
            if (&size == std::end(kSizes) - 1)
                compare_memory(what, document);
        }
    }
    return oru::bench::run_all(argc, argv);
}
