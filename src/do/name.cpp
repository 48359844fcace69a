#include "do/name.h"

#include <string_view>

#include "do/strbuf.h"
#include "frame/text.h"
#include "oru/rc.h"

namespace {

bool holds_inline(const ORUDoName &name) {
    return name.str == name.inline_text;
}

// Points `str` at a copy of the bytes. False when memory runs out.
bool store(ORUDoName &name, const char *bytes, size_t size) {
    if (size < sizeof name.inline_text) {
        // Up to a zero, behind which there may be nothing. The record came zeroed.
        std::memcpy(name.inline_text, bytes, strnlen(bytes, size));
        name.str = name.inline_text;
    } else {
        name.str = oru::duplicate(bytes, size);
    }
    return name.str != nullptr;
}

ORUDoName *new_name(const char *bytes, size_t size) {
    auto name = oru::make_ref<ORUDoName>();
    if (!name || !store(*name, bytes, size))
        return nullptr;
    return name.release();
}

// The part of a qualified text that names something inside the entity.
const char *unqualified(const char *text) {
    const char *slash = std::strchr(text, '/');
    if (slash == nullptr)
        return text;
    const char *dot = std::strchr(slash, '.');
    return dot != nullptr ? dot + 1 : nullptr;
}

char kUri[] = "_uri";
char kCollUri[] = "_coll_uri";
char kMr[] = "_mr";
char kSnmpIdx[] = "_snmpIdx";
char kSequenceNumber[] = "_sequenceNumber";
char kPendingAttrs[] = "_pendingAttrs";
char kTimestamp[] = "_timestamp";

// Ends the text at `place` and gives what stands behind it.
char *cut(char *place) {
    *place = '\0';
    return place + 1;
}

}  // namespace

char *ORU_DO_NAME_URI = kUri;
char *ORU_DO_NAME_COLL_URI = kCollUri;
char *ORU_DO_NAME_MR = kMr;
char *ORU_DO_NAME_SNMP_IDX = kSnmpIdx;
char *ORU_DO_NAME_SEQ_NB = kSequenceNumber;
char *ORU_DO_NAME_PENDING_ATTRS = kPendingAttrs;
char *ORU_DO_NAME_TIMESTAMP = kTimestamp;

void oru::ObjectType<ORUDoName>::release_members(ORUDoName &self) {
    if (self.str != nullptr && !holds_inline(self))
        ph_free_named(self.str);
}

ORUDoName *oru_do_name_new(const char *text) {
    ORU_REQUIRE(text);
    return new_name(text, std::strlen(text));
}

ORUDoName *oru_do_name_new_l(const char *text, int32_t length) {
    if (text == nullptr || length < 0)
        return nullptr;
    return new_name(text, static_cast<size_t>(length));
}

ORUDoName *oru_do_name_new_fqname(ORUDoName *name, const char *package, const char *version) {
    ORU_REQUIRE(name);
    if (package == nullptr || std::strchr(name->str, '/') != nullptr)
        return oru::ref(name);
    auto buf = oru::Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        return nullptr;
    oru::strbuf_append(*buf, package);
    if (version != nullptr) {
        oru::strbuf_append(*buf, ":");
        oru::strbuf_append(*buf, version);
    }
    oru::strbuf_append(*buf, "/");
    oru::strbuf_append(*buf, name->str);
    // A name with its end cut off is none.
    if (oru_do_strbuf_get_err(buf.get()) != ORU_OK)
        return nullptr;
    return new_name(buf->str, static_cast<size_t>(buf->len));
}

ORUDoName *oru_do_name_new_or_ref_unqualified_name(ORUDoName *name) {
    ORU_REQUIRE(name);
    const char *part = unqualified(name->str);
    if (part == nullptr)
        return nullptr;
    return part == name->str ? oru::ref(name) : oru_do_name_new(part);
}

const char *oru_do_name_get_strname(ORUDoName *name) {
    ORU_REQUIRE(name);
    return name->str;
}

const char *oru_do_name_get_unqualified_strname(ORUDoName *name) {
    ORU_REQUIRE(name);
    return unqualified(name->str);
}

int32_t oru_do_name_is_fully_qualified(ORUDoName *name) {
    ORU_REQUIRE(name);
    return is_fully_qualified_name(name->str);
}

int32_t is_fully_qualified_name(const char *text) {
    return text != nullptr && std::strchr(text, '/') != nullptr;
}

int32_t oru_do_name_equals(ORUDoName *name1, ORUDoName *name2) {
    ORU_REQUIRE(name1);
    return name2 != nullptr && oru::same_name(name1, name2);
}

int32_t oru_do_name_equals_w_strname(ORUDoName *name1, const char *text) {
    ORU_REQUIRE(name1);
    return text != nullptr && std::strcmp(name1->str, text) == 0;
}

int32_t oru_do_name_equals_w_strname_l(ORUDoName *name1, const char *text, int32_t n) {
    ORU_REQUIRE(name1);
    return text != nullptr && std::strncmp(name1->str, text, static_cast<size_t>(n)) == 0;
}

int32_t oru_do_name_equals_w_strname_l_strict(ORUDoName *name1, const char *text, int32_t n) {
    return oru_do_name_equals_w_strname_l(name1, text, n) != 0 &&
           std::strlen(name1->str) == static_cast<size_t>(n);
}

int32_t parse_pkg_and_ent_name(char *text, char **package, char **version, char **entity,
                               char **attribute) {
    ORU_REQUIRE(package);
    ORU_REQUIRE(version);
    ORU_REQUIRE(entity);
    ORU_REQUIRE(attribute);
    *package = *version = *entity = *attribute = nullptr;
    if (text == nullptr)
        return ORU_RC_GENERAL;
    char *split = std::strrchr(text, '/');
    if (split == nullptr)
        split = std::strrchr(text, '.');
    if (split == nullptr) {
        *entity = text;
        return ORU_OK;
    }
    char *rest = cut(split);
    *package = text;
    if (char *colon = std::strrchr(text, ':'))
        *version = cut(colon);
    if (*rest == '\0')
        return ORU_OK;
    *entity = rest;
    if (char *dot = std::strchr(rest, '.'))
        *attribute = cut(dot);
    return ORU_OK;
}

ORU_OBJECT_API(ORUDoName, oru_do_name)
