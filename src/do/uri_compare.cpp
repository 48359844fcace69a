// Questions that the text answers: nothing here parses.
#include <cstring>

#include "do/uri.h"
#include "oru/lib.h"
#include "oru/rc.h"

namespace {

constexpr std::string_view kAbsolute = "//";
constexpr std::string_view kLocation = "//locations;locationId=";
constexpr size_t kShortestCut = 4;

bool is_absolute(std::string_view text) {
    return oru_location_is_enabled() != 0 && text.starts_with(kAbsolute);
}

// The kind of a collection by type, from what stands before the question mark.
int32_t wildcard_type(std::string_view base, const char *function) {
    if (base.empty()) {
        ORU_TRACE(oru::Level::failure, "Error in %s, URI base is of length %d\n", function, 0);
        return ORU_URI_NO_COLL;
    }
    const bool rooted = base.front() == '/';
    if (base.back() == '*')
        return rooted ? ORU_URI_COLL_STAR_TYPE : ORU_URI_COLL_INFIX_STAR_TYPE;
    return rooted ? ORU_URI_COLL_TYPE : ORU_URI_COLL_INFIX_TYPE;
}

}  // namespace

int32_t oru_do_uri_is_root(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return oru_do_uri_str_is_root(uri->uri_str);
}

int32_t oru_do_uri_str_is_root(const char *uri_str) {
    return uri_str != nullptr && uri_str == oru::kUriSystemRoot;
}

int32_t oru_do_uri_is_absolute(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    return is_absolute(uri->uri_str);
}

int32_t oru_do_uri_str_is_absolute(const char *uri_str) {
    return uri_str != nullptr && is_absolute(uri_str);
}

int32_t oru_do_uri_str_is_infix(const char *uri_str) {
    return uri_str != nullptr && uri_str[0] != '/';
}

int32_t oru_do_uri_is_coll_uri(ORUDoUri *uri) {
    ORU_REQUIRE(uri);
    if (oru::uri_is_parsed(*uri))
        return uri->query_part != nullptr;
    return std::strchr(uri->uri_str, '?') != nullptr;
}

int32_t oru_do_uri_get_coll_type(ORUDoUri *coll_uri) {
    ORU_REQUIRE(coll_uri);
    const std::string_view text(coll_uri->uri_str);
    if (text.size() < 3)
        return ORU_URI_COLL_PLAIN;
    if (text.starts_with("//?:"))
        return ORU_URI_COLL_SYSTEM_TYPE;
    const size_t mark = text.find('?');
    if (mark == std::string_view::npos || mark + 1 == text.size())
        return ORU_URI_NO_COLL;
    const std::string_view query = text.substr(mark + 1);
    if (query.find(':', 1) != std::string_view::npos)
        return ORU_URI_COLL_REF_TYPE;
    if (query.front() != ':')
        return ORU_URI_COLL_PLAIN;
    return wildcard_type(text.substr(0, mark), __func__);
}

const char *oru_do_uri_get_relative_str(const char *uri_str) {
    ORU_REQUIRE(uri_str);
    const std::string_view text(uri_str);
    if (text.size() < kShortestCut || !text.starts_with(kAbsolute))
        return uri_str;
    return std::strchr(uri_str + kAbsolute.size(), '/');
}

int32_t oru_do_uri_get_location_str(ORUDoUri *uri, char *buf, int32_t len) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(buf);
    const size_t room = len > 0 ? static_cast<size_t>(len) : 0;
    std::memset(buf, 0, room);
    const std::string_view text(uri->uri_str);
    if (!text.starts_with(kLocation))
        return ORU_RC_GENERAL;
    std::string_view id = text.substr(kLocation.size());
    id = id.substr(0, id.find('/'));
    return id.copy(buf, room) < room ? ORU_OK : ORU_RC_GENERAL;
}

int32_t oru_do_uri_is_at(ORUDoUri *uri, const char *locationId) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(locationId);
    if (oru_do_uri_is_absolute(uri) == 0)
        return 0;
    const std::string_view text(uri->uri_str);
    const size_t equal = text.find('=');
    if (equal == std::string_view::npos)
        return 0;
    const std::string_view id(locationId);
    std::string_view rest = text.substr(equal + 1);
    if (!rest.starts_with(id))
        return 0;
    rest.remove_prefix(id.size());
    return rest.empty() || rest.front() == '/';
}

int32_t oru_do_uri_equals(ORUDoUri *uri1, ORUDoUri *uri2) {
    ORU_REQUIRE(uri1);
    ORU_REQUIRE(uri2);
    return std::strcmp(uri1->uri_str, uri2->uri_str) == 0;
}

int32_t oru_do_uri_relative_equals(ORUDoUri *uri1, ORUDoUri *uri2) {
    ORU_REQUIRE(uri1);
    ORU_REQUIRE(uri2);
    const char *relative1 = oru_do_uri_get_relative_str(uri1->uri_str);
    const char *relative2 = oru_do_uri_get_relative_str(uri2->uri_str);
    return relative1 != nullptr && relative2 != nullptr && std::strcmp(relative1, relative2) == 0;
}
