// Taking and returning a pool element against a small block of the general allocators.
#include "bench/contenders.h"
#include "bench/ratios.h"

using namespace oru::bench;

namespace {

template <class Contender>
void add_all(const std::string &name) {
    add("pair/" + name, pairs<Contender>);
    add("batch of 50/" + name, batches<Contender, 50>);
    add("batch of 2000/" + name, batches<Contender, 2000>);
}

}  // namespace

int main(int argc, char **argv) {
    add_all<Pool>("ours");
    add_all<Glibc>("glibc");
    if (Mimalloc::library() != nullptr) {
        add_all<Mimalloc>("mimalloc");
    }
    return run_all(argc, argv);
}
