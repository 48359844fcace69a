#include "oru/logger.h"

#include <safeclib/safe_str_lib.h>

#include <iterator>

#include "frame/trace.h"

namespace {

using oru::Level;

constexpr size_t kNameBound = 8;

constexpr char kNames[][kNameBound] = {"OFF",   "FATAL", "ERROR", "WARN",  "INFO",
                                       "DEBUG", "TRACE", "ALL",   "EVENT", "LOCK"};

using Logger = void(void *context, uint32_t level, const char *format, va_list args, ...);

uint32_t current_level = ORU_LOG_ERROR;
Logger *current_logger = nullptr;
void *current_context = nullptr;

bool same_name(const char (&known)[kNameBound], const char *name) {
    int difference = 0;
    if (strcmp_s(known, kNameBound, name, &difference) != EOK)
        ORU_FATAL("Bad string comparison for log level name");
    return difference == 0;
}

}  // namespace

uint32_t oru_logger_get_level() {
    return current_level;
}

void oru_logger_set_level(uint32_t level) {
    current_level = level;
}

void oru_logger_set_logger(void (*logger)(void *context, uint32_t level, const char *format,
                                          va_list args, ...),
                           uint32_t level, void *context) {
    current_logger = logger;
    current_level = level;
    current_context = context;
}

void _oru_log(uint32_t level, const char *format, ...) {
    if (current_logger == nullptr)
        return;
    va_list args;
    va_start(args, format);
    current_logger(current_context, level, format, args);
    va_end(args);
}

const char *oru_logger_get_level_name(int32_t index) {
    return index >= 0 && index < std::ssize(kNames) ? kNames[index] : "<unknown>";
}

int32_t oru_logger_get_level_index(const char *name) {
    if (name == nullptr) {
        ORU_TRACE(Level::failure, "No log level name provided");
        return -1;
    }
    for (int32_t i = 0; i < std::ssize(kNames); ++i) {
        if (same_name(kNames[i], name))
            return i;
    }
    ORU_TRACE(Level::failure, "Invalid log level: %s", name);
    return -1;
}

void oru_logger_set_level_by_name(const char *name) {
    const int32_t level = oru_logger_get_level_index(name);
    if (level < 0) {
        ORU_TRACE(Level::failure, "Invalid log level");
        return;
    }
    current_level = static_cast<uint32_t>(level);
    ORU_TRACE(Level::action, "Current Log level: %i\n", level);
}
