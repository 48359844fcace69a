// Documents for the JSON benchmarks: the ports of a network as lists of properties, as a tree and
// as the rows of a table, in the wire form and as data for a YANG module that describes the same.
#pragma once

#include <cstddef>
#include <string>

namespace oru::bench {

enum class Shape { properties_list, data_tree, value_table };

// The wire form, of `size` bytes or a little more. `ports` gets the number of ports in it.
std::string wire_document(Shape shape, size_t size, int &ports);

// The same ports as the JSON of a YANG module, and the modules.
std::string yang_document(Shape shape, int ports);
extern const char kYangModule[];

}  // namespace oru::bench
