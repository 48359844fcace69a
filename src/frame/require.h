// Required arguments: a null one is the caller's mistake and ends the process through the C
// library's assertion report, in every build type.
#ifndef ORU_SRC_FRAME_REQUIRE_H
#define ORU_SRC_FRAME_REQUIRE_H

// The C library's report. <assert.h> hides it from optimised builds.
extern "C" [[noreturn]] void __assert_fail(const char *expression, const char *file, unsigned line,
                                           const char *function) noexcept;

namespace oru {

// `text` is what the report quotes: the argument's name as the caller's documentation has it.
inline void require(bool holds, const char *text, const char *file, unsigned line,
                    const char *function) {
    if (__builtin_expect(!holds, 0))
        __assert_fail(text, file, line, function);
}

}  // namespace oru

#define ORU_REQUIRE(expression) \
    ::oru::require(static_cast<bool>(expression), #expression, __FILE__, __LINE__, __func__)

// For shared code that serves arguments of different names.
#define ORU_REQUIRE_AS(expression, text) \
    ::oru::require(static_cast<bool>(expression), text, __FILE__, __LINE__, __func__)

#endif
