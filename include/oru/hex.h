/*
 * Hexadecimal text into bytes, forgiving: a character that is no digit counts as 0.
 */
#ifndef ORU_HEX_H
#define ORU_HEX_H

#include "oru/base.h"

ORU_BEGIN_DECLS

/*
 * The number of the digit in the low byte of `c`, 0 for any other character. The bits above the low
 * byte stay in the result.
 */
ORU_API int32_t oru_util_ctoh(int32_t c);

/*
 * Turns pairs of characters into bytes, high digit first: up to `n` characters of `text`, or up to
 * the first zero at either place of a pair. An `n` below 2 does nothing. `out` has room for n / 2
 * bytes. The result is the count of bytes.
 */
ORU_API int32_t oru_util_strtoh(const char *text, int32_t n, void *out);

ORU_END_DECLS

#endif
