#include "addresses.h"

#include <algorithm>

#include "database.h"
#include "fault_words.h"
#include "model_words.h"
#include "terminal_text.h"

namespace oructl {
namespace {

const std::string &location() {
    static const std::string text = oru_get_default_root_uri_str();
    return text;
}

[[noreturn]] void fail(const std::string &text, const std::string &words) {
    throw Failure(in_quotes(text) + " is no address: " + words);
}

// What the library says at an address that it does not take, for its user.
std::string words_of(const std::vector<Fault> &faults) {
    const std::string words = faults.empty() ? "" : faults.front().words;
    if (words.find("URI MAX segments") != std::string::npos)
        return "it has more than " + std::to_string(URI_MAX_SEGMENTS - 1) + " segments";
    if (words.find("ref-name") != std::string::npos)
        return "a reference in it is longer than 63 characters";
    return "one reads /reference;key=value/reference";
}

// The library parses every address sooner or later, and ends the process at some.
void check_grammar(const std::string &text, const std::string &full) {
    FaultLog log;
    const Uri uri(oru_do_uri_validate_new(full.c_str()));
    if (uri == nullptr)
        fail(text, words_of(log.take()));
}

std::string without_own_location(const std::string &text) {
    if (!text.starts_with("//"))
        return text;
    if (text == "//")
        return "/";
    if (text.starts_with("//?"))
        return text.substr(2);
    const bool is_ours = text.starts_with(location()) &&
                         (text.size() == location().size() || text[location().size()] == '/' ||
                          text[location().size()] == '?');
    if (!is_ours)
        fail(text, "resources are at " + location());
    const std::string rest = text.substr(location().size());
    return rest.empty() ? "/" : rest;
}

// The library numbers the location with the segments.
void check_size(const std::string &text, const std::string &path) {
    check_grammar(text, location() + (path == "/" ? "" : path));
    constexpr size_t kLongest = 1 << 16;
    if (path.size() > kLongest)
        fail(text.substr(0, 80), "longer than " + std::to_string(kLongest) + " bytes");
}

std::vector<std::string_view> cut(std::string_view text, char at) {
    std::vector<std::string_view> parts;
    for (;;) {
        const size_t end = text.find(at);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::string unescaped(std::string_view text) {
    return written(
        [&](ORUDoStrbuf *buf) { oru_do_uri_unescape_str(std::string(text).c_str(), buf); });
}

ORUMdMrMeta *child_of(const ORUMdMrMeta &mr, std::string_view reference) {
    for (const ORUMdRefMeta &ref : records(mr.refs)) {
        if (ref.is_child != 0 && text_of(ref.name) == reference)
            return ref.target_mr;
    }
    for (const ORUMdMrMetaList &entry : records(mr.impl_mr_metas)) {
        if (ORUMdMrMeta *found = child_of(*entry.mr, reference))
            return found;
    }
    return nullptr;
}

std::vector<KeyText> keys_of(std::string_view segment) {
    std::vector<KeyText> keys;
    const auto parts = cut(segment, ';');
    for (size_t i = 1; i < parts.size(); ++i) {
        const size_t equal = std::min(parts[i].find('='), parts[i].size());
        const std::string_view value = parts[i].substr(std::min(equal + 1, parts[i].size()));
        keys.push_back({std::string(parts[i].substr(0, equal)), unescaped(value)});
    }
    return keys;
}

// The implementation of a library type that a constant key selects.
ORUMdMrMeta *chosen(ORUMdMrMeta &mr, const std::vector<KeyText> &keys) {
    for (const ORUMdMrMetaList &entry : records(mr.impl_mr_metas)) {
        int32_t status = 0;
        const char *key = entry.mr->const_key != nullptr
                              ? oru_do_value_get_string(entry.mr->const_key, &status)
                              : nullptr;
        if (key != nullptr && keys.size() == 1 && keys.front().value == key)
            return entry.mr;
    }
    return &mr;
}

}  // namespace

Address read_address(const std::string &text) {
    if (text.empty() || text[0] != '/')
        fail(text, "it begins with /");
    if (!is_utf8(text))
        fail(text, "it is no UTF-8");
    if (text.find('?') != std::string::npos)
        fail(text, "that is a collection, with a ?");
    Address address;
    address.path = without_own_location(text);
    while (address.path.size() > 1 && address.path.ends_with('/'))
        address.path.pop_back();
    address.parent = "/";
    if (address.path == "/")
        return address;
    check_size(text, address.path);
    const auto segments = cut(std::string_view(address.path).substr(1), '/');
    address.depth = segments.size();
    if (address.depth > 1)
        address.parent = address.path.substr(0, address.path.rfind('/'));
    address.reference = segments.back().substr(0, segments.back().find(';'));
    address.keys = keys_of(segments.back());
    return address;
}

std::string without_location(std::string text) {
    for (size_t at = 0; (at = text.find(location(), at)) != std::string::npos;) {
        const size_t end = at + location().size();
        const bool is_top = end == text.size() || text[end] != '/';
        text.replace(at, location().size(), is_top ? "/" : "");
    }
    return text;
}

ORUMdMrMeta *type_by_model(ORUMdMrMeta &root, const Address &address) {
    if (address.path == "/")
        return &root;
    ORUMdMrMeta *at = &root;
    for (const std::string_view segment : cut(std::string_view(address.path).substr(1), '/')) {
        at = child_of(*at, segment.substr(0, segment.find(';')));
        if (at == nullptr)
            return nullptr;
        at = chosen(*at, keys_of(segment));
    }
    return at;
}

void check_collection(const std::string &text) {
    const std::string path = without_own_location(text);
    if (!path.starts_with("/") && !path.starts_with("?"))
        fail(text, "it begins with /");
    check_limits(path);
}

std::string query_mark_fault(const std::string &text) {
    const size_t mark = text.find('?');
    if (mark == std::string::npos)
        return "";
    const Uri uri(oru_do_uri_validate_new(text.c_str()));
    if (uri == nullptr || oru_do_uri_get_query_part(uri.get()) != nullptr)
        return "";
    std::string base = text.substr(0, mark);
    while (base.ends_with('/'))
        base.pop_back();
    const std::string words = in_quotes(text) + " is the address of one resource here, since no " +
                              "reference stands in front of the ?";
    constexpr size_t kShortest = 3;  // a question mark and a query
    if (text.size() - mark < kShortest)
        return words;
    return words + "; " + (base.empty() ? location() : base) + text.substr(mark) +
           " is a collection";
}

void check_limits(const std::string &text) {
    std::string base = text.substr(0, text.find('?'));
    while (base.ends_with('*') || base.ends_with('/'))
        base.pop_back();
    if (text.starts_with(location()))
        base.erase(0, std::min(location().size(), base.size()));
    if (!base.empty())
        check_size(text, (base.starts_with('/') ? "" : "/") + base);
}

}  // namespace oructl
