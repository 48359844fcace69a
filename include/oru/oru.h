/*
 * liboruapi: the object model through which management clients and provider daemons of a network
 * system speak. This header brings all of them; each object family has one of its own.
 *
 * What holds everywhere, so that the headers say only what differs:
 *
 *  1. Objects are opaque and reference counted. `_new`, `_clone` and parsers give a reference that
 *     the caller owns and gives back with `_deref`. `_ref` and `_deref` accept null.
 *  2. What is passed to a constructor, setter or adder is not consumed: the receiver counts its own
 *     reference and the caller keeps its own. So the usual order is new, add, deref.
 *  3. `_get_...` and `_get_next` lend: what they give lives as long as the object that holds it.
 *     A text that is handed over is freed with `ph_free_named`.
 *  4. A required pointer that is null is a programmer's error: the process ends with the C
 *     library's assertion report, whose expression is the argument's name. Headers tell where null
 *     is accepted.
 *  5. Input from outside never ends the process that way; it gives a result code of `oru/rc.h`, or
 *     null. A broken installation or a corrupt count writes one trace at level 0 and aborts.
 *  6. Results are an `int32_t` code, 0 for success, or an object with a status through a last
 *     argument (`errp`, `rc`). Adders to containers give the new length or -1. Booleans are
 *     `int32_t`, non-zero for true. Lengths and counts are signed 32-bit, in bytes where they
 *     measure text.
 *  7. Memory that runs out gives null, -1 or 10002, and leaves what was there as it was.
 *  8. Only the reference count of an object may be used by several threads at once. An object that
 *     is shared must be finished first, and is then read only; a URI is parsed by its first reader,
 *     so it is inspected once before it is shared. `meta_rwlock` guards the metadata store.
 *  9. Messages go to the platform's tracer with a level: 0 fatal, 3 failures that are reported,
 *     5 configuration, 6 notable actions, 7 detail, 8 reference counts.
 * 10. `init_chunk_poolheap_...` sizes the pool that records of a kind come from, once and before
 *     the first of them is made: `count` elements, from 1, and as many again whenever it runs
 *     empty; `flags` are those of `oruplatform/chunk.h`, or 0. The result is the pool, which is
 *     not freed. A pool that cannot be made ends the process. Without one the records come from
 *     the heap.
 */
#ifndef ORU_ORU_H
#define ORU_ORU_H

#include "oru/act_meta.h"
#include "oru/base.h"
#include "oru/condition.h"
#include "oru/config_op.h"
#include "oru/constraint.h"
#include "oru/dtl.h"
#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/event.h"
#include "oru/hashtable.h"
#include "oru/hex.h"
#include "oru/ipc_seq.h"
#include "oru/iter.h"
#include "oru/json.h"
#include "oru/lib.h"
#include "oru/logger.h"
#include "oru/md.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/pr.h"
#include "oru/pr_ctx.h"
#include "oru/pr_walk.h"
#include "oru/print.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/queue.h"
#include "oru/range.h"
#include "oru/rc.h"
#include "oru/record_cache.h"
#include "oru/rows_properties.h"
#include "oru/session.h"
#include "oru/strbuf.h"
#include "oru/thread.h"
#include "oru/typedef_meta.h"
#include "oru/types.h"
#include "oru/uri.h"
#include "oru/uri_derive.h"
#include "oru/util.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/vtable_sorter.h"
#include "oru/xml.h"

#endif
