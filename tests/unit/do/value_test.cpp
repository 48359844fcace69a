#include "oru/value.h"

#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Nvlist;
using oru::test::TraceCapture;
using oru::test::Uri;
using oru::test::Value;
using oru::test::Vlist;

// The record as outside code compiled apart sees it.
struct ValueRecord {
    char *typedef_name;
    uint32_t ref;
    int32_t len;
    union {
        uint64_t word;
        char *bytes;
        void *object;
    } data;
    int32_t type;
    uint8_t flags;
    int32_t storage_class;
};

const ValueRecord &record(ORUDoValue *val) {
    return *reinterpret_cast<ValueRecord *>(val);
}

// ---- Type codes ----

struct TypeRow {
    int32_t code;
    const char *text;
};

const TypeRow kTypes[] = {
    {0, "unsignedByte"}, {1, "byte"},          {2, "unsignedShort"}, {3, "short"},
    {4, "unsignedInt"},  {5, "int"},           {6, "unsignedLong"},  {7, "long"},
    {8, "string"},       {9, "boolean"},       {10, "float"},        {11, "double"},
    {12, "dateTime"},    {13, "duration"},     {14, "anyURI"},       {15, "hexBinary"},
    {101, "ipAddress"},  {102, "nsapAddress"}, {103, "enumeration"}, {104, "choice"},
    {105, "sequence"},   {106, "array"},       {107, "mrURI"},       {108, "collURI"},
    {109, "bits"},
};

TEST(ValueTypes, CodesAndTextsBelongTogether) {
    for (const TypeRow &row : kTypes) {
        EXPECT_STREQ(type_map[row.code], row.text);
        EXPECT_STREQ(oru_do_get_typestr_by_typecode(row.code), row.text);
        EXPECT_EQ(oru_do_get_typecode_by_typestr(row.text), row.code);
    }
}

TEST(ValueTypes, ConstantsHaveTheirNumbers) {
    EXPECT_EQ(ORU_DO_TYPE_UNKNOWN, -3);
    EXPECT_EQ(ORU_DO_TYPE_DEFAULT, -2);
    EXPECT_EQ(ORU_DO_TYPE_NULL, -1);
    EXPECT_EQ(ORU_DO_TYPE_UNSIGNED_BYTE, 0);
    EXPECT_EQ(ORU_DO_TYPE_BYTE, 1);
    EXPECT_EQ(ORU_DO_TYPE_UNSIGNED_SHORT, 2);
    EXPECT_EQ(ORU_DO_TYPE_SHORT, 3);
    EXPECT_EQ(ORU_DO_TYPE_UNSIGNED_INT, 4);
    EXPECT_EQ(ORU_DO_TYPE_INT, 5);
    EXPECT_EQ(ORU_DO_TYPE_UNSIGNED_LONG, 6);
    EXPECT_EQ(ORU_DO_TYPE_LONG, 7);
    EXPECT_EQ(ORU_DO_TYPE_STRING, 8);
    EXPECT_EQ(ORU_DO_TYPE_BOOLEAN, 9);
    EXPECT_EQ(ORU_DO_TYPE_FLOAT, 10);
    EXPECT_EQ(ORU_DO_TYPE_DOUBLE, 11);
    EXPECT_EQ(ORU_DO_TYPE_DATETIME, 12);
    EXPECT_EQ(ORU_DO_TYPE_DURATION, 13);
    EXPECT_EQ(ORU_DO_TYPE_ANY_URI, 14);
    EXPECT_EQ(ORU_DO_TYPE_HEX_BINARY, 15);
    EXPECT_EQ(ORU_DO_TYPE_IP_ADDRESS, 101);
    EXPECT_EQ(ORU_DO_TYPE_NSAP_ADDRESS, 102);
    EXPECT_EQ(ORU_DO_TYPE_ENUMERATION, 103);
    EXPECT_EQ(ORU_DO_TYPE_CHOICE, 104);
    EXPECT_EQ(ORU_DO_TYPE_SEQUENCE, 105);
    EXPECT_EQ(ORU_DO_TYPE_ARRAY, 106);
    EXPECT_EQ(ORU_DO_TYPE_MR_URI, 107);
    EXPECT_EQ(ORU_DO_TYPE_COLL_URI, 108);
    EXPECT_EQ(ORU_DO_TYPE_BITS, 109);
}

TEST(ValueTypes, TheMapIsNullWhereThereIsNoType) {
    for (int32_t code = 16; code <= 100; ++code) {
        EXPECT_EQ(type_map[code], nullptr) << code;
        EXPECT_EQ(oru_do_get_typestr_by_typecode(code), nullptr) << code;
    }
}

TEST(ValueTypes, CodesOutsideTheMapHaveWordsOfTheirOwn) {
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(-1), "null");
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(-2), "__default__");
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(-3), "__unknown__");
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(-4), "__unknown__");
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(110), "__unknown__");
    EXPECT_STREQ(oru_do_get_typestr_by_typecode(200), "__unknown__");
}

TEST(ValueTypes, OtherTextsNameNoType) {
    for (const char *text : {"null", "__default__", "__unknown__", "", "Int", "int ", "in", "uri"})
        EXPECT_EQ(oru_do_get_typecode_by_typestr(text), -3) << text;
}

void expect_group(int32_t (*is_in)(int32_t), const std::set<int32_t> &group) {
    for (int32_t code = -5; code <= 200; ++code)
        EXPECT_EQ(is_in(code) != 0, group.count(code) == 1) << code;
}

