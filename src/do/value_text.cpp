// The text form of values, and the formatter that a process may put in front of it.
#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <ctime>

#include "do/strbuf.h"
#include "do/value.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/vlist.h"

namespace {

const ORUDoValueFormatter *installed_formatter = nullptr;

constexpr int64_t kMicrosecondsPerSecond = 1000000;

// What steps give beside the state of the buffer.
enum class Printed { yes, impossible };

Printed add_date(const ORUDoValue &val, ORUDoStrbuf *strbuf) {
    const auto seconds = static_cast<time_t>(oru::integer_of(val) / kMicrosecondsPerSecond);
    struct tm broken_down;
    tzset();
    if (localtime_r(&seconds, &broken_down) == nullptr)
        return Printed::yes;
    char text[64];
    if (std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S %z", &broken_down) == 0)
        return Printed::impossible;
    oru_do_strbuf_add_string(strbuf, text);
    return Printed::yes;
}

Printed add_uri(const ORUDoValue &val, ORUDoStrbuf *strbuf) {
    const char *text = oru::uri_text(val);
    if (text == nullptr)
        return Printed::impossible;
    oru_do_strbuf_add_string(strbuf, text);
    return Printed::yes;
}

using AddHex = int32_t(ORUDoStrbuf *, const void *, int32_t, const char *, int32_t);

// Separators are those of the derived type, which only addresses of interfaces have.
void add_hex_binary(const ORUDoValue &val, ORUDoStrbuf *strbuf, AddHex *add_address) {
    const auto bytes = oru::sized_payload(val);
    const auto n = static_cast<int32_t>(bytes.size());
    if (oru::has_typedef(val, "MACAddress")) {
        add_address(strbuf, bytes.data(), n, ".", 2);
    } else if (oru::has_typedef(val, "PhysAddress")) {
        add_address(strbuf, bytes.data(), n, ":", 1);
    } else {
        oru_do_strbuf_add_hexbuf(strbuf, bytes.data(), n);
    }
}

enum class Family { none, ipv4, ipv6 };

Family family_of(const ORUDoValue &val) {
    if (val.typedef_name == nullptr) {
        if (val.len == 4 || val.len == 5)
            return Family::ipv4;
        return val.len == 16 || val.len == 17 ? Family::ipv6 : Family::none;
    }
    if (oru::has_typedef(val, "IpAddressV4") || oru::has_typedef(val, "InetAddressIPv4"))
        return Family::ipv4;
    if (oru::has_typedef(val, "IpAddressV6") || oru::has_typedef(val, "InetAddressIPv6"))
        return Family::ipv6;
    return Family::none;
}

void add_ip_address(const ORUDoValue &val, ORUDoStrbuf *strbuf) {
    const auto bytes = oru::sized_payload(val);
    const Family family = family_of(val);
    if (bytes.empty())
        return;
    if (family == Family::none) {
        oru_do_strbuf_add_hexbuf(strbuf, bytes.data(), val.len);
        return;
    }
    // The name of the type wins over the length: what is missing reads as zeros.
    char address[sizeof(in6_addr)] = {};
    const size_t size = family == Family::ipv4 ? sizeof(in_addr) : sizeof(in6_addr);
    bytes.copy(address, size);
    char text[INET6_ADDRSTRLEN];
    inet_ntop(family == Family::ipv4 ? AF_INET : AF_INET6, address, text, sizeof text);
    oru_do_strbuf_add_string(strbuf, text);
    // Readers know a prefix from 128 on by its sign-extended form.
    const int64_t prefix = bytes.size() == size + 1 ? static_cast<signed char>(bytes.back()) : 0;
    if (prefix != 0) {
        oru_do_strbuf_add_char(strbuf, '/');
        oru_do_strbuf_add_unsigned_long(strbuf, static_cast<uint64_t>(prefix));
    }
}

void add_nsap_address(const ORUDoValue &val, ORUDoStrbuf *strbuf) {
    const auto bytes = oru::sized_payload(val);
    if (bytes.empty())
        return;
    const auto rest = bytes.substr(1);
    oru_do_strbuf_add_hexbuf(strbuf, bytes.data(), 1);
    if (!rest.empty())
        oru_do_strbuf_add_char(strbuf, '.');
    oru_do_strbuf_add_hexbuf_sep(strbuf, rest.data(), static_cast<int32_t>(rest.size()), ".", 2);
}

Printed add_value(const ORUDoValue &val, int32_t tabs, ORUDoStrbuf *strbuf) {
    switch (val.type) {
        case ORU_DO_TYPE_UNKNOWN:
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_NULL:
            oru_do_strbuf_add_string(strbuf, oru_do_get_typestr_by_typecode(val.type));
            break;
        case ORU_DO_TYPE_UNSIGNED_BYTE:
        case ORU_DO_TYPE_UNSIGNED_SHORT:
        case ORU_DO_TYPE_UNSIGNED_INT:
        case ORU_DO_TYPE_UNSIGNED_LONG:
            oru_do_strbuf_add_unsigned_long(strbuf, static_cast<uint64_t>(oru::integer_of(val)));
            break;
        case ORU_DO_TYPE_DATETIME:
            if (oru::has_typedef(val, "timeStamp"))
                return add_date(val, strbuf);
            [[fallthrough]];
        case ORU_DO_TYPE_BYTE:
        case ORU_DO_TYPE_SHORT:
        case ORU_DO_TYPE_INT:
        case ORU_DO_TYPE_LONG:
        case ORU_DO_TYPE_DURATION:
            oru_do_strbuf_add_long(strbuf, oru::integer_of(val));
            break;
        case ORU_DO_TYPE_STRING:
        case ORU_DO_TYPE_ENUMERATION:
            oru::strbuf_append(*strbuf, oru::sized_payload(val));
            break;
        case ORU_DO_TYPE_BOOLEAN:
            oru_do_strbuf_add_string(strbuf, oru::boolean_text(val));
            break;
        case ORU_DO_TYPE_FLOAT:
        case ORU_DO_TYPE_DOUBLE:
            oru_do_strbuf_add_double(strbuf, oru::real_of(val));
            break;
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return add_uri(val, strbuf);
        case ORU_DO_TYPE_HEX_BINARY:
            add_hex_binary(val, strbuf, oru_do_strbuf_add_hexbuf_sep);
            break;
        case ORU_DO_TYPE_IP_ADDRESS:
            add_ip_address(val, strbuf);
            break;
        case ORU_DO_TYPE_NSAP_ADDRESS:
            add_nsap_address(val, strbuf);
            break;
        // An array writes its tabs behind those of the value.
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            oru_do_nvlist_to_strbuf(val.data.nvlist, tabs, strbuf);
            break;
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            oru_do_vlist_to_strbuf(val.data.vlist, tabs, strbuf);
            break;
        default:
            break;
    }
    return Printed::yes;
}

int32_t to_strbuf_with_lower_case_addresses(intptr_t, ORUDoValue *val, int32_t tabs,
                                            ORUDoStrbuf *strbuf) {
    if (val == nullptr || val->type != ORU_DO_TYPE_HEX_BINARY)
        return oru_do_value_to_strbuf_fmt(val, tabs, nullptr, strbuf);
    ORU_REQUIRE(strbuf);
    add_hex_binary(*val, strbuf, oru_do_strbuf_add_hexbuf_sep_l);
    return oru_do_strbuf_get_err(strbuf);
}

bool begins_with(const char *text, std::string_view start) {
    return std::strncmp(text, start.data(), start.size()) == 0;
}

}  // namespace

const ORUDoValueFormatter *oru::default_formatter() {
    return installed_formatter;
}

bool oru::is_hidden_secret(const ORUDoValue &val, uint32_t opts) {
    if ((opts & ORU_DO_OPT_HIDE_SECRETS) == 0 || val.type != ORU_DO_TYPE_STRING)
        return false;
    const char *name = val.typedef_name;
    return name != nullptr &&
           (begins_with(name, "PasswordString") || begins_with(name, "EncryptedString"));
}

ORUDoValueFormatter lower_case_mac_addr_formatter = {0, to_strbuf_with_lower_case_addresses,
                                                     nullptr, nullptr};

void oru_do_value_set_default_formatter(const ORUDoValueFormatter *formatter) {
    installed_formatter = formatter;
}

int32_t oru_do_value_to_strbuf(ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf) {
    return oru_do_value_to_strbuf_fmt(val, tabs, oru::default_formatter(), strbuf);
}

int32_t oru_do_value_to_strbuf_fmt(ORUDoValue *val, int32_t tabs,
                                   const ORUDoValueFormatter *formatter, ORUDoStrbuf *strbuf) {
    if (formatter != nullptr && formatter->to_strbuf != nullptr)
        return formatter->to_strbuf(formatter->context, val, tabs, strbuf);
    if (val == nullptr)
        return ORU_OK;
    ORU_REQUIRE(strbuf);
    oru_do_strbuf_add_tab(strbuf, tabs);
    if (add_value(*val, tabs, strbuf) == Printed::impossible)
        return ORU_RC_GENERAL;
    return oru_do_strbuf_get_err(strbuf);
}

int32_t oru_do_value_to_strbuf_with_defaults(ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf) {
    const int32_t rc = oru_do_value_to_strbuf(val, tabs, strbuf);
    if (rc != ORU_OK || val == nullptr || oru_do_value_is_default(val) == 0)
        return rc;
    oru_do_strbuf_add_string(strbuf, " (default)");
    return oru_do_strbuf_get_err(strbuf);
}

int32_t oru_do_value_to_strbuf_opt(ORUDoValue *val, int32_t tabs, ORUDoStrbuf *strbuf,
                                   uint32_t opts) {
    if (val == nullptr || !oru::is_hidden_secret(*val, opts))
        return oru_do_value_to_strbuf(val, tabs, strbuf);
    oru_do_strbuf_add_string(strbuf, oru::kHiddenText);
    return ORU_OK;
}
