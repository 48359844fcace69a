#include "oruplatform/tracelet.h"

#include <pthread.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/codes.h"
#include "platform/trace_output.h"

// Weak, so that a product's own tracer brings its own word along.
__attribute__((weak)) uint32_t tracelet_threshold = 0;

namespace oru::platform {

namespace {

constexpr size_t kStackText = 1024;
constexpr size_t kModuleName = 32;

struct Module {
    char name[kModuleName];
};

// Filled from the front, never changed behind `g_module_count`, so that readers need no lock.
Module g_modules[TRACELET_MAX_MODULES];
std::atomic<uint16_t> g_module_count{0};
pthread_mutex_t g_module_lock = PTHREAD_MUTEX_INITIALIZER;

const char *module_name(uint16_t id) {
    const uint16_t count = g_module_count.load(std::memory_order_acquire);
    return id > 0 && id <= count ? g_modules[id - 1].name : "?";
}

uint16_t find_module(const char *name, uint16_t count) {
    for (uint16_t i = 0; i < count; i++) {
        if (strncmp(g_modules[i].name, name, kModuleName - 1) == 0) {
            return static_cast<uint16_t>(i + 1);
        }
    }
    return 0;
}

// 0 when the table is full.
uint16_t find_or_add_module(const char *name) {
    const uint16_t count = g_module_count.load(std::memory_order_relaxed);
    const uint16_t found = find_module(name, count);
    if (found != 0 || count == TRACELET_MAX_MODULES) {
        return found;
    }
    const size_t length = strnlen(name, kModuleName - 1);
    memcpy(g_modules[count].name, name, length);
    const auto id = static_cast<uint16_t>(count + 1);
    g_module_count.store(id, std::memory_order_release);
    return id;
}

void set_threshold_word(uint32_t level) {
    const uint32_t number = level < TRACELET_LEVEL_MAX ? level : TRACELET_LEVEL_MAX;
    __atomic_store_n(&tracelet_threshold, number << TRACELET_LEVEL_SHIFT, __ATOMIC_RELAXED);
}

uint32_t threshold_level() {
    return __atomic_load_n(&tracelet_threshold, __ATOMIC_RELAXED) >> TRACELET_LEVEL_SHIFT;
}

__attribute__((constructor)) void read_environment() {
    const char *text = getenv("ORU_TRACE_LEVEL");
    if (text == nullptr) {
        return;
    }
    const long level = strtol(text, nullptr, 10);
    set_threshold_word(level < 0 ? 0u : static_cast<uint32_t>(level > 8 ? 8 : level));
}

// Formats come from the caller's table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
int format_text(char *out, size_t capacity, const char *format, va_list arguments) {
    return vsnprintf(out, capacity, format, arguments);
}
#pragma GCC diagnostic pop

// The long text, or null when there is no memory for it. Not from the tagged allocator: a message
// about failed memory must not fail, nor count, there.
char *format_long(int length, const char *format, va_list arguments) {
    const size_t capacity = static_cast<size_t>(length) + 1;
    char *text = static_cast<char *>(malloc(capacity));
    if (text != nullptr) {
        format_text(text, capacity, format, arguments);
    }
    return text;
}

void emit(uint16_t module_id, uint32_t level, const char *format, va_list arguments) {
    char stack_text[kStackText];
    va_list again;
    va_copy(again, arguments);
    const int length = format_text(stack_text, sizeof stack_text, format, arguments);
    char *long_text = nullptr;
    if (length >= static_cast<int>(sizeof stack_text)) {
        long_text = format_long(length, format, again);
    }
    va_end(again);
    const char *text = length < 0 ? format : stack_text;
    record({.module = module_name(module_id),
            .level = level,
            .text = long_text != nullptr ? long_text : text,
            .place = innermost_place()});
    free(long_text);
}

}  // namespace

}  // namespace oru::platform

using namespace oru::platform;

int32_t tracelet_module_init_fn(const char *name, uint16_t *module_id, void *) {
    if (name == nullptr || module_id == nullptr) {
        return kInvalid;
    }
    pthread_mutex_lock(&g_module_lock);
    const uint16_t id = find_or_add_module(name);
    pthread_mutex_unlock(&g_module_lock);
    if (id == 0) {
        return kNoMemory;
    }
    __atomic_store_n(module_id, id, __ATOMIC_RELAXED);
    return kOk;
}

int32_t tracelet_emit(const char *const *formats, uint32_t index, uint16_t module_id,
                      uint32_t level, ...) {
    const uint32_t number = level >> TRACELET_LEVEL_SHIFT;
    if (number > threshold_level() || formats == nullptr || formats[index] == nullptr) {
        return kOk;
    }
    va_list arguments;
    va_start(arguments, level);
    emit(module_id, number, formats[index], arguments);
    va_end(arguments);
    return kOk;
}

void tracelet_set_threshold(uint32_t level) {
    set_threshold_word(level);
}

uint32_t tracelet_get_threshold(void) {
    return threshold_level();
}
