#include "dtl/uri_build.h"

#include <cstring>

#include "do/strbuf.h"
#include "dtl/variables.h"
#include "oru/lib.h"
#include "oru/uri_derive.h"

namespace oru::dtl {
namespace {

using StrbufRef = Ref<ORUDoStrbuf>;
using UriRef = Ref<ORUDoUri>;

StrbufRef new_buffer() {
    return StrbufRef::adopt(oru_do_strbuf_new());
}

const char *buffer_text(const StrbufRef &buffer) {
    return oru_do_strbuf_to_string(buffer.get());
}

UriRef uri_of_buffer(const StrbufRef &buffer) {
    if (!buffer || oru_do_strbuf_get_err(buffer.get()) != 0)
        return {};
    return UriRef::adopt(oru_do_uri_new(buffer_text(buffer)));
}

BuiltUri failure() {
    ORU_TRACE(Level::failure, "Failed to resolve uri");
    BuiltUri built;
    built.failed = true;
    return built;
}

// 1. "$_PARENT_URI_": the text of the node above, then the rest of the template.
BuiltUri below_the_parent(const UriSource &source, const char *rest) {
    ORUDoUri *parent_uri = oru_do_dtree_get_mr_uri(source.parent);
    if (parent_uri == nullptr)
        return failure();
    const StrbufRef text = new_buffer();
    if (text) {
        strbuf_append(*text, oru_do_uri_get_uri_str(parent_uri));
        strbuf_append(*text, rest);
    }
    return {uri_of_buffer(text)};
}

// 2. "$_PEER_URI_": what the node above holds under the template's name. A reference that is not
// set gives nothing.
BuiltUri of_the_peer(const UriSource &source, const char *name) {
    ORUDoValue *value = oru_do_dtree_get_value(source.parent, name);
    if (value == nullptr)
        return {};
    BuiltUri built;
    int32_t rc = 0;
    if (oru_do_value_is_array(value) != 0) {
        built.list = Ref<ORUDoVlist>::share(oru_do_value_get_array(value, &rc));
        return built;
    }
    built.uri = value_to_uri(value);
    if (!built.uri && oru_do_value_is_null(value) == 0)
        return failure();
    return built;
}

// 3. "$_URI_PARENT_": what stands above the node above.
BuiltUri of_the_parent(const UriSource &source) {
    ORUDoUri *uri = oru_do_dtree_get_mr_uri(source.parent);
    ORUDoUri *parent = uri != nullptr ? oru_do_uri_get_parent_uri(uri) : nullptr;
    if (parent == nullptr)
        return failure();
    return {UriRef::share(parent)};
}

// 4. The whole template is a variable.
BuiltUri of_a_variable(const UriSource &source, const char *text) {
    BuiltUri built;
    const auto value = resolve(source.params, text, nullptr, source.parent, source.root);
    const int32_t type = value ? oru_do_value_get_type(value.get()) : ORU_DO_TYPE_NULL;
    int32_t rc = 0;
    if (type == ORU_DO_TYPE_STRING || type == ORU_DO_TYPE_MR_URI) {
        built.uri = value_to_uri(value.get());
    } else if (type == ORU_DO_TYPE_ARRAY) {
        built.list = Ref<ORUDoVlist>::share(oru_do_value_get_array(value.get(), &rc));
    }
    built.uri = absolute_uri(std::move(built.uri), source.base);
    return built;
}

// An escaped form that cannot be had leaves the text as it is.
void write_escaped(ORUDoStrbuf &out, const char *text) {
    const StrbufRef escaped = new_buffer();
    const bool good = escaped && oru_do_uri_escape_str(text, escaped.get()) == 0;
    strbuf_append(out, good ? buffer_text(escaped) : text);
}

void write_value(ORUDoStrbuf &out, ORUDoValue *value) {
    const StrbufRef text = new_buffer();
    if (!text)
        return;
    oru_do_value_to_strbuf(value, 0, text.get());
    if (oru_do_strbuf_get_err(text.get()) == 0)
        write_escaped(out, buffer_text(text));
}

// A key value that is a variable is looked up by its name in unescaped form; one that does not
// resolve stays as the document has it.
void write_variable(const UriSource &source, ORUDoStrbuf &out, const char *raw, ORUDoValue *key) {
    const StrbufRef name = new_buffer();
    Ref<ORUDoValue> value;
    if (name && oru_do_uri_unescape_str(raw, name.get()) == 0)
        value = resolve(source.params, buffer_text(name), key, source.parent, source.root);
    if (value && value.get() != key) {
        write_value(out, value.get());
    } else {
        strbuf_append(out, raw);
    }
}

void write_key(const UriSource &source, ORUDoStrbuf &out, const ORUDoNvlistItem &key) {
    strbuf_append(out, ";");
    strbuf_append(out, key.name);
    strbuf_append(out, "=");
    int32_t rc = 0;
    const char *text = oru_do_value_get_string(key.value, &rc);
    if (text == nullptr) {
        write_value(out, key.value);
    } else if (is_variable(text)) {
        write_variable(source, out, text, key.value);
    } else {
        strbuf_append(out, text);
    }
}

void write_segment(const UriSource &source, ORUDoStrbuf &out, ORUDoUriSegment *segment) {
    const char *name = oru_do_uri_segment_get_name(segment);
    if (std::strcmp(name, oru_get_system_root_uri_str()) == 0 || std::strcmp(name, "/") == 0) {
        ORU_TRACE(Level::detail, "Ref name is orucore system root");
        return;
    }
    strbuf_append(out, name);
    ORUDoNvlist *keys = oru_do_uri_segment_get_keys(segment);
    for (auto *key = keys != nullptr ? keys->first : nullptr; key != nullptr; key = key->next)
        write_key(source, out, *key);
}

// 5. A text with variables among its key values is rebuilt segment by segment.
BuiltUri rebuilt(const UriSource &source, const char *text) {
    const StrbufRef out = new_buffer();
    if (!out)
        return {};
    const bool absolute = oru_do_uri_is_absolute(source.uri) != 0;
    const bool infix = oru_do_uri_str_is_infix(text) != 0;
    const char *base = source.base != nullptr ? oru_do_uri_get_uri_str(source.base) : nullptr;
    if (!absolute && !infix && base != nullptr)
        strbuf_append(*out, base);

    const int32_t count = oru_do_uri_get_segment_count(source.uri);
    for (int32_t i = 0; i < count; ++i) {
        ORUDoUriSegment *segment = oru_do_uri_get_segment(source.uri, i);
        if (segment == nullptr) {
            ORU_TRACE(Level::failure, "Segment %d unexpectedly NULL", i);
            continue;
        }
        if (i != 0 || !infix)
            strbuf_append(*out, i == 0 && absolute ? "//" : "/");
        write_segment(source, *out, segment);
    }
    if (const char *query = oru_do_uri_get_query_part(source.uri)) {
        strbuf_append(*out, "?");
        strbuf_append(*out, query);
    }
    return {uri_of_buffer(out)};
}

// What stands behind a prefix, or null for a text without it.
template <size_t N>
const char *behind(const char *text, const char (&prefix)[N]) {
    return std::strncmp(text, prefix, N - 1) == 0 ? text + N - 1 : nullptr;
}

}  // namespace

Ref<ORUDoUri> absolute_uri(Ref<ORUDoUri> uri, ORUDoUri *base) {
    if (base == nullptr || (uri && oru_do_uri_is_absolute(uri.get()) != 0))
        return uri;
    UriRef absolute = UriRef::adopt(oru_do_uri_new_absolute(uri.get(), base));
    return absolute ? std::move(absolute) : std::move(uri);
}

BuiltUri build_uri(const UriSource &source) {
    const char *text = oru_do_uri_get_uri_str(source.uri);
    if (const char *rest = behind(text, kParentUri))
        return below_the_parent(source, rest);
    if (behind(text, kPeerUri) != nullptr)
        return of_the_peer(source, text + 1);
    if (behind(text, kUriParent) != nullptr)
        return of_the_parent(source);
    if (is_variable(text))
        return of_a_variable(source, text);
    return rebuilt(source, text);
}

}  // namespace oru::dtl
