/* A program that brings the location service of the operating layer, and what answers for a back
   end without location keys. */
#include <oru/lib.h>
#include <oruplatform/halden.h>
#include <string.h>

#include "check.h"

static int resolved = 0;
static void *asked;

int32_t halden_resolve_local(int32_t zero, void *record) {
    static const unsigned char ones[6] = {255, 255, 255, 255, 255, 255};
    static const char zeroes[63] = "";
    const char *bytes = record;
    uint16_t type;
    CHECK(zero == 0);
    memcpy(&type, bytes, sizeof type);
    CHECK(type == 3);
    CHECK(memcmp(bytes + 2, ones, 6) == 0);
    CHECK((unsigned char)bytes[8] == 0xff);
    CHECK(memcmp(bytes + 9, zeroes, 63) == 0);
    asked = record;
    ++resolved;
    return 0;
}

/* Fills all that it may: 63 characters and the zero. */
int32_t halden_location_to_str(const void *record, char *text, int32_t capacity) {
    CHECK(record == asked);
    CHECK(capacity == 63);
    memset(text, 'n', 63);
    text[63] = '\0';
    return 0;
}

intptr_t _oru_location_get_location_keys(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4,
                                         intptr_t a5, intptr_t a6) {
    return 7000000 + a1 * 100000 + a2 * 10000 + a3 * 1000 + a4 * 100 + a5 * 10 + a6;
}

intptr_t _oru_location_from_location_keys(intptr_t a1, int32_t *status, intptr_t a3, intptr_t a4,
                                          intptr_t a5, intptr_t a6) {
    *status = 9;
    return a1 * 10000 + a3 * 1000 + a4 * 100 + a5 * 10 + a6;
}

int main(void) {
    int32_t status = 0;
    const char *id = get_locationid_str();
    CHECK(strlen(id) == 63);
    CHECK(strspn(id, "n") == 63);
    CHECK(get_locationid_str() == id);
    CHECK(resolved == 1);

    CHECK(oru_location_get_location_keys(1, 2, 3, 4, 5, 6) == 7123456);
    CHECK(oru_location_from_location_keys(1, (intptr_t)&status, 3, 4, 5, 6) == 13456);
    CHECK(status == 9);
    return 0;
}
