/*
 * The logger: a level and a function that an application installs to receive readable log lines,
 * apart from tracing. The state is of the process, set at start-up, without a lock.
 */
#ifndef ORU_LOGGER_H
#define ORU_LOGGER_H

#include "oru/base.h"

ORU_BEGIN_DECLS

/* Levels. ORU_LOG_ERROR is the one at start. */
enum {
    ORU_LOG_OFF = 0,
    ORU_LOG_FATAL = 1,
    ORU_LOG_ERROR = 2,
    ORU_LOG_WARN = 3,
    ORU_LOG_INFO = 4,
    ORU_LOG_DEBUG = 5,
    ORU_LOG_TRACE = 6,
    ORU_LOG_ALL = 7,
    ORU_LOG_EVENT = 8,
    ORU_LOG_LOCK = 9
};

/* The current level, ORU_LOG_...; a number that is none is kept too. */
ORU_API uint32_t oru_logger_get_level(void);
ORU_API void oru_logger_set_level(uint32_t level);

/* Sets the function that receives messages, null for none, with the level and the context that it
   is given. `args` belong to `format`. */
ORU_API void oru_logger_set_logger(void (*logger)(void *context, uint32_t level, const char *format,
                                                  va_list args, ...),
                                   uint32_t level, void *context);

/*
 * Hands a message to the logger, if there is one. The level is not tested: callers skip the call
 * while `oru_logger_get_level` is below it.
 */
ORU_API void _oru_log(uint32_t level, const char *format, ...) ORU_PRINTF(2, 3);

/* The name of a level, constant: "OFF", "FATAL" ... "LOCK"; "<unknown>" for a number that is
   none. */
ORU_API const char *oru_logger_get_level_name(int32_t index);

/* The number of a level's name, in capitals. -1, traced at level 3, for another name and for
   null. */
ORU_API int32_t oru_logger_get_level_index(const char *name);

/* Sets the level by its name, traced at level 6. What is no name is traced at level 3 and leaves
   the level. */
ORU_API void oru_logger_set_level_by_name(const char *name);

ORU_END_DECLS

#endif
