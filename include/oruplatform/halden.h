/*
 * Dynamic loader and location of the operating layer.
 */
#ifndef ORUPLATFORM_HALDEN_H
#define ORUPLATFORM_HALDEN_H

#include <oru/base.h>

ORU_BEGIN_DECLS

/* A location: a type word, 48 bits of ones, a zero-terminated text. A text area that begins with
 * the byte 0xff is a location that nobody has filled yet. */
#define HALDEN_LOCATION_TEXT_SIZE 64
typedef struct halden_location {
    uint16_t type;
    uint8_t ones[6];
    char text[HALDEN_LOCATION_TEXT_SIZE];
} halden_location_t;

/* As `dlopen` with the same file and flags: a handle, or null with the failure readable through
 * `dlerror`. A name without a slash is searched for beside this library too. */
ORU_API void *halden_dlopen(const char *file, int32_t flags);

/* Fills `record`, a `halden_location_t`, with the location of the local node: the environment
 * variable ORU_LOCATION when it is set and not empty, else the name of the host; cut at 63
 * characters. Type word and ones stay as they are. `zero` is not looked at. 0, 22 for a null
 * record, 2 when the host has no name. */
ORU_API int32_t halden_resolve_local(int32_t zero, void *record);

/* Prints the text of `record` into `text`, a buffer of `capacity` bytes; the text is cut so that
 * its zero fits. 0, 22 for a null record or text, a capacity below 1 and a record that was never
 * filled
 * (`text` is then empty where it can be). */
ORU_API int32_t halden_location_to_str(const void *record, char *text, int32_t capacity);

ORU_END_DECLS

#endif