TEST(ValueTypes, GroupsHoldWhatTheyShould) {
    expect_group(oru_do_is_numeric_type, {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13});
    expect_group(oru_do_is_signed_int_num_type, {1, 3, 5, 7, 12, 13});
    expect_group(oru_do_is_unsigned_int_num_type, {0, 2, 4, 6});
    expect_group(oru_do_is_float_num_type, {10, 11});
    expect_group(oru_do_is_string_type, {8, 103, 107, 108});
    expect_group(oru_do_is_key_string_type, {8, 15, 101, 102});
    expect_group(oru_do_is_complex_type, {104, 105});
    expect_group(oru_do_is_array_type, {106});
    expect_group(oru_do_is_uri_type, {14, 107, 108});
    expect_group(oru_do_is_bits_type, {109});
}

// ---- One value of each type ----

const uint8_t kBytes[] = {0x00, 0xff, 0x10, 0x20};

struct Maker {
    int32_t type;
    std::function<ORUDoValue *()> make;
};

ORUDoUri *sample_uri() {
    return oru_do_uri_new("/a/b");
}

template <auto make>
ORUDoValue *with_uri() {
    Uri uri(sample_uri());
    return uri != nullptr ? make(uri.get()) : nullptr;
}

// A list with one value; null when memory runs out.
ORUDoNvlist *sample_nvlist() {
    Value item(oru_do_value_new_int(1));
    Nvlist list(oru_do_nvlist_new());
    if (item == nullptr || list == nullptr || oru_do_nvlist_add(list.get(), "a", item.get()) < 0)
        return nullptr;
    return list.release();
}

ORUDoVlist *sample_vlist() {
    Value item(oru_do_value_new_enumeration("up"));
    Vlist list(oru_do_vlist_new());
    if (item == nullptr || list == nullptr || oru_do_vlist_add(list.get(), item.get()) < 0)
        return nullptr;
    return list.release();
}

template <auto make>
ORUDoValue *with_nvlist() {
    Nvlist list(sample_nvlist());
    return list != nullptr ? make(list.get()) : nullptr;
}

template <auto make>
ORUDoValue *with_vlist() {
    Vlist list(sample_vlist());
    return list != nullptr ? make(list.get()) : nullptr;
}

const std::vector<Maker> &makers() {
    static const std::vector<Maker> all = {
        {-2, [] { return oru_do_value_new_default(); }},
        {-1, [] { return oru_do_value_new_null(); }},
        {0, [] { return oru_do_value_new_unsigned_byte(200); }},
        {1, [] { return oru_do_value_new_byte(-100); }},
        {2, [] { return oru_do_value_new_unsigned_short(60000); }},
        {3, [] { return oru_do_value_new_short(-30000); }},
        {4, [] { return oru_do_value_new_unsigned_int(4000000000u); }},
        {5, [] { return oru_do_value_new_int(-2000000000); }},
        {6, [] { return oru_do_value_new_unsigned_long(UINT64_MAX); }},
        {7, [] { return oru_do_value_new_long(INT64_MIN); }},
        {8, [] { return oru_do_value_new_string("text"); }},
        {9, [] { return oru_do_value_new_boolean(7); }},
        {10, [] { return oru_do_value_new_float(1.5f); }},
        {11, [] { return oru_do_value_new_double(-2.25); }},
        {12, [] { return oru_do_value_new_datetime(-5); }},
        {13, [] { return oru_do_value_new_duration(INT64_MAX); }},
        {14, with_uri<oru_do_value_new_any_uri>},
        {15, [] { return oru_do_value_new_hex_binary(kBytes, 4); }},
        {101, [] { return oru_do_value_new_ip_address(kBytes, 4); }},
        {102, [] { return oru_do_value_new_nsap_address(kBytes, 4); }},
        {103, [] { return oru_do_value_new_enumeration("up"); }},
        {104, with_nvlist<oru_do_value_new_choice>},
        {105, with_nvlist<oru_do_value_new_sequence>},
        {106, with_vlist<oru_do_value_new_array>},
        {107, with_uri<oru_do_value_new_mr_uri>},
        {108, with_uri<oru_do_value_new_coll_uri>},
        {109, with_vlist<oru_do_value_new_bits>},
    };
    return all;
}

TEST(Value, IsMadeWithItsTypeAndNothingElseSet) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        ASSERT_NE(val, nullptr);
        EXPECT_EQ(oru_do_value_get_type(val.get()), maker.type);
        const ValueRecord &fields = record(val.get());
        EXPECT_EQ(fields.type, maker.type);
        EXPECT_EQ(fields.ref, 1u);
        EXPECT_EQ(fields.typedef_name, nullptr);
        EXPECT_EQ(fields.flags, 0);
        EXPECT_EQ(fields.storage_class, 0);
        const std::set<int32_t> sized = {8, 15, 101, 102, 103};
        EXPECT_EQ(fields.len == -1, sized.count(maker.type) == 0) << maker.type;
        EXPECT_EQ(oru_do_value_get_typedef_name(val.get()), nullptr);
        EXPECT_EQ(oru_do_value_get_flags(val.get()), 0);
    }
}

TEST(Value, ANarrowNumberOccupiesTheLowBytesOnly) {
    Value val(oru_do_value_new_byte(-1));
    EXPECT_EQ(record(val.get()).data.word, 0xffu);
    Value word(oru_do_value_new_boolean(-1));
    EXPECT_EQ(record(word.get()).data.word, 0xffffffffu);
}

// ---- Strict getters ----

