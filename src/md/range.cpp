#include "md/range.h"

#include <atomic>

#include "do/strbuf.h"
#include "do/value.h"
#include "oru/rc.h"

namespace {

using oru::Ref;
using oru::Text;

// The value counts while it is added; the element holds a reference of its own.
int32_t add_owned(ORUDoRange *range, int32_t op, ORUDoValue *lower, ORUDoValue *upper) {
    const auto val1 = Ref<ORUDoValue>::adopt(lower);
    const auto val2 = Ref<ORUDoValue>::adopt(upper);
    const bool whole = val1 && (val2 || op != ORU_RANGE_BETWEEN);
    return whole ? oru_do_range_add_value(range, op, val1.get(), val2.get()) : ORU_RC_MALLOC;
}

bool fits(int32_t typecode, ORUDoValue *value) {
    return value == nullptr || oru_do_value_get_type(value) == typecode;
}

int32_t add_element(ORUDoRange &range, int32_t op, ORUDoValue *lower, ORUDoValue *upper) {
    auto *el = oru::make_element<oru_range_el>();
    if (el == nullptr)
        return ORU_RC_MALLOC;
    el->lower = oru_do_value_ref(lower);
    el->upper = oru_do_value_ref(upper);
    el->op = op;
    (range.last_el != nullptr ? range.last_el->next : range.first_el) = el;
    range.last_el = el;
    const Text old_text(std::exchange(range.range_str, nullptr));
    return ORU_OK;
}

void write_element(const oru_range_el &el, ORUDoStrbuf *strbuf) {
    if (el.upper != nullptr) {
        oru_do_value_to_strbuf(el.lower, 0, strbuf);
        oru_do_strbuf_add_string(strbuf, "..");
        oru_do_value_to_strbuf(el.upper, 0, strbuf);
        return;
    }
    if (oru_do_strbuf_get_len(strbuf) > 0)
        oru_do_strbuf_add_char(strbuf, '|');
    switch (el.op) {
        case ORU_RANGE_EQUAL:
            oru_do_value_to_strbuf(el.lower, 0, strbuf);
            break;
        case ORU_RANGE_LESS:
        case ORU_RANGE_AT_MOST:
            oru_do_strbuf_add_string(strbuf, el.op == ORU_RANGE_LESS ? "*:" : "*..");
            oru_do_value_to_strbuf(el.lower, 0, strbuf);
            break;
        case ORU_RANGE_GREATER:
        case ORU_RANGE_AT_LEAST:
            oru_do_value_to_strbuf(el.lower, 0, strbuf);
            oru_do_strbuf_add_string(strbuf, el.op == ORU_RANGE_GREATER ? ":*" : "..*");
            break;
        default:
            break;
    }
}

// What a buffer holds, unless something of it is missing.
Text text_of(ORUDoStrbuf &strbuf) {
    const bool whole = oru_do_strbuf_get_err(&strbuf) == 0;
    return Text(whole ? oru::duplicate(oru_do_strbuf_to_string(&strbuf)) : nullptr);
}

Text text_of_elements(const ORUDoRange &range) {
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf)
        return Text();
    for (auto *el = range.first_el; el != nullptr; el = el->next)
        write_element(*el, strbuf.get());
    return text_of(*strbuf);
}

}  // namespace

void oru::ObjectType<ORUDoRange>::release_members(ORUDoRange &self) {
    const Text text(self.range_str);
    for (auto *el = self.first_el; el != nullptr;) {
        auto *next = el->next;
        oru_do_value_deref(el->lower);
        oru_do_value_deref(el->upper);
        free_element(el);
        el = next;
    }
}

Text oru::text_of_value(ORUDoValue *value) {
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf)
        return Text();
    oru_do_value_to_strbuf(value, 0, strbuf.get());
    return text_of(*strbuf);
}

ORUDoRange *oru_do_range_new_t(int32_t typecode) {
    auto *range = oru::make<ORUDoRange>();
    if (range != nullptr)
        range->typecode = typecode;
    return range;
}

int32_t oru_do_range_add_value(ORUDoRange *range, int32_t op, ORUDoValue *val1, ORUDoValue *val2) {
    ORU_REQUIRE(range);
    ORU_REQUIRE(val1);
    const int32_t typecode =
        range->typecode != ORU_DO_TYPE_UNKNOWN ? range->typecode : oru_do_value_get_type(val1);
    if (!fits(typecode, val1) || !fits(typecode, val2))
        return ORU_RC_VALUE_TYPE;
    const int32_t code = add_element(*range, op, val1, val2);
    if (code == ORU_OK)
        range->typecode = typecode;
    return code;
}

int32_t oru_do_range_add_long(ORUDoRange *range, int64_t lower, int64_t upper) {
    ORU_REQUIRE(range);
    return add_owned(range, ORU_RANGE_BETWEEN, oru_do_value_new_long(lower),
                     oru_do_value_new_long(upper));
}

int32_t oru_do_range_add_double(ORUDoRange *range, double lower, double upper) {
    ORU_REQUIRE(range);
    return add_owned(range, ORU_RANGE_BETWEEN, oru_do_value_new_double(lower),
                     oru_do_value_new_double(upper));
}

int32_t oru_do_range_add_string(ORUDoRange *range, const char *text) {
    ORU_REQUIRE(range);
    return add_owned(range, ORU_RANGE_EQUAL, oru::string_value(text), nullptr);
}

int32_t oru_do_range_is_single_value(ORUDoRange *range) {
    ORU_REQUIRE(range);
    return oru::is_single_value(*range);
}

int32_t oru_do_range_has_strict_max_value(ORUDoRange *range) {
    ORU_REQUIRE(range);
    return oru::is_single_value(*range);
}

ORUDoValue *oru_do_range_get_first_value(ORUDoRange *range) {
    ORU_REQUIRE(range);
    return range->first_el != nullptr ? range->first_el->lower : nullptr;
}

// Readers fill the cache side by side: the first one installs its text.
const char *oru_do_range_get_range_str(ORUDoRange *range) {
    ORU_REQUIRE(range);
    std::atomic_ref cache(range->range_str);
    char *known = cache.load(std::memory_order_acquire);
    if (known != nullptr)
        return known;
    Text made = text_of_elements(*range);
    if (!made)
        return nullptr;
    if (cache.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
        return made.release();
    return known;
}

oru_range_el *oru_do_range_get_range_el(ORUDoRange *range) {
    return range != nullptr ? range->first_el : nullptr;
}

oru_range_el *oru_do_range_get_next_range_el(oru_range_el *el) {
    return el != nullptr ? el->next : nullptr;
}

int32_t oru_do_range_el_get_op(oru_range_el *el) {
    return el != nullptr ? el->op : 0;
}

ORUDoValue *oru_do_range_el_get_lower(oru_range_el *el) {
    return el != nullptr ? el->lower : nullptr;
}

ORUDoValue *oru_do_range_el_get_upper(oru_range_el *el) {
    return el != nullptr ? el->upper : nullptr;
}

ORU_OBJECT_API(ORUDoRange, oru_do_range)
