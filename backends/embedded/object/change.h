/* Changes from the operations of a client to the commit in the store. */
#ifndef EMBEDDED_CHANGE_H
#define EMBEDDED_CHANGE_H

#include "writes.h"

namespace embedded {

struct ChangeRequest {
    ORUDoConfigOps *operations = nullptr;
    Authority authority = Authority::client;
    bool is_dry_run = false;
    std::string who;
    std::string request; /* the name of the change; empty for none */
};

struct ChangeResult {
    int32_t code = ORU_OK;
    Revision revision = 0; /* 0 when nothing was written */
    Error error;
};

/* Checks the operations, and writes them unless something is wrong or it is a dry run. When the
   store changed under the checks they are done again. */
ChangeResult carry_out(const Source &source, const SecretWriter &secrets,
                       const ChangeRequest &request);

/* Makes the resource at the root, which is always there, when the store is empty. */
void make_root(const Source &source);

}  // namespace embedded

#endif