// Calls one getter; `is_zero` tells whether the result was 0 or null.
struct Getter {
    int32_t type;
    std::function<int32_t(ORUDoValue *, bool *is_zero)> get;
};

template <auto get>
int32_t read_plain(ORUDoValue *val, bool *is_zero) {
    int32_t err = 77;
    *is_zero = !get(val, &err);
    return err;
}

template <auto get>
int32_t read_bytes(ORUDoValue *val, bool *is_zero) {
    int32_t err = 77;
    int32_t len = 99;
    *is_zero = get(val, &len, &err) == nullptr;
    EXPECT_EQ(len, err == 0 ? 4 : 99);
    return err;
}

const std::vector<Getter> &getters() {
    static const std::vector<Getter> all = {
        {0, read_plain<oru_do_value_get_unsigned_byte>},
        {1, read_plain<oru_do_value_get_byte>},
        {2, read_plain<oru_do_value_get_unsigned_short>},
        {3, read_plain<oru_do_value_get_short>},
        {4, read_plain<oru_do_value_get_unsigned_int>},
        {5, read_plain<oru_do_value_get_int>},
        {6, read_plain<oru_do_value_get_unsigned_long>},
        {7, read_plain<oru_do_value_get_long>},
        {8, read_plain<oru_do_value_get_string>},
        {9, read_plain<oru_do_value_get_boolean>},
        {10, read_plain<oru_do_value_get_float>},
        {11, read_plain<oru_do_value_get_double>},
        {12, read_plain<oru_do_value_get_datetime>},
        {13, read_plain<oru_do_value_get_duration>},
        {14, read_plain<oru_do_value_get_any_uri>},
        {15, read_bytes<oru_do_value_get_hex_binary>},
        {101, read_bytes<oru_do_value_get_ip_address>},
        {102, read_bytes<oru_do_value_get_nsap_address>},
        {103, read_plain<oru_do_value_get_enumeration>},
        {104, read_plain<oru_do_value_get_choice>},
        {105, read_plain<oru_do_value_get_sequence>},
        {106, read_plain<oru_do_value_get_array>},
        {107, read_plain<oru_do_value_get_mr_uri>},
        {108, read_plain<oru_do_value_get_coll_uri>},
        {109, read_plain<oru_do_value_get_bits>},
    };
    return all;
}

TEST(ValueGetters, AreStrictOverAllPairsOfTypes) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        for (const Getter &getter : getters()) {
            bool is_zero = false;
            const int32_t err = getter.get(val.get(), &is_zero);
            EXPECT_EQ(err, maker.type == getter.type ? 0 : 101)
                << "value " << maker.type << " getter " << getter.type;
            EXPECT_EQ(is_zero, maker.type != getter.type)
                << "value " << maker.type << " getter " << getter.type;
        }
    }
}

template <class Make, class Get, class Number>
void expect_number(Make *make, Get *get, Number n) {
    Value val(make(n));
    int32_t err = 77;
    EXPECT_EQ(get(val.get(), &err), n);
    EXPECT_EQ(err, 0);
}

TEST(ValueGetters, GiveNumbersBack) {
    for (int n : {0, 1, 128, 255})
        expect_number(oru_do_value_new_unsigned_byte, oru_do_value_get_unsigned_byte,
                      static_cast<uint8_t>(n));
    for (int n : {-128, -1, 127})
        expect_number(oru_do_value_new_byte, oru_do_value_get_byte, static_cast<int8_t>(n));
    for (int n : {0, 65535})
        expect_number(oru_do_value_new_unsigned_short, oru_do_value_get_unsigned_short,
                      static_cast<uint16_t>(n));
    for (int n : {-32768, 32767})
        expect_number(oru_do_value_new_short, oru_do_value_get_short, static_cast<int16_t>(n));
    expect_number(oru_do_value_new_unsigned_int, oru_do_value_get_unsigned_int, UINT32_MAX);
    expect_number(oru_do_value_new_int, oru_do_value_get_int, INT32_MIN);
    expect_number(oru_do_value_new_unsigned_long, oru_do_value_get_unsigned_long, UINT64_MAX);
    expect_number(oru_do_value_new_long, oru_do_value_get_long, INT64_MIN);
    expect_number(oru_do_value_new_float, oru_do_value_get_float, 3.5f);
    expect_number(oru_do_value_new_double, oru_do_value_get_double, 1e300);
    expect_number(oru_do_value_new_datetime, oru_do_value_get_datetime, int64_t{-7});
    expect_number(oru_do_value_new_duration, oru_do_value_get_duration, INT64_MAX);
}

TEST(ValueGetters, GiveBooleansAsTheyWereGiven) {
    for (int32_t word : {0, 1, 2, -1, INT32_MIN})
        expect_number(oru_do_value_new_boolean, oru_do_value_get_boolean, word);
}

TEST(ValueGetters, AShortIsNoInt) {
    Value val(oru_do_value_new_short(5));
    int32_t err = 0;
    EXPECT_EQ(oru_do_value_get_int(val.get(), &err), 0);
    EXPECT_EQ(err, 101);
}

TEST(ValueGetters, BytesComeWithoutALengthToo) {
    Value val(oru_do_value_new_hex_binary(kBytes, 4));
    int32_t err = 77;
    const uint8_t *bytes = oru_do_value_get_hex_binary(val.get(), nullptr, &err);
    EXPECT_EQ(err, 0);
    EXPECT_EQ(std::memcmp(bytes, kBytes, 4), 0);
    EXPECT_NE(bytes, kBytes);
}

