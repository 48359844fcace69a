#include "bench/json_c_peer.h"

#include <json-c/json.h>

namespace oru::bench {

void *read_with_json_c(const char *text, size_t size) {
    json_tokener *tokener = json_tokener_new();
    json_object *tree = json_tokener_parse_ex(tokener, text, static_cast<int>(size));
    json_tokener_free(tokener);
    return tree;
}

void release_json_c(void *tree) {
    json_object_put(static_cast<json_object *>(tree));
}

}  // namespace oru::bench
