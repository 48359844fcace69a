// Any text may come in. What reads as an object is written, and what was written reads without a
// fault; the first byte picks the type that is expected, and whether
// references are known.
#include <oru/json.h>
#include <oru/strbuf.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "tests/fuzz/fuzz.h"

namespace {

// What a type is written with; the first row is of no type.
struct Kind {
    int64_t type;
    int32_t (*write)(void *object, ORUDoStrbuf *buf);
};

template <class Object, int32_t (*to_json)(Object *, ORUDoStrbuf *)>
int32_t write(void *object, ORUDoStrbuf *buf) {
    return to_json(static_cast<Object *>(object), buf);
}

constexpr int64_t kValue = 0x10000;
constexpr int64_t kExpression = 0x1000000;

constexpr Kind kKinds[] = {
    {0, nullptr},
    {kValue, write<ORUDoValue, oru_do_value_to_json>},
    {0x400100, write<ORUDoProperties, oru_do_properties_to_json>},
    {0x800102, write<ORUDoNlist, oru_do_nlist_to_json>},
    {0x800103, write<ORUDoVlist, oru_do_vlist_to_json>},
    {0x800104, write<ORUDoNvlist, oru_do_nvlist_to_json>},
    {0x800105, write<ORUDoPropertiesList, oru_do_properties_list_to_json>},
    {0x80010F, write<ORUDoVtable, oru_do_vtable_to_json>},
    {0x400114, write<ORUDoError, oru_do_error_to_json>},
    {0x400115, write<ORUDoPropErrs, oru_do_prop_errs_to_json>},
    {0x400119, write<ORUDoDtree, oru_do_dtree_to_json>},
    {0x800106, write<ORUDoConfigOps, oru_do_config_ops_to_json>},
    {0x400117, write<ORUDoEvent, oru_do_event_to_json>},
    {0x800110, write<ORUDoNtlist, oru_do_ntlist_to_json>},
    {0x400118, write<ORUDoTypedefMeta, oru_do_typedef_meta_to_json>},
    {0x40010E, write<ORUDoConstraint, oru_do_constraint_to_json>},
    {0x80010C, write<ORUDoConstraintList, oru_do_constraint_list_to_json>},
    {0x40010B, write<ORUDoPropMeta, oru_do_prop_meta_to_json>},
    {0x80010A, write<ORUDoPropMetaList, oru_do_prop_meta_list_to_json>},
    {0x400109, write<ORUDoMrMeta, oru_do_mr_meta_to_json>},
    {0x800108, write<ORUDoMrMetaList, oru_do_mr_meta_list_to_json>},
};

// Every object that a parse gives has a writer.
void write_object(int64_t type, void *object, ORUDoStrbuf *buf) {
    const int64_t wanted = (type & (kValue | kExpression)) != 0 || type == 0x200000 ? kValue : type;
    const auto kind = std::ranges::find(kKinds, wanted, &Kind::type);
    CHECK(kind != std::end(kKinds));
    CHECK(kind->write(object, buf) == 0);
}

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

// Divisions are not guarded, nor is the look into an address with a name too long or a segment too
// many. Functions may hide behind escapes.
bool may_end_process(std::string_view text) {
    constexpr size_t kShort = 64;
    const bool long_address =
        text.size() > kShort || std::ranges::count(text, '/') >= URI_MAX_SEGMENTS;
    return holds(text, "_div()") || holds(text, "_mod()") || holds(text, "\\u00") ||
           (holds(text, "_key()") && long_address);
}

// Every reference has a value, and none can be changed.
ORUDoValue *resolve(void *, const char *text, ORUDoValue *default_value) {
    if (text[0] == '$')
        return oru_do_value_new_int(static_cast<int32_t>(text[1]));
    return text[0] == '@' ? nullptr : oru_do_value_ref(default_value);
}

void ignore(void *, const char *text, ORUDoValue *value) {
    CHECK(text != nullptr && value != nullptr);
}

void read_written(ORUDoStrbuf *buf) {
    ORUDoJsonCtxData *ctx =
        oru_do_json_parse(oru_do_strbuf_to_string(buf), oru_do_strbuf_get_len(buf), 0);
    CHECK(ctx != nullptr);
    oru_do_json_delete_ctx_data(ctx);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1)
        return 0;
    const uint64_t blocks = poolheap_live_blocks();
    const std::string_view text(reinterpret_cast<const char *>(data + 1), size - 1);
    if (may_end_process(text))
        return 0;
    const bool resolving = data[0] >= 128;
    ORUDoJsonCtxData *ctx = oru_do_json_parse_allow_expr(
        text.data(), static_cast<int32_t>(text.size()),
        kKinds[data[0] % 128 % std::size(kKinds)].type, resolving ? resolve : nullptr,
        resolving ? ignore : nullptr, nullptr);
    CHECK(ctx != nullptr);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    if (ctx->completed_obj != nullptr) {
        write_object(ctx->completed_type, ctx->completed_obj, buf);
        read_written(buf);
    }
    oru_do_strbuf_deref(buf);
    oru_do_json_delete_ctx_data(ctx);
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
