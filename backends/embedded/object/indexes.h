/*
 * Rows of the store that are no resources, and lead to some:
 *
 *     'l', the length of the key of a resource in 4 bytes, that key, the key of another one whose
 *         peer references lead to the first: who refers to a resource;
 *     's', the key of a collection, the number of a group of secondary keys as a byte, their values
 *         as in keys: which resource has them. The label is the address of the resource.
 */
#ifndef EMBEDDED_INDEXES_H
#define EMBEDDED_INDEXES_H

#include <set>

#include "draft.h"

namespace embedded {

/* The keys of the rows that a state of a resource has in the store. All have its address for a
   label. */
using IndexKeys = std::set<std::string>;

void add_secondary_keys(const Place &place, const Draft::State &state, IndexKeys &keys);

/* One group of secondary keys of a collection; empty when a value is missing or is none of its
   key's type. */
std::string secondary_key(const Place &collection, const ResourceType &type, size_t group,
                          ORUDoProperties *props);

/* Who refers to a resource. */
Range links_to(const std::string &key);
std::string link(const std::string &to, const std::string &from);
std::string source_of_link(const std::string &link_key);

}  // namespace embedded

#endif
