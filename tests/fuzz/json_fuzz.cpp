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
#include <string_view>

#include "tests/fuzz/fuzz.h"

namespace {

constexpr int64_t kExpected[] = {0,        0x10000,  0x400100, 0x800102, 0x800103,
                                 0x800104, 0x800105, 0x80010F, 0x400114, 0x400115,
                                 0x400119, 0x800106, 0x400117};

// Writes an object of the type, when there is a writer for it.
bool write(int64_t type, void *object, ORUDoStrbuf *buf) {
    switch (type) {
        case 0x400100:
            oru_do_properties_to_json(static_cast<ORUDoProperties *>(object), buf);
            return true;
        case 0x800102:
            oru_do_nlist_to_json(static_cast<ORUDoNlist *>(object), buf);
            return true;
        case 0x800103:
            oru_do_vlist_to_json(static_cast<ORUDoVlist *>(object), buf);
            return true;
        case 0x800104:
            oru_do_nvlist_to_json(static_cast<ORUDoNvlist *>(object), buf);
            return true;
        case 0x800105:
            oru_do_properties_list_to_json(static_cast<ORUDoPropertiesList *>(object), buf);
            return true;
        case 0x80010F:
            oru_do_vtable_to_json(static_cast<ORUDoVtable *>(object), buf);
            return true;
        case 0x400114:
            oru_do_error_to_json(static_cast<ORUDoError *>(object), buf);
            return true;
        case 0x400115:
            oru_do_prop_errs_to_json(static_cast<ORUDoPropErrs *>(object), buf);
            return true;
        case 0x400119:
            oru_do_dtree_to_json(static_cast<ORUDoDtree *>(object), buf);
            return true;
        case 0x800106:
            oru_do_config_ops_to_json(static_cast<ORUDoConfigOps *>(object), buf);
            return true;
        case 0x400117:
            oru_do_event_to_json(static_cast<ORUDoEvent *>(object), buf);
            return true;
        default:
            if ((type & 0x1010000) == 0)
                return false;
            oru_do_value_to_json(static_cast<ORUDoValue *>(object), buf);
            return true;
    }
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
    constexpr size_t kinds = sizeof kExpected / sizeof kExpected[0];
    const uint64_t blocks = poolheap_live_blocks();
    const std::string_view text(reinterpret_cast<const char *>(data + 1), size - 1);
    if (may_end_process(text))
        return 0;
    const bool resolving = data[0] >= 128;
    ORUDoJsonCtxData *ctx = oru_do_json_parse_allow_expr(
        text.data(), static_cast<int32_t>(text.size()), kExpected[data[0] % kinds],
        resolving ? resolve : nullptr, resolving ? ignore : nullptr, nullptr);
    CHECK(ctx != nullptr);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    if (ctx->completed_obj != nullptr && write(ctx->completed_type, ctx->completed_obj, buf))
        read_written(buf);
    oru_do_strbuf_deref(buf);
    oru_do_json_delete_ctx_data(ctx);
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
