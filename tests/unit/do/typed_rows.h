// A payload for every type of value, with the type code and the text form that its value has. A
// family of typed operations is tested by one macro a row: ROW(SHAPE, suffix, code, text, payload).
#ifndef ORU_TESTS_UNIT_DO_TYPED_ROWS_H
#define ORU_TESTS_UNIT_DO_TYPED_ROWS_H

#include <gtest/gtest.h>

#include <cstdint>

#include "oru/nvlist.h"
#include "oru/uri.h"
#include "oru/vlist.h"

namespace oru::test {

inline constexpr uint8_t kTypedHex[] = {0xab, 0xcd, 0x00};
inline constexpr uint8_t kTypedIp[] = {10, 0, 0, 1};
inline constexpr uint8_t kTypedNsap[] = {0x49, 0x00, 0x01, 0xaa};
inline constexpr uint8_t kTypedMac[] = {0x00, 0x11, 0x22, 0x33, 0xaa, 0xbb};

class TypedTest : public testing::Test {
  protected:
    TypedTest() {
        oru_do_nvlist_add_int(nvlist, "k", 1);
        oru_do_vlist_add_int(vlist, 1);
        oru_do_vlist_add_enumeration(bits, "up");
    }
    ~TypedTest() override {
        oru_do_nvlist_deref(nvlist);
        oru_do_vlist_deref(vlist);
        oru_do_vlist_deref(bits);
        oru_do_uri_deref(uri);
    }

    ORUDoNvlist *nvlist = oru_do_nvlist_new();
    ORUDoVlist *vlist = oru_do_vlist_new();
    ORUDoVlist *bits = oru_do_vlist_new();
    ORUDoUri *uri = oru_do_uri_new("/a/b");
};

}  // namespace oru::test

#define ORU_LISTED_TYPED_ROWS(ROW)                                              \
    ROW(NUMBER, unsigned_byte, 0, "255", uint8_t{255})                          \
    ROW(NUMBER, byte, 1, "-128", int8_t{-128})                                  \
    ROW(NUMBER, unsigned_short, 2, "65535", uint16_t{65535})                    \
    ROW(NUMBER, short, 3, "-32768", int16_t{-32768})                            \
    ROW(NUMBER, unsigned_int, 4, "4294967295", uint32_t{4294967295})            \
    ROW(NUMBER, int, 5, "-2147483648", int32_t{INT32_MIN})                      \
    ROW(NUMBER, unsigned_long, 6, "18446744073709551615", uint64_t{UINT64_MAX}) \
    ROW(NUMBER, long, 7, "-9223372036854775808", int64_t{INT64_MIN})            \
    ROW(TEXT, string, 8, "text", "text")                                        \
    ROW(NUMBER, boolean, 9, "true", int32_t{7})                                 \
    ROW(NUMBER, float, 10, "1.5", 1.5F)                                         \
    ROW(NUMBER, double, 11, "-2.25", -2.25)                                     \
    ROW(NUMBER, datetime, 12, "1700000000", int64_t{1700000000})                \
    ROW(NUMBER, duration, 13, "-5", int64_t{-5})                                \
    ROW(HELD, any_uri, 14, "/a/b", uri)                                         \
    ROW(BYTES, hex_binary, 15, "ABCD00", oru::test::kTypedHex)                  \
    ROW(BYTES, ip_address, 101, "10.0.0.1", oru::test::kTypedIp)                \
    ROW(BYTES, nsap_address, 102, "49.0001.AA", oru::test::kTypedNsap)          \
    ROW(TEXT, enumeration, 103, "up", "up")                                     \
    ROW(HELD, choice, 104, "{k : 1}", nvlist)                                   \
    ROW(HELD, sequence, 105, "{k : 1}", nvlist)                                 \
    ROW(HELD, array, 106, "[\n\t1\n]\n", vlist)                                 \
    ROW(HELD, mr_uri, 107, "/a/b", uri)                                         \
    ROW(HELD, coll_uri, 108, "/a/b", uri)

#define ORU_TYPED_ROWS(ROW)    \
    ORU_LISTED_TYPED_ROWS(ROW) \
    ROW(HELD, bits, 109, "[\n\tup\n]\n", bits)

// How a payload is passed on, and the null of its shape.
#define ORU_TYPED_ARGS_NUMBER(payload) payload
#define ORU_TYPED_ARGS_TEXT(payload) payload
#define ORU_TYPED_ARGS_BYTES(payload) payload, static_cast<int32_t>(sizeof(payload))
#define ORU_TYPED_ARGS_HELD(payload) payload

#endif
