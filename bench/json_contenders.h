// Who reads and writes JSON documents in the benchmarks: we and the peers that are installed.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "bench/json_documents.h"

namespace oru::bench {

struct Document {
    Shape shape;
    std::string wire;
    std::string yang;  // the same data for libyang
};

struct Contender {
    const char *name;
    // What the contender makes of a document; null where it does not read.
    void *(*read)(const Document &document);
    void (*release)(void *tree);
    // Writes what was read to memory and gives the length. Null for one that does not write.
    size_t (*write)(void *tree, Shape shape);
};

// Ours comes first, then the peers.
std::vector<Contender> readers(Shape shape);
std::vector<Contender> writers(Shape shape);

// All pools of ours, as processes size them.
void size_json_pools();

}  // namespace oru::bench
