// Sessions are the back end's business: dispatchers that hand on their words and hand back the
// result. Two of them stamp the parameters, before anybody looks whether there is an entry.
#include "oru/session.h"

#include "frame/backend.h"
#include "oru/nvlist.h"

using oru::Entry;

namespace {

// These entries have three words, the others up to six.
using Open = intptr_t(ORUDoNvlist *, intptr_t, intptr_t);

intptr_t open_with_version(Entry entry, ORUDoNvlist *params, intptr_t a2, intptr_t a3) {
    oru_do_nvlist_add_string(params, "version", "1.0");
    void *symbol = reinterpret_cast<void *>(oru::need_entry(entry));
    return reinterpret_cast<Open *>(symbol)(params, a2, a3);
}

}  // namespace

intptr_t oru_cl_session_open(ORUDoNvlist *params, intptr_t a2, intptr_t a3) {
    return open_with_version(Entry::cl_open, params, a2, a3);
}

intptr_t oru_pr_session_open(ORUDoNvlist *params, intptr_t a2, intptr_t a3) {
    return open_with_version(Entry::pr_open, params, a2, a3);
}

intptr_t oru_ev_session_open(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                             intptr_t a6) {
    return oru::need_entry(Entry::ev_open)(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_cl_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                              intptr_t a6) {
    return oru::need_entry(Entry::cl_close)(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_pr_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                              intptr_t a6) {
    return oru::need_entry(Entry::pr_close)(a1, a2, a3, a4, a5, a6);
}

intptr_t oru_ev_session_close(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5,
                              intptr_t a6) {
    return oru::need_entry(Entry::ev_close)(a1, a2, a3, a4, a5, a6);
}
