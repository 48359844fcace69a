#include "json/types.h"

#include <bit>
#include <cstring>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "json/read.h"
#include "oru/value.h"

namespace {

using namespace oru::json;

#define VALUE_ROW(tag, code, type) \
    { tag, code, type, value_deser }
#define OBJECT_ROW(tag, code, deserialiser) \
    { tag, code, ORU_DO_TYPE_UNKNOWN, deserialiser }

// Lookups give the first row that fits, so the order matters.
constexpr oru_json_type_info kTypes[] = {
    VALUE_ROW("%ubyte", kTypeUbyte, ORU_DO_TYPE_UNSIGNED_BYTE),
    VALUE_ROW("%unsignedByte", kTypeUbyte, ORU_DO_TYPE_UNSIGNED_BYTE),
    VALUE_ROW("%byte", kTypeByte, ORU_DO_TYPE_BYTE),
    VALUE_ROW("%ushort", kTypeUshort, ORU_DO_TYPE_UNSIGNED_SHORT),
    VALUE_ROW("%unsignedShort", kTypeUshort, ORU_DO_TYPE_UNSIGNED_SHORT),
    VALUE_ROW("%short", kTypeShort, ORU_DO_TYPE_SHORT),
    VALUE_ROW("%uint", kTypeUint, ORU_DO_TYPE_UNSIGNED_INT),
    VALUE_ROW("%unsignedInt", kTypeUint, ORU_DO_TYPE_UNSIGNED_INT),
    VALUE_ROW("%int", kTypeInt, ORU_DO_TYPE_INT),
    VALUE_ROW("%ulong", kTypeUlong, ORU_DO_TYPE_UNSIGNED_LONG),
    VALUE_ROW("%unsignedLong", kTypeUlong, ORU_DO_TYPE_UNSIGNED_LONG),
    VALUE_ROW("%long", kTypeLong, ORU_DO_TYPE_LONG),
    VALUE_ROW("%string", kTypeString, ORU_DO_TYPE_STRING),
    VALUE_ROW("%boolean", kTypeBoolean, ORU_DO_TYPE_BOOLEAN),
    VALUE_ROW("%float", kTypeFloat, ORU_DO_TYPE_FLOAT),
    VALUE_ROW("%double", kTypeDouble, ORU_DO_TYPE_DOUBLE),
    VALUE_ROW("%datetime", kTypeDatetime, ORU_DO_TYPE_DATETIME),
    VALUE_ROW("%dateTime", kTypeDatetime, ORU_DO_TYPE_DATETIME),
    VALUE_ROW("%duration", kTypeDuration, ORU_DO_TYPE_DURATION),
    VALUE_ROW("%any_uri", kTypeAnyUri, ORU_DO_TYPE_ANY_URI),
    VALUE_ROW("%anyURI", kTypeAnyUri, ORU_DO_TYPE_ANY_URI),
    VALUE_ROW("%hex_binary", kTypeHexBinary, ORU_DO_TYPE_HEX_BINARY),
    VALUE_ROW("%hexBinary", kTypeHexBinary, ORU_DO_TYPE_HEX_BINARY),
    VALUE_ROW("%ip_address", kTypeIpAddress, ORU_DO_TYPE_IP_ADDRESS),
    VALUE_ROW("%ipAddress", kTypeIpAddress, ORU_DO_TYPE_IP_ADDRESS),
    VALUE_ROW("%nsap_address", kTypeNsapAddress, ORU_DO_TYPE_NSAP_ADDRESS),
    VALUE_ROW("%nsapAddress", kTypeNsapAddress, ORU_DO_TYPE_NSAP_ADDRESS),
    VALUE_ROW("%enumeration", kTypeEnumeration, ORU_DO_TYPE_ENUMERATION),
    VALUE_ROW("%array", kTypeArray, ORU_DO_TYPE_ARRAY),
    VALUE_ROW("%choice", kTypeChoice, ORU_DO_TYPE_CHOICE),
    VALUE_ROW("%sequence", kTypeSequence, ORU_DO_TYPE_SEQUENCE),
    VALUE_ROW("%mr_uri", kTypeMrUri, ORU_DO_TYPE_MR_URI),
    VALUE_ROW("%coll_uri", kTypeCollUri, ORU_DO_TYPE_COLL_URI),
    VALUE_ROW("%bits", kTypeBits, ORU_DO_TYPE_BITS),
    OBJECT_ROW("%properties", kTypeProperties, properties_deser),
    OBJECT_ROW("%nlist", kTypeNlist, nlist_deser),
    OBJECT_ROW("%vlist", kTypeVlist, vlist_deser),
    OBJECT_ROW("%nvlist", kTypeNvlist, nvlist_deser),
    OBJECT_ROW("%ntlist", kTypeNtlist, ntlist_deser),
    OBJECT_ROW("%config_ops", kTypeConfigOps, config_ops_deser),
    OBJECT_ROW("%mr_meta_list", kTypeMrMetaList, mr_meta_list_deser),
    OBJECT_ROW("%mr_meta", kTypeMrMeta, mr_meta_deser),
    OBJECT_ROW("%prop_meta_list", kTypePropMetaList, prop_meta_list_deser),
    OBJECT_ROW("%prop_meta", kTypePropMeta, prop_meta_deser),
    OBJECT_ROW("%constraint_list", kTypeConstraintList, constraint_list_deser),
    OBJECT_ROW("%constraint", kTypeConstraint, constraint_deser),
    OBJECT_ROW("%error", kTypeError, error_deser),
    OBJECT_ROW("%prop_errs", kTypePropErrs, prop_errs_deser),
    OBJECT_ROW("%event", kTypeEvent, event_deser),
    OBJECT_ROW("%properties_list", kTypePropertiesList, properties_list_deser),
    {"%null", kTypeNull, ORU_DO_TYPE_NULL, null_deser},
    OBJECT_ROW("%vtable", kTypeVtable, vtable_deser),
    OBJECT_ROW("%typedef_meta", kTypeTypedefMeta, typedef_meta_deser),
    OBJECT_ROW("%dtree", kTypeDtree, dtree_deser),
    OBJECT_ROW("_add()", kTypeAdd, oru_json_expr_deser),
    OBJECT_ROW("_sub()", kTypeSub, oru_json_expr_deser),
    OBJECT_ROW("_mult()", kTypeMult, oru_json_expr_deser),
    OBJECT_ROW("_div()", kTypeDiv, oru_json_expr_deser),
    OBJECT_ROW("_mod()", kTypeMod, oru_json_expr_deser),
    OBJECT_ROW("_incr()", kTypeIncr, oru_json_expr_deser),
    OBJECT_ROW("_decr()", kTypeDecr, oru_json_expr_deser),
    OBJECT_ROW("_map()", kTypeMap, oru_json_expr_deser),
    OBJECT_ROW("_tostring()", kTypeTostring, oru_json_expr_deser),
    OBJECT_ROW("_key()", kTypeKey, oru_json_expr_deser),
    OBJECT_ROW("_min()", kTypeMin, oru_json_expr_deser),
    OBJECT_ROW("_max()", kTypeMax, oru_json_expr_deser),
    {nullptr, 0, 0, nullptr},
};

#undef VALUE_ROW
#undef OBJECT_ROW

static_assert(std::size(kTypes) == 66 + 1);

constexpr uint8_t kRows = std::size(kTypes) - 1;
constexpr uint8_t kNoRow = 0xff;

// The first row that fits, or kNoRow.
template <class Fits>
constexpr uint8_t first_row(Fits &&fits) {
    for (uint8_t row = 0; row < kRows; ++row) {
        if (fits(kTypes[row]))
            return row;
    }
    return kNoRow;
}

const oru_json_type_info *info_of(uint8_t row) {
    return row != kNoRow ? &kTypes[row] : nullptr;
}

// ---- Whole tags, which nearly all are: found in one step ----

constexpr size_t kShortestTag = 4;
constexpr size_t kLongestTag = 16;
constexpr uint32_t kTagPlaces = 256;

// The same number on all machines: of bytes, the first of them lowest.
template <class Word>
constexpr Word word_at(const char *text) {
    Word word = 0;
    if (!std::is_constant_evaluated() && std::endian::native == std::endian::little) {
        std::memcpy(&word, text, sizeof word);
        return word;
    }
    for (size_t i = 0; i < sizeof word; ++i)
        word |= static_cast<Word>(static_cast<uint8_t>(text[i])) << (8 * i);
    return word;
}

// Of both ends and the length. The factor is one that gives each tag a place of its own.
constexpr uint32_t tag_place(const char *text, size_t length) {
    constexpr uint64_t kFactor = 0xc91752a33d589cab;
    const uint64_t ends = uint64_t{word_at<uint32_t>(text)} ^ uint64_t {
        word_at<uint32_t>(text + length - 4)
    } << 32 ^ uint64_t { length } << 24;
    return static_cast<uint32_t>((ends * kFactor) >> 56);
}

struct TagPlaces {
    uint8_t row[kTagPlaces];  // whose tag stands at the place
    uint8_t first[kRows];     // the first row whose tag begins as that of the row does
    uint8_t length[kRows];
};

constexpr TagPlaces make_tag_places() {
    TagPlaces places{};
    for (uint8_t &row : places.row)
        row = kNoRow;
    for (uint8_t row = 0; row < kRows; ++row) {
        const std::string_view tag = kTypes[row].tag;
        places.length[row] = static_cast<uint8_t>(tag.size());
        places.row[tag_place(tag.data(), tag.size())] = row;
        places.first[row] = first_row([tag](const oru_json_type_info &other) {
            return std::string_view(other.tag).substr(0, tag.size()) == tag;
        });
    }
    return places;
}

constexpr TagPlaces kTags = make_tag_places();

constexpr bool each_tag_has_its_place() {
    for (uint8_t row = 0; row < kRows; ++row) {
        if (kTags.length[row] < kShortestTag || kTags.length[row] > kLongestTag ||
            kTags.row[tag_place(kTypes[row].tag, kTags.length[row])] != row)
            return false;
    }
    return true;
}
static_assert(each_tag_has_its_place());

// Whether two texts of a tag's length are the same, which two words at their ends tell.
bool same_tag(const char *a, const char *b, size_t length) {
    const auto same_ends = [=](auto word) {
        const size_t last = length - sizeof word;
        using Word = decltype(word);
        return word_at<Word>(a) == word_at<Word>(b) &&
               word_at<Word>(a + last) == word_at<Word>(b + last);
    };
    return length < sizeof(uint64_t) ? same_ends(uint32_t{}) : same_ends(uint64_t{});
}

// The row that the whole tag leads to, or kNoRow.
uint8_t row_of_whole_tag(const char *text, size_t length) {
    if (length < kShortestTag)
        return kNoRow;
    const uint8_t row = kTags.row[tag_place(text, length)];
    if (row == kNoRow || kTags.length[row] != length || !same_tag(kTypes[row].tag, text, length))
        return kNoRow;
    return kTags.first[row];
}

// ---- Type codes, found in one step too ----

constexpr uint32_t kCodePlaces = 128;

constexpr uint32_t code_place(int64_t code) {
    constexpr uint64_t kFactor = 0x8735c013ce3b725;
    return static_cast<uint32_t>((static_cast<uint64_t>(code) * kFactor) >> 57);
}

struct CodePlaces {
    uint8_t row[kCodePlaces];
};

constexpr uint8_t first_row_of_code(int64_t code) {
    return first_row([code](const oru_json_type_info &row) { return row.type_code == code; });
}

constexpr CodePlaces make_code_places() {
    CodePlaces places{};
    for (uint8_t &row : places.row)
        row = kNoRow;
    for (const oru_json_type_info &info : kTypes) {
        if (info.tag != nullptr)
            places.row[code_place(info.type_code)] = first_row_of_code(info.type_code);
    }
    return places;
}

constexpr CodePlaces kCodes = make_code_places();

constexpr bool each_code_has_its_place() {
    for (uint8_t row = 0; row < kRows; ++row) {
        const int64_t code = kTypes[row].type_code;
        if (kCodes.row[code_place(code)] != first_row_of_code(code))
            return false;
    }
    return true;
}
static_assert(each_code_has_its_place());

// ---- Codes of value types ----

// Value type codes lie between these.
constexpr int32_t kLowestCode = ORU_DO_TYPE_UNKNOWN;
constexpr int32_t kHighestCode = ORU_DO_TYPE_BITS;

struct ValueTypeRows {
    uint8_t row[kHighestCode - kLowestCode + 1]{};
};

constexpr ValueTypeRows make_value_type_rows() {
    ValueTypeRows rows;
    for (int32_t code = kLowestCode; code <= kHighestCode; ++code) {
        rows.row[code - kLowestCode] = first_row(
            [code](const oru_json_type_info &row) { return row.value_type_code == code; });
    }
    return rows;
}

constexpr ValueTypeRows kValueTypes = make_value_type_rows();

// ---- How values begin ----

struct Opening {
    char text[24];
    uint8_t size;