TEST(ValueGetters, LengthIsThatOfStringsAndBytesOnly) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        const std::set<int32_t> with_length = {8, 15, 101, 102};
        EXPECT_EQ(oru_do_value_get_length(val.get()), with_length.count(maker.type) == 1 ? 4 : -1)
            << maker.type;
    }
    EXPECT_EQ(oru_do_value_get_length(Value(oru_do_value_new_hex_binary(kBytes, 0)).get()), 0);
    Value enumeration(oru_do_value_new_enumeration("up"));
    EXPECT_EQ(oru_do_value_get_length(enumeration.get()), -1);
    EXPECT_EQ(record(enumeration.get()).len, 2);
}

TEST(ValueGetters, TheUriIsThatOfTheThreeUriTypes) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        ORUDoUri *uri = oru_do_value_get_uri(val.get());
        if (oru_do_is_uri_type(maker.type)) {
            EXPECT_STREQ(oru_do_uri_get_uri_str(uri), "/a/b");
        } else {
            EXPECT_EQ(uri, nullptr) << maker.type;
        }
    }
    EXPECT_EQ(oru_do_value_get_uri(nullptr), nullptr);
}

TEST(ValueGetters, HeldObjectsAreCounted) {
    Uri uri(sample_uri());
    Value val(oru_do_value_new_mr_uri(uri.get()));
    int32_t err = 77;
    EXPECT_EQ(oru_do_value_get_mr_uri(val.get(), &err), uri.get());
    uri.reset();  // the value keeps it alive
    EXPECT_STREQ(oru_do_uri_get_uri_str(oru_do_value_get_mr_uri(val.get(), &err)), "/a/b");

    Nvlist named(sample_nvlist());
    Value sequence(oru_do_value_new_sequence(named.get()));
    EXPECT_EQ(oru_do_value_get_sequence(sequence.get(), &err), named.get());
    named.reset();
    EXPECT_EQ(oru_do_nvlist_get_len(oru_do_value_get_sequence(sequence.get(), &err)), 1);

    Vlist list(sample_vlist());
    Value array(oru_do_value_new_array(list.get()));
    EXPECT_EQ(oru_do_value_get_array(array.get(), &err), list.get());
    list.reset();
    EXPECT_EQ(oru_do_vlist_get_len(oru_do_value_get_array(array.get(), &err)), 1);
}

// ---- Null payloads ----

TEST(Value, ANullPayloadGivesANullValue) {
    const std::function<ORUDoValue *()> all[] = {
        [] { return oru_do_value_new_string(nullptr); },
        [] { return oru_do_value_new_string_l(nullptr, 3); },
        [] { return oru_do_value_new_enumeration(nullptr); },
        [] { return oru_do_value_new_enumeration_l(nullptr, 3); },
        [] { return oru_do_value_new_hex_binary(nullptr, 3); },
        [] { return oru_do_value_new_ip_address(nullptr, 4); },
        [] { return oru_do_value_new_nsap_address(nullptr, 4); },
        [] { return oru_do_value_new_any_uri(nullptr); },
        [] { return oru_do_value_new_mr_uri(nullptr); },
        [] { return oru_do_value_new_coll_uri(nullptr); },
        [] { return oru_do_value_new_choice(nullptr); },
        [] { return oru_do_value_new_sequence(nullptr); },
        [] { return oru_do_value_new_array(nullptr); },
        [] { return oru_do_value_new_bits(nullptr); },
        [] { return oru_do_value_new_hex_binary(kBytes, -1); },
        [] { return oru_do_value_new_ip_address(kBytes, -1); },
        [] { return oru_do_value_new_nsap_address(kBytes, -1); },
    };
    for (const auto &make : all) {
        Value val(make());
        ASSERT_NE(val, nullptr);
        EXPECT_EQ(oru_do_value_get_type(val.get()), -1);
        EXPECT_EQ(record(val.get()).len, -1);
    }
}

TEST(Value, ATextCannotHaveANegativeLength) {
    EXPECT_EQ(oru_do_value_new_string_l("abc", -1), nullptr);
    EXPECT_EQ(oru_do_value_new_enumeration_l("abc", -1), nullptr);
}

TEST(Value, AnEmptyStringIsAString) {
    Value val(oru_do_value_new_string(""));
    int32_t err = 77;
    EXPECT_EQ(oru_do_value_get_type(val.get()), 8);
    EXPECT_STREQ(oru_do_value_get_string(val.get(), &err), "");
    EXPECT_EQ(oru_do_value_get_length(val.get()), 0);
    EXPECT_EQ(record(val.get()).storage_class, 0);
}

TEST(Value, CountedTextsEndWhereTheyAreTold) {
    int32_t err = 77;
    Value text(oru_do_value_new_string_l("abcdef", 3));
    EXPECT_STREQ(oru_do_value_get_string(text.get(), &err), "abc");
    EXPECT_EQ(oru_do_value_get_length(text.get()), 3);
    Value word(oru_do_value_new_enumeration_l("updown", 2));
    EXPECT_STREQ(oru_do_value_get_enumeration(word.get(), &err), "up");
}

// ---- Sized storage ----

constexpr uint32_t kTags = 0x2900000;
constexpr uint32_t kStrdup = kTags + 39;
constexpr uint32_t kLarge = kTags + 40;
constexpr uint32_t kSmall = kTags + 41;

struct Live {
    uint64_t small, large, strdup;
    friend bool operator==(const Live &, const Live &) = default;
};

void PrintTo(const Live &live, std::ostream *out) {
    *out << live.small << " small, " << live.large << " large, " << live.strdup << " strdup";
}

using Count = std::function<Live()>;

