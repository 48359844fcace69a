/*
 * Tracer: levelled messages of modules, written as lines with time, thread, level, module and,
 * where a reader has told it, the place in its source text. Level words carry the level in their
 * top byte, 0 (fatal) to 8 (traffic of reference counts).
 *
 * Environment, read when the library is loaded: ORU_TRACE_LEVEL, 0 to 8, the highest level that is
 * recorded (default 0); ORU_TRACE_FILE, a file to append to instead of standard error.
 */
#ifndef ORUPLATFORM_TRACELET_H
#define ORUPLATFORM_TRACELET_H

#include <oru/base.h>

ORU_BEGIN_DECLS

#define TRACELET_LEVEL_SHIFT 24
#define TRACELET_LEVEL_MAX 8u

/* Places that a thread may push; those pushed deeper are counted and not kept. */
#define TRACELET_MAX_PLACES 64

/* Modules that can be told apart. */
#define TRACELET_MAX_MODULES 256

/* Where a reader stands. Texts are lent, `file` and `element` may be null. */
typedef struct tracelet_place {
    const char *file;
    int32_t line;
    const char *element;
} tracelet_place_t;

/* Receives records. `level` is the number 0 to 8, `text` the message as formatted, with the line
 * end that its format may have; `place` the innermost place of the emitting thread, or null. All
 * are lent for the call. Called by many threads at once; must not call `tracelet_set_sink`. What it
 * emits itself goes to the ordinary output. */
typedef void (*tracelet_sink_fn)(void *context, const char *module, uint32_t level,
                                 const char *text, const tracelet_place_t *place);

/* Highest level word that is recorded. A weak definition: a product that brings its own tracer
 * defines it too. Whoever sends messages may test it before it gathers arguments. */
extern ORU_API uint32_t tracelet_threshold;

/* Registers a module and stores its number, 1 and up, in `*module_id`; the same name always gets
 * the same number. `name` is copied, up to 31 characters. `module_context` is not used and may be
 * null. 0, 12 when the table of modules is full, 22 for a null name or number; on failure
 * `*module_id` stays as it is. */
ORU_API int32_t tracelet_module_init_fn(const char *name, uint16_t *module_id,
                                        void *module_context);

/* Records a message if the level is enabled. `formats`: table of printf formats; `index`: the one
 * to take; `level`: level word; then the arguments of the format. A text of any length is recorded
 * whole, and cut to some 1,000 bytes only when no memory is left to format it. A line end at the
 * end of the text is not doubled. A number that no module has is recorded under "?". Level 0 is
 * written to the ordinary output without a buffer, whether a sink is set or not. Result 0. */
ORU_API int32_t tracelet_emit(const char *const *formats, uint32_t index, uint16_t module_id,
                              uint32_t level, ...);

/* Tells, for the calling thread and until the matching pop, where its reader stands. The texts are
 * kept by address and must live until then; both may be null. A pop without a push is harmless. */
ORU_API void tracelet_place_push(const char *file, int32_t line, const char *element);
ORU_API void tracelet_place_pop(void);

/* Sends records to `sink` instead of the ordinary output; null restores that. When it returns, no
 * call to the former sink is under way. */
ORU_API void tracelet_set_sink(tracelet_sink_fn sink, void *context);

/* Sets the highest level, 0 to 8, that is recorded; a greater number counts as 8. */
ORU_API void tracelet_set_threshold(uint32_t level);

/* The highest level, 0 to 8, that is recorded. */
ORU_API uint32_t tracelet_get_threshold(void);

ORU_END_DECLS

#endif
