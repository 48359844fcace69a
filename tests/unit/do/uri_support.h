// Short forms for the tests of URIs.
#ifndef ORU_TESTS_UNIT_DO_URI_SUPPORT_H
#define ORU_TESTS_UNIT_DO_URI_SUPPORT_H

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <memory>
#include <string>
#include <vector>

#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace oru::test {

struct Release {
    void operator()(ORUDoUri *object) const { oru_do_uri_deref(object); }
    void operator()(ORUDoNvlist *object) const { oru_do_nvlist_deref(object); }
    void operator()(ORUDoValue *object) const { oru_do_value_deref(object); }
    void operator()(ORUDoName *object) const { oru_do_name_deref(object); }
    void operator()(ORUDoStrbuf *object) const { oru_do_strbuf_deref(object); }
    void operator()(char *text) const { oru_do_uri_str_free(text); }
};

using Uri = std::unique_ptr<ORUDoUri, Release>;
using Keys = std::unique_ptr<ORUDoNvlist, Release>;
using Value = std::unique_ptr<ORUDoValue, Release>;
using Name = std::unique_ptr<ORUDoName, Release>;
using Buffer = std::unique_ptr<ORUDoStrbuf, Release>;
using OwnText = std::unique_ptr<char, Release>;

inline std::string run_of(size_t n, char c = 'a') {
    return std::string(n, c);
}

inline std::string shown(const char *text) {
    return text != nullptr ? text : "(null)";
}

inline Uri unparsed(const std::string &text) {
    return Uri(oru_do_uri_new(text.c_str()));
}

inline Uri parsed(const std::string &text) {
    Uri uri(oru_do_uri_validate_new(text.c_str()));
    EXPECT_NE(uri, nullptr) << text;
    return uri;
}

inline Name name(const char *text) {
    return Name(oru_do_name_new(text));
}

inline std::string text_of(const Uri &uri) {
    return uri ? oru_do_uri_get_uri_str(uri.get()) : "(null)";
}

inline std::string key_text(ORUDoValue *value) {
    int32_t rc = 0;
    const std::string text = shown(oru_do_value_get_string(value, &rc));
    return rc == 0 ? text : "(no string)";
}

// ";name=value" of each key.
inline std::string keys_of(ORUDoNvlist *keys) {
    std::string text;
    for (int32_t i = 0; keys != nullptr && i < oru_do_nvlist_get_len(keys); ++i) {
        ORUDoNvlistItem *item = oru_do_nvlist_get_item(keys, i);
        text += ';' + std::string(oru_do_nvlist_item_get_name(item)) + '=' +
                key_text(oru_do_nvlist_item_get_value(item));
    }
    return text;
}

// What the segments and the query part read as: "name;key=value|name?query".
inline std::string model_of(ORUDoUri *uri) {
    std::string text;
    for (int32_t i = 0; i < oru_do_uri_get_segment_count(uri); ++i) {
        ORUDoUriSegment *segment = oru_do_uri_get_segment(uri, i);
        text += i > 0 ? "|" : "";
        text += oru_do_uri_segment_get_name(segment);
        text += keys_of(oru_do_uri_segment_get_keys(segment));
    }
    if (const char *query = oru_do_uri_get_query_part(uri))
        text += std::string("?") + query;
    return text;
}

inline std::string model_of(const Uri &uri) {
    return uri ? model_of(uri.get()) : "(null)";
}

inline std::string model_of(const std::string &text) {
    return model_of(parsed(text));
}

// The segment as its offsets tell it.
inline std::string segment_text(const Uri &uri, int32_t index) {
    const OwnText text(
        oru_do_uri_segment_get_str_copy(uri.get(), oru_do_uri_get_segment(uri.get(), index)));
    return shown(text.get());
}

inline std::string parent_of(ORUDoUri *uri) {
    ORUDoUri *parent = oru_do_uri_get_parent_uri(uri);
    return parent != nullptr ? oru_do_uri_get_uri_str(parent) : "(null)";
}

inline std::string parent_of(const Uri &uri) {
    return parent_of(uri.get());
}

// A URI text of so many segments, "/a/a/a".
inline std::string segments_of(int n) {
    std::string text;
    for (int i = 0; i < n; ++i)
        text += "/a";
    return text;
}

constexpr uint32_t kMiscTag = 0x290001c;
constexpr uint32_t kSmallTag = 0x290001d;
constexpr uint32_t kStrdupTag = 0x2900027;

// The classes of the texts that a body asks for: "small", "misc", "heap", in this order.
template <class Prepare, class Body>
std::string classes_asked(Prepare &&prepare, Body &&body) {
    std::string classes;
    const std::pair<uint32_t, const char *> tags[] = {
        {kSmallTag, "small "}, {kMiscTag, "misc "}, {kStrdupTag, "heap "}};
    for (const auto &[tag, name] : tags) {
        auto prepared = prepare();
        poolheap_fail_tag(tag);
        body(prepared);
        poolheap_fail_off();
        classes += poolheap_fail_hits() > 0 ? name : "";
    }
    if (!classes.empty())
        classes.pop_back();
    return classes;
}

template <class Body>
std::string classes_asked(Body &&body) {
    return classes_asked([] { return 0; }, [&](int) { body(); });
}

}  // namespace oru::test

#endif
