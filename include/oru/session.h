/*
 * Sessions of clients, providers and event listeners. They are carried out by the back end: what it
 * is handed, what it gives and what its handles are is told there. A call for which the back end
 * has no entry is fatal ("Failed to find dl symbol %s"), as is one before `oru_lib_init`.
 */
#ifndef ORU_SESSION_H
#define ORU_SESSION_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/*
 * Open a session of a client or of a provider. `params`, asserted as "nvlist", is the caller's. The
 * version of the interface is added to it first, as "version" with the string "1.0", and stays
 * there; a repeated call adds it once more. Without memory for it the session is opened all the
 * same. The other words and the result pass untouched.
 */
ORU_API intptr_t oru_cl_session_open(ORUDoNvlist *params, intptr_t a2, intptr_t a3);
ORU_API intptr_t oru_pr_session_open(ORUDoNvlist *params, intptr_t a2, intptr_t a3);

/* Opens a session of an event listener, which carries no version. All words pass untouched. */
ORU_API intptr_t oru_ev_session_open(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                     intptr_t a5, intptr_t a6);

/* Close a session. All words pass untouched. */
ORU_API intptr_t oru_cl_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                      intptr_t a5, intptr_t a6);
ORU_API intptr_t oru_pr_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                      intptr_t a5, intptr_t a6);
ORU_API intptr_t oru_ev_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                      intptr_t a5, intptr_t a6);

ORU_END_DECLS

#endif
