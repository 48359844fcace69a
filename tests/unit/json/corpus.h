// Objects of every kind, each with a name under which its expected texts stand.
#ifndef ORU_TESTS_UNIT_JSON_CORPUS_H
#define ORU_TESTS_UNIT_JSON_CORPUS_H

#include <ostream>
#include <vector>

#include "tests/unit/json/kinds.h"

namespace oru::test {

struct Specimen {
    const Kind *kind;
    const char *name;
    void *(*make)();  // the result is the caller's
};

inline std::ostream &operator<<(std::ostream &out, const Specimen &specimen) {
    return out << specimen.kind->name << "/" << specimen.name;
}

// Each part of the corpus appends its own.
void add_values(std::vector<Specimen> &corpus);
void add_lists(std::vector<Specimen> &corpus);
void add_objects(std::vector<Specimen> &corpus);
void add_descriptions(std::vector<Specimen> &corpus);

inline std::vector<Specimen> corpus() {
    std::vector<Specimen> all;
    add_values(all);
    add_lists(all);
    add_objects(all);
    add_descriptions(all);
    return all;
}

}  // namespace oru::test

#endif
