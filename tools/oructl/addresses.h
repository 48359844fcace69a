// Addresses of resources as texts, and what the model tells about them.
#ifndef ORU_TOOLS_ORUCTL_ADDRESSES_H
#define ORU_TOOLS_ORUCTL_ADDRESSES_H

#include <string>
#include <string_view>
#include <vector>

#include "model.h"

namespace oructl {

// A key as it stands in an address, without its escapes.
struct KeyText {
    std::string name;
    std::string value;
};

// An address cut behind the location, which all resources of a database share.
struct Address {
    std::string path;       // from the location on; "/" for the resource at the top
    size_t depth = 0;       // segments
    std::string parent;     // "/" above the first segment
    std::string reference;  // of the last segment; empty at the top
    std::vector<KeyText> keys;
};

// Throws `Failure` for what is no address of a resource.
Address read_address(const std::string &text);

// A text with the location taken out of every address in it.
std::string without_location(std::string text);

// The type that the references of the model lead to, implementations of library types included;
// null for none.
ORUMdMrMeta *type_by_model(ORUMdMrMeta &root, const Address &address);

// Throws `Failure` for a text that cannot be the address of a collection.
void check_collection(const std::string &text);

// What is wrong with a `?` that begins no query for the parser, and what does; empty for nothing.
// Such an address names one resource, which is never there, although a back end reads it as a
// collection.
std::string query_mark_fault(const std::string &text);

// Throws `Failure` for a text at which the library would end the process once it stands behind the
// location.
void check_limits(const std::string &text);

}  // namespace oructl

#endif
