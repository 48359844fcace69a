// json-c in a library of its own: its names are also those of another peer.
#pragma once

#include <cstddef>

namespace oru::bench {

#define JSON_C_PEER_API __attribute__((visibility("default")))

JSON_C_PEER_API void *read_with_json_c(const char *text, size_t size);
JSON_C_PEER_API void release_json_c(void *tree);

}  // namespace oru::bench