    constexpr void add(std::string_view piece) {
        for (const char c : piece)
            text[size++] = c;
    }
};

struct Openings {
    Opening of[kHighestCode - kLowestCode + 1];
};

// The reader has no rows for two of the types.
constexpr std::string_view tag_of_value(int32_t code) {
    if (code == ORU_DO_TYPE_DEFAULT)
        return "%default";
    if (code == ORU_DO_TYPE_UNKNOWN)
        return "%unknown";
    const uint8_t row = kValueTypes.row[code - kLowestCode];
    return row != kNoRow ? kTypes[row].tag : "";
}

constexpr Openings make_openings() {
    Openings openings{};
    for (int32_t code = kLowestCode; code <= kHighestCode; ++code) {
        Opening &opening = openings.of[code - kLowestCode];
        opening.add("{\"");
        opening.add(tag_of_value(code));
        opening.add("\":");
    }
    return openings;
}

constexpr Openings kOpenings = make_openings();

}  // namespace

std::string_view oru::json::value_opening(int32_t value_type) {
    const Opening &opening = kOpenings.of[value_type - kLowestCode];
    return {opening.text, opening.size};
}

const oru_json_type_info *oru_json_get_type_info(const char *text, int32_t length) {
    if (text == nullptr || length < 0)
        return nullptr;
    const auto size = static_cast<size_t>(length);
    const uint8_t row = row_of_whole_tag(text, size);
    if (row != kNoRow) [[likely]]
        return &kTypes[row];
    // A text that only begins a tag matches it, at the first row that has it.
    return info_of(first_row([text, size](const oru_json_type_info &other) {
        return std::strncmp(other.tag, text, size) == 0;
    }));
}

const oru_json_type_info *oru_json_get_type_info_by_type_code(int64_t code) {
    const oru_json_type_info *info = info_of(kCodes.row[code_place(code)]);
    return info != nullptr && info->type_code == code ? info : nullptr;
}

const oru_json_type_info *oru_json_get_type_info_by_value_type_code(int32_t code) {
    if (code < kLowestCode || code > kHighestCode)
        return nullptr;
    return info_of(kValueTypes.row[code - kLowestCode]);
}
