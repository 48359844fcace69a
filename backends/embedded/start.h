/* What the options of a start ask of the library: its pools, and the model. */
#ifndef EMBEDDED_START_H
#define EMBEDDED_START_H

#include "oruembedded.h"

namespace embedded {

/* The options of a caller, whose record may be shorter or longer than ours. */
ORUEmbeddedOptions options_at(const void *given);

/* The pools of the library can be sized before the first object is made, and once. */
void size_pools(intptr_t elements);

/* Throws `Refusal`. */
void load_model(const ORUEmbeddedOptions &options);

}  // namespace embedded

#endif