ORUDoValue *new_text(size_t length) {
    return oru_do_value_new_string(std::string(length, 't').c_str());
}
ORUDoValue *new_counted_text(size_t length) {
    const std::string text(length, 't');
    return oru_do_value_new_string_l(text.data(), static_cast<int32_t>(length));
}
ORUDoValue *new_enumeration(size_t length) {
    return oru_do_value_new_enumeration(std::string(length, 't').c_str());
}
template <auto make>
ORUDoValue *new_bytes(size_t length) {
    const std::string bytes(length, '\x01');
    return make(bytes.data(), static_cast<int32_t>(length));
}

// What is live while the value exists, and the class that it names.
void expect_storage(const Count &count, ORUDoValue *made, int32_t storage_class, Live more) {
    Value val(made);
    const Live with = count();
    EXPECT_EQ(record(val.get()).storage_class, storage_class);
    val.reset();
    const Live without = count();
    EXPECT_EQ((Live{with.small - without.small, with.large - without.large,
                    with.strdup - without.strdup}),
              more);
}

void expect_classes(const Count &count, bool pooled) {
    for (auto make : {new_text, new_counted_text, new_enumeration}) {
        expect_storage(count, make(0), 0, {1, 0, 0});
        expect_storage(count, make(31), 0, {1, 0, 0});
        expect_storage(count, make(32), 1, {0, 1, 0});
        expect_storage(count, make(127), 1, {0, 1, 0});
        expect_storage(count, make(128), 2, {0, 0, 1});
        expect_storage(count, make(5000), 2, {0, 0, 1});
    }
    // Bytes of the heap class carry the tag of the large one; in a pool's count they do not show.
    const Live heap_bytes = {0, pooled ? 0u : 1u, 0};
    for (auto make :
         {new_bytes<oru_do_value_new_hex_binary>, new_bytes<oru_do_value_new_ip_address>,
          new_bytes<oru_do_value_new_nsap_address>}) {
        expect_storage(count, make(0), 0, {1, 0, 0});
        expect_storage(count, make(31), 0, {1, 0, 0});
        expect_storage(count, make(32), 1, {0, 1, 0});
        expect_storage(count, make(127), 1, {0, 1, 0});
        expect_storage(count, make(128), 2, heap_bytes);
        expect_storage(count, make(5000), 2, heap_bytes);
    }
}

uint64_t live_blocks(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats.live_blocks;
}

TEST(ValueStorage, ClassesFollowTheLengthOnTheHeap) {
    // A process whose pools are sized has none of these on the heap: the next test is for it.
    if (std::getenv("ORU_TEST_POOLS") != nullptr)
        return;
    expect_classes(
        [] {
            return Live{live_blocks(kSmall), live_blocks(kLarge), live_blocks(kStrdup)};
        },
        false);
}

TEST(ValueStorage, ClassesFollowTheLengthOnPools) {
    oru::test::expect_in_child([] {
        void *records = init_chunk_poolheap_oru_do_value(16, 0);
        void *small = init_chunk_poolheap_oru_do_value_sml_misc(16, 0);
        void *large = init_chunk_poolheap_oru_do_value_misc(16, 0);
        chunk_stats_t stats{};
        chunk_pool_stats(records, &stats);
        EXPECT_EQ(stats.element_size, sizeof(ValueRecord));
        chunk_pool_stats(small, &stats);
        EXPECT_EQ(stats.element_size, 32u);
        chunk_pool_stats(large, &stats);
        EXPECT_EQ(stats.element_size, 128u);
        const auto live = [](void *pool) {
            chunk_stats_t now{};
            chunk_pool_stats(pool, &now);
            return now.live;
        };
        expect_classes([&] { return Live{live(small), live(large), live_blocks(kStrdup)}; }, true);
        EXPECT_EQ(live(records), 0u);
    });
}

TEST(ValueStorage, PoolsAreTracedWhenTheyAreMade) {
    oru::test::expect_in_child([] {
        TraceCapture traces;
        init_chunk_poolheap_oru_do_value_sml_misc(5, 0);
        init_chunk_poolheap_oru_do_value_misc(6, 0);
        EXPECT_EQ(traces.at(5), (std::vector<std::string>{"chunk create oru_do_value_sml_misc 32 5",
                                                          "chunk create oru_do_value_misc 128 6"}));
    });
}

uint64_t live_bytes(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats.live_bytes;
}

void expect_block(uint32_t tag, uint64_t size, ORUDoValue *(*make)(size_t), size_t length) {
    const uint64_t before = live_bytes(tag);
    Value val(make(length));
    EXPECT_EQ(live_bytes(tag) - before, size) << length;
}

TEST(ValueStorage, BlocksOfTheHeapHaveTheSizesOfTheirClass) {
    const auto hex = new_bytes<oru_do_value_new_hex_binary>;
    expect_block(kStrdup, 129, new_text, 128);
    expect_block(kStrdup, 5001, new_counted_text, 5000);
    expect_block(kLarge, 128, hex, 128);
    expect_block(kLarge, 5000, hex, 5000);
    if (std::getenv("ORU_TEST_POOLS") != nullptr)
        return;  // the shorter ones are elements there
    expect_block(kSmall, 32, new_text, 0);
    expect_block(kSmall, 32, hex, 31);
    expect_block(kLarge, 128, new_text, 32);
    expect_block(kLarge, 128, hex, 127);
}

