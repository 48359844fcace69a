/*
 * What every public header of the library needs: the mark of an exported name,
 * C linkage, and the integer types of the interface.
 */
#ifndef ORU_BASE_H
#define ORU_BASE_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
#define ORU_BEGIN_DECLS extern "C" {
#define ORU_END_DECLS }
#else
#define ORU_BEGIN_DECLS
#define ORU_END_DECLS
#endif

/* A name that the shared library exports. */
#define ORU_API __attribute__((visibility("default")))

/* A printf-style operation: `format_index` and `first_argument` count from 1. */
#define ORU_PRINTF(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))

#endif
