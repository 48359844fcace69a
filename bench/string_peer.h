/* A std::string behind the calls of a shared library, in the shape of the library's buffers. */
#ifndef STRING_PEER_H
#define STRING_PEER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define STRING_PEER_API __attribute__((visibility("default")))

typedef struct string_peer string_peer;

STRING_PEER_API string_peer *string_peer_new(void);
STRING_PEER_API void string_peer_clear(string_peer *self);

/* All give the new length. */
STRING_PEER_API int32_t string_peer_append_str(string_peer *self, const char *text);
STRING_PEER_API int32_t string_peer_append_char(string_peer *self, int32_t c);
STRING_PEER_API int32_t string_peer_append_long(string_peer *self, int64_t n);

#ifdef __cplusplus
}
#endif

#endif