TEST(ValueStorage, AnElementThatIsNotOfItsPoolIsFatal) {
    const char *words = "Failed to free ##name from chunk poolheap_chunk_##type";
    EXPECT_FATAL(
        {
            ORUDoValue *val = new_text(31);
            init_chunk_poolheap_oru_do_value_sml_misc(4, 0);
            oru_do_value_deref(val);
        },
        words);
    EXPECT_FATAL(
        {
            ORUDoValue *val = new_bytes<oru_do_value_new_hex_binary>(127);
            init_chunk_poolheap_oru_do_value_misc(4, 0);
            oru_do_value_deref(val);
        },
        words);
    EXPECT_FATAL(
        {
            ORUDoValue *val = oru_do_value_new_int(1);
            init_chunk_poolheap_oru_do_value(4, 0);
            oru_do_value_deref(val);
        },
        words);
}

TEST(ValueStorage, TextsOfAllSizesKeepTheirBytes) {
    for (size_t length : {0, 1, 31, 32, 127, 128, 129, 40000}) {
        std::string text;
        for (size_t i = 0; i < length; ++i)
            text += static_cast<char>('a' + i % 26);
        int32_t err = 77;
        Value val(oru_do_value_new_string(text.c_str()));
        EXPECT_EQ(oru_do_value_get_string(val.get(), &err), text);
        EXPECT_EQ(oru_do_value_get_length(val.get()), static_cast<int32_t>(length));
        Value bytes(oru_do_value_new_hex_binary(text.data(), static_cast<int32_t>(length)));
        EXPECT_EQ(std::memcmp(oru_do_value_get_hex_binary(bytes.get(), nullptr, &err), text.data(),
                              length),
                  0);
    }
}

TEST(ValueStorage, ANumberIsOneAllocationAndAShortTextTwo) {
    poolheap_fail_nth(0, 0);
    Value number(oru_do_value_new_long(1));
    EXPECT_EQ(poolheap_fail_calls(), 1u);
    Value text(oru_do_value_new_string("short"));
    EXPECT_EQ(poolheap_fail_calls(), 3u);
    poolheap_fail_off();
}

// ---- Questions ----

TEST(ValueQuestions, AnswerByTypeAlone) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        ORUDoValue *v = val.get();
        const int32_t type = maker.type;
        EXPECT_EQ(oru_do_value_is_null(v) != 0, type == -1) << type;
        EXPECT_EQ(oru_do_value_is_string(v) != 0, type == 8) << type;
        EXPECT_EQ(oru_do_value_is_array(v) != 0, type == 106) << type;
        EXPECT_EQ(oru_do_value_is_bits(v) != 0, type == 109) << type;
        EXPECT_EQ(oru_do_value_is_enumeration(v) != 0, type == 103) << type;
        EXPECT_EQ(oru_do_value_is_integer_number(v) != 0, type >= 0 && type <= 7) << type;
        EXPECT_EQ(oru_do_value_is_signed_int_number(v), oru_do_is_signed_int_num_type(type));
        EXPECT_EQ(oru_do_value_is_unsigned_int_number(v), oru_do_is_unsigned_int_num_type(type));
        EXPECT_EQ(oru_do_value_is_float_number(v), oru_do_is_float_num_type(type));
    }
}

// ---- Derived types and flags ----

TEST(ValueTypedef, IsReplacedByACopy) {
    Value val(oru_do_value_new_int(1));
    char name[] = "Percent";
    oru_do_value_set_typedef_name(val.get(), name);
    name[0] = 'x';
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "Percent");
    oru_do_value_set_typedef_name(val.get(), "Other");
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "Other");
    oru_do_value_set_typedef_name(val.get(), "");
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "");
}

TEST(ValueTypedef, MayBeTheNameThatItHas) {
    Value val(oru_do_value_new_int(1));
    oru_do_value_set_typedef_name(val.get(), "Percent");
    oru_do_value_set_typedef_name(val.get(), oru_do_value_get_typedef_name(val.get()));
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "Percent");
}

TEST(ValueTypedef, CountedTextsAreCutAndNullClears) {
    Value val(oru_do_value_new_int(1));
    oru_do_value_set_typedef_name_l(val.get(), "Percent", 3);
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "Per");
    oru_do_value_set_typedef_name_l(val.get(), nullptr, 3);
    EXPECT_EQ(oru_do_value_get_typedef_name(val.get()), nullptr);
    oru_do_value_set_typedef_name_l(val.get(), "Percent", 0);
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "");
    oru_do_value_set_typedef_name_l(val.get(), "Percent", -1);
    EXPECT_EQ(oru_do_value_get_typedef_name(val.get()), nullptr);
}

TEST(ValueFlags, AreAByteWithTheDefaultFlagInBitZero) {
    Value val(oru_do_value_new_null());
    oru_do_value_set_flags(val.get(), 0xfe);
    EXPECT_EQ(oru_do_value_get_flags(val.get()), 0xfe);
    EXPECT_FALSE(oru_do_value_is_default(val.get()));
    oru_do_value_set_default_flag(val.get());
    EXPECT_TRUE(oru_do_value_is_default(val.get()));
    EXPECT_EQ(oru_do_value_get_flags(val.get()), 0xff);
    EXPECT_TRUE(oru_do_value_is_null(val.get()));
    oru_do_value_set_flags(val.get(), 0x01);
    EXPECT_TRUE(oru_do_value_is_default(val.get()));
}

TEST(ValueFlags, AValueOfTypeDefaultIsNeitherFlaggedNorNull) {
    Value val(oru_do_value_new_default());
    EXPECT_FALSE(oru_do_value_is_default(val.get()));
    EXPECT_FALSE(oru_do_value_is_null(val.get()));
}

