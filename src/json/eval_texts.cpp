// Functions on texts, tables and addresses.
#include <cstring>

#include "do/nvlist.h"
#include "do/strbuf.h"
#include "do/uri.h"
#include "json/eval.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::json {
namespace {

// Looks a selector up among pairs of a key and a result.
struct Lookup {
    ORUDoValue *selector;
    ORUDoValue *key = nullptr;
    int32_t positions = 1;  // the selector's own

    // The result that the argument is, or null.
    ORUDoValue *take(ORUDoValue *arg) {
        const bool is_key = positions++ % 2 == 1;
        if (is_key)
            key = arg;
        return !is_key && matches() ? arg : nullptr;
    }
    bool matches() const {
        return selector != nullptr && key != nullptr && oru_do_value_equals(key, selector) != 0;
    }
    // A last key without a result is what stands for all others.
    ORUDoValue *fallback() const { return positions % 2 == 0 ? key : nullptr; }
};

ORUDoValue *value_or_null(ORUDoValue *value) {
    return value != nullptr ? oru_do_value_ref(value) : oru_do_value_new_null();
}

// ---- Keys of addresses ----

// A position that an argument tells; false when it is no number.
bool read_position(ORUDoValue *arg, int32_t &position) {
    int32_t status = ORU_OK;
    const int64_t number = oru_do_value_to_long(arg, &status);
    if (status != ORU_OK || number < 0 || number > INT32_MAX)
        return false;
    position = static_cast<int32_t>(number);
    return true;
}

ORUDoUriSegment *segment_of(ORUDoUri *uri, ORUDoVlist *args) {
    if (oru_do_vlist_get_len(args) < 3)
        return oru_do_uri_get_segment_last(uri);
    int32_t position = 0;
    if (!read_position(oru_do_vlist_get_value(args, 2), position))
        return nullptr;
    return oru_do_uri_get_segment(uri, position);
}

ORUDoValue *key_among(ORUDoNvlist *keys, ORUDoValue *which) {
    int32_t position = 0;
    if (oru_do_value_is_string(which) != 0) {
        int32_t status = ORU_OK;
        const char *name = oru_do_value_get_string(which, &status);
        return name != nullptr ? oru_do_nvlist_get_value(keys, name) : nullptr;
    }
    if (!read_position(which, position))
        return nullptr;
    ORUDoNvlistItem *item = oru_do_nvlist_get_item(keys, position);
    return item != nullptr ? item->value : nullptr;
}

ORUDoValue *find_key(ORUDoUri *uri, ORUDoVlist *args) {
    if (oru_do_vlist_get_len(args) < 2)
        return oru_do_uri_get_key(uri, 0);
    ORUDoUriSegment *segment = segment_of(uri, args);
    ORUDoNvlist *keys = segment != nullptr ? oru_do_uri_segment_get_keys(segment) : nullptr;
    return keys != nullptr ? key_among(keys, oru_do_vlist_get_value(args, 1)) : nullptr;
}

}  // namespace

ORUDoValue *eval_map(const Evaluation &evaluation, ORUDoVlist *args) {
    const ORUDoVlistItem *item = args->first;
    while (item != nullptr && is_nothing(item->value))
        item = item->next;
    if (item == nullptr)
        return oru_do_value_new_null();
    if (evaluation.text_of(item->value) == nullptr)
        return oru_do_value_new_null();
    const ValueRef selector = evaluation.resolved(item->value, nullptr);
    Lookup lookup{selector.get()};
    for (item = item->next; item != nullptr; item = item->next) {
        if (ORUDoValue *result = lookup.take(item->value))
            return oru_do_value_ref(result);
    }
    return value_or_null(lookup.fallback());
}

ORUDoValue *eval_tostring(const Evaluation &evaluation, ORUDoVlist *args) {
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text) {
        evaluation.fail(ORU_RC_MALLOC);
        return nullptr;
    }
    for (const ORUDoVlistItem *item = args->first; item != nullptr; item = item->next) {
        if (is_nothing(item->value))
            continue;
        const ValueRef part = evaluation.resolved(item->value, item->value);
        if (part)
            oru_do_value_to_strbuf(part.get(), 0, text.get());
    }
    const char *joined =
        oru_do_strbuf_get_err(text.get()) == ORU_OK ? oru_do_strbuf_to_string(text.get()) : nullptr;
    // With its length, since that form tells when there is no memory for the text.
    ORUDoValue *value = joined != nullptr ? oru_do_value_new_string_l(
                                                joined, static_cast<int32_t>(std::strlen(joined)))
                                          : nullptr;
    if (value == nullptr)
        evaluation.fail(ORU_RC_MALLOC);
    return value;
}

ORUDoValue *eval_key(const Evaluation &evaluation, ORUDoVlist *args) {
    ORUDoValue *first = oru_do_vlist_get_value(args, 0);
    ValueRef holder;
    if (first != nullptr)
        holder = evaluation.resolved(first, first);
    ORUDoUri *uri = holder ? oru_do_value_get_uri(holder.get()) : nullptr;
    ORUDoValue *key = uri != nullptr ? find_key(uri, args) : nullptr;
    if (key == nullptr)
        evaluation.fail(ORU_RC_MALLOC);
    return oru_do_value_ref(key);
}

}  // namespace oru::json
