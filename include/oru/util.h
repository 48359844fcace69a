/*
 * Small utilities that the library and back ends share: texts, regular expressions, times, files,
 * the process. Required pointers are asserted under their names. A text that is handed over is the
 * caller's, who frees it with `ph_free_named`.
 */
#ifndef ORU_UTIL_H
#define ORU_UTIL_H

#include <regex.h>
#include <time.h>

#include "oru/base.h"

ORU_BEGIN_DECLS

/* ---- Texts ----
 * Counts are in bytes. Copies are null when memory runs out, and for a null text. */

/*
 * Formats into a new block, stored in `*out` for the caller. The result is the size of the block,
 * not of the text: 200 for any text that fits, otherwise the length of the text and 1. Negative
 * when the format cannot be printed; -1 when memory runs out. The block that was had until then, if
 * any, stays in `*out`.
 */
ORU_API int32_t oru_printf(char **out, const char *format, ...) ORU_PRINTF(2, 3);

/* A copy of a text, or of exactly `n` bytes and a zero. */
ORU_API char *oru_util_strdup(const char *text);
ORU_API char *oru_util_strndup(const char *text, int32_t n);

/*
 * Copies those of the `n` bytes of `src` that do not occur in the text `excl`, which may be null,
 * and adds a zero. The result is the length of what was written. With a null `dst` or `src` nothing
 * is copied and the result is the length of `excl`.
 */
ORU_API int32_t oru_util_strncpy_excl(char *dst, const char *src, int32_t n, const char *excl);
ORU_API char *oru_util_strndup_excl(const char *src, int32_t n, const char *excl);

/* Copies the `n` bytes of `src` without those at its beginning and end that occur in the text
   `strip`, which may be null, and adds a zero. The result is the length of what was written. */
ORU_API int32_t oru_util_strncpy_strip_end_chars(char *dst, const char *src, int32_t n,
                                                 const char *strip);
ORU_API char *oru_util_strndup_strip_end_chars(const char *src, int32_t n, const char *strip);

/* 1 when nothing or only digits stand behind the leading blanks, 0 otherwise: so for every negative
   number too. */
ORU_API int32_t oru_util_is_int_str(const char *text);

/* -1, 0 or 1: compares as signed bytes, lower-case letters raised. A text that the other one begins
   with sorts first. -1 for a null argument. */
ORU_API int32_t oru_util_strcmp_ignore_case(const char *text1, const char *text2);

/* ---- Console ---- */

/* Cuts a line that was read at its newline. Without one, reads and drops the rest of the line from
   `stream`. */
ORU_API void oru_cl_buf_clean(char *text, FILE *stream);

/* Reads lines from standard input, asking again on standard output, until one is a number from
   `min` to `max`; a `max` of -1 is no bound. At the end of input the result is `min`. */
ORU_API int32_t oru_util_read_int(int32_t min, int32_t max);

/* ---- Regular expressions ---- */

typedef struct oru_regexp {
    regex_t *p;
} oru_regexp;

/*
 * Compiles `pattern` with the `flags` of `regcomp` into a new holder in `*out`. The result is 0, or
 * the code of `regcomp`, traced at level 3 with its words; `*out` stays as it was then. 12 when the
 * expression cannot be stored, and for a pattern that would need memory or time without measure:
 * groups nested deeper than 1,000, nested repeat counts that multiply to more than 10,000 ("+"
 * repeats twice), some 1,000 elements in a row that may match nothing, counted with their repeats,
 * as in "(a*){1000}" and "a*+++++++++", and more than 20 places such as "^" and "\b" in a row, or
 * three that are repeated together.
 *
 * When the holder itself cannot be had the result is 0 and `*out` stays as it was: set it to null
 * first and test it.
 */
ORU_API int32_t oru_regcomp(oru_regexp **out, const char *pattern, int32_t flags);

/* The result of `regexec`, 0 for a match. `nmatch` and `matches` are not used: places are not
   told. A null holder or one without an expression matches. */
ORU_API int32_t oru_regexec(oru_regexp *re, const char *text, size_t nmatch, regmatch_t *matches,
                            int32_t flags);

/* Frees the expression and empties the holder, whose block stays the caller's. */
ORU_API void oru_regfree(oru_regexp *re);

/* ---- Times ---- */

/* Seconds and a fraction, in microseconds where times are calculated with. */
typedef struct ORUTime {
    int64_t seconds;
    int64_t fraction;
} ORUTime;

/* -1, 0 or 1, by seconds, then by fraction. */
ORU_API int32_t oru_compare_time(const ORUTime *t1, const ORUTime *t2);

/* The microseconds from `start` to `end`; -1 if `end` is before `start`. */
ORU_API int64_t oru_calc_duration(const ORUTime *start, const ORUTime *end);

/* `start` and some microseconds. What they carry over to the seconds is cut to 32 bits. */
ORU_API void oru_calc_timestamp(const ORUTime *start, int64_t microseconds, ORUTime *out);

/* The real time: the result of `clock_gettime`, 22 for null. */
ORU_API int32_t oru_time_get_timespec_realtime(struct timespec *ts);

/* ---- Files and the process ---- */

/*
 * Reads a whole file into a new block in `*out`, a zero behind it. 0; 10004 for a file that is not
 * there, 10002 when memory runs out, 10001, traced at level 3, for one that cannot be opened or
 * gives nothing, as an empty one does. `*out` is null when it fails.
 */
ORU_API int32_t oru_read_file(const char *path, char **out);

/*
 * A copy of the name of the process in `*out`, from its command line, and later from `procName`,
 * which keeps it. 0; -1 when the command line cannot be read, -4 when it is empty, -2 when memory
 * runs out: the name is "unknown proc" then, and stays so. Not for concurrent first calls.
 */
ORU_API int32_t oru_get_process_name(char **out);

/* The kept name; null until first asked. */
extern ORU_API char *procName;

/* 1 when `n`, the size of the caller's boolean, is the library's, traced at level 5; 0 otherwise,
   traced at level 3. */
ORU_API int32_t verify_boolean_size(size_t n);

ORU_END_DECLS

#endif
