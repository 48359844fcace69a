/*
 * ORUDoEvent: a notification about a managed resource: which event it is, where it happened, when,
 * how severe, and further attributes. Events travel through the back end; the library carries them
 * and gives them their text, XML and JSON forms. Time and severity are only stored and printed.
 *
 * Events do not change once they are made, but for the name that `oru_do_event_get_fqn_event_name`
 * keeps: the first call of that on a shared event is made by one thread.
 */
#ifndef ORU_EVENT_H
#define ORU_EVENT_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/*
 * An event with one reference, which shares the objects; `_2` tells the package that declares it
 * and copies its version. Every object but the name may be null. Null when memory runs out.
 */
ORU_API ORUDoEvent *oru_do_event_new(ORUDoName *name, ORUDoUri *uri, int64_t event_time,
                                     int32_t severity, ORUDoProperties *info);
ORU_API ORUDoEvent *oru_do_event_new_2(ORUDoName *pkg_name, const char *pkg_vs, ORUDoName *name,
                                       ORUDoUri *uri, int64_t event_time, int32_t severity,
                                       ORUDoProperties *info);

/* ---- Reading ----
 * What the event was made with. Objects and texts are borrowed, null where there is nothing. Time
 * and severity have the units of whoever made the event. All assert "event". */
ORU_API ORUDoName *oru_do_event_get_pkg_name(ORUDoEvent *event);
ORU_API const char *oru_do_event_get_pkg_vs(ORUDoEvent *event);
ORU_API ORUDoName *oru_do_event_get_name(ORUDoEvent *event);
ORU_API ORUDoUri *oru_do_event_get_uri(ORUDoEvent *event);
ORU_API int64_t oru_do_event_get_event_time(ORUDoEvent *event);
ORU_API int32_t oru_do_event_get_severity(ORUDoEvent *event);
ORU_API ORUDoProperties *oru_do_event_get_info(ORUDoEvent *event);

/* The name "package:version/name", made at the first call and kept. Null when a part is missing or
   no buffer can be had, and nothing is kept then. */
ORU_API const char *oru_do_event_get_fqn_event_name(ORUDoEvent *event);

/* ---- Printing ---- */

/* Appends "Event(package:version/name):URI-time-severity", what `info` holds, and "}", a line each,
   the first and the last indented by `tabs` tabs. A null event adds nothing. Result 0. */
ORU_API int32_t oru_do_event_to_strbuf(ORUDoEvent *event, int32_t tabs, ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoEvent *oru_do_event_ref(ORUDoEvent *event);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_event_deref(ORUDoEvent *event);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_event(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
