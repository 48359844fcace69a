/*
 * Keys of resources in the store. The key of a resource orders as its address does with the keys in
 * their types: numbers as numbers, texts and bytes by their length first, as the library compares
 * them. It consists of
 *
 *     'r', the number of segments behind the location, as a byte,
 *     for each segment the name of the reference and a zero,
 *         for each primary key a letter and the value: 'i' and 'u' with 8 bytes, the highest first
 *         and the sign turned round; 's' and 'b' with 4 bytes of length and the bytes.
 *
 * So the children of one resource under one reference follow each other, and so do its descendants
 * of one depth.
 */
#ifndef EMBEDDED_KEYS_H
#define EMBEDDED_KEYS_H

#include <optional>

#include "model.h"
#include "store/store.h"

namespace embedded {

/* How many segments an address has at most behind its location, which is one of ten. */
constexpr size_t kMaxDepth = 9;

/* Where a resource stands: its key, and its address as we write it, without the location. */
struct Place {
    std::string key;
    std::string path; /* "/chassis;id=1", empty for the root */

    /* How many segments it has. */
    size_t depth() const { return static_cast<unsigned char>(key[1]); }

    static Place root() { return {std::string("r\0", 2), {}}; }
};

/* The children of a place under a reference, without their own key values; also the place of the
   only child of a reference that leads to one. */
Place below(const Place &parent, std::string_view reference);

/* The collection that a resource is a member of: its place without its own key values. */
Place collection_of(const Place &place);

/* The resource above another one, which is not the root. */
Place parent_of(const Place &place);

/* Adds the value of a primary key to the place of a child: from the text in an address, still
   escaped, or from a value. False for a text or value that is none of the key's type. */
bool add_key_text(Place &place, const AttributeType &key, std::string_view escaped);
bool add_key_value(Place &place, const AttributeType &key, ORUDoValue *value);

/* The key of the row that leads from a group of secondary keys of a collection to the resource that
   has them, in front of the values: 's', the key of the collection, the number of the group. */
Place begin_secondary_key(const Place &collection, size_t group);

/* The keys that begin with a prefix. */
Range range_of(std::string prefix);

/* Of all resources at that many segments below a place, the place itself for 0. */
Range descendants_of(const Place &place, size_t levels);

/* The text of a key in an address, escaped or not. False for an escape that does not exist. */
void append_escaped(std::string_view text, std::string &out);
bool append_unescaped(std::string_view escaped, std::string &out);

}  // namespace embedded

#endif
