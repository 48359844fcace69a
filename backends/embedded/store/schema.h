/* How the store's tables look, and how older ones become like it. */
#ifndef EMBEDDED_SCHEMA_H
#define EMBEDDED_SCHEMA_H

#include <span>

#include "sqlite.h"

namespace embedded {

/* The statements that lead from each version of the schema to the next, from an empty file on. */
std::span<const char *const> schema_steps();

/* Throws `foreign` for a database of another program, which is left as it is. */
void check_owner(Connection &connection);

/* Brings a database to the last of the steps, in one transaction. Throws `foreign` for a database
   of another program and for one that a newer program has written. */
void migrate(Connection &connection, std::span<const char *const> steps);

}  // namespace embedded

#endif
