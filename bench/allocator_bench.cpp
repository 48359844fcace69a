// The tagged allocator, whose bound is the C library's that it stands on, and a peer.
#include "bench/contenders.h"
#include "bench/ratios.h"

using namespace oru::bench;

namespace {

template <class Contender>
void add_all(const std::string &name) {
    add("pair/" + name, pairs<Contender>);
    add("batch of 50/" + name, batches<Contender, 50>);
    add("mixed sizes/" + name, mixed_sizes<Contender>);
}

}  // namespace

int main(int argc, char **argv) {
    add_all<Tagged>("ours");
    add_all<Glibc>("glibc");
    if (Mimalloc::library() != nullptr) {
        add_all<Mimalloc>("mimalloc");
    }
    return run_all(argc, argv);
}
