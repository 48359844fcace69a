#include "frame/regexp_cost.h"
#include "frame/require.h"
#include "frame/tags.h"
#include "frame/trace.h"
#include "oru/util.h"
#include "oruplatform/poolheap.h"

namespace {

using oru::Level;

constexpr uint32_t kTag = oru::tag_word(oru::Tag::util);
static_assert(REG_ESPACE == 12);

int32_t compile(regex_t *expression, const char *pattern, int32_t flags) {
    int32_t rc = REG_ESPACE;
    if (!oru::regexp_is_too_costly(pattern, (flags & REG_EXTENDED) != 0))
        rc = regcomp(expression, pattern, flags);
    if (rc != 0) {
        char words[128];
        regerror(rc, expression, words, sizeof words);
        ORU_TRACE(Level::failure, "Error compiling regexp %s : %s", pattern, words);
    }
    return rc;
}

// Fills the holder; on failure it stays empty.
int32_t fill(oru_regexp &re, const char *pattern, int32_t flags) {
    re.p = static_cast<regex_t *>(ph_calloc_named(kTag, 1, sizeof *re.p));
    if (re.p == nullptr) {
        ORU_TRACE(Level::failure, "Unable to malloc preg->p\n");
        return REG_ESPACE;
    }
    const int32_t rc = compile(re.p, pattern, flags);
    if (rc != 0) {
        ph_free_named(re.p);
        re.p = nullptr;
    }
    return rc;
}

}  // namespace

int32_t oru_regcomp(oru_regexp **out, const char *pattern, int32_t flags) {
    ORU_REQUIRE(out);
    ORU_REQUIRE(pattern);
    auto *re = static_cast<oru_regexp *>(ph_malloc_named(kTag, sizeof(oru_regexp)));
    if (re == nullptr) {
        ORU_TRACE(Level::failure, "Unable to malloc oru_regexp\n");
        return 0;  // callers look at what they set `*out` to
    }
    const int32_t rc = fill(*re, pattern, flags);
    if (rc != 0) {
        ph_free_named(re);
        return rc;
    }
    *out = re;
    return 0;
}

// Places of matches are never told, so none are asked for: the C library would write them to the
// null that it is given.
int32_t oru_regexec(oru_regexp *re, const char *text, size_t, regmatch_t *, int32_t flags) {
    if (re == nullptr || re->p == nullptr)
        return 0;
    ORU_REQUIRE(text);
    return regexec(re->p, text, 0, nullptr, flags & ~REG_STARTEND);
}

void oru_regfree(oru_regexp *re) {
    ORU_REQUIRE(re);
    if (re->p == nullptr)
        return;
    regfree(re->p);
    ph_free_named(re->p);
    re->p = nullptr;
}