// ---- Families of addresses ----

TEST(ValueAddressType, IsToldByTheLength) {
    const uint8_t bytes[17] = {};
    int32_t err = 77;
    for (int32_t n = 0; n <= 17; ++n) {
        Value val(oru_do_value_new_ip_address(bytes, n));
        Value family(oru_new_ip_address_type(val.get()));
        if (n == 4 || n == 5)
            EXPECT_STREQ(oru_do_value_get_enumeration(family.get(), &err), "ipv4");
        else if (n == 16 || n == 17)
            EXPECT_STREQ(oru_do_value_get_enumeration(family.get(), &err), "ipv6");
        else
            EXPECT_EQ(family, nullptr) << n;
    }
    Value hex(oru_do_value_new_hex_binary(bytes, 4));
    EXPECT_EQ(oru_new_ip_address_type(hex.get()), nullptr);
}

// ---- Clones ----

TEST(ValueClone, EqualsItsSourceAndSharesNothing) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        Value clone(oru_do_value_clone(val.get()));
        ASSERT_NE(clone, nullptr) << maker.type;
        EXPECT_NE(clone, val);
        EXPECT_EQ(oru_do_value_get_type(clone.get()), maker.type);
        EXPECT_TRUE(oru_do_value_equals(val.get(), clone.get())) << maker.type;
        EXPECT_EQ(record(val.get()).ref, 1u);
        if (record(val.get()).len >= 0 || maker.type == 14 || maker.type >= 104)
            EXPECT_NE(record(val.get()).data.object, record(clone.get()).data.object);
        else
            EXPECT_EQ(record(val.get()).data.word, record(clone.get()).data.word);
    }
}

TEST(ValueClone, OfAListSharesNoElements) {
    Value array(with_vlist<oru_do_value_new_array>());
    Value array_clone(oru_do_value_clone(array.get()));
    int32_t err = 77;
    EXPECT_NE(oru_do_vlist_get_value(oru_do_value_get_array(array.get(), &err), 0),
              oru_do_vlist_get_value(oru_do_value_get_array(array_clone.get(), &err), 0));
    Value choice(with_nvlist<oru_do_value_new_choice>());
    Value choice_clone(oru_do_value_clone(choice.get()));
    EXPECT_NE(oru_do_nvlist_get_value(oru_do_value_get_choice(choice.get(), &err), "a"),
              oru_do_nvlist_get_value(oru_do_value_get_choice(choice_clone.get(), &err), "a"));
}

TEST(ValueClone, KeepsTheFlagsAndDropsTheTypedef) {
    Value val(oru_do_value_new_int(1));
    oru_do_value_set_flags(val.get(), 0x81);
    oru_do_value_set_typedef_name(val.get(), "Percent");
    Value clone(oru_do_value_clone(val.get()));
    EXPECT_EQ(oru_do_value_get_flags(clone.get()), 0x81);
    EXPECT_EQ(oru_do_value_get_typedef_name(clone.get()), nullptr);
    EXPECT_STREQ(oru_do_value_get_typedef_name(val.get()), "Percent");
}

TEST(ValueClone, OfATextEndsAtAZero) {
    Value val(oru_do_value_new_string_l("ab\0cd", 5));
    Value clone(oru_do_value_clone(val.get()));
    EXPECT_EQ(oru_do_value_get_length(val.get()), 5);
    EXPECT_EQ(oru_do_value_get_length(clone.get()), 2);
    Value bytes(oru_do_value_new_hex_binary("ab\0cd", 5));
    Value same(oru_do_value_clone(bytes.get()));
    EXPECT_EQ(oru_do_value_get_length(same.get()), 5);
}

// A value of an unresolved type cannot be made by itself; such values come from outside.
TEST(ValueClone, OfOtherTypesFollowsTheCode) {
    Value val(oru_do_value_new_null());
    auto &fields = const_cast<ValueRecord &>(record(val.get()));
    fields.type = -3;
    Value unknown(oru_do_value_clone(val.get()));
    EXPECT_EQ(oru_do_value_get_type(unknown.get()), -3);
    for (int32_t code : {16, 100, 110, -4}) {
        fields.type = code;
        EXPECT_EQ(oru_do_value_clone(val.get()), nullptr) << code;
    }
}

// ---- Life ----

TEST(ValueLife, SharesAndReleases) {
    EXPECT_EQ(oru_do_value_ref(nullptr), nullptr);
    oru_do_value_deref(nullptr);
    Value val(oru_do_value_new_string("a"));
    Value shared(oru_do_value_ref(val.get()));
    EXPECT_EQ(shared.get(), val.get());
    EXPECT_EQ(record(val.get()).ref, 2u);
}

TEST(ValueLife, IsTracedUnderItsName) {
    TraceCapture traces(8);
    oru_do_value_deref(oru_do_value_new_int(1));
    const auto lines = traces.at(8);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].find("oru ref oru_do_value 0x"), 0u);
    EXPECT_EQ(lines[1].find("oru deref oru_do_value 0x"), 0u);
}

TEST(ValueLife, OneReleaseTooManyIsFatal) {
    ValueRecord dead{};
    EXPECT_FATAL(oru_do_value_deref(reinterpret_cast<ORUDoValue *>(&dead)),
                 "Fatal problem in oru_do_value deref handling 0x");
}

// ---- Memory ----

TEST(ValueMemory, EveryConstructorReportsAMissingRecord) {
    for (const Maker &maker : makers()) {
        oru::test::sweep_oom([&] {
            Value val(maker.make());
            EXPECT_TRUE(val != nullptr || oru::test::oom_hit());
        });
    }
}

