/* What a change has to fulfil as a whole. */
#ifndef EMBEDDED_CHECKS_H
#define EMBEDDED_CHECKS_H

#include "edit.h"

namespace embedded {

/*
 * Checks every resource that the operations of an edit touched, as they leave it: types and
 * constraints of all values, with conditions over what is new and what stays; what is mandatory;
 * addresses that have to lead somewhere, also those of others that lead to what is deleted; keys
 * that have to be unique; how many children a reference may have. Adds all faults.
 */
void check(Edit &edit);

/* The resources that a state refers to, each once, in their place. */
std::vector<Target> targets_of(Drafts &drafts, const Draft::State &state);

}  // namespace embedded

#endif
