#include "oru/lib.h"

#include <cerrno>
#include <cstdlib>

#include "frame/backend.h"
#include "frame/tags.h"
#include "frame/trace.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/thread.h"
#include "oruplatform/poolheap.h"

uint16_t g_oruapi_trace_module_id = 0;

namespace {

using oru::Level;

// A word that belongs to the tracer.
void *trace_module_context = nullptr;

// The environment may set how many properties a table holds before it makes an index.
void apply_properties_limit() {
    const char *text = std::getenv("ORU_PROPS_MAX_SIZE_BEFORE_HS");
    if (text == nullptr)
        return;
    const auto limit = static_cast<int32_t>(std::strtol(text, nullptr, 10));
    if (limit < 0 || limit == INT32_MAX)
        return;
    ORU_TRACE(Level::config, "setting oru props max size before hash %d", limit);
    oru_do_properties_set_max_size_before_hash_table(static_cast<uint32_t>(limit));
}

}  // namespace

int32_t oruapi_trace_init() {
    return tracelet_module_init_fn("oruapi", &g_oruapi_trace_module_id, &trace_module_context);
}

int32_t oru_lib_init(int32_t (*thread_setup)(void), intptr_t backend_arg, void *backend_ctx) {
    poolheap_init(ORU_TAG_COMPONENT, tag_name_lookup);
    oruapi_trace_init();
    if (thread_setup != nullptr)
        thread_setup();
    if (const int32_t rc = oruapi_thread_library_init(thread_setup != nullptr); rc != ORU_OK) {
        return rc;
    }
    apply_properties_limit();
    if (backend_ctx == nullptr)
        return ORU_RC_GENERAL;
    oru::bind_backend();
    return g_lib_init(backend_arg, backend_ctx);
}