TEST(ValueMemory, AStringWithoutStorageIsStillAString) {
    for (size_t length : {5, 40, 500}) {
        const std::string text(length, 's');
        poolheap_fail_nth(2, 0);
        Value val(oru_do_value_new_string(text.c_str()));
        poolheap_fail_off();
        ASSERT_NE(val, nullptr);
        int32_t err = 77;
        EXPECT_EQ(oru_do_value_get_type(val.get()), 8);
        EXPECT_EQ(oru_do_value_get_string(val.get(), &err), nullptr);
        EXPECT_EQ(err, 0);
        EXPECT_EQ(oru_do_value_get_length(val.get()), static_cast<int32_t>(length));
        Value clone(oru_do_value_clone(val.get()));
        EXPECT_STREQ(oru_do_value_get_string(clone.get(), &err), "");
    }
}

TEST(ValueMemory, TheOtherSizedConstructorsReportMissingStorage) {
    for (size_t length : {5, 40, 500}) {
        const std::string text(length, 's');
        const auto n = static_cast<int32_t>(length);
        const std::function<ORUDoValue *()> all[] = {
            [&] { return oru_do_value_new_string_l(text.c_str(), n); },
            [&] { return oru_do_value_new_enumeration(text.c_str()); },
            [&] { return oru_do_value_new_enumeration_l(text.c_str(), n); },
            [&] { return oru_do_value_new_hex_binary(text.c_str(), n); },
            [&] { return oru_do_value_new_ip_address(text.c_str(), n); },
            [&] { return oru_do_value_new_nsap_address(text.c_str(), n); },
        };
        for (const auto &make : all) {
            TraceCapture traces(8);
            poolheap_fail_nth(2, 0);
            EXPECT_EQ(make(), nullptr);
            poolheap_fail_off();
            EXPECT_EQ(traces.at(8).size(), 1u) << "the record is given up without a deref";
        }
    }
}

// A clone of a list of values leaves out what it could not clone, without a word.
TEST(ValueMemory, ClonesReportEveryFailure) {
    for (const Maker &maker : makers()) {
        Value val(maker.make());
        const bool may_be_shorter = maker.type == 106 || maker.type == 109;
        oru::test::sweep_oom([&] {
            Value clone(oru_do_value_clone(val.get()));
            EXPECT_TRUE(clone == nullptr ? oru::test::oom_hit()
                                         : may_be_shorter || !oru::test::oom_hit());
        });
    }
}

TEST(ValueMemory, ATypedefNameThatCannotBeCopiedIsGone) {
    Value val(oru_do_value_new_int(1));
    oru_do_value_set_typedef_name(val.get(), "Percent");
    poolheap_fail_nth(1, 0);
    oru_do_value_set_typedef_name(val.get(), "Other");
    poolheap_fail_off();
    EXPECT_EQ(oru_do_value_get_typedef_name(val.get()), nullptr);
}

// ---- Null arguments ----

TEST(ValueNull, ArgumentsAreAsserted) {
    Value val(oru_do_value_new_int(1));
    EXPECT_ASSERTION(oru_do_value_get_type(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_get_length(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_is_enumeration(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_is_integer_number(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_is_signed_int_number(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_is_unsigned_int_number(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_is_float_number(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_get_typedef_name(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_set_typedef_name(nullptr, "a"), "val");
    EXPECT_ASSERTION(oru_do_value_set_typedef_name_l(nullptr, "a", 1), "val");
    EXPECT_ASSERTION(oru_do_value_get_flags(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_set_flags(nullptr, 1), "val");
    EXPECT_ASSERTION(oru_do_value_set_default_flag(nullptr), "val");
    EXPECT_ASSERTION(oru_do_value_clone(nullptr), "val");
    EXPECT_ASSERTION(oru_new_ip_address_type(nullptr), "val");
}

template <auto get>
void expect_getter_asserts() {
    Value val(oru_do_value_new_int(1));
    int32_t err = 0;
    if constexpr (std::is_invocable_v<decltype(get), ORUDoValue *, int32_t *, int32_t *>) {
        EXPECT_ASSERTION(get(nullptr, nullptr, &err), "val");
        EXPECT_ASSERTION(get(val.get(), nullptr, nullptr), "errp");
    } else {
        EXPECT_ASSERTION(get(nullptr, &err), "val");
        EXPECT_ASSERTION(get(val.get(), nullptr), "errp");
    }
}

template <auto... getters>
void expect_getters_assert() {
    (expect_getter_asserts<getters>(), ...);
}

TEST(ValueNull, GettersAssertBothArguments) {
    expect_getters_assert<
        oru_do_value_get_unsigned_byte, oru_do_value_get_byte, oru_do_value_get_unsigned_short,
        oru_do_value_get_short, oru_do_value_get_unsigned_int, oru_do_value_get_int,
        oru_do_value_get_unsigned_long, oru_do_value_get_long, oru_do_value_get_string,
        oru_do_value_get_boolean, oru_do_value_get_float, oru_do_value_get_double,
        oru_do_value_get_datetime, oru_do_value_get_duration, oru_do_value_get_any_uri,
        oru_do_value_get_hex_binary, oru_do_value_get_ip_address, oru_do_value_get_nsap_address,
        oru_do_value_get_enumeration, oru_do_value_get_choice, oru_do_value_get_sequence,
        oru_do_value_get_array, oru_do_value_get_mr_uri, oru_do_value_get_coll_uri,
        oru_do_value_get_bits>();
}

}  // namespace
